/// A voice call without end, as dibits and as a signal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace orva::bench {

constexpr std::size_t kBlock = 2400; ///< samples that the receiver hands over at a time

/// Logical link data units 1 and 2 in turn, speech in them, `kDataUnits` of them: 5.4 s.
const std::string& VoiceDibits();
constexpr std::size_t kDataUnits = 30;
constexpr std::size_t kDataUnitDibits = 864;
constexpr double kDataUnitSeconds = 0.18;

/// `VoiceDibits` on 12000 Hz at 25 dB in 12.5 kHz; a whole number of blocks.
std::vector<float> VoiceSignal(int sampleRate);

/// Seconds of one bare dot product of 256 floats over data in the first cache, here and now: the yardstick.
double BareDotSeconds();

} // namespace orva::bench
