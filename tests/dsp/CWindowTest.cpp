#include "dsp/CWindow.h"

#include <cmath>
#include <cstring>
#include <functional>
#include <numbers>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

namespace orva::dsp {
namespace {

using std::numbers::pi;

constexpr std::uint32_t kWindows = 11;

/// The weights of one window over its whole length, written down loop by loop.
std::vector<double> ExpectedWeights(std::uint32_t index, int count, bool interleaved) {
    std::vector<double> w(static_cast<std::size_t>(count), 1.0);
    const double n = count;
    const bool odd = count % 2 == 1;
    const auto fill = [&](const std::function<double(int)>& weight) {
        for (int i = 0; i < count; ++i) {
            w[static_cast<std::size_t>(i)] = weight(i);
        }
    };
    const auto u = [&](int i) { return (i - n / 2.0) / (n / 2.0); };
    switch (index) {
    case 1:
        fill([&](int i) { return 0.5 + 0.5 * std::cos(pi * u(i)); });
        break;
    case 2:
        fill([&](int i) { return 0.54 + 0.46 * std::cos(pi * u(i)); });
        break;
    case 3:
        fill([&](int i) { return 0.42 + 0.5 * std::cos(pi * u(i)) + 0.08 * std::cos(2 * pi * u(i)); });
        break;
    case 4:
        fill([&](int i) {
            return 0.2810639 - 0.5208972 * std::cos(2 * pi * i / n) + 0.1980399 * std::cos(4 * pi * i / n);
        });
        break;
    case 5:
        fill([&](int i) {
            const double y = i / (n - 1) - 0.5;
            return 0.62 - 0.48 * std::fabs(y) + 0.38 * std::cos(2 * pi * y);
        });
        break;
    case 6:
        fill([&](int i) {
            if (i < count / 2) {
                return 2.0 * i / (n - 1);
            }
            if (!odd) {
                return (2 * (n - i) - 2) / (n - 1);
            }
            return interleaved ? (2.0 - 2.0 * i) / (n - 1) : 2.0 - 2.0 * i / (n - 1);
        });
        break;
    case 7:
        fill([&](int i) {
            const double z = 2 * pi * i / (interleaved ? n : n - 1);
            return 0.35875 - 0.48829 * std::cos(z) + 0.14128 * std::cos(2 * z) - 0.01168 * std::cos(3 * z);
        });
        break;
    case 8:
        for (int i = 0; i < count / 2; ++i) {
            const double r = n / 2.0;
            const double v = (count - i) - n / 2.0;
            const double weight = (1 - v / r) * std::cos(pi * v / r) + std::sin(pi * v / r) / pi;
            w[static_cast<std::size_t>(i)] = weight;
            w[static_cast<std::size_t>(count - 1 - i)] = weight;
        }
        break;
    case 9:
        fill([&](int i) { return std::exp(-0.5 * std::pow(2.5 * u(i), 2)); });
        break;
    case 10:
        fill([&](int i) {
            if (odd) {
                return i <= count / 2 ? 2.0 * i / (n + 1) : (2 * (n - i) + 2) / (n + 1);
            }
            return i <= count / 2 ? (2.0 * i - 2) / n : (2 * (n - i) + 2) / n;
        });
        break;
    default:
        break;
    }
    return w;
}

constexpr int kCounts[] = {2, 3, 4, 5, 8, 33, 64, 1001};

class EveryWindow : public testing::TestWithParam<std::uint32_t> {};

TEST_P(EveryWindow, WeightsDoubles) {
    for (const int count : kCounts) {
        std::vector<double> data(static_cast<std::size_t>(count) + 1, 3.0);
        ASSERT_TRUE(CWindow::ApplyF64(GetParam(), data.data(), count));
        const std::vector<double> weights = ExpectedWeights(GetParam(), count, false);
        for (std::size_t i = 0; i < weights.size(); ++i) {
            EXPECT_NEAR(data[i], 3.0 * weights[i], 1e-12) << "count " << count << " element " << i;
        }
        EXPECT_EQ(data.back(), 3.0) << "written behind the end";
    }
}

TEST_P(EveryWindow, NarrowsWeightsBeforeMultiplyingFloats) {
    for (const int count : kCounts) {
        std::vector<float> data(static_cast<std::size_t>(count) + 1, 3.0F);
        ASSERT_TRUE(CWindow::ApplyF32(GetParam(), data.data(), count));
        const std::vector<double> weights = ExpectedWeights(GetParam(), count, false);
        for (std::size_t i = 0; i < weights.size(); ++i) {
            EXPECT_FLOAT_EQ(data[i], 3.0F * static_cast<float>(weights[i]) + 0.0F)
                << "count " << count << " element " << i;
        }
        EXPECT_EQ(data.back(), 3.0F) << "written behind the end";
    }
}

TEST_P(EveryWindow, WeightsEverySecondFloatWhenInterleaved) {
    for (const int count : kCounts) {
        std::vector<float> data(static_cast<std::size_t>(count) + 1, 3.0F);
        ASSERT_TRUE(CWindow::ApplyInterleavedF32(GetParam(), data.data(), count));
        const std::vector<double> weights = ExpectedWeights(GetParam(), count, true);
        for (std::size_t i = 0; i < weights.size(); ++i) {
            const double expected = i % 2 == 0 ? 3.0 * weights[i] : 3.0;
            EXPECT_NEAR(data[i], expected, 2e-6) << "count " << count << " element " << i;
        }
        EXPECT_EQ(data.back(), 3.0F) << "written behind the end";
    }
}

TEST_P(EveryWindow, OfOnePointIsFinite) {
    float value = 3.0F;
    EXPECT_TRUE(CWindow::ApplyF32(GetParam(), &value, 1));
    EXPECT_TRUE(std::isfinite(value));
    EXPECT_TRUE(CWindow::ApplyInterleavedF32(GetParam(), &value, 1));
    EXPECT_TRUE(std::isfinite(value));
}

TEST_P(EveryWindow, RefusesNullPointerAndEmptyCount) {
    float single = 3.0F;
    double wide = 3.0;
    EXPECT_FALSE(CWindow::ApplyF32(GetParam(), nullptr, 4));
    EXPECT_FALSE(CWindow::ApplyF64(GetParam(), nullptr, 4));
    EXPECT_FALSE(CWindow::ApplyInterleavedF32(GetParam(), nullptr, 4));
    for (const int count : {0, -1, INT32_MIN}) {
        EXPECT_FALSE(CWindow::ApplyF32(GetParam(), &single, count));
        EXPECT_FALSE(CWindow::ApplyF64(GetParam(), &wide, count));
        EXPECT_FALSE(CWindow::ApplyInterleavedF32(GetParam(), &single, count));
    }
    EXPECT_EQ(single, 3.0F);
    EXPECT_EQ(wide, 3.0);
}

INSTANTIATE_TEST_SUITE_P(CWindow, EveryWindow, testing::Range(0U, kWindows));

TEST(CWindow, RefusesIndexAboveTen) {
    float single = 3.0F;
    double wide = 3.0;
    EXPECT_FALSE(CWindow::ApplyF32(11, &single, 1));
    EXPECT_FALSE(CWindow::ApplyF64(11, &wide, 1));
    EXPECT_FALSE(CWindow::ApplyInterleavedF32(11, &single, 1));
    EXPECT_EQ(single, 3.0F);
    EXPECT_EQ(wide, 3.0);
}

TEST(CWindow, TriangularOfEvenLengthBeginsBelowZero) {
    double data[8] = {1, 1, 1, 1, 1, 1, 1, 1};
    ASSERT_TRUE(CWindow::ApplyF64(10, data, 8));
    EXPECT_DOUBLE_EQ(data[0], -2.0 / 8.0);
    EXPECT_DOUBLE_EQ(data[1], 0.0);
}

TEST(CWindow, BartlettOfOddLengthFallsBelowZeroWhenInterleaved) {
    float data[5] = {1, 1, 1, 1, 1};
    ASSERT_TRUE(CWindow::ApplyInterleavedF32(6, data, 5));
    EXPECT_FLOAT_EQ(data[2], (2.0F - 4.0F) / 4.0F);
    EXPECT_FLOAT_EQ(data[4], (2.0F - 8.0F) / 4.0F);
}

TEST(CWindow, HasElevenNamedWindows) {
    EXPECT_EQ(CWindow::GetWindowCount(), kWindows);
    const char* names[kWindows] = {
        "Rectangular", "Hanning",           "Hamming", "Blackman", "Flat Top",  "Bartlett - Hanning",
        "Bartlett",    "Blackman - Harris", "Bohman",  "Gaussian", "Triangular"};
    for (std::uint32_t index = 0; index < kWindows; ++index) {
        char text[32];
        std::memset(text, '#', sizeof text);
        const std::int32_t length = CWindow::GetWindowName(index, text, sizeof text);
        EXPECT_STREQ(text, names[index]);
        EXPECT_EQ(length, static_cast<std::int32_t>(std::strlen(names[index])));
    }
}

TEST(CWindow, NameOfUnknownIndexIsNotAvailable) {
    char text[8];
    EXPECT_EQ(CWindow::GetWindowName(11, text, sizeof text), 3);
    EXPECT_STREQ(text, "N/A");
}

TEST(CWindow, CopiesNoMoreOfANameThanAllowed) {
    char text[8] = "#######";
    EXPECT_EQ(CWindow::GetWindowName(1, text, 4), 7);
    EXPECT_STREQ(text, "Hann###");
    EXPECT_EQ(CWindow::GetWindowName(1, nullptr, 4), 7);
    EXPECT_EQ(CWindow::GetWindowName(1, text, 0), 7);
    EXPECT_STREQ(text, "Hann###");
}

TEST(CWindow, IsPolymorphicAndEmpty) {
    EXPECT_TRUE(std::has_virtual_destructor_v<CWindow>);
    EXPECT_EQ(sizeof(CWindow), sizeof(void*));
}

} // namespace
} // namespace orva::dsp
