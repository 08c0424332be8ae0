#include "tests/support/BlockCodes.h"

#include "tests/support/GaloisField64.h"

#include <array>
#include <bit>
#include <set>
#include <span>
#include <vector>

namespace orva::test {

namespace {

constexpr int kBchRoots = 22;
constexpr unsigned kLdu1 = 0x5;
constexpr unsigned kLdu2 = 0xA;
constexpr std::uint64_t kGolayGenerator = 0xC75;
constexpr std::uint64_t kLowSpeedDataGenerator = 0x139;

// Parity bits that each information bit contributes, the most significant information bit first: the right
// halves of the generator matrices.
constexpr std::array<std::uint8_t, 6> kHamming10Parity = {0b1110, 0b1101, 0b1011, 0b0111, 0b0011, 0b1100};
constexpr std::array<std::uint8_t, 11> kHamming15Parity = {0b1111, 0b1110, 0b1101, 0b1100, 0b1011, 0b1010,
                                                           0b1001, 0b0111, 0b0110, 0b0101, 0b0011};
constexpr int kHammingParityBits = 4;

int Degree(std::uint64_t polynomial) {
    return static_cast<int>(std::bit_width(polynomial)) - 1;
}

std::uint64_t Remainder(std::uint64_t dividend, std::uint64_t divisor) {
    const int degree = Degree(divisor);
    while (Degree(dividend) >= degree) {
        dividend ^= divisor << (Degree(dividend) - degree);
    }
    return dividend;
}

// Systematic word of a cyclic code: information, then the remainder that makes the word a multiple of the
// generator.
std::uint64_t EncodeCyclic(std::uint64_t information, std::uint64_t generator) {
    const std::uint64_t shifted = information << Degree(generator);
    return shifted | Remainder(shifted, generator);
}

std::uint64_t AppendParity(std::uint64_t word) {
    return word << 1 | static_cast<unsigned>(std::popcount(word) & 1);
}

std::uint32_t EncodeHamming(unsigned information, std::span<const std::uint8_t> parityRows) {
    unsigned parity = 0;
    unsigned probe = 1u << (parityRows.size() - 1);
    for (const std::uint8_t row : parityRows) {
        if (information & probe) {
            parity ^= row;
        }
        probe >>= 1;
    }
    return information << kHammingParityBits | parity;
}

// Product of (x - root) over the given roots, lowest degree first.
std::vector<std::uint8_t> PolynomialWithRoots(const std::set<int>& exponents) {
    std::vector<std::uint8_t> product = {1};
    for (const int exponent : exponents) {
        std::vector<std::uint8_t> next(product.size() + 1, 0);
        for (std::size_t i = 0; i < product.size(); ++i) {
            next[i + 1] ^= product[i];
            next[i] ^= FieldProduct(product[i], FieldPower(exponent));
        }
        product = next;
    }
    return product;
}

} // namespace

std::uint64_t BchGenerator() {
    // A binary polynomial with a root has all the root's conjugates, its repeated squares.
    std::set<int> exponents;
    for (int root = 1; root <= kBchRoots; ++root) {
        for (int conjugate = root; exponents.insert(conjugate).second;) {
            conjugate = conjugate * 2 % kFieldOrder;
        }
    }

    std::uint64_t generator = 0;
    int power = 0;
    for (const std::uint8_t coefficient : PolynomialWithRoots(exponents)) {
        generator |= std::uint64_t{coefficient} << power++;
    }
    return generator;
}

std::uint64_t EncodeNid(unsigned networkAccessCode, unsigned dataUnit) {
    static const std::uint64_t generator = BchGenerator();
    const std::uint64_t word = EncodeCyclic((networkAccessCode & 0xFFFu) << 4 | (dataUnit & 0xFu), generator);
    const bool parity = dataUnit == kLdu1 || dataUnit == kLdu2;
    return word << 1 | static_cast<unsigned>(parity);
}

std::uint32_t EncodeGolay23(unsigned information) {
    return static_cast<std::uint32_t>(EncodeCyclic(information & 0xFFFu, kGolayGenerator));
}

std::uint32_t EncodeGolay24(unsigned information) {
    return static_cast<std::uint32_t>(AppendParity(EncodeGolay23(information)));
}

std::uint32_t EncodeGolay18(unsigned information) {
    return EncodeGolay24(information & 0x3Fu);
}

std::uint32_t EncodeHamming15(unsigned information) {
    return EncodeHamming(information & 0x7FFu, kHamming15Parity);
}

std::uint32_t EncodeHamming10(unsigned information) {
    return EncodeHamming(information & 0x3Fu, kHamming10Parity);
}

std::uint32_t EncodeLowSpeedData(unsigned octet) {
    return static_cast<std::uint32_t>(EncodeCyclic(octet & 0xFFu, kLowSpeedDataGenerator));
}

} // namespace orva::test
