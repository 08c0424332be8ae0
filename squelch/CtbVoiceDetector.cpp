#include "squelch/CtbVoiceDetector.h"

#include <algorithm>
#include <cmath>

namespace orva::squelch {

namespace {

constexpr double kBlockerExponent = -31.41592653589793; ///< -10 pi, a corner at 5 Hz
constexpr double kFullScaleSquared = 1073741824.0;      ///< 2^30
constexpr float kSubBlockSeconds = 0.022222223F;        ///< 45 sub-blocks per second
constexpr double kHighCrossingFactor = 1.5;
constexpr double kLowEnergyFactor = 0.1;
constexpr double kLevelScale = 10000.0;
constexpr double kHighCrossingScale = 10.0;
constexpr double kLowEnergyScale = 16.666666666666668;
constexpr double kMeasureScale = 0.2;
constexpr double kFluctuation = 1.0; ///< scaled share above which a block is not steady

/// A product of 32 bits: above 46340 it wraps.
std::int32_t Square(std::int32_t x) {
    const auto bits = static_cast<std::uint32_t>(x);
    return static_cast<std::int32_t>(bits * bits);
}

} // namespace

void CtbVoiceDetector::SetSampleRate(float rate) {
    if (rate > 0.0F) {
        sampleRate = rate;
    }
}

void CtbVoiceDetector::SetBlockLength(std::uint32_t length) {
    blockLength = length;
    if (length > block.size()) {
        block.resize(length);
    }
}

void CtbVoiceDetector::Process(const std::int16_t* samples, std::uint32_t count, std::uint32_t stride) {
    if (samples == nullptr || stride == 0 || blockLength == 0) {
        return;
    }
    for (std::uint32_t left = count / stride; left > 0; --left) {
        block[blockFill++] = *samples;
        samples += stride;
        // Beyond it after the block length was lowered.
        if (blockFill >= blockLength) {
            Analyse();
        }
    }
}

void CtbVoiceDetector::Analyse() {
    const std::int32_t before = lastOutput;
    RemoveDc();
    const Measures whole = Measure(block.data(), blockLength, before);
    const SubBlockCounts counts = CountSubBlocks(whole, before);
    crossingRate = static_cast<float>(whole.crossingRate);
    blockEnergy = static_cast<float>(whole.energy);
    level = static_cast<float>(std::sqrt(whole.energy * whole.crossingRate * kLevelScale));
    previousShare = lowEnergyShare;
    Decide(counts);
    blockFill = 0;
}

void CtbVoiceDetector::RemoveDc() {
    const double pole = std::exp(kBlockerExponent / sampleRate);
    const double feed = (1.0 + pole) / 2.0;
    for (std::uint32_t i = 0; i < blockLength; ++i) {
        const std::int32_t input = block[i];
        lastOutput = static_cast<std::int32_t>((input - lastInput) * feed + pole * lastOutput);
        lastInput = input;
        block[i] = lastOutput;
    }
}

/// before  the sample in front of the first one
CtbVoiceDetector::Measures CtbVoiceDetector::Measure(const std::int32_t* samples, std::uint32_t count,
                                                     std::int32_t before) {
    std::uint32_t crossings = 0;
    std::int64_t squares = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        crossings += (samples[i] ^ before) < 0 ? 1U : 0U;
        squares += Square(samples[i]);
        before = samples[i];
    }
    return {static_cast<double>(crossings) / count,
            static_cast<double>(squares) / (count * kFullScaleSquared)};
}

CtbVoiceDetector::SubBlockCounts CtbVoiceDetector::CountSubBlocks(const Measures& whole,
                                                                  std::int32_t before) const {
    const float subBlock = sampleRate * kSubBlockSeconds;
    if (subBlock < 1.0F || static_cast<double>(subBlock) >= blockLength + 1.0) {
        return {0, 0, 0};
    }
    const auto length = static_cast<std::uint32_t>(subBlock);
    SubBlockCounts counts{0, 0, blockLength / length};
    const std::int32_t* samples = block.data();
    for (std::uint32_t i = 0; i < counts.whole; ++i) {
        const Measures part = Measure(samples, length, before);
        counts.highCrossing += kHighCrossingFactor * whole.crossingRate <= part.crossingRate ? 1U : 0U;
        counts.lowEnergy += part.energy <= kLowEnergyFactor * whole.energy ? 1U : 0U;
        samples += length;
        before = samples[-1];
    }
    return counts;
}

void CtbVoiceDetector::Decide(const SubBlockCounts& counts) {
    // A block too short for one sub-block tells nothing.
    if (counts.whole == 0) {
        result = kVoiceQuiet;
        voiceMeasure = 0.0F;
        lowEnergyShare = 0.0F;
        return;
    }
    const double lowShare = static_cast<double>(counts.lowEnergy) / counts.whole;
    if (level < levelFloor) {
        result = kVoiceQuiet;
        voiceMeasure = 0.0F;
        lowEnergyShare = static_cast<float>(lowShare);
        return;
    }
    const double crossing = kHighCrossingScale * counts.highCrossing / counts.whole;
    const double pauses = lowShare * kLowEnergyScale;
    lowEnergyShare = static_cast<float>(pauses);
    voiceMeasure = static_cast<float>(std::min(kMeasureScale * std::max(crossing, pauses), 1.0));
    if (voiceMeasure >= voiceThreshold) {
        result = kVoiceSpeech;
    } else if (crossing > kFluctuation || pauses > kFluctuation) {
        result = kVoiceFluctuates;
    } else {
        result = kVoiceSteady;
    }
}

} // namespace orva::squelch
