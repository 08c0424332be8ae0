/// The same allocations for every allocator.
#pragma once

#include "tests/support/RandomSource.h"

#include <array>
#include <cstddef>

namespace orva::bench {

/// Many blocks alive, of 1 to 1024 bytes, small ones more often; each step frees one of them, by chance, and
/// allocates another.
template <class Allocator>
class AllocationLoad {
public:
    static constexpr std::uint32_t kAlive = 200;

    explicit AllocationLoad(Allocator& loadedAllocator) : allocator(loadedAllocator) {
        for (void*& block : alive) {
            block = allocator.Allocate(Bytes());
        }
    }
    ~AllocationLoad() {
        for (void* block : alive) {
            allocator.Free(block);
        }
    }
    AllocationLoad(const AllocationLoad&) = delete;
    AllocationLoad& operator=(const AllocationLoad&) = delete;

    void Step() {
        void*& block = alive[random.Below(kAlive)];
        allocator.Free(block);
        block = allocator.Allocate(Bytes());
    }

private:
    std::size_t Bytes() { return 1 + random.Below(1U << (3 + random.Below(8))); }

    Allocator& allocator;
    test::RandomSource random{1};
    std::array<void*, kAlive> alive{};
};

} // namespace orva::bench
