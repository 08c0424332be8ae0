#include "voice/VoicedSynthesis.h"

#include "voice/FixedPoint.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

constexpr double kStep = 16384.0; // one sample step in the buffer
constexpr double kTwoPi = 2.0 * std::numbers::pi;

ImbeDecoderState FreshState() {
    ImbeDecoderState state;
    ImbeInit(state);
    state.unvoicedLength = kNominalFrameLength;
    state.voicedLength = kNominalFrameLength;
    return state;
}

ImbeFrameParameters VoicedRecord(int pitchCode, double level) {
    ImbeFrameParameters record{};
    record.kind = 1;
    record.harmonics = static_cast<std::int16_t>(((pitchCode / 4 + 10) * 60648) >> 16);
    record.fundamental = static_cast<std::int16_t>(((1 << 23) / (4 * pitchCode + 158)) >> 1);
    int exponent = 0;
    const double mantissa = std::frexp(level, &exponent);
    record.amplitudeExponent = static_cast<std::int16_t>(exponent - 15);
    std::fill_n(record.amplitudes, record.harmonics, static_cast<std::int16_t>(mantissa * 32767.0));
    std::fill_n(record.voiced, record.harmonics, std::int16_t{1});
    return record;
}

// Only the harmonics from `first` to `last` sound.
ImbeFrameParameters OnlyHarmonics(ImbeFrameParameters record, int first, int last) {
    for (int l = 1; l <= record.harmonics; ++l) {
        record.amplitudes[l - 1] = l >= first && l <= last ? record.amplitudes[l - 1] : std::int16_t{0};
    }
    return record;
}

std::vector<double> Synthesize(const ImbeFrameParameters& record, int count, ImbeDecoderState& state) {
    std::vector<std::int32_t> out(static_cast<std::size_t>(std::max(count, 105)), 0);
    AddVoiced(record, out.data(), count, state);
    state.lastFrame = record;
    std::vector<double> samples;
    for (int i = 0; i < count; ++i) {
        samples.push_back(out[static_cast<std::size_t>(i)] / kStep);
    }
    return samples;
}

double Amplitude(const ImbeFrameParameters& record, int l) {
    return std::ldexp(record.amplitudes[l - 1], record.amplitudeExponent);
}

double Cosine(double cycles) {
    return std::cos(kTwoPi * cycles);
}

double Principal(double cycles) {
    return cycles - std::round(cycles);
}

// The synthesis in real numbers: exact phases, a table of 128 points with linear interpolation.
class ExactSynthesis {
public:
    explicit ExactSynthesis(const ImbeFrameParameters& silence) : last(silence) {}

    std::vector<double> Next(const ImbeFrameParameters& record, const std::int16_t* dispersion, int count) {
        std::vector<double> out(static_cast<std::size_t>(std::max(count, 105)), 0.0);
        const double fo = last.fundamental / 524288.0;
        const double fn = record.fundamental / 524288.0;
        // The running phase is truncated to Q15, the frequencies are halved apart: both weigh l-fold.
        psi = (((record.fundamental >> 1) + (last.fundamental >> 1)) * count * 2 + psi * 32) % (1 << 20) / 32;
        const auto target = [&](int l) { return (l * psi + dispersion[l - 1]) / 32768.0; };
        const bool close = std::fabs(fn - fo) < fn * count / 800.0;
        for (int l = 1; l <= 7; ++l) {
            const double from = phases[static_cast<std::size_t>(l)];
            const double to = target(l);
            phases[static_cast<std::size_t>(l)] = to;
            const bool was = last.voiced[l - 1] != 0;
            const bool is = record.voiced[l - 1] != 0;
            const double ao = Amplitude(last, l);
            const double an = Amplitude(record, l);
            for (int k = 0; k < std::max(count, 105); ++k) {
                double& sample = out[static_cast<std::size_t>(k)];
                const double rise = std::clamp((k - 55) / 50.0, 0.0, 1.0);
                if (was && is && close) {
                    const double slope = l * (fn - fo) / count;
                    const double error = Principal(to - from - l * (fo + fn) / 2.0 * count);
                    const double start = l * fo - slope / 2.0 + error / count;
                    sample +=
                        (ao + (an - ao) * k / count) * Cosine(from + k * start + slope * k * (k - 1) / 2.0);
                    continue;
                }
                sample += was ? ao * (1.0 - rise) * Cosine(from + k * l * fo) : 0.0;
                sample += is ? an * rise * Cosine(to - (count - k) * l * fn) : 0.0;
            }
        }
        const auto oldTable = table;
        for (std::size_t i = 0; i <= 128; ++i) {
            table[i] = 0.0;
            for (int l = 8; l <= record.harmonics; ++l) {
                table[i] += record.voiced[l - 1] != 0
                                ? Amplitude(record, l) * Cosine(l * static_cast<double>(i % 128) / 128.0 +
                                                                std::floor(target(l) * 512.0) / 512.0)
                                : 0.0;
            }
        }
        for (int k = 0; k < count; ++k) {
            const double rise = std::clamp((k - 55) / 50.0, 0.0, 1.0);
            out[static_cast<std::size_t>(k)] +=
                Read(oldTable, k * fo) * (1.0 - rise) + Read(table, (k - count) * fn) * rise;
        }
        last = record;
        out.resize(static_cast<std::size_t>(count));
        return out;
    }

private:
    using Table = std::array<double, 129>;

