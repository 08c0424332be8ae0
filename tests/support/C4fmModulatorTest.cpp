#include "tests/support/C4fmModulator.h"

#include "tests/support/C4fmPulse.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <string>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

constexpr double kCycle = 2.0 * std::numbers::pi;

std::string RandomDibits(std::size_t count) {
    RandomSource random(12);
    std::string dibits;
    for (std::size_t i = 0; i < count; ++i) {
        dibits.push_back(static_cast<char>('0' + random.Below(4)));
    }
    return dibits;
}

// Continuous phase of the signal against a carrier of `carrier` hertz, in cycles: mixed down, cleared of the
// mirror image by a long low-pass, unwrapped.
std::vector<double> PhaseTrack(const std::vector<std::int16_t>& samples, double rate, double carrier) {
    constexpr int kHalf = 60;
    constexpr double kCutOff = 11000.0;
    std::vector<double> taps;
    for (int n = -kHalf; n <= kHalf; ++n) {
        const double x = kCycle * kCutOff / rate * n;
        const double window = 0.42 + 0.5 * std::cos(std::numbers::pi * n / (kHalf + 1)) +
                              0.08 * std::cos(kCycle * n / (kHalf + 1));
        taps.push_back((n == 0 ? 1.0 : std::sin(x) / x) * window);
    }
    std::vector<std::complex<double>> mixed;
    for (std::size_t n = 0; n < samples.size(); ++n) {
        mixed.push_back(
            std::polar(static_cast<double>(samples[n]), -kCycle * carrier / rate * static_cast<double>(n)));
    }

    std::vector<double> track(samples.size(), 0.0);
    std::complex<double> previous;
    for (std::size_t n = kHalf; n + kHalf < mixed.size(); ++n) {
        std::complex<double> sum;
        for (std::size_t k = 0; k < taps.size(); ++k) {
            sum += mixed[n + k - kHalf] * taps[k];
        }
        track[n] = track[n - 1] + (previous == 0.0 ? 0.0 : std::arg(sum * std::conj(previous)) / kCycle);
        previous = sum;
    }
    return track;
}

// The phase between samples, by the cubic through four of them.
double At(const std::vector<double>& track, double position) {
    const auto index = static_cast<std::size_t>(position);
    const double x = position - static_cast<double>(index);
    return -x * (x - 1.0) * (x - 2.0) / 6.0 * track[index - 1] +
           (x + 1.0) * (x - 1.0) * (x - 2.0) / 2.0 * track[index] -
           (x + 1.0) * x * (x - 2.0) / 2.0 * track[index + 1] +
           (x + 1.0) * x * (x - 1.0) / 6.0 * track[index + 2];
}

// Greatest difference, over the symbols well inside, of the mean frequency over a symbol from its nominal
// deviation.
double WorstMeanDeviation(const std::vector<double>& track, const std::string& dibits, double begin,
                          double samplesPerSymbol, double rate) {
    double worst = 0.0;
    for (std::size_t symbol = 20; symbol + 20 < dibits.size(); ++symbol) {
        const double from = begin + static_cast<double>(symbol) * samplesPerSymbol;
        const double cycles = At(track, from + samplesPerSymbol) - At(track, from);
        const double mean = cycles * rate / samplesPerSymbol;
        worst = std::max(worst, std::abs(mean - NominalDeviation(dibits[symbol])));
    }
    return worst;
}

double Power(const std::vector<std::int16_t>& samples) {
    double sum = 0.0;
    for (const std::int16_t sample : samples) {
        sum += static_cast<double>(sample) * sample;
    }
    return sum / static_cast<double>(samples.size());
}

class C4fmModulatorAtRate : public testing::TestWithParam<int> {};

