#include "voice/ModelParameters.h"

#include "voice/BitAllocation.h"
#include "voice/CosineTable.h"
#include "voice/FixedPoint.h"

#include <algorithm>
#include <span>

namespace orva::voice {

namespace {

constexpr int kGainCoefficients = 6;
constexpr int kBlocks = 6;
constexpr int kPitchField = 0;
constexpr int kGainField = 8;
constexpr int kCoefficientFields = 14;
constexpr int kVoicingEnd = 87;
constexpr int kHighestBandedHarmonic = 36; // harmonics above share the last voicing bit

// Quantiser of the gain, Q11 octaves.
constexpr std::array<std::int16_t, 64> kGains{
    -5821, -5518, -5239, -4880, -4549, -4292, -4057, -3760, -3370, -2903, -2583, -2305, -1962,
    -1601, -1138, -711,  -302,  57,    433,   795,   1132,  1510,  1909,  2333,  2705,  3038,
    3376,  3689,  3979,  4339,  4754,  5129,  5435,  5695,  5991,  6300,  6596,  6969,  7342,
    7751,  8101,  8511,  8835,  9102,  9375,  9698,  10055, 10415, 10762, 11084, 11403, 11752,
    12123, 12468, 12863, 13239, 13615, 13997, 14382, 14770, 15301, 15849, 16640, 17809};

// Standard deviations, Q16 octaves: of gain coefficients 1..5, and of the coefficients of a block by
// position.
constexpr std::array<std::int16_t, 5> kGainDeviations{20316, 13173, 11010, 9503, 8651};
constexpr std::array<std::int16_t, 9> kCoefficientDeviations{20120, 15794, 13566, 12452, 11731,
                                                             11338, 10813, 11141, 11141};

// Quantiser step in standard deviations by number of bits n, Q15, times 2^(n - 4) from 4 bits on.
constexpr std::array<std::int16_t, 13> kStepByWidth{0,     4915,  6963,  10650, 13107, 18350, 19661,
                                                    20972, 20972, 20972, 20972, 20972, 20972};

// Reads fields, most significant bit first.
class BitReader {
public:
    explicit BitReader(const std::uint8_t* first) : next(first) {}
    int Read(int count) {
        int value = 0;
        for (int i = 0; i < count; ++i) {
            value = (value << 1) | (*next++ & 1);
        }
        return value;
    }

private:
    const std::uint8_t* next;
};

// Fills the coefficient fields by bit planes, the longest fields' top bits first; it can stop after any bit.
class PlaneWalk {
public:
    PlaneWalk(std::span<const std::uint8_t> fieldLengths, std::uint8_t* firstField)
        : lengths(fieldLengths), fieldStart(firstField), plane(*std::ranges::max_element(fieldLengths)) {}

