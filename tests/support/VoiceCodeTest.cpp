#include "tests/support/VoiceCode.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

std::vector<int> Row(int harmonics) {
    const auto row = AllocationOf(harmonics);
    return {row.begin(), row.end()};
}

// The decoder's fixed-point formula, in steps of 2^-11 octave.
int DequantiseInteger(int code, int bits, int deviation, int stepOfWidth) {
    const int step = (deviation * stepOfWidth) >> 16;
    const int product = (2 * code + 1 - (1 << bits)) * step * 2;
    return (bits <= 14 ? product * (1 << (14 - bits)) : product >> (bits - 14)) >> 16;
}

TEST(VoiceCode, HarmonicsFollowTheStandardForEveryPitchCode) {
    for (int pitchCode = 0; pitchCode < kPitchCodes; ++pitchCode) {
        const double halfPeriods = std::floor((pitchCode + 39.5) / 4.0 + 0.25);
        EXPECT_EQ(HarmonicsOf(pitchCode), static_cast<int>(std::floor(0.9254 * halfPeriods))) << pitchCode;
    }
    EXPECT_EQ(HarmonicsOf(0), 9);
    EXPECT_EQ(HarmonicsOf(207), 56);
}

TEST(VoiceCode, BandsOfThreeHarmonicsUpToTwelve) {
    for (int harmonics = 9; harmonics <= 56; ++harmonics) {
        const int expected = harmonics <= 36 ? static_cast<int>(std::ceil(harmonics / 3.0)) : 12;
        EXPECT_EQ(BandsOf(harmonics), expected) << harmonics;
        EXPECT_EQ(BandOfHarmonic(harmonics), BandsOf(harmonics) - 1) << harmonics;
        EXPECT_EQ(VoicingPosition(harmonics) + BandsOf(harmonics), 87) << harmonics;
    }
    EXPECT_EQ(BandOfHarmonic(3), 0);
    EXPECT_EQ(BandOfHarmonic(4), 1);
    EXPECT_EQ(BandOfHarmonic(37), 11);
}

TEST(VoiceCode, FundamentalIsTwoOverCodeAndAConstant) {
    EXPECT_EQ(FundamentalOf(0), 26546);
    EXPECT_EQ(FundamentalOf(207), 4253);
    for (int pitchCode = 0; pitchCode < kPitchCodes; ++pitchCode) {
        EXPECT_NEAR(std::ldexp(FundamentalOf(pitchCode), -19), 2.0 / (pitchCode + 39.5), 2e-6) << pitchCode;
    }
}

TEST(VoiceCode, AllocationRowsOfTheStandard) {
    EXPECT_EQ(Row(9), (std::vector<int>{10, 9, 9, 9, 9, 9, 8, 7}));
    EXPECT_EQ(Row(10), (std::vector<int>{9, 9, 8, 8, 8, 9, 7, 6, 5}));
    EXPECT_EQ(Row(20), (std::vector<int>{6, 5, 5, 4, 4, 5, 4, 5, 4, 4, 3, 3, 2, 3, 2, 1, 3, 2, 1}));
    EXPECT_EQ(Row(56).size(), 55U);
}

TEST(VoiceCode, EveryTransmittedBitHasAPositionOfItsOwn) {
    for (int harmonics = 9; harmonics <= 56; ++harmonics) {
        auto positions = ParameterPositions(harmonics);
        std::sort(positions.begin(), positions.end());
        for (int i = 0; i < kVoiceBits; ++i) {
            EXPECT_EQ(positions[static_cast<std::size_t>(i)], i) << harmonics;
        }
    }
}

TEST(VoiceCode, DequantiseAgreesWithTheIntegerFormula) {
    constexpr int kStepOfWidth[] = {0, 4915, 6963, 10650, 13107, 18350, 19661, 20972, 20972, 20972, 20972};
    for (int bits = 1; bits <= 10; ++bits) {
        for (int coefficient = 1; coefficient <= 5; ++coefficient) {
            const int deviation = GainDeviation(coefficient);
            for (int code = 0; code < 1 << bits; ++code) {
                const int expected = DequantiseInteger(code, bits, deviation, kStepOfWidth[bits]);
                ASSERT_EQ(2048.0 * Dequantise(code, bits, deviation), expected)
                    << "bits " << bits << " coefficient " << coefficient << " code " << code;
            }
        }
    }
}

