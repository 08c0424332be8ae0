#include "tests/toolkit/OpenHandles.h"

#include <cstdint>
#include <windows.h>

namespace orva::test {

int CountOpenHandles() {
    constexpr std::uintptr_t kMost = 0x8000; // handles are small multiples of 4
    int count = 0;
    for (std::uintptr_t value = 4; value < kMost; value += 4) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0 ? 1 : 0;
    }
    return count;
}

} // namespace orva::test
