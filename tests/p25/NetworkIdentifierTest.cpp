#include "p25/NetworkIdentifier.h"

#include "tests/support/BlockCodes.h"
#include "tests/support/ErrorInjector.h"
#include "tests/support/RandomSource.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

constexpr int kBchBits = 63;
constexpr int kCorrectable = 11;

/// The 64 bits as 32 dibit characters and a mark behind them, which no one may touch.
std::string TextOf(std::uint64_t nid) {
    std::string text;
    for (int shift = 62; shift >= 0; shift -= 2) {
        text.push_back(static_cast<char>('0' + (nid >> shift & 3U)));
    }
    return text + '#';
}

/// What a corrected text must be: its last dibit is replaced by a NUL.
std::string Corrected(std::uint64_t nid) {
    std::string text = TextOf(nid);
    text[kNidLength - 1] = '\0';
    return text;
}

/// A word of the code with `bits` of its 63 BCH bits wrong.
std::uint64_t Spoil(std::uint64_t nid, int bits, test::ErrorInjector& errors) {
    return errors.FlipBits(nid >> 1, kBchBits, bits) << 1 | (nid & 1U);
}

TEST(NetworkIdentifier, CleanWordsComeBackButForTheNul) {
    for (unsigned nac = 0; nac < 4096; nac += 13) {
        for (unsigned duid = 0; duid < 16; ++duid) {
            const std::uint64_t nid = test::EncodeNid(nac, duid);
            std::string text = TextOf(nid);
            std::uint32_t errors = 77;
            ASSERT_TRUE(CorrectNid(text.data(), &errors)) << "NAC " << nac << " DUID " << duid;
            ASSERT_EQ(errors, 0U);
            ASSERT_EQ(text, Corrected(nid));
        }
    }
}

TEST(NetworkIdentifier, CorrectsEverySingleError) {
    for (unsigned duid = 0; duid < 16; ++duid) {
        const std::uint64_t nid = test::EncodeNid(0x293, duid);
        for (int bit = 1; bit <= kBchBits; ++bit) {
            std::string text = TextOf(nid ^ std::uint64_t{1} << bit);
            std::uint32_t errors = 0;
            ASSERT_TRUE(CorrectNid(text.data(), &errors)) << "bit " << bit;
            ASSERT_EQ(errors, 1U) << "bit " << bit;
            ASSERT_EQ(text, Corrected(nid)) << "bit " << bit;
        }
    }
}

TEST(NetworkIdentifier, CorrectsUpToElevenErrorsAndCountsThem) {
    test::ErrorInjector errors({}, 7);
    test::RandomSource random(8);
    for (int bits = 1; bits <= kCorrectable; ++bits) {
        for (int trial = 0; trial < 200; ++trial) {
            const std::uint64_t nid = test::EncodeNid(random.Below(4096), random.Below(16));
            std::string text = TextOf(Spoil(nid, bits, errors));
            std::uint32_t corrected = 0;
            ASSERT_TRUE(CorrectNid(text.data(), &corrected)) << bits << " errors, trial " << trial;
            ASSERT_EQ(corrected, static_cast<std::uint32_t>(bits));
            ASSERT_EQ(text, Corrected(nid)) << bits << " errors, trial " << trial;
        }
    }
}

TEST(NetworkIdentifier, TwelveErrorsAreRefusedOrEndInAnotherWord) {
    test::ErrorInjector errors({}, 9);
    test::RandomSource random(10);
    int refused = 0;
    constexpr int kTrials = 1000;
    for (int trial = 0; trial < kTrials; ++trial) {
        const std::uint64_t nid = test::EncodeNid(random.Below(4096), random.Below(16));
        const std::string received = TextOf(Spoil(nid, kCorrectable + 1, errors));
        std::string text = received;
        std::uint32_t corrected = 0;
        if (!CorrectNid(text.data(), &corrected)) {
            ASSERT_EQ(text, received) << "a refused text stays as it is, trial " << trial;
            ASSERT_GT(corrected, 0U);
            ++refused;
            continue;
        }
        std::uint64_t information = 0;
        for (int dibit = 0; dibit < 8; ++dibit) {
            information =
                information << 2 | static_cast<std::uint64_t>(text[static_cast<std::size_t>(dibit)] - '0');
        }
        const std::uint64_t other = test::EncodeNid(static_cast<unsigned>(information >> 4),
                                                    static_cast<unsigned>(information & 15U));
        ASSERT_NE(other >> 1, nid >> 1) << "trial " << trial;
        ASSERT_EQ(text, Corrected(other)) << "trial " << trial;
        ASSERT_LE(corrected, static_cast<std::uint32_t>(kCorrectable));
    }
    EXPECT_GT(refused, kTrials / 2);
}

TEST(NetworkIdentifier, CountOfARefusedWordIsTheLocatorsDegree) {
    test::ErrorInjector errors({}, 11);
    bool sawHighDegree = false;
    for (int trial = 0; trial < 200; ++trial) {
        std::string text = TextOf(Spoil(test::EncodeNid(0x5A5, 3), 20, errors));
        std::uint32_t corrected = 0;
        if (!CorrectNid(text.data(), &corrected)) {
            // The iteration stops at the first degree above 11, or ends with too few roots below it.
            ASSERT_LE(corrected, 22U);
            sawHighDegree = sawHighDegree || corrected > static_cast<std::uint32_t>(kCorrectable);
        }
    }
    EXPECT_TRUE(sawHighDegree);
}

TEST(NetworkIdentifier, NeverReadsTheParityBit) {
    const std::uint64_t nid = test::EncodeNid(0x293, 5);
    std::string text = TextOf(nid ^ 1U);
    std::uint32_t errors = 77;
    EXPECT_TRUE(CorrectNid(text.data(), &errors));
    EXPECT_EQ(errors, 0U);
    EXPECT_EQ(text, Corrected(nid));
}

TEST(NetworkIdentifier, LastDibitsHighBitIsACorrectableError) {
    const std::uint64_t nid = test::EncodeNid(0x293, 5);
    std::string text = TextOf(nid ^ 2U);
    std::uint32_t errors = 0;
    EXPECT_TRUE(CorrectNid(text.data(), &errors));
    EXPECT_EQ(errors, 1U);
    EXPECT_EQ(text, Corrected(nid));
}

TEST(NetworkIdentifier, InvalidCharactersCountAsZeros) {
    const std::uint64_t nid = test::EncodeNid(0x7FF, 10);
    for (const char invalid : {'4', 'x', '/', '\0', '\x80'}) {
        std::string text = TextOf(nid);
        text[1] = invalid; // a dibit of two ones: two errors
        std::uint32_t errors = 0;
        EXPECT_TRUE(CorrectNid(text.data(), &errors));
        EXPECT_EQ(errors, 2U);
        EXPECT_EQ(text, Corrected(nid));
    }
}

TEST(NetworkIdentifier, RefusesANullText) {
    std::uint32_t errors = 77;
    EXPECT_FALSE(CorrectNid(nullptr, &errors));
    EXPECT_EQ(errors, 0U);
    EXPECT_FALSE(CorrectNid(nullptr, nullptr));
}

TEST(NetworkIdentifier, ErrorCountIsOptional) {
    const std::uint64_t nid = test::EncodeNid(0x293, 0);
    std::string text = TextOf(nid ^ 0xF0U);
    EXPECT_TRUE(CorrectNid(text.data(), nullptr));
    EXPECT_EQ(text, Corrected(nid));
}

} // namespace
} // namespace orva::p25
