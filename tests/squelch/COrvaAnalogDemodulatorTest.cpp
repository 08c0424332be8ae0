#include "p25/COrvaAnalogDemodulator.h"

#include "tests/squelch/SanitizedBuild.h"
#include "tests/support/AllocationProbe.h"
#include "tests/support/FmModulator.h"
#include "tests/support/RandomSource.h"
#include "tests/support/ToneSource.h"
#include "tests/support/VoiceLikeNoise.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <iostream>
#include <memory>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace orva::p25 {

struct COrvaAnalogDemodulatorInspector {
    static float LastStep(const COrvaAnalogDemodulator& d) { return d.blockerLast; }
    static float Pole(const COrvaAnalogDemodulator& d) { return d.blockerPole; }
    static float Feed(const COrvaAnalogDemodulator& d) { return d.blockerFeed; }
    static std::uint32_t Phase(const COrvaAnalogDemodulator& d) { return d.oscillatorPhase; }
    static std::uint32_t QuarterCycle(const COrvaAnalogDemodulator& d) { return d.quarterCycle; }
    static std::uint32_t MixStep(const COrvaAnalogDemodulator& d) { return d.mixStep; }
    static float Gain(const COrvaAnalogDemodulator& d) { return d.gain; }
    static bool Ready(const COrvaAnalogDemodulator& d) { return d.filterReady && d.oscillatorReady; }
    static dsp::TFIR_F32_2CH& Filter(COrvaAnalogDemodulator& d) { return d.channelFilter; }
};

