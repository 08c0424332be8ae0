/// What the toolkit prints to the debug output.
#pragma once

#include "toolkit/Trace.h"

#include <string>
#include <vector>

namespace orva::toolkit {

/// Catches the lines of the debug output while it lives; one at a time.
class DebugOutput {
public:
    DebugOutput() : before(Diagnostics().output) {
        Caught().clear();
        Diagnostics().output = [](const char* line) { Caught().emplace_back(line); };
    }
    ~DebugOutput() { Diagnostics().output = before; }
    DebugOutput(const DebugOutput&) = delete;
    DebugOutput& operator=(const DebugOutput&) = delete;

    [[nodiscard]] const std::vector<std::string>& Lines() const { return Caught(); }
    void Clear() { Caught().clear(); }

    /// Number of lines that have `part` in them.
    [[nodiscard]] int Count(const std::string& part) const {
        int count = 0;
        for (const std::string& line : Caught()) {
            count += line.find(part) != std::string::npos ? 1 : 0;
        }
        return count;
    }

private:
    static std::vector<std::string>& Caught() {
        static std::vector<std::string> lines;
        return lines;
    }

    void (*before)(const char* line);
};

} // namespace orva::toolkit
