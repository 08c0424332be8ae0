#include "toolkit/NumberStep.h"

#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr NumberRange kNoLimits{};

std::int64_t Wheeled(std::int64_t value, int notches, const WheelRules& rules,
                     const NumberRange& range = kNoLimits) {
    return MoveByWheel(value, notches, rules, range).value;
}

TEST(NumberRange, LimitsUnlessBothEndsAre0) {
    EXPECT_EQ(kNoLimits.Limit(kMax), kMax);
    EXPECT_EQ(kNoLimits.Limit(kMin), kMin);
    const NumberRange range{-5, 10};
    EXPECT_EQ(range.Limit(-6), -5);
    EXPECT_EQ(range.Limit(-5), -5);
    EXPECT_EQ(range.Limit(10), 10);
    EXPECT_EQ(range.Limit(11), 10);
    EXPECT_EQ((NumberRange{0, 3}).Limit(-1), 0);
    EXPECT_EQ((NumberRange{-3, 0}).Limit(1), 0);
}

TEST(NumberStep, RoundsTowards0) {
    EXPECT_EQ(RoundToStep(47, 16), 32);
    EXPECT_EQ(RoundToStep(-47, 16), -32);
    EXPECT_EQ(RoundToStep(48, 16), 48);
    EXPECT_EQ(RoundToStep(47, -16), 32);
    EXPECT_EQ(RoundToStep(15, 16), 0);
    EXPECT_EQ(RoundToStep(47, 0), 47);
    EXPECT_EQ(RoundToStep(kMin, -1), kMin);
    EXPECT_EQ(RoundToStep(kMax, kMax), kMax);
    EXPECT_EQ(RoundToStep(kMax - 1, kMax), 0);
}

/// The first digit's place by the number's own text.
std::int64_t StepByText(std::int64_t base, int digits) {
    if (base == 0) {
        return 1;
    }
    std::string text = std::to_string(base);
    if (text[0] == '-') {
        text.erase(0, 1);
    }
    const int zeros = static_cast<int>(text.size()) - 1 - digits;
    return zeros > 0 ? std::stoll("1" + std::string(static_cast<std::size_t>(zeros), '0')) : 1;
}

TEST(NumberStep, FollowsTheSizeOfTheNumber) {
    EXPECT_EQ(StepForSize(4500, 1), 100);
    EXPECT_EQ(StepForSize(0, 1), 1);
    EXPECT_EQ(StepForSize(9, 1), 1);
    EXPECT_EQ(StepForSize(kMin, 1), 100000000000000000);
    EXPECT_EQ(StepForSize(kMax, 18), 1);
    EXPECT_EQ(StepForSize(kMax, 40), 1);
}

TEST(NumberStep, IsExactAtEveryPowerOfTen) {
    std::int64_t power = 1;
    for (int decade = 0; decade <= 18; ++decade, power = decade <= 18 ? power * 10 : power) {
        for (const std::int64_t near : {power - 1, power, power + 1}) {
            for (int digits = 1; digits <= 20; ++digits) {
                ASSERT_EQ(StepForSize(near, digits), StepByText(near, digits)) << near << ' ' << digits;
                ASSERT_EQ(StepForSize(-near, digits), StepByText(near, digits)) << -near << ' ' << digits;
            }
        }
    }
}

TEST(WheelMove, AddsTheStepForEachNotch) {
    EXPECT_EQ(Wheeled(7, 1, {5, 0, false}), 12);
    EXPECT_EQ(Wheeled(7, -1, {5, 0, false}), 2);
    EXPECT_EQ(Wheeled(7, -3, {5, 0, false}), -8);
    EXPECT_EQ(Wheeled(7, 4, {0, 0, true}), 7);
}

TEST(WheelMove, TellsTheStepThatItUsed) {
    EXPECT_EQ(MoveByWheel(4500, 1, {7, 1, false}, kNoLimits).step, 100);
    EXPECT_EQ(MoveByWheel(4500, 1, {7, 0, false}, kNoLimits).step, 7);
    EXPECT_EQ(Wheeled(4500, 1, {7, 1, false}), 4600);
}

