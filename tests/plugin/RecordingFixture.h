/// An instance with a panel for recordings and a folder for them.
#pragma once

#include "tests/audio/CtbWaveOutInspector.h"
#include "tests/audio/RiffBytes.h"
#include "tests/plugin/PluginFixture.h"
#include "tests/plugin/WindowViews.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {

/// A recording, read by nothing of the system's own.
struct RecordedFile {
    std::uint32_t rate = 0;
    std::vector<std::int16_t> samples;

    /// Checks every byte of the header.
    explicit RecordedFile(const std::string& path) {
        const std::string bytes = ReadWholeFile(path);
        if (bytes.size() < kHeader) {
            ADD_FAILURE() << path << " has only " << bytes.size() << " bytes";
            return;
        }
        std::memcpy(&rate, bytes.data() + 24, sizeof rate);
        const auto data = static_cast<std::uint32_t>(bytes.size() - kHeader);
        LittleEndianBytes header;
        header.Text("RIFF").Number(data + 38, 4).Text("WAVEfmt ").Number(18, 4);
        header.Number(1, 2).Number(1, 2).Number(rate, 4).Number(2 * rate, 4).Number(2, 2).Number(16, 2);
        header.Number(0, 2).Text("data").Number(data, 4);
        EXPECT_EQ(std::memcmp(bytes.data(), header.Bytes().data(), kHeader), 0) << path;
        samples.resize(data / sizeof samples[0]);
        std::memcpy(samples.data(), bytes.data() + kHeader, data);
    }

    static constexpr std::size_t kHeader = 46; // bytes
};

/// The bytes of a recording of any format.
inline std::vector<std::uint8_t> FileBytes(const WaveFormat& format, std::span<const std::int16_t> samples) {
    const auto size = static_cast<std::uint32_t>(samples.size_bytes());
    LittleEndianBytes bytes;
    bytes.Text("RIFF").Number(size + 38, 4).Text("WAVEfmt ").Number(18, 4).Raw(FormatBytes(18, format));
    bytes.Text("data").Number(size, 4);
    std::vector<std::uint8_t> all = bytes.Bytes();
    const auto* raw = reinterpret_cast<const std::uint8_t*>(samples.data());
    all.insert(all.end(), raw, raw + size);
    return all;
}

class RecordingFixture : public PluginFixture {
protected:
    using Samples = std::vector<std::int16_t>;
    using Shown = std::vector<std::string>;

    static constexpr std::uint32_t kStreamValue = 16385;
    static constexpr int kVolume = 1;

    /// By the road that has the rate; the views are in the window.
    void StartAtRate(int rate) {
        if (rate == 48000) {
            StartWithWaveInput();
        } else {
            StartWithReceiver();
        }
        ui::COrvaPluginWindowInspector{*Inside().Window()}.SetViews(&spectrum, nullptr);
        ui::COrvaPluginWindowInspector{*Inside().Window()}.SetPlayRecPanel(&panel);
        Notify(3584, kVolume);
        panel.choice.folder = Folder();
        host.Clear();
        log.Clear();
    }
    void SetMode(plugin::DemodulationMode mode) {
        Plugin().SetDemodulationMode(static_cast<std::int32_t>(mode));
        host.Clear();
    }

    [[nodiscard]] std::string Folder() const {
        const std::string file = folder.Path("x");
        return file.substr(0, file.size() - 2);
    }

    /// Chooses a name and a kind, and begins.
    void Record(const std::string& name, bool isIf) {
        panel.choice.name = name;
        panel.choice.isIntermediateFrequency = isIf;
        Plugin().StartRecording();
    }
    void RecordIf(const std::string& name = "rec") { Record(name, true); }
    void RecordAudio(const std::string& name = "rec") { Record(name, false); }

    /// Writes a file, chooses it and plays it.
    void Play(const std::string& name, const Samples& samples, const WaveFormat& format = {}) {
        Plugin().SelectFile(folder.Write(name, FileBytes(format, samples)).c_str());
        Plugin().StartPlayback();
    }

    [[nodiscard]] RecordedFile File(const std::string& name) const { return RecordedFile(folder.Path(name)); }
    [[nodiscard]] bool Exists(const std::string& name) const {
        return std::filesystem::exists(folder.Path(name));
    }
    [[nodiscard]] bool IsRecording() const { return Inside().FileState() == plugin::FileState::Recording; }
    [[nodiscard]] bool IsPlaying() const { return Inside().FileState() == plugin::FileState::Playing; }
    [[nodiscard]] bool IsIdle() const { return Inside().FileState() == plugin::FileState::Idle; }
    [[nodiscard]] bool IsGathering() const {
        return audio::CtbWaveOutInspector{*Inside().WaveOut()}.Prebuffering();
    }

    /// Params of the stream values that the host was told.
    [[nodiscard]] std::vector<std::uint32_t> StreamValues() const {
        std::vector<std::uint32_t> values;
        for (const auto& call : host.Of(kStreamValue)) {
            EXPECT_EQ(call.size, 0U);
            EXPECT_FALSE(call.hasData);
            values.push_back(call.param);
        }
        return values;
    }

    TemporaryFolder folder;
    FakePlayRec panel;
    FakeSpectrum spectrum;
};

} // namespace orva::test
