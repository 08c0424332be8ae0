#include "tests/support/VoiceCode.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace orva::test {
namespace {

constexpr int kAllocationEntries = (kMostHarmonics + 7) * (kMostHarmonics - 8) / 2;

// TIA-102.BABA, full-rate bit allocation: a row of L - 1 field lengths for each number of harmonics L.
// clang-format off
constexpr std::array<std::uint8_t, kAllocationEntries> kAllocation = {
    /* 9 */ 10, 9, 9, 9, 9, 9, 8, 7,
    /* 10 */ 9, 9, 8, 8, 8, 9, 7, 6, 5,
    /* 11 */ 8, 8, 8, 7, 7, 9, 7, 6, 5, 4,
    /* 12 */ 8, 7, 7, 7, 7, 8, 7, 6, 5, 4, 3,
    /* 13 */ 7, 7, 7, 6, 6, 7, 7, 6, 5, 4, 3, 3,
    /* 14 */ 7, 6, 6, 6, 6, 7, 7, 5, 4, 4, 3, 4, 3,
    /* 15 */ 7, 6, 6, 6, 5, 6, 7, 5, 4, 4, 3, 3, 3, 3,
    /* 16 */ 6, 6, 6, 5, 5, 6, 6, 5, 4, 4, 3, 3, 3, 3, 2,
    /* 17 */ 6, 6, 5, 5, 5, 5, 5, 5, 4, 4, 4, 3, 3, 2, 3, 2,
    /* 18 */ 6, 5, 5, 5, 5, 5, 4, 5, 5, 4, 3, 3, 3, 3, 2, 2, 2,
    /* 19 */ 6, 5, 5, 4, 4, 5, 4, 5, 4, 4, 3, 3, 3, 3, 2, 3, 2, 1,
    /* 20 */ 6, 5, 5, 4, 4, 5, 4, 5, 4, 4, 3, 3, 2, 3, 2, 1, 3, 2, 1,
    /* 21 */ 5, 5, 5, 4, 4, 4, 4, 5, 4, 4, 3, 3, 2, 2, 3, 2, 1, 3, 2, 1,
    /* 22 */ 5, 5, 4, 4, 4, 4, 4, 4, 4, 4, 3, 2, 3, 2, 2, 3, 2, 1, 2, 2, 1,
    /* 23 */ 5, 4, 4, 4, 4, 4, 3, 4, 4, 3, 4, 3, 2, 3, 2, 2, 2, 2, 1, 2, 2, 1,
    /* 24 */ 5, 4, 4, 4, 4, 4, 3, 3, 4, 3, 3, 3, 3, 2, 3, 2, 1, 2, 2, 1, 2, 2, 1,
    /* 25 */ 5, 4, 4, 4, 3, 4, 3, 3, 4, 3, 3, 3, 3, 2, 3, 2, 1, 2, 2, 1, 2, 1, 1, 1,
    /* 26 */ 5, 4, 4, 3, 3, 4, 3, 3, 4, 3, 3, 3, 2, 2, 3, 2, 1, 2, 2, 1, 1, 2, 2, 1, 1,
    /* 27 */ 5, 4, 4, 3, 3, 4, 3, 2, 4, 3, 2, 3, 2, 2, 3, 2, 2, 1, 2, 2, 1, 1, 2, 2, 1, 1,
    /* 28 */ 4, 4, 4, 3, 3, 4, 3, 2, 4, 3, 2, 3, 2, 2, 2, 3, 2, 1, 1, 2, 2, 1, 1, 2, 1, 1, 1,
    /* 29 */ 4, 4, 4, 3, 3, 3, 3, 2, 4, 3, 2, 2, 3, 2, 2, 2, 3, 2, 1, 1, 2, 1, 1, 1, 2, 1, 1, 1,
    /* 30 */ 4, 4, 4, 3, 3, 3, 3, 2, 2, 3, 3, 2, 2, 3, 2, 2, 1, 3, 2, 1, 1, 2, 1, 1, 1, 2, 1, 1, 1,
    /* 31 */ 4, 4, 3, 3, 3, 3, 3, 2, 2, 3, 3, 2, 2, 3, 2, 2, 1, 2, 2, 1, 1, 2, 1, 1, 1, 2, 1, 1, 1, 1,
    /* 32 */ 4, 4, 3, 3, 3, 3, 3, 2, 2, 3, 3, 2, 2, 3, 2, 2, 1, 2, 2, 1, 1, 2, 1, 1, 1, 1, 2, 1, 1, 1,
             0,
    /* 33 */ 4, 3, 3, 3, 3, 3, 3, 2, 2, 3, 3, 2, 2, 3, 2, 1, 1, 2, 2, 1, 1, 1, 2, 1, 1, 1, 1, 2, 1, 1,
             1, 1,
    /* 34 */ 4, 3, 3, 3, 3, 3, 2, 2, 2, 3, 2, 2, 2, 3, 2, 2, 1, 1, 2, 2, 1, 1, 1, 2, 1, 1, 1, 1, 2, 1,
             1, 1, 0,
    /* 35 */ 4, 3, 3, 3, 3, 3, 2, 2, 2, 3, 2, 2, 2, 2, 3, 2, 1, 1, 1, 2, 2, 1, 1, 1, 2, 1, 1, 1, 0, 2,
             1, 1, 1, 0,
    /* 36 */ 4, 3, 3, 3, 3, 3, 2, 2, 2, 1, 3, 2, 2, 2, 1, 3, 2, 1, 1, 1, 2, 2, 1, 1, 1, 2, 1, 1, 1, 0,
             2, 1, 1, 1, 0,
    /* 37 */ 4, 3, 3, 3, 2, 3, 2, 2, 2, 1, 3, 2, 2, 2, 2, 3, 2, 1, 1, 1, 2, 1, 1, 1, 1, 2, 1, 1, 1, 0,
             2, 1, 1, 1, 1, 0,
    /* 38 */ 4, 3, 3, 3, 2, 3, 2, 2, 2, 1, 3, 2, 2, 2, 1, 3, 2, 1, 1, 1, 2, 1, 1, 1, 1, 2, 1, 1, 1, 1,
             0, 2, 1, 1, 1, 1, 0,
    /* 39 */ 4, 3, 3, 3, 2, 3, 2, 2, 2, 1, 3, 2, 2, 2, 1, 3, 2, 1, 1, 1, 2, 2, 1, 1, 1, 0, 2, 1, 1, 1,
             1, 0, 2, 1, 1, 1, 0, 0,
    /* 40 */ 4, 3, 3, 3, 2, 3, 2, 2, 2, 1, 3, 2, 2, 1, 1, 3, 2, 1, 1, 1, 1, 2, 2, 1, 1, 1, 0, 2, 1, 1,
             1, 1, 0, 2, 1, 1, 1, 0, 0,
    /* 41 */ 4, 3, 3, 2, 2, 3, 2, 2, 1, 1, 3, 2, 2, 2, 1, 1, 3, 2, 1, 1, 1, 1, 2, 2, 1, 1, 1, 0, 2, 1,
             1, 1, 1, 0, 2, 1, 1, 1, 0, 0,
    /* 42 */ 4, 3, 3, 2, 2, 3, 2, 2, 2, 1, 1, 3, 2, 2, 2, 1, 1, 2, 2, 1, 1, 1, 1, 2, 2, 1, 1, 1, 0, 2,
             1, 1, 1, 0, 0, 2, 1, 1, 1, 0, 0,
    /* 43 */ 4, 3, 3, 2, 2, 3, 2, 2, 2, 1, 1, 3, 2, 2, 2, 1, 1, 2, 2, 1, 1, 1, 1, 2, 1, 1, 1, 1, 0, 2,
             1, 1, 1, 0, 0, 2, 1, 1, 1, 1, 0, 0,
    /* 44 */ 4, 3, 3, 2, 2, 3, 2, 2, 1, 1, 1, 3, 2, 2, 2, 1, 1, 2, 2, 1, 1, 1, 1, 2, 1, 1, 1, 1, 0, 2,
             1, 1, 1, 1, 0, 0, 2, 1, 1, 1, 1, 0, 0,
    /* 45 */ 4, 3, 3, 2, 2, 3, 2, 2, 1, 1, 1, 3, 2, 2, 1, 1, 1, 2, 2, 1, 1, 1, 1, 2, 2, 1, 1, 1, 0, 0,
             2, 1, 1, 1, 1, 0, 0, 2, 1, 1, 1, 1, 0, 0,
    /* 46 */ 3, 3, 3, 2, 2, 3, 2, 2, 1, 1, 1, 3, 2, 2, 1, 1, 1, 2, 2, 1, 1, 1, 1, 1, 2, 2, 1, 1, 1, 0,
             0, 2, 1, 1, 1, 1, 0, 0, 2, 1, 1, 1, 1, 0, 0,
    /* 47 */ 3, 3, 3, 2, 2, 3, 2, 2, 1, 1, 1, 3, 2, 2, 1, 1, 1, 1, 2, 2, 1, 1, 1, 1, 1, 2, 2, 1, 1, 1,
             0, 0, 2, 1, 1, 1, 1, 0, 0, 2, 1, 1, 1, 0, 0, 0,
    /* 48 */ 3, 3, 3, 2, 2, 3, 2, 2, 1, 1, 1, 1, 3, 2, 2, 1, 1, 1, 1, 2, 2, 1, 1, 1, 1, 1, 2, 2, 1, 1,
             1, 0, 0, 2, 1, 1, 1, 0, 0, 0, 2, 1, 1, 1, 0, 0, 0,
    /* 49 */ 3, 3, 3, 2, 2, 3, 2, 2, 1, 1, 1, 1, 3, 2, 2, 1, 1, 1, 1, 2, 2, 1, 1, 1, 1, 0, 2, 2, 1, 1,
             1, 0, 0, 2, 1, 1, 1, 0, 0, 0, 2, 1, 1, 1, 1, 0, 0, 0,
    /* 50 */ 3, 3, 3, 2, 2, 3, 2, 2, 1, 1, 1, 1, 3, 2, 2, 1, 1, 1, 1, 2, 2, 1, 1, 1, 1, 0, 2, 2, 1, 1,
             1, 0, 0, 2, 1, 1, 1, 1, 0, 0, 0, 2, 1, 1, 1, 0, 0, 0, 0,
    /* 51 */ 3, 3, 3, 2, 2, 3, 2, 2, 1, 1, 1, 1, 3, 2, 1, 1, 1, 1, 1, 2, 2, 1, 1, 1, 1, 0, 2, 2, 1, 1,
             1, 0, 0, 0, 2, 1, 1, 1, 1, 0, 0, 0, 2, 1, 1, 1, 1, 0, 0, 0,
    /* 52 */ 3, 3, 2, 2, 2, 3, 2, 1, 1, 1, 1, 1, 3, 2, 2, 1, 1, 1, 1, 2, 2, 1, 1, 1, 1, 1, 0, 2, 2, 1,
             1, 1, 0, 0, 0, 2, 1, 1, 1, 1, 0, 0, 0, 2, 1, 1, 1, 1, 0, 0, 0,
    /* 53 */ 3, 3, 2, 2, 2, 3, 2, 1, 1, 1, 1, 1, 3, 2, 2, 1, 1, 1, 1, 1, 2, 2, 1, 1, 1, 1, 1, 0, 2, 2,
             1, 1, 1, 0, 0, 0, 2, 1, 1, 1, 1, 0, 0, 0, 2, 1, 1, 1, 0, 0, 0, 0,
    /* 54 */ 3, 3, 2, 2, 2, 3, 2, 2, 1, 1, 1, 1, 0, 3, 2, 2, 1, 1, 1, 1, 0, 2, 2, 1, 1, 1, 1, 1, 0, 2,
             2, 1, 1, 1, 0, 0, 0, 2, 1, 1, 1, 1, 0, 0, 0, 2, 1, 1, 1, 0, 0, 0, 0,
    /* 55 */ 3, 3, 2, 2, 2, 3, 2, 2, 1, 1, 1, 1, 0, 3, 2, 2, 1, 1, 1, 1, 0, 2, 2, 1, 1, 1, 1, 1, 0, 2,
             2, 1, 1, 1, 0, 0, 0, 2, 1, 1, 1, 0, 0, 0, 0, 2, 1, 1, 1, 1, 0, 0, 0, 0,
    /* 56 */ 3, 3, 2, 2, 2, 3, 2, 2, 1, 1, 1, 1, 0, 3, 2, 2, 1, 1, 1, 1, 0, 2, 2, 1, 1, 1, 1, 1, 0, 2,
             2, 1, 1, 1, 0, 0, 0, 2, 1, 1, 1, 1, 0, 0, 0, 0, 2, 1, 1, 1, 0, 0, 0, 0, 0,
};
// clang-format on

constexpr int RowStart(int harmonics) {
    return (harmonics + 6) * (harmonics - 9) / 2;
}

constexpr int BandCount(int harmonics) {
    return std::min((harmonics + 2) / 3, kMostBands);
}

// The bits left after pitch, gain, voicing and the spare bit.
constexpr bool EveryRowSumsUp() {
    for (int harmonics = kFewestHarmonics; harmonics <= kMostHarmonics; ++harmonics) {
        int sum = 0;
        for (int entry = RowStart(harmonics); entry < RowStart(harmonics + 1); ++entry) {
            sum += kAllocation[static_cast<std::size_t>(entry)];
        }
        if (sum != 73 - BandCount(harmonics)) {
            return false;
        }
    }
    return true;
}
static_assert(RowStart(kMostHarmonics + 1) == kAllocationEntries);
static_assert(EveryRowSumsUp());

constexpr double kUnitsPerOctave = 2048.0;

// Q11 octaves.
constexpr std::array<int, kGainCodes> kGains = {
    -5821, -5518, -5239, -4880, -4549, -4292, -4057, -3760, -3370, -2903, -2583, -2305, -1962,
    -1601, -1138, -711,  -302,  57,    433,   795,   1132,  1510,  1909,  2333,  2705,  3038,
    3376,  3689,  3979,  4339,  4754,  5129,  5435,  5695,  5991,  6300,  6596,  6969,  7342,
    7751,  8101,  8511,  8835,  9102,  9375,  9698,  10055, 10415, 10762, 11084, 11403, 11752,
    12123, 12468, 12863, 13239, 13615, 13997, 14382, 14770, 15301, 15849, 16640, 17809};

constexpr std::array<int, 5> kGainDeviations = {20316, 13173, 11010, 9503, 8651};
constexpr std::array<int, 9> kCoefficientDeviations = {20120, 15794, 13566, 12452, 11731,
                                                       11338, 10813, 11141, 11141};
constexpr std::array<int, 13> kStepOfWidth = {0,     4915,  6963,  10650, 13107, 18350, 19661,
                                              20972, 20972, 20972, 20972, 20972, 20972};

constexpr int kPitchBits = 8;
constexpr int kGainBits = 6;
constexpr int kFieldsStart = kPitchBits + kGainBits;
constexpr int kSparePosition = kVoiceBits - 1;

constexpr int kCosineSteps = 512;
constexpr double kFullScale = 32768.0;

std::array<double, kCosineSteps> MakeCosineTable() {
    std::array<double, kCosineSteps> table{};
    for (int i = 0; i < kCosineSteps; ++i) {
        const double cosine = std::cos(2.0 * std::numbers::pi * i / kCosineSteps);
        table[static_cast<std::size_t>(i)] = static_cast<double>(std::lround(32767.0 * cosine)) / kFullScale;
    }
    return table;
}

// Sixteen bits of Q11 hold 32 octaves; what is beyond comes in again at the other end.
double WrapRange(double octaves) {
    return octaves - 32.0 * std::floor((octaves + 16.0) / 32.0);
}

double ClampAmplitude(double octaves) {
    return std::clamp(octaves, -30720.0 / kUnitsPerOctave, 30719.0 / kUnitsPerOctave);
}

// Share of the last spectrum's shape that the prediction keeps, Q15.
int PredictionFactor(int harmonics) {
    if (harmonics <= 15) {
        return 13107;
    }
    if (harmonics >= 25) {
        return 22938;
    }
    return (harmonics * 64423936 - 0x6660000) >> 16;
}

// Walks the coefficient fields by bit planes, most significant plane first; each step gives a position in the
// parameter vector.
class PlaneWalk {
public:
    explicit PlaneWalk(int harmonics)
        : lengths(AllocationOf(harmonics)), plane(*std::max_element(lengths.begin(), lengths.end())) {
        SkipShortFields();
    }

