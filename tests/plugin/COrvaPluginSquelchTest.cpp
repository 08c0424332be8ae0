// The selective squelch, and the host's squelch inside its scanner and outside.
#include "tests/plugin/PluginSignals.h"
#include "tests/plugin/SquelchFixture.h"
#include "tests/plugin/WindowViews.h"
#include "tests/support/AllocationProbe.h"
#include "tests/support/DcsEncoder.h"
#include "tests/support/ToneSource.h"
#include "tests/support/Transmission.h"
#include "tests/support/TrunkingMessage.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace orva::plugin {

namespace {

using Samples = std::vector<std::int16_t>;

class PluginSquelch : public test::SquelchFixture {
protected:
    Samples ToneCarrier(double seconds, double hz) const {
        test::ToneSource tone(hz, Rate());
        return test::FmSignal(
            Rate(), seconds, [&] { return 0.2 * tone.Next(); }, 20.0);
    }
    Samples CodeCarrier(double seconds, unsigned code, bool isInverted) const {
        test::DcsEncoder encoder(code, isInverted, Rate());
        return test::FmSignal(
            Rate(), seconds, [&] { return 0.2 * encoder.NextLevel(); }, 20.0);
    }
};

constexpr double kLong = 2.0;  // [s]
constexpr unsigned kCode = 19; // 023 in octal

} // namespace

// --- selective squelch -------------------------------------------------------------------------------------

TEST_P(PluginSquelch, EachIdentifierClosesWhenItDiffers) {
    StartAtRate();
    const COrvaPluginInspector inside = Inside();
    struct Comparison {
        std::uint32_t bit;
        std::int32_t& current;
    };
    for (const Comparison& comparison :
         {Comparison{1, inside.CurrentNac()}, Comparison{2, inside.CurrentTgid()},
          Comparison{4, inside.CurrentSid()}, Comparison{8, inside.CurrentDid()}}) {
        Plugin().SetSelectiveSquelchMask(comparison.bit);
        comparison.current = 100;
        Plugin().SetSelectiveSquelchValue(comparison.bit, 100);
        EXPECT_EQ(inside.SquelchBits(), 0U) << comparison.bit;
        Plugin().SetSelectiveSquelchValue(comparison.bit, 101);
        EXPECT_EQ(inside.SquelchBits(), 2U) << comparison.bit;
        comparison.current = -1;
        Plugin().SetSelectiveSquelchValue(comparison.bit, 100);
        EXPECT_EQ(inside.SquelchBits(), 2U) << "no frame is current";
    }
    Plugin().SetSelectiveSquelchMask(0);
    EXPECT_EQ(inside.SquelchBits(), 0U);
}

TEST_P(PluginSquelch, TheErrorRateClosesAboveAWholePercent) {
    StartAtRate();
    Plugin().SetSelectiveSquelchMask(16);
    const auto bitsAt = [&](std::int32_t tenths) {
        Inside().CurrentBer() = tenths;
        Inside().EvaluateSelectiveSquelch();
        return Inside().SquelchBits();
    };
    EXPECT_EQ(bitsAt(0), 0U);
    EXPECT_EQ(bitsAt(1), 2U) << "0 closes on any";
    Plugin().SetSelectiveSquelchValue(16, 3);
    EXPECT_EQ(bitsAt(30), 0U);
    EXPECT_EQ(bitsAt(31), 2U);
    EXPECT_EQ(bitsAt(-1), 2U) << "compared as unsigned";
}

TEST_P(PluginSquelch, AnyOfSeveralComparisonsCloses) {
    StartAtRate();
    Plugin().SetSelectiveSquelchMask(1 | 2);
    Inside().CurrentNac() = 5;
    Inside().CurrentTgid() = 6;
    Plugin().SetSelectiveSquelchValue(1, 5);
    EXPECT_EQ(Inside().SquelchBits(), 2U);
    Plugin().SetSelectiveSquelchValue(2, 6);
    EXPECT_EQ(Inside().SquelchBits(), 0U);
}

