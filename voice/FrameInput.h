/// The front of the decoder: channel bit order, forward error correction, error statistics.
#pragma once

#include "voice/ImbeDecoder.h"

#include <array>
#include <cstdint>

namespace orva::voice {

constexpr int kLargestSoftBits = 8; ///< a soft sample is held in a byte

/// Received or coded samples of one frame, each 0 .. 2^softBits - 1.
using CodedSamples = std::array<std::uint8_t, kCodedBits>;

/// Puts the received samples into coded order: four Golay words, three Hamming words, seven uncoded bits.
CodedSamples Deinterleave(const std::uint8_t* received);

/// Removes the modulation of the words behind the first by the pseudo-noise sequence that starts from the
/// first word's twelve information bits.
void DemodulatePn(CodedSamples& samples, std::uint32_t seed, int softBits);

/// Outcome of decoding one code word.
struct DecodedWord {
    std::uint32_t word;  ///< the chosen code word
    std::int16_t metric; ///< its distance to the soft samples, 16 bits; 0 for hard decisions
    std::int16_t errors; ///< bits in which it differs from the hard word
};

/// Decodes the 23 samples of a Golay word, least reliable positions inverted in all eight combinations.
DecodedWord DecodeGolayWord(const std::uint8_t* samples, int softBits);

/// Decodes the 15 samples of a Hamming word, the four least reliable positions inverted one at a time.
DecodedWord DecodeHammingWord(const std::uint8_t* samples, int softBits);

/// Decodes all words of a frame into 88 information bits, one per byte. Fills `wordErrors`, `errorTotal` and
/// `softMetricTotal`.
/// @param received  144 samples in received order
/// @param softBits  1 .. kLargestSoftBits
void DecodeFrame(const std::uint8_t* received, int softBits, std::uint8_t* information,
                 ImbeDecoderState& state);

/// Derives the repeat and mute flags from the errors of this frame and moves `errorRate` on.
/// @return  `kImbeFlagRepeat` and `kImbeFlagMute`, or'ed
std::int16_t UpdateErrorStatistics(int softBits, ImbeDecoderState& state);

} // namespace orva::voice
