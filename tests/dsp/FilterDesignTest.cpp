// The designs against their formulas, written down here a second time, and against what the filters do to
// tones.

#include "tests/dsp/FilterInspectors.h"

#include <cmath>
#include <complex>
#include <numbers>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::dsp {
namespace {

using Inspector = TFIRBaseInspector;
using std::numbers::pi;

/// Blackman-Harris over M points, at distance k from its centre.
double Weight(int k, int m) {
    const double x = 2.0 * pi * ((m - 1) / 2.0 - k) / (m - 1);
    return 0.35875 - 0.48829 * std::cos(x) + 0.14128 * std::cos(2 * x) - 0.01168 * std::cos(3 * x);
}

/// What a design is made from.
struct Wanted {
    int length = 64;
    double rate = 48000.0; ///< rate at which the taps act
    double gain = 1.0;

    int M() const { return length - 1; }
    int Centre() const { return M() / 2; }
    std::vector<double> Empty() const { return std::vector<double>(static_cast<std::size_t>(length), 0.0); }
};

std::vector<double> LowPass(const Wanted& w, double edge) {
    std::vector<double> taps = w.Empty();
    const double fc = edge / (w.rate / 2.0);
    double sum = 0.0;
    for (int i = 0; i < w.M(); ++i) {
        const int k = std::abs(i - w.Centre());
        const double tap = k == 0 ? fc : std::sin(k * fc * pi) * Weight(k, w.M()) / (k * pi);
        taps[static_cast<std::size_t>(i)] = tap;
        sum += tap;
    }
    for (double& tap : taps) {
        tap *= sum == 0.0 ? 1.0 : w.gain / sum;
    }
    return taps;
}

std::vector<double> BandPass(const Wanted& w, double low, double high) {
    std::vector<double> taps = w.Empty();
    const double bw = (high - low) / w.rate;
    for (int i = 0; i < w.M(); ++i) {
        const int k = std::abs(i - w.Centre());
        taps[static_cast<std::size_t>(i)] = k == 0 ? w.gain * 2.0 * bw
                                                   : std::cos(k * (high + low) * pi / w.rate) *
                                                         std::sin(k * bw * pi) * Weight(k, w.M()) / (k * pi) *
                                                         w.gain * 2.0;
    }
    return taps;
}

std::vector<double> Complement(const Wanted& w, std::vector<double> taps) {
    for (double& tap : taps) {
        tap = -tap;
    }
    taps[static_cast<std::size_t>(w.Centre())] += w.gain;
    return taps;
}

std::vector<double> FromMagnitudes(const Wanted& w, const std::vector<double>& magnitudes) {
    std::vector<double> taps = w.Empty();
    for (int i = 0; i <= w.Centre(); ++i) {
        double sum = 0.0;
        for (int j = 0; j <= w.Centre(); ++j) {
            sum += magnitudes[static_cast<std::size_t>(j)] * std::cos(2.0 * pi * j * i / w.M());
        }
        const double tap = 2.0 * sum * Weight(i, w.M()) * w.gain;
        taps[static_cast<std::size_t>(w.Centre() + i)] = tap;
        taps[static_cast<std::size_t>(w.Centre() - i)] = tap;
    }
    return taps;
}

void ExpectTaps(const TFIRBase& filter, const std::vector<double>& expected) {
    const std::vector<double> actual = Inspector::DesignTaps(filter);
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_NEAR(actual[i], expected[i], 1e-12) << "tap " << i;
    }
    EXPECT_EQ(actual.back(), 0.0);
}

void Prepare(TFIR_F32& filter, const Wanted& wanted, std::uint32_t type, double low = 2000.0,
             double high = 9000.0) {
    ASSERT_TRUE(filter.SetLength(static_cast<std::uint32_t>(wanted.length)));
    ASSERT_TRUE(filter.SetSampleRate(wanted.rate));
    ASSERT_TRUE(filter.SetFilterType(type));
    filter.SetBand(low, high, 0.0);
}

constexpr int kLengths[] = {4, 8, 32, 64, 240, 1024};

TEST(FilterDesign, LowPassFollowsItsFormula) {
    for (const int length : kLengths) {
        TFIR_F32 filter;
        const Wanted wanted{length};
        Prepare(filter, wanted, kFilterLowPass);
        ExpectTaps(filter, LowPass(wanted, 9000.0));
    }
}

