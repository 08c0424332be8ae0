/// What the scanner's squelch would say of FM audio.
#pragma once

#include "dsp/TFIR_F32.h"
#include "squelch/CtbDcsDetector.h"
#include "squelch/CtbToneDetector.h"
#include "squelch/CtbVoiceDetector.h"
#include "squelch/DcBlock.h"

#include <cstdint>
#include <map>
#include <set>
#include <vector>

namespace orva::tools {

/// The measures at the end of half a second.
struct SquelchReading {
    std::int32_t ctcss = 0;     ///< thousandths of a hertz, 0 for none
    std::set<std::int32_t> dcs; ///< codes matched in this half second, inverted ones negative
    std::int32_t voice = 0;     ///< speech measure, 0 .. 100
    std::int32_t noise = 0;     ///< of the last block alone, 0 .. 99
};

/// Counts over all readings of one input.
struct SquelchTotals {
    std::uint64_t readings = 0;
    std::map<std::int32_t, std::uint64_t> tones; ///< readings by tone, those with none left out
    std::map<std::int32_t, std::uint64_t> codes; ///< readings by code; one with several counts for each
    std::int32_t highestVoice = 0;
    std::uint64_t noiseSum = 0;

    void Add(const SquelchReading& reading);
    double MeanNoise() const;
};

/// All four measures at once, each fed as the scanner feeds it when it is the one in force: undecimated FM
/// audio at its true rate. Once warm, allocates nothing but the codes it finds.
class SquelchMeter {
public:
    /// Rate of the audio [Hz].
    void SetSampleRate(std::uint32_t rate);

    /// Takes a block of audio. True when it completes a half second, whose reading `Take` then gives.
    bool Feed(const std::int16_t* audio, std::uint32_t count);

    /// The reading of the half second just completed; the next one starts.
    SquelchReading Take();

private:
    void FeedCodes(const std::int16_t* audio, std::uint32_t count);

    std::uint32_t sampleRate = 0;
    std::uint64_t samples = 0;
    std::uint64_t nextReading = 0;
    dsp::TFIR_F32 noiseHighPass;
    float noiseLevel = 0;
    squelch::CtbToneDetector toneDetector;
    squelch::CtbDcsDetector dcsDetector;
    squelch::DcBlockState dcBlock;
    squelch::CtbVoiceDetector voiceDetector;
    std::vector<std::int16_t> scratch;
    SquelchReading reading;
};

} // namespace orva::tools
