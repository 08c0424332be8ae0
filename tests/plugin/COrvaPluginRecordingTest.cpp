// Recording: names, the question before a file is written over, both kinds of file, pauses, the end.
#include "tests/plugin/PluginSignals.h"
#include "tests/plugin/RecordingFixture.h"
#include "tests/support/AllocationProbe.h"
#include "toolkit/TmyMsgBox.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace orva::plugin {

namespace {

using Samples = std::vector<std::int16_t>;
using Shown = std::vector<std::string>;
using Values = std::vector<std::uint32_t>;

constexpr std::uint32_t kBlock = 2400;
constexpr std::uint32_t kUser = 1;
constexpr std::uint32_t kSquelched = 2;
constexpr std::uint32_t kNoSignal = 4;

/// Samples that count up from `first`.
Samples Ramp(std::size_t count, std::int16_t first = 0) {
    Samples samples(count);
    std::iota(samples.begin(), samples.end(), first);
    return samples;
}

bool IsSilent(std::span<const std::int16_t> samples) {
    return std::all_of(samples.begin(), samples.end(), [](std::int16_t sample) { return sample == 0; });
}

class PluginRecording : public test::RecordingFixture {
public:
    using PluginFixture::Close; // for callbacks of the platform
};
class PluginRecordingRates : public test::RecordingFixture, public testing::WithParamInterface<int> {
protected:
    static int Rate() { return GetParam(); }
};

} // namespace

// --- selecting ---------------------------------------------------------------------------------------------

TEST_F(PluginRecording, SelectingShowsTheFileAndClosesIt) {
    StartAtRate(48000);
    Plugin().SelectFile(folder.Write("call.if.wav", test::FileBytes({}, Ramp(5))).c_str());
    EXPECT_EQ(panel.Take(), Shown{"file call.if"});
    EXPECT_FALSE(Inside().WaveFile().IsOpen());
    EXPECT_TRUE(IsIdle());
    Plugin().SelectFile(folder.Path("missing.wav").c_str());
    EXPECT_EQ(panel.Take(), Shown{"file -, unsupported"});
    EXPECT_TRUE(host.calls.empty());
}

TEST_F(PluginRecording, SupportsMonoOfSixteenBitsUpTo64000) {
    StartAtRate(48000);
    EXPECT_FALSE(Inside().IsFileSupported()) << "no file is open";
    struct Case {
        test::WaveFormat format;
        std::size_t samples;
        bool isSupported;
    };
    for (const Case& c : {Case{{1, 1, 48000, 16}, 1, true},
                          {{1, 1, 48000, 16}, 0, false},
                          {{1, 1, 64000, 16}, 9, true},
                          {{1, 1, 64001, 16}, 9, false},
                          {{1, 1, 0, 16}, 9, true},
                          {{1, 2, 48000, 16}, 9, false},
                          {{1, 0, 48000, 16}, 9, false},
                          {{1, 1, 48000, 8}, 9, false},
                          {{1, 1, 48000, 24}, 9, false},
                          {{3, 1, 48000, 16}, 9, true}}) { // the format's tag is not looked at
        Plugin().SelectFile(folder.Write("x.wav", test::FileBytes(c.format, Ramp(c.samples))).c_str());
        EXPECT_EQ(panel.Take(), Shown{c.isSupported ? "file x" : "file x, unsupported"})
            << c.format.channels << " channels, " << c.format.rate << " Hz, " << c.format.bits << " bits, "
            << c.samples << " samples";
    }
}

TEST_F(PluginRecording, SelectingWhileRecordingTouchesNothing) {
    StartAtRate(48000);
    const std::string other = folder.Write("other.wav", test::FileBytes({}, Ramp(5)));
    RecordIf();
    panel.Take();
    Plugin().SelectFile(other.c_str());
    EXPECT_EQ(panel.Take(), Shown{"file rec.if"});
    EXPECT_TRUE(Inside().WaveFile().IsOpen());
    EXPECT_TRUE(IsRecording());
}

TEST_F(PluginRecording, SelectingWhilePlayingTouchesNothing) {
    StartAtRate(48000);
    const std::string other = folder.Write("other.wav", test::FileBytes({}, Samples{}));
    Play("x.if.wav", Ramp(9));
    panel.Take();
    Plugin().SelectFile(other.c_str());
    EXPECT_EQ(panel.Take(), Shown{"file x.if"}) << "as supported";
    EXPECT_TRUE(IsPlaying());
}

// --- starting ----------------------------------------------------------------------------------------------

TEST_P(PluginRecordingRates, TheKindDecidesExtensionAndRate) {
    StartAtRate(Rate());
    for (const char* typed : {"call", "call.wav", "call.if", "call.if.wav"}) {
        button = 0;
        RecordIf(typed);
        EXPECT_TRUE(IsRecording());
        EXPECT_FALSE(Inside().FileIsAudio());
        Plugin().StopFile();
        RecordAudio(typed);
        EXPECT_TRUE(Inside().FileIsAudio());
        Plugin().StopFile();
        EXPECT_FALSE(Inside().FileIsAudio());
    }
    EXPECT_EQ(File("call.if.wav").rate, static_cast<std::uint32_t>(Rate()));
    EXPECT_EQ(File("call.wav").rate, 16000U);
}

TEST_F(PluginRecording, AnEmptyNameIsUnnamed) {
    StartAtRate(48000);
    RecordAudio("");
    Plugin().StopFile();
    RecordIf(".if.wav");
    Plugin().StopFile();
    EXPECT_TRUE(Exists("unnamed.wav"));
    EXPECT_TRUE(Exists("unnamed.if.wav"));
}

TEST_F(PluginRecording, TellsThePanelThatItHasBegun) {
    StartAtRate(48000);
    RecordIf();
    EXPECT_EQ(panel.Take(), Shown{"recording"});
    EXPECT_TRUE(host.calls.empty()) << "the host hears of playback only";
}

