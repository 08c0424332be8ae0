#include "dsp/ProcessorFeatures.h"

#include <csignal>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

namespace orva::dsp {
namespace {

constexpr std::uint32_t kExtendedLeaf = 0x80000000;

/// A processor made of numbers. One at a time: the probe takes plain functions.
struct SimulatedProcessor {
    const char* vendor = "GenuineIntel";
    std::uint32_t highestLeaf = 7;
    std::uint32_t highestExtendedLeaf = 0x80000008;
    CpuidRegisters basic{};
    CpuidRegisters extended{};
    bool cpuidFaults = false;
    std::uint32_t faultingSets = 0;
    std::vector<std::uint32_t> leavesRead;
    std::vector<std::uint32_t> setsProbed;
};

SimulatedProcessor processor;

bool SimulatedCpuid(std::uint32_t leaf, CpuidRegisters& registers) {
    processor.leavesRead.push_back(leaf);
    if (processor.cpuidFaults) {
        return false;
    }
    registers = {};
    switch (leaf) {
    case 0:
        registers.eax = processor.highestLeaf;
        std::memcpy(&registers.ebx, processor.vendor, 4);
        std::memcpy(&registers.edx, processor.vendor + 4, 4);
        std::memcpy(&registers.ecx, processor.vendor + 8, 4);
        break;
    case 1:
        registers = processor.basic;
        break;
    case kExtendedLeaf:
        registers.eax = processor.highestExtendedLeaf;
        break;
    case kExtendedLeaf + 1:
        registers = processor.extended;
        break;
    default:
        ADD_FAILURE() << "leaf " << leaf << " read";
    }
    return true;
}

bool SimulatedExecution(std::uint32_t feature) {
    processor.setsProbed.push_back(feature);
    return (processor.faultingSets & feature) == 0;
}

std::uint32_t Detect() {
    return DetectFeatures({SimulatedCpuid, SimulatedExecution});
}

class DetectFeaturesTest : public testing::Test {
protected:
    void SetUp() override { processor = SimulatedProcessor(); }
};

TEST_F(DetectFeaturesTest, GivesNothingWhenCpuidFaults) {
    processor.cpuidFaults = true;
    processor.basic = {0, 0, ~0U, ~0U};
    EXPECT_EQ(Detect(), 0U);
    EXPECT_EQ(processor.leavesRead, std::vector<std::uint32_t>{0});
}

TEST_F(DetectFeaturesTest, GivesNothingWhenHighestLeafIsZero) {
    processor.highestLeaf = 0;
    processor.basic = {0, 0, ~0U, ~0U};
    EXPECT_EQ(Detect(), 0U);
}

struct BitCase {
    std::uint32_t feature;
    bool extendedLeaf;
    bool inEcx;
    int bit;
    const char* vendor; ///< the only one that it counts for, or null
};

constexpr BitCase kBits[] = {
    {0x1, false, false, 23, nullptr},         {0x2, false, false, 25, nullptr},
    {0x4, false, false, 26, nullptr},         {0x8, false, true, 0, nullptr},
    {0x10, false, true, 9, nullptr},          {0x20, false, true, 19, nullptr},
    {0x40, false, true, 20, "GenuineIntel"},  {0x80, false, true, 28, "GenuineIntel"},
    {0x100, true, false, 31, nullptr},        {0x200, true, false, 22, "AuthenticAMD"},
    {0x200, true, false, 24, "CyrixInstead"}, {0x400, true, false, 30, nullptr},
    {0x800, true, true, 6, "AuthenticAMD"},   {0x1000, true, true, 11, "AuthenticAMD"},
};

TEST_F(DetectFeaturesTest, MapsEveryReportedBitByVendor) {
    for (const BitCase& entry : kBits) {
        for (const char* vendor : {"GenuineIntel", "AuthenticAMD", "CyrixInstead", "SomeoneElse!"}) {
            processor = SimulatedProcessor();
            processor.vendor = vendor;
            CpuidRegisters& leaf = entry.extendedLeaf ? processor.extended : processor.basic;
            (entry.inEcx ? leaf.ecx : leaf.edx) = 1U << entry.bit;
            const bool counts = entry.vendor == nullptr || std::strcmp(vendor, entry.vendor) == 0;
            EXPECT_EQ(Detect(), counts ? entry.feature : 0U)
                << "feature " << entry.feature << " bit " << entry.bit << " of " << vendor;
        }
    }
}

TEST_F(DetectFeaturesTest, IgnoresAllOtherBits) {
    processor.vendor = "AuthenticAMD";
    processor.basic = {~0U, ~0U, ~0U, ~0U};
    processor.extended = {~0U, ~0U, ~0U, ~0U};
    EXPECT_EQ(Detect(), 0x1F3FU);
}

TEST_F(DetectFeaturesTest, ReadsExtendedLeafOnlyWhereItExists) {
    processor.extended = {0, 0, ~0U, ~0U};
    processor.highestExtendedLeaf = kExtendedLeaf;
    EXPECT_EQ(Detect(), 0U);
    EXPECT_EQ(processor.leavesRead, (std::vector<std::uint32_t>{0, 1, kExtendedLeaf}));

    processor.leavesRead.clear();
    processor.highestExtendedLeaf = kExtendedLeaf + 1;
    EXPECT_EQ(Detect(), 0x500U);
    EXPECT_EQ(processor.leavesRead, (std::vector<std::uint32_t>{0, 1, kExtendedLeaf, kExtendedLeaf + 1}));
}

TEST_F(DetectFeaturesTest, ProbesExactlyTheReportedSets) {
    processor.basic.edx = 1U << 25 | 1U << 26;
    EXPECT_EQ(Detect(), 0x6U);
    EXPECT_EQ(processor.setsProbed, (std::vector<std::uint32_t>{0x2, 0x4}));
}

TEST_F(DetectFeaturesTest, RemovesAReportedSetThatFaults) {
    processor.basic = {0, 0, 1U, 1U << 25 | 1U << 26};
    processor.faultingSets = 0x8;
    EXPECT_EQ(Detect(), 0x6U);
}

TEST(RealProcessor, HasTheBaselineOfTheBuild) {
    const std::uint32_t features = DetectFeatures(RealProcessor());
    EXPECT_NE(features & kFeatureSse, 0U);
    EXPECT_NE(features & kFeatureSse2, 0U);
    EXPECT_EQ(features & ~0x1FFFU, 0U);
}

TEST(RealProcessor, ExecutesEverySetThatItReports) {
    const ProcessorProbe real = RealProcessor();
    const std::uint32_t features = DetectFeatures(real);
    for (std::uint32_t feature = 1; feature <= kFeatureXop; feature <<= 1) {
        EXPECT_TRUE((features & feature) == 0 || real.executes(feature)) << "feature " << feature;
    }
}

TEST(RealProcessor, PassesSetsWithoutAProbe) {
    const ProcessorProbe real = RealProcessor();
    EXPECT_TRUE(real.executes(kFeatureSse4a));
    EXPECT_TRUE(real.executes(kFeatureXop));
    EXPECT_TRUE(real.executes(0x80000000U));
}

TEST(ExecutesWithoutFault, IsTrueForAHarmlessInstruction) {
    EXPECT_TRUE(ExecutesWithoutFault([] { __asm__ volatile("nop"); }));
}

TEST(ExecutesWithoutFault, IsFalseForAnUndefinedInstructionEachTime) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(ExecutesWithoutFault([] { __asm__ volatile("ud2"); })) << "round " << i;
    }
}

