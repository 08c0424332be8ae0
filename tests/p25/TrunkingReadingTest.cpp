// Reading trunking signalling packets: blocks, CRC, error rate, and the way back to the next frame.
#include "p25/COrvaFrameDecoder.h"
#include "tests/p25/COrvaFrameDecoderInspector.h"
#include "tests/p25/DecodedStream.h"
#include "tests/support/FrameBuilder.h"
#include "tests/support/TrunkingPacket.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using Inspector = COrvaFrameDecoderInspector;
using test::BitString;
using test::CallFields;
using test::DecodedStream;
using test::EncodeTrunkingBlock;
using test::FieldsOf;
using test::QuietTrunkingData;

constexpr unsigned kNac = 0x140;
constexpr std::uint32_t kBlockBits = 196;
constexpr std::size_t kRing = 50;

BitString CleanBlock(bool last) {
    return EncodeTrunkingBlock(QuietTrunkingData(last));
}

BitString BadBlock(bool last) {
    return EncodeTrunkingBlock(QuietTrunkingData(last), 0x0001);
}

std::string Packet(const std::vector<BitString>& blocks) {
    return test::TrunkingPacket(kNac, blocks);
}

TEST(TrunkingReading, ReadsUpToTheLastBlock) {
    for (std::size_t blocks = 1; blocks <= 4; ++blocks) {
        std::vector<BitString> sent(blocks - 1, CleanBlock(false));
        sent.push_back(CleanBlock(true));
        const std::string packet = Packet(sent);
        // Data dibits of sync, identifier and blocks, and the status symbols among them.
        const std::size_t data = 56 + 98 * blocks;
        const std::size_t end = data + (data - 1) / 35;
        DecodedStream stream;
        Inspector inspector{stream.decoder};
        stream.Feed(packet.substr(0, end - 1));
        EXPECT_EQ(inspector.State(), Inspector::kReadTrunking) << blocks << " blocks";
        EXPECT_EQ(inspector.ErrorRingIndex(), blocks - 1);
        stream.Feed(packet.substr(end - 1, 1));
        EXPECT_EQ(inspector.State(), Inspector::kSeekAfterTrunking) << blocks << " blocks";
        EXPECT_EQ(inspector.FrameCounter(), 0);
        EXPECT_EQ(inspector.ErrorRingIndex(), blocks);
        EXPECT_EQ(inspector.ErrorSum(), 0U);
        EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{2, -1, kNac, -1, -1, -1}));
    }
}

TEST(TrunkingReading, FollowsAControlChannelFromPacketToPacket) {
    const std::string packet = Packet({CleanBlock(false), CleanBlock(false), CleanBlock(true)});
    DecodedStream stream;
    for (int i = 0; i < 20; ++i) {
        stream.Feed(packet);
    }
    EXPECT_EQ(stream.events, std::vector<std::string>(20, test::NidEvent(kNac, 7, 0)));
    EXPECT_EQ(Inspector{stream.decoder}.ErrorRingIndex(), 60U % kRing);
    EXPECT_EQ(Inspector{stream.decoder}.ErrorSum(), 0U);
    EXPECT_EQ(stream.decoder.GetTransmission(), 2U);
}

TEST(TrunkingReading, StatusSymbolsMayHaveAnyValue) {
    for (const char status : {'0', '1', '2', '3'}) {
        std::string packet = Packet({CleanBlock(false), CleanBlock(true)});
        for (std::size_t place = 35; place < packet.size(); place += 36) {
            packet[place] = status;
        }
        DecodedStream stream;
        stream.Feed(packet);
        EXPECT_EQ(Inspector{stream.decoder}.ErrorRingIndex(), 2U);
        EXPECT_EQ(Inspector{stream.decoder}.ErrorSum(), 0U);
    }
}

TEST(TrunkingReading, CountsTheBitErrorsOfAGoodBlock) {
    for (int errors = 0; errors <= 10; ++errors) {
        DecodedStream stream;
        stream.Feed(Packet({EncodeTrunkingBlock(QuietTrunkingData(true), 0, errors)}));
        EXPECT_EQ(Inspector{stream.decoder}.ErrorSum(), static_cast<std::uint32_t>(errors));
        EXPECT_EQ(stream.decoder.GetBitErrorRate(), static_cast<float>(errors * 100.0 / 9800.0));
    }
}

