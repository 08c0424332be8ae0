#include "squelch/CtbFixedFir.h"

#include "tests/support/RandomSource.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace orva::squelch {

struct CtbFixedFirInspector {
    static const std::vector<std::int16_t>& Coefficients(const CtbFixedFir& f) { return f.coefficients; }
    static std::vector<std::int16_t> Taps(const CtbFixedFir& f) {
        return {f.coefficients.begin(), f.coefficients.begin() + f.taps};
    }
    static std::uint32_t TapCount(const CtbFixedFir& f) { return f.taps; }
    static float Upper(const CtbFixedFir& f) { return f.upperFrequency; }
    static float Lower(const CtbFixedFir& f) { return f.lowerFrequency; }
    static float Rate(const CtbFixedFir& f) { return f.filterRate; }
};

namespace {

using Inspector = CtbFixedFirInspector;
using Samples = std::vector<std::int16_t>;

Samples RandomSamples(std::size_t count) {
    test::RandomSource random(1);
    Samples samples(count);
    std::generate(samples.begin(), samples.end(), [&] { return static_cast<std::int16_t>(random.Next()); });
    return samples;
}

std::vector<std::int32_t> Filter(CtbFixedFir& filter, const Samples& input, std::size_t piece) {
    std::vector<std::int32_t> output(input.size());
    for (std::size_t begin = 0; begin < input.size(); begin += piece) {
        const auto count = static_cast<std::uint32_t>(std::min(piece, input.size() - begin));
        EXPECT_EQ(filter.Filter(output.data() + begin, input.data() + begin, count, 1), count);
    }
    return output;
}

double Gain(const CtbFixedFir& filter, double hz) {
    std::complex<double> sum = 0.0;
    const Samples taps = Inspector::Taps(filter);
    for (std::size_t k = 0; k < taps.size(); ++k) {
        sum +=
            static_cast<double>(taps[k]) / 32768.0 *
            std::polar(1.0, 2.0 * std::numbers::pi * hz * static_cast<double>(k) / Inspector::Rate(filter));
    }
    return std::abs(sum);
}

/// The low-pass formulas, unquantised, from the centre outward.
std::vector<double> ReferenceLowPass(int half, double cyclesPerSample) {
    std::vector<double> side(static_cast<std::size_t>(half) + 1);
    double sum = 0.0;
    for (int k = 0; k <= half; ++k) {
        const double a = (1.0 - static_cast<double>(k) / half) * std::numbers::pi;
        const double window = 0.42 - 0.5 * std::cos(a) + 0.08 * std::cos(2.0 * a);
        side[static_cast<std::size_t>(k)] =
            k == 0 ? 2.0 * cyclesPerSample
                   : window * std::sin(k * 2.0 * std::numbers::pi * cyclesPerSample) / (k * std::numbers::pi);
        sum += (k == 0 ? 1.0 : 2.0) * side[static_cast<std::size_t>(k)];
    }
    for (double& tap : side) {
        tap /= sum;
    }
    return side;
}

void ExpectTaps(const CtbFixedFir& filter, const std::vector<double>& side) {
    const Samples taps = Inspector::Taps(filter);
    const auto half = static_cast<int>(side.size()) - 1;
    ASSERT_EQ(taps.size(), 2 * side.size() - 1);
    for (int i = 0; i <= 2 * half; ++i) {
        const double tap = side[static_cast<std::size_t>(std::abs(i - half))];
        const double expected = std::clamp(std::trunc(tap * 32767.0), -32768.0, 32767.0);
        EXPECT_EQ(taps[static_cast<std::size_t>(i)], expected) << "tap " << i << " of " << taps.size();
    }
}

} // namespace

TEST(CtbFixedFir, StartsAsAPassThroughOf31Taps) {
    const CtbFixedFir filter;
    Samples expected(31, 0);
    expected[15] = 32767;
    EXPECT_EQ(Inspector::Taps(filter), expected);
    EXPECT_EQ(filter.GetBlockLength(), 1024U);
    EXPECT_EQ(Inspector::Upper(filter), 3000.0F);
    EXPECT_EQ(Inspector::Lower(filter), 1000.0F);
    EXPECT_EQ(Inspector::Rate(filter), 11025.0F);
}

