#include "tests/support/BlockScaledTransform.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <utility>
#include <vector>

namespace orva::test {
namespace {

using Complex = std::complex<double>;

constexpr std::size_t kLongest = 256;

// e^(j pi k / half)
Complex Twiddle(std::size_t k, std::size_t half) {
    static const std::vector<Complex> table = [] {
        std::vector<Complex> turns(kLongest / 2);
        for (std::size_t i = 0; i < turns.size(); ++i) {
            turns[i] = std::polar(1.0, 2.0 * std::numbers::pi * static_cast<double>(i) / kLongest);
        }
        return turns;
    }();
    return table[k * (kLongest / 2 / half)];
}

void ReverseBits(std::span<Complex> values) {
    for (std::size_t i = 1, reversed = 0; i < values.size(); ++i) {
        std::size_t bit = values.size() >> 1;
        for (; (reversed & bit) != 0; bit >>= 1) {
            reversed ^= bit;
        }
        reversed |= bit;
        if (i < reversed) {
            std::swap(values[i], values[reversed]);
        }
    }
}

// One stage of butterflies between points `half` apart; every result is multiplied by `scale`.
void RunStage(std::span<Complex> values, std::size_t half, double direction, double scale) {
    for (std::size_t k = 0; k < half; ++k) {
        const Complex twiddle = direction > 0.0 ? Twiddle(k, half) : std::conj(Twiddle(k, half));
        for (std::size_t first = k; first < values.size(); first += 2 * half) {
            const Complex product = twiddle * values[first + half];
            values[first + half] = scale * (values[first] - product);
            values[first] = scale * (values[first] + product);
        }
    }
}

// Bits of headroom of the squared magnitudes, -1 or more.
int Headroom(std::span<const Complex> values) {
    double largest = 0x1000000;
    for (const Complex& value : values) {
        largest = std::max(largest, std::norm(value));
    }
    return 29 - std::min(std::ilogb(largest), 30);
}

// Returns by how much the block exponent rises.
int InverseTransform(std::span<Complex> values) {
    int headroom = Headroom(values);
    const int firstRise = headroom < 0 ? 2 : headroom < 2 ? 1 : 0;
    int rise = firstRise;
    ReverseBits(values);
    RunStage(values, 1, 1.0, std::ldexp(1.0, -firstRise));
    bool measure = true;
    for (std::size_t half = 2; half < values.size(); half *= 2, measure = !measure) {
        headroom = measure ? Headroom(values) : headroom - 2;
        const bool halve = headroom < 2;
        RunStage(values, half, 1.0, halve ? 0.5 : 1.0);
        rise += halve ? 1 : 0;
    }
    return rise;
}

} // namespace

int InverseRealTransform(std::span<const Complex> spectrum, std::span<double> values, int exponent,
                         int stages) {
    const std::size_t points = spectrum.size();
    const auto bin = [&](std::size_t k) {
        return k == points ? Complex() : k == 0 ? Complex(spectrum[0].real()) : spectrum[k];
    };
    // The even samples become the real parts and the odd samples the imaginary parts of half as many points.
    std::vector<Complex> pairs(points);
    for (std::size_t k = 0; k < points; ++k) {
        const Complex mirrored = std::conj(bin(points - k));
        const Complex odd = (bin(k) - mirrored) * Twiddle(k, points);
        pairs[k] = 0.25 * (bin(k) + mirrored + Complex(0.0, 1.0) * odd);
    }
    const int rise = InverseTransform(pairs);
    for (std::size_t n = 0; n < points; ++n) {
        values[2 * n] = pairs[n].real();
        values[2 * n + 1] = pairs[n].imag();
    }
    return exponent + 1 - stages + rise;
}

void ForwardTransform(std::span<Complex> values) {
    ReverseBits(values);
    for (std::size_t half = 1; half < values.size(); half *= 2) {
        RunStage(values, half, -1.0, 1.0);
    }
}

} // namespace orva::test
