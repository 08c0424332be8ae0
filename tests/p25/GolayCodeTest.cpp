#include "p25/GolayCode.h"

#include "tests/support/BlockCodes.h"

#include <bit>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

constexpr int kWordBits = 23;
constexpr int kHeaderWordBits = 18;

/// All patterns of `weight` set bits among the low `width` ones.
std::vector<std::uint32_t> PatternsOfWeight(int width, int weight) {
    std::vector<std::uint32_t> patterns;
    for (std::uint32_t pattern = 0; pattern < 1U << width; ++pattern) {
        if (std::popcount(pattern) == weight) {
            patterns.push_back(pattern);
        }
    }
    return patterns;
}

TEST(GolayCode, EveryCodeWordLeavesNoRemainder) {
    for (unsigned information = 0; information < 4096; ++information) {
        ASSERT_EQ(GolayRemainder(test::EncodeGolay23(information)), 0U) << "information " << information;
    }
}

TEST(GolayCode, RemainderIsThatOfTheLongDivision) {
    EXPECT_EQ(GolayRemainder(0x7FF), 0x7FFU);    // short of the generator's degree
    EXPECT_EQ(GolayRemainder(0x800), 0x475U);    // the generator without its top bit
    EXPECT_EQ(GolayRemainder(0xC75U << 11), 0U); // a multiple
    EXPECT_EQ(GolayRemainder(0xC75U << 11 | 5), 5U);
}

TEST(GolayCode, CorrectsEveryPatternOfUpToThreeErrors) {
    for (int weight = 0; weight <= 3; ++weight) {
        const std::vector<std::uint32_t> patterns = PatternsOfWeight(kWordBits, weight);
        for (const unsigned information : {0x000U, 0xFFFU, 0xA5AU, 0x001U, 0x800U, 0x3C7U, 0x92EU}) {
            const std::uint32_t word = test::EncodeGolay23(information);
            for (const std::uint32_t pattern : patterns) {
                ASSERT_EQ(CorrectGolay(word ^ pattern), word)
                    << "information " << information << " pattern " << pattern;
            }
        }
    }
}

TEST(GolayCode, FourErrorsEndInAnotherCodeWord) {
    const std::uint32_t word = test::EncodeGolay23(0x5A3);
    for (const std::uint32_t pattern : PatternsOfWeight(kWordBits, 4)) {
        const std::uint32_t corrected = CorrectGolay(word ^ pattern);
        ASSERT_EQ(GolayRemainder(corrected), 0U) << "pattern " << pattern;
        ASSERT_NE(corrected, word) << "pattern " << pattern;
    }
}

TEST(GolayCode, DropsBitsAboveTheWord) {
    const std::uint32_t word = test::EncodeGolay23(0x123);
    EXPECT_EQ(CorrectGolay(word | 0xFF800000U), word);
    EXPECT_EQ(GolayRemainder(word | 0xFF800000U), 0U);
}

TEST(GolayHeaderWord, CorrectsEveryTwoErrorsInEverySymbol) {
    for (int weight = 0; weight <= 2; ++weight) {
        const std::vector<std::uint32_t> patterns = PatternsOfWeight(kHeaderWordBits, weight);
        for (std::uint32_t symbol = 0; symbol < 64; ++symbol) {
            const std::uint32_t word = test::EncodeGolay18(symbol);
            for (const std::uint32_t pattern : patterns) {
                ASSERT_EQ(DecodeHeaderWord(word ^ pattern), symbol) << "pattern " << pattern;
            }
        }
    }
}

TEST(GolayHeaderWord, CorrectsThreeErrorsUnlessTheParityBitIsOneMore) {
    // Read as a plain Golay word, the parity bit in the lowest place is an error whenever it arrives as 1.
    int corrected = 0;
    int tried = 0;
    const std::vector<std::uint32_t> patterns = PatternsOfWeight(kHeaderWordBits, 3);
    for (std::uint32_t symbol = 0; symbol < 64; ++symbol) {
        const std::uint32_t word = test::EncodeGolay18(symbol);
        for (const std::uint32_t pattern : patterns) {
            const std::uint32_t received = word ^ pattern;
            const bool right = DecodeHeaderWord(received) == symbol;
            const int errors = std::popcount(pattern >> 1) + static_cast<int>(received & 1U);
            if (errors <= 3) {
                ASSERT_TRUE(right) << "symbol " << symbol << " pattern " << pattern;
            }
            corrected += right ? 1 : 0;
            ++tried;
        }
    }
    EXPECT_GT(corrected, tried / 2);
    EXPECT_LT(corrected, tried);
}

} // namespace
} // namespace orva::p25
