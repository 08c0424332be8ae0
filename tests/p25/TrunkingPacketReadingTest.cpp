// Packets of one to three blocks, in slices of any size, one behind the other.
#include "p25/COrvaFrameDecoder.h"
#include "tests/p25/COrvaFrameDecoderInspector.h"
#include "tests/p25/ControlChannelStream.h"
#include "tests/support/FrameBuilder.h"
#include "tests/support/RandomSource.h"
#include "tests/support/TrunkingMessage.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using Inspector = COrvaFrameDecoderInspector;
using test::ControlChannelStream;
using test::HeardBlock;
using test::TrunkingData;

constexpr std::size_t kOneBlockDibits = 56 + 98 + 4; ///< sync, identifier, block, and status among them

/// Messages that all differ.
TrunkingData Message(unsigned number) {
    return test::GroupGrant({1, number % 4096}, number, 0xABCDEF - number, number & 0xFF);
}

struct ControlChannel {
    std::string dibits;
    std::vector<HeardBlock> blocks;
};

/// Packets of one, two and three blocks in turn.
ControlChannel MakeControlChannel(unsigned packets) {
    ControlChannel channel;
    unsigned number = 0;
    for (unsigned packet = 0; packet < packets; ++packet) {
        std::vector<TrunkingData> blocks;
        for (unsigned block = 0; block <= packet % 3; ++block) {
            blocks.push_back(Message(++number));
        }
        channel.dibits += test::TrunkingPacket(ControlChannelStream::kNac, blocks);
        for (const TrunkingData& block : test::MarkLastBlock(blocks)) {
            channel.blocks.push_back({test::WithTrunkingCrc(block), true, 0});
        }
    }
    return channel;
}

TEST(TrunkingPackets, OfOneToThreeBlocksAreReadWhole) {
    const ControlChannel channel = MakeControlChannel(30);
    ControlChannelStream stream;
    stream.Feed(channel.dibits);
    EXPECT_EQ(stream.packets, 30U);
    EXPECT_EQ(stream.blocks, channel.blocks);
    EXPECT_EQ(stream.records.size(), 60U);
    EXPECT_EQ(stream.decoder.GetTransmission(), static_cast<std::uint32_t>(Transmission::Trunking));
}

TEST(TrunkingPackets, MayComeInSlicesOfAnySize) {
    const ControlChannel channel = MakeControlChannel(9);
    ControlChannelStream whole;
    whole.Feed(channel.dibits);
    ASSERT_EQ(whole.blocks, channel.blocks);
    for (std::size_t length = 1; length <= 200; length += length < 40 ? 1 : 13) {
        ControlChannelStream sliced;
        sliced.FeedInPieces(channel.dibits, [length] { return length; });
        ASSERT_EQ(sliced.blocks, whole.blocks) << "slices of " << length;
        ASSERT_EQ(sliced.records, whole.records) << "slices of " << length;
    }
}

TEST(TrunkingPackets, MayComeInRandomSlices) {
    const ControlChannel channel = MakeControlChannel(9);
    test::RandomSource random(1);
    for (int trial = 0; trial < 20; ++trial) {
        ControlChannelStream sliced;
        sliced.FeedInPieces(channel.dibits, [&] { return 1 + random.Below(150); });
        ASSERT_EQ(sliced.blocks, channel.blocks) << "trial " << trial;
    }
}

TEST(TrunkingPackets, NextOneIsFoundWithinAHundredDibits) {
    // A sync so bad that the search in the open would pass over it.
    const std::vector<TrunkingData> blocks = {Message(1)};
    const std::string next =
        test::FrameBuilder(test::ErrorInjector({.syncDibits = 12}))
            .Frame(ControlChannelStream::kNac, static_cast<unsigned>(test::DataUnit::Trunking),
                   test::EncodeTrunkingBlocks(blocks));
    const std::string upToTheLastBlock =
        test::TrunkingPacket(ControlChannelStream::kNac, blocks).substr(0, kOneBlockDibits);
    for (std::size_t gap = 1; gap <= 100; ++gap) {
        ControlChannelStream stream;
        stream.Feed(upToTheLastBlock);
        ASSERT_EQ(Inspector{stream.decoder}.State(), Inspector::kSeekAfterTrunking);
        stream.Feed(std::string(gap, '2') + next);
        // Its 24 dibits must have come by the hundredth.
        const std::size_t expected = gap + 24 <= 100 ? 2 : 1;
        EXPECT_EQ(stream.packets, expected) << "gap " << gap;
        EXPECT_EQ(stream.blocks.size(), expected) << "gap " << gap;
        EXPECT_TRUE(stream.blocks.back().good) << "gap " << gap;
    }
}

TEST(TrunkingPackets, SyncThatFollowsAtOnceIsNotSeen) {
    // Its 24 dibits fill the window and are not compared; one dibit later they are no sync any more.
    const std::string packet =
        test::TrunkingPacket(ControlChannelStream::kNac, std::vector<TrunkingData>{Message(1)});
    ControlChannelStream stream;
    stream.Feed(packet.substr(0, kOneBlockDibits));
    stream.Feed(packet.substr(0, 90));
    EXPECT_EQ(stream.packets, 1U);
    EXPECT_EQ(Inspector{stream.decoder}.State(), Inspector::kSeekAfterTrunking);
}

TEST(TrunkingPackets, EndOfTheControlChannelForgetsTheNetwork) {
    ControlChannelStream stream;
    const std::string packet =
        test::TrunkingPacket(ControlChannelStream::kNac, std::vector<TrunkingData>{Message(1)});
    stream.Feed(packet.substr(0, kOneBlockDibits));
    stream.Feed(std::string(99, '2'));
    EXPECT_EQ(stream.decoder.GetTransmission(), 2U);
    EXPECT_EQ(stream.decoder.GetNetworkAccessCode(), static_cast<std::int32_t>(ControlChannelStream::kNac));
    stream.Feed("2");
    EXPECT_EQ(stream.decoder.GetTransmission(), 0U);
    EXPECT_EQ(stream.decoder.GetNetworkAccessCode(), -1);
    EXPECT_EQ(Inspector{stream.decoder}.State(), Inspector::kSearch);
    EXPECT_EQ(stream.TakeRecords().size(), 1U) << "what was heard stays";
}

TEST(TrunkingPackets, BlockIsNotHandledWhenItsCrcIsBad) {
    for (const TrunkingData& message :
         {Message(1), test::UnitGrant({1, 1}, 1, 2),
          test::IdentifierUpdate({.identifier = 1, .spacing = 50, .baseFrequency = 170202500})}) {
        TrunkingData last = message;
        last[0] |= 0x80;
        ControlChannelStream stream;
        stream.Feed(test::TrunkingPacket(
            ControlChannelStream::kNac,
            std::vector<test::BitString>{test::EncodeTrunkingBlock(last, /*crcError=*/0x0100)}));
        ASSERT_EQ(stream.blocks.size(), 1U);
        EXPECT_FALSE(stream.blocks[0].good);
        EXPECT_TRUE(stream.records.empty());
        EXPECT_EQ(stream.decoder.GetChannelTable().Get(1).baseFrequency, 0U);
    }
}

} // namespace
} // namespace orva::p25
