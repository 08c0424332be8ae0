#include "tools/orva-decode/Outputs.h"

namespace orva::tools {

namespace {

constexpr std::uint32_t kSpeechRate = 8000; ///< Hz
constexpr std::uint32_t kFmRate = 16000;    ///< Hz

} // namespace

void Complain(const std::string& what) {
    std::fprintf(stderr, "orva-decode: %s\n", what.c_str());
}

Outputs::~Outputs() {
    if (dibits != nullptr) {
        std::fclose(dibits);
    }
}

bool Outputs::OpenSpeech(const std::string& path) {
    speechPath = path;
    return speech.Create(path, kSpeechRate);
}

bool Outputs::OpenFm(const std::string& path) {
    fmPath = path;
    return fm.Create(path, kFmRate);
}

bool Outputs::OpenDibits(const std::string& path) {
    dibitsPath = path;
    dibits = std::fopen(path.c_str(), "wb");
    return dibits != nullptr;
}

void Outputs::WriteSpeech(const std::int16_t* samples, std::size_t count) {
    if (speech.IsOpen()) {
        speech.Write(samples, count);
    }
}

void Outputs::WriteFm(const std::int16_t* samples, std::size_t count) {
    if (fm.IsOpen()) {
        fm.Write(samples, count);
    }
}

void Outputs::WriteDibits(const char* text, std::size_t count) {
    if (dibits != nullptr) {
        dibitsFailed = std::fwrite(text, 1, count, dibits) != count || dibitsFailed;
    }
}

bool Outputs::Close() {
    bool whole = true;
    if (!speech.Close()) {
        Complain(speechPath + ": could not be written whole");
        whole = false;
    }
    if (!fm.Close()) {
        Complain(fmPath + ": could not be written whole");
        whole = false;
    }
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
