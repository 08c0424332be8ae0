// What a filter does to samples, beyond the sums that the kernels' own tests check.

#include "dsp/TFIR_F32.h"

#include "dsp/TFIR_F32_2CH.h"
#include "tests/dsp/FilterInspectors.h"
#include "tests/dsp/FilterReference.h"
#include "tests/dsp/ForcedDispatch.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

namespace orva::dsp {
namespace {

using test::Noise;

std::vector<float> MakeNoise(std::uint32_t seed, std::size_t count) {
    Noise noise(seed);
    std::vector<float> samples(count);
    for (float& sample : samples) {
        sample = static_cast<float>(noise.Next());
    }
    return samples;
}

std::vector<float> Apply(TFIR_F32& filter, const std::vector<float>& in) {
    std::vector<float> out(in.size());
    EXPECT_EQ(filter.Filter(out.data(), in.data(), static_cast<std::int32_t>(in.size())),
              static_cast<std::int32_t>(in.size()));
    return out;
}

TEST(TFIR_F32, PassesDirectCurrentThroughALowPass) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetLength(64));
    ASSERT_TRUE(filter.SetFilterType(kFilterLowPass));
    const std::vector<float> out = Apply(filter, std::vector<float>(200, 0.75F));
    for (std::size_t n = 64; n < out.size(); ++n) {
        EXPECT_NEAR(out[n], 0.75, 1e-6) << "output " << n;
    }
}

TEST(TFIR_F32, AnswersAnImpulseWithTheTapsLastOneFirst) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetLength(16));
    std::vector<double> taps(16);
    std::iota(taps.begin(), taps.end(), 1.0);
    filter.SetTaps(taps.data(), true);
    std::vector<float> impulse(20, 0.0F);
    impulse[0] = 1.0F;
    const std::vector<float> out = Apply(filter, impulse);
    for (std::size_t n = 0; n < out.size(); ++n) {
        EXPECT_EQ(out[n], n < 16 ? static_cast<float>(16 - n) : 0.0F) << "output " << n;
    }
}

TEST(TFIR_F32, PeaksWhenThePatternOfItsTapsHasJustEnded) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetLength(240));
    std::vector<double> taps(240);
    std::vector<float> signal(600, 0.0F);
    const std::vector<float> pattern = MakeNoise(3, 24);
    for (std::size_t i = 0; i < taps.size(); ++i) {
        taps[i] = pattern[i / 10] > 0.0F ? 1.0 : -1.0;
        signal[100 + i] = static_cast<float>(taps[i]);
    }
    filter.SetTaps(taps.data(), true);
    const std::vector<float> out = Apply(filter, signal);
    const auto peak = std::max_element(out.begin(), out.end());
    EXPECT_EQ(peak - out.begin(), 339);
    EXPECT_EQ(*peak, 240.0F);
}

TEST(TFIR_F32, SaturatesSixteenBitOutput) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetLength(4));
    const double taps[4] = {0.0, 0.0, 0.0, 2.0};
    filter.SetTaps(taps, true);
    std::int16_t samples[6] = {16383, 16384, 32767, -16384, -16385, -32768};
    ASSERT_EQ(filter.FilterI16(samples, samples, 6), 6);
    const std::int16_t expected[6] = {32766, 32767, 32767, -32768, -32768, -32768};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(samples[i], expected[i]) << "sample " << i;
    }
}

TEST(TFIR_F32, ReadsEverySampleFormatUnscaled) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetLength(4));
    const double taps[4] = {0.0, 0.0, 0.0, 1.0};
    filter.SetTaps(taps, true);
    const std::int16_t word = -12345;
    const std::int32_t wide = 16777216;
    const float single = 1234.5F;
    float asFloat = 0.0F;
    std::int16_t asWord = 0;
    std::int32_t asWide = 0;
    EXPECT_EQ(filter.FilterI16ToF32(&asFloat, &word, 1), 1);
    EXPECT_EQ(asFloat, -12345.0F);
    EXPECT_EQ(filter.FilterI32ToF32(&asFloat, &wide, 1), 1);
    EXPECT_EQ(asFloat, 16777216.0F);
    EXPECT_EQ(filter.FilterI32(&asWide, &wide, 1), 1);
    EXPECT_EQ(asWide, 16777216);
    EXPECT_EQ(filter.FilterF32ToI16(&asWord, &single, 1), 1);
    EXPECT_EQ(asWord, 1234);
    EXPECT_EQ(filter.FilterF32ToI32(&asWide, &single, 1), 1);
    EXPECT_EQ(asWide, 1234);
}

