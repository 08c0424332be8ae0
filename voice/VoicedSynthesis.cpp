#include "voice/VoicedSynthesis.h"

#include "voice/CosineTable.h"
#include "voice/FixedPoint.h"
#include "voice/Oscillators.h"
#include "voice/Transforms.h"
#include "voice/UnvoicedSynthesis.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace orva::voice {

namespace {

constexpr int kFrequencyToQ31 = 12; // from Q19 cycles per sample
constexpr int kPhaseToQ19 = 4;      // from Q15 cycles
constexpr int kPhaseToQ20 = 5;
constexpr int kIntegerExponent = 15; // an integer read as a Q15 mantissa

// Where a block's fades lie.
struct Block {
    std::int32_t* out;
    int count;
    int fadeBegin;
    int fadeEnd;
};

// A harmonic of a frame: its amplitude in sample steps and its frequency, Q19 cycles per sample.
struct Harmonic {
    Scaled32 amplitude;
    std::int32_t frequency;
};

Harmonic HarmonicOf(const ImbeFrameParameters& record, int l) {
    std::int32_t mantissa = ToHigh(record.amplitudes[l - 1]);
    const int shift = Normalize(mantissa);
    return {{mantissa, record.amplitudeExponent - shift}, l * record.fundamental};
}

Scaled32 FrequencyOf(const Harmonic& harmonic) {
    return {Shift(harmonic.frequency, kFrequencyToQ31), 0};
}

Scaled16 Integer(int value) {
    const Scaled32 normalised = Normalized(ToHigh(To16(value)), kIntegerExponent);
    return {High16(normalised.mantissa), normalised.exponent};
}

Scaled32 Widened(Scaled16 x) {
    return {ToHigh(x.mantissa), x.exponent};
}

// x / count
Scaled32 PerSample(Scaled32 x, int count) {
    return Widened(DivBlock(Normalized(x.mantissa, x.exponent), Integer(count)));
}

// One fiftieth of an amplitude.
Scaled32 FadeStep(Scaled32 amplitude) {
    constexpr std::int16_t kStep = 20972; // 41944 / 2^21 at the exponent below
    constexpr int kStepExponent = -5;
    return {MulFrac(amplitude.mantissa, kStep), amplitude.exponent + kStepExponent};
}

// The old frame's tone: constant up to the fade, then falling to nothing.
void EndingTrack(const Block& block, const Harmonic& old, std::int16_t phase) {
    Tone tone{old.amplitude, {0, 0}, FrequencyOf(old), {0, 0}};
    phase = AddOscillator(block.out, block.fadeBegin, phase, tone);
    tone.amplitudeStep = FadeStep(old.amplitude);
    tone.amplitudeStep.mantissa = -tone.amplitudeStep.mantissa;
    AddOscillator(block.out + block.fadeBegin, kFadeLength, phase, tone);
}

// The new frame's tone: rises over the fade, then constant; it has the target phase at the end of the block.
void StartingTrack(const Block& block, const Harmonic& fresh, std::int16_t target) {
    constexpr int kQ19Wrap = 31 - 19;
    const std::int32_t start =
        Sub(target * (1 << kPhaseToQ19), (block.count - block.fadeBegin) * fresh.frequency);
    std::int16_t phase = High16(WrapCycles(start, kQ19Wrap));
    Tone tone{{0, fresh.amplitude.exponent}, FadeStep(fresh.amplitude), FrequencyOf(fresh), {0, 0}};
    phase = AddOscillator(block.out + block.fadeBegin, kFadeLength, phase, tone);
    tone.amplitude = fresh.amplitude;
    tone.amplitudeStep = {0, 0};
    AddOscillator(block.out + block.fadeEnd, block.count - block.fadeEnd, phase, tone);
}

// (fresh - old) / count
Scaled32 AmplitudeSlope(Scaled32 old, Scaled32 fresh, int count) {
    const int exponent = std::max(old.exponent, fresh.exponent) + 1;
    const std::int32_t difference = Sub(ShiftSat(fresh.mantissa, fresh.exponent - exponent),
                                        ShiftSat(old.mantissa, old.exponent - exponent));
    return PerSample({difference, exponent}, count);
}

// One tone through the whole block, amplitude and frequency linear, bent so that it nears the target phase.
void ContinuingTrack(const Block& block, const Harmonic& old, const Harmonic& fresh, std::int16_t phase,
                     std::int16_t target) {
    constexpr int kQ20Wrap = 31 - 20;
    constexpr int kHalfCycleUnit = -1; // a remainder of 2^31 is half a cycle
    const Scaled32 slope =
        PerSample({Shift(fresh.frequency - old.frequency, kFrequencyToQ31), 0}, block.count);
    // Twice the mean frequency in Q19 is the mean frequency in Q20.
    const std::int32_t advance = (old.frequency + fresh.frequency) * block.count;
    const std::int32_t error = WrapPrincipal(Sub((target - phase) * (1 << kPhaseToQ20), advance), kQ20Wrap);
    const Scaled32 correction = PerSample({error, kHalfCycleUnit}, block.count);

    std::int32_t start = Shift(old.frequency, kFrequencyToQ31);
    start = Sub(start, Shift(slope.mantissa, slope.exponent - 1));
    start = Add(start, Shift(correction.mantissa, correction.exponent));
    AddOscillator(
        block.out, block.count, phase,
        {old.amplitude, AmplitudeSlope(old.amplitude, fresh.amplitude, block.count), {start, 0}, slope});
}

void MoveFundamentalPhase(const ImbeFrameParameters& record, int count, ImbeDecoderState& state) {
    constexpr int kQ20Wrap = 31 - 20;
    const std::int16_t mean = To16((record.fundamental >> 1) + (state.lastFrame.fundamental >> 1));
    const std::int32_t phase = Add(MulQ15(mean, To16(count)), state.fundamentalPhase * (1 << kPhaseToQ20));
    state.fundamentalPhase = High16(WrapCycles(phase, kQ20Wrap));
}

void AddLowHarmonics(const ImbeFrameParameters& record, const Block& block, ImbeDecoderState& state) {
    const ImbeFrameParameters& last = state.lastFrame;
    const bool pitchClose =
        IsPitchClose(last.fundamental, record.fundamental, block.count, state.voicedLength);
    for (int l = 1; l <= kLowHarmonics; ++l) {
        const std::int16_t phase = state.lowPhases[l - 1];
        const std::int16_t target = HarmonicPhase(l, state);
        state.lowPhases[l - 1] = target;

        const bool wasVoiced = last.voiced[l - 1] != 0;
        const bool isVoiced = record.voiced[l - 1] != 0;
        if (wasVoiced && isVoiced && pitchClose) {
            ContinuingTrack(block, HarmonicOf(last, l), HarmonicOf(record, l), phase, target);
            continue;
        }
        if (wasVoiced) {
            EndingTrack(block, HarmonicOf(last, l), phase);
        }
        if (isVoiced) {
            StartingTrack(block, HarmonicOf(record, l), target);
        }
    }
}

// One period of the high harmonics with the phases of this block's end.
void BuildWaveTable(const ImbeFrameParameters& record, ImbeDecoderState& state) {
    constexpr int kTableLog2 = 7;
    static_assert(1 << kTableLog2 == kWaveTableLength);
    constexpr int kQuarterBack = 3 * kCosTableSize / 4; // turns the cosine into the sine
    std::int16_t* table = state.waveTable;
    std::fill_n(table, kWaveTableLength, std::int16_t{0});

    std::int16_t largest = 0;
    for (int l = kLowHarmonics + 1; l <= record.harmonics; ++l) {
        largest = record.voiced[l - 1] != 0 ? std::max(largest, record.amplitudes[l - 1]) : largest;
    }
    const int shift = NormShift(ToHigh(largest));
    for (int l = kLowHarmonics + 1; l <= record.harmonics; ++l) {
        if (record.voiced[l - 1] == 0) {
            continue;
        }
        const int index = (HarmonicPhase(l, state) * 1024) >> 16;
        const std::int16_t amplitude = record.amplitudes[l - 1];
        std::int16_t* bin = table + std::ptrdiff_t{2} * l;
        bin[0] = High16(Shift(MulQ15(amplitude, CosAt(index)), shift));
        bin[1] = High16(Shift(MulQ15(amplitude, CosAt(index + kQuarterBack)), shift));
    }
    // The exponent makes up for the inverse transform's division by the length.
    const int exponent = record.amplitudeExponent - shift + kTableLog2;
    state.waveTableExponent = To16(FftRealInverse(table, exponent, kTableLog2));
    table[kWaveTableLength] = table[0];
}

void AddHighHarmonics(const ImbeFrameParameters& record, const Block& block, ImbeDecoderState& state) {
    constexpr std::int16_t kFadeOutGain = 32750; // Q15
    constexpr std::int16_t kGainStep = 655;
    const auto increment = [](std::int16_t fundamental) {
        return static_cast<std::uint32_t>(fundamental) << 4;
    };
    std::int32_t* fade = block.out + block.fadeBegin;

    const std::uint32_t oldIncrement = increment(state.lastFrame.fundamental);
    std::uint32_t phase =
        ReadWave(block.out, block.fadeBegin, 0, oldIncrement, state.waveTable, state.waveTableExponent);
    ReadWaveFaded(fade, kFadeLength, phase, oldIncrement, state.waveTable, state.waveTableExponent,
                  kFadeOutGain, -kGainStep);

    BuildWaveTable(record, state);
    const std::uint32_t newIncrement = increment(record.fundamental);
    phase = (0U - static_cast<std::uint32_t>(block.count - block.fadeBegin) * newIncrement) & kWavePhaseMask;
    phase = ReadWaveFaded(fade, kFadeLength, phase, newIncrement, state.waveTable, state.waveTableExponent, 0,
                          kGainStep);
    ReadWave(block.out + block.fadeEnd, block.count - block.fadeEnd, phase, newIncrement, state.waveTable,
             state.waveTableExponent);
}

} // namespace

