/// Memory of a filter's run-time half: taps and history in one block, aligned to 16 bytes.
#pragma once

#include "dsp/AlignedBlock.h"
#include "dsp/FirKernels.h"

#include <cstddef>
#include <cstdint>

namespace orva::dsp {

/// What decides the size and the layout of a filter's memory.
struct FirGeometry {
    std::uint32_t length;        ///< taps, a multiple of 4, at least 4
    std::uint32_t interpolation; ///< up factor, at least 1
    std::uint32_t decimation;    ///< down factor, at least 1
};

/// Owns the taps and the history of one filter and lays taps out for its kernels.
class FirStorage {
public:
    /// channels  1, or 2 for interleaved pairs, where each tap is stored twice side by side
    explicit FirStorage(int channelCount) : channels(channelCount) {}

    /// Takes zeroed memory for `geometry` and sets the start positions. False, with the old memory, geometry
    /// and history kept, when there is not enough memory.
    bool Allocate(const FirGeometry& geometry);

    bool IsAllocated() const { return static_cast<bool>(block); }

    /// Narrows `length` taps to f32 and stores them in the layout that the kernels of this geometry read.
    /// Does nothing for a null pointer or without memory. resetPosition  also puts `position`, and when
    /// interpolating the sub-filter in use, to their start
    void LoadTaps(const double* taps, bool resetPosition);

    /// Zeroes the history and sets `phaseCounter` 0 and `position` to its start.
    void ClearHistory();

    /// Plain layout only: writes `count` samples (pairs) delayed by half the length, times `gain`, through
    /// the history.
    std::int32_t Delay(float* out, const float* in, std::int32_t count, double gain);

    /// For the kernels. Its pointers are null until `Allocate` has succeeded.
    FirState state{};

private:
    bool Interpolates() const { return interpolation > 1; }
    std::int32_t HistoryLength() const { return Interpolates() ? state.phaseTaps : state.length; }
    void PutTap(std::int32_t index, float tap);
    void LoadPlainTaps(const double* taps);
    void LoadSubFilters(const double* taps);

    int channels;
    std::int32_t interpolation = 1;
    AlignedBlock block;
    std::size_t historyFloats = 0; ///< of `delayLine`, its padding included
};

} // namespace orva::dsp
