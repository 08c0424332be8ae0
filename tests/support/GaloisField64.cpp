#include "tests/support/GaloisField64.h"

namespace orva::test {

namespace {
constexpr unsigned kFieldPolynomial = 0x43; // x^6 + x + 1
constexpr unsigned kFieldSize = 64;
constexpr unsigned kPrimitiveElement = 2;
} // namespace

std::uint8_t FieldProduct(std::uint8_t a, std::uint8_t b) {
    unsigned product = 0;
    unsigned multiple = a;
    for (unsigned remaining = b; remaining != 0; remaining >>= 1) {
        if (remaining & 1) {
            product ^= multiple;
        }
        multiple <<= 1;
        if (multiple & kFieldSize) {
            multiple ^= kFieldPolynomial;
        }
    }
    return static_cast<std::uint8_t>(product);
}

std::uint8_t FieldPower(int exponent) {
    const int steps = (exponent % kFieldOrder + kFieldOrder) % kFieldOrder;
    std::uint8_t power = 1;
    for (int step = 0; step < steps; ++step) {
        power = FieldProduct(power, kPrimitiveElement);
    }
    return power;
}

} // namespace orva::test
