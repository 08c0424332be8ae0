/// The synthesis steps of a frame record, and the block they are made of.
#pragma once

#include "voice/ImbeDecoder.h"

#include <cstdint>

namespace orva::voice {

/// Most and fewest samples that one frame can be asked for.
constexpr int kMaxSampleCount = 240;
constexpr int kMinSampleCount = 132;

/// Conditions a freshly unpacked record, then `SynthesizeFrame`.
void SynthesizeNewFrame(ImbeFrameParameters& record, std::int16_t* samples, int count,
                        ImbeDecoderState& state);

/// Synthesises `count` samples, 132 .. 240, from a conditioned record: one block, or two halves when the
/// count is too long for the transforms.
void SynthesizeFrame(ImbeFrameParameters& record, std::int16_t* samples, int count, ImbeDecoderState& state);

/// Takes the silence frame into the record, then `SynthesizeFrame`.
void SynthesizeSilence(ImbeFrameParameters& record, std::int16_t* samples, int count,
                       ImbeDecoderState& state);

/// Synthesises one block of 103 .. 205 samples and stores the record as the last frame.
void SynthesizeBlock(const ImbeFrameParameters& record, std::int16_t* samples, int count,
                     ImbeDecoderState& state);

} // namespace orva::voice