TEST(TFIR_F32, KeepsTapsTwiceInSuccessionInAlignedMemory) {
    TFIR_F32 filter;
    for (const std::uint32_t length : {4U, 36U, 128U}) {
        ASSERT_TRUE(filter.SetLength(length));
        const FirState& state = TFIR_F32Inspector::State(filter);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(state.taps) % 16, 0U);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(state.delayLine) % 16, 0U);
        const std::vector<double> design = TFIRBaseInspector::DesignTaps(filter);
        for (std::uint32_t i = 0; i < 2 * length; ++i) {
            EXPECT_EQ(state.taps[i], static_cast<float>(design[i % length])) << "tap " << i;
        }
    }
}

TEST(TFIR_F32_2CH, KeepsEachTapSideBySide) {
    TFIR_F32_2CH filter;
    const FirState& state = TFIR_F32_2CHInspector::State(filter);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(state.taps) % 16, 0U);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(state.delayLine) % 16, 0U);
    const std::vector<double> design = TFIRBaseInspector::DesignTaps(filter);
    for (std::uint32_t i = 0; i < 4 * 128; ++i) {
        EXPECT_EQ(state.taps[i], static_cast<float>(design[i / 2 % 128])) << "float " << i;
    }
}

TEST(TFIR_F32, LaysSubFiltersOutForInterpolation) {
    struct Geometry {
        std::uint32_t length;
        std::uint32_t up;
        std::uint32_t down;
        std::int32_t phaseTaps;
        std::int32_t phaseLoopStart;
        std::int32_t phaseStride;
    };
    for (const Geometry& g : {Geometry{64, 2, 1, 33, 32, 68}, Geometry{64, 3, 2, 22, 20, 44},
                              Geometry{36, 5, 3, 8, 4, 16}, Geometry{4, 5, 1, 1, 0, 4}}) {
        TFIR_F32 filter;
        ASSERT_TRUE(filter.SetLength(g.length));
        ASSERT_TRUE(filter.SetRateRatio(g.up, g.down));
        std::vector<double> taps(g.length);
        std::iota(taps.begin(), taps.end(), 1.0);
        filter.SetTaps(taps.data(), true);
        const FirState& state = TFIR_F32Inspector::State(filter);
        EXPECT_EQ(state.phaseTaps, g.phaseTaps);
        EXPECT_EQ(state.phaseLoopStart, g.phaseLoopStart);
        EXPECT_EQ(state.phaseStride, g.phaseStride);
        const auto up = static_cast<std::int32_t>(g.up);
        EXPECT_EQ(state.outputStep, static_cast<std::int32_t>(g.down) * g.phaseStride);
        EXPECT_EQ(state.cycleStep, up * g.phaseStride);
        EXPECT_EQ(state.lastPhase, (up - 1) * g.phaseStride);
        EXPECT_EQ(state.phasePointer, 0);
        EXPECT_EQ(state.position, g.phaseTaps - 1);
        for (std::int32_t phase = 0; phase < up; ++phase) {
            for (std::int32_t entry = 0; entry < g.phaseTaps; ++entry) {
                const std::int32_t source = phase + up * (g.phaseTaps - 1 - entry);
                const float expected =
                    source < static_cast<std::int32_t>(g.length) ? static_cast<float>(source + 1) : 0.0F;
                EXPECT_EQ(state.taps[phase * g.phaseStride + entry], expected) << phase << " " << entry;
                EXPECT_EQ(state.taps[phase * g.phaseStride + entry + g.phaseTaps], expected)
                    << phase << " " << entry;
            }
        }
    }
}

TEST(TFIR_F32, SetTapsKeepsThePositionUnlessAsked) {
    TFIR_F32 filter;
    const std::vector<double> taps(128, 1.0);
    Apply(filter, MakeNoise(1, 5));
    filter.SetTaps(taps.data(), false);
    EXPECT_EQ(TFIR_F32Inspector::State(filter).position, 122);
    filter.SetTaps(taps.data(), true);
    EXPECT_EQ(TFIR_F32Inspector::State(filter).position, 127);
}

TEST(TFIR_F32, PositionCountsDownAndWraps) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetLength(8));
    const FirState& state = TFIR_F32Inspector::State(filter);
    EXPECT_EQ(state.position, 7);
    for (int n = 1; n <= 20; ++n) {
        Apply(filter, {1.0F * static_cast<float>(n)});
        EXPECT_EQ(state.position, 7 - n % 8);
        EXPECT_EQ(state.delayLine[(n - 1) % 8], static_cast<float>(n));
    }
    Apply(filter, std::vector<float>(12, 0.5F));
    EXPECT_EQ(state.position, 7);
}