TEST(CtbFixedFir, UpperFrequencyIsLimited) {
    CtbFixedFir filter;
    filter.SetUpperFrequency(9000.0F);
    EXPECT_EQ(Inspector::Upper(filter), 5512.5F);
    filter.SetUpperFrequency(0.5F);
    EXPECT_EQ(Inspector::Upper(filter), 2.0F);
    filter.SetUpperFrequency(-100.0F);
    EXPECT_EQ(Inspector::Upper(filter), 2.0F);
}

TEST(CtbFixedFir, LowerFrequencyMovesBelowTheUpper) {
    CtbFixedFir filter;
    filter.SetUpperFrequency(1001.0F);
    EXPECT_EQ(Inspector::Lower(filter), 1000.0F);
    filter.SetUpperFrequency(1000.0F);
    EXPECT_EQ(Inspector::Lower(filter), 999.0F);
    filter.SetUpperFrequency(300.0F);
    EXPECT_EQ(Inspector::Lower(filter), 299.0F);
}

TEST(CtbFixedFir, RateIsAtLeastFour) {
    CtbFixedFir filter;
    filter.SetFilterRate(1.0F);
    EXPECT_EQ(Inspector::Rate(filter), 4.0F);
    EXPECT_EQ(Inspector::Upper(filter), 2.0F);
    EXPECT_EQ(Inspector::Lower(filter), 1.0F);
}

TEST(CtbFixedFir, TakesAnyNumberForAFrequency) {
    for (const float rate : {std::nanf(""), INFINITY, -INFINITY, 1e38F}) {
        for (const float upper : {std::nanf(""), INFINITY, -INFINITY, 1e37F}) {
            for (std::uint32_t kind = 0; kind <= 7; ++kind) {
                CtbFixedFir filter;
                filter.SetFilterRate(rate);
                filter.SetUpperFrequency(upper);
                filter.SetKind(kind);
                EXPECT_GE(Inspector::Rate(filter), 4.0F);
                EXPECT_GE(Inspector::Upper(filter), 2.0F);
                EXPECT_LE(Inspector::Upper(filter), Inspector::Rate(filter) / 2.0F);
            }
        }
    }
}

TEST(CtbFixedFir, RateLowersTheFrequencies) {
    CtbFixedFir filter;
    filter.SetFilterRate(6001.0F);
    EXPECT_EQ(Inspector::Upper(filter), 3000.0F);
    filter.SetFilterRate(6000.0F);
    EXPECT_EQ(Inspector::Upper(filter), 3000.0F);
    filter.SetFilterRate(1800.0F);
    EXPECT_EQ(Inspector::Upper(filter), 900.0F);
    EXPECT_EQ(Inspector::Lower(filter), 899.0F);
}

TEST(CtbFixedFir, TapsAreOddAtLeastThreeAndPaddedTo32) {
    CtbFixedFir filter;
    for (const auto& [asked, given] :
         {std::pair{0U, 3U}, {1U, 3U}, {3U, 3U}, {4U, 5U}, {31U, 31U}, {32U, 33U}, {254U, 255U}}) {
        filter.SetTaps(asked);
        EXPECT_EQ(Inspector::TapCount(filter), given) << asked;
        EXPECT_EQ(Inspector::Coefficients(filter).size() % 32, 0U) << asked;
        EXPECT_GE(Inspector::Coefficients(filter).size(), given) << asked;
        for (std::size_t i = given; i < Inspector::Coefficients(filter).size(); ++i) {
            EXPECT_EQ(Inspector::Coefficients(filter)[i], 0) << asked << " padding " << i;
        }
    }
}

TEST(CtbFixedFir, LowPassFollowsTheFormula) {
    CtbFixedFir filter;
    filter.SetKind(kFixedFirLowPass);
    ExpectTaps(filter, ReferenceLowPass(15, 3000.0 / 11025.0));
    filter.SetFilterRate(2688.0F);
    filter.SetUpperFrequency(300.0F);
    filter.SetTaps(255);
    ExpectTaps(filter, ReferenceLowPass(127, 300.0 / 2688.0));
}

