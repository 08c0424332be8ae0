#include "tests/support/FloatVoiceConditioner.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

namespace orva::test {
namespace {

constexpr double kFullScale = 32768.0;
constexpr double kUnitsPerOctave = 2048.0;
constexpr double kTopOctaves = 30719.0 / kUnitsPerOctave;
constexpr double kLeastEnergy = 32767.0 / 32768.0 / 131072.0;

double CyclesPerSample(const FloatVoiceFrame& frame) {
    return std::ldexp(frame.fundamental, -19);
}

std::span<double> Amplitudes(FloatVoiceFrame& frame) {
    return std::span(frame.amplitudes).first(static_cast<std::size_t>(frame.harmonics));
}

double SumOfSquares(std::span<const double> values) {
    double sum = 0.0;
    for (const double value : values) {
        sum += value * value;
    }
    return sum;
}

void Scale(std::span<double> values, double factor) {
    for (double& value : values) {
        value *= factor;
    }
}

// Log amplitudes by harmonic number, continued beyond both ends for the phase filter.
class ExtendedSpectrum {
public:
    ExtendedSpectrum(const LogSpectrum& logAmplitudes, int harmonics) {
        At(0) = 0.0;
        for (int l = 1; l <= harmonics; ++l) {
            At(l) = logAmplitudes[static_cast<std::size_t>(l - 1)];
        }
        for (int l = harmonics + 1; l <= kMirror; ++l) {
            At(l) = std::max(At(l - 1) - 1477.0 / kUnitsPerOctave, -16.0);
        }
        for (int l = kMirror + 1; l <= harmonics + kReach; ++l) {
            At(l) = At(2 * kMirror - l);
        }
        for (int l = 1; l <= kReach; ++l) {
            At(-l) = At(l);
        }
    }

    // Minimum phase of harmonic l in cycles, not wrapped.
    double PhaseAt(int l) const {
        constexpr int kTaps[] = {18411, 6137, 3682, 2630, 2046, 1674, 1416, 1227, 1083, 969};
        double phase = 0.0;
        for (int j = 0; j < static_cast<int>(std::size(kTaps)); ++j) {
            // A Q15 tap, doubled, by Q11 octaves, and 2^30 to the cycle.
            phase += std::ldexp(kTaps[j], 1 + 11 - 30) * (At(l + 1 + 2 * j) - At(l - 1 - 2 * j));
        }
        return phase;
    }

private:
    static constexpr int kMirror = 64;
    static constexpr int kReach = 19;

    double& At(int l) { return values[static_cast<std::size_t>(l + kReach)]; }
    double At(int l) const { return values[static_cast<std::size_t>(l + kReach)]; }

