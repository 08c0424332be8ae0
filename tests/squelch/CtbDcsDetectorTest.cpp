#include "squelch/CtbDcsDetector.h"

#include "tests/squelch/SanitizedBuild.h"
#include "tests/squelch/ScannerChain.h"
#include "tests/support/DcsEncoder.h"
#include "tests/support/FmModulator.h"
#include "tests/support/RandomSource.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::squelch {

struct CtbDcsDetectorInspector {
    static void TakeBit(CtbDcsDetector& detector, std::uint32_t bit) { detector.TakeBit(bit); }
    static std::uint32_t Register(const CtbDcsDetector& detector) { return detector.shiftRegister; }
    static float ReducedRate(const CtbDcsDetector& detector) { return detector.reducedRate; }
    static std::uint32_t Up(const CtbDcsDetector& detector) { return detector.resampler.GetUp(); }
    static std::uint32_t Down(const CtbDcsDetector& detector) { return detector.resampler.GetDown(); }
    static std::uint32_t FilterBlock(const CtbDcsDetector& detector) {
        return detector.filter.GetBlockLength();
    }
};

namespace {

using Inspector = CtbDcsDetectorInspector;

constexpr int kWordBits = 23;
constexpr std::uint32_t kWordMask = 0x7FFFFF;
constexpr double kBitsPerSecond = 134.4;

std::uint32_t Rotate(std::uint32_t word, int places) {
    for (int i = 0; i < places; ++i) {
        word = word >> 1 | (word & 1U) << (kWordBits - 1);
    }
    return word;
}

/// Codes whose word in inverted polarity is a rotation of `word`.
std::vector<std::int32_t> InversePartners(std::uint32_t word) {
    std::vector<std::int32_t> partners;
    for (const std::uint16_t code : kDcsCodes) {
        for (int places = 0; places < kWordBits; ++places) {
            if (Rotate(test::DcsWord(code) ^ kWordMask, places) == word) {
                partners.push_back(code);
            }
        }
    }
    return partners;
}

std::set<std::int32_t> Matches(const CtbDcsDetector& detector) {
    return {detector.matches.begin(), detector.matches.begin() + detector.matchCount};
}

/// What one signal of `code` must read as: itself, and its partner in the other polarity.
std::set<std::int32_t> ExpectedMatches(std::int32_t code, bool inverted) {
    std::set<std::int32_t> expected{inverted ? code + kDcsInverted : code};
    for (const std::int32_t partner : InversePartners(test::DcsWord(static_cast<unsigned>(code)))) {
        expected.insert(inverted ? partner : partner + kDcsInverted);
    }
    return expected;
}

void SendBits(CtbDcsDetector& detector, std::uint32_t word, int count, int from = 0) {
    for (int i = from; i < from + count; ++i) {
        Inspector::TakeBit(detector, word >> (i % kWordBits) & 1U);
    }
}

std::vector<std::int16_t> CodeAudio(unsigned code, bool inverted, int rate, double seconds) {
    test::DcsEncoder encoder(code, inverted, rate);
    std::vector<std::int16_t> audio(static_cast<std::size_t>(seconds * rate));
    // The discriminator turns a carrier below into positive audio.
    std::generate(audio.begin(), audio.end(),
                  [&] { return static_cast<std::int16_t>(-3000.0 * encoder.NextLevel()); });
    return audio;
}

} // namespace

TEST(DcsCodes, AreInRisingOrderAndOfNineBits) {
    for (std::size_t i = 0; i < kDcsCodeCount; ++i) {
        EXPECT_LT(kDcsCodes[i], 512) << i;
        if (i > 0) {
            EXPECT_GT(kDcsCodes[i], kDcsCodes[i - 1]) << i;
        }
    }
}

TEST(DcsCodes, WordsAreThoseOfTheGolayCode) {
    for (std::size_t i = 0; i < kDcsCodeCount; ++i) {
        EXPECT_EQ(kDcsWords[i], test::DcsWord(kDcsCodes[i])) << std::oct << kDcsCodes[i];
    }
}

