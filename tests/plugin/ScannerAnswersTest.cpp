// What the host's squelch makes of channels at 20 dB, inside its scanner and outside, and when.
#include "squelch/NoiseMeasure.h"
#include "tests/plugin/PluginSignals.h"
#include "tests/plugin/RecordingFixture.h"
#include "tests/plugin/SquelchFixture.h"
#include "tests/support/AllocationProbe.h"
#include "tests/support/DcsEncoder.h"
#include "tests/support/ScannedChannel.h"
#include "tests/support/ToneSource.h"
#include "tests/support/VoiceLikeNoise.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <map>
#include <optional>
#include <span>
#include <tuple>
#include <vector>

namespace orva::plugin {

namespace {

using test::ChannelKind;
using Samples = std::vector<std::int16_t>;

constexpr std::uint32_t kNoiseType = 2;
constexpr std::uint32_t kToneType = 4;
constexpr std::uint32_t kVoiceType = 256;
constexpr std::uint32_t kCodeType = 512;
constexpr std::uint32_t kTypes[] = {kNoiseType, kToneType, kVoiceType, kCodeType};

constexpr double kSnr = 20.0;    // [dB]
constexpr double kSeconds = 1.5; // of each channel

/// What a listener would ask for.
constexpr SquelchValues kSought{.level = 0,
                                .noise = 20,
                                .ctcss = static_cast<std::int32_t>(test::kSoughtTone * 1000.0),
                                .reserved = {},
                                .voice = 50,
                                .dcs = static_cast<std::int32_t>(test::kSoughtCode)};

/// The answer that a person would give.
std::uint32_t RightAnswer(std::uint32_t type, ChannelKind kind) {
    const bool passes = (type == kNoiseType && kind != ChannelKind::Noise) ||
                        (type == kToneType && kind == ChannelKind::Tone) ||
                        (type == kVoiceType && kind == ChannelKind::Speech) ||
                        (type == kCodeType && kind == ChannelKind::Code);
    return passes ? type : 0;
}

class ScannerAnswers : public test::SquelchFixture {
protected:
    static const Samples& Received(ChannelKind kind, bool hasSpeech = false) {
        static std::map<std::tuple<int, ChannelKind, bool>, Samples> made;
        Samples& samples = made[{Rate(), kind, hasSpeech}];
        if (samples.empty()) {
            samples = test::ReceivedChannel(
                kind, {.rate = Rate(), .seconds = kSeconds, .snrDb = kSnr, .hasSpeech = hasSpeech});
        }
        return samples;
    }
    void StartScanning(std::uint32_t type) {
        StartAtRate();
        SetUpType(type, kSought);
        Notify(3840, 1);
    }
    void StartListening(std::uint32_t type) {
        StartAtRate();
        Notify(2304, 2);
        SetUpType(type, kSought);
        host.Clear();
    }
    void Stop() {
        Close();
        Pump();
    }
    /// Tunes to a channel and takes its one answer.
    test::FakeHost::Call Visit(ChannelKind kind) {
        Notify(2048, 155000000);
        return Answer(Received(kind));
    }
    /// Samples that pass before the answer: the settling time, and what the test takes more.
    static int Wait(std::uint32_t type) {
        const int settle = Rate() == 48000 ? 1536 : 2304;
        return settle + (type == kToneType ? Rate() : type == kNoiseType ? 0 : Rate() / 2);
    }
    /// Samples of audio that a block makes outside of the scanner.
    static int AudioBlock() { return Rate() == 48000 ? 800 : 600; }
};

} // namespace

// --- which answer ------------------------------------------------------------------------------------------

TEST_P(ScannerAnswers, AreRightForEveryTypeOnEveryChannel) {
    for (const std::uint32_t type : kTypes) {
        for (const ChannelKind kind : test::kChannelKinds) {
            StartScanning(type);
            EXPECT_EQ(Visit(kind).param, RightAnswer(type, kind))
                << "type " << type << " on " << test::ChannelName(kind);
            Stop();
        }
    }
}

TEST_P(ScannerAnswers, FindTonesAndCodesBelowSpeech) {
    for (const std::uint32_t type : {kNoiseType, kToneType, kCodeType}) {
        StartScanning(type);
        for (const ChannelKind kind : {ChannelKind::Tone, ChannelKind::OtherTone, ChannelKind::Code,
                                       ChannelKind::InvertedCode, ChannelKind::OtherCode}) {
            Notify(2048, 155000000);
            EXPECT_EQ(Answer(Received(kind, true)).param, RightAnswer(type, kind))
                << "type " << type << " on " << test::ChannelName(kind);
        }
        Stop();
    }
}

TEST_P(ScannerAnswers, AreRightOnChannelsInARow) {
    for (const std::uint32_t type : {kNoiseType, kToneType, kCodeType}) {
        StartScanning(type);
        for (int round = 0; round < 2; ++round) {
            for (const ChannelKind kind : test::kChannelKinds) {
                EXPECT_EQ(Visit(kind).param, RightAnswer(type, kind))
                    << "type " << type << " on " << test::ChannelName(kind);
            }
        }
        Stop();
    }
}

TEST_P(ScannerAnswers, AreRightOnChannelsWithSettingsOfTheirOwn) {
    struct Channel {
        ChannelKind kind;
        std::uint32_t type;
    };
    constexpr Channel kChannels[] = {
        {ChannelKind::Noise, kNoiseType},    {ChannelKind::Carrier, kNoiseType},
        {ChannelKind::Tone, kToneType},      {ChannelKind::OtherTone, kToneType},
        {ChannelKind::Code, kCodeType},      {ChannelKind::InvertedCode, kCodeType},
        {ChannelKind::OtherCode, kCodeType}, {ChannelKind::Speech, kVoiceType},
        {ChannelKind::Digital, kNoiseType},
    };
    StartScanning(kNoiseType);
    for (int round = 0; round < 2; ++round) {
        for (const Channel& channel : kChannels) {
            SetUpType(channel.type, kSought);
            EXPECT_EQ(Visit(channel.kind).param, RightAnswer(channel.type, channel.kind))
                << test::ChannelName(channel.kind);
        }
    }
}

TEST_P(ScannerAnswers, HearSpeechOnEveryOfTenChannels) {
    StartScanning(kVoiceType);
    for (std::uint64_t speaker = 1; speaker <= 10; ++speaker) {
        Notify(2048, 155000000);
        const auto answer = Answer(test::ReceivedChannel(
            ChannelKind::Speech, {.rate = Rate(), .seconds = 1.0, .snrDb = kSnr, .seed = speaker}));
        EXPECT_EQ(answer.param, kVoiceType) << speaker;
        EXPECT_GE(ValuesOf(answer).voice, 50) << speaker;
    }
}

// The voice detector's half second is not begun anew by a retune: kept. 2400 samples at 48000 Hz and 4000 at
// 64000 Hz stay of each channel, and the next channel's half second begins with them.
TEST_P(ScannerAnswers, TheRestOfAHalfSecondCountsForTheNextChannel) {
    StartScanning(kVoiceType);
    EXPECT_EQ(Visit(ChannelKind::Noise).param, 0U);
    EXPECT_EQ(Visit(ChannelKind::Carrier).param, kVoiceType)
        << "silence after noise alternates as speech does";
    EXPECT_EQ(Visit(ChannelKind::Carrier).param, 0U) << "and silence after silence does not";
}

// What the code detector's filter holds is not thrown away by a retune: kept.
TEST_P(ScannerAnswers, TheEndOfACodeCountsForTheNextChannel) {
    StartScanning(kCodeType);
    EXPECT_EQ(Visit(ChannelKind::Code).param, kCodeType);
    EXPECT_EQ(Visit(ChannelKind::Carrier).param, kCodeType) << "47 ms of the code were still under way";
    EXPECT_EQ(Visit(ChannelKind::Carrier).param, 0U);
}

TEST_P(ScannerAnswers, TheVoiceTestHearsTheFilteredBlockUndecimated) {
    // The audio filter runs over as many samples as the block had before the decimator, the rest being what
    // the buffer held: kept. The stages are put one behind the other here once more.
    StartAtRate();
    Plugin().SetAFEnabled(1);
    SetUpType(kVoiceType, kSought);
    Scan();
    const Samples& signal = Received(ChannelKind::Speech);

    p25::COrvaAnalogDemodulator demodulator;
    demodulator.SetSampleRate(static_cast<std::uint32_t>(Rate()));
    dsp::TFIR_F32 decimator;
    decimator.SetSampleRate(Rate());
    decimator.SetRateRatio(1, Rate() == 48000 ? 3 : 4);
    decimator.SetFilterType(dsp::kFilterLowPass);
    decimator.SetLength(256);
    decimator.SetHighCut(7900.0);
    dsp::TFIR_F32 audioFilter;
    audioFilter.SetSampleRate(16000);
    audioFilter.SetLength(512);
    audioFilter.SetFilterType(dsp::kFilterBandPass);
    audioFilter.SetLowCut(0);
    audioFilter.SetHighCut(4000);
    squelch::CtbVoiceDetector detector;
    detector.SetSampleRate(static_cast<float>(Rate()));
    detector.SetBlockLength(static_cast<std::uint32_t>(Rate()) / 2);
    detector.SetLevelFloor(0.1F);
    detector.SetVoiceThreshold(0.5F);
    std::vector<float> floats(kInputBlock);
    Samples audio(kInputBlock);
    Samples buffer(2 * kInputBlock);
    const auto block = static_cast<std::int32_t>(kInputBlock);
    const auto blocks = static_cast<std::size_t>(Wait(kVoiceType)) / kInputBlock + 2;
    for (std::size_t i = 0; i < blocks; ++i) {
        std::transform(signal.begin() + static_cast<std::ptrdiff_t>(i * kInputBlock),
                       signal.begin() + static_cast<std::ptrdiff_t>((i + 1) * kInputBlock), floats.begin(),
                       [](std::int16_t sample) { return static_cast<float>(sample) / 32768.0F; });
        const float* steps = demodulator.Process(floats.data(), block);
        if (i == 0) {
            continue; // settling
        }
        std::transform(steps, steps + kInputBlock, audio.begin(), [](float step) {
            return static_cast<std::int16_t>(std::lrint(step * 10430.060040584269));
        });
        decimator.FilterI16(buffer.data(), audio.data(), block);
        const std::int32_t filtered = audioFilter.FilterI16(buffer.data(), buffer.data(), block);
        EXPECT_EQ(filtered, block);
        detector.Process(buffer.data(), kInputBlock, 1);
    }
    const auto answer = Answer(signal);
    EXPECT_GT(detector.voiceMeasure, 0.0F);
    EXPECT_EQ(ValuesOf(answer).voice, static_cast<std::int32_t>(detector.voiceMeasure * 100.0F));
    EXPECT_EQ(answer.param == kVoiceType, detector.result == squelch::kVoiceSpeech);
}

TEST_P(ScannerAnswers, WithoutScratchMemoryNoiseIsBelowAnyThreshold) {
    StartScanning(kNoiseType);
    Notify(2048, 155000000);
    const Samples& noise = Received(ChannelKind::Noise);
    Process(std::span(noise).first(kInputBlock));
    Samples samples(kInputBlock);
    {
        const test::AllocationFailure failure(0);
        Inside().EvaluateHostSquelch(samples.data(), kInputBlock);
        EXPECT_TRUE(failure.HasStruck());
    }
    ASSERT_EQ(host.Of(2818).size(), 1U);
    EXPECT_EQ(host.Of(2818)[0].param, kNoiseType);
    EXPECT_EQ(ValuesOf(host.Of(2818)[0]).noise, -1);
    EXPECT_EQ(Visit(ChannelKind::Noise).param, 0U) << "and there is memory again";
}

// --- when --------------------------------------------------------------------------------------------------

TEST_P(ScannerAnswers, ComeWithTheBlockAfterTheWait) {
    const Samples& carrier = Received(ChannelKind::Carrier);
    constexpr std::uint32_t kProbe = 100;
    const auto answersAfter = [&](std::uint32_t type, std::uint32_t samples) {
        SetUpType(type, kSought);
        Scan();
        host.Clear();
        const std::uint32_t rest = samples % kInputBlock;
        Process(std::span(carrier).first(samples - rest));
        Plugin().ProcessData(carrier.data() + samples - rest, rest);
        EXPECT_TRUE(host.Of(2818).empty()) << type;
        EXPECT_EQ(Inside().ScanSampleCount(), static_cast<std::int32_t>(samples) + 1);
        Plugin().ProcessData(carrier.data() + samples, kProbe);
        return host.Of(2818).size();
    };
    StartAtRate();
    for (const std::uint32_t type : kTypes) {
        // The count begins at 1 and must be above the wait.
        EXPECT_EQ(answersAfter(type, static_cast<std::uint32_t>(Wait(type)) - 1), 0U) << type;
        EXPECT_EQ(answersAfter(type, static_cast<std::uint32_t>(Wait(type))), 1U) << type;
    }
}

TEST_P(ScannerAnswers, ComeAfterTheBlocksThatTheWaitTakes) {
    StartAtRate();
    for (const std::uint32_t type : kTypes) {
        SetUpType(type, kSought);
        Scan();
        host.Clear();
        const int blocks = BlocksToAnswer(Received(ChannelKind::Carrier));
        // 1 + 2400 n is above the wait for the first time; the next block brings the answer.
        const auto block = static_cast<int>(kInputBlock);
        EXPECT_EQ(blocks, Wait(type) / block + (Wait(type) % block == 0 ? 0 : 1) + 1);
        std::cout << "[ measured ] type " << type << " at " << Rate() << " Hz: answer after " << blocks
                  << " blocks, " << 1000.0 * blocks * block / Rate() << " ms\n";
    }
}

// --- outside of the scanner --------------------------------------------------------------------------------

TEST_P(ScannerAnswers, OutsideTheWaitIsCountedInSamplesOfAudio) {
    const Samples& carrier = Received(ChannelKind::Carrier);
    for (const std::uint32_t type : kTypes) {
        StartListening(type);
        const auto answers = [&](std::int32_t count) {
            Inside().ScanSampleCount() = count;
            Inside().DcsDetector().matchCount = 0;
            host.Clear();
            Process(std::span(carrier).first(kInputBlock));
            EXPECT_EQ(Inside().ScanSampleCount(), count == 0 ? 0 : count + AudioBlock());
            return host.Of(2818).size();
        };
        EXPECT_EQ(answers(0), 1U) << "without a count there is no wait: " << type;
        EXPECT_EQ(answers(1), 0U) << type;
        EXPECT_EQ(answers(Wait(type)), 0U) << type;
        EXPECT_EQ(answers(Wait(type) + 1), 1U) << type;
        Stop();
    }
}

TEST_P(ScannerAnswers, OutsideTheNoiseFilterKeepsTheInputsRate) {
    // At 16000 Hz its corner lies at 5000 / 3 or 5000 / 4 Hz, so that 2500 Hz counts as noise.
    const Samples tone = test::FmTone(Rate(), kSeconds, 2500.0);
    StartScanning(kNoiseType);
    Notify(2048, 155000000);
    const auto inside = Answer(tone);
    EXPECT_EQ(inside.param, kNoiseType);
    EXPECT_LT(ValuesOf(inside).noise, 10);
    Notify(3840, 0);
    Notify(2304, 2);
    host.Clear();
    Process(tone);
    const auto outside = host.Of(2818);
    ASSERT_FALSE(outside.empty());
    EXPECT_EQ(outside.back().param, 0U);
    EXPECT_GT(ValuesOf(outside.back()).noise, 30);
}

TEST_P(ScannerAnswers, OutsideTheCodeDetectorKeepsTheInputsRate) {
    // Audio of 16000 Hz is taken for three or four times as fast: a code must be so much slower to be found.
    // The demodulator's audio is positive below the carrier's rest frequency. Off the air a code is not
    // found.
    constexpr int kAudioRate = 16000;
    constexpr int kTurns = 90;
    const auto passes = [&](int slowness) {
        StartListening(kCodeType);
        test::DcsEncoder encoder(test::kSoughtCode, false, kAudioRate * slowness);
        Samples audio(static_cast<std::size_t>(AudioBlock()));
        std::size_t passed = 0;
        for (int i = 0; i < kTurns; ++i) {
            std::generate(audio.begin(), audio.end(),
                          [&] { return static_cast<std::int16_t>(-1000.0 * encoder.NextLevel()); });
            host.Clear();
            Inside().EvaluateHostSquelch(audio.data(), static_cast<std::uint32_t>(audio.size()));
            Inside().ScanSampleCount() = 0;
            passed += !host.Of(2818).empty() && host.Of(2818)[0].param == kCodeType ? 1 : 0;
        }
        Stop();
        return passed;
    };
    EXPECT_GT(passes(Rate() / kAudioRate), 0U);
    EXPECT_EQ(passes(1), 0U);

    StartListening(kCodeType);
    Process(Received(ChannelKind::Code));
    const auto answers = host.Of(2818);
    EXPECT_FALSE(answers.empty());
    EXPECT_TRUE(
        std::all_of(answers.begin(), answers.end(), [](const auto& call) { return call.param == 0; }));
}

TEST_P(ScannerAnswers, OutsideAVoiceTestTakesHalfASecondOfTheInputsRate) {
    // 24000 or 32000 samples at 16000 Hz; each block is answered with the last result there is.
    const Samples speech =
        test::ReceivedChannel(ChannelKind::Speech, {.rate = Rate(), .seconds = 2.2, .snrDb = 40.0});
    StartListening(kVoiceType);
    Process(speech);
    const auto answers = host.Of(2818);
    ASSERT_EQ(answers.size(), speech.size() / kInputBlock);
    const auto first = std::find_if(answers.begin(), answers.end(),
                                    [](const auto& call) { return ValuesOf(call).voice > 0; });
    const int testLength = Rate() / 2;
    EXPECT_EQ(first - answers.begin() + 1, (testLength + AudioBlock() - 1) / AudioBlock());
    EXPECT_EQ(first->param, kVoiceType);
}

namespace {

/// The host's squelch outside of the scanner, put together here once more.
class SquelchReference {
public:
    /// \param processing  what the detectors take for the rate of the audio [Hz]
    /// \param input       rate of the live samples [Hz]
    /// \param scanCount   what the count of samples begins with; at 0 it stands
    SquelchReference(std::uint32_t squelchType, std::uint32_t processing, std::uint32_t input, int scanCount)
        : type(squelchType), rate(processing), settle(input == 48000 ? 1536 : 2304), count(scanCount) {
        noiseHighPass.SetSampleRate(static_cast<std::int32_t>(rate));
        noiseHighPass.SetLength(squelch::kNoiseHighPassTaps);
        noiseHighPass.SetFilterType(dsp::kFilterHighPass);
        noiseHighPass.SetLowCut(squelch::kNoiseHighPassHz);
        tone.SetSampleRate(static_cast<float>(rate));
        code.SetSampleRate(static_cast<float>(rate));
        voice.SetSampleRate(static_cast<float>(rate));
        voice.SetBlockLength(input / 2);
        voice.SetLevelFloor(0.1F);
        voice.SetVoiceThreshold(static_cast<float>(kSought.voice) / 100.0F);
    }

