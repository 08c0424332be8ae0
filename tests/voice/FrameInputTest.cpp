#include "voice/FrameInput.h"

#include "tests/voice/VoiceFrames.h"
#include "voice/CodeWords.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

using test::InformationBits;

InformationBits RandomInformation(std::mt19937& random) {
    InformationBits bits{};
    std::ranges::generate(bits, [&] { return static_cast<std::uint8_t>(random() & 1U); });
    return bits;
}

TEST(FrameInput, DeinterleavingIsABijection) {
    std::set<int> seen;
    for (int index = 0; index < kCodedBits; ++index) {
        std::array<std::uint8_t, kCodedBits> received{};
        received[static_cast<std::size_t>(index)] = 1;
        const CodedSamples coded = Deinterleave(received.data());
        ASSERT_EQ(std::ranges::count(coded, 1), 1) << "received index " << index;
        seen.insert(static_cast<int>(std::ranges::find(coded, 1) - coded.begin()));
    }
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(kCodedBits));
}

TEST(FrameInput, DeinterleavingPutsEveryGroupInItsPlaces) {
    constexpr std::array<int, 12> kPlaces{0, 24, 48, 72, 96, 120, 25, 1, 73, 49, 121, 97};
    std::array<std::uint8_t, kCodedBits> received{};
    for (std::size_t i = 0; i < received.size(); ++i) {
        received[i] = static_cast<std::uint8_t>(i);
    }
    const CodedSamples coded = Deinterleave(received.data());
    for (int group = 0; group < 12; ++group) {
        for (int i = 0; i < 12; ++i) {
            const auto position = static_cast<std::size_t>(2 * group + kPlaces[static_cast<std::size_t>(i)]);
            EXPECT_EQ(coded[position], 12 * group + i) << "group " << group << ", bit " << i;
        }
    }
}

TEST(FrameInput, PseudoNoiseOfAZeroSeedStartsAt13849) {
    CodedSamples samples{};
    DemodulatePn(samples, 0, 1);
    std::uint32_t p = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (i < 23 || i >= 137) {
            EXPECT_EQ(samples[i], 0) << "position " << i;
            continue;
        }
        p = (173 * p + 13849) & 0xFFFF;
        EXPECT_EQ(samples[i], p >> 15) << "position " << i;
        if (i == 23) {
            EXPECT_EQ(p, 13849U);
            EXPECT_EQ(samples[i], 0);
        }
    }
}

TEST(FrameInput, PseudoNoiseInvertsSoftSamples) {
    for (std::uint32_t seed = 0; seed < 4096; seed += 123) {
        for (int softBits = 1; softBits <= kLargestSoftBits; ++softBits) {
            CodedSamples hard{};
            CodedSamples soft{};
            soft.fill(1);
            DemodulatePn(hard, seed, 1);
            DemodulatePn(soft, seed, softBits);
            for (std::size_t i = 23; i < 137; ++i) {
                EXPECT_EQ(soft[i], hard[i] != 0 ? (1 << softBits) - 2 : 1) << "position " << i;
            }
        }
    }
}

TEST(FrameInput, DecodesAllInformationWithTheHeaviestErrorsOfEveryWord) {
    std::mt19937 random(10);
    const auto map = test::InterleavingMap();
    for (int trial = 0; trial < 500; ++trial) {
        const InformationBits information = RandomInformation(random);
        ImbeFrameBlock block = test::ReceivedBlock(information);
        std::array<int, kWordsPerFrame> errors{};
        int first = 0;
        for (std::size_t word = 0; word < errors.size(); ++word) {
            const int length = word < 4 ? 23 : 15;
            errors[word] = static_cast<int>(random() % (word < 4 ? 4 : 2));
            std::set<int> places;
            while (places.size() < static_cast<std::size_t>(errors[word])) {
                places.insert(first + static_cast<int>(random() % static_cast<unsigned>(length)));
            }
            for (const int place : places) {
                block.bits[map[static_cast<std::size_t>(place)]] ^= 1;
            }
            first += length;
        }
        ImbeDecoderState state;
        ImbeInit(state);
        ImbeDecodeCodeWords(block, state);
        ASSERT_TRUE(std::equal(information.begin(), information.end(), block.bits)) << "trial " << trial;
        int total = 0;
        for (std::size_t word = 0; word < errors.size(); ++word) {
            ASSERT_EQ(state.wordErrors[word], errors[word]) << "trial " << trial << ", word " << word;
            total += errors[word];
        }
        ASSERT_EQ(state.errorTotal, total);
        ASSERT_EQ(block.errorTotal, total);
        ASSERT_EQ(block.softMetric, 0);
        ASSERT_EQ(block.errorRate, state.errorRate);
    }
}

