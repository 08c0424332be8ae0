// Reading the network identifier and going on by its data unit.
#include "p25/COrvaFrameDecoder.h"
#include "p25/NetworkIdentifier.h"
#include "tests/p25/COrvaFrameDecoderInspector.h"
#include "tests/p25/DecodedStream.h"
#include "tests/support/BlockCodes.h"
#include "tests/support/ErrorInjector.h"
#include "tests/support/FrameBuilder.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using Inspector = COrvaFrameDecoderInspector;
using test::CallFields;
using test::DecodedStream;
using test::FieldsOf;

constexpr std::size_t kNidEnd = 57; ///< dibits of sync, network identifier and the status symbol in it
constexpr std::size_t kStatusPlace = 35;

/// Sync and network identifier of a frame.
std::string Opening(unsigned nac, unsigned duid, const test::ErrorPlan& plan = {}, std::uint64_t seed = 1) {
    test::FrameBuilder builder{test::ErrorInjector(plan, seed)};
    return builder.Frame(nac, duid, {}).substr(0, kNidEnd);
}

/// A sync and a network identifier as given, status symbol included.
std::string OpeningOf(std::uint64_t nid) {
    std::string opening(test::kSyncDibits);
    for (int shift = 62; shift >= 0; shift -= 2) {
        if (opening.size() == kStatusPlace) {
            opening.push_back('2');
        }
        opening.push_back(static_cast<char>('0' + (nid >> shift & 3U)));
    }
    return opening;
}

struct Row {
    unsigned duid;
    std::uint32_t state;
    CallFields fields; ///< after a call in which all was known
    bool startsIdleCountdown = false;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << "DUID " << row.duid;
}

constexpr std::int32_t kAlgorithm = 0x84;
constexpr std::int32_t kTalkGroup = 11;
constexpr std::int32_t kSource = 22;
constexpr std::int32_t kDestination = 33;
constexpr unsigned kNac = 0x5C3;

constexpr CallFields Kept(std::uint32_t transmission) {
    return {transmission, kAlgorithm, kNac, kTalkGroup, kSource, kDestination};
}

class DataUnitDispatch : public testing::TestWithParam<Row> {
protected:
    /// A decoder in a call, its counters anywhere, that then reads the parameter's identifier.
    void Read() {
        inspector.SetFields(Transmission::Voice, kAlgorithm, 0x111, kTalkGroup, kSource, kDestination);
        inspector.SetState(Inspector::kExpectSync);
        inspector.IdleCountdown() = 123;
        inspector.VoicePosition() = 31;
        inspector.HeaderAccumulator() = 7;
        inspector.HeaderWriteIndex() = 50;
        std::fill_n(inspector.Symbols(), 63, 9U);
        inspector.LinkAccumulator() = inspector.LinkBitCount() = inspector.LinkWordIndex() = 8;
        inspector.SyncAccumulator() = inspector.SyncBitCount() = inspector.SyncWordIndex() = 8;
        stream.Feed(Opening(kNac, GetParam().duid));
    }

    DecodedStream stream;
    Inspector inspector{stream.decoder};
};

TEST_P(DataUnitDispatch, EntersTheStateOfTheDataUnit) {
    Read();
    EXPECT_EQ(inspector.State(), GetParam().state);
    EXPECT_EQ(inspector.FrameCounter(), 0);
    EXPECT_EQ(inspector.StatusPhase(), 21) << "the 57 dibits read, modulo 36";
}

TEST_P(DataUnitDispatch, SetsTheFieldsOfTheDataUnit) {
    Read();
    EXPECT_EQ(FieldsOf(stream.decoder), GetParam().fields);
}

TEST_P(DataUnitDispatch, StartsTheIdleCountdownOfUnknownAndPacketDataOnly) {
    Read();
    EXPECT_EQ(inspector.IdleCountdown(), GetParam().startsIdleCountdown ? 10000U : 123U);
}

TEST_P(DataUnitDispatch, ClearsTheCountersOfItsOwnFrameOnly) {
    Read();
    const bool isLdu1 = GetParam().duid == 5;
    const bool isLdu2 = GetParam().duid == 10;
    const bool isHeader = GetParam().duid == 0;
    EXPECT_EQ(inspector.VoicePosition(), isLdu1 || isLdu2 ? 0 : 31);
    for (const std::uint32_t counter :
         {inspector.LinkAccumulator(), inspector.LinkBitCount(), inspector.LinkWordIndex()}) {
        EXPECT_EQ(counter, isLdu1 ? 0U : 8U);
    }
    for (const std::uint32_t counter :
         {inspector.SyncAccumulator(), inspector.SyncBitCount(), inspector.SyncWordIndex()}) {
        EXPECT_EQ(counter, isLdu2 ? 0U : 8U);
    }
    EXPECT_EQ(inspector.HeaderAccumulator(), isHeader ? 0U : 7U);
    EXPECT_EQ(inspector.HeaderWriteIndex(), isHeader ? 27U : 50U);
    EXPECT_TRUE(std::all_of(inspector.Symbols(), inspector.Symbols() + 63,
                            [isHeader](std::uint32_t symbol) { return symbol == (isHeader ? 0U : 9U); }));
}