TEST(DcsCodes, KnownWords) {
    EXPECT_EQ(kDcsCodes[0], 0006);
    EXPECT_EQ(kDcsWords[0], 0x7EE806U);
    EXPECT_EQ(kDcsCodes[1], 0007);
    EXPECT_EQ(kDcsWords[1], 0x39B807U);
    EXPECT_EQ(kDcsCodes[5], 0023);
    EXPECT_EQ(kDcsWords[5], 0x763813U);
}

TEST(DcsCodes, LieSevenBitsApartInAllRotationsAndPolarities) {
    for (std::size_t i = 0; i < kDcsCodeCount; ++i) {
        for (std::size_t j = 0; j < kDcsCodeCount; ++j) {
            for (int places = 0; places < kWordBits; ++places) {
                const std::uint32_t rotated = Rotate(kDcsWords[j], places);
                const int distance = std::popcount(kDcsWords[i] ^ rotated);
                EXPECT_TRUE(distance == 0 || distance == kWordBits || (distance >= 7 && distance <= 16))
                    << std::oct << kDcsCodes[i] << " " << kDcsCodes[j] << std::dec << " by " << places << ": "
                    << distance;
            }
        }
    }
}

TEST(DcsCodes, EachHasOneInversePartner) {
    for (std::size_t i = 0; i < kDcsCodeCount; ++i) {
        EXPECT_EQ(InversePartners(kDcsWords[i]).size(), 1U) << std::oct << kDcsCodes[i];
    }
    EXPECT_EQ(InversePartners(kDcsWords[0]), std::vector<std::int32_t>{0021});
    EXPECT_EQ(Rotate(kDcsWords[0], 12), test::DcsWord(0021) ^ kWordMask);
}

TEST(DcsCodes, HostCountsInvertedOnesAsNegative) {
    EXPECT_EQ(SignedDcsCode(0), 0);
    EXPECT_EQ(SignedDcsCode(0023), 0023);
    EXPECT_EQ(SignedDcsCode(511), 511);
    EXPECT_EQ(SignedDcsCode(0023 + 512), -0023);
}

TEST(CtbDcsDetector, StartsEmpty) {
    const CtbDcsDetector detector;
    EXPECT_EQ(detector.matchCount, 0U);
    EXPECT_EQ(Inspector::Register(detector), 0U);
}

TEST(CtbDcsDetector, ReducesToAboutTwentySamplesABit) {
    struct Row {
        float rate;
        std::uint32_t up;
        std::uint32_t down;
    };
    for (const Row& row :
         {Row{44100.0F, 3, 49}, Row{48000.0F, 4, 71}, Row{64000.0F, 3, 71}, Row{2688.0F, 1, 1}}) {
        CtbDcsDetector detector;
        detector.SetSampleRate(row.rate);
        EXPECT_EQ(Inspector::Up(detector), row.up) << row.rate;
        EXPECT_EQ(Inspector::Down(detector), row.down) << row.rate;
        EXPECT_FLOAT_EQ(Inspector::ReducedRate(detector),
                        row.rate * static_cast<float>(row.up) / static_cast<float>(row.down));
    }
}

TEST(CtbDcsDetector, IgnoresRatesThatCannotBeReduced) {
    CtbDcsDetector detector;
    detector.SetSampleRate(48000.0F);
    const float before = Inspector::ReducedRate(detector);
    for (const float rate : {0.0F, -1.0F, std::nanf(""), INFINITY}) {
        detector.SetSampleRate(rate);
        EXPECT_EQ(Inspector::ReducedRate(detector), before) << rate;
    }
}

TEST(CtbDcsDetector, FindsEveryCodeInEveryRotationAndPolarity) {
    for (const std::uint16_t code : kDcsCodes) {
        for (const bool inverted : {false, true}) {
            const std::uint32_t word = test::DcsWord(code) ^ (inverted ? kWordMask : 0U);
            for (int from = 0; from < kWordBits; from += test::kSanitizedBuild ? 9 : 1) {
                CtbDcsDetector detector;
                SendBits(detector, word, kWordBits, from);
                EXPECT_EQ(Matches(detector), ExpectedMatches(code, inverted))
                    << std::oct << code << std::dec << " inverted " << inverted << " from bit " << from;
            }
        }
    }
}