namespace {

using Inspector = COrvaAnalogDemodulatorInspector;

constexpr double kCycle = 2.0 * std::numbers::pi;
constexpr double kOscillatorHz = 12000.0;

std::vector<float> ToFloat(const std::vector<std::int16_t>& samples) {
    std::vector<float> scaled(samples.size());
    std::transform(samples.begin(), samples.end(), scaled.begin(),
                   [](std::int16_t x) { return static_cast<float>(x) / 32768.0F; });
    return scaled;
}

std::vector<float> Fm(int rate, double deviation, std::size_t count, const std::function<double()>& audio,
                      double offset = 0.0) {
    test::FmModulator modulator({.sampleRate = rate, .carrierOffset = offset, .deviation = deviation});
    std::vector<double> levels(count);
    std::generate(levels.begin(), levels.end(), audio);
    return ToFloat(modulator.Modulate(levels));
}

std::vector<float> Carrier(int rate, double offset, double seconds) {
    return Fm(
        rate, 0.0, static_cast<std::size_t>(seconds * rate), [] { return 0.0; }, offset);
}

std::vector<float> Demodulate(COrvaAnalogDemodulator& demodulator, const std::vector<float>& samples,
                              std::size_t piece) {
    std::vector<float> audio;
    for (std::size_t begin = 0; begin < samples.size(); begin += piece) {
        const std::size_t count = std::min(piece, samples.size() - begin);
        const float* part = demodulator.Process(samples.data() + begin, static_cast<std::int32_t>(count));
        if (part == nullptr) {
            ADD_FAILURE() << "no audio for the block at " << begin;
            return {};
        }
        audio.insert(audio.end(), part, part + count);
    }
    return audio;
}

std::vector<float> Demodulate(std::uint32_t rate, const std::vector<float>& samples) {
    COrvaAnalogDemodulator demodulator;
    demodulator.SetSampleRate(rate);
    return Demodulate(demodulator, samples, 2400);
}

/// The low-pass of 6000 Hz by its formula: a windowed sinc of 255 taps with a sum of 1. The tap of the newest
/// sample, a 256th, is 0.
std::vector<double> ChannelTaps(std::uint32_t rate) {
    constexpr int kCentre = 127;
    const double edge = 6000.0 / (rate / 2.0);
    std::vector<double> taps(256, 0.0);
    double sum = 0.0;
    for (int i = 0; i <= 2 * kCentre; ++i) {
        const int k = i - kCentre;
        const double x = kCycle * i / (2.0 * kCentre);
        const double blackmanHarris =
            0.35875 - 0.48829 * std::cos(x) + 0.14128 * std::cos(2 * x) - 0.01168 * std::cos(3 * x);
        const double place = k * std::numbers::pi;
        const double tap = k == 0 ? edge : std::sin(place * edge) / place * blackmanHarris;
        taps[static_cast<std::size_t>(i) + 1] = tap;
        sum += tap;
    }
    for (double& tap : taps) {
        tap /= sum;
    }
    return taps;
}

/// Pairs behind the mixer and the low-pass, in double precision.
std::vector<std::complex<double>> FilteredPairs(const std::vector<float>& samples, std::uint32_t rate) {
    const std::vector<double> taps = ChannelTaps(rate);
    std::vector<std::complex<double>> mixed(samples.size());
    for (std::size_t n = 0; n < samples.size(); ++n) {
        const double phase = std::fmod(kOscillatorHz * static_cast<double>(n), rate) / rate * kCycle;
        // A quarter of a cycle further on, cosine is minus sine.
        mixed[n] = {samples[n] * std::cos(phase), samples[n] * -std::sin(phase)};
    }
    std::vector<std::complex<double>> filtered(samples.size());
    for (std::size_t n = 0; n < samples.size(); ++n) {
        for (std::size_t k = 0; k < taps.size() && k <= n; ++k) {
            filtered[n] += taps[k] * mixed[n - k];
        }
    }
    return filtered;
}

/// The step between two pairs, before, now.
using Discriminator = double (*)(std::complex<double>, std::complex<double>);

/// The demodulator's: against the present power.
double ArctangentStep(std::complex<double> before, std::complex<double> now) {
    return std::atan2(before.imag() * now.real() - now.imag() * before.real(), std::norm(now));
}

/// One without distortion: the angle itself, with the demodulator's sign.
double PhaseStep(std::complex<double> before, std::complex<double> now) {
    return std::arg(before * std::conj(now));
}

/// The angle as the demodulator's arctangent gives it for a carrier of steady amplitude.
double CompressedStep(std::complex<double> before, std::complex<double> now) {
    return std::atan(std::sin(PhaseStep(before, now)));
}

/// Audio of filtered pairs by the formulas, in double precision.
std::vector<double> AudioOf(const std::vector<std::complex<double>>& pairs, std::uint32_t rate,
                            Discriminator discriminator) {
    const double pole = std::exp(-10.0 * std::numbers::pi / rate);
    std::complex<double> before = 0.0;
    double state = 0.0;
    double last = 0.0;
    std::vector<double> audio;
    for (const std::complex<double> pair : pairs) {
        const double step = discriminator(before, pair);
        before = pair;
        state = state * pole + (step - last) * (pole + 1.0) / 2.0;
        last = step;
        audio.push_back(std::clamp(state, -3.0, 3.0));
    }
    return audio;
}

/// Demodulator by its formulas, in double precision.
std::vector<double> Model(const std::vector<float>& samples, std::uint32_t rate) {
    return AudioOf(FilteredPairs(samples, rate), rate, ArctangentStep);
}

template <class Sample>
double ErrorInDb(const std::vector<Sample>& audio, const std::vector<double>& expected,
                 std::size_t from = 0) {
    double error = 0.0;
    double power = 0.0;
    for (std::size_t n = from; n < audio.size(); ++n) {
        error += std::pow(audio[n] - expected[n], 2);
        power += expected[n] * expected[n];
    }
    return 10.0 * std::log10(error / power);
}

/// Amplitude of `hz` over whole cycles of the audio's last part.
double AmplitudeAt(const std::vector<float>& audio, double hz, int rate, std::size_t count) {
    std::complex<double> sum = 0.0;
    const std::size_t begin = audio.size() - count;
    for (std::size_t n = 0; n < count; ++n) {
        sum +=
            std::polar(static_cast<double>(audio[begin + n]), -kCycle * hz * static_cast<double>(n) / rate);
    }
    return 2.0 * std::abs(sum) / static_cast<double>(count);
}

constexpr double kModelSeconds = test::kSanitizedBuild ? 0.1 : 0.5;

} // namespace

