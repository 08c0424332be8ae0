#include "p25/HammingCode.h"

#include <bit>

namespace orva::p25 {

namespace {

constexpr int kParityBits = 4;
constexpr std::uint32_t kWordMask = 0x3FF;
/// Parity checks, the one for the syndrome's top bit first.
constexpr std::uint32_t kChecks[kParityBits] = {920, 852, 738, 481};
constexpr std::uint8_t kNone = 255;
/// The wrong bit by syndrome. 15 names bit 0, although that bit alone gives 1: kept as the table stands.
constexpr std::uint8_t kWrongBit[16] = {kNone, 0, 1, 5, 2, kNone, kNone, 6, 3, kNone, kNone, 7, 4, 8, 9, 0};

} // namespace

std::uint32_t DecodeHamming(std::uint32_t word, std::uint32_t* status) {
    word &= kWordMask;
    std::uint32_t syndrome = 0;
    for (const std::uint32_t check : kChecks) {
        syndrome = syndrome << 1 | (static_cast<std::uint32_t>(std::popcount(word & check)) & 1U);
    }
    std::uint32_t result = 0;
    if (syndrome != 0) {
        const std::uint8_t bit = kWrongBit[syndrome];
        result = bit == kNone ? kHammingUncorrectable : 1;
        if (bit != kNone) {
            word ^= 1U << bit;
        }
    }
    if (status != nullptr) {
        *status = result;
    }
    return word >> kParityBits;
}

} // namespace orva::p25
