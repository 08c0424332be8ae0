#include "p25/ChannelTable.h"

#include "tests/p25/ControlChannelStream.h"
#include "tests/support/TrunkingMessage.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace orva::p25 {

struct ChannelTableInspector {
    static std::uint32_t TableFrequency(const ChannelTable& table) { return table.tableFrequency; }
    static std::uint32_t TunedFrequency(const ChannelTable& table) { return table.tunedFrequency; }
};

namespace {

using Inspector = ChannelTableInspector;

constexpr std::uint32_t kUnknown = ChannelTable::kUnknownFrequency;
constexpr ChannelIdentifier kPlan{851012500, 6250};

bool IsEmpty(const ChannelTable& table) {
    for (std::uint32_t identifier = 0; identifier < ChannelTable::kIdentifiers; ++identifier) {
        if (table.Get(identifier).baseFrequency != 0 || table.Get(identifier).channelSpacing != 0) {
            return false;
        }
    }
    return true;
}

TEST(CodedFrequency, IsPlainBelowTwoToTheThirtyFirst) {
    EXPECT_EQ(CodeFrequency(0), 0U);
    EXPECT_EQ(CodeFrequency(851637500), 851637500U);
    EXPECT_EQ(CodeFrequency(2147483647), 2147483647U);
}

TEST(CodedFrequency, IsTensOfHertzWithTheTopBitSetFromThere) {
    EXPECT_EQ(CodeFrequency(2147483648), 0x80000000U | 214748364U);
    EXPECT_EQ(CodeFrequency(2147483659), 0x80000000U | 214748365U);
    EXPECT_EQ(CodeFrequency(10737418230), 0x80000000U | 1073741823U);
}

TEST(CodedFrequency, ReadsBackToTensOfHertz) {
    for (const std::uint64_t hz : {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{2147483647}}) {
        EXPECT_EQ(DecodeFrequency(CodeFrequency(hz)), hz);
    }
    EXPECT_EQ(DecodeFrequency(CodeFrequency(2147483648)), 2147483640U);
    EXPECT_EQ(DecodeFrequency(0xFFFFFFFF), 21474836470U);
}

TEST(ChannelTable, BeginsEmptyAndUntuned) {
    const ChannelTable table;
    EXPECT_TRUE(IsEmpty(table));
    EXPECT_EQ(Inspector::TableFrequency(table), 0xFFFFFFFFU);
    EXPECT_EQ(Inspector::TunedFrequency(table), 0xFFFFFFFFU);
}

TEST(ChannelTable, FrequencyIsTheBaseAndTheChannelsOnIt) {
    ChannelTable table;
    table.Learn(4, kPlan);
    EXPECT_EQ(table.CodedFrequency(4, 0), 851012500U);
    EXPECT_EQ(table.CodedFrequency(4, 100), 851637500U);
    EXPECT_EQ(table.CodedFrequency(4, 4095), 876606250U);
}

TEST(ChannelTable, UnknownIdentifierHasNoFrequency) {
    ChannelTable table;
    table.Learn(4, {0, 6250});
    for (std::uint32_t identifier = 0; identifier < ChannelTable::kIdentifiers; ++identifier) {
        EXPECT_EQ(table.CodedFrequency(identifier, 100), 0U) << identifier;
    }
}

TEST(ChannelTable, FrequencyBeyondThirtyOneBitsIsCoded) {
    ChannelTable table;
    table.Learn(4, {2147483648 - 6250, 6250});
    EXPECT_EQ(table.CodedFrequency(4, 0), 2147477398U);
    EXPECT_EQ(table.CodedFrequency(4, 1), 0x80000000U | 214748364U);
}

TEST(ChannelTable, KeepsIdentifiersApart) {
    ChannelTable table;
    for (std::uint32_t identifier = 0; identifier < ChannelTable::kIdentifiers; ++identifier) {
        table.Learn(identifier, {std::uint64_t{1000000} * (identifier + 1), identifier});
    }
    for (std::uint32_t identifier = 0; identifier < ChannelTable::kIdentifiers; ++identifier) {
        EXPECT_EQ(table.Get(identifier).baseFrequency, 1000000U * (identifier + 1));
        EXPECT_EQ(table.Get(identifier).channelSpacing, identifier);
    }
}

TEST(ChannelTable, UntunedReceiverKeepsIt) {
    ChannelTable table;
    table.Learn(4, kPlan);
    table.CheckValidity();
    EXPECT_EQ(table.Get(4).baseFrequency, kPlan.baseFrequency);
    EXPECT_EQ(Inspector::TableFrequency(table), kUnknown);
}

TEST(ChannelTable, FirstTunedFrequencyClearsIt) {
    // From an unknown table frequency the lower bound wraps to a high value.
    for (const std::uint32_t tuned : {0U, 4999U, 5000U, 851012500U, 0xFFFFFFFFU - 5001U}) {
        ChannelTable table;
        table.Learn(4, kPlan);
        table.SetTunedFrequency(tuned);
        EXPECT_FALSE(IsEmpty(table)) << "tuning alone does not clear";
        table.CheckValidity();
        EXPECT_TRUE(IsEmpty(table)) << tuned;
        EXPECT_EQ(Inspector::TableFrequency(table), tuned);
    }
}

TEST(ChannelTable, HoldsWithinFiveKilohertz) {
    constexpr std::uint32_t kTable = 851012500;
    for (const std::uint32_t tuned : {kTable - 5000, kTable - 1, kTable, kTable + 5000}) {
        ChannelTable table;
        table.SetTunedFrequency(kTable);
        table.CheckValidity();
        table.Learn(4, kPlan);
        table.SetTunedFrequency(tuned);
        table.CheckValidity();
        EXPECT_FALSE(IsEmpty(table)) << tuned;
        EXPECT_EQ(Inspector::TableFrequency(table), kTable) << "it stays where it was learned";
    }
}

TEST(ChannelTable, IsDroppedBeyondFiveKilohertz) {
    constexpr std::uint32_t kTable = 851012500;
    for (const std::uint32_t tuned : {kTable - 5001, kTable + 5001}) {
        ChannelTable table;
        table.SetTunedFrequency(kTable);
        table.CheckValidity();
        table.Learn(4, kPlan);
        table.SetTunedFrequency(tuned);
        table.CheckValidity();
        EXPECT_TRUE(IsEmpty(table)) << tuned;
        EXPECT_EQ(Inspector::TableFrequency(table), tuned);
    }
}

TEST(ChannelTable, BackToUntunedKeepsIt) {
    ChannelTable table;
    table.SetTunedFrequency(851012500);
    table.CheckValidity();
    table.Learn(4, kPlan);
    table.SetTunedFrequency(kUnknown);
    table.CheckValidity();
    EXPECT_FALSE(IsEmpty(table));
    EXPECT_EQ(Inspector::TableFrequency(table), 851012500U);
}

TEST(ChannelTable, BoundsWrapNearZero) {
    // At 2000 Hz the lower bound is above all frequencies in use: every check clears.
    ChannelTable table;
    table.SetTunedFrequency(2000);
    table.CheckValidity();
    table.Learn(4, kPlan);
    table.CheckValidity();
    EXPECT_TRUE(IsEmpty(table));
}

/// The band plan is known at 851 MHz, then the receiver is tuned elsewhere and hears `message`.
bool KeepsItsPlans(const test::TrunkingData& message) {
    test::ControlChannelStream stream;
    stream.decoder.SetTunedFrequency(851000000);
    stream.Send({test::IdentifierUpdate({.identifier = 4, .spacing = 50, .baseFrequency = 170202500})});
    EXPECT_EQ(stream.decoder.GetChannelTable().Get(4).baseFrequency, 851012500U);
    stream.decoder.SetTunedFrequency(852000000);
    EXPECT_EQ(stream.decoder.GetChannelTable().Get(4).baseFrequency, 851012500U);
    stream.Send({message});
    return stream.decoder.GetChannelTable().Get(4).baseFrequency != 0;
}

TEST(ChannelTable, IsCheckedByGroupGrantsAndIdentifierUpdates) {
    EXPECT_FALSE(KeepsItsPlans(test::GroupGrant({4, 1}, 1, 2, 3)));
    EXPECT_FALSE(KeepsItsPlans(test::GroupGrantUpdate({4, 1}, 1, {4, 2}, 2)));
    EXPECT_FALSE(KeepsItsPlans(test::GroupGrantUpdateExplicit({4, 1}, {4, 2}, 1, 0)));
    EXPECT_FALSE(KeepsItsPlans(test::RegroupedGrant({4, 1}, 1, 2)));
    EXPECT_FALSE(KeepsItsPlans(test::RegroupedGrantUpdate({4, 1}, 1, {4, 2}, 2)));
    EXPECT_FALSE(
        KeepsItsPlans(test::IdentifierUpdate({.identifier = 5, .spacing = 50, .baseFrequency = 170202500})));
}

TEST(ChannelTable, IsCheckedByGroupGrantsThatMakeNoRecord) {
    EXPECT_FALSE(KeepsItsPlans(test::OfManufacturer(test::GroupGrant({4, 1}, 1, 2, 3), 17)));
    EXPECT_FALSE(KeepsItsPlans(test::OfManufacturer(test::GroupGrantUpdate({4, 1}, 1, {4, 2}, 2), 17)));
}

TEST(ChannelTable, IsNotCheckedByUnitGrants) {
    EXPECT_TRUE(KeepsItsPlans(test::UnitGrant({4, 1}, 1, 2)));
    EXPECT_TRUE(KeepsItsPlans(test::UnitGrantUpdate({4, 1}, 1, 2)));
}

TEST(ChannelTable, IsNotCheckedByOtherMessagesNorByProtectedOnes) {
    EXPECT_TRUE(KeepsItsPlans(test::OtherMessage(59)));
    EXPECT_TRUE(KeepsItsPlans(test::OtherMessage(1)));
    EXPECT_TRUE(KeepsItsPlans(test::Protected(test::GroupGrant({4, 1}, 1, 2, 3))));
}

TEST(ChannelTable, IdentifierUpdateIsLearnedBehindTheCheck) {
    test::ControlChannelStream stream;
    stream.decoder.SetTunedFrequency(851000000);
    stream.Send({test::IdentifierUpdate({.identifier = 4, .spacing = 50, .baseFrequency = 170202500})});
    stream.Send({test::IdentifierUpdate({.identifier = 5, .spacing = 100, .baseFrequency = 170202500})});
    EXPECT_EQ(stream.decoder.GetChannelTable().Get(4).channelSpacing, 6250U);
    EXPECT_EQ(stream.decoder.GetChannelTable().Get(5).channelSpacing, 12500U);
}

TEST(ChannelTable, SurvivesResetOfTheDecoder) {
    test::ControlChannelStream stream;
    stream.decoder.SetTunedFrequency(851000000);
    stream.Send({test::IdentifierUpdate({.identifier = 4, .spacing = 50, .baseFrequency = 170202500})});
    stream.decoder.Reset();
    EXPECT_EQ(stream.decoder.GetChannelTable().Get(4).baseFrequency, 851012500U);
    EXPECT_EQ(Inspector::TableFrequency(stream.decoder.GetChannelTable()), 851000000U);
    EXPECT_EQ(Inspector::TunedFrequency(stream.decoder.GetChannelTable()), 851000000U);
}

} // namespace
} // namespace orva::p25
