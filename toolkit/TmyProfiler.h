/// Measures where time goes.
#pragma once

#include "toolkit/TmyObject.h"
#include "toolkit/TmyTimeCounter.h"

#include <array>
#include <cstdint>
#include <optional>

namespace orva::toolkit {

/// A place in the code, and the time spent there.
struct ProfileEntry {
    const char* source;   ///< null: the entry is free
    const char* function; ///< name of the place
    std::uint32_t line;
    std::uint32_t hits;
    std::uint32_t chain; ///< the next entry of a taken slot, as index + 1; 0: none
    std::int64_t ticks;  ///< spent there
};

/// A table of places, found by their line numbers, made where the trace is on. Places inside each other count
/// their time both. Not locked.
///
/// Without a clock it is made stopped.
class TmyProfiler : public TmyObject {
public:
    static constexpr std::uint32_t kEntries = 5000;

    TmyProfiler();

    /// The entry of a place, made at its first call; null when stopped or when the table is full. The names
    /// are compared as texts, and must outlive the profiler.
    ProfileEntry* Find(const char* source, const char* function, std::uint32_t line);

    std::int64_t Now() const { return clock->Now(); } ///< [ticks], while it runs

    bool IsRunning() const { return running; }

    /// Ends the measurement, and traces where the time went since construction, the most costly place first.
    /// A second report shows the same.
    void Report();

private:
    void Stop();
    void ReportEntry(const ProfileEntry& entry) const;
    std::uint32_t FindFreeSlot(std::uint32_t from) const;

    std::optional<TmyTimeCounter> clock;
    bool running = false;
    std::int64_t runningTicks = 0; ///< from construction to the stop
    std::uint32_t used = 0;
    std::array<ProfileEntry, kEntries> entries{};
};

/// A stretch of code from its construction to its end. Costs two looks at the clock.
class ProfileScope {
public:
    /// profiler  null, as without the trace: nothing is measured
    ProfileScope(TmyProfiler* profiler, const char* source, const char* function, std::uint32_t line);
    ~ProfileScope();
    ProfileScope(const ProfileScope&) = delete;
    ProfileScope& operator=(const ProfileScope&) = delete;

private:
    TmyProfiler* owner;
    ProfileEntry* entry;
    std::int64_t entered = 0; ///< [ticks]
};

} // namespace orva::toolkit
