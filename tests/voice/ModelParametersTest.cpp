#include "voice/ModelParameters.h"

#include "tests/voice/VoiceFrames.h"
#include "voice/BitAllocation.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

using test::HarmonicsOfPitchCode;
using test::VoiceFields;

// The quantisers as tables of real numbers.
constexpr std::array<int, 64> kGainTable{
    -5821, -5518, -5239, -4880, -4549, -4292, -4057, -3760, -3370, -2903, -2583, -2305, -1962,
    -1601, -1138, -711,  -302,  57,    433,   795,   1132,  1510,  1909,  2333,  2705,  3038,
    3376,  3689,  3979,  4339,  4754,  5129,  5435,  5695,  5991,  6300,  6596,  6969,  7342,
    7751,  8101,  8511,  8835,  9102,  9375,  9698,  10055, 10415, 10762, 11084, 11403, 11752,
    12123, 12468, 12863, 13239, 13615, 13997, 14382, 14770, 15301, 15849, 16640, 17809};
constexpr std::array<int, 5> kGainSigma{20316, 13173, 11010, 9503, 8651};
constexpr std::array<int, 9> kCoefficientSigma{20120, 15794, 13566, 12452, 11731, 11338, 10813, 11141, 11141};
constexpr std::array<int, 13> kStep{0,     4915,  6963,  10650, 13107, 18350, 19661,
                                    20972, 20972, 20972, 20972, 20972, 20972};

// Q11 octaves.
double Quantised(int code, int bits, int sigma) {
    const double step = kStep[static_cast<std::size_t>(bits)] / 32768.0 * std::ldexp(1.0, 4 - bits);
    return (code + 0.5 - std::ldexp(1.0, bits - 1)) * step * sigma / 65536.0 * 2048.0;
}

std::vector<double> ExactInverseDct(const std::vector<double>& x) {
    std::vector<double> result;
    const auto length = static_cast<double>(x.size());
    for (std::size_t n = 0; n < x.size(); ++n) {
        double sum = x[0];
        for (std::size_t k = 1; k < x.size(); ++k) {
            sum +=
                2.0 * x[k] *
                std::cos(std::numbers::pi * static_cast<double>(k) * (static_cast<double>(n) + 0.5) / length);
        }
        result.push_back(sum);
    }
    return result;
}

// Bound of the inverse transform's error: the angle is rounded to a table step, and its increment is
// truncated, which adds up over outputs and coefficients.
double DctBound(const std::vector<double>& x) {
    const auto length = static_cast<double>(x.size());
    const double incrementError = 32768.0 / length - std::floor(32768.0 / length);
    double bound = 1.0 + std::fabs(x[0]) / 32768.0;
    for (std::size_t k = 1; k < x.size(); ++k) {
        const double cycles =
            0.5 / 512.0 + (static_cast<double>(k) * length * incrementError + 1.0) / 65536.0;
        bound += 2.0 * std::fabs(x[k]) * 2.0 * std::numbers::pi * cycles + 0.1;
    }
    return bound;
}

VoiceFields RandomFields(std::mt19937& random, int pitchCode) {
    VoiceFields fields = test::PlainFields(pitchCode, static_cast<int>(random() % 64), 0);
    const auto row = AllocationRow(HarmonicsOfPitchCode(pitchCode));
    for (std::size_t i = 0; i < fields.coefficients.size(); ++i) {
        fields.coefficients[i] = static_cast<int>(random() % (1U << row[i]));
    }
    for (int& decision : fields.voicing) {
        decision = static_cast<int>(random() % 2);
    }
    fields.spare = static_cast<int>(random() % 2);
    return fields;
}

ImbeFrameParameters Unpack(const VoiceFields& fields, ImbeDecoderState& state) {
    ImbeFrameParameters record{};
    record.pitchGate = 0x55;
    UnpackFrame(record, state, test::PackFields(fields).data());
    return record;
}

ImbeFrameParameters UnpackFresh(const VoiceFields& fields) {
    ImbeDecoderState state;
    ImbeInit(state);
    return Unpack(fields, state);
}

