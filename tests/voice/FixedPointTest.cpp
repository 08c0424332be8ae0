#include "voice/FixedPoint.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

// Values around every power of two and at both ends.
std::vector<std::int32_t> TellingValues() {
    std::vector<std::int32_t> values{0, kMin32, kMin32 + 1, kMax32, kMax32 - 1};
    for (int bit = 0; bit < 31; ++bit) {
        for (int offset = -1; offset <= 1; ++offset) {
            const std::int32_t value = (1 << bit) + (bit == 0 && offset < 0 ? 0 : offset);
            values.push_back(value);
            values.push_back(-value);
        }
    }
    return values;
}

std::vector<std::int16_t> TellingMantissas() {
    std::vector<std::int16_t> values{0, kMin16, -32767, kMax16, 32766};
    for (int bit = 0; bit < 15; ++bit) {
        values.push_back(static_cast<std::int16_t>(1 << bit));
        values.push_back(static_cast<std::int16_t>(-(1 << bit)));
        values.push_back(static_cast<std::int16_t>((1 << bit) + 1 - (bit == 14 ? 3 : 0)));
    }
    return values;
}

double Value(Scaled16 x) {
    return std::ldexp(x.mantissa, x.exponent - 15);
}

double Value(Scaled32 x) {
    return std::ldexp(x.mantissa, x.exponent - 31);
}

TEST(FixedPoint, NormShiftOfZeroIsZeroAndOfMinusOneIs31) {
    EXPECT_EQ(NormShift(0), 0);
    EXPECT_EQ(NormShift(-1), 31);
    EXPECT_EQ(NormShift(1), 30);
    EXPECT_EQ(NormShift(kMax32), 0);
    EXPECT_EQ(NormShift(kMin32), 0);
}

TEST(FixedPoint, NormShiftBringsEveryValueIntoTheTopRange) {
    for (const std::int32_t x : TellingValues()) {
        if (x == 0) {
            continue;
        }
        const std::int64_t shifted = std::int64_t{x} * (std::int64_t{1} << NormShift(x));
        if (x > 0) {
            EXPECT_TRUE(shifted >= 0x40000000 && shifted <= 0x7FFFFFFF) << "x " << x;
        } else {
            EXPECT_TRUE(shifted >= -0x80000000LL && shifted <= -0x40000001LL) << "x " << x;
        }
        std::int32_t inPlace = x;
        EXPECT_EQ(Normalize(inPlace), NormShift(x));
        EXPECT_EQ(inPlace, shifted) << "x " << x;
    }
}

TEST(FixedPoint, ProductsMatchTheirFormulas) {
    for (const std::int16_t a : TellingMantissas()) {
        for (const std::int16_t b : TellingMantissas()) {
            const std::int64_t product = std::int64_t{a} * b * 2;
            const bool extreme = a == kMin16 && b == kMin16;
            EXPECT_EQ(MulQ15Sat(a, b), extreme ? kMax32 : product) << a << " x " << b;
            if (extreme) {
                continue;
            }
            EXPECT_EQ(MulQ15(a, b), product) << a << " x " << b;
            EXPECT_EQ(MulRound(a, b), (product + 32768) & ~std::int64_t{0xFFFF}) << a << " x " << b;
            EXPECT_EQ(MacRound(-12345, a, b), (product - 12345 + 32768) & ~std::int64_t{0xFFFF})
                << a << " x " << b;
        }
    }
}

TEST(FixedPoint, MulFracMultipliesTheHalvesApart) {
    for (const std::int32_t x : TellingValues()) {
        for (const std::int16_t y : TellingMantissas()) {
            if (x == kMin32 && y == kMin16) {
                continue;
            }
            const std::int64_t high = x >> 16;
            const std::int64_t low = x & 0xFFFF;
            EXPECT_EQ(MulFrac(x, y), high * y * 2 + ((low * y) >> 15)) << x << " x " << y;
            EXPECT_NEAR(MulFrac(x, y), double{1} * x * y / 32768.0, 1.0) << x << " x " << y;
        }
    }
}

