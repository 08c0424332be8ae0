// Construction, start, modes, devices and the end of an instance.
#include "tests/audio/CtbWaveInInspector.h"
#include "tests/audio/CtbWaveOutInspector.h"
#include "tests/plugin/PluginFixture.h"
#include "tests/plugin/PluginSignals.h"
#include "tests/plugin/WindowViews.h"
#include "tests/toolkit/FakeDiagnostics.h"
#include "ui/COrvaPluginWindow.h"

#include <cmath>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace orva::plugin {

namespace {

using Calls = std::vector<std::string>;
using Codes = std::vector<std::int32_t>;
using Samples = std::vector<std::int16_t>;

constexpr std::uint32_t kAllTypes = 0x306;

class PluginSession : public test::PluginFixture {
protected:
    /// Blocks are sent to the device at once from here on.
    void StartFlowing() {
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(Inside().TakeAudioBlock());
            Inside().WaveOut()->Write(Inside().CurrentAudioBlock());
            Inside().CurrentAudioBlock() = nullptr;
        }
        waveOut.FinishAllBlocks();
        ASSERT_FALSE(IsGathering());
    }
    bool IsGathering() { return audio::CtbWaveOutInspector{*Inside().WaveOut()}.Prebuffering(); }
};

std::vector<std::uint32_t> Words(const std::vector<std::uint8_t>& bytes) {
    std::vector<std::uint32_t> words(bytes.size() / 4);
    std::memcpy(words.data(), bytes.data(), words.size() * 4);
    return words;
}

void ExpectFilter(dsp::TFIR_F32& filter, double rate, std::uint32_t up, std::uint32_t down,
                  std::uint32_t type, std::uint32_t length) {
    std::uint32_t actualUp = 0;
    std::uint32_t actualDown = 0;
    filter.GetRateRatio(actualUp, actualDown);
    EXPECT_EQ(filter.GetSampleRate(), rate);
    EXPECT_EQ(actualUp, up);
    EXPECT_EQ(actualDown, down);
    EXPECT_EQ(filter.GetFilterType(), type);
    EXPECT_EQ(filter.GetLength(), length);
}

} // namespace

// --- construction ------------------------------------------------------------------------------------------

TEST_F(PluginSession, FieldsHaveTheirValuesAfterConstruction) {
    Start(nullptr);
    const COrvaPluginInspector inside = Inside();
    EXPECT_FALSE(inside.ReceiverStreaming());
    EXPECT_FALSE(inside.InHostModeCall());
    EXPECT_EQ(inside.InputSampleRate(), 48000U);
    EXPECT_EQ(inside.SignalIndicator(), SignalIndicator::Unknown);
    EXPECT_EQ(inside.ReceiverHandle(), kHandle);
    EXPECT_FALSE(inside.ReceiverLibrary().IsLoaded());
    EXPECT_FALSE(inside.WaveFile().IsOpen());
    EXPECT_EQ(inside.FileState(), FileState::Idle);
    EXPECT_EQ(inside.PauseFlags(), 0U);
    EXPECT_FALSE(inside.FileIsAudio());
    EXPECT_EQ(inside.FileSampleRate(), 0U);
    EXPECT_EQ(inside.PauseUnderSquelch(), 0);
    EXPECT_EQ(inside.PauseNoOrva(), 0);
    EXPECT_EQ(inside.OrvaSignalLatch(), 0);
    EXPECT_EQ(inside.OverwriteBox(), nullptr);
    EXPECT_FALSE(inside.PlayNextFile());
    EXPECT_FALSE(inside.ReceiverRecord());
    EXPECT_EQ(inside.SpareInputBlock().Capacity(), 0U);
    EXPECT_EQ(inside.FloatSamples().Capacity(), 0U);
    EXPECT_EQ(inside.FileSamples().Capacity(), 0U);
    EXPECT_EQ(inside.AnalogSamples().Capacity(), 0U);
    EXPECT_EQ(inside.DecimatedSamples().Capacity(), 0U);
    EXPECT_EQ(inside.NoiseScratch().Capacity(), 0U);
    EXPECT_EQ(inside.ProcessingRate(), 48000U);
    EXPECT_EQ(inside.AudioSampleRate(), 16000U);
    EXPECT_TRUE(inside.DecoderEnabled());
    EXPECT_EQ(inside.DemodulationMode(), DemodulationMode::Auto);
    EXPECT_EQ(inside.FreeAudioBlocks().Count(), 10U);
    EXPECT_EQ(inside.FreeInputBlocks().Count(), 0U);
    EXPECT_EQ(inside.FilledInputBlocks().Count(), 0U);
    EXPECT_FALSE(inside.InputLock().has_value()) << "there is no receiver";
    EXPECT_EQ(inside.AudioBlockFill(), 0U);
    EXPECT_EQ(inside.CurrentAudioBlock(), nullptr);
    EXPECT_EQ(inside.SquelchBits(), 0U);
    EXPECT_EQ(inside.AfFreqLow(), 0);
    EXPECT_EQ(inside.AfFreqHigh(), 4000);
    EXPECT_EQ(inside.AfLowpass(), 0);
    EXPECT_EQ(inside.AfDeemphasis(), 0);
    EXPECT_EQ(inside.AfFilterLength(), 512);
    EXPECT_EQ(inside.AfEnabled(), 0);
    EXPECT_EQ(inside.SelectiveSquelchMask(), 0U);
    EXPECT_EQ(inside.AnalogHoldoff(), 4);
    EXPECT_EQ(inside.HostSquelchType(), 0U);
    EXPECT_EQ(inside.VoiceThreshold(), 0);
    EXPECT_EQ(inside.CtcssTone(), -1);
    EXPECT_EQ(inside.DcsCode(), 0);
    EXPECT_EQ(inside.NoiseThreshold(), 1000);
    EXPECT_EQ(inside.NoiseLevel(), 0.0F);
    EXPECT_EQ(inside.DcBlock().dcBlockPrevIn, 0);
    EXPECT_EQ(inside.DcBlock().dcBlockPrevOut, 0.0F);
    EXPECT_EQ(inside.FillingInputBlock(), nullptr);
    EXPECT_EQ(inside.InputBlockFill(), 0U);
    EXPECT_EQ(inside.SpectrumCrossover(), 0xFFFFFFFFU);
    EXPECT_EQ(inside.ReceiverFrequency(), 0U);
    EXPECT_EQ(inside.WaveInDevice(), 0U);
    EXPECT_EQ(inside.WaveOutDevice(), 0U);
    EXPECT_EQ(inside.SavedStreamValue(), 0U);
    EXPECT_FALSE(inside.ScannerActive());
    EXPECT_EQ(inside.WaveOutName(), "");
    EXPECT_EQ(inside.WaveInName(), "");
    EXPECT_FALSE(inside.StartupDone());
    EXPECT_FALSE(inside.ScanningSquelchSent());
    EXPECT_EQ(inside.ScanSampleCount(), 0);
    EXPECT_EQ(inside.ScanSettleSamples(), 1536);
    EXPECT_EQ(inside.SkipInputSamples(), 0U);
    EXPECT_TRUE(inside.MuteEncrypted());
    EXPECT_EQ(inside.OrvaGain(), 0);
    EXPECT_EQ(inside.OrvaGainFactor(), 1.0);
    EXPECT_EQ(inside.SquelchNac() | inside.SquelchTgid() | inside.SquelchSid() | inside.SquelchDid() |
                  inside.SquelchBer(),
              0U);
    EXPECT_EQ(inside.CurrentNac(), -1);
    EXPECT_EQ(inside.CurrentTgid(), 0);
    EXPECT_EQ(inside.CurrentSid(), 0);
    EXPECT_EQ(inside.CurrentDid(), 0);
    EXPECT_EQ(inside.CurrentBer(), 0);
    EXPECT_EQ(inside.HostAudioBuffer().Capacity(), 0U);
    EXPECT_EQ(inside.FrameDecoder().GetBlockSize(), 512U);
}