TEST(FilterDesign, LowPassOfNothingIsAllZero) {
    TFIR_F32 filter;
    const Wanted wanted;
    Prepare(filter, wanted, kFilterLowPass);
    filter.SetHighCut(0.0);
    ExpectTaps(filter, wanted.Empty());
}

TEST(FilterDesign, LowPassTapsAddUpToTheGain) {
    TFIR_F32 filter;
    Prepare(filter, {240}, kFilterLowPass);
    double sum = 0.0;
    for (const double tap : Inspector::DesignTaps(filter)) {
        sum += tap;
    }
    EXPECT_NEAR(sum, 1.0, 1e-12);
}

TEST(FilterDesign, HighPassIsTheLowPassesComplement) {
    for (const int length : kLengths) {
        TFIR_F32 filter;
        const Wanted wanted{length};
        Prepare(filter, wanted, kFilterHighPass);
        ExpectTaps(filter, Complement(wanted, LowPass(wanted, 2000.0)));
    }
}

TEST(FilterDesign, BandPassFollowsItsFormula) {
    for (const int length : kLengths) {
        TFIR_F32 filter;
        const Wanted wanted{length};
        Prepare(filter, wanted, kFilterBandPass);
        ExpectTaps(filter, BandPass(wanted, 2000.0, 9000.0));
    }
}

TEST(FilterDesign, BandStopIsTheBandPassesComplement) {
    for (const int length : kLengths) {
        TFIR_F32 filter;
        const Wanted wanted{length};
        Prepare(filter, wanted, kFilterBandStop);
        ExpectTaps(filter, Complement(wanted, BandPass(wanted, 2000.0, 9000.0)));
    }
}

TEST(FilterDesign, HilbertTransformerIsOddWithABuiltInHammingWindow) {
    for (const int length : kLengths) {
        for (const std::uint32_t window : {10U, 3U}) {
            TFIR_F32 filter;
            const Wanted wanted{length};
            Prepare(filter, wanted, kFilterHilbert);
            ASSERT_TRUE(filter.SetWindowKind(window));
            std::vector<double> expected = wanted.Empty();
            const int c = wanted.Centre();
            for (int k = 1; k <= c; ++k) {
                const double v = (1.0 - std::cos(k * pi)) * (0.54 + 0.46 * std::cos(pi * k / c)) / (k * pi);
                expected[static_cast<std::size_t>(c + k)] = v;
                expected[static_cast<std::size_t>(c - k)] = -v;
            }
            ExpectTaps(filter, expected);
        }
    }
}

TEST(FilterDesign, MovingAverageHasEqualTaps) {
    TFIR_F32 filter;
    const Wanted wanted{32};
    Prepare(filter, wanted, kFilterMovingAverage);
    std::vector<double> expected(32, 1.0 / 31.0);
    expected.back() = 0.0;
    ExpectTaps(filter, expected);
}

TEST(FilterDesign, PassThroughIsACentreTap) {
    TFIR_F32 filter;
    const Wanted wanted{32};
    Prepare(filter, wanted, kFilterPassThrough);
    std::vector<double> expected = wanted.Empty();
    expected[15] = 1.0;
    ExpectTaps(filter, expected);
}

TEST(FilterDesign, FrequencySamplingFollowsTheUsersResponse) {
    TFIR_F32 filter;
    const Wanted wanted{64};
    Prepare(filter, wanted, kFilterPassThrough);
    std::vector<double> magnitudes;
    for (int j = 0; j < 32; ++j) {
        Inspector::UserMagnitudes(filter)[j] = 0.5 + 0.01 * j * j;
        magnitudes.push_back((0.5 + 0.01 * j * j) / 64.0);
    }
    ASSERT_TRUE(filter.SetFilterType(kFilterFrequencySampling));
    ExpectTaps(filter, FromMagnitudes(wanted, magnitudes));
}

TEST(FilterDesign, FrequencySamplingStartsFromAFlatResponse) {
    TFIR_F32 filter;
    const Wanted wanted{64};
    Prepare(filter, wanted, kFilterFrequencySampling);
    ExpectTaps(filter, FromMagnitudes(wanted, std::vector<double>(32, 1.0 / 64.0)));
}

