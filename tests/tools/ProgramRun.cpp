#include "tests/tools/ProgramRun.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>

#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace orva::test {

namespace {

#ifdef _WIN32
constexpr const char* kNothing = "NUL";
#else
constexpr const char* kNothing = "/dev/null";
#endif

std::string Quoted(const std::string& text) {
    return '"' + text + '"';
}

/// A program's path as the command interpreter wants it.
std::string NativePath(const std::string& program) {
    return std::filesystem::absolute(program).make_preferred().string();
}

int Execute(const std::string& command) {
#ifdef _WIN32
    // The interpreter takes the outermost quotes off a line that begins with one.
    return std::system(Quoted(command).c_str());
#else
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
}

} // namespace

std::vector<std::string> ProgramResult::ErrorLines() const {
    std::vector<std::string> lines;
    std::istringstream text(errors);
    for (std::string line; std::getline(text, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(line);
    }
    return lines;
}

ProgramResult RunProgram(const std::string& program, const TemporaryFolder& folder,
                         const std::vector<std::string>& arguments, const std::string& standardInput) {
    const std::string output = folder.Path("standard-output.txt");
    const std::string errors = folder.Path("standard-error.txt");
    std::string command = Quoted(NativePath(program));
    for (const std::string& argument : arguments) {
        command += ' ' + Quoted(argument);
    }
    command += " > " + Quoted(output) + " 2> " + Quoted(errors) + " < " +
               Quoted(standardInput.empty() ? kNothing : standardInput);
    ProgramResult result;
    result.exitCode = Execute(command);
    result.output = ReadWholeFile(output);
    result.errors = ReadWholeFile(errors);
    return result;
}

#ifdef ORVA_DECODE_PROGRAM
ProgramResult RunOrvaDecode(const TemporaryFolder& folder, const std::vector<std::string>& arguments,
                            const std::string& standardInput) {
    return RunProgram(ORVA_DECODE_PROGRAM, folder, arguments, standardInput);
}
#endif

} // namespace orva::test
