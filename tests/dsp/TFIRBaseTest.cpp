// The setters of the filters: rules, limits, failures.

#include "dsp/TFIRBase.h"

#include "tests/dsp/FilterInspectors.h"
#include "tests/support/AllocationProbe.h"

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

namespace orva::dsp {
namespace {

using Inspector = TFIRBaseInspector;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// The output of `filter` for a run of noise that begins now.
std::vector<float> Respond(TFIR_F32& filter, int count = 64) {
    std::vector<float> in(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < in.size(); ++i) {
        in[i] = static_cast<float>(std::sin(0.37 * static_cast<double>(i * i)));
    }
    std::vector<float> out(4 * in.size() + 4);
    const std::int32_t produced = filter.Filter(out.data(), in.data(), count);
    out.resize(static_cast<std::size_t>(produced));
    return out;
}

bool HistoryIsClear(const TFIR_F32& filter) {
    const FirState& state = TFIR_F32Inspector::State(filter);
    const std::int32_t entries = state.phaseTaps > 0 ? state.phaseTaps : state.length;
    for (std::int32_t i = 0; i < entries; ++i) {
        if (state.delayLine[i] != 0.0F) {
            return false;
        }
    }
    return true;
}

TEST(TFIRBase, StartsWithItsDefaults) {
    const TFIR_F32 filter;
    EXPECT_EQ(filter.GetFilterType(), 3U);
    EXPECT_EQ(filter.GetLength(), 128U);
    EXPECT_EQ(Inspector::BaseGain(filter), 1.0);
    EXPECT_EQ(Inspector::DesignGain(filter), 1.0);
    EXPECT_EQ(filter.GetSampleRate(), 32000.0);
    EXPECT_EQ(filter.GetOutputRate(), 32000.0);
    EXPECT_EQ(Inspector::DesignRate(filter), 32000.0);
    EXPECT_EQ(filter.GetLowCut(), 300.0);
    EXPECT_EQ(filter.GetHighCut(), 5000.0);
    EXPECT_EQ(filter.GetSlope(), 0.0);
    std::uint32_t up = 0;
    std::uint32_t down = 0;
    filter.GetRateRatio(up, down);
    EXPECT_EQ(up, 1U);
    EXPECT_EQ(down, 1U);
    EXPECT_EQ(Inspector::Nyquist(filter), 16000.0);
    EXPECT_EQ(filter.GetWindowKind(), 10U);
    EXPECT_FALSE(Inspector::GetEdgeCompensation(filter));
    EXPECT_EQ(filter.GetLastError(), 0U);
    EXPECT_EQ(Inspector::WindowParameters(filter)[0], 0.16);
    EXPECT_EQ(Inspector::WindowParameters(filter)[1], 0.4);
}

TEST(TFIRBase, IsNotCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<TFIR_F32>);
    EXPECT_FALSE(std::is_copy_assignable_v<TFIR_F32>);
    EXPECT_FALSE(std::is_copy_constructible_v<TFIR_F32_2CH>);
    EXPECT_TRUE(std::has_virtual_destructor_v<TFIRBase>);
}

// Length

TEST(TFIRBaseSetLength, RoundsUpToAMultipleOfFour) {
    TFIR_F32 filter;
    EXPECT_TRUE(filter.SetLength(33));
    EXPECT_EQ(filter.GetLength(), 36U);
    EXPECT_TRUE(filter.SetLength(32));
    EXPECT_EQ(filter.GetLength(), 32U);
}

TEST(TFIRBaseSetLength, IsFourAtLeast) {
    TFIR_F32 filter;
    for (const std::uint32_t taps : {0U, 1U, 4U}) {
        ASSERT_TRUE(filter.SetLength(64));
        EXPECT_TRUE(filter.SetLength(taps));
        EXPECT_EQ(filter.GetLength(), 4U);
        EXPECT_EQ(filter.GetLastError(), 0U);
    }
}

TEST(TFIRBaseSetLength, TakesAValueWithTheTopBitAsFour) {
    TFIR_F32 filter;
    for (const std::uint32_t taps : {0x80000000U, 0xFFFFFFFFU, 0x7FFFFFFFU, 0xC0000000U}) {
        ASSERT_TRUE(filter.SetLength(64));
        EXPECT_TRUE(filter.SetLength(taps));
        EXPECT_EQ(filter.GetLength(), 4U) << taps;
    }
}

TEST(TFIRBaseSetLength, ClearsTheHistoryOnAChangeOnly) {
    TFIR_F32 filter;
    Respond(filter);
    EXPECT_TRUE(filter.SetLength(126)); // 128, as before
    EXPECT_FALSE(HistoryIsClear(filter));
    EXPECT_TRUE(filter.SetLength(64));
    EXPECT_TRUE(HistoryIsClear(filter));
    EXPECT_EQ(TFIR_F32Inspector::State(filter).position, 63);
}

TEST(TFIRBaseSetLength, RefusesWhatNoMemoryHolds) {
    TFIR_F32 filter;
    const std::vector<double> taps = Inspector::DesignTaps(filter);
    EXPECT_FALSE(filter.SetRateRatio(0x7FFFFFFFU, 2));
    EXPECT_EQ(filter.GetLastError(), 8U);
    EXPECT_EQ(Inspector::DesignTaps(filter), taps);
}

/// Each allocation of a change fails in turn, once alone and once with all that follow.
template <class Filter, class Change>
void FailEveryAllocation(Filter& filter, Change change) {
    for (const auto reach :
         {test::AllocationFailure::Reach::Once, test::AllocationFailure::Reach::FromThenOn}) {
        int failures = 0;
        for (bool struck = true; struck; ++failures) {
            const std::vector<double> taps = Inspector::DesignTaps(filter);
            const std::uint32_t length = filter.GetLength();
            std::uint32_t oldUp = 0;
            std::uint32_t oldDown = 0;
            filter.GetRateRatio(oldUp, oldDown);
            const float in[2] = {1.0F, 2.0F};
            float out[2] = {};
            bool changed = false;
            {
                const test::AllocationFailure failure(failures, reach);
                changed = change(filter);
                struck = failure.HasStruck();
            }
            if (!struck) {
                EXPECT_TRUE(changed);
                EXPECT_EQ(filter.GetLastError(), 0U);
                break;
            }
            ASSERT_FALSE(changed) << "allocation " << failures;
            ASSERT_EQ(filter.GetLastError(), 8U);
            ASSERT_EQ(filter.GetLength(), length);
            std::uint32_t up = 0;
            std::uint32_t down = 0;
            filter.GetRateRatio(up, down);
            ASSERT_EQ(up, oldUp);
            ASSERT_EQ(down, oldDown);
            ASSERT_EQ(Inspector::DesignTaps(filter), taps);
            ASSERT_EQ(filter.Filter(out, in, 1), 1);
        }
        EXPECT_GE(failures, 3) << "allocations of the change";
        ASSERT_TRUE(filter.SetLength(128));
        ASSERT_TRUE(filter.SetRateRatio(1, 1));
    }
}

TEST(TFIRBaseSetLength, KeepsTheOldLengthWhenMemoryIsShort) {
    TFIR_F32 filter;
    FailEveryAllocation(filter, [](TFIR_F32& f) { return f.SetLength(256); });
    TFIR_F32_2CH pairs;
    FailEveryAllocation(pairs, [](TFIR_F32_2CH& f) { return f.SetLength(256); });
}

TEST(TFIRBaseSetRateRatio, KeepsTheOldRatioWhenMemoryIsShort) {
    TFIR_F32 filter;
    FailEveryAllocation(filter, [](TFIR_F32& f) { return f.SetRateRatio(2, 1); });
    TFIR_F32_2CH pairs;
    FailEveryAllocation(pairs, [](TFIR_F32_2CH& f) { return f.SetRateRatio(1, 3); });
}

TEST(TFIRBaseSetLength, GoesOnUndisturbedAfterAFailure) {
    TFIR_F32 filter;
    TFIR_F32 undisturbed;
    Respond(filter);
    Respond(undisturbed);
    {
        const test::AllocationFailure failure(5);
        EXPECT_FALSE(filter.SetLength(256));
    }
    EXPECT_EQ(Respond(filter), Respond(undisturbed));
}

TEST(TFIRBase, WithoutMemoryAtConstructionGivesNothingUntilALengthIsSet) {
    for (int successes = 0; successes < 6; ++successes) {
        const test::AllocationFailure failure(successes);
        TFIR_F32 filter;
        ASSERT_TRUE(failure.HasStruck());
        EXPECT_EQ(filter.GetLastError(), 8U);
        float value = 1.0F;
        std::int16_t word = 1;
        EXPECT_EQ(filter.Filter(&value, &value, 1), 0);
        EXPECT_EQ(filter.FilterI16(&word, &word, 1), 0);
        EXPECT_EQ(filter.Delay(&value, &value, 1), 0);
        filter.ClearHistory();
        filter.SetHighCut(1000.0);
        EXPECT_TRUE(filter.SetWindowKind(3));
        EXPECT_TRUE(filter.SetLength(128));
        EXPECT_EQ(filter.GetLastError(), 0U);
        EXPECT_EQ(filter.Filter(&value, &value, 1), 1);
    }
}

// Rates

TEST(TFIRBaseSetSampleRate, RefusesWhatIsNoRate) {
    TFIR_F32 filter;
    for (const double rate : {0.0, -1.0, kNan, kInfinity, -kInfinity}) {
        EXPECT_FALSE(filter.SetSampleRate(rate));
        EXPECT_EQ(filter.GetLastError(), 87U);
        EXPECT_EQ(filter.GetSampleRate(), 32000.0);
    }
    EXPECT_TRUE(filter.SetSampleRate(32000.0));
    EXPECT_EQ(filter.GetLastError(), 0U);
}

TEST(TFIRBaseSetSampleRate, DerivesTheOtherRates) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetRateRatio(3, 2));
    ASSERT_TRUE(filter.SetSampleRate(8000.0));
    EXPECT_EQ(filter.GetOutputRate(), 12000.0);
    EXPECT_EQ(Inspector::DesignRate(filter), 24000.0);
    EXPECT_EQ(Inspector::Nyquist(filter), 4000.0);
    ASSERT_TRUE(filter.SetRateRatio(1, 4));
    EXPECT_EQ(filter.GetOutputRate(), 2000.0);
    EXPECT_EQ(Inspector::DesignRate(filter), 8000.0);
    EXPECT_EQ(Inspector::Nyquist(filter), 1000.0);
}

