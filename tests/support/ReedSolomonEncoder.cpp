#include "tests/support/ReedSolomonEncoder.h"

#include "tests/support/GaloisField64.h"

namespace orva::test {

namespace {

// Product of (x - alpha^i) for i = 1 .. degree, highest power first.
std::vector<std::uint8_t> Generator(int degree) {
    std::vector<std::uint8_t> generator = {1};
    for (int root = 1; root <= degree; ++root) {
        std::vector<std::uint8_t> next = generator;
        next.push_back(0);
        for (std::size_t i = 0; i < generator.size(); ++i) {
            next[i + 1] ^= FieldProduct(generator[i], FieldPower(root));
        }
        generator = next;
    }
    return generator;
}

} // namespace

std::vector<std::uint8_t> EncodeReedSolomon(std::span<const std::uint8_t> message, int paritySymbols) {
    const std::vector<std::uint8_t> generator = Generator(paritySymbols);
    std::vector<std::uint8_t> remainder(message.begin(), message.end());
    remainder.resize(message.size() + static_cast<std::size_t>(paritySymbols), 0);
    for (std::size_t step = 0; step < message.size(); ++step) {
        const std::uint8_t quotient = remainder[step];
        for (std::size_t i = 0; i < generator.size(); ++i) {
            remainder[step + i] ^= FieldProduct(quotient, generator[i]);
        }
    }

    std::vector<std::uint8_t> word(message.begin(), message.end());
    word.insert(word.end(), remainder.begin() + static_cast<std::ptrdiff_t>(message.size()), remainder.end());
    return word;
}

} // namespace orva::test