TEST_P(PluginSquelch, TheHostsBitStaysWhateverTheSelectionSays) {
    StartAtRate();
    Notify(2818, 1);
    EXPECT_EQ(Inside().SquelchBits(), 1U);
    Inside().CurrentNac() = 5;
    Plugin().SetSelectiveSquelchMask(1);
    EXPECT_EQ(Inside().SquelchBits(), 3U);
    Plugin().SetSelectiveSquelchValue(1, 5);
    EXPECT_EQ(Inside().SquelchBits(), 1U);
    Process(test::Noise(Rate(), 0.1));
    EXPECT_EQ(Inside().SquelchBits(), 3U);
    Notify(2304, 2);
    EXPECT_EQ(Inside().SquelchBits(), 1U);
}

TEST_P(PluginSquelch, FmModeHasNoSelectiveSquelch) {
    StartAtRate();
    Plugin().SetSelectiveSquelchMask(1);
    EXPECT_EQ(Inside().SquelchBits(), 2U) << "no call, so the code differs";
    Notify(2304, 2);
    EXPECT_EQ(Inside().SquelchBits(), 0U);
    Process(test::FmTone(Rate(), 0.3));
    EXPECT_EQ(Inside().SquelchBits(), 0U);
    Notify(2304, 19);
    EXPECT_EQ(Inside().SquelchBits(), 2U);
}

TEST_P(PluginSquelch, WithASelectionFmAudioIsSilentInAutoToo) {
    StartAtRate();
    Plugin().SetSelectiveSquelchMask(2);
    Process(test::FmTone(Rate(), 2.0));
    const Samples played = Played();
    ASSERT_FALSE(played.empty());
    EXPECT_EQ(std::count(played.begin(), played.end(), 0), static_cast<std::ptrdiff_t>(played.size()));
}

TEST_P(PluginSquelch, OnlyAChangedValueIsEvaluated) {
    StartAtRate();
    Plugin().SetSelectiveSquelchMask(1);
    Plugin().SetSelectiveSquelchValue(1, 7);
    Inside().SquelchBits() = 0;
    Plugin().SetSelectiveSquelchValue(1, 7);
    EXPECT_EQ(Inside().SquelchBits(), 0U);
    Plugin().SetSelectiveSquelchMask(1);
    EXPECT_EQ(Inside().SquelchBits(), 0U);
    Plugin().SetSelectiveSquelchValue(32, 7);
    EXPECT_EQ(Inside().SquelchBits(), 2U) << "an unknown bit stores nothing and evaluates all the same";
}

TEST_P(PluginSquelch, TheHostsOpenSquelchTakesTheSelectionsBitUntilTheNextBlock) {
    StartAtRate();
    Plugin().SetSelectiveSquelchMask(1);
    Notify(2818, 1);
    EXPECT_EQ(Inside().SquelchBits(), 3U);
    Notify(2818, 0);
    EXPECT_EQ(Inside().SquelchBits(), 0U);
    Process(test::Noise(Rate(), 0.1));
    EXPECT_EQ(Inside().SquelchBits(), 2U);
}

// --- the scanner -------------------------------------------------------------------------------------------

TEST_P(PluginSquelch, TheAnswersComeAfterTheirWaits) {
    StartAtRate();
    struct Wait {
        std::uint32_t type;
        int blocksAt48000;
        int blocksAt64000;
    };
    // The count begins at 1 and grows by 2400 a block; the answer comes with the first block that finds it
    // above 1536 and 2304, with a second more for a tone, half of one for a code and for voice.
    for (const Wait& wait : {Wait{2, 2, 2}, Wait{4, 22, 29}, Wait{512, 12, 16}, Wait{256, 12, 16}}) {
        SetUpType(wait.type, {});
        Scan();
        host.Clear();
        EXPECT_EQ(BlocksToAnswer(test::Carrier(Rate(), kLong)),
                  Rate() == 48000 ? wait.blocksAt48000 : wait.blocksAt64000)
            << wait.type;
    }
}

