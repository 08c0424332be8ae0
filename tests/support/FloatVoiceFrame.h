/// Speech model of one frame in real numbers, as the floating-point voice model passes it from step to step.
#pragma once

#include "tests/support/VoiceCode.h"

#include <array>

namespace orva::test {

constexpr int kFloatFrameLength = 160; ///< samples of a frame of 20 ms at 8000 Hz

/// The initial values are those of the frame that is played when the channel is too bad: a very quiet noise.
struct FloatVoiceFrame {
    bool isVoice = true;
    int harmonics = 14;
    int fundamental = 16384; ///< cycles per sample, Q19
    /// Linear amplitudes in sample steps, after conditioning.
    std::array<double, kMostHarmonics> amplitudes = QuietAmplitudes();
    std::array<bool, kMostHarmonics> voiced{};

private:
    static constexpr std::array<double, kMostHarmonics> QuietAmplitudes() {
        std::array<double, kMostHarmonics> values{};
        values.fill(26214.0 / 262144.0);
        return values;
    }
};

/// Phase of each harmonic relative to that of the fundamental, Q15 cycles, 0..32767.
using PhaseOffsets = std::array<int, kMostHarmonics>;

} // namespace orva::test