TEST_F(PluginSession, EveryAudioBlockHolds1024ZeroSamples) {
    Start(nullptr);
    for (const dsp::CtbSampleBlock& block : Inside().AudioBlocks()) {
        ASSERT_EQ(block.Capacity(), 1024U);
        for (std::uint32_t i = 0; i < block.Capacity(); ++i) {
            ASSERT_EQ(block[i], 0);
        }
    }
}

TEST_F(PluginSession, BuildsItsFiltersForTheWaveInput) {
    Start(nullptr);
    ExpectFilter(Inside().InputDecimator(), 48000.0, 1, 3, dsp::kFilterLowPass, 256);
    EXPECT_EQ(Inside().InputDecimator().GetHighCut(), 7900.0);
    ExpectFilter(Inside().VoiceInterpolator(), 8000.0, 2, 1, dsp::kFilterLowPass, 64);
    EXPECT_EQ(Inside().VoiceInterpolator().GetHighCut(), 4000.0) << "7900 Hz, but for the filter's own limit";
    ExpectFilter(Inside().NoiseHighPass(), 48000.0, 1, 1, dsp::kFilterHighPass, 128);
    EXPECT_EQ(Inside().NoiseHighPass().GetLowCut(), 5000.0);
    ExpectFilter(Inside().AudioFilter(), 16000.0, 1, 1, dsp::kFilterBandPass, 512);
    EXPECT_EQ(Inside().AudioFilter().GetLowCut(), 0.0);
    EXPECT_EQ(Inside().AudioFilter().GetHighCut(), 4000.0);
    EXPECT_EQ(Inside().AudioFilter().GetSlope(), 0.0);
}

TEST_F(PluginSession, BuildsItsFiltersForTheReceiver) {
    StartWithReceiver();
    EXPECT_TRUE(Inside().ReceiverStreaming());
    EXPECT_EQ(Inside().InputSampleRate(), 64000U);
    EXPECT_EQ(Inside().ProcessingRate(), 64000U);
    EXPECT_EQ(Inside().ScanSettleSamples(), 2304);
    ExpectFilter(Inside().InputDecimator(), 64000.0, 1, 4, dsp::kFilterLowPass, 256);
    EXPECT_EQ(Inside().InputDecimator().GetHighCut(), 7900.0);
    EXPECT_EQ(Inside().NoiseHighPass().GetSampleRate(), 64000.0);
}

TEST_F(PluginSession, MakesItsWindow) {
    Start(nullptr);
    RECT bounds{};
    GetWindowRect(window, &bounds);
    EXPECT_EQ(bounds.left, 0);
    EXPECT_EQ(bounds.top, 0);
    EXPECT_EQ(bounds.right, 326);
    EXPECT_EQ(bounds.bottom, 282);
    const auto style = static_cast<DWORD>(GetWindowLongA(window, GWL_STYLE));
    constexpr DWORD kExpected = WS_POPUP | WS_CLIPCHILDREN | WS_CLIPSIBLINGS;
    EXPECT_EQ(style & kExpected, kExpected);
    EXPECT_EQ(style & WS_VISIBLE, 0U);
}

TEST_F(PluginSession, BindsTheTwelveEventsOfItsWindow) {
    StartWithWaveInput();
    const ui::COrvaPluginWindow& view = *Inside().Window();
    EXPECT_TRUE(view.onInputBlock.IsBound());
    EXPECT_TRUE(view.onRetryTimer.IsBound());
    view.onAFFreqHigh.Fire(nullptr, 3000);
    EXPECT_EQ(Inside().AfFreqHigh(), 3000);
    view.onAFFreqLow.Fire(nullptr, 300);
    EXPECT_EQ(Inside().AfFreqLow(), 300);
    view.onAFLowpass.Fire(nullptr, 1);
    EXPECT_EQ(Inside().AfLowpass(), 1);
    view.onAFDeemphasis.Fire(nullptr, -60);
    EXPECT_EQ(Inside().AfDeemphasis(), -60);
    view.onAFFilterLength.Fire(nullptr, 128);
    EXPECT_EQ(Inside().AfFilterLength(), 128);
    view.onAFEnabled.Fire(nullptr, 1);
    EXPECT_EQ(Inside().AfEnabled(), 1);
    view.onMuteEncrypted.Fire(nullptr, 0);
    EXPECT_FALSE(Inside().MuteEncrypted());
    view.onOrvaGain.Fire(nullptr, 6);
    EXPECT_EQ(Inside().OrvaGain(), 6);
    view.onSelectiveMask.Fire(nullptr, 2);
    EXPECT_EQ(Inside().SelectiveSquelchMask(), 2U);
    EXPECT_TRUE(host.calls.empty());
    view.onDemodulationMode.Fire(nullptr, 1);
    EXPECT_EQ(Inside().DemodulationMode(), DemodulationMode::Digital);
    EXPECT_EQ(host.Codes(), (Codes{16390, 2304}));
}

TEST_F(PluginSession, ConnectsTheReceiverBeforeItOpensTheOutput) {
    library.isPresent = true;
    record.SetText(44, "K7USB", 32);
    Start(record.Record());
    EXPECT_EQ(log.calls, (Calls{"load library", "open", "CodecStart", "K7GetEEP"}));
    EXPECT_EQ(library.handles, (std::vector<std::uint32_t>{kHandle, kHandle}));
    EXPECT_TRUE(Inside().InputLock().has_value());
    EXPECT_EQ(waveOut.openings.at(0).format.nSamplesPerSec, 16000U);
    const audio::CtbWaveOutInspector output{*Inside().WaveOut()};
    EXPECT_EQ(output.PrebufferBlocks(), 3U);
    EXPECT_EQ(output.DataSource(), &Plugin());
    EXPECT_TRUE(output.Running());
}

