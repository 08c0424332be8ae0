#include "voice/FrameConditioning.h"

#include "voice/FixedPoint.h"
#include "voice/ModelParameters.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

// A record as unpacking leaves it: pitch code, smooth random envelope, random voicing.
ImbeFrameParameters RandomRecord(std::mt19937& random, int pitchCode, double level, double spread) {
    std::normal_distribution<double> normal(0.0, spread);
    ImbeFrameParameters record{};
    record.kind = 1;
    record.harmonics = static_cast<std::int16_t>(((pitchCode / 4 + 10) * 60648) >> 16);
    record.fundamental = static_cast<std::int16_t>(((1 << 23) / (4 * pitchCode + 158)) >> 1);
    for (int l = 0; l < record.harmonics; ++l) {
        record.amplitudes[l] =
            static_cast<std::int16_t>(std::clamp(level + normal(random), -30720.0, 30719.0));
        record.voiced[l] = static_cast<std::int16_t>(random() % 2);
    }
    return record;
}

ImbeDecoderState FreshState() {
    ImbeDecoderState state;
    ImbeInit(state);
    return state;
}

double Steps(const ImbeFrameParameters& record, int l) {
    return std::ldexp(record.amplitudes[l - 1], record.amplitudeExponent);
}

double Frequency(const ImbeFrameParameters& record) {
    return record.fundamental / 524288.0;
}

// --- phases ------------------------------------------------------------------------------------------------

// The phase of each harmonic in cycles, from the record's log amplitudes.
std::vector<double> ExactPhases(const ImbeFrameParameters& record) {
    const int harmonics = record.harmonics;
    std::vector<double> p(128, 0.0);
    const auto at = [&](int l) -> double& { return p[static_cast<std::size_t>(l + 19)]; };
    for (int l = 1; l <= harmonics; ++l) {
        at(l) = record.amplitudes[l - 1];
        if (record.voiced[l - 1] == 0) {
            at(l) = std::clamp(at(l) + 1024.0 * std::log2(256.0 * Frequency(record)), -30720.0, 30719.0);
        }
    }
    for (int l = harmonics + 1; l <= 64; ++l) {
        at(l) = std::max(at(l - 1) - 1477.0, -32768.0);
    }
    for (int l = 65; l <= harmonics + 19; ++l) {
        at(l) = at(128 - l);
    }
    for (int l = 1; l <= 19; ++l) {
        at(-l) = at(l);
    }
    constexpr std::array<int, 10> kTaps{18411, 6137, 3682, 2630, 2046, 1674, 1416, 1227, 1083, 969};
    std::vector<double> phases;
    for (int l = 1; l <= harmonics; ++l) {
        double sum = 0.0;
        for (int j = 0; j < 10; ++j) {
            sum += 2.0 * kTaps[static_cast<std::size_t>(j)] * (at(l + 1 + 2 * j) - at(l - 1 - 2 * j));
        }
        phases.push_back(sum / std::ldexp(1.0, 30));
    }
    return phases;
}

TEST(FrameConditioning, PhasesMatchTheFilterForEveryLength) {
    std::mt19937 random(30);
    for (int pitchCode = 0; pitchCode < 208; ++pitchCode) {
        for (const double spread : {500.0, 4000.0, 15000.0}) {
            const ImbeFrameParameters record = RandomRecord(random, pitchCode, 8000.0, spread);
            ImbeDecoderState state = FreshState();
            std::ranges::fill(state.phaseDispersion, std::int16_t{99});
            DerivePhases(record, state);
            const std::vector<double> expected = ExactPhases(record);
            for (int l = 1; l <= record.harmonics; ++l) {
                const double actual = state.phaseDispersion[l - 1] / 32768.0;
                const double difference = actual - expected[static_cast<std::size_t>(l - 1)];
                ASSERT_NEAR(difference - std::round(difference), 0.0, 4e-4)
                    << "pitch code " << pitchCode << ", harmonic " << l;
                ASSERT_LT(std::fabs(actual), 1.0);
            }
            for (int l = record.harmonics; l < kMaxHarmonics; ++l) {
                ASSERT_EQ(state.phaseDispersion[l], 0);
            }
        }
    }
}