TEST(ModelParameters, HarmonicsFollowTheTopSixBits) {
    for (int code = 0; code < 52; ++code) {
        const ImbeFrameParameters record = UnpackFresh(test::PlainFields(4 * code, 20, 0));
        EXPECT_EQ(record.kind, 1);
        EXPECT_EQ(record.harmonics, ((code + 10) * 60648) >> 16) << "code " << code;
        EXPECT_EQ(record.pitchGate, 0);
    }
    EXPECT_EQ(UnpackFresh(test::PlainFields(0, 20, 0)).harmonics, 9);
    EXPECT_EQ(UnpackFresh(test::PlainFields(51 * 4, 20, 0)).harmonics, 56);
}

TEST(ModelParameters, CodesFrom52HoldNoVoiceAndChangeNothing) {
    for (int code = 52; code < 64; ++code) {
        test::InformationBits bits{};
        for (std::size_t i = 0; i < 6; ++i) {
            bits[i] = static_cast<std::uint8_t>((code >> (5 - i)) & 1);
        }
        ImbeDecoderState state;
        ImbeInit(state);
        state.previousHarmonics = 17;
        std::ranges::fill(state.previousLogAmplitudes, std::int16_t{1234});
        ImbeFrameParameters record{};
        record.kind = 1;
        record.harmonics = 21;
        record.pitchGate = 0x77;
        UnpackFrame(record, state, bits.data());
        EXPECT_EQ(record.kind, 0) << "code " << code;
        EXPECT_EQ(record.harmonics, 21);
        EXPECT_EQ(record.pitchGate, 0);
        EXPECT_EQ(state.previousHarmonics, 17);
        EXPECT_EQ(std::ranges::count(state.previousLogAmplitudes, 1234), kMaxHarmonics);
    }
}

TEST(ModelParameters, FundamentalOfEveryPitchCode) {
    for (int code = 0; code < 208; ++code) {
        const ImbeFrameParameters record = UnpackFresh(test::PlainFields(code, 20, 0));
        EXPECT_EQ(record.fundamental, ((1 << 23) / (4 * code + 158)) >> 1) << "pitch code " << code;
        EXPECT_NEAR(record.fundamental / 524288.0, 2.0 / (code + 39.5), 1.0 / 524288.0)
            << "pitch code " << code;
        // Harmonics stay below half the sample rate.
        EXPECT_LT(record.harmonics * record.fundamental, 1 << 18) << "pitch code " << code;
    }
    EXPECT_EQ(UnpackFresh(test::PlainFields(0, 20, 0)).fundamental, 26546);
    EXPECT_EQ(UnpackFresh(test::PlainFields(207, 20, 0)).fundamental, 4253);
}

TEST(ModelParameters, EveryFieldComesBackFromItsPlace) {
    std::mt19937 random(20);
    for (int pitchCode = 0; pitchCode < 208; ++pitchCode) {
        const VoiceFields fields = RandomFields(random, pitchCode);
        const int harmonics = HarmonicsOfPitchCode(pitchCode);
        const ParameterVector vector = BuildParameterVector(test::PackFields(fields).data(), harmonics);
        std::size_t position = 0;
        const auto read = [&](int count) {
            int value = 0;
            for (int i = 0; i < count; ++i) {
                value = 2 * value + vector[position++];
            }
            return value;
        };
        ASSERT_EQ(read(8), fields.pitchCode);
        ASSERT_EQ(read(6), fields.gainCode) << "pitch code " << pitchCode;
        const auto row = AllocationRow(harmonics);
        for (std::size_t i = 0; i < row.size(); ++i) {
            ASSERT_EQ(read(row[i]), fields.coefficients[i]) << "pitch code " << pitchCode << ", field " << i;
        }
        ASSERT_EQ(position, 87U - fields.voicing.size());
        for (const int decision : fields.voicing) {
            ASSERT_EQ(read(1), decision) << "pitch code " << pitchCode;
        }
        ASSERT_EQ(read(1), fields.spare);
        ASSERT_EQ(position, 88U);
    }
}

