#include "voice/Transforms.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <numbers>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

using Complex = std::complex<double>;

// sum x[n] e^(sign j 2 pi k n / N)
std::vector<Complex> Dft(const std::vector<Complex>& x, double sign) {
    const std::size_t length = x.size();
    std::vector<Complex> result(length);
    for (std::size_t k = 0; k < length; ++k) {
        for (std::size_t n = 0; n < length; ++n) {
            result[k] +=
                x[n] * std::polar(1.0, sign * 2.0 * std::numbers::pi * static_cast<double>((k * n) % length) /
                                           static_cast<double>(length));
        }
    }
    return result;
}

double SignalToErrorDb(const std::vector<Complex>& expected, const std::vector<Complex>& actual) {
    double signal = 0.0;
    double error = 0.0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        signal += std::norm(expected[i]);
        error += std::norm(expected[i] - actual[i]);
    }
    return 10.0 * std::log10(signal / std::max(error, 1e-30));
}

std::vector<Complex> ComplexValues(const std::vector<std::int16_t>& z, int exponent) {
    std::vector<Complex> values;
    for (std::size_t i = 0; i < z.size(); i += 2) {
        values.emplace_back(std::ldexp(z[i], exponent), std::ldexp(z[i + 1], exponent));
    }
    return values;
}

std::vector<std::int16_t> Noise(std::mt19937& random, std::size_t count, int peak) {
    std::uniform_int_distribution<int> distribution(-peak, peak);
    std::vector<std::int16_t> values(count);
    std::ranges::generate(values, [&] { return static_cast<std::int16_t>(distribution(random)); });
    return values;
}

// The spectrum of a real signal, 2^(m - 1) bins of random phase, none of magnitude 2^15 or more.
std::vector<std::int16_t> Spectrum(std::mt19937& random, int m, double peak) {
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    std::vector<std::int16_t> bins;
    for (int k = 0; k < 1 << (m - 1); ++k) {
        const Complex bin = std::polar(peak * uniform(random), 2.0 * std::numbers::pi * uniform(random));
        bins.push_back(static_cast<std::int16_t>(bin.real()));
        bins.push_back(k == 0 ? std::int16_t{0} : static_cast<std::int16_t>(bin.imag()));
    }
    return bins;
}

// One half of the true inverse transform.
std::vector<Complex> HalfInverse(const std::vector<std::int16_t>& bins) {
    const std::size_t length = bins.size();
    std::vector<Complex> full(length);
    full[0] = bins[0];
    for (std::size_t k = 1; k < length / 2; ++k) {
        full[k] = {static_cast<double>(bins[2 * k]), static_cast<double>(bins[2 * k + 1])};
        full[length - k] = std::conj(full[k]);
    }
    std::vector<Complex> result = Dft(full, 1.0);
    for (Complex& value : result) {
        value /= 2.0 * static_cast<double>(length);
    }
    return result;
}

// The lowest ratio of signal to truncation noise that we accept at full scale and 20 dB down.
constexpr double kFullScaleDb = 60.0;
constexpr double kQuietDb = 48.0;

TEST(Transforms, ComplexForwardMatchesTheDefinition) {
    std::mt19937 random(6);
    for (int m = 3; m <= 7; ++m) {
        for (const int peak : {32767, 16000, 8000, 3000}) {
            auto z = Noise(random, std::size_t{2} << m, peak);
            const auto expected = Dft(ComplexValues(z, 3), -1.0);
            const int exponent = FftComplex(z.data(), 3, m);
            EXPECT_GT(SignalToErrorDb(expected, ComplexValues(z, exponent)),
                      peak == 3000 ? kQuietDb : kFullScaleDb)
                << "2^" << m << " points, peak " << peak;
        }
    }
}

TEST(Transforms, ComplexHandlesTheLargestInputs) {
    for (int m = 3; m <= 7; ++m) {
        for (const std::int16_t value : {std::int16_t{-32768}, std::int16_t{32767}}) {
            std::vector<std::int16_t> z(std::size_t{2} << m, value);
            const auto expected = Dft(ComplexValues(z, 0), -1.0);
            const int exponent = FftComplex(z.data(), 0, m);
            EXPECT_GT(SignalToErrorDb(expected, ComplexValues(z, exponent)), kFullScaleDb) << "2^" << m;
        }
    }
}

TEST(Transforms, FirstScaleRaisesTheExponent) {
    // One point alone keeps its size through every stage, so the exponent tells which stages were halved.
    const auto exponentOf = [](std::int16_t re, std::int16_t im) {
        std::vector<std::int16_t> z(16, 0);
        z[0] = re;
        z[1] = im;
        return FftComplex(z.data(), 0, 3);
    };
    // A headroom of -1 takes two bits off in the first stage and leaves too little for the second.
    EXPECT_EQ(exponentOf(-32768, -32768), 2 + 1 + 0);
    // Headrooms of 0 and 1 take one.
    EXPECT_EQ(exponentOf(32767, 0), 1 + 1 + 0);
    EXPECT_EQ(exponentOf(17000, 0), 1 + 1 + 0);
    // 2 and 3 none in the first, but then there is too little for the second.
    EXPECT_EQ(exponentOf(16000, 0), 0 + 1 + 0);
    EXPECT_EQ(exponentOf(9000, 0), 0 + 1 + 0);
    // 4 and 5 are enough for two stages, the third measures again.
    EXPECT_EQ(exponentOf(8000, 0), 0 + 0 + 0);
    EXPECT_EQ(exponentOf(100, 0), 0 + 0 + 0);
}

