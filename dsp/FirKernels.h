/// The inner loops of the FIR filters: one table of functions per family of processors.
///
/// A kernel works on a `FirState`, a plain record without functions of its own: units compiled for different
/// instruction sets share its layout and no code.
#pragma once

#include <cstdint>

namespace orva::dsp {

/// Run-time half of a filter: what a kernel reads and moves on. `channels` is known to the kernel: for pairs
/// each tap and each history entry is two floats, and all indices below still count taps.
struct FirState {
    float* taps;         ///< 16-byte aligned. Plain and decimating: the taps twice in succession.
                         ///< Interpolating: one sub-filter each `phaseStride`, its taps twice in succession.
    float* delayLine;    ///< history, circular, 16-byte aligned, zero behind its end up to a multiple of 4
    std::int32_t length; ///< taps, a multiple of 4
    std::int32_t position;     ///< present position in `delayLine`; counts down and wraps
    std::int32_t decimation;   ///< input samples per output, decimating mode
    std::int32_t phaseCounter; ///< position in the decimation cycle; below 0 an output is due
    std::int32_t phaseTaps;    ///< taps of a sub-filter and entries of `delayLine`, interpolating mode
    std::int32_t
        phaseLoopStart;        ///< where the four-at-a-time loop over a sub-filter starts; it runs down to 0
    std::int32_t phaseStride;  ///< distance of sub-filters
    std::int32_t outputStep;   ///< decimation x phaseStride: from one output's sub-filter to the next one's
    std::int32_t cycleStep;    ///< interpolation x phaseStride: one input sample
    std::int32_t lastPhase;    ///< offset in `taps` of the last sub-filter
    std::int32_t phasePointer; ///< offset in `taps` of the sub-filter in use
};

/// Filters `count` input samples (pairs: `count` pairs) and returns the number of output samples. `out` may
/// be `in` when the rate does not rise. Integers are taken and given unscaled; results are rounded to nearest
/// and saturated.
template <class Out, class In>
using FirKernel = std::int32_t (*)(FirState& state, Out* out, const In* in, std::int32_t count);

/// The seven formats of one mode.
struct FirKernelSet {
    FirKernel<std::int16_t, std::int16_t> kernelI16ToI16;
    FirKernel<float, std::int16_t> kernelI16ToF32;
    FirKernel<std::int32_t, std::int32_t> kernelI32ToI32;
    FirKernel<float, std::int32_t> kernelI32ToF32;
    FirKernel<float, float> kernelF32ToF32;
    FirKernel<std::int16_t, float> kernelF32ToI16;
    FirKernel<std::int32_t, float> kernelF32ToI32;
};

/// One family: 7 formats by 3 modes.
struct FirKernelTable {
    FirKernelSet plain;         ///< rate unchanged
    FirKernelSet interpolating; ///< up factor above 1, any down factor
    FirKernelSet decimating;    ///< down factor above 1, up factor 1
};

/// The f32 to f32 kernels of a pair filter, which alone have vector forms.
struct FirPairKernels {
    FirKernel<float, float> plain;
    FirKernel<float, float> interpolating;
    FirKernel<float, float> decimating;
};

/// Extended-precision sums on the floating-point stack; run on every processor.
FirKernelTable FirKernelsX87();
FirKernelTable FirPairKernelsX87();

/// Single-precision sums, four at a time.
FirKernelTable FirKernelsSse();
FirPairKernels FirPairKernelsSse();

/// As SSE, with horizontal adds. May be entered only where the processor has SSE3.
FirKernelTable FirKernelsSse3();

} // namespace orva::dsp
