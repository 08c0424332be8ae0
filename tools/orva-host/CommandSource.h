/// Where the bench host's commands come from.
#pragma once

#include "tools/orva-host/HostScript.h"

#include <deque>
#include <istream>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace orva::tools {

/// Reads the lines of a script on a thread of its own, since a line of standard input may be long in coming,
/// and hands them out without ever waiting.
class CommandSource {
public:
    /// "-" is standard input, an empty name is an empty script. Throws std::runtime_error if there is no such
    /// file.
    explicit CommandSource(const std::string& script);

    /// The next command that has come. Throws std::invalid_argument on a line that is none.
    std::optional<HostCommand> Next();

    /// True when nothing more will come.
    bool IsAtEnd();

private:
    /// Shared with the thread, which may outlive this object while it waits for standard input.
    struct Lines {
        std::mutex lock;
        std::deque<std::string> waiting;
        bool isAtEnd = false;
    };

    static void ReadAll(std::istream& input, Lines& lines);

    std::shared_ptr<Lines> lines = std::make_shared<Lines>();
};

} // namespace orva::tools
