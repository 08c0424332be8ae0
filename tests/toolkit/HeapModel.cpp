#include "tests/toolkit/HeapModel.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace orva::test {
namespace {

constexpr std::size_t kHeader = 64;

} // namespace

std::uintptr_t HeapModel::Place(std::size_t bytes) const {
    const std::size_t size = BlockSize(bytes);
    const Block* best = nullptr;
    for (const Blocks& blocks : regions) {
        for (const Block& block : blocks) {
            if (!block.inUse && block.size == size) {
                return block.header + kHeader;
            }
            if (!block.inUse && block.size > size && (best == nullptr || block.size <= best->size)) {
                best = &block;
            }
        }
    }
    return best == nullptr ? kNoPlace : best->header + kHeader;
}

void HeapModel::AddRegion(std::uintptr_t address, std::size_t size, std::size_t regionHeaderSize) {
    const std::uintptr_t first = (address + regionHeaderSize + 63) / 64 * 64;
    regions.push_front({Block{first, (address + size - first) / 64 * 64, false}});
}

void HeapModel::Take(std::uintptr_t address, std::size_t bytes) {
    const std::size_t size = BlockSize(bytes);
    for (Blocks& blocks : regions) {
        for (auto block = blocks.begin(); block != blocks.end(); ++block) {
            if (block->header + kHeader != address) {
                continue;
            }
            if (block->inUse || block->size < size) {
                throw std::logic_error("no room there");
            }
            if (block->size > size) {
                blocks.insert(std::next(block), Block{block->header + size, block->size - size, false});
            }
            block->size = size;
            block->inUse = true;
            return;
        }
    }
    throw std::logic_error("no block there");
}

void HeapModel::Free(std::uintptr_t address) {
    for (auto region = regions.begin(); region != regions.end(); ++region) {
        for (auto block = region->begin(); block != region->end(); ++block) {
            if (block->header + kHeader != address || !block->inUse) {
                continue;
            }
            block->inUse = false;
            for (auto left = region->begin(); left != region->end();) {
                const auto right = std::next(left);
                if (right != region->end() && !left->inUse && !right->inUse) {
                    left->size += right->size;
                    region->erase(right);
                } else {
                    left = right;
                }
            }
            if (region->size() == 1) {
                regions.erase(region);
            }
            return;
        }
    }
    throw std::logic_error("nothing in use there");
}

std::size_t HeapModel::SizeAt(std::uintptr_t address) const {
    for (const Blocks& blocks : regions) {
        const auto block = std::find_if(blocks.begin(), blocks.end(),
                                        [=](const Block& b) { return b.header + kHeader == address; });
        if (block != blocks.end()) {
            return block->size;
        }
    }
    throw std::logic_error("no block there");
}

} // namespace orva::test