    int Next() {
        const int position = fieldStart + lengths[field] - plane;
        Advance();
        SkipShortFields();
        return position;
    }

private:
    void Advance() {
        fieldStart += lengths[field];
        ++field;
        if (field == lengths.size()) {
            field = 0;
            fieldStart = kFieldsStart;
            --plane;
        }
    }

    void SkipShortFields() {
        while (plane > 0 && lengths[field] < plane) {
            Advance();
        }
    }

    std::span<const std::uint8_t> lengths;
    int plane;
    std::size_t field = 0;
    int fieldStart = kFieldsStart;
};

} // namespace

int HarmonicsOf(int pitchCode) {
    return std::clamp((((pitchCode >> 2) + 10) * 60648) >> 16, kFewestHarmonics, kMostHarmonics);
}

int BandsOf(int harmonics) {
    return BandCount(harmonics);
}

int BandOfHarmonic(int harmonic) {
    return std::min((harmonic - 1) / 3, kMostBands - 1);
}

int FundamentalOf(int pitchCode) {
    return ((1 << 23) / (4 * pitchCode + 158)) >> 1;
}

std::span<const std::uint8_t> AllocationOf(int harmonics) {
    return std::span(kAllocation)
        .subspan(static_cast<std::size_t>(RowStart(harmonics)), static_cast<std::size_t>(harmonics - 1));
}

