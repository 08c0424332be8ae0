#include "toolkit/TmySet.h"

#include "tests/support/RandomSource.h"

#include <set>

#include <climits>
#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

struct Range {
    std::int32_t first;
    std::int32_t last;
};

TEST(TmySet, StartsEmpty) {
    const TmySet set(0, 7);
    EXPECT_TRUE(set.IsEmpty());
    for (std::int32_t value = -1; value <= 8; ++value) {
        EXPECT_FALSE(set.Contains(value)) << value;
    }
}

TEST(TmySet, AddsAndRemovesSingleValues) {
    for (const Range range : {Range{0, 7}, {0, 31}, {0, 32}, {-5, 58}, {0, 5040}, {100, 100}}) {
        TmySet set(range.first, range.last);
        for (std::int32_t value = range.first; value <= range.last; ++value) {
            set.Add(value);
            EXPECT_TRUE(set.Contains(value)) << value;
            EXPECT_FALSE(set.Contains(value - 1)) << value;
            EXPECT_FALSE(set.Contains(value + 1)) << value;
            EXPECT_EQ(set.First(), value);
            EXPECT_FALSE(set.IsEmpty());
            set.Add(value);
            set.Remove(value);
            EXPECT_FALSE(set.Contains(value)) << value;
            EXPECT_TRUE(set.IsEmpty()) << value;
            set.Remove(value);
            EXPECT_TRUE(set.IsEmpty()) << value;
        }
    }
}

TEST(TmySet, IgnoresValuesOutsideItsRange) {
    for (const Range range : {Range{0, 7}, {-3, 4}, {0, 5040}, {10, 9}}) {
        TmySet set(range.first, range.last);
        for (const std::int32_t value : {range.first - 1, range.last + 1, INT32_MIN, INT32_MAX}) {
            set.Add(value);
            EXPECT_FALSE(set.Contains(value)) << value;
            set.Remove(value);
            EXPECT_TRUE(set.IsEmpty()) << value;
        }
    }
}

TEST(TmySet, FirstIsTheLowestValue) {
    TmySet set(-40, 5040);
    set.Add(5040);
    EXPECT_EQ(set.First(), 5040);
    set.Add(33);
    EXPECT_EQ(set.First(), 33);
    set.Add(-40);
    EXPECT_EQ(set.First(), -40);
    set.Remove(-40);
    EXPECT_EQ(set.First(), 33);
    set.Remove(33);
    EXPECT_EQ(set.First(), 5040);
}

TEST(TmySet, FirstOfAnEmptySetIsBelowTheRange) {
    EXPECT_EQ(TmySet(0, 7).First(), -1);
    EXPECT_EQ(TmySet(0, 5040).First(), -1);
    EXPECT_EQ(TmySet(100, 200).First(), 99);
    EXPECT_EQ(TmySet(10, 5).First(), 9);
}

TEST(TmySet, HoldsEveryValueOfItsRange) {
    TmySet thunks(0, 5040);
    for (std::int32_t value = 0; value <= 5040; ++value) {
        thunks.Add(value);
    }
    for (std::int32_t value = 0; value <= 5040; ++value) {
        EXPECT_EQ(thunks.First(), value);
        thunks.Remove(value);
    }
    EXPECT_TRUE(thunks.IsEmpty());
}

TEST(TmySet, RangesReachTheEndsOfTheIntegers) {
    TmySet low(INT32_MIN, INT32_MIN + 40);
    low.Add(INT32_MIN);
    EXPECT_EQ(low.First(), INT32_MIN);
    low.Add(INT32_MAX);
    low.Remove(INT32_MIN);
    EXPECT_TRUE(low.IsEmpty());
    TmySet high(INT32_MAX - 40, INT32_MAX);
    high.Add(INT32_MAX);
    EXPECT_TRUE(high.Contains(INT32_MAX));
    EXPECT_EQ(high.First(), INT32_MAX);
    EXPECT_FALSE(high.Contains(INT32_MIN));
    TmySet aroundZero(INT32_MIN / 256, INT32_MAX / 256);
    aroundZero.Add(INT32_MAX / 256);
    EXPECT_EQ(aroundZero.First(), INT32_MAX / 256);
}

TEST(TmySet, AgreesWithAnOrderedSet) {
    test::RandomSource random(7);
    for (const Range range : {Range{0, 7}, {-16, 15}, {-16, 16}, {3, 5043}}) {
        TmySet set(range.first, range.last);
        std::set<std::int32_t> model;
        const std::uint32_t values = static_cast<std::uint32_t>(range.last - range.first) + 1;
        for (int i = 0; i < 20000; ++i) {
            const std::int32_t value = range.first + static_cast<std::int32_t>(random.Below(values));
            EXPECT_EQ(set.Contains(value), model.contains(value));
            if (random.Below(2) == 0) {
                set.Add(value);
                model.insert(value);
            } else {
                set.Remove(value);
                model.erase(value);
            }
            ASSERT_EQ(set.IsEmpty(), model.empty());
            ASSERT_EQ(set.First(), model.empty() ? range.first - 1 : *model.begin());
        }
    }
}

} // namespace
} // namespace orva::toolkit
