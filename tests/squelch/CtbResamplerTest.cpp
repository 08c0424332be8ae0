#include "squelch/CtbResampler.h"

#include "tests/support/RandomSource.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace orva::squelch {

struct CtbResamplerInspector {
    static const std::vector<std::int32_t>& Coefficients(const CtbResampler& r) { return r.coefficients; }
    static std::uint32_t HistoryLength(const CtbResampler& r) { return r.historyLength; }
    static std::uint32_t Phase(const CtbResampler& r) { return r.phase; }
};

namespace {

using Inspector = CtbResamplerInspector;
using Samples = std::vector<std::int16_t>;

constexpr float kTolerance = 0.01F;

Samples RandomSamples(std::size_t count, std::uint64_t seed = 1) {
    test::RandomSource random(seed);
    Samples samples(count);
    std::generate(samples.begin(), samples.end(), [&] { return static_cast<std::int16_t>(random.Next()); });
    return samples;
}

Samples Resample(CtbResampler& resampler, const Samples& input, std::size_t piece) {
    Samples output;
    for (std::size_t begin = 0; begin < input.size(); begin += piece) {
        const auto count = static_cast<std::uint32_t>(std::min(piece, input.size() - begin));
        Samples part(resampler.MostOutputs(count) + 1);
        const std::uint32_t produced = resampler.Resample(part.data(), input.data() + begin, count, 1);
        output.insert(output.end(), part.begin(), part.begin() + produced);
    }
    return output;
}

/// The design's formulas.
std::vector<double> ReferenceTaps(std::uint32_t taps, std::uint32_t up, std::uint32_t down) {
    const double cut = 0.85 / std::max(up, down);
    const auto half = static_cast<int>(taps >> 1);
    std::vector<double> h(taps);
    for (int i = 0; i < static_cast<int>(taps); ++i) {
        const int k = std::abs(i - half);
        const double a = (1.0 - 2.0 * k / (taps - 1.0)) * std::numbers::pi;
        const double window = 0.42 - 0.5 * std::cos(a) + 0.08 * std::cos(2.0 * a);
        const double sinc = std::sin(k * cut * std::numbers::pi) / (k * std::numbers::pi);
        h[static_cast<std::size_t>(i)] = k == 0 ? cut : window * sinc;
    }
    double sum = 0.0;
    for (const double tap : h) {
        sum += tap;
    }
    for (double& tap : h) {
        tap *= up / sum;
    }
    return h;
}

/// Output by definition: the zero-stuffed input, filtered, one sample kept of `down`.
std::vector<double> ReferenceOutput(const CtbResampler& resampler, const Samples& input) {
    const auto& taps = Inspector::Coefficients(resampler);
    const auto up = static_cast<std::int64_t>(resampler.GetUp());
    const auto history = static_cast<std::int64_t>(Inspector::HistoryLength(resampler));
    const auto count = static_cast<std::int64_t>(input.size());
    std::vector<double> output;
    for (std::int64_t place = 0; place < count * up; place += resampler.GetDown()) {
        double sum = 0.0;
        for (std::int64_t m = 0; m < count; ++m) {
            const std::int64_t tap = (m + history) * up - place;
            if (tap >= 0 && tap < static_cast<std::int64_t>(taps.size())) {
                sum +=
                    taps[static_cast<std::size_t>(tap)] / 2147483648.0 * input[static_cast<std::size_t>(m)];
            }
        }
        output.push_back(std::clamp(sum, -32768.0, 32768.0));
    }
    return output;
}

} // namespace

TEST(CtbResampler, EqualRatesNeedNoChange) {
    CtbResampler resampler;
    ASSERT_TRUE(resampler.Configure(127, 44100.0F, 44100.0F, kTolerance));
    EXPECT_EQ(resampler.GetUp(), 1U);
    EXPECT_EQ(resampler.GetDown(), 1U);
}

TEST(CtbResampler, ChoosesKnownRatios) {
    struct Row {
        float input;
        float target;
        std::uint32_t up;
        std::uint32_t down;
    };
    for (const Row& row : {Row{44100, 2688, 3, 49}, Row{8000, 1378, 4, 23}, Row{44100, 1378, 1, 32},
                           Row{48000, 1378, 2, 69}, Row{64000, 1378, 1, 46}, Row{48000, 2688, 4, 71},
                           Row{64000, 2688, 3, 71}, Row{1000, 1378, 18, 13}, Row{1000, 2688, 19, 7}}) {
        CtbResampler resampler;
        ASSERT_TRUE(resampler.Configure(127, row.input, row.target, kTolerance));
        EXPECT_EQ(resampler.GetUp(), row.up) << row.input << " to " << row.target;
        EXPECT_EQ(resampler.GetDown(), row.down) << row.input << " to " << row.target;
    }
}

