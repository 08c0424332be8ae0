/// FIR filter for interleaved pairs (complex baseband), with single-precision taps and rational rate change.
#pragma once

#include "dsp/TFIRBase.h"

namespace orva::dsp {

/// `TFIR_F32` for pairs: a real tap works on both parts of a pair. All counts count pairs, so the arrays hold
/// twice as many values; otherwise the operations are those of `TFIR_F32`. Only f32 to f32 has vector
/// kernels.
class TFIR_F32_2CH : public TFIRBase {
public:
    TFIR_F32_2CH();
    ~TFIR_F32_2CH() override = default;

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

    /// Writes the input delayed by half the filter's length, times the gain asked for, through the history.
    /// Without a rate change only, else returns 0.
    std::int32_t Delay(float* out, const float* in, std::int32_t count);

protected:
    bool AllocateBuffers() override;

private:
    friend struct TFIR_F32_2CHInspector;

    void SelectKernels();

    FirStorage storage{2};
    FirKernelSet kernels{}; ///< the seven inner loops now in force
};

} // namespace orva::dsp
