// The walk of a block of samples through all stages.
#include "tests/audio/CtbWaveOutInspector.h"
#include "tests/plugin/PluginFixture.h"
#include "tests/plugin/PluginSignals.h"
#include "tests/support/AllocationProbe.h"
#include "ui/COrvaPluginWindow.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <new>
#include <numeric>
#include <set>
#include <vector>

namespace orva::plugin {

namespace {

using Samples = std::vector<std::int16_t>;

constexpr int kVolume = 1;

class PluginPipeline : public test::PluginFixture, public testing::WithParamInterface<int> {
protected:
    static int Rate() { return GetParam(); }

    /// At the rate of the test's parameter, by the road that has it.
    void StartAtRate() {
        if (Rate() == 48000) {
            StartWithWaveInput();
        } else {
            StartWithReceiver();
        }
        Notify(3584, kVolume);
        host.Clear();
    }

    /// Whole blocks of `blockSize` at the front of `samples`, the stages alone.
    static void Decode(test::PortableDecoder& portable, const Samples& samples,
                       std::size_t blockSize = kInputBlock) {
        for (std::size_t begin = 0; begin + blockSize <= samples.size(); begin += blockSize) {
            portable.Process(std::span(samples).subspan(begin, blockSize));
        }
    }

    void SetMode(DemodulationMode mode) {
        Plugin().SetDemodulationMode(static_cast<std::int32_t>(mode));
        host.Clear();
    }
    [[nodiscard]] const ui::CallReadout& Readout() const { return Inside().Window()->Readout(); }
    [[nodiscard]] std::size_t FreeBlocks() const { return Inside().FreeAudioBlocks().Count(); }
    void TakeAllFreeBlocks() {
        dsp::CtbSampleBlock* block = nullptr;
        while (Inside().FreeAudioBlocks().Pop(block)) {
            held.push_back(block);
        }
    }
    void GiveBackBlocks() {
        for (dsp::CtbSampleBlock* block : held) {
            Inside().FreeAudioBlocks().Push(block);
        }
        held.clear();
    }