TEST(CtbResampler, TakesTheSmallestUpWithinTheTolerance) {
    for (const double target : {1378.0, 2688.0}) {
        for (std::uint32_t input = 1000; input <= 200000; input += 777) {
            CtbResampler resampler;
            ASSERT_TRUE(
                resampler.Configure(3, static_cast<float>(input), static_cast<float>(target), kTolerance));
            std::uint32_t up = 1;
            while (std::abs(std::floor(up * input / target) * target / up / input - 1.0) >= kTolerance) {
                ++up;
            }
            EXPECT_EQ(resampler.GetUp(), up) << input << " to " << target;
            EXPECT_EQ(resampler.GetDown(), static_cast<std::uint32_t>(up * input / target))
                << input << " to " << target;
        }
    }
}

TEST(CtbResampler, FactorsAreAtLeastOne) {
    CtbResampler resampler;
    // A tolerance above 1 accepts the first try, which is down 0.
    ASSERT_TRUE(resampler.Configure(127, 1000.0F, 8000.0F, 2.0F));
    EXPECT_EQ(resampler.GetUp(), 1U);
    EXPECT_EQ(resampler.GetDown(), 1U);
}

TEST(CtbResampler, RejectsWhatItCannotDo) {
    CtbResampler resampler;
    ASSERT_TRUE(resampler.Configure(127, 48000.0F, 2688.0F, kTolerance));
    EXPECT_FALSE(resampler.Configure(0, 44100.0F, 2688.0F, kTolerance));
    EXPECT_FALSE(resampler.Configure(1U << 30, 44100.0F, 2688.0F, kTolerance));
    EXPECT_FALSE(resampler.Configure(127, 0.0F, 2688.0F, kTolerance));
    EXPECT_FALSE(resampler.Configure(127, -44100.0F, 2688.0F, kTolerance));
    EXPECT_FALSE(resampler.Configure(127, std::nanf(""), 2688.0F, kTolerance));
    EXPECT_FALSE(resampler.Configure(127, INFINITY, 2688.0F, kTolerance));
    EXPECT_FALSE(resampler.Configure(127, 1e30F, 2688.0F, kTolerance));
    EXPECT_FALSE(resampler.Configure(127, 1e-30F, 2688.0F, kTolerance));
    EXPECT_FALSE(resampler.Configure(127, 44100.0F, 0.0F, kTolerance));
    EXPECT_FALSE(resampler.Configure(127, 44100.0F, 2688.0F, 0.0F));
    EXPECT_EQ(resampler.GetUp(), 4U);
    EXPECT_EQ(resampler.GetDown(), 71U);
    EXPECT_EQ(resampler.GetTaps(), 509U);
}

TEST(CtbResampler, TapsAreOddAndAtLeastThree) {
    CtbResampler resampler;
    for (const std::uint32_t perBranch : {1U, 2U, 3U, 4U, 127U, 128U}) {
        ASSERT_TRUE(resampler.Configure(perBranch, 44100.0F, 2688.0F, kTolerance));
        EXPECT_EQ(resampler.GetTaps(), (3 * perBranch) | 1U);
        ASSERT_TRUE(resampler.Configure(perBranch, 44100.0F, 44100.0F, kTolerance));
        EXPECT_EQ(resampler.GetTaps(), std::max(perBranch, 3U) | 1U);
    }
}

TEST(CtbResampler, HistoryIsTheTapsOfALongestBranch) {
    CtbResampler resampler;
    ASSERT_TRUE(resampler.Configure(127, 48000.0F, 2688.0F, kTolerance));
    EXPECT_EQ(Inspector::HistoryLength(resampler), 128U); // 509 taps over 4 branches
    ASSERT_TRUE(resampler.Configure(127, 44100.0F, 1378.0F, kTolerance));
    EXPECT_EQ(Inspector::HistoryLength(resampler), 127U);
}

