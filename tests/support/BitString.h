#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace orva::test {

/// Bits in the order they go on the air, the most significant bit of each field first.
class BitString {
public:
    /// Appends the low `width` bits of `value`, 0 .. 64.
    void Append(std::uint64_t value, int width);

    /// Appends the bits of `other`.
    void Append(const BitString& other);

    /// Appends zeros until there are `count` bits; does nothing when there are as many already.
    void PadTo(std::size_t count);

    std::size_t Size() const { return bits.size(); }

    /// The field of `width` bits that begins at bit `first`.
    std::uint64_t Field(std::size_t first, int width) const;

    /// The bits in groups of six, as Reed-Solomon symbols. The size must be a multiple of six.
    std::vector<std::uint8_t> Symbols() const;

    /// The bits in pairs, as characters "0" .. "3". The size must be even.
    std::string Dibits() const;

private:
    std::vector<std::uint8_t> bits;
};

} // namespace orva::test