TEST_P(PluginSquelch, TheSettlingTimeIsCountedInSamples) {
    StartAtRate();
    SetUpType(2, {});
    Scan();
    // 1 + 100 n above 1536 and 2304: n is 16 and 24, and the next block is looked at.
    EXPECT_EQ(BlocksToAnswer(test::Carrier(Rate(), 0.2), 100), Rate() == 48000 ? 17 : 25);
}

TEST_P(PluginSquelch, AChannelGetsOneAnswer) {
    StartAtRate();
    SetUpType(2, {.level = 0, .noise = 50, .ctcss = 0, .reserved = {}, .voice = 0, .dcs = 0});
    Scan();
    const Samples carrier = test::Carrier(Rate(), kLong);
    EXPECT_EQ(Answer(carrier).param, 2U);
    host.Clear();
    Process(carrier);
    EXPECT_TRUE(host.calls.empty());
    Notify(2048, 155012500);
    EXPECT_EQ(Answer(carrier).param, 2U);
    Notify(3840, 1);
    EXPECT_EQ(Answer(carrier).param, 2U);
}

TEST_P(PluginSquelch, AnAnsweredChannelCostsNothing) {
    StartAtRate();
    SetUpType(2, {});
    Scan();
    const Samples carrier = test::Carrier(Rate(), kLong);
    Process(carrier);
    std::fill_n(Inside().FloatSamples().Data(), kInputBlock, 7.0F);
    const std::int32_t count = Inside().ScanSampleCount();
    EXPECT_TRUE(Plugin().ProcessData(carrier.data(), kInputBlock));
    EXPECT_EQ(Inside().FloatSamples()[0], 7.0F);
    EXPECT_EQ(Inside().ScanSampleCount(), count);
}

TEST_P(PluginSquelch, TheScannerPlaysAndDecodesNothing) {
    StartAtRate();
    SetUpType(2, {});
    Scan();
    host.Clear();
    Process(test::CallSignal(Rate()));
    EXPECT_TRUE(Played().empty());
    EXPECT_EQ(Inside().FrameDecoder().GetNetworkAccessCode(), -1);
    EXPECT_EQ(host.Codes(), std::vector<std::int32_t>{2818});
}

TEST_P(PluginSquelch, NoiseIsAnsweredByTheThreshold) {
    StartAtRate();
    SetUpType(2, {.level = 0, .noise = 20, .ctcss = 0, .reserved = {}, .voice = 0, .dcs = 0});
    Scan();
    const auto carrier = Answer(test::Carrier(Rate(), kLong));
    EXPECT_EQ(carrier.param, 2U);
    EXPECT_LT(ValuesOf(carrier).noise, 20);
    Notify(2048, 1);
    const auto noise = Answer(test::Noise(Rate(), kLong));
    EXPECT_EQ(noise.param, 0U);
    const SquelchValues measured = ValuesOf(noise);
    EXPECT_GT(measured.noise, 20);
    EXPECT_LE(measured.noise, 99);
    EXPECT_EQ(measured.level | measured.ctcss | measured.voice | measured.dcs, 0);
}

TEST_P(PluginSquelch, NoiseAtTheThresholdShuts) {
    StartAtRate();
    const auto answerAt = [&](std::int32_t threshold) {
        SetUpType(2, {.level = 0, .noise = threshold, .ctcss = 0, .reserved = {}, .voice = 0, .dcs = 0});
        host.Clear();
        Samples silence(kInputBlock); // which measures 0
        Inside().EvaluateHostSquelch(silence.data(), kInputBlock);
        EXPECT_EQ(ValuesOf(host.Of(2818).at(0)).noise, 0);
        return host.Of(2818).at(0).param;
    };
    EXPECT_EQ(answerAt(0), 0U);
    EXPECT_EQ(answerAt(1), 2U);
    EXPECT_EQ(answerAt(-1), 0U);
}

