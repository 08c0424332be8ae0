#include "tests/support/FloatVoiceConditioner.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

constexpr int kPitchCode = 207; // 56 harmonics

FloatVoiceFrame VoicedFrame(int pitchCode) {
    FloatVoiceFrame frame;
    frame.harmonics = HarmonicsOf(pitchCode);
    frame.fundamental = FundamentalOf(pitchCode);
    frame.voiced.fill(true);
    return frame;
}

LogSpectrum Flat(double octaves) {
    LogSpectrum spectrum{};
    spectrum.fill(octaves);
    return spectrum;
}

LogSpectrum Formants() {
    LogSpectrum spectrum{};
    for (std::size_t i = 0; i < spectrum.size(); ++i) {
        spectrum[i] = 7.0 + 2.0 * std::cos(0.5 * static_cast<double>(i)) - 0.05 * static_cast<double>(i);
    }
    return spectrum;
}

double SumOfSquares(const FloatVoiceFrame& frame) {
    double sum = 0.0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(frame.harmonics); ++i) {
        sum += frame.amplitudes[i] * frame.amplitudes[i];
    }
    return sum;
}

double Cycles(int phase) {
    const double cycles = phase / 32768.0;
    return cycles < 0.5 ? cycles : cycles - 1.0;
}

TEST(FloatVoiceConditioner, FlatSpectrumHasNoPhaseInItsMiddle) {
    FloatVoiceConditioner conditioner;
    FloatVoiceFrame frame = VoicedFrame(kPitchCode);
    conditioner.Condition(frame, Flat(8.0), {});
    for (std::size_t l = 20; l <= 37; ++l) {
        EXPECT_EQ(conditioner.Phases()[l - 1], 0) << l;
    }
}

TEST(FloatVoiceConditioner, RisingSpectrumLeads) {
    // Ten taps of 18411 / (2 j + 1) on differences of 2 (2 j + 1) harmonics: ten times the same.
    constexpr double kSlope = 0.05;
    FloatVoiceConditioner conditioner;
    FloatVoiceFrame frame = VoicedFrame(kPitchCode);
    LogSpectrum spectrum{};
    for (std::size_t i = 0; i < spectrum.size(); ++i) {
        spectrum[i] = 2.0 + kSlope * static_cast<double>(i);
    }
    conditioner.Condition(frame, spectrum, {});
    const double expected = 10.0 * 2.0 * kSlope * 18411.0 / 32768.0 / 8.0;
    for (std::size_t l = 20; l <= 37; ++l) {
        EXPECT_NEAR(Cycles(conditioner.Phases()[l - 1]), expected, 1e-4) << l;
    }
}

TEST(FloatVoiceConditioner, PeakTurnsItsNeighboursOppositeWays) {
    FloatVoiceConditioner conditioner;
    FloatVoiceFrame frame = VoicedFrame(kPitchCode);
    LogSpectrum spectrum = Flat(8.0);
    spectrum[29] += 1.0;
    conditioner.Condition(frame, spectrum, {});
    const double tap = 18411.0 / 32768.0 / 8.0;
    EXPECT_NEAR(Cycles(conditioner.Phases()[28]), tap, 1e-4);
    EXPECT_NEAR(Cycles(conditioner.Phases()[29]), 0.0, 1e-4);
    EXPECT_NEAR(Cycles(conditioner.Phases()[30]), -tap, 1e-4);
}

TEST(FloatVoiceConditioner, HarmonicsBeyondTheLastHaveNoPhase) {
    FloatVoiceConditioner conditioner;
    FloatVoiceFrame frame = VoicedFrame(0);
    conditioner.Condition(frame, Formants(), {});
    for (std::size_t i = 9; i < kMostHarmonics; ++i) {
        EXPECT_EQ(conditioner.Phases()[i], 0) << i;
        EXPECT_EQ(frame.amplitudes[i], 0.0) << i;
    }
}

TEST(FloatVoiceConditioner, EnhancementKeepsTheEnergyAndWidensTheRange) {
    for (const int pitchCode : {0, 60, 120, 207}) {
        FloatVoiceConditioner conditioner;
        FloatVoiceFrame frame = VoicedFrame(pitchCode);
        const LogSpectrum spectrum = Formants();
        conditioner.Condition(frame, spectrum, {});
        double expected = 0.0;
        std::size_t loudest = 0;
        std::size_t faintest = 2;
        for (std::size_t i = 0; i < static_cast<std::size_t>(frame.harmonics); ++i) {
            expected += std::exp2(2.0 * spectrum[i]);
            loudest = spectrum[i] > spectrum[loudest] ? i : loudest;
            faintest = spectrum[i] < spectrum[faintest] ? i : faintest;
        }
        EXPECT_NEAR(SumOfSquares(frame) / expected, 1.0, 1e-9) << pitchCode;
        EXPECT_GT(frame.amplitudes[loudest] / frame.amplitudes[faintest],
                  std::exp2(spectrum[loudest] - spectrum[faintest]))
            << pitchCode;
    }
}