TEST_F(PluginSession, AsksForTheReceiversMemoryLastWhateverTheDevice) {
    record.SetText(44, "OTHER", 32);
    library.isPresent = true;
    Start(record.Record());
    EXPECT_EQ(log.calls, (Calls{"open", "load library", "K7GetEEP"}));
    EXPECT_FALSE(Inside().ReceiverStreaming());
    const audio::CtbWaveInInspector input{*Inside().WaveIn()};
    EXPECT_EQ(input.BufferCount(), 32U);
    EXPECT_EQ(input.BufferSamples(), 2400U);
    EXPECT_EQ(input.DeviceId(), 0U);
}

TEST_F(PluginSession, TakesTheReceiverForFiveCharactersOfItsType) {
    library.isPresent = true;
    for (const auto& [type, isReceiver] : {std::pair{"K7USB", true},
                                           {"K7USB receiver", true},
                                           {"K7US", false},
                                           {"k7usb", false},
                                           {"", false}}) {
        record.SetText(44, type, 32);
        Start(record.Record());
        EXPECT_EQ(Inside().ReceiverStreaming(), isReceiver) << type;
        EXPECT_EQ(Inside().ReceiverHandle(), kHandle);
        Close();
    }
    Start(nullptr);
    EXPECT_FALSE(Inside().ReceiverStreaming()) << "without a record";
}

// --- settings ----------------------------------------------------------------------------------------------

namespace {

/// Notes when it is asked, and for whom.
struct KnownSettings final : IInstanceSettings {
    explicit KnownSettings(test::CallLog& callLog) : log(callLog) {}

    void Load(COrvaPlugin& plugin, const std::string& key) override {
        log.Add("load settings");
        keys.push_back(key);
        if (fails) {
            throw std::runtime_error("cannot load");
        }
        const COrvaPluginInspector inside{plugin};
        EXPECT_NE(inside.Window(), nullptr);
        EXPECT_NE(inside.WaveIn(), nullptr);
        EXPECT_NE(inside.WaveOut(), nullptr);
        inside.AfFreqLow() = 300;
        inside.AfDeemphasis() = -60;
        plugin.SetOrvaGain(500);
        plugin.SetVolume(12);
    }
    void Save(COrvaPlugin& plugin, const std::string& key) override {
        log.Add("save settings");
        keys.push_back(key);
        gainSaved = COrvaPluginInspector{plugin}.OrvaGain();
        if (fails) {
            throw std::runtime_error("cannot save");
        }
    }

    test::CallLog& log;
    std::vector<std::string> keys;
    std::int32_t gainSaved = 0;
    bool fails = false;
};

} // namespace

TEST_F(PluginSession, SettingsAreLoadedLastButOneAndSavedFirst) {
    KnownSettings settings(log);
    platform.settings = &settings;
    library.isPresent = true;
    record.SetText(44, "K7USB", 32);
    record.SetText(76, "12345678", 8);
    Start(record.Record());
    EXPECT_EQ(log.calls, (Calls{"load library", "open", "CodecStart", "load settings", "K7GetEEP"}));
    EXPECT_EQ(Inside().AudioFilter().GetLowCut(), 300.0) << "the filter is built from what was loaded";
    EXPECT_NEAR(Inside().AudioFilter().GetSlope(), -6.0, 1e-12);
    EXPECT_EQ(Inside().OrvaGain(), 100) << "limited by its setter";
    EXPECT_EQ(host.Codes(), Codes{16390}) << "there is no host yet to tell of a new volume";
    Pump();
    EXPECT_EQ(host.Of(4352).at(0).param, 12U);
    log.Clear();
    Close();
    EXPECT_EQ(log.calls, (Calls{"save settings", "CodecStop", "free library", "reset", "close"}));
    EXPECT_EQ(settings.gainSaved, 100);
    EXPECT_EQ(settings.keys, (Calls{"12345678", "12345678"}));
}

TEST_F(PluginSession, WithoutARecordTheReceiverIsUnknown) {
    KnownSettings settings(log);
    platform.settings = &settings;
    Start(nullptr);
    Close();
    EXPECT_EQ(settings.keys, (Calls{"unknown", "unknown"}));
}

TEST_F(PluginSession, SettingsThatCannotBeSavedDoNotHoldTheInstance) {
    KnownSettings settings(log);
    platform.settings = &settings;
    StartWithReceiver();
    settings.fails = true;
    Close();
    EXPECT_TRUE(IsDestroyed());
    EXPECT_EQ(log.calls, (Calls{"save settings", "CodecStop", "free library", "reset", "close"}));
}

TEST_F(PluginSession, AConstructionThatFailsEndsWhatItBegan) {
    KnownSettings settings(log);
    settings.fails = true;
    platform.settings = &settings;
    library.isPresent = true;
    record.SetText(44, "K7USB", 32);
    EXPECT_EQ(entries.Start(kHandle, record.Record(), test::FakeHost::Callback()), 0xFFFFFFFFU);
    EXPECT_EQ(log.calls, (Calls{"load library", "open", "CodecStart", "load settings", "CodecStop",
                                "free library", "reset", "close"}))
        << "the user's settings are left alone";
    EXPECT_TRUE(host.calls.empty());
    settings.fails = false;
    Start(record.Record());
    EXPECT_TRUE(Inside().ReceiverStreaming());
    Close();
}

// --- the end -----------------------------------------------------------------------------------------------

TEST_F(PluginSession, EndsTheStreamFirstAndTheOutputLast) {
    StartWithReceiver();
    Close();
    EXPECT_EQ(log.calls, (Calls{"CodecStop", "free library", "reset", "close"}));
    EXPECT_EQ(library.handles.back(), kHandle);
    EXPECT_TRUE(IsDestroyed());
    EXPECT_EQ(host.Codes(), (Codes{16390, 16384}));
}

TEST_F(PluginSession, EndsTheInputBeforeTheOutput) {
    StartWithWaveInput();
    ASSERT_TRUE(waveIn.IsOpen());
    waveIn.logsTraffic = true;
    int windowsSeen = 0;
    waveIn.onClose = waveOut.onClose = [&] { windowsSeen += IsDestroyed() ? 0 : 1; };
    Close();
    waveIn.onClose = waveOut.onClose = nullptr;
    EXPECT_EQ(windowsSeen, 2) << "the window goes after the devices";
    Calls expected{"reset"};
    expected.insert(expected.end(), 32, "unprepare");
    expected.insert(expected.end(), {"close", "reset", "close"});
    EXPECT_EQ(log.calls, expected);
}

