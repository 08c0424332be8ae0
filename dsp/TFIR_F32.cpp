#include "dsp/TFIR_F32.h"

#include "dsp/ProcessorDispatch.h"

namespace orva::dsp {

TFIR_F32::TFIR_F32() {
    SelectKernels();
    Build();
}

bool TFIR_F32::AllocateBuffers() {
    return TFIRBase::AllocateBuffers() && storage.Allocate(Geometry());
}

void TFIR_F32::SelectKernels() {
    const FirKernelTable& table = GetDispatchTables().fir;
    if (Interpolates()) {
        kernels = table.interpolating;
    } else if (Decimates()) {
        kernels = table.decimating;
    } else {
        kernels = table.plain;
    }
}

void TFIR_F32::SetTaps(const double* taps, bool resetPosition) {
    storage.LoadTaps(taps, resetPosition);
}

bool TFIR_F32::SetRateRatio(std::uint32_t up, std::uint32_t down) {
    if (!ChangeRateRatio(up, down)) {
        return false;
    }
    SelectKernels();
    return true;
}

std::int32_t TFIR_F32::Filter(float* out, const float* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelF32ToF32(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32::FilterI16(std::int16_t* out, const std::int16_t* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelI16ToI16(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32::FilterI16ToF32(float* out, const std::int16_t* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelI16ToF32(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32::FilterI32(std::int32_t* out, const std::int32_t* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelI32ToI32(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32::FilterI32ToF32(float* out, const std::int32_t* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelI32ToF32(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32::FilterF32ToI16(std::int16_t* out, const float* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelF32ToI16(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32::FilterF32ToI32(std::int32_t* out, const float* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelF32ToI32(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32::Delay(float* out, const float* in, std::int32_t count) {
    if (Interpolates() || Decimates()) {
        return 0;
    }
    return storage.Delay(out, in, count, BaseGain());
}

} // namespace orva::dsp