    // Takes bits from `from` up to `end`; ends early when all fields are full.
    const std::uint8_t* Take(const std::uint8_t* from, const std::uint8_t* end) {
        for (; plane > 0; --plane, field = 0, offset = 0) {
            for (; field < lengths.size(); offset += lengths[field], ++field) {
                if (lengths[field] < plane) {
                    continue;
                }
                if (from == end) {
                    return from;
                }
                fieldStart[offset + lengths[field] - plane] = *from++;
            }
        }
        return from;
    }

private:
    std::span<const std::uint8_t> lengths;
    std::uint8_t* fieldStart;
    int plane;
    std::size_t field = 0;
    int offset = 0;
};

std::int16_t ClampLogAmplitude(std::int32_t value) {
    return To16(std::clamp(value, kLowestLogAmplitude, kHighestLogAmplitude));
}

// 8 / (4 b0 + 158) cycles per sample, Q19.
std::int16_t FundamentalOf(int pitchCode) {
    return To16(DivQ15(1 << 23, To16(4 * pitchCode + 158)));
}

// Blocks tile the amplitudes in order; the last of them are one longer when L is no multiple of six.
int BlockLength(int block, int harmonics) {
    const int shortLength = harmonics / kBlocks;
    const int shortBlocks = kBlocks * (shortLength + 1) - harmonics;
    return block < shortBlocks ? shortLength : shortLength + 1;
}

// The transmitted part of the log amplitudes: gains give each block its mean, coefficients its shape.
void ReadAmplitudes(BitReader reader, int harmonics, std::int16_t* amplitudes) {
    const auto row = AllocationRow(harmonics);
    auto width = row.begin();

    std::array<std::int16_t, kGainCoefficients> gains;
    gains[0] = kGains[static_cast<std::size_t>(reader.Read(6))];
    for (std::size_t i = 1; i < gains.size(); ++i) {
        const int bits = *width++;
        gains[i] = Dequantize(reader.Read(bits), bits, kGainDeviations[i - 1]);
    }
    InverseDct(gains.data(), kGainCoefficients);

    for (int block = 0; block < kBlocks; ++block) {
        const int length = BlockLength(block, harmonics);
        amplitudes[0] = gains[static_cast<std::size_t>(block)];
        for (int k = 1; k < length; ++k) {
            const int bits = *width++;
            amplitudes[k] = bits == 0 ? std::int16_t{0}
                                      : Dequantize(reader.Read(bits), bits,
                                                   kCoefficientDeviations[static_cast<std::size_t>(k - 1)]);
        }
        InverseDct(amplitudes, length);
        amplitudes += length;
    }
}

void StorePrediction(const ImbeFrameParameters& record, ImbeDecoderState& state) {
    std::copy_n(record.amplitudes, record.harmonics, state.previousLogAmplitudes);
    std::fill(state.previousLogAmplitudes + record.harmonics, state.previousLogAmplitudes + kMaxHarmonics,
              record.amplitudes[record.harmonics - 1]);
    state.previousHarmonics = record.harmonics;
}

// One bit for every three harmonics, written to all three even beyond L.
void ReadVoicing(BitReader reader, int harmonics, std::int16_t* voiced) {
    constexpr int kBandWidth = 3;
    std::int16_t decision = 0;
    int harmonic = 1;
    for (; harmonic <= harmonics && harmonic <= kHighestBandedHarmonic; harmonic += kBandWidth) {
        decision = To16(reader.Read(1));
        std::fill_n(voiced + harmonic - 1, kBandWidth, decision);
    }
    for (; harmonic <= harmonics; ++harmonic) {
        voiced[harmonic - 1] = decision;
    }
}

} // namespace

ParameterVector BuildParameterVector(const std::uint8_t* bits, int harmonics) {
    // The corrected bits' order protects the perceptually most important ones: the first words carry the top
    // of every field, the uncoded bits the bottom.
    constexpr int kFirstWalkEnd = 48;
    constexpr int kSecondWalkEnd = 84;
    ParameterVector vector{};
    const int bands = VoicingBands(harmonics);
    PlaneWalk walk(AllocationRow(harmonics), vector.data() + kCoefficientFields);

    const std::uint8_t* next = bits;
    const auto copy = [&](int count, int position) {
        std::copy_n(next, count, vector.begin() + position);
        next += count;
    };
    copy(6, kPitchField);
    copy(3, kGainField);
    next = walk.Take(next, bits + kFirstWalkEnd);
    copy(bands, kVoicingEnd - bands);
    copy(2, kGainField + 3);
    next = walk.Take(next, bits + kSecondWalkEnd);
    copy(1, kGainField + 5);
    copy(2, kPitchField + 6);
    copy(1, kVoicingEnd);
    return vector;
}

std::int16_t Dequantize(int code, int bits, std::int16_t deviation) {
    const std::int32_t step = (std::int32_t{deviation} * kStepByWidth[static_cast<std::size_t>(bits)]) >> 16;
    const std::int32_t value = (2 * code + 1 - (1 << bits)) * step * 2;
    return High16(Shift(value, 14 - bits));
}

void InverseDct(std::int16_t* x, int length) {
    // Half a cycle over the length, 65536 a cycle.
    constexpr auto kSteps = [] {
        std::array<std::int32_t, kMaxHarmonics + 1> steps{0, 32767};
        for (std::size_t n = 2; n < steps.size(); ++n) {
            steps[n] = DivInt(32768, static_cast<std::int16_t>(n));
        }
        return steps;
    }();
    constexpr int kHalfTableStep = 64;
    constexpr int kTableShift = 7;

    std::array<std::int16_t, kMaxHarmonics> y;
    y[0] = x[0];
    for (int k = 1; k < length; ++k) {
        y[static_cast<std::size_t>(k)] = To16Wrap(2 * x[k]);
    }
    const std::int32_t step = kSteps[static_cast<std::size_t>(length)];
    std::int32_t increment = step >> 1;
    for (int n = 0; n < length; ++n, increment += step) {
        std::int32_t sum = 0;
        std::int32_t phase = kHalfTableStep;
        for (int k = 0; k < length; ++k, phase += increment) {
            sum = AddWrap(sum, MulQ15(CosAt(phase >> kTableShift), y[static_cast<std::size_t>(k)]));
        }
        x[n] = High16(AddWrap(sum, 0x8000));
    }
}

void PredictAmplitudes(const ImbeDecoderState& state, int harmonics, std::int16_t* prediction) {
    constexpr int kLastIndex = kMaxHarmonics - 1;
    const std::int16_t* previous = state.previousLogAmplitudes;
    const std::int16_t length = To16(harmonics);

    // Harmonic l of this frame lies at l ratio in the previous one, Q16.
    const std::int16_t reciprocal = To16(DivQ15(1 << 19, length));
    const std::int32_t ratio = MulQ15(To16(state.previousHarmonics << 9), reciprocal) >> 12;
    std::int32_t sum = 0;
    for (int l = 1; l <= harmonics; ++l) {
        const std::int32_t position = l * ratio;
        const int index = std::min(position >> 16, kLastIndex);
        const std::int32_t fraction = (position & 0xFFFF) >> 1;
        std::int32_t value = ToHigh(previous[0]);
        if (index > 0) {
            // 1 - q needs one more than 15 bits.
            value = 2 * (previous[index - 1] * (0x8000 - fraction) + previous[index] * fraction);
        }
        prediction[l - 1] = High16(value);
        sum = Add(sum, value >> 6);
    }

    std::int32_t rho = 0; // Q15: 0.4 for few harmonics, 0.7 for many, 0.03 L - 0.05 between
    if (harmonics <= 15) {
        rho = 13107;
    } else if (harmonics >= 25) {
        rho = 22938;
    } else {
        rho = (harmonics * 64423936 - 0x6660000) >> 16;
    }
    const std::int16_t factor = To16(rho);
    const std::int16_t mean = To16(DivQ15(sum, To16(harmonics * 512)));
    const std::int32_t meanPart = NegateSat(MulQ15(mean, factor)) >> 1;
    for (int l = 0; l < harmonics; ++l) {
        prediction[l] = High16(ShiftSat(Add(MulQ15(prediction[l], factor) >> 1, meanPart), 1));
    }
}

void UnpackFrame(ImbeFrameParameters& record, ImbeDecoderState& state, const std::uint8_t* bits) {
    constexpr int kFirstCodeWithoutVoice = 52;
    record.pitchGate = 0;
    const int code = BitReader(bits).Read(6);
    if (code >= kFirstCodeWithoutVoice) {
        record.kind = 0;
        return;
    }
    record.kind = 1;
    const int harmonics = std::clamp(((code + 10) * 60648) >> 16, kMinHarmonics, kMaxHarmonics);
    record.harmonics = To16(harmonics);

    const ParameterVector vector = BuildParameterVector(bits, harmonics);
    record.fundamental = FundamentalOf(BitReader(vector.data() + kPitchField).Read(8));

    std::int16_t prediction[kMaxHarmonics];
    PredictAmplitudes(state, harmonics, prediction);
    ReadAmplitudes(BitReader(vector.data() + kGainField), harmonics, record.amplitudes);
    for (int l = 0; l < harmonics; ++l) {
        record.amplitudes[l] = ClampLogAmplitude(To16Sat(record.amplitudes[l] + prediction[l]));
    }
    StorePrediction(record, state);
    ReadVoicing(BitReader(vector.data() + kVoicingEnd - VoicingBands(harmonics)), harmonics, record.voiced);
}

} // namespace orva::voice
