#include "voice/FrameConditioning.h"

#include "voice/CosineTable.h"
#include "voice/FixedPoint.h"
#include "voice/ModelParameters.h"

#include <algorithm>
#include <array>
#include <span>

namespace orva::voice {

namespace {

// The fundamental, Q19, read as a Q15 mantissa at this exponent is the frequency in cycles per sample.
constexpr int kFundamentalExponent = -4;
// The same with the factor 256.
constexpr int kFundamental256Exponent = kFundamentalExponent + 8;

std::span<std::int16_t> Amplitudes(ImbeFrameParameters& record) {
    return std::span(record.amplitudes).first(static_cast<std::size_t>(record.harmonics));
}

bool IsVoiced(const ImbeFrameParameters& record, std::size_t index) {
    return record.voiced[index] != 0;
}

// The envelope by harmonic number, from -kReach to kMaxHarmonics + kReach.
class Envelope {
public:
    static constexpr int kReach = 19;
    std::int16_t& operator[](int harmonic) { return values.begin()[harmonic + kReach]; }

private:
    std::array<std::int16_t, kMaxHarmonics + 2 * kReach + 1> values{};
};

// Log amplitudes with the unvoiced ones raised by the gain that `ScaleUnvoiced` will give them, continued by
// a falling slope and mirrored at both ends of the band.
Envelope MakeEnvelope(const ImbeFrameParameters& record) {
    constexpr int kTop = 64;
    constexpr std::int16_t kSlope = 1477; // 0.7212 octaves in Q11
    const int harmonics = record.harmonics;
    // log2(256 f) in Q10 is half of it in the amplitudes' Q11.
    const std::int16_t gain = High16(ShiftSat(Log2(record.fundamental, kFundamental256Exponent), 10));

    Envelope p;
    p[0] = 0;
    for (int l = 1; l <= harmonics; ++l) {
        const std::int16_t amplitude = record.amplitudes[l - 1];
        p[l] = IsVoiced(record, static_cast<std::size_t>(l - 1))
                   ? amplitude
                   : To16(std::clamp<std::int32_t>(To16Sat(amplitude + gain), kLowestLogAmplitude,
                                                   kHighestLogAmplitude));
    }
    for (int l = harmonics + 1; l <= kTop; ++l) {
        p[l] = To16Sat(p[l - 1] - kSlope);
    }
    for (int l = kTop + 1; l <= harmonics + Envelope::kReach; ++l) {
        p[l] = p[2 * kTop - l];
    }
    for (int l = 1; l <= Envelope::kReach; ++l) {
        p[-l] = p[l];
    }
    return p;
}

// The sum of squares of Q15 mantissas, an extended sum, at twice their exponent.
Scaled32 Energy(std::span<const std::int16_t> mantissas, int exponent) {
    std::int64_t sum = 0;
    for (const std::int16_t m : mantissas) {
        const std::int32_t square = m * m;
        sum += std::int64_t{square} * 2;
    }
    return NormalizeSum(sum, 2 * exponent);
}

// c_l, the cosine of the angle of harmonic l; l f stays below half a cycle.
std::int16_t HarmonicCosine(int harmonic, std::int16_t fundamental) {
    return CosAt((harmonic * (fundamental * 64)) >> 16);
}

// 0.7 times the sum of squares weighted by the cosines.
Scaled16 FirstCorrelation(std::span<const std::int16_t> mantissas, int exponent, std::int16_t fundamental) {
    constexpr std::int32_t kFactor = 45874; // 0.7, Q16
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < mantissas.size(); ++i) {
        const std::int16_t square = High16(MulQ15(mantissas[i], mantissas[i]));
        sum += MulQ15(square, HarmonicCosine(static_cast<int>(i) + 1, fundamental));
    }
    const Scaled32 normalised = NormalizeSum(sum, 2 * exponent);
    const auto mantissa = std::max<std::int16_t>(High16(normalised.mantissa), -kMax16);
    return {To16((mantissa * kFactor) >> 16), normalised.exponent};
}

// The smoothed energy: 0.95 of itself and 0.05 of this frame's.
void TrackEnergy(Scaled16 energy, ImbeDecoderState& state) {
    constexpr std::int32_t kKeep = 62260; // 0.95, Q16
    constexpr std::int32_t kTake = 52428; // 0.8, Q16, at an exponent 4 lower: 0.05
    constexpr int kTakeExponent = -4;
    constexpr int kLowestExponent = -17;
    const std::int64_t kept = std::int64_t{state.energyMantissa} * kKeep;
    const std::int64_t taken = std::int64_t{energy.mantissa} * kTake;
    const int takenExponent = energy.exponent + kTakeExponent;
    const int exponent = std::max<int>(state.energyExponent, takenExponent);
    const std::int64_t sum = (kept >> std::min(exponent - state.energyExponent, 63)) +
                             (taken >> std::min(exponent - takenExponent, 63));
    const Scaled32 smoothed = NormalizeSum(sum, exponent);
    if (smoothed.mantissa == 0 || smoothed.exponent <= kLowestExponent) {
        state.energyMantissa = kMax16;
        state.energyExponent = kLowestExponent;
        return;
    }
    state.energyMantissa = High16(smoothed.mantissa);
    state.energyExponent = To16(smoothed.exponent);
}

// The enhancement's curve A - B c_l, both numbers at one exponent.
struct WeightCurve {
    std::int32_t a;
    std::int32_t b;
    int exponent;
};

// A = Q (R0^2 + R1^2), B = 2 Q R0 R1 with Q = 0.4751 / (R0 (R0^2 - R1^2) f).
WeightCurve MakeWeightCurve(Scaled16 r0, Scaled16 r1, std::int16_t fundamental) {
    constexpr std::int32_t kNumerator = 1020269481; // 0.4751, Q31
    // Squares and the product at the exponent of R0^2, halved so that sums fit.
    const int distance = r1.exponent - r0.exponent;
    const int squareExponent = 2 * r0.exponent + 1;
    const std::int32_t square0 = MulQ15(r0.mantissa, r0.mantissa) >> 1;
    const std::int32_t square1 = ShiftSat(MulQ15(r1.mantissa, r1.mantissa), 2 * distance - 1);
    const std::int32_t product = ShiftSat(MulQ15(r0.mantissa, r1.mantissa), distance);

    const std::int32_t difference = SubSat(square0, square1);
    if (High16(difference) == 0) {
        return {ToHigh(kMax16), 0, 0};
    }
    const Scaled32 gap = Normalized(difference, squareExponent);
    const Scaled32 cubic = Normalized(MulFrac(gap.mantissa, r0.mantissa), gap.exponent + r0.exponent);
    const Scaled32 divisor =
        Normalized(MulFrac(cubic.mantissa, fundamental), cubic.exponent + kFundamentalExponent);
    const Scaled16 q = DivBlock(Normalized(kNumerator, 0), {High16(divisor.mantissa), divisor.exponent});
    return {MulFrac(AddSat(square0, square1), q.mantissa), MulFrac(product, q.mantissa),
            squareExponent + q.exponent};
}

// sqrt(M sqrt(A - B c)) in Q14, limited to 0.5 .. 1.2. The mantissa is that of M, full scale being 1.
std::int16_t Weight(std::int16_t mantissa, int exponent, const WeightCurve& curve, std::int16_t cosine) {
    constexpr std::int16_t kLowerLimit = 8192;  // 0.5
    constexpr std::int16_t kUpperLimit = 19661; // 1.2
    constexpr int kExponentBeyondLimit = 2;
    const std::int32_t value = SubSat(curve.a >> 1, MulFrac(curve.b >> 1, cosine));
    if (value <= 0) {
        return kLowerLimit;
    }
    const Scaled16 inner = Sqrt({value, curve.exponent + 1});
    const Scaled16 weight = Sqrt({MulQ15(mantissa, inner.mantissa), exponent + inner.exponent});
    if (weight.mantissa == 0) {
        return kLowerLimit;
    }
    if (weight.exponent >= kExponentBeyondLimit) {
        return kUpperLimit;
    }
    const std::int32_t weightQ14 = Shift(weight.mantissa, weight.exponent - 1);
    return To16(std::clamp<std::int32_t>(weightQ14, kLowerLimit, kUpperLimit));
}

int NormalizeMantissas(std::span<std::int16_t> mantissas) {
    const std::int16_t largest = *std::ranges::max_element(mantissas);
    const int shift = NormShift(ToHigh(largest));
    for (std::int16_t& m : mantissas) {
        m = To16(Shift(m, shift));
    }
    return shift;
}

void ScaleMantissas(std::span<std::int16_t> mantissas, std::int16_t factor) {
    for (std::int16_t& m : mantissas) {
        m = High16(MulQ15(m, factor));
    }
}

// Scales the weighted amplitudes back to the energy they had.
void RestoreEnergy(ImbeFrameParameters& record, Scaled32 energy) {
    const auto mantissas = Amplitudes(record);
    int exponent = record.amplitudeExponent - NormalizeMantissas(mantissas);
    const Scaled32 weighted = Energy(mantissas, exponent);
    if (weighted.mantissa != 0) {
        const Scaled16 ratio = DivBlock(energy, {High16(weighted.mantissa), weighted.exponent});
        const Scaled16 gamma = Sqrt({ToHigh(ratio.mantissa), ratio.exponent});
        ScaleMantissas(mantissas, gamma.mantissa);
        exponent += gamma.exponent;
    }
    if (exponent > 0) {
        for (std::int16_t& m : mantissas) {
            m = High16(ShiftSat(ToHigh(m), exponent));
        }
        exponent = 0;
    }
    record.amplitudeExponent = To16(exponent);
}

// 5.5 + 0.375 log2(energy x 2^30), less the more the fewer errors there are; 2 to its power.
std::int32_t VoicingThreshold(const ImbeDecoderState& state) {
    constexpr int kEnergyScale = 30;
    constexpr std::int32_t kOffset = 0x16000000;         // 5.5, Q26
    constexpr std::int32_t kSlope = 24576;               // 0.375, from Q10 to Q26
    constexpr std::int32_t kPerErrorRate = 819200;       // 400, from Q15 to Q26
    constexpr std::int32_t kNoisyReduction = 0x14000000; // 5, Q26
    constexpr std::int16_t kNoisyErrorRate = 410;        // 0.0125
    constexpr std::size_t kFirstHammingWord = 4;
    constexpr std::int32_t kLimit = 15359;

    // Q16 to Q10, rounded.
    const std::int32_t energyLog =
        (Log2(state.energyMantissa, state.energyExponent + kEnergyScale) + 32) >> 6;
    std::int32_t exponent = Add(kOffset, kSlope * energyLog);
    const bool fewErrors = state.wordErrors[kFirstHammingWord] == 0 && state.errorRate < kNoisyErrorRate;
    exponent = Sub(exponent, fewErrors ? kPerErrorRate * state.errorRate : kNoisyReduction);

    const std::int32_t exponentQ10 = std::clamp(Add(exponent, 0x8000) >> 16, -kLimit, kLimit);
    const Scaled32 threshold = Exp2(exponentQ10 * 64);
    return Shift(threshold.mantissa, threshold.exponent - 31);
}

// True if mantissa x 2^exponent, sample steps, exceeds a limit of 0 or more.
bool Exceeds(std::int16_t mantissa, int exponent, std::int32_t limit) {
    constexpr int kBeyondAll = 32;
    const std::int64_t m = mantissa;
    return exponent >= 0 ? m << std::min(exponent, kBeyondAll) > limit
                         : m > std::int64_t{limit} << std::min(-exponent, kBeyondAll);
}

void ForceVoicing(ImbeFrameParameters& record, const ImbeDecoderState& state) {
    constexpr std::int16_t kQuietErrorRate = 165; // 0.005
    constexpr std::int16_t kFewErrors = 4;
    if (state.energyMantissa == 0 || (state.errorRate < kQuietErrorRate && state.errorTotal < kFewErrors)) {
        return;
    }
    const std::int32_t threshold = VoicingThreshold(state);
    for (int i = 0; i < record.harmonics; ++i) {
        if (Exceeds(record.amplitudes[i], record.amplitudeExponent, threshold)) {
            record.voiced[i] = 1;
        }
    }
}

void LimitAmplitudes(ImbeFrameParameters& record) {
    constexpr int kSumScale = 10;            // the sum is compared in units of 2^-10 sample steps
    constexpr std::int16_t kLimitHigh = 320; // 20480 in its top 16 bits
    constexpr std::int32_t kLimit = 20480 << kSumScale;
    std::int32_t sum = 0;
    for (const std::int16_t m : Amplitudes(record)) {
        sum = Add(sum, m);
    }
    sum = ShiftSat(sum, record.amplitudeExponent + kSumScale);
    if (High16(sum) <= kLimitHigh) {
        return;
    }
    const Scaled32 divisor = Normalized(sum, 0);
    const Scaled16 factor = DivBlock(Normalized(kLimit, 0), {High16(divisor.mantissa), divisor.exponent});
    ScaleMantissas(Amplitudes(record), factor.mantissa);
    record.amplitudeExponent = To16(record.amplitudeExponent + factor.exponent);
}

} // namespace