int VoicingPosition(int harmonics) {
    return kSparePosition - BandCount(harmonics);
}

std::array<int, kVoiceBits> ParameterPositions(int harmonics) {
    std::array<int, kVoiceBits> positions{};
    std::size_t bit = 0;
    PlaneWalk walk(harmonics);
    for (const int position : {0, 1, 2, 3, 4, 5, 8, 9, 10}) {
        positions[bit++] = position;
    }
    while (bit < 48) {
        positions[bit++] = walk.Next();
    }
    for (int position = VoicingPosition(harmonics); position < kSparePosition; ++position) {
        positions[bit++] = position;
    }
    for (const int position : {11, 12}) {
        positions[bit++] = position;
    }
    while (bit < 84) {
        positions[bit++] = walk.Next();
    }
    for (const int position : {13, 6, 7, kSparePosition}) {
        positions[bit++] = position;
    }
    return positions;
}

double GainOf(int code) {
    return kGains[static_cast<std::size_t>(code)] / kUnitsPerOctave;
}

int GainDeviation(int coefficient) {
    return kGainDeviations[static_cast<std::size_t>(coefficient - 1)];
}

int CoefficientDeviation(int coefficient) {
    return kCoefficientDeviations[static_cast<std::size_t>(coefficient)];
}

double QuantiserStep(int bits, int deviation) {
    const int step = (deviation * kStepOfWidth[static_cast<std::size_t>(bits)]) >> 16;
    return std::ldexp(step, -bits) / kUnitsPerOctave;
}