TEST_P(DataUnitDispatch, IsTold) {
    Read();
    EXPECT_EQ(stream.events,
              std::vector<std::string>{test::NidEvent(kNac, static_cast<std::int32_t>(GetParam().duid), 0)});
    EXPECT_EQ(stream.places, std::vector<std::size_t>{kNidEnd});
}

constexpr CallFields kHeaderFields = {4, -1, kNac, kTalkGroup, -1, -1};

INSTANTIATE_TEST_SUITE_P(
    AllSixteen, DataUnitDispatch,
    testing::Values(Row{0, Inspector::kReadHeader, kHeaderFields}, Row{1, Inspector::kSearch, Kept(1), true},
                    Row{2, Inspector::kSearch, Kept(1), true}, Row{3, Inspector::kSkipTerminator, Kept(5)},
                    Row{4, Inspector::kSearch, Kept(1), true}, Row{5, Inspector::kReadLdu1, Kept(4)},
                    Row{6, Inspector::kSearch, Kept(1), true}, Row{7, Inspector::kReadTrunking, Kept(2)},
                    Row{8, Inspector::kSearch, Kept(1), true}, Row{9, Inspector::kSearch, Kept(1), true},
                    Row{10, Inspector::kReadLdu2, Kept(4)}, Row{11, Inspector::kSearch, Kept(1), true},
                    Row{12, Inspector::kSearch, Kept(3), true}, Row{13, Inspector::kSearch, Kept(1), true},
                    Row{14, Inspector::kSearch, Kept(1), true},
                    Row{15, Inspector::kSkipTerminatorLc, Kept(5)}));

TEST(NidReading, ReadsEveryNetworkAccessCode) {
    DecodedStream stream;
    for (unsigned nac = 0; nac < 4096; nac += 7) {
        Inspector{stream.decoder}.SetState(Inspector::kSearch);
        stream.Feed(Opening(nac, 3));
        ASSERT_EQ(stream.decoder.GetNetworkAccessCode(), static_cast<std::int32_t>(nac));
    }
}

TEST(NidReading, SkipsTheStatusSymbolWhateverItsValue) {
    for (const char status : {'0', '1', '2', '3'}) {
        std::string opening = Opening(0x293, 5);
        opening[kStatusPlace] = status;
        DecodedStream stream;
        stream.Feed(opening);
        EXPECT_EQ(stream.events, std::vector<std::string>{test::NidEvent(0x293, 5, 0)});
    }
}

TEST(NidReading, PutsANulBehindTheText) {
    DecodedStream stream;
    Inspector inspector{stream.decoder};
    stream.Feed(Opening(0x293, 5));
    EXPECT_EQ(inspector.Window()[31], '\0');
    EXPECT_EQ(inspector.Window()[32], '\0');
}

TEST(NidReading, CorrectsElevenErrorsOfEveryDataUnit) {
    for (unsigned duid = 0; duid < 16; ++duid) {
        for (std::uint64_t seed = 1; seed <= 10; ++seed) {
            DecodedStream stream;
            stream.Feed(Opening(0xF7E, duid, {.nidBits = 11}, seed));
            ASSERT_EQ(stream.events,
                      std::vector<std::string>{test::NidEvent(0xF7E, static_cast<std::int32_t>(duid), 11)})
                << "seed " << seed;
        }
    }
}

TEST(NidReading, HandlesAnUncorrectableWordByWhatItSeemsToSay) {
    // Parity so wrong that no word is near, the information as it was sent.
    std::uint64_t nid = test::EncodeNid(0x293, 5);
    test::ErrorInjector errors({}, 3);
    std::uint64_t received = 0;
    std::string text;
    do {
        received = nid ^ errors.FlipBits(0, 46, 16) << 1;
        text.clear();
        for (int shift = 62; shift >= 0; shift -= 2) {
            text.push_back(static_cast<char>('0' + (received >> shift & 3U)));
        }
    } while (CorrectNid(text.data(), nullptr));

    DecodedStream stream;
    stream.Feed(OpeningOf(received));
    EXPECT_EQ(stream.events, std::vector<std::string>{test::NidEvent(0x293, 5, -1)});
    EXPECT_EQ(Inspector{stream.decoder}.State(), Inspector::kReadLdu1);
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, -1, 0x293, -1, -1, -1}));
}

TEST(PacketData, IsSearchedForTheNextSync) {
    // Nothing in the packet is decoded; the frame behind it is found by sliding.
    test::FrameBuilder builder;
    test::BitString body;
    body.PadTo(392);
    DecodedStream stream;
    stream.Feed(builder.Frame(0x293, 12, body));
    EXPECT_EQ(stream.decoder.GetTransmission(), 3U);
    EXPECT_EQ(Inspector{stream.decoder}.State(), Inspector::kSearch);
    stream.Feed(builder.Terminator(0x294));
    EXPECT_EQ(stream.decoder.GetNetworkAccessCode(), 0x294);
}

TEST(PacketData, IsForgottenAfterTenThousandDibitsWithoutASync) {
    DecodedStream stream;
    stream.Feed(Opening(0x293, 12) + std::string(9999, '0'));
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{3, -1, 0x293, -1, -1, -1}));
    stream.Feed("0");
    EXPECT_EQ(FieldsOf(stream.decoder), CallFields{});
}

} // namespace
} // namespace orva::p25