/// After the position has been put back with the history kept, old samples meet taps by their place in
/// memory.
TEST(TFIR_F32, RotatesTheKeptHistoryOnAPositionReset) {
    constexpr std::size_t kLength = 16;
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetLength(kLength));
    const std::vector<float> in = MakeNoise(5, 21);
    Apply(filter, in);
    std::vector<double> taps(kLength);
    std::iota(taps.begin(), taps.end(), 1.0);
    filter.SetTaps(taps.data(), true);

    double expected = 0.0;
    for (std::size_t slot = 1; slot < kLength; ++slot) {
        const std::size_t newestInSlot = slot < 5 ? slot + 16 : slot;
        expected += taps[(kLength - 1 + slot) % kLength] * in[newestInSlot];
    }
    expected += taps[kLength - 1] * 0.25;
    EXPECT_NEAR(Apply(filter, {0.25F})[0], expected, 1e-4);
}

TEST(TFIR_F32, ClearHistoryStartsAnew) {
    for (const auto& [up, down] : {std::pair{1U, 1U}, {1U, 3U}, {2U, 1U}}) {
        TFIR_F32 used;
        TFIR_F32 fresh;
        ASSERT_TRUE(used.SetRateRatio(up, down) && fresh.SetRateRatio(up, down));
        const std::vector<float> in = MakeNoise(9, 100);
        std::vector<float> out(200, 0.0F);
        std::vector<float> expected(200, 0.0F);
        used.Filter(out.data(), in.data(), 50);
        used.ClearHistory();
        EXPECT_EQ(TFIR_F32Inspector::State(used).phaseCounter, 0);
        std::fill(out.begin(), out.end(), 0.0F);
        EXPECT_EQ(used.Filter(out.data(), in.data(), 100), fresh.Filter(expected.data(), in.data(), 100));
        EXPECT_EQ(out, expected) << up << ":" << down;
    }
}

// The delay-only path

TEST(TFIR_F32Delay, IsHalfTheLength) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetLength(32));
    const std::vector<float> in = MakeNoise(2, 100);
    std::vector<float> out(100);
    ASSERT_EQ(filter.Delay(out.data(), in.data(), 100), 100);
    for (std::size_t n = 0; n < 100; ++n) {
        EXPECT_EQ(out[n], n < 16 ? 0.0F : in[n - 16]) << "output " << n;
    }
}

TEST(TFIR_F32Delay, IsTheDelayOfTheFilter) {
    TFIR_F32 passThrough;
    ASSERT_TRUE(passThrough.SetFilterType(kFilterPassThrough));
    TFIR_F32 delay;
    const std::vector<float> in = MakeNoise(2, 300);
    std::vector<float> delayed(300);
    delay.Delay(delayed.data(), in.data(), 300);
    EXPECT_EQ(Apply(passThrough, in), delayed);
}

TEST(TFIR_F32Delay, KeepsTheHistoryCurrentForTheFilter) {
    TFIR_F32 always;
    TFIR_F32 switched;
    const std::vector<float> first = MakeNoise(2, 333);
    const std::vector<float> second = MakeNoise(4, 200);
    Apply(always, first);
    std::vector<float> delayed = first;
    ASSERT_EQ(switched.Delay(delayed.data(), delayed.data(), 333), 333);
    EXPECT_EQ(Apply(switched, second), Apply(always, second));
}

TEST(TFIR_F32Delay, AppliesTheGainAskedFor) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetLength(4));
    TFIRBaseInspector::SetBaseGain(filter, 0.5);
    const float in[4] = {1.0F, 2.0F, 3.0F, 4.0F};
    float out[4];
    ASSERT_EQ(filter.Delay(out, in, 4), 4);
    EXPECT_EQ(out[2], 0.5F);
    EXPECT_EQ(out[3], 1.0F);
}

TEST(TFIR_F32Delay, RefusesARateChange) {
    float value = 3.0F;
    for (const auto& [up, down] : {std::pair{1U, 2U}, {2U, 1U}}) {
        TFIR_F32 filter;
        TFIR_F32_2CH pairs;
        ASSERT_TRUE(filter.SetRateRatio(up, down) && pairs.SetRateRatio(up, down));
        EXPECT_EQ(filter.Delay(&value, &value, 1), 0);
        EXPECT_EQ(pairs.Delay(&value, &value, 1), 0);
    }
    EXPECT_EQ(value, 3.0F);
}

TEST(TFIR_F32Delay, DoesNothingWithoutSamples) {
    TFIR_F32 filter;
    float value = 3.0F;
    EXPECT_EQ(filter.Delay(&value, &value, 0), 0);
    EXPECT_EQ(filter.Delay(&value, &value, -1), 0);
    EXPECT_EQ(value, 3.0F);
}

TEST(TFIR_F32_2CHDelay, DelaysPairs) {
    TFIR_F32_2CH filter;
    ASSERT_TRUE(filter.SetLength(8));
    const std::vector<float> in = MakeNoise(2, 40);
    std::vector<float> out(40);
    ASSERT_EQ(filter.Delay(out.data(), in.data(), 20), 20);
    for (std::size_t n = 0; n < 40; ++n) {
        EXPECT_EQ(out[n], n < 8 ? 0.0F : in[n - 8]) << "float " << n;
    }
}