TEST(Transforms, ZeroStaysZero) {
    std::vector<std::int16_t> buffer(256, 0);
    EXPECT_EQ(FftReal(buffer.data(), 0, 8), 0);
    EXPECT_EQ(buffer, std::vector<std::int16_t>(256, 0));
    EXPECT_EQ(FftRealInverse(buffer.data(), 0, 8), 1 - 8);
    EXPECT_EQ(buffer, std::vector<std::int16_t>(256, 0));
}

TEST(Transforms, RealForwardIsHalfTheDefinition) {
    std::mt19937 random(7);
    for (int m = 4; m <= 8; ++m) {
        for (const int peak : {32767, 16000, 3000}) {
            auto buffer = Noise(random, std::size_t{1} << m, peak);
            std::vector<Complex> signal(buffer.begin(), buffer.end());
            auto expected = Dft(signal, -1.0);
            expected.resize(signal.size() / 2);
            for (Complex& bin : expected) {
                bin *= 0.5;
            }
            const int exponent = FftReal(buffer.data(), 0, m);
            EXPECT_EQ(buffer[1], 0) << "2^" << m;
            EXPECT_GT(SignalToErrorDb(expected, ComplexValues(buffer, exponent)),
                      peak == 3000 ? kQuietDb : kFullScaleDb)
                << "2^" << m << " samples, peak " << peak;
        }
    }
}

TEST(Transforms, RealInverseIsHalfTheDefinition) {
    std::mt19937 random(8);
    for (int m = 4; m <= 8; ++m) {
        for (const int peak : {32767, 16000, 6000}) {
            auto buffer = Spectrum(random, m, peak);
            const auto expected = HalfInverse(buffer);
            buffer[1] = 12345; // the Nyquist value's place is taken as 0
            const int exponent = FftRealInverse(buffer.data(), 0, m);
            std::vector<Complex> actual;
            for (const std::int16_t value : buffer) {
                actual.emplace_back(std::ldexp(value, exponent));
            }
            EXPECT_GT(SignalToErrorDb(expected, actual), peak == 6000 ? kQuietDb : kFullScaleDb)
                << "2^" << m << " samples, peak " << peak;
        }
    }
}

TEST(Transforms, EverySingleBinComesOutAsItsCosine) {
    for (int m = 4; m <= 8; ++m) {
        const int length = 1 << m;
        for (int k = 0; k < length / 2; ++k) {
            std::vector<std::int16_t> buffer(static_cast<std::size_t>(length), 0);
            buffer[static_cast<std::size_t>(2 * k)] = 30000;
            const int exponent = FftRealInverse(buffer.data(), 0, m);
            const double amplitude = (k == 0 ? 0.5 : 1.0) * 30000.0 / length;
            for (int n = 0; n < length; ++n) {
                const double expected =
                    amplitude * std::cos(2.0 * std::numbers::pi * ((k * n) % length) / length);
                ASSERT_NEAR(std::ldexp(buffer[static_cast<std::size_t>(n)], exponent), expected,
                            std::max(0.001 * amplitude, std::ldexp(8.0, exponent)))
                    << "2^" << m << " samples, bin " << k << ", sample " << n;
            }
        }
    }
}

TEST(Transforms, ForwardAndInverseTogetherGiveAQuarter) {
    std::mt19937 random(9);
    auto buffer = Noise(random, 256, 20000);
    // Without constant and alternating part, which the pair of transforms does not carry.
    const std::vector<std::int16_t> original = [&] {
        std::vector<std::int16_t> copy = buffer;
        int even = 0;
        int odd = 0;
        for (std::size_t i = 0; i < 256; ++i) {
            (i % 2 == 0 ? even : odd) += copy[i];
        }
        for (std::size_t i = 0; i < 256; ++i) {
            copy[i] = static_cast<std::int16_t>(copy[i] - (i % 2 == 0 ? even : odd) / 128);
        }
        return copy;
    }();
    buffer = original;
    const int exponent = FftRealInverse(buffer.data(), FftReal(buffer.data(), 0, 8), 8);
    std::vector<Complex> expected;
    std::vector<Complex> actual;
    for (std::size_t i = 0; i < 256; ++i) {
        expected.emplace_back(original[i] / 4.0);
        actual.emplace_back(std::ldexp(buffer[i], exponent));
    }
    EXPECT_GT(SignalToErrorDb(expected, actual), 50.0);
}

} // namespace
} // namespace orva::voice