    static double Read(const Table& wave, double cycles) {
        const double position = (cycles - std::floor(cycles)) * 128.0;
        const auto index = std::min<std::size_t>(static_cast<std::size_t>(position), 127);
        return wave[index] + (position - static_cast<double>(index)) * (wave[index + 1] - wave[index]);
    }

    ImbeFrameParameters last;
    int psi = 0;
    std::array<double, 8> phases{};
    Table table{};
};

double SignalToErrorDb(const std::vector<double>& expected, const std::vector<double>& actual) {
    double signal = 0.0;
    double error = 0.0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        signal += expected[i] * expected[i];
        error += std::pow(actual[i] - expected[i], 2.0);
    }
    return 10.0 * std::log10(std::max(signal, 1e-9) / std::max(error, 1e-30));
}

TEST(VoicedSynthesis, MatchesTheFormulasOnGlidesJumpsAndVoicingChanges) {
    std::mt19937 random(40);
    for (int trial = 0; trial < 20; ++trial) {
        ImbeDecoderState state = FreshState();
        ExactSynthesis exact(state.lastFrame);
        int pitchCode = static_cast<int>(random() % 208);
        for (int frame = 0; frame < 12; ++frame) {
            pitchCode = frame % 5 == 4 ? static_cast<int>(random() % 208)
                                       : std::clamp(pitchCode + static_cast<int>(random() % 13) - 6, 0, 207);
            ImbeFrameParameters record = VoicedRecord(pitchCode, 600.0 + static_cast<double>(random() % 800));
            for (int l = 0; l < record.harmonics; ++l) {
                record.amplitudes[l] =
                    static_cast<std::int16_t>(record.amplitudes[l] / (1 + static_cast<int>(random() % 4)));
                record.voiced[l] = static_cast<std::int16_t>(random() % 4 == 0 ? 0 : 1);
                state.phaseDispersion[l] = static_cast<std::int16_t>(random());
            }
            const auto expected = exact.Next(record, state.phaseDispersion, 160);
            const auto actual = Synthesize(record, 160, state);
            // The oscillators' truncated table index limits the ratio.
            ASSERT_GT(SignalToErrorDb(expected, actual), 36.0) << "trial " << trial << ", frame " << frame;
        }
    }
}

TEST(VoicedSynthesis, MatchesTheFormulasForEveryLength) {
    for (int count = 103; count <= 205; ++count) {
        ImbeDecoderState state = FreshState();
        ExactSynthesis exact(state.lastFrame);
        for (const int pitchCode : {60, 64, 110}) {
            const ImbeFrameParameters record = VoicedRecord(pitchCode, 700.0);
            const auto expected = exact.Next(record, state.phaseDispersion, count);
            const auto actual = Synthesize(record, count, state);
            ASSERT_GT(SignalToErrorDb(expected, actual), 36.0)
                << count << " samples, pitch code " << pitchCode;
        }
    }
}

TEST(VoicedSynthesis, AHarmonicIsAToneOfItsAmplitudeOnBothSidesOfTheSplit) {
    for (const int l : {1, 5, 7, 8, 9, 15}) {
        ImbeDecoderState state = FreshState();
        const ImbeFrameParameters record = OnlyHarmonics(VoicedRecord(80, 10000.0), l, l);
        ASSERT_GT(record.harmonics, 15);
        Synthesize(record, 160, state);
        Synthesize(record, 160, state);
        double power = 0.0;
        for (int frame = 0; frame < 20; ++frame) {
            for (const double sample : Synthesize(record, 160, state)) {
                power += 2.0 * sample * sample / (20.0 * 160.0);
            }
        }
        // Linear interpolation between 128 points takes a little from the higher ones.
        const double angle = std::numbers::pi * l / 128.0;
        const double loss = l < 8 ? 1.0 : std::pow(std::sin(angle) / angle, 2.0);
        EXPECT_NEAR(std::sqrt(power) / 10000.0, loss, 0.005) << "harmonic " << l;
    }
}