TEST_F(PluginRecording, AsksBeforeAFileIsWrittenOver) {
    StartAtRate(48000);
    const std::string path = folder.Write("rec.if.wav", "precious");
    const std::string asked =
        "Overwrite existing file?: The file: \n" + path + "\nalready exists.\nDo you want to overwrite it?";
    for (const int otherButton : {1, 2, -1}) {
        button = otherButton;
        RecordIf();
        EXPECT_TRUE(IsIdle()) << "all but the first button is a no";
        EXPECT_EQ(test::ReadWholeFile(path), "precious");
    }
    EXPECT_TRUE(panel.Take().empty());
    button = 0;
    RecordIf();
    EXPECT_TRUE(IsRecording());
    Plugin().StopFile();
    EXPECT_TRUE(File("rec.if.wav").samples.empty());
    EXPECT_EQ(questions, Shown(4, asked));
    RecordAudio();
    EXPECT_EQ(questions.size(), 4U) << "the other kind has another name";
}

TEST_F(PluginRecording, BlocksGoOnUnderTheQuestion) {
    StartAtRate(48000);
    folder.Write("rec.if.wav", "x");
    int walked = 0;
    spectrum.notch = [&](float*, std::uint32_t) { ++walked; };
    onQuestion = [&] {
        waveIn.PostFilled(2 * kBlock);
        Pump();
        EXPECT_EQ(walked, 1);
    };
    button = 0;
    RecordIf();
    EXPECT_EQ(walked, 1);
    EXPECT_TRUE(IsRecording());
    Plugin().StopFile();
    EXPECT_TRUE(File("rec.if.wav").samples.empty()) << "nothing was recorded before the answer";
}

TEST_F(PluginRecording, AnInstanceClosedUnderTheQuestionRecordsNothing) {
    StartAtRate(48000);
    const std::string path = folder.Write("rec.if.wav", "precious");
    onQuestion = [&] { Close(); };
    button = 0;
    RecordIf();
    EXPECT_TRUE(IsDestroyed());
    EXPECT_EQ(test::ReadWholeFile(path), "precious");
}

TEST_F(PluginRecording, TheBoxIsMadeOnceAndGoesWithTheWindow) {
    StartAtRate(48000);
    EXPECT_EQ(Inside().OverwriteBox(), nullptr);
    folder.Write("rec.wav", "x");
    RecordAudio();
    const toolkit::TmyMsgBox* box = Inside().OverwriteBox();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->GetStyleValue(toolkit::StyleValue::WindowColor),
              Inside().Window()->GetStyleValue(toolkit::StyleValue::WindowColor));
    EXPECT_EQ(box->GetStyleValue(toolkit::StyleValue::TextColor),
              Inside().Window()->GetStyleValue(toolkit::StyleValue::TextColor));
    RecordAudio();
    EXPECT_EQ(Inside().OverwriteBox(), box);
    DestroyWindow(window);
    EXPECT_EQ(Inside().OverwriteBox(), nullptr);
    RecordAudio();
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(questions.size(), 2U) << "without a window nobody is asked";
}

TEST_F(PluginRecording, ABoxDestroyedBetweenTwoQuestionsIsMadeAnew) {
    StartAtRate(48000);
    const std::string path = folder.Write("rec.wav", "precious");
    RecordAudio();
    ASSERT_NE(Inside().OverwriteBox(), nullptr);
    DestroyWindow(Inside().OverwriteBox()->Window());
    EXPECT_EQ(Inside().OverwriteBox(), nullptr);
    button = 0;
    RecordAudio();
    EXPECT_TRUE(IsRecording());
    EXPECT_EQ(questions.size(), 2U);
    DestroyWindow(Inside().OverwriteBox()->Window());
    Close();
    EXPECT_TRUE(IsDestroyed());
}

namespace {

/// What a user does to the box, by a timer that runs in the box's own loop.
void (*onBox)(HWND box) = nullptr;

void CALLBACK FindBox(HWND, UINT, UINT_PTR timer, DWORD) {
    const HWND box = FindWindowA(nullptr, "Overwrite existing file?");
    if (box != nullptr && IsWindowVisible(box) != FALSE) {
        KillTimer(nullptr, timer);
        onBox(box);
    }
}

} // namespace

TEST_F(PluginRecording, TheRealBoxIsAnsweredByTheUser) {
    platform.ask = RealPlatform().ask;
    StartAtRate(48000);
    const std::string path = folder.Write("rec.wav", "precious");
    onBox = [](HWND box) { PostMessageA(box, WM_CLOSE, 0, 0); };
    SetTimer(nullptr, 0, 10, &FindBox);
    RecordAudio();
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(test::ReadWholeFile(path), "precious");
    onBox = [](HWND box) { PostMessageA(box, WM_KEYDOWN, VK_RETURN, 1); };
    SetTimer(nullptr, 0, 10, &FindBox);
    RecordAudio();
    EXPECT_TRUE(IsRecording()) << "yes is the default";
}

TEST_F(PluginRecording, ABoxDestroyedUnderTheQuestionIsANo) {
    platform.ask = RealPlatform().ask;
    StartAtRate(48000);
    const std::string path = folder.Write("rec.wav", "precious");
    onBox = [](HWND box) { DestroyWindow(box); };
    SetTimer(nullptr, 0, 10, &FindBox);
    RecordAudio();
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(Inside().OverwriteBox(), nullptr);
    EXPECT_EQ(test::ReadWholeFile(path), "precious");
    EXPECT_NE(IsWindowEnabled(window), FALSE);
}

TEST_F(PluginRecording, TheRealBoxGoesWhenTheHostClosesTheInstance) {
    platform.ask = RealPlatform().ask;
    StartAtRate(48000);
    const std::string path = folder.Write("rec.wav", "precious");
    static PluginRecording* self = nullptr;
    self = this;
    onBox = [](HWND) { self->Close(); };
    SetTimer(nullptr, 0, 10, &FindBox);
    RecordAudio();
    EXPECT_TRUE(IsDestroyed());
    EXPECT_EQ(test::ReadWholeFile(path), "precious");
}

