#include "tools/orva-signal/VoiceChoice.h"

#include "tests/support/ImbeWord.h"
#include "tests/support/SpeechSource.h"

#include <fstream>
#include <memory>

namespace orva::tools {

test::VoiceSource VoiceNamed(const std::string& name) {
    const auto kind = test::SpeechKindNamed(name);
    if (!kind) {
        return {};
    }
    const auto speech = std::make_shared<test::SpeechSource>(*kind);
    return [speech](std::size_t index) { return speech->Frame(index); };
}

bool ReadVoiceFile(const std::string& path, std::vector<test::VoiceBits>& frames, std::string& problem) {
    std::ifstream file(path);
    if (!file) {
        problem = path + ": cannot be read";
        return false;
    }
    frames.clear();
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.empty()) {
            continue;
        }
        test::VoiceBits bits;
        if (!test::FromHex(line, bits)) {
            problem = path + ": line " + std::to_string(number) + " is not a voice frame of 22 hex digits";
            return false;
        }
        frames.push_back(bits);
    }
    if (frames.empty()) {
        problem = path + ": no voice frame in it";
        return false;
    }
    return true;
}

test::VoiceSource RepeatVoice(const std::vector<test::VoiceBits>& frames) {
    return [frames](std::size_t index) { return frames[index % frames.size()]; };
}

} // namespace orva::tools
