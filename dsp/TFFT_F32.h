/// Real samples to a one-sided power spectrum in decibels, for display.
#pragma once

#include "dsp/AlignedBlock.h"
#include "dsp/DesignWindows.h"
#include "dsp/FftKernels.h"

#include <cstdint>

namespace orva::dsp {

/// Windowing, a real FFT and a table logarithm in one call. A sine of amplitude 1.0 at a bin's centre and a
/// constant 1.0 both read 0 dB, to 0.01 dB; results are limited to -140 .. 0 dB.
///
/// An instance belongs to one thread at a time; instances of one size share their tables through locked
/// caches. Errors go to the thread's error state, `GetErrorState()`. No operation throws.
class TFFT_F32 {
public:
    /// Size 128, parametric Blackman window.
    TFFT_F32();
    virtual ~TFFT_F32();
    TFFT_F32(const TFFT_F32&) = delete;
    TFFT_F32& operator=(const TFFT_F32&) = delete;

    /// n  real samples per transform, a power of two of at least 16, else false with error 87 and nothing
    /// changed. When
    ///    memory is short: false, error 8, and no size until the next success. The size in force already:
    ///    true.
    bool SetSize(std::uint32_t n);
    std::uint32_t GetSize() const { return size; }

    /// Reads N samples, scale -1.0 .. 1.0, and writes N/2 decibel values, bin 0 first. `out` may be `in`. The
    /// first call after `SetSize` makes what is missing; later ones allocate nothing. False, with `out` left
    /// alone, when that fails or there is no size.
    bool ComputeSpectrum(float* out, const float* in);

private:
    friend struct TFFT_F32Inspector;

    void ReleaseTables();
    bool AcquireTables();
    void ComputeWindows();
    FftState KernelState() const;

    std::uint32_t size = 0;     ///< N
    std::uint32_t halfSize = 0; ///< N / 2, bins of the output
    std::uint32_t windowKind = kWindowBlackman;
    bool mirror = false;                        ///< reverse the output
    float* work = nullptr;                      ///< N floats, 16-byte aligned: N/2 complex values
    AlignedBlock scratch;                       ///< N floats, for the upper half during the final stage
    const float* twiddles = nullptr;            ///< shared
    const std::uint32_t* bitReversal = nullptr; ///< shared
    float* windowI16 = nullptr;                 ///< N/2 entries: `windowF32` times 2^-15, for integer input
    float* windowI32 = nullptr;                 ///< N/2 entries: `windowF32` times 2^-31
    float* windowF32 = nullptr; ///< N/2 entries: the window's first half, the whole one summing to 1
    float floorDecibels = -140.0F;
    double windowGain = 0.0; ///< the normalising factor
    double windowParameters[2] = {kDefaultWindowParameters[0], kDefaultWindowParameters[1]};
    AlignedBlock block; ///< memory of `work` and the three windows
    FftKernels kernels;
};

} // namespace orva::dsp