TEST_P(PluginSquelch, ATypeOf3IsNoise) {
    StartAtRate();
    SetUpType(3, {.level = 0, .noise = 50, .ctcss = 0, .reserved = {}, .voice = 0, .dcs = 0});
    Scan();
    EXPECT_EQ(Answer(test::Carrier(Rate(), kLong)).param, 2U);
}

TEST_P(PluginSquelch, ATypeOf6IsNoTypeAtAll) {
    StartAtRate();
    for (const std::uint32_t type : {6U, 0U, 1U, 0x202U, 8U}) {
        SetUpType(type, {});
        Scan();
        host.Clear();
        const Samples carrier = test::Carrier(Rate(), kLong);
        Process(carrier);
        EXPECT_TRUE(host.calls.empty()) << type;
        // A block is worth nothing unless some bit of it asks for a test.
        const bool isWorked = type == 6 || type == 0x202;
        const auto walked = static_cast<std::int32_t>(carrier.size() / kInputBlock * kInputBlock);
        EXPECT_EQ(Inside().ScanSampleCount(), isWorked ? 1 + walked : 1) << type;
    }
}

TEST_P(PluginSquelch, ATypeOf0x102TestsVoiceAlone) {
    StartAtRate();
    SetUpType(0x102, {.level = 0, .noise = 50, .ctcss = 0, .reserved = {}, .voice = 50, .dcs = 0});
    Scan();
    const auto answer = Answer(test::Carrier(Rate(), kLong));
    EXPECT_EQ(answer.param, 0U);
    EXPECT_EQ(ValuesOf(answer).noise, 0);
}

TEST_P(PluginSquelch, TonesAreTold) {
    StartAtRate();
    SetUpType(4, {.level = 0, .noise = 0, .ctcss = 100000, .reserved = {}, .voice = 0, .dcs = 0});
    Scan();
    const auto right = Answer(ToneCarrier(kLong, 100.0));
    EXPECT_EQ(right.param, 4U);
    EXPECT_EQ(ValuesOf(right).ctcss, 100000);
    Notify(2048, 1);
    const auto wrong = Answer(ToneCarrier(kLong, 123.0));
    EXPECT_EQ(wrong.param, 0U);
    EXPECT_EQ(ValuesOf(wrong).ctcss, 123000);
    Notify(2048, 1);
    const auto none = Answer(test::Carrier(Rate(), kLong));
    EXPECT_EQ(none.param, 0U);
    EXPECT_EQ(ValuesOf(none).ctcss, 0);
}

TEST_P(PluginSquelch, VoiceIsToldByItsThreshold) {
    StartAtRate();
    // Half a second of 22 parts, of which two are silent: a share of 2 / 22, and a measure 10 / 3 times that.
    Samples samples(static_cast<std::size_t>(Rate()) / 2);
    test::ToneSource tone(1000.0, Rate(), 8000.0);
    std::generate(samples.begin() + std::ssize(samples) / 8, samples.end(),
                  [&] { return static_cast<std::int16_t>(tone.Next()); });
    const auto answerAt = [&](std::int32_t threshold) {
        SetUpType(256, {.level = 0, .noise = 0, .ctcss = 0, .reserved = {}, .voice = threshold, .dcs = 0});
        host.Clear();
        Inside().EvaluateVoiceSquelch(samples.data(), static_cast<std::uint32_t>(samples.size()));
        EXPECT_EQ(ValuesOf(host.Of(2818).at(0)).voice, 30);
        return host.Of(2818).at(0).param;
    };
    EXPECT_EQ(answerAt(30), 256U);
    EXPECT_EQ(answerAt(31), 0U);
}