TEST(FrameInput, BitsBehindTheInformationKeepTheirContents) {
    std::mt19937 random(11);
    ImbeFrameBlock block = test::ReceivedBlock(RandomInformation(random));
    const std::vector<std::uint8_t> before(block.bits + kInformationBits, block.bits + kCodedBits);
    ImbeDecoderState state;
    ImbeInit(state);
    ImbeDecodeCodeWords(block, state);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), block.bits + kInformationBits));
}

// --- soft decisions ----------------------------------------------------------------------------------------

// The procedure of soft decoding, written from its description with plain sorted lists.
struct SoftReference {
    int length;
    int listLength;
    bool golay;

    std::uint32_t Decode(std::uint32_t word) const { return golay ? DecodeGolay(word) : DecodeHamming(word); }

    std::pair<std::uint32_t, int> Choose(const std::vector<std::uint8_t>& samples, int softBits) const {
        const int top = (1 << softBits) - 1;
        std::uint32_t hard = 0;
        for (const std::uint8_t s : samples) {
            hard = 2 * hard + (s >> (softBits - 1));
        }
        // A stable sort of the walk from the last sample to the first keeps the earlier met of equals ahead.
        std::vector<std::pair<int, std::uint32_t>> order;
        for (int i = length - 1; i >= 0; --i) {
            order.emplace_back(std::abs(2 * samples[static_cast<std::size_t>(i)] + 1 - (top + 1)),
                               1U << (length - 1 - i));
        }
        std::ranges::stable_sort(order, {}, &std::pair<int, std::uint32_t>::first);
        std::vector<std::uint32_t> candidates;
        if (golay) {
            for (unsigned index = 0; index < 8; ++index) {
                std::uint32_t candidate = hard;
                for (unsigned k = 0; k < 3; ++k) {
                    candidate ^= ((index >> k) & 1U) != 0 ? order[k].second : 0;
                }
                candidates.push_back(candidate);
            }
        } else {
            candidates.push_back(hard);
            for (std::size_t k = 0; k < static_cast<std::size_t>(listLength); ++k) {
                candidates.push_back(hard ^ order[k].second);
            }
        }
        std::uint32_t best = Decode(hard);
        if (best == hard) {
            return {best, 0};
        }
        const auto metric = [&](std::uint32_t word) {
            int sum = 0;
            for (int i = 0; i < length; ++i) {
                const int bit = static_cast<int>((word >> (length - 1 - i)) & 1U);
                const int distance = samples[static_cast<std::size_t>(i)] - bit * top;
                sum += distance * distance;
            }
            return static_cast<std::int16_t>(sum);
        };
        int lowest = metric(best);
        for (std::size_t i = 1; i < candidates.size(); ++i) {
            const std::uint32_t word = Decode(candidates[i]);
            if (metric(word) < lowest) {
                best = word;
                lowest = metric(word);
            }
        }
        return {best, lowest};
    }
};

// Soft samples of a word: a level for each bit with Gaussian noise.
std::vector<std::uint8_t> SoftSamples(std::mt19937& random, std::uint32_t word, int length, int softBits,
                                      double sigma) {
    const int top = (1 << softBits) - 1;
    std::normal_distribution<double> noise(0.0, sigma * top);
    std::vector<std::uint8_t> samples;
    for (int bit = length - 1; bit >= 0; --bit) {
        const double level = ((word >> bit) & 1U) != 0 ? 0.75 * top : 0.25 * top;
        samples.push_back(
            static_cast<std::uint8_t>(std::clamp(std::lround(level + noise(random)), 0L, long{top})));
    }
    return samples;
}

TEST(FrameInput, SoftDecodingFollowsItsProcedure) {
    std::mt19937 random(12);
    const SoftReference golay{23, 3, true};
    const SoftReference hamming{15, 4, false};
    for (int softBits = 2; softBits <= kLargestSoftBits; ++softBits) {
        for (int trial = 0; trial < 400; ++trial) {
            const auto longWord = SoftSamples(random, test::EncodeGolay(random() & 0xFFF), 23, softBits, 0.2);
            const auto [word, metric] = golay.Choose(longWord, softBits);
            const DecodedWord decoded = DecodeGolayWord(longWord.data(), softBits);
            ASSERT_EQ(decoded.word, word) << "softBits " << softBits << ", trial " << trial;
            ASSERT_EQ(decoded.metric, metric) << "softBits " << softBits << ", trial " << trial;

            const auto shortWord =
                SoftSamples(random, test::EncodeHamming(random() & 0x7FF), 15, softBits, 0.2);
            const auto [word2, metric2] = hamming.Choose(shortWord, softBits);
            const DecodedWord decoded2 = DecodeHammingWord(shortWord.data(), softBits);
            ASSERT_EQ(decoded2.word, word2) << "softBits " << softBits << ", trial " << trial;
            ASSERT_EQ(decoded2.metric, metric2) << "softBits " << softBits << ", trial " << trial;
        }
    }
}