    /// The answer to a block of audio, if there is one. For codes the audio loses its DC.
    std::optional<std::uint32_t> Hear(Samples& audio) {
        values = {};
        Detect(audio);
        std::optional<std::uint32_t> answer;
        if (count == 0 || count > settle + Extra()) {
            answer = Judge() ? type : 0;
        }
        count += count == 0 ? 0 : static_cast<int>(audio.size());
        return answer;
    }

    SquelchValues values{};

private:
    void Detect(Samples& audio) {
        const auto size = static_cast<std::uint32_t>(audio.size());
        if (type == kNoiseType) {
            scratch.resize(size);
            values.noise =
                squelch::MeasureNoise(noiseHighPass, scratch.data(), noiseLevel, false, audio.data(), size);
        } else if (type == kToneType) {
            tone.Process(audio.data(), size, 1);
        } else if (type == kVoiceType) {
            voice.Process(audio.data(), size, 1);
        } else {
            squelch::DcBlock(dcBlock, audio.data(), size, rate);
            code.Process(audio.data(), size, 1);
        }
    }
    [[nodiscard]] int Extra() const {
        const auto second = static_cast<int>(rate);
        return type == kNoiseType ? 0 : type == kToneType ? second : second / 2;
    }
    bool Judge() {
        if (type == kNoiseType) {
            return values.noise < kSought.noise;
        }
        if (type == kToneType) {
            values.ctcss = squelch::ScaledCtcssTone(tone.toneIndex);
            return values.ctcss == kSought.ctcss;
        }
        if (type == kVoiceType) {
            values.voice = static_cast<std::int32_t>(voice.voiceMeasure * 100.0F);
            return voice.result == squelch::kVoiceSpeech;
        }
        count = code.matchCount != 0 ? settle : count;
        const auto found = std::span(code.matches).first(code.matchCount);
        const bool isFound = std::ranges::find(found, kSought.dcs) != found.end();
        values.dcs = isFound ? kSought.dcs : 0;
        code.matchCount = 0;
        return isFound;
    }

