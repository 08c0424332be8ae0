#include "tests/support/ErrorInjector.h"

#include "tests/support/BlockCodes.h"
#include "tests/support/FrameBuilder.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

TEST(ErrorInjector, CleanPlanChangesNothing) {
    ErrorInjector errors;
    const std::string sync(kSyncDibits);
    EXPECT_EQ(errors.SpoilSync(sync), sync);
    EXPECT_EQ(errors.SpoilNid(0x123456789ABCDEF0u), 0x123456789ABCDEF0u);
    EXPECT_EQ(errors.VoiceErrors(), VoiceErrorPattern{});
    EXPECT_EQ(errors.StatusSymbol(), errors.StatusSymbol());
}

TEST(ErrorInjector, FlipsExactlyAsManyBitsWithinTheWidth) {
    ErrorInjector errors;
    for (int count = 0; count <= 18; ++count) {
        for (int trial = 0; trial < 50; ++trial) {
            const std::uint64_t flipped = errors.FlipBits(0, 18, count);
            ASSERT_EQ(std::popcount(flipped), count);
            ASSERT_EQ(flipped >> 18, 0u);
        }
    }
}

TEST(ErrorInjector, FlipsEveryPlaceSometimes) {
    ErrorInjector errors;
    std::uint64_t places = 0;
    for (int trial = 0; trial < 300; ++trial) {
        places |= errors.FlipBits(0, 23, 1);
    }
    EXPECT_EQ(places, 0x7FFFFFu);
}

TEST(ErrorInjector, ReplacesExactlyAsManySymbols) {
    ErrorInjector errors;
    for (int trial = 0; trial < 100; ++trial) {
        std::vector<std::uint8_t> symbols(36, 21);
        errors.ReplaceSymbols(symbols, 8);
        ASSERT_EQ(std::count(symbols.begin(), symbols.end(), 21), 28);
        ASSERT_LT(*std::max_element(symbols.begin(), symbols.end()), 64);
    }
}

TEST(ErrorInjector, SyncErrorsAreOneCharacterOff) {
    ErrorInjector errors(ErrorPlan::Heaviest());
    for (int trial = 0; trial < 100; ++trial) {
        const std::string spoilt = errors.SpoilSync(std::string(kSyncDibits));
        int sum = 0;
        for (std::size_t i = 0; i < spoilt.size(); ++i) {
            const int difference = std::abs(spoilt[i] - kSyncDibits[i]);
            ASSERT_LE(difference, 1);
            ASSERT_TRUE(spoilt[i] >= '0' && spoilt[i] <= '3');
            sum += difference;
        }
        ASSERT_EQ(sum, 10);
    }
}

TEST(ErrorInjector, NidErrorsSpareTheParityBitUnlessAsked) {
    ErrorInjector errors({.nidBits = 11});
    for (int trial = 0; trial < 100; ++trial) {
        const std::uint64_t spoilt = errors.SpoilNid(0);
        ASSERT_EQ(std::popcount(spoilt), 11);
        ASSERT_EQ(spoilt & 1, 0u);
    }
    ErrorInjector parity({.nidParity = true});
    std::set<std::uint64_t> seen;
    for (int trial = 0; trial < 100; ++trial) {
        seen.insert(parity.SpoilNid(0));
    }
    EXPECT_EQ(seen, (std::set<std::uint64_t>{0, 1}));
}

TEST(ErrorInjector, HeaviestPlanLoadsEveryVoiceWordToItsLimit) {
    ErrorInjector errors(ErrorPlan::Heaviest());
    for (int trial = 0; trial < 100; ++trial) {
        const VoiceErrorPattern pattern = errors.VoiceErrors();
        for (std::size_t word = 0; word < 4; ++word) {
            ASSERT_EQ(std::popcount(pattern[word]), 3);
            ASSERT_EQ(pattern[word] >> 23, 0u);
        }
        for (std::size_t word = 4; word < 7; ++word) {
            ASSERT_EQ(std::popcount(pattern[word]), 1);
            ASSERT_EQ(pattern[word] >> 15, 0u);
        }
        ASSERT_EQ(pattern[7], 0u);
    }
}

TEST(ErrorInjector, RandomStatusTakesAllFourValues) {
    ErrorInjector errors({.randomStatus = true});
    std::set<char> seen;
    for (int trial = 0; trial < 100; ++trial) {
        seen.insert(errors.StatusSymbol());
    }
    EXPECT_EQ(seen, (std::set<char>{'0', '1', '2', '3'}));
}

} // namespace
} // namespace orva::test
