// Bodies of the logical link data units: link control, encryption sync, voice, low-speed data.
#include "p25/COrvaFrameDecoder.h"
#include "tests/p25/COrvaFrameDecoderInspector.h"
#include "tests/p25/DecodedStream.h"
#include "tests/support/BlockCodes.h"
#include "tests/support/FrameBuilder.h"
#include "tests/support/RandomSource.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using Inspector = COrvaFrameDecoderInspector;
using test::CallFields;
using test::DecodedStream;
using test::FieldsOf;

constexpr unsigned kNac = 0x293;
constexpr std::size_t kNidEnd = 57;

test::VoiceWords RandomVoice(std::uint64_t seed) {
    test::RandomSource random(seed);
    test::VoiceWords words;
    for (test::VoiceBits& word : words) {
        for (std::uint8_t& bit : word) {
            bit = static_cast<std::uint8_t>(random.Below(2));
        }
    }
    return words;
}

test::LinkControl GroupVoice(std::uint16_t talkGroup, std::uint32_t source) {
    return {.format = 0, .talkGroup = talkGroup, .source = source};
}

test::LinkControl UnitVoice(std::uint32_t destination, std::uint32_t source) {
    return {.format = 3, .destination = destination, .source = source};
}

std::string Ldu1(const test::LinkControl& link) {
    return test::FrameBuilder().Ldu1(kNac, link, RandomVoice(1));
}

/// The records among the events.
std::vector<std::string> RecordsOf(const DecodedStream& stream) {
    std::vector<std::string> records;
    for (const std::string& event : stream.events) {
        if (event.starts_with("record ")) {
            records.push_back(event.substr(7));
        }
    }
    return records;
}

TEST(LinkControl, GroupVoiceGivesTalkGroupAndSource) {
    test::RandomSource random(2);
    for (int trial = 0; trial < 30; ++trial) {
        const auto talkGroup = static_cast<std::uint16_t>(random.Below(65536));
        const std::uint32_t source = random.Below(1U << 24);
        DecodedStream stream;
        stream.Feed(Ldu1(GroupVoice(talkGroup, source)));
        ASSERT_EQ(FieldsOf(stream.decoder),
                  (CallFields{4, -1, kNac, talkGroup, static_cast<std::int32_t>(source), -1}));
    }
}

TEST(LinkControl, UnitVoiceGivesDestinationAndSource) {
    test::RandomSource random(3);
    for (int trial = 0; trial < 30; ++trial) {
        const std::uint32_t destination = random.Below(1U << 24);
        const std::uint32_t source = random.Below(1U << 24);
        DecodedStream stream;
        stream.Feed(Ldu1(UnitVoice(destination, source)));
        ASSERT_EQ(FieldsOf(stream.decoder), (CallFields{4, -1, kNac, -1, static_cast<std::int32_t>(source),
                                                        static_cast<std::int32_t>(destination)}));
    }
}

TEST(LinkControl, OtherFormatsChangeNothing) {
    for (int format = 1; format < 256; ++format) {
        if (format == 3) {
            continue;
        }
        DecodedStream stream;
        Inspector{stream.decoder}.SetFields(Transmission::Voice, 0x81, kNac, 1, 2, 3);
        stream.Feed(Ldu1({.format = static_cast<std::uint8_t>(format),
                          .otherOctets = {0xFF, 0xEE, 0xDD, 0xCC, 0xBB, 0xAA, 0x99, 0x88}}));
        ASSERT_EQ(FieldsOf(stream.decoder), (CallFields{4, 0x81, kNac, 1, 2, 3})) << "format " << format;
        ASSERT_TRUE(RecordsOf(stream).empty()) << "format " << format;
        ASSERT_EQ(
            std::count(stream.events.begin(), stream.events.end(), test::LinkControlEvent(format, 1, 2, 3)),
            1);
    }
}

TEST(LinkControl, GroupVoiceAfterUnitVoiceKeepsTheDestination) {
    DecodedStream stream;
    stream.Feed(Ldu1(UnitVoice(777, 5)) + Ldu1(GroupVoice(4711, 6)));
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, -1, kNac, 4711, 6, 777}));
}

TEST(LinkControl, UnitVoiceAfterGroupVoiceKeepsTheTalkGroup) {
    DecodedStream stream;
    stream.Feed(Ldu1(GroupVoice(4711, 6)) + Ldu1(UnitVoice(777, 5)));
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, -1, kNac, 4711, 5, 777}));
}