TEST_P(PluginSquelch, TheVoiceTestIsQuietBelowALevel) {
    StartAtRate();
    SetUpType(256, {.level = 0, .noise = 0, .ctcss = 0, .reserved = {}, .voice = 50, .dcs = 0});
    const auto length = static_cast<std::uint32_t>(Rate()) / 2;
    // Peaks about the floor: 227 at 48000 Hz and 262 at 64000 Hz have a level of 0.1.
    squelch::CtbVoiceDetector reference;
    reference.SetSampleRate(static_cast<float>(Rate()));
    reference.SetBlockLength(length);
    reference.SetLevelFloor(0.1F);
    reference.SetVoiceThreshold(0.5F);
    int quiet = 0;
    int loud = 0;
    for (int peak = 150; peak <= 350; peak += 5) {
        test::ToneSource tone(1000.0, Rate(), peak);
        Samples samples(length);
        std::generate(samples.begin(), samples.end(), [&] { return static_cast<std::int16_t>(tone.Next()); });
        Inside().EvaluateVoiceSquelch(samples.data(), length);
        reference.Process(samples.data(), length, 1);
        EXPECT_EQ(Inside().VoiceDetector().result, reference.result) << peak;
        ++(reference.result == squelch::kVoiceQuiet ? quiet : loud);
    }
    EXPECT_GT(quiet, 0);
    EXPECT_GT(loud, 0);
}

TEST_P(PluginSquelch, CodesAreTold) {
    StartAtRate();
    const auto answerFor = [&](std::int32_t wanted, bool isInverted) {
        SetUpType(512, {.level = 0, .noise = 0, .ctcss = 0, .reserved = {}, .voice = 0, .dcs = wanted});
        Scan();
        return Answer(CodeCarrier(kLong, kCode, isInverted));
    };
    const auto right = answerFor(kCode, false);
    EXPECT_EQ(right.param, 512U);
    EXPECT_EQ(ValuesOf(right).dcs, static_cast<std::int32_t>(kCode));
    const auto wrong = answerFor(kCode + 2, false);
    EXPECT_EQ(wrong.param, 0U);
    EXPECT_EQ(ValuesOf(wrong).dcs, 0);
    const auto inverted = answerFor(-static_cast<std::int32_t>(kCode), true);
    EXPECT_EQ(inverted.param, 512U);
    EXPECT_EQ(ValuesOf(inverted).dcs, -static_cast<std::int32_t>(kCode));
    EXPECT_EQ(answerFor(-static_cast<std::int32_t>(kCode), false).param, 0U);
    EXPECT_EQ(answerFor(kCode, true).param, 0U);
}

TEST_P(PluginSquelch, ACodeFoundSetsTheCountBackWhileScanningToo) {
    StartAtRate();
    SetUpType(512, {.level = 0, .noise = 0, .ctcss = 0, .reserved = {}, .voice = 0, .dcs = kCode});
    constexpr auto kBlock = static_cast<std::int32_t>(kInputBlock);
    Scan();
    EXPECT_EQ(Answer(test::Carrier(Rate(), kLong)).param, 0U);
    EXPECT_EQ(Inside().ScanSampleCount(), 1 + (Rate() == 48000 ? 12 : 16) * kBlock) << "none was found";
    Notify(2048, 1);
    EXPECT_EQ(Answer(CodeCarrier(kLong, kCode, false)).param, 512U);
    EXPECT_EQ(Inside().ScanSampleCount(), Inside().ScanSettleSamples() + kBlock);
    EXPECT_EQ(Inside().DcsDetector().matchCount, 0U);
}

