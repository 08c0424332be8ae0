#include "toolkit/NumberText.h"

#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

TEST(NumberText, WritesDecimalNumbers) {
    EXPECT_EQ(FormatNumber(0, NumberBase::Decimal), "0");
    EXPECT_EQ(FormatNumber(-17, NumberBase::Decimal), "-17");
    EXPECT_EQ(FormatNumber(kMax, NumberBase::Decimal), "9223372036854775807");
    EXPECT_EQ(FormatNumber(kMin, NumberBase::Decimal), "-9223372036854775808");
}

TEST(NumberText, WritesHexadecimalNumbersInTheCaseAskedFor) {
    EXPECT_EQ(FormatNumber(0, NumberBase::LowerHexadecimal), "0");
    EXPECT_EQ(FormatNumber(0xF7E, NumberBase::LowerHexadecimal), "f7e");
    EXPECT_EQ(FormatNumber(0xF7E, NumberBase::UpperHexadecimal), "F7E");
    EXPECT_EQ(FormatNumber(-1, NumberBase::UpperHexadecimal), "FFFFFFFFFFFFFFFF");
    EXPECT_EQ(FormatNumber(kMin, NumberBase::LowerHexadecimal), "8000000000000000");
}

TEST(NumberText, ReadsTheNumberThatATextBeginsWith) {
    const struct {
        const char* text;
        std::int64_t value;
    } cases[]{
        {"123", 123}, {"-123", -123}, {"+5", 5},  {" \t 42", 42},  {"12abc", 12}, {"1-2", 1},  {"007", 7},
        {"- 5", 0},   {"--5", 0},     {"", 0},    {"-", 0},        {"+", 0},      {"junk", 0}, {"   ", 0},
        {"1 2", 1},   {".5", 0},      {"3.9", 3}, {"\xFF\x80", 0}, {"0x10", 0},   {"1e3", 1},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(ParseNumber(each.text, NumberBase::Decimal), each.value) << '"' << each.text << '"';
    }
}

TEST(NumberText, LimitsDecimalNumbersTo64Bits) {
    EXPECT_EQ(ParseNumber("9223372036854775807", NumberBase::Decimal), kMax);
    EXPECT_EQ(ParseNumber("9223372036854775808", NumberBase::Decimal), kMax);
    EXPECT_EQ(ParseNumber("-9223372036854775808", NumberBase::Decimal), kMin);
    EXPECT_EQ(ParseNumber("-9223372036854775809", NumberBase::Decimal), kMin);
    EXPECT_EQ(ParseNumber("12345678901234567890", NumberBase::Decimal), kMax); // 20 digits, below 2^64
    EXPECT_EQ(ParseNumber("99999999999999999999", NumberBase::Decimal), kMax); // 20 digits, above
    EXPECT_EQ(ParseNumber("-99999999999999999999", NumberBase::Decimal), kMin);
    EXPECT_EQ(ParseNumber("00000000000000000000012", NumberBase::Decimal), 12);
    EXPECT_EQ(ParseNumber(std::string(4000, '9').c_str(), NumberBase::Decimal), kMax);
}

TEST(NumberText, ReadsHexadecimalNumbersInEitherCase) {
    for (const NumberBase base : {NumberBase::LowerHexadecimal, NumberBase::UpperHexadecimal}) {
        EXPECT_EQ(ParseNumber("f7E", base), 0xF7E);
        EXPECT_EQ(ParseNumber("0x1f", base), 0x1F);
        EXPECT_EQ(ParseNumber("0X1F", base), 0x1F);
        EXPECT_EQ(ParseNumber("0x", base), 0);
        EXPECT_EQ(ParseNumber("-10", base), -16);
        EXPECT_EQ(ParseNumber("fg", base), 0xF);
        EXPECT_EQ(ParseNumber("ghost", base), 0);
        EXPECT_EQ(ParseNumber("", base), 0);
        EXPECT_EQ(ParseNumber("ffffffffffffffff", base), -1);
        EXPECT_EQ(ParseNumber("7fffffffffffffff", base), kMax);
        EXPECT_EQ(ParseNumber("10000000000000000", base), kMax); // 65 bits
        EXPECT_EQ(ParseNumber("-10000000000000000", base), kMin);
        EXPECT_EQ(ParseNumber("12345678901234567890", base), kMax); // 20 digits
    }
}

TEST(NumberText, ReadsBackWhatItWrites) {
    std::mt19937_64 random(7);
    for (int round = 0; round < 2000; ++round) {
        const auto value = static_cast<std::int64_t>(random() >> (random() % 64));
        for (const std::int64_t each : {value, -value}) {
            for (const NumberBase base :
                 {NumberBase::Decimal, NumberBase::LowerHexadecimal, NumberBase::UpperHexadecimal}) {
                ASSERT_EQ(ParseNumber(FormatNumber(each, base).c_str(), base), each);
            }
            const int decimals = static_cast<int>(random() % 19);
            ASSERT_EQ(ParseFixedPoint(FormatFixedPoint(each, decimals).c_str(), decimals), each) << decimals;
        }
    }
    for (int decimals = 0; decimals <= kMostDecimals; ++decimals) {
        EXPECT_EQ(ParseFixedPoint(FormatFixedPoint(kMin, decimals).c_str(), decimals), kMin);
        EXPECT_EQ(ParseFixedPoint(FormatFixedPoint(kMax, decimals).c_str(), decimals), kMax);
    }
}

TEST(NumberText, PutsThePointBeforeTheDecimals) {
    const struct {
        std::int64_t value;
        int decimals;
        const char* text;
    } cases[]{
        {0, 0, "0"},        {1234, 0, "1234"},       {0, 1, "0.0"},
        {5, 1, "0.5"},      {-5, 1, "-0.5"},         {60, 1, "6.0"},
        {5, 2, "0.05"},     {-1234, 2, "-12.34"},    {1234, 3, "1.234"},
        {1, 4, "0.0001"},   {-99999, 5, "-0.99999"}, {1234567, 6, "1.234567"},
        {7, 6, "0.000007"}, {12, -3, "12"},          {kMin, 6, "-9223372036854.775808"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(FormatFixedPoint(each.value, each.decimals), each.text);
    }
}

TEST(NumberText, CutsOrPadsTheDecimalsItReads) {
    const struct {
        const char* text;
        int decimals;
        std::int64_t value;
    } cases[]{
        {"1.5", 1, 15},
        {"1.59", 1, 15},
        {"-1.59", 1, -15},
        {"1", 1, 10},
        {"1.", 2, 100},
        {".5", 2, 50},
        {"-.5", 2, -50},
        {"-0.5", 1, -5},
        {"1.5", 0, 1},
        {"1.25", 6, 1250000},
        {"1.2.3", 2, 120},
        {"1,5", 2, 100},
        {"", 3, 0},
        {"junk", 3, 0},
        {".", 3, 0},
        {"-", 3, 0},
        {" +2.5 dB", 2, 250},
        {"1.x5", 2, 100},
        {"0.0000019", 6, 1},
        {"3", -1, 3},
        {"12345678901234567890", 0, kMax},
        {"12345678901234567890", 6, kMax},
        {"-12345678901234567890.5", 3, kMin},
        {"9223372036854.775807", 6, kMax},
        {"9223372036854.775808", 6, kMax},
        {"-9223372036854.775808", 6, kMin},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(ParseFixedPoint(each.text, each.decimals), each.value)
            << '"' << each.text << "\" with " << each.decimals;
    }
}

} // namespace
} // namespace orva::toolkit