// Pairs

TEST(TFIR_F32_2CH, FiltersEachPartByItself) {
    TFIR_F32_2CH pairs;
    TFIR_F32 single;
    for (TFIRBase* filter : {static_cast<TFIRBase*>(&pairs), static_cast<TFIRBase*>(&single)}) {
        ASSERT_TRUE(filter->SetLength(256));
        ASSERT_TRUE(filter->SetSampleRate(48000.0));
        ASSERT_TRUE(filter->SetFilterType(kFilterLowPass));
        filter->SetHighCut(6000.0);
    }
    const std::vector<float> first = MakeNoise(1, 500);
    const std::vector<float> second = MakeNoise(2, 500);
    std::vector<float> interleaved(1000);
    for (std::size_t n = 0; n < 500; ++n) {
        interleaved[2 * n] = first[n];
        interleaved[2 * n + 1] = second[n];
    }
    ASSERT_EQ(pairs.Filter(interleaved.data(), interleaved.data(), 500), 500);
    const std::vector<float> expectedFirst = Apply(single, first);
    single.ClearHistory();
    const std::vector<float> expectedSecond = Apply(single, second);
    for (std::size_t n = 0; n < 500; ++n) {
        EXPECT_NEAR(interleaved[2 * n], expectedFirst[n], 1e-6) << "pair " << n;
        EXPECT_NEAR(interleaved[2 * n + 1], expectedSecond[n], 1e-6) << "pair " << n;
    }
}

// Rate changes

/// The level of a tone through a rate change, as the root of twice its mean square.
double ToneLevel(TFIR_F32& filter, double frequency) {
    constexpr std::int32_t kCount = 8000;
    std::vector<float> in(kCount);
    for (std::int32_t n = 0; n < kCount; ++n) {
        in[static_cast<std::size_t>(n)] =
            static_cast<float>(std::sin(2.0 * 3.14159265358979 * frequency / filter.GetSampleRate() * n));
    }
    std::vector<float> out(4 * kCount + 4);
    const auto produced = static_cast<std::size_t>(filter.Filter(out.data(), in.data(), kCount));
    const std::size_t settled = produced / 2;
    double sum = 0.0;
    for (std::size_t n = settled; n < produced; ++n) {
        sum += static_cast<double>(out[n]) * out[n];
    }
    return std::sqrt(2.0 * sum / static_cast<double>(produced - settled));
}

TEST(TFIR_F32, KeepsTheLevelOfATonesPassbandWhenInterpolating) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetSampleRate(8000.0));
    ASSERT_TRUE(filter.SetRateRatio(2, 1));
    ASSERT_TRUE(filter.SetFilterType(kFilterLowPass));
    filter.SetHighCut(3400.0);
    EXPECT_EQ(filter.GetOutputRate(), 16000.0);
    EXPECT_NEAR(ToneLevel(filter, 1000.0), 1.0, 0.01);
}

TEST(TFIR_F32, KeepsTheLevelInsideAndStopsTheOutsideWhenDecimating) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetSampleRate(48000.0));
    ASSERT_TRUE(filter.SetRateRatio(1, 3));
    ASSERT_TRUE(filter.SetFilterType(kFilterLowPass));
    ASSERT_TRUE(filter.SetLength(256));
    filter.SetHighCut(7000.0);
    EXPECT_NEAR(ToneLevel(filter, 1000.0), 1.0, 0.01);
    EXPECT_LT(ToneLevel(filter, 9000.0), 1e-4);
}

TEST(TFIR_F32, GivesTheFirstSampleAnOutputWhenDecimating) {
    TFIR_F32 filter;
    ASSERT_TRUE(filter.SetRateRatio(1, 3));
    const float in[1] = {1.0F};
    float out[2];
    EXPECT_EQ(filter.Filter(out, in, 1), 1);
    EXPECT_EQ(filter.Filter(out, in, 1), 0);
    EXPECT_EQ(filter.Filter(out, in, 1), 0);
    EXPECT_EQ(filter.Filter(out, in, 1), 1);
}

TEST(TFIR_F32, GivesEveryFamilyTheSameResultButForRounding) {
    const std::vector<float> in = MakeNoise(11, 700);
    std::vector<float> expected;
    for (const test::FamilyWord& family : {test::kX87Word, test::kSseWord, test::kSse3Word}) {
        if (!CanRun(family)) {
            continue;
        }
        const test::ForcedDispatch forced(family.features);
        TFIR_F32 filter;
        const std::vector<float> out = Apply(filter, in);
        if (expected.empty()) {
            expected = out;
        }
        for (std::size_t n = 0; n < out.size(); ++n) {
            EXPECT_NEAR(out[n], expected[n], 1e-6) << family.name << " output " << n;
        }
    }
}

} // namespace
} // namespace orva::dsp
