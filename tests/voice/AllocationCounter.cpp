#include "tests/voice/AllocationCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> allocations{0};

void* Allocate(std::size_t size) noexcept {
    ++allocations;
    return std::malloc(size == 0 ? 1 : size);
}

} // namespace

void* operator new(std::size_t size) {
    if (void* memory = Allocate(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace orva::voice::test {

long AllocationCount() {
    return allocations;
}

} // namespace orva::voice::test
