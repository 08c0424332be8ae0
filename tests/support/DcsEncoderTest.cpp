#include "tests/support/DcsEncoder.h"

#include <gtest/gtest.h>

namespace orva::test {

TEST(DcsEncoder, WordsBeginWithTheCodeAndTheFixedBits) {
    for (unsigned code = 0; code < 512; ++code) {
        EXPECT_EQ(DcsWord(code) & 0xFFFU, code | 0x800U) << std::oct << code;
        EXPECT_EQ(DcsWord(code) >> 23, 0U) << std::oct << code;
    }
}

TEST(DcsEncoder, WordsStayInTheCodeWhenTheyAreRotated) {
    for (unsigned code = 0; code < 512; ++code) {
        // A cyclic code's words are the multiples of its generator, whichever bit comes first.
        std::uint32_t word = DcsWord(code);
        for (int places = 0; places < 23; ++places) {
            word = word >> 1 | (word & 1U) << 22;
            std::uint32_t remainder = word;
            for (int bit = 22; bit >= 11; --bit) {
                remainder ^= (remainder >> bit & 1U) != 0 ? 0xC75U << (bit - 11) : 0U;
            }
            EXPECT_EQ(remainder, 0U) << std::oct << code << std::dec << " by " << places;
        }
    }
}

TEST(DcsEncoder, KnownWords) {
    EXPECT_EQ(DcsWord(0006), 0x7EE806U);
    EXPECT_EQ(DcsWord(0023), 0x763813U);
}

TEST(DcsEncoder, SendsBit0FirstAndOnesBelow) {
    constexpr int kRate = 26880; // 200 samples a bit
    const std::uint32_t word = DcsWord(0131);
    for (const bool inverted : {false, true}) {
        DcsEncoder encoder(0131, inverted, kRate);
        for (int bit = 0; bit < 3 * 23; ++bit) {
            for (int i = 0; i < 200; ++i) {
                const double level = encoder.NextLevel();
                if (i == 100) {
                    const bool below = (word >> (bit % 23) & 1U) != 0;
                    EXPECT_EQ(level, below != inverted ? -1.0 : 1.0) << inverted << " bit " << bit;
                }
            }
        }
    }
}

} // namespace orva::test
