#include "dsp/TFIR_F32_2CH.h"

#include "dsp/ProcessorDispatch.h"

namespace orva::dsp {

TFIR_F32_2CH::TFIR_F32_2CH() {
    SelectKernels();
    Build();
}

bool TFIR_F32_2CH::AllocateBuffers() {
    return TFIRBase::AllocateBuffers() && storage.Allocate(Geometry());
}

void TFIR_F32_2CH::SelectKernels() {
    const FirKernelTable& table = GetDispatchTables().firPairs;
    if (Interpolates()) {
        kernels = table.interpolating;
    } else if (Decimates()) {
        kernels = table.decimating;
    } else {
        kernels = table.plain;
    }
}

void TFIR_F32_2CH::SetTaps(const double* taps, bool resetPosition) {
    storage.LoadTaps(taps, resetPosition);
}

bool TFIR_F32_2CH::SetRateRatio(std::uint32_t up, std::uint32_t down) {
    if (!ChangeRateRatio(up, down)) {
        return false;
    }
    SelectKernels();
    return true;
}

std::int32_t TFIR_F32_2CH::Filter(float* out, const float* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelF32ToF32(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32_2CH::FilterI16(std::int16_t* out, const std::int16_t* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelI16ToI16(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32_2CH::FilterI16ToF32(float* out, const std::int16_t* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelI16ToF32(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32_2CH::FilterI32(std::int32_t* out, const std::int32_t* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelI32ToI32(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32_2CH::FilterI32ToF32(float* out, const std::int32_t* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelI32ToF32(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32_2CH::FilterF32ToI16(std::int16_t* out, const float* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelF32ToI16(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32_2CH::FilterF32ToI32(std::int32_t* out, const float* in, std::int32_t count) {
    return storage.IsAllocated() ? kernels.kernelF32ToI32(storage.state, out, in, count) : 0;
}

std::int32_t TFIR_F32_2CH::Delay(float* out, const float* in, std::int32_t count) {
    if (Interpolates() || Decimates()) {
        return 0;
    }
    return storage.Delay(out, in, count, BaseGain());
}

} // namespace orva::dsp
