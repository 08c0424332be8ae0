// How the frame decoder finds the sync: in the open, at its place, after a terminator, after trunking.
#include "p25/COrvaFrameDecoder.h"
#include "p25/FrameSync.h"
#include "tests/p25/COrvaFrameDecoderInspector.h"
#include "tests/p25/DecodedStream.h"
#include "tests/support/BlockCodes.h"
#include "tests/support/FrameBuilder.h"
#include "tests/support/RandomSource.h"

#include <string>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using Inspector = COrvaFrameDecoderInspector;
using test::CallFields;
using test::DecodedStream;
using test::FieldsOf;

constexpr CallFields kNothingKnown = {};

/// The sync with its first `levels` dibits one level off and the last `flips` turned round.
std::string SpoiltSync(int levels, int flips) {
    std::string sync = kSyncPattern;
    for (int i = 0; i < levels; ++i) {
        char& dibit = sync[static_cast<std::size_t>(i)];
        dibit = dibit == '1' ? '0' : '2';
    }
    for (int i = 0; i < flips; ++i) {
        char& dibit = sync[sync.size() - 1 - static_cast<std::size_t>(i)];
        dibit = dibit == '1' ? '3' : '1';
    }
    return sync;
}

/// Text in which no sync is found: "0" is one off from "1" and three from "3".
std::string Quiet(std::size_t count) {
    return std::string(count, '0');
}

/// A decoder in `state` with everything known of a call.
void PutInto(COrvaFrameDecoder& decoder, std::uint32_t state) {
    Inspector inspector{decoder};
    inspector.SetFields(Transmission::Voice, 0x80, 0x293, 1, 2, 3);
    inspector.SetState(state);
}

/// The state after `text`.
std::uint32_t StateAfter(std::uint32_t state, const std::string& text) {
    DecodedStream stream;
    PutInto(stream.decoder, state);
    stream.Feed(text);
    return Inspector{stream.decoder}.State();
}

TEST(SyncSearch, FindsTheSyncAnywhere) {
    for (std::size_t lead = 0; lead < 100; ++lead) {
        EXPECT_EQ(StateAfter(Inspector::kSearch, Quiet(lead) + kSyncPattern), Inspector::kReadNid)
            << "lead " << lead;
    }
}

TEST(SyncSearch, NeedsTheWholeSync) {
    EXPECT_EQ(StateAfter(Inspector::kSearch, std::string(kSyncPattern).substr(0, 23)), Inspector::kSearch);
    EXPECT_EQ(StateAfter(Inspector::kSearch, std::string(kSyncPattern).substr(1)), Inspector::kSearch);
}

TEST(SyncSearch, AcceptsFiveDibitsOneLevelOff) {
    EXPECT_EQ(StateAfter(Inspector::kSearch, SpoiltSync(5, 0)), Inspector::kReadNid);
}

TEST(SyncSearch, AcceptsADistanceOfTenAndRefusesEleven) {
    for (int levels = 0; levels <= 10; ++levels) {
        EXPECT_EQ(StateAfter(Inspector::kSearch, SpoiltSync(levels, 0)), Inspector::kReadNid) << levels;
    }
    EXPECT_EQ(StateAfter(Inspector::kSearch, SpoiltSync(11, 0)), Inspector::kSearch);
}

TEST(SyncSearch, RefusesASingleOppositeDibit) {
    for (std::size_t place = 0; place < kSyncLength; ++place) {
        std::string sync = kSyncPattern;
        sync[place] = sync[place] == '1' ? '3' : '1';
        EXPECT_EQ(StateAfter(Inspector::kSearch, sync), Inspector::kSearch) << "place " << place;
    }
}

TEST(SyncSearch, PreparesToReadTheIdentifier) {
    DecodedStream stream;
    Inspector inspector{stream.decoder};
    inspector.FrameCounter() = 77;
    inspector.StatusPhase() = 5;
    std::fill_n(inspector.Window(), 100, 'x');
    stream.Feed(Quiet(24) + kSyncPattern);
    EXPECT_EQ(inspector.FrameCounter(), 0);
    EXPECT_EQ(inspector.StatusPhase(), 24);
    EXPECT_EQ(std::string(inspector.Window(), 35), std::string(35, '0'));
    EXPECT_EQ(inspector.Window()[35], '\0');
    EXPECT_EQ(inspector.Window()[36], 'x');
}