TEST_F(PluginRecording, AFileThatCannotBeCreatedEndsTheStartSilently) {
    StartAtRate(48000);
    panel.choice.folder = folder.Path("missing");
    RecordIf();
    EXPECT_TRUE(IsIdle());
    EXPECT_TRUE(panel.Take().empty());
    EXPECT_TRUE(errors.empty());
    EXPECT_TRUE(questions.empty());
    EXPECT_TRUE(host.calls.empty());
    panel.choice.folder = Folder();
    RecordIf();
    EXPECT_TRUE(IsRecording());
}

TEST_F(PluginRecording, NothingIsRecordedWithoutAPanelOrAWindow) {
    StartAtRate(48000);
    ui::COrvaPluginWindowInspector{*Inside().Window()}.SetPlayRecPanel(nullptr);
    Plugin().StartRecording();
    EXPECT_TRUE(IsIdle());
    Inside().Window().reset();
    Plugin().StartRecording();
    EXPECT_TRUE(IsIdle());
}

// --- intermediate frequency --------------------------------------------------------------------------------

TEST_P(PluginRecordingRates, AnIfFileHoldsTheInputAsItCameIn) {
    StartAtRate(Rate());
    const Samples signal = test::CallSignal(Rate(), test::kAlgorithmClear, 1);
    spectrum.notch = [](float* samples, std::uint32_t count) { std::fill_n(samples, count, 0.0F); };
    Process(std::span(signal).first(3 * kBlock));
    RecordIf();
    Process(std::span(signal).subspan(3 * kBlock, 5 * kBlock));
    EXPECT_EQ(panel.size, 46U + 10 * kBlock);
    EXPECT_EQ(panel.sizesShown, 5);
    EXPECT_EQ(panel.seconds, 5 * kBlock / static_cast<unsigned>(Rate()));
    Plugin().StopFile();
    Process(std::span(signal).subspan(8 * kBlock, kBlock));
    const test::RecordedFile file = File("rec.if.wav");
    EXPECT_EQ(file.rate, static_cast<std::uint32_t>(Rate()));
    EXPECT_EQ(file.samples, Samples(signal.begin() + 3 * kBlock, signal.begin() + 8 * kBlock));
}

TEST_F(PluginRecording, AnIfFileHoldsTheInvertedSpectrum) {
    StartAtRate(64000);
    library.onInvert = [](std::int16_t* block, std::uint32_t count) {
        std::transform(block, block + count, block,
                       [](std::int16_t sample) { return static_cast<std::int16_t>(-sample); });
    };
    RecordIf();
    Samples samples = Ramp(kBlock, 1);
    Plugin().ProcessData(samples.data(), kBlock);
    Plugin().StopFile();
    EXPECT_EQ(File("rec.if.wav").samples.at(99), -100);
}

TEST_F(PluginRecording, SecondsAreThoseOfTheFile) {
    StartAtRate(48000);
    RecordIf();
    const Samples second(48000);
    Process(second);
    EXPECT_EQ(panel.seconds, 1U);
    Process(std::span(second).first(45600));
    EXPECT_EQ(panel.seconds, 1U);
    Process(std::span(second).first(kBlock));
    EXPECT_EQ(panel.seconds, 2U);
}

TEST_F(PluginRecording, NothingIsRecordedWhilePoweredOffOrScanning) {
    StartAtRate(48000);
    RecordIf();
    const Samples samples = Ramp(kBlock);
    Notify(256, 0);
    Process(samples);
    Notify(256, 1);
    Notify(3840, 1);
    Process(samples);
    Notify(3840, 0);
    EXPECT_TRUE(IsRecording());
    Plugin().StopFile();
    EXPECT_TRUE(File("rec.if.wav").samples.empty());
}

// --- audio -------------------------------------------------------------------------------------------------

TEST_P(PluginRecordingRates, AnAudioFileHoldsTheVoiceBeforeTheVolume) {
    StartAtRate(Rate());
    SetMode(DemodulationMode::Digital);
    RecordAudio();
    const Samples signal = test::CallSignal(Rate());
    Process(signal);
    EXPECT_EQ(panel.size, Inside().WaveFile().GetFileSize());
    EXPECT_EQ(panel.seconds, Inside().WaveFile().GetDataSize() / 32000);
    Plugin().StopFile();
    const test::RecordedFile file = File("rec.wav");
    EXPECT_EQ(file.rate, 16000U);
    EXPECT_EQ(file.samples.size(), 1024 * waveOut.played.size());
    EXPECT_FALSE(IsSilent(file.samples));
    EXPECT_EQ(test::AtVolume(file.samples, kVolume), Played());
}

TEST_P(PluginRecordingRates, AnAudioFileHoldsFmAudioBeforeTheVolume) {
    StartAtRate(Rate());
    Plugin().SetAFEnabled(1); // the filter comes before the recording
    SetMode(DemodulationMode::Fm);
    RecordAudio();
    Process(test::FmTone(Rate(), 1.5));
    Plugin().StopFile();
    const Samples recorded = File("rec.wav").samples;
    const Samples played = Played();
    EXPECT_EQ(recorded.size(), static_cast<std::size_t>(1.5 * 16000));
    ASSERT_GE(recorded.size(), played.size());
    EXPECT_LT(recorded.size() - played.size(), 1024U) << "the last block is not full";
    EXPECT_FALSE(IsSilent(played));
    EXPECT_EQ(test::AtVolume(Samples(recorded.begin(), recorded.begin() + static_cast<int>(played.size())),
                             kVolume),
              played);
}