TEST_P(C4fmModulatorAtRate, MeanFrequencyOverEverySymbolIsNominal) {
    const double rate = GetParam();
    const std::string dibits = RandomDibits(500);
    C4fmModulator modulator({.sampleRate = GetParam(), .amplitude = 0.9});
    modulator.Transmit(dibits);
    const double samplesPerSymbol = rate / 4800.0;
    const double worst = WorstMeanDeviation(PhaseTrack(modulator.Samples(), rate, 12000.0), dibits, 0.0,
                                            samplesPerSymbol, rate);
    RecordProperty("worst_hz", std::to_string(worst));
    EXPECT_LT(worst, 5.0);
}

TEST_P(C4fmModulatorAtRate, CarrierOffsetShiftsTheSpectrumUpward) {
    const double rate = GetParam();
    const std::string dibits = RandomDibits(500);
    C4fmModulator modulator({.sampleRate = GetParam(), .carrierOffset = 1500.0, .amplitude = 0.9});
    modulator.Transmit(dibits);
    EXPECT_LT(
        WorstMeanDeviation(PhaseTrack(modulator.Samples(), rate, 13500.0), dibits, 0.0, rate / 4800.0, rate),
        5.0);
}

TEST_P(C4fmModulatorAtRate, PositiveClockErrorMakesSymbolsShorter) {
    const double rate = GetParam();
    const std::string dibits = RandomDibits(4800);
    C4fmModulator modulator({.sampleRate = GetParam(), .clockErrorPpm = 1000.0, .amplitude = 0.9});
    modulator.Transmit(dibits);
    const double samplesPerSymbol = rate / 4804.8;
    EXPECT_NEAR(static_cast<double>(modulator.Samples().size()), samplesPerSymbol * 4800.0, 1.0);
    EXPECT_LT(WorstMeanDeviation(PhaseTrack(modulator.Samples(), rate, 12000.0), dibits, 0.0,
                                 samplesPerSymbol, rate),
              5.0);
}

TEST_P(C4fmModulatorAtRate, SymbolPhaseDelaysTheSymbols) {
    const double rate = GetParam();
    const std::string dibits = RandomDibits(500);
    C4fmModulator modulator({.sampleRate = GetParam(), .symbolPhase = 0.6, .amplitude = 0.9});
    modulator.Transmit(dibits);
    const std::vector<double> track = PhaseTrack(modulator.Samples(), rate, 12000.0);
    EXPECT_LT(WorstMeanDeviation(track, dibits, 0.6, rate / 4800.0, rate), 5.0);
    EXPECT_GT(WorstMeanDeviation(track, dibits, 0.0, rate / 4800.0, rate), 30.0);
}

TEST_P(C4fmModulatorAtRate, NoiseInThe12500HertzBandHasTheStatedRatio) {
    ModulatorSettings settings{.sampleRate = GetParam(), .amplitude = 0.3, .snrDb = 10.0};
    C4fmModulator modulator(settings);
    modulator.AddGap(5.0);
    const double carrierPower = 0.5 * 0.3 * 0.3 * 32767.0 * 32767.0;
    const double noiseInBand = Power(modulator.Samples()) * 12500.0 / (0.5 * GetParam());
    EXPECT_NEAR(10.0 * std::log10(carrierPower / noiseInBand), 10.0, 0.1);
}

INSTANTIATE_TEST_SUITE_P(Rates, C4fmModulatorAtRate, testing::Values(48000, 64000));

TEST(C4fmModulator, AmplitudeIsAShareOfFullScale) {
    C4fmModulator modulator({.amplitude = 0.25});
    modulator.Transmit(RandomDibits(500));
    const auto [least, greatest] =
        std::minmax_element(modulator.Samples().begin(), modulator.Samples().end());
    EXPECT_NEAR(*greatest, 8192, 2);
    EXPECT_NEAR(*least, -8192, 2);
    EXPECT_NEAR(Power(modulator.Samples()), 0.5 * 8191.75 * 8191.75, 0.01 * 0.5 * 8191.75 * 8191.75);
}