TEST_P(PluginSquelch, AScannedBlockWithoutMemoryIsNotAnswered) {
    StartAtRate();
    SetUpType(2, {});
    Scan();
    const Samples carrier = test::Carrier(Rate(), 0.3);
    Process(std::span(carrier).first(kInputBlock));
    Inside().ScanSampleCount() = Inside().ScanSettleSamples() + 1;
    const std::int32_t count = Inside().ScanSampleCount();
    // A larger block: audio for twice its length, floats.
    constexpr std::uint32_t kLarge = 2 * kInputBlock;
    for (const int successes : {0, 1}) {
        const test::AllocationFailure failure(successes);
        EXPECT_FALSE(Plugin().ProcessData(carrier.data(), kLarge)) << successes;
        EXPECT_TRUE(failure.HasStruck());
    }
    EXPECT_EQ(Inside().ScanSampleCount(), count);
    EXPECT_TRUE(host.Of(2818).empty());
    EXPECT_TRUE(Plugin().ProcessData(carrier.data(), kLarge));
    EXPECT_EQ(host.Of(2818).size(), 1U);
}

TEST_P(PluginSquelch, ARetuneFromInsideTheAnswerAsksAnew) {
    StartAtRate();
    for (const std::uint32_t type : {2U, 4U, 256U, 512U}) {
        SetUpType(type, {});
        Scan();
        host.Clear();
        int answers = 0;
        host.onCall = [&](const test::FakeHost::Call& call, void*) {
            if (call.code == 2818 && ++answers == 1) {
                Notify(2048, 155025000);
            }
        };
        Process(test::Carrier(Rate(), 3.5));
        host.onCall = nullptr;
        EXPECT_EQ(answers, 2) << type;
    }
}

TEST_P(PluginSquelch, ScannerCodesSetTheCount) {
    StartAtRate();
    SetUpType(2, {});
    Notify(2048, 1);
    EXPECT_EQ(Inside().ScanSampleCount(), 0);
    EXPECT_EQ(Inside().SkipInputSamples(), static_cast<std::uint32_t>(Rate()) / 20);
    Inside().SkipInputSamples() = 0;
    Notify(3840, 1);
    EXPECT_EQ(Inside().ScanSampleCount(), 1);
    Inside().ScanSampleCount() = 99;
    Inside().ScanningSquelchSent() = true;
    Notify(2048, 1);
    EXPECT_EQ(Inside().ScanSampleCount(), 1);
    EXPECT_FALSE(Inside().ScanningSquelchSent());
    EXPECT_EQ(Inside().SkipInputSamples(), 0U) << "while scanning nothing is skipped";
    Inside().ScanningSquelchSent() = true;
    Notify(3840, 0);
    EXPECT_EQ(Inside().ScanSampleCount(), 0);
    EXPECT_TRUE(Inside().ScanningSquelchSent()) << "the end of the scan asks nothing anew";
}

TEST_P(PluginSquelch, ARetuneDropsTheBandPlansOfTheLastChannel) {
    StartAtRate();
    constexpr std::uint32_t kNac = 0x293;
    const test::TrunkingData plan =
        test::IdentifierUpdate({.identifier = 1, .spacing = 50, .baseFrequency = 170202500});
    const test::TrunkingData grant = test::GroupGrant({1, 8}, 1234, 56789, 0);
    // The frequency of the last grant [Hz or tens of hertz]; 0 without a band plan.
    const auto granted = [&](const std::vector<test::TrunkingData>& messages) {
        test::Transmission transmission;
        for (int i = 0; i < 3; ++i) {
            transmission.AddTrunking(kNac, messages);
        }
        const std::string& dibits = transmission.Dibits();
        Inside().FrameDecoder().Decode(dibits.data(), static_cast<std::int32_t>(dibits.size()));
        std::uint32_t size = 0;
        const auto report = Inside().FrameDecoder().TakeRecords(&size);
        std::uint32_t frequency = 1;
        EXPECT_GT(size, kTrunkingReportRecordSize);
        if (report) {
            constexpr std::size_t kFrequencyOffset = 8;
            std::memcpy(&frequency, report.get() + size - kTrunkingReportRecordSize + kFrequencyOffset,
                        sizeof frequency);
        }
        return frequency;
    };
    Notify(2048, 851012500);
    EXPECT_EQ(granted({plan, grant}), 851062500U);
    EXPECT_EQ(granted({grant}), 851062500U);
    Notify(2048, 852000000);
    EXPECT_EQ(granted({grant}), 0U);
}

