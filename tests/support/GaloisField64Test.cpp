#include "tests/support/GaloisField64.h"

#include <set>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

TEST(GaloisField64, PrimitiveElementGeneratesEveryNonZeroElementOnce) {
    std::set<int> elements;
    for (int exponent = 0; exponent < kFieldOrder; ++exponent) {
        elements.insert(FieldPower(exponent));
    }
    EXPECT_EQ(elements.size(), 63u);
    EXPECT_EQ(*elements.begin(), 1);
    EXPECT_EQ(*elements.rbegin(), 63);
}

TEST(GaloisField64, PrimitiveElementIsARootOfTheFieldPolynomial) {
    EXPECT_EQ(FieldPower(6) ^ FieldPower(1) ^ FieldPower(0), 0);
}

TEST(GaloisField64, ExponentsAddModulo63) {
    for (int a = 0; a < kFieldOrder; ++a) {
        for (int b = 0; b < kFieldOrder; ++b) {
            ASSERT_EQ(FieldProduct(FieldPower(a), FieldPower(b)), FieldPower(a + b)) << a << " " << b;
        }
    }
    EXPECT_EQ(FieldPower(-1), FieldPower(62));
}

TEST(GaloisField64, ZeroTimesAnythingIsZero) {
    for (std::uint8_t element = 0; element < 64; ++element) {
        EXPECT_EQ(FieldProduct(0, element), 0);
        EXPECT_EQ(FieldProduct(element, 0), 0);
    }
}

} // namespace
} // namespace orva::test