TEST(C4fmModulator, SaturatesInsteadOfWrapping) {
    C4fmModulator modulator({.amplitude = 1.0, .snrDb = 0.0});
    modulator.Transmit(RandomDibits(500));
    const auto [least, greatest] =
        std::minmax_element(modulator.Samples().begin(), modulator.Samples().end());
    EXPECT_EQ(*greatest, 32767);
    EXPECT_EQ(*least, -32768);
}

TEST(C4fmModulator, SilentGapIsDigitalZero) {
    C4fmModulator modulator({.snrDb = 10.0});
    modulator.AddGap(0.1, C4fmModulator::Gap::Silence);
    ASSERT_EQ(modulator.Samples().size(), 4800u);
    EXPECT_EQ(Power(modulator.Samples()), 0.0);
}

TEST(C4fmModulator, GapOfACleanSignalIsDigitalZero) {
    C4fmModulator modulator({});
    modulator.AddGap(0.1);
    EXPECT_EQ(modulator.Samples().size(), 4800u);
    EXPECT_EQ(Power(modulator.Samples()), 0.0);
}

TEST(C4fmModulator, NoiseRunsOnInAGap) {
    C4fmModulator modulator({.amplitude = 0.5, .snrDb = 20.0});
    modulator.Transmit(RandomDibits(480));
    const std::vector<std::int16_t> carrier = modulator.Take();
    modulator.AddGap(0.1);
    EXPECT_LT(Power(modulator.Samples()), 0.05 * Power(carrier));
    EXPECT_GT(Power(modulator.Samples()), 0.0);
}

TEST(C4fmModulator, TakeMovesThePieceOut) {
    C4fmModulator whole({.snrDb = 20.0});
    C4fmModulator pieces({.snrDb = 20.0});
    const std::string first = RandomDibits(100);
    whole.Transmit(first);
    whole.AddGap(0.01);
    whole.Transmit(first);

    std::vector<std::int16_t> joined;
    const auto take = [&] {
        const std::vector<std::int16_t> piece = pieces.Take();
        joined.insert(joined.end(), piece.begin(), piece.end());
    };
    pieces.Transmit(first);
    take();
    pieces.AddGap(0.01);
    take();
    pieces.Transmit(first);
    take();
    EXPECT_EQ(joined, whole.Samples());
}

TEST(C4fmModulator, SeedChoosesTheNoise) {
    const auto noise = [](std::uint64_t seed) {
        C4fmModulator modulator({.snrDb = 10.0, .seed = seed});
        modulator.AddGap(0.01);
        return modulator.Take();
    };
    EXPECT_EQ(noise(1), noise(1));
    EXPECT_NE(noise(1), noise(2));
}

TEST(C4fmModulator, SpectrumKeepsOutOfTheNextChannel) {
    // Power further than 9.5 kHz from the carrier, where a receiver of the next channel begins to listen; by
    // a discrete Fourier transform of a windowed stretch.
    C4fmModulator modulator({.amplitude = 0.9});
    modulator.Transmit(RandomDibits(300));
    const std::vector<std::int16_t>& samples = modulator.Samples();
    constexpr std::size_t kLength = 1200;
    constexpr std::size_t kFirst = 600;
    double inside = 0.0;
    double outside = 0.0;
    for (std::size_t bin = 1; bin < kLength / 2; ++bin) {
        std::complex<double> sum;
        for (std::size_t n = 0; n < kLength; ++n) {
            const double hann = 0.5 - 0.5 * std::cos(kCycle * static_cast<double>(n) / kLength);
            sum += std::polar(hann * samples[kFirst + n],
                              -kCycle * static_cast<double>(bin * n % kLength) / kLength);
        }
        const double hz = static_cast<double>(bin) * 48000.0 / kLength;
        (std::abs(hz - 12000.0) < 9500.0 ? inside : outside) += std::norm(sum);
    }
    EXPECT_LT(10.0 * std::log10(outside / inside), -60.0);
}

} // namespace
} // namespace orva::test
