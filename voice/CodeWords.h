/// Algebraic decoders of the voice frame's two block codes, Golay(23,12) and Hamming(15,11). A word holds its
/// information bits first, in the high bits, and its parity in the low bits.
#pragma once

#include <cstdint>

namespace orva::voice {

constexpr int kGolayLength = 23;
constexpr int kGolayInformation = 12;
constexpr int kHammingLength = 15;
constexpr int kHammingInformation = 11;

/// The code word within three bit errors of `word`; every word has one. Generator polynomial
/// x^11 + x^10 + x^6 + x^5 + x^4 + x^2 + 1.
std::uint32_t DecodeGolay(std::uint32_t word);

/// The code word within one bit error of `word`; every word has one.
std::uint32_t DecodeHamming(std::uint32_t word);

} // namespace orva::voice
