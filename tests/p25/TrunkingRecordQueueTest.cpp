// The records on their way to the host: queue, message, retuning.
#include "p25/COrvaFrameDecoder.h"
#include "tests/p25/ControlChannelStream.h"
#include "tests/support/AllocationProbe.h"
#include "tests/support/TrunkingMessage.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using test::ControlChannelStream;

constexpr std::size_t kMessageHeader = 140;
constexpr std::size_t kRecordSize = 22;

std::uint32_t LittleEndian(const std::uint8_t* bytes) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        value = value << 8 | bytes[i];
    }
    return value;
}

test::TrunkingData Grant(unsigned group) {
    return test::GroupGrant({1, 100}, group, 1, 0);
}

TEST(TakeRecords, OfAnEmptyQueueIsNull) {
    COrvaFrameDecoder decoder;
    std::uint32_t size = 99;
    EXPECT_EQ(decoder.TakeRecords(&size), nullptr);
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(decoder.TakeRecords(nullptr), nullptr);
}

TEST(TakeRecords, MessageHasItsHeaderAndTheRecordsInOrder) {
    for (unsigned count = 1; count <= 40; ++count) {
        ControlChannelStream stream;
        for (unsigned group = 1; group <= count; ++group) {
            stream.Send({Grant(group)});
        }
        std::uint32_t size = 0;
        const auto message = stream.decoder.TakeRecords(&size);
        ASSERT_NE(message, nullptr);
        ASSERT_EQ(size, kMessageHeader + kRecordSize * count);

        std::string name = "K728 ORVA";
        name.resize(128, '\0');
        EXPECT_EQ(std::memcmp(message.get(), name.data(), name.size()), 0) << "zeros behind the name";
        EXPECT_EQ(LittleEndian(message.get() + 128), 256U);
        EXPECT_EQ(LittleEndian(message.get() + 132), kRecordSize * count + 4);
        EXPECT_EQ(LittleEndian(message.get() + 136), count);
        for (unsigned i = 0; i < count; ++i) {
            ASSERT_EQ(test::Hex(message.get() + kMessageHeader + kRecordSize * i, kRecordSize),
                      stream.records[i])
                << "record " << i << " of " << count;
        }
    }
}

TEST(TakeRecords, EmptiesTheQueue) {
    ControlChannelStream stream;
    stream.Send({Grant(1)});
    EXPECT_EQ(stream.TakeRecords().size(), 1U);
    EXPECT_EQ(stream.TakeRecords().size(), 0U);
    stream.Send({Grant(2), Grant(3)});
    EXPECT_EQ(stream.TakeRecords(), (std::vector<std::string>{stream.records[1], stream.records[2]}));
}

TEST(TakeRecords, NeedNotTellTheSize) {
    ControlChannelStream stream;
    stream.Send({Grant(1)});
    EXPECT_NE(stream.decoder.TakeRecords(nullptr), nullptr);
}

TEST(TakeRecords, WithoutMemoryKeepsTheRecordsAndTellsTheSize) {
    ControlChannelStream stream;
    stream.Send({Grant(1), Grant(2)});
    {
        const test::AllocationFailure failure(0);
        std::uint32_t size = 0;
        EXPECT_EQ(stream.decoder.TakeRecords(&size), nullptr);
        EXPECT_TRUE(failure.HasStruck());
        EXPECT_EQ(size, kMessageHeader + 2 * kRecordSize);
    }
    EXPECT_EQ(stream.TakeRecords(), stream.records);
}

TEST(TakeRecords, RecordWithoutMemoryIsLostAndTheRestGoesOn) {
    ControlChannelStream stream;
    stream.Send({test::OtherMessage(59)}); // the block's own memory is there
    {
        const test::AllocationFailure failure(0);
        stream.Send({Grant(1)});
        EXPECT_TRUE(failure.HasStruck());
    }
    EXPECT_TRUE(stream.records.empty());
    stream.Send({Grant(2)});
    EXPECT_EQ(stream.TakeRecords(), stream.records);
    EXPECT_EQ(stream.records.size(), 1U);
}

TEST(SetTunedFrequency, EmptiesTheQueue) {
    ControlChannelStream stream;
    stream.Send({Grant(1), Grant(2)});
    stream.decoder.SetTunedFrequency(851000000);
    EXPECT_TRUE(stream.TakeRecords().empty());
    stream.Send({Grant(3)});
    stream.decoder.SetTunedFrequency(851000000);
    EXPECT_TRUE(stream.TakeRecords().empty()) << "also when the frequency is the same";
}

TEST(SetTunedFrequency, LeavesTheQueueOfUse) {
    ControlChannelStream stream;
    stream.Send({Grant(1), Grant(2)});
    stream.decoder.SetTunedFrequency(851000000);
    stream.Send({Grant(3)});
    EXPECT_EQ(stream.TakeRecords(), std::vector<std::string>{stream.records.back()});
}

TEST(Reset, KeepsQueuedRecords) {
    ControlChannelStream stream;
    stream.Send({Grant(1)});
    stream.decoder.Reset();
    EXPECT_EQ(stream.TakeRecords().size(), 1U);
}

TEST(ControlChannel, AllocatesNothingOnceWarm) {
    ControlChannelStream stream;
    const std::string packet = test::TrunkingPacket(
        ControlChannelStream::kNac,
        std::vector<test::TrunkingData>{
            test::IdentifierUpdate({.identifier = 1, .spacing = 50, .baseFrequency = 170202500}), Grant(1),
            test::GroupGrantUpdate({1, 1}, 1, {1, 2}, 2)});
    stream.Feed(packet);
    stream.TakeRecords();
    stream.decoder.SetObserver(nullptr); // the listener keeps what it hears
    const std::uint64_t before = test::CountAllocations();
    for (int i = 0; i < 3; ++i) {
        stream.decoder.Decode(packet.data(), static_cast<std::int32_t>(packet.size()));
    }
    EXPECT_EQ(test::CountAllocations(), before);
    EXPECT_EQ(stream.TakeRecords().size(), 12U);
}

} // namespace
} // namespace orva::p25
