#include "tests/support/ReedSolomonEncoder.h"

#include "tests/support/GaloisField64.h"
#include "tests/support/RandomSource.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

struct Code {
    int length;
    int parity;
};

class ReedSolomonEncoder : public testing::TestWithParam<Code> {
protected:
    std::vector<std::uint8_t> RandomMessage() {
        std::vector<std::uint8_t> message(static_cast<std::size_t>(GetParam().length - GetParam().parity));
        for (std::uint8_t& symbol : message) {
            symbol = static_cast<std::uint8_t>(random.Below(64));
        }
        return message;
    }

    RandomSource random{7};
};

int Evaluate(const std::vector<std::uint8_t>& word, int exponent) {
    int sum = 0;
    for (std::size_t i = 0; i < word.size(); ++i) {
        sum ^= FieldProduct(word[i], FieldPower(exponent * static_cast<int>(word.size() - 1 - i)));
    }
    return sum;
}

TEST_P(ReedSolomonEncoder, HasTheRootsOfTheCode) {
    for (int trial = 0; trial < 50; ++trial) {
        const auto word = EncodeReedSolomon(RandomMessage(), GetParam().parity);
        for (int exponent = 1; exponent <= GetParam().parity; ++exponent) {
            ASSERT_EQ(Evaluate(word, exponent), 0) << "root " << exponent;
        }
    }
}

TEST_P(ReedSolomonEncoder, KeepsTheMessageInFront) {
    const auto message = RandomMessage();
    const auto word = EncodeReedSolomon(message, GetParam().parity);
    ASSERT_EQ(word.size(), static_cast<std::size_t>(GetParam().length));
    EXPECT_TRUE(std::equal(message.begin(), message.end(), word.begin()));
}

TEST_P(ReedSolomonEncoder, MakesAtLeastParityPlusOneSymbolsOfOne) {
    const auto message = RandomMessage();
    for (std::size_t place = 0; place < message.size(); ++place) {
        for (std::uint8_t value = 1; value < 64; ++value) {
            std::vector<std::uint8_t> single(message.size(), 0);
            single[place] = value;
            const auto word = EncodeReedSolomon(single, GetParam().parity);
            const auto zeros = std::count(word.begin(), word.end(), 0);
            ASSERT_GE(static_cast<std::ptrdiff_t>(word.size()) - zeros, GetParam().parity + 1) << place;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AirInterface, ReedSolomonEncoder,
                         testing::Values(Code{36, kHeaderParitySymbols}, Code{24, kLinkControlParitySymbols},
                                         Code{24, kEncryptionSyncParitySymbols}));

TEST(ReedSolomonGenerator, EndsInTheProductOfItsRoots) {
    // The word of the message 1 is the generator itself.
    const std::vector<std::uint8_t> one = {1};
    const auto word = EncodeReedSolomon(one, kLinkControlParitySymbols);
    // The product of the twelve roots alpha^1 .. alpha^12 is alpha^78 = alpha^15.
    EXPECT_EQ(word.back(), FieldPower(78));
    EXPECT_EQ(word.size(), 13u);
}

} // namespace
} // namespace orva::test
