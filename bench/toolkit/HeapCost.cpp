// What an allocation costs: of the private heap, of the platform's own, and of the C library; and what part
// of it is the mutex. A plain program, so that it runs natively and under Wine alike. Each row is the time of
// one step, a free and an allocation, or of one mutex pair, over rounds of 200: median and 99.9th percentile.
#include "bench/toolkit/AllocationLoad.h"
#include "toolkit/HeapPlatform.h"
#include "toolkit/PrivateHeap.h"
#include "toolkit/TmyTimeCounter.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace orva::bench {
namespace {

using toolkit::HeapPlatform;
using toolkit::kRealHeapPlatform;
using toolkit::PrivateHeap;

constexpr int kStepsPerRound = 200;
constexpr std::size_t kRounds = 1000;
constexpr double kNanosecondsPerSecond = 1e9;
constexpr std::uint32_t kSerialized = 0;

/// Times `step` and prints a row.
template <class Step>
void Measure(const char* name, Step step) {
    const toolkit::TmyTimeCounter clock;
    std::vector<double> times;
    for (std::size_t round = 0; round < kRounds; ++round) {
        const std::int64_t start = clock.Now();
        for (int i = 0; i < kStepsPerRound; ++i) {
            step();
        }
        times.push_back(kNanosecondsPerSecond * clock.ToSeconds(clock.Now() - start) / kStepsPerRound);
    }
    std::sort(times.begin(), times.end());
    std::printf("%-44s %10.1f ns %10.1f ns\n", name, times[kRounds / 2], times[kRounds * 999 / 1000]);
}

struct CLibrary {
    static void* Allocate(std::size_t bytes) { return std::malloc(bytes); }
    static void Free(void* block) { std::free(block); }
};

/// The heap calls alone, with the platform's own locking.
class PlatformHeap {
public:
    PlatformHeap() : heap(kRealHeapPlatform.heapCreate(kSerialized, 0x100000, 0)) {}
    ~PlatformHeap() { kRealHeapPlatform.heapDestroy(heap); }
    PlatformHeap(const PlatformHeap&) = delete;
    PlatformHeap& operator=(const PlatformHeap&) = delete;

    void* Allocate(std::size_t bytes) { return kRealHeapPlatform.heapAlloc(heap, bytes); }
    void Free(void* block) { kRealHeapPlatform.heapFree(heap, block); }

private:
    void* heap;
};

template <class Allocator>
void MeasureLoad(const char* name, Allocator& allocator) {
    AllocationLoad<Allocator> load(allocator);
    Measure(name, [&] { load.Step(); });
}

void MeasureMutex() {
    void* mutex = kRealHeapPlatform.createMutex();
    Measure("a mutex pair", [&] {
        kRealHeapPlatform.waitForMutex(mutex);
        kRealHeapPlatform.releaseMutex(mutex);
    });
    kRealHeapPlatform.closeMutex(mutex);
}

/// The real calls, without locking.
HeapPlatform WithoutMutex() {
    HeapPlatform platform = kRealHeapPlatform;
    platform.waitForMutex = [](void*) {};
    platform.releaseMutex = [](void*) {};
    return platform;
}

void MeasureAll() {
    std::printf("%-44s %13s %13s\n", "", "median", "99.9 %");
    MeasureMutex();
    PrivateHeap heap(kRealHeapPlatform);
    MeasureLoad("private heap: free and allocate", heap);
    const HeapPlatform withoutMutex = WithoutMutex();
    PrivateHeap unlocked(withoutMutex);
    MeasureLoad("private heap without its mutex", unlocked);
    PlatformHeap platformHeap;
    MeasureLoad("platform heap: free and allocate", platformHeap);
    CLibrary cLibrary;
    MeasureLoad("C library: free and allocate", cLibrary);
}

} // namespace
} // namespace orva::bench

int main() {
    orva::bench::MeasureAll();
    return 0;
}