TEST(FrameInput, SoftDecisionsCorrectMoreThanHardOnes) {
    std::mt19937 random(13);
    int hardFailures = 0;
    int softFailures = 0;
    for (int trial = 0; trial < 3000; ++trial) {
        const std::uint32_t word = test::EncodeGolay(random() & 0xFFF);
        auto samples = SoftSamples(random, word, 23, 4, 0.17);
        softFailures += DecodeGolayWord(samples.data(), 4).word != word ? 1 : 0;
        std::ranges::transform(samples, samples.begin(),
                               [](std::uint8_t s) { return static_cast<std::uint8_t>(s >> 3); });
        hardFailures += DecodeGolayWord(samples.data(), 1).word != word ? 1 : 0;
    }
    EXPECT_GT(hardFailures, 50);
    EXPECT_LT(softFailures, hardFailures / 2);
}

TEST(FrameInput, SoftFourErrorsWithThreeUnreliableSamplesAreCorrected) {
    const std::uint32_t word = test::EncodeGolay(0xABC);
    std::vector<std::uint8_t> samples;
    for (int bit = 22; bit >= 0; --bit) {
        samples.push_back(((word >> bit) & 1U) != 0 ? 7 : 0);
    }
    for (const std::size_t weak : {2U, 9U, 17U}) {
        samples[weak] = samples[weak] == 7 ? 3 : 4; // just beyond the threshold
    }
    samples[20] = samples[20] == 7 ? 0 : 7; // and one bit plainly wrong
    const DecodedWord decoded = DecodeGolayWord(samples.data(), 3);
    EXPECT_EQ(decoded.word, word);
    EXPECT_EQ(decoded.errors, 4);
    EXPECT_EQ(decoded.metric, 3 * 16 + 49);
}

TEST(FrameInput, AcceptedHardWordHasNoMetric) {
    const std::uint32_t word = test::EncodeHamming(0x2A5);
    std::vector<std::uint8_t> samples;
    for (int bit = 14; bit >= 0; --bit) {
        samples.push_back(((word >> bit) & 1U) != 0 ? 9 : 6); // weak but right
    }
    const DecodedWord decoded = DecodeHammingWord(samples.data(), 4);
    EXPECT_EQ(decoded.word, word);
    EXPECT_EQ(decoded.metric, 0);
    EXPECT_EQ(decoded.errors, 0);
}

TEST(FrameInput, DecodesWholeSoftFrames) {
    std::mt19937 random(14);
    for (int softBits = 2; softBits <= kLargestSoftBits; ++softBits) {
        const InformationBits information = RandomInformation(random);
        ImbeFrameBlock block = test::ReceivedBlock(information);
        block.softBits = static_cast<std::uint16_t>(softBits);
        const int top = (1 << softBits) - 1;
        for (std::uint8_t& bit : block.bits) {
            bit = static_cast<std::uint8_t>(bit != 0 ? top - static_cast<int>(random() % 2)
                                                     : static_cast<int>(random() % 2));
        }
        ImbeDecoderState state;
        ImbeInit(state);
        ImbeDecodeCodeWords(block, state);
        EXPECT_TRUE(std::equal(information.begin(), information.end(), block.bits))
            << "softBits " << softBits;
        EXPECT_EQ(state.errorTotal, 0) << "softBits " << softBits;
    }
}

TEST(FrameInput, SampleWidthsOutOfRangeAreBroughtIntoIt) {
    std::mt19937 random(15);
    for (const int softBits : {0, 9, 200, 65535}) {
        ImbeFrameBlock block{};
        std::ranges::generate(block.bits, [&] { return static_cast<std::uint8_t>(random()); });
        block.softBits = static_cast<std::uint16_t>(softBits);
        ImbeDecoderState state;
        ImbeInit(state);
        ImbeDecodeCodeWords(block, state);
        EXPECT_TRUE(std::all_of(block.bits, block.bits + kInformationBits, [](int bit) { return bit <= 1; }))
            << "softBits " << softBits;
    }
}