    std::vector<dsp::CtbSampleBlock*> held;
};

bool IsSilent(const Samples& samples) {
    return std::all_of(samples.begin(), samples.end(), [](std::int16_t sample) { return sample == 0; });
}

/// What the indicator told the host, one number for each code 2304.
std::vector<std::uint32_t> ModesTold(const test::FakeHost& host) {
    std::vector<std::uint32_t> modes;
    for (const auto& call : host.Of(2304)) {
        modes.push_back(call.param);
    }
    return modes;
}

} // namespace

// --- calls -------------------------------------------------------------------------------------------------

TEST_P(PluginPipeline, PlaysTheVoiceThatTheDecoderGives) {
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    const Samples signal = test::CallSignal(Rate());
    test::PortableDecoder portable(Rate());
    Decode(portable, signal);
    ASSERT_GE(portable.voice.size(), 15U * 1024U);
    Process(signal);
    EXPECT_EQ(Played(), test::AtVolume(portable.voice, kVolume));
    EXPECT_FALSE(IsSilent(Played()));
}

TEST_P(PluginPipeline, ShowsTheFieldsOfACall) {
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    const Samples signal = test::CallSignal(Rate());
    test::PortableDecoder portable(Rate());
    bool wasSeen = false;
    for (std::size_t begin = 0; begin + kInputBlock <= signal.size(); begin += kInputBlock) {
        const auto block = std::span(signal).subspan(begin, kInputBlock);
        portable.Process(block);
        Process(block);
        if (portable.decoder.GetTransmission() == 0) {
            ASSERT_EQ(Inside().CurrentNac(), -1);
            ASSERT_EQ(Inside().CurrentTgid(), -1);
            ASSERT_EQ(Inside().CurrentSid(), -1);
            ASSERT_EQ(Inside().CurrentDid(), -1);
            ASSERT_EQ(Inside().CurrentBer(), 0);
            continue;
        }
        ASSERT_EQ(Inside().CurrentNac(), portable.decoder.GetNetworkAccessCode());
        ASSERT_EQ(Inside().CurrentTgid(), portable.decoder.GetTalkGroup());
        ASSERT_EQ(Inside().CurrentSid(), portable.decoder.GetSourceId());
        ASSERT_EQ(Inside().CurrentDid(), portable.decoder.GetDestinationId());
        ASSERT_EQ(Inside().CurrentBer(), static_cast<int>(portable.decoder.GetBitErrorRate() * 10.0F));
        wasSeen = wasSeen || (Inside().CurrentNac() == static_cast<int>(test::kCallNac) &&
                              Inside().CurrentTgid() == test::kCallTalkGroup &&
                              Inside().CurrentSid() == static_cast<int>(test::kCallSource));
    }
    EXPECT_TRUE(wasSeen);
}

TEST_P(PluginPipeline, TheWindowShowsTheFieldsOfACall) {
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    const Samples signal = test::CallSignal(Rate());
    test::PortableDecoder portable(Rate());
    ui::CallReadout expected;
    expected.SetSignal(1, GetTickCount());
    bool wasSeen = false;
    for (std::size_t begin = 0; begin + kInputBlock <= signal.size(); begin += kInputBlock) {
        const auto block = std::span(signal).subspan(begin, kInputBlock);
        Process(block);
        portable.Process(block);
        const auto& decoder = portable.decoder;
        const bool isOn = decoder.GetTransmission() != 0;
        expected.SetNac(isOn ? decoder.GetNetworkAccessCode() : -1);
        expected.SetTgid(isOn ? decoder.GetTalkGroup() : -1);
        expected.SetSid(isOn ? decoder.GetSourceId() : -1);
        expected.SetDid(isOn ? decoder.GetDestinationId() : -1);
        expected.SetTransmission(decoder.GetTransmission());
        expected.SetEncryption(static_cast<std::uint8_t>(decoder.GetAlgorithmId()));
        ASSERT_EQ(Readout().Nac(), expected.Nac());
        ASSERT_EQ(Readout().Tgid(), expected.Tgid());
        ASSERT_EQ(Readout().Sid(), expected.Sid());
        ASSERT_EQ(Readout().Did(), expected.Did());
        ASSERT_EQ(Readout().TransmissionShown(), expected.TransmissionShown());
        ASSERT_EQ(Readout().EncryptionShown(), expected.EncryptionShown());
        wasSeen = wasSeen || (Readout().Nac() == "659" && Readout().Tgid() == "1234" &&
                              Readout().TransmissionShown() == ui::CallReadout::kVoice &&
                              Readout().EncryptionShown() == test::kAlgorithmClear);
    }
    EXPECT_TRUE(wasSeen);
}

TEST_P(PluginPipeline, TheErrorRateIsKeptInTenthsOfAPercent) {
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    const Samples signal = test::WithGrowingNoise(test::CallSignal(Rate()), 1.5);
    test::PortableDecoder portable(Rate());
    std::set<int> rates;
    for (std::size_t begin = 0; begin + kInputBlock <= signal.size(); begin += kInputBlock) {
        const auto block = std::span(signal).subspan(begin, kInputBlock);
        Process(block);
        portable.Process(block);
        const bool isOn = portable.decoder.GetTransmission() != 0;
        const int expected = isOn ? static_cast<int>(portable.decoder.GetBitErrorRate() * 10.0F) : 0;
        ASSERT_EQ(Inside().CurrentBer(), expected);
        if (rates.insert(expected).second && rates.size() == 2) {
            char text[16];
            std::snprintf(text, sizeof text, "%d.%d %%", expected / 10, expected % 10);
            EXPECT_EQ(Readout().Ber(), text) << "the first that is not 0 is shown at once";
        }
    }
    EXPECT_GE(rates.size(), 3U) << "the noise should make a few bit errors";
}

TEST_P(PluginPipeline, ACallInAutoTellsTheHostAndEndsFmAudio) {
    StartAtRate();
    const Samples signal = test::CallSignal(Rate());
    test::PortableDecoder portable(Rate());
    Decode(portable, signal);
    Process(signal);
    // No signal, or FM, before the call, digital, none again.
    std::vector<std::uint32_t> modes = ModesTold(host);
    modes.erase(std::unique(modes.begin(), modes.end()), modes.end());
    EXPECT_EQ(modes, (std::vector<std::uint32_t>{2, 19, 2}));
    const auto told = host.Of(2304);
    for (const auto& call : told) {
        ASSERT_EQ(call.size, 8U);
        std::array<std::uint32_t, 2> list{};
        std::memcpy(list.data(), call.bytes.data(), 8);
        EXPECT_EQ(list, (std::array<std::uint32_t, 2>{2, 19}));
    }
    const Samples expected = test::AtVolume(portable.voice, kVolume);
    const Samples played = Played();
    EXPECT_NE(std::search(played.begin(), played.end(), expected.begin(), expected.end()), played.end())
        << "the voice, in one piece";
}

TEST_P(PluginPipeline, SendsTrunkingReportsAsTheDecoderMakesThem) {
    StartAtRate();
    const Samples signal = test::ControlChannelSignal(Rate(), 1.5);
    test::PortableDecoder portable(Rate());
    Decode(portable, signal);
    ASSERT_GE(portable.reports.size(), 3U);
    Process(signal);
    const auto sent = host.Of(4365);
    ASSERT_EQ(sent.size(), portable.reports.size());
    for (std::size_t i = 0; i < sent.size(); ++i) {
        EXPECT_EQ(sent[i].bytes, portable.reports[i]);
        EXPECT_EQ(sent[i].param, 0U);
        const std::uint32_t count = test::Field32(sent[i].bytes.data(), 136);
        EXPECT_EQ(sent[i].size, 162 + 22 * (count - 1));
    }
}

namespace {

/// The voice with silence instead of what is known to be encrypted. Before the first header or encryption
/// sync has been heard nothing is known.
Samples WithoutEncrypted(const test::PortableDecoder& portable) {
    constexpr std::size_t kBlock = 1024;
    Samples samples = portable.voice;
    for (std::size_t i = 0; i < portable.algorithms.size(); ++i) {
        if (portable.algorithms[i] != 0x80 && portable.algorithms[i] != -1) {
            std::fill_n(samples.begin() + static_cast<std::ptrdiff_t>(kBlock * i), kBlock, std::int16_t{0});
        }
    }
    return samples;
}

} // namespace

TEST_P(PluginPipeline, AnEncryptedCallIsSilentAtTheNormalRate) {
    // Of the last one the low byte is -1, the value is not.
    for (const int algorithm : {0x84, 0x81, 0x00, 0xFF}) {
        StartAtRate();
        SetMode(DemodulationMode::Digital);
        const Samples signal = test::CallSignal(Rate(), static_cast<std::uint8_t>(algorithm));
        test::PortableDecoder portable(Rate());
        Decode(portable, signal);
        ASSERT_GE(std::count(portable.algorithms.begin(), portable.algorithms.end(), algorithm), 15);
        Process(signal);
        EXPECT_EQ(Played(), test::AtVolume(WithoutEncrypted(portable), kVolume)) << algorithm;
        const Samples played = Played();
        EXPECT_TRUE(IsSilent(Samples(played.end() - 15 * 1024, played.end())));
        Close();
        Pump();
        waveOut.played.clear();
    }
}

TEST_P(PluginPipeline, AnEncryptedCallIsHeardOnRequest) {
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    Plugin().SetMuteEncrypted(0);
    const Samples signal = test::CallSignal(Rate(), 0x84);
    test::PortableDecoder portable(Rate());
    Decode(portable, signal);
    Process(signal);
    EXPECT_EQ(Played(), test::AtVolume(portable.voice, kVolume));
}

TEST_P(PluginPipeline, ACallJoinedLateIsHeardUntilItsAlgorithmIsKnown) {
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    const Samples whole = test::CallSignal(Rate(), 0x84);
    const Samples signal(whole.begin() + Rate() * 6 / 10, whole.end()); // behind the header
    test::PortableDecoder portable(Rate());
    Decode(portable, signal);
    ASSERT_GE(std::count(portable.algorithms.begin(), portable.algorithms.end(), -1), 1);
    ASSERT_GE(std::count(portable.algorithms.begin(), portable.algorithms.end(), 0x84), 1);
    Process(signal);
    EXPECT_EQ(Played(), test::AtVolume(WithoutEncrypted(portable), kVolume));
    EXPECT_FALSE(IsSilent(Played()));
}

TEST_P(PluginPipeline, SquelchSilencesACallButKeepsItsPace) {
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    Plugin().SetSelectiveSquelchValue(1, test::kCallNac + 1);
    Plugin().SetSelectiveSquelchMask(1);
    const Samples signal = test::CallSignal(Rate());
    test::PortableDecoder portable(Rate());
    Decode(portable, signal);
    Process(signal);
    EXPECT_EQ(Played().size(), portable.voice.size());
    EXPECT_TRUE(IsSilent(Played()));
}

TEST_P(PluginPipeline, GainActsBeforeTheInterpolator) {
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    const Samples signal = test::CallSignal(Rate());
    for (const std::int32_t decibels : {-20, 40}) {
        Plugin().SetOrvaGain(decibels);
        test::PortableDecoder portable(Rate());
        portable.gain = decibels == -20 ? 0.1 : 100.0;
        Decode(portable, signal);
        Process(signal);
        EXPECT_EQ(Played(), test::AtVolume(portable.voice, kVolume)) << decibels;
        Close();
        Pump();
        waveOut.played.clear();
        StartAtRate();
        SetMode(DemodulationMode::Digital);
    }
}

TEST_P(PluginPipeline, TheEndOfVoiceTakesTheVoicePathOnceMore) {
    StartAtRate();
    const Samples signal = test::CallSignal(Rate());
    constexpr std::uint32_t kShort = 240; // few dibits: the end is seen before the call's fields are dropped
    bool wasSeen = false;
    for (std::size_t begin = 0; begin + kShort <= signal.size(); begin += kShort) {
        Process(std::span(signal).subspan(begin, kShort), kShort);
        if (Inside().FrameDecoder().GetTransmission() == 5) {
            wasSeen = true;
            EXPECT_EQ(Inside().SignalIndicator(), SignalIndicator::Digital);
            EXPECT_EQ(Inside().AnalogHoldoff(), 0);
        }
    }
    EXPECT_TRUE(wasSeen);
}

TEST_P(PluginPipeline, EachVoiceBlockTakesOneOutputBlockOrIsLost) {
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    const Samples signal = test::CallSignal(Rate());
    TakeAllFreeBlocks();
    for (std::size_t begin = 0; begin + kInputBlock <= signal.size(); begin += kInputBlock) {
        ASSERT_TRUE(Plugin().ProcessData(signal.data() + begin, kInputBlock));
    }
    EXPECT_TRUE(waveOut.played.empty());
    EXPECT_EQ(Inside().CurrentAudioBlock(), nullptr);
    EXPECT_EQ(Inside().FrameDecoder().GetReadyCount(), 0) << "the decoder got all of its blocks back";
    GiveBackBlocks();
    EXPECT_EQ(FreeBlocks(), 10U);
}

TEST_P(PluginPipeline, VoiceThatIsGoneBeforeItIsPlayedIsSkipped) {
    StartAtRate();
    const Samples signal = test::CallSignal(Rate(), test::kAlgorithmClear, 2);
    int resets = 0;
    // The decoder starts anew inside the call, when its voice has been counted but not fetched.
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 2304 && call.param == 19) {
            Inside().FrameDecoder().Reset();
            ++resets;
        }
    };
    for (std::size_t begin = 0; begin + kInputBlock <= signal.size(); begin += kInputBlock) {
        Inside().SignalIndicator() = SignalIndicator::None; // so that every block tells
        Process(std::span(signal).subspan(begin, kInputBlock));
    }
    EXPECT_GT(resets, 2);
    EXPECT_EQ(FreeBlocks() + audio::CtbWaveOutInspector{*Inside().WaveOut()}.Gathered() +
                  (Inside().CurrentAudioBlock() != nullptr ? 1 : 0),
              10U);
}