/// Every platform's mathematics must lead to these taps of the receiver's low-pass, to well below a float's
/// rounding.
TEST(FilterDesign, IsTheSameOnEveryPlatform) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetLength(32));
    ASSERT_TRUE(filter.SetSampleRate(48000.0));
    ASSERT_TRUE(filter.SetFilterType(kFilterLowPass));
    filter.SetHighCut(3000.0);
    constexpr double kHalf[16] = {
        -5.30398065857e-07, -1.30677442965e-05, -8.86580219257e-05, -0.000317114115245,
        -0.000777078193148, -0.00136336904343,  -0.00151769707528,  0.0,
        0.0050764435216,    0.0157580530933,    0.0333296635136,    0.0572817534924,
        0.0847082674477,    0.110619126362,     0.129269241514,     0.136069931294};
    const std::vector<double> taps = Inspector::DesignTaps(filter);
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(taps[i], kHalf[i], 1e-12) << "tap " << i;
        EXPECT_EQ(taps[30 - i], taps[i]) << "tap " << i;
    }
}

// With a rate change

TEST(FilterDesign, PassThroughWithARateChangeIsALowPassAtNyquist) {
    TFIR_F32 filter;
    Prepare(filter, {64}, kFilterPassThrough);
    ASSERT_TRUE(filter.SetRateRatio(1, 3));
    ExpectTaps(filter, LowPass({64, 48000.0}, 8000.0));
    ASSERT_TRUE(filter.SetRateRatio(2, 1));
    ExpectTaps(filter, LowPass({64, 96000.0, 2.0}, 24000.0));
}

TEST(FilterDesign, HighPassWithARateChangeIsABandPassToNyquist) {
    TFIR_F32 filter;
    Prepare(filter, {64}, kFilterHighPass);
    ASSERT_TRUE(filter.SetRateRatio(1, 3));
    ExpectTaps(filter, BandPass({64, 48000.0}, 2000.0, 8000.0));
    ASSERT_TRUE(filter.SetRateRatio(3, 2));
    ExpectTaps(filter, BandPass({64, 144000.0, 3.0}, 2000.0, 24000.0));
}

TEST(FilterDesign, BandStopWithARateChangeIsABrickWall) {
    for (const std::uint32_t up : {1U, 3U}) {
        TFIR_F32 filter;
        Prepare(filter, {64}, kFilterBandStop, 2000.0, 5000.0);
        ASSERT_TRUE(filter.SetRateRatio(up, 2));
        const Wanted wanted{64, 48000.0 * up, static_cast<double>(up)};
        const double nyquist = up == 1 ? 12000.0 : 24000.0;
        constexpr int kBins = 32;
        const auto bin = [&](double f) { return static_cast<int>(f * (kBins - 1) / (wanted.rate / 2.0)); };
        std::vector<double> magnitudes(kBins, 0.0);
        for (int j = 0; j < kBins; ++j) {
            if (j <= bin(2000.0) || (j > bin(5000.0) && j <= bin(nyquist))) {
                magnitudes[static_cast<std::size_t>(j)] = 1.0 / kBins;
            }
        }
        ExpectTaps(filter, FromMagnitudes(wanted, magnitudes));
    }
}

TEST(FilterDesign, OtherTypesStandWithARateChange) {
    TFIR_F32 filter;
    Prepare(filter, {64}, kFilterLowPass, 1000.0, 3000.0);
    ASSERT_TRUE(filter.SetRateRatio(2, 1));
    ExpectTaps(filter, LowPass({64, 96000.0, 2.0}, 3000.0));
    ASSERT_TRUE(filter.SetFilterType(kFilterBandPass));
    ExpectTaps(filter, BandPass({64, 96000.0, 2.0}, 1000.0, 3000.0));
}

// Tilted

