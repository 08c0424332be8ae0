/// Conditioning of a received speech model before synthesis, in real numbers.
#pragma once

#include "tests/support/FloatVoiceFrame.h"

#include <limits>

namespace orva::test {

/// What the channel decoder says about the frame.
struct VoiceErrorFigures {
    int errorRate = 0;  ///< smoothed, Q15
    int errorTotal = 0; ///< corrected bits of this frame
    int firstHammingWordErrors = 0;
};

class FloatVoiceConditioner {
public:
    /// Starts a new stream.
    void Reset();

    /// Fills the amplitudes of `frame` from `logAmplitudes` and may force harmonics to voiced.
    void Condition(FloatVoiceFrame& frame, const LogSpectrum& logAmplitudes, const VoiceErrorFigures& errors);

    /// Phase offsets of the last frame conditioned.
    const PhaseOffsets& Phases() const { return phases; }

    /// Smoothed energy, in squares of full scale.
    double Energy() const { return energy; }

    /// How near the last frame's amplitudes came to being forced to voiced or not, as a share of the
    /// threshold; infinite where nothing was at stake. A decoder that rounds may decide a near tie the other
    /// way.
    double VoicingMargin() const { return voicingMargin; }

private:
    void DerivePhases(const FloatVoiceFrame& frame, const LogSpectrum& logAmplitudes);
    void EnhanceSpectrum(FloatVoiceFrame& frame);
    void TrackEnergy(double frameEnergy);
    void ForceStrongToVoiced(FloatVoiceFrame& frame, const VoiceErrorFigures& errors);

    PhaseOffsets phases{};
    double voicingMargin = std::numeric_limits<double>::infinity();
    double energy = 18750.0 / 32768.0 / 8192.0;
};

} // namespace orva::test