TEST(TFIRBaseSetSampleRate, LowersTheBandEdgesForGood) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetSampleRate(8000.0));
    EXPECT_EQ(filter.GetHighCut(), 4000.0);
    EXPECT_EQ(filter.GetLowCut(), 300.0);
    ASSERT_TRUE(filter.SetSampleRate(400.0));
    EXPECT_EQ(filter.GetLowCut(), 200.0);
    ASSERT_TRUE(filter.SetSampleRate(48000.0));
    EXPECT_EQ(filter.GetHighCut(), 200.0);
    EXPECT_EQ(filter.GetLowCut(), 200.0);
}

TEST(TFIRBaseSetSampleRate, KeepsTheHistoryAndStartsItsPositionAnew) {
    TFIR_F32 filter;
    Respond(filter, 5);
    ASSERT_EQ(TFIR_F32Inspector::State(filter).position, 122);
    const FirState& state = TFIR_F32Inspector::State(filter);
    const std::vector<float> history(state.delayLine, state.delayLine + 128);
    ASSERT_TRUE(filter.SetSampleRate(48000.0));
    EXPECT_EQ(state.position, 127);
    EXPECT_EQ(std::vector<float>(state.delayLine, state.delayLine + 128), history);
    EXPECT_FALSE(HistoryIsClear(filter));
}

