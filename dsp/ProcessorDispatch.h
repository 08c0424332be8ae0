/// The choice of kernels by processor, made once per process.
///
/// A library's attach notification calls `InitDispatch`. In a program nobody needs to: the first filter or
/// transform that is made does it, whatever the order of static initialisation. Objects keep plain pointers
/// afterwards, so that the choice costs nothing per block.
#pragma once

#include "dsp/FftKernels.h"
#include "dsp/FirKernels.h"

#include <cstdint>

namespace orva::dsp {

constexpr int kLog2TableEntries = 513;

/// Families of FIR kernels, in the order of the rules that choose them.
enum class FirFamily {
    Extended3dNow,
    Amd3dNow,
    Sse3,
    X87,
    Sse,
};

/// Everything that is filled at load. Read-only afterwards.
struct DispatchTables {
    std::uint32_t features;             ///< feature word, `ProcessorFeature` bits
    float log2Table[kLog2TableEntries]; ///< log2(1 + i / 512)
    float decibelsPerOctave;            ///< 10 log10(2), about 3.0103
    FirKernelTable fir;                 ///< for `TFIR_F32`
    FirKernelTable firPairs;            ///< for `TFIR_F32_2CH`
    FftKernels fft;                     ///< for `TFFT_F32`
};

/// The family that the rules name for a feature word, the first that holds.
FirFamily ChooseFirFamily(std::uint32_t features);

/// Detects the features and fills the tables, on the first call; later calls do nothing. To be called before
/// another thread uses the library, or by the first use itself.
void InitDispatch();

/// The tables, filled if they were not.
const DispatchTables& GetDispatchTables();

/// Fills the tables as for a processor with this feature word. For tests: objects made earlier keep their
/// kernels, and no other thread may use the library meanwhile. Kernels that the real processor lacks are not
/// to be asked for.
void ForceDispatch(std::uint32_t features);

} // namespace orva::dsp