TEST(VoiceCode, FieldWithoutBitsIsZero) {
    EXPECT_EQ(Dequantise(0, 0, CoefficientDeviation(3)), 0.0);
}

TEST(VoiceCode, BlocksTileTheHarmonicsShortOnesFirst) {
    for (int harmonics = 9; harmonics <= 56; ++harmonics) {
        EXPECT_EQ(BlockStart(0, harmonics), 0) << harmonics;
        EXPECT_EQ(BlockStart(6, harmonics), harmonics) << harmonics;
        for (int block = 0; block < 6; ++block) {
            const int length = BlockStart(block + 1, harmonics) - BlockStart(block, harmonics);
            const bool isShort = block < 6 - harmonics % 6;
            EXPECT_EQ(length, harmonics / 6 + (isShort ? 0 : 1)) << harmonics << " block " << block;
        }
    }
}

TEST(VoiceCode, CosineTransformsUndoEachOther) {
    for (std::size_t length = 1; length <= 10; ++length) {
        std::vector<double> values(length);
        for (std::size_t i = 0; i < length; ++i) {
            values[i] = std::sin(1.7 * static_cast<double>(i) + 0.4);
        }
        auto transformed = values;
        CosineTransform(transformed);
        InverseCosineTransform(transformed);
        for (std::size_t i = 0; i < length; ++i) {
            // 512 cosine steps, half a step off at most, for each of the coefficients.
            EXPECT_NEAR(transformed[i], values[i], 0.02) << "length " << length << " index " << i;
        }
    }
}

TEST(VoiceCode, InverseCosineTransformWrapsBeyondSixteenOctaves) {
    std::array<double, 2> values = {17.0, 0.0};
    InverseCosineTransform(values);
    EXPECT_NEAR(values[0], 17.0 - 32.0, 1e-3);
}

TEST(SpectralPredictor, ExpectsNothingOfAFreshStart) {
    const auto prediction = SpectralPredictor().Predict(20);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(prediction[static_cast<std::size_t>(i)], 0.0) << i;
    }
}

TEST(SpectralPredictor, KeepsTheShapeAndNotTheMean) {
    for (const int harmonics : {9, 15, 16, 24, 25, 56}) {
        SpectralPredictor predictor;
        LogSpectrum values{};
        double mean = 0.0;
        for (int l = 0; l < harmonics; ++l) {
            values[static_cast<std::size_t>(l)] = 5.0 + std::cos(0.3 * l);
            mean += values[static_cast<std::size_t>(l)] / harmonics;
        }
        predictor.Accept(values, harmonics);
        const auto prediction = predictor.Predict(harmonics);
        const double factor = std::clamp(0.03 * harmonics - 0.05, 0.4, 0.7);
        for (int l = 0; l < harmonics; ++l) {
            const auto i = static_cast<std::size_t>(l);
            EXPECT_NEAR(prediction[i], factor * (values[i] - mean), 1e-3)
                << harmonics << " harmonic " << l + 1;
        }
    }
}

TEST(SpectralPredictor, StretchesTheLastSpectrumToTheNewHarmonics) {
    SpectralPredictor predictor;
    LogSpectrum values{};
    for (int l = 0; l < 50; ++l) {
        values[static_cast<std::size_t>(l)] = 0.1 * (l + 1);
    }
    predictor.Accept(values, 50);
    const auto prediction = predictor.Predict(25);
    for (std::size_t i = 1; i < 25; ++i) {
        EXPECT_NEAR(prediction[i] - prediction[i - 1], 0.7 * 0.2, 1e-3) << i;
    }
}

TEST(SpectralPredictor, ClampsAtFifteenOctaves) {
    SpectralPredictor predictor;
    LogSpectrum values{};
    values.fill(15.5);
    const auto high = predictor.Accept(values, 10);
    EXPECT_EQ(high[0], 30719.0 / 2048.0);
    values.fill(-15.5);
    const auto low = predictor.Accept(values, 10);
    EXPECT_EQ(low[0], -15.0);
}

} // namespace
} // namespace orva::test
