#include "p25/FrameSync.h"

#include <string>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

struct Distance {
    int sum;
    int largest;

    bool operator==(const Distance&) const = default;
};

void PrintTo(const Distance& distance, std::ostream* out) {
    *out << "sum " << distance.sum << " largest " << distance.largest;
}

Distance DistanceOf(const std::string& window) {
    Distance distance = {};
    distance.sum = SyncDistance(window.data(), distance.largest);
    return distance;
}

TEST(FrameSync, PatternIsTheStandards) {
    // 0x5575F5FF77FF, two bits a symbol: 01 is +3, class "1", and 11 is -3, class "3".
    std::string expected;
    for (int shift = 46; shift >= 0; shift -= 2) {
        expected.push_back((0x5575F5FF77FFULL >> shift & 3U) == 1 ? '1' : '3');
    }
    EXPECT_EQ(kSyncPattern, expected);
    EXPECT_EQ(expected.size(), static_cast<std::size_t>(kSyncLength));
}

TEST(FrameSync, ThePatternItselfHasNoDistance) {
    EXPECT_EQ(DistanceOf(kSyncPattern), (Distance{0, 0}));
}

TEST(FrameSync, OneLevelOffAddsOne) {
    for (std::size_t place = 0; place < kSyncLength; ++place) {
        for (const int step : {-1, +1}) {
            std::string window = kSyncPattern;
            window[place] = static_cast<char>(window[place] + step);
            EXPECT_EQ(DistanceOf(window), (Distance{1, 1})) << "place " << place;
        }
    }
}

TEST(FrameSync, OppositeSymbolAddsTwo) {
    for (std::size_t place = 0; place < kSyncLength; ++place) {
        std::string window = kSyncPattern;
        window[place] = window[place] == '1' ? '3' : '1';
        EXPECT_EQ(DistanceOf(window), (Distance{2, 2})) << "place " << place;
    }
}

TEST(FrameSync, WorksOnCharacterCodes) {
    EXPECT_EQ(DistanceOf(std::string(kSyncLength, '\0')), (Distance{11 * '1' + 13 * '3', '3'}));
    EXPECT_EQ(DistanceOf(std::string(kSyncLength, '0')), (Distance{11 * 1 + 13 * 3, 3}));
    EXPECT_EQ(DistanceOf(std::string(kSyncLength, '2')), (Distance{24, 1}));
}

} // namespace
} // namespace orva::p25
