#include "tools/orva-host/ProcessResources.h"

#include <algorithm>
#include <vector>
// clang-format off
#include <windows.h> // what tlhelp32.h needs and does not include
#include <tlhelp32.h>
// clang-format on

namespace orva::tools {

namespace {

BOOL CALLBACK CountWindow(HWND /*window*/, LPARAM count) {
    ++*reinterpret_cast<int*>(count);
    return TRUE;
}

BOOL CALLBACK CountWithChildren(HWND window, LPARAM count) {
    EnumChildWindows(window, CountWindow, count);
    return CountWindow(window, count);
}

int CountHandles() {
    constexpr std::uintptr_t kMost = 0x4000; // handles are small multiples of 4
    int count = 0;
    for (std::uintptr_t value = 4; value < kMost; value += 4) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0 ? 1 : 0;
    }
    return count;
}

int CountGraphicsObjects() {
    constexpr std::uintptr_t kMost = 0x10000; // the lower half is an index, and stands for the whole
    int count = 0;
    for (std::uintptr_t value = 1; value < kMost; ++value) {
        count += GetObjectType(reinterpret_cast<HGDIOBJ>(value)) != 0 ? 1 : 0;
    }
    return count;
}

int CountThreads() {
    const HANDLE threads = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0); // the whole system's
    THREADENTRY32 thread{};
    thread.dwSize = sizeof thread;
    int count = 0;
    for (BOOL isThere = Thread32First(threads, &thread); isThere != FALSE;
         isThere = Thread32Next(threads, &thread)) {
        count += thread.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    }
    CloseHandle(threads);
    return count;
}

int CountHeapBlocks() {
    std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr));
    const DWORD found = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    heaps.resize(std::min<std::size_t>(found, heaps.size()));
    int count = 0;
    for (const HANDLE heap : heaps) {
        PROCESS_HEAP_ENTRY entry{};
        HeapLock(heap);
        while (HeapWalk(heap, &entry) != 0) {
            count += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? 1 : 0;
        }
        HeapUnlock(heap);
    }
    return count;
}

std::uint64_t SumMemory() {
    std::uint64_t sum = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (std::uintptr_t place = 0;
         VirtualQuery(reinterpret_cast<void*>(place), &region, sizeof region) == sizeof region;) {
        sum += region.State == MEM_COMMIT && region.Type == MEM_PRIVATE ? region.RegionSize : 0;
        const std::uintptr_t next = reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize;
        if (next <= place) {
            break; // the end of the address space
        }
        place = next;
    }
    return sum;
}

} // namespace

ProcessResources ProcessResources::Count() {
    ProcessResources resources;
    resources.handles = CountHandles();
    EnumThreadWindows(GetCurrentThreadId(), CountWithChildren, reinterpret_cast<LPARAM>(&resources.windows));
    resources.graphicsObjects = CountGraphicsObjects();
    resources.threads = CountThreads();
    resources.memory = SumMemory();
    resources.heapBlocks = CountHeapBlocks();
    return resources;
}

} // namespace orva::tools
