#include "plugin/HostInterface.h"

#include "p25/TrunkingRecord.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace orva::plugin {

namespace {

TEST(HostInterface, KeepsTheNumbersThatHostsKnow) {
    EXPECT_EQ(kInterfaceNumber, 1153U);
    EXPECT_STREQ(kPluginName, "ORVA");
    EXPECT_EQ(kPluginNameLength, 4U);
    EXPECT_EQ(kUnsupported, 0x80000000U);
    EXPECT_EQ(kStartRefused, 0xFFFFFFFFU);
    EXPECT_EQ(kAudioOfferParam, 3U);
    EXPECT_EQ(squelch_type::kAll, 0x306U);
    EXPECT_EQ(static_cast<std::uint32_t>(ModeNumber::Digital), 19U);
    EXPECT_EQ(static_cast<std::uint32_t>(ModeNumber::Fm), 2U);
}

TEST(HostInterface, StatesTheSizesOfWhatIsSent) {
    for (const std::uint32_t samples : {0U, 1U, 1024U}) {
        EXPECT_EQ(AudioOfferSize(samples), 2 * samples + 19);
    }
    for (const std::uint32_t count : {1U, 2U, 50U}) {
        EXPECT_EQ(TrunkingReportSize(count), 162 + 22 * (count - 1));
    }
    EXPECT_EQ(kTrunkingReportRecordSize, p25::kTrunkingRecordSize);
}

} // namespace

} // namespace orva::plugin