double Dequantise(int code, int bits, int deviation) {
    if (bits == 0) {
        return 0.0;
    }
    // Not an error of rounding: the decoder cuts, and the cuts of many fields and frames add up in the
    // prediction.
    const double value = (code + 0.5 - std::ldexp(0.5, bits)) * QuantiserStep(bits, deviation);
    return std::floor(kUnitsPerOctave * value) / kUnitsPerOctave;
}

int BlockStart(int block, int harmonics) {
    const int shortLength = harmonics / 6;
    const int shortBlocks = 6 * (shortLength + 1) - harmonics;
    return block * shortLength + std::max(block - shortBlocks, 0);
}

void InverseCosineTransform(std::span<double> values) {
    const int length = static_cast<int>(values.size());
    const int step = length == 1 ? 32767 : 32768 / length;
    std::array<double, kMostHarmonics> coefficients{};
    std::copy(values.begin(), values.end(), coefficients.begin());
    for (int n = 0; n < length; ++n) {
        const int increment = (step >> 1) + n * step;
        double sum = 0.0;
        for (int k = 0; k < length; ++k) {
            const double weight = k == 0 ? 1.0 : 2.0;
            sum += weight * coefficients[static_cast<std::size_t>(k)] * CosineStep((64 + k * increment) >> 7);
        }
        values[static_cast<std::size_t>(n)] = WrapRange(sum);
    }
}

