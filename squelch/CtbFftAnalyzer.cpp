#include "squelch/CtbFftAnalyzer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <numeric>

namespace orva::squelch {

namespace {

constexpr std::uint32_t kFewestPoints = 4;
constexpr std::uint32_t kInitialPoints = 1024;
constexpr float kPowerScale = 0.25F;

/// x  0 at an end of the window, pi in its middle
double WindowAt(std::uint32_t kind, double x) {
    switch (kind) {
    case kAnalyzerTriangle:
        return x / std::numbers::pi;
    case kAnalyzerHann:
        return 1.0 + std::cos(std::numbers::pi - x);
    case kAnalyzerHamming:
        return 0.54 - 0.46 * std::cos(x);
    case kAnalyzerBlackman:
        return 0.42 - 0.5 * std::cos(x) + 0.08 * std::cos(2.0 * x);
    default:
        return 1.0;
    }
}

/// Product without the library operator's care for infinities, which would cost a call.
std::complex<float> Times(std::complex<float> a, std::complex<float> b) {
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

} // namespace

CtbFftAnalyzer::CtbFftAnalyzer() {
    SetLength(kInitialPoints);
}

void CtbFftAnalyzer::SetLength(std::uint32_t points) {
    const std::uint32_t rounded = std::bit_ceil(std::clamp(points, kFewestPoints, kMostPoints));
    if (rounded == length) {
        return;
    }
    length = rounded;
    halfLength = length / 2;
    real.assign(halfLength, 0.0F);
    imaginary.assign(halfLength, 0.0F);
    power.assign(halfLength, 0.0F);
    work.assign(halfLength, {});
    BuildTwiddles();
    BuildIndices();
    BuildWindow();
}

void CtbFftAnalyzer::SetWindow(std::uint32_t kind) {
    if (kind == windowKind) {
        return;
    }
    windowKind = kind;
    BuildWindow();
}

void CtbFftAnalyzer::BuildTwiddles() {
    twiddles.resize(halfLength);
    for (std::uint32_t k = 0; k < halfLength; ++k) {
        const double angle = -2.0 * std::numbers::pi * k / length;
        twiddles[k] = {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle))};
    }
}

void CtbFftAnalyzer::BuildIndices() {
    indices.assign(halfLength, 0);
    for (std::uint32_t i = 1; i < halfLength; ++i) {
        indices[i] = indices[i >> 1] >> 1 | ((i & 1U) != 0 ? halfLength >> 1 : 0);
    }
}

void CtbFftAnalyzer::BuildWindow() {
    std::vector<double> shape(length);
    for (std::uint32_t i = 0; i < halfLength; ++i) {
        const double x = 2.0 * std::numbers::pi * i / (length - 1);
        shape[i] = shape[length - 1 - i] = WindowAt(windowKind, x);
    }
    const double mean = std::accumulate(shape.begin(), shape.end(), 0.0) / length;
    window.resize(length);
    std::transform(shape.begin(), shape.end(), window.begin(),
                   [&](double value) { return static_cast<float>(value / mean); });
}

void CtbFftAnalyzer::Analyze(const std::int16_t* samples) {
    AnalyzeSamples(samples);
}

void CtbFftAnalyzer::Analyze(const std::int32_t* samples) {
    AnalyzeSamples(samples);
}

void CtbFftAnalyzer::AnalyzeBins(const std::int16_t* samples, std::uint32_t first, std::uint32_t last) {
    SumBins(samples, first, last);
}

void CtbFftAnalyzer::AnalyzeBins(const std::int32_t* samples, std::uint32_t first, std::uint32_t last) {
    SumBins(samples, first, last);
}

template <class Sample>
void CtbFftAnalyzer::AnalyzeSamples(const Sample* samples) {
    // Even samples are the real parts and odd ones the imaginary parts of a signal of half the length.
    for (std::uint32_t i = 0; i < halfLength; ++i) {
        const std::uint32_t pair = 2 * i;
        work[indices[i]] = {window[pair] * static_cast<float>(samples[pair]),
                            window[pair + 1] * static_cast<float>(samples[pair + 1])};
    }
    Transform();
    Split();
}

/// Radix-2 decimation in time over `work`, which lies in bit-reversed order.
void CtbFftAnalyzer::Transform() {
    for (std::uint32_t span = 1; span < halfLength; span *= 2) {
        const std::uint32_t twiddleStep = halfLength / span;
        for (std::uint32_t start = 0; start < halfLength; start += 2 * span) {
            for (std::uint32_t k = 0; k < span; ++k) {
                std::complex<float>& upper = work[start + k];
                std::complex<float>& lower = work[start + k + span];
                const std::complex<float> turned = Times(lower, twiddles[k * twiddleStep]);
                lower = upper - turned;
                upper += turned;
            }
        }
    }
}

/// Takes the spectra of even and odd samples apart and joins them to that of the whole.
void CtbFftAnalyzer::Split() {
    Store(0, {work[0].real() + work[0].imag(), 0.0F});
    for (std::uint32_t k = 1; k < halfLength; ++k) {
        const std::complex<float> here = work[k];
        const std::complex<float> mirrored = std::conj(work[halfLength - k]);
        const std::complex<float> even = 0.5F * (here + mirrored);
        const std::complex<float> difference = 0.5F * (here - mirrored);
        const std::complex<float> odd{difference.imag(), -difference.real()};
        Store(k, even + Times(odd, twiddles[k]));
    }
}

void CtbFftAnalyzer::Store(std::uint32_t bin, std::complex<float> value) {
    real[bin] = value.real();
    imaginary[bin] = value.imag();
    power[bin] = kPowerScale * (value.real() * value.real() + value.imag() * value.imag());
}

template <class Sample>
void CtbFftAnalyzer::SumBins(const Sample* samples, std::uint32_t first, std::uint32_t last) {
    last = std::min(last, halfLength - 1);
    for (std::uint32_t bin = first; bin <= last; ++bin) {
        const std::complex<double> step = std::polar(1.0, -2.0 * std::numbers::pi * bin / length);
        std::complex<double> phasor = 1.0;
        std::complex<double> sum = 0.0;
        for (std::uint32_t i = 0; i < length; ++i) {
            sum += phasor * (static_cast<double>(window[i]) * samples[i]);
            phasor *= step;
        }
        Store(bin, std::complex<float>(sum));
    }
}

} // namespace orva::squelch