TEST(SyncSearch, IsNotFooledByNoise) {
    // 24 of 4^24 windows come near; a million dibits of noise hold none.
    test::RandomSource random(1);
    std::string noise;
    for (int i = 0; i < 100000; ++i) {
        noise.push_back(static_cast<char>('0' + random.Below(4)));
    }
    DecodedStream stream;
    stream.Feed(noise);
    EXPECT_TRUE(stream.events.empty());
}

class IdleCountdown : public testing::TestWithParam<Transmission> {};

TEST_P(IdleCountdown, ForgetsTheTransmissionAtItsEnd) {
    DecodedStream stream;
    Inspector inspector{stream.decoder};
    inspector.SetFields(GetParam(), 0x80, 0x293, 1, 2, 3);
    inspector.IdleCountdown() = 10000;
    stream.Feed(Quiet(9999));
    const auto shown = static_cast<std::uint32_t>(GetParam());
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{shown, 0x80, 0x293, 1, 2, 3}));
    EXPECT_EQ(inspector.IdleCountdown(), 1U);
    stream.Feed("0");
    EXPECT_EQ(FieldsOf(stream.decoder), kNothingKnown);
    EXPECT_EQ(inspector.State(), Inspector::kSearch);
    EXPECT_EQ(inspector.FrameCounter(), 0);
}

TEST_P(IdleCountdown, TheDibitThatCompletesASyncDoesNotCount) {
    DecodedStream stream;
    Inspector inspector{stream.decoder};
    inspector.SetFields(GetParam(), -1, 0x293, -1, -1, -1);
    inspector.IdleCountdown() = 24;
    stream.Feed(kSyncPattern);
    EXPECT_EQ(inspector.IdleCountdown(), 1U);
    EXPECT_EQ(stream.decoder.GetTransmission(), static_cast<std::uint32_t>(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(NotVoice, IdleCountdown,
                         testing::Values(Transmission::Unknown, Transmission::Trunking, Transmission::Data));

TEST(IdleCountdownScope, NeverRunsForVoiceNorItsEndNorNothing) {
    for (const Transmission shown : {Transmission::None, Transmission::Voice, Transmission::EndOfVoice}) {
        DecodedStream stream;
        Inspector inspector{stream.decoder};
        inspector.SetFields(shown, 0x80, 0x293, 1, 2, 3);
        inspector.IdleCountdown() = 10000;
        stream.Feed(Quiet(25000));
        EXPECT_EQ(FieldsOf(stream.decoder),
                  (CallFields{static_cast<std::uint32_t>(shown), 0x80, 0x293, 1, 2, 3}));
        EXPECT_EQ(inspector.IdleCountdown(), 10000U);
    }
}

TEST(IdleCountdownScope, RunsOnlyInTheSearch) {
    const std::string frame = test::FrameBuilder().Header(0x293, {});
    DecodedStream stream;
    Inspector inspector{stream.decoder};
    inspector.IdleCountdown() = 500;
    inspector.SetState(Inspector::kReadHeader);
    inspector.SetFields(Transmission::Unknown, -1, -1, -1, -1, -1);
    stream.Feed(frame.substr(57));
    EXPECT_EQ(inspector.State(), Inspector::kExpectSync);
    EXPECT_EQ(inspector.IdleCountdown(), 500U);
}

TEST(IdleCountdownScope, FramesOfUnknownTypesKeepItUp) {
    const std::string frame = test::FrameBuilder().Frame(0x111, 6, {});
    DecodedStream stream;
    for (int burst = 0; burst < 5; ++burst) {
        stream.Feed(frame + Quiet(9900));
        EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{1, -1, 0x111, -1, -1, -1})) << "burst " << burst;
    }
    stream.Feed(Quiet(100));
    EXPECT_EQ(FieldsOf(stream.decoder), kNothingKnown);
}

class SyncAtItsPlace : public testing::TestWithParam<std::uint32_t> {};

TEST_P(SyncAtItsPlace, AcceptsUpToSevenOppositeDibits) {
    for (int flips = 0; flips <= 7; ++flips) {
        EXPECT_EQ(StateAfter(GetParam(), SpoiltSync(0, flips)), Inspector::kReadNid) << flips;
    }
}

TEST_P(SyncAtItsPlace, AcceptsADistanceOfFifteenAndLosesSixteen) {
    EXPECT_EQ(StateAfter(GetParam(), SpoiltSync(15, 0)), Inspector::kReadNid);
    EXPECT_EQ(StateAfter(GetParam(), SpoiltSync(1, 7)), Inspector::kReadNid);
    EXPECT_NE(StateAfter(GetParam(), SpoiltSync(16, 0)), Inspector::kReadNid);
    EXPECT_NE(StateAfter(GetParam(), SpoiltSync(2, 7)), Inspector::kReadNid);
    EXPECT_NE(StateAfter(GetParam(), SpoiltSync(0, 8)), Inspector::kReadNid);
}

TEST_P(SyncAtItsPlace, ReadsExactly24Dibits) {
    DecodedStream stream;
    PutInto(stream.decoder, GetParam());
    Inspector inspector{stream.decoder};
    inspector.StatusPhase() = 7;
    const std::string sync = kSyncPattern;
    for (std::size_t i = 0; i + 1 < sync.size(); ++i) {
        stream.Feed(sync.substr(i, 1));
        EXPECT_EQ(inspector.State(), GetParam()) << "dibit " << i;
        EXPECT_EQ(inspector.StatusPhase(), 7) << "status symbols are not counted here";
    }
    stream.Feed(sync.substr(23));
    EXPECT_EQ(inspector.State(), Inspector::kReadNid);
    EXPECT_EQ(inspector.FrameCounter(), 0);
    EXPECT_EQ(inspector.StatusPhase(), 24);
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, 0x80, 0x293, 1, 2, 3}));
}

