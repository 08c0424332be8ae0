/// A fuzzer's input, taken byte by byte.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace orva::fuzz {

/// Beyond the end there are zeros.
class InputBytes {
public:
    InputBytes(const std::uint8_t* bytes, std::size_t count) : next(bytes), end(bytes + count) {}

    bool IsAtEnd() const { return next == end; }
    std::size_t Left() const { return static_cast<std::size_t>(end - next); }
    const std::uint8_t* Rest() const { return next; }

    std::uint8_t Byte() { return next == end ? std::uint8_t{0} : *next++; }
    std::uint16_t Word() {
        const std::uint8_t low = Byte();
        return static_cast<std::uint16_t>(low | Byte() << 8);
    }

private:
    const std::uint8_t* next;
    const std::uint8_t* end;
};

} // namespace orva::fuzz
