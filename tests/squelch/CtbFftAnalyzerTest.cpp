#include "squelch/CtbFftAnalyzer.h"

#include "tests/support/RandomSource.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::squelch {

struct CtbFftAnalyzerInspector {
    static const std::vector<float>& Window(const CtbFftAnalyzer& a) { return a.window; }
};

namespace {

constexpr std::uint32_t kWindowKinds = 5;

std::vector<double> ReferenceWindow(std::uint32_t kind, std::uint32_t length) {
    std::vector<double> window(length);
    for (std::uint32_t i = 0; i < length; ++i) {
        const double x = 2.0 * std::numbers::pi * i / (length - 1.0);
        const double values[kWindowKinds] = {1.0, 1.0 - std::abs(2.0 * i / (length - 1.0) - 1.0),
                                             1.0 + std::cos(std::numbers::pi - x), 0.54 - 0.46 * std::cos(x),
                                             0.42 - 0.5 * std::cos(x) + 0.08 * std::cos(2.0 * x)};
        window[i] = values[kind];
    }
    const double mean = std::accumulate(window.begin(), window.end(), 0.0) / length;
    for (double& value : window) {
        value /= mean;
    }
    return window;
}

template <class Sample>
std::vector<Sample> RandomSamples(std::size_t count) {
    test::RandomSource random(1);
    std::vector<Sample> samples(count);
    std::generate(samples.begin(), samples.end(), [&] { return static_cast<Sample>(random.Next()); });
    return samples;
}

template <class Sample>
void ExpectSpectrum(const CtbFftAnalyzer& analyzer, std::uint32_t kind, const std::vector<Sample>& samples,
                    const std::string& what) {
    const auto length = static_cast<std::uint32_t>(samples.size());
    const std::vector<double> window = ReferenceWindow(kind, length);
    double magnitudes = 0.0;
    for (std::uint32_t n = 0; n < length; ++n) {
        magnitudes += std::abs(window[n] * samples[n]);
    }
    const double bound = magnitudes * std::numeric_limits<float>::epsilon() * std::log2(length);
    for (std::uint32_t k = 0; k < length / 2; ++k) {
        std::complex<double> expected = 0.0;
        for (std::uint32_t n = 0; n < length; ++n) {
            const double angle = -2.0 * std::numbers::pi * (k * n % length) / length;
            expected += std::polar(window[n] * samples[n], angle);
        }
        ASSERT_NEAR(analyzer.Real()[k], expected.real(), bound) << what << " bin " << k;
        ASSERT_NEAR(analyzer.Imaginary()[k], expected.imag(), bound) << what << " bin " << k;
        const double power = 0.25 * std::norm(expected);
        ASSERT_NEAR(analyzer.Power()[k], power, bound * std::sqrt(power) + bound * bound)
            << what << " bin " << k;
    }
}

} // namespace

TEST(CtbFftAnalyzer, LengthIsRoundedUpToAPowerOfTwo) {
    CtbFftAnalyzer analyzer;
    EXPECT_EQ(analyzer.GetLength(), 1024U);
    for (const auto& [asked, given] : {std::pair{0U, 4U},
                                       {3U, 4U},
                                       {4U, 4U},
                                       {5U, 8U},
                                       {1000U, 1024U},
                                       {1024U, 1024U},
                                       {1025U, 2048U},
                                       {0xFFFFFFFFU, 1U << 20}}) {
        analyzer.SetLength(asked);
        EXPECT_EQ(analyzer.GetLength(), given) << asked;
        EXPECT_EQ(analyzer.GetHalfLength(), given / 2) << asked;
    }
}

TEST(CtbFftAnalyzer, WindowsFollowTheirFormulas) {
    for (const std::uint32_t length : {4U, 64U, 1024U}) {
        for (std::uint32_t kind = 0; kind < kWindowKinds; ++kind) {
            CtbFftAnalyzer analyzer;
            analyzer.SetWindow(kind);
            analyzer.SetLength(length);
            const std::vector<double> expected = ReferenceWindow(kind, length);
            const std::vector<float>& window = CtbFftAnalyzerInspector::Window(analyzer);
            for (std::uint32_t i = 0; i < length; ++i) {
                EXPECT_NEAR(window[i], expected[i], 1e-6) << "kind " << kind << " entry " << i;
                EXPECT_EQ(window[i], window[length - 1 - i]) << "kind " << kind << " entry " << i;
            }
            EXPECT_NEAR(std::accumulate(window.begin(), window.end(), 0.0) / length, 1.0, 1e-6) << kind;
        }
    }
}

TEST(CtbFftAnalyzer, UnknownWindowsAreRectangles) {
    CtbFftAnalyzer analyzer;
    analyzer.SetWindow(99);
    EXPECT_EQ(CtbFftAnalyzerInspector::Window(analyzer), std::vector<float>(1024, 1.0F));
}

TEST(CtbFftAnalyzer, AgreesWithTheTransformInDouble) {
    for (const std::uint32_t length : {4U, 8U, 16U, 256U, 1024U}) {
        for (std::uint32_t kind = 0; kind < kWindowKinds; ++kind) {
            CtbFftAnalyzer analyzer;
            analyzer.SetLength(length);
            analyzer.SetWindow(kind);
            const std::string what = std::to_string(length) + " points, window " + std::to_string(kind);
            const auto shortSamples = RandomSamples<std::int16_t>(length);
            analyzer.Analyze(shortSamples.data());
            ExpectSpectrum(analyzer, kind, shortSamples, what);
            const auto longSamples = RandomSamples<std::int32_t>(length);
            analyzer.Analyze(longSamples.data());
            ExpectSpectrum(analyzer, kind, longSamples, what + ", 32 bits");
        }
    }
}

TEST(CtbFftAnalyzer, DirectSumsAgreeWithTheTransformInDouble) {
    CtbFftAnalyzer analyzer;
    analyzer.SetLength(256);
    analyzer.SetWindow(kAnalyzerHamming);
    const auto shortSamples = RandomSamples<std::int16_t>(256);
    analyzer.AnalyzeBins(shortSamples.data(), 0, 127);
    ExpectSpectrum(analyzer, kAnalyzerHamming, shortSamples, "16 bits");
    const auto longSamples = RandomSamples<std::int32_t>(256);
    analyzer.AnalyzeBins(longSamples.data(), 0, 0xFFFFFFFF);
    ExpectSpectrum(analyzer, kAnalyzerHamming, longSamples, "32 bits");
}

TEST(CtbFftAnalyzer, DirectSumsTouchTheirBinsOnly) {
    CtbFftAnalyzer analyzer;
    analyzer.SetLength(16);
    const std::vector<std::int16_t> samples(16, 100);
    analyzer.AnalyzeBins(samples.data(), 1, 3);
    EXPECT_EQ(analyzer.Power()[0], 0.0F);
    analyzer.AnalyzeBins(samples.data(), 0, 0);
    EXPECT_EQ(analyzer.Real()[0], 1600.0F);
    EXPECT_EQ(analyzer.Power()[0], 640000.0F);
}

} // namespace orva::squelch
