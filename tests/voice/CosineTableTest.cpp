#include "voice/CosineTable.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

TEST(CosineTable, IsTheRoundedCosine) {
    for (int i = 0; i < kCosTableSize; ++i) {
        const double exact = 32767.0 * std::cos(2.0 * std::numbers::pi * i / kCosTableSize);
        EXPECT_EQ(CosAt(i), std::lround(exact)) << "entry " << i << ", exact value " << exact;
    }
}

TEST(CosineTable, HasTheTellingEntries) {
    EXPECT_EQ(kCosTable.size(), 512U);
    EXPECT_EQ(CosAt(0), 32767);
    EXPECT_EQ(CosAt(1), 32765);
    EXPECT_EQ(CosAt(64), 23170);
    EXPECT_EQ(CosAt(128), 0);
    EXPECT_EQ(CosAt(256), -32767);
    EXPECT_EQ(CosAt(384), 0);
}

TEST(CosineTable, WrapsIndices) {
    for (int i = -1024; i < 1024; ++i) {
        EXPECT_EQ(CosAt(i), CosAt(i + 512)) << "index " << i;
        EXPECT_EQ(CosAt(i), CosAt(-i)) << "index " << i;
    }
}

} // namespace
} // namespace orva::voice