TEST_P(PluginPipeline, NoBlockLeaksOverManyCalls) {
    StartAtRate();
    const Samples call = test::CallSignal(Rate(), test::kAlgorithmClear, 2);
    const Samples tone = test::FmTone(Rate(), 1.5);
    for (int i = 0; i < 3; ++i) {
        Process(call);
        Process(tone);
    }
    Inside().WaveOut()->Stop();
    Pump();
    const std::size_t gathered = audio::CtbWaveOutInspector{*Inside().WaveOut()}.Gathered();
    EXPECT_EQ(FreeBlocks() + gathered + (Inside().CurrentAudioBlock() != nullptr ? 1 : 0), 10U);
}

// --- FM ----------------------------------------------------------------------------------------------------

TEST_P(PluginPipeline, FmModePlaysFromTheFirstBlockWhatTheDemodulatorGives) {
    StartAtRate();
    SetMode(DemodulationMode::Fm);
    const Samples signal = test::FmTone(Rate(), 2.0);
    const Samples expected = test::AtVolume(test::PortableFm(signal, Rate(), kInputBlock), kVolume);
    Process(signal);
    const Samples played = Played();
    ASSERT_EQ(played.size(), expected.size() / 1024 * 1024);
    EXPECT_TRUE(std::equal(played.begin(), played.end(), expected.begin()));
    EXPECT_FALSE(IsSilent(Samples(played.begin(), played.begin() + 1024)));
    EXPECT_EQ(ModesTold(host), std::vector<std::uint32_t>{2});
    EXPECT_EQ(host.Of(2304)[0].size, 0U) << "one mode only: no list";
}

