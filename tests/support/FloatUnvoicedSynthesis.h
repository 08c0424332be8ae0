/// The noise-like part of synthetic speech, in real numbers.
#pragma once

#include "tests/support/FloatVoiceFrame.h"

#include <array>
#include <complex>
#include <cstdint>
#include <span>

namespace orva::test {

class FloatUnvoicedSynthesis {
public:
    /// Starts a new stream.
    void Reset();

    /// Writes one frame, in sample steps, to `buffer`. [160]
    void Write(std::span<double> buffer, const FloatVoiceFrame& frame);

private:
    static constexpr int kFadeLength = 50;
    static constexpr int kTransformLength = 256;
    static constexpr int kRecordLength = 265; ///< a frame and the overlap into the next one
    static constexpr int kTailLength = kRecordLength - kFloatFrameLength;

    using Spectrum = std::array<std::complex<double>, kTransformLength / 2>;

    double NextNoise();
    Spectrum NoiseSpectrum();
    static int Shape(Spectrum& spectrum, const FloatVoiceFrame& frame);

    std::uint16_t seed = 0;
    std::array<double, kFadeLength> carriedNoise{};
    std::array<double, kTailLength> tail{};
};

} // namespace orva::test