TEST_P(SyncAtItsPlace, DoesNotSlide) {
    EXPECT_NE(StateAfter(GetParam(), std::string(1, '2') + std::string(kSyncPattern).substr(0, 23)),
              Inspector::kReadNid);
}

INSTANTIATE_TEST_SUITE_P(States, SyncAtItsPlace,
                         testing::Values(Inspector::kExpectSync, Inspector::kExpectSyncAfterEnd));

TEST(ExpectSync, LossForgetsTheWholeCall) {
    DecodedStream stream;
    PutInto(stream.decoder, Inspector::kExpectSync);
    Inspector inspector{stream.decoder};
    stream.Feed(Quiet(24));
    EXPECT_EQ(inspector.State(), Inspector::kDrop);
    EXPECT_EQ(stream.events, std::vector<std::string>{test::kLostEvent});
    stream.Feed("0");
    EXPECT_EQ(inspector.State(), Inspector::kSearch);
    EXPECT_EQ(inspector.FrameCounter(), 0);
    EXPECT_EQ(FieldsOf(stream.decoder), kNothingKnown);
}

TEST(ExpectSync, ASlipOfOneDibitLosesTheCall) {
    // The search finds the slipped sync with the very next dibit, but all that was known of the call is gone.
    test::FrameBuilder builder;
    DecodedStream stream;
    stream.Feed(builder.Header(0x293, {.talkGroup = 7}) + "0" + builder.Ldu2(0x293, {}, {}).substr(0, 57));
    EXPECT_EQ(stream.events,
              (std::vector<std::string>{test::NidEvent(0x293, 0, 0), test::HeaderEvent(0x80, 7),
                                        test::kLostEvent, test::NidEvent(0x293, 10, 0)}));
    EXPECT_EQ(stream.places[2], 396U + 24U);
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, -1, 0x293, -1, -1, -1}));
}

TEST(ExpectSyncAfterEnd, LossKeepsTheAlgorithm) {
    DecodedStream stream;
    PutInto(stream.decoder, Inspector::kExpectSyncAfterEnd);
    Inspector inspector{stream.decoder};
    stream.Feed(Quiet(24));
    EXPECT_EQ(inspector.State(), Inspector::kSearch);
    EXPECT_EQ(inspector.FrameCounter(), 0);
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{0, 0x80, -1, -1, -1, -1}));
    EXPECT_TRUE(stream.events.empty()) << "an end is no loss";
}

