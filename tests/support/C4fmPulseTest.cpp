#include "tests/support/C4fmPulse.h"

#include "tests/support/RandomSource.h"

#include <algorithm>
#include <cmath>
#include <string>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

std::string RandomDibits(std::size_t count) {
    RandomSource random(11);
    std::string dibits;
    for (std::size_t i = 0; i < count; ++i) {
        dibits.push_back(static_cast<char>('0' + random.Below(4)));
    }
    return dibits;
}

// Mean deviation over the symbol period around the centre of symbol `index`: what an integrate-and-dump
// receiver sees.
double MeanOverSymbol(const std::string& dibits, std::size_t index) {
    constexpr int kSteps = 64;
    double sum = 0.0;
    for (int step = 0; step < kSteps; ++step) {
        sum += DeviationAt(dibits, static_cast<double>(index) + (step + 0.5) / kSteps);
    }
    return sum / kSteps;
}

TEST(C4fmPulse, DeviationsOfTheFourClasses) {
    EXPECT_EQ(NominalDeviation('0'), 600.0);
    EXPECT_EQ(NominalDeviation('1'), 1800.0);
    EXPECT_EQ(NominalDeviation('2'), -600.0);
    EXPECT_EQ(NominalDeviation('3'), -1800.0);
}

TEST(C4fmPulse, ResponseIsRaisedCosineTimesInverseSinc) {
    EXPECT_DOUBLE_EQ(ShapingResponse(0.0), 1.0);
    const double quarter = 3.14159265358979323846 / 4.0;
    EXPECT_NEAR(ShapingResponse(1200.0), quarter / std::sin(quarter), 1e-12);
    // Half way down the roll-off, at half the symbol rate, the inverse sinc is pi / 2.
    EXPECT_NEAR(ShapingResponse(2400.0), 0.5 * 3.14159265358979323846 / 2.0, 1e-12);
    EXPECT_NEAR(ShapingResponse(-2400.0), ShapingResponse(2400.0), 0.0);
    EXPECT_EQ(ShapingResponse(2880.0), 0.0);
    EXPECT_EQ(ShapingResponse(5000.0), 0.0);
}

TEST(C4fmPulse, PulseHasTheResponseAsItsSpectrum) {
    constexpr int kStepsPerSymbol = 50;
    for (const double hz : {0.0, 500.0, 1200.0, 1900.0, 2400.0, 2800.0, 3500.0}) {
        double sum = 0.0;
        for (int step = -kPulseReach * kStepsPerSymbol; step <= kPulseReach * kStepsPerSymbol; ++step) {
            const double symbols = static_cast<double>(step) / kStepsPerSymbol;
            sum +=
                ShapingPulse(symbols) * std::cos(2.0 * 3.14159265358979323846 * hz * symbols / kSymbolRate);
        }
        EXPECT_NEAR(sum / kStepsPerSymbol, ShapingResponse(hz), 2e-3) << hz << " Hz";
    }
}

TEST(C4fmPulse, PulseIsSymmetricAndEnds) {
    EXPECT_EQ(ShapingPulse(1.3), ShapingPulse(-1.3));
    EXPECT_EQ(ShapingPulse(kPulseReach), 0.0);
    EXPECT_EQ(ShapingPulse(1e9), 0.0);
}

TEST(C4fmPulse, LongRunReachesTheNominalDeviation) {
    for (const char dibit : {'0', '1', '2', '3'}) {
        const std::string run(100, dibit);
        for (int step = 0; step < 20; ++step) {
            const double symbols = 49.0 + 0.1 * step;
            EXPECT_NEAR(DeviationAt(run, symbols), NominalDeviation(dibit), 2.0) << dibit << " " << symbols;
        }
    }
}

TEST(C4fmPulse, MeanOverASymbolIsFreeOfNeighbours) {
    const std::string dibits = RandomDibits(400);
    double worst = 0.0;
    for (std::size_t index = 20; index < 380; ++index) {
        worst = std::max(worst, std::abs(MeanOverSymbol(dibits, index) - NominalDeviation(dibits[index])));
    }
    RecordProperty("worst_hz", std::to_string(worst));
    EXPECT_LT(worst, 5.0);
}

TEST(C4fmPulse, FrequencyAtTheCentreIsSlicedWithFewErrors) {
    // Without the receiver's average the inverse sinc leaves neighbours in the instantaneous frequency: at
    // worst they carry it over a threshold midway between the levels.
    constexpr double kThreshold = 1200.0;
    const std::string dibits = RandomDibits(20040);
    int wrong = 0;
    double worst = 0.0;
    for (std::size_t index = 20; index < 20020; ++index) {
        const double deviation = DeviationAt(dibits, static_cast<double>(index) + 0.5);
        const char inner = deviation >= 0.0 ? '0' : '2';
        const char outer = deviation >= 0.0 ? '1' : '3';
        wrong += (std::abs(deviation) > kThreshold ? outer : inner) != dibits[index];
        worst = std::max(worst, std::abs(deviation - NominalDeviation(dibits[index])));
    }
    RecordProperty("worst_hz", std::to_string(worst));
    EXPECT_GT(wrong, 0);
    EXPECT_LT(wrong, 200); // 1 %
    EXPECT_LT(worst, 1000.0);
}

TEST(C4fmPulse, NothingButSkirtsOutsideTheTransmission) {
    const std::string dibits(50, '1');
    EXPECT_EQ(DeviationAt(dibits, -kPulseReach), 0.0);
    EXPECT_EQ(DeviationAt(dibits, 51.0 + kPulseReach), 0.0);
    EXPECT_EQ(DeviationAt("", 3.0), 0.0);
}

} // namespace
} // namespace orva::test