TEST(CtbResampler, FilterIsABlackmanWindowedSinc) {
    for (const float rate : {44100.0F, 48000.0F, 64000.0F, 8000.0F, 1000.0F}) {
        CtbResampler resampler;
        ASSERT_TRUE(resampler.Configure(127, rate, 2688.0F, kTolerance));
        const auto& taps = Inspector::Coefficients(resampler);
        const auto expected = ReferenceTaps(resampler.GetTaps(), resampler.GetUp(), resampler.GetDown());
        ASSERT_EQ(taps.size(), expected.size());
        for (std::size_t i = 0; i < taps.size(); ++i) {
            EXPECT_NEAR(taps[i], expected[i] * 2147483647.0, 1.0) << rate << " tap " << i;
        }
    }
}

TEST(CtbResampler, TapsOfOneSaturate) {
    CtbResampler resampler;
    // The window leaves nothing but the centre of three taps.
    ASSERT_TRUE(resampler.Configure(1, 44100.0F, 44100.0F, kTolerance));
    EXPECT_EQ(Inspector::Coefficients(resampler), (std::vector<std::int32_t>{0, 0x7FFFFFFF, 0}));
}

TEST(CtbResampler, ConstantInputKeepsItsLevel) {
    for (const float rate : {44100.0F, 48000.0F, 64000.0F, 8000.0F, 1000.0F}) {
        CtbResampler resampler;
        ASSERT_TRUE(resampler.Configure(127, rate, 2688.0F, kTolerance));
        const Samples output = Resample(resampler, Samples(20000, 10000), 1000);
        for (std::size_t i = output.size() / 2; i < output.size(); ++i) {
            EXPECT_NEAR(output[i], 10000, 3) << rate << " sample " << i;
        }
    }
}

TEST(CtbResampler, AgreesWithTheZeroStuffedDefinition) {
    const Samples input = RandomSamples(3000);
    for (const float rate : {1000.0F, 2688.0F, 8000.0F, 44100.0F, 48000.0F, 64000.0F}) {
        CtbResampler resampler;
        ASSERT_TRUE(resampler.Configure(31, rate, 2688.0F, kTolerance));
        const Samples output = Resample(resampler, input, 1024);
        const std::vector<double> expected = ReferenceOutput(resampler, input);
        ASSERT_EQ(output.size(), expected.size()) << rate;
        for (std::size_t i = 0; i < output.size(); ++i) {
            // Truncated down to 16 bits.
            EXPECT_LE(output[i], expected[i] + 1e-3) << rate << " sample " << i;
            EXPECT_GE(output[i], expected[i] - 1.001) << rate << " sample " << i;
        }
    }
}

TEST(CtbResampler, SplitsAnywhere) {
    const Samples input = RandomSamples(5000);
    for (const float rate : {1000.0F, 44100.0F, 64000.0F}) {
        CtbResampler whole;
        ASSERT_TRUE(whole.Configure(127, rate, 2688.0F, kTolerance));
        const Samples expected = Resample(whole, input, input.size());
        for (const std::size_t piece : {std::size_t{1}, std::size_t{2}, std::size_t{7}, std::size_t{1023}}) {
            CtbResampler resampler;
            ASSERT_TRUE(resampler.Configure(127, rate, 2688.0F, kTolerance));
            EXPECT_EQ(Resample(resampler, input, piece), expected) << rate << " by " << piece;
        }
    }
}

TEST(CtbResampler, BlockLengthCutsPassesOnly) {
    const Samples input = RandomSamples(5000);
    CtbResampler one;
    CtbResampler other;
    ASSERT_TRUE(one.Configure(127, 44100.0F, 2688.0F, kTolerance));
    ASSERT_TRUE(other.Configure(127, 44100.0F, 2688.0F, kTolerance));
    one.SetBlockLength(5000);
    other.SetBlockLength(13);
    EXPECT_EQ(Resample(one, input, input.size()), Resample(other, input, input.size()));
}

TEST(CtbResampler, WithoutAnOutputTheSamplesStayInside) {
    const Samples input = RandomSamples(2000);
    CtbResampler copying;
    CtbResampler keeping;
    for (CtbResampler* resampler : {&copying, &keeping}) {
        ASSERT_TRUE(resampler->Configure(127, 48000.0F, 2688.0F, kTolerance));
        resampler->SetBlockLength(2000);
    }
    const Samples expected = Resample(copying, input, input.size());
    ASSERT_EQ(keeping.Resample(nullptr, input.data(), 2000, 1), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(keeping.Output()[i] >> 16, expected[i]) << i;
    }
}

