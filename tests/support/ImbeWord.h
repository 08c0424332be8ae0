/// Channel coding of an IMBE full-rate voice frame (TIA-102.BABA): 88 information bits to 144 channel bits.
#pragma once

#include "tests/support/VoiceCode.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace orva::test {

constexpr int kVoiceChannelBits = 144;
constexpr int kVoiceWords = 8; ///< c0 .. c7, the last one uncoded

/// One bit a byte, in the order of the air.
using ChannelBits = std::array<std::uint8_t, kVoiceChannelBits>;

/// Bits to flip in c0 .. c7 on the channel; the low 23, 15 or 7 bits of each mask.
using VoiceErrorPattern = std::array<std::uint32_t, kVoiceWords>;

/// Golay and Hamming coding of u0 .. u6, PN modulation by u0, interleaving.
ChannelBits EncodeImbeWord(const VoiceBits& information, const VoiceErrorPattern& errors = {});

/// The 88 bits as 22 lower-case hex digits, first bit in the first digit.
std::string ToHex(const VoiceBits& information);

/// Reads `ToHex`'s form, either case. False when `hex` is no such text; `information` is then unchanged.
bool FromHex(std::string_view hex, VoiceBits& information);

} // namespace orva::test