    std::array<double, kReach + kMostHarmonics + kReach + 1> values{};
};

// Keeps the sum of amplitudes at 20480 sample steps; acts when the sum, counted in units of 64 steps, exceeds
// that.
void LimitAmplitudes(FloatVoiceFrame& frame) {
    double sum = 0.0;
    for (const double amplitude : Amplitudes(frame)) {
        sum += amplitude;
    }
    if (std::floor(sum / 64.0) > 320.0) {
        Scale(Amplitudes(frame), 20480.0 / sum);
    }
}

void ScaleUnvoiced(FloatVoiceFrame& frame) {
    const double scale = std::sqrt(256.0 * CyclesPerSample(frame));
    for (std::size_t i = 0; i < static_cast<std::size_t>(frame.harmonics); ++i) {
        frame.amplitudes[i] *= frame.voiced[i] ? 1.0 : scale;
    }
}

} // namespace

void FloatVoiceConditioner::Reset() {
    *this = FloatVoiceConditioner();
}

void FloatVoiceConditioner::Condition(FloatVoiceFrame& frame, const LogSpectrum& logAmplitudes,
                                      const VoiceErrorFigures& errors) {
    DerivePhases(frame, logAmplitudes);
    frame.amplitudes.fill(0.0);
    for (std::size_t i = 0; i < static_cast<std::size_t>(frame.harmonics); ++i) {
        frame.amplitudes[i] = std::exp2(std::clamp(logAmplitudes[i], -kTopOctaves, kTopOctaves));
    }
    EnhanceSpectrum(frame);
    ForceStrongToVoiced(frame, errors);
    LimitAmplitudes(frame);
    ScaleUnvoiced(frame);
}

void FloatVoiceConditioner::DerivePhases(const FloatVoiceFrame& frame, const LogSpectrum& logAmplitudes) {
    const double unvoicedGain = 0.5 * std::log2(256.0 * CyclesPerSample(frame));
    LogSpectrum levels = logAmplitudes;
    for (std::size_t i = 0; i < static_cast<std::size_t>(frame.harmonics); ++i) {
        if (!frame.voiced[i]) {
            levels[i] = std::clamp(levels[i] + unvoicedGain, -15.0, kTopOctaves);
        }
    }
    const ExtendedSpectrum spectrum(levels, frame.harmonics);
    phases.fill(0);
    for (int l = 1; l <= frame.harmonics; ++l) {
        phases[static_cast<std::size_t>(l - 1)] =
            static_cast<int>(std::floor(kFullScale * spectrum.PhaseAt(l))) & 0x7FFF;
    }
}

void FloatVoiceConditioner::EnhanceSpectrum(FloatVoiceFrame& frame) {
    const auto amplitudes = Amplitudes(frame);
    const auto cosineOf = [&](std::size_t i) {
        return CosineStep((static_cast<int>(i + 1) * (frame.fundamental << 6)) >> 16);
    };
    const double unit = kFullScale * kFullScale;
    const double r0 = SumOfSquares(amplitudes) / unit;
    double r1 = 0.0;
    for (std::size_t i = 0; i < amplitudes.size(); ++i) {
        r1 += amplitudes[i] * amplitudes[i] * cosineOf(i) / unit;
    }
    r1 *= 45874.0 / 65536.0;

    TrackEnergy(r0);
    if (r0 <= 0.0) {
        return;
    }
    const double d = r0 * (r0 * r0 - r1 * r1) * CyclesPerSample(frame);
    const double q = std::ldexp(1020269481.0, -31) / d;
    const double a = q * (r0 * r0 + r1 * r1);
    const double b = 2.0 * q * r0 * r1;
    for (std::size_t i = amplitudes.size() >> 3; i < amplitudes.size(); ++i) {
        const double inner = std::max(a - b * cosineOf(i), 0.0);
        const double weight = std::sqrt(amplitudes[i] / kFullScale * std::sqrt(inner));
        amplitudes[i] *= std::clamp(weight, 0.5, 19661.0 / 16384.0);
    }
    const double weighted = SumOfSquares(amplitudes) / unit;
    if (weighted > 0.0) {
        Scale(amplitudes, std::sqrt(r0 / weighted));
    }
    for (double& amplitude : amplitudes) {
        amplitude = std::min(amplitude, 32767.0);
    }
}

void FloatVoiceConditioner::TrackEnergy(double frameEnergy) {
    energy = 62260.0 / 65536.0 * energy + 52428.0 / 65536.0 / 16.0 * frameEnergy;
    if (energy < std::ldexp(1.0, -17)) {
        energy = kLeastEnergy;
    }
}

void FloatVoiceConditioner::ForceStrongToVoiced(FloatVoiceFrame& frame, const VoiceErrorFigures& errors) {
    voicingMargin = std::numeric_limits<double>::infinity();
    if (errors.errorRate < 165 && errors.errorTotal < 4) {
        return;
    }
    const auto level = static_cast<int>(std::lround(1024.0 * std::log2(std::ldexp(energy, 30)))); // Q10
    int threshold = 0x16000000 + 24576 * level;                                                   // Q26
    threshold -=
        errors.firstHammingWordErrors == 0 && errors.errorRate < 410 ? 819200 * errors.errorRate : 0x14000000;
    const int rounded = std::clamp((threshold + 32768) >> 16, -15359, 15359); // Q10
    const double least = std::floor(std::exp2(rounded / 1024.0));
    for (std::size_t i = 0; i < static_cast<std::size_t>(frame.harmonics); ++i) {
        if (!frame.voiced[i]) {
            voicingMargin = std::min(voicingMargin, std::abs(frame.amplitudes[i] / least - 1.0));
            frame.voiced[i] = frame.amplitudes[i] > least;
        }
    }
}

} // namespace orva::test
