#include "tests/support/BitString.h"

namespace orva::test {

namespace {
constexpr int kSymbolBits = 6;
constexpr int kDibitBits = 2;
} // namespace

void BitString::Append(std::uint64_t value, int width) {
    for (int bit = width - 1; bit >= 0; --bit) {
        bits.push_back(static_cast<std::uint8_t>(value >> bit & 1));
    }
}

void BitString::Append(const BitString& other) {
    bits.insert(bits.end(), other.bits.begin(), other.bits.end());
}

void BitString::PadTo(std::size_t count) {
    if (bits.size() < count) {
        bits.resize(count, 0);
    }
}

std::uint64_t BitString::Field(std::size_t first, int width) const {
    std::uint64_t value = 0;
    for (int bit = 0; bit < width; ++bit) {
        value = value << 1 | bits.at(first + static_cast<std::size_t>(bit));
    }
    return value;
}

std::vector<std::uint8_t> BitString::Symbols() const {
    std::vector<std::uint8_t> symbols;
    for (std::size_t first = 0; first < bits.size(); first += kSymbolBits) {
        symbols.push_back(static_cast<std::uint8_t>(Field(first, kSymbolBits)));
    }
    return symbols;
}

std::string BitString::Dibits() const {
    std::string dibits;
    for (std::size_t first = 0; first < bits.size(); first += kDibitBits) {
        dibits.push_back(static_cast<char>('0' + Field(first, kDibitBits)));
    }
    return dibits;
}

} // namespace orva::test
