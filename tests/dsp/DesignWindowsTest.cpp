#include "dsp/DesignWindows.h"

#include <cmath>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace orva::dsp {
namespace {

using std::numbers::pi;

constexpr double kA = 0.16;
constexpr double kB = 0.4;
constexpr double kTolerance = 1e-12;
constexpr double kUntouched = -77.0;

double ExpectedWeight(std::uint32_t kind, double i, double n, double a = kA, double b = kB) {
    const double x = 2.0 * pi * i / (n - 1.0);
    const double c = (n - 1.0) / 2.0;
    const double y = (2.0 * i / (n - 1.0) - 1.0) * pi;
    switch (kind) {
    case 0:
        return 1.0;
    case 1:
        return (n / 2.0 - std::fabs(i - c)) * 2.0 / n;
    case 2:
        return std::sin(pi * i / (n - 1.0));
    case 3:
        return 0.54 - 0.46 * std::cos(x);
    case 4:
        return (1.0 - a) / 2.0 - 0.5 * std::cos(x) + a / 2.0 * std::cos(2.0 * x);
    case 5:
        return 0.5 * (1.0 - std::cos(x));
    case 6:
        return y == 0.0 ? 1.0 : std::sin(y) / y;
    case 7:
        return std::exp(-0.5 * std::pow((i - c) / (b * c), 2.0));
    case 8:
        return 0.62 - 0.48 * std::fabs(i / (n - 1.0) - 0.5) - 0.38 * std::cos(x);
    case 9:
        return 0.355768 - 0.487396 * std::cos(x) + 0.144232 * std::cos(2 * x) - 0.012604 * std::cos(3 * x);
    case 10:
        return 0.35875 - 0.48829 * std::cos(x) + 0.14128 * std::cos(2 * x) - 0.01168 * std::cos(3 * x);
    case 11:
        return 0.3635819 - 0.4891775 * std::cos(x) + 0.1365995 * std::cos(2 * x) -
               0.0106411 * std::cos(3 * x);
    default:
        return 1.0 - 1.93 * std::cos(x) + 1.29 * std::cos(2 * x) - 0.388 * std::cos(3 * x) +
               0.032 * std::cos(4 * x);
    }
}

/// A window with three entries of margin, so that a write behind the end shows.
std::vector<double> Make(std::uint32_t kind, std::uint32_t length, WindowLayout layout,
                         std::uint32_t* entries = nullptr,
                         const double* parameters = kDefaultWindowParameters) {
    std::vector<double> output(length + 3, kUntouched);
    const std::uint32_t written = MakeWindow(kind, parameters, output.data(), length, layout);
    if (entries != nullptr) {
        *entries = written;
    }
    for (std::size_t i = written; i < output.size(); ++i) {
        EXPECT_EQ(output[i], kUntouched) << "entry " << i << " of " << written << " written";
    }
    return output;
}

class EveryKind : public testing::TestWithParam<std::uint32_t> {};

TEST_P(EveryKind, AscendsByItsFormula) {
    for (const std::uint32_t length : {2U, 3U, 4U, 5U, 31U, 32U, 127U, 2048U}) {
        std::uint32_t entries = 0;
        const std::vector<double> window = Make(GetParam(), length, WindowLayout::Ascending, &entries);
        ASSERT_EQ(entries, (length + 1) / 2);
        for (std::uint32_t i = 0; i < entries; ++i) {
            EXPECT_NEAR(window[i], ExpectedWeight(GetParam(), i, length), kTolerance)
                << "length " << length << " entry " << i;
        }
    }
}

TEST_P(EveryKind, DescendsFromItsCentre) {
    for (const std::uint32_t length : {2U, 3U, 31U, 32U, 127U}) {
        std::uint32_t entries = 0;
        const std::vector<double> window = Make(GetParam(), length, WindowLayout::Descending, &entries);
        ASSERT_EQ(entries, (length + 1) / 2);
        for (std::uint32_t j = 0; j < entries; ++j) {
            EXPECT_NEAR(window[j], ExpectedWeight(GetParam(), entries - 1 - j, length), kTolerance)
                << "length " << length << " entry " << j;
        }
    }
}

TEST_P(EveryKind, IsWholeAndSymmetricWhenFull) {
    for (const std::uint32_t length : {2U, 3U, 31U, 32U, 127U}) {
        std::uint32_t entries = 0;
        const std::vector<double> window = Make(GetParam(), length, WindowLayout::Full, &entries);
        ASSERT_EQ(entries, length);
        for (std::uint32_t i = 0; i < length; ++i) {
            EXPECT_NEAR(window[i], ExpectedWeight(GetParam(), i, length), 1e-9)
                << "length " << length << " entry " << i;
            EXPECT_EQ(window[i], window[length - 1 - i]) << "length " << length << " entry " << i;
        }
    }
}

TEST_P(EveryKind, OfOnePointIsOne) {
    for (const WindowLayout layout :
         {WindowLayout::Ascending, WindowLayout::Descending, WindowLayout::Full}) {
        std::uint32_t entries = 0;
        EXPECT_EQ(Make(GetParam(), 1, layout, &entries)[0], 1.0);
        EXPECT_EQ(entries, 1U);
    }
}

INSTANTIATE_TEST_SUITE_P(MakeWindow, EveryKind, testing::Range(0U, kWindowKinds));

TEST(MakeWindow, RefusesUnknownKind) {
    std::uint32_t entries = 1;
    Make(kWindowKinds, 8, WindowLayout::Full, &entries);
    EXPECT_EQ(entries, 0U);
}

TEST(MakeWindow, RefusesUnknownLayout) {
    for (const std::uint32_t layout : {0U, 4U}) {
        std::uint32_t entries = 1;
        Make(kWindowHann, 8, static_cast<WindowLayout>(layout), &entries);
        EXPECT_EQ(entries, 0U);
    }
}

TEST(MakeWindow, RefusesLengthZero) {
    std::uint32_t entries = 1;
    Make(kWindowHann, 0, WindowLayout::Ascending, &entries);
    EXPECT_EQ(entries, 0U);
}

TEST(MakeWindow, HammingOfFourAscendsInTwoEntries) {
    std::uint32_t entries = 0;
    const std::vector<double> window = Make(kWindowHamming, 4, WindowLayout::Ascending, &entries);
    ASSERT_EQ(entries, 2U);
    EXPECT_NEAR(window[0], 0.08, kTolerance);
    EXPECT_NEAR(window[1], 0.77, kTolerance);
}

TEST(MakeWindow, FullOddLengthHasItsCentreOnce) {
    constexpr std::uint32_t kLength = 9;
    const std::vector<double> window = Make(kWindowTriangular, kLength, WindowLayout::Full);
    constexpr std::uint32_t kCentre = (kLength - 1) / 2;
    for (std::uint32_t i = 0; i < kLength; ++i) {
        EXPECT_TRUE(i == kCentre || window[i] < window[kCentre]) << "entry " << i;
    }
    EXPECT_NEAR(window[kCentre], 1.0, kTolerance);
}

TEST(MakeWindow, LanczosCentreOfOddLengthIsExactlyOne) {
    for (const std::uint32_t length : {3U, 5U, 127U, 1023U}) {
        EXPECT_EQ(Make(kWindowLanczos, length, WindowLayout::Descending)[0], 1.0) << "length " << length;
    }
}

TEST(MakeWindow, ParametersShapeBlackmanAndGaussian) {
    const double parameters[2] = {0.2, 0.25};
    for (const std::uint32_t kind : {4U, 7U}) {
        const std::vector<double> window = Make(kind, 16, WindowLayout::Ascending, nullptr, parameters);
        for (std::uint32_t i = 0; i < 8; ++i) {
            EXPECT_NEAR(window[i], ExpectedWeight(kind, i, 16, 0.2, 0.25), kTolerance) << "kind " << kind;
        }
    }
}

TEST(MakeWindow, FlatTopReachesItsUnnormalisedPeak) {
    EXPECT_NEAR(Make(kWindowFlatTop, 129, WindowLayout::Descending)[0], 4.64, kTolerance);
}

} // namespace
} // namespace orva::dsp
