/// The files that a decode writes.
#pragma once

#include "audio/WaveFileWriter.h"
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

    bool HasFm() const { return fm.IsOpen(); }

    EventWriter events;

private:
    audio::WaveFileWriter speech;
    std::string speechPath;
    audio::WaveFileWriter fm;
    std::string fmPath;
    std::FILE* dibits = nullptr;
    std::string dibitsPath;
    bool dibitsFailed = false;
};

/// One line of complaint on standard error.
void Complain(const std::string& what);

} // namespace orva::tools
