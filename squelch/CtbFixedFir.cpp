#include "squelch/CtbFixedFir.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <numbers>

namespace orva::squelch {

namespace {

constexpr float kLowestUpperHz = 2.0F;
constexpr float kLowestRateHz = 4.0F;
constexpr float kEdgeDistanceHz = 1.0F;
constexpr std::uint32_t kFewestTaps = 3;
constexpr std::uint32_t kPadding = 32; ///< taps that a wide loop takes at a time
constexpr double kUnityQ15 = 32767.0;
constexpr std::int16_t kHighest = 32767;
constexpr std::int16_t kLowest = -32768;
constexpr int kSumShift = 15;

/// Blackman window over `k` = 0 at the centre to `half` at the end.
double BlackmanFromCentre(std::uint32_t k, std::uint32_t half) {
    const double angle = (1.0 - static_cast<double>(k) / half) * std::numbers::pi;
    return 0.42 - 0.5 * std::cos(angle) + 0.08 * std::cos(2.0 * angle);
}

double HammingFromCentre(std::uint32_t k, std::uint32_t half) {
    return 0.54 + 0.46 * std::cos(std::numbers::pi * k / half);
}

std::int16_t Quantise(double tap) {
    if (tap >= 1.0) {
        return kHighest;
    }
    if (tap <= -1.0) {
        return kLowest;
    }
    return static_cast<std::int16_t>(tap * kUnityQ15);
}

std::uint32_t PaddedTaps(std::uint32_t taps) {
    return (taps + kPadding - 1) / kPadding * kPadding;
}

std::int16_t Narrow(std::int16_t sample) {
    return sample;
}

std::int16_t Narrow(std::int32_t sample) {
    return static_cast<std::int16_t>(sample >> 16);
}

} // namespace

CtbFixedFir::CtbFixedFir() {
    Allocate();
    Design();
}

void CtbFixedFir::SetUpperFrequency(float hz) {
    const float limited = std::min(std::max(kLowestUpperHz, hz), filterRate / 2.0F);
    if (limited == upperFrequency) {
        return;
    }
    upperFrequency = limited;
    KeepLowerBelowUpper();
    Design();
}

void CtbFixedFir::SetFilterRate(float hz) {
    const float limited = std::min(std::max(kLowestRateHz, hz), std::numeric_limits<float>::max());
    if (limited == filterRate) {
        return;
    }
    filterRate = limited;
    if (!(2.0F * upperFrequency < filterRate)) {
        upperFrequency = filterRate * 0.5F;
        KeepLowerBelowUpper();
    }
    Design();
}

void CtbFixedFir::KeepLowerBelowUpper() {
    if (!(upperFrequency > lowerFrequency)) {
        lowerFrequency = upperFrequency - kEdgeDistanceHz;
    }
}

void CtbFixedFir::SetKind(std::uint32_t kind) {
    if (kind == filterKind) {
        return;
    }
    filterKind = kind;
    Design();
}

void CtbFixedFir::SetTaps(std::uint32_t count) {
    const std::uint32_t odd = std::max(count, kFewestTaps) | 1U;
    if (odd == taps) {
        return;
    }
    taps = odd;
    Allocate();
    Design();
}

void CtbFixedFir::SetBlockLength(std::uint32_t length) {
    length = std::max(length, 1U);
    if (length == blockLength) {
        return;
    }
    blockLength = length;
    Allocate();
}

void CtbFixedFir::Allocate() {
    inputBuffer.assign(static_cast<std::size_t>(PaddedTaps(taps)) + blockLength, 0);
    outputBuffer.assign(blockLength, 0);
}

void CtbFixedFir::Design() {
    coefficients.assign(PaddedTaps(taps), 0);
    const std::uint32_t half = Half();
    std::vector<double> side(half + 1, 0.0); // from the centre outward
    switch (filterKind) {
    case kFixedFirLowPass:
        DesignLowPass(side.data(), upperFrequency);
        break;
    case kFixedFirHighPass:
        DesignLowPass(side.data(), lowerFrequency);
        side[0] -= filterGain;
        break;
    case kFixedFirBandPass:
        DesignBandPass(side.data());
        break;
    case kFixedFirBandStop:
        DesignBandPass(side.data());
        std::transform(side.begin(), side.end(), side.begin(), std::negate<>());
        side[0] += filterGain;
        break;
    case kFixedFirHilbert:
        DesignHilbert();
        return;
    case kFixedFirMovingAverage:
        std::fill(side.begin(), side.end(), static_cast<double>(filterGain) / taps);
        break;
    default:
        side[0] = filterGain;
        break;
    }
    StoreSymmetric(side.data());
}

void CtbFixedFir::DesignLowPass(double* side, double hz) const {
    const std::uint32_t half = Half();
    const double cyclesPerSample = hz / filterRate;
    side[0] = 2.0 * cyclesPerSample;
    double sum = side[0];
    for (std::uint32_t k = 1; k <= half; ++k) {
        const double place = k * std::numbers::pi;
        side[k] = BlackmanFromCentre(k, half) * std::sin(2.0 * place * cyclesPerSample) / place;
        sum += 2.0 * side[k];
    }
    if (!(sum > 0.0)) {
        return; // a band of no width
    }
    std::transform(side, side + half + 1, side, [&](double tap) { return tap * filterGain / sum; });
}

void CtbFixedFir::DesignBandPass(double* side) const {
    const double lower = lowerFrequency;
    const double upper = upperFrequency;
    DesignLowPass(side, (upper - lower) / 2.0);
    const double radiansPerSample = 2.0 * std::numbers::pi * (upper + lower) / 2.0 / filterRate;
    for (std::uint32_t k = 0; k <= Half(); ++k) {
        side[k] *= 2.0 * std::cos(k * radiansPerSample);
    }
}

void CtbFixedFir::DesignHilbert() {
    const std::uint32_t half = Half();
    for (std::uint32_t k = 1; k <= half; k += 2) {
        const double tap = HammingFromCentre(k, half) * 2.0 / (k * std::numbers::pi) * filterGain;
        coefficients[half - k] = Quantise(tap);
        coefficients[half + k] = Quantise(-tap);
    }
}

void CtbFixedFir::StoreSymmetric(const double* side) {
    const std::uint32_t half = Half();
    for (std::uint32_t k = 0; k <= half; ++k) {
        coefficients[half - k] = coefficients[half + k] = Quantise(side[k]);
    }
}

std::uint32_t CtbFixedFir::Filter(std::int32_t* output, const std::int16_t* samples, std::uint32_t count,
                                  std::uint32_t stride) {
    return FilterSamples(output, samples, count, stride);
}

std::uint32_t CtbFixedFir::Filter(std::int32_t* output, const std::int32_t* samples, std::uint32_t count,
                                  std::uint32_t stride) {
    return FilterSamples(output, samples, count, stride);
}

template <class Sample>
std::uint32_t CtbFixedFir::FilterSamples(std::int32_t* output, const Sample* samples, std::uint32_t count,
                                         std::uint32_t stride) {
    std::uint32_t left = count / stride;
    std::uint32_t filtered = 0;
    while (left > 0) {
        const std::uint32_t piece = std::min(left, blockLength);
        std::int16_t* input = inputBuffer.data() + (taps - 1);
        for (std::uint32_t i = 0; i < piece; ++i) {
            input[i] = Narrow(*samples);
            samples += stride;
        }
        RunPass(piece);
        if (output != nullptr) {
            std::copy_n(outputBuffer.data(), piece, output + filtered);
            filtered += piece;
        } else {
            filtered = piece;
        }
        left -= piece;
    }
    return filtered;
}

void CtbFixedFir::RunPass(std::uint32_t count) {
    // The zero taps of the padding meet whatever lies behind the block.
    const std::size_t padded = coefficients.size();
    const std::int16_t* tap = coefficients.data();
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::int16_t* input = inputBuffer.data() + i;
        std::uint32_t sum = 0; // wraps where a signed sum would overflow
        for (std::size_t k = 0; k < padded; ++k) {
            sum += static_cast<std::uint32_t>(static_cast<std::int32_t>(tap[k]) * input[k]);
        }
        outputBuffer[i] = static_cast<std::int32_t>(sum) >> kSumShift;
    }
    const std::int16_t* tail = inputBuffer.data() + count;
    std::copy(tail, tail + (taps - 1), inputBuffer.data());
}

} // namespace orva::squelch