TEST_P(PluginSquelch, AQueriedScannerAnswersFromTheNextCodeOn) {
    host.queries[3840] = 1;
    StartAtRate();
    ASSERT_TRUE(Inside().ScannerActive());
    SetUpType(2, {});
    host.Clear();
    const Samples carrier = test::Carrier(Rate(), 0.5);
    Process(carrier);
    EXPECT_TRUE(host.calls.empty());
    Notify(2048, 1);
    EXPECT_EQ(Answer(carrier).code, 2818);
}

TEST_P(PluginSquelch, TheCountStopsAtTheTop) {
    StartAtRate();
    SetUpType(4, {});
    Scan();
    Inside().ScanSettleSamples() = std::numeric_limits<std::int32_t>::max();
    Inside().ScanSampleCount() = std::numeric_limits<std::int32_t>::max() - 100;
    host.Clear();
    Process(test::Carrier(Rate(), 0.2));
    EXPECT_EQ(Inside().ScanSampleCount(), std::numeric_limits<std::int32_t>::max());
    EXPECT_TRUE(host.calls.empty());
}

TEST_P(PluginSquelch, NoSamplesAreNotEvaluated) {
    StartAtRate();
    SetUpType(2, {});
    std::int16_t sample = 0;
    Inside().EvaluateHostSquelch(nullptr, 1);
    Inside().EvaluateHostSquelch(&sample, 0);
    Inside().EvaluateVoiceSquelch(nullptr, 1);
    Inside().EvaluateVoiceSquelch(&sample, 0);
    EXPECT_TRUE(host.calls.empty());
    Inside().EvaluateHostSquelch(&sample, 1);
    EXPECT_EQ(host.calls.size(), 1U);
}

TEST_P(PluginSquelch, WarmDetectorsAllocateNothing) {
    StartAtRate();
    host.keeps = false;
    library.keepsReads = false;
    waveOut.keepsPlayed = false;
    const Samples carrier = test::Carrier(Rate(), kLong);
    Plugin().SetAFEnabled(1);
    for (const bool isScanning : {true, false}) {
        Notify(3840, isScanning ? 1 : 0);
        Notify(2304, 2);
        for (const std::uint32_t type : {2U, 4U, 256U, 512U}) {
            SetUpType(type, {});
            Notify(2048, 1);
            Process(carrier);
            Notify(2048, 1);
            const std::uint64_t before = test::CountAllocations();
            Process(carrier);
            EXPECT_EQ(test::CountAllocations(), before) << type << (isScanning ? " scanning" : "");
        }
    }
}

// --- outside of the scanner --------------------------------------------------------------------------------

TEST_P(PluginSquelch, OutsideEachFmBlockIsAnswered) {
    StartAtRate();
    Notify(2304, 2);
    for (const std::uint32_t type : {2U, 4U, 256U, 512U}) {
        SetUpType(type, {});
        host.Clear();
        Process(test::Carrier(Rate(), 1.0));
        const auto blocks = static_cast<std::size_t>(Rate()) / kInputBlock;
        EXPECT_EQ(host.Of(2818).size(), blocks) << type;
    }
}

TEST_P(PluginSquelch, OutsideTheNoiseLevelIsSmoothed) {
    StartAtRate();
    Notify(2304, 2);
    SetUpType(2, {.level = 0, .noise = 99, .ctcss = 0, .reserved = {}, .voice = 0, .dcs = 0});
    host.Clear();
    Process(test::Noise(Rate(), 0.5));
    const auto answers = host.Of(2818);
    ASSERT_GE(answers.size(), 8U);
    for (std::size_t i = 1; i < 8; ++i) {
        EXPECT_GT(ValuesOf(answers[i]).noise, ValuesOf(answers[i - 1]).noise) << "15 % of the way a block";
    }
}

