/// Runs of command-line programs as a user starts them.
#pragma once

#include "tests/support/TemporaryFolder.h"

#include <string>
#include <vector>

namespace orva::test {

/// What a program said and how it ended.
struct ProgramResult {
    int exitCode = -1;
    std::string output;
    std::string errors;

    /// Lines on standard error.
    std::vector<std::string> ErrorLines() const;
};

/// Runs `program` with `arguments` and the file `standardInput`, nothing when empty, and waits for its end.
/// What it says passes through files in `folder`.
ProgramResult RunProgram(const std::string& program, const TemporaryFolder& folder,
                         const std::vector<std::string>& arguments, const std::string& standardInput = {});

/// The same with orva-decode.
ProgramResult RunOrvaDecode(const TemporaryFolder& folder, const std::vector<std::string>& arguments,
                            const std::string& standardInput = {});

} // namespace orva::test