void DerivePhases(const ImbeFrameParameters& record, ImbeDecoderState& state) {
    // 18411 / (2 j + 1), Q15.
    constexpr std::array<std::int16_t, 10> kTaps{18411, 6137, 3682, 2630, 2046, 1674, 1416, 1227, 1083, 969};
    constexpr int kWrapShift = 1;
    Envelope p = MakeEnvelope(record);
    for (int l = 1; l <= record.harmonics; ++l) {
        std::int32_t sum = 0;
        for (int j = 0; j < static_cast<int>(kTaps.size()); ++j) {
            const std::int16_t tap = kTaps[static_cast<std::size_t>(j)];
            // Whole cycles do not matter, so the sum may wrap.
            sum = AddWrap(sum, MulQ15(tap, p[l + 1 + 2 * j]));
            sum = SubWrap(sum, MulQ15(tap, p[l - 1 - 2 * j]));
        }
        state.phaseDispersion[l - 1] = High16(WrapCycles(sum, kWrapShift));
    }
    std::fill(state.phaseDispersion + record.harmonics, state.phaseDispersion + kMaxHarmonics,
              std::int16_t{0});
}

void LogToLinear(ImbeFrameParameters& record) {
    constexpr std::int32_t kLowest = -30719;
    constexpr int kFractionBits = 11;
    const auto amplitudes = Amplitudes(record);
    for (std::int16_t& x : amplitudes) {
        x = To16(std::clamp<std::int32_t>(x, kLowest, kHighestLogAmplitude));
    }
    const int exponent = (*std::ranges::max_element(amplitudes) >> kFractionBits) + 1;
    for (std::int16_t& x : amplitudes) {
        const Scaled32 linear = Exp2(x * (1 << (16 - kFractionBits)));
        x = High16(RoundSat(ShiftSat(linear.mantissa, linear.exponent - exponent)));
    }
    record.amplitudeExponent = To16(exponent - 15);
    std::fill(record.amplitudes + record.harmonics, record.amplitudes + kMaxHarmonics, std::int16_t{0});
}

