#include "tests/toolkit/FakeHeapPlatform.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <new>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

constexpr std::size_t kAlignment = 64;

FakeHeapPlatform* current = nullptr;
std::atomic<int> successesLeft{FakeHeapPlatform::kNever};
std::atomic<bool> failsForGood{false};
std::atomic<int> liveMutexes{0};
std::atomic<int> waits{0};
std::atomic<int> releases{0};
char theHeap = 0;

bool MustFail() {
    if (successesLeft == FakeHeapPlatform::kNever) {
        return false;
    }
    if (successesLeft > 0) {
        --successesLeft;
        return false;
    }
    successesLeft = failsForGood ? 0 : FakeHeapPlatform::kNever;
    return true;
}

void Log(const std::string& line) {
    if (current->keepsLog) {
        current->log.push_back(line);
    }
}

void* CreateHeap(std::uint32_t flags, std::size_t initialBytes, std::size_t mostBytes) {
    Log("create " + std::to_string(flags) + " " + std::to_string(initialBytes) + " " +
        std::to_string(mostBytes));
    EXPECT_FALSE(current->hasHeap) << "a second heap";
    if (MustFail()) {
        return nullptr;
    }
    current->hasHeap = true;
    return &theHeap;
}

void DestroyHeap(void* heap) {
    Log("destroy");
    EXPECT_EQ(heap, &theHeap);
    EXPECT_TRUE(current->hasHeap);
    EXPECT_TRUE(current->memories.empty()) << "memory is left in the heap";
    current->hasHeap = false;
}

void* AllocateFrom(void* heap, std::size_t bytes) {
    Log("alloc " + std::to_string(bytes));
    EXPECT_EQ(heap, &theHeap);
    EXPECT_TRUE(current->hasHeap);
    if (MustFail()) {
        return nullptr;
    }
    const std::size_t told = bytes + current->sizeSurplus;
    // Room for moving to the offset wanted, and for the way back to what malloc gave.
    char* raw = static_cast<char*>(std::malloc(told + 3 * kAlignment));
    const auto address = reinterpret_cast<std::uintptr_t>(raw);
    const std::uintptr_t aligned = (address + 2 * kAlignment - 1) / kAlignment * kAlignment;
    char* memory = raw + (aligned - address) + current->addressOffset;
    *(reinterpret_cast<char**>(raw + (aligned - address)) - 1) = raw;
    current->memories[memory] = {bytes, told};
    current->newestMemory = memory;
    return memory;
}

void FreeTo(void* heap, void* memory) {
    Log("free");
    EXPECT_EQ(heap, &theHeap);
    ASSERT_EQ(current->memories.erase(memory), 1U) << "not allocated";
    char* aligned = static_cast<char*>(memory) - reinterpret_cast<std::uintptr_t>(memory) % kAlignment;
    std::free(*(reinterpret_cast<char**>(aligned) - 1));
}

std::size_t SizeIn(void* heap, const void* memory) {
    EXPECT_EQ(heap, &theHeap);
    return current->sizeFails ? std::numeric_limits<std::size_t>::max()
                              : current->memories.at(const_cast<void*>(memory)).told;
}

void* MakeMutex() {
    if (MustFail()) {
        return nullptr;
    }
    ++liveMutexes;
    return new std::mutex;
}

void WaitFor(void* mutex) {
    static_cast<std::mutex*>(mutex)->lock();
    ++waits;
}

void Release(void* mutex) {
    ++releases;
    static_cast<std::mutex*>(mutex)->unlock();
}

void CloseMutex(void* mutex) {
    --liveMutexes;
    delete static_cast<std::mutex*>(mutex);
}

constexpr toolkit::HeapPlatform kCalls{CreateHeap, DestroyHeap, AllocateFrom, FreeTo,    SizeIn,
                                       MakeMutex,  WaitFor,     Release,      CloseMutex};

} // namespace

FakeHeapPlatform::FakeHeapPlatform() {
    current = this;
    successesLeft = kNever;
    liveMutexes = 0;
    waits = 0;
    releases = 0;
}

FakeHeapPlatform::~FakeHeapPlatform() {
    EXPECT_TRUE(memories.empty()) << "the heap kept memory";
    EXPECT_FALSE(hasHeap);
    EXPECT_EQ(liveMutexes, 0);
    EXPECT_EQ(waits, releases);
    current = nullptr;
}

const toolkit::HeapPlatform& FakeHeapPlatform::Calls() const {
    return kCalls;
}

void FakeHeapPlatform::FailAfter(int successes, bool forGood) {
    failsForGood = forGood;
    successesLeft = successes;
}

int FakeHeapPlatform::LiveMutexes() {
    return liveMutexes;
}

int FakeHeapPlatform::Waits() {
    return waits;
}

int FakeHeapPlatform::Releases() {
    return releases;
}

} // namespace orva::test