TEST_P(PluginPipeline, FmAudioIsCutAlikeWhateverTheBlocks) {
    StartAtRate();
    SetMode(DemodulationMode::Fm);
    const Samples signal = test::FmTone(Rate(), 1.0);
    Process(signal, 601);
    const Samples expected = test::AtVolume(test::PortableFm(signal, Rate(), 601), kVolume);
    const Samples played = Played();
    ASSERT_EQ(played.size(), expected.size() / 1024 * 1024);
    EXPECT_TRUE(std::equal(played.begin(), played.end(), expected.begin()));
}

TEST_P(PluginPipeline, FmModeLeavesTheFrameDecoderAndTheReadoutAlone) {
    StartAtRate();
    SetMode(DemodulationMode::Fm);
    Process(test::CallSignal(Rate()));
    EXPECT_EQ(Inside().FrameDecoder().GetNetworkAccessCode(), -1);
    EXPECT_EQ(Inside().CurrentNac(), -1);
    EXPECT_EQ(Readout().Nac(), "---");
    EXPECT_TRUE(host.Of(4365).empty());
    EXPECT_EQ(Inside().SignalIndicator(), SignalIndicator::Fm);
    Inside().Window()->SetNac(0x123);
    Process(test::FmTone(Rate(), 0.1));
    EXPECT_EQ(Readout().Nac(), "291") << "what stands there is not written over";
}