TEST_F(PluginRecording, AnAudioFileHoldsTheSilenceOfTheHoldOff) {
    StartAtRate(48000);
    Inside().AnalogHoldoff() = 0;
    RecordAudio();
    const Samples tone = test::FmTone(48000, 1.5);
    Process(std::span(tone).first(20 * kBlock));
    Plugin().StopFile();
    const Samples held = File("rec.wav").samples;
    EXPECT_EQ(held.size(), 20U * 800U);
    EXPECT_TRUE(IsSilent(held));
}

TEST_F(PluginRecording, AnAudioFileHoldsTheSilenceOfTheSquelch) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Fm);
    const Samples tone = test::FmTone(48000, 0.5);
    RecordAudio();
    Process(std::span(tone).first(4 * kBlock));
    Notify(2818, 1);
    Process(std::span(tone).subspan(4 * kBlock, 4 * kBlock));
    Plugin().StopFile();
    const Samples recorded = File("rec.wav").samples;
    ASSERT_EQ(recorded.size(), 8U * 800U);
    EXPECT_FALSE(IsSilent(std::span(recorded).first(3200)));
    EXPECT_TRUE(IsSilent(std::span(recorded).last(3200)));
}

TEST_F(PluginRecording, AVoiceRecordingHoldsTheSilenceOfTheSquelch) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Digital);
    Plugin().SetSelectiveSquelchMask(2);
    Plugin().SetSelectiveSquelchValue(2, test::kCallTalkGroup + 1);
    RecordAudio();
    Process(test::CallSignal(48000));
    Plugin().StopFile();
    const Samples recorded = File("rec.wav").samples;
    EXPECT_GE(recorded.size(), 15U * 1024U);
    EXPECT_TRUE(IsSilent(recorded));
}

TEST_F(PluginRecording, AnEncryptedCallIsRecordedAsDecoded) {
    constexpr std::uint8_t kAes = 0x84;
    StartAtRate(48000);
    SetMode(DemodulationMode::Digital);
    const Samples signal = test::CallSignal(48000, kAes);
    test::PortableDecoder portable(48000);
    for (std::size_t begin = 0; begin + kBlock <= signal.size(); begin += kBlock) {
        portable.Process(std::span(signal).subspan(begin, kBlock));
    }
    RecordAudio();
    Process(signal);
    Plugin().StopFile();
    EXPECT_EQ(File("rec.wav").samples, portable.voice);
    const Samples played = Played();
    EXPECT_TRUE(IsSilent(std::span(played).last(10 * 1024))) << "and muted at the output";
}

TEST_F(PluginRecording, AVoiceBlockWithoutAnOutputBlockIsStillRecorded) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Digital);
    dsp::CtbSampleBlock* block = nullptr;
    while (Inside().FreeAudioBlocks().Pop(block)) {
    }
    RecordAudio();
    Process(test::CallSignal(48000));
    Plugin().StopFile();
    EXPECT_TRUE(Played().empty());
    EXPECT_GE(File("rec.wav").samples.size(), 15U * 1024U);
}

TEST_F(PluginRecording, WhatTheHostMakesOfOffersIsNotRecorded) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Fm);
    host.onCall = [](const test::FakeHost::Call& call, void* data) {
        if (call.code == 4362) {
            std::memset(static_cast<char*>(data) + 16, 0, 2048);
        }
    };
    RecordAudio();
    Process(test::FmTone(48000, 0.5));
    Plugin().StopFile();
    EXPECT_TRUE(IsSilent(Played()));
    EXPECT_FALSE(IsSilent(File("rec.wav").samples));
}

// --- pause -------------------------------------------------------------------------------------------------

TEST_F(PluginRecording, WritesNothingWhileTheUserPauses) {
    StartAtRate(48000);
    RecordIf();
    const Samples samples = Ramp(4 * kBlock);
    Process(std::span(samples).first(kBlock));
    Plugin().SetPause(true);
    EXPECT_EQ(Inside().PauseFlags(), kUser);
    Process(std::span(samples).subspan(kBlock, kBlock));
    Plugin().SetPause(false);
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    Process(std::span(samples).subspan(2 * kBlock, kBlock));
    Plugin().StopFile();
    Samples expected(samples.begin(), samples.begin() + kBlock);
    expected.insert(expected.end(), samples.begin() + 2 * kBlock, samples.begin() + 3 * kBlock);
    EXPECT_EQ(File("rec.if.wav").samples, expected);
}

TEST_F(PluginRecording, AnAudioRecordingPausesToo) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Fm);
    const Samples tone = test::FmTone(48000, 0.5);
    RecordAudio();
    Plugin().SetPause(true);
    Process(std::span(tone).first(4 * kBlock));
    Plugin().SetPause(false);
    Process(std::span(tone).subspan(4 * kBlock, kBlock));
    Plugin().StopFile();
    EXPECT_EQ(File("rec.wav").samples.size(), 800U);
}

TEST_F(PluginRecording, ReleasingThePauseGathersOutputAnew) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Fm);
    Process(test::FmTone(48000, 0.5));
    ASSERT_FALSE(IsGathering());
    Plugin().SetPause(true);
    EXPECT_FALSE(IsGathering());
    Plugin().SetPause(false);
    EXPECT_TRUE(IsGathering());
}

TEST_F(PluginRecording, SquelchPausesWhenAsked) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Fm);
    RecordIf();
    panel.Take();
    Notify(2818, 1);
    EXPECT_EQ(Inside().PauseFlags(), 0U) << "it was not asked for";
    Plugin().SetPauseUnderSquelch(1);
    EXPECT_EQ(Inside().PauseFlags(), kSquelched) << "at once";
    EXPECT_EQ(panel.Take(), Shown{"paused"});
    Notify(2818, 0);
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    EXPECT_EQ(panel.Take(), Shown{"resumed"});
    Notify(2818, 1);
    EXPECT_EQ(panel.Take(), Shown{"paused"});
    Plugin().SetPauseUnderSquelch(0);
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    EXPECT_EQ(panel.Take(), Shown{"resumed"});
}

