#include "dsp/FftKernels.h"

#include <cstring>

namespace orva::dsp {
namespace {

// Each step is worked out on the floating-point stack and rounded once, where it is stored.
using Extended = long double;

struct Complex {
    Extended re;
    Extended im;
};

Complex Load(const float* at) {
    return {static_cast<Extended>(at[0]), static_cast<Extended>(at[1])};
}

void Store(float* at, const Complex& value) {
    at[0] = static_cast<float>(value.re);
    at[1] = static_cast<float>(value.im);
}

Complex Add(const Complex& a, const Complex& b) {
    return {a.re + b.re, a.im + b.im};
}

Complex Subtract(const Complex& a, const Complex& b) {
    return {a.re - b.re, a.im - b.im};
}

float Windowed(float sample, float weight) {
    return static_cast<float>(static_cast<Extended>(sample) * static_cast<Extended>(weight));
}

/// The window's first half is read upward for the first half of the block and downward for the second.
void InputX87(const FftState& state, const float* in) {
    const std::uint32_t half = state.size / 2;
    for (std::uint32_t n = 0; n < half; ++n) {
        const std::uint32_t even = 2 * n;
        const bool upward = even < half;
        float* target = state.work + state.bitReversal[n];
        target[0] = Windowed(in[even], state.window[upward ? even : state.size - 1 - even]);
        target[1] = Windowed(in[even + 1], state.window[upward ? even + 1 : state.size - 2 - even]);
    }
}

/// The two stages whose twiddles are 1 and -j, over four complex values.
void FirstStages(float* quad) {
    const Complex a = Load(quad);
    const Complex b = Load(quad + 2);
    const Complex c = Load(quad + 4);
    const Complex d = Load(quad + 6);
    const Complex sum0 = Add(a, b);
    const Complex difference0 = Subtract(a, b);
    const Complex sum1 = Add(c, d);
    const Complex difference1 = Subtract(c, d);
    const Complex turned{difference1.im, -difference1.re};
    Store(quad, Add(sum0, sum1));
    Store(quad + 2, Add(difference0, turned));
    Store(quad + 4, Subtract(sum0, sum1));
    Store(quad + 6, Subtract(difference0, turned));
}

/// One butterfly; `twiddle` is (-sin, cos).
void Butterfly(float* upper, float* lower, float* lowerTarget, const float* twiddle) {
    const Complex a = Load(upper);
    const Complex b = Load(lower);
    const Extended s = -static_cast<Extended>(twiddle[0]);
    const Extended c = static_cast<Extended>(twiddle[1]);
    const Complex t{c * b.re + s * b.im, c * b.im - s * b.re};
    Store(upper, Add(a, t));
    Store(lowerTarget, Subtract(a, t));
}

void Group(const FftState& state, float* group, std::uint32_t halfSpan, float* lowerTarget) {
    // A transform has eight points at least. NOLINTNEXTLINE(clang-analyzer-core.DivideZero)
    const std::uint32_t stride = state.size / (2 * halfSpan);
    for (std::uint32_t k = 0; k < halfSpan; ++k) {
        Butterfly(group + 2 * k, group + 2 * (halfSpan + k), lowerTarget + 2 * k,
                  state.twiddles + 2 * static_cast<std::size_t>(k) * stride);
    }
}

/// Bins k and N/2 - k of the real spectrum from the complex one, `low` = Z[k] and `high` = Z[N/2 - k].
void SplitBins(float* lowBin, float* highBin, const float* low, const float* high, const float* twiddle) {
    const Complex z = Load(low);
    const Complex mirrored{static_cast<Extended>(high[0]), -static_cast<Extended>(high[1])};
    const Complex a = Add(z, mirrored);
    const Complex b = Subtract(z, mirrored);
    // -j exp(-j t) = -sin t - j cos t
    const Complex r{static_cast<Extended>(twiddle[0]), -static_cast<Extended>(twiddle[1])};
    const Complex rotated{r.re * b.re - r.im * b.im, r.re * b.im + r.im * b.re};
    const Complex difference = Subtract(a, rotated);
    Store(lowBin, Add(a, rotated));
    Store(highBin, {difference.re, -difference.im});
}

void SplitReal(const FftState& state) {
    const std::uint32_t half = state.size / 2;
    const std::uint32_t quarter = state.size / 4;
    float* work = state.work;
    work[0] += work[1];
    work[1] = 0.0F;
    for (std::uint32_t k = 1; k < quarter; ++k) {
        SplitBins(work + 2 * k, work + 2 * (half - k), work + 2 * k, state.scratch + 2 * (quarter - k),
                  state.twiddles + 2 * k);
    }
    work[half] = 2.0F * state.scratch[0];
    work[half + 1] = 2.0F * state.scratch[1];
}

void TransformX87(const FftState& state) {
    const std::uint32_t points = state.size / 2;
    for (std::uint32_t i = 0; i < points; i += 4) {
        FirstStages(state.work + 2 * i);
    }
    // The stages go through the memory forward and backward in turn: each begins with what the last one left
    // in the cache.
    bool forward = false;
    for (std::uint32_t span = 8; span < points; span *= 2, forward = !forward) {
        for (std::uint32_t g = 0; g < points; g += span) {
            float* group = state.work + 2 * (forward ? g : points - span - g);
            Group(state, group, span / 2, group + span);
        }
    }
    Group(state, state.work, points / 2, state.scratch);
    SplitReal(state);
}

constexpr float kLowestPower = 1e-30F;

float DecibelsOf(const FftState& state, const float* bin) {
    const Complex z = Load(bin);
    const auto exact = static_cast<float>(z.re * z.re + z.im * z.im);
    const float power = exact > kLowestPower ? exact : kLowestPower;
    std::uint32_t bits = 0;
    std::memcpy(&bits, &power, sizeof bits);
    const auto exponent = static_cast<float>(static_cast<std::int32_t>(bits >> 23) - 127);
    const float decibels = (exponent + state.log2Table[bits >> 14 & 511U]) * state.decibelsPerOctave;
    if (decibels > 0.0F) {
        return 0.0F;
    }
    return decibels > state.floorDecibels ? decibels : state.floorDecibels;
}

void DecibelsX87(const FftState& state, float* out) {
    for (std::uint32_t bin = state.size / 2; bin-- > 0;) {
        out[bin] = DecibelsOf(state, state.work + 2 * bin);
    }
}

} // namespace

FftKernels FftKernelsX87() {
    return {InputX87, TransformX87, DecibelsX87};
}

} // namespace orva::dsp
