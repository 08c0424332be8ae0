// Demodulator and frame decoder together on the radio signal of a control channel.
#include "tests/p25/ReceivedControlChannel.h"

#include <iostream>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

struct Signal {
    int sampleRate;
    double offset; ///< of the carrier [Hz]
    double amplitude;
    std::uint64_t seed;
};

void PrintTo(const Signal& signal, std::ostream* out) {
    *out << signal.sampleRate << " Hz, carrier " << signal.offset << " Hz off, amplitude " << signal.amplitude
         << ", noise " << signal.seed;
}

ReceivedControlChannel Receive(const Signal& signal, int packets) {
    ReceivedControlChannel channel({.sampleRate = signal.sampleRate,
                                    .carrierOffset = signal.offset,
                                    .symbolPhase = 0.3,
                                    .amplitude = signal.amplitude,
                                    .snrDb = 25.0,
                                    .seed = signal.seed},
                                   packets);
    std::cout << "[ measured ] " << testing::PrintToString(signal) << ": " << channel.rightBlocks << " of "
              << channel.sentBlocks.size() << " blocks right, " << channel.wrongBlocks << " wrong\n";
    return channel;
}

class ControlChannelAt48000 : public testing::TestWithParam<Signal> {};

TEST_P(ControlChannelAt48000, EveryBlockAndRecordIsExact) {
    constexpr int kPackets = 8;
    const ReceivedControlChannel channel = Receive(GetParam(), kPackets);
    ASSERT_EQ(channel.sentBlocks.size(), 24U);
    ASSERT_EQ(channel.heardBlocks.size(), channel.sentBlocks.size());
    for (std::size_t i = 0; i < channel.sentBlocks.size(); ++i) {
        EXPECT_TRUE(channel.heardBlocks[i].good) << "block " << i;
        EXPECT_EQ(channel.heardBlocks[i].bytes, channel.sentBlocks[i].bytes) << "block " << i;
    }
    EXPECT_EQ(channel.heardRecords, channel.sentRecords);
}

INSTANTIATE_TEST_SUITE_P(Signals, ControlChannelAt48000,
                         testing::Values(Signal{48000, 0, 0.5, 1}, Signal{48000, 800, 0.1, 2},
                                         Signal{48000, -1500, 0.9, 3}));

class ControlChannelAt64000 : public testing::TestWithParam<Signal> {};

TEST_P(ControlChannelAt64000, MostBlocksAreRightAndNoneIsWrong) {
    constexpr int kPackets = 20;
    const ReceivedControlChannel channel = Receive(GetParam(), kPackets);
    ASSERT_EQ(channel.sentBlocks.size(), 60U);
    EXPECT_GE(channel.RightPercent(), 83.0);
    EXPECT_EQ(channel.wrongBlocks, 0U);
    EXPECT_EQ(channel.wrongRecords, 0U);
}

INSTANTIATE_TEST_SUITE_P(Signals, ControlChannelAt64000,
                         testing::Values(Signal{64000, 0, 0.5, 1}, Signal{64000, 1500, 0.9, 2},
                                         Signal{64000, -700, 0.05, 3}));

} // namespace
} // namespace orva::test