TEST_F(PluginRecording, TheSelectiveSquelchPausesWithEachBlock) {
    StartAtRate(48000);
    Plugin().SetPauseUnderSquelch(1);
    Plugin().SetSelectiveSquelchMask(1);
    RecordIf();
    EXPECT_EQ(Inside().PauseFlags(), kSquelched) << "the access code is not the one chosen from the start";
    EXPECT_EQ(panel.Take(), (Shown{"recording", "paused"}));
    Process(Samples(kBlock));
    EXPECT_EQ(panel.Take(), Shown{"paused"});
    Plugin().SetSelectiveSquelchMask(0);
    EXPECT_EQ(panel.Take(), Shown{"resumed"});
    Process(Samples(kBlock));
    EXPECT_EQ(panel.Take(), Shown{"resumed"}) << "said again with every block";
    Plugin().StopFile();
    EXPECT_EQ(File("rec.if.wav").samples.size(), kBlock);
}

TEST_F(PluginRecording, TheUsersPauseOutlivesTheSquelchs) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Fm);
    Plugin().SetPauseUnderSquelch(1);
    RecordIf();
    Plugin().SetPause(true);
    Notify(2818, 1);
    EXPECT_EQ(Inside().PauseFlags(), kUser | kSquelched);
    panel.Take();
    Notify(2818, 0);
    EXPECT_EQ(Inside().PauseFlags(), kUser);
    Plugin().SetPauseUnderSquelch(0);
    EXPECT_TRUE(panel.Take().empty()) << "the button stays down";
}

TEST_F(PluginRecording, ReleasingThePauseClearsAllReasonsAndTheSquelchReturns) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Fm);
    Plugin().SetPauseUnderSquelch(1);
    RecordIf();
    Notify(2818, 1);
    Inside().PauseFlags() |= kUser | kNoSignal;
    Plugin().SetPause(false);
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    panel.Take();
    Process(Samples(kBlock));
    EXPECT_EQ(Inside().PauseFlags(), kSquelched);
    EXPECT_EQ(panel.Take(), Shown{"paused"});
}

TEST_F(PluginRecording, SquelchPausesRecordingsOnly) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Fm);
    Plugin().SetPauseUnderSquelch(1);
    Notify(2818, 1);
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    Play("x.if.wav", Samples(9 * kBlock));
    Plugin().SetPauseUnderSquelch(1);
    EXPECT_EQ(Inside().PauseFlags(), 0U) << "nor does the rule itself";
    Process(Samples(kBlock));
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    EXPECT_EQ(std::count(panel.shown.begin(), panel.shown.end(), "paused"), 0);
}

TEST_F(PluginRecording, PausesFromTheStartWithoutSignal) {
    StartAtRate(48000);
    Plugin().SetPauseNoOrva(1);
    RecordIf("presumed");
    EXPECT_EQ(Inside().PauseFlags(), 0U) << "signal is presumed until a block without has come";
    EXPECT_EQ(Inside().OrvaSignalLatch(), 100);
    Process(test::Noise(48000, 0.06));
    EXPECT_EQ(Inside().PauseFlags(), kNoSignal);
    EXPECT_EQ(Inside().OrvaSignalLatch(), 0);
    Plugin().StopFile();
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    EXPECT_EQ(File("presumed.if.wav").samples.size(), kBlock) << "the block that showed it is in the file";
    panel.Take();
    RecordIf("known");
    EXPECT_EQ(Inside().PauseFlags(), kNoSignal);
    EXPECT_EQ(panel.Take(), (Shown{"recording", "paused"}));
}

TEST_F(PluginRecording, FmHasNoSignalToWaitFor) {
    StartAtRate(48000);
    Plugin().SetPauseNoOrva(1);
    Process(test::Noise(48000, 0.06));
    ASSERT_EQ(Inside().OrvaSignalLatch(), 0);
    SetMode(DemodulationMode::Fm);
    RecordIf();
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    Process(test::Noise(48000, 0.11));
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    Inside().OrvaSignalLatch() = 100;
    Process(test::Noise(48000, 0.06));
    EXPECT_EQ(Inside().OrvaSignalLatch(), 100) << "in FM it is left alone";
}

TEST_F(PluginRecording, TheChangeToFmEndsTheWaitForSignal) {
    StartAtRate(48000);
    Plugin().SetPauseNoOrva(1);
    RecordIf();
    Process(test::Noise(48000, 0.06));
    ASSERT_EQ(Inside().PauseFlags(), kNoSignal);
    panel.Take();
    SetMode(DemodulationMode::Fm);
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    EXPECT_EQ(panel.Take(), Shown{"resumed"});
    EXPECT_EQ(Inside().OrvaSignalLatch(), 0);
    for (const DemodulationMode mode : {DemodulationMode::Digital, DemodulationMode::Auto}) {
        Inside().OrvaSignalLatch() = 0;
        SetMode(mode);
        EXPECT_EQ(Inside().OrvaSignalLatch(), 100) << "signal is presumed again";
    }
}

TEST_F(PluginRecording, TheChangeToFmLeavesOtherReasons) {
    StartAtRate(48000);
    Plugin().SetPauseNoOrva(1);
    RecordIf();
    Inside().PauseFlags() = kUser | kNoSignal;
    panel.Take();
    SetMode(DemodulationMode::Fm);
    EXPECT_EQ(Inside().PauseFlags(), kUser);
    EXPECT_TRUE(panel.Take().empty());
    // Without the rule, or without a recording, the flag is not this change's.
    Plugin().SetPauseNoOrva(0);
    SetMode(DemodulationMode::Auto);
    Inside().PauseFlags() = kNoSignal;
    SetMode(DemodulationMode::Fm);
    EXPECT_EQ(Inside().PauseFlags(), kNoSignal);
}