TEST(WheelMove, GoesDownFromADecadeByTheStepsBelowIt) {
    const WheelRules rules{1, 1, true};
    EXPECT_EQ(Wheeled(1000, 1, rules), 1100);
    EXPECT_EQ(Wheeled(1000, -1, rules), 990);
    EXPECT_EQ(Wheeled(990, 1, rules), 1000);
    EXPECT_EQ(Wheeled(10, -1, rules), 9);
    EXPECT_EQ(Wheeled(9, 1, rules), 10);
    // Below 0 the base of a notch up is the number itself, that of a notch down the larger one.
    EXPECT_EQ(Wheeled(-1000, 1, rules), -900);
    EXPECT_EQ(Wheeled(-999, -1, rules), -1000);
    EXPECT_EQ(Wheeled(-1000, -1, rules), -1100);
}

TEST(WheelMove, CrossesTheSign) {
    const WheelRules rules{1, 1, true};
    EXPECT_EQ(Wheeled(0, 1, rules), 1);
    EXPECT_EQ(Wheeled(0, -1, rules), -1);
    EXPECT_EQ(Wheeled(1, -1, rules), 0);
    EXPECT_EQ(Wheeled(-1, 1, rules), 0);
    EXPECT_EQ(Wheeled(5, -10, {1, 0, false}), -5);
    EXPECT_EQ(Wheeled(3, -1, {5, 0, true}), 0);
    EXPECT_EQ(Wheeled(-3, 1, {5, 0, true}), 0);
}

TEST(WheelMove, SnapsToTheNextMultiple) {
    const WheelRules rules{1, 1, true};
    EXPECT_EQ(Wheeled(4550, 1, rules), 4600);
    EXPECT_EQ(Wheeled(4550, -1, rules), 4500);
    EXPECT_EQ(Wheeled(4500, 1, rules), 4600);
    EXPECT_EQ(Wheeled(4500, -1, rules), 4400);
    EXPECT_EQ(Wheeled(-4550, 1, rules), -4500);
    EXPECT_EQ(Wheeled(-4550, -1, rules), -4600);
    EXPECT_EQ(Wheeled(4550, 2, rules), 4700);
    EXPECT_EQ(Wheeled(4550, -2, rules), 4400);
}

TEST(WheelMove, EndsAtTheLimits) {
    const NumberRange range{-9999, 9999};
    EXPECT_EQ(Wheeled(9990, 1, {100, 0, false}, range), 9999);
    EXPECT_EQ(Wheeled(-9990, -1, {100, 0, false}, range), -9999);
    EXPECT_EQ(Wheeled(0, 1000000, {100, 0, false}, range), 9999);
}

TEST(WheelMove, NeverWraps) {
    EXPECT_EQ(Wheeled(kMax - 1, 5, {1, 0, false}), kMax);
    EXPECT_EQ(Wheeled(kMin + 1, -5, {1, 0, false}), kMin);
    EXPECT_EQ(Wheeled(0, 3, {kMax, 0, false}), kMax);
    EXPECT_EQ(Wheeled(0, -3, {kMax, 0, false}), kMin);
    EXPECT_EQ(Wheeled(kMin, -1, {1, 1, true}), kMin);
    EXPECT_EQ(Wheeled(kMax, std::numeric_limits<int>::min(), {kMax, 0, false}), kMin);
    EXPECT_EQ(Wheeled(kMin, std::numeric_limits<int>::max(), {kMax, 0, true}), kMax);
}

/// With snap, a notch leads to the nearest multiple of the step in its direction.
TEST(WheelMove, SnapsForAnyNumberAndStep) {
    std::mt19937_64 random(11);
    for (int round = 0; round < 5000; ++round) {
        const auto value = static_cast<std::int64_t>(random() % 20001) - 10000;
        const auto step = static_cast<std::int64_t>(random() % 300) + 1;
        std::int64_t up = value + 1;
        while (up % step != 0) {
            ++up;
        }
        std::int64_t down = value - 1;
        while (down % step != 0) {
            --down;
        }
        ASSERT_EQ(Wheeled(value, 1, {step, 0, true}), up) << value << " by " << step;
        ASSERT_EQ(Wheeled(value, -1, {step, 0, true}), down) << value << " by " << step;
    }
}

} // namespace
} // namespace orva::toolkit
