// What an instance shows, and what it takes from the spectrum's notch.
#include "tests/plugin/PluginFixture.h"
#include "tests/plugin/WindowViews.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace orva::plugin {

namespace {

using Shown = std::vector<std::string>;

class PluginViews : public test::PluginFixture {
protected:
    void ShowViews() { ui::COrvaPluginWindowInspector{*Inside().Window()}.SetViews(&spectrum, &setup); }
    void SetTable(const std::array<std::uint8_t, 11>& table, std::uint16_t sum) {
        std::copy(table.begin(), table.end(), library.memory.begin() + 216);
        std::memcpy(library.memory.data() + 227, &sum, sizeof sum);
    }

    test::FakeSpectrum spectrum;
    test::FakeSetup setup;
};

} // namespace

TEST_F(PluginViews, TheNotchWorksInPlaceOnWhatAllStagesSee) {
    StartWithWaveInput();
    ShowViews();
    spectrum.notch = [](float* samples, std::uint32_t count) { std::fill_n(samples, count, 0.25F); };
    const std::vector<std::int16_t> samples(100, 16384);
    Plugin().ProcessData(samples.data(), 100);
    EXPECT_EQ(spectrum.counts, std::vector<std::uint32_t>{100});
    EXPECT_EQ(Inside().FloatSamples()[0], 0.25F);
    EXPECT_EQ(Inside().FloatSamples()[99], 0.25F);
}

TEST_F(PluginViews, TheSpectrumIsMirroredAboveTheCrossoverOnly) {
    StartWithWaveInput();
    ShowViews();
    Inside().SpectrumCrossover() = 100000000;
    const std::vector<std::int16_t> samples(100);
    for (const std::uint32_t frequency : {99999999U, 100000000U, 100000001U}) {
        Notify(2048, frequency);
        Plugin().ProcessData(samples.data(), 100);
    }
    EXPECT_EQ(spectrum.allFlags, (std::vector<std::uint32_t>{2, 2, 6}));
}

TEST_F(PluginViews, TheScannerShowsNoSpectrum) {
    StartWithWaveInput();
    ShowViews();
    Notify(3840, 1);
    const std::vector<std::int16_t> samples(100);
    EXPECT_TRUE(Plugin().ProcessData(samples.data(), 100));
    EXPECT_TRUE(spectrum.counts.empty());
    EXPECT_EQ(spectrum.enabledShown, std::vector<bool>{false});
}

TEST_F(PluginViews, TheShapeIsTakenWithTheRightSumAlone) {
    StartWithReceiver();
    ShowViews();
    // Within 113 to 143 the sum is that of the bytes.
    const std::array<std::uint8_t, 11> inside{113, 143, 128, 128, 128, 128, 128, 128, 128, 128, 130};
    SetTable(inside, 1410);
    Inside().ReadReceiverMemory(kHandle);
    ASSERT_EQ(spectrum.shapes.size(), 1U);
    EXPECT_EQ(spectrum.shapes[0], (std::vector<std::int8_t>{-15, 15, 0, 0, 0, 0, 0, 0, 0, 0, 2}));
    SetTable(inside, 1411);
    Inside().ReadReceiverMemory(kHandle);
    EXPECT_EQ(spectrum.shapes.size(), 1U);
}

TEST_F(PluginViews, BytesAreLimitedForTheSumOnly) {
    StartWithReceiver();
    ShowViews();
    const std::array<std::uint8_t, 11> outside{0, 255, 112, 144, 128, 128, 128, 128, 128, 128, 128};
    SetTable(outside, 113 + 143 + 113 + 143 + 7 * 128);
    Inside().ReadReceiverMemory(kHandle);
    ASSERT_EQ(spectrum.shapes.size(), 1U);
    EXPECT_EQ(spectrum.shapes[0], (std::vector<std::int8_t>{-128, 127, -16, 16, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(PluginViews, TheSpectrumFollowsTheRate) {
    StartWithWaveInput();
    ShowViews();
    Plugin().SetProcessingRate(48000, false);
    Plugin().SetProcessingRate(64000, false);
    EXPECT_EQ(spectrum.rates, std::vector<std::uint32_t>{64000});
    EXPECT_EQ(setup.shown, Shown{"filter"});
}

TEST_F(PluginViews, PowerAndScannerEnableTheSpectrumToo) {
    StartWithWaveInput();
    ShowViews();
    Notify(256, 0);
    Notify(256, 1);
    Notify(3840, 1);
    Notify(3840, 0);
    EXPECT_EQ(spectrum.enabledShown, (std::vector<bool>{false, true, false, true}));
}

TEST_F(PluginViews, SquelchIsShownAtEveryEvaluation) {
    StartWithWaveInput();
    ShowViews();
    Notify(2818, 1);
    Notify(2818, 0);
    EXPECT_EQ(spectrum.squelchedShown, (std::vector<bool>{true, false}));
}

TEST_F(PluginViews, TheSelectionIsShownWhenItChanges) {
    StartWithWaveInput();
    const auto shown = [&] { return ui::COrvaPluginWindowInspector{*Inside().Window()}.SelectiveMask(); };
    EXPECT_EQ(shown(), 0U);
    Plugin().SetSelectiveSquelchMask(2);
    EXPECT_EQ(shown(), 2U);
    Plugin().SetSelectiveSquelchMask(0);
    EXPECT_EQ(shown(), 0U);
}

TEST_F(PluginViews, OnlyChangesAreShown) {
    StartWithWaveInput();
    ShowViews();
    Plugin().SetMuteEncrypted(1);
    Plugin().SetOrvaGain(0);
    Plugin().SetAFEnabled(0);
    Plugin().SetAFFreqLow(0);
    Plugin().SetAFFreqHigh(4000);
    Plugin().SetAFLowpass(0);
    Plugin().SetAFDeemphasis(0);
    Plugin().SetAFFilterLength(512);
    EXPECT_EQ(setup.shown, Shown{});
    Plugin().SetMuteEncrypted(0);
    Plugin().SetMuteEncrypted(7);
    Plugin().SetOrvaGain(500);
    Plugin().SetAFEnabled(1);
    EXPECT_EQ(setup.shown, (Shown{"mute encrypted 0", "mute encrypted 1", "gain 100", "filter on 1"}));
}

TEST_F(PluginViews, TheAudioFilterIsShownOnceOrTwice) {
    StartWithWaveInput();
    ShowViews();
    Plugin().SetAFFreqLow(300);
    EXPECT_EQ(setup.shown.size(), 2U) << "by the rebuild, and again";
    Plugin().SetAFFreqHigh(3000);
    EXPECT_EQ(setup.shown.size(), 4U);
    Plugin().SetAFLowpass(1);
    Plugin().SetAFDeemphasis(-60);
    Plugin().SetAFFilterLength(256);
    EXPECT_EQ(setup.shown, Shown(7, "filter"));
}

TEST_F(PluginViews, ANewInputDeviceIsShown) {
    waveIn.deviceNames = {"First", "Second"};
    StartWithWaveInput();
    ShowViews();
    Plugin().SetWaveInDevice(1);
    Plugin().SetWaveInDevice(1);
    EXPECT_EQ(setup.shown, Shown{"input 1"});
}

} // namespace orva::plugin
