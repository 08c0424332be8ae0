#include "toolkit/DigitColumns.h"

#include <limits>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr int kRow = 16;

DigitColumns ColumnsAt(std::int64_t value) {
    DigitColumns columns(kRow);
    columns.SetValue(value);
    return columns;
}

void Finish(DigitColumns& columns) {
    constexpr int kEnough = 20;
    int steps = 0;
    while (columns.Step()) {
        ASSERT_LT(++steps, kEnough);
    }
}

TEST(DigitColumns, ShowOneDigitEach) {
    const DigitColumns columns = ColumnsAt(1234567890123456);
    for (int column = 0; column < DigitColumns::kCount; ++column) {
        EXPECT_EQ(columns.Offset(column), "6543210987654321"[column] % '0' * kRow) << column;
    }
    EXPECT_FALSE(columns.IsMoving());
}

TEST(DigitColumns, KeepSignAndDigitsAboveTheColumns) {
    for (const std::int64_t value : {std::int64_t{0}, std::int64_t{-5}, std::int64_t{9999999999999999},
                                     std::int64_t{120000000000000034}, kMin, kMax, -kMax}) {
        EXPECT_EQ(ColumnsAt(value).Value(), value);
    }
}

TEST(DigitColumns, RollByRowsInSmallerAndSmallerSteps) {
    DigitColumns columns = ColumnsAt(4500);
    columns.Roll(1, 1);
    EXPECT_EQ(columns.Value(), 4510);
    EXPECT_EQ(columns.Offset(1), 0);
    for (const int offset : {8, 12, 14, 15}) {
        EXPECT_TRUE(columns.Step());
        EXPECT_EQ(columns.Offset(1), offset);
    }
    EXPECT_FALSE(columns.Step());
    EXPECT_EQ(columns.Offset(1), kRow);
    EXPECT_EQ(columns.Value(), 4510);
}

TEST(DigitColumns, RollAroundWithoutCarry) {
    DigitColumns columns = ColumnsAt(1990);
    columns.Roll(1, 1);
    EXPECT_EQ(columns.Value(), 1900);
    Finish(columns);
    EXPECT_EQ(columns.Offset(1), 0);
    columns.Roll(3, -2);
    EXPECT_EQ(columns.Value(), 9900);
    Finish(columns);
    EXPECT_EQ(columns.Offset(3), 9 * kRow);
    columns.Roll(0, 1000003);
    EXPECT_EQ(columns.Value(), 9903);
}

TEST(DigitColumns, RollOnWhileTheyMove) {
    DigitColumns columns = ColumnsAt(0);
    columns.Roll(0, 1);
    columns.Step();
    columns.Roll(0, 2);
    EXPECT_EQ(columns.Value(), 3);
    columns.Roll(0, -4);
    EXPECT_EQ(columns.Value(), 9);
    Finish(columns);
    EXPECT_EQ(columns.Offset(0), 9 * kRow);
}

TEST(DigitColumns, FollowADragAndRestAtTheNearestDigit) {
    DigitColumns columns = ColumnsAt(-50);
    columns.Drag(1, 7);
    EXPECT_EQ(columns.Offset(1), 5 * kRow + 7);
    EXPECT_EQ(columns.Value(), -50);
    columns.Drag(1, 1);
    EXPECT_EQ(columns.Value(), -60);
    columns.Release(1);
    EXPECT_TRUE(columns.IsMoving());
    Finish(columns);
    EXPECT_EQ(columns.Offset(1), 6 * kRow);
    columns.Drag(1, -100 * kRow);
    EXPECT_EQ(columns.Value(), -60);
    columns.Drag(0, -1);
    columns.Release(0);
    Finish(columns);
    EXPECT_EQ(columns.Value(), -60);
}

TEST(DigitColumns, LimitTheNumberTo64Bits) {
    DigitColumns columns = ColumnsAt(kMax);
    columns.Roll(15, 6); // 9229...
    EXPECT_EQ(columns.Value(), kMax);
    columns = ColumnsAt(kMin);
    columns.Roll(15, 6);
    EXPECT_EQ(columns.Value(), kMin);
}

TEST(DigitColumns, IgnoreColumnsThatDoNotExist) {
    DigitColumns columns(0);
    columns.SetValue(77);
    columns.Roll(-1, 1);
    columns.Roll(DigitColumns::kCount, 1);
    columns.Drag(-1, 5);
    columns.Release(99);
    EXPECT_EQ(columns.Value(), 77);
    EXPECT_EQ(columns.Offset(99), 0);
    EXPECT_EQ(columns.RowHeight(), 1);
}

} // namespace
} // namespace orva::toolkit
