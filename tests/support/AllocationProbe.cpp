#include "tests/support/AllocationProbe.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#ifdef _WIN32
#include <malloc.h>
#endif
#include <new>

namespace orva::test {
namespace {

constexpr int kNever = -1;

#ifdef _WIN32
constexpr std::uint8_t kReleased = 0xDD; ///< fills released memory
#endif

std::atomic<std::uint64_t> allocations{0};
std::atomic<std::uint64_t> releases{0};
std::atomic<int> successesLeft{kNever};
std::atomic<bool> failsOn{false};
std::atomic<bool> struck{false};

bool MustFail() {
    if (failsOn && struck) {
        return true;
    }
    if (successesLeft == kNever) {
        return false;
    }
    if (successesLeft-- == 0) {
        struck = true;
        return true;
    }
    return false;
}

void* Take(std::size_t bytes) {
    ++allocations;
    return std::malloc(bytes == 0 ? 1 : bytes);
}

void Release(void* memory) {
    if (memory != nullptr) {
        ++releases;
#ifdef _WIN32
        // What the sanitizers would find natively: whoever still uses the memory goes wrong at once. (Stores
        // before a release that are not volatile are dropped.)
        std::fill_n(static_cast<volatile std::uint8_t*>(memory), _msize(memory), kReleased);
#endif
        std::free(memory);
    }
}

void* TakeOrThrow(std::size_t bytes) {
    void* memory = Take(bytes);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

} // namespace

std::uint64_t CountAllocations() {
    return allocations;
}

std::int64_t CountLiveAllocations() {
    return static_cast<std::int64_t>(allocations - releases);
}

AllocationFailure::AllocationFailure(int successes, Reach reach) {
    struck = false;
    failsOn = reach == Reach::FromThenOn;
    successesLeft = successes;
}

AllocationFailure::~AllocationFailure() {
    successesLeft = kNever;
    failsOn = false;
}

bool AllocationFailure::HasStruck() const {
    return struck;
}

} // namespace orva::test

void* operator new(std::size_t bytes) {
    return orva::test::TakeOrThrow(bytes);
}

void* operator new[](std::size_t bytes) {
    return orva::test::TakeOrThrow(bytes);
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return orva::test::MustFail() ? nullptr : orva::test::Take(bytes);
}

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return orva::test::MustFail() ? nullptr : orva::test::Take(bytes);
}

void operator delete(void* memory) noexcept {
    orva::test::Release(memory);
}

void operator delete[](void* memory) noexcept {
    orva::test::Release(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    orva::test::Release(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    orva::test::Release(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    orva::test::Release(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    orva::test::Release(memory);
}
