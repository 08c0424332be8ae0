// The driver of the frame decoder: arguments, states, reset.
#include "p25/COrvaFrameDecoder.h"
#include "tests/p25/COrvaFrameDecoderInspector.h"
#include "tests/p25/DecodedStream.h"
#include "tests/support/FrameBuilder.h"
#include "tests/support/Transmission.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using Inspector = COrvaFrameDecoderInspector;
using test::CallFields;
using test::DecodedStream;
using test::FieldsOf;

TEST(FrameDecoder, StartsWithNothingKnown) {
    COrvaFrameDecoder decoder;
    EXPECT_EQ(FieldsOf(decoder), CallFields{});
    EXPECT_EQ(decoder.GetBitErrorRate(), 0.0F);
    EXPECT_EQ(decoder.GetBlockSize(), 1024U);
    EXPECT_EQ(decoder.GetReadyCount(), 0);
    EXPECT_EQ(decoder.PopVoiceBlock(), nullptr);
    EXPECT_EQ(decoder.GetPartialBlock(), nullptr);
    EXPECT_EQ(decoder.GetPartialFill(), 0U);
    const Inspector inspector{decoder};
    EXPECT_EQ(inspector.State(), Inspector::kSearch);
    EXPECT_EQ(inspector.ErrorCode(), 0U);
}

TEST(FrameDecoder, RefusesANullText) {
    COrvaFrameDecoder decoder;
    EXPECT_EQ(decoder.Decode(nullptr, 10), -1);
    EXPECT_EQ(Inspector{decoder}.ErrorCode(), 3U);
}

TEST(FrameDecoder, RefusesAnEmptyText) {
    for (const std::int32_t count : {0, -1, -1000}) {
        COrvaFrameDecoder decoder;
        EXPECT_EQ(decoder.Decode("0123", count), -1) << "count " << count;
        EXPECT_EQ(Inspector{decoder}.ErrorCode(), 3U);
    }
}

TEST(FrameDecoder, GoesOnAfterARefusedCall) {
    const std::string frame = test::FrameBuilder().Terminator(0x123);
    DecodedStream stream;
    stream.Feed(frame.substr(0, 40));
    EXPECT_EQ(stream.decoder.Decode(nullptr, 1), -1);
    stream.Feed(frame.substr(40));
    EXPECT_EQ(stream.decoder.GetNetworkAccessCode(), 0x123);
}

TEST(FrameDecoder, ReturnsTheBlocksThatAreReady) {
    COrvaFrameDecoder decoder;
    decoder.SetBlockSize(480);
    test::FrameBuilder builder;
    const std::string ldu = builder.Ldu2(1, {}, {});
    EXPECT_EQ(decoder.Decode(ldu.data(), static_cast<std::int32_t>(ldu.size())), 3);
    EXPECT_EQ(decoder.GetReadyCount(), 3);
    delete decoder.PopVoiceBlock();
    EXPECT_EQ(decoder.Decode("0", 1), 2);
}

TEST(FrameDecoder, FailsInAStateThatIsNone) {
    for (const std::uint32_t state : {11U, 12U, 99U, 101U, 0xFFFFFFFFU}) {
        COrvaFrameDecoder decoder;
        Inspector inspector{decoder};
        inspector.SetState(state);
        EXPECT_EQ(decoder.Decode("0123", 4), -1) << "state " << state;
        EXPECT_EQ(inspector.ErrorCode(), 4U);
        EXPECT_EQ(decoder.GetInputLeft(), 0) << "the rest of the input is dropped";
    }
}

TEST(FrameDecoder, DropForgetsTheCallWithTheNextInput) {
    COrvaFrameDecoder decoder;
    Inspector inspector{decoder};
    inspector.SetFields(Transmission::Voice, 0x80, 0x293, 1, 2, 3);
    inspector.SetState(Inspector::kDrop);
    inspector.FrameCounter() = 24;
    EXPECT_EQ(FieldsOf(decoder), (CallFields{4, 0x80, 0x293, 1, 2, 3}));
    EXPECT_EQ(decoder.Decode("0", 1), 0);
    EXPECT_EQ(FieldsOf(decoder), CallFields{});
    EXPECT_EQ(inspector.State(), Inspector::kSearch);
    EXPECT_EQ(inspector.FrameCounter(), 0);
}

