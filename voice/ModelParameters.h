/// From the 88 information bits of a frame to its model: harmonics, fundamental, voicing, log amplitudes.
#pragma once

#include "voice/ImbeDecoder.h"

#include <array>
#include <cstdint>

namespace orva::voice {

/// Log amplitudes are log2 in Q11, clamped to this range.
constexpr std::int32_t kLowestLogAmplitude = -30720;
constexpr std::int32_t kHighestLogAmplitude = 30719;

/// The 88 bits in field order, one per byte: pitch code 0..7, gain code 8..13, coefficient fields, voicing
/// bits up to 86, a spare bit.
using ParameterVector = std::array<std::uint8_t, kInformationBits>;

/// Sorts the information bits of a frame of L harmonics into field order.
ParameterVector BuildParameterVector(const std::uint8_t* bits, int harmonics);

/// The value of a coefficient.
/// @param code       0 .. 2^bits - 1
/// @param bits       0 .. 12
/// @param deviation  standard deviation of the coefficient, Q16 octaves
/// @return           Q11 octaves
std::int16_t Dequantize(int code, int bits, std::int16_t deviation);

/// Inverse cosine transform of x[0 .. length - 1] in place: output n is x[0] + 2 sum x[k] cos(pi k (n + 1/2)
/// / length). 1 <= length <= 56. Absurd inputs wrap.
void InverseDct(std::int16_t* x, int length);

/// Predicts the log amplitudes of a frame of L harmonics from those of the last unpacked frame.
/// @param prediction  [harmonics] Q11 octaves
void PredictAmplitudes(const ImbeDecoderState& state, int harmonics, std::int16_t* prediction);

/// Unpacks the 88 information bits, one per byte, into `record`: kind, harmonics, fundamental, voicing, log
/// amplitudes. Updates the prediction's memory in `state`. A frame that holds no voice only gets `kind` 0.
/// Always clears `pitchGate`.
void UnpackFrame(ImbeFrameParameters& record, ImbeDecoderState& state, const std::uint8_t* bits);

} // namespace orva::voice
