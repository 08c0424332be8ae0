#include "toolkit/PrivateHeap.h"

#include <cstring>
#include <limits>
#include <type_traits>

namespace orva::toolkit {

/// Stands at the start of the platform's memory.
struct PrivateHeap::Region {
    Region* next;
    Region* previous;
    Block* firstBlock;
    std::size_t size;      ///< of the platform's memory, from here on
    std::size_t freeBytes; ///< of the free blocks, headers included

    /// From the region's start to its first block.
    std::size_t FirstBlockOffset() const;
    /// What its blocks fill; the last bytes that make no whole unit are lost.
    std::size_t BlockSpace() const;
};

/// Stands before the memory it describes. A region's blocks follow each other without a gap; no two
/// neighbours are both free.
struct alignas(PrivateHeap::kAlignment) PrivateHeap::Block {
    Block* next;
    Block* previous;
    Region* region;
    std::size_t size; ///< with this header, a multiple of the alignment
    std::uint32_t inUse : 1;
};

namespace {

constexpr std::uint32_t kNoSerialization = 1; // HEAP_NO_SERIALIZE: the mutex does it
constexpr std::size_t kInitialHeapBytes = 0x100000;
constexpr std::size_t kNoLimit = 0;
constexpr std::size_t kPage = 4096;
// A page less one byte rounds up; the other 83 are for a region's header and the way to an aligned address.
constexpr std::size_t kRegionExtra = 4178;
constexpr std::size_t kHeapSizeFailed = std::numeric_limits<std::size_t>::max();
constexpr std::size_t kHeader = PrivateHeap::kAlignment;
constexpr std::size_t kMostBytes =
    std::numeric_limits<std::size_t>::max() / 2; // keeps the sums below from wrapping

std::uintptr_t AddressOf(const void* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer);
}

constexpr std::size_t RoundDown(std::size_t bytes, std::size_t unit) {
    return bytes & ~(unit - 1);
}

constexpr std::size_t BlockSize(std::size_t bytes) {
    return RoundDown(bytes + kHeader + PrivateHeap::kAlignment - 1, PrivateHeap::kAlignment);
}

constexpr std::size_t RegionSize(std::size_t blockSize) {
    return RoundDown(blockSize + kRegionExtra, kPage);
}

template <class Target>
Target* At(void* base, std::size_t offset) {
    return reinterpret_cast<Target*>(static_cast<char*>(base) + offset);
}

constinit PrivateHeap processHeap(kRealHeapPlatform);
static_assert(std::is_trivially_destructible_v<PrivateHeap>);

} // namespace

std::size_t PrivateHeap::Region::FirstBlockOffset() const {
    const std::uintptr_t start = AddressOf(this);
    return RoundDown(start + sizeof(Region) + kAlignment - 1, kAlignment) - start;
}

std::size_t PrivateHeap::Region::BlockSpace() const {
    return RoundDown(size - FirstBlockOffset(), kAlignment);
}

