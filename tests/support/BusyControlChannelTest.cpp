#include "tests/support/BusyControlChannel.h"

#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

TEST(BusyControlChannel, NoTwoMessagesAreAlike) {
    std::set<TrunkingData> messages;
    for (unsigned number = 0; number < 4096; ++number) {
        messages.insert(BusyMessage(number));
    }
    EXPECT_EQ(messages.size(), 4096U);
}

TEST(BusyControlChannel, SaysEverythingThatAListenerFollows) {
    std::set<int> opcodes;
    for (unsigned number = 0; number < 10; ++number) {
        opcodes.insert(BusyMessage(number)[0]);
    }
    EXPECT_EQ(opcodes, (std::set<int>{0, 2, 3, 4, 6, 52, 58, 59}));
}

TEST(BusyControlChannel, GoesOnFromPacketToPacket) {
    BusyControlChannel channel(0x140);
    Transmission transmission;
    channel.AddPacket(transmission, 2);
    channel.AddPacket(transmission, 1);
    ASSERT_EQ(transmission.Frames().size(), 2U);
    EXPECT_EQ(transmission.Frames()[0].networkAccessCode, 0x140U);
    EXPECT_EQ(transmission.Frames()[0].trunking,
              MarkLastBlock(std::vector<TrunkingData>{BusyMessage(0), BusyMessage(1)}));
    EXPECT_EQ(transmission.Frames()[1].trunking, MarkLastBlock(std::vector<TrunkingData>{BusyMessage(2)}));
}

TEST(BusyControlChannel, LastsAsLongAsAskedFor) {
    BusyControlChannel channel(0x140);
    Transmission transmission;
    // 37.5, 60 and 75 ms by turns.
    channel.AddSeconds(transmission, 0.18);
    ASSERT_EQ(transmission.Frames().size(), 4U);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(transmission.Frames()[i].trunking.size(), 1 + i % 3);
    }
    EXPECT_EQ(transmission.Dibits().size(), 180U + 288 + 360 + 180);
}

} // namespace
} // namespace orva::test