void EnhanceSpectrum(ImbeFrameParameters& record, ImbeDecoderState& state) {
    const auto mantissas = Amplitudes(record);
    const Scaled32 energy = Energy(mantissas, record.amplitudeExponent);
    const Scaled16 r0{High16(energy.mantissa), energy.exponent};
    const Scaled16 r1 = FirstCorrelation(mantissas, record.amplitudeExponent, record.fundamental);
    TrackEnergy(r0, state);
    if (r0.mantissa <= 0) {
        return;
    }

    const WeightCurve curve = MakeWeightCurve(r0, r1, record.fundamental);
    const int untouched = record.harmonics >> 3;
    for (int l = 1; l <= record.harmonics; ++l) {
        std::int16_t& m = record.amplitudes[l - 1];
        if (l <= untouched) {
            m = To16(m >> 1);
            continue;
        }
        const std::int16_t cosine = HarmonicCosine(l, record.fundamental);
        m = High16(MulQ15(Weight(m, record.amplitudeExponent, curve, cosine), m));
    }
    record.amplitudeExponent = To16(record.amplitudeExponent + 1);
    RestoreEnergy(record, energy);
}

void AdaptVoicing(ImbeFrameParameters& record, const ImbeDecoderState& state) {
    ForceVoicing(record, state);
    LimitAmplitudes(record);
}

