#include "tests/support/FloatVoicedSynthesis.h"

#include "tests/support/BlockScaledTransform.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>

namespace orva::test {
namespace {

constexpr int kFadeStart = 55;
constexpr int kFadeEnd = 105;
constexpr double kFadeStep = 41944.0 / 2097152.0; // one fiftieth
constexpr int kCycleMask = 0x7FFF;                // Q15 cycles
constexpr double kCycle = 32768.0;
constexpr double kBufferLimit = 131072.0; // 32 bits, a sample step being 2^14
constexpr int kUnityGain = 32768;
// A fading table is multiplied in 16 of the buffer's 32 bits: in units of four sample steps, cut down.
constexpr double kFadeGrain = 4.0;

double CyclesPerSample(int fundamental) {
    return std::ldexp(fundamental, -19);
}

// A tone whose amplitude and frequency grow linearly.
struct Tone {
    double phase;     // cycles
    double frequency; // cycles per sample
    double frequencyStep;
    double amplitude; // sample steps
    double amplitudeStep;

    void AddTo(std::span<double> buffer) {
        for (double& sum : buffer) {
            const double fraction = phase - std::floor(phase);
            AddWithinBuffer(sum, amplitude * CosineStep(static_cast<int>(std::floor(512.0 * fraction))));
            phase += frequency;
            frequency += frequencyStep;
            amplitude += amplitudeStep;
        }
    }
};

void AddEndingTrack(std::span<double> buffer, double amplitude, double phase, double frequency) {
    Tone tone{phase, frequency, 0.0, amplitude, 0.0};
    tone.AddTo(buffer.first(kFadeStart));
    tone.amplitudeStep = -kFadeStep * amplitude;
    tone.AddTo(buffer.subspan(kFadeStart, kFadeEnd - kFadeStart));
}

void AddStartingTrack(std::span<double> buffer, double amplitude, double endPhase, double frequency) {
    const double phase = endPhase - (kFloatFrameLength - kFadeStart) * frequency;
    Tone tone{phase, frequency, 0.0, 0.0, kFadeStep * amplitude};
    tone.AddTo(buffer.subspan(kFadeStart, kFadeEnd - kFadeStart));
    tone.amplitude = amplitude;
    tone.amplitudeStep = 0.0;
    tone.AddTo(buffer.subspan(kFadeEnd));
}

void AddContinuingTrack(std::span<double> buffer, double oldAmplitude, double amplitude, double oldPhase,
                        double endPhase, double oldFrequency, double frequency) {
    const double slope = (frequency - oldFrequency) / kFloatFrameLength;
    const double error = endPhase - oldPhase - 0.5 * (oldFrequency + frequency) * kFloatFrameLength;
    const double principal = error - std::floor(error + 0.5);
    // Minus half a step: kept, the track ends short of its target by the change of frequency.
    const double start = oldFrequency - 0.5 * slope + principal / kFloatFrameLength;
    Tone tone{oldPhase, start, slope, oldAmplitude, (amplitude - oldAmplitude) / kFloatFrameLength};
    tone.AddTo(buffer);
}

bool IsPitchClose(int oldFundamental, int fundamental) {
    constexpr int kLimit = 6553; // 0.2, Q15
    return std::abs(fundamental - oldFundamental) * 65536 < kLimit * fundamental * 2;
}

} // namespace

void AddWithinBuffer(double& sum, double value) {
    sum = std::clamp(sum + value, -kBufferLimit, kBufferLimit);
}

void FloatVoicedSynthesis::Reset() {
    *this = FloatVoicedSynthesis();
}

void FloatVoicedSynthesis::Add(std::span<double> buffer, const FloatVoiceFrame& old,
                               const FloatVoiceFrame& next, const PhaseOffsets& phases) {
    const int advance =
        ((next.fundamental >> 1) + (old.fundamental >> 1)) * kFloatFrameLength * 2; // Q20 cycles
    fundamentalPhase = ((advance + fundamentalPhase * 32) % (1 << 20)) >> 5;
    AddLowHarmonics(buffer, old, next, phases);
    AddHighHarmonics(buffer, old, next, phases);
}

void FloatVoicedSynthesis::AddLowHarmonics(std::span<double> buffer, const FloatVoiceFrame& old,
                                           const FloatVoiceFrame& next, const PhaseOffsets& phases) {
    const bool isClose = IsPitchClose(old.fundamental, next.fundamental);
    for (int l = 1; l <= kLowHarmonics; ++l) {
        const auto i = static_cast<std::size_t>(l - 1);
        const double oldPhase = lowPhases[i] / kCycle;
        lowPhases[i] = (l * fundamentalPhase + phases[i]) & kCycleMask;
        const double endPhase = lowPhases[i] / kCycle;
        const double oldFrequency = l * CyclesPerSample(old.fundamental);
        const double frequency = l * CyclesPerSample(next.fundamental);
        if (old.voiced[i] && next.voiced[i] && isClose) {
            AddContinuingTrack(buffer, old.amplitudes[i], next.amplitudes[i], oldPhase, endPhase,
                               oldFrequency, frequency);
            continue;
        }
        if (old.voiced[i]) {
            AddEndingTrack(buffer, old.amplitudes[i], oldPhase, oldFrequency);
        }
        if (next.voiced[i]) {
            AddStartingTrack(buffer, next.amplitudes[i], endPhase, frequency);
        }
    }
}

void FloatVoicedSynthesis::AddHighHarmonics(std::span<double> buffer, const FloatVoiceFrame& old,
                                            const FloatVoiceFrame& next, const PhaseOffsets& phases) {
    constexpr int kFadeLength = kFadeEnd - kFadeStart;
    const auto fade = buffer.subspan(kFadeStart, kFadeLength);
    const int oldIncrement = old.fundamental << 4;
    const int phase = AddTable(buffer.first(kFadeStart), 0, oldIncrement, kUnityGain, 0);
    AddTable(fade, phase, oldIncrement, 32750, -655);

    BuildTable(next, phases);
    const int increment = next.fundamental << 4;
    const int newPhase = AddTable(fade, -(kFloatFrameLength - kFadeStart) * increment, increment, 0, 655);
    AddTable(buffer.subspan(kFadeEnd), newPhase, increment, kUnityGain, 0);
}

void FloatVoicedSynthesis::BuildTable(const FloatVoiceFrame& frame, const PhaseOffsets& phases) {
    constexpr int kStages = 7;
    double largest = 0.0;
    for (int l = kLowHarmonics + 1; l <= frame.harmonics; ++l) {
        const auto i = static_cast<std::size_t>(l - 1);
        largest = std::max(largest, frame.voiced[i] ? frame.amplitudes[i] : 0.0);
    }
    table.fill(0.0);
    if (largest == 0.0) {
        return;
    }

    const int amplitudeExponent = std::ilogb(largest) - 14; // of a mantissa of 15 significant bits
    std::array<std::complex<double>, kTableLength / 2> spectrum{};
    for (int l = kLowHarmonics + 1; l <= frame.harmonics; ++l) {
        const auto i = static_cast<std::size_t>(l - 1);
        if (frame.voiced[i]) {
            const int index = ((l * fundamentalPhase + phases[i]) & kCycleMask) >> 6;
            spectrum[i + 1] = std::ldexp(frame.amplitudes[i], -amplitudeExponent) *
                              std::complex(CosineStep(index), CosineStep(index + 384));
        }
    }
    const auto period = std::span(table).first(kTableLength);
    const int exponent = InverseRealTransform(spectrum, period, amplitudeExponent + kStages, kStages);
    // A table of so small an exponent is never read.
    const bool isHeard = exponent - 2 >= -15;
    for (double& value : period) {
        value = isHeard ? std::ldexp(value, exponent) : 0.0;
    }
    table[kTableLength] = table[0];
}

// phase and increment are Q23 periods, gain is Q15.
int FloatVoicedSynthesis::AddTable(std::span<double> buffer, int phase, int increment, int gain,
                                   int gainStep) const {
    constexpr int kPeriodMask = (1 << 23) - 1;
    for (double& sum : buffer) {
        phase &= kPeriodMask;
        const auto index = static_cast<std::size_t>(phase >> 16);
        const double fraction = (phase & 0xFFFF) / 65536.0;
        const double value = table[index] + fraction * (table[index + 1] - table[index]);
        const bool isFading = gainStep != 0;
        AddWithinBuffer(sum,
                        isFading ? kFadeGrain * std::floor(value / kFadeGrain) * gain / kUnityGain : value);
        phase += increment;
        gain += gainStep;
    }
    return phase;
}

} // namespace orva::test