TEST_F(PluginRecording, EndingTheRuleResumes) {
    StartAtRate(48000);
    Plugin().SetPauseNoOrva(1);
    RecordIf();
    Process(test::Noise(48000, 0.06));
    ASSERT_EQ(Inside().PauseFlags(), kNoSignal);
    Inside().PauseFlags() |= kUser;
    panel.Take();
    Plugin().SetPauseNoOrva(0);
    EXPECT_EQ(Inside().PauseFlags(), kUser);
    EXPECT_TRUE(panel.Take().empty());
    Inside().PauseFlags() = kNoSignal;
    Plugin().SetPauseNoOrva(0);
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    EXPECT_EQ(panel.Take(), Shown{"resumed"});
}

namespace {

/// Which blocks hold signal, by the stages alone.
std::vector<bool> BlocksWithSignal(const Samples& signal, int rate) {
    test::PortableDecoder portable(rate);
    std::vector<bool> with;
    for (std::size_t begin = 0; begin + kBlock <= signal.size(); begin += kBlock) {
        const std::size_t voice = portable.voice.size();
        portable.Process(std::span(signal).subspan(begin, kBlock));
        with.push_back(portable.decoder.GetTransmission() != 0 || portable.voice.size() != voice);
    }
    return with;
}

} // namespace

TEST_P(PluginRecordingRates, ARecordingWaitsForSignalAndLosesNoneOfIt) {
    StartAtRate(Rate());
    Plugin().SetPauseNoOrva(1);
    Samples signal = test::CallSignal(Rate(), test::kAlgorithmClear, 2);
    const Samples again = signal;
    signal.insert(signal.end(), again.begin(), again.end());
    const std::vector<bool> with = BlocksWithSignal(signal, Rate());
    ASSERT_FALSE(with.front());
    ASSERT_GE(std::count(with.begin(), with.end(), true), 10);
    RecordIf();
    Process(signal);
    Plugin().StopFile();
    // Every block with signal, and the first without after each: that it has none is known only then.
    Samples expected;
    bool wasWith = true;
    for (std::size_t i = 0; i < with.size(); ++i) {
        if (with[i] || wasWith) {
            const auto block = signal.begin() + static_cast<std::ptrdiff_t>(i * kBlock);
            expected.insert(expected.end(), block, block + kBlock);
        }
        wasWith = with[i];
    }
    ASSERT_LT(expected.size(), signal.size() - 10 * kBlock);
    EXPECT_EQ(File("rec.if.wav").samples, expected);
}

TEST_P(PluginRecordingRates, TheSquelchIsEvaluatedBeforeTheSignalIsLookedAt) {
    StartAtRate(Rate());
    Plugin().SetSelectiveSquelchValue(1, test::kCallNac);
    Plugin().SetSelectiveSquelchMask(1);
    Plugin().SetPauseUnderSquelch(1);
    Plugin().SetPauseNoOrva(1);
    RecordIf();
    const Samples signal = test::CallSignal(Rate(), test::kAlgorithmClear, 1);
    Process(std::span(signal).first(kBlock));
    ASSERT_EQ(Inside().PauseFlags(), kSquelched | kNoSignal);
    // Both reasons go with the block that has the code and the signal: it is in the file.
    std::size_t begin = 0;
    while (Inside().PauseFlags() != 0 && begin + 2 * kBlock <= signal.size()) {
        begin += kBlock;
        Process(std::span(signal).subspan(begin, kBlock));
    }
    ASSERT_EQ(Inside().PauseFlags(), 0U);
    Plugin().StopFile();
    const auto first = signal.begin() + static_cast<std::ptrdiff_t>(begin);
    EXPECT_EQ(File("rec.if.wav").samples, Samples(first, first + kBlock));
}

TEST_F(PluginRecording, ABlockThatOnlyResumesIsWrittenOnce) {
    StartAtRate(48000);
    Plugin().SetPauseNoOrva(1);
    RecordIf();
    Inside().OrvaSignalLatch() = 0;
    const Samples block = Ramp(kBlock);
    // Signal returns with no pause for it: the block was written at its place.
    Inside().PauseBySignal(1, 0, block);
    EXPECT_EQ(Inside().OrvaSignalLatch(), 1);
    EXPECT_EQ(Inside().WaveFile().GetDataSize(), 0U);
    // With the pause it was skipped there.
    Inside().OrvaSignalLatch() = 0;
    Inside().PauseFlags() = kNoSignal;
    panel.Take();
    panel.sizesShown = 0;
    Inside().PauseBySignal(4, 1, block);
    EXPECT_EQ(Inside().OrvaSignalLatch(), 4);
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    EXPECT_EQ(Inside().WaveFile().GetDataSize(), 2 * kBlock);
    EXPECT_EQ(panel.Take(), Shown{"resumed"});
    EXPECT_EQ(panel.sizesShown, 1);
    // While the signal lasts nothing is done.
    Inside().PauseFlags() = kNoSignal;
    Inside().PauseBySignal(4, 1, block);
    EXPECT_EQ(Inside().PauseFlags(), kNoSignal);
}

TEST_F(PluginRecording, SignalDoesNotEndTheUsersPause) {
    StartAtRate(48000);
    Plugin().SetPauseNoOrva(1);
    RecordIf();
    Inside().OrvaSignalLatch() = 0;
    Inside().PauseFlags() = kUser | kNoSignal;
    panel.Take();
    Inside().PauseBySignal(4, 0, Ramp(kBlock));
    EXPECT_EQ(Inside().PauseFlags(), kUser);
    EXPECT_TRUE(panel.Take().empty());
    EXPECT_EQ(Inside().WaveFile().GetDataSize(), 0U);
}

TEST_F(PluginRecording, AnAudioRecordingIsNotGivenTheInput) {
    StartAtRate(48000);
    Plugin().SetPauseNoOrva(1);
    RecordAudio();
    Inside().OrvaSignalLatch() = 0;
    Inside().PauseFlags() = kNoSignal;
    Inside().PauseBySignal(4, 0, Ramp(kBlock));
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    EXPECT_EQ(Inside().WaveFile().GetDataSize(), 0U);
}