TEST(COrvaAnalogDemodulator, Defaults) {
    const COrvaAnalogDemodulator demodulator;
    EXPECT_EQ(Inspector::Gain(demodulator), 1.0F);
    EXPECT_EQ(Inspector::MixStep(demodulator), 12000U);
    EXPECT_EQ(Inspector::QuarterCycle(demodulator), 12000U);
    EXPECT_FALSE(Inspector::Ready(demodulator));
    EXPECT_EQ(Inspector::Pole(demodulator), static_cast<float>(std::exp(-31.41592653589793 / 48000)));
    EXPECT_EQ(Inspector::Feed(demodulator),
              static_cast<float>((std::exp(-31.41592653589793 / 48000) + 1.0) / 2.0));
}

TEST(COrvaAnalogDemodulator, BuildsForItsRate) {
    for (const std::uint32_t rate : {12000U, 44100U, 48000U, 64000U, 96001U}) {
        COrvaAnalogDemodulator demodulator;
        demodulator.SetSampleRate(rate);
        const std::vector<float> samples(10, 0.1F);
        ASSERT_NE(demodulator.Process(samples.data(), 10), nullptr) << rate;
        EXPECT_EQ(Inspector::QuarterCycle(demodulator), rate >> 2) << rate;
        EXPECT_EQ(Inspector::Pole(demodulator), static_cast<float>(std::exp(-31.41592653589793 / rate)));
        EXPECT_EQ(Inspector::Phase(demodulator), 120000 % rate) << rate;
        const dsp::TFIR_F32_2CH& filter = Inspector::Filter(demodulator);
        EXPECT_EQ(filter.GetLength(), 256U);
        EXPECT_EQ(filter.GetSampleRate(), rate);
        EXPECT_EQ(filter.GetFilterType(), 1U);
        EXPECT_EQ(filter.GetHighCut(), 6000.0);
    }
}

TEST(COrvaAnalogDemodulator, GivesNothingForNothing) {
    COrvaAnalogDemodulator demodulator;
    const float sample = 0.5F;
    EXPECT_EQ(demodulator.Process(nullptr, 10), nullptr);
    EXPECT_EQ(demodulator.Process(&sample, 0), nullptr);
    EXPECT_EQ(demodulator.Process(&sample, -1), nullptr);
    EXPECT_NE(demodulator.Process(&sample, 1), nullptr);
}

TEST(COrvaAnalogDemodulator, RatesBelowTheOscillatorGiveNothing) {
    COrvaAnalogDemodulator demodulator;
    const float sample = 0.5F;
    for (const std::uint32_t rate : {0U, 1U, 8000U, 11999U}) {
        demodulator.SetSampleRate(rate);
        EXPECT_EQ(demodulator.Process(&sample, 1), nullptr) << rate;
    }
    demodulator.SetSampleRate(48000);
    EXPECT_NE(demodulator.Process(&sample, 1), nullptr);
}

TEST(COrvaAnalogDemodulator, TonesAgreeWithTheModel) {
    double worst = -1000.0;
    for (const int rate : {48000, 64000}) {
        for (int kilohertz = 1; kilohertz <= 5; ++kilohertz) {
            for (const double hz : {300.0, 1000.0}) {
                test::ToneSource tone(hz, rate);
                const std::vector<float> signal =
                    Fm(rate, 1000.0 * kilohertz, static_cast<std::size_t>(kModelSeconds * rate),
                       [&] { return tone.Next(); });
                const auto unsignedRate = static_cast<std::uint32_t>(rate);
                const double error = ErrorInDb(Demodulate(unsignedRate, signal), Model(signal, unsignedRate));
                EXPECT_LT(error, -60.0) << rate << " Hz, " << kilohertz << " kHz deviation, " << hz << " Hz";
                worst = std::max(worst, error);
            }
        }
    }
    std::cout << "[ measured ] tones differ from the model by at most " << worst << " dB\n";
}

