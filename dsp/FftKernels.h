/// The inner loops of the spectrum: input, transform and decibel steps, one set of functions per family of
/// processors.
#pragma once

#include <cstdint>

namespace orva::dsp {

/// What the kernels of one transform read and write. N is `size`.
struct FftState {
    std::uint32_t size;               ///< N, a power of two of at least 16
    float* work;                      ///< N floats, 16-byte aligned: N/2 complex values
    float* scratch;                   ///< N floats, 16-byte aligned: the upper half after the last stage
    const float* twiddles;            ///< N/2 pairs (-sin t, cos t), t = 2 pi i / N, 16-byte aligned
    const std::uint32_t* bitReversal; ///< N/2 float offsets into `work`
    const float* window;              ///< N/2 entries: the first half of the symmetric window
    const float* log2Table;           ///< 513 entries, log2(1 + i / 512)
    float decibelsPerOctave;          ///< 10 log10(2)
    float floorDecibels;              ///< lowest output value
};

struct FftKernels {
    /// Windows N samples into `work`, in bit-reversed order.
    void (*input)(const FftState& state, const float* in);
    /// Transforms `work` to the one-sided spectrum of the real samples, N/2 complex values, without the
    /// factor 1/2.
    void (*transform)(const FftState& state);
    /// Writes N/2 decibel values of |X|^2, `floorDecibels` .. 0.0.
    void (*decibels)(const FftState& state, float* out);
};

FftKernels FftKernelsX87();
FftKernels FftKernelsSse();

} // namespace orva::dsp
