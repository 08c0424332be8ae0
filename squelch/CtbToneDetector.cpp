#include "squelch/CtbToneDetector.h"

#include <algorithm>
#include <cstddef>

namespace orva::squelch {

namespace {

constexpr float kInitialRate = 1000.0F;
constexpr std::uint32_t kTapsPerBranch = 127;
constexpr float kTargetRate = 1378.0F;
constexpr float kRateTolerance = 0.01F;

constexpr double kFirstToneTimesLength = 64000.0; ///< 62.5 Hz x 1024
constexpr double kLastToneTimesLength = 260198.4; ///< 254.1 Hz x 1024
constexpr double kPresenceShare = 0.25;
constexpr float kHostToneScale = 1000.0F;

} // namespace

std::int32_t ScaledCtcssTone(std::int32_t toneIndex) {
    if (toneIndex < 0 || toneIndex >= static_cast<std::int32_t>(kCtcssTones.size())) {
        return 0;
    }
    return static_cast<std::int32_t>(kCtcssTones[static_cast<std::size_t>(toneIndex)] * kHostToneScale);
}

CtbToneDetector::CtbToneDetector() {
    analyzer.SetLength(kWindowLength);
    analyzer.SetWindow(kAnalyzerBlackman);
    SetSampleRate(kInitialRate);
}

void CtbToneDetector::SetSampleRate(float rate) {
    if (rate == sampleRate || !resampler.Configure(kTapsPerBranch, rate, kTargetRate, kRateTolerance)) {
        return;
    }
    sampleRate = rate;
    reducedRate = static_cast<float>(static_cast<double>(rate) * resampler.GetUp() / resampler.GetDown());
}

void CtbToneDetector::Process(const std::int16_t* samples, std::uint32_t count, std::uint32_t stride) {
    if (samples == nullptr || stride == 0) {
        return;
    }
    const std::uint64_t mostInputs =
        static_cast<std::uint64_t>(kWindowLength) * resampler.GetDown() / resampler.GetUp();
    const auto inputs = static_cast<std::uint32_t>(std::min<std::uint64_t>(count / stride, mostInputs));
    resampler.SetBlockLength(inputs);
    std::array<std::int16_t, kWindowLength> reduced;
    Append(reduced.data(), resampler.Resample(reduced.data(), samples, inputs * stride, stride));
    Analyse();
}

void CtbToneDetector::Append(const std::int16_t* reduced, std::uint32_t count) {
    std::copy(window.begin() + count, window.end(), window.begin());
    std::copy_n(reduced, count, window.end() - count);
}

void CtbToneDetector::Analyse() {
    analyzer.Analyze(window.data());
    const float* power = analyzer.Power();
    const double perHertz = 1.0 / reducedRate;
    const auto firstBin = static_cast<std::uint32_t>(perHertz * kFirstToneTimesLength);
    const auto lastBin = static_cast<std::uint32_t>(perHertz * kLastToneTimesLength);

    double total = 0.0;
    double best = 0.0;
    std::int32_t bestIndex = -1;
    std::size_t tone = 0;
    for (std::uint32_t bin = firstBin; bin <= lastBin; ++bin) {
        total += power[bin];
        // The bins of the tones are met in their order, each truncated down.
        if (tone < kCtcssTones.size() &&
            bin == static_cast<std::uint32_t>(kCtcssTones[tone] * perHertz * kWindowLength)) {
            if (power[bin] > best) {
                best = power[bin];
                bestIndex = static_cast<std::int32_t>(tone);
            }
            ++tone;
        }
    }
    // In silence both are 0 and the index is that of no tone.
    toneIndex = best >= kPresenceShare * total ? bestIndex : -1;
}

} // namespace orva::squelch
