#include "voice/BitAllocation.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

std::vector<int> Row(int harmonics) {
    const auto row = AllocationRow(harmonics);
    return {row.begin(), row.end()};
}

TEST(BitAllocation, EveryRowSumsTo73LessTheVoicingBits) {
    for (int harmonics = kMinHarmonics; harmonics <= kMaxHarmonics; ++harmonics) {
        const std::vector<int> row = Row(harmonics);
        EXPECT_EQ(row.size(), static_cast<std::size_t>(harmonics - 1));
        const int bands = std::min(12, (harmonics + 2) / 3);
        EXPECT_EQ(std::accumulate(row.begin(), row.end(), 0), 73 - bands) << "harmonics " << harmonics;
    }
}

TEST(BitAllocation, HasTheTellingRows) {
    EXPECT_EQ(Row(9), (std::vector{10, 9, 9, 9, 9, 9, 8, 7}));
    EXPECT_EQ(Row(10), (std::vector{9, 9, 8, 8, 8, 9, 7, 6, 5}));
    EXPECT_EQ(Row(20), (std::vector{6, 5, 5, 4, 4, 5, 4, 5, 4, 4, 3, 3, 2, 3, 2, 1, 3, 2, 1}));
    EXPECT_EQ(Row(56),
              (std::vector{3, 3, 2, 2, 2, 3, 2, 2, 1, 1, 1, 1, 0, 3, 2, 2, 1, 1, 1, 1, 0, 2, 2, 1, 1, 1, 1, 1,
                           0, 2, 2, 1, 1, 1, 0, 0, 0, 2, 1, 1, 1, 1, 0, 0, 0, 0, 2, 1, 1, 1, 0, 0, 0, 0, 0}));
}

TEST(BitAllocation, RowsFollowEachOther) {
    int first = 0;
    for (int harmonics = kMinHarmonics; harmonics <= kMaxHarmonics; ++harmonics) {
        EXPECT_EQ(AllocationRow(harmonics).data() - kBitAllocation.data(), first)
            << "harmonics " << harmonics;
        first += harmonics - 1;
    }
    EXPECT_EQ(static_cast<std::size_t>(first), kBitAllocation.size());
}

TEST(BitAllocation, GainCoefficientsAlwaysHaveBits) {
    for (int harmonics = kMinHarmonics; harmonics <= kMaxHarmonics; ++harmonics) {
        const std::vector<int> row = Row(harmonics);
        EXPECT_GE(*std::min_element(row.begin(), row.begin() + 5), 1) << "harmonics " << harmonics;
        // Within a block fields never grow longer.
        int next = 5;
        for (int block = 0; block < 6; ++block) {
            const int length = harmonics / 6 + (block < 6 * (harmonics / 6 + 1) - harmonics ? 0 : 1);
            for (int k = 2; k < length; ++k) {
                EXPECT_LE(row[static_cast<std::size_t>(next + k - 1)],
                          row[static_cast<std::size_t>(next + k - 2)])
                    << "harmonics " << harmonics << ", block " << block;
            }
            next += length - 1;
        }
        EXPECT_EQ(next, harmonics - 1);
    }
}

TEST(BitAllocation, VoicingBandsAreThreeHarmonicsWide) {
    EXPECT_EQ(VoicingBands(9), 3);
    EXPECT_EQ(VoicingBands(10), 4);
    EXPECT_EQ(VoicingBands(12), 4);
    EXPECT_EQ(VoicingBands(33), 11);
    EXPECT_EQ(VoicingBands(34), 12);
    EXPECT_EQ(VoicingBands(36), 12);
    EXPECT_EQ(VoicingBands(56), 12);
}

} // namespace
} // namespace orva::voice
