#include "voice/UnvoicedSynthesis.h"

#include "voice/FixedPoint.h"
#include "voice/Oscillators.h"
#include "voice/Transforms.h"

#include <algorithm>
#include <bit>
#include <span>

namespace orva::voice {

const std::array<std::int16_t, kFadeLength + 1> kFadeWindow{
    0,     4634,  6554,  8026,  9268,  10362, 11351, 12261, 13107, 13902, 14654, 15370, 16053,
    16708, 17339, 17948, 18536, 19107, 19661, 20200, 20724, 21236, 21736, 22224, 22702, 23170,
    23629, 24079, 24521, 24955, 25382, 25802, 26214, 26621, 27021, 27416, 27805, 28188, 28566,
    28940, 29309, 29673, 30032, 30388, 30739, 31086, 31430, 31770, 32106, 32439, 32767};

namespace {

constexpr int kTransformLog2 = 8;
constexpr int kTransformLength = 1 << kTransformLog2;
constexpr int kBins = kTransformLength / 2;
constexpr int kWorkLength = 332;

using WorkBuffer = std::array<std::int16_t, kWorkLength>;

std::int16_t FadeIn(int i) {
    return kFadeWindow[static_cast<std::size_t>(i)];
}

std::int16_t FadeOut(int i) {
    return kFadeWindow[static_cast<std::size_t>(kFadeLength - i)];
}

// Silence, the last frame's overlap fading in, fresh noise, this frame's overlap fading out. Returns the
// length.
int MakeNoise(WorkBuffer& work, int count, ImbeDecoderState& state) {
    static_assert(kNoiseCarryLength == kFadeLength);
    auto next = std::fill_n(work.begin(), FadeBegin(state.unvoicedLength), std::int16_t{0});
    for (int i = 0; i < kFadeLength; ++i) {
        *next++ = High16(MulQ15(state.noiseCarry[i], FadeIn(i)));
    }
    next = std::generate_n(next, count - kFadeLength, [&] { return NextNoise(state.noiseSeed); });
    std::ranges::generate(state.noiseCarry, [&] { return NextNoise(state.noiseSeed); });
    for (int i = 0; i < kFadeLength; ++i) {
        *next++ = High16(MulQ15(state.noiseCarry[i], FadeOut(i)));
    }
    return static_cast<int>(next - work.begin());
}

// The record is a little longer than the transform; its overhang lands on the silence at its start.
void FoldIntoTransform(WorkBuffer& work, int length) {
    if (length > kTransformLength) {
        std::copy(work.begin() + kTransformLength, work.begin() + length, work.begin());
    } else {
        std::fill(work.begin() + length, work.begin() + kTransformLength, std::int16_t{0});
    }
}

void UnfoldFromTransform(WorkBuffer& work, int length) {
    if (length > kTransformLength) {
        std::copy_n(work.begin(), length - kTransformLength, work.begin() + kTransformLength);
    }
}

// Both parts of the bins from `first` up to `end`.
std::span<std::int16_t> Bins(WorkBuffer& spectrum, int first, int end) {
    return std::span(spectrum).subspan(2 * static_cast<std::size_t>(first),
                                       2 * static_cast<std::size_t>(end - first));
}

void ClearBins(WorkBuffer& spectrum, int first, int end) {
    std::ranges::fill(Bins(spectrum, first, end), std::int16_t{0});
}

int LargestUnvoicedShift(const ImbeFrameParameters& record) {
    std::int16_t largest = 0;
    for (int i = 0; i < record.harmonics; ++i) {
        if (record.voiced[i] == 0) {
            largest = std::max(largest, record.amplitudes[i]);
        }
    }
    return NormShift(ToHigh(largest));
}

Scaled16 Truncated(Scaled32 x) {
    return {High16(x.mantissa), x.exponent};
}

Scaled16 Product(Scaled16 a, Scaled16 b) {
    return Truncated(Normalized(MulQ15(a.mantissa, b.mantissa), a.exponent + b.exponent));
}

// Gives a band the energy of `amplitude`, whatever the noise did in it: every bin's mean power becomes that
// of `scale` x `amplitude`. Values leave at `exponent`.
void ShapeBand(std::span<std::int16_t> band, Scaled16 scale, std::int16_t amplitude, int exponent) {
    std::int64_t power = 0;
    for (const std::int16_t value : band) {
        const std::int32_t square = value * value;
        power += std::int64_t{square} * 2;
    }
    if (power == 0) {
        return;
    }
    constexpr int kIntegerExponent = 31;
    const auto width = static_cast<std::int32_t>(band.size() / 2);
    const Scaled16 inverse = DivBlock(Normalized(width, kIntegerExponent), Truncated(NormalizeSum(power, 0)));
    const Scaled16 flat = Sqrt({ToHigh(inverse.mantissa), inverse.exponent});
    const Scaled16 gain = Product(Product(flat, scale), {amplitude, 0});
    for (std::int16_t& value : band) {
        value = High16(RoundSat(ShiftSat(MulQ15(value, gain.mantissa), gain.exponent - exponent)));
    }
}

// Shapes the noise spectrum band by band. Returns the block exponent of the result.
int ShapeSpectrum(const ImbeFrameParameters& record, WorkBuffer& spectrum, int count,
                  const ImbeDecoderState& state) {
    constexpr std::int32_t kPowerFactor = 34486; // 2.1049 in Q14: the square of 1.4508
    constexpr int kPowerExponent = 17;           // the product of factor and integers, Q14, as Q31
    constexpr int kHeadroom = 2;                 // a bin may take its band's whole energy
    constexpr int kTopBins = 7;
    constexpr int kPitchAverageToBins = 11;

    const Scaled16 scale = Sqrt({record.harmonics * count * kPowerFactor, kPowerExponent});
    const int exponent = scale.exponent - LargestUnvoicedShift(record) + kHeadroom;

    // Edges lie halfway between harmonics, Q16 bins.
    const std::int32_t spacing = record.fundamental * 32;
    std::int32_t edge = (spacing + 0x10000) / 2;
    int first = edge >> 16;
    ClearBins(spectrum, 0, first);
    for (int i = 0; i < record.harmonics; ++i) {
        edge += spacing;
        const int end = std::min(edge >> 16, kBins);
        if (record.voiced[i] != 0) {
            ClearBins(spectrum, first, end);
        } else {
            ShapeBand(Bins(spectrum, first, end), scale, record.amplitudes[i], exponent);
        }
        first = end;
    }
    ClearBins(spectrum, std::min(first, kBins - kTopBins), kBins);
    ClearBins(spectrum, 0, state.pitchAverage >> kPitchAverageToBins);
    return exponent + record.amplitudeExponent;
}

void OverlapAdd(const WorkBuffer& work, int exponent, std::int32_t* out, int count,
                const ImbeDecoderState& state) {
    const int fadeBegin = FadeBegin(state.unvoicedLength);
    const int fadeEnd = FadeEnd(state.unvoicedLength);
    const int tailShift = state.unvoicedTailExponent - kBufferShift;
    const int shift = exponent - kBufferShift;
    const std::int16_t* tail = state.unvoicedTail;
    const std::int16_t* fresh = work.data();
    for (int i = 0; i < fadeBegin; ++i) {
        out[i] = ShiftSat(ToHigh(tail[i]), tailShift);
    }
    for (int i = fadeBegin; i < fadeEnd; ++i) {
        out[i] = AddSat(ShiftSat(MulQ15Sat(tail[i], FadeOut(i - fadeBegin)), tailShift),
                        ShiftSat(MulQ15Sat(fresh[i], FadeIn(i - fadeBegin)), shift));
    }
    for (int i = fadeEnd; i < count; ++i) {
        out[i] = ShiftSat(ToHigh(fresh[i]), shift);
    }
}

void StoreTail(const WorkBuffer& work, int exponent, int count, ImbeDecoderState& state) {
    const int length = FadeEnd(state.unvoicedLength);
    std::int16_t* end = std::copy_n(work.data() + count, length, state.unvoicedTail);
    std::fill(end, state.unvoicedTail + kUnvoicedTailLength, std::int16_t{0});
    state.unvoicedTailExponent = To16(exponent);
}

} // namespace

std::int16_t NextNoise(std::uint16_t& seed) {
    seed = static_cast<std::uint16_t>(173U * seed + 13849U);
    return static_cast<std::int16_t>(seed);
}

void SynthesizeUnvoiced(const ImbeFrameParameters& record, std::int32_t* out, int count,
                        ImbeDecoderState& state) {
    WorkBuffer work;
    const int length = MakeNoise(work, count, state);
    FoldIntoTransform(work, length);
    FftReal(work.data(), 0, kTransformLog2);
    int exponent = ShapeSpectrum(record, work, count, state);
    exponent = FftRealInverse(work.data(), exponent, kTransformLog2);
    if (exponent - kBufferShift < kLowestBlockShift) {
        work.fill(0);
    }
    UnfoldFromTransform(work, length);
    OverlapAdd(work, exponent, out, count, state);
    StoreTail(work, exponent, count, state);
}

void UpdatePitchAverage(const ImbeFrameParameters& record, ImbeDecoderState& state) {
    constexpr int kGateLimit = 8;
    constexpr std::int32_t kTake = 52428; // 0.8, Q16; 0.05 after the shift by four
    constexpr std::int32_t kKeep = 62258; // 0.95, Q16
    if (std::popcount(static_cast<std::uint16_t>(record.pitchGate)) < kGateLimit) {
        return;
    }
    const std::int32_t moved = ((record.fundamental * kTake) >> 4) + state.pitchAverage * kKeep;
    state.pitchAverage = High16(moved);
}

} // namespace orva::voice