TEST(FrameConditioning, PhasesKeepTheSignOfTheRemainder) {
    ImbeFrameParameters record{};
    record.harmonics = 9;
    record.fundamental = 26546;
    std::ranges::fill(record.voiced, std::int16_t{1});
    record.amplitudes[4] = 16384; // one peak: phases before it rise, behind it fall
    ImbeDecoderState state = FreshState();
    DerivePhases(record, state);
    // 2 x 18411 x 16384 / 2^30 of a cycle next to the peak, plus the slope beyond the last harmonic.
    const std::vector<double> expected = ExactPhases(record);
    for (int l = 1; l <= 9; ++l) {
        const double exact = expected[static_cast<std::size_t>(l - 1)];
        EXPECT_EQ(state.phaseDispersion[l - 1],
                  static_cast<int>(std::floor((exact - std::trunc(exact)) * 32768.0)))
            << l;
    }
    EXPECT_GT(state.phaseDispersion[3], 0);
    EXPECT_LT(state.phaseDispersion[5], 0);
}

TEST(FrameConditioning, PhasesOfAbsurdEnvelopesWrap) {
    ImbeFrameParameters record{};
    record.harmonics = 56;
    record.fundamental = 4253;
    for (int l = 0; l < 56; ++l) {
        record.amplitudes[l] = static_cast<std::int16_t>((l / 28) % 2 == 0 ? -30720 : 30719);
        record.voiced[l] = 1;
    }
    ImbeDecoderState state = FreshState();
    DerivePhases(record, state);
    const std::vector<double> expected = ExactPhases(record);
    for (int l = 0; l < 56; ++l) {
        const double difference = state.phaseDispersion[l] / 32768.0 - expected[static_cast<std::size_t>(l)];
        EXPECT_NEAR(difference - std::round(difference), 0.0, 1e-4) << l;
    }
}

// --- linear amplitudes -------------------------------------------------------------------------------------

TEST(FrameConditioning, LogToLinearIsThePowerOfTwo) {
    std::mt19937 random(31);
    for (int pitchCode = 0; pitchCode < 208; pitchCode += 3) {
        ImbeFrameParameters record = RandomRecord(random, pitchCode, 6000.0, 4000.0);
        const ImbeFrameParameters logs = record;
        record.amplitudes[55] = record.harmonics == 56 ? record.amplitudes[55] : std::int16_t{77};
        LogToLinear(record);
        const int largest = *std::max_element(logs.amplitudes, logs.amplitudes + logs.harmonics);
        EXPECT_EQ(record.amplitudeExponent, (largest >> 11) + 1 - 15);
        for (int l = 1; l <= record.harmonics; ++l) {
            const double exact = std::exp2(logs.amplitudes[l - 1] / 2048.0);
            ASSERT_NEAR(Steps(record, l), exact, exact * 1.3e-4 + std::ldexp(0.51, record.amplitudeExponent))
                << "pitch code " << pitchCode << ", harmonic " << l;
        }
        for (int l = record.harmonics; l < kMaxHarmonics; ++l) {
            ASSERT_EQ(record.amplitudes[l], 0);
        }
    }
}

TEST(FrameConditioning, LogToLinearClampsBothEnds) {
    ImbeFrameParameters record{};
    record.harmonics = 9;
    std::ranges::fill(record.amplitudes, std::int16_t{32767});
    record.amplitudes[1] = -32768;
    LogToLinear(record);
    EXPECT_EQ(record.amplitudeExponent, 0);
    EXPECT_NEAR(Steps(record, 1), std::exp2(30719 / 2048.0), 4.0);
    EXPECT_EQ(record.amplitudes[1], 0);
}

TEST(FrameConditioning, AmplitudesAtTheLowerClampKeepTheirEnergy) {
    ImbeFrameParameters record{};
    record.harmonics = 20;
    record.fundamental = 12000;
    std::fill_n(record.amplitudes, 20, std::int16_t{-30720});
    LogToLinear(record);
    EXPECT_EQ(record.amplitudeExponent, -15 + 1 - 15);
    EXPECT_NEAR(Steps(record, 1), std::ldexp(1.0, -15), std::ldexp(1.0, -26));
    ImbeDecoderState state = FreshState();
    const double before = std::pow(Steps(record, 1), 2.0) * 20;
    EnhanceSpectrum(record, state);
    double after = 0.0;
    for (int l = 1; l <= 20; ++l) {
        after += std::pow(Steps(record, l), 2.0);
    }
    EXPECT_GT(after, 0.0);
    EXPECT_NEAR(after / before, 1.0, 0.01);
}

