#include "p25/HammingCode.h"

#include "tests/support/BlockCodes.h"

#include <bit>
#include <cstdint>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

constexpr int kWordBits = 10;
constexpr int kNoBit = -1;

std::uint32_t SyndromeOf(std::uint32_t word) {
    std::uint32_t syndrome = 0;
    for (const std::uint32_t mask : {0x398U, 0x354U, 0x2E2U, 0x1E1U}) {
        syndrome = 2 * syndrome + static_cast<std::uint32_t>(std::popcount(word & mask) % 2);
    }
    return syndrome;
}

TEST(HammingCode, CleanWordsPass) {
    for (std::uint32_t data = 0; data < 64; ++data) {
        std::uint32_t status = 77;
        EXPECT_EQ(DecodeHamming(test::EncodeHamming10(data), &status), data);
        EXPECT_EQ(status, 0U) << "data " << data;
    }
}

TEST(HammingCode, CorrectsEverySingleErrorInEveryWord) {
    for (std::uint32_t data = 0; data < 64; ++data) {
        for (int bit = 0; bit < kWordBits; ++bit) {
            std::uint32_t status = 77;
            EXPECT_EQ(DecodeHamming(test::EncodeHamming10(data) ^ 1U << bit, &status), data) << "bit " << bit;
            EXPECT_EQ(status, 1U) << "data " << data << " bit " << bit;
        }
    }
}

TEST(HammingCode, FlipsTheBitOfTheSyndrome) {
    // 15 is the syndrome of no single bit; it flips bit 0 all the same.
    constexpr int kFlipped[16] = {kNoBit, 0, 1, 5, 2, kNoBit, kNoBit, 6, 3, kNoBit, kNoBit, 7, 4, 8, 9, 0};
    int met[16] = {};
    for (std::uint32_t word = 0; word < 1U << kWordBits; ++word) {
        const std::uint32_t syndrome = SyndromeOf(word);
        const int bit = kFlipped[syndrome];
        const std::uint32_t expected = (bit == kNoBit ? word : word ^ 1U << bit) >> 4;
        const std::uint32_t expectedStatus = syndrome == 0 ? 0U : bit == kNoBit ? 255U : 1U;
        std::uint32_t status = 77;
        ASSERT_EQ(DecodeHamming(word, &status), expected) << "word " << word << " syndrome " << syndrome;
        ASSERT_EQ(status, expectedStatus) << "word " << word << " syndrome " << syndrome;
        ++met[syndrome];
    }
    for (int syndrome = 0; syndrome < 16; ++syndrome) {
        EXPECT_EQ(met[syndrome], 64) << "syndrome " << syndrome;
    }
}

TEST(HammingCode, LeavesUncorrectableWordsAndSaysSo) {
    for (const std::uint32_t pattern : {0b0101U, 0b0110U, 0b1001U, 0b1010U}) {
        std::uint32_t status = 0;
        EXPECT_EQ(DecodeHamming(test::EncodeHamming10(42) ^ pattern, &status), 42U);
        EXPECT_EQ(status, kHammingUncorrectable) << "pattern " << pattern;
    }
}

TEST(HammingCode, StatusIsOptionalAndHigherBitsCountForNothing) {
    EXPECT_EQ(DecodeHamming(test::EncodeHamming10(21) | 0xFFFFFC00U), 21U);
}

} // namespace
} // namespace orva::p25
