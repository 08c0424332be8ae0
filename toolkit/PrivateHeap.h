/// The pool that all memory of the system comes from.
#pragma once

#include "toolkit/HeapPlatform.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace orva::toolkit {

/// What a heap holds at one moment.
struct PrivateHeapStatistics {
    std::size_t regions = 0;
    std::size_t regionBytes = 0; ///< of all regions, as the platform tells them
    std::size_t usedBlocks = 0;
    std::size_t usedBytes = 0; ///< headers included
    std::size_t freeBlocks = 0;
    std::size_t freeBytes = 0; ///< headers included
};

/// Memory aligned to 64 bytes, from blocks kept in regions of a platform heap. Best fit; a freed block joins
/// its free neighbours, and a region without used blocks goes back to the platform.
///
/// Every public operation is one wait for and one release of a mutex, so all may be called from any thread,
/// and none may be called from a real-time path. Without the mutex, which the first call makes, there is no
/// memory.
///
/// Constant-initialised and trivially destroyed: a static instance serves allocations before and after all
/// other static objects.
class PrivateHeap {
public:
    static constexpr std::size_t kAlignment = 64;

    /// platform  must outlive the heap
    explicit constexpr PrivateHeap(const HeapPlatform& heapPlatform) : platform(&heapPlatform) {}
    PrivateHeap(const PrivateHeap&) = delete;
    PrivateHeap& operator=(const PrivateHeap&) = delete;

    /// Null for 0 bytes and when the platform has no more.
    void* Allocate(std::size_t bytes);

    /// Frees the block that `memory` points into. Null, an address outside the heap, and a block that is free
    /// already are ignored.
    void Free(void* memory);

    /// Makes room for `bytes`: the same pointer if the block is large enough, else a new block with the old
    /// contents; null, the old block untouched, when there is none. A null `memory` allocates. 0 bytes fit
    /// every block. An address outside the heap, or in a free block, is returned as it is.
    void* Reallocate(void* memory, std::size_t bytes);

    /// Closes the mutex if nothing is allocated, for the moment before the library is unloaded. No other
    /// thread may be inside the heap; a later call makes a new mutex.
    void Close();

    PrivateHeapStatistics Statistics();

    /// Checks all that must hold of regions and blocks; returns the first thing found broken, or null.
    const char* Verify();

private:
    struct Region;
    struct Block;
    class Lock;

    void* EnsureMutex();
    void* AllocateLocked(std::size_t bytes);
    void FreeLocked(void* memory);
    bool EnsureHeap();
    void DestroyUnusedHeap();
    Block* FindFreeBlock(std::size_t size) const;
    Block* AddRegion(std::size_t size);
    void RemoveRegion(Region* region);
    Block* FindUsedBlock(const void* memory) const;
    const char* VerifyRegion(const Region& region) const;
    static const char* VerifyBlock(const Block& block, const Block* previous, const Region& region);
    static void Take(Block* block, std::size_t size);
    static void JoinNext(Block* block);

    const HeapPlatform* platform;
    std::atomic<void*> mutex = nullptr;
    void* heap = nullptr; ///< exists as long as there is a region
    Region* regions = nullptr;
};

/// The heap of this library, behind `operator new` where GlobalAllocation.cpp is linked in.
PrivateHeap& ProcessHeap();

} // namespace orva::toolkit
