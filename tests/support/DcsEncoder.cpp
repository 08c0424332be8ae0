#include "tests/support/DcsEncoder.h"

#include <cmath>

namespace orva::test {

namespace {

constexpr unsigned kFixedBits = 0x800; // bits 9 to 11: 001 in the order of sending
constexpr int kWordBits = 23;
constexpr int kDataBits = 12;
constexpr std::uint32_t kGenerator = 0xC75; // degree 11; bit i stands for x to the power of i
constexpr int kGeneratorDegree = 11;

// Remainder of `value` by the generator, over GF(2).
std::uint32_t Remainder(std::uint64_t value) {
    for (int bit = 63; bit >= kGeneratorDegree; --bit) {
        if ((value >> bit & 1U) != 0) {
            value ^= static_cast<std::uint64_t>(kGenerator) << (bit - kGeneratorDegree);
        }
    }
    return static_cast<std::uint32_t>(value);
}

} // namespace

std::uint32_t DcsWord(unsigned code) {
    const std::uint32_t data = code | kFixedBits;
    // The word is data + parity x^12, and a multiple of the generator. As x^23 is 1, parity is data x^11.
    return data | Remainder(static_cast<std::uint64_t>(data) << (kWordBits - kDataBits)) << kDataBits;
}

DcsEncoder::DcsEncoder(unsigned code, bool invertedPolarity, int rate)
    : word(DcsWord(code)), oneLevel(invertedPolarity ? 1.0 : -1.0), bitsPerSample(kBitsPerSecond / rate) {}

double DcsEncoder::NextLevel() {
    const bool one = (word >> static_cast<int>(position) & 1U) != 0;
    position = std::fmod(position + bitsPerSample, kWordBits);
    return one ? oneLevel : -oneLevel;
}

} // namespace orva::test
