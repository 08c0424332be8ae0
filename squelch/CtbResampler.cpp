#include "squelch/CtbResampler.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <optional>

namespace orva::squelch {

namespace {

constexpr double kBandShare = 0.85; ///< of the narrower Nyquist band that the filter passes
constexpr std::uint32_t kFewestTaps = 3;
constexpr std::uint32_t kMostTapsPerBranch = 1024;
constexpr double kUnityQ31 = 2147483647.0;
constexpr std::int32_t kHighest = 0x7FFFFFFF;
constexpr std::int32_t kLowest = -0x7FFFFFFF; ///< symmetric to `kHighest`
constexpr int kSumShift = 31;
constexpr int kSampleShift = 16; ///< puts 16 bits at the top of 32

struct Ratio {
    std::uint32_t up;
    std::uint32_t down;
};

bool IsRate(float hz) {
    return std::isfinite(hz) && hz > 0.0F;
}

/// The smallest `up` with which a whole `down` meets the wanted rate.
std::optional<Ratio> ChooseRatio(double inputRate, double targetRate, double tolerance) {
    if (inputRate / targetRate > CtbResampler::kMostDown) {
        return std::nullopt;
    }
    std::uint32_t up = 1;
    double down = std::trunc(inputRate / targetRate);
    double error = std::abs(down / inputRate * targetRate - 1.0);
    while (error >= tolerance) {
        if (++up > CtbResampler::kMostUp) {
            return std::nullopt;
        }
        down = std::trunc(up / targetRate * inputRate);
        if (down > CtbResampler::kMostDown) {
            return std::nullopt;
        }
        error = std::abs(down * targetRate / up / inputRate - 1.0);
    }
    return Ratio{up, std::max(static_cast<std::uint32_t>(down), 1U)};
}

/// Blackman window over `k` = 0 at the centre to `half` at the end.
double BlackmanFromCentre(std::uint32_t k, std::uint32_t half) {
    const double angle = (1.0 - static_cast<double>(k) / half) * std::numbers::pi;
    return 0.42 - 0.5 * std::cos(angle) + 0.08 * std::cos(2.0 * angle);
}

std::int32_t Quantise(double tap) {
    if (tap >= 1.0) {
        return kHighest;
    }
    if (tap <= -1.0) {
        return kLowest;
    }
    return static_cast<std::int32_t>(tap * kUnityQ31);
}

} // namespace

CtbResampler::CtbResampler() {
    taps = kFewestTaps;
    Allocate();
    DesignFilter();
}

bool CtbResampler::Configure(std::uint32_t tapsPerBranch, float inputRate, float targetRate,
                             float tolerance) {
    if (tapsPerBranch == 0 || tapsPerBranch > kMostTapsPerBranch || !IsRate(inputRate) ||
        !IsRate(targetRate) || !(tolerance > 0.0F)) {
        return false;
    }
    const std::optional<Ratio> ratio = ChooseRatio(inputRate, targetRate, tolerance);
    if (!ratio) {
        return false;
    }
    const std::uint32_t newTaps = std::max(ratio->up * tapsPerBranch, kFewestTaps) | 1U;
    const bool tapsChange = newTaps != taps;
    const bool anyChange = tapsChange || ratio->up != up || ratio->down != down;
    up = ratio->up;
    down = ratio->down;
    taps = newTaps;
    if (anyChange) {
        Allocate();
    }
    // Kept: a change of the factors alone leaves the old cut-off in force.
    if (tapsChange) {
        DesignFilter();
    }
    phase = 0;
    return true;
}

void CtbResampler::SetBlockLength(std::uint32_t length) {
    length = std::max(length, 1U);
    if (length == blockLength) {
        return;
    }
    blockLength = length;
    Allocate();
}

std::uint32_t CtbResampler::MostOutputs(std::uint32_t inputs) const {
    return static_cast<std::uint32_t>((static_cast<std::uint64_t>(inputs) * up + down - 1) / down);
}

void CtbResampler::Allocate() {
    historyLength = (taps + up - 1) / up;
    historyBuffer.assign(static_cast<std::size_t>(historyLength) + blockLength, 0);
    inputBuffer = historyBuffer.data() + historyLength;
    outputBuffer.assign(MostOutputs(blockLength), 0);
}

void CtbResampler::DesignFilter() {
    const std::uint32_t half = taps >> 1;
    const double cut = kBandShare / std::max(up, down);
    std::vector<double> side(half + 1); // from the centre outward
    side[0] = cut;
    double sum = cut;
    for (std::uint32_t k = 1; k <= half; ++k) {
        const double place = k * std::numbers::pi;
        side[k] = BlackmanFromCentre(k, half) * std::sin(place * cut) / place;
        sum += 2.0 * side[k];
    }
    // The zeros stuffed between the samples take their share of the gain.
    const double scale = up / sum;
    coefficients.assign(taps, 0);
    for (std::uint32_t k = 0; k <= half; ++k) {
        coefficients[half - k] = coefficients[half + k] = Quantise(side[k] * scale);
    }
}

std::uint32_t CtbResampler::Resample(std::int16_t* output, const std::int16_t* samples, std::uint32_t count,
                                     std::uint32_t stride) {
    std::uint32_t left = count / stride;
    std::uint32_t produced = 0;
    while (left > 0) {
        const std::uint32_t inputs = std::min(left, blockLength);
        for (std::uint32_t i = 0; i < inputs; ++i) {
            inputBuffer[i] = static_cast<std::int32_t>(*samples) * (1 << kSampleShift);
            samples += stride;
        }
        const std::uint32_t outputs = RunPass(inputs);
        if (output != nullptr) {
            std::transform(outputBuffer.data(), outputBuffer.data() + outputs, output + produced,
                           [](std::int32_t x) { return static_cast<std::int16_t>(x >> kSampleShift); });
            produced += outputs;
        } else {
            produced = outputs;
        }
        left -= inputs;
    }
    return produced;
}

/// Filters the `inputs` new samples into `outputBuffer` and keeps the newest as history.
std::uint32_t CtbResampler::RunPass(std::uint32_t inputs) {
    const std::uint64_t end = static_cast<std::uint64_t>(up) * inputs;
    std::uint32_t outputs = 0;
    std::uint64_t place = phase;
    for (; place < end; place += down) {
        auto input = static_cast<std::size_t>(place / up);
        const auto behind = static_cast<std::uint32_t>(place % up);
        const std::uint32_t firstTap = behind == 0 ? 0 : up - behind;
        if (firstTap != 0) {
            ++input;
        }
        outputBuffer[outputs++] = BranchSum(firstTap, historyBuffer.data() + input);
    }
    phase = static_cast<std::uint32_t>(place - end);
    const std::int32_t* newest = historyBuffer.data() + inputs;
    std::copy(newest, newest + historyLength, historyBuffer.data());
    return outputs;
}

std::int32_t CtbResampler::BranchSum(std::uint32_t firstTap, const std::int32_t* input) const {
    std::uint64_t sum = 0; // wraps where a signed sum would overflow
    for (std::uint32_t tap = firstTap; tap < taps; tap += up) {
        sum += static_cast<std::uint64_t>(static_cast<std::int64_t>(coefficients[tap]) * *input++);
    }
    const std::int64_t scaled = static_cast<std::int64_t>(sum) >> kSumShift;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(scaled, kLowest, kHighest));
}

} // namespace orva::squelch
