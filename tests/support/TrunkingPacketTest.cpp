#include "tests/support/TrunkingPacket.h"

#include "tests/support/FrameBuilder.h"
#include "tests/support/Transmission.h"
#include "tests/support/TrunkingMessage.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

TEST(TrunkingCrc, IsTheInvertedCcittCrcOfTheData) {
    // The check value of CRC-16/XMODEM over "123456789" is 0x31C3; a zero byte in front changes nothing.
    const TrunkingData data = {0, '1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(TrunkingCrc(data), 0xFFFF ^ 0x31C3);
    EXPECT_EQ(TrunkingCrc({}), 0xFFFF);
}

TEST(TrunkingCrc, StandsBehindTheDataHighByteFirst) {
    const TrunkingData data = {0, '1', '2', '3', '4', '5', '6', '7', '8', '9'};
    const TrunkingBytes bytes = WithTrunkingCrc(data);
    EXPECT_EQ(bytes[9], '9');
    EXPECT_EQ(bytes[10], 0xCE);
    EXPECT_EQ(bytes[11], 0x3C);
}

TEST(TrunkingPacket, MarksTheLastBlockAlone) {
    TrunkingData first = OtherMessage(58);
    first[0] |= 0x80;
    const std::vector<TrunkingData> marked =
        MarkLastBlock(std::vector<TrunkingData>{first, OtherMessage(59), Protected(OtherMessage(60))});
    EXPECT_EQ(marked[0][0], 58);
    EXPECT_EQ(marked[1][0], 59);
    EXPECT_EQ(marked[2][0], 0x80 | 0x40 | 60);
    EXPECT_TRUE(MarkLastBlock({}).empty());
}

TEST(TrunkingPacket, HasTheStandardsLengths) {
    // 56 dibits of sync and identifier, 98 a block, padded to 5, 8, and 10 status periods.
    const std::size_t lengths[] = {180, 288, 360};
    for (std::size_t count = 1; count <= 3; ++count) {
        const std::vector<TrunkingData> blocks(count, OtherMessage(59));
        const std::string packet = TrunkingPacket(0x293, blocks);
        EXPECT_EQ(packet.size(), lengths[count - 1]) << count << " blocks";
        EXPECT_EQ(packet.substr(0, 24), kSyncDibits);
    }
}

TEST(TrunkingPacket, TransmissionRemembersItsBlocks) {
    Transmission transmission;
    const std::vector<TrunkingData> blocks = {OtherMessage(59), OtherMessage(58)};
    transmission.AddTrunking(0x140, blocks);
    ASSERT_EQ(transmission.Frames().size(), 1U);
    const SentFrame& sent = transmission.Frames()[0];
    EXPECT_EQ(sent.dataUnit, 7U);
    EXPECT_EQ(sent.networkAccessCode, 0x140U);
    EXPECT_EQ(sent.trunking, MarkLastBlock(blocks));
    EXPECT_EQ(transmission.Dibits(), TrunkingPacket(0x140, blocks));
}

TEST(TrunkingMessage, GroupGrantHasItsFieldsInPlace) {
    EXPECT_EQ(GroupGrant({0xA, 0xBCD}, 0x1234, 0x56789A, 0xE5),
              (TrunkingData{0, 0, 0xE5, 0xAB, 0xCD, 0x12, 0x34, 0x56, 0x78, 0x9A}));
}

TEST(TrunkingMessage, GroupGrantUpdatesHaveTheirFieldsInPlace) {
    EXPECT_EQ(GroupGrantUpdate({1, 0x234}, 0x5678, {9, 0xABC}, 0xDEF0),
              (TrunkingData{2, 0, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0}));
    EXPECT_EQ(GroupGrantUpdateExplicit({1, 0x234}, {9, 0xABC}, 0xDEF0, 0x85),
              (TrunkingData{3, 0, 0x85, 0, 0x12, 0x34, 0x9A, 0xBC, 0xDE, 0xF0}));
}

TEST(TrunkingMessage, RegroupedGrantsHaveTheirFieldsInPlace) {
    EXPECT_EQ(RegroupedGrant({1, 0x234}, 0x5678, 0x9ABCDE),
              (TrunkingData{2, 144, 0, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE}));
    EXPECT_EQ(RegroupedGrantUpdate({1, 0x234}, 0x5678, {9, 0xABC}, 0xDEF0),
              (TrunkingData{3, 144, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0}));
}

TEST(TrunkingMessage, UnitGrantsHaveTheirFieldsInPlace) {
    EXPECT_EQ(UnitGrant({1, 0x234}, 0x56789A, 0xBCDEF0),
              (TrunkingData{4, 0, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0}));
    EXPECT_EQ(UnitGrantUpdate({1, 0x234}, 0x56789A, 0xBCDEF0)[0], 6);
}

TEST(TrunkingMessage, IdentifierUpdateHasItsFieldsInPlace) {
    // Offset sign 1, magnitude 1 0110 0101 0011 (0x1653); spacing 10 1010 1011 (0x2AB).
    EXPECT_EQ(IdentifierUpdate({.identifier = 0xA,
                                .bandwidth = 5,
                                .transmitOffset = -0x1653,
                                .spacing = 0x2AB,
                                .baseFrequency = 0x12345678}),
              (TrunkingData{52, 0, 0xA5, 0xD9, 0x4E, 0xAB, 0x12, 0x34, 0x56, 0x78}));
}

} // namespace
} // namespace orva::test
