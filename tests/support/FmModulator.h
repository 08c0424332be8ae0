/// Narrow-band FM transmitter: audio to intermediate frequency.
#pragma once

#include "tests/support/RandomSource.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace orva::test {

/// The signal that a receiver hands to the decoder.
struct FmSettings {
    int sampleRate = 48000;           ///< of the audio and of the signal [Hz]
    double centreFrequency = 12000.0; ///< intermediate frequency of a carrier without offset [Hz]
    double carrierOffset = 0.0;       ///< of the carrier from the centre [Hz]
    double deviation = 3000.0;        ///< of the frequency where the audio is 1.0 [Hz]
    double amplitude = 0.5;           ///< of the carrier, 1 is full scale
    std::optional<double> snrDb = {}; ///< carrier to noise in 12500 Hz; none: no noise at all
    std::uint64_t seed = 1;           ///< of the noise
};

/// Turns audio into a real signal whose phase is exact to double precision. Carrier phase and noise run
/// through from call to call.
class FmModulator {
public:
    explicit FmModulator(const FmSettings& fmSettings);

    /// One sample of signal per sample of audio. A positive sample raises the frequency.
    std::vector<std::int16_t> Modulate(std::span<const double> audio);

    /// The noise alone.
    std::vector<std::int16_t> WithoutCarrier(std::size_t count);

private:
    std::int16_t AddNoise(double carrier);

    FmSettings settings;
    double noiseDeviation;
    RandomSource noise;
    double phase = 0.0; ///< of the carrier [radians]
};

} // namespace orva::test