TEST_F(PluginRecording, AFailedWriteWhenSignalReturnsEndsTheRecording) {
    StartAtRate(48000);
    Plugin().SetPauseNoOrva(1);
    Inside().WaveFile().SetMaxFileSize(46 + 2 * kBlock);
    RecordIf();
    const Samples block = Ramp(kBlock);
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(IsRecording());
        Inside().OrvaSignalLatch() = 0;
        Inside().PauseFlags() = kNoSignal;
        Inside().PauseBySignal(4, 1, block);
    }
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(panel.Take(), (Shown{"recording", "resumed", "resumed", "file rec.if", "stopped"}));
    EXPECT_EQ(StreamValues(), Values{0});
    EXPECT_EQ(File("rec.if.wav").samples, block);
}

TEST_F(PluginRecording, VoiceWithoutATransmissionLeavesTheLatch) {
    StartAtRate(48000);
    Plugin().SetPauseNoOrva(1);
    RecordIf();
    const Samples block = Ramp(kBlock);
    Inside().OrvaSignalLatch() = 0;
    Inside().PauseFlags() = kNoSignal;
    Inside().PauseBySignal(0, 1, block);
    EXPECT_EQ(Inside().OrvaSignalLatch(), 0);
    EXPECT_EQ(Inside().WaveFile().GetDataSize(), 2 * kBlock);
    // The rule runs again, but has nothing to release: this block was written at its place.
    Inside().PauseBySignal(0, 1, block);
    EXPECT_EQ(Inside().WaveFile().GetDataSize(), 2 * kBlock);
    // A failure of the decoder counts as signal too.
    Inside().PauseFlags() = kNoSignal;
    Inside().PauseBySignal(0, -1, block);
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    EXPECT_EQ(Inside().WaveFile().GetDataSize(), 4 * kBlock);
}

// --- the end -----------------------------------------------------------------------------------------------

TEST_F(PluginRecording, StoppingShowsTheNewFileAndClosesIt) {
    StartAtRate(48000);
    Inside().SavedStreamValue() = 55;
    RecordIf();
    Process(Ramp(kBlock));
    Plugin().SetPause(true);
    panel.Take();
    Plugin().StopFile();
    EXPECT_EQ(panel.Take(), (Shown{"file rec.if", "stopped"}));
    EXPECT_EQ(panel.position, 0U);
    EXPECT_EQ(panel.seconds, 0U);
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(Inside().PauseFlags(), 0U);
    EXPECT_FALSE(Inside().WaveFile().IsOpen());
    EXPECT_EQ(spectrum.playbackModes, std::vector<std::int32_t>{0});
    EXPECT_EQ(spectrum.audioModes, std::vector<bool>{false});
    EXPECT_TRUE(spectrum.rates.empty());
    EXPECT_EQ(StreamValues(), Values{55}) << "with whatever a playback has saved";
    EXPECT_EQ(log.Count("open"), 0) << "the output goes on";
}

TEST_F(PluginRecording, StoppingAnAudioRecordingGivesTheSpectrumItsRate) {
    StartAtRate(48000);
    RecordAudio();
    Plugin().StopFile();
    EXPECT_EQ(spectrum.rates, Values{48000});
    EXPECT_EQ(StreamValues(), Values{0});
    EXPECT_EQ(log.Count("open"), 0);
}

TEST_F(PluginRecording, StoppingShowsTheSquelchAndStartsTheWaveInput) {
    StartAtRate(48000);
    Notify(2818, 1);
    RecordIf();
    spectrum.squelchedShown.clear();
    Inside().WaveIn()->Stop();
    log.Clear();
    Plugin().StopFile();
    EXPECT_EQ(spectrum.squelchedShown, std::vector<bool>{true});
    EXPECT_EQ(log.Count("start"), 1);
}

TEST_F(PluginRecording, WithTheReceiversStreamTheWaveInputIsLeftAlone) {
    StartAtRate(64000);
    RecordIf();
    log.Clear();
    Plugin().StopFile();
    EXPECT_TRUE(log.calls.empty());
}

TEST_P(PluginRecordingRates, TheLimitOfAFileEndsTheRecording) {
    StartAtRate(Rate());
    Inside().WaveFile().SetMaxFileSize(46 + 4 * kBlock);
    RecordIf();
    const Samples samples = Ramp(5 * kBlock);
    Process(std::span(samples).first(2 * kBlock));
    EXPECT_TRUE(IsRecording()) << "the limit is tested before a write";
    host.Clear();
    Process(std::span(samples).subspan(2 * kBlock, kBlock));
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(panel.Take(), (Shown{"recording", "file rec.if", "stopped"}));
    EXPECT_EQ(panel.size, 0xFFFFFFFFU) << "no size is known any more";
    EXPECT_EQ(StreamValues(), Values{0});
    Process(std::span(samples).subspan(3 * kBlock, kBlock));
    EXPECT_EQ(File("rec.if.wav").samples, Samples(samples.begin(), samples.begin() + 2 * kBlock));
    EXPECT_TRUE(errors.empty());
}

TEST_F(PluginRecording, TheLimitEndsAnAudioRecordingInTheMiddleOfABlock) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Digital);
    Inside().WaveFile().SetMaxFileSize(46 + 3 * 2048);
    RecordAudio();
    Process(test::CallSignal(48000));
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(File("rec.wav").samples.size(), 3U * 1024U);
    EXPECT_GE(Played().size(), 15U * 1024U) << "what is heard goes on";
}

