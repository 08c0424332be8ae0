#include "p25/COrvaAnalogDemodulator.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace orva::p25 {

namespace {

constexpr std::uint32_t kLowestRate = 12000; ///< below it the channel does not fit under half the rate
constexpr std::uint32_t kChannelLength = 256;
constexpr double kChannelCutoffHz = 6000.0;
constexpr double kBlockerExponent = -31.41592653589793; ///< -10 pi, a corner at 5 Hz
constexpr float kLimit = 3.0F;                          ///< radians per sample

} // namespace

COrvaAnalogDemodulator::COrvaAnalogDemodulator() {
    SetUpBlocker();
}

void COrvaAnalogDemodulator::SetSampleRate(std::uint32_t rate) {
    if (rate == sampleRate) {
        return;
    }
    sampleRate = rate;
    filterReady = false;
    oscillatorReady = false;
}

void COrvaAnalogDemodulator::Reset() {
    oscillatorPhase = 0;
    prevInPhase = 0;
    prevLagging = 0;
    blockerState = 0;
    blockerLast = 0;
    channelFilter.ClearHistory();
}

const float* COrvaAnalogDemodulator::Process(const float* samples, std::int32_t count) {
    if (samples == nullptr || count < 1 || sampleRate < kLowestRate) {
        return nullptr;
    }
    if (!BuildFilter() || !BuildOscillator() || !PrepareArrays(count)) {
        return nullptr;
    }
    Mix(samples, count);
    channelFilter.Filter(complexBuffer.Data(), complexBuffer.Data(), count);
    Discriminate(count);
    RemoveDc(count);
    return audio.Data();
}

void COrvaAnalogDemodulator::SetUpBlocker() {
    const double pole = std::exp(kBlockerExponent / sampleRate);
    blockerPole = static_cast<float>(pole);
    blockerFeed = static_cast<float>((pole + 1.0) / 2.0);
}

bool COrvaAnalogDemodulator::BuildFilter() {
    if (filterReady) {
        return true;
    }
    if (!channelFilter.SetLength(kChannelLength) || !channelFilter.SetSampleRate(sampleRate) ||
        !channelFilter.SetFilterType(dsp::kFilterLowPass)) {
        return false;
    }
    channelFilter.SetHighCut(kChannelCutoffHz);
    SetUpBlocker();
    filterReady = true;
    return true;
}

bool COrvaAnalogDemodulator::BuildOscillator() {
    if (oscillatorReady) {
        return true;
    }
    if (oscillatorTable.Acquire(sampleRate) == nullptr) {
        return false;
    }
    for (std::uint32_t i = 0; i < sampleRate; ++i) {
        oscillatorTable[i] = static_cast<float>(std::cos(2.0 * std::numbers::pi * i / sampleRate));
    }
    oscillatorPhase = 0;
    quarterCycle = sampleRate >> 2;
    oscillatorReady = true;
    return true;
}

bool COrvaAnalogDemodulator::PrepareArrays(std::int32_t count) {
    const auto size = static_cast<std::uint32_t>(count);
    return complexBuffer.Acquire(2 * size) != nullptr && audio.Acquire(size) != nullptr;
}

void COrvaAnalogDemodulator::Mix(const float* samples, std::int32_t count) {
    const float* table = oscillatorTable.Data();
    float* pair = complexBuffer.Data();
    const std::uint32_t step = mixStep % sampleRate;
    std::uint32_t phase = oscillatorPhase;
    for (std::int32_t n = 0; n < count; ++n) {
        std::uint32_t quarter = phase + quarterCycle;
        quarter -= quarter >= sampleRate ? sampleRate : 0;
        *pair++ = samples[n] * table[phase];
        *pair++ = samples[n] * table[quarter];
        phase += step;
        phase -= phase >= sampleRate ? sampleRate : 0;
    }
    oscillatorPhase = phase;
}

/// Leaves the phase steps in `audio`.
void COrvaAnalogDemodulator::Discriminate(std::int32_t count) {
    const float* pair = complexBuffer.Data();
    float* output = audio.Data();
    double lastInPhase = prevInPhase;
    double lastLagging = prevLagging;
    for (std::int32_t n = 0; n < count; ++n) {
        const double inPhase = *pair++;
        const double lagging = *pair++;
        // Against the present power, not against the product with the previous pair.
        const double power = inPhase * inPhase + lagging * lagging;
        output[n] = static_cast<float>(std::atan2(lastLagging * inPhase - lagging * lastInPhase, power));
        lastInPhase = inPhase;
        lastLagging = lagging;
    }
    prevInPhase = static_cast<float>(lastInPhase);
    prevLagging = static_cast<float>(lastLagging);
}

void COrvaAnalogDemodulator::RemoveDc(std::int32_t count) {
    float* value = audio.Data();
    for (std::int32_t n = 0; n < count; ++n) {
        const float step = value[n];
        blockerState = blockerState * blockerPole + (step - blockerLast) * blockerFeed;
        blockerLast = step;
        value[n] = std::clamp(blockerState * gain, -kLimit, kLimit);
    }
}

} // namespace orva::p25