TEST(CtbDcsDetector, RegisterHoldsTheLast23BitsOldestLowest) {
    CtbDcsDetector detector;
    SendBits(detector, kWordMask, kWordBits);
    SendBits(detector, test::DcsWord(0023), kWordBits);
    EXPECT_EQ(Inspector::Register(detector), test::DcsWord(0023));
}

TEST(CtbDcsDetector, InvertedWordGivesCodePlus512First) {
    CtbDcsDetector detector;
    SendBits(detector, test::DcsWord(0023) ^ kWordMask, kWordBits);
    ASSERT_EQ(detector.matchCount, 2U);
    EXPECT_EQ(detector.matches[0], 0023 + 512);
}

TEST(CtbDcsDetector, TrueMatchComesFirstInItsOwnRotation) {
    CtbDcsDetector detector;
    SendBits(detector, test::DcsWord(0006), kWordBits);
    ASSERT_EQ(detector.matchCount, 2U);
    EXPECT_EQ(detector.matches[0], 0006);
    EXPECT_EQ(detector.matches[1], 0021 + 512);
}

TEST(CtbDcsDetector, NeverAddsAValueTwice) {
    CtbDcsDetector detector;
    SendBits(detector, test::DcsWord(0006), 10 * kWordBits);
    EXPECT_EQ(detector.matchCount, 2U);
}

TEST(CtbDcsDetector, MatchesStayUntilTheCallerClearsThem) {
    CtbDcsDetector detector;
    SendBits(detector, test::DcsWord(0006), kWordBits);
    SendBits(detector, 0, 5);
    EXPECT_EQ(detector.matchCount, 2U);
    detector.matchCount = 0;
    SendBits(detector, 0, 5);
    EXPECT_EQ(detector.matchCount, 0U);
}

TEST(CtbDcsDetector, NextMatchingBitStartsTheListAfresh) {
    CtbDcsDetector detector;
    SendBits(detector, test::DcsWord(0006), kWordBits);
    SendBits(detector, test::DcsWord(0754), kWordBits);
    EXPECT_EQ(Matches(detector), ExpectedMatches(0754, false));
}

TEST(CtbDcsDetector, PartOfAWordMatchesOnlyWhereTheZerosBeforeItComplete) {
    constexpr int kSent = 17;
    for (const std::uint16_t code : kDcsCodes) {
        CtbDcsDetector detector;
        const std::uint32_t word = test::DcsWord(code);
        SendBits(detector, word, kSent);
        EXPECT_EQ(detector.matchCount != 0, word >> kSent == 0) << std::oct << code;
    }
}

TEST(CtbDcsDetector, SteadyAudioEmitsBitsOfItsSign) {
    for (const std::int16_t level : {std::int16_t{5000}, std::int16_t{-5000}}) {
        CtbDcsDetector detector;
        detector.SetSampleRate(48000.0F);
        const std::vector<std::int16_t> audio(48000, level);
        detector.Process(audio.data(), 48000, 1);
        EXPECT_EQ(Inspector::Register(detector), level > 0 ? kWordMask : 0U);
        EXPECT_EQ(detector.matchCount, 0U);
    }
}

TEST(CtbDcsDetector, TakesEveryStridethSample) {
    const std::vector<std::int16_t> audio = CodeAudio(0265, false, 8000, 1.0);
    std::vector<std::int16_t> spread(audio.size() * 3, std::int16_t{12345});
    for (std::size_t i = 0; i < audio.size(); ++i) {
        spread[3 * i] = audio[i];
    }
    CtbDcsDetector plain;
    CtbDcsDetector strided;
    plain.SetSampleRate(8000.0F);
    strided.SetSampleRate(8000.0F);
    plain.Process(audio.data(), static_cast<std::uint32_t>(audio.size()), 1);
    strided.Process(spread.data(), static_cast<std::uint32_t>(spread.size()), 3);
    EXPECT_EQ(Matches(plain), ExpectedMatches(0265, false));
    EXPECT_EQ(Inspector::Register(strided), Inspector::Register(plain));
    EXPECT_EQ(Matches(strided), Matches(plain));
}

