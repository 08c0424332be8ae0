/// What the processor and the operating system really support.
#pragma once

#include <cstdint>

namespace orva::dsp {

/// Bits of the feature word.
enum ProcessorFeature : std::uint32_t {
    kFeatureMmx = 0x1,
    kFeatureSse = 0x2,
    kFeatureSse2 = 0x4,
    kFeatureSse3 = 0x8,
    kFeatureSsse3 = 0x10,
    kFeatureSse41 = 0x20,
    kFeatureSse42 = 0x40, ///< told for "GenuineIntel" only
    kFeatureAvx = 0x80,   ///< told for "GenuineIntel" only
    kFeature3dNow = 0x100,
    kFeatureMmxExtensions = 0x200, ///< told for "AuthenticAMD" and "CyrixInstead" only
    kFeature3dNowExtended = 0x400,
    kFeatureSse4a = 0x800, ///< told for "AuthenticAMD" only
    kFeatureXop = 0x1000,  ///< told for "AuthenticAMD" only
};

/// The four registers that CPUID fills.
struct CpuidRegisters {
    std::uint32_t eax;
    std::uint32_t ebx;
    std::uint32_t ecx;
    std::uint32_t edx;
};

/// The processor as `DetectFeatures` sees it; tests put another one in its place.
struct ProcessorProbe {
    /// Executes CPUID `leaf`. False when the instruction faults.
    bool (*cpuid)(std::uint32_t leaf, CpuidRegisters& registers);
    /// Executes an instruction of the set that the one bit `feature` stands for. False when it faults; true
    /// also for sets without a probing instruction.
    bool (*executes)(std::uint32_t feature);
};

/// The processor at hand.
ProcessorProbe RealProcessor();

/// The feature word: what CPUID reports, less every set whose probe faults, as it does where the operating
/// system has not enabled it. 0 on a processor without CPUID.
std::uint32_t DetectFeatures(const ProcessorProbe& processor);

/// Runs `instruction` and returns true, or false when it raised a processor fault. The thread's and the
/// process's fault handling are as before afterwards. Not to be run on two threads at once.
bool ExecutesWithoutFault(void (*instruction)());

} // namespace orva::dsp