TEST(ModelParameters, EveryInformationBitHasOnePlace) {
    for (int harmonics = kMinHarmonics; harmonics <= kMaxHarmonics; ++harmonics) {
        ParameterVector places{};
        for (std::size_t bit = 0; bit < kInformationBits; ++bit) {
            test::InformationBits bits{};
            bits[bit] = 1;
            const ParameterVector vector = BuildParameterVector(bits.data(), harmonics);
            ASSERT_EQ(std::accumulate(vector.begin(), vector.end(), 0), 1) << harmonics << ", bit " << bit;
            std::ranges::transform(places, vector, places.begin(), std::bit_or());
        }
        EXPECT_EQ(std::accumulate(places.begin(), places.end(), 0), kInformationBits) << harmonics;
    }
}

TEST(ModelParameters, DequantizeFollowsItsFormulaForEveryCode) {
    for (int bits = 1; bits <= 10; ++bits) {
        for (const int sigma :
             {20316, 13173, 11010, 9503, 8651, 20120, 15794, 13566, 12452, 11731, 11338, 10813, 11141}) {
            for (int code = 0; code < 1 << bits; ++code) {
                const std::int64_t step = (std::int64_t{sigma} * kStep[static_cast<std::size_t>(bits)]) >> 16;
                const std::int64_t exact =
                    ((2 * code + 1 - (1 << bits)) * step * 2 * (1 << (14 - bits))) >> 16;
                const int actual = Dequantize(code, bits, static_cast<std::int16_t>(sigma));
                ASSERT_EQ(actual, exact) << "code " << code << " of " << bits << " bits, deviation " << sigma;
                // The step's truncation weighs more the farther the code lies from the middle.
                const double bound = 1.0 + std::fabs(code + 0.5 - std::ldexp(1.0, bits - 1)) *
                                               std::ldexp(1.0, 16 - bits) / 65536.0;
                ASSERT_NEAR(actual, Quantised(code, bits, sigma), bound)
                    << "code " << code << " of " << bits << " bits";
            }
        }
    }
}

TEST(ModelParameters, DequantizeHandlesTheWidestFields) {
    EXPECT_EQ(Dequantize(0, 0, 20120), 0);
    for (const int bits : {11, 12}) {
        EXPECT_GT(Dequantize((1 << bits) - 1, bits, 20316), 3000);
        EXPECT_LT(Dequantize(0, bits, 20316), -3000);
    }
}

TEST(ModelParameters, InverseDctMatchesTheDefinition) {
    std::mt19937 random(21);
    for (int length = 1; length <= kMaxHarmonics; ++length) {
        std::uniform_int_distribution<int> distribution(-12000 / length, 12000 / length);
        for (int trial = 0; trial < 20; ++trial) {
            std::vector<std::int16_t> x(static_cast<std::size_t>(length));
            std::ranges::generate(x, [&] { return static_cast<std::int16_t>(distribution(random)); });
            const std::vector<double> input(x.begin(), x.end());
            const std::vector<double> expected = ExactInverseDct(input);
            InverseDct(x.data(), length);
            for (std::size_t n = 0; n < x.size(); ++n) {
                ASSERT_NEAR(x[n], expected[n], DctBound(input)) << "length " << length << ", output " << n;
            }
        }
    }
}

TEST(ModelParameters, InverseDctOfOneEntryIsTheTopOfTheCosine) {
    for (int x = -32768; x <= 32767; ++x) {
        auto value = static_cast<std::int16_t>(x);
        InverseDct(&value, 1);
        ASSERT_EQ(value, (x * 32767 * 2 + 32768) >> 16) << x;
    }
}

TEST(ModelParameters, InverseDctOfAbsurdValuesWraps) {
    std::vector<std::int16_t> x(10, 32767);
    InverseDct(x.data(), 10);
    std::vector<std::int16_t> y(10, -32768);
    InverseDct(y.data(), 10);
    // Doubled in 16 bits, 32767 is -2 and -32768 is 0.
    for (const std::int16_t value : y) {
        EXPECT_NEAR(value, -32767, 2);
    }
    for (const std::int16_t value : x) {
        EXPECT_NEAR(static_cast<std::int16_t>(value - 32767), 0, 20);
    }
}

