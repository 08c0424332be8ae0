/// The files that a decode writes.
#pragma once

#include "audio/CtbWaveFile.h"
#include "tools/orva-decode/EventWriter.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace orva::tools {

/// Speech, FM audio, events and dibits; each only if asked for. A failed write is remembered, told by
/// `Close`, and does not stop the others.
class Outputs {
public:
    Outputs() = default;
    ~Outputs();
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;

    /// Each opens its file, replacing what is there; false if it cannot be.
    bool OpenSpeech(const std::string& path);
    bool OpenFm(const std::string& path);
    bool OpenDibits(const std::string& path);

    void WriteSpeech(const std::int16_t* samples, std::size_t count);
    void WriteFm(const std::int16_t* samples, std::size_t count);
    void WriteDibits(const char* text, std::size_t count);

    /// Completes all files. False, after a line on standard error for each, if some could not be written
    /// whole.
    bool Close();

    bool HasFm() const { return fm.file.IsOpen(); }

    EventWriter events;

private:
    /// One WAV file, if it was asked for.
    struct Recording {
        bool Create(const std::string& newPath, std::uint32_t sampleRate);
        void Write(const std::int16_t* samples, std::size_t count);
        bool Close();

        audio::CtbWaveFile file;
        std::string path;
    };

    Recording speech;
    Recording fm;
    std::FILE* dibits = nullptr;
    std::string dibitsPath;
    bool dibitsFailed = false;
};

/// One line of complaint on standard error.
void Complain(const std::string& what);

} // namespace orva::tools
