#include "tests/support/FmModulator.h"

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

/// Power at `hz`, a full-scale sine being 1.
double PowerAt(const std::vector<std::int16_t>& samples, double hz, int rate) {
    std::complex<double> sum = 0.0;
    for (std::size_t n = 0; n < samples.size(); ++n) {
        sum += std::polar(samples[n] / 32767.0, -2.0 * std::numbers::pi * hz * static_cast<double>(n) / rate);
    }
    return std::norm(2.0 * sum / static_cast<double>(samples.size()));
}

double MeanSquare(const std::vector<std::int16_t>& samples) {
    double sum = 0.0;
    for (const std::int16_t sample : samples) {
        sum += std::pow(sample / 32767.0, 2);
    }
    return sum / static_cast<double>(samples.size());
}

} // namespace

TEST(FmModulator, CarrierStandsWhereAudioAndOffsetPutIt) {
    for (const int rate : {48000, 64000}) {
        for (const double level : {-1.0, 0.0, 0.5}) {
            FmModulator modulator({.sampleRate = rate, .carrierOffset = 200.0, .deviation = 2000.0});
            const auto samples =
                modulator.Modulate(std::vector<double>(static_cast<std::size_t>(rate), level));
            EXPECT_NEAR(PowerAt(samples, 12200.0 + 2000.0 * level, rate), 0.25, 1e-4)
                << rate << ", " << level;
        }
    }
}

TEST(FmModulator, PhaseAndNoiseRunThrough) {
    const FmSettings settings{.snrDb = 10.0};
    const std::vector<double> audio(1000, 0.3);
    FmModulator whole(settings);
    FmModulator parts(settings);
    auto pieces = parts.Modulate(std::span(audio).first(300));
    const auto rest = parts.Modulate(std::span(audio).subspan(300));
    pieces.insert(pieces.end(), rest.begin(), rest.end());
    EXPECT_EQ(whole.Modulate(audio), pieces);
}

TEST(FmModulator, NoiseHasTheStatedStrength) {
    for (const int rate : {48000, 64000}) {
        FmModulator modulator({.sampleRate = rate, .amplitude = 0.25, .snrDb = 10.0});
        const double inBand = MeanSquare(modulator.WithoutCarrier(200000)) * 12500.0 / (0.5 * rate);
        EXPECT_NEAR(10.0 * std::log10(0.5 * 0.25 * 0.25 / inBand), 10.0, 0.1) << rate;
    }
}

TEST(FmModulator, WithoutNoiseThereIsSilenceBehindTheCarrier) {
    FmModulator modulator({});
    EXPECT_EQ(modulator.WithoutCarrier(10), std::vector<std::int16_t>(10, 0));
}

} // namespace orva::test