TEST(FrameDecoder, DropLeavesItsInputToTheSearch) {
    DecodedStream stream;
    Inspector{stream.decoder}.SetState(Inspector::kDrop);
    stream.Feed(test::FrameBuilder().Terminator(0x123));
    EXPECT_EQ(stream.decoder.GetNetworkAccessCode(), 0x123) << "the sync began at the first dibit";
}

TEST(FrameDecoder, TakesTheReservedByteForTheEndOfInput) {
    // It stops the state in hand for a moment and counts as no dibit.
    const std::string frame = test::FrameBuilder().Terminator(0x123);
    for (const std::size_t place : {3U, 30U, 60U}) {
        std::string spoilt = frame;
        spoilt.insert(place, 1, '\xFF');
        DecodedStream stream;
        stream.Feed(spoilt);
        EXPECT_EQ(stream.decoder.GetNetworkAccessCode(), 0x123) << "place " << place;
        EXPECT_EQ(Inspector{stream.decoder}.State(), Inspector::kExpectSyncAfterEnd);
    }
}

TEST(FrameDecoderReset, ForgetsTheCall) {
    COrvaFrameDecoder decoder;
    Inspector inspector{decoder};
    inspector.SetFields(Transmission::Voice, 0x80, 0x293, 1, 2, 3);
    inspector.SetState(Inspector::kReadLdu1);
    decoder.Decode(nullptr, 0);
    decoder.Reset();
    EXPECT_EQ(FieldsOf(decoder), CallFields{});
    EXPECT_EQ(inspector.State(), Inspector::kSearch);
    EXPECT_EQ(inspector.ErrorCode(), 0U);
    EXPECT_EQ(decoder.GetBitErrorRate(), 0.0F);
}

TEST(FrameDecoderReset, ForgetsASyncThatHasBegun) {
    const std::string frame = test::FrameBuilder().Terminator(0x123);
    DecodedStream stream;
    stream.Feed(frame.substr(0, 23));
    stream.decoder.Reset();
    stream.Feed(frame.substr(23));
    EXPECT_TRUE(stream.events.empty());
}

TEST(FrameDecoderReset, ClearsTheFirst25BytesOfTheWindow) {
    COrvaFrameDecoder decoder;
    Inspector inspector{decoder};
    std::fill_n(inspector.Window(), 100, 'x');
    decoder.Reset();
    EXPECT_TRUE(std::all_of(inspector.Window(), inspector.Window() + 25, [](char c) { return c == '\0'; }));
    EXPECT_EQ(inspector.Window()[25], 'x');
}

TEST(FrameDecoderReset, StartsTheVoiceDecoderAfresh) {
    test::Transmission call;
    call.AddCall({.superframes = 1, .ending = test::CallEnding::None},
                 [](std::size_t) { return test::VoiceBits{}; });
    DecodedStream fresh;
    fresh.Feed(call.Dibits());
    DecodedStream used;
    used.Feed(call.Dibits().substr(0, 3 * 864));
    used.decoder.Reset();
    used.synthesised.clear();
    used.Feed(call.Dibits());
    EXPECT_EQ(used.synthesised, fresh.synthesised);
}

TEST(FrameDecoderReset, KeepsTheQueuedRecords) {
    DecodedStream stream;
    stream.Feed(test::FrameBuilder().Terminator(0x123));
    stream.decoder.Reset();
    std::uint32_t size = 0;
    EXPECT_NE(stream.decoder.TakeRecords(&size), nullptr);
    EXPECT_EQ(size, 162U);
}

} // namespace
} // namespace orva::p25