TEST_P(PluginSquelch, OutsideTheAudioFilterComesBehindTheNoiseAndBeforeTheVoice) {
    StartAtRate();
    Notify(2304, 2);
    Plugin().SetAFLowpass(1);
    Plugin().SetAFFreqHigh(100); // nothing of noise or speech is left
    const Samples noise = test::Noise(Rate(), 1.2);
    // The smoothed value begins at 0 once more for each run.
    const auto measured = [&](std::uint32_t type, bool isFiltered) {
        Plugin().SetAFEnabled(isFiltered ? 1 : 0);
        SetUpType(type, {});
        Inside().NoiseLevel() = 0.0F;
        host.Clear();
        Process(noise);
        std::vector<std::int32_t> values;
        for (const auto& answer : host.Of(2818)) {
            values.push_back(type == 2 ? ValuesOf(answer).noise : ValuesOf(answer).voice);
        }
        return values;
    };
    measured(2, false); // the filters' histories are those of the signal's end from here on
    EXPECT_EQ(measured(2, true), measured(2, false));
    EXPECT_NE(measured(256, true), measured(256, false));
}

TEST_P(PluginSquelch, OutsideTheDetectorsKeepTheInputsRate) {
    // The audio comes at 16000, the tone detector is told the input's rate: 100 Hz is taken for three or four
    // times as much, here for a tone of the table.
    StartAtRate();
    Notify(2304, 2);
    SetUpType(4, {});
    host.Clear();
    const double factor = Rate() / 16000.0;
    const double shown = Rate() == 48000 ? 203.5 : 250.3;
    Process(ToneCarrier(4.0 * factor, shown / factor));
    const auto answers = host.Of(2818);
    ASSERT_FALSE(answers.empty());
    EXPECT_NEAR(ValuesOf(answers.back()).ctcss, shown * 1000.0, 1.0);
}

TEST_P(PluginSquelch, OutsideACodeFoundStartsAWait) {
    StartAtRate();
    Notify(2304, 2);
    SetUpType(512, {.level = 0, .noise = 0, .ctcss = 0, .reserved = {}, .voice = 0, .dcs = kCode});
    const Samples carrier = test::Carrier(Rate(), 4.0);
    Process(std::span(carrier).first(kInputBlock));
    EXPECT_EQ(Inside().ScanSampleCount(), 0);
    host.Clear();
    Inside().DcsDetector().matches[0] = kCode;
    Inside().DcsDetector().matchCount = 1;
    Process(std::span(carrier).subspan(kInputBlock, kInputBlock));
    ASSERT_EQ(host.Of(2818).size(), 1U);
    EXPECT_EQ(host.Of(2818)[0].param, 512U);
    const std::int32_t audio = Rate() == 48000 ? 800 : 600;
    const std::int32_t settle = Rate() == 48000 ? 1536 : 2304;
    EXPECT_EQ(Inside().ScanSampleCount(), settle + audio) << "and the FM chain advances it";
    host.Clear();
    // Withheld until the count has passed half a second more of the input's rate.
    const int waiting = Rate() / 2 / audio; // 30 and 53 blocks
    int blocks = 0;
    for (std::size_t i = 2 * kInputBlock; host.Of(2818).empty() && i + kInputBlock <= carrier.size();
         i += kInputBlock) {
        Process(std::span(carrier).subspan(i, kInputBlock));
        ++blocks;
    }
    EXPECT_EQ(blocks, waiting + 1);
    EXPECT_EQ(Inside().ScanSampleCount(), settle + audio * (waiting + 2)) << "it goes on growing";
}

INSTANTIATE_TEST_SUITE_P(Rates, PluginSquelch, testing::Values(48000, 64000));

} // namespace orva::plugin