TEST(VoicedSynthesis, HighHarmonicsHandOverCoherentlyAtConstantPitch) {
    for (const int l : {8, 13, 20}) {
        ImbeDecoderState state = FreshState();
        const ImbeFrameParameters record = OnlyHarmonics(VoicedRecord(120, 10000.0), l, l);
        ASSERT_GE(record.harmonics, 20);
        Synthesize(record, 160, state);
        const double frequency = record.fundamental / 524288.0 * l;
        // Over every stretch of the fade the tone goes on with its phase: compare with the fit of the whole.
        std::vector<double> samples;
        for (int frame = 0; frame < 10; ++frame) {
            const auto next = Synthesize(record, 160, state);
            samples.insert(samples.end(), next.begin(), next.end());
        }
        double re = 0.0;
        double im = 0.0;
        for (std::size_t n = 0; n < samples.size(); ++n) {
            re += samples[n] * Cosine(frequency * static_cast<double>(n)) * 2.0 /
                  static_cast<double>(samples.size());
            im += samples[n] * Cosine(frequency * static_cast<double>(n) - 0.25) * 2.0 /
                  static_cast<double>(samples.size());
        }
        const double amplitude = std::hypot(re, im);
        EXPECT_GT(amplitude, 9100.0) << "harmonic " << l;
        double error = 0.0;
        for (std::size_t n = 0; n < samples.size(); ++n) {
            const double fitted = re * Cosine(frequency * static_cast<double>(n)) +
                                  im * Cosine(frequency * static_cast<double>(n) - 0.25);
            error += std::pow(samples[n] - fitted, 2.0) / static_cast<double>(samples.size());
        }
        EXPECT_LT(std::sqrt(error) / amplitude, 0.08) << "harmonic " << l;
    }
}

TEST(VoicedSynthesis, FundamentalPhaseMovesByTheMeanOfHalvedFrequencies) {
    ImbeDecoderState state = FreshState();
    std::int64_t phase = 0;
    for (const int fundamental : {26546, 4253, 12345, 8001, 16383}) {
        ImbeFrameParameters record = VoicedRecord(100, 100.0);
        record.fundamental = static_cast<std::int16_t>(fundamental);
        const std::int64_t mean = (fundamental >> 1) + (state.lastFrame.fundamental >> 1);
        phase = ((mean * 160 * 2 + phase * 32) % (1 << 20)) >> 5;
        Synthesize(record, 160, state);
        EXPECT_EQ(state.fundamentalPhase, phase) << fundamental;
    }
}

TEST(VoicedSynthesis, LowPhasesAreStoredVoicedOrNot) {
    ImbeDecoderState state = FreshState();
    ImbeFrameParameters record = VoicedRecord(100, 100.0);
    std::ranges::fill(record.voiced, std::int16_t{0});
    state.fundamentalPhase = -20000;
    for (int l = 0; l < 7; ++l) {
        state.phaseDispersion[l] = static_cast<std::int16_t>(4321 * l - 9000);
    }
    Synthesize(record, 160, state);
    for (int l = 1; l <= 7; ++l) {
        const int sum = l * state.fundamentalPhase + state.phaseDispersion[l - 1];
        EXPECT_EQ(state.lowPhases[l - 1], sum % 32768) << l; // keeps the sign
    }
}

TEST(VoicedSynthesis, HarmonicPhaseKeepsTheSign) {
    ImbeDecoderState state = FreshState();
    state.fundamentalPhase = -30000;
    EXPECT_EQ(HarmonicPhase(2, state), -60000 + 32768);
    EXPECT_EQ(HarmonicPhase(56, state), -(56 * 30000 % 32768));
    state.fundamentalPhase = 30000;
    state.phaseDispersion[2] = -32767;
    EXPECT_EQ(HarmonicPhase(3, state), (90000 - 32767) % 32768);
}

TEST(VoicedSynthesis, PitchIsCloseBelowAFifth) {
    for (const int fundamental : {4253, 10000, 20000, 26546}) {
        for (int difference = 0; difference < fundamental / 3; ++difference) {
            const double ratio = static_cast<double>(difference) / fundamental;
            const bool close = IsPitchClose(static_cast<std::int16_t>(fundamental - difference),
                                            static_cast<std::int16_t>(fundamental), 160, 160);
            if (std::fabs(ratio - 0.2) > 0.0002) {
                ASSERT_EQ(close, ratio < 0.2) << fundamental << " - " << difference;
            }
        }
    }
    // The printed integers: 20971, 6553.
    EXPECT_TRUE(IsPitchClose(8001, 10000, 160, 160));
    EXPECT_FALSE(IsPitchClose(8000, 10000, 160, 160));
    EXPECT_TRUE(IsPitchClose(11999, 10000, 160, 160));
    EXPECT_FALSE(IsPitchClose(12000, 10000, 160, 160));
    // In proportion to the number of samples.
    EXPECT_TRUE(IsPitchClose(7501, 10000, 200, 160));
    EXPECT_FALSE(IsPitchClose(7499, 10000, 200, 160));
}