TEST_P(PluginPipeline, TheDemodulatorKeepsItsLockInFmMode) {
    StartAtRate();
    SetMode(DemodulationMode::Fm);
    const Samples signal = test::CallSignal(Rate(), test::kAlgorithmClear, 6);
    const std::size_t half = signal.size() / 2 / kInputBlock * kInputBlock;
    test::PortableDecoder portable(Rate());
    portable.decodes = false;
    Decode(portable, Samples(signal.begin(), signal.begin() + static_cast<std::ptrdiff_t>(half)));
    portable.decodes = true;
    const Samples rest(signal.begin() + static_cast<std::ptrdiff_t>(half), signal.end());
    Decode(portable, rest);
    ASSERT_GE(portable.voice.size(), 10U * 1024U);
    Process(std::span(signal).first(half));
    waveOut.played.clear();
    SetMode(DemodulationMode::Digital);
    Process(rest);
    EXPECT_EQ(Played(), test::AtVolume(portable.voice, kVolume));
}

TEST_P(PluginPipeline, ABlockThatCannotBeDemodulatedIsDropped) {
    StartAtRate();
    SetMode(DemodulationMode::Fm);
    const Samples signal = test::FmTone(Rate(), 0.5);
    Process(std::span(signal).first(kInputBlock));
    const std::uint32_t fill = Inside().AudioBlockFill();
    Inside().AnalogDemodulator().SetSampleRate(11999); // lower than it takes
    EXPECT_FALSE(Plugin().ProcessData(signal.data(), kInputBlock));
    EXPECT_EQ(Inside().AudioBlockFill(), fill);
    Inside().AnalogDemodulator().SetSampleRate(static_cast<std::uint32_t>(Rate()));
    EXPECT_TRUE(Plugin().ProcessData(signal.data(), kInputBlock));
}

TEST_P(PluginPipeline, FmAudioAfterTheStartWaits16Blocks) {
    StartAtRate();
    const Samples signal = test::FmTone(Rate(), 2.0);
    const Samples expected = test::AtVolume(test::PortableFm(signal, Rate(), kInputBlock), kVolume);
    Process(signal);
    const Samples played = Played();
    const std::size_t silent = 16 * kInputBlock / (Rate() == 48000 ? 3U : 4U);
    ASSERT_GT(played.size(), silent + 1024);
    EXPECT_TRUE(IsSilent(Samples(played.begin(), played.begin() + static_cast<std::ptrdiff_t>(silent))));
    EXPECT_TRUE(std::equal(played.begin() + static_cast<std::ptrdiff_t>(silent), played.end(),
                           expected.begin() + static_cast<std::ptrdiff_t>(silent)));
    EXPECT_EQ(ModesTold(host), (std::vector<std::uint32_t>{2, 2})) << "none, then FM";
}

TEST_P(PluginPipeline, FmAudioAfterACallWaits20Blocks) {
    StartAtRate();
    Process(test::CallSignal(Rate()));
    ASSERT_EQ(Inside().SignalIndicator(), SignalIndicator::None);
    const Samples tone = test::FmTone(Rate(), 2.0);
    const int before = Inside().AnalogHoldoff();
    ASSERT_LT(before, 20);
    const std::size_t left = static_cast<std::size_t>(20 - before);
    for (std::size_t i = 0; i < left + 3; ++i) {
        Process(std::span(tone).subspan(i * kInputBlock, kInputBlock));
        EXPECT_EQ(Inside().SignalIndicator(), i < left ? SignalIndicator::None : SignalIndicator::Fm) << i;
        EXPECT_EQ(Inside().AnalogHoldoff(), std::min<int>(20, before + static_cast<int>(i) + 1));
    }
}

TEST_P(PluginPipeline, ACallDropsTheTailOfFmAudio) {
    StartAtRate();
    SetMode(DemodulationMode::Auto);
    Process(test::FmTone(Rate(), 0.2));
    ASSERT_NE(Inside().CurrentAudioBlock(), nullptr);
    ASSERT_GT(Inside().AudioBlockFill(), 0U);
    const std::size_t freeBefore = FreeBlocks();
    // A sample or two make no dibit: the voice path.
    const std::int16_t sample = 0;
    for (int i = 0; i < 3 && Inside().SignalIndicator() != SignalIndicator::Digital; ++i) {
        Plugin().ProcessData(&sample, 1);
    }
    ASSERT_EQ(Inside().SignalIndicator(), SignalIndicator::Digital);
    EXPECT_EQ(Inside().CurrentAudioBlock(), nullptr);
    EXPECT_EQ(FreeBlocks(), freeBefore + 1);
}

