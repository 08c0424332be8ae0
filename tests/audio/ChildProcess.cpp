#include "tests/audio/ChildProcess.h"

#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace orva::test {

#ifdef _WIN32

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const std::string& variable,
                           const std::string& value) {
    char program[MAX_PATH];
    GetModuleFileNameA(nullptr, program, sizeof(program));
    std::string command = '"' + std::string(program) + '"';
    for (const std::string& argument : arguments) {
        command += " \"" + argument + '"';
    }
    SetEnvironmentVariableA(variable.c_str(), value.c_str());
    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION information{};
    if (CreateProcessA(program, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                       &information) != 0) {
        CloseHandle(information.hThread);
        process = reinterpret_cast<std::intptr_t>(information.hProcess);
    }
    SetEnvironmentVariableA(variable.c_str(), nullptr);
}

void ChildProcess::Kill() {
    if (process == kNone) {
        return;
    }
    const auto handle = reinterpret_cast<HANDLE>(process);
    TerminateProcess(handle, 1);
    WaitForSingleObject(handle, INFINITE);
    CloseHandle(handle);
    process = kNone;
}

#else

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const std::string& variable,
                           const std::string& value) {
    std::string program = "/proc/self/exe";
    std::vector<std::string> words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    setenv(variable.c_str(), value.c_str(), 1);
    pid_t number = 0;
    if (posix_spawn(&number, program.c_str(), nullptr, nullptr, pointers.data(), environ) == 0) {
        process = number;
    }
    unsetenv(variable.c_str());
}

void ChildProcess::Kill() {
    if (process == kNone) {
        return;
    }
    kill(static_cast<pid_t>(process), SIGKILL);
    waitpid(static_cast<pid_t>(process), nullptr, 0);
    process = kNone;
}

#endif

} // namespace orva::test
