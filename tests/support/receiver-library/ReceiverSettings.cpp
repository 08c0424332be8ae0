#include "tests/support/receiver-library/ReceiverSettings.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

namespace orva::test {

namespace {

constexpr const char* kPrefix = "ORVA_RECEIVER_";

std::string Trimmed(const std::string& text) {
    constexpr const char* kBlank = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlank);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

std::map<std::string, std::string> ReadIni(const std::string& ini) {
    std::map<std::string, std::string> values;
    std::istringstream text(ini);
    for (std::string line; std::getline(text, line);) {
        const std::size_t sign = line.find('=');
        if (sign != std::string::npos) {
            values[Trimmed(line.substr(0, sign))] = Trimmed(line.substr(sign + 1));
        }
    }
    return values;
}

double ToNumber(const std::string& name, const std::string& text) {
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !std::isfinite(value) || value < 0) {
        throw std::invalid_argument(name + " is no number: " + text);
    }
    return value;
}

ReceiverEnd ToEnd(const std::string& text) {
    if (text == "stop") {
        return ReceiverEnd::Stop;
    }
    if (text == "silence") {
        return ReceiverEnd::Silence;
    }
    if (text == "loop") {
        return ReceiverEnd::Loop;
    }
    throw std::invalid_argument("end is neither stop, silence nor loop: " + text);
}

} // namespace

ReceiverSettings
ReceiverSettings::Read(const std::function<std::optional<std::string>(const std::string&)>& environment,
                       const std::string& ini) {
    const std::map<std::string, std::string> fromFile = ReadIni(ini);
    const auto value = [&](const std::string& name) -> std::optional<std::string> {
        std::string variable = kPrefix;
        for (const char c : name) {
            variable += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
        if (auto set = environment(variable)) {
            return set;
        }
        const auto found = fromFile.find(name);
        return found != fromFile.end() ? std::optional(found->second) : std::nullopt;
    };

    ReceiverSettings settings;
    settings.recording = value("recording").value_or("");
    settings.memory = value("memory").value_or("");
    settings.log = value("log").value_or("");
    if (const auto text = value("speed")) {
        settings.speed = ToNumber("speed", *text);
    }
    if (const auto text = value("patience")) {
        settings.patience = ToNumber("patience", *text);
    }
    if (const auto text = value("failing_starts")) {
        settings.failingStarts = static_cast<std::uint32_t>(ToNumber("failing_starts", *text));
    }
    if (const auto text = value("end")) {
        settings.end = ToEnd(*text);
    }
    if (const auto text = value("inverted")) {
        settings.isInverted = ToNumber("inverted", *text) != 0;
    }
    return settings;
}

} // namespace orva::test
