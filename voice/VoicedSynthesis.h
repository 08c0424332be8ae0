/// The voiced part of a block: harmonics 1 to 7 by oscillators whose phase is tracked across frames,
/// harmonics 8 and up by a wave table that is cross-faded from frame to frame.
#pragma once

#include "voice/ImbeDecoder.h"

#include <cstdint>

namespace orva::voice {

/// Adds the voiced part of a block of `count` samples, 103 .. 205, from `lastFrame` to `record` into `out`,
/// unit 2^-14 sample steps. `out` reaches to the end of the fade even if that lies behind `count`.
void AddVoiced(const ImbeFrameParameters& record, std::int32_t* out, int count, ImbeDecoderState& state);

/// The phase, Q15 cycles, of harmonic `harmonic` at the end of the block whose fundamental phase is in
/// `state`.
std::int16_t HarmonicPhase(int harmonic, const ImbeDecoderState& state);

/// True if the fundamentals differ by less than `count` / 800 of the newer one.
bool IsPitchClose(std::int16_t oldFundamental, std::int16_t newFundamental, int count, int nominalLength);

} // namespace orva::voice
