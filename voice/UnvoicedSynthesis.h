/// The noise-like part of a block: windowed white noise, shaped in the frequency domain, overlap-added.
#pragma once

#include "voice/ImbeDecoder.h"

#include <array>
#include <cstdint>

namespace orva::voice {

/// Length of a cross-fade between frames. It lies in the middle of the nominal frame.
constexpr int kFadeLength = 50;

/// sqrt(i / 50) in Q15, i = 0 .. 50: read upwards it fades in, read downwards it fades out.
extern const std::array<std::int16_t, kFadeLength + 1> kFadeWindow;

/// First sample of the cross-fade of a frame of nominal length, and first sample behind it.
constexpr int FadeBegin(int nominalLength) {
    return nominalLength / 2 - kFadeLength / 2;
}
constexpr int FadeEnd(int nominalLength) {
    return nominalLength / 2 + kFadeLength / 2;
}

/// The next value of the decoder's noise generator, white, all 16 bits.
std::int16_t NextNoise(std::uint16_t& seed);

/// Writes the unvoiced part of a block into `out`, unit 2^-14 sample steps: `count` entries, or up to the end
/// of the fade if that is more.
/// @param count  103 .. 205
void SynthesizeUnvoiced(const ImbeFrameParameters& record, std::int32_t* out, int count,
                        ImbeDecoderState& state);

/// Moves `pitchAverage` towards the record's fundamental if half of its pitch gate's bits are set.
void UpdatePitchAverage(const ImbeFrameParameters& record, ImbeDecoderState& state);

} // namespace orva::voice
