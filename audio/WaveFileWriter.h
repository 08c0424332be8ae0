/// Writes recordings: RIFF WAVE files of 16-bit mono PCM.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace orva::audio {

/// Sequential writer with an 18-byte `fmt ` chunk. The sizes in the header are filled in by `Close`.
class WaveFileWriter {
public:
    WaveFileWriter() = default;
    ~WaveFileWriter() { Close(); }
    WaveFileWriter(const WaveFileWriter&) = delete;
    WaveFileWriter& operator=(const WaveFileWriter&) = delete;

    /// Creates `path`, replacing what is there. `sampleRate` in Hz. False if that fails.
    bool Create(const std::string& path, std::uint32_t sampleRate);

    /// Appends `count` samples. False, once and for all, after a failed write, at 4 GB, or without a file.
    bool Write(const std::int16_t* samples, std::size_t count);

    /// Completes the header and closes. False if any write since `Create` has failed.
    bool Close();

    bool IsOpen() const { return file != nullptr; }

private:
    bool WriteHeader(std::uint32_t riffSize);

    std::FILE* file = nullptr;
    std::uint32_t rate = 0;
    std::uint32_t dataBytes = 0;
    bool failed = false;
};

} // namespace orva::audio