TEST(CtbDcsDetector, BlockSizeDoesNotMatterWhileItStaysTheSame) {
    const std::vector<std::int16_t> audio = CodeAudio(0431, true, 48000, 1.0);
    for (const std::uint32_t size : {100U, 1000U, 2400U, 48000U}) {
        CtbDcsDetector detector;
        detector.SetSampleRate(48000.0F);
        for (std::uint32_t begin = 0; begin + size <= audio.size(); begin += size) {
            detector.Process(audio.data() + begin, size, 1);
        }
        EXPECT_EQ(Matches(detector), ExpectedMatches(0431, true)) << size;
    }
}

TEST(CtbDcsDetector, RaisesTheFilterBlockToALongBlock) {
    CtbDcsDetector detector;
    detector.SetSampleRate(2688.0F);
    const std::vector<std::int16_t> audio = CodeAudio(0431, false, 2688, 2.0);
    EXPECT_EQ(Inspector::FilterBlock(detector), 1024U);
    detector.Process(audio.data(), static_cast<std::uint32_t>(audio.size()), 1);
    EXPECT_EQ(Inspector::FilterBlock(detector), audio.size());
    EXPECT_EQ(Matches(detector), ExpectedMatches(0431, false));
}

TEST(CtbDcsDetector, BitsGoOnThroughARateChange) {
    CtbDcsDetector detector;
    SendBits(detector, test::DcsWord(0023), kWordBits);
    const std::uint32_t before = Inspector::Register(detector);
    detector.SetSampleRate(64000.0F);
    EXPECT_EQ(Inspector::Register(detector), before);
    EXPECT_EQ(detector.matchCount, 2U);
}

TEST(CtbDcsDetector, NothingToDoWithoutSamples) {
    CtbDcsDetector detector;
    const std::int16_t sample = 1;
    detector.Process(nullptr, 10, 1);
    detector.Process(&sample, 1, 0);
    detector.Process(&sample, 0, 1);
    EXPECT_EQ(detector.matchCount, 0U);
}

TEST(CtbDcsDetector, NoiseMatchesAsOftenAsChanceGives) {
    // 112 words in 23 rotations among 2^23: one bit in 3256, 2.5 a minute. A match goes on when the next bit
    // repeats the one 23 earlier, half the time, so that matching bits come in runs of two on average.
    constexpr int kBits = test::kSanitizedBuild ? 20000 : 1000000;
    constexpr double kChance = static_cast<double>(kDcsCodeCount) * kWordBits / (1 << kWordBits);
    test::RandomSource random(11);
    CtbDcsDetector detector;
    int matching = 0;
    for (int i = 0; i < kBits; ++i) {
        Inspector::TakeBit(detector, random.Below(2));
        if (detector.matchCount != 0) {
            ++matching;
            EXPECT_EQ(detector.matchCount, 2U) << "bit " << i;
            detector.matchCount = 0;
        }
    }
    EXPECT_NEAR(matching, kBits * kChance, 5.0 * std::sqrt(kBits * kChance));
}

/// Sample rates of the receivers.
class DcsThroughFm : public testing::TestWithParam<int> {};

TEST_P(DcsThroughFm, EveryCodeIsFoundWithin60BitsWithItsOnePartner) {
    constexpr std::size_t kStep = test::kSanitizedBuild ? 16 : 1;
    constexpr double kMostBits = 60.0;
    const int rate = GetParam();
    for (std::size_t i = 0; i < kDcsCodeCount; i += kStep) {
        const std::uint16_t code = kDcsCodes[i];
        for (const bool inverted : {false, true}) {
            test::FmModulator modulator({.sampleRate = rate, .deviation = 500.0, .snrDb = 25.0, .seed = i});
            test::DcsEncoder encoder(code, inverted, rate);
            test::ScannerChain chain(static_cast<std::uint32_t>(rate));
            std::vector<double> levels(static_cast<std::size_t>(kMostBits / kBitsPerSecond * rate));
            std::generate(levels.begin(), levels.end(), [&] { return encoder.NextLevel(); });
            const std::vector<std::int16_t> signal = modulator.Modulate(levels);
            test::ForEachBlock(signal, [&](std::span<const std::int16_t> block) { chain.TakeSignal(block); });
            EXPECT_EQ(Matches(chain.dcs), ExpectedMatches(code, inverted))
                << std::oct << code << " inverted " << inverted;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, DcsThroughFm, testing::Values(48000, 64000));

} // namespace orva::squelch
