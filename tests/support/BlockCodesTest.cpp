#include "tests/support/BlockCodes.h"

#include "tests/support/GaloisField64.h"

#include <algorithm>
#include <bit>
#include <functional>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

// Least weight of a word other than zero: in a linear code, the least distance of two words.
int LeastWeight(int informationBits, const std::function<std::uint64_t(unsigned)>& encode) {
    int least = 64;
    for (unsigned information = 1; information < 1u << informationBits; ++information) {
        least = std::min(least, std::popcount(encode(information)));
    }
    return least;
}

// The word's polynomial at alpha^exponent, bit i being the coefficient of x^i.
int Evaluate(std::uint64_t word, int exponent) {
    int sum = 0;
    for (int power = 0; power < kFieldOrder; ++power) {
        if (word >> power & 1) {
            sum ^= FieldPower(power * exponent);
        }
    }
    return sum;
}

std::uint64_t NidOf(unsigned information) {
    return EncodeNid(information >> 4, information & 15);
}

TEST(BlockCodes, BchGeneratorIsThePublishedOne) {
    EXPECT_EQ(BchGenerator(), 06331141367235453u);
    EXPECT_EQ(std::bit_width(BchGenerator()), 48); // degree 47
}

TEST(BlockCodes, NidBeginsWithNetworkAccessCodeAndDataUnit) {
    EXPECT_EQ(EncodeNid(0x293, 0x5) >> 48, 0x2935u);
    EXPECT_EQ(EncodeNid(0xF7E, 0xC) >> 48, 0xF7ECu);
}

TEST(BlockCodes, NidHasAllSyndromesZero) {
    for (unsigned information = 0; information < 0x10000; information += 251) {
        for (int exponent = 1; exponent <= 22; ++exponent) {
            ASSERT_EQ(Evaluate(NidOf(information) >> 1, exponent), 0) << information << " " << exponent;
        }
    }
}

TEST(BlockCodes, NidWordsDifferInAtLeast23Of63Bits) {
    EXPECT_EQ(LeastWeight(16, [](unsigned information) { return NidOf(information) >> 1; }), 23);
}

TEST(BlockCodes, NidEndsWithTheParityBitOfItsDataUnit) {
    for (unsigned information = 0; information < 0x10000; ++information) {
        const unsigned dataUnit = information & 15;
        ASSERT_EQ(NidOf(information) & 1, dataUnit == 0x5 || dataUnit == 0xA ? 1u : 0u) << information;
    }
}

TEST(BlockCodes, Golay23HasDistanceSevenAndTheWeightsOfThePerfectCode) {
    int counts[24] = {};
    for (unsigned information = 0; information < 4096; ++information) {
        ++counts[std::popcount(EncodeGolay23(information))];
    }
    const int expected[24] = {1,    0, 0, 0,   0,   0, 0, 253, 506, 0, 0, 1288,
                              1288, 0, 0, 506, 253, 0, 0, 0,   0,   0, 0, 1};
    for (int weight = 0; weight < 24; ++weight) {
        EXPECT_EQ(counts[weight], expected[weight]) << "weight " << weight;
    }
}

TEST(BlockCodes, Golay23OfOneIsTheGenerator) {
    EXPECT_EQ(EncodeGolay23(1), 0xC75u);
    EXPECT_EQ(EncodeGolay23(0x800) >> 11, 0x800u);
}

TEST(BlockCodes, Golay24HasDistanceEightAndEvenWords) {
    EXPECT_EQ(LeastWeight(12, EncodeGolay24), 8);
    for (unsigned information = 0; information < 4096; ++information) {
        ASSERT_EQ(std::popcount(EncodeGolay24(information)) % 2, 0) << information;
        ASSERT_EQ(EncodeGolay24(information) >> 1, EncodeGolay23(information)) << information;
    }
}

TEST(BlockCodes, Golay18HasDistanceEightAndSixInformationBits) {
    EXPECT_EQ(LeastWeight(6, EncodeGolay18), 8);
    for (unsigned information = 0; information < 64; ++information) {
        EXPECT_EQ(EncodeGolay18(information) >> 12, information);
    }
}

TEST(BlockCodes, Hamming10FulfilsItsParityEquations) {
    for (unsigned information = 0; information < 64; ++information) {
        const unsigned word = EncodeHamming10(information);
        EXPECT_EQ(word >> 4, information);
        for (const unsigned mask : {920u, 852u, 738u, 481u}) {
            EXPECT_EQ(std::popcount(word & mask) % 2, 0) << information << " " << mask;
        }
    }
}

TEST(BlockCodes, Hamming10HasDistanceThree) {
    EXPECT_EQ(LeastWeight(6, EncodeHamming10), 3);
}

TEST(BlockCodes, Hamming15FulfilsItsParityEquations) {
    constexpr unsigned kMasks[] = {1371, 1645, 1934, 2032}; // of the parity bits from the lowest up
    for (unsigned information = 0; information < 2048; ++information) {
        const unsigned word = EncodeHamming15(information);
        ASSERT_EQ(word >> 4, information);
        for (int bit = 0; bit < 4; ++bit) {
            ASSERT_EQ(static_cast<int>(word >> bit & 1), std::popcount(information & kMasks[bit]) % 2)
                << information << " parity bit " << bit;
        }
    }
}

TEST(BlockCodes, Hamming15HasDistanceThree) {
    EXPECT_EQ(LeastWeight(11, EncodeHamming15), 3);
}

TEST(BlockCodes, LowSpeedDataHasDistanceFive) {
    EXPECT_EQ(LeastWeight(8, EncodeLowSpeedData), 5);
    EXPECT_EQ(EncodeLowSpeedData(0xA5) >> 8, 0xA5u);
}

} // namespace
} // namespace orva::test
