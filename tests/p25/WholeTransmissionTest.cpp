// Whole transmissions as dibit text: every field, voice bit and record, with the heaviest errors, in any
// slices.
#include "p25/COrvaFrameDecoder.h"
#include "tests/p25/COrvaFrameDecoderInspector.h"
#include "tests/p25/DecodedStream.h"
#include "tests/p25/ExpectedEvents.h"
#include "tests/support/AllocationProbe.h"
#include "tests/support/RandomSource.h"
#include "tests/support/SpeechSource.h"
#include "tests/support/Transmission.h"
#include "tests/support/TrunkingPacket.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using Inspector = COrvaFrameDecoderInspector;
using test::DecodedStream;

/// Calls of all kinds, packets and frames of unknown types, with and without pauses.
test::Transmission MakeTransmission(const test::ErrorPlan& plan, std::uint64_t seed) {
    test::Transmission transmission{test::ErrorInjector(plan, seed)};
    test::RandomSource random(seed);
    const auto randomVoice = [&random](std::size_t) {
        test::VoiceBits bits;
        for (std::uint8_t& bit : bits) {
            bit = static_cast<std::uint8_t>(random.Below(2));
        }
        return bits;
    };
    test::CallDescription group{.networkAccessCode = random.Below(4096),
                                .superframes = 2,
                                .ending = test::CallEnding::TerminatorWithLinkControl};
    group.header.algorithm = static_cast<std::uint8_t>(random.Below(256));
    group.header.talkGroup = static_cast<std::uint16_t>(random.Below(65536));
    group.link.talkGroup = group.header.talkGroup;
    group.link.source = random.Below(1U << 24);
    group.encryption.algorithm = group.header.algorithm;
    group.lowSpeedData = {0xA5, 0x3C};

    test::CallDescription unit = group;
    unit.networkAccessCode = random.Below(4096);
    unit.link.format = test::LinkControl::kUnitToUnitVoice;
    unit.link.destination = random.Below(1U << 24);
    unit.encryption.algorithm = 0x80;
    unit.superframes = 1;
    unit.ending = test::CallEnding::Terminator;

    test::CallDescription lateEntry = group;
    lateEntry.withHeader = false;
    lateEntry.link.format = 0x44;
    lateEntry.superframes = 1;

    transmission.AddIdle(100);
    transmission.AddCall(group, randomVoice);
    transmission.AddIdle(500);
    transmission.AddPacket(0x123, 3);
    transmission.AddIdle(50);
    transmission.AddCall(unit, randomVoice);
    transmission.AddCall(lateEntry, randomVoice);
    transmission.AddIdle(90, '2');
    transmission.AddUnknown(0x321, 6, 300);
    transmission.AddIdle(60);
    transmission.AddUnknown(0x322, 13, 0);
    transmission.AddIdle(200);
    return transmission;
}

void ExpectEverything(const test::Transmission& sent, const DecodedStream& heard, int nidErrors,
                      const std::string& what) {
    const std::vector<std::string> expected = test::ExpectedEvents(sent.Frames(), nidErrors);
    ASSERT_EQ(heard.events.size(), expected.size()) << what;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(heard.events[i], expected[i]) << what << ", event " << i;
    }
    std::size_t index = 0;
    for (const test::SentFrame& frame : sent.Frames()) {
        for (const test::VoiceBits& bits : frame.voice) {
            ASSERT_EQ(test::ToHex(heard.voice[index]), test::ToHex(bits))
                << what << ", voice frame " << index;
            ++index;
        }
    }
    ASSERT_EQ(heard.voice.size(), index) << what;
}

TEST(WholeTransmission, CleanOneIsHeardExactly) {
    const test::Transmission sent = MakeTransmission({}, 1);
    DecodedStream heard;
    heard.Feed(sent.Dibits());
    ExpectEverything(sent, heard, 0, "clean");
}

TEST(WholeTransmission, HeaviestErrorsAreAllCorrected) {
    const test::ErrorPlan plan = test::ErrorPlan::Heaviest();
    for (std::uint64_t seed = 1; seed <= 8; ++seed) {
        const test::Transmission sent = MakeTransmission(plan, seed);
        DecodedStream heard;
        heard.Feed(sent.Dibits());
        ASSERT_NO_FATAL_FAILURE(
            ExpectEverything(sent, heard, plan.nidBits, std::to_string(seed) + " as the seed"));
        for (const std::int16_t errors : heard.errorTotals) {
            ASSERT_EQ(errors, 4 * plan.voiceGolayBits + 3 * plan.voiceHammingBits);
        }
    }
}

