#include "voice/Oscillators.h"

#include "voice/CosineTable.h"

#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

constexpr double kStep = 16384.0; // one sample step in the buffer
constexpr double kTableError = 2.0 * std::numbers::pi / kCosTableSize;

Scaled32 Amplitude(double steps) {
    int exponent = 0;
    const double mantissa = std::frexp(steps, &exponent);
    // The mantissa lies in the top 16 bits: full scale at exponent 0 is 32768 steps.
    return {static_cast<std::int32_t>(mantissa * 2147483647.0), exponent - 15};
}

Scaled32 Cycles(double value) {
    return {static_cast<std::int32_t>(std::lround(value * 2147483648.0)), 0};
}

// The tone as its definition has it, with the table's truncated phase.
double ToneSample(double phase) {
    const double turned = (phase - std::floor(phase)) * kCosTableSize;
    return std::cos(2.0 * std::numbers::pi * std::floor(turned) / kCosTableSize);
}

TEST(Oscillators, CountZeroAddsNothingAndKeepsThePhase) {
    std::array<std::int32_t, 2> out{11, 22};
    const Tone tone{Amplitude(1000.0), {0, 0}, Cycles(0.1), {0, 0}};
    for (const std::int16_t phase : {std::int16_t{-12345}, std::int16_t{0}, std::int16_t{777}}) {
        EXPECT_EQ(AddOscillator(out.data(), 0, phase, tone), phase);
        EXPECT_EQ(AddOscillator(out.data(), -3, phase, tone), phase);
    }
    EXPECT_EQ(out, (std::array<std::int32_t, 2>{11, 22}));
}

TEST(Oscillators, AddsAConstantTone) {
    for (const double steps : {0.5, 1.0, 100.0, 12345.0, 32767.0}) {
        for (const double frequency : {0.0, 0.0078125, 0.0625, 0.21875}) {
            std::vector<std::int32_t> out(160, 1000);
            const std::int16_t end =
                AddOscillator(out.data(), 160, 4096, {Amplitude(steps), {0, 0}, Cycles(frequency), {0, 0}});
            for (int k = 0; k < 160; ++k) {
                const double expected = 1000.0 + steps * kStep * ToneSample(0.125 + k * frequency);
                ASSERT_NEAR(out[static_cast<std::size_t>(k)], expected, steps * kStep * 2e-4 + 2.0)
                    << "amplitude " << steps << ", frequency " << frequency << ", sample " << k;
            }
            const double turned = 0.125 + 160 * frequency;
            EXPECT_EQ(end, static_cast<int>(std::lround((turned - std::floor(turned)) * 32768.0)));
        }
    }
}

TEST(Oscillators, NegativePhasesAreTheSameAngle) {
    std::vector<std::int32_t> a(50, 0);
    std::vector<std::int32_t> b(50, 0);
    const Tone tone{Amplitude(5000.0), {0, 0}, Cycles(0.0123), {0, 0}};
    EXPECT_EQ(AddOscillator(a.data(), 50, -10000, tone), AddOscillator(b.data(), 50, 22768, tone));
    EXPECT_EQ(a, b);
}

TEST(Oscillators, AmplitudeAndFrequencyGlideLinearly) {
    constexpr int kCount = 160;
    for (const double end : {20000.0, 900.0, 0.0}) {
        for (const double start : {0.0, 500.0, 15000.0}) {
            std::vector<std::int32_t> out(kCount, 0);
            constexpr double kFrequency = 0.03;
            constexpr double kSlope = 0.00002;
            const double step = (end - start) / kCount;
            Tone tone{Amplitude(start), Amplitude(step), Cycles(kFrequency), Cycles(kSlope)};
            AddOscillator(out.data(), kCount, 0, tone);
            for (int k = 0; k < kCount; ++k) {
                const double phase = k * kFrequency + kSlope * k * (k - 1) / 2.0;
                const double amplitude = start + k * step;
                const double peak = std::max(start, end);
                // One table step of phase and the mantissa's resolution.
                ASSERT_NEAR(out[static_cast<std::size_t>(k)], amplitude * kStep * ToneSample(phase),
                            amplitude * kStep * kTableError + peak * kStep * 3e-4 + 16.0)
                    << start << " to " << end << ", sample " << k;
            }
        }
    }
}

TEST(Oscillators, IndexIsTruncated) {
    // 2^25 / 512 phases share an entry: with a frequency of a quarter entry the value changes every fourth
    // sample.
    std::vector<std::int32_t> out(8, 0);
    AddOscillator(out.data(), 8, 128 * 64, {{0x7FFF0000, 0}, {0, 0}, Cycles(1.0 / 2048.0), {0, 0}});
    for (std::size_t k = 0; k < 8; ++k) {
        EXPECT_EQ(out[k], (32767 * CosAt(128 + static_cast<int>(k / 4)) * 2) >> 2) << k;
    }
}

TEST(Oscillators, GrowingAmplitudeRaisesTheWorkingExponent) {
    // Without the raise the mantissa would run over at the end of the ramp.
    std::vector<std::int32_t> out(100, 0);
    AddOscillator(out.data(), 100, 0, {{0x7FFF0000, 0}, {0x7FFF0000, -5}, {0, 0}, {0, 0}});
    for (int k = 0; k < 100; ++k) {
        const double expected = std::min(32767.0 * (1.0 + k / 32.0) * kStep, 2147483647.0);
        ASSERT_NEAR(out[static_cast<std::size_t>(k)], expected, expected * 3e-4) << k;
    }
}

