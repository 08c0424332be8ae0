// The watch over the kit's plain operations. In the checked program every test ends with a look at it.
#include "voice/ArithmeticCheck.h"

#include "voice/FixedPoint.h"

#include <string>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

#ifdef ORVA_CHECKED_ARITHMETIC

// Fails every test that made an operation leave its range.
class OverflowListener : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { ClearArithmeticOverflow(); }
    void OnTestEnd(const testing::TestInfo&) override {
        const ArithmeticOverflow& overflow = FirstArithmeticOverflow();
        if (overflow.operation != nullptr) {
            ADD_FAILURE() << overflow.operation << " at " << overflow.file << ":" << overflow.line
                          << " left its range with " << overflow.value;
        }
    }
};

[[maybe_unused]] const bool kListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new OverflowListener);
    return true;
}();

TEST(ArithmeticCheck, NamesOperationValueAndPlaceOfTheFirstOverflow) {
    ClearArithmeticOverflow();
    static_cast<void>(Add(kMax32 - 1, 1));
    EXPECT_EQ(FirstArithmeticOverflow().operation, nullptr);

    const int line = __LINE__ + 1;
    static_cast<void>(Add(kMax32, 1));
    static_cast<void>(To16(40000));
    const ArithmeticOverflow overflow = FirstArithmeticOverflow();
    ClearArithmeticOverflow();
    ASSERT_NE(overflow.operation, nullptr);
    EXPECT_STREQ(overflow.operation, "Add");
    EXPECT_EQ(overflow.line, line);
    EXPECT_EQ(overflow.value, std::int64_t{kMax32} + 1);
    EXPECT_NE(std::string(overflow.file).find("ArithmeticCheckTest.cpp"), std::string::npos);
}

TEST(ArithmeticCheck, WatchesEveryPlainOperation) {
    const auto reported = [](auto&& operation) {
        ClearArithmeticOverflow();
        operation();
        const bool found = FirstArithmeticOverflow().operation != nullptr;
        ClearArithmeticOverflow();
        return found;
    };
    EXPECT_TRUE(reported([] { static_cast<void>(To16(32768)); }));
    EXPECT_TRUE(reported([] { static_cast<void>(To32(std::int64_t{1} << 31)); }));
    EXPECT_TRUE(reported([] { static_cast<void>(Add(kMin32, -1)); }));
    EXPECT_TRUE(reported([] { static_cast<void>(Sub(kMin32, 1)); }));
    EXPECT_TRUE(reported([] { static_cast<void>(Shift(0x40000000, 1)); }));
    EXPECT_TRUE(reported([] { static_cast<void>(MulQ15(kMin16, kMin16)); }));
    EXPECT_TRUE(reported([] { static_cast<void>(MulRound(kMin16, kMin16)); }));
    EXPECT_TRUE(reported([] { static_cast<void>(MacRound(kMax32, 1, 1)); }));
    EXPECT_TRUE(reported([] { static_cast<void>(MulFrac(kMin32, kMin16)); }));
}

TEST(ArithmeticCheck, LeavesWrappingAndSaturatingOperationsAlone) {
    ClearArithmeticOverflow();
    static_cast<void>(AddWrap(kMax32, 1));
    static_cast<void>(SubWrap(kMin32, 1));
    static_cast<void>(To16Wrap(32768));
    static_cast<void>(AddSat(kMax32, 1));
    static_cast<void>(SubSat(kMin32, 1));
    static_cast<void>(ShiftSat(kMax32, 3));
    static_cast<void>(MulQ15Sat(kMin16, kMin16));
    static_cast<void>(RoundSat(kMax32));
    EXPECT_EQ(FirstArithmeticOverflow().operation, nullptr);
}

#endif

TEST(ArithmeticCheck, ResultsOutOfRangeWrapInBothBuilds) {
    EXPECT_EQ(To16(40000), 40000 - 65536);
    EXPECT_EQ(Add(kMax32, 1), kMin32);
    EXPECT_EQ(Sub(kMin32, 1), kMax32);
    EXPECT_EQ(Shift(0x60000000, 1), static_cast<std::int32_t>(0xC0000000U));
    EXPECT_EQ(MulQ15(kMin16, kMin16), kMin32);
#ifdef ORVA_CHECKED_ARITHMETIC
    ClearArithmeticOverflow();
#endif
}

} // namespace
} // namespace orva::voice