TEST(CtbFixedFir, HighPassIsTheLowPassLessTheCentre) {
    CtbFixedFir filter;
    filter.SetKind(kFixedFirHighPass);
    std::vector<double> side = ReferenceLowPass(15, 1000.0 / 11025.0);
    side[0] -= 1.0;
    ExpectTaps(filter, side);
    filter.SetTaps(255);
    EXPECT_NEAR(Gain(filter, 100.0), 0.0, 0.01);
    EXPECT_NEAR(Gain(filter, 3000.0), 1.0, 0.01);
}

TEST(CtbFixedFir, BandPassAndBandStopShareTheBand) {
    CtbFixedFir pass;
    CtbFixedFir stop;
    pass.SetKind(kFixedFirBandPass);
    stop.SetKind(kFixedFirBandStop);
    for (CtbFixedFir* filter : {&pass, &stop}) {
        filter->SetTaps(255);
    }
    for (const double hz : {0.0, 500.0, 4000.0, 5500.0}) {
        EXPECT_NEAR(Gain(pass, hz), 0.0, 0.01) << hz;
        EXPECT_NEAR(Gain(stop, hz), 1.0, 0.01) << hz;
    }
    for (const double hz : {1300.0, 2000.0, 2700.0}) {
        EXPECT_NEAR(Gain(pass, hz), 1.0, 0.01) << hz;
        EXPECT_NEAR(Gain(stop, hz), 0.0, 0.01) << hz;
    }
}

TEST(CtbFixedFir, HilbertTurnsByAQuarterInOddTapsOnly) {
    CtbFixedFir filter;
    filter.SetKind(kFixedFirHilbert);
    filter.SetTaps(255);
    const Samples taps = Inspector::Taps(filter);
    for (std::size_t k = 0; k <= 127; ++k) {
        EXPECT_EQ(taps[127 + k], -taps[127 - k]) << k;
        if (k % 2 == 0) {
            EXPECT_EQ(taps[127 + k], 0) << k;
        }
    }
    EXPECT_NEAR(Gain(filter, 2756.0), 1.0, 0.01);
    EXPECT_NEAR(Gain(filter, 500.0), 1.0, 0.01);
}

TEST(CtbFixedFir, MovingAverageHasEqualTaps) {
    CtbFixedFir filter;
    filter.SetKind(kFixedFirMovingAverage);
    EXPECT_EQ(Inspector::Taps(filter), Samples(31, static_cast<std::int16_t>(32767 / 31)));
}

TEST(CtbFixedFir, UnknownKindsPassThrough) {
    CtbFixedFir filter;
    const Samples passThrough = Inspector::Taps(filter);
    filter.SetKind(kFixedFirLowPass);
    filter.SetKind(7);
    EXPECT_EQ(Inspector::Taps(filter), passThrough);
}

TEST(CtbFixedFir, PassThroughDelaysByHalfItsLength) {
    CtbFixedFir filter;
    const Samples input = RandomSamples(200);
    const auto output = Filter(filter, input, 200);
    for (std::size_t i = 15; i < input.size(); ++i) {
        EXPECT_EQ(output[i], input[i - 15] * 32767 >> 15) << i;
    }
}

TEST(CtbFixedFir, AgreesWithTheDirectSum) {
    const Samples input = RandomSamples(3000);
    for (const std::uint32_t count : {3U, 31U, 33U, 63U, 65U, 255U}) {
        CtbFixedFir filter;
        filter.SetKind(kFixedFirLowPass);
        filter.SetTaps(count);
        const auto output = Filter(filter, input, input.size());
        const Samples taps = Inspector::Taps(filter);
        for (std::size_t n = 0; n < input.size(); ++n) {
            std::int64_t sum = 0;
            for (std::size_t k = 0; k < count; ++k) {
                const std::size_t back = count - 1 - k;
                sum += back <= n ? taps[k] * input[n - back] : 0;
            }
            ASSERT_EQ(output[n], sum >> 15) << count << " taps, sample " << n;
        }
    }
}