    std::uint32_t type;
    std::uint32_t rate;
    int settle;
    int count;
    float noiseLevel = 0.0F;
    Samples scratch;
    dsp::TFIR_F32 noiseHighPass;
    squelch::CtbToneDetector tone;
    squelch::CtbDcsDetector code;
    squelch::CtbVoiceDetector voice;
    squelch::DcBlockState dcBlock;
};

/// A block as the FM chain leaves it in its buffer, and the answer to it.
struct HeardBlock {
    Samples audio;
    std::vector<test::FakeHost::Call> answers;
};

/// Live blocks, or a file of the other rate.
class ListeningOutside : public ScannerAnswers {
protected:
    void SetSource(bool isPlayed) {
        isFile = isPlayed;
        rate = isFile ? 112000 - Rate() : Rate();
    }
    /// The audio has 16000 Hz, whatever the detectors take it for: what they are to find is slower by that.
    [[nodiscard]] double Slowness() const { return rate / 16000.0; }

    void StartOutside(const Samples& signal, std::uint32_t type) {
        StartListening(type);
        if (isFile) {
            const test::WaveFormat format{1, 1, static_cast<std::uint32_t>(rate), 16};
            Plugin().SelectFile(folder.Write("x.if.wav", test::FileBytes(format, signal)).c_str());
            Plugin().StartPlayback();
            host.Clear();
        }
    }

