#include "tests/support/C4fmModulator.h"

#include "tests/support/C4fmPulse.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace orva::test {

namespace {

constexpr double kFullScale = 32767.0;
constexpr double kCycle = 2.0 * std::numbers::pi;

// Deviation of white noise over half the sample rate, of which `kNoiseBandwidth` holds the stated share of
// the carrier's power.
double NoiseDeviation(const ModulatorSettings& settings) {
    if (!settings.snrDb) {
        return 0.0;
    }
    const double carrierPower = 0.5 * settings.amplitude * settings.amplitude;
    const double noiseInBand = carrierPower / std::pow(10.0, *settings.snrDb / 10.0);
    return std::sqrt(noiseInBand * (0.5 * settings.sampleRate) / kNoiseBandwidth);
}

std::int16_t Quantise(double sample) {
    constexpr double kLowest = std::numeric_limits<std::int16_t>::min();
    constexpr double kHighest = std::numeric_limits<std::int16_t>::max();
    return static_cast<std::int16_t>(std::lrint(std::clamp(sample * kFullScale, kLowest, kHighest)));
}

} // namespace

C4fmModulator::C4fmModulator(const ModulatorSettings& modulatorSettings)
    : settings(modulatorSettings),
      samplesPerSymbol(modulatorSettings.sampleRate /
                       (kSymbolRate * (1.0 + modulatorSettings.clockErrorPpm * 1e-6))),
      noiseDeviation(NoiseDeviation(modulatorSettings)),
      noise(modulatorSettings.seed),
      stretchEnd(modulatorSettings.symbolPhase) {}

void C4fmModulator::AddGap(double seconds, Gap kind) {
    stretchEnd += seconds * settings.sampleRate;
    for (; static_cast<double>(sampleCount) < stretchEnd; ++sampleCount) {
        if (kind == Gap::Noise) {
            AppendSample(0.0);
        } else {
            samples.push_back(0);
        }
    }
}

void C4fmModulator::Transmit(std::string_view dibits) {
    const double begin = stretchEnd;
    stretchEnd += static_cast<double>(dibits.size()) * samplesPerSymbol;
    const auto deviationAt = [&](double sample) {
        return DeviationAt(dibits, (sample - begin) / samplesPerSymbol);
    };
    const double carrierFrequency = settings.centreFrequency + settings.carrierOffset;
    double before = deviationAt(static_cast<double>(sampleCount) - 1.0);
    for (; static_cast<double>(sampleCount) < stretchEnd; ++sampleCount) {
        // The phase is the integral of the frequency; Simpson's rule over the step between two samples.
        const auto now = static_cast<double>(sampleCount);
        const double here = deviationAt(now);
        const double frequency = carrierFrequency + (before + 4.0 * deviationAt(now - 0.5) + here) / 6.0;
        before = here;
        phase = std::remainder(phase + kCycle * frequency / settings.sampleRate, kCycle);
        AppendSample(settings.amplitude * std::cos(phase));
    }
}

std::vector<std::int16_t> C4fmModulator::Take() {
    return std::exchange(samples, {});
}

void C4fmModulator::AppendSample(double carrier) {
    const double sample = noiseDeviation > 0.0 ? carrier + noiseDeviation * noise.Gaussian() : carrier;
    samples.push_back(Quantise(sample));
}

} // namespace orva::test