TEST(CtbFixedFir, SplitsAnywhere) {
    const Samples input = RandomSamples(3000);
    CtbFixedFir whole;
    whole.SetKind(kFixedFirLowPass);
    const auto expected = Filter(whole, input, input.size());
    for (const std::size_t piece : {std::size_t{1}, std::size_t{2}, std::size_t{7}, std::size_t{1023}}) {
        CtbFixedFir filter;
        filter.SetKind(kFixedFirLowPass);
        EXPECT_EQ(Filter(filter, input, piece), expected) << piece;
    }
}

TEST(CtbFixedFir, SumsOf32BitsWrap) {
    CtbFixedFir filter;
    filter.SetKind(kFixedFirMovingAverage);
    filter.SetTaps(3); // three taps of 10922
    const auto quiet = Filter(filter, Samples(3, -32768), 3);
    EXPECT_EQ(quiet[2], 3 * 10922 * -32768 >> 15);
    // The taps of a differentiator add up to more than the sum can hold.
    CtbFixedFir stop;
    stop.SetKind(kFixedFirHilbert);
    stop.SetTaps(255);
    const Samples taps = Inspector::Taps(stop);
    Samples worst(255);
    std::transform(taps.begin(), taps.end(), worst.begin(),
                   [](std::int16_t tap) { return tap < 0 ? std::int16_t{-32768} : std::int16_t{32767}; });
    std::int64_t sum = 0;
    for (std::size_t k = 0; k < taps.size(); ++k) {
        sum += taps[k] * worst[k];
    }
    ASSERT_GT(sum, std::int64_t{0x7FFFFFFF});
    EXPECT_EQ(Filter(stop, worst, 255)[254],
              static_cast<std::int32_t>(static_cast<std::uint32_t>(sum)) >> 15);
}

TEST(CtbFixedFir, TakesTheTop16BitsOfLongSamples) {
    const Samples input = RandomSamples(500);
    std::vector<std::int32_t> longSamples(input.size());
    std::transform(input.begin(), input.end(), longSamples.begin(),
                   [](std::int16_t x) { return x * 65536 + 0x7ABC; });
    CtbFixedFir shortFilter;
    CtbFixedFir longFilter;
    std::vector<std::int32_t> output(input.size());
    EXPECT_EQ(longFilter.Filter(output.data(), longSamples.data(), 500, 1), 500U);
    EXPECT_EQ(output, Filter(shortFilter, input, 500));
}

TEST(CtbFixedFir, TakesEveryStridethSample) {
    const Samples input = RandomSamples(500);
    Samples every5th;
    for (std::size_t i = 0; i < input.size(); i += 5) {
        every5th.push_back(input[i]);
    }
    CtbFixedFir strided;
    CtbFixedFir plain;
    std::vector<std::int32_t> output(100);
    EXPECT_EQ(strided.Filter(output.data(), input.data(), 500, 5), 100U);
    EXPECT_EQ(output, Filter(plain, every5th, 100));
}

TEST(CtbFixedFir, WithoutAnOutputTheLastPassStaysInside) {
    const Samples input = RandomSamples(250);
    CtbFixedFir keeping;
    CtbFixedFir copying;
    keeping.SetBlockLength(100);
    copying.SetBlockLength(100);
    const auto expected = Filter(copying, input, 250);
    ASSERT_EQ(keeping.Filter(nullptr, input.data(), 250, 1), 50U);
    for (std::size_t i = 0; i < 50; ++i) {
        EXPECT_EQ(keeping.Output()[i], expected[200 + i]) << i;
    }
}

TEST(CtbFixedFir, NewLengthsClearTheHistoryAndEqualOnesDoNot) {
    const Samples zeros(100, 0);
    const std::vector<std::int32_t> silence(100, 0);
    CtbFixedFir filter;
    Filter(filter, Samples(100, 20000), 100);
    CtbFixedFir same = filter;
    same.SetBlockLength(1024);
    same.SetTaps(31);
    EXPECT_NE(Filter(same, zeros, 100), silence);
    CtbFixedFir longer = filter;
    longer.SetBlockLength(0);
    EXPECT_EQ(longer.GetBlockLength(), 1U);
    EXPECT_EQ(Filter(longer, zeros, 100), silence);
    filter.SetTaps(33);
    EXPECT_EQ(Filter(filter, zeros, 100), silence);
}

} // namespace orva::squelch
