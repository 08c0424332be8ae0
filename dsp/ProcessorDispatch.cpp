#include "dsp/ProcessorDispatch.h"

#include "dsp/ProcessorFeatures.h"

#include <cmath>

namespace orva::dsp {
namespace {

/// Zero before any code runs and never destroyed, so that filters with static storage find it at any time.
constinit DispatchTables tables{};

void FillMathematicalTables() {
    constexpr int kSteps = kLog2TableEntries - 1;
    for (int i = 0; i <= kSteps; ++i) {
        tables.log2Table[i] = static_cast<float>(std::log2(1.0 + static_cast<double>(i) / kSteps));
    }
    tables.decibelsPerOctave = static_cast<float>(10.0 / std::log2(10.0));
}

/// Both 3DNow! families are left out: no processor that can run this build's baseline, SSE2, needs them, and
/// today's do not have them. The rules go on without their bits.
FirKernelTable FirKernelsFor(std::uint32_t features) {
    switch (ChooseFirFamily(features & ~(kFeature3dNow | kFeature3dNowExtended))) {
    case FirFamily::Sse3:
        return FirKernelsSse3();
    case FirFamily::X87:
        return FirKernelsX87();
    default:
        return FirKernelsSse();
    }
}

FirKernelTable FirPairKernelsFor(std::uint32_t features) {
    FirKernelTable table = FirPairKernelsX87();
    if ((features & kFeatureSse) != 0) {
        const FirPairKernels vectors = FirPairKernelsSse();
        table.plain.kernelF32ToF32 = vectors.plain;
        table.interpolating.kernelF32ToF32 = vectors.interpolating;
        table.decimating.kernelF32ToF32 = vectors.decimating;
    }
    return table;
}

void FillTables(std::uint32_t features) {
    tables.features = features;
    FillMathematicalTables();
    tables.fir = FirKernelsFor(features);
    tables.firPairs = FirPairKernelsFor(features);
    tables.fft = (features & kFeatureSse) != 0 ? FftKernelsSse() : FftKernelsX87();
}

} // namespace

FirFamily ChooseFirFamily(std::uint32_t features) {
    if ((features & kFeature3dNowExtended) != 0) {
        return FirFamily::Extended3dNow;
    }
    if ((features & kFeature3dNow) != 0) {
        return FirFamily::Amd3dNow;
    }
    if ((features & kFeatureSse3) != 0) {
        return FirFamily::Sse3;
    }
    if ((features & kFeatureSse) == 0) {
        return FirFamily::X87;
    }
    return FirFamily::Sse;
}

void InitDispatch() {
    static const bool filled = [] {
        FillTables(DetectFeatures(RealProcessor()));
        return true;
    }();
    static_cast<void>(filled);
}

const DispatchTables& GetDispatchTables() {
    InitDispatch();
    return tables;
}

void ForceDispatch(std::uint32_t features) {
    InitDispatch();
    FillTables(features);
}

} // namespace orva::dsp