TEST_P(PluginPipeline, SquelchSilencesFmAudio) {
    StartAtRate();
    SetMode(DemodulationMode::Fm);
    Notify(2818, 1);
    Process(test::FmTone(Rate(), 1.0));
    ASSERT_FALSE(Played().empty());
    EXPECT_TRUE(IsSilent(Played()));
}

TEST_P(PluginPipeline, TheAudioFilterIsInThePathWhenEnabled) {
    StartAtRate();
    SetMode(DemodulationMode::Fm);
    Plugin().SetAFFreqLow(2000);
    const auto energy = [](const Samples& samples) {
        return std::accumulate(samples.end() - 4096, samples.end(), 0.0,
                               [](double sum, std::int16_t x) { return sum + 1.0 * x * x; });
    };
    Process(test::FmTone(Rate(), 1.0, 1000.0));
    const double open = energy(Played());
    Plugin().SetAFEnabled(1);
    Process(test::FmTone(Rate(), 1.0, 1000.0));
    EXPECT_LT(energy(Played()), open / 1000.0) << "1000 Hz lies below the band";
    Process(test::FmTone(Rate(), 1.0, 3000.0));
    EXPECT_GT(energy(Played()), open / 4.0);
}

TEST_P(PluginPipeline, OffersEachFmBlockToTheHostAndPlaysWhatItLeft) {
    StartAtRate();
    SetMode(DemodulationMode::Fm);
    host.onCall = [](const test::FakeHost::Call& call, void* data) {
        if (call.code == 4362) {
            auto* bytes = static_cast<std::uint8_t*>(data);
            std::fill_n(reinterpret_cast<std::int16_t*>(bytes + 16), 1024, std::int16_t{1000});
            std::fill_n(bytes + 2064, 3, std::uint8_t{0xEE}); // gone at the next offer
        }
    };
    const Samples signal = test::FmTone(Rate(), 1.0);
    const Samples audio = test::PortableFm(signal, Rate(), kInputBlock);
    Process(signal);
    const auto offers = host.Of(4362);
    ASSERT_EQ(offers.size(), audio.size() / 1024);
    for (std::size_t i = 0; i < offers.size(); ++i) {
        EXPECT_EQ(offers[i].param, 3U);
        ASSERT_EQ(offers[i].size, 2067U);
        const std::uint8_t* bytes = offers[i].bytes.data();
        EXPECT_EQ(test::Field32(bytes, 0), 16000U);
        EXPECT_EQ(test::Field32(bytes, 4), 16U);
        EXPECT_EQ(test::Field32(bytes, 8), 1U);
        EXPECT_EQ(test::Field32(bytes, 12), 1024U);
        EXPECT_EQ(std::memcmp(bytes + 16, audio.data() + 1024 * i, 2048), 0);
        EXPECT_EQ(bytes[2064] | bytes[2065] | bytes[2066], 0);
    }
    const Samples played = Played();
    EXPECT_EQ(played, Samples(offers.size() * 1024, 2500));
}

TEST_P(PluginPipeline, VoiceIsNotOffered) {
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    Process(test::CallSignal(Rate()));
    ASSERT_FALSE(Played().empty());
    EXPECT_TRUE(host.Of(4362).empty());
}

TEST_P(PluginPipeline, WithoutAFreeBlockFmAudioIsDropped) {
    StartAtRate();
    SetMode(DemodulationMode::Fm);
    TakeAllFreeBlocks();
    const Samples signal = test::FmTone(Rate(), 0.5);
    EXPECT_FALSE(Plugin().ProcessData(signal.data(), kInputBlock));
    GiveBackBlocks();
    EXPECT_TRUE(Plugin().ProcessData(signal.data() + kInputBlock, kInputBlock));
}

TEST_P(PluginPipeline, WithoutAnOutputFmBlocksGoBackToTheFreeList) {
    StartAtRate();
    SetMode(DemodulationMode::Fm);
    Inside().WaveOut().reset();
    const Samples signal = test::FmTone(Rate(), 2.0);
    for (std::size_t begin = 0; begin + kInputBlock <= signal.size(); begin += kInputBlock) {
        ASSERT_TRUE(Plugin().ProcessData(signal.data() + begin, kInputBlock));
    }
    EXPECT_EQ(FreeBlocks() + (Inside().CurrentAudioBlock() != nullptr ? 1 : 0), 10U);
    EXPECT_FALSE(host.Of(4362).empty()) << "the host still hears it";
    SetMode(DemodulationMode::Digital);
    Process(test::CallSignal(Rate()));
    EXPECT_EQ(FreeBlocks() + (Inside().CurrentAudioBlock() != nullptr ? 1 : 0), 10U);
}

