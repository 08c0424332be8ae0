/// Noise measure of the scanner: the loudness of FM audio above speech.
#pragma once

#include <cstdint>

namespace orva::squelch {

/// Design of the high-pass in front of the measure.
constexpr std::uint32_t kNoiseHighPassTaps = 128;
constexpr double kNoiseHighPassHz = 5000.0;

/// Noise of a block of high-passed audio, 0 .. 99: 0.02049 times the root mean square.
///
/// \param count  above 0
double NoiseOf(const std::int16_t* highPassed, std::uint32_t count);

/// Next value of the noise level: that of the block alone while scanning, where each channel stands for
/// itself, otherwise 15 % of it on 85 % of the level so far.
float NextNoiseLevel(float noiseLevel, double blockNoise, bool scannerActive);

/// Measures a block of FM audio.
///
/// \param noiseHighPass  has `FilterI16(out, in, count)`; of the design above, at the rate of the samples
/// \param noiseScratch   room for `count` samples
/// \param noiseLevel     lives with the caller, 0 at first
/// \return the noise level as a whole number, 0 .. 99; 0 with null samples or a count of 0; -1 without
///         scratch memory
template <class HighPass>
std::int32_t MeasureNoise(HighPass& noiseHighPass, std::int16_t* noiseScratch, float& noiseLevel,
                          bool scannerActive, const std::int16_t* samples, std::uint32_t count) {
    if (samples == nullptr || count == 0) {
        return 0;
    }
    if (noiseScratch == nullptr) {
        return -1;
    }
    noiseHighPass.FilterI16(noiseScratch, samples, static_cast<std::int32_t>(count));
    noiseLevel = NextNoiseLevel(noiseLevel, NoiseOf(noiseScratch, count), scannerActive);
    return static_cast<std::int32_t>(noiseLevel);
}

} // namespace orva::squelch
