#include "tools/orva-host/CommandSource.h"

#include <fstream>
#include <iostream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace orva::tools {

CommandSource::CommandSource(const std::string& script) {
    if (script == "-") {
        std::thread([shared = lines] { ReadAll(std::cin, *shared); }).detach();
        return;
    }
    if (!script.empty()) {
        std::ifstream file(script);
        if (!file) {
            throw std::runtime_error("cannot read " + script);
        }
        ReadAll(file, *lines);
    }
    lines->isAtEnd = true;
}

void CommandSource::ReadAll(std::istream& input, Lines& lines) {
    for (std::string line; std::getline(input, line);) {
        const std::lock_guard guard(lines.lock);
        lines.waiting.push_back(std::move(line));
    }
    const std::lock_guard guard(lines.lock);
    lines.isAtEnd = true;
}

std::optional<HostCommand> CommandSource::Next() {
    const std::lock_guard guard(lines->lock);
    while (!lines->waiting.empty()) {
        const std::string line = std::move(lines->waiting.front());
        lines->waiting.pop_front();
        if (auto command = HostCommand::Parse(line)) {
            return command;
        }
    }
    return std::nullopt;
}

bool CommandSource::IsAtEnd() {
    const std::lock_guard guard(lines->lock);
    return lines->isAtEnd && lines->waiting.empty();
}

} // namespace orva::tools
