#include "tools/orva-decode/ControlChannelLog.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace orva::tools {
namespace {

using p25::TrunkingRecord;
using p25::TrunkingRecordType;

p25::TrunkingBlock BlockOf(std::uint8_t first) {
    p25::TrunkingBlock block;
    block.bytes[0] = first;
    return block;
}

TrunkingRecord Grant(TrunkingRecordType type, std::uint32_t destination, std::uint32_t frequency) {
    TrunkingRecord record(type);
    record.SetDestination(destination);
    record.SetFrequency(frequency);
    return record;
}

TrunkingRecord Identifier(std::uint8_t identifier, std::uint32_t base, std::uint32_t spacing) {
    TrunkingRecord record(TrunkingRecordType::IdentifierUpdate);
    record.SetChannel(identifier, 0);
    record.SetSource(base);
    record.SetFrequency(spacing);
    return record;
}

TEST(ControlChannelLog, BeginsEmpty) {
    const ControlChannelLog log;
    EXPECT_EQ(log.Blocks(), 0U);
    EXPECT_EQ(log.FailurePercent(), 0.0);
    EXPECT_TRUE(log.Identifiers().empty());
    EXPECT_TRUE(log.Grants().empty());
}

TEST(ControlChannelLog, CountsBlocksAndTheirFailures) {
    ControlChannelLog log;
    for (int i = 0; i < 7; ++i) {
        log.NoteBlock(BlockOf(58), true);
    }
    log.NoteBlock(BlockOf(58), false);
    EXPECT_EQ(log.Blocks(), 8U);
    EXPECT_EQ(log.BadBlocks(), 1U);
    EXPECT_EQ(log.FailurePercent(), 12.5);
}

TEST(ControlChannelLog, CountsGoodMessagesByOpcodeWithoutItsFlags) {
    ControlChannelLog log;
    log.NoteBlock(BlockOf(0xC0 | 58), true);
    log.NoteBlock(BlockOf(58), true);
    log.NoteBlock(BlockOf(63), true);
    log.NoteBlock(BlockOf(0), false);
    EXPECT_EQ(log.Messages()[58], 2U);
    EXPECT_EQ(log.Messages()[63], 1U);
    EXPECT_EQ(log.Messages()[0], 0U) << "the bytes of a bad block mean nothing";
}

TEST(ControlChannelLog, KeepsAnIdentifierAsLastHeard) {
    ControlChannelLog log;
    log.NoteRecord(Identifier(3, 851012500, 6250));
    log.NoteRecord(Identifier(3, p25::CodeFrequency(2150000000), 12500));
    ASSERT_EQ(log.Identifiers().size(), 1U);
    EXPECT_EQ(log.Identifiers().at(3).baseFrequency, 2150000000U);
    EXPECT_EQ(log.Identifiers().at(3).channelSpacing, 12500U);
}

TEST(ControlChannelLog, CountsEachGrantByCalledPartyAndFrequency) {
    constexpr std::uint32_t kGroup = p25::kGroupAddress | 5;
    ControlChannelLog log;
    log.NoteRecord(Grant(TrunkingRecordType::GroupGrant, kGroup, 851000000));
    log.NoteRecord(Grant(TrunkingRecordType::GroupGrantUpdate, kGroup, 851000000));
    log.NoteRecord(Grant(TrunkingRecordType::GroupGrant, kGroup, 852000000));
    log.NoteRecord(Grant(TrunkingRecordType::UnitGrant, 5, 851000000));
    log.NoteRecord(Grant(TrunkingRecordType::UnitGrantUpdate, 5, p25::CodeFrequency(2150000000)));
    ASSERT_EQ(log.Grants().size(), 4U);
    EXPECT_EQ(log.Grants().at({true, 5, 851000000}), 2U);
    EXPECT_EQ(log.Grants().at({true, 5, 852000000}), 1U);
    EXPECT_EQ(log.Grants().at({false, 5, 851000000}), 1U);
    EXPECT_EQ(log.Grants().at({false, 5, 2150000000}), 1U);
}

TEST(ControlChannelLog, PassesOverRecordsOfVoiceChannels) {
    ControlChannelLog log;
    log.NoteRecord(Grant(TrunkingRecordType::NewSpeaker, 5, p25::kNoFrequency));
    log.NoteRecord(TrunkingRecord::MakeEndOfCall(0x293));
    EXPECT_TRUE(log.Grants().empty());
    EXPECT_TRUE(log.Identifiers().empty());
}

TEST(ControlChannelLog, StaysBoundedAndCountsOnWhatItKnows) {
    ControlChannelLog log;
    for (std::uint32_t group = 0; group < 5000; ++group) {
        log.NoteRecord(Grant(TrunkingRecordType::GroupGrant, p25::kGroupAddress | group, 851000000));
    }
    EXPECT_EQ(log.Grants().size(), 1000U);
    log.NoteRecord(Grant(TrunkingRecordType::GroupGrant, p25::kGroupAddress | 999, 851000000));
    EXPECT_EQ(log.Grants().at({true, 999, 851000000}), 2U);
}

} // namespace
} // namespace orva::tools
