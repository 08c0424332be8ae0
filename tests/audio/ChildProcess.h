/// Another process that runs this test program.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orva::test {

/// Starts the program that is running once more; kills it at the latest when destroyed.
class ChildProcess {
public:
    /// \param arguments  what it is started with
    /// \param variable   one variable of its environment, beside those of this process
    /// \param value      what that is
    ChildProcess(const std::vector<std::string>& arguments, const std::string& variable,
                 const std::string& value);
    ~ChildProcess() { Kill(); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool HasStarted() const { return process != kNone; }

    /// Ends it at once, whatever it is doing, and waits until it is gone.
    void Kill();

private:
    static constexpr std::intptr_t kNone = -1;

    std::intptr_t process = kNone; ///< a process number, on Windows a handle
};

} // namespace orva::test
