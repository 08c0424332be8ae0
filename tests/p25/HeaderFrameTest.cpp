#include "p25/COrvaFrameDecoder.h"
#include "tests/p25/COrvaFrameDecoderInspector.h"
#include "tests/p25/DecodedStream.h"
#include "tests/support/BlockCodes.h"
#include "tests/support/FrameBuilder.h"
#include "tests/support/RandomSource.h"
#include "tests/support/ReedSolomonEncoder.h"
#include "tests/support/SpeechSource.h"

#include <string>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using Inspector = COrvaFrameDecoderInspector;
using test::CallFields;
using test::DecodedStream;
using test::FieldsOf;

constexpr unsigned kNac = 0x293;

/// Place in the frame of the dibit that completes the 36th word: 380 dibits and the status symbols among
/// them.
constexpr std::size_t kLastWordEnd = 380 + 10;

test::HeaderFields RandomFields(test::RandomSource& random) {
    test::HeaderFields fields;
    for (std::uint8_t& octet : fields.messageIndicator) {
        octet = static_cast<std::uint8_t>(random.Below(256));
    }
    fields.manufacturer = static_cast<std::uint8_t>(random.Below(256));
    fields.algorithm = static_cast<std::uint8_t>(random.Below(256));
    fields.key = static_cast<std::uint16_t>(random.Below(65536));
    fields.talkGroup = static_cast<std::uint16_t>(random.Below(65536));
    return fields;
}

TEST(HeaderFrame, GivesAlgorithmAndTalkGroup) {
    test::RandomSource random(1);
    test::FrameBuilder builder;
    for (int trial = 0; trial < 50; ++trial) {
        const test::HeaderFields fields = RandomFields(random);
        DecodedStream stream;
        stream.Feed(builder.Header(kNac, fields));
        ASSERT_EQ(FieldsOf(stream.decoder),
                  (CallFields{4, fields.algorithm, kNac, fields.talkGroup, -1, -1}));
    }
}

TEST(HeaderFrame, TellsOfItsFieldsWithTheLastWord) {
    DecodedStream stream;
    stream.Feed(test::FrameBuilder().Header(kNac, {.algorithm = 0x84, .talkGroup = 4711}));
    EXPECT_EQ(stream.events,
              (std::vector<std::string>{test::NidEvent(kNac, 0, 0), test::HeaderEvent(0x84, 4711)}));
    EXPECT_EQ(stream.places, (std::vector<std::size_t>{57, kLastWordEnd}));
}

TEST(HeaderFrame, ManufacturerKeepsItsLowFourBits) {
    // Two bits of the first of its two symbols and two of the second.
    for (unsigned manufacturer = 0; manufacturer < 256; manufacturer += 5) {
        DecodedStream stream;
        stream.Feed(test::FrameBuilder().Header(
            kNac, {.manufacturer = static_cast<std::uint8_t>(manufacturer), .algorithm = 0xFF}));
        EXPECT_EQ(Inspector{stream.decoder}.ManufacturerId(), manufacturer & 15U);
    }
}

TEST(HeaderFrame, ForgetsTheSpeakerOfTheLastCall) {
    DecodedStream stream;
    Inspector{stream.decoder}.SetFields(Transmission::Voice, 1, 2, 3, 4, 5);
    stream.Feed(test::FrameBuilder().Header(kNac, {.talkGroup = 9}));
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, 0x80, kNac, 9, -1, -1}));
}

TEST(HeaderFrame, EndsWithTheStatusSymbolOfItsLastPeriod) {
    const std::string frame = test::FrameBuilder().Header(kNac, {});
    ASSERT_EQ(frame.size(), 396U);
    DecodedStream stream;
    Inspector inspector{stream.decoder};
    stream.Feed(frame.substr(0, 395));
    EXPECT_EQ(inspector.State(), Inspector::kReadHeader);
    EXPECT_EQ(inspector.FrameCounter(), 329);
    stream.Feed(frame.substr(395));
    EXPECT_EQ(inspector.State(), Inspector::kExpectSync);
    EXPECT_EQ(inspector.FrameCounter(), 0);
    EXPECT_EQ(inspector.StatusPhase(), 0);
}

TEST(HeaderFrame, StoresNothingBehindItsLastWord) {
    // Padding of any value: 329 is no multiple of nine, and words end at 324.
    std::string frame = test::FrameBuilder().Header(kNac, {.talkGroup = 7});
    for (std::size_t place = kLastWordEnd; place < frame.size(); ++place) {
        frame[place] = '3';
    }
    DecodedStream stream;
    stream.Feed(frame);
    EXPECT_EQ(stream.decoder.GetTalkGroup(), 7);
    EXPECT_EQ(Inspector{stream.decoder}.HeaderWriteIndex(), 0U);
    EXPECT_EQ(Inspector{stream.decoder}.State(), Inspector::kExpectSync);
}

TEST(HeaderFrame, StatusSymbolsMayHaveAnyValue) {
    const std::string clean = test::FrameBuilder().Header(kNac, {.algorithm = 0x81, .talkGroup = 1234});
    for (const char status : {'0', '1', '2', '3'}) {
        std::string frame = clean;
        for (std::size_t place = 35; place < frame.size(); place += 36) {
            frame[place] = status;
        }
        DecodedStream stream;
        stream.Feed(frame);
        EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, 0x81, kNac, 1234, -1, -1}));
        EXPECT_EQ(Inspector{stream.decoder}.State(), Inspector::kExpectSync);
    }
}

TEST(HeaderFrame, UsesAnUncorrectableWordAsItStands) {
    // Nine wrong parity symbols: beyond correction, but the fields themselves came through.
    test::BitString content;
    content.PadTo(72);
    content.Append(0x00, 8);
    content.Append(0x84, 8);
    content.Append(0x0000, 16);
    content.Append(4711, 16);
    std::vector<std::uint8_t> symbols =
        test::EncodeReedSolomon(content.Symbols(), test::kHeaderParitySymbols);
    for (std::size_t i = 20; i < 29; ++i) {
        symbols[i] ^= 0x15;
    }
    test::BitString body;
    for (const std::uint8_t symbol : symbols) {
        body.Append(test::EncodeGolay18(symbol), test::kGolay18Bits);
    }
    DecodedStream stream;
    stream.Feed(test::FrameBuilder().Frame(kNac, 0, body));
    EXPECT_EQ(FieldsOf(stream.decoder), (CallFields{4, 0x84, kNac, 4711, -1, -1}));
}

TEST(HeaderFrame, GivesTheNextVoiceAFreshDecoder) {
    test::SpeechSource speech(test::SpeechKind::Vowels);
    test::VoiceWords words;
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = speech.Frame(i);
    }
    test::FrameBuilder builder;
    const std::string ldu = builder.Ldu1(kNac, {}, words);
    DecodedStream first;
    first.Feed(ldu);

    DecodedStream withHeader;
    withHeader.Feed(ldu);
    withHeader.synthesised.clear();
    withHeader.Feed(builder.Header(kNac, {}) + ldu);
    EXPECT_EQ(withHeader.synthesised, first.synthesised);

    DecodedStream lateEntry;
    lateEntry.Feed(ldu);
    lateEntry.synthesised.clear();
    lateEntry.Feed(ldu);
    EXPECT_NE(lateEntry.synthesised, first.synthesised) << "without one it goes on from where it was";
}

} // namespace
} // namespace orva::p25