// --- enhancement -------------------------------------------------------------------------------------------

// The cosine of a harmonic's angle, which is truncated to a 512th of a cycle.
double HarmonicCosine(const ImbeFrameParameters& record, int l) {
    const double entry = std::floor(l * Frequency(record) * 512.0);
    return std::cos(2.0 * std::numbers::pi * entry / 512.0);
}

struct ExactEnhancement {
    std::vector<double> amplitudes; // in sample steps
    double energy;                  // R0
};

ExactEnhancement Enhance(const ImbeFrameParameters& record) {
    const double f = Frequency(record);
    double r0 = 0.0;
    double r1 = 0.0;
    std::vector<double> m;
    for (int l = 1; l <= record.harmonics; ++l) {
        m.push_back(Steps(record, l) / 32768.0);
        r0 += m.back() * m.back();
        r1 += m.back() * m.back() * HarmonicCosine(record, l);
    }
    r1 *= 0.7;
    const double q = 0.4751 / (r0 * (r0 * r0 - r1 * r1) * f);
    const double a = q * (r0 * r0 + r1 * r1);
    const double b = 2.0 * q * r0 * r1;
    double weighted = 0.0;
    for (int l = 1; l <= record.harmonics; ++l) {
        double& value = m[static_cast<std::size_t>(l - 1)];
        if (l > record.harmonics / 8) {
            const double curve = a - b * HarmonicCosine(record, l);
            value *= std::clamp(std::sqrt(value * std::sqrt(curve)), 0.5, 1.2);
        }
        weighted += value * value;
    }
    for (double& value : m) {
        value *= std::sqrt(r0 / weighted) * 32768.0;
    }
    return {m, r0};
}

TEST(FrameConditioning, EnhancementMatchesTheFormulas) {
    std::mt19937 random(32);
    for (int pitchCode = 0; pitchCode < 208; ++pitchCode) {
        for (const double level : {-20000.0, 2000.0, 14000.0}) {
            ImbeFrameParameters record = RandomRecord(random, pitchCode, level, 2500.0);
            // A formant, so that the first correlation matters.
            for (int l = 0; l < record.harmonics; ++l) {
                record.amplitudes[l] =
                    static_cast<std::int16_t>(record.amplitudes[l] - 6000 * l / record.harmonics);
            }
            LogToLinear(record);
            const ExactEnhancement exact = Enhance(record);
            const double largest = *std::ranges::max_element(exact.amplitudes);
            ImbeDecoderState state = FreshState();
            EnhanceSpectrum(record, state);
            for (int l = 1; l <= record.harmonics; ++l) {
                const double expected = exact.amplitudes[static_cast<std::size_t>(l - 1)];
                ASSERT_NEAR(Steps(record, l), expected, expected * 0.006 + largest * 3e-4)
                    << "pitch code " << pitchCode << ", level " << level << ", harmonic " << l;
            }
        }
    }
}

TEST(FrameConditioning, EnhancementLeavesTheFirstEighthOfTheHarmonicsAlone) {
    for (const auto& [pitchCode, untouched] : {std::pair{0, 1}, {207, 7}, {100, 4}}) {
        std::mt19937 random(33);
        ImbeFrameParameters record = RandomRecord(random, pitchCode, 6000.0, 0.0);
        ASSERT_EQ(record.harmonics >> 3, untouched);
        // Weak first harmonics get the lower weight unless they are left alone.
        std::fill_n(record.amplitudes, untouched + 1, std::int16_t{-6000});
        LogToLinear(record);
        const double first = Steps(record, 1);
        const double before = Steps(record, record.harmonics);
        ImbeDecoderState state = FreshState();
        EnhanceSpectrum(record, state);
        const double gain = Steps(record, record.harmonics) / before;
        EXPECT_GT(Steps(record, untouched) / first, 0.9 * gain / 1.2) << "pitch code " << pitchCode;
        EXPECT_NEAR(Steps(record, untouched + 1) / Steps(record, untouched), 0.5, 0.05)
            << "pitch code " << pitchCode;
    }
}