TEST(TFIRBaseSetRateRatio, ReducesByTheGreatestCommonDivisor) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetRateRatio(2, 4));
    std::uint32_t up = 0;
    std::uint32_t down = 0;
    filter.GetRateRatio(up, down);
    EXPECT_EQ(up, 1U);
    EXPECT_EQ(down, 2U);
    ASSERT_TRUE(filter.SetRateRatio(48000, 32000));
    filter.GetRateRatio(up, down);
    EXPECT_EQ(up, 3U);
    EXPECT_EQ(down, 2U);
}

TEST(TFIRBaseSetRateRatio, RefusesZero) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetRateRatio(1, 3));
    for (const auto& [up, down] : {std::pair{0U, 1U}, {1U, 0U}, {0U, 0U}}) {
        EXPECT_FALSE(filter.SetRateRatio(up, down));
        EXPECT_EQ(filter.GetLastError(), 87U);
    }
    std::uint32_t up = 0;
    std::uint32_t down = 0;
    filter.GetRateRatio(up, down);
    EXPECT_EQ(up, 1U);
    EXPECT_EQ(down, 3U);
}

TEST(TFIRBaseSetRateRatio, RaisesTheDesignGainByTheUpFactor) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetRateRatio(3, 2));
    EXPECT_EQ(Inspector::DesignGain(filter), 3.0);
    ASSERT_TRUE(filter.SetRateRatio(1, 2));
    EXPECT_EQ(Inspector::DesignGain(filter), 1.0);
}

