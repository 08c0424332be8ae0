/// Kernels that add tones and wave tables into the synthesis buffer.
///
/// The buffer holds one 32-bit value per sample, a sample step being 2^14. Partial signals are added with
/// saturation.
#pragma once

#include "voice/FixedPoint.h"

#include <cstdint>

namespace orva::voice {

/// A partial signal's scale: a 16-bit mantissa in the top half of a word at `exponent`, in sample steps, is
/// shifted left by exponent - kBufferShift to reach the buffer's unit.
constexpr int kBufferShift = 2;

/// The lowest exponent - kBufferShift at which a block of 16-bit mantissas still reaches the buffer.
constexpr int kLowestBlockShift = -15;

/// A tone with linear amplitude and linear frequency.
struct Tone {
    Scaled32 amplitude;     ///< at the first sample; mantissa in the top 16 bits x 2^exponent sample steps
    Scaled32 amplitudeStep; ///< added after each sample, in the amplitude's unit
    Scaled32 frequency;     ///< at the first sample, cycles per sample
    Scaled32 frequencyStep; ///< added after each sample, cycles per sample
};

/// Adds `count` samples of `tone` to `out`, starting at `phase`, Q15 cycles.
/// @return  the phase after the last sample, Q15 cycles, 0 .. 32767; `phase` itself when count is not
/// positive
std::int16_t AddOscillator(std::int32_t* out, int count, std::int16_t phase, const Tone& tone);

/// Wave table phases have 23 bits: the top 7 are the index, the low 16 the fraction.
constexpr int kWavePhaseBits = 23;
constexpr std::uint32_t kWavePhaseMask = (1U << kWavePhaseBits) - 1;

/// Reads `table`, 128 entries and the first again, with linear interpolation and adds it to `out`.
/// @param phase      23-bit phase of the first sample
/// @param increment  phase per sample
/// @param exponent   block exponent of the table; when it is too low to reach the buffer nothing is read
/// @return           the phase after the last sample; `phase` itself when nothing was read
std::uint32_t ReadWave(std::int32_t* out, int count, std::uint32_t phase, std::uint32_t increment,
                       const std::int16_t* table, int exponent);

/// As `ReadWave`, the top 16 bits of every value multiplied by a gain.
/// @param gain      Q15, of the first sample
/// @param gainStep  added after each sample
std::uint32_t ReadWaveFaded(std::int32_t* out, int count, std::uint32_t phase, std::uint32_t increment,
                            const std::int16_t* table, int exponent, std::int16_t gain,
                            std::int16_t gainStep);

} // namespace orva::voice