// The prediction in real numbers.
std::vector<double> ExactPrediction(const ImbeDecoderState& state, int harmonics) {
    const int ratio =
        ((state.previousHarmonics << 9) * ((1 << 19) / harmonics / 2) * 2) >> 12; // Q16, truncated
    const double rho = harmonics <= 15 ? 0.4 : harmonics >= 25 ? 0.7 : 0.03 * harmonics - 0.05;
    std::vector<double> values;
    for (int l = 1; l <= harmonics; ++l) {
        const double position = l * ratio / 65536.0;
        const int index = std::min(static_cast<int>(position), 55);
        const double fraction = position - std::floor(position);
        const auto* previous = state.previousLogAmplitudes;
        values.push_back(index == 0 ? previous[0]
                                    : previous[index - 1] * (1.0 - fraction) + previous[index] * fraction);
    }
    const double mean = std::accumulate(values.begin(), values.end(), 0.0) / harmonics;
    for (double& value : values) {
        value = rho * (value - mean);
    }
    return values;
}

TEST(ModelParameters, PredictionMatchesTheFormulaForAllPairsOfLengths) {
    std::mt19937 random(22);
    std::uniform_int_distribution<int> distribution(-20000, 20000);
    for (int old = kMinHarmonics; old <= kMaxHarmonics; ++old) {
        ImbeDecoderState state;
        ImbeInit(state);
        state.previousHarmonics = static_cast<std::int16_t>(old);
        // A smooth envelope, so that an index that is rounded differently does not matter.
        double value = distribution(random) / 4.0;
        for (std::int16_t& amplitude : state.previousLogAmplitudes) {
            amplitude = static_cast<std::int16_t>(value);
            value += distribution(random) / 40.0;
        }
        std::fill(state.previousLogAmplitudes + old, state.previousLogAmplitudes + kMaxHarmonics,
                  state.previousLogAmplitudes[old - 1]);
        for (int harmonics = kMinHarmonics; harmonics <= kMaxHarmonics; ++harmonics) {
            const std::vector<double> expected = ExactPrediction(state, harmonics);
            std::int16_t actual[kMaxHarmonics];
            PredictAmplitudes(state, harmonics, actual);
            for (int l = 0; l < harmonics; ++l) {
                ASSERT_NEAR(actual[l], expected[static_cast<std::size_t>(l)], 3.0)
                    << "from " << old << " to " << harmonics << ", harmonic " << l + 1;
            }
        }
    }
}

TEST(ModelParameters, PredictionIndexIsCappedAtTheLastEntry) {
    ImbeDecoderState state;
    ImbeInit(state);
    state.previousHarmonics = 56;
    std::iota(std::begin(state.previousLogAmplitudes), std::end(state.previousLogAmplitudes),
              std::int16_t{0});
    for (int harmonics = kMinHarmonics; harmonics <= kMaxHarmonics; ++harmonics) {
        std::int16_t actual[kMaxHarmonics];
        PredictAmplitudes(state, harmonics, actual);
        const std::vector<double> expected = ExactPrediction(state, harmonics);
        for (int l = 0; l < harmonics; ++l) {
            ASSERT_NEAR(actual[l], expected[static_cast<std::size_t>(l)], 2.0) << harmonics << ", " << l;
        }
    }
}

TEST(ModelParameters, PredictionOfTheWidestRangesStaysInRange) {
    for (const int sign : {-1, 1}) {
        ImbeDecoderState state;
        ImbeInit(state);
        for (std::size_t i = 0; i < kMaxHarmonics; ++i) {
            state.previousLogAmplitudes[i] = static_cast<std::int16_t>(i < 2 ? sign * 30719 : -sign * 30719);
        }
        for (int harmonics = kMinHarmonics; harmonics <= kMaxHarmonics; ++harmonics) {
            state.previousHarmonics = static_cast<std::int16_t>(harmonics);
            std::int16_t actual[kMaxHarmonics];
            PredictAmplitudes(state, harmonics, actual);
            EXPECT_GT(sign * actual[0], 0) << harmonics;
            EXPECT_LT(sign * actual[harmonics - 1], 0) << harmonics;
        }
    }
}

TEST(ModelParameters, FirstFramePredictsFromZerosWith30Harmonics) {
    ImbeDecoderState state;
    ImbeInit(state);
    EXPECT_EQ(state.previousHarmonics, 30);
    for (int harmonics = kMinHarmonics; harmonics <= kMaxHarmonics; ++harmonics) {
        std::int16_t actual[kMaxHarmonics];
        PredictAmplitudes(state, harmonics, actual);
        EXPECT_EQ(std::count(actual, actual + harmonics, 0), harmonics) << harmonics;
    }
}