TEST_F(PluginSession, TakesItsCapabilitiesBackAtTheEnd) {
    record.Set(192, 0x41);
    record.Set(200, 0x11);
    StartWithWaveInput();
    Close();
    ASSERT_EQ(host.Codes(), (Codes{16390, 16384}));
    const test::FakeHost::Call& withdrawn = host.calls[0];
    const std::uint8_t* bytes = withdrawn.bytes.data();
    EXPECT_EQ(withdrawn.param, 0U);
    EXPECT_EQ(withdrawn.size, 400U) << "no section but the modes was there";
    EXPECT_EQ(test::Field32(bytes, 0), 400U);
    EXPECT_EQ(test::Field32(bytes, 192), 1U) << "0x10000041 & 0xefffffbf";
    EXPECT_EQ(test::Field32(bytes, 200), 0x11U);
    EXPECT_EQ(test::Field32(bytes, 228), 0U);
    EXPECT_EQ(test::Field32(bytes, 236), 0U);
}

TEST_F(PluginSession, WhatTheHostWritesIntoTheRecordIsKept) {
    host.onCall = [](const test::FakeHost::Call& call, void* data) {
        if (call.code == 16390) {
            static_cast<ReceiverRecord*>(data)->reserved8[0] = 0xA5;
        }
    };
    Start(record.Record());
    host.onCall = nullptr;
    host.Clear();
    Close();
    ASSERT_EQ(host.Codes(), (Codes{16390, 16384}));
    EXPECT_EQ(host.calls[0].bytes.at(8), 0xA5);
}

TEST_F(PluginSession, TheLastMessageHasTheName) {
    StartWithWaveInput();
    Close();
    const test::FakeHost::Call& last = host.calls.back();
    EXPECT_EQ(last.code, 16384);
    EXPECT_EQ(last.window, window);
    EXPECT_EQ(last.param, 0U);
    EXPECT_EQ(last.size, 4U);
    EXPECT_EQ(std::memcmp(last.bytes.data(), "ORVA", 4), 0);
}

TEST_F(PluginSession, AClosedInstanceDoesNotRunAWaitingStart) {
    Start(record.Record());
    host.Clear();
    Close();
    Pump();
    EXPECT_EQ(host.Codes(), (Codes{16390, 16384}));
}

// --- the deferred start ------------------------------------------------------------------------------------

TEST_F(PluginSession, AnnouncesItselfBeforeTheStartReturns) {
    Start(record.Record());
    ASSERT_EQ(host.Codes(), Codes{16390});
    const test::FakeHost::Call& announced = host.calls[0];
    EXPECT_EQ(announced.window, window);
    EXPECT_EQ(announced.param, 0U);
    EXPECT_EQ(announced.size, test::Field32(announced.bytes.data(), 0));
    EXPECT_EQ(test::Field32(announced.bytes.data(), 200) & kAllTypes, kAllTypes);
    EXPECT_EQ(test::Field32(announced.bytes.data(), 228), 2U);
    EXPECT_EQ(test::Field32(Inside().ReceiverRecord().Get(), 228), 2U) << "a clone of it is kept";
    EXPECT_NE(static_cast<void*>(Inside().ReceiverRecord().Get()), nullptr);
}

TEST_F(PluginSession, StartsInItsOrderWithEachQuerySupportedOrNot) {
    for (unsigned supported = 0; supported < 16; ++supported) {
        host.queries.clear();
        if ((supported & 1) != 0) {
            host.queries[2048] = 155000000;
        }
        if ((supported & 2) != 0) {
            host.queries[3840] = 1;
        }
        if ((supported & 4) != 0) {
            host.queries[2818] = 1;
        }
        if ((supported & 8) != 0) {
            host.queries[256] = 0;
        }
        record.SetText(44, "OTHER", 32);
        Start(record.Record());
        host.Clear();
        Inside().HostSquelchType() = 4;
        Inside().LevelThreshold() = 1;
        Inside().NoiseThreshold() = 2;
        Inside().CtcssTone() = 100000;
        Inside().VoiceThreshold() = 3;
        Inside().DcsCode() = -19;
        bool openAtPower = true;
        bool openAtVolume = false;
        bool doneAtMute = true;
        host.onCall = [&](const test::FakeHost::Call& call, void*) {
            if (call.code == 16386 && call.param == 256) {
                openAtPower = waveIn.IsOpen();
            } else if (call.code == 4352) {
                openAtVolume = waveIn.IsOpen();
            } else if (call.code == 4353) {
                doneAtMute = Inside().StartupDone();
            }
        };
        Pump();
        host.onCall = nullptr;

        ASSERT_EQ(host.Codes(), (Codes{16386, 16386, 16390, 2816, 16386, 16386, 4352, 4353})) << supported;
        EXPECT_EQ(host.calls[0].param, 2048U);
        EXPECT_EQ(host.calls[1].param, 3840U);
        EXPECT_EQ(host.calls[2].size, 400U);
        EXPECT_EQ(test::Field32(host.calls[2].bytes.data(), 200) & kAllTypes, kAllTypes);
        EXPECT_EQ(host.calls[3].param, 4U);
        EXPECT_EQ(Words(host.calls[3].bytes),
                  (std::vector<std::uint32_t>{1, 2, 100000, 0, 0, 3, static_cast<std::uint32_t>(-19)}));
        EXPECT_EQ(host.calls[4].param, 2818U);
        EXPECT_EQ(host.calls[5].param, 256U);
        EXPECT_EQ(host.calls[6].param, 8U);
        EXPECT_EQ(host.calls[7].param, 0U);
        for (const std::size_t query : {0U, 1U, 4U, 5U}) {
            EXPECT_EQ(host.calls[query].size, 0U);
            EXPECT_FALSE(host.calls[query].hasData);
        }
        EXPECT_FALSE(openAtPower);
        EXPECT_TRUE(openAtVolume);
        EXPECT_FALSE(doneAtMute);
        EXPECT_TRUE(Inside().StartupDone());
        EXPECT_EQ(Inside().ReceiverFrequency(), (supported & 1) != 0 ? 155000000U : 0U);
        EXPECT_EQ(Inside().ScannerActive(), (supported & 2) != 0);
        EXPECT_EQ(Inside().ScanSampleCount(), 0) << "the scanner answers from the next code on";
        EXPECT_EQ(Inside().SquelchBits(), (supported & 4) != 0 ? 1U : 0U);
        EXPECT_EQ(Inside().DecoderEnabled(), (supported & 8) == 0);
        EXPECT_EQ(IsWindowEnabled(window) != FALSE, (supported & 8) == 0);
        Close();
        Pump();
    }
}