TEST(TrunkingReading, CountsABlockWithABadCrcAsAllWrong) {
    for (const unsigned error : {0x0001U, 0x8000U, 0xFFFFU}) {
        DecodedStream stream;
        stream.Feed(
            Packet({EncodeTrunkingBlock(QuietTrunkingData(true), static_cast<std::uint16_t>(error))}));
        EXPECT_EQ(Inspector{stream.decoder}.ErrorSum(), kBlockBits);
        EXPECT_EQ(stream.decoder.GetBitErrorRate(), 2.0F);
    }
}

TEST(TrunkingReading, ABadBlockLeavesTheRateWithTheFiftyFirst) {
    DecodedStream stream;
    Inspector inspector{stream.decoder};
    stream.Feed(Packet({BadBlock(true)}));
    const std::string clean = Packet({CleanBlock(true)});
    for (std::size_t i = 0; i < kRing - 1; ++i) {
        stream.Feed(clean);
        ASSERT_EQ(inspector.ErrorSum(), kBlockBits) << "after " << i + 1 << " clean blocks";
    }
    stream.Feed(clean);
    EXPECT_EQ(inspector.ErrorSum(), 0U);
    EXPECT_EQ(stream.decoder.GetBitErrorRate(), 0.0F);
}

TEST(TrunkingReading, FiftyBadBlocksAreAHundredPercent) {
    DecodedStream stream;
    for (std::size_t i = 0; i < 60; ++i) {
        stream.Feed(Packet({BadBlock(true)}));
    }
    EXPECT_EQ(Inspector{stream.decoder}.ErrorSum(), kRing * kBlockBits);
    EXPECT_EQ(stream.decoder.GetBitErrorRate(), 100.0F);
}

TEST(TrunkingReading, ABadBlockIsBelievedAboutBeingTheLast) {
    DecodedStream stream;
    Inspector inspector{stream.decoder};
    stream.Feed(Packet({BadBlock(true), CleanBlock(true)}).substr(0, 56 + 98 + 4));
    EXPECT_EQ(inspector.State(), Inspector::kSeekAfterTrunking);
    DecodedStream other;
    other.Feed(Packet({BadBlock(false), CleanBlock(true)}));
    EXPECT_EQ(Inspector{other.decoder}.ErrorRingIndex(), 2U);
}

TEST(TrunkingReading, CountsAProtectedBlock) {
    test::TrunkingData data = QuietTrunkingData(true);
    data[0] |= 0x40;
    DecodedStream stream;
    stream.Feed(Packet({EncodeTrunkingBlock(data, 0, 3)}));
    EXPECT_EQ(Inspector{stream.decoder}.ErrorSum(), 3U);
    EXPECT_EQ(stream.events.size(), 1U);
}

TEST(TrunkingReading, ResetForgetsTheErrors) {
    DecodedStream stream;
    Inspector inspector{stream.decoder};
    stream.Feed(Packet({BadBlock(false), BadBlock(true)}));
    stream.decoder.Reset();
    EXPECT_EQ(inspector.ErrorSum(), 0U);
    EXPECT_EQ(inspector.ErrorRingIndex(), 0U);
    EXPECT_EQ(stream.decoder.GetBitErrorRate(), 0.0F);
    for (std::size_t i = 0; i < kRing; ++i) {
        stream.Feed(Packet({CleanBlock(true)}));
    }
    EXPECT_EQ(inspector.ErrorSum(), 0U) << "no part of an old block is subtracted";
}

TEST(TrunkingReading, EveryDibitOfABlockCounts) {
    // Flipping any one bit on the air adds one error, corrected by the trellis.
    const BitString clean = CleanBlock(true);
    for (std::size_t bit = 0; bit < clean.Size(); bit += 5) {
        BitString block;
        for (std::size_t i = 0; i < clean.Size(); ++i) {
            block.Append(clean.Field(i, 1) ^ (i == bit ? 1U : 0U), 1);
        }
        DecodedStream stream;
        stream.Feed(Packet({block}));
        // The flush symbol, last of its column, ends the code with no symbol behind it to decide by.
        ASSERT_EQ(Inspector{stream.decoder}.ErrorSum(), 1U) << "bit " << bit;
    }
}

} // namespace
} // namespace orva::p25