    /// \param count  what the count of samples begins with
    std::vector<HeardBlock> Listen(const Samples& signal, std::uint32_t type, bool isFiltered,
                                   int count = 0) {
        StartOutside(signal, type);
        Plugin().SetAFEnabled(isFiltered ? 1 : 0);
        Inside().ScanSampleCount() = count;
        const Samples clock(kInputBlock);
        std::vector<HeardBlock> blocks;
        const std::size_t length = kInputBlock * static_cast<std::size_t>(rate) / Rate();
        for (std::size_t i = 0; i + length <= signal.size(); i += length) {
            host.Clear();
            Process(isFile ? std::span(clock) : std::span(signal).subspan(i, kInputBlock));
            const std::int16_t* audio = Inside().DecimatedSamples().Data();
            blocks.push_back({Samples(audio, audio + AudioBlock()), host.Of(2818)});
        }
        Stop();
        return blocks;
    }
    /// Audio before the filter, unless it comes from a filtered block.
    void ExpectAsTheReference(const std::vector<HeardBlock>& blocks, const std::vector<HeardBlock>& audio,
                              std::uint32_t type, int count = 0) const {
        SquelchReference reference(type, static_cast<std::uint32_t>(rate), Rate(), count);
        ASSERT_EQ(blocks.size(), audio.size());
        std::size_t passed = 0;
        std::size_t failed = 0;
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            Samples heard = audio[i].audio;
            const auto expected = reference.Hear(heard);
            ASSERT_EQ(blocks[i].answers.size(), expected ? 1U : 0U) << type << " block " << i;
            if (expected) {
                ASSERT_EQ(blocks[i].answers[0].param, *expected) << type << " block " << i;
                const SquelchValues values = ValuesOf(blocks[i].answers[0]);
                ASSERT_EQ(std::memcmp(&values, &reference.values, sizeof values), 0)
                    << type << " block " << i;
                ++(*expected != 0 ? passed : failed);
            }
        }
        EXPECT_GT(passed, 0U) << type;
        EXPECT_GT(failed, 0U) << type;
    }