// --- error statistics --------------------------------------------------------------------------------------

std::int16_t FlagsFor(int errors, int firstWordErrors, int rate, int softBits) {
    ImbeDecoderState state;
    ImbeInit(state);
    state.errorTotal = static_cast<std::int16_t>(errors);
    state.wordErrors[0] = static_cast<std::int16_t>(firstWordErrors);
    state.errorRate = static_cast<std::int16_t>(rate);
    return UpdateErrorStatistics(softBits, state);
}

TEST(FrameInput, HardRepeatNeedsTheThresholdAndTwoErrorsInTheFirstWord) {
    for (int rate = 0; rate <= 4000; rate += 50) {
        const int threshold = std::min(10 + 40 * rate / 32768, 12);
        for (int errors = 0; errors <= 15; ++errors) {
            for (int first = 0; first <= 3; ++first) {
                const bool repeat = (FlagsFor(errors, first, rate, 1) & kImbeFlagRepeat) != 0;
                EXPECT_EQ(repeat, errors >= threshold && first >= 2)
                    << "rate " << rate << ", errors " << errors << ", first word " << first;
            }
        }
    }
}

TEST(FrameInput, TwelveErrorsWithOneInTheFirstWordNeverRepeat) {
    for (int rate = 0; rate <= 32767; rate += 31) {
        EXPECT_EQ(FlagsFor(12, 1, rate, 1) & kImbeFlagRepeat, 0) << "rate " << rate;
    }
}

TEST(FrameInput, SoftRepeatCountsTheFirstWordTwice) {
    EXPECT_EQ(FlagsFor(16, 3, 0, 2) & kImbeFlagRepeat, kImbeFlagRepeat);
    EXPECT_EQ(FlagsFor(15, 3, 0, 2) & kImbeFlagRepeat, 0);
    EXPECT_EQ(FlagsFor(20, 2, 0, 2) & kImbeFlagRepeat, 0);
    EXPECT_EQ(FlagsFor(12, 3, 0, 8) & kImbeFlagRepeat, 0);
    EXPECT_EQ(FlagsFor(12, 3, 0, 1) & kImbeFlagRepeat, kImbeFlagRepeat);
}

// The rate before, so that a frame without errors leads to `rate`.
int RateBefore(int rate) {
    return static_cast<int>(std::ceil(rate * 65536.0 / 62260.0));
}

TEST(FrameInput, AnErrorRateOf2867DoesNotMuteAnd2868Does) {
    for (const auto& [rate, softBits, mutes] :
         {std::tuple{2867, 1, false}, {2868, 1, true}, {2868, 2, false}, {3932, 2, false}, {3933, 2, true}}) {
        ImbeDecoderState state;
        ImbeInit(state);
        state.errorRate = static_cast<std::int16_t>(RateBefore(rate));
        const std::int16_t flags = UpdateErrorStatistics(softBits, state);
        ASSERT_EQ(state.errorRate, rate);
        EXPECT_EQ((flags & kImbeFlagMute) != 0, mutes) << "rate " << rate << ", softBits " << softBits;
    }
}

TEST(FrameInput, ErrorRateFollowsItsRecursion) {
    std::mt19937 random(16);
    ImbeDecoderState state;
    ImbeInit(state);
    std::uint64_t rate = 0;
    double smooth = 0.0;
    for (int frame = 0; frame < 500; ++frame) {
        const auto errors = static_cast<unsigned>(frame < 250 ? random() % 16 : 0);
        state.errorTotal = static_cast<std::int16_t>(errors);
        UpdateErrorStatistics(1, state);
        rate = (783744U * errors + 62260U * rate) >> 16;
        smooth = 0.95 * smooth + 0.000365 * errors;
        ASSERT_EQ(state.errorRate, static_cast<int>(rate)) << "frame " << frame;
        ASSERT_NEAR(state.errorRate / 32768.0, smooth, 0.001) << "frame " << frame;
    }
    EXPECT_EQ(state.errorRate, 0);
}

TEST(FrameInput, DecodingSetsTheFlagsAfresh) {
    ImbeFrameBlock block = test::ReceivedBlock(InformationBits{});
    block.status = 0x7FFF;
    ImbeDecoderState state;
    ImbeInit(state);
    ImbeDecodeCodeWords(block, state);
    EXPECT_EQ(block.status, 0);
}

} // namespace
} // namespace orva::voice
