/// Conditioning of a freshly unpacked frame, in this order: `DerivePhases`, `LogToLinear`, `EnhanceSpectrum`,
/// `AdaptVoicing`, `ScaleUnvoiced`. A repeated frame is conditioned already.
#pragma once

#include "voice/ImbeDecoder.h"

namespace orva::voice {

/// Gives every harmonic the phase that a minimum-phase system with this spectral envelope would have: a
/// discrete Hilbert transform of the log amplitudes along the harmonic number. Fills `phaseDispersion`, Q15
/// cycles.
void DerivePhases(const ImbeFrameParameters& record, ImbeDecoderState& state);

/// Turns log amplitudes, Q11 octaves, into linear mantissas with one `amplitudeExponent`, in sample steps.
void LogToLinear(ImbeFrameParameters& record);

/// Weights the amplitudes for the ear, by factors from 0.5 to 1.2, keeps the frame's energy, and moves the
/// smoothed energy of `state` on.
void EnhanceSpectrum(ImbeFrameParameters& record, ImbeDecoderState& state);

/// On a noisy channel turns harmonics that stand out of the smoothed energy to voiced; limits the sum of the
/// amplitudes to 20480 sample steps.
void AdaptVoicing(ImbeFrameParameters& record, const ImbeDecoderState& state);

/// Multiplies the unvoiced harmonics by sqrt(256 fundamental).
void ScaleUnvoiced(ImbeFrameParameters& record);

} // namespace orva::voice
