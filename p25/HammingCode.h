/// Hamming(10,6), which protects link control and encryption sync words (TIA-102.BAAA).
#pragma once

#include <cstdint>

namespace orva::p25 {

/// Status of a decode in which no single bit explains the syndrome.
constexpr std::uint32_t kHammingUncorrectable = 255;

/// The six data bits (bits 9 .. 4) of a 10-bit word with up to one wrong bit corrected. `status`, which may
/// be null, receives 0 for a clean word, 1 for a corrected one, 255 for one left as it is.
std::uint32_t DecodeHamming(std::uint32_t word, std::uint32_t* status = nullptr);

} // namespace orva::p25
