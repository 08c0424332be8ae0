#include "toolkit/Trace.h"

#include "toolkit/TypeRegistry.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#ifdef _WIN32
#include <windows.h>
#else
#include <chrono>
#include <functional>
#include <thread>
#endif

namespace orva::toolkit {

namespace {

constexpr int kMostIndent = 500;
constexpr std::size_t kTextSize = 1024;
/// Number, time, type name, addresses.
constexpr std::size_t kHeadSize = 128;
constexpr std::size_t kTypeNameSize = 32;
constexpr std::int64_t kMillisecondsPerSecond = 1000;

#ifdef _WIN32

void Output(const char* line) {
    OutputDebugStringA(line);
}

std::int64_t Ticks() {
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    return count.QuadPart;
}

std::int64_t TicksPerSecond() {
    LARGE_INTEGER frequency;
    return QueryPerformanceFrequency(&frequency) != 0 ? frequency.QuadPart : 0;
}

std::uint32_t ThreadId() {
    return GetCurrentThreadId();
}

#else

void Output(const char* line) {
    std::fputs(line, stderr);
}

std::int64_t Ticks() {
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

std::int64_t TicksPerSecond() {
    using Period = std::chrono::steady_clock::period;
    return Period::den / Period::num;
}

std::uint32_t ThreadId() {
    return static_cast<std::uint32_t>(std::hash<std::thread::id>{}(std::this_thread::get_id()));
}

#endif

constinit DiagnosticsPlatform platform{Output, Ticks, TicksPerSecond, ThreadId};

constinit std::uint32_t traceLevel = 0;

/// What the trace remembers from line to line.
struct TraceState {
    std::uint32_t lineNumber = 0;
    std::uint32_t firstThread = 0;
    bool severalThreads = false;
    int indent = 0;
    std::int64_t lastTicks = 0;
};

constinit TraceState state;

void NoteThread(std::uint32_t thread) {
    if (state.lineNumber == 0) {
        state.firstThread = thread;
        state.lastTicks = platform.ticks();
    }
    state.severalThreads = state.severalThreads || thread != state.firstThread;
}

void ChangeIndent(int change) {
    state.indent = std::clamp(state.indent + change, 0, kMostIndent);
}

unsigned MillisecondsSinceLastLine() {
    const std::int64_t now = platform.ticks();
    const std::int64_t frequency = std::max<std::int64_t>(platform.ticksPerSecond(), 1);
    const auto elapsed = static_cast<unsigned>((now - state.lastTicks) * kMillisecondsPerSecond / frequency);
    state.lastTicks = now;
    return elapsed;
}

void NameType(const TmyObject* object, std::array<char, kTypeNameSize>& name) {
    const TypeRecord* record = FindType(object);
    if (record == nullptr) {
        std::snprintf(name.data(), name.size(), "unknown");
    } else if (record->name == nullptr) {
        std::snprintf(name.data(), name.size(), "Type:%d", static_cast<int>(record->typeId));
    } else {
        std::snprintf(name.data(), name.size(), "%s", record->name);
    }
}

void CutLineEnd(char* text) {
    const std::size_t length = std::strlen(text);
    if (length > 0 && text[length - 1] == '\n') {
        text[length - 1] = '\0';
    }
}

void PrintLine(const TmyObject* object, std::uint32_t thread, const char* text) {
    std::array<char, kTypeNameSize> type{};
    NameType(object, type);
    std::array<char, kHeadSize + kMostIndent + kTextSize> line{};
    const unsigned number = ++state.lineNumber;
    const unsigned elapsed = MillisecondsSinceLastLine();
    const auto* address = static_cast<const void*>(object);
    if (state.severalThreads) {
        std::snprintf(line.data(), line.size(), "%4u: [%8u]\t<%10s:%p-%6x>\t%s", number, elapsed, type.data(),
                      address, static_cast<unsigned>(thread), text);
    } else {
        std::snprintf(line.data(), line.size(), "%4u: [%8u]\t<%10s:%p>\t%s", number, elapsed, type.data(),
                      address, text);
    }
    platform.output(line.data());
}

} // namespace

DiagnosticsPlatform& Diagnostics() {
    return platform;
}

std::uint32_t TraceLevel() {
    return traceLevel;
}

void SetTraceLevel(std::uint32_t level) {
    traceLevel = level;
}

void Trace(const TmyObject* object, int indentChange, const char* format, ...) {
    if (object == nullptr || object->traceEnabled == 0) {
        return;
    }
    const std::uint32_t thread = platform.threadId();
    NoteThread(thread);
    if (indentChange > 0) {
        ChangeIndent(indentChange);
    }

    std::array<char, kMostIndent + kTextSize> text{};
    const auto indent = static_cast<std::size_t>(state.indent);
    std::memset(text.data(), ' ', indent);
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data() + indent, kTextSize, format, arguments);
    va_end(arguments);
    CutLineEnd(text.data());
    PrintLine(object, thread, text.data());

    if (indentChange < 0) {
        ChangeIndent(indentChange);
    }
}

void PrintDebug(const char* format, ...) {
    std::array<char, kTextSize> text{};
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    platform.output(text.data());
}

} // namespace orva::toolkit