TEST(CtbResampler, WithoutAnOutputTheLastPassIsWhatStays) {
    const Samples input = RandomSamples(250);
    CtbResampler resampler;
    ASSERT_TRUE(resampler.Configure(3, 48000.0F, 48000.0F, kTolerance));
    resampler.SetBlockLength(100);
    EXPECT_EQ(resampler.Resample(nullptr, input.data(), 250, 1), 50U);
}

TEST(CtbResampler, TakesEveryStridethSample) {
    const Samples input = RandomSamples(900);
    Samples every3rd;
    for (std::size_t i = 0; i + 2 < input.size(); i += 3) {
        every3rd.push_back(input[i]);
    }
    CtbResampler strided;
    CtbResampler plain;
    ASSERT_TRUE(strided.Configure(31, 8000.0F, 2688.0F, kTolerance));
    ASSERT_TRUE(plain.Configure(31, 8000.0F, 2688.0F, kTolerance));
    Samples output(strided.MostOutputs(300));
    output.resize(strided.Resample(output.data(), input.data(), 900, 3));
    EXPECT_EQ(output, Resample(plain, every3rd, every3rd.size()));
}

TEST(CtbResampler, IncompleteStrideIsLeftOut) {
    CtbResampler resampler;
    ASSERT_TRUE(resampler.Configure(3, 8000.0F, 8000.0F, kTolerance));
    const Samples input(8, 1000);
    Samples output(8);
    EXPECT_EQ(resampler.Resample(output.data(), input.data(), 8, 3), 2U);
    EXPECT_EQ(resampler.Resample(output.data(), input.data(), 2, 3), 0U);
}

TEST(CtbResampler, OvershootSaturates) {
    CtbResampler resampler;
    ASSERT_TRUE(resampler.Configure(127, 8000.0F, 8000.0F, kTolerance));
    Samples input(2000);
    for (std::size_t i = 0; i < input.size(); ++i) {
        input[i] = i / 50 % 2 == 0 ? std::int16_t{32767} : std::int16_t{-32768};
    }
    resampler.SetBlockLength(2000);
    const std::uint32_t count = resampler.Resample(nullptr, input.data(), 2000, 1);
    const auto [least, greatest] = std::minmax_element(resampler.Output(), resampler.Output() + count);
    EXPECT_EQ(*greatest, 0x7FFFFFFF);
    EXPECT_EQ(*least, -0x7FFFFFFF);
}

TEST(CtbResampler, BlockLengthIsAtLeastOne) {
    CtbResampler resampler;
    resampler.SetBlockLength(0);
    EXPECT_EQ(resampler.GetBlockLength(), 1U);
}

TEST(CtbResampler, ANewBlockLengthClearsTheHistory) {
    CtbResampler resampler;
    ASSERT_TRUE(resampler.Configure(127, 8000.0F, 8000.0F, kTolerance));
    Resample(resampler, Samples(1000, 20000), 1000);
    const Samples zeros(200, 0);
    CtbResampler unchanged = resampler;
    unchanged.SetBlockLength(unchanged.GetBlockLength());
    EXPECT_NE(Resample(unchanged, zeros, 200), zeros);
    resampler.SetBlockLength(2000);
    EXPECT_EQ(Resample(resampler, zeros, 200), zeros);
}

TEST(CtbResampler, ConfigureStartsThePhaseAnewAndKeepsAnUnchangedHistory) {
    CtbResampler resampler;
    ASSERT_TRUE(resampler.Configure(127, 8000.0F, 1378.0F, kTolerance));
    Resample(resampler, Samples(1000, 20000), 1000);
    EXPECT_NE(Inspector::Phase(resampler), 0U);
    ASSERT_TRUE(resampler.Configure(127, 8000.0F, 1378.0F, kTolerance));
    EXPECT_EQ(Inspector::Phase(resampler), 0U);
    EXPECT_NE(Resample(resampler, Samples(200, 0), 200), Samples(35, 0));
}

TEST(CtbResampler, KeepsTheFilterWhenOnlyTheFactorsChange) {
    CtbResampler resampler;
    ASSERT_TRUE(resampler.Configure(127, 44100.0F, 1378.0F, kTolerance));
    const auto taps = Inspector::Coefficients(resampler);
    ASSERT_TRUE(resampler.Configure(127, 64000.0F, 1378.0F, kTolerance));
    EXPECT_EQ(resampler.GetDown(), 46U);
    EXPECT_EQ(Inspector::Coefficients(resampler), taps);
}

} // namespace orva::squelch