TEST(SyncSearch, GoesOnWithTheDibitsOfAFailedExpectation) {
    // A frame whose sync begins inside the 24 dibits that were expected to be one.
    const std::string frame = test::FrameBuilder().Terminator(0x123);
    for (const std::uint32_t state : {Inspector::kExpectSync, Inspector::kExpectSyncAfterEnd}) {
        DecodedStream stream;
        PutInto(stream.decoder, state);
        stream.Feed(std::string("02").append(frame));
        EXPECT_EQ(stream.decoder.GetNetworkAccessCode(), 0x123) << "state " << state;
    }
}

TEST(SeekAfterTrunking, NeverComparesTheFirst24Dibits) {
    EXPECT_EQ(StateAfter(Inspector::kSeekAfterTrunking, kSyncPattern), Inspector::kSeekAfterTrunking);
    // With one dibit more the window is the sync shifted by one place. Its distance decides:
    for (const char next : {'0', '1', '2', '3'}) {
        const std::string shifted = std::string(kSyncPattern).substr(1) + next;
        int largest = 0;
        const bool near = SyncDistance(shifted.data(), largest) < 16;
        EXPECT_EQ(StateAfter(Inspector::kSeekAfterTrunking, std::string(kSyncPattern) + next),
                  near ? Inspector::kReadNid : Inspector::kSeekAfterTrunking)
            << "next " << next;
    }
}

TEST(SeekAfterTrunking, MissesAFrameThatFollowsAtOnce) {
    const std::string frame = test::FrameBuilder().Terminator(0x123);
    DecodedStream stream;
    PutInto(stream.decoder, Inspector::kSeekAfterTrunking);
    stream.Feed(frame + Quiet(28));
    EXPECT_EQ(stream.events, std::vector<std::string>{});
    EXPECT_EQ(Inspector{stream.decoder}.State(), Inspector::kSearch);
}

TEST(SeekAfterTrunking, FindsASyncThatBeginsOneDibitLater) {
    EXPECT_EQ(StateAfter(Inspector::kSeekAfterTrunking, std::string(1, '2') + std::string(kSyncPattern)),
              Inspector::kReadNid);
}

TEST(SeekAfterTrunking, AcceptsADistanceOfFifteenWhateverTheLargest) {
    EXPECT_EQ(StateAfter(Inspector::kSeekAfterTrunking, Quiet(30) + SpoiltSync(0, 7)), Inspector::kReadNid);
    EXPECT_EQ(StateAfter(Inspector::kSeekAfterTrunking, Quiet(30) + SpoiltSync(1, 7)), Inspector::kReadNid);
    EXPECT_EQ(StateAfter(Inspector::kSeekAfterTrunking, Quiet(30) + SpoiltSync(0, 8)),
              Inspector::kSeekAfterTrunking);
}

TEST(SeekAfterTrunking, PreparesToReadTheIdentifier) {
    DecodedStream stream;
    PutInto(stream.decoder, Inspector::kSeekAfterTrunking);
    Inspector inspector{stream.decoder};
    stream.Feed(Quiet(10) + kSyncPattern);
    EXPECT_EQ(inspector.FrameCounter(), 0);
    EXPECT_EQ(inspector.StatusPhase(), 24);
}

TEST(SeekAfterTrunking, GivesUpAtTheHundredthDibitAndKeepsTheAlgorithm) {
    DecodedStream stream;
    PutInto(stream.decoder, Inspector::kSeekAfterTrunking);
    Inspector inspector{stream.decoder};
    stream.Feed(Quiet(99));
    EXPECT_EQ(inspector.State(), Inspector::kSeekAfterTrunking);
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, 0x80, 0x293, 1, 2, 3}));
    stream.Feed("0");
    EXPECT_EQ(inspector.State(), Inspector::kSearch);
    EXPECT_EQ(inspector.FrameCounter(), 0);
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{0, 0x80, -1, -1, -1, -1}));
}

TEST(SeekAfterTrunking, TakesASyncThatEndsWithTheHundredthDibit) {
    EXPECT_EQ(StateAfter(Inspector::kSeekAfterTrunking, Quiet(76) + kSyncPattern), Inspector::kReadNid);
}

} // namespace
} // namespace orva::p25
