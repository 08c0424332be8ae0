#include "voice/Oscillators.h"

#include "voice/CosineTable.h"

#include <algorithm>

namespace orva::voice {

namespace {

// The oscillator's phase: 2^25 is one cycle, the top 9 bits index the cosine table.
constexpr int kCyclesShift = 6; // from Q31 cycles to 2^25 a cycle
constexpr int kPhaseShift = 10; // from Q15 cycles to 2^25 a cycle
constexpr std::uint32_t kPhaseMask = (1U << 25) - 1;
constexpr int kIndexShift = 16;

// An amplitude that grows needs room for its end value.
int WorkingExponent(const Tone& tone, int count) {
    constexpr int kLowest = -14;
    constexpr int kHighest = 17;
    int exponent = tone.amplitude.exponent;
    if (tone.amplitudeStep.mantissa > 0) {
        const std::int64_t rise = std::int64_t{tone.amplitudeStep.mantissa} * count;
        exponent = std::max(exponent, NormalizeSum(rise, tone.amplitudeStep.exponent).exponent) + 1;
    }
    return std::clamp(exponent, kLowest, kHighest);
}

// Calls `add(shifted)` for every sample; the shift has its own loop for either direction, because only shifts
// to the left can saturate.
template <typename Sample>
void ForEachShifted(int count, int shift, Sample&& sample) {
    if (shift <= 0) {
        const int right = std::min(-shift, 31);
        for (int i = 0; i < count; ++i) {
            sample(i, [right](std::int32_t value) { return value >> right; });
        }
    } else {
        for (int i = 0; i < count; ++i) {
            sample(i, [shift](std::int32_t value) { return ShiftSat(value, shift); });
        }
    }
}

// t[i] + q (t[i + 1] - t[i]) in Q31; it lies between the two entries.
std::int32_t Interpolate(const std::int16_t* table, std::uint32_t phase) {
    const std::uint32_t index = (phase & kWavePhaseMask) >> 16;
    const std::int64_t fraction = phase & 0xFFFFU;
    const std::int32_t difference = table[index + 1] - table[index];
    return To32(std::int64_t{table[index]} * 65536 + difference * fraction);
}

} // namespace

std::int16_t AddOscillator(std::int32_t* out, int count, std::int16_t phase, const Tone& tone) {
    if (count <= 0) {
        return phase;
    }
    const int exponent = WorkingExponent(tone, count);
    std::int32_t amplitude = ShiftSat(tone.amplitude.mantissa, tone.amplitude.exponent - exponent);
    const std::int32_t amplitudeStep =
        ShiftSat(tone.amplitudeStep.mantissa, tone.amplitudeStep.exponent - exponent);

    auto increment =
        static_cast<std::uint32_t>(Shift(tone.frequency.mantissa, tone.frequency.exponent - kCyclesShift));
    const auto incrementStep = static_cast<std::uint32_t>(
        Shift(tone.frequencyStep.mantissa, tone.frequencyStep.exponent - kCyclesShift));
    std::uint32_t accumulator = (static_cast<std::uint32_t>(std::int32_t{phase}) << kPhaseShift) & kPhaseMask;

    ForEachShifted(count, exponent - kBufferShift, [&](int i, auto shifted) {
        const std::int16_t cosine = kCosTable[accumulator >> kIndexShift];
        out[i] = AddSat(out[i], shifted(MulQ15(High16(amplitude), cosine)));
        accumulator = (accumulator + increment) & kPhaseMask;
        increment += incrementStep;
        amplitude = AddWrap(amplitude, amplitudeStep);
    });
    return To16(static_cast<std::int32_t>(accumulator >> kPhaseShift));
}

std::uint32_t ReadWave(std::int32_t* out, int count, std::uint32_t phase, std::uint32_t increment,
                       const std::int16_t* table, int exponent) {
    const int shift = exponent - kBufferShift;
    if (shift < kLowestBlockShift) {
        return phase;
    }
    ForEachShifted(count, shift, [&](int i, auto shifted) {
        out[i] = AddSat(out[i], shifted(Interpolate(table, phase)));
        phase += increment;
    });
    return phase & kWavePhaseMask;
}

std::uint32_t ReadWaveFaded(std::int32_t* out, int count, std::uint32_t phase, std::uint32_t increment,
                            const std::int16_t* table, int exponent, std::int16_t gain,
                            std::int16_t gainStep) {
    const int shift = exponent - kBufferShift;
    if (shift < kLowestBlockShift) {
        return phase;
    }
    ForEachShifted(count, shift, [&](int i, auto shifted) {
        const std::int32_t value = shifted(Interpolate(table, phase));
        out[i] = AddSat(out[i], MulQ15(High16(value), gain));
        phase += increment;
        gain = To16Wrap(gain + gainStep);
    });
    return phase & kWavePhaseMask;
}

} // namespace orva::voice