TEST(FixedPoint, SumsSaturateOrWrapAsNamed) {
    for (const std::int32_t a : TellingValues()) {
        for (const std::int32_t b : TellingValues()) {
            const std::int64_t sum = std::int64_t{a} + b;
            const std::int64_t difference = std::int64_t{a} - b;
            const auto saturated = [](std::int64_t x) {
                return std::min<std::int64_t>(std::max<std::int64_t>(x, kMin32), kMax32);
            };
            EXPECT_EQ(AddSat(a, b), saturated(sum)) << a << " + " << b;
            EXPECT_EQ(SubSat(a, b), saturated(difference)) << a << " - " << b;
            EXPECT_EQ(AddWrap(a, b), static_cast<std::int32_t>(sum)) << a << " + " << b;
            EXPECT_EQ(SubWrap(a, b), static_cast<std::int32_t>(difference)) << a << " - " << b;
            if (sum == saturated(sum)) {
                EXPECT_EQ(Add(a, b), sum) << a << " + " << b;
            }
            if (difference == saturated(difference)) {
                EXPECT_EQ(Sub(a, b), difference) << a << " - " << b;
            }
        }
    }
    EXPECT_EQ(NegateSat(kMin32), kMax32);
    EXPECT_EQ(NegateSat(5), -5);
}

TEST(FixedPoint, ShiftsFollowTheSignOfTheCount) {
    EXPECT_EQ(Shift(3, 4), 48);
    EXPECT_EQ(Shift(-48, -4), -3);
    EXPECT_EQ(Shift(-1, 31), kMin32);
    EXPECT_EQ(Shift(0, 100), 0);
    for (const int count : {-31, -32, -1000}) {
        EXPECT_EQ(Shift(kMax32, count), 0) << count;
        EXPECT_EQ(Shift(-5, count), -1) << count;
        EXPECT_EQ(ShiftSat(kMax32, count), 0) << count;
        EXPECT_EQ(ShiftSat(-5, count), -1) << count;
    }
}

TEST(FixedPoint, ShiftSatSaturatesWhenBitsWouldBeLost) {
    for (const std::int32_t x : TellingValues()) {
        for (int count = -40; count <= 40; ++count) {
            const double exact = std::floor(std::ldexp(double{1} * x, count));
            const double limited = std::min(std::max(exact, -2147483648.0), 2147483647.0);
            EXPECT_EQ(ShiftSat(x, count), limited) << x << " << " << count;
        }
    }
}

TEST(FixedPoint, RoundSatRoundsTheTopHalf) {
    EXPECT_EQ(RoundSat(0x7FFF), 0);
    EXPECT_EQ(RoundSat(0x8000), 0x10000);
    EXPECT_EQ(RoundSat(-0x8000), 0);
    EXPECT_EQ(RoundSat(-0x8001), -0x10000);
    EXPECT_EQ(RoundSat(kMax32), 0x7FFF0000);
    EXPECT_EQ(RoundSat(kMin32), kMin32);
}

TEST(FixedPoint, HalvesSplitAndJoin) {
    for (const std::int32_t x : TellingValues()) {
        EXPECT_EQ(std::int64_t{ToHigh(High16(x))} + Low16(x), x);
    }
    EXPECT_EQ(To16Sat(40000), kMax16);
    EXPECT_EQ(To16Sat(-40000), kMin16);
    EXPECT_EQ(To16Sat(-1234), -1234);
}

TEST(FixedPoint, QuotientsTruncateTheMagnitude) {
    for (const std::int32_t n : TellingValues()) {
        for (const std::int16_t d : TellingMantissas()) {
            if (d == 0 || (n == kMin32 && d == -1)) {
                continue;
            }
            const std::int64_t magnitude = std::llabs(n) / std::llabs(d);
            const std::int64_t sign = (n < 0) != (d < 0) ? -1 : 1;
            EXPECT_EQ(DivInt(n, d), sign * magnitude) << n << " / " << d;
            EXPECT_EQ(DivQ15(n, d), sign * (magnitude >> 1)) << n << " / " << d;
        }
    }
    EXPECT_EQ(DivInt(4, 5), 0);
    EXPECT_EQ(DivQ15(-4, 5), 0);
    EXPECT_EQ(DivQ15(-7, 1), -3);
}

TEST(FixedPoint, DivBlockOfZeroHasExponentZero) {
    const Scaled16 quotient = DivBlock({0, 7}, {20000, -3});
    EXPECT_EQ(quotient.mantissa, 0);
    EXPECT_EQ(quotient.exponent, 0);
}