std::vector<double> TiltedMagnitudes(const Wanted& w, double low, double top, double slope,
                                     bool repeatsLast) {
    const int h = w.M() / 2;
    const double width = w.rate / 2.0 / h;
    std::vector<double> magnitudes(static_cast<std::size_t>(h) + 1, 0.0);
    std::size_t bin = static_cast<std::size_t>(std::lrint(low / width));
    double last = 1.0 / h;
    magnitudes[bin++] = last;
    for (double f = low + width; f <= top && bin < magnitudes.size(); f += width) {
        const double octaves = std::log2(f) - std::log2(low == 0.0 ? 1.0 : low);
        last = std::pow(10.0, slope * octaves * 0.05) / w.M();
        magnitudes[bin++] = last;
    }
    while (repeatsLast && bin < magnitudes.size()) {
        magnitudes[bin++] = last;
    }
    return magnitudes;
}

TEST(FilterDesign, TiltedBandPassFallsFromItsLowerEdge) {
    for (const int length : {32, 64, 256}) {
        TFIR_F32 filter;
        const Wanted wanted{length};
        Prepare(filter, wanted, kFilterBandPass);
        filter.SetSlope(-6.0);
        ExpectTaps(filter, FromMagnitudes(wanted, TiltedMagnitudes(wanted, 2000.0, 9000.0, -6.0, false)));
    }
}

TEST(FilterDesign, TiltedHighPassRepeatsItsLastBin) {
    TFIR_F32 filter;
    const Wanted wanted{64};
    Prepare(filter, wanted, kFilterHighPass);
    filter.SetSlope(-4.5);
    ExpectTaps(filter, FromMagnitudes(wanted, TiltedMagnitudes(wanted, 2000.0, 24000.0, -4.5, true)));
    ASSERT_TRUE(filter.SetRateRatio(1, 2));
    ExpectTaps(filter, FromMagnitudes(wanted, TiltedMagnitudes(wanted, 2000.0, 12000.0, -4.5, true)));
}

TEST(FilterDesign, TiltedFromZeroTakesOneHertzInTheLogarithmAndBinZero) {
    TFIR_F32 filter;
    const Wanted wanted{64};
    Prepare(filter, wanted, kFilterBandPass, 0.0, 9000.0);
    filter.SetSlope(-2.0);
    const std::vector<double> magnitudes = TiltedMagnitudes(wanted, 0.0, 9000.0, -2.0, false);
    EXPECT_EQ(magnitudes[0], 1.0 / 31.0);
    ExpectTaps(filter, FromMagnitudes(wanted, magnitudes));
}

TEST(FilterDesign, TiltedStaysInsideItsBinsAtTheEndOfTheBand) {
    for (const int length : kLengths) {
        for (const double low : {23999.0, 24000.0}) {
            TFIR_F32 filter;
            Prepare(filter, {length}, kFilterHighPass, low, 24000.0);
            filter.SetSlope(-9.9);
            for (const double tap : Inspector::DesignTaps(filter)) {
                ASSERT_TRUE(std::isfinite(tap)) << "length " << length << " from " << low;
            }
        }
    }
}

// Edge compensation, which nothing sets

TEST(FilterDesign, EdgeCompensationMovesTheEdgesByTheMeasuredTransition) {
    constexpr double kMeasured[kWindowKinds] = {
        5009.2475536675, 5018.7492743755, 5014.5884936348, 5017.2844306255, 5022.2036078114,
        5018.5929177986, 5015.7853006111, 5018.871344688,  5018.6679564939, 5026.2929287475,
        5025.9877874989, 5025.6215765614, 5019.4569912475};
    const Wanted wanted{64};
    for (std::uint32_t kind = 0; kind < kWindowKinds; ++kind) {
        const double r = 1024.0 / 64.0 * (kMeasured[kind] / 5000.0 - 1.0);
        const double t = r * 5000.0 / 64000.0 * 48000.0;
        TFIR_F32 compensated;
        Prepare(compensated, wanted, kFilterBandPass);
        Inspector::SetEdgeCompensation(compensated, true);
        compensated.SetWindowKind(kind);
        compensated.SetSlope(-1.0);
        compensated.SetSlope(0.0);
        TFIR_F32 moved;
        Prepare(moved, wanted, kFilterBandPass, 2000.0 + t, 9000.0 - t);
        moved.SetWindowKind(kind);
        ExpectTaps(compensated, Inspector::DesignTaps(moved));
    }
}

