#include "tests/audio/BlockPool.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace orva::test {

BlockPool::BlockPool(std::size_t count, std::uint32_t samples) : blocks(count), isFree(count, true) {
    for (dsp::CtbSampleBlock& block : blocks) {
        block.Acquire(samples);
    }
}

dsp::CtbSampleBlock* BlockPool::Take(std::int16_t value) {
    const auto found = std::find(isFree.begin(), isFree.end(), true);
    if (found == isFree.end()) {
        return nullptr;
    }
    *found = false;
    dsp::CtbSampleBlock& block = blocks[static_cast<std::size_t>(found - isFree.begin())];
    std::fill_n(block.Data(), block.Capacity(), value);
    return &block;
}

void BlockPool::ReturnBlock(dsp::CtbSampleBlock* block) {
    const auto index = static_cast<std::size_t>(block - blocks.data());
    ASSERT_LT(index, blocks.size()) << "a block of somebody else";
    EXPECT_FALSE(isFree[index]) << "block " << index << " came back twice";
    isFree[index] = true;
    if (keepsReturns) {
        returned.push_back(block);
    }
    if (onReturn) {
        onReturn(block);
    }
}

std::size_t BlockPool::FreeCount() const {
    return static_cast<std::size_t>(std::count(isFree.begin(), isFree.end(), true));
}

} // namespace orva::test