TEST_F(PluginRecording, TheLimitEndsARecordingOfFmAudioAndTheAudioGoesOn) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Fm);
    Inside().WaveFile().SetMaxFileSize(46 + 3 * 1600);
    RecordAudio();
    Process(test::FmTone(48000, 1.0));
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(panel.Take(), (Shown{"recording", "file rec", "stopped"}));
    const Samples recorded = File("rec.wav").samples;
    EXPECT_EQ(recorded.size(), 3U * 800U) << "800 samples a block";
    const Samples played = Played();
    EXPECT_EQ(played.size(), 16000U / 1024U * 1024U);
    EXPECT_FALSE(IsSilent(std::span(played).last(1024)));
}

namespace {

/// A disk with room for so many bytes.
std::int64_t roomLeft = 0;

std::int64_t WriteWhileThereIsRoom(audio::FileHandle file, const void* bytes, std::size_t count) {
    const auto fitting = static_cast<std::size_t>(std::min<std::int64_t>(roomLeft, count));
    const std::int64_t written = audio::SystemFiles().write(file, bytes, fitting);
    roomLeft -= std::max<std::int64_t>(written, 0);
    return written;
}

} // namespace

TEST_F(PluginRecording, AFullDiskEndsTheRecordingAndKeepsWhatWasWritten) {
    audio::FilePlatform files = audio::SystemFiles();
    files.write = &WriteWhileThereIsRoom;
    platform.files = &files;
    constexpr std::int64_t kRoom = 200000;
    roomLeft = kRoom;
    StartAtRate(48000);
    RecordIf();
    const Samples samples = Ramp(60 * kBlock);
    Process(samples);
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(panel.Take(), (Shown{"recording", "file rec.if", "stopped"}));
    const std::string bytes = test::ReadWholeFile(folder.Path("rec.if.wav"));
    ASSERT_GT(bytes.size(), 46U + 2 * 65536U);
    ASSERT_LE(bytes.size(), static_cast<std::size_t>(kRoom));
    Samples kept((bytes.size() - 46) / 2);
    std::memcpy(kept.data(), bytes.data() + 46, 2 * kept.size());
    EXPECT_TRUE(std::equal(kept.begin(), kept.end(), samples.begin()));
    Close();
    platform.files = &audio::SystemFiles();
}

namespace {

bool isFolderThere = true;

bool IsInPlaceWhileTheFolderIsThere(audio::FileHandle file, const char* path) {
    return isFolderThere && audio::SystemFiles().isInPlace(file, path);
}

} // namespace

TEST_F(PluginRecording, AFolderTakenAwayEndsTheRecording) {
    audio::FilePlatform files = audio::SystemFiles();
    files.isInPlace = &IsInPlaceWhileTheFolderIsThere;
    platform.files = &files;
    isFolderThere = true;
    StartAtRate(48000);
    RecordIf();
    const Samples samples = Ramp(60 * kBlock);
    Process(std::span(samples).first(30 * kBlock));
    EXPECT_TRUE(IsRecording());
    isFolderThere = false;
    Process(std::span(samples).subspan(30 * kBlock));
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(panel.Take(), (Shown{"recording", "file rec.if", "stopped"}));
    EXPECT_EQ(StreamValues(), Values{0});
    Close();
    platform.files = &audio::SystemFiles();
}

TEST_F(PluginRecording, ClosingTheInstanceCompletesTheFile) {
    StartAtRate(48000);
    RecordIf();
    const Samples samples = Ramp(3 * kBlock);
    Process(samples);
    Close();
    EXPECT_TRUE(IsDestroyed());
    EXPECT_EQ(File("rec.if.wav").samples, samples);
}

TEST_F(PluginRecording, AStopFromInsideACallToTheHostIsBorne) {
    StartAtRate(48000);
    SetMode(DemodulationMode::Fm);
    RecordAudio();
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 4362 && IsRecording()) {
            Plugin().StopFile();
        }
    };
    Process(test::FmTone(48000, 0.5));
    EXPECT_TRUE(IsIdle());
    EXPECT_FALSE(File("rec.wav").samples.empty());
}

TEST_F(PluginRecording, WorksWithoutAWindowOnceItRuns) {
    StartAtRate(48000);
    Plugin().SetPauseUnderSquelch(1);
    Plugin().SetPauseNoOrva(1);
    RecordIf();
    Inside().Window().reset();
    const Samples samples = Ramp(2 * kBlock);
    Process(std::span(samples).first(kBlock));
    EXPECT_EQ(Inside().PauseFlags(), kNoSignal);
    Plugin().SetPause(false);
    Process(std::span(samples).subspan(kBlock, kBlock));
    Plugin().SetPauseUnderSquelch(0);
    Plugin().SetPauseNoOrva(0);
    Plugin().SelectFile("nothing.wav");
    Plugin().StopFile();
    EXPECT_TRUE(IsIdle());
    EXPECT_EQ(File("rec.if.wav").samples, samples);
}

TEST_P(PluginRecordingRates, AWarmRecordingAllocatesNothing) {
    StartAtRate(Rate());
    Plugin().SetPauseUnderSquelch(1);
    const Samples call = test::CallSignal(Rate(), test::kAlgorithmClear, 2);
    const Samples tone = test::FmTone(Rate(), 1.5);
    host.keeps = false;
    library.keepsReads = false;
    waveOut.keepsPlayed = false;
    spectrum.keeps = false;
    panel.keeps = false;
    std::uint64_t reports = 0; // each is a block of memory given away
    host.onCall = [&](const test::FakeHost::Call& sent, void*) { reports += sent.code == 4365 ? 1 : 0; };
    for (const bool isIf : {true, false}) {
        Record("warm", isIf);
        for (int i = 0; i < 2; ++i) {
            Process(call);
            Process(tone);
        }
        const std::uint64_t before = test::CountAllocations() - reports;
        Process(call);
        Process(tone);
        EXPECT_EQ(test::CountAllocations() - reports - before, 0U) << isIf;
        Plugin().StopFile();
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, PluginRecordingRates, testing::Values(48000, 64000));

} // namespace orva::plugin