TEST(FloatVoiceConditioner, WeightsStayBetweenAHalfAndSixFifths) {
    FloatVoiceConditioner conditioner;
    FloatVoiceFrame frame = VoicedFrame(kPitchCode);
    const LogSpectrum spectrum = Formants();
    conditioner.Condition(frame, spectrum, {});
    double least = 1e9;
    double most = 0.0;
    for (std::size_t i = 0; i < 56; ++i) {
        const double weight = frame.amplitudes[i] / std::exp2(spectrum[i]);
        least = std::min(least, weight);
        most = std::max(most, weight);
    }
    EXPECT_LE(most / least, 1.2 / 0.5 + 1e-3);
}

TEST(FloatVoiceConditioner, EnergyFollowsByATwentieth) {
    FloatVoiceConditioner conditioner;
    const double before = conditioner.Energy();
    EXPECT_NEAR(before * 1073741824.0, 75000.0, 1e-6);
    FloatVoiceFrame frame = VoicedFrame(kPitchCode);
    conditioner.Condition(frame, Flat(10.0), {});
    const double frameEnergy = 56.0 * 1024.0 * 1024.0 / 1073741824.0;
    EXPECT_NEAR(conditioner.Energy(), 0.95 * before + 0.05 * frameEnergy, 1e-6);
}

TEST(FloatVoiceConditioner, EnergyHasAFloor) {
    FloatVoiceConditioner conditioner;
    for (int i = 0; i < 200; ++i) {
        FloatVoiceFrame frame = VoicedFrame(kPitchCode);
        conditioner.Condition(frame, Flat(-15.0), {});
    }
    EXPECT_EQ(conditioner.Energy(), 32767.0 / 32768.0 / 131072.0);
}

TEST(FloatVoiceConditioner, SumOfAmplitudesIsHeldAt20480) {
    FloatVoiceConditioner conditioner;
    FloatVoiceFrame frame = VoicedFrame(kPitchCode);
    conditioner.Condition(frame, Flat(11.0), {});
    double sum = 0.0;
    for (const double amplitude : frame.amplitudes) {
        sum += amplitude;
    }
    EXPECT_NEAR(sum, 20480.0, 1e-6);
}

TEST(FloatVoiceConditioner, UnvoicedAmplitudesGrowWithTheRootOfThePitch) {
    for (const int pitchCode : {0, 100, 207}) {
        FloatVoiceConditioner voicedConditioner;
        FloatVoiceConditioner unvoicedConditioner;
        FloatVoiceFrame voiced = VoicedFrame(pitchCode);
        FloatVoiceFrame unvoiced = voiced;
        unvoiced.voiced.fill(false);
        voicedConditioner.Condition(voiced, Formants(), {});
        unvoicedConditioner.Condition(unvoiced, Formants(), {});
        const double expected = std::sqrt(256.0 * std::ldexp(voiced.fundamental, -19));
        EXPECT_NEAR(unvoiced.amplitudes[4] / voiced.amplitudes[4], expected, 1e-9) << pitchCode;
    }
}

TEST(FloatVoiceConditioner, StrongHarmonicsBecomeVoicedOnABadChannelOnly) {
    LogSpectrum spectrum = Flat(2.0);
    spectrum[10] = 11.0;
    const auto isForced = [&](VoiceErrorFigures errors) {
        FloatVoiceConditioner conditioner;
        FloatVoiceFrame frame = VoicedFrame(kPitchCode);
        frame.voiced.fill(false);
        conditioner.Condition(frame, spectrum, errors);
        EXPECT_FALSE(frame.voiced[5]);
        return frame.voiced[10];
    };
    EXPECT_FALSE(isForced({164, 3, 1}));
    EXPECT_TRUE(isForced({164, 4, 1}));
    EXPECT_TRUE(isForced({165, 0, 1}));
}

TEST(FloatVoiceConditioner, TellsHowNearATieTheVoicingWas) {
    FloatVoiceConditioner conditioner;
    FloatVoiceFrame frame = VoicedFrame(kPitchCode);
    conditioner.Condition(frame, Flat(5.0), {1000, 4, 1});
    EXPECT_EQ(conditioner.VoicingMargin(), std::numeric_limits<double>::infinity());

    frame.voiced.fill(false);
    conditioner.Condition(frame, Flat(5.0), {1000, 4, 1});
    // 2^0.5 by the 0.375th power of the energy, in whole steps.
    const double threshold =
        std::floor(std::exp2(0.5 + 0.375 * std::log2(conditioner.Energy() * 1073741824.0)));
    const double unvoicedScale = std::sqrt(256.0 * std::ldexp(frame.fundamental, -19));
    double expected = 1.0;
    for (std::size_t i = 0; i < 56; ++i) {
        const double amplitude = frame.amplitudes[i] / (frame.voiced[i] ? 1.0 : unvoicedScale);
        expected = std::min(expected, std::abs(amplitude / threshold - 1.0));
    }
    EXPECT_NEAR(conditioner.VoicingMargin(), expected, 1e-9);

    conditioner.Condition(frame, Flat(5.0), {});
    EXPECT_EQ(conditioner.VoicingMargin(), std::numeric_limits<double>::infinity());
}

} // namespace
} // namespace orva::test