/// The mutex pair around each operation.
class PrivateHeap::Lock {
public:
    explicit Lock(PrivateHeap& owner) : platform(*owner.platform), mutex(owner.EnsureMutex()) {
        if (mutex != nullptr) {
            platform.waitForMutex(mutex);
        }
    }
    ~Lock() {
        if (mutex != nullptr) {
            platform.releaseMutex(mutex);
        }
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    bool Holds() const { return mutex != nullptr; }

private:
    const HeapPlatform& platform;
    void* mutex;
};

PrivateHeap& ProcessHeap() {
    return processHeap;
}

void* PrivateHeap::Allocate(std::size_t bytes) {
    const Lock lock(*this);
    return lock.Holds() ? AllocateLocked(bytes) : nullptr;
}

void PrivateHeap::Free(void* memory) {
    const Lock lock(*this);
    if (lock.Holds()) {
        FreeLocked(memory);
    }
}

void* PrivateHeap::Reallocate(void* memory, std::size_t bytes) {
    const Lock lock(*this);
    if (!lock.Holds()) {
        return memory;
    }
    if (memory == nullptr) {
        return AllocateLocked(bytes);
    }
    Block* block = FindUsedBlock(memory);
    if (block == nullptr || (bytes <= kMostBytes && BlockSize(bytes) <= block->size)) {
        return memory;
    }
    void* larger = AllocateLocked(bytes);
    if (larger != nullptr) {
        std::memcpy(larger, At<char>(block, kHeader), block->size - kHeader);
        FreeLocked(memory);
    }
    return larger;
}

void PrivateHeap::Close() {
    if (regions == nullptr) {
        if (void* unused = mutex.exchange(nullptr); unused != nullptr) {
            platform->closeMutex(unused);
        }
    }
}

void* PrivateHeap::EnsureMutex() {
    void* present = mutex.load(std::memory_order_acquire);
    if (present != nullptr) {
        return present;
    }
    void* made = platform->createMutex();
    if (made != nullptr && !mutex.compare_exchange_strong(present, made)) {
        platform->closeMutex(made); // another thread was first, and `present` is what it made
        return present;
    }
    return made;
}

void* PrivateHeap::AllocateLocked(std::size_t bytes) {
    if (bytes == 0 || bytes > kMostBytes || !EnsureHeap()) {
        return nullptr;
    }
    const std::size_t size = BlockSize(bytes);
    Block* block = FindFreeBlock(size);
    if (block == nullptr) {
        block = AddRegion(size);
    }
    if (block == nullptr) {
        DestroyUnusedHeap();
        return nullptr;
    }
    Take(block, size);
    return At<void>(block, kHeader);
}

bool PrivateHeap::EnsureHeap() {
    if (heap == nullptr) {
        heap = platform->heapCreate(kNoSerialization, kInitialHeapBytes, kNoLimit);
    }
    return heap != nullptr;
}

void PrivateHeap::DestroyUnusedHeap() {
    if (regions == nullptr) {
        platform->heapDestroy(heap);
        heap = nullptr;
    }
}

PrivateHeap::Block* PrivateHeap::FindFreeBlock(std::size_t size) const {
    Block* best = nullptr;
    for (const Region* region = regions; region != nullptr; region = region->next) {
        if (region->freeBytes < size) {
            continue;
        }
        for (Block* block = region->firstBlock; block != nullptr; block = block->next) {
            if (block->inUse != 0 || block->size < size) {
                continue;
            }
            if (block->size == size) {
                return block;
            }
            if (best == nullptr || block->size <= best->size) { // the later of two equal ones
                best = block;
            }
        }
    }
    return best;
}

PrivateHeap::Block* PrivateHeap::AddRegion(std::size_t size) {
    const std::size_t asked = RegionSize(size);
    void* memory = platform->heapAlloc(heap, asked);
    if (memory == nullptr) {
        return nullptr;
    }
    const std::size_t told = platform->heapSize(heap, memory);
    auto* region = static_cast<Region*>(memory);
    *region = {regions, nullptr, nullptr, told == kHeapSizeFailed ? asked : told, 0};
    if (regions != nullptr) {
        regions->previous = region;
    }
    regions = region;

    auto* block = At<Block>(region, region->FirstBlockOffset());
    *block = {nullptr, nullptr, region, region->BlockSpace(), 0};
    region->firstBlock = block;
    region->freeBytes = block->size;
    return block;
}

/// Puts the front of a free block to use; what remains stays free.
void PrivateHeap::Take(Block* block, std::size_t size) {
    if (block->size > size) {
        auto* rest = At<Block>(block, size);
        *rest = {block->next, block, block->region, block->size - size, 0};
        if (rest->next != nullptr) {
            rest->next->previous = rest;
        }
        block->next = rest;
        block->size = size;
    }
    block->inUse = 1;
    block->region->freeBytes -= size;
}

void PrivateHeap::FreeLocked(void* memory) {
    Block* block = FindUsedBlock(memory);
    if (block == nullptr) {
        return;
    }
    Region* region = block->region;
    block->inUse = 0;
    region->freeBytes += block->size;
    if (block->previous != nullptr && block->previous->inUse == 0) {
        block = block->previous;
        JoinNext(block);
    }
    if (block->next != nullptr && block->next->inUse == 0) {
        JoinNext(block);
    }
    if (block->previous == nullptr && block->next == nullptr) {
        RemoveRegion(region);
    }
}

void PrivateHeap::JoinNext(Block* block) {
    block->size += block->next->size;
    block->next = block->next->next;
    if (block->next != nullptr) {
        block->next->previous = block;
    }
}

void PrivateHeap::RemoveRegion(Region* region) {
    if (region->next != nullptr) {
        region->next->previous = region->previous;
    }
    (region->previous != nullptr ? region->previous->next : regions) = region->next;
    platform->heapFree(heap, region);
    DestroyUnusedHeap();
}

PrivateHeap::Block* PrivateHeap::FindUsedBlock(const void* memory) const {
    const std::uintptr_t address = AddressOf(memory);
    for (const Region* region = regions; region != nullptr; region = region->next) {
        if (address < AddressOf(region) || address - AddressOf(region) >= region->size) {
            continue;
        }
        for (Block* block = region->firstBlock; block != nullptr; block = block->next) {
            if (address >= AddressOf(block) && address - AddressOf(block) < block->size) {
                return block->inUse != 0 ? block : nullptr;
            }
        }
    }
    return nullptr;
}

PrivateHeapStatistics PrivateHeap::Statistics() {
    const Lock lock(*this);
    PrivateHeapStatistics statistics;
    for (const Region* region = regions; region != nullptr; region = region->next) {
        ++statistics.regions;
        statistics.regionBytes += region->size;
        for (const Block* block = region->firstBlock; block != nullptr; block = block->next) {
            ++(block->inUse != 0 ? statistics.usedBlocks : statistics.freeBlocks);
            (block->inUse != 0 ? statistics.usedBytes : statistics.freeBytes) += block->size;
        }
    }
    return statistics;
}

const char* PrivateHeap::Verify() {
    const Lock lock(*this);
    if ((heap == nullptr) != (regions == nullptr)) {
        return "the platform's heap and the regions exist together";
    }
    const Region* previous = nullptr;
    for (const Region* region = regions; region != nullptr; region = region->next) {
        if (region->previous != previous) {
            return "each region knows the one before it";
        }
        if (const char* broken = VerifyRegion(*region); broken != nullptr) {
            return broken;
        }
        previous = region;
    }
    return nullptr;
}

const char* PrivateHeap::VerifyRegion(const Region& region) const {
    const Block* previous = nullptr;
    std::uintptr_t end = AddressOf(&region) + region.FirstBlockOffset();
    std::size_t freeBytes = 0;
    bool isUsed = false;
    for (const Block* block = region.firstBlock; block != nullptr; block = block->next) {
        if (AddressOf(block) != end) {
            return "a region's blocks follow each other without a gap";
        }
        if (const char* broken = VerifyBlock(*block, previous, region); broken != nullptr) {
            return broken;
        }
        end += block->size;
        freeBytes += block->inUse != 0 ? 0 : block->size;
        isUsed = isUsed || block->inUse != 0;
        previous = block;
    }
    if (end != AddressOf(&region) + region.FirstBlockOffset() + region.BlockSpace()) {
        return "a region's blocks fill it";
    }
    if (freeBytes != region.freeBytes) {
        return "a region counts its free bytes";
    }
    return isUsed ? nullptr : "a region without used blocks is gone";
}

const char* PrivateHeap::VerifyBlock(const Block& block, const Block* previous, const Region& region) {
    if (block.previous != previous) {
        return "each block knows the one before it";
    }
    if (block.region != &region) {
        return "each block knows its region";
    }
    if (AddressOf(&block) % kAlignment != 0 || block.size % kAlignment != 0 || block.size < kHeader) {
        return "blocks are aligned, and of whole units";
    }
    if (previous != nullptr && previous->inUse == 0 && block.inUse == 0) {
        return "free neighbours are one block";
    }
    return nullptr;
}

} // namespace orva::toolkit