std::int16_t HarmonicPhase(int harmonic, const ImbeDecoderState& state) {
    constexpr int kQ15Wrap = 31 - 15;
    return High16(
        WrapCycles(harmonic * state.fundamentalPhase + state.phaseDispersion[harmonic - 1], kQ15Wrap));
}

bool IsPitchClose(std::int16_t oldFundamental, std::int16_t newFundamental, int count, int nominalLength) {
    constexpr std::int32_t kConstant = 687194767;  // 0.32, Q31
    constexpr Scaled32 kPerNominal{1717986918, 6}; // 51.2
    const Scaled32 share = Widened(DivBlock(kPerNominal, Integer(nominalLength)));
    const std::int16_t factor = High16(Add(kConstant, Shift(share.mantissa, share.exponent)));
    const std::int16_t limit = High16(Shift(MulQ15(factor, To16(count)), 6));
    return std::abs(newFundamental - oldFundamental) * 65536 < MulQ15(limit, newFundamental);
}

void AddVoiced(const ImbeFrameParameters& record, std::int32_t* out, int count, ImbeDecoderState& state) {
    const Block block{out, count, FadeBegin(state.voicedLength), FadeEnd(state.voicedLength)};
    MoveFundamentalPhase(record, count, state);
    AddLowHarmonics(record, block, state);
    AddHighHarmonics(record, block, state);
}

} // namespace orva::voice
