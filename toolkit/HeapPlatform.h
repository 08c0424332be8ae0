/// What the private heap needs of the platform.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orva::toolkit {

/// The platform's heap and mutex calls, named as on Windows. Tests put theirs there.
struct HeapPlatform {
    void* (*heapCreate)(std::uint32_t flags, std::size_t initialBytes,
                        std::size_t mostBytes); ///< null: failed
    void (*heapDestroy)(void* heap);
    void* (*heapAlloc)(void* heap, std::size_t bytes); ///< null: failed
    void (*heapFree)(void* heap, void* memory);
    std::size_t (*heapSize)(void* heap, const void* memory); ///< all that may be used; SIZE_MAX: failed
    void* (*createMutex)();                                  ///< free, without a name; null: failed
    void (*waitForMutex)(void* mutex);                       ///< without a time limit
    void (*releaseMutex)(void* mutex);
    void (*closeMutex)(void* mutex);
};

/// The real calls. Natively the C library stands in for Windows.
extern const HeapPlatform kRealHeapPlatform;

} // namespace orva::toolkit