TEST(LinkControl, ManufacturerLosesTwoBitsInItsShift) {
    // The low four bits of symbol 40 and the top two of symbol 41: bits 7 .. 4, then 0, 0, then bits 3 and 2.
    for (const std::uint8_t format : {test::LinkControl::kGroupVoice, test::LinkControl::kUnitToUnitVoice}) {
        for (unsigned manufacturer = 0; manufacturer < 256; manufacturer += 3) {
            DecodedStream stream;
            stream.Feed(Ldu1({.format = format, .manufacturer = static_cast<std::uint8_t>(manufacturer)}));
            EXPECT_EQ(Inspector{stream.decoder}.ManufacturerId(),
                      (manufacturer & 0xF0U) | (manufacturer >> 2 & 3U));
        }
    }
}

TEST(LinkControl, ANewGroupSpeakerIsRecordedByte) {
    DecodedStream stream;
    stream.Feed(Ldu1(GroupVoice(0x1234, 0xABCDEF)));
    // Type, identifier, channel, network access code, frequency, source, group with bit 31, options 32768.
    EXPECT_EQ(RecordsOf(stream), std::vector<std::string>{"05ffffff93020000ffffffffefcdab00341200800080"});
}

TEST(LinkControl, ANewUnitSpeakerIsRecordedByte) {
    DecodedStream stream;
    stream.Feed(Ldu1(UnitVoice(0x123456, 0x654321)));
    EXPECT_EQ(RecordsOf(stream), std::vector<std::string>{"05ffffff93020000ffffffff21436500563412000080"});
}

TEST(LinkControl, ARepeatedSourceIsNotRecordedAgain) {
    DecodedStream stream;
    stream.Feed(Ldu1(GroupVoice(1, 7)) + Ldu1(GroupVoice(2, 7)) + Ldu1(UnitVoice(3, 7)));
    EXPECT_EQ(RecordsOf(stream).size(), 1U);
    stream.Feed(Ldu1(GroupVoice(1, 8)));
    EXPECT_EQ(RecordsOf(stream).size(), 2U);
}

TEST(LinkControl, TheFirstSpeakerAfterAHeaderIsRecorded) {
    test::FrameBuilder builder;
    DecodedStream stream;
    stream.Feed(Ldu1(GroupVoice(1, 7)) + builder.Header(kNac, {}) + Ldu1(GroupVoice(1, 7)));
    EXPECT_EQ(RecordsOf(stream).size(), 2U);
}

TEST(LinkControl, SourceZeroIsASpeakerToo) {
    DecodedStream stream;
    stream.Feed(Ldu1(GroupVoice(1, 0)));
    EXPECT_EQ(RecordsOf(stream).size(), 1U);
}

TEST(LinkControl, UsesAnUncorrectableWordAsItStands) {
    // Seven wrong parity symbols, by hand in place: the last seven words of the frame.
    std::string frame = Ldu1(GroupVoice(4711, 123456));
    struct Range {
        std::size_t first;
        std::size_t last;
    };
    std::vector<std::size_t> places;
    for (const Range& range : {Range{149, 169}, Range{244, 263}, Range{338, 358}, Range{433, 453},
                               Range{528, 547}, Range{622, 642}}) {
        for (std::size_t position = range.first; position <= range.last; ++position) {
            const std::size_t place = kNidEnd + position - 1;
            if (place % 36 != 35) {
                places.push_back(place);
            }
        }
    }
    ASSERT_EQ(places.size(), 120U);
    for (std::size_t word = 17; word < 24; ++word) {
        for (std::size_t dibit = 0; dibit < 5; ++dibit) {
            frame[places[5 * word + dibit]] = static_cast<char>(
                '0' + (test::EncodeHamming10(static_cast<unsigned>(40 - word)) >> (8 - 2 * dibit) & 3U));
        }
    }
    DecodedStream stream;
    stream.Feed(frame);
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, -1, kNac, 4711, 123456, -1}));
}

TEST(EncryptionSync, GivesTheAlgorithm) {
    test::RandomSource random(4);
    for (unsigned algorithm = 0; algorithm < 256; algorithm += 3) {
        test::EncryptionSync sync{.algorithm = static_cast<std::uint8_t>(algorithm),
                                  .key = static_cast<std::uint16_t>(random.Below(65536))};
        for (std::uint8_t& octet : sync.messageIndicator) {
            octet = static_cast<std::uint8_t>(random.Below(256));
        }
        DecodedStream stream;
        stream.Feed(test::FrameBuilder().Ldu2(kNac, sync, RandomVoice(1)));
        EXPECT_EQ(stream.decoder.GetAlgorithmId(), static_cast<std::int32_t>(algorithm));
    }
}

TEST(EncryptionSync, ChangesNothingElse) {
    DecodedStream stream;
    Inspector{stream.decoder}.SetFields(Transmission::Voice, 0x81, kNac, 1, 2, 3);
    stream.Feed(test::FrameBuilder().Ldu2(kNac, {.algorithm = 0x84}, RandomVoice(1)));
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, 0x84, kNac, 1, 2, 3}));
    EXPECT_TRUE(RecordsOf(stream).empty());
}

