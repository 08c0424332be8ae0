/// A block of samples, and the system's plain growable array.
#pragma once

#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>

namespace orva::dsp {

/// A sample array with a capacity and a used count, both in samples. Owns its memory; handed round by
/// pointer. As a growable array it keeps its memory when that is large enough and otherwise starts afresh.
template <class Sample>
class CtbBasicSampleBlock {
    static_assert(std::is_trivially_copyable_v<Sample>);

public:
    CtbBasicSampleBlock() = default;
    ~CtbBasicSampleBlock() { delete[] samples; }
    CtbBasicSampleBlock(const CtbBasicSampleBlock&) = delete;
    CtbBasicSampleBlock& operator=(const CtbBasicSampleBlock&) = delete;

    /// Room for `count` samples. Memory that holds as many is kept with its contents; otherwise it is freed
    /// and new, zeroed memory taken, keeping nothing. Returns null, with capacity 0, when there is no memory.
    Sample* Acquire(std::uint32_t count) {
        if (capacity >= count && samples != nullptr) {
            return samples;
        }
        delete[] samples;
        samples = new (std::nothrow) Sample[count]();
        capacity = samples != nullptr ? count : 0;
        used = 0;
        return samples;
    }

    /// As `Acquire`, but the contents survive growing. On failure returns null and leaves the block as it
    /// was.
    Sample* Grow(std::uint32_t count) {
        if (capacity >= count && samples != nullptr) {
            return samples;
        }
        auto* larger = new (std::nothrow) Sample[count]();
        if (larger == nullptr) {
            return nullptr;
        }
        if (samples != nullptr) {
            std::memcpy(larger, samples, capacity * sizeof(Sample));
        }
        delete[] samples;
        samples = larger;
        capacity = count;
        return samples;
    }

    Sample* Data() { return samples; }
    const Sample* Data() const { return samples; }
    std::uint32_t Capacity() const { return capacity; }
    std::uint32_t Used() const { return used; }
    void SetUsed(std::uint32_t count) { used = count; }

    Sample& operator[](std::uint32_t index) { return samples[index]; }
    const Sample& operator[](std::uint32_t index) const { return samples[index]; }

private:
    std::uint32_t capacity = 0;
    std::uint32_t used = 0;
    Sample* samples = nullptr;
};

using CtbSampleBlock = CtbBasicSampleBlock<std::int16_t>;
using CtbFloatBlock = CtbBasicSampleBlock<float>;
using CtbByteBlock = CtbBasicSampleBlock<char>;

} // namespace orva::dsp