TEST_F(PluginSession, WhatTheHostToldBeforeTheStartStaysWithoutAnAnswer) {
    record.SetText(44, "OTHER", 32);
    Start(record.Record());
    Notify(2048, 155000000);
    Notify(3840, 1);
    Notify(2818, 1);
    Notify(256, 0);
    Pump();
    EXPECT_TRUE(Inside().StartupDone());
    EXPECT_EQ(Inside().ReceiverFrequency(), 155000000U);
    EXPECT_TRUE(Inside().ScannerActive());
    EXPECT_EQ(Inside().SquelchBits(), 1U);
    EXPECT_FALSE(Inside().DecoderEnabled());
}

TEST_F(PluginSession, TellsVolumeAndMuteAsTheyAreAtTheStart) {
    Start(record.Record());
    Notify(3584, 20);
    Notify(3585, 1);
    host.Clear();
    Pump();
    ASSERT_EQ(host.Of(4352).size(), 1U);
    EXPECT_EQ(host.Of(4352)[0].param, 20U);
    ASSERT_EQ(host.Of(4353).size(), 1U);
    EXPECT_EQ(host.Of(4353)[0].param, 1U);
    EXPECT_FALSE(host.Of(4353)[0].hasData);
}

TEST_F(PluginSession, TheDeferredStartSetsTheGainOfFmAudio) {
    record.SetText(44, "OTHER", 32);
    Start(record.Record());
    Inside().AnalogDemodulator().SetGain(0.0F);
    Pump();
    Notify(2304, 2);
    const Samples signal = test::FmTone(48000, 0.2);
    Process(signal);
    const Samples expected = test::PortableFm(signal, 48000, kInputBlock);
    const Samples heard(Inside().DecimatedSamples().Data(), Inside().DecimatedSamples().Data() + 800);
    EXPECT_EQ(heard, Samples(expected.end() - 800, expected.end()));
}

TEST_F(PluginSession, OffersNoSquelchTypesInDigitalModeAtTheStart) {
    Start(record.Record());
    Notify(2304, 19);
    host.Clear();
    Pump();
    const auto offers = host.Of(16390);
    ASSERT_EQ(offers.size(), 1U);
    EXPECT_EQ(test::Field32(offers[0].bytes.data(), 200) & kAllTypes, 0U);
}

TEST_F(PluginSession, OpensNoInputBesideTheReceiver) {
    StartWithReceiver();
    EXPECT_TRUE(waveIn.openings.empty());
    EXPECT_TRUE(errors.empty());
}

TEST_F(PluginSession, TellsOfAnInputThatCannotBeOpenedAndLivesOn) {
    waveIn.openResult = MMSYSERR_ALLOCATED;
    record.SetText(44, "OTHER", 32);
    Start(record.Record());
    host.Clear();
    std::size_t callsBefore = 0;
    onError = [&] { callsBefore = host.calls.size(); };
    Pump();
    EXPECT_EQ(errors, Calls{"ORVA Error: Failed to open WaveIn device."});
    EXPECT_EQ(callsBefore, 6U) << "before the volume is told";
    EXPECT_EQ(host.calls.size(), 8U);
    EXPECT_TRUE(Inside().StartupDone());
}

TEST_F(PluginSession, ACloseWhileTheBoxIsUpEndsTheInstanceAfterwards) {
    waveIn.openResult = MMSYSERR_ALLOCATED;
    Start(record.Record());
    host.Clear();
    onError = [&] { Close(); };
    Pump();
    EXPECT_TRUE(IsDestroyed());
    EXPECT_EQ(host.Codes().back(), 16384) << "nothing comes after the last message";
    onError = nullptr;
}

namespace {

std::function<void(HWND box)> onErrorBox;

void CALLBACK FindErrorBox(HWND /*window*/, UINT /*message*/, UINT_PTR timer, DWORD /*time*/) {
    const HWND box = FindWindowA(nullptr, "ORVA Error");
    if (box != nullptr && IsWindowVisible(box) != FALSE) {
        KillTimer(nullptr, timer);
        onErrorBox(box);
    }
}

} // namespace

TEST_F(PluginSession, TheRealErrorBoxIsAnsweredByTheUserEachTime) {
    platform.ask = RealPlatform().ask;
    waveIn.deviceNames = {"First", "Second"};
    StartWithWaveInput();
    waveIn.openResult = MMSYSERR_ALLOCATED;
    int shown = 0;
    onErrorBox = [&](HWND box) {
        ++shown;
        PostMessageA(box, WM_KEYDOWN, VK_RETURN, 1);
    };
    for (const std::uint32_t device : {1U, 0U}) {
        SetTimer(nullptr, 0, 10, &FindErrorBox);
        Plugin().SetWaveInDevice(device);
    }
    EXPECT_EQ(shown, 2);
    EXPECT_TRUE(IsWindowEnabled(window));
}

TEST_F(PluginSession, TheRealErrorBoxGoesWhenTheHostClosesTheInstance) {
    platform.ask = RealPlatform().ask;
    waveIn.openResult = MMSYSERR_ALLOCATED;
    Start(record.Record());
    onErrorBox = [this](HWND /*box*/) { Close(); };
    SetTimer(nullptr, 0, 10, &FindErrorBox);
    Pump();
    EXPECT_TRUE(IsDestroyed());
}

TEST_F(PluginSession, AnExceptionOfTheHostInTheDeferredStartStaysInside) {
    record.SetText(44, "OTHER", 32);
    for (const std::int32_t code : {16386, 16390, 2816, 4352, 4353}) {
        Start(record.Record());
        host.onCall = [code](const test::FakeHost::Call& call, void*) {
            if (call.code == code) {
                throw std::runtime_error("host");
            }
        };
        Pump();
        host.onCall = nullptr;
        Notify(2304, 2);
        EXPECT_EQ(Inside().DemodulationMode(), DemodulationMode::Fm) << code;
        const std::vector<std::int16_t> samples(2400);
        EXPECT_TRUE(Plugin().ProcessData(samples.data(), 2400));
        Close();
        Pump();
        EXPECT_TRUE(IsDestroyed()) << code;
    }
}

TEST_F(PluginSession, RunsWithoutACallback) {
    record.SetText(44, "OTHER", 32);
    entries.Start(kHandle, record.Record(), nullptr);
    Pump();
    EXPECT_TRUE(Inside().StartupDone());
    EXPECT_TRUE(waveIn.IsOpen());
    Notify(2304, 19);
    EXPECT_EQ(Inside().DemodulationMode(), DemodulationMode::Digital);
    Close();
    EXPECT_TRUE(IsDestroyed());
    EXPECT_TRUE(host.calls.empty());
}