// --- no signal ---------------------------------------------------------------------------------------------

TEST_P(PluginPipeline, DigitalModeWithoutASignalShowsDigitalAndPlaysNothing) {
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    Process(test::Noise(Rate(), 1.0));
    EXPECT_EQ(ModesTold(host), std::vector<std::uint32_t>{19});
    EXPECT_FALSE(host.Of(2304)[0].hasData);
    EXPECT_EQ(Inside().SignalIndicator(), SignalIndicator::Digital);
    EXPECT_EQ(Inside().CurrentNac(), -1);
    EXPECT_EQ(Inside().CurrentTgid(), -1);
    EXPECT_TRUE(Played().empty());
    EXPECT_TRUE(host.Of(4362).empty());
    ui::COrvaPluginWindow& view = *Inside().Window();
    view.SetNac(0x123);
    view.SetTgid(5);
    view.SetSid(6);
    view.SetTransmission(ui::CallReadout::kVoice); // which the window holds for a while
    Process(test::Noise(Rate(), 0.1));
    EXPECT_EQ(Readout().EncryptionShown(), 0xFF) << "an unknown algorithm, -1, by its low byte";
    EXPECT_EQ(Readout().Nac(), "---");
    EXPECT_EQ(Readout().Tgid(), "----");
    EXPECT_EQ(Readout().Sid(), "--------");
}

TEST_P(PluginPipeline, ABlockWithoutADibitTakesTheVoicePath) {
    StartAtRate();
    const std::array<std::int16_t, 5> few{};
    EXPECT_TRUE(Plugin().ProcessData(few.data(), few.size()));
    EXPECT_EQ(ModesTold(host), std::vector<std::uint32_t>{19});
    EXPECT_EQ(Inside().AnalogHoldoff(), 0);
    EXPECT_TRUE(Played().empty());
}

TEST_P(PluginPipeline, FiveSamplesAtATimeGiveTheSameVoice) {
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    const Samples signal = test::CallSignal(Rate(), test::kAlgorithmClear, 2);
    test::PortableDecoder portable(Rate());
    Decode(portable, signal, 5);
    ASSERT_FALSE(portable.voice.empty());
    Process(signal, 5);
    EXPECT_EQ(Played(), test::AtVolume(portable.voice, kVolume));
    EXPECT_GE(Inside().DecimatedSamples().Capacity(), 1024U) << "a voice block's room, not the input's";
}

TEST_P(PluginPipeline, AnUnchangedIndicatorIsShownAgainButNotTold) {
    StartAtRate();
    Inside().SetSignalIndicator(SignalIndicator::Fm);
    Inside().SetSignalIndicator(SignalIndicator::Fm);
    EXPECT_EQ(ModesTold(host), std::vector<std::uint32_t>{2});
    // The window refuses a second change within half a second, and takes it when it is repeated.
    Inside().SetSignalIndicator(SignalIndicator::Digital);
    EXPECT_NE(Readout().Signal(), 1);
    Sleep(550);
    Inside().SetSignalIndicator(SignalIndicator::Digital);
    EXPECT_EQ(Readout().Signal(), 1);
    EXPECT_EQ(ModesTold(host), (std::vector<std::uint32_t>{2, 19}));
}

// --- entry -------------------------------------------------------------------------------------------------

TEST_P(PluginPipeline, DoesNothingWhilePoweredOff) {
    StartAtRate();
    Notify(256, 0);
    const Samples signal = test::FmTone(Rate(), 0.5);
    EXPECT_FALSE(Plugin().ProcessData(signal.data(), kInputBlock));
    EXPECT_EQ(Inside().FloatSamples().Capacity(), 0U);
    Notify(256, 1);
    EXPECT_TRUE(Plugin().ProcessData(signal.data(), kInputBlock));
}

TEST_P(PluginPipeline, NoSamplesAreNoWork) {
    StartAtRate();
    const std::array<std::int16_t, 5> few{};
    EXPECT_TRUE(Plugin().ProcessData(nullptr, 5));
    EXPECT_TRUE(Plugin().ProcessData(few.data(), 0));
    EXPECT_EQ(Inside().DecimatedSamples().Capacity(), 0U);
    EXPECT_TRUE(host.calls.empty());
}

