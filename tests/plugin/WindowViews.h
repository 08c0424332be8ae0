/// Views of the top window for tests.
#pragma once

#include "ui/COrvaPluginWindow.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orva::ui {

/// Puts views into a window.
struct COrvaPluginWindowInspector {
    COrvaPluginWindow& window;

    void SetViews(ISpectrumView* spectrum, ISetupView* setup) const {
        window.spectrum = spectrum;
        window.setupDialog = setup;
    }
};

} // namespace orva::ui

namespace orva::test {

/// Notes what it is told; does with samples what the test says.
class FakeSpectrum : public ui::ISpectrumView {
public:
    void ProcessSamples(float* samples, std::uint32_t count, std::uint32_t flags) override {
        allFlags.push_back(flags);
        counts.push_back(count);
        if (notch) {
            notch(samples, count);
        }
    }
    void SetSampleRate(std::uint32_t rate) override { rates.push_back(rate); }
    void SetShape(const std::int8_t* values, std::uint32_t count) override {
        shapes.emplace_back(values, values + count);
    }
    void SetSquelched(bool squelched) override { squelchedShown.push_back(squelched); }
    void SetEnabled(bool enabled) override { enabledShown.push_back(enabled); }

    std::function<void(float* samples, std::uint32_t count)> notch;
    std::vector<std::uint32_t> allFlags;
    std::vector<std::uint32_t> counts;
    std::vector<std::uint32_t> rates;
    std::vector<std::vector<std::int8_t>> shapes;
    std::vector<bool> squelchedShown;
    std::vector<bool> enabledShown;
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