TEST(COrvaAnalogDemodulator, SpeechAgreesWithTheModel) {
    double worst = -1000.0;
    for (const int rate : {48000, 64000}) {
        for (int kilohertz = 1; kilohertz <= 5; ++kilohertz) {
            test::VoiceLikeNoise voice({.sampleRate = rate, .lowestFrequency = 0.0});
            const std::vector<float> signal =
                Fm(rate, 1000.0 * kilohertz, static_cast<std::size_t>(2.0 * kModelSeconds * rate),
                   [&] { return voice.Next(); });
            const auto unsignedRate = static_cast<std::uint32_t>(rate);
            const double error = ErrorInDb(Demodulate(unsignedRate, signal), Model(signal, unsignedRate));
            EXPECT_LT(error, -60.0) << rate << " Hz, " << kilohertz << " kHz deviation";
            worst = std::max(worst, error);
        }
    }
    std::cout << "[ measured ] speech differs from the model by at most " << worst << " dB\n";
}

TEST(COrvaAnalogDemodulator, StepIsTheArctangentOfTheSineOfThePhaseStepWithTheSignTurned) {
    for (const int rate : {48000, 64000}) {
        for (const double offset : {-5000.0, -3000.0, -1000.0, 0.0, 1000.0, 3000.0, 5000.0}) {
            COrvaAnalogDemodulator demodulator;
            demodulator.SetSampleRate(static_cast<std::uint32_t>(rate));
            Demodulate(demodulator, Carrier(rate, offset, 0.1), 2400);
            EXPECT_NEAR(Inspector::LastStep(demodulator), -std::atan(std::sin(kCycle * offset / rate)), 1e-4)
                << rate << " Hz, offset " << offset;
        }
    }
}

TEST(COrvaAnalogDemodulator, AudioIsNegativeWhileTheCarrierIsAbove) {
    COrvaAnalogDemodulator demodulator;
    Demodulate(demodulator, Carrier(48000, 0.0, 0.1), 2400);
    EXPECT_LT(Demodulate(demodulator, Carrier(48000, 1000.0, 0.02), 2400).back(), -0.05F);
}

TEST(COrvaAnalogDemodulator, LargeDeviationIsCompressed) {
    struct Row {
        int rate;
        double deviation;
        double loss;     ///< of the tone against the deviation [dB]
        double harmonic; ///< third to first; the channel filter has a part in it
    };
    for (const Row& row : {Row{48000, 1000.0, -0.06, 0.002}, Row{48000, 3000.0, -0.47, 0.018},
                           Row{48000, 5000.0, -1.20, 0.047}, Row{64000, 1000.0, -0.03, 0.001},
                           Row{64000, 3000.0, -0.27, 0.010}, Row{64000, 5000.0, -0.71, 0.031}}) {
        test::ToneSource tone(400.0, row.rate);
        const auto rate = static_cast<std::uint32_t>(row.rate);
        const std::vector<float> audio =
            Demodulate(rate, Fm(row.rate, row.deviation, rate, [&] { return tone.Next(); }));
        const double first = AmplitudeAt(audio, 400.0, row.rate, rate / 2);
        const double third = AmplitudeAt(audio, 1200.0, row.rate, rate / 2);
        const double linear = kCycle * row.deviation / row.rate;
        EXPECT_NEAR(20.0 * std::log10(first / linear), row.loss, 0.02) << row.rate << ", " << row.deviation;
        EXPECT_NEAR(third / first, row.harmonic, 0.001) << row.rate << ", " << row.deviation;
    }
}

TEST(COrvaAnalogDemodulator, SpeechIsDistortedAsMuchAsTheArctangentOfTheSineDoesIt) {
    // Against a discriminator without distortion, once the blocker has forgotten the begin.
    constexpr double kBlockerSeconds = 0.3;
    for (const int rate : {48000, 64000}) {
        const auto unsignedRate = static_cast<std::uint32_t>(rate);
        const auto settled = static_cast<std::size_t>(kBlockerSeconds * rate);
        for (int kilohertz = 1; kilohertz <= 5; ++kilohertz) {
            test::VoiceLikeNoise voice({.sampleRate = rate, .lowestFrequency = 0.0});
            const std::vector<float> signal =
                Fm(rate, 1000.0 * kilohertz, settled + static_cast<std::size_t>(2.0 * kModelSeconds * rate),
                   [&] { return voice.Next(); });
            const auto pairs = FilteredPairs(signal, unsignedRate);
            const std::vector<double> clean = AudioOf(pairs, unsignedRate, PhaseStep);
            const double measured = ErrorInDb(Demodulate(unsignedRate, signal), clean, settled);
            const double predicted = ErrorInDb(AudioOf(pairs, unsignedRate, CompressedStep), clean, settled);
            std::cout << "[ measured ] speech at " << rate << " Hz, deviation " << kilohertz
                      << " kHz: distortion " << measured << " dB\n";
            // A little more at 5 kHz, where the channel filter makes the amplitude vary.
            EXPECT_NEAR(measured, predicted, 1.0) << rate << " Hz, " << kilohertz << " kHz deviation";
        }
    }
}

