/// The loops around the dot product, alike for every family of FIR kernels.
///
/// Included by the kernel units only. Everything here has internal linkage: each unit is compiled for its own
/// instruction set, and the linker must not merge its copy with another unit's. For the same reason nothing
/// from the standard library's templates is used here.
///
/// A `Family` gives: `kChannels`; `Sum`, the results of one output; `Dot(taps, data, count)`, the dot product
/// of `count` taps, a multiple of 4; `Store(out, sum)`, which rounds and saturates.
#pragma once

#include "dsp/FirKernels.h"

namespace orva::dsp {
namespace {

/// Puts one input sample, `kChannels` values, where the history has its oldest, and returns the position that
/// its dot product starts from.
template <int kChannels, class In>
std::int32_t PushSample(FirState& state, const In* in, std::int32_t historyLength) {
    const std::int32_t position = state.position;
    float* slot = state.delayLine + kChannels * (historyLength - 1 - position);
    for (int channel = 0; channel < kChannels; ++channel) {
        slot[channel] = static_cast<float>(in[channel]);
    }
    state.position = position > 0 ? position - 1 : historyLength - 1;
    return position;
}

/// One output per input sample.
template <class Family, class Out, class In>
std::int32_t RunPlain(FirState& state, Out* out, const In* in, std::int32_t count) {
    for (std::int32_t n = 0; n < count; ++n) {
        const std::int32_t position =
            PushSample<Family::kChannels>(state, in + Family::kChannels * n, state.length);
        Family::Store(out + Family::kChannels * n,
                      Family::Dot(state.taps + Family::kChannels * position, state.delayLine, state.length));
    }
    return count > 0 ? count : 0;
}

/// One output per `decimation` input samples, the first of them included.
template <class Family, class Out, class In>
std::int32_t RunDecimating(FirState& state, Out* out, const In* in, std::int32_t count) {
    std::int32_t produced = 0;
    for (std::int32_t n = 0; n < count; ++n) {
        const std::int32_t position =
            PushSample<Family::kChannels>(state, in + Family::kChannels * n, state.length);
        if (--state.phaseCounter < 0) {
            state.phaseCounter = state.decimation - 1;
            Family::Store(
                out + Family::kChannels * produced,
                Family::Dot(state.taps + Family::kChannels * position, state.delayLine, state.length));
            ++produced;
        }
    }
    return produced;
}

/// As many outputs per input sample as sub-filters are due.
template <class Family, class Out, class In>
std::int32_t RunInterpolating(FirState& state, Out* out, const In* in, std::int32_t count) {
    // The four-at-a-time loop reads up to three entries behind a sub-filter; they meet zeros of the delay
    // line.
    const std::int32_t paddedTaps = state.phaseLoopStart + 4;
    std::int32_t produced = 0;
    for (std::int32_t n = 0; n < count; ++n) {
        const std::int32_t position =
            PushSample<Family::kChannels>(state, in + Family::kChannels * n, state.phaseTaps);
        while (state.phasePointer <= state.lastPhase) {
            const float* subFilter = state.taps + Family::kChannels * (state.phasePointer + position);
            Family::Store(out + Family::kChannels * produced,
                          Family::Dot(subFilter, state.delayLine, paddedTaps));
            ++produced;
            state.phasePointer += state.outputStep;
        }
        state.phasePointer -= state.cycleStep;
    }
    return produced;
}

} // namespace
} // namespace orva::dsp