TEST(Oscillators, ExponentsBeyondTheLimitsAreCapped) {
    std::vector<std::int32_t> out(1, 0);
    AddOscillator(out.data(), 1, 0, {{0x7FFF0000, -18}, {0, 0}, {0, 0}, {0, 0}});
    EXPECT_NEAR(out[0], std::ldexp(32767.0, -18) * kStep, 2.0); // four bits below the lowest exponent
    out[0] = 0;
    AddOscillator(out.data(), 1, 0, {{0x7FFF0000, -60}, {0, 0}, {0, 0}, {0, 0}});
    EXPECT_EQ(out[0], 0);
    AddOscillator(out.data(), 1, 0, {{0x7FFF0000, 40}, {0, 0}, {0, 0}, {0, 0}});
    EXPECT_EQ(out[0], kMax32);
    out[0] = 0;
    AddOscillator(out.data(), 1, 16384, {{0x7FFF0000, 40}, {0, 0}, {0, 0}, {0, 0}});
    EXPECT_EQ(out[0], kMin32);
}

TEST(Oscillators, SumsSaturate) {
    std::vector<std::int32_t> out{kMax32 - 5, kMin32 + 5};
    AddOscillator(out.data(), 2, 0, {{0x7FFF0000, 0}, {0, 0}, {0x40000000, 0}, {0, 0}});
    EXPECT_EQ(out[0], kMax32);
    EXPECT_EQ(out[1], kMin32);
}

std::array<std::int16_t, 129> CosineWave(int periods, double peak) {
    std::array<std::int16_t, 129> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = static_cast<std::int16_t>(std::lround(
            peak * std::cos(2.0 * std::numbers::pi * periods * static_cast<double>(i % 128) / 128.0)));
    }
    return table;
}

TEST(Oscillators, ReadWaveInterpolatesBetweenEntries) {
    const auto table = CosineWave(9, 32000.0);
    constexpr std::uint32_t kIncrement = 123457;
    std::vector<std::int32_t> out(300, 7);
    std::uint32_t phase = 4000000;
    const std::uint32_t end = ReadWave(out.data(), 300, phase, kIncrement, table.data(), -1);
    for (std::size_t k = 0; k < out.size(); ++k) {
        const std::size_t index = phase >> 16;
        const double fraction = (phase & 0xFFFFU) / 65536.0;
        const double value = table[index] + fraction * (table[index + 1] - table[index]);
        ASSERT_NEAR(out[k], 7.0 + std::floor(value * 65536.0 / 8.0), 1.0) << k;
        phase = (phase + kIncrement) & kWavePhaseMask;
    }
    EXPECT_EQ(end, phase);
}

TEST(Oscillators, ReadWaveCopesWithTheSteepestTable) {
    std::array<std::int16_t, 129> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = i % 2 == 0 ? kMax16 : kMin16;
    }
    std::vector<std::int32_t> out(256, 0);
    ReadWave(out.data(), 256, 0, 32768, table.data(), 2);
    for (std::size_t k = 0; k < 255; ++k) {
        const double expected = k % 2 == 0 ? table[k / 2] * 65536.0 : -32768.0;
        EXPECT_EQ(out[k], expected) << k;
    }
}

TEST(Oscillators, ReadWaveSkipsTablesThatCannotReachTheBuffer) {
    const auto table = CosineWave(10, 32767.0);
    std::vector<std::int32_t> out(10, 5);
    const std::vector<std::int32_t> before = out;
    constexpr std::uint32_t kPhase = 0x123456;
    EXPECT_EQ(ReadWave(out.data(), 10, kPhase, 1000, table.data(), -14), kPhase);
    EXPECT_EQ(ReadWaveFaded(out.data(), 10, kPhase, 1000, table.data(), -14, 32750, -655), kPhase);
    EXPECT_EQ(out, before);
    EXPECT_EQ(ReadWave(out.data(), 10, kPhase, 1000, table.data(), -13), kPhase + 10000);
    EXPECT_NE(out, before);
}

TEST(Oscillators, ReadWaveSaturates) {
    std::array<std::int16_t, 129> table{};
    table.fill(20000);
    std::vector<std::int32_t> out{0, kMax32 - 1};
    ReadWave(out.data(), 1, 0, 0, table.data(), 4);
    EXPECT_EQ(out[0], kMax32);
    ReadWave(out.data() + 1, 1, 0, 0, table.data(), 0);
    EXPECT_EQ(out[1], kMax32);
    table.fill(-20000);
    ReadWave(out.data(), 2, 0, 0, table.data(), 4);
    EXPECT_EQ(out[0], -1);
    ReadWave(out.data(), 2, 0, 0, table.data(), 4);
    EXPECT_EQ(out[0], kMin32);
}

TEST(Oscillators, ReadWaveFadedMultipliesTheTopHalfByTheGain) {
    const auto table = CosineWave(8, 30000.0);
    std::vector<std::int32_t> plain(50, 0);
    std::vector<std::int32_t> faded(50, 0);
    ReadWave(plain.data(), 50, 99, 77777, table.data(), 0);
    const std::uint32_t end = ReadWaveFaded(faded.data(), 50, 99, 77777, table.data(), 0, 32750, -655);
    EXPECT_EQ(end, (99 + 50 * 77777) & kWavePhaseMask);
    for (int k = 0; k < 50; ++k) {
        const auto index = static_cast<std::size_t>(k);
        EXPECT_EQ(faded[index], (plain[index] >> 16) * (32750 - 655 * k) * 2) << k;
    }
}

TEST(Oscillators, NonPositiveCountsReadNothing) {
    const auto table = CosineWave(8, 30000.0);
    std::int32_t out = 3;
    EXPECT_EQ(ReadWave(&out, -2, 55, 1, table.data(), 0), 55U);
    EXPECT_EQ(ReadWaveFaded(&out, 0, 55, 1, table.data(), 0, 0, 655), 55U);
    EXPECT_EQ(out, 3);
}

} // namespace
} // namespace orva::voice