TEST(COrvaAnalogDemodulator, BlockerRemovesAnyConstantOffset) {
    for (const double offset : {-4000.0, -1.0, 500.0, 4000.0}) {
        COrvaAnalogDemodulator demodulator;
        const std::vector<float> audio = Demodulate(demodulator, Carrier(48000, offset, 0.6), 2400);
        EXPECT_NE(Inspector::LastStep(demodulator), 0.0F) << offset;
        for (std::size_t n = 24000; n < audio.size(); ++n) {
            ASSERT_NEAR(audio[n], 0.0F, 1e-3F) << offset << " sample " << n;
        }
    }
}

TEST(COrvaAnalogDemodulator, BlockerDecaysWithAFiveHertzCorner) {
    const std::vector<float> audio = Demodulate(48000, Carrier(48000, 2000.0, 0.3));
    for (std::size_t n = 1000; n < 6000; n += 1000) {
        EXPECT_NEAR(audio[n + 1000] / audio[n], std::exp(-kCycle * 5.0 * 1000.0 / 48000.0), 2e-3) << n;
    }
}

TEST(COrvaAnalogDemodulator, SilenceGivesZero) {
    EXPECT_EQ(Demodulate(48000, std::vector<float>(4800, 0.0F)), std::vector<float>(4800, 0.0F));
}

TEST(COrvaAnalogDemodulator, GainScalesTheAudio) {
    test::ToneSource tone(1000.0, 48000.0);
    const std::vector<float> signal = Fm(48000, 2000.0, 9600, [&] { return tone.Next(); });
    const std::vector<float> plain = Demodulate(48000, signal);
    COrvaAnalogDemodulator demodulator;
    demodulator.SetGain(2.0F);
    const std::vector<float> louder = Demodulate(demodulator, signal, 2400);
    for (std::size_t n = 0; n < plain.size(); ++n) {
        EXPECT_EQ(louder[n], 2.0F * plain[n]) << n;
    }
}

TEST(COrvaAnalogDemodulator, AudioIsCutAtThree) {
    test::ToneSource tone(1000.0, 48000.0);
    const std::vector<float> signal = Fm(48000, 5000.0, 9600, [&] { return tone.Next(); });
    const std::vector<float> plain = Demodulate(48000, signal);
    COrvaAnalogDemodulator demodulator;
    demodulator.SetGain(20.0F);
    const std::vector<float> cut = Demodulate(demodulator, signal, 2400);
    int low = 0;
    int high = 0;
    for (std::size_t n = 0; n < plain.size(); ++n) {
        EXPECT_EQ(cut[n], std::clamp(20.0F * plain[n], -3.0F, 3.0F)) << n;
        low += cut[n] == -3.0F ? 1 : 0;
        high += cut[n] == 3.0F ? 1 : 0;
    }
    EXPECT_GT(low, 1000);
    EXPECT_GT(high, 1000);
}

TEST(COrvaAnalogDemodulator, SplitsAnywhere) {
    test::VoiceLikeNoise voice({.sampleRate = 48000});
    const std::vector<float> signal = Fm(48000, 3000.0, 12000, [&] { return voice.Next(); });
    const std::vector<float> expected = Demodulate(48000, signal);
    for (const std::size_t piece : {std::size_t{1}, std::size_t{2}, std::size_t{7}, std::size_t{1023}}) {
        COrvaAnalogDemodulator demodulator;
        EXPECT_EQ(Demodulate(demodulator, signal, piece), expected) << piece;
    }
}