TEST(FilterDesign, EdgeCompensationIsLimited) {
    const Wanted wanted{4}; // the shift is larger than the band
    TFIR_F32 lowPass;
    Prepare(lowPass, wanted, kFilterPassThrough);
    Inspector::SetEdgeCompensation(lowPass, true);
    lowPass.SetFilterType(kFilterLowPass);
    ExpectTaps(lowPass,
               LowPass(wanted, 9000.0 - 1024.0 / 4.0 * (5025.9877874989 - 5000.0) / 64000.0 * 48000.0));
    lowPass.SetHighCut(1000.0);
    ExpectTaps(lowPass, LowPass(wanted, 1e-05));
    TFIR_F32 highPass;
    Prepare(highPass, wanted, kFilterPassThrough, 23000.0, 24000.0);
    Inspector::SetEdgeCompensation(highPass, true);
    highPass.SetFilterType(kFilterHighPass);
    ExpectTaps(highPass, Complement(wanted, LowPass(wanted, 24000.0)));
}

// Responses

/// Gain at a frequency in decibels, from the filter's impulse response.
double GainDb(TFIR_F32& filter, double frequency) {
    const std::size_t length = filter.GetLength();
    std::vector<float> response(length, 0.0F);
    response[0] = 1.0F;
    filter.ClearHistory();
    filter.Filter(response.data(), response.data(), static_cast<std::int32_t>(length));
    std::complex<double> sum = 0.0;
    for (std::size_t n = 0; n < length; ++n) {
        sum += static_cast<double>(response[n]) *
               std::polar(1.0, -2.0 * pi * frequency / filter.GetSampleRate() * static_cast<double>(n));
    }
    return 20.0 * std::log10(std::abs(sum) + 1e-12);
}

void ExpectPass(TFIR_F32& filter, double from, double to) {
    for (double f = from; f <= to; f += 50.0) {
        EXPECT_NEAR(GainDb(filter, f), 0.0, 0.01) << f << " Hz";
    }
}

void ExpectStop(TFIR_F32& filter, double from, double to) {
    for (double f = from; f <= to; f += 50.0) {
        EXPECT_LT(GainDb(filter, f), -90.0) << f << " Hz";
    }
}

TEST(FilterResponse, OfEachTypePassesAndStopsWhatItSays) {
    constexpr double kTransition = 800.0; // of 256 taps at 48000 Hz, to one side
    const Wanted wanted{256};
    TFIR_F32 filter;
    Prepare(filter, wanted, kFilterLowPass, 4000.0, 9000.0);
    ExpectPass(filter, 0.0, 9000.0 - kTransition);
    ExpectStop(filter, 9000.0 + kTransition, 24000.0);
    filter.SetFilterType(kFilterHighPass);
    ExpectStop(filter, 0.0, 4000.0 - kTransition);
    ExpectPass(filter, 4000.0 + kTransition, 24000.0);
    filter.SetFilterType(kFilterBandPass);
    ExpectStop(filter, 0.0, 4000.0 - kTransition);
    ExpectPass(filter, 4000.0 + kTransition, 9000.0 - kTransition);
    ExpectStop(filter, 9000.0 + kTransition, 24000.0);
    filter.SetFilterType(kFilterBandStop);
    ExpectPass(filter, 0.0, 4000.0 - kTransition);
    ExpectStop(filter, 4000.0 + kTransition, 9000.0 - kTransition);
    ExpectPass(filter, 9000.0 + kTransition, 24000.0);
    filter.SetFilterType(kFilterPassThrough);
    ExpectPass(filter, 0.0, 24000.0);
}

TEST(FilterResponse, IsHalfAtTheBandEdge) {
    TFIR_F32 filter;
    Prepare(filter, {256}, kFilterLowPass, 0.0, 3000.0);
    EXPECT_NEAR(GainDb(filter, 3000.0), -6.02, 0.05);
}

TEST(FilterResponse, OfTheTiltFallsByItsSlope) {
    TFIR_F32 filter;
    Prepare(filter, {512}, kFilterBandPass, 300.0, 12000.0);
    filter.SetSlope(-6.0);
    for (const double f : {1500.0, 2500.0, 5000.0}) {
        EXPECT_NEAR(GainDb(filter, 2.0 * f) - GainDb(filter, f), -6.0, 0.1) << f << " Hz";
    }
}

} // namespace
} // namespace orva::dsp