TEST(EncryptionSync, NeedsNoLinkControlBeforeIt) {
    DecodedStream stream;
    stream.Feed(test::FrameBuilder().Ldu2(kNac, {.algorithm = 0x84}, RandomVoice(2)));
    const test::VoiceWords sent = RandomVoice(2);
    EXPECT_TRUE(std::equal(sent.begin(), sent.end(), stream.voice.begin(), stream.voice.end()));
}

TEST(LowSpeedData, IsCollectedAndForgottenInALdu2) {
    // Its 16 dibits make three words and two bits; the algorithm stays.
    test::RandomSource random(5);
    for (int trial = 0; trial < 20; ++trial) {
        const test::LowSpeedData data = {static_cast<std::uint8_t>(random.Below(256)),
                                         static_cast<std::uint8_t>(random.Below(256))};
        DecodedStream stream;
        Inspector inspector{stream.decoder};
        stream.Feed(test::FrameBuilder().Ldu2(kNac, {.algorithm = 0x81}, RandomVoice(1), data));
        EXPECT_EQ(stream.decoder.GetAlgorithmId(), 0x81);
        EXPECT_EQ(inspector.SyncWordIndex(), 3U);
        EXPECT_EQ(inspector.SyncBitCount(), 2U);
        EXPECT_EQ(std::count(stream.events.begin(), stream.events.end(), test::EncryptionSyncEvent(0x81)), 1);
    }
}

TEST(LowSpeedData, IsDroppedInALdu1) {
    DecodedStream stream;
    Inspector inspector{stream.decoder};
    stream.Feed(test::FrameBuilder().Ldu1(kNac, GroupVoice(1, 2), RandomVoice(1), {0xFF, 0x5A}));
    EXPECT_EQ(inspector.LinkWordIndex(), 0U);
    EXPECT_EQ(inspector.LinkBitCount(), 0U);
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, -1, kNac, 1, 2, -1}));
}

TEST(LowSpeedData, IsNoVoice) {
    for (const test::LowSpeedData& data : {test::LowSpeedData{0, 0}, test::LowSpeedData{0xFF, 0xFF}}) {
        DecodedStream stream;
        stream.Feed(test::FrameBuilder().Ldu1(kNac, {}, RandomVoice(6), data));
        const test::VoiceWords sent = RandomVoice(6);
        EXPECT_TRUE(std::equal(sent.begin(), sent.end(), stream.voice.begin(), stream.voice.end()));
    }
}

class EitherLdu : public testing::TestWithParam<bool> {
protected:
    std::string Frame(const test::VoiceWords& voice) {
        return GetParam() ? test::FrameBuilder().Ldu1(kNac, {}, voice)
                          : test::FrameBuilder().Ldu2(kNac, {}, voice);
    }
    std::uint32_t State() const { return GetParam() ? Inspector::kReadLdu1 : Inspector::kReadLdu2; }
};

TEST_P(EitherLdu, GivesEveryBitOfItsNineVoiceFrames) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        const test::VoiceWords sent = RandomVoice(seed);
        DecodedStream stream;
        stream.Feed(Frame(sent));
        ASSERT_EQ(stream.voice.size(), sent.size());
        for (std::size_t i = 0; i < sent.size(); ++i) {
            ASSERT_EQ(test::ToHex(stream.voice[i]), test::ToHex(sent[i]))
                << "seed " << seed << " frame " << i;
            ASSERT_EQ(stream.errorTotals[i], 0);
        }
        ASSERT_EQ(stream.synthesised.size(), 9U * 160U);
    }
}

TEST_P(EitherLdu, TellsOfItsPartsWhereTheyEnd) {
    // Behind the identifier, with status symbols: the words of the link end at 642, voice frame by frame.
    DecodedStream stream;
    stream.Feed(Frame(RandomVoice(1)));
    std::vector<std::size_t> voice;
    std::size_t link = 0;
    for (std::size_t i = 0; i < stream.events.size(); ++i) {
        if (stream.events[i] == test::kVoiceEvent) {
            voice.push_back(stream.places[i] - kNidEnd);
        } else if (stream.events[i].starts_with("link") || stream.events[i].starts_with("encryption")) {
            link = stream.places[i] - kNidEnd;
        }
    }
    EXPECT_EQ(voice, (std::vector<std::size_t>{74, 148, 243, 337, 432, 527, 621, 716, 806}));
    EXPECT_EQ(link, 642U);
}