TEST(VoicedSynthesis, PitchJumpsOfAFifthCrossFade) {
    for (const auto& [oldFundamental, fades] : {std::pair{8100, false}, {7900, true}, {26546, true}}) {
        ImbeDecoderState state = FreshState();
        ImbeFrameParameters record = OnlyHarmonics(VoicedRecord(100, 10000.0), 1, 1);
        record.fundamental = static_cast<std::int16_t>(oldFundamental);
        Synthesize(record, 160, state);
        // An old tone that has become silent shows what the new one does before the fade.
        std::fill_n(state.lastFrame.amplitudes, 56, std::int16_t{0});
        record.fundamental = 10000;
        const auto out = Synthesize(record, 160, state);
        const bool silent = std::all_of(out.begin(), out.begin() + 56, [](double x) { return x == 0.0; });
        EXPECT_EQ(silent, fades) << oldFundamental;
    }
}

TEST(VoicedSynthesis, AnUnvoicedFrameEndsTheOldOneOverTheFade) {
    ImbeDecoderState state = FreshState();
    ImbeFrameParameters record = VoicedRecord(100, 800.0);
    Synthesize(record, 160, state);
    Synthesize(record, 160, state);
    std::ranges::fill(record.voiced, std::int16_t{0});
    const auto out = Synthesize(record, 160, state);
    const auto loudness = [&](int from, int to) {
        double sum = 0.0;
        for (int i = from; i < to; ++i) {
            sum += std::pow(out[static_cast<std::size_t>(i)], 2.0) / (to - from);
        }
        return std::sqrt(sum);
    };
    EXPECT_GT(loudness(0, 55), 1000.0);
    EXPECT_LT(loudness(80, 105), 0.5 * loudness(0, 55));
    EXPECT_GT(loudness(55, 80), loudness(80, 105));
    EXPECT_TRUE(std::all_of(out.begin() + 105, out.end(), [](double x) { return x == 0.0; }));
    // And nothing is left for the next frame.
    const auto next = Synthesize(record, 160, state);
    EXPECT_TRUE(std::all_of(next.begin(), next.end(), [](double x) { return x == 0.0; }));
}

TEST(VoicedSynthesis, AVoicedFrameStartsBehindTheFadePoint) {
    ImbeDecoderState state = FreshState();
    const auto out = Synthesize(VoicedRecord(100, 800.0), 160, state);
    EXPECT_TRUE(std::all_of(out.begin(), out.begin() + 56, [](double x) { return x == 0.0; }));
    EXPECT_TRUE(
        std::any_of(out.begin() + 56, out.begin() + 80, [](double x) { return std::fabs(x) > 10.0; }));
}

TEST(VoicedSynthesis, UnvoicedRecordsStillMoveThePhases) {
    ImbeDecoderState state = FreshState();
    const auto out = Synthesize(state.silenceFrame, 160, state);
    EXPECT_TRUE(std::all_of(out.begin(), out.end(), [](double x) { return x == 0.0; }));
    // 250 Hz is five whole cycles in 160 samples, at 132 there is a remainder.
    EXPECT_EQ(state.fundamentalPhase, 0);
    Synthesize(state.silenceFrame, 132, state);
    EXPECT_EQ(state.fundamentalPhase, 132 * 1024 % 32768);
}

TEST(VoicedSynthesis, WaveTableHoldsOnePeriodAndTheFirstPointAgain) {
    ImbeDecoderState state = FreshState();
    ImbeFrameParameters record = OnlyHarmonics(VoicedRecord(120, 1000.0), 11, 11);
    state.phaseDispersion[10] = 5000;
    Synthesize(record, 160, state);
    EXPECT_EQ(state.waveTable[128], state.waveTable[0]);
    const int index = (HarmonicPhase(11, state) * 1024) >> 16;
    for (int i = 0; i < 128; ++i) {
        const double expected = Amplitude(record, 11) * Cosine(11.0 * i / 128.0 + index / 512.0);
        ASSERT_NEAR(std::ldexp(state.waveTable[i], state.waveTableExponent), expected, 2.0) << i;
    }
}

TEST(VoicedSynthesis, FadesBehindTheEndOfAShortBlockStayInsideTheBuffer) {
    for (const int count : {103, 104}) {
        ImbeDecoderState state = FreshState();
        std::vector<std::int32_t> out(106, 0);
        out.back() = 0x1234;
        AddVoiced(VoicedRecord(90, 900.0), out.data(), count, state);
        EXPECT_EQ(out.back(), 0x1234) << count;
        EXPECT_NE(out[102], 0) << count;
    }
}

} // namespace
} // namespace orva::voice
