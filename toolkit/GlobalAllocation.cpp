// The global allocation operations, all ending in the private heap. Linking this file in puts a whole program
// or library on it.
#include "toolkit/PrivateHeap.h"

#include <cstddef>
#include <new>

namespace {

using orva::toolkit::PrivateHeap;
using orva::toolkit::ProcessHeap;

void* Take(std::size_t bytes) noexcept {
    return ProcessHeap().Allocate(bytes == 0 ? 1 : bytes);
}

void* TakeAligned(std::size_t bytes, std::align_val_t alignment) noexcept {
    return static_cast<std::size_t>(alignment) <= PrivateHeap::kAlignment ? Take(bytes) : nullptr;
}

void* OrThrow(void* memory) {
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void Give(void* memory) noexcept {
    if (memory != nullptr) {
        ProcessHeap().Free(memory);
    }
}

/// Gives the mutex back when the library is unloaded.
class HeapCloser {
public:
    HeapCloser() = default;
    ~HeapCloser() { ProcessHeap().Close(); }
    HeapCloser(const HeapCloser&) = delete;
    HeapCloser& operator=(const HeapCloser&) = delete;
};

// The first static object, and so the last to go: the others' memory is free by then.
[[gnu::init_priority(101)]] const HeapCloser kHeapCloser;

} // namespace

void* operator new(std::size_t bytes) {
    return OrThrow(Take(bytes));
}

void* operator new[](std::size_t bytes) {
    return OrThrow(Take(bytes));
}

void* operator new(std::size_t bytes, const std::nothrow_t& /*tag*/) noexcept {
    return Take(bytes);
}

void* operator new[](std::size_t bytes, const std::nothrow_t& /*tag*/) noexcept {
    return Take(bytes);
}

void* operator new(std::size_t bytes, std::align_val_t alignment) {
    return OrThrow(TakeAligned(bytes, alignment));
}

void* operator new[](std::size_t bytes, std::align_val_t alignment) {
    return OrThrow(TakeAligned(bytes, alignment));
}

void* operator new(std::size_t bytes, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept {
    return TakeAligned(bytes, alignment);
}

void* operator new[](std::size_t bytes, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept {
    return TakeAligned(bytes, alignment);
}

void operator delete(void* memory) noexcept {
    Give(memory);
}

void operator delete[](void* memory) noexcept {
    Give(memory);
}

void operator delete(void* memory, std::size_t /*bytes*/) noexcept {
    Give(memory);
}

void operator delete[](void* memory, std::size_t /*bytes*/) noexcept {
    Give(memory);
}

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
    Give(memory);
}

void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept {
    Give(memory);
}

void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept {
    Give(memory);
}

void operator delete[](void* memory, std::align_val_t /*alignment*/) noexcept {
    Give(memory);
}

void operator delete(void* memory, std::size_t /*bytes*/, std::align_val_t /*alignment*/) noexcept {
    Give(memory);
}

void operator delete[](void* memory, std::size_t /*bytes*/, std::align_val_t /*alignment*/) noexcept {
    Give(memory);
}

void operator delete(void* memory, std::align_val_t /*alignment*/, const std::nothrow_t& /*tag*/) noexcept {
    Give(memory);
}

void operator delete[](void* memory, std::align_val_t /*alignment*/, const std::nothrow_t& /*tag*/) noexcept {
    Give(memory);
}