void ScaleUnvoiced(ImbeFrameParameters& record) {
    const auto count = static_cast<std::size_t>(record.harmonics);
    const auto voiced = std::span(record.voiced).first(count);
    if (std::ranges::find(voiced, 0) == voiced.end()) {
        return;
    }
    const Scaled16 gain = Sqrt({ToHigh(record.fundamental), kFundamental256Exponent});
    std::array<Scaled32, kMaxHarmonics> scaled;
    int largest = std::numeric_limits<int>::min();
    for (std::size_t i = 0; i < count; ++i) {
        const std::int16_t m = record.amplitudes[i];
        scaled[i] = IsVoiced(record, i)
                        ? Normalized(ToHigh(m), record.amplitudeExponent)
                        : Normalized(MulQ15(gain.mantissa, m), record.amplitudeExponent + gain.exponent);
        if (scaled[i].mantissa != 0) {
            largest = std::max(largest, scaled[i].exponent);
        }
    }
    const int exponent = largest == std::numeric_limits<int>::min() ? 0 : largest;
    for (std::size_t i = 0; i < count; ++i) {
        record.amplitudes[i] = To16(Shift(High16(scaled[i].mantissa), scaled[i].exponent - exponent));
    }
    record.amplitudeExponent = To16(exponent);
}

} // namespace orva::voice