    test::TemporaryFolder folder;
    bool isFile = false;
    int rate = 0; ///< of the signal [Hz]
};

constexpr std::uint32_t kNoType = 0;

/// With so much of the wait over, one at the lower rate is at its end and one at the higher is not.
constexpr int kSlowRate = 48000;

} // namespace

TEST_P(ListeningOutside, NoiseIsMeasuredBeforeTheAudioFilter) {
    for (const bool isPlayed : {false, true}) {
        SetSource(isPlayed);
        Samples signal = test::Noise(rate, 0.5);
        const Samples carrier = test::Carrier(rate, 1.0);
        signal.insert(signal.end(), carrier.begin(), carrier.end());
        // The level follows the noise while nothing is answered yet.
        ExpectAsTheReference(Listen(signal, kNoiseType, true, 1), Listen(signal, kNoType, false), kNoiseType,
                             1);
    }
}

TEST_P(ListeningOutside, TonesAreFoundBeforeTheAudioFilter) {
    for (const bool isPlayed : {false, true}) {
        SetSource(isPlayed);
        test::ToneSource tone(test::kSoughtTone / Slowness(), rate);
        const Samples signal = test::FmSignal(
            rate, 1.5 * Slowness(), [&] { return 0.2 * tone.Next(); }, kSnr);
        const int count = Wait(kNoiseType) + kSlowRate;
        ExpectAsTheReference(Listen(signal, kToneType, true, count), Listen(signal, kNoType, false),
                             kToneType, count);
    }
}

