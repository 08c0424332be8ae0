/// The diagnostic trace.
#pragma once

#include "toolkit/TmyObject.h"

#include <cstdint>

namespace orva::toolkit {

/// What the toolkit's diagnostics need of the platform. The default is the platform's own; tests put theirs
/// there.
struct DiagnosticsPlatform {
    void (*output)(const char* line); ///< `OutputDebugStringA`
    std::int64_t (*ticks)();          ///< `QueryPerformanceCounter`
    std::int64_t (*ticksPerSecond)(); ///< `QueryPerformanceFrequency`; 0: the machine has no such counter
    std::uint32_t (*threadId)();      ///< `GetCurrentThreadId`
};

/// The table in force. [window thread]
DiagnosticsPlatform& Diagnostics();

/// Trace switch of the process: 0 silent, 1 traces, 2 also prints the memory map at the end. Objects copy it
/// when they are made.
std::uint32_t TraceLevel();
void SetTraceLevel(std::uint32_t level);

/// Prints one line on behalf of `object`, if it is not null and its `traceEnabled` is set: a running number,
/// the milliseconds since the line before, the object's type and address, and the text, formatted like
/// `printf`, cut to 1023 characters and without the line end. From the first call on a second thread on, the
/// thread's number too.
///
/// \param indentChange  change of the indent: a positive one counts for this line, a negative one for the
/// next;
///                      the indent stays within 0 and 500
///
/// Not locked: lines of two threads may take each other's number.
[[gnu::format(printf, 3, 4)]] void Trace(const TmyObject* object, int indentChange, const char* format, ...);

/// Formats a line of at most 1023 characters and gives it to the debug output, trace or no trace.
[[gnu::format(printf, 1, 2)]] void PrintDebug(const char* format, ...);

} // namespace orva::toolkit