TEST(FixedPoint, DivBlockFollowsItsFormula) {
    // 0.5 / 0.5: the divisor is not above the numerator, so the numerator is halved first.
    const Scaled16 one = DivBlock({0x40000000, 3}, {0x4000, 1});
    EXPECT_EQ(one.mantissa, 16384);
    EXPECT_EQ(one.exponent, 3);
    // 0.25 / 0.75
    const Scaled16 third = DivBlock({0x20000000, 0}, {0x6000, 0});
    EXPECT_EQ(third.mantissa, ((0x20000000 / 0x6000) >> 1) << 1);
    EXPECT_EQ(third.exponent, -1);
    EXPECT_EQ(Value(DivBlock({-0x40000000, 0}, {0x4000, 0})), -1.0);
    EXPECT_EQ(Value(DivBlock({0x40000000, 0}, {-0x4000, 0})), -1.0);
    EXPECT_EQ(Value(DivBlock({kMin32, 0}, {kMin16, 0})), 1.0);
    EXPECT_EQ(Value(DivBlock({kMin32, 0}, {0x4000, 0})), -2.0);
}

TEST(FixedPoint, DivBlockOfNormalisedNumbersIsPreciseToTheLastBit) {
    std::mt19937 random(1);
    std::uniform_int_distribution<std::int32_t> numerators(0x40000000, kMax32);
    std::uniform_int_distribution<int> denominators(0x4000, 0x7FFF);
    for (int i = 0; i < 20000; ++i) {
        const Scaled32 n{i % 2 == 0 ? numerators(random) : -numerators(random), i % 31 - 15};
        const Scaled16 d{static_cast<std::int16_t>(denominators(random)), i % 17 - 8};
        const Scaled16 q = DivBlock(n, d);
        const double exact = Value(n) / Value(d);
        EXPECT_LE(std::fabs(Value(q) - exact), std::fabs(exact) / 16384.0)
            << n.mantissa << " / " << d.mantissa;
        EXPECT_TRUE(std::abs(q.mantissa) >= 0x4000) << q.mantissa;
    }
}

TEST(FixedPoint, NormalizeSumKeepsTheValue) {
    std::mt19937_64 random(2);
    for (int bits = 1; bits < 45; ++bits) {
        for (int i = 0; i < 100; ++i) {
            auto sum = static_cast<std::int64_t>(random() >> (64 - bits));
            sum = i % 2 == 0 ? sum : -sum;
            const Scaled32 normalised = NormalizeSum(sum, 5);
            EXPECT_NEAR(Value(normalised), std::ldexp(static_cast<double>(sum), 5 - 31),
                        std::ldexp(std::fabs(static_cast<double>(sum)), 5 - 31 - 29))
                << sum;
            if (sum != 0) {
                EXPECT_EQ(NormShift(normalised.mantissa), 0) << sum;
            }
        }
    }
    EXPECT_EQ(NormalizeSum(0, 5).exponent, 0);
    EXPECT_EQ(Normalized(0, 5).exponent, 0);
    EXPECT_EQ(Normalized(1, 5).exponent, 5 - 30);
    EXPECT_EQ(Normalized(1, 5).mantissa, 0x40000000);
}

TEST(FixedPoint, WrapCyclesKeepsTheSign) {
    constexpr int kShift = 11;
    constexpr std::int32_t kCycle = 1 << 20;
    constexpr std::int32_t kHalf = 0x40000000;
    EXPECT_EQ(WrapCycles(-kCycle - kCycle / 2, kShift), -kHalf);
    EXPECT_EQ(WrapCycles(kCycle + kCycle / 2, kShift), kHalf);
    EXPECT_EQ(WrapCycles(kCycle, kShift), 0);
    EXPECT_EQ(WrapCycles(-kCycle, kShift), 0);
    EXPECT_EQ(WrapCycles(kCycle - 1, kShift), kMax32 - 0x7FF);
    EXPECT_EQ(WrapCycles(kMin32, 0), 0);
    EXPECT_EQ(WrapCycles(-1, 0), -1);
    for (int s = 0; s < 31; ++s) {
        for (const std::int32_t x : TellingValues()) {
            const std::int64_t cycle = std::int64_t{1} << (31 - s);
            const std::int64_t remainder = x - (x / cycle) * cycle;
            EXPECT_EQ(WrapCycles(x, s), remainder * (std::int64_t{1} << s)) << x << ", shift " << s;
        }
    }
}

