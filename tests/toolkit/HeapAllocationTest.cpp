// The program that this is part of is linked with GlobalAllocation.cpp: all of it, GoogleTest too, runs on
// the private heap.
#include "toolkit/PrivateHeap.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

// Not every compiler declares the sized ones by itself.
void operator delete(void* memory, std::size_t bytes) noexcept;
void operator delete[](void* memory, std::size_t bytes) noexcept;
void operator delete(void* memory, std::size_t bytes, std::align_val_t alignment) noexcept;
void operator delete[](void* memory, std::size_t bytes, std::align_val_t alignment) noexcept;

namespace orva::toolkit {
namespace {

// Not constant: otherwise the compiler says itself that so much is too much.
volatile std::size_t hugeBytes = std::numeric_limits<std::size_t>::max() / 2 + 1;

/// Made before `main`, while other static objects are not.
std::vector<char> madeEarly(4000, 'x');

/// Bytes in use while the object lives, less those without it.
std::size_t Taken(std::size_t before) {
    return ProcessHeap().Statistics().usedBytes - before;
}

std::size_t Used() {
    return ProcessHeap().Statistics().usedBytes;
}

void ExpectAligned(const void* memory) {
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % 64, 0U);
}

struct alignas(64) CacheLine {
    char bytes[64];
};

TEST(HeapAllocation, SingleObjectsComeFromTheHeap) {
    const std::size_t before = Used();
    auto* object = new char[1];
    ExpectAligned(object);
    EXPECT_EQ(Taken(before), 128U);
    delete[] object;
    EXPECT_EQ(Used(), before);
    auto* number = new double(1.0);
    ExpectAligned(number);
    EXPECT_EQ(Taken(before), 128U);
    delete number;
    EXPECT_EQ(Used(), before);
}

TEST(HeapAllocation, EveryFormTakesAndGives) {
    const std::size_t before = Used();
    const auto alignment = std::align_val_t{64};
    const auto check = [&](void* memory) {
        ExpectAligned(memory);
        EXPECT_EQ(Taken(before), 192U);
        return memory;
    };
    ::operator delete(check(::operator new(100)));
    ::operator delete (check(::operator new(100)), std::size_t{100});
    ::operator delete(check(::operator new(100, std::nothrow)), std::nothrow);
    ::operator delete(check(::operator new(100, alignment)), alignment);
    ::operator delete (check(::operator new(100, alignment)), std::size_t{100}, alignment);
    ::operator delete(check(::operator new(100, alignment, std::nothrow)), alignment, std::nothrow);
    ::operator delete[](check(::operator new[](100)));
    ::operator delete[](check(::operator new[](100)), std::size_t{100});
    ::operator delete[](check(::operator new[](100, std::nothrow)), std::nothrow);
    ::operator delete[](check(::operator new[](100, alignment)), alignment);
    ::operator delete[](check(::operator new[](100, alignment)), std::size_t{100}, alignment);
    ::operator delete[](check(::operator new[](100, alignment, std::nothrow)), alignment, std::nothrow);
    EXPECT_EQ(Used(), before);
}

TEST(HeapAllocation, NoBytesAreOneByte) {
    const std::size_t before = Used();
    void* first = ::operator new(0);
    void* second = ::operator new(0, std::nothrow);
    EXPECT_NE(first, nullptr);
    EXPECT_NE(second, nullptr);
    EXPECT_NE(first, second);
    EXPECT_EQ(Taken(before), 256U);
    ::operator delete(first);
    ::operator delete(second);
}

TEST(HeapAllocation, DeletingNullDoesNothing) {
    const std::size_t before = Used();
    ::operator delete(nullptr);
    ::operator delete[](nullptr);
    ::operator delete (nullptr, std::align_val_t{64});
    EXPECT_EQ(Used(), before);
}

TEST(HeapAllocation, TooMuchIsBadAlloc) {
    EXPECT_THROW(::operator delete(::operator new(hugeBytes)), std::bad_alloc);
    EXPECT_THROW(::operator delete[](::operator new[](hugeBytes)), std::bad_alloc);
    EXPECT_THROW(::operator delete(::operator new (hugeBytes, std::align_val_t{64})), std::bad_alloc);
    EXPECT_EQ(::operator new(hugeBytes, std::nothrow), nullptr);
    EXPECT_EQ(::operator new[](hugeBytes, std::nothrow), nullptr);
    EXPECT_EQ(::operator new (hugeBytes, std::align_val_t{64}, std::nothrow), nullptr);
}

TEST(HeapAllocation, AlignsUpTo64) {
    const auto line = std::make_unique<CacheLine>();
    ExpectAligned(line.get());
    const std::vector<CacheLine> lines(3);
    ExpectAligned(lines.data());
    EXPECT_THROW(::operator delete(::operator new (1, std::align_val_t{128})), std::bad_alloc);
    EXPECT_EQ(::operator new (1, std::align_val_t{128}, std::nothrow), nullptr);
}

TEST(HeapAllocation, StaticObjectsAreInTheHeapToo) {
    ExpectAligned(madeEarly.data());
    EXPECT_EQ(madeEarly.back(), 'x');
    const std::size_t before = Used();
    std::vector<char>().swap(madeEarly);
    EXPECT_EQ(before - Used(), 4096U);
}

TEST(HeapAllocation, TheLibraryOfTheLanguageRunsOnIt) {
    const std::size_t before = Used();
    {
        std::vector<std::string> lines;
        for (int i = 0; i < 100; ++i) {
            lines.push_back(std::string(100, 'x') + std::to_string(i));
        }
        EXPECT_GE(Taken(before), 100U * 192U);
        std::thread([&] { lines.emplace_back(200, 'y'); }).join();
        EXPECT_EQ(lines.back(), std::string(200, 'y'));
    }
    EXPECT_EQ(ProcessHeap().Verify(), nullptr);
    EXPECT_LE(Used(), before + 1024) << "the thread's own records at most";
}

} // namespace
} // namespace orva::toolkit
