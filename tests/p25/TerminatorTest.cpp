#include "p25/COrvaFrameDecoder.h"
#include "tests/p25/COrvaFrameDecoderInspector.h"
#include "tests/p25/DecodedStream.h"
#include "tests/support/AllocationProbe.h"
#include "tests/support/FrameBuilder.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using Inspector = COrvaFrameDecoderInspector;
using test::CallFields;
using test::DecodedStream;
using test::FieldsOf;

constexpr unsigned kNac = 0xABC;
/// Type 129, the network access code at offset 1, nothing else.
constexpr const char* kEndOfCall = "record 81bc0a00000000000000000000000000000000000000";

struct Kind {
    bool withLinkControl;
    std::size_t length;
    std::uint32_t state;
};

void PrintTo(const Kind& kind, std::ostream* out) {
    *out << "of " << kind.length << " dibits";
}

class Terminator : public testing::TestWithParam<Kind> {
protected:
    static std::string Frame() {
        test::FrameBuilder builder;
        return GetParam().withLinkControl ? builder.TerminatorWithLinkControl(kNac, {})
                                          : builder.Terminator(kNac);
    }
};

TEST_P(Terminator, EndsAtItsLastDibit) {
    const std::string frame = Frame();
    ASSERT_EQ(frame.size(), GetParam().length);
    DecodedStream stream;
    Inspector inspector{stream.decoder};
    stream.Feed(frame.substr(0, frame.size() - 1));
    EXPECT_EQ(inspector.State(), GetParam().state);
    EXPECT_EQ(stream.events.size(), 1U);
    stream.Feed(frame.substr(frame.size() - 1));
    EXPECT_EQ(inspector.State(), Inspector::kExpectSyncAfterEnd);
    EXPECT_EQ(inspector.FrameCounter(), 0);
    EXPECT_EQ(stream.decoder.GetTransmission(), 5U);
}

TEST_P(Terminator, QueuesAnEndOfCall) {
    DecodedStream stream;
    stream.Feed(Frame());
    ASSERT_EQ(stream.events.size(), 3U);
    EXPECT_EQ(stream.events[1], kEndOfCall);
    EXPECT_EQ(stream.events[2], test::kTerminatorEvent);
    EXPECT_EQ(stream.places, (std::vector<std::size_t>{57, GetParam().length, GetParam().length}));
}

TEST_P(Terminator, KeepsTheFieldsUntilTheSyncFails) {
    DecodedStream stream;
    Inspector{stream.decoder}.SetFields(Transmission::Voice, 0x84, kNac, 1, 2, 3);
    stream.Feed(Frame());
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{5, 0x84, kNac, 1, 2, 3}));
    stream.Feed(std::string(24, '0'));
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{0, 0x84, -1, -1, -1, -1}));
}

TEST_P(Terminator, MayBeFollowedByAnyFrame) {
    DecodedStream stream;
    stream.Feed(Frame() + Frame() + test::FrameBuilder().Header(0x111, {.talkGroup = 3}));
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, 0x80, 0x111, 3, -1, -1}));
}

TEST_P(Terminator, BodyIsNotLookedAt) {
    std::string frame = Frame();
    for (std::size_t place = 57; place < frame.size(); ++place) {
        frame[place] = static_cast<char>('0' + place % 4);
    }
    DecodedStream stream;
    stream.Feed(frame);
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{5, -1, kNac, -1, -1, -1}));
    EXPECT_EQ(stream.events[1], kEndOfCall);
}

INSTANTIATE_TEST_SUITE_P(Kinds, Terminator,
                         testing::Values(Kind{false, 72, Inspector::kSkipTerminator},
                                         Kind{true, 216, Inspector::kSkipTerminatorLc}));

TEST(TakeRecords, GivesNothingWhenThereIsNothing) {
    COrvaFrameDecoder decoder;
    std::uint32_t size = 77;
    EXPECT_EQ(decoder.TakeRecords(&size), nullptr);
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(decoder.TakeRecords(nullptr), nullptr);
}

TEST(TakeRecords, PacksTheMessageOfTheHost) {
    test::FrameBuilder builder;
    DecodedStream stream;
    stream.Feed(builder.Ldu1(0x293, {.talkGroup = 0x1234, .source = 0xABCDEF}, {}) +
                builder.Terminator(kNac));
    std::uint32_t size = 0;
    const auto message = stream.decoder.TakeRecords(&size);
    ASSERT_NE(message, nullptr);
    ASSERT_EQ(size, 140U + 2U * 22U);
    EXPECT_STREQ(reinterpret_cast<const char*>(message.get()), "K728 ORVA");
    for (std::size_t i = 9; i < 128; ++i) {
        ASSERT_EQ(message[i], 0) << "zero padding, byte " << i;
    }
    const std::uint8_t fields[12] = {0, 1, 0, 0, 2 * 22 + 4, 0, 0, 0, 2, 0, 0, 0};
    EXPECT_EQ(std::memcmp(message.get() + 128, fields, sizeof(fields)), 0);
    const std::uint8_t newSpeaker[22] = {5,    0xFF, 0xFF, 0xFF, 0x93, 0x02, 0,    0, 0xFF, 0xFF, 0xFF,
                                         0xFF, 0xEF, 0xCD, 0xAB, 0,    0x34, 0x12, 0, 0x80, 0,    0x80};
    EXPECT_EQ(std::memcmp(message.get() + 140, newSpeaker, 22), 0);
    const std::uint8_t endOfCall[22] = {129, 0xBC, 0x0A};
    EXPECT_EQ(std::memcmp(message.get() + 162, endOfCall, 22), 0);
}

TEST(TakeRecords, TakesThemAll) {
    DecodedStream stream;
    stream.Feed(test::FrameBuilder().Terminator(kNac));
    EXPECT_NE(stream.decoder.TakeRecords(nullptr), nullptr);
    std::uint32_t size = 77;
    EXPECT_EQ(stream.decoder.TakeRecords(&size), nullptr);
    EXPECT_EQ(size, 0U);
}

TEST(TakeRecords, HoldsAnyNumber) {
    test::FrameBuilder builder;
    DecodedStream stream;
    for (unsigned i = 0; i < 100; ++i) {
        stream.Feed(builder.Terminator(i));
    }
    std::uint32_t size = 0;
    const auto message = stream.decoder.TakeRecords(&size);
    ASSERT_EQ(size, 140U + 100U * 22U);
    for (unsigned i = 0; i < 100; ++i) {
        EXPECT_EQ(message[140 + 22 * i], 129);
        EXPECT_EQ(message[141 + 22 * i], i) << "in order";
    }
}

TEST(TakeRecords, WithoutMemoryTheRecordsStay) {
    DecodedStream stream;
    stream.Feed(test::FrameBuilder().Terminator(kNac));
    std::uint32_t size = 0;
    {
        const test::AllocationFailure failure(0);
        EXPECT_EQ(stream.decoder.TakeRecords(&size), nullptr);
        EXPECT_TRUE(failure.HasStruck());
    }
    EXPECT_EQ(size, 162U) << "the size that there would have been";
    EXPECT_NE(stream.decoder.TakeRecords(&size), nullptr);
}

} // namespace
} // namespace orva::p25
