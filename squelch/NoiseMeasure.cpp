#include "squelch/NoiseMeasure.h"

#include <algorithm>
#include <cmath>

namespace orva::squelch {

namespace {

constexpr double kRootScale = 3.07692289352417;
constexpr float kValueScale = 0.00666F;
constexpr double kHighest = 99.0;
constexpr float kNewShare = 0.15F;
constexpr float kOldShare = 0.85F;

} // namespace

double NoiseOf(const std::int16_t* highPassed, std::uint32_t count) {
    float squares = 0.0F;
    for (std::uint32_t i = 0; i < count; ++i) {
        squares += static_cast<float>(highPassed[i] * highPassed[i]);
    }
    const float root = std::sqrt(squares / static_cast<float>(count));
    const auto scaled = static_cast<float>(root * kRootScale);
    return std::min(static_cast<double>(scaled) * kValueScale, kHighest);
}

float NextNoiseLevel(float noiseLevel, double blockNoise, bool scannerActive) {
    if (scannerActive) {
        return static_cast<float>(blockNoise);
    }
    return static_cast<float>(blockNoise * kNewShare + static_cast<double>(noiseLevel) * kOldShare);
}

} // namespace orva::squelch
