/// The private heap's rules over plain lists: where each allocation must land.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>

namespace orva::test {

/// Knows addresses only, and touches no memory.
class HeapModel {
public:
    static constexpr std::uintptr_t kNoPlace = 0;

    /// The size of a block for so many bytes, header included.
    static std::size_t BlockSize(std::size_t bytes) { return (bytes + 127) / 64 * 64; }
    /// What is asked of the platform for a block of this size.
    static std::size_t RegionSize(std::size_t blockSize) { return (blockSize + 4178) / 4096 * 4096; }

    /// Address of the memory that the next allocation of `bytes` gets; `kNoPlace` if it takes a new region.
    std::uintptr_t Place(std::size_t bytes) const;

    /// The platform gave a region.
    void AddRegion(std::uintptr_t address, std::size_t size, std::size_t regionHeaderSize);

    /// The memory at `address`, which `Place` told, is in use.
    void Take(std::uintptr_t address, std::size_t bytes);

    /// The memory is free again.
    void Free(std::uintptr_t address);

    /// Size of the block of the memory at `address`, header included.
    std::size_t SizeAt(std::uintptr_t address) const;

    std::size_t Regions() const { return regions.size(); }

private:
    struct Block {
        std::uintptr_t header;
        std::size_t size;
        bool inUse;
    };
    using Blocks = std::list<Block>;

    std::list<Blocks> regions; ///< the newest first
};

} // namespace orva::test
