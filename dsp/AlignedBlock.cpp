#include "dsp/AlignedBlock.h"

#include <limits>
#include <new>

namespace orva::dsp {

AlignedBlock AlignedBlock::Allocate(std::uint64_t bytes) {
    AlignedBlock block;
    if (bytes > std::numeric_limits<std::size_t>::max() / 2) {
        return block;
    }
    const std::size_t total = static_cast<std::size_t>(bytes) + kVectorAlignment;
    block.memory.reset(new (std::nothrow) std::byte[total]());
    if (block.memory != nullptr) {
        const std::size_t excess = reinterpret_cast<std::uintptr_t>(block.memory.get()) % kVectorAlignment;
        block.data = block.memory.get() + (excess == 0 ? 0 : kVectorAlignment - excess);
    }
    return block;
}

} // namespace orva::dsp
