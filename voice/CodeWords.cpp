#include "voice/CodeWords.h"

#include <array>
#include <bit>

namespace orva::voice {

namespace {

constexpr std::uint32_t kGolayWordMask = (1U << kGolayLength) - 1;
constexpr std::uint32_t kSyndromeMask = 0x7FF;
constexpr std::uint32_t kSyndromeCarry = 0x800;
constexpr std::uint32_t kGeneratorTail = 0x475; // the generator 0xC75 without its leading term

// Multiplies a syndrome by x modulo the generator: the syndrome of the word rotated left by one.
std::uint32_t Advance(std::uint32_t syndrome) {
    syndrome <<= 1;
    return (syndrome & kSyndromeCarry) != 0 ? (syndrome ^ kGeneratorTail) & kSyndromeMask : syndrome;
}

std::uint32_t GolaySyndrome(std::uint32_t word) {
    std::uint32_t remainder = 0;
    for (int bit = kGolayLength - 1; bit >= 0; --bit) {
        remainder = Advance(remainder) ^ ((word >> bit) & 1U);
    }
    return remainder;
}

// One error-trapping pass: the word is rotated until all errors but the probed one lie in the parity bits.
struct TrappingPass {
    int weightLimit;
    std::uint32_t probeSyndrome;
    std::uint32_t probeError;
};

constexpr std::array<TrappingPass, 3> kTrappingPasses{{
    {3, 0, 0},
    {2, 870, 1U << 16},
    {2, 1740, 1U << 17},
}};

} // namespace

std::uint32_t DecodeGolay(std::uint32_t word) {
    const std::uint32_t received = GolaySyndrome(word);
    for (const TrappingPass& pass : kTrappingPasses) {
        std::uint32_t syndrome = received;
        for (int i = kGolayLength - 1; i >= 0; --i) {
            const std::uint32_t trapped = syndrome ^ pass.probeSyndrome;
            if (std::popcount(trapped) <= pass.weightLimit) {
                const std::uint32_t errors = trapped | pass.probeError;
                return (word ^ (errors >> (kGolayLength - 1 - i)) ^ (errors << (i + 1))) & kGolayWordMask;
            }
            syndrome = Advance(syndrome);
        }
    }
    return word;
}

std::uint32_t DecodeHamming(std::uint32_t word) {
    constexpr int kParityBits = kHammingLength - kHammingInformation;
    constexpr std::array<std::uint32_t, kParityBits> kParityMasks{2032, 1934, 1645, 1371};
    constexpr std::array<std::uint32_t, 16> kErrorPatterns{0, 8,   4,  2048, 2,  512,  64,  8192,
                                                           1, 256, 32, 4096, 16, 1024, 128, 16384};
    const std::uint32_t information = word >> kParityBits;
    std::uint32_t parity = word;
    std::uint32_t syndrome = 0;
    for (std::size_t k = kParityBits; k-- > 0;) {
        const auto expected = static_cast<std::uint32_t>(std::popcount(information & kParityMasks[k]));
        syndrome = (syndrome << 1) | ((parity ^ expected) & 1U);
        parity >>= 1;
    }
    return word ^ kErrorPatterns[syndrome];
}

} // namespace orva::voice
