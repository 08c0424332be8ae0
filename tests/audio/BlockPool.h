/// The owner of blocks in the tests of wave output.
#pragma once

#include "audio/ItbWaveOutputDataSource.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace orva::test {

/// Blocks of one size, and the account of where they are. Gives a test failure when a block comes back that
/// is not out.
class BlockPool : public audio::ItbWaveOutputDataSource {
public:
    BlockPool(std::size_t count, std::uint32_t samples);

    /// A free block, all of its samples set to `value`; null if none is free.
    dsp::CtbSampleBlock* Take(std::int16_t value = 0);
    /// The block with this number, free or not.
    [[nodiscard]] dsp::CtbSampleBlock* Block(std::size_t index) { return &blocks[index]; }

    void ReturnBlock(dsp::CtbSampleBlock* block) override;

    [[nodiscard]] std::size_t Size() const { return blocks.size(); }
    [[nodiscard]] std::size_t FreeCount() const;

    std::vector<dsp::CtbSampleBlock*> returned; ///< in the order they came back
    bool keepsReturns = true;                   ///< off for tests that count allocations
    std::function<void(dsp::CtbSampleBlock*)> onReturn;

private:
    std::vector<dsp::CtbSampleBlock> blocks;
    std::vector<bool> isFree;
};

} // namespace orva::test