// Log amplitudes in real numbers, and how far ours may be off.
struct ExactAmplitudes {
    std::vector<double> values;
    std::vector<double> bounds;
};

ExactAmplitudes Reconstruct(const VoiceFields& fields, const ImbeDecoderState& state) {
    const int harmonics = HarmonicsOfPitchCode(fields.pitchCode);
    const auto row = AllocationRow(harmonics);
    std::size_t field = 0;
    std::vector<double> gains{double{1} * kGainTable[static_cast<std::size_t>(fields.gainCode)]};
    for (std::size_t i = 0; i < 5; ++i, ++field) {
        gains.push_back(Quantised(fields.coefficients[field], row[field], kGainSigma[i]));
    }
    const double gainBound = DctBound(gains) + 6.0;
    gains = ExactInverseDct(gains);
    const std::vector<double> prediction = ExactPrediction(state, harmonics);
    ExactAmplitudes exact;
    int remaining = harmonics;
    for (std::size_t block = 0; block < 6; ++block) {
        // The tiling as the standard has it: lengths as even as can be, the longer ones last.
        const int length = remaining / (6 - static_cast<int>(block));
        remaining -= length;
        std::vector<double> x{gains[block]};
        for (std::size_t k = 0; k + 1 < static_cast<std::size_t>(length); ++k, ++field) {
            x.push_back(row[field] == 0
                            ? 0.0
                            : Quantised(fields.coefficients[field], row[field], kCoefficientSigma[k]));
        }
        const double bound = gainBound + DctBound(x) + 2.0 * length + 8.0;
        for (const double value : ExactInverseDct(x)) {
            const double amplitude = value + prediction[exact.values.size()];
            exact.values.push_back(std::clamp(amplitude, -30720.0, 30719.0));
            exact.bounds.push_back(bound);
        }
    }
    return exact;
}

TEST(ModelParameters, AmplitudesOfEveryLengthMatchTheFormulas) {
    std::mt19937 random(23);
    for (int pitchCode = 0; pitchCode < 208; ++pitchCode) {
        ImbeDecoderState state;
        ImbeInit(state);
        // A few frames of other lengths first, so that there is something to predict from.
        Unpack(RandomFields(random, static_cast<int>(random() % 208)), state);
        Unpack(RandomFields(random, static_cast<int>(random() % 208)), state);
        const VoiceFields fields = RandomFields(random, pitchCode);
        const ExactAmplitudes exact = Reconstruct(fields, state);
        const ImbeFrameParameters record = Unpack(fields, state);
        for (int l = 0; l < record.harmonics; ++l) {
            const auto index = static_cast<std::size_t>(l);
            ASSERT_NEAR(record.amplitudes[l], exact.values[index], exact.bounds[index])
                << "pitch code " << pitchCode << ", harmonic " << l + 1;
        }
        EXPECT_EQ(state.previousHarmonics, record.harmonics);
        for (int l = 0; l < kMaxHarmonics; ++l) {
            EXPECT_EQ(state.previousLogAmplitudes[l], record.amplitudes[std::min(l, record.harmonics - 1)]);
        }
    }
}

// Amplitudes differ within a block only through its own coefficients, so one coefficient shows a block's
// extent.
std::vector<int> BlockStarts(int pitchCode) {
    const int harmonics = HarmonicsOfPitchCode(pitchCode);
    std::vector<int> starts{1};
    const ImbeFrameParameters plain = UnpackFresh(test::PlainFields(pitchCode, 30, 0));
    std::vector<int> changedBlocks;
    const auto row = AllocationRow(harmonics);
    for (std::size_t field = 5; field < row.size(); ++field) {
        VoiceFields fields = test::PlainFields(pitchCode, 30, 0);
        fields.coefficients[field] = (1 << row[field]) - 1;
        const ImbeFrameParameters record = UnpackFresh(fields);
        int first = 0;
        while (record.amplitudes[first] == plain.amplitudes[first]) {
            ++first;
        }
        if (first + 1 != starts.back()) {
            starts.push_back(first + 1);
        }
    }
    return starts;
}