TEST(TFIRBaseSetRateRatio, ClearsTheHistoryOnAChangeOnly) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetRateRatio(1, 3));
    Respond(filter, 5);
    ASSERT_NE(TFIR_F32Inspector::State(filter).phaseCounter, 0);
    ASSERT_TRUE(filter.SetRateRatio(2, 6));
    EXPECT_FALSE(HistoryIsClear(filter));
    ASSERT_TRUE(filter.SetRateRatio(1, 2));
    EXPECT_TRUE(HistoryIsClear(filter));
    EXPECT_EQ(TFIR_F32Inspector::State(filter).phaseCounter, 0);
    EXPECT_EQ(TFIR_F32Inspector::State(filter).position, 127);
}

TEST(TFIRBaseSetRateRatio, PutsTheKernelsOfItsModeInForce) {
    const DispatchTables& tables = GetDispatchTables();
    const auto kernelOf = [](const TFIR_F32& f) { return TFIR_F32Inspector::Kernels(f).kernelF32ToF32; };
    const auto pairKernelOf = [](const TFIR_F32_2CH& f) {
        return TFIR_F32_2CHInspector::Kernels(f).kernelF32ToF32;
    };
    TFIR_F32 filter;
    TFIR_F32_2CH pairs;
    EXPECT_EQ(kernelOf(filter), tables.fir.plain.kernelF32ToF32);
    EXPECT_EQ(pairKernelOf(pairs), tables.firPairs.plain.kernelF32ToF32);
    for (const auto& [up, down] : {std::pair{3U, 1U}, {3U, 4U}}) {
        ASSERT_TRUE(filter.SetRateRatio(up, down) && pairs.SetRateRatio(up, down));
        EXPECT_EQ(kernelOf(filter), tables.fir.interpolating.kernelF32ToF32);
        EXPECT_EQ(pairKernelOf(pairs), tables.firPairs.interpolating.kernelF32ToF32);
    }
    ASSERT_TRUE(filter.SetRateRatio(1, 4) && pairs.SetRateRatio(1, 4));
    EXPECT_EQ(kernelOf(filter), tables.fir.decimating.kernelF32ToF32);
    EXPECT_EQ(pairKernelOf(pairs), tables.firPairs.decimating.kernelF32ToF32);
    ASSERT_TRUE(filter.SetRateRatio(5, 5) && pairs.SetRateRatio(5, 5));
    EXPECT_EQ(kernelOf(filter), tables.fir.plain.kernelF32ToF32);
    EXPECT_EQ(pairKernelOf(pairs), tables.firPairs.plain.kernelF32ToF32);
}

TEST(TFIRBaseSetRateRatio, AfterALowRatePullsTheEdgesDownForGood) {
    TFIR_F32 rateFirst;
    ASSERT_TRUE(rateFirst.SetSampleRate(8000.0));
    ASSERT_TRUE(rateFirst.SetRateRatio(2, 1));
    EXPECT_EQ(rateFirst.GetHighCut(), 4000.0);

    TFIR_F32 decimator;
    ASSERT_TRUE(decimator.SetRateRatio(1, 8));
    EXPECT_EQ(decimator.GetHighCut(), 2000.0);
    ASSERT_TRUE(decimator.SetRateRatio(1, 1));
    EXPECT_EQ(decimator.GetHighCut(), 2000.0);
}