TEST_P(EitherLdu, EndsWithTheStatusSymbolOfItsLastPeriod) {
    const std::string frame = Frame(RandomVoice(1));
    ASSERT_EQ(frame.size(), 864U);
    DecodedStream stream;
    Inspector inspector{stream.decoder};
    stream.Feed(frame.substr(0, 863));
    EXPECT_EQ(inspector.State(), State());
    EXPECT_EQ(inspector.FrameCounter(), 806);
    stream.Feed(frame.substr(863));
    EXPECT_EQ(inspector.State(), Inspector::kExpectSync);
    EXPECT_EQ(inspector.FrameCounter(), 0);
}

TEST_P(EitherLdu, StatusSymbolsMayHaveAnyValue) {
    const test::VoiceWords sent = RandomVoice(3);
    for (const char status : {'0', '1', '2', '3'}) {
        std::string frame = Frame(sent);
        for (std::size_t place = 35; place < frame.size(); place += 36) {
            frame[place] = status;
        }
        DecodedStream stream;
        stream.Feed(frame);
        EXPECT_TRUE(std::equal(sent.begin(), sent.end(), stream.voice.begin(), stream.voice.end()));
        EXPECT_EQ(Inspector{stream.decoder}.State(), Inspector::kExpectSync);
    }
}

TEST_P(EitherLdu, FieldsNotItsOwnStay) {
    DecodedStream stream;
    Inspector{stream.decoder}.SetFields(Transmission::None, 0x81, 0x111, 1, 2, 3);
    stream.Feed(Frame(RandomVoice(1)).substr(0, kNidEnd + 600));
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, 0x81, kNac, 1, 2, 3}));
}

INSTANTIATE_TEST_SUITE_P(Kinds, EitherLdu, testing::Values(true, false),
                         [](const auto& which) { return which.param ? "Ldu1" : "Ldu2"; });

TEST(VoiceFrame, RateIsThatOfTheVoiceDecoderInPercent) {
    DecodedStream stream;
    test::FrameBuilder builder{test::ErrorInjector({.voiceGolayBits = 3, .voiceHammingBits = 1}, 1)};
    stream.Feed(builder.Ldu2(kNac, {}, RandomVoice(1)));
    ASSERT_EQ(stream.errorRates.size(), 9U);
    EXPECT_GT(stream.errorRates.front(), 0.0F);
    EXPECT_GT(stream.errorRates.back(), stream.errorRates.front());
    const auto expected =
        static_cast<float>(Inspector{stream.decoder}.VoiceState().errorRate * 100.0 / 32768.0);
    EXPECT_EQ(stream.errorRates.back(), expected);
    EXPECT_EQ(stream.decoder.GetBitErrorRate(), expected);
}

TEST(VoiceFrame, CharactersThatAreNoDibitsLeaveTheBitsAsTheyWere) {
    const std::string ldu = test::FrameBuilder().Ldu2(kNac, {}, RandomVoice(7));
    constexpr std::size_t kDibit = 20;
    for (const char stale : {'0', '1', '2', '3'}) {
        std::string expectedText = ldu.substr(0, kNidEnd + 74);
        expectedText[kNidEnd + kDibit] = stale;
        DecodedStream expected;
        expected.Feed(expectedText);

        for (const char invalid : {'4', '/', 'x', '\0'}) {
            std::string text = expectedText;
            text[kNidEnd + kDibit] = invalid;
            DecodedStream stream;
            // No status symbol stands before place 35 - 21 = 14 of the body; this one is the 20th dibit
            // stored.
            auto* bits = Inspector{stream.decoder}.VoiceFrame().bits;
            const std::size_t stored = kDibit - 1;
            bits[2 * stored] = static_cast<std::uint8_t>((stale - '0') >> 1);
            bits[2 * stored + 1] = static_cast<std::uint8_t>((stale - '0') & 1);
            stream.Feed(text);
            ASSERT_EQ(stream.voice.size(), 1U);
            EXPECT_EQ(stream.voice, expected.voice) << "stale " << stale << " invalid " << invalid;
            EXPECT_EQ(stream.errorTotals, expected.errorTotals);
        }
    }
}

TEST(VoiceFrame, IsHandedOverAsHardBitsForANominalFrame) {
    DecodedStream stream;
    Inspector inspector{stream.decoder};
    inspector.VoiceFrame().sampleCount = 1;
    inspector.VoiceFrame().softBits = 8;
    inspector.VoiceFrame().status = 99;
    stream.Feed(test::FrameBuilder().Ldu2(kNac, {}, RandomVoice(1)).substr(0, kNidEnd + 74));
    EXPECT_EQ(inspector.VoiceFrame().sampleCount, 160);
    EXPECT_EQ(inspector.VoiceFrame().softBits, 1);
    EXPECT_EQ(inspector.VoiceFrame().status & 64, 0) << "of the old status nothing is left";
}

} // namespace
} // namespace orva::p25
