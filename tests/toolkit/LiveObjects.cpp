#include "tests/toolkit/LiveObjects.h"

#include <cstdint>
#include <windows.h>

namespace orva::test {

namespace {

BOOL CALLBACK CountOne(HWND /*window*/, LPARAM count) {
    ++*reinterpret_cast<int*>(count);
    return TRUE;
}

BOOL CALLBACK CountWithChildren(HWND window, LPARAM count) {
    CountOne(window, count);
    EnumChildWindows(window, CountOne, count);
    return TRUE;
}

} // namespace

int CountGdiObjects() {
    // The lower half of a handle is an index, and enough to name the object.
    constexpr std::uintptr_t kEnd = 0x10000;
    int count = 0;
    for (std::uintptr_t index = 1; index < kEnd; ++index) {
        count += GetObjectType(reinterpret_cast<HGDIOBJ>(index)) != 0 ? 1 : 0;
    }
    return count;
}

int CountWindows() {
    int count = 0;
    EnumThreadWindows(GetCurrentThreadId(), CountWithChildren, reinterpret_cast<LPARAM>(&count));
    for (HWND window = FindWindowExA(HWND_MESSAGE, nullptr, nullptr, nullptr); window != nullptr;
         window = FindWindowExA(HWND_MESSAGE, window, nullptr, nullptr)) {
        count += GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId() ? 1 : 0;
    }
    return count;
}

} // namespace orva::test
