/// A clock that the test turns, and a debug output that it reads.
#pragma once

#include "toolkit/Trace.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orva::test {

/// In force for its lifetime; one at a time.
class FakeDiagnostics {
public:
    FakeDiagnostics();
    ~FakeDiagnostics();
    FakeDiagnostics(const FakeDiagnostics&) = delete;
    FakeDiagnostics& operator=(const FakeDiagnostics&) = delete;

    std::int64_t ticks = 1000000;
    std::int64_t ticksPerSecond = 1000;
    std::vector<std::string> lines; ///< all that was printed

    /// The lines' texts, behind number, time, type and address.
    std::vector<std::string> Texts() const;

private:
    toolkit::DiagnosticsPlatform before;
};

/// The trace switch, back as it was at the end.
class TraceSwitch {
public:
    explicit TraceSwitch(std::uint32_t level) : before(toolkit::TraceLevel()) {
        toolkit::SetTraceLevel(level);
    }
    ~TraceSwitch() { toolkit::SetTraceLevel(before); }
    TraceSwitch(const TraceSwitch&) = delete;
    TraceSwitch& operator=(const TraceSwitch&) = delete;

private:
    std::uint32_t before;
};

} // namespace orva::test