TEST_F(PluginSession, AnnouncesNothingWithoutARecord) {
    Start(nullptr);
    EXPECT_TRUE(host.calls.empty());
    Pump();
    EXPECT_EQ(host.Codes(), (Codes{16386, 16386, 2816, 16386, 16386, 4352, 4353}));
    host.Clear();
    Close();
    EXPECT_EQ(host.Codes(), Codes{16384});
}

// --- codes of the host -------------------------------------------------------------------------------------

TEST_F(PluginSession, ASecondStartOfAHandleChangesNothing) {
    StartWithWaveInput();
    const COrvaPlugin* first = instance;
    EXPECT_EQ(entries.Start(kHandle, record.Record(), test::FakeHost::Callback()), 0xFFFFFFFFU);
    EXPECT_EQ(instance, first);
    EXPECT_EQ(entries.Instances().Count(), 1U);
    EXPECT_TRUE(host.calls.empty());
}

TEST_F(PluginSession, UnknownCodesAndHandlesDoNothing) {
    StartWithWaveInput();
    for (const std::int32_t code : {1, 2305, 16385, 16386, -1}) {
        Notify(code, 19);
    }
    entries.Notify(kHandle + 1, 2304, 19, 0, nullptr);
    EXPECT_TRUE(host.calls.empty());
    EXPECT_EQ(Inside().DemodulationMode(), DemodulationMode::Auto);
}

TEST_F(PluginSession, CodesReachTheirFields) {
    StartWithWaveInput();
    Inside().SavedStreamValue() = 7;
    Notify(0, 99);
    EXPECT_EQ(Inside().SavedStreamValue(), 0U);
    Notify(256, 0);
    EXPECT_FALSE(Inside().DecoderEnabled());
    EXPECT_EQ(IsWindowEnabled(window), FALSE);
    Notify(256, 5);
    EXPECT_TRUE(Inside().DecoderEnabled());
    EXPECT_NE(IsWindowEnabled(window), FALSE);
    Notify(2048, 4000000000U);
    EXPECT_EQ(Inside().ReceiverFrequency(), 4000000000U);
    SquelchValues values{1, 2, 3, {0, 0}, 4, -5};
    Notify(2817, 513, sizeof values, &values);
    EXPECT_EQ(Inside().HostSquelchType(), 513U);
    EXPECT_EQ(Inside().LevelThreshold(), 1);
    EXPECT_EQ(Inside().NoiseThreshold(), 2);
    EXPECT_EQ(Inside().CtcssTone(), 3);
    EXPECT_EQ(Inside().VoiceThreshold(), 4);
    EXPECT_EQ(Inside().DcsCode(), -5);
    Notify(2817, 2);
    EXPECT_EQ(Inside().HostSquelchType(), 2U);
    EXPECT_EQ(Inside().DcsCode(), -5) << "without values they stay";
    Notify(2818, 9);
    EXPECT_EQ(Inside().SquelchBits(), 1U);
    Notify(2818, 0);
    EXPECT_EQ(Inside().SquelchBits(), 0U);
    EXPECT_TRUE(host.calls.empty());
    Notify(3840, 1);
    EXPECT_TRUE(Inside().ScannerActive());
    EXPECT_EQ(IsWindowEnabled(window), FALSE);
    Notify(3840, 0);
    EXPECT_FALSE(Inside().ScannerActive());
    EXPECT_NE(IsWindowEnabled(window), FALSE);
}

TEST_F(PluginSession, VolumeIsToldAsItTookEffect) {
    StartWithWaveInput();
    Notify(3584, 20);
    Notify(3584, 20);
    Notify(3584, 40);
    Notify(3584, 0xFFFFFFFFU);
    const auto told = host.Of(4352);
    ASSERT_EQ(told.size(), 3U) << "an unchanged volume is no news";
    EXPECT_EQ(told[0].param, 20U);
    EXPECT_EQ(told[1].param, 32U);
    EXPECT_EQ(told[2].param, 0U);
    EXPECT_FALSE(told[0].hasData);
    EXPECT_EQ(told[0].size, 0U);
    EXPECT_EQ(Inside().Window()->GetVolume(), 0);
    Inside().WaveOut().reset();
    Notify(3584, 3);
    EXPECT_EQ(host.calls.size(), 3U);
}

TEST_F(PluginSession, MuteIsToldEachTime) {
    StartWithWaveInput();
    Notify(3585, 1);
    Notify(3585, 1);
    Notify(3585, 0);
    const auto told = host.Of(4353);
    ASSERT_EQ(told.size(), 3U);
    EXPECT_EQ(told[0].param, 1U);
    EXPECT_EQ(told[1].param, 1U);
    EXPECT_EQ(told[2].param, 0U);
    EXPECT_FALSE(Inside().WaveOut()->GetMute());
    Notify(3585, 1);
    EXPECT_TRUE(Inside().WaveOut()->GetMute());
    EXPECT_TRUE(Inside().Window()->GetMuteDown());
}

// --- modes -------------------------------------------------------------------------------------------------

TEST_F(PluginSession, AnUnchangedModeIsNotTold) {
    StartWithWaveInput();
    Notify(2304, 2);
    host.Clear();
    Inside().AnalogHoldoff() = 3;
    Notify(2304, 2);
    EXPECT_TRUE(host.calls.empty());
    EXPECT_EQ(Inside().AnalogHoldoff(), 3);
}

TEST_F(PluginSession, AModeIsTakenStepByStep) {
    StartWithWaveInput();
    StartFlowing();
    Inside().SelectiveSquelchMask() = 1;
    Inside().SquelchNac() = 0x293;

    Notify(2304, 19);
    ASSERT_EQ(host.Codes(), (Codes{16390, 2304}));
    EXPECT_EQ(host.calls[0].size, 400U);
    EXPECT_EQ(test::Field32(host.calls[0].bytes.data(), 200) & kAllTypes, 0U) << "digital only: no squelch";
    EXPECT_EQ(test::Field32(Inside().ReceiverRecord().Get(), 200) & kAllTypes, kAllTypes) << "kept as it was";
    EXPECT_EQ(host.calls[1].param, 2U);
    EXPECT_EQ(host.calls[1].size, 0U);
    EXPECT_FALSE(host.calls[1].hasData);
    EXPECT_EQ(Inside().AnalogHoldoff(), 4);
    EXPECT_TRUE(IsGathering());
    EXPECT_EQ(Inside().SquelchBits(), 2U) << "evaluated at once";
    const auto shown = [&] { return ui::COrvaPluginWindowInspector{*Inside().Window()}.DemodulationMode(); };
    EXPECT_EQ(shown(), 1);

    host.Clear();
    Notify(2304, 2);
    ASSERT_EQ(host.Codes(), (Codes{16390, 2304}));
    EXPECT_EQ(test::Field32(host.calls[0].bytes.data(), 200) & kAllTypes, kAllTypes);
    EXPECT_EQ(host.calls[1].param, 2U);
    EXPECT_FALSE(host.calls[1].hasData);
    EXPECT_EQ(Inside().AnalogHoldoff(), 20);
    EXPECT_EQ(Inside().SquelchBits(), 0U) << "FM has no selective squelch";

    host.Clear();
    Inside().SignalIndicator() = SignalIndicator::Digital;
    std::uint32_t both[2] = {19, 2};
    Notify(2304, 77, 8, both);
    ASSERT_EQ(host.Codes(), (Codes{16390, 2304}));
    EXPECT_EQ(test::Field32(host.calls[0].bytes.data(), 200) & kAllTypes, kAllTypes);
    EXPECT_EQ(shown(), 0);
    EXPECT_EQ(host.calls[1].param, 19U);
    EXPECT_EQ(Words(host.calls[1].bytes), (std::vector<std::uint32_t>{2, 19}));
}

