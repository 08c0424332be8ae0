#include "squelch/DcBlock.h"

#include "tests/support/RandomSource.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace orva::squelch {
namespace {

using Samples = std::vector<std::int16_t>;

void Block(DcBlockState& state, Samples& samples, std::uint32_t rate) {
    DcBlock(state, samples.data(), static_cast<std::uint32_t>(samples.size()), rate);
}

} // namespace

TEST(DcBlock, AgreesWithTheFormulaInDouble) {
    for (const std::uint32_t rate : {48000U, 64000U}) {
        test::RandomSource random(1);
        Samples samples(20000);
        std::generate(samples.begin(), samples.end(),
                      [&] { return static_cast<std::int16_t>(5000.0 + 3000.0 * random.Gaussian()); });
        const Samples input = samples;
        DcBlockState state;
        Block(state, samples, rate);
        const double a = static_cast<float>(std::exp(-2.0 * std::numbers::pi / rate));
        double y = 0.0;
        double before = 0.0;
        for (std::size_t i = 0; i < input.size(); ++i) {
            y = a * y + (input[i] - before) * (a + 1.0) / 2.0;
            before = input[i];
            // Truncated, behind a sum that rounds at each step.
            ASSERT_NEAR(samples[i], y, 1.2) << rate << " sample " << i;
        }
    }
}

TEST(DcBlock, TruncatesTowardsZero) {
    DcBlockState state;
    Samples samples = {10, 10, -10};
    Block(state, samples, 48000);
    // 9.9993, 9.9980, -10.001
    EXPECT_EQ(samples, (Samples{9, 9, -10}));
}

TEST(DcBlock, RemovesDcWithinSeconds) {
    DcBlockState state;
    Samples samples(5 * 48000, 10000);
    Block(state, samples, 48000);
    EXPECT_EQ(samples.front(), 9999);
    EXPECT_EQ(samples.back(), 0);
    // A time constant is 1 / (2 pi) s.
    EXPECT_NEAR(samples[7639], 10000.0 / std::numbers::e, 10.0);
}

TEST(DcBlock, RunsThroughFromBlockToBlock) {
    test::RandomSource random(1);
    Samples whole(5000);
    std::generate(whole.begin(), whole.end(), [&] { return static_cast<std::int16_t>(random.Next()); });
    Samples parts = whole;
    DcBlockState one;
    DcBlockState other;
    Block(one, whole, 64000);
    for (std::size_t begin = 0; begin < parts.size(); begin += 7) {
        DcBlock(other, parts.data() + begin,
                static_cast<std::uint32_t>(std::min<std::size_t>(7, parts.size() - begin)), 64000);
    }
    EXPECT_EQ(parts, whole);
    EXPECT_EQ(other.dcBlockPrevIn, one.dcBlockPrevIn);
    EXPECT_EQ(other.dcBlockPrevOut, one.dcBlockPrevOut);
}

TEST(DcBlock, LimitsWhatDoesNotFit16Bits) {
    DcBlockState state;
    Samples samples(480000, -32768);
    samples.push_back(32767);
    Block(state, samples, 48000);
    EXPECT_EQ(samples.back(), 32767);
    samples.assign(480000, 32767);
    samples.push_back(-32768);
    Block(state, samples, 48000);
    EXPECT_EQ(samples.back(), -32768);
}

TEST(DcBlock, DoesNothingWithoutSamplesOrRate) {
    DcBlockState state;
    std::int16_t sample = 100;
    DcBlock(state, nullptr, 5, 48000);
    DcBlock(state, &sample, 1, 0);
    DcBlock(state, &sample, 0, 48000);
    EXPECT_EQ(sample, 100);
    EXPECT_EQ(state.dcBlockPrevIn, 0);
}

} // namespace orva::squelch