TEST_P(PluginPipeline, InvertsTheSpectrumWithTheLibrarysFunction) {
    library.isPresent = true;
    StartAtRate();
    std::array<std::int16_t, 100> samples{};
    library.onInvert = [](std::int16_t* block, std::uint32_t count) {
        std::fill_n(block, count, std::int16_t{16384});
    };
    Plugin().ProcessData(samples.data(), samples.size());
    ASSERT_EQ(library.inversions.size(), 1U);
    EXPECT_EQ(library.inversions[0].receiver, kHandle);
    EXPECT_EQ(library.inversions[0].samples, samples.data());
    EXPECT_EQ(library.inversions[0].count, 100U);
    EXPECT_EQ(library.inversions[0].rate, static_cast<float>(Rate()));
    EXPECT_EQ(library.inversions[0].bits, 16U);
    EXPECT_EQ(library.inversions[0].reserved, 0U);
    EXPECT_EQ(Inside().FloatSamples()[99], 0.5F) << "what it left goes on";
}

TEST_P(PluginPipeline, TheFunctionThatInvertsIsOptional) {
    library.missing = {"K7InvertSpectrum"};
    StartAtRate();
    std::array<std::int16_t, 100> samples{};
    EXPECT_TRUE(Plugin().ProcessData(samples.data(), samples.size()));
    EXPECT_TRUE(library.inversions.empty());
}

TEST_P(PluginPipeline, ABlockWithoutMemoryIsDropped) {
    StartAtRate();
    SetMode(DemodulationMode::Fm);
    const Samples signal = test::FmTone(Rate(), 0.5);
    for (int successes = 0; successes < 2; ++successes) {
        const test::AllocationFailure failure(successes);
        EXPECT_FALSE(Plugin().ProcessData(signal.data(), kInputBlock)) << successes;
        EXPECT_TRUE(failure.HasStruck());
        EXPECT_EQ(Inside().FloatSamples().Data(), nullptr);
    }
    EXPECT_TRUE(Plugin().ProcessData(signal.data(), kInputBlock));
    // Without room for its audio the block ends early, but as done.
    dsp::CtbSampleBlock& audio = Inside().AnalogSamples();
    audio.~CtbBasicSampleBlock();
    new (&audio) dsp::CtbSampleBlock;
    const std::uint32_t fill = Inside().AudioBlockFill();
    {
        const test::AllocationFailure failure(0);
        EXPECT_TRUE(Plugin().ProcessData(signal.data(), kInputBlock));
        EXPECT_TRUE(failure.HasStruck());
    }
    EXPECT_EQ(Inside().AudioBlockFill(), fill);
    EXPECT_TRUE(Plugin().ProcessData(signal.data(), kInputBlock));
}

TEST_P(PluginPipeline, AnOfferWithoutMemoryIsNotMade) {
    StartAtRate();
    SetMode(DemodulationMode::Fm);
    const Samples signal = test::FmTone(Rate(), 0.5);
    Process(std::span(signal).first(kInputBlock));
    dsp::CtbSampleBlock block;
    block.Acquire(1024);
    host.Clear();
    const test::AllocationFailure failure(0);
    Inside().OfferAudioToHost(&block);
    EXPECT_TRUE(failure.HasStruck());
    EXPECT_TRUE(host.calls.empty());
}

TEST_P(PluginPipeline, AWarmInstanceAllocatesNothing) {
    StartAtRate();
    Plugin().SetAFEnabled(1);
    const Samples call = test::CallSignal(Rate(), test::kAlgorithmClear, 2);
    const Samples tone = test::FmTone(Rate(), 1.5);
    host.keeps = false;
    library.keepsReads = false;
    waveOut.keepsPlayed = false;
    for (int i = 0; i < 2; ++i) {
        Process(call);
        Process(tone);
    }
    std::uint64_t reports = 0;
    host.onCall = [&](const test::FakeHost::Call& sent, void*) { reports += sent.code == 4365 ? 1 : 0; };
    const std::uint64_t before = test::CountAllocations();
    Process(call);
    Process(tone);
    EXPECT_EQ(test::CountAllocations() - before, reports) << "a report is a block of memory given away";
}

TEST_P(PluginPipeline, AnUnsupportingHostChangesNothingOfTheVoice) {
    host.answer = 0x80000000U;
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    const Samples signal = test::CallSignal(Rate());
    test::PortableDecoder portable(Rate());
    Decode(portable, signal);
    Process(signal);
    EXPECT_EQ(Played(), test::AtVolume(portable.voice, kVolume));
    Close();
    EXPECT_TRUE(IsDestroyed());
}

TEST_P(PluginPipeline, WorksWithoutAWindow) {
    StartAtRate();
    SetMode(DemodulationMode::Digital);
    Inside().Window().reset();
    const Samples signal = test::CallSignal(Rate());
    test::PortableDecoder portable(Rate());
    Decode(portable, signal);
    Process(signal);
    EXPECT_EQ(Played(), test::AtVolume(portable.voice, kVolume));
}

INSTANTIATE_TEST_SUITE_P(Rates, PluginPipeline, testing::Values(48000, 64000));

} // namespace orva::plugin