TEST(ExecutesWithoutFault, LeavesTheFloatingPointStackUsable) {
    const ProcessorProbe real = RealProcessor();
    real.executes(kFeatureMmx);
    volatile long double value = 2.0L;
    EXPECT_EQ(static_cast<double>(value * value), 4.0);
}

#ifdef _WIN32

TEST(ExecutesWithoutFault, RestoresTheExceptionChain) {
    const auto chain = [] {
        void* frame = nullptr;
        __asm__ volatile("movl %%fs:0, %0" : "=r"(frame));
        return frame;
    };
    void* before = chain();
    ExecutesWithoutFault([] { __asm__ volatile("ud2"); });
    EXPECT_EQ(chain(), before);
    ExecutesWithoutFault([] { __asm__ volatile("nop"); });
    EXPECT_EQ(chain(), before);
}

#else

void CountSignal(int) {}

TEST(ExecutesWithoutFault, RestoresTheSignalHandlerAndMask) {
    struct sigaction mine {};
    struct sigaction original {};
    mine.sa_handler = CountSignal;
    sigaction(SIGILL, &mine, &original);
    ExecutesWithoutFault([] { __asm__ volatile("ud2"); });
    struct sigaction after {};
    sigaction(SIGILL, &original, &after);
    EXPECT_EQ(after.sa_handler, &CountSignal);

    sigset_t blocked;
    sigprocmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&blocked, SIGILL), 0);
}

#endif

} // namespace
} // namespace orva::dsp