/// Everything that may not depend on how the text is cut, of one text.
void ExpectSame(const DecodedStream& cut, const DecodedStream& whole, const std::string& how) {
    ASSERT_EQ(cut.events, whole.events) << how;
    ASSERT_EQ(cut.places, whole.places) << how;
    ASSERT_EQ(cut.voice, whole.voice) << how;
    ASSERT_EQ(cut.synthesised, whole.synthesised) << how;
    ASSERT_EQ(cut.errorRates, whole.errorRates) << how;
    ASSERT_EQ(cut.decoder.GetPartialFill(), whole.decoder.GetPartialFill()) << how;
    ASSERT_EQ(cut.speech.size() + cut.decoder.GetPartialFill(), cut.synthesised.size())
        << how << ", no sample is lost";
    ASSERT_TRUE(std::equal(cut.speech.begin(), cut.speech.end(), cut.synthesised.begin())) << how;
    ASSERT_EQ(test::FieldsOf(cut.decoder), test::FieldsOf(whole.decoder)) << how;
    ASSERT_EQ(cut.decoder.GetBitErrorRate(), whole.decoder.GetBitErrorRate()) << how;
}

TEST(WholeTransmission, SlicingChangesNothing) {
    std::string text = MakeTransmission(test::ErrorPlan::Heaviest(), 77).Dibits();
    const std::vector<test::BitString> blocks = {
        test::EncodeTrunkingBlock(test::QuietTrunkingData(false)),
        test::EncodeTrunkingBlock(test::QuietTrunkingData(false), 0, 5),
        test::EncodeTrunkingBlock(test::QuietTrunkingData(true), 1)};
    text += test::TrunkingPacket(0x140, blocks) + test::TrunkingPacket(0x140, blocks) + std::string(300, '1');

    DecodedStream whole;
    // At most ten blocks may wait, so that the one-piece reference is fed a frame's worth at a time.
    whole.FeedInPieces(text, [] { return std::size_t{864}; });
    ASSERT_GT(whole.events.size(), 50U);

    for (const std::size_t length : {1U, 7U, 36U, 97U, 2000U}) {
        DecodedStream cut;
        cut.FeedInPieces(text, [length] { return length; });
        ASSERT_NO_FATAL_FAILURE(ExpectSame(cut, whole, std::to_string(length) + " dibits a piece"));
    }
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        test::RandomSource random(seed);
        DecodedStream cut;
        cut.FeedInPieces(text, [&random] { return 1 + random.Below(300); });
        ASSERT_NO_FATAL_FAILURE(
            ExpectSame(cut, whole, std::to_string(seed) + " as the seed of random pieces"));
    }
}

TEST(WholeTransmission, NoiseIsReadWithoutHarm) {
    test::Transmission sent;
    sent.AddRandomDibits(20000, 3);
    std::string text = sent.Dibits();
    // Frames of every type full of noise: a sync and an identifier now and then.
    test::RandomSource random(4);
    for (std::size_t place = 0; place + 100 < text.size(); place += 50 + random.Below(1500)) {
        const std::string frame = test::FrameBuilder().Frame(random.Below(4096), random.Below(16), {});
        std::copy_n(frame.begin(), 57, text.begin() + static_cast<std::ptrdiff_t>(place));
    }
    DecodedStream heard;
    heard.FeedInPieces(text, [] { return std::size_t{480}; });
    EXPECT_GT(heard.events.size(), 10U);
}

TEST(WholeTransmission, TheObserverChangesNothing) {
    const std::string text = MakeTransmission(test::ErrorPlan::Heaviest(), 5).Dibits();
    DecodedStream heard;
    COrvaFrameDecoder unheard;
    unheard.SetBlockSize(512);
    std::vector<std::int16_t> speech;
    for (std::size_t place = 0; place < text.size(); place += 500) {
        const std::string_view piece = std::string_view(text).substr(place, 500);
        heard.Feed(piece);
        unheard.Decode(piece.data(), static_cast<std::int32_t>(piece.size()));
        ASSERT_EQ(test::FieldsOf(unheard), test::FieldsOf(heard.decoder)) << "at dibit " << place;
        while (dsp::CtbSampleBlock* block = unheard.PopVoiceBlock()) {
            speech.insert(speech.end(), block->Data(), block->Data() + 512);
            unheard.PushFreeBlock(block);
        }
    }
    EXPECT_EQ(speech, heard.speech);
}

TEST(WholeTransmission, AllocatesNothingOnceWarm) {
    test::Transmission sent = MakeTransmission({}, 9);
    COrvaFrameDecoder decoder;
    decoder.SetBlockSize(512);
    const auto decode = [&] {
        const std::string& text = sent.Dibits();
        for (std::size_t place = 0; place < text.size(); place += 240) {
            const auto count = static_cast<std::int32_t>(std::min<std::size_t>(240, text.size() - place));
            decoder.Decode(text.data() + place, count);
            while (dsp::CtbSampleBlock* block = decoder.PopVoiceBlock()) {
                decoder.PushFreeBlock(block);
            }
        }
    };
    decode();
    decoder.TakeRecords(nullptr);
    const std::uint64_t before = test::CountAllocations();
    decode();
    EXPECT_EQ(test::CountAllocations(), before);
}

} // namespace
} // namespace orva::p25
