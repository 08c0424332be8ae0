#include "tools/orva-decode/Outputs.h"

namespace orva::tools {

namespace {

constexpr std::uint32_t kSpeechRate = 8000; ///< Hz
constexpr std::uint32_t kFmRate = 16000;    ///< Hz

/// As large as the sizes in its header can tell, less one write.
constexpr std::uint32_t kMaxRecordingBytes = 0xFFFF0000;

} // namespace

void Complain(const std::string& what) {
    std::fprintf(stderr, "orva-decode: %s\n", what.c_str());
}

Outputs::~Outputs() {
    if (dibits != nullptr) {
        std::fclose(dibits);
    }
}

bool Outputs::Recording::Create(const std::string& newPath, std::uint32_t sampleRate) {
    path = newPath;
    file.SetMaxFileSize(kMaxRecordingBytes);
    return file.Create(path.c_str(), sampleRate);
}

void Outputs::Recording::Write(const std::int16_t* samples, std::size_t count) {
    if (file.IsOpen()) {
        file.Write(samples, static_cast<std::uint32_t>(count));
    }
}

bool Outputs::Recording::Close() {
    const bool whole = file.Close();
    if (!whole) {
        Complain(path + ": could not be written whole");
    }
    return whole;
}

bool Outputs::OpenSpeech(const std::string& path) {
    return speech.Create(path, kSpeechRate);
}

bool Outputs::OpenFm(const std::string& path) {
    return fm.Create(path, kFmRate);
}

bool Outputs::OpenDibits(const std::string& path) {
    dibitsPath = path;
    dibits = std::fopen(path.c_str(), "wb");
    return dibits != nullptr;
}

void Outputs::WriteSpeech(const std::int16_t* samples, std::size_t count) {
    speech.Write(samples, count);
}

void Outputs::WriteFm(const std::int16_t* samples, std::size_t count) {
    fm.Write(samples, count);
}

void Outputs::WriteDibits(const char* text, std::size_t count) {
    if (dibits != nullptr) {
        dibitsFailed = std::fwrite(text, 1, count, dibits) != count || dibitsFailed;
    }
}

bool Outputs::Close() {
    bool whole = speech.Close();
    whole = fm.Close() && whole;
    if (!events.Close()) {
        Complain("the events could not be written whole");
        whole = false;
    }
    if (dibits != nullptr) {
        dibitsFailed = std::fclose(dibits) != 0 || dibitsFailed;
        dibits = nullptr;
        if (dibitsFailed) {
            Complain(dibitsPath + ": could not be written whole");
            whole = false;
        }
    }
    return whole;
}

} // namespace orva::tools