TEST_F(PluginSession, TheEchoOfItsOwnModeIsIgnored) {
    StartWithWaveInput();
    bool wasInside = false;
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 2304) {
            wasInside = Inside().InHostModeCall();
            Notify(2304, 2);
        }
    };
    Notify(2304, 19);
    EXPECT_TRUE(wasInside);
    EXPECT_EQ(Inside().DemodulationMode(), DemodulationMode::Digital);
    EXPECT_FALSE(Inside().InHostModeCall());
}

TEST_F(PluginSession, OnlyTheModeCallProtectsTheMode) {
    StartWithWaveInput();
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 4352) {
            EXPECT_FALSE(Inside().InHostModeCall());
            Notify(2304, 2);
        }
    };
    Notify(3584, 9);
    EXPECT_EQ(Inside().DemodulationMode(), DemodulationMode::Fm);
}

TEST_F(PluginSession, AnyCallInsideTheModeCallEndsItsProtection) {
    StartWithWaveInput();
    bool isFirst = true;
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 2304 && isFirst) {
            isFirst = false;
            Notify(3584, 9); // answered with code 4352
            EXPECT_FALSE(Inside().InHostModeCall());
            Notify(2304, 2);
        }
    };
    Notify(2304, 19);
    EXPECT_EQ(Inside().DemodulationMode(), DemodulationMode::Fm);
}

// --- filters and gain --------------------------------------------------------------------------------------

TEST_F(PluginSession, TheRateBeforeTheRatioPullsTheDecimatorsEdgeDownForGood) {
    StartWithReceiver();
    Plugin().SetProcessingRate(48000, false);
    ExpectFilter(Inside().InputDecimator(), 48000.0, 1, 3, dsp::kFilterLowPass, 256);
    EXPECT_EQ(Inside().InputDecimator().GetHighCut(), 6000.0) << "half of 48000 / 4";
    Plugin().SetProcessingRate(64000, false);
    ExpectFilter(Inside().InputDecimator(), 64000.0, 1, 4, dsp::kFilterLowPass, 256);
    EXPECT_EQ(Inside().InputDecimator().GetHighCut(), 6000.0);
    EXPECT_EQ(Inside().InputSampleRate(), 64000U) << "that of live input stays";
}

TEST_F(PluginSession, TheDecimatorsEdgeStaysFromTheLowerToTheHigherRate) {
    StartWithWaveInput();
    Plugin().SetProcessingRate(64000, false);
    EXPECT_EQ(Inside().InputDecimator().GetHighCut(), 7900.0);
    EXPECT_EQ(Inside().NoiseHighPass().GetSampleRate(), 64000.0);
}

TEST_F(PluginSession, AnUnsupportedRateIsToldAndYieldsAQuarter) {
    StartWithWaveInput();
    const test::FakeDiagnostics diagnostics;
    Plugin().SetProcessingRate(32000, false);
    ASSERT_EQ(diagnostics.lines.size(), 1U);
    EXPECT_NE(diagnostics.lines[0].find("K728ORVA: Unsupported sample rate: 32000"), std::string::npos);
    EXPECT_EQ(Inside().InputDecimator().GetOutputRate(), 8000.0);
    EXPECT_EQ(Inside().AudioSampleRate(), 16000U);
    Plugin().SetProcessingRate(32000, false);
    EXPECT_EQ(diagnostics.lines.size(), 1U) << "unchanged";
    Plugin().SetProcessingRate(32000, true);
    EXPECT_EQ(diagnostics.lines.size(), 2U) << "forced";
}

TEST_F(PluginSession, AReceiverOfAnotherRateIsToldAndTakenForTheFastOne) {
    StartWithWaveInput();
    const test::FakeDiagnostics diagnostics;
    Inside().InputSampleRate() = 96000;
    Inside().BuildInputDecimator();
    ASSERT_EQ(diagnostics.lines.size(), 1U);
    EXPECT_NE(diagnostics.lines[0].find("K728ORVA: Unsupported receiver sample rate.\n"), std::string::npos);
    ExpectFilter(Inside().InputDecimator(), 96000.0, 1, 4, dsp::kFilterLowPass, 256);
    for (const std::uint32_t rate : {48000U, 64000U}) {
        Inside().InputSampleRate() = rate;
        Inside().BuildInputDecimator();
    }
    EXPECT_EQ(diagnostics.lines.size(), 1U);
}

TEST_F(PluginSession, TheAudioFilterFollowsItsSettings) {
    StartWithWaveInput();
    dsp::TFIR_F32& filter = Inside().AudioFilter();
    Plugin().SetAFFreqLow(300);
    EXPECT_EQ(filter.GetLowCut(), 300.0);
    Plugin().SetAFFreqHigh(3000);
    EXPECT_EQ(filter.GetHighCut(), 3000.0);
    Plugin().SetAFDeemphasis(-60);
    EXPECT_NEAR(filter.GetSlope(), -6.0, 1e-12);
    Plugin().SetAFFilterLength(130);
    EXPECT_EQ(filter.GetLength(), 132U);
    EXPECT_EQ(Inside().AfFilterLength(), 130);
    EXPECT_EQ(filter.GetFilterType(), dsp::kFilterBandPass);
    Plugin().SetAFLowpass(1);
    EXPECT_EQ(filter.GetFilterType(), dsp::kFilterLowPass);
    EXPECT_EQ(filter.GetHighCut(), 3000.0);
    EXPECT_EQ(filter.GetSampleRate(), 16000.0);
}

