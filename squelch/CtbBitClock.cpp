#include "squelch/CtbBitClock.h"

namespace orva::squelch {

namespace {

/// A zero counts as the positive side, and reaching it from either side as a crossing.
bool Crosses(std::int32_t previous, std::int32_t sample) {
    return (sample ^ previous) < 0 || (sample == 0 && previous != 0);
}

} // namespace

void CtbBitClock::SetCallback(Callback receiver, void* receiverContext) {
    callback = receiver;
    context = receiverContext;
}

void CtbBitClock::SetBitRate(double rate) {
    if (rate > 0.0) {
        bitRate = rate;
    }
}

void CtbBitClock::SetSampleRate(double rate) {
    if (rate > 0.0) {
        clockSampleRate = rate;
    }
}

void CtbBitClock::Reset() {
    sinceTick = 0.0;
    toTick = 0.0;
    lastSample = 0;
}

void CtbBitClock::Process(const std::int32_t* samples, std::uint32_t count) {
    const double samplesPerBit = clockSampleRate / bitRate;
    // A crossing midway between two bits leaves the next bit where it was.
    const auto keep = static_cast<float>(1.0 - gain);
    const auto half = static_cast<float>((1.0 - gain / 2.0) * samplesPerBit);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::int32_t sample = samples[i];
        if (Crosses(lastSample, sample)) {
            toTick = keep * sinceTick + half;
        }
        lastSample = sample;
        if (toTick <= 0.0) {
            if (callback != nullptr) {
                callback(context, sample >= 0 ? 1U : 0U);
            }
            sinceTick = toTick;
            toTick += samplesPerBit;
        }
        sinceTick -= 1.0;
        toTick -= 1.0;
    }
}

} // namespace orva::squelch
