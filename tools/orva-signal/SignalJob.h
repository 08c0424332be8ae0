#pragma once

namespace orva::tools {

constexpr int kExitFailed = 1; ///< a file could not be read or written
constexpr int kExitUsage = 2;  ///< the command line makes no sense

/// Does what the command line asks for. Tells what is wrong in one line on standard error. Returns the exit
/// code of the program. May throw `std::exception`s of the library, such as want of memory.
int RunSignalJob(int argumentCount, const char* const* arguments);

} // namespace orva::tools