TEST_P(ListeningOutside, CodesAreFoundAtTheRateOfWhatIsPlayed) {
    // Past the demodulator, which lets nothing so slow through.
    constexpr int kTurns = 90;
    for (const bool isPlayed : {false, true}) {
        SetSource(isPlayed);
        StartOutside({}, kCodeType);
        SquelchReference reference(kCodeType, static_cast<std::uint32_t>(rate), Rate(), 0);
        test::DcsEncoder encoder(test::kSoughtCode, false, static_cast<int>(16000 * Slowness()));
        std::size_t passed = 0;
        for (int i = 0; i < kTurns; ++i) {
            Samples audio(static_cast<std::size_t>(AudioBlock()));
            std::generate(audio.begin(), audio.end(),
                          [&] { return static_cast<std::int16_t>(500.0 - 1000.0 * encoder.NextLevel()); });
            Samples heard = audio;
            host.Clear();
            Inside().EvaluateHostSquelch(audio.data(), static_cast<std::uint32_t>(audio.size()));
            if (Inside().ScanSampleCount() != 0) {
                Inside().ScanSampleCount() += AudioBlock();
            }
            const auto expected = reference.Hear(heard);
            EXPECT_EQ(audio, heard) << "without its DC";
            ASSERT_EQ(host.Of(2818).size(), expected ? 1U : 0U) << i;
            if (expected) {
                EXPECT_EQ(host.Of(2818)[0].param, *expected) << i;
                passed += *expected != 0 ? 1 : 0;
            }
        }
        EXPECT_GT(passed, 0U);
        Stop();
    }
}

