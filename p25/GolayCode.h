/// Golay(23,12) with generator x^11 + x^10 + x^6 + x^5 + x^4 + x^2 + 1, as the header data unit uses it.
#pragma once

#include <cstdint>

namespace orva::p25 {

/// Remainder of `word`, up to 23 bits, by the generator.
std::uint32_t GolayRemainder(std::uint32_t word);

/// The 23-bit code word nearest to `word`: up to three wrong bits are corrected. Bits above 22 are dropped.
std::uint32_t CorrectGolay(std::uint32_t word);

/// The six information bits of an 18-bit header word. On the air it is an extended word, shortened: its
/// overall parity bit stands last. Read as a plain (23,12) word shortened by five, it still yields its top
/// six bits right with any two bits wrong, and mostly with three.
std::uint32_t DecodeHeaderWord(std::uint32_t word);

} // namespace orva::p25
