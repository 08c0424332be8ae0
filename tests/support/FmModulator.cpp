#include "tests/support/FmModulator.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace orva::test {

namespace {

constexpr double kFullScale = 32767.0;
constexpr double kCycle = 2.0 * std::numbers::pi;
constexpr double kNoiseBandwidthHz = 12500.0;

// Deviation of white noise over half the sample rate, of which the bandwidth holds the stated share of the
// carrier's power.
double NoiseDeviation(const FmSettings& settings) {
    if (!settings.snrDb) {
        return 0.0;
    }
    const double carrierPower = 0.5 * settings.amplitude * settings.amplitude;
    const double noiseInBand = carrierPower / std::pow(10.0, *settings.snrDb / 10.0);
    return std::sqrt(noiseInBand * (0.5 * settings.sampleRate) / kNoiseBandwidthHz);
}

} // namespace

FmModulator::FmModulator(const FmSettings& fmSettings)
    : settings(fmSettings), noiseDeviation(NoiseDeviation(fmSettings)), noise(fmSettings.seed) {}

std::vector<std::int16_t> FmModulator::Modulate(std::span<const double> audio) {
    const double carrier = settings.centreFrequency + settings.carrierOffset;
    std::vector<std::int16_t> samples;
    samples.reserve(audio.size());
    for (const double value : audio) {
        const double frequency = carrier + settings.deviation * value;
        phase = std::remainder(phase + kCycle * frequency / settings.sampleRate, kCycle);
        samples.push_back(AddNoise(settings.amplitude * std::cos(phase)));
    }
    return samples;
}

std::vector<std::int16_t> FmModulator::WithoutCarrier(std::size_t count) {
    std::vector<std::int16_t> samples(count);
    std::generate(samples.begin(), samples.end(), [this] { return AddNoise(0.0); });
    return samples;
}

std::int16_t FmModulator::AddNoise(double carrier) {
    const double sample = noiseDeviation > 0.0 ? carrier + noiseDeviation * noise.Gaussian() : carrier;
    return static_cast<std::int16_t>(
        std::lrint(std::clamp(sample * kFullScale, -kFullScale - 1.0, kFullScale)));
}

} // namespace orva::test