TEST_P(ListeningOutside, CodesTakeTheDcOutOfWhatIsHeard) {
    for (const bool isPlayed : {false, true}) {
        SetSource(isPlayed);
        const Samples signal = test::FmTone(rate, 1.0, 300.0);
        const std::vector<HeardBlock> blocks = Listen(signal, kCodeType, false);
        std::vector<HeardBlock> audio = Listen(signal, kNoType, false);
        ASSERT_EQ(blocks.size(), audio.size());
        squelch::DcBlockState dcBlock;
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            EXPECT_NE(blocks[i].audio, audio[i].audio) << i;
            squelch::DcBlock(dcBlock, audio[i].audio.data(), static_cast<std::uint32_t>(AudioBlock()),
                             static_cast<std::uint32_t>(rate));
            EXPECT_EQ(blocks[i].audio, audio[i].audio) << i;
        }
    }
}

TEST_P(ListeningOutside, VoiceIsHeardBehindTheAudioFilter) {
    for (const bool isPlayed : {false, true}) {
        SetSource(isPlayed);
        test::VoiceLikeNoise voice({.sampleRate = rate});
        const Samples signal = test::FmSignal(
            rate, 9.0, [&] { return voice.Next(); }, kSnr);
        const int count = Wait(kNoiseType) + kSlowRate / 2;
        const std::vector<HeardBlock> blocks = Listen(signal, kVoiceType, true, count);
        ExpectAsTheReference(blocks, blocks, kVoiceType, count);
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, ListeningOutside, testing::Values(48000, 64000));
INSTANTIATE_TEST_SUITE_P(Rates, ScannerAnswers, testing::Values(48000, 64000));

} // namespace orva::plugin
