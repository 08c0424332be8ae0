/// The voiced part of synthetic speech, in real numbers: an oscillator bank for harmonics 1..7 and a table of
/// one period for those above.
#pragma once

#include "tests/support/FloatVoiceFrame.h"

#include <span>

namespace orva::test {

/// Adds `value` to `sum`, sample steps, within the range of the decoder's synthesis buffer.
void AddWithinBuffer(double& sum, double value);

class FloatVoicedSynthesis {
public:
    /// Starts a new stream.
    void Reset();

    /// Adds one frame, in sample steps, to `buffer`. [160]
    void Add(std::span<double> buffer, const FloatVoiceFrame& old, const FloatVoiceFrame& next,
             const PhaseOffsets& phases);

    /// Running phase of the fundamental at the end of the last frame, Q15 cycles, 0..32767.
    int FundamentalPhase() const { return fundamentalPhase; }

private:
    void AddLowHarmonics(std::span<double> buffer, const FloatVoiceFrame& old, const FloatVoiceFrame& next,
                         const PhaseOffsets& phases);
    void AddHighHarmonics(std::span<double> buffer, const FloatVoiceFrame& old, const FloatVoiceFrame& next,
                          const PhaseOffsets& phases);
    void BuildTable(const FloatVoiceFrame& frame, const PhaseOffsets& phases);
    int AddTable(std::span<double> buffer, int phase, int increment, int gain, int gainStep) const;

    static constexpr int kLowHarmonics = 7;
    static constexpr int kTableLength = 128;

    int fundamentalPhase = 0;
    std::array<int, kLowHarmonics> lowPhases{};
    std::array<double, kTableLength + 1> table{};
};

} // namespace orva::test
