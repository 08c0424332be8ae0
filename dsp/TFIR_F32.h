/// Single-channel FIR filter with single-precision taps, with rational rate change.
#pragma once

#include "dsp/TFIRBase.h"

namespace orva::dsp {

/// y[n] is the sum over k of tap[length-1-k] x[n-k]: tap index rises with time, the last tap meets the newest
/// sample.
///
/// After construction: band-pass 300 to 5000 Hz at 32000 Hz, 128 taps, no rate change. The filtering
/// operations return the number of output samples and allocate nothing; `out` may be `in` when the rate does
/// not rise. `out` needs `count` x up / down entries, rounded up, and one more when the rate falls. The
/// results do not depend on how a signal is cut into blocks. With `GetLastError()` 8 after construction there
/// is no memory, and they return 0.
class TFIR_F32 : public TFIRBase {
public:
    TFIR_F32();
    ~TFIR_F32() override = default;

    void SetTaps(const double* taps, bool resetPosition) override;

    /// Rate change up : down, both above 0, reduced by their greatest common divisor. Clears the history on a
    /// change.
    bool SetRateRatio(std::uint32_t up, std::uint32_t down);

    /// Zeroes the history and puts the position in it, and in the decimation cycle, to their start.
    void ClearHistory() { storage.ClearHistory(); }

    std::int32_t Filter(float* out, const float* in, std::int32_t count);
    /// Integer samples are taken unscaled; results are rounded to nearest and saturated.
    std::int32_t FilterI16(std::int16_t* out, const std::int16_t* in, std::int32_t count);
    std::int32_t FilterI16ToF32(float* out, const std::int16_t* in, std::int32_t count);
    std::int32_t FilterI32(std::int32_t* out, const std::int32_t* in, std::int32_t count);
    std::int32_t FilterI32ToF32(float* out, const std::int32_t* in, std::int32_t count);
    std::int32_t FilterF32ToI16(std::int16_t* out, const float* in, std::int32_t count);
    std::int32_t FilterF32ToI32(std::int32_t* out, const float* in, std::int32_t count);

    /// Writes the input delayed by half the filter's length, times the gain asked for, through the history,
    /// so that a later `Filter` goes on without a jump. Without a rate change only, else returns 0.
    std::int32_t Delay(float* out, const float* in, std::int32_t count);

protected:
    bool AllocateBuffers() override;

private:
    friend struct TFIR_F32Inspector;

    void SelectKernels();

    FirStorage storage{1};
    FirKernelSet kernels{}; ///< the seven inner loops now in force
};

} // namespace orva::dsp
