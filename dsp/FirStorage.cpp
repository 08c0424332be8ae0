#include "dsp/FirStorage.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace orva::dsp {
namespace {

/// Taps per pass of the inner loops.
constexpr std::int32_t kTapsPerPass = 4;

constexpr std::int32_t RoundUp(std::int32_t count) {
    return (count + kTapsPerPass - 1) & ~(kTapsPerPass - 1);
}

/// The parts of a filter's state that follow from its geometry, and the entries that its two arrays need.
struct Layout {
    FirState state;
    std::int64_t tapEntries;
    std::int64_t historyEntries;
};

Layout LayoutFor(const FirGeometry& geometry) {
    Layout layout{};
    FirState& state = layout.state;
    state.length = static_cast<std::int32_t>(geometry.length);
    state.decimation = static_cast<std::int32_t>(geometry.decimation);
    if (geometry.interpolation < 2) {
        state.position = state.length - 1;
        layout.tapEntries = 2 * static_cast<std::int64_t>(state.length);
        layout.historyEntries = state.length;
        return layout;
    }
    const auto up = static_cast<std::int32_t>(geometry.interpolation);
    const std::int32_t wholeTaps = state.length / up;
    state.phaseTaps = wholeTaps + 1;
    state.phaseLoopStart = RoundUp(state.phaseTaps) - kTapsPerPass;
    state.phaseStride = RoundUp(2 * state.phaseTaps);
    state.outputStep = state.decimation * state.phaseStride;
    state.cycleStep = up * state.phaseStride;
    state.lastPhase = (up - 1) * state.phaseStride;
    state.position = state.phaseTaps - 1;
    // The four-at-a-time loop over the last sub-filter ends up to three entries behind it.
    layout.tapEntries = static_cast<std::int64_t>(up) * state.phaseStride + kTapsPerPass;
    layout.historyEntries = RoundUp(state.phaseTaps);
    return layout;
}

/// Factors whose steps through the sub-filters would leave 32 bits cannot be given memory either.
bool IsRepresentable(const FirGeometry& geometry) {
    constexpr std::uint64_t kLimit = std::numeric_limits<std::int32_t>::max();
    const std::uint64_t stride =
        2 * (static_cast<std::uint64_t>(geometry.length) / geometry.interpolation + 1) + 3;
    const std::uint64_t steps = static_cast<std::uint64_t>(geometry.interpolation) + geometry.decimation;
    return 2 * static_cast<std::uint64_t>(geometry.length) <= kLimit && steps <= kLimit &&
           (geometry.interpolation < 2 || steps * stride <= kLimit / 2);
}

} // namespace

bool FirStorage::Allocate(const FirGeometry& geometry) {
    if (!IsRepresentable(geometry)) {
        return false;
    }
    Layout layout = LayoutFor(geometry);
    const auto entries = static_cast<std::uint64_t>(layout.tapEntries + layout.historyEntries);
    AlignedBlock fresh =
        AlignedBlock::Allocate(entries * static_cast<std::uint64_t>(channels) * sizeof(float));
    if (!fresh) {
        return false;
    }
    // Both arrays keep the alignment: each holds a multiple of four entries.
    layout.state.taps = fresh.Floats();
    layout.state.delayLine = layout.state.taps + channels * layout.tapEntries;
    state = layout.state;
    interpolation = static_cast<std::int32_t>(geometry.interpolation);
    historyFloats = static_cast<std::size_t>(channels * layout.historyEntries);
    block = std::move(fresh);
    return true;
}

void FirStorage::PutTap(std::int32_t index, float tap) {
    for (int channel = 0; channel < channels; ++channel) {
        state.taps[channels * index + channel] = tap;
    }
}

void FirStorage::LoadPlainTaps(const double* taps) {
    for (std::int32_t i = 0; i < state.length; ++i) {
        const auto tap = static_cast<float>(taps[i]);
        PutTap(i, tap);
        PutTap(i + state.length, tap);
    }
}

void FirStorage::LoadSubFilters(const double* taps) {
    for (std::int32_t phase = 0; phase < interpolation; ++phase) {
        const std::int32_t start = phase * state.phaseStride;
        for (std::int32_t i = 0; i < state.phaseStride; ++i) {
            PutTap(start + i, 0.0F);
        }
        std::int32_t entry = state.phaseTaps - 1;
        for (std::int32_t source = phase; source < state.length; source += interpolation) {
            const auto tap = static_cast<float>(taps[source]);
            PutTap(start + entry, tap);
            PutTap(start + entry + state.phaseTaps, tap);
            --entry;
        }
    }
}

void FirStorage::LoadTaps(const double* taps, bool resetPosition) {
    if (!IsAllocated() || taps == nullptr) {
        return;
    }
    if (Interpolates()) {
        LoadSubFilters(taps);
    } else {
        LoadPlainTaps(taps);
    }
    if (resetPosition) {
        state.position = HistoryLength() - 1;
        state.phasePointer = 0;
    }
}

std::int32_t FirStorage::Delay(float* out, const float* in, std::int32_t count, double gain) {
    if (!IsAllocated()) {
        return 0;
    }
    const std::int32_t length = state.length;
    for (std::int32_t n = 0; n < count; ++n) {
        const std::int32_t newest = length - 1 - state.position;
        const std::int32_t delayed = (newest + length - length / 2) % length;
        for (int channel = 0; channel < channels; ++channel) {
            state.delayLine[channels * newest + channel] = in[channels * n + channel];
            out[channels * n + channel] =
                static_cast<float>(state.delayLine[channels * delayed + channel] * gain);
        }
        state.position = state.position > 0 ? state.position - 1 : length - 1;
    }
    return std::max(count, 0);
}

void FirStorage::ClearHistory() {
    if (!IsAllocated()) {
        return;
    }
    std::fill_n(state.delayLine, historyFloats, 0.0F);
    state.phaseCounter = 0;
    state.position = HistoryLength() - 1;
}

} // namespace orva::dsp