TEST(FixedPoint, WrapPrincipalGivesTheRemainderWithinHalfACycle) {
    constexpr int kShift = 11;
    constexpr std::int32_t kCycle = 1 << 20;
    EXPECT_EQ(WrapPrincipal(kCycle, kShift), 0);
    EXPECT_EQ(WrapPrincipal(kCycle / 4, kShift), 0x40000000);
    EXPECT_EQ(WrapPrincipal(-kCycle / 4, kShift), -0x40000000);
    EXPECT_EQ(WrapPrincipal(3 * kCycle / 4, kShift), -0x40000000);
    EXPECT_EQ(WrapPrincipal(5 * kCycle + 3, kShift), 3 << (kShift + 1));
    EXPECT_EQ(WrapPrincipal(kCycle / 2 - 1, kShift), 0x7FFFF000);
}

TEST(FixedPoint, Log2IsTheLogarithmForEveryMantissa) {
    // The polynomial's own error.
    constexpr double kBound = 0.0027;
    for (int v = 1; v <= kMax16; ++v) {
        const double exact = std::log2(v / 32768.0) + 3.0;
        EXPECT_NEAR(Log2(static_cast<std::int16_t>(v), 3) / 65536.0, exact, kBound) << "mantissa " << v;
    }
}

TEST(FixedPoint, Log2HasTheTellingValues) {
    // At the polynomial's centre only its constant is left.
    EXPECT_EQ(Log2(23170, 0), -32768);
    EXPECT_EQ(Log2(23170, 7), 7 * 65536 - 32768);
    EXPECT_EQ(Log2(11585, 0), -65536 - 32768);
}

TEST(FixedPoint, Exp2IsThePowerForEveryFraction) {
    constexpr double kBound = 0.00012;
    for (int x = -3 * 65536; x < 3 * 65536; ++x) {
        const Scaled32 power = Exp2(x);
        const double exact = std::exp2(x / 65536.0);
        ASSERT_NEAR(Value(power) / exact, 1.0, kBound) << "exponent " << x;
        ASSERT_GE(power.mantissa, 0x40000000) << "exponent " << x;
    }
}

TEST(FixedPoint, Exp2HasTheTellingValues) {
    EXPECT_EQ(Exp2(0).mantissa, 16384 << 16);
    EXPECT_EQ(Exp2(0).exponent, 1);
    EXPECT_EQ(Exp2(-65536).exponent, 0);
    EXPECT_EQ(Exp2(15 * 65536).exponent, 16);
}

TEST(FixedPoint, SqrtIsTheRootForEveryMantissaAndParity) {
    constexpr double kBound = 0.0014;
    for (int exponent = -3; exponent <= 3; ++exponent) {
        for (int v = 1; v <= kMax16; ++v) {
            const Scaled32 x{ToHigh(static_cast<std::int16_t>(v)), exponent};
            const Scaled16 root = Sqrt(x);
            ASSERT_NEAR(Value(root) / std::sqrt(Value(x)), 1.0, kBound)
                << "mantissa " << v << ", " << exponent;
            ASSERT_GE(root.mantissa, 0x4000 - 30) << "mantissa " << v << ", " << exponent;
        }
    }
}

TEST(FixedPoint, SqrtHasTheTellingValues) {
    // The largest mantissa just fits.
    EXPECT_EQ(Sqrt({kMax32, 0}).mantissa, 32767);
    EXPECT_EQ(Sqrt({kMax32, 0}).exponent, 0);
    EXPECT_EQ(Sqrt({0x40000000, 1}).exponent, 1);
    EXPECT_EQ(Sqrt({0x40000000, -1}).exponent, 0);
    EXPECT_EQ(Sqrt({0x40000000, 2}).exponent, 1);
}

TEST(FixedPoint, SqrtOfZeroIsZeroAndLeavesTheExponentAlone) {
    EXPECT_EQ(Sqrt({0, -7}).mantissa, 0);
    EXPECT_EQ(Sqrt({0, -7}).exponent, -7);
}

} // namespace
} // namespace orva::voice
