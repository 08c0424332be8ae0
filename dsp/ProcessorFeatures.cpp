#include "dsp/ProcessorFeatures.h"

#include <cpuid.h>
#include <cstring>

namespace orva::dsp {
namespace {

constexpr std::uint32_t kVendorLeaf = 0;
constexpr std::uint32_t kFeatureLeaf = 1;
constexpr std::uint32_t kHighestExtendedLeaf = 0x80000000;
constexpr std::uint32_t kExtendedFeatureLeaf = 0x80000001;

enum class Register { Ecx, Edx };

/// One bit of a CPUID leaf and the feature that it reports; for one vendor alone if `vendor` is given.
struct ReportedBit {
    std::uint32_t feature;
    std::uint32_t leaf;
    Register source;
    int bit;
    const char* vendor;
};

constexpr const char* kIntel = "GenuineIntel";
constexpr const char* kAmd = "AuthenticAMD";
constexpr const char* kCyrix = "CyrixInstead";

constexpr ReportedBit kReportedBits[] = {
    {kFeatureMmx, kFeatureLeaf, Register::Edx, 23, nullptr},
    {kFeatureSse, kFeatureLeaf, Register::Edx, 25, nullptr},
    {kFeatureSse2, kFeatureLeaf, Register::Edx, 26, nullptr},
    {kFeatureSse3, kFeatureLeaf, Register::Ecx, 0, nullptr},
    {kFeatureSsse3, kFeatureLeaf, Register::Ecx, 9, nullptr},
    {kFeatureSse41, kFeatureLeaf, Register::Ecx, 19, nullptr},
    {kFeatureSse42, kFeatureLeaf, Register::Ecx, 20, kIntel},
    {kFeatureAvx, kFeatureLeaf, Register::Ecx, 28, kIntel},
    {kFeature3dNow, kExtendedFeatureLeaf, Register::Edx, 31, nullptr},
    {kFeatureMmxExtensions, kExtendedFeatureLeaf, Register::Edx, 22, kAmd},
    {kFeatureMmxExtensions, kExtendedFeatureLeaf, Register::Edx, 24, kCyrix},
    {kFeature3dNowExtended, kExtendedFeatureLeaf, Register::Edx, 30, nullptr},
    {kFeatureSse4a, kExtendedFeatureLeaf, Register::Ecx, 6, kAmd},
    {kFeatureXop, kExtendedFeatureLeaf, Register::Ecx, 11, kAmd},
};

struct Vendor {
    char name[13];
};

Vendor VendorOf(const CpuidRegisters& registers) {
    Vendor vendor{};
    std::memcpy(vendor.name, &registers.ebx, 4);
    std::memcpy(vendor.name + 4, &registers.edx, 4);
    std::memcpy(vendor.name + 8, &registers.ecx, 4);
    return vendor;
}

bool IsReported(const ReportedBit& entry, const CpuidRegisters& registers, const Vendor& vendor) {
    if (entry.vendor != nullptr && std::strcmp(entry.vendor, vendor.name) != 0) {
        return false;
    }
    const std::uint32_t value = entry.source == Register::Ecx ? registers.ecx : registers.edx;
    return (value >> entry.bit & 1U) != 0;
}

bool ExecuteCpuid(std::uint32_t leaf, CpuidRegisters& registers) {
    static CpuidRegisters result;
    static std::uint32_t wanted;
    wanted = leaf;
    const bool done = ExecutesWithoutFault(
        [] { __cpuid_count(wanted, 0, result.eax, result.ebx, result.ecx, result.edx); });
    registers = result;
    return done;
}

// One instruction of each set, on registers that hold nothing. Those on MMX registers leave the
// floating-point stack as they found it.

struct FeatureProbe {
    std::uint32_t feature;
    void (*instruction)();
};

constexpr FeatureProbe kProbes[] = {
    {kFeatureMmx,
     [] {
         __asm__ volatile("pxor %%mm0, %%mm0\n\temms" ::: "memory");
     }},
    {kFeatureSse,
     [] {
         __asm__ volatile("xorps %%xmm0, %%xmm0" ::: "xmm0");
     }},
    {kFeatureSse2,
     [] {
         __asm__ volatile("xorpd %%xmm0, %%xmm0" ::: "xmm0");
     }},
    {kFeatureSse3,
     [] {
         __asm__ volatile("haddpd %%xmm0, %%xmm0" ::: "xmm0");
     }},
    {kFeatureSsse3,
     [] {
         __asm__ volatile("phaddsw %%xmm0, %%xmm0" ::: "xmm0");
     }},
    {kFeatureSse41,
     [] {
         __asm__ volatile("pminsd %%xmm0, %%xmm0" ::: "xmm0");
     }},
    {kFeatureSse42,
     [] {
         __asm__ volatile("pcmpgtq %%xmm0, %%xmm0" ::: "xmm0");
     }},
    {kFeatureAvx,
     [] {
         __asm__ volatile("vxorpd %%xmm0, %%xmm0, %%xmm0" ::: "xmm0");
     }},
    {kFeature3dNow,
     [] {
         __asm__ volatile("pfadd %%mm0, %%mm0\n\temms" ::: "memory");
     }},
    {kFeatureMmxExtensions,
     [] {
         __asm__ volatile("pshufw $0, %%mm0, %%mm0\n\temms" ::: "memory");
     }},
    {kFeature3dNowExtended,
     [] {
         __asm__ volatile("pswapd %%mm0, %%mm0\n\temms" ::: "memory");
     }},
};

bool ExecuteProbe(std::uint32_t feature) {
    for (const FeatureProbe& probe : kProbes) {
        if (probe.feature == feature) {
            return ExecutesWithoutFault(probe.instruction);
        }
    }
    return true;
}

} // namespace

ProcessorProbe RealProcessor() {
    return {ExecuteCpuid, ExecuteProbe};
}

std::uint32_t DetectFeatures(const ProcessorProbe& processor) {
    CpuidRegisters identity{};
    if (!processor.cpuid(kVendorLeaf, identity) || identity.eax == 0) {
        return 0;
    }
    const Vendor vendor = VendorOf(identity);
    CpuidRegisters basic{};
    CpuidRegisters highest{};
    CpuidRegisters extended{};
    processor.cpuid(kFeatureLeaf, basic);
    processor.cpuid(kHighestExtendedLeaf, highest);
    if (highest.eax >= kExtendedFeatureLeaf) {
        processor.cpuid(kExtendedFeatureLeaf, extended);
    }

    std::uint32_t features = 0;
    for (const ReportedBit& entry : kReportedBits) {
        if (IsReported(entry, entry.leaf == kFeatureLeaf ? basic : extended, vendor)) {
            features |= entry.feature;
        }
    }
    for (int bit = 0; bit < 32; ++bit) {
        const std::uint32_t feature = 1U << bit;
        if ((features & feature) != 0 && !processor.executes(feature)) {
            features &= ~feature;
        }
    }
    return features;
}

} // namespace orva::dsp
