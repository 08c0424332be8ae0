#include "tools/orva-decode/Timeline.h"

#include <numeric>

#include <gtest/gtest.h>

namespace orva::tools {
namespace {

constexpr auto kRow = static_cast<std::size_t>(FrameRow::Tsbk);

std::uint32_t CountFrames(const Timeline& timeline) {
    return std::accumulate(timeline.Slots().begin(), timeline.Slots().end(), 0U,
                           [](std::uint32_t sum, const TimeSlot& slot) { return sum + slot.frames[kRow]; });
}

TEST(Timeline, BeginsWithSlotsOfTwentyMilliseconds) {
    Timeline timeline;
    EXPECT_TRUE(timeline.Slots().empty());
    ++timeline.At(0.05).frames[kRow];
    EXPECT_EQ(timeline.SlotSeconds(), 0.02);
    ASSERT_EQ(timeline.Slots().size(), 3U);
    EXPECT_EQ(timeline.Slots()[2].frames[kRow], 1U);
    EXPECT_EQ(CountFrames(timeline), 1U);
}

TEST(Timeline, JoinsNeighboursWhenThereAreTooMany) {
    Timeline timeline;
    for (std::size_t i = 0; i < Timeline::kMaxSlots; ++i) {
        TimeSlot& slot = timeline.At(0.02 * (static_cast<double>(i) + 0.5));
        slot.frames[kRow] = static_cast<std::uint32_t>(i);
        slot.errorRateSum = 1.0;
        slot.errorRateCount = 1;
    }
    EXPECT_EQ(timeline.Slots().size(), Timeline::kMaxSlots);
    timeline.At(16.0);
    EXPECT_EQ(timeline.SlotSeconds(), 0.04);
    ASSERT_EQ(timeline.Slots().size(), Timeline::kMaxSlots / 2 + 1);
    for (std::size_t i = 0; i < Timeline::kMaxSlots / 2; ++i) {
        EXPECT_EQ(timeline.Slots()[i].frames[kRow], 4 * i + 1) << "slot " << i;
        EXPECT_EQ(timeline.Slots()[i].errorRateSum, 2.0) << "slot " << i;
        EXPECT_EQ(timeline.Slots()[i].errorRateCount, 2U) << "slot " << i;
    }
    EXPECT_EQ(timeline.Slots().back().frames[kRow], 0U);
}

TEST(Timeline, KeepsAnOddLastSlot) {
    Timeline timeline;
    timeline.At(0.05).frames[kRow] = 7;
    timeline.At(16.0);
    EXPECT_EQ(timeline.Slots()[1].frames[kRow], 7U);
}

TEST(Timeline, StaysBoundedHoweverLongTheInput) {
    Timeline timeline;
    constexpr int kDays = 3;
    constexpr int kStep = 5; // seconds
    std::uint32_t noted = 0;
    for (int seconds = 0; seconds < kDays * 86400; seconds += kStep) {
        ++timeline.At(seconds).frames[kRow];
        ++noted;
        ASSERT_LE(timeline.Slots().size(), Timeline::kMaxSlots) << seconds << " s";
    }
    EXPECT_EQ(CountFrames(timeline), noted);
    EXPECT_GE(timeline.SlotSeconds() * static_cast<double>(Timeline::kMaxSlots), kDays * 86400.0);
}

TEST(Timeline, TakesALeapIntoTheFuture) {
    Timeline timeline;
    ++timeline.At(0.0).frames[kRow];
    ++timeline.At(1e9).frames[kRow];
    EXPECT_LE(timeline.Slots().size(), Timeline::kMaxSlots);
    EXPECT_EQ(timeline.Slots().front().frames[kRow], 1U);
    EXPECT_EQ(timeline.Slots().back().frames[kRow], 1U);
}

} // namespace
} // namespace orva::tools