TEST(ModelParameters, TwelveHarmonicsAreSixBlocksOfTwo) {
    const int pitchCode = 4 * 3;
    ASSERT_EQ(HarmonicsOfPitchCode(pitchCode), 12);
    EXPECT_EQ(BlockStarts(pitchCode), (std::vector{1, 3, 5, 7, 9, 11}));
}

TEST(ModelParameters, ThirteenHarmonicsEndInABlockOfThree) {
    const int pitchCode = 4 * 5;
    ASSERT_EQ(HarmonicsOfPitchCode(pitchCode), 13);
    EXPECT_EQ(BlockStarts(pitchCode), (std::vector{1, 3, 5, 7, 9, 11}));
    // The last block's second coefficient bends three amplitudes.
    VoiceFields fields = test::PlainFields(pitchCode, 30, 0);
    const ImbeFrameParameters plain = UnpackFresh(fields);
    fields.coefficients.back() = (1 << AllocationRow(13).back()) - 1;
    const ImbeFrameParameters bent = UnpackFresh(fields);
    EXPECT_EQ(bent.amplitudes[9], plain.amplitudes[9]);
    EXPECT_GT(bent.amplitudes[10], plain.amplitudes[10]);
    EXPECT_LT(bent.amplitudes[11], plain.amplitudes[11]);
    EXPECT_GT(bent.amplitudes[12], plain.amplitudes[12]);
}

TEST(ModelParameters, NineHarmonicsHaveThreeBlocksOfOneEntry) {
    ASSERT_EQ(HarmonicsOfPitchCode(0), 9);
    EXPECT_EQ(BlockStarts(0), (std::vector{1, 4, 6, 8}));
}

TEST(ModelParameters, AmplitudesAreClamped) {
    ImbeDecoderState state;
    ImbeInit(state);
    VoiceFields high = test::PlainFields(0, 63, 0);
    const auto row = AllocationRow(9);
    for (std::size_t i = 0; i < row.size(); ++i) {
        high.coefficients[i] = (1 << row[i]) - 1;
    }
    int largest = 0;
    for (int frame = 0; frame < 60; ++frame) {
        const ImbeFrameParameters record = Unpack(high, state);
        largest = std::max<int>(largest, *std::max_element(record.amplitudes, record.amplitudes + 9));
        ASSERT_LE(largest, 30719);
    }
    EXPECT_EQ(largest, 30719);
}

TEST(ModelParameters, EveryBandDecidesThreeHarmonics) {
    std::mt19937 random(24);
    for (int pitchCode = 0; pitchCode < 208; ++pitchCode) {
        const VoiceFields fields = RandomFields(random, pitchCode);
        const ImbeFrameParameters record = UnpackFresh(fields);
        for (int l = 1; l <= record.harmonics; ++l) {
            const auto band =
                std::min<std::size_t>(static_cast<std::size_t>(l - 1) / 3, fields.voicing.size() - 1);
            ASSERT_EQ(record.voiced[l - 1], fields.voicing[band])
                << "pitch code " << pitchCode << ", harmonic " << l;
        }
    }
}

TEST(ModelParameters, HarmonicsAbove36ShareTheLastBit) {
    VoiceFields fields = test::PlainFields(207, 20, 0);
    ASSERT_EQ(fields.voicing.size(), 12U);
    fields.voicing[11] = 1;
    const ImbeFrameParameters record = UnpackFresh(fields);
    for (int l = 1; l <= 56; ++l) {
        EXPECT_EQ(record.voiced[l - 1], l >= 34 ? 1 : 0) << l;
    }
    EXPECT_EQ(VoicingBands(36), 12);
}

TEST(ModelParameters, LastBandIsWrittenWholeBeyondTheHarmonics) {
    const VoiceFields fields = test::PlainFields(4, 20, 1);
    ASSERT_EQ(HarmonicsOfPitchCode(4), 10);
    const ImbeFrameParameters record = UnpackFresh(fields);
    EXPECT_EQ(record.voiced[9], 1);
    EXPECT_EQ(record.voiced[10], 1);
    EXPECT_EQ(record.voiced[11], 1);
    EXPECT_EQ(record.voiced[12], 0);
}

} // namespace
} // namespace orva::voice
