#include "tests/support/RandomSource.h"

#include <cmath>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

TEST(RandomSource, RepeatsForTheSameSeed) {
    RandomSource a(5);
    RandomSource b(5);
    RandomSource other(6);
    bool differs = false;
    for (int i = 0; i < 100; ++i) {
        const auto value = a.Next();
        EXPECT_EQ(value, b.Next());
        differs |= value != other.Next();
    }
    EXPECT_TRUE(differs);
}

TEST(RandomSource, GivesThePublishedSequence) {
    RandomSource random(0);
    EXPECT_EQ(random.Next(), 0xE220A8397B1DCDAFu);
    EXPECT_EQ(random.Next(), 0x6E789E6AA1B965F4u);
}

TEST(RandomSource, SpreadsEvenlyBelowABound) {
    RandomSource random(1);
    int counts[5] = {};
    for (int i = 0; i < 50000; ++i) {
        ++counts[random.Below(5)];
    }
    for (const int count : counts) {
        EXPECT_NEAR(count, 10000, 400);
    }
}

TEST(RandomSource, GaussianHasMeanZeroAndDeviationOne) {
    RandomSource random(1);
    constexpr int kCount = 200000;
    double sum = 0.0;
    double squares = 0.0;
    int beyondTwo = 0;
    for (int i = 0; i < kCount; ++i) {
        const double value = random.Gaussian();
        sum += value;
        squares += value * value;
        beyondTwo += std::abs(value) > 2.0;
    }
    EXPECT_NEAR(sum / kCount, 0.0, 0.01);
    EXPECT_NEAR(squares / kCount, 1.0, 0.01);
    EXPECT_NEAR(static_cast<double>(beyondTwo) / kCount, 0.0455, 0.002);
}

} // namespace
} // namespace orva::test