TEST(FrameConditioning, EnhancementFoldsAPositiveExponentIntoTheMantissas) {
    ImbeFrameParameters record{};
    record.harmonics = 9;
    record.fundamental = 26546;
    record.amplitudes[0] = 30719;
    std::fill(record.amplitudes + 1, record.amplitudes + 9, std::int16_t{30719});
    LogToLinear(record);
    ImbeDecoderState state = FreshState();
    EnhanceSpectrum(record, state);
    EXPECT_LE(record.amplitudeExponent, 0);
    EXPECT_GT(Steps(record, 1), 30000.0);
}

TEST(FrameConditioning, EnhancementOfNothingOnlyTracksTheEnergy) {
    ImbeFrameParameters record{};
    record.harmonics = 12;
    record.fundamental = 20000;
    record.amplitudeExponent = -10;
    ImbeDecoderState state = FreshState();
    EnhanceSpectrum(record, state);
    EXPECT_EQ(record.amplitudeExponent, -10);
    EXPECT_EQ(std::ranges::count(record.amplitudes, 0), kMaxHarmonics);
    EXPECT_NEAR(std::ldexp(state.energyMantissa, state.energyExponent), 0.95 * std::ldexp(18750.0, -13),
                0.001);
}

TEST(FrameConditioning, EnergyFollowsItsRecursion) {
    std::mt19937 random(34);
    ImbeDecoderState state = FreshState();
    double energy = 18750.0 / 32768.0 * std::ldexp(1.0, -13);
    for (int frame = 0; frame < 300; ++frame) {
        const double level = frame < 100 ? 14000.0 : frame < 200 ? 4000.0 : 24000.0;
        ImbeFrameParameters record = RandomRecord(random, static_cast<int>(random() % 208), level, 1500.0);
        LogToLinear(record);
        energy = 0.95 * energy + 0.05 * Enhance(record).energy;
        energy = std::max(energy, std::ldexp(1.0, -17));
        EnhanceSpectrum(record, state);
        ASSERT_NEAR(std::ldexp(state.energyMantissa, state.energyExponent - 15) / energy, 1.0, 0.002)
            << frame;
    }
}

TEST(FrameConditioning, EnergyHasAFloor) {
    ImbeDecoderState state = FreshState();
    for (int frame = 0; frame < 200; ++frame) {
        ImbeFrameParameters record{};
        record.harmonics = 30;
        record.fundamental = 8000;
        std::fill_n(record.amplitudes, 30, std::int16_t{-30720});
        LogToLinear(record);
        EnhanceSpectrum(record, state);
    }
    EXPECT_EQ(state.energyMantissa, 32767);
    EXPECT_EQ(state.energyExponent, -17);
}

// --- voicing and limit -------------------------------------------------------------------------------------

// The lowest whole amplitude in sample steps that is forced to voiced.
int LowestForced(ImbeDecoderState state) {
    ImbeFrameParameters record{};
    record.harmonics = 9;
    record.fundamental = 20000;
    for (int amplitude = 0; amplitude < 32767; ++amplitude) {
        record.amplitudes[0] = static_cast<std::int16_t>(amplitude);
        record.voiced[0] = 0;
        ImbeFrameParameters copy = record;
        AdaptVoicing(copy, state);
        if (copy.voiced[0] != 0) {
            return amplitude;
        }
    }
    return 32767;
}

double ThresholdLog(const ImbeDecoderState& state) {
    const double energy = std::ldexp(state.energyMantissa, state.energyExponent - 15);
    const double log = 5.5 + 0.375 * std::log2(energy * std::ldexp(1.0, 30));
    const bool few = state.wordErrors[4] == 0 && state.errorRate < 410;
    return log - (few ? 400.0 * state.errorRate / 32768.0 : 5.0);
}

