/// Views of the top window for tests.
#pragma once

#include "audio/CtbWaveFile.h"
#include "ui/COrvaPluginWindow.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace orva::ui {

/// Puts views into a window.
struct COrvaPluginWindowInspector {
    COrvaPluginWindow& window;

    void SetViews(ISpectrumView* spectrum, ISetupView* setup) const {
        window.spectrum = spectrum;
        window.setupDialog = setup;
    }
    void SetPlayRecPanel(IPlayRecView* panel) const { window.playRecPanel = panel; }
    [[nodiscard]] std::int32_t FileMode() const { return window.fileMode; }
    [[nodiscard]] std::int32_t DemodulationMode() const { return window.demodulationModeShown; }
    [[nodiscard]] std::uint32_t SelectiveMask() const { return window.selectiveMaskShown; }
};

} // namespace orva::ui

namespace orva::test {

/// Notes what it is told; does with samples what the test says.
class FakeSpectrum : public ui::ISpectrumView {
public:
    void ProcessSamples(float* samples, std::uint32_t count, std::uint32_t flags) override {
        if (keeps) {
            allFlags.push_back(flags);
            counts.push_back(count);
        }
        if (notch) {
            notch(samples, count);
        }
    }
    void SetSampleRate(std::uint32_t rate) override { rates.push_back(rate); }
    void SetShape(const std::int8_t* values, std::uint32_t count) override {
        shapes.emplace_back(values, values + count);
    }
    void SetSquelched(bool squelched) override {
        if (keeps) {
            squelchedShown.push_back(squelched);
        }
    }
    void SetEnabled(bool enabled) override { enabledShown.push_back(enabled); }
    void SetPlaybackMode(std::int32_t mode) override { playbackModes.push_back(mode); }
    void SetAudioMode(bool isAudio) override { audioModes.push_back(isAudio); }

    std::function<void(float* samples, std::uint32_t count)> notch;
    bool keeps = true; ///< off for tests that count allocations
    std::vector<std::uint32_t> allFlags;
    std::vector<std::uint32_t> counts;
    std::vector<std::uint32_t> rates;
    std::vector<std::vector<std::int8_t>> shapes;
    std::vector<bool> squelchedShown;
    std::vector<bool> enabledShown;
    std::vector<std::int32_t> playbackModes;
    std::vector<bool> audioModes;
};

/// A play and record panel: notes what it is told, and answers as the test says.
class FakePlayRec : public ui::IPlayRecView {
public:
    void SetFile(const audio::CtbWaveFile* file, bool supported) override {
        const bool isOpen = file != nullptr && file->IsOpen();
        Add(std::string("file ") + (isOpen ? file->GetFileName().Text() : "-") +
            (supported ? "" : ", unsupported"));
    }
    void SetPlaying() override { Add("playing"); }
    void SetRecording() override { Add("recording"); }
    void SetStopped() override { Add("stopped"); }
    void SetPaused(bool paused) override { Add(paused ? "paused" : "resumed"); }
    void SetPosition(std::uint32_t newSeconds) override { seconds = newSeconds; }
    void SetSliderPosition(std::uint32_t bytes) override {
        position = bytes;
        ++positionsShown;
    }
    void SetSize(std::uint32_t bytes) override {
        size = bytes;
        ++sizesShown;
    }
    [[nodiscard]] ui::RecordingChoice GetRecordingChoice() const override { return choice; }
    void SelectNext() override { Add("next"); }

    /// What was said since the last time, other than numbers.
    std::vector<std::string> Take() { return std::exchange(shown, {}); }

    ui::RecordingChoice choice;
    bool keeps = true; ///< off for tests that count allocations
    std::vector<std::string> shown;
    std::uint32_t seconds = 0;
    std::uint32_t position = 0;
    std::uint32_t size = 0;
    int positionsShown = 0;
    int sizesShown = 0;

private:
    void Add(const std::string& what) {
        if (keeps) {
            shown.push_back(what);
        }
    }
};

/// Notes what it is told.
class FakeSetup : public ui::ISetupView {
public:
    void ListDevices() override { shown.emplace_back("devices"); }
    void ShowReceiverInput() override { shown.emplace_back("receiver"); }
    void ShowWaveInDevice(std::uint32_t id) override { Add("input", static_cast<int>(id)); }
    void ShowMuteEncrypted(bool mute) override { Add("mute encrypted", mute ? 1 : 0); }
    void ShowOrvaGain(std::int32_t decibels) override { Add("gain", decibels); }
    void ShowAudioFilterEnabled(bool enabled) override { Add("filter on", enabled ? 1 : 0); }
    void ShowAudioFilter(dsp::TFIR_F32& /*filter*/) override { shown.emplace_back("filter"); }

    std::vector<std::string> shown;

private:
    void Add(const std::string& what, int value) { shown.push_back(what + ' ' + std::to_string(value)); }
};

} // namespace orva::test