// Type, edges, slope, window

TEST(TFIRBaseSetFilterType, RefusesTypesAboveSeven) {
    TFIR_F32 filter;
    for (const std::uint32_t type : {8U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(filter.SetFilterType(type));
        EXPECT_EQ(filter.GetLastError(), 87U);
        EXPECT_EQ(filter.GetFilterType(), 3U);
    }
    for (std::uint32_t type = 0; type <= 7; ++type) {
        EXPECT_TRUE(filter.SetFilterType(type));
        EXPECT_EQ(filter.GetFilterType(), type);
        EXPECT_EQ(filter.GetLastError(), 0U);
    }
}

TEST(TFIRBaseSetFilterType, KeepsTheHistoryAndItsPosition) {
    TFIR_F32 filter;
    Respond(filter, 5);
    ASSERT_TRUE(filter.SetFilterType(kFilterLowPass));
    EXPECT_EQ(TFIR_F32Inspector::State(filter).position, 122);
    EXPECT_FALSE(HistoryIsClear(filter));
}

TEST(TFIRBaseSetLowCut, StaysWithinTheBand) {
    TFIR_F32 filter;
    for (const double frequency : {-1.0, kNan, -kInfinity}) {
        filter.SetLowCut(100.0);
        filter.SetLowCut(frequency);
        EXPECT_EQ(filter.GetLowCut(), 0.0);
    }
    filter.SetLowCut(20000.0);
    EXPECT_EQ(filter.GetLowCut(), 16000.0);
}

TEST(TFIRBaseSetLowCut, PullsTheUpperEdgeUp) {
    TFIR_F32 filter;
    filter.SetLowCut(6000.0);
    EXPECT_EQ(filter.GetLowCut(), 6000.0);
    EXPECT_EQ(filter.GetHighCut(), 6000.0);
}

TEST(TFIRBaseSetHighCut, StaysWithinTheBand) {
    TFIR_F32 filter;
    filter.SetHighCut(kInfinity);
    EXPECT_EQ(filter.GetHighCut(), 16000.0);
    filter.SetHighCut(-5.0);
    EXPECT_EQ(filter.GetHighCut(), 0.0);
}

TEST(TFIRBaseSetHighCut, PullsTheLowerEdgeDown) {
    TFIR_F32 filter;
    filter.SetHighCut(200.0);
    EXPECT_EQ(filter.GetHighCut(), 200.0);
    EXPECT_EQ(filter.GetLowCut(), 200.0);
}

TEST(TFIRBaseSetSlope, LimitsTheTilt) {
    TFIR_F32 filter;
    filter.SetSlope(-3.5);
    EXPECT_EQ(filter.GetSlope(), -3.5);
    filter.SetSlope(0.1);
    EXPECT_EQ(filter.GetSlope(), 0.0);
    filter.SetSlope(-20.0);
    EXPECT_EQ(filter.GetSlope(), -9.9);
    filter.SetSlope(kNan);
    EXPECT_EQ(filter.GetSlope(), 0.0);
}

TEST(TFIRBaseSetBand, SetsAllThreeWithTheSameLimits) {
    TFIR_F32 filter;
    filter.SetBand(500.0, 3000.0, -2.0);
    EXPECT_EQ(filter.GetLowCut(), 500.0);
    EXPECT_EQ(filter.GetHighCut(), 3000.0);
    EXPECT_EQ(filter.GetSlope(), -2.0);
    filter.SetBand(-1.0, 99999.0, -99.0);
    EXPECT_EQ(filter.GetLowCut(), 0.0);
    EXPECT_EQ(filter.GetHighCut(), 16000.0);
    EXPECT_EQ(filter.GetSlope(), -9.9);
}

TEST(TFIRBaseSetBand, PutsTheLowerEdgeOneHertzBelowTheUpper) {
    TFIR_F32 filter;
    for (const double low : {3000.0, 4000.0}) {
        filter.SetBand(low, 3000.0, 0.0);
        EXPECT_EQ(filter.GetLowCut(), 2999.0);
        EXPECT_EQ(filter.GetHighCut(), 3000.0);
    }
}

TEST(TFIRBaseSetBand, NeverPutsTheLowerEdgeBelowZero) {
    TFIR_F32 filter;
    filter.SetBand(0.0, 0.0, -3.0);
    EXPECT_EQ(filter.GetLowCut(), 0.0);
    EXPECT_EQ(filter.GetHighCut(), 0.0);
}

TEST(TFIRBaseSetWindowKind, RefusesKindsAboveTwelve) {
    TFIR_F32 filter;
    EXPECT_FALSE(filter.SetWindowKind(13));
    EXPECT_EQ(filter.GetLastError(), 87U);
    EXPECT_EQ(filter.GetWindowKind(), 10U);
    for (std::uint32_t kind = 0; kind <= 12; ++kind) {
        EXPECT_TRUE(filter.SetWindowKind(kind));
        EXPECT_EQ(filter.GetWindowKind(), kind);
        EXPECT_EQ(filter.GetLastError(), 0U);
    }
}

/// Which setters redesign: taps that were set directly stay in force until one does.
TEST(TFIRBase, RedesignsForTheTypesThatUseTheValue) {
    const std::vector<double> own(128, 0.25);
    const auto redesigns = [&own](std::uint32_t type, auto change) {
        TFIR_F32 filter;
        filter.SetFilterType(type);
        filter.SetTaps(own.data(), true);
        change(filter);
        return TFIR_F32Inspector::State(filter).taps[0] != 0.25F;
    };
    for (std::uint32_t type = 0; type <= 7; ++type) {
        const bool usesEdges = type >= 1 && type <= 4;
        EXPECT_EQ(redesigns(type, [](TFIR_F32& f) { f.SetLowCut(400.0); }), usesEdges) << "type " << type;
        EXPECT_EQ(redesigns(type, [](TFIR_F32& f) { f.SetHighCut(4000.0); }), usesEdges) << "type " << type;
        EXPECT_EQ(redesigns(type, [](TFIR_F32& f) { f.SetSlope(-1.0); }), type == 2 || type == 3)
            << "type " << type;
        EXPECT_TRUE(redesigns(type, [](TFIR_F32& f) { f.SetWindowKind(4); })) << "type " << type;
        EXPECT_TRUE(redesigns(type, [](TFIR_F32& f) { f.SetSampleRate(48000.0); })) << "type " << type;
    }
}

TEST(TFIRBase, LeavesEverythingAloneWhenAValueDoesNotChange) {
    const std::vector<double> own(128, 0.25);
    TFIR_F32 filter;
    filter.SetTaps(own.data(), true);
    Respond(filter, 5);
    EXPECT_TRUE(filter.SetSampleRate(32000.0));
    EXPECT_TRUE(filter.SetRateRatio(3, 3));
    EXPECT_TRUE(filter.SetLength(125));
    EXPECT_TRUE(filter.SetFilterType(3));
    filter.SetLowCut(300.0);
    filter.SetHighCut(5000.0);
    filter.SetSlope(0.0);
    filter.SetBand(300.0, 5000.0, 0.0);
    EXPECT_TRUE(filter.SetWindowKind(10));
    EXPECT_EQ(TFIR_F32Inspector::State(filter).taps[0], 0.25F);
    EXPECT_EQ(TFIR_F32Inspector::State(filter).position, 122);
}

TEST(TFIRBase, ClearsAnOldErrorOnSuccess) {
    TFIR_F32 filter;
    const auto fail = [&filter] {
        filter.SetFilterType(99);
        ASSERT_EQ(filter.GetLastError(), 87U);
    };
    fail();
    filter.SetLowCut(300.0);
    EXPECT_EQ(filter.GetLastError(), 0U);
    fail();
    filter.SetHighCut(300.0);
    EXPECT_EQ(filter.GetLastError(), 0U);
    fail();
    filter.SetSlope(0.0);
    EXPECT_EQ(filter.GetLastError(), 0U);
    fail();
    filter.SetBand(300.0, 5000.0, 0.0);
    EXPECT_EQ(filter.GetLastError(), 0U);
    fail();
    EXPECT_TRUE(filter.SetRateRatio(1, 1));
    EXPECT_EQ(filter.GetLastError(), 0U);
}

} // namespace
} // namespace orva::dsp
