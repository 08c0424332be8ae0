#include "tests/support/BlockScaledTransform.h"

#include "tests/support/RandomSource.h"

#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

using Complex = std::complex<double>;

Complex Turn(double cycles) {
    return std::polar(1.0, 2.0 * std::numbers::pi * cycles);
}

std::vector<Complex> RandomPoints(std::size_t count, double amplitude) {
    RandomSource random(count);
    std::vector<Complex> points(count);
    for (Complex& point : points) {
        point = {amplitude * random.Gaussian(), amplitude * random.Gaussian()};
    }
    return points;
}

TEST(BlockScaledTransform, InverseIsHalfTheInverseTransform) {
    for (const int stages : {3, 7, 8}) {
        for (const double amplitude : {1.0, 3000.0, 20000.0}) {
            const std::size_t length = std::size_t{1} << stages;
            auto spectrum = RandomPoints(length / 2, amplitude);
            spectrum[0] = spectrum[0].real();
            std::vector<double> values(length);
            const int exponent = InverseRealTransform(spectrum, values, 5, stages);
            for (std::size_t n = 0; n < length; ++n) {
                double sum = spectrum[0].real();
                for (std::size_t k = 1; k < length / 2; ++k) {
                    sum +=
                        2.0 *
                        (spectrum[k] * Turn(static_cast<double>(k * n) / static_cast<double>(length))).real();
                }
                const double expected = 0.5 * 32.0 * sum / static_cast<double>(length);
                EXPECT_NEAR(std::ldexp(values[n], exponent), expected, 1e-9 * amplitude)
                    << stages << " stages, amplitude " << amplitude << ", value " << n;
            }
        }
    }
}

TEST(BlockScaledTransform, SmallMantissasNeedNoScaling) {
    std::vector<Complex> spectrum(64);
    spectrum[9] = 10.0;
    std::vector<double> values(128);
    EXPECT_EQ(InverseRealTransform(spectrum, values, 0, 7), 1 - 7);
}

TEST(BlockScaledTransform, MantissasStayWithinSixteenBits) {
    for (const double phase : {0.0, 0.3, 0.77}) {
        std::vector<Complex> spectrum(64);
        for (std::size_t k = 8; k < 56; ++k) {
            spectrum[k] = 32767.0 * Turn(phase * static_cast<double>(k));
        }
        std::vector<double> values(128);
        InverseRealTransform(spectrum, values, 0, 7);
        for (const double value : values) {
            EXPECT_LT(std::abs(value), 32768.0) << "phase " << phase;
        }
    }
}

TEST(BlockScaledTransform, ForwardTurnsAgainstTheClock) {
    const auto points = RandomPoints(32, 1.0);
    auto transformed = points;
    ForwardTransform(transformed);
    for (std::size_t k = 0; k < points.size(); ++k) {
        Complex sum;
        for (std::size_t n = 0; n < points.size(); ++n) {
            sum += points[n] * Turn(-static_cast<double>(k * n) / 32.0);
        }
        EXPECT_NEAR(std::abs(transformed[k] - sum), 0.0, 1e-12) << k;
    }
}

} // namespace
} // namespace orva::test
