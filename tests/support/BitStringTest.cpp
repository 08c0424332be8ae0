#include "tests/support/BitString.h"

#include <gtest/gtest.h>

namespace orva::test {
namespace {

TEST(BitString, PutsTheMostSignificantBitFirst) {
    BitString bits;
    bits.Append(0b100, 3);
    bits.Append(0b1, 1);
    EXPECT_EQ(bits.Dibits(), "21");
}

TEST(BitString, IgnoresBitsAboveTheWidth) {
    BitString bits;
    bits.Append(0xFF, 2);
    EXPECT_EQ(bits.Size(), 2u);
}

TEST(BitString, GivesFieldsBack) {
    BitString bits;
    bits.Append(0x123456789ABCDEF0u, 64);
    EXPECT_EQ(bits.Field(0, 64), 0x123456789ABCDEF0u);
    EXPECT_EQ(bits.Field(4, 12), 0x234u);
}

TEST(BitString, CutsSymbolsOfSixBits) {
    BitString bits;
    bits.Append(0b111110'000001, 12);
    EXPECT_EQ(bits.Symbols(), (std::vector<std::uint8_t>{62, 1}));
}

TEST(BitString, PadsWithZeros) {
    BitString bits;
    bits.Append(3, 2);
    bits.PadTo(6);
    EXPECT_EQ(bits.Dibits(), "300");
    bits.PadTo(2);
    EXPECT_EQ(bits.Size(), 6u);
}

TEST(BitString, AppendsAnother) {
    BitString first;
    first.Append(2, 2);
    BitString second;
    second.Append(1, 2);
    first.Append(second);
    EXPECT_EQ(first.Dibits(), "21");
}

} // namespace
} // namespace orva::test
