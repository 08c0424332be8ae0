#include "voice/CodeWords.h"

#include "tests/voice/VoiceFrames.h"

#include <bit>
#include <random>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

// Calls `visit` with every pattern of 23 bits and weight 0 to 3.
template <typename Visit>
void ForEachGolayPattern(Visit&& visit) {
    visit(0U);
    for (int a = 0; a < kGolayLength; ++a) {
        visit(1U << a);
        for (int b = 0; b < a; ++b) {
            visit((1U << a) | (1U << b));
            for (int c = 0; c < b; ++c) {
                visit((1U << a) | (1U << b) | (1U << c));
            }
        }
    }
}

TEST(CodeWords, GolayCorrectsEveryPatternOfUpToThreeErrors) {
    std::mt19937 random(3);
    int patterns = 0;
    ForEachGolayPattern([&](std::uint32_t errors) {
        ++patterns;
        for (int i = 0; i < 16; ++i) {
            const std::uint32_t word = test::EncodeGolay(random() & 0xFFFU);
            ASSERT_EQ(DecodeGolay(word ^ errors), word) << "errors " << errors;
        }
    });
    EXPECT_EQ(patterns, 1 + 23 + 253 + 1771);
}

TEST(CodeWords, GolayCorrectsThreeErrorsInEveryInformationWord) {
    std::mt19937 random(4);
    for (std::uint32_t information = 0; information < 4096; ++information) {
        const std::uint32_t word = test::EncodeGolay(information);
        std::uint32_t errors = 0;
        while (std::popcount(errors) < 3) {
            errors |= 1U << (random() % kGolayLength);
        }
        ASSERT_EQ(DecodeGolay(word), word) << "information " << information;
        ASSERT_EQ(DecodeGolay(word ^ errors), word) << "information " << information << ", errors " << errors;
    }
}

TEST(CodeWords, GolayFindsACodeWordWithinThreeErrorsOfAnyWord) {
    std::mt19937 random(5);
    for (int i = 0; i < 20000; ++i) {
        const std::uint32_t received = random() & 0x7FFFFFU;
        const std::uint32_t word = DecodeGolay(received);
        ASSERT_EQ(test::EncodeGolay(word >> 11), word) << "received " << received;
        ASSERT_LE(std::popcount(word ^ received), 3) << "received " << received;
    }
}

TEST(CodeWords, HammingCorrectsEverySingleErrorInEveryWord) {
    for (std::uint32_t information = 0; information < 2048; ++information) {
        const std::uint32_t word = test::EncodeHamming(information);
        ASSERT_EQ(DecodeHamming(word), word) << "information " << information;
        for (int bit = 0; bit < kHammingLength; ++bit) {
            ASSERT_EQ(DecodeHamming(word ^ (1U << bit)), word)
                << "information " << information << ", bit " << bit;
        }
    }
}

TEST(CodeWords, HammingFindsACodeWordWithinOneErrorOfEveryWord) {
    for (std::uint32_t received = 0; received < 32768; ++received) {
        const std::uint32_t word = DecodeHamming(received);
        ASSERT_EQ(test::EncodeHamming(word >> 4), word) << "received " << received;
        ASSERT_LE(std::popcount(word ^ received), 1) << "received " << received;
    }
}

} // namespace
} // namespace orva::voice
