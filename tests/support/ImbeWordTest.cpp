#include "tests/support/ImbeWord.h"

#include "tests/support/BlockCodes.h"
#include "tests/support/RandomSource.h"
#include "tests/support/VoiceErrorCorrection.h"

#include <bit>
#include <set>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

VoiceBits RandomInformation(RandomSource& random) {
    VoiceBits bits;
    for (std::uint8_t& bit : bits) {
        bit = static_cast<std::uint8_t>(random.Below(2));
    }
    return bits;
}

// Where the twelve bits of the first group of the interleaver go; group g follows 2 g later.
constexpr int kGroupPositions[12] = {0, 24, 48, 72, 96, 120, 25, 1, 73, 49, 121, 97};

ChannelBits Deinterleave(const ChannelBits& sent) {
    ChannelBits coded = {};
    for (std::size_t i = 0; i < sent.size(); ++i) {
        coded[2 * (i / 12) + static_cast<std::size_t>(kGroupPositions[i % 12])] = sent[i];
    }
    return coded;
}

std::uint32_t Word(const ChannelBits& coded, std::size_t first, std::size_t width) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < width; ++i) {
        word = word << 1 | coded[first + i];
    }
    return word;
}

TEST(ImbeWord, OfZerosCarriesThePnSequenceOfSeedZero) {
    const ChannelBits coded = Deinterleave(EncodeImbeWord(VoiceBits{}));
    unsigned state = 0;
    for (std::size_t position = 23; position < 137; ++position) {
        state = (173 * state + 13849) % 65536;
        ASSERT_EQ(coded[position], state >> 15) << "position " << position;
    }
    EXPECT_EQ(Word(coded, 0, 23), 0u);
    EXPECT_EQ(Word(coded, 137, 7), 0u);
}

TEST(ImbeWord, SendsTheFirstWordUnscrambled) {
    RandomSource random(3);
    for (int trial = 0; trial < 100; ++trial) {
        const VoiceBits information = RandomInformation(random);
        unsigned u0 = 0;
        for (int bit = 0; bit < 12; ++bit) {
            u0 = u0 << 1 | information[static_cast<std::size_t>(bit)];
        }
        ASSERT_EQ(Word(Deinterleave(EncodeImbeWord(information)), 0, 23), EncodeGolay23(u0));
    }
}

TEST(ImbeWord, SendsTheLastSevenBitsAsTheyAre) {
    VoiceBits information = {};
    for (std::size_t bit = 81; bit < 88; ++bit) {
        information[bit] = 1;
    }
    EXPECT_EQ(Word(Deinterleave(EncodeImbeWord(information)), 137, 7), 127u);
}

TEST(ImbeWord, IsDecodedToItsInformation) {
    RandomSource random(4);
    for (int trial = 0; trial < 200; ++trial) {
        const VoiceBits information = RandomInformation(random);
        const CorrectedVoiceWord decoded = CorrectVoiceWord(EncodeImbeWord(information));
        ASSERT_EQ(ToHex(decoded.bits), ToHex(information));
        for (const int errors : decoded.wordErrors) {
            ASSERT_EQ(errors, 0);
        }
    }
}

TEST(ImbeWord, CarriesTheStatedErrors) {
    RandomSource random(5);
    const VoiceBits information = RandomInformation(random);
    const VoiceErrorPattern errors = {0x400001, 0x3, 0x7, 0x100200, 0x4000, 0x1, 0, 0x40};
    const CorrectedVoiceWord decoded = CorrectVoiceWord(EncodeImbeWord(information, errors));
    VoiceBits expected = information;
    expected[81] ^= 1; // the uncoded bits have no protection
    EXPECT_EQ(ToHex(decoded.bits), ToHex(expected));
    for (std::size_t word = 0; word < decoded.wordErrors.size(); ++word) {
        EXPECT_EQ(decoded.wordErrors[word], std::popcount(errors[word])) << "word " << word;
    }
}

TEST(ImbeWord, PutsEveryErrorInAPlaceOfItsOwn) {
    const ChannelBits clean = EncodeImbeWord(VoiceBits{});
    constexpr int kWidths[kVoiceWords] = {23, 23, 23, 23, 15, 15, 15, 7};
    std::set<std::size_t> places;
    for (std::size_t word = 0; word < kVoiceWords; ++word) {
        for (int bit = 0; bit < kWidths[word]; ++bit) {
            VoiceErrorPattern errors = {};
            errors[word] = 1u << bit;
            const ChannelBits spoilt = EncodeImbeWord(VoiceBits{}, errors);
            for (std::size_t place = 0; place < spoilt.size(); ++place) {
                if (spoilt[place] != clean[place]) {
                    places.insert(place);
                }
            }
        }
    }
    EXPECT_EQ(places.size(), 144u);
}

TEST(ImbeWord, HexTextGoesBothWays) {
    RandomSource random(6);
    const VoiceBits information = RandomInformation(random);
    const std::string hex = ToHex(information);
    EXPECT_EQ(hex.size(), 22u);
    VoiceBits read = {};
    ASSERT_TRUE(FromHex(hex, read));
    EXPECT_EQ(read, information);
    VoiceBits top = {};
    top[0] = 1;
    top[87] = 1;
    EXPECT_EQ(ToHex(top), "8000000000000000000001");
}

TEST(ImbeWord, RefusesTextThatIsNoWord) {
    VoiceBits read = {};
    EXPECT_FALSE(FromHex("", read));
    EXPECT_FALSE(FromHex("800000000000000000000", read));
    EXPECT_FALSE(FromHex("80000000000000000000011", read));
    EXPECT_FALSE(FromHex("800000000000000000000g", read));
    EXPECT_FALSE(FromHex("-800000000000000000001", read));
    EXPECT_EQ(read, VoiceBits{});
}

} // namespace
} // namespace orva::test
