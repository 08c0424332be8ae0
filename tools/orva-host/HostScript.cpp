#include "tools/orva-host/HostScript.h"

#include "plugin/HostInterface.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <stdexcept>

namespace orva::tools {

namespace {

using plugin::HostCode;
using ui::FileCommand;

/// The words of a line, one after the other, without what follows a `#`.
class Words {
public:
    explicit Words(const std::string& line) : text(line.substr(0, line.find('#'))) { SkipBlanks(); }

    [[nodiscard]] bool IsAtEnd() const { return at == text.size(); }

    /// Empty at the end.
    std::string Next() {
        const std::size_t end = std::min(text.find_first_of(kBlanks, at), text.size());
        std::string word = text.substr(at, end - at);
        at = end;
        SkipBlanks();
        return word;
    }

    /// All that is left, blanks inside it included.
    std::string Rest() {
        std::string rest = text.substr(at);
        rest.erase(rest.find_last_not_of(kBlanks) + 1);
        at = text.size();
        return rest;
    }

private:
    static constexpr const char* kBlanks = " \t\r\n\v\f";

    void SkipBlanks() { at = std::min(text.find_first_not_of(kBlanks, at), text.size()); }

    std::string text;
    std::size_t at = 0;
};

std::uint32_t NeedNumber(const std::string& word) {
    const auto number = ParseNumber(word);
    if (!number) {
        throw std::invalid_argument("'" + word + "' is no number");
    }
    return *number;
}

double NeedReal(const std::string& word, const std::string& wanted) {
    char* end = nullptr;
    const double value = std::strtod(word.c_str(), &end);
    if (word.empty() || *end != '\0' || !std::isfinite(value) || value < 0) {
        throw std::invalid_argument(wanted);
    }
    return value;
}

/// The number that belongs to one of some names.
std::uint32_t NeedChoice(const std::string& word, const std::map<std::string, std::uint32_t>& choices) {
    const auto found = choices.find(word);
    if (found == choices.end()) {
        std::string names;
        for (const auto& [name, number] : choices) {
            names += (names.empty() ? "" : ", ") + name;
        }
        throw std::invalid_argument("'" + word + "' is none of " + names);
    }
    return found->second;
}

/// A digital squelch code as it is commonly written: octal, with a sign if it is inverted.
std::int32_t NeedDcsCode(const std::string& word) {
    constexpr int kOctal = 8;
    constexpr long kHighest = 0777;
    const std::size_t digits = word.starts_with('-') ? 1 : 0;
    const long code = std::strtol(word.c_str(), nullptr, kOctal);
    if (word.size() == digits || word.find_first_not_of("01234567", digits) != std::string::npos ||
        std::abs(code) > kHighest) {
        throw std::invalid_argument("'" + word + "' is no octal code");
    }
    return static_cast<std::int32_t>(code);
}

/// A tone as the plug-in compares it: in single precision, truncated, so that 64.7 Hz are 64699.
std::int32_t NeedTone(const std::string& word) {
    constexpr float kMilliHertz = 1000.0F;
    return static_cast<std::int32_t>(static_cast<float>(NeedReal(word, "'ctcss' wants a tone in hertz")) *
                                     kMilliHertz);
}

void SetCode(HostCommand& command, HostCode code, std::uint32_t param = 0) {
    command.code = static_cast<std::int32_t>(code);
    command.param = param;
}

void ReadMode(HostCommand& command, const std::string& name) {
    const auto digital = static_cast<std::uint32_t>(plugin::ModeNumber::Digital);
    const auto fm = static_cast<std::uint32_t>(plugin::ModeNumber::Fm);
    SetCode(command, HostCode::Mode, NeedChoice(name, {{"auto", 0}, {"orva", digital}, {"fm", fm}}));
    if (command.param == 0) {
        command.data = {fm, digital};
    }
}

void ReadSquelch(HostCommand& command, Words& words) {
    constexpr std::uint32_t kClosed = 0x80000001; // neither is a type
    constexpr std::uint32_t kOpen = 0x80000000;
    const std::uint32_t type = NeedChoice(words.Next(), {{"none", 0},
                                                         {"level", plugin::squelch_type::kLevel},
                                                         {"noise", plugin::squelch_type::kNoise},
                                                         {"ctcss", plugin::squelch_type::kCtcss},
                                                         {"voice", plugin::squelch_type::kVoice},
                                                         {"dcs", plugin::squelch_type::kDcs},
                                                         {"closed", kClosed},
                                                         {"open", kOpen}});
    if (type == kClosed || type == kOpen) {
        SetCode(command, HostCode::SquelchState, type - kOpen);
        return;
    }
    SetCode(command, HostCode::SquelchSetup, type);
    plugin::SquelchValues values{};
    switch (type) {
    case plugin::squelch_type::kLevel:
        values.level = static_cast<std::int32_t>(NeedNumber(words.Next()));
        break;
    case plugin::squelch_type::kNoise:
        values.noise = static_cast<std::int32_t>(NeedNumber(words.Next()));
        break;
    case plugin::squelch_type::kCtcss:
        values.ctcss = NeedTone(words.Next());
        break;
    case plugin::squelch_type::kVoice:
        values.voice = static_cast<std::int32_t>(NeedNumber(words.Next()));
        break;
    case plugin::squelch_type::kDcs:
        values.dcs = NeedDcsCode(words.Next());
        break;
    default:
        break;
    }
    command.data.resize(sizeof(values) / sizeof(command.data[0]));
    std::memcpy(command.data.data(), &values, sizeof(values));
}

void ReadFile(HostCommand& command, FileCommand file, const std::string& text) {
    command.kind = HostCommand::Kind::File;
    command.file = file;
    command.text = text;
    if (command.HasPath() && text.empty()) {
        throw std::invalid_argument("which file?");
    }
    // The window takes decimal numbers alone.
    if (file == FileCommand::Seek) {
        command.text = std::to_string(NeedNumber(text));
    } else if (file == FileCommand::Step) {
        command.text = std::to_string(static_cast<std::int32_t>(NeedNumber(text)));
    }
}

/// A command that is a word, and what belongs to it. False if there is none of that name.
bool ReadNamedCommand(HostCommand& command, const std::string& name, Words& words) {
    if (name == "wait") {
        command.kind = HostCommand::Kind::Wait;
        command.seconds = NeedReal(words.Next(), "'wait' wants a number of seconds");
    } else if (name == "close") {
        SetCode(command, HostCode::Close);
    } else if (name == "tune") {
        SetCode(command, HostCode::Frequency, NeedNumber(words.Next()));
    } else if (name == "mode") {
        ReadMode(command, words.Next());
    } else if (name == "scan") {
        SetCode(command, HostCode::Scanner, NeedChoice(words.Next(), {{"off", 0}, {"on", 1}}));
    } else if (name == "squelch") {
        ReadSquelch(command, words);
    } else if (name == "record") {
        const auto kind = static_cast<FileCommand>(
            NeedChoice(words.Next(), {{"if", static_cast<std::uint32_t>(FileCommand::RecordIf)},
                                      {"audio", static_cast<std::uint32_t>(FileCommand::RecordAudio)}}));
        ReadFile(command, kind, words.Rest());
    } else if (name == "play") {
        ReadFile(command, FileCommand::Play, words.Rest());
    } else if (name == "seek") {
        ReadFile(command, FileCommand::Seek, words.Next());
    } else if (name == "step") {
        ReadFile(command, FileCommand::Step, words.Next());
    } else if (name == "pause") {
        ReadFile(command, FileCommand::Pause, "");
    } else if (name == "resume") {
        ReadFile(command, FileCommand::Resume, "");
    } else if (name == "stop") {
        ReadFile(command, FileCommand::Stop, "");
    } else {
        return false;
    }
    return true;
}

} // namespace

std::optional<std::uint32_t> ParseNumber(const std::string& text) {
    constexpr int kAnyBase = 0;
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    // Not as the C library has it: a leading zero makes no octal number.
    const std::size_t digits = text.starts_with('-') ? 1 : 0;
    if (text.size() == digits ||
        text.find_first_not_of(isHexadecimal ? "0123456789abcdefABCDEFxX" : "0123456789", digits) !=
            std::string::npos) {
        return std::nullopt;
    }
    char* end = nullptr;
    constexpr int kDecimal = 10;
    const long long value = std::strtoll(text.c_str(), &end, isHexadecimal ? kAnyBase : kDecimal);
    if (*end != '\0' || value < std::numeric_limits<std::int32_t>::min() ||
        value > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(value);
}

std::optional<HostCommand> HostCommand::Parse(const std::string& line) {
    Words words(line);
    if (words.IsAtEnd()) {
        return std::nullopt;
    }
    HostCommand command;
    std::string word = words.Next();
    if (word.starts_with('@')) {
        command.hostHandle = NeedNumber(word.substr(1));
        if (words.IsAtEnd()) {
            throw std::invalid_argument("nothing follows '" + word + "'");
        }
        word = words.Next();
    }
    if (!ReadNamedCommand(command, word, words)) {
        command.code = static_cast<std::int32_t>(NeedNumber(word));
        if (!words.IsAtEnd()) {
            command.param = NeedNumber(words.Next());
        }
        while (!words.IsAtEnd()) {
            command.data.push_back(NeedNumber(words.Next()));
        }
    }
    if (!words.IsAtEnd()) {
        throw std::invalid_argument("too much for '" + word + "'");
    }
    return command;
}

bool HostCommand::HasPath() const {
    return file == ui::FileCommand::RecordIf || file == ui::FileCommand::RecordAudio ||
           file == ui::FileCommand::Play;
}

} // namespace orva::tools