TEST(FrameConditioning, ForcingThresholdMatchesTheFormula) {
    for (const int exponent : {-17, -13, -9, -5}) {
        for (const auto& [rate, word4] :
             {std::pair{165, 0}, {300, 0}, {409, 0}, {410, 0}, {165, 1}, {2000, 3}}) {
            ImbeDecoderState state = FreshState();
            state.energyMantissa = 21000;
            state.energyExponent = static_cast<std::int16_t>(exponent);
            state.errorRate = static_cast<std::int16_t>(rate);
            state.wordErrors[4] = static_cast<std::int16_t>(word4);
            const double exact = std::exp2(std::min(ThresholdLog(state), 15359 / 1024.0));
            EXPECT_NEAR(LowestForced(state), exact, exact * 0.003 + 1.0)
                << "exponent " << exponent << ", rate " << rate << ", word 4 errors " << word4;
        }
    }
}

TEST(FrameConditioning, WithoutErrorsNothingIsForcedHoweverLoud) {
    for (const auto& [rate, errors, forced] :
         {std::tuple{164, 3, false}, {165, 3, true}, {164, 4, true}, {0, 0, false}}) {
        ImbeDecoderState state = FreshState();
        state.energyExponent = -17;
        state.errorRate = static_cast<std::int16_t>(rate);
        state.errorTotal = static_cast<std::int16_t>(errors);
        ImbeFrameParameters record{};
        record.harmonics = 9;
        record.fundamental = 20000;
        record.amplitudes[3] = 20000;
        AdaptVoicing(record, state);
        EXPECT_EQ(record.voiced[3], forced ? 1 : 0) << "rate " << rate << ", errors " << errors;
        EXPECT_EQ(record.voiced[2], 0);
    }
}

TEST(FrameConditioning, AnEnergyOfZeroForcesNothing) {
    ImbeDecoderState state = FreshState();
    state.energyMantissa = 0;
    state.energyExponent = 0;
    state.errorRate = 3000;
    EXPECT_EQ(LowestForced(state), 32767);
}

TEST(FrameConditioning, LowestEnergyHasTheLowestThreshold) {
    ImbeDecoderState state = FreshState();
    state.energyMantissa = 32767;
    state.energyExponent = -17;
    state.errorRate = 410;
    // 2^(5.5 + 0.375 x 13 - 5) is 41.5, of which the whole part counts.
    EXPECT_EQ(LowestForced(state), 42);
    state.errorRate = 165;
    EXPECT_NEAR(LowestForced(state), std::exp2(5.5 + 0.375 * 13.0 - 400.0 * 165 / 32768), 4.0);
}

TEST(FrameConditioning, FractionsOfAStepCountWhenForcing) {
    ImbeDecoderState state = FreshState();
    state.energyMantissa = 32767;
    state.energyExponent = -17;
    state.errorRate = 410;
    ImbeFrameParameters record{};
    record.harmonics = 9;
    record.fundamental = 20000;
    record.amplitudeExponent = -2;
    record.amplitudes[0] = 41 * 4;
    record.amplitudes[1] = 41 * 4 + 1;
    AdaptVoicing(record, state);
    EXPECT_EQ(record.voiced[0], 0);
    EXPECT_EQ(record.voiced[1], 1);
}

TEST(FrameConditioning, TheLoudestEnergyKeepsTheThresholdInRange) {
    ImbeDecoderState state = FreshState();
    state.energyMantissa = 32767;
    state.energyExponent = 6;
    state.errorRate = 165;
    // 2^(15359 / 1024) is the limit.
    EXPECT_NEAR(LowestForced(state), 32746, 8);
}

ImbeFrameParameters RecordWithSum(int sum, int exponent) {
    ImbeFrameParameters record{};
    record.harmonics = 10;
    record.fundamental = 20000;
    record.amplitudeExponent = static_cast<std::int16_t>(exponent);
    const int mantissaSum = exponent < 0 ? sum << -exponent : sum;
    for (int l = 0; l < 10; ++l) {
        record.amplitudes[l] = static_cast<std::int16_t>(mantissaSum / 10 + (l < mantissaSum % 10 ? 1 : 0));
    }
    return record;
}

