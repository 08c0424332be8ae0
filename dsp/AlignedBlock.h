/// Zeroed memory aligned for vector loads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace orva::dsp {

/// Alignment of every block, in bytes.
constexpr std::size_t kVectorAlignment = 16;

/// Owns one block. It comes from the ordinary `operator new`, so that a replaced one serves and counts it
/// too.
class AlignedBlock {
public:
    /// An empty block.
    AlignedBlock() = default;

    /// A block of `bytes` zero bytes; empty when there is not so much memory.
    static AlignedBlock Allocate(std::uint64_t bytes);

    explicit operator bool() const { return memory != nullptr; }

    /// The first aligned byte.
    std::byte* Data() const { return data; }
    float* Floats() const { return reinterpret_cast<float*>(data); }

private:
    std::unique_ptr<std::byte[]> memory;
    std::byte* data = nullptr;
};

} // namespace orva::dsp