TEST_F(PluginSession, TheGainIsLimitedAndMadeAFactor) {
    StartWithWaveInput();
    Plugin().SetOrvaGain(500);
    EXPECT_EQ(Inside().OrvaGain(), 100);
    EXPECT_NEAR(Inside().OrvaGainFactor(), 100000.0, 1e-6);
    Plugin().SetOrvaGain(-500);
    EXPECT_EQ(Inside().OrvaGain(), -100);
    EXPECT_NEAR(Inside().OrvaGainFactor(), 0.00001, 1e-15);
    Plugin().SetOrvaGain(-6);
    EXPECT_NEAR(Inside().OrvaGainFactor(), 0.50118723362727224, 1e-12);
}

TEST_F(PluginSession, TheGainTruncatesAndWraps) {
    StartWithWaveInput();
    std::vector<std::int16_t> samples{1, -1, 32767, 0};
    Plugin().SetOrvaGain(100);
    Inside().ApplyOrvaGain(samples.data(), 4);
    // 100000, -100000 and 3276700000, less whole turns of 65536.
    EXPECT_EQ(samples, (std::vector<std::int16_t>{-31072, 31072, 31072, 0}));
    samples = {1000, -1000, 1, -1};
    Plugin().SetOrvaGain(-6);
    Inside().ApplyOrvaGain(samples.data(), 4);
    EXPECT_EQ(samples, (std::vector<std::int16_t>{501, -501, 0, 0}));
    samples = {1000, -1000, 1, -1};
    Plugin().SetOrvaGain(0);
    Inside().ApplyOrvaGain(samples.data(), 4);
    EXPECT_EQ(samples, (std::vector<std::int16_t>{1000, -1000, 1, -1}));
}

// --- devices -----------------------------------------------------------------------------------------------

TEST_F(PluginSession, ChangesTheInputDeviceInItsOrder) {
    waveIn.deviceNames = {"First", "Second", "Second"};
    StartWithWaveInput();
    std::uint32_t queuedAtClose = 1;
    waveIn.onClose = [&] { queuedAtClose = audio::CtbWaveInInspector{*Inside().WaveIn()}.BuffersQueued(); };
    Plugin().SetWaveInDevice(1);
    waveIn.onClose = nullptr;
    EXPECT_EQ(queuedAtClose, 0U) << "messages run between the stop and the close";
    EXPECT_EQ(log.calls, (Calls{"reset", "close", "open", "start"}));
    EXPECT_EQ(waveIn.openings.back().deviceId, 1U);
    EXPECT_EQ(Inside().WaveInName(), "Second");
    EXPECT_EQ(Inside().WaveInDevice(), 1U);
    EXPECT_EQ(waveIn.BuffersInside(), 32U);
    log.Clear();
    Plugin().SetWaveInDevice(2);
    EXPECT_TRUE(log.calls.empty()) << "the same name";
    EXPECT_EQ(Inside().WaveInDevice(), 1U);
    waveIn.openResult = MMSYSERR_ALLOCATED;
    Plugin().SetWaveInDevice(0);
    EXPECT_EQ(errors, Calls{"ORVA Error: Failed to open WaveIn device."});
    EXPECT_EQ(Inside().WaveInDevice(), 0U);
}

TEST_F(PluginSession, OpensTheInputDeviceOnlyAfterTheStartAndWithoutReceiver) {
    waveIn.deviceNames = {"First", "Second"};
    StartWithWaveInput();
    Inside().StartupDone() = false;
    Plugin().SetWaveInDevice(1);
    EXPECT_EQ(log.calls, (Calls{"reset", "close"}));
    EXPECT_EQ(Inside().WaveInDevice(), 1U);
    Close();
    Pump();
    StartWithReceiver();
    Plugin().SetWaveInDevice(1);
    EXPECT_EQ(waveIn.openings.size(), 1U) << "that of the first instance";
    EXPECT_EQ(Inside().WaveInName(), "Second");
}

TEST_F(PluginSession, ChangesTheOutputDeviceInItsOrder) {
    waveOut.deviceNames = {"First", "Second", "Second"};
    StartWithWaveInput();
    StartFlowing();
    ASSERT_TRUE(Inside().TakeAudioBlock());
    Inside().WaveOut()->Write(Inside().CurrentAudioBlock());
    Inside().CurrentAudioBlock() = nullptr;
    log.Clear();
    std::size_t freeAtClose = 0;
    waveOut.onClose = [&] { freeAtClose = Inside().FreeAudioBlocks().Count(); };
    Plugin().SetWaveOutDevice(1);
    waveOut.onClose = nullptr;
    EXPECT_EQ(freeAtClose, 10U) << "messages run between the stop and the close";
    EXPECT_EQ(log.calls, (Calls{"reset", "close", "open"}));
    EXPECT_EQ(waveOut.openings.back().deviceId, 1U);
    EXPECT_EQ(Inside().WaveOutName(), "Second");
    EXPECT_EQ(Inside().WaveOutDevice(), 1U);
    EXPECT_EQ(Inside().FreeAudioBlocks().Count(), 10U) << "the old device's block came home";
    EXPECT_TRUE(IsGathering());
    log.Clear();
    Plugin().SetWaveOutDevice(2);
    EXPECT_TRUE(log.calls.empty());
}

TEST_F(PluginSession, SurvivesTheLossOfItsWindow) {
    StartWithWaveInput();
    DestroyWindow(window);
    EXPECT_EQ(Plugin().GetWindowHandle(), nullptr);
    EXPECT_EQ(Inside().Window(), nullptr);
    Notify(2304, 19);
    Notify(3584, 3);
    Notify(3585, 1);
    Notify(3840, 1);
    Notify(2818, 1);
    Notify(256, 1);
    EXPECT_EQ(host.Of(2304).at(0).window, nullptr);
    Plugin().SetProcessingRate(64000, false);
    Plugin().SetAFFreqLow(400);
    Plugin().SetAFFreqHigh(2500);
    Plugin().SetAFLowpass(1);
    Plugin().SetAFDeemphasis(-30);
    Plugin().SetAFFilterLength(64);
    Plugin().SetAFEnabled(1);
    Plugin().SetMuteEncrypted(0);
    Plugin().SetOrvaGain(3);
    Plugin().SetSelectiveSquelchMask(1);
    Plugin().SetSelectiveSquelchValue(1, 2);
    Plugin().SetWaveInDevice(0);
    Plugin().SetWaveOutDevice(0);
    Plugin().RetryCodecStart();
    Inside().ReadReceiverMemory(kHandle);
    EXPECT_EQ(Inside().AfFilterLength(), 64);
    EXPECT_EQ(Inside().AudioFilter().GetFilterType(), dsp::kFilterLowPass);
    EXPECT_EQ(Inside().SquelchBits() & 2U, 2U);
    Close();
    EXPECT_EQ(host.Codes().back(), 16384);
    EXPECT_EQ(host.calls.back().window, window) << "the number that the host knows";
    EXPECT_FALSE(IsRunning());
}

} // namespace orva::plugin