TEST(FrameConditioning, ASumOf20480IsNotScaled) {
    const ImbeDecoderState state = FreshState();
    for (const int exponent : {0, -3}) {
        // The comparison is in units of 64 steps, so the limit acts from 20544 on.
        for (const int sum : {20480, 20543}) {
            ImbeFrameParameters record = RecordWithSum(sum, exponent);
            const ImbeFrameParameters before = record;
            AdaptVoicing(record, state);
            EXPECT_TRUE(std::ranges::equal(record.amplitudes, before.amplitudes)) << sum;
            EXPECT_EQ(record.amplitudeExponent, before.amplitudeExponent) << sum;
        }
        ImbeFrameParameters record = RecordWithSum(20544, exponent);
        AdaptVoicing(record, state);
        double sum = 0.0;
        for (int l = 1; l <= 10; ++l) {
            sum += Steps(record, l);
        }
        EXPECT_NEAR(sum, 20480.0, 12.0);
    }
}

TEST(FrameConditioning, AmplitudesAreLimitedToTheSum) {
    std::mt19937 random(35);
    for (int trial = 0; trial < 200; ++trial) {
        ImbeFrameParameters record{};
        record.harmonics = static_cast<std::int16_t>(9 + random() % 48);
        record.fundamental = 5000;
        record.amplitudeExponent = static_cast<std::int16_t>(-static_cast<int>(random() % 3));
        double sum = 0.0;
        for (int l = 1; l <= record.harmonics; ++l) {
            record.amplitudes[l - 1] = static_cast<std::int16_t>(random() % 32768);
            sum += Steps(record, l);
        }
        const ImbeFrameParameters before = record;
        AdaptVoicing(record, FreshState());
        const double factor = sum >= 20544.0 ? 20480.0 / sum : 1.0;
        for (int l = 1; l <= record.harmonics; ++l) {
            ASSERT_NEAR(Steps(record, l), Steps(before, l) * factor,
                        Steps(before, l) * factor * 2e-4 + std::ldexp(1.0, record.amplitudeExponent))
                << "trial " << trial << ", harmonic " << l;
        }
    }
}

// --- unvoiced scale ----------------------------------------------------------------------------------------

TEST(FrameConditioning, UnvoicedAmplitudesAreScaledByTheRootOfTheFundamental) {
    std::mt19937 random(36);
    for (int pitchCode = 0; pitchCode < 208; ++pitchCode) {
        ImbeFrameParameters record = RandomRecord(random, pitchCode, 9000.0, 3000.0);
        record.voiced[0] = 0;
        LogToLinear(record);
        const ImbeFrameParameters before = record;
        ScaleUnvoiced(record);
        const double gain = std::sqrt(256.0 * Frequency(record));
        for (int l = 1; l <= record.harmonics; ++l) {
            const double expected = Steps(before, l) * (record.voiced[l - 1] != 0 ? 1.0 : gain);
            ASSERT_NEAR(Steps(record, l), expected,
                        expected * 0.0015 + std::ldexp(1.5, record.amplitudeExponent))
                << "pitch code " << pitchCode << ", harmonic " << l;
        }
        const int largest = *std::max_element(record.amplitudes, record.amplitudes + record.harmonics);
        EXPECT_GE(largest, 16384) << "the largest mantissa is normalised";
    }
}

TEST(FrameConditioning, AllVoicedAmplitudesStayAsTheyAre) {
    std::mt19937 random(37);
    ImbeFrameParameters record = RandomRecord(random, 60, 9000.0, 3000.0);
    std::ranges::fill(record.voiced, std::int16_t{1});
    LogToLinear(record);
    record.amplitudes[0] = 3; // not normalised, and left so
    const ImbeFrameParameters before = record;
    ScaleUnvoiced(record);
    EXPECT_TRUE(std::ranges::equal(record.amplitudes, before.amplitudes));
    EXPECT_EQ(record.amplitudeExponent, before.amplitudeExponent);
}

TEST(FrameConditioning, ZeroAmplitudesDoNotDecideTheExponent) {
    ImbeFrameParameters record{};
    record.harmonics = 9;
    record.fundamental = 26546;
    record.amplitudeExponent = -20;
    ScaleUnvoiced(record);
    EXPECT_EQ(record.amplitudeExponent, 0);
    EXPECT_EQ(std::ranges::count(record.amplitudes, 0), kMaxHarmonics);

    record.amplitudeExponent = -20;
    record.amplitudes[4] = 16384;
    record.voiced[4] = 1;
    ScaleUnvoiced(record);
    EXPECT_EQ(record.amplitudeExponent, -20);
    EXPECT_EQ(record.amplitudes[4], 16384);
}

} // namespace
} // namespace orva::voice
