/// What the tests look at and set inside the filters.
#pragma once

#include "dsp/ProcessorDispatch.h"
#include "dsp/TFIR_F32.h"
#include "dsp/TFIR_F32_2CH.h"

#include <vector>

namespace orva::dsp {

struct TFIRBaseInspector {
    static std::vector<double> DesignTaps(const TFIRBase& filter) {
        const double* taps = filter.arrays.designTaps.get();
        return std::vector<double>(taps, taps + filter.length);
    }
    static double BaseGain(const TFIRBase& filter) { return filter.baseGain; }
    static double DesignGain(const TFIRBase& filter) { return filter.designGain; }
    static double DesignRate(const TFIRBase& filter) { return filter.designRate; }
    static double Nyquist(const TFIRBase& filter) { return filter.nyquist; }
    static const double* WindowParameters(const TFIRBase& filter) { return filter.windowParameters; }
    static double* UserMagnitudes(TFIRBase& filter) { return filter.arrays.userMagnitudes.get(); }
    static void SetBaseGain(TFIRBase& filter, double gain) { filter.baseGain = gain; }
    static void SetEdgeCompensation(TFIRBase& filter, bool compensates) {
        filter.edgeCompensation = compensates;
    }
    static bool GetEdgeCompensation(const TFIRBase& filter) { return filter.edgeCompensation; }
};

struct TFIR_F32Inspector {
    static const FirState& State(const TFIR_F32& filter) { return filter.storage.state; }
    static const FirKernelSet& Kernels(const TFIR_F32& filter) { return filter.kernels; }
};

struct TFIR_F32_2CHInspector {
    static const FirState& State(const TFIR_F32_2CH& filter) { return filter.storage.state; }
    static const FirKernelSet& Kernels(const TFIR_F32_2CH& filter) { return filter.kernels; }
};

} // namespace orva::dsp