void CosineTransform(std::span<double> values) {
    const std::size_t length = values.size();
    std::array<double, kMostHarmonics> samples{};
    std::copy(values.begin(), values.end(), samples.begin());
    for (std::size_t k = 0; k < length; ++k) {
        double sum = 0.0;
        for (std::size_t n = 0; n < length; ++n) {
            sum += samples[n] * std::cos(std::numbers::pi * static_cast<double>(k) *
                                         (static_cast<double>(n) + 0.5) / static_cast<double>(length));
        }
        values[k] = sum / static_cast<double>(length);
    }
}

double CosineStep(int index) {
    static const std::array<double, kCosineSteps> table = MakeCosineTable();
    return table[static_cast<std::size_t>(index & (kCosineSteps - 1))];
}

void SpectralPredictor::Reset() {
    *this = SpectralPredictor();
}

LogSpectrum SpectralPredictor::Predict(int harmonics) const {
    const int ratio = ((previousHarmonics << 9) * (((1 << 19) / harmonics) >> 1) * 2) >> 12; // Q16
    LogSpectrum prediction{};
    double sum = 0.0;
    for (int l = 1; l <= harmonics; ++l) {
        const int place = l * ratio;
        const int index = std::min(place >> 16, kMostHarmonics - 1);
        const double fraction = ((place & 0xFFFF) >> 1) / kFullScale;
        const auto upper = static_cast<std::size_t>(index);
        const double value =
            index == 0 ? previous[0] : previous[upper - 1] * (1.0 - fraction) + previous[upper] * fraction;
        prediction[static_cast<std::size_t>(l - 1)] = value;
        sum += value;
    }
    const double mean = sum / harmonics;
    const double factor = PredictionFactor(harmonics) / kFullScale;
    for (double& value : std::span(prediction).first(static_cast<std::size_t>(harmonics))) {
        value = std::clamp(factor * (value - mean), -16.0, 32767.0 / kUnitsPerOctave);
    }
    return prediction;
}

LogSpectrum SpectralPredictor::Accept(const LogSpectrum& blockValues, int harmonics) {
    const LogSpectrum prediction = Predict(harmonics);
    const auto count = static_cast<std::size_t>(harmonics);
    for (std::size_t i = 0; i < count; ++i) {
        previous[i] = ClampAmplitude(blockValues[i] + prediction[i]);
    }
    std::fill(previous.begin() + harmonics, previous.end(), previous[count - 1]);
    previousHarmonics = harmonics;
    return previous;
}

} // namespace orva::test
