#include "tools/orva-host/HostScript.h"

#include "plugin/HostInterface.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <stdexcept>

namespace orva::tools {

namespace {

std::vector<std::string> Words(const std::string& line) {
    std::istringstream text(line.substr(0, line.find('#')));
    std::vector<std::string> words;
    for (std::string word; text >> word;) {
        words.push_back(word);
    }
    return words;
}

std::uint32_t NeedNumber(const std::string& word) {
    const auto number = ParseNumber(word);
    if (!number) {
        throw std::invalid_argument("'" + word + "' is no number");
    }
    return *number;
}

double NeedSeconds(const std::vector<std::string>& words, std::size_t at) {
    const std::string word = at + 1 == words.size() ? words[at] : "";
    char* end = nullptr;
    const double seconds = std::strtod(word.c_str(), &end);
    if (word.empty() || *end != '\0' || !std::isfinite(seconds) || seconds < 0) {
        throw std::invalid_argument("'wait' wants a number of seconds");
    }
    return seconds;
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
    const std::vector<std::string> words = Words(line);
    if (words.empty()) {
        return std::nullopt;
    }
    HostCommand command;
    std::size_t at = 0;
    if (words[at].starts_with('@')) {
        command.hostHandle = NeedNumber(words[at].substr(1));
        if (++at == words.size()) {
            throw std::invalid_argument("nothing follows '" + words[0] + "'");
        }
    }
    if (words[at] == "wait") {
        command.kind = Kind::Wait;
        command.seconds = NeedSeconds(words, at + 1);
        return command;
    }
    if (words[at] == "close") {
        command.code = static_cast<std::int32_t>(plugin::HostCode::Close);
        if (at + 1 != words.size()) {
            throw std::invalid_argument("'close' stands alone");
        }
        return command;
    }
    command.code = static_cast<std::int32_t>(NeedNumber(words[at]));
    if (++at < words.size()) {
        command.param = NeedNumber(words[at]);
    }
    while (++at < words.size()) {
        command.data.push_back(NeedNumber(words[at]));
    }
    return command;
}

} // namespace orva::tools