TEST(COrvaAnalogDemodulator, OscillatorGoesWhereItIsTold) {
    COrvaAnalogDemodulator demodulator;
    demodulator.SetMixStep(9000);
    Demodulate(demodulator, Carrier(48000, -3000.0, 0.1), 2400);
    EXPECT_NEAR(Inspector::LastStep(demodulator), 0.0F, 1e-4F);
    demodulator.SetMixStep(48000 + 9000);
    Demodulate(demodulator, Carrier(48000, -3000.0, 0.1), 2400);
    EXPECT_NEAR(Inspector::LastStep(demodulator), 0.0F, 1e-4F);
}

TEST(COrvaAnalogDemodulator, ChannelEndsAtSixKilohertz) {
    for (const int rate : {48000, 64000}) {
        // A weak signal in the channel wins over a strong one beside it.
        const std::vector<float> inside = Carrier(rate, 1000.0, 0.1);
        const std::vector<float> beside = Carrier(rate, 7500.0, 0.1);
        std::vector<float> both(inside.size());
        std::transform(inside.begin(), inside.end(), beside.begin(), both.begin(),
                       [](float a, float b) { return 0.05F * a + b; });
        COrvaAnalogDemodulator demodulator;
        demodulator.SetSampleRate(static_cast<std::uint32_t>(rate));
        Demodulate(demodulator, both, 2400);
        EXPECT_NEAR(Inspector::LastStep(demodulator), -std::atan(std::sin(kCycle * 1000.0 / rate)), 1e-2)
            << rate;
    }
}

TEST(COrvaAnalogDemodulator, ResetStartsAnew) {
    test::ToneSource tone(1000.0, 48000.0);
    const std::vector<float> signal = Fm(48000, 3000.0, 4801, [&] { return tone.Next(); });
    const std::vector<float> expected = Demodulate(48000, signal);
    COrvaAnalogDemodulator demodulator;
    Demodulate(demodulator, signal, 2400);
    EXPECT_NE(Inspector::Phase(demodulator), 0U);
    demodulator.Reset();
    EXPECT_EQ(Inspector::Phase(demodulator), 0U);
    EXPECT_EQ(Demodulate(demodulator, signal, 2400), expected);
}

TEST(COrvaAnalogDemodulator, ANewRateBuildsAnewAndAnEqualOneDoesNot) {
    COrvaAnalogDemodulator demodulator;
    Demodulate(demodulator, Carrier(48000, 0.0, 0.01), 2400);
    demodulator.SetSampleRate(48000);
    EXPECT_TRUE(Inspector::Ready(demodulator));
    demodulator.SetSampleRate(64000);
    EXPECT_FALSE(Inspector::Ready(demodulator));
    demodulator.Reset();
    const std::vector<float> signal = Carrier(64000, 1500.0, 0.1);
    EXPECT_EQ(Demodulate(demodulator, signal, 2400), Demodulate(64000, signal));
}

TEST(COrvaAnalogDemodulator, AWarmBlockAllocatesNothing) {
    COrvaAnalogDemodulator demodulator;
    const std::vector<float> block(2400, 0.25F);
    demodulator.Process(block.data(), 2400);
    const std::uint64_t before = test::CountAllocations();
    for (int i = 0; i < 10; ++i) {
        demodulator.Process(block.data(), i % 2 == 0 ? 2400 : 100);
    }
    EXPECT_EQ(test::CountAllocations(), before);
}

TEST(COrvaAnalogDemodulator, GivesNothingWithoutMemoryAndRecovers) {
    const std::vector<float> block(2400, 0.25F);
    bool struck = true;
    for (int successes = 0; struck; ++successes) {
        auto demodulator = std::make_unique<COrvaAnalogDemodulator>();
        {
            const test::AllocationFailure failure(successes);
            const float* audio = demodulator->Process(block.data(), 2400);
            struck = failure.HasStruck();
            EXPECT_EQ(audio == nullptr, struck) << "after " << successes;
        }
        EXPECT_NE(demodulator->Process(block.data(), 2400), nullptr) << "after " << successes;
    }
}

} // namespace orva::p25
