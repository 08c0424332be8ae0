#include "dsp/ProcessorDispatch.h"

#include "dsp/TFFT_F32.h"
#include "dsp/TFIR_F32.h"
#include "tests/dsp/ForcedDispatch.h"

#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

namespace orva::dsp {
namespace {

using test::ForcedDispatch;
using test::kSse3Word;
using test::kSseWord;
using test::kX87Word;

/// Made before main, in a unit that calls no initialisation.
TFIR_F32 filterWithStaticStorage;

bool SameKernels(const FirKernelSet& a, const FirKernelSet& b) {
    return a.kernelI16ToI16 == b.kernelI16ToI16 && a.kernelI16ToF32 == b.kernelI16ToF32 &&
           a.kernelI32ToI32 == b.kernelI32ToI32 && a.kernelI32ToF32 == b.kernelI32ToF32 &&
           a.kernelF32ToF32 == b.kernelF32ToF32 && a.kernelF32ToI16 == b.kernelF32ToI16 &&
           a.kernelF32ToI32 == b.kernelF32ToI32;
}

bool SameKernels(const FirKernelTable& a, const FirKernelTable& b) {
    return SameKernels(a.plain, b.plain) && SameKernels(a.interpolating, b.interpolating) &&
           SameKernels(a.decimating, b.decimating);
}

bool SameKernels(const FftKernels& a, const FftKernels& b) {
    return a.input == b.input && a.transform == b.transform && a.decibels == b.decibels;
}

TEST(ChooseFirFamily, TakesTheFirstRuleThatHolds) {
    EXPECT_EQ(ChooseFirFamily(0x400 | 0x100 | 0x8 | 0x2), FirFamily::Extended3dNow);
    EXPECT_EQ(ChooseFirFamily(0x100 | 0x8 | 0x2), FirFamily::Amd3dNow);
    EXPECT_EQ(ChooseFirFamily(0x8 | 0x2), FirFamily::Sse3);
    EXPECT_EQ(ChooseFirFamily(0), FirFamily::X87);
    EXPECT_EQ(ChooseFirFamily(~0x50AU), FirFamily::X87);
    EXPECT_EQ(ChooseFirFamily(0x2), FirFamily::Sse);
}

TEST(ChooseFirFamily, Prefers3dNowToSse) {
    EXPECT_EQ(ChooseFirFamily(0x100 | 0x2), FirFamily::Amd3dNow);
}

TEST(ProcessorDispatch, FillsTheTablesOfEachFamily) {
    {
        const ForcedDispatch forced(kX87Word.features);
        EXPECT_TRUE(SameKernels(GetDispatchTables().fir, FirKernelsX87()));
    }
    {
        const ForcedDispatch forced(kSseWord.features);
        EXPECT_TRUE(SameKernels(GetDispatchTables().fir, FirKernelsSse()));
    }
    {
        const ForcedDispatch forced(kSse3Word.features);
        EXPECT_TRUE(SameKernels(GetDispatchTables().fir, FirKernelsSse3()));
    }
}

TEST(ProcessorDispatch, GoesOnWithTheRulesWhere3dNowIsLeftOut) {
    {
        const ForcedDispatch forced(0x400 | 0x100 | 0x2);
        EXPECT_TRUE(SameKernels(GetDispatchTables().fir, FirKernelsSse()));
    }
    {
        const ForcedDispatch forced(0x100);
        EXPECT_TRUE(SameKernels(GetDispatchTables().fir, FirKernelsX87()));
        EXPECT_TRUE(SameKernels(GetDispatchTables().firPairs, FirPairKernelsX87()));
    }
}

TEST(ProcessorDispatch, GivesEveryKernelAFunctionOfItsOwnFamily) {
    EXPECT_FALSE(SameKernels(FirKernelsX87().plain, FirKernelsSse().plain));
    EXPECT_NE(FirKernelsSse().plain.kernelF32ToF32, FirKernelsSse3().plain.kernelF32ToF32);
    EXPECT_NE(FirKernelsSse().interpolating.kernelF32ToF32, FirKernelsSse3().interpolating.kernelF32ToF32);
    EXPECT_NE(FirKernelsSse().decimating.kernelF32ToF32, FirKernelsSse3().decimating.kernelF32ToF32);
}

TEST(ProcessorDispatch, GivesPairFiltersVectorsForFloatsAlone) {
    const ForcedDispatch forced(kSse3Word.features);
    FirKernelTable expected = FirPairKernelsX87();
    const FirPairKernels vectors = FirPairKernelsSse();
    expected.plain.kernelF32ToF32 = vectors.plain;
    expected.interpolating.kernelF32ToF32 = vectors.interpolating;
    expected.decimating.kernelF32ToF32 = vectors.decimating;
    EXPECT_TRUE(SameKernels(GetDispatchTables().firPairs, expected));
}

TEST(ProcessorDispatch, GivesPairFiltersTheStackWithoutSse) {
    const ForcedDispatch forced(0x8);
    EXPECT_TRUE(SameKernels(GetDispatchTables().firPairs, FirPairKernelsX87()));
}

TEST(ProcessorDispatch, GivesTransformsVectorsWithSseOnly) {
    {
        const ForcedDispatch forced(0x2);
        EXPECT_TRUE(SameKernels(GetDispatchTables().fft, FftKernelsSse()));
    }
    {
        const ForcedDispatch forced(~0x2U);
        EXPECT_TRUE(SameKernels(GetDispatchTables().fft, FftKernelsX87()));
    }
}

TEST(ProcessorDispatch, BuildsTheLogarithmTable) {
    const DispatchTables& tables = GetDispatchTables();
    for (int i = 0; i < kLog2TableEntries; ++i) {
        EXPECT_FLOAT_EQ(tables.log2Table[i], static_cast<float>(std::log2(1.0 + i / 512.0))) << "entry " << i;
    }
    EXPECT_EQ(tables.log2Table[0], 0.0F);
    EXPECT_EQ(tables.log2Table[512], 1.0F);
    EXPECT_FLOAT_EQ(tables.decibelsPerOctave, 3.0103F);
}

TEST(ProcessorDispatch, IsReadyForFiltersWithStaticStorage) {
    float in[4] = {1.0F, 0.0F, 0.0F, 0.0F};
    float out[4] = {9.0F, 9.0F, 9.0F, 9.0F};
    EXPECT_EQ(filterWithStaticStorage.Filter(out, in, 4), 4);
    EXPECT_EQ(out[0], 0.0F);
}

TEST(ProcessorDispatch, ChangesNothingWhenCalledAgain) {
    const ForcedDispatch forced(kX87Word.features);
    InitDispatch();
    EXPECT_EQ(GetDispatchTables().features, kX87Word.features);
}

TEST(ProcessorDispatch, FindsTheRealProcessorByItself) {
    EXPECT_EQ(GetDispatchTables().features, DetectFeatures(RealProcessor()));
}

} // namespace
} // namespace orva::dsp
