#include "toolkit/TmyProfiler.h"

#include "toolkit/Trace.h"
#include "toolkit/TypeRegistry.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <vector>

namespace orva::toolkit {
namespace {

// Two names, line, hits, chain, and the time on its own boundary.
static_assert(sizeof(void*) != 4 || sizeof(ProfileEntry) == 32);

constexpr double kPercent = 100.0;
constexpr double kMicrosecondsPerSecond = 1e6;

bool IsSame(const char* a, const char* b) {
    return a == b || std::strcmp(a, b) == 0;
}

} // namespace

TmyProfiler::TmyProfiler() {
    RegisterType(this, TypeId::Profiler, "Profiler");
    try {
        clock.emplace();
        running = true;
    } catch (const std::exception& failure) {
        Trace(this, 0, "%s", failure.what());
    }
}

ProfileEntry* TmyProfiler::Find(const char* source, const char* function, std::uint32_t line) {
    if (!running) {
        return nullptr;
    }
    std::uint32_t slot = line % kEntries;
    if (entries[slot].source != nullptr) {
        while (entries[slot].line != line || !IsSame(entries[slot].source, source) ||
               !IsSame(entries[slot].function, function)) {
            if (entries[slot].chain == 0) {
                if (used == kEntries) {
                    return nullptr;
                }
                const std::uint32_t fresh = FindFreeSlot(slot);
                entries[slot].chain = fresh + 1;
                slot = fresh;
                break;
            }
            slot = entries[slot].chain - 1;
        }
    }
    ProfileEntry& entry = entries[slot];
    if (entry.source == nullptr) {
        entry = {source, function, line, 0, 0, 0};
        ++used;
    }
    return &entry;
}

std::uint32_t TmyProfiler::FindFreeSlot(std::uint32_t from) const {
    while (entries[from].source != nullptr) {
        from = (from + 1) % kEntries;
    }
    return from;
}

void TmyProfiler::Stop() {
    if (running) {
        running = false;
        runningTicks = clock->Now() - clock->Start();
    }
}

void TmyProfiler::Report() {
    Stop();
    Trace(this, 0, "Profiler report [running %.6lfsecs]", clock ? clock->ToSeconds(runningTicks) : 0.0);
    Trace(this, 0, "----------------");
    std::vector<const ProfileEntry*> visited;
    for (const ProfileEntry& entry : entries) {
        if (entry.hits > 0) {
            visited.push_back(&entry);
        }
    }
    std::stable_sort(visited.begin(), visited.end(),
                     [](const ProfileEntry* a, const ProfileEntry* b) { return a->ticks > b->ticks; });
    for (const ProfileEntry* entry : visited) {
        ReportEntry(*entry);
    }
    Trace(this, 0, "----------------");
}

void TmyProfiler::ReportEntry(const ProfileEntry& entry) const {
    const double seconds = clock->ToSeconds(entry.ticks);
    const double percent = runningTicks > 0 ? kPercent * seconds / clock->ToSeconds(runningTicks) : 0.0;
    Trace(this, 0, "%.3lf%% %s, %s[%d] %d hits, [%.6lfsec] <%.3lf", percent, entry.function, entry.source,
          static_cast<int>(entry.line), static_cast<int>(entry.hits), seconds,
          kMicrosecondsPerSecond * seconds / entry.hits);
}

ProfileScope::ProfileScope(TmyProfiler* profiler, const char* source, const char* function,
                           std::uint32_t line)
    : owner(profiler), entry(profiler == nullptr ? nullptr : profiler->Find(source, function, line)) {
    if (entry != nullptr) {
        ++entry->hits;
        entered = owner->Now();
    }
}

ProfileScope::~ProfileScope() {
    if (entry != nullptr && owner->IsRunning()) {
        entry->ticks += owner->Now() - entered;
    }
}

} // namespace orva::toolkit
