#include "toolkit/HeapPlatform.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <cstdlib>
#include <malloc.h>
#include <mutex>
#include <new>
#endif

namespace orva::toolkit {
namespace {

#ifdef _WIN32

void* CreateHeap(std::uint32_t flags, std::size_t initialBytes, std::size_t mostBytes) {
    return HeapCreate(flags, initialBytes, mostBytes);
}

void DestroyHeap(void* heap) {
    HeapDestroy(heap);
}

void* AllocateFrom(void* heap, std::size_t bytes) {
    return HeapAlloc(heap, 0, bytes);
}

void FreeTo(void* heap, void* memory) {
    HeapFree(heap, 0, memory);
}

std::size_t SizeIn(void* heap, const void* memory) {
    return HeapSize(heap, 0, memory);
}

void* MakeMutex() {
    return CreateMutexA(nullptr, FALSE, nullptr);
}

void WaitFor(void* mutex) {
    WaitForSingleObject(mutex, INFINITE);
}

void Release(void* mutex) {
    ReleaseMutex(mutex);
}

void CloseMutex(void* mutex) {
    CloseHandle(mutex);
}

#else

// Everything here stays away from operator new, which may end in the private heap.

void* CreateHeap(std::uint32_t /*flags*/, std::size_t /*initialBytes*/, std::size_t /*mostBytes*/) {
    return std::malloc(1);
}

void DestroyHeap(void* heap) {
    std::free(heap);
}

void* AllocateFrom(void* /*heap*/, std::size_t bytes) {
    return std::malloc(bytes);
}

void FreeTo(void* /*heap*/, void* memory) {
    std::free(memory);
}

std::size_t SizeIn(void* /*heap*/, const void* memory) {
    return malloc_usable_size(const_cast<void*>(memory));
}

void* MakeMutex() {
    void* memory = std::malloc(sizeof(std::mutex));
    return memory == nullptr ? nullptr : new (memory) std::mutex;
}

void WaitFor(void* mutex) {
    static_cast<std::mutex*>(mutex)->lock();
}

void Release(void* mutex) {
    static_cast<std::mutex*>(mutex)->unlock();
}

void CloseMutex(void* mutex) {
    static_cast<std::mutex*>(mutex)->~mutex();
    std::free(mutex);
}

#endif

} // namespace

constinit const HeapPlatform kRealHeapPlatform{CreateHeap, DestroyHeap, AllocateFrom, FreeTo,    SizeIn,
                                               MakeMutex,  WaitFor,     Release,      CloseMutex};

} // namespace orva::toolkit
