#include "squelch/NoiseMeasure.h"

#include "dsp/TFIR_F32.h"
#include "tests/support/RandomSource.h"
#include "tests/support/ToneSource.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace orva::squelch {
namespace {

using Samples = std::vector<std::int16_t>;

/// A filter that hands its input on.
struct Through {
    std::int32_t FilterI16(std::int16_t* out, const std::int16_t* in, std::int32_t count) {
        ++calls;
        std::copy_n(in, count, out);
        return count;
    }
    int calls = 0;
};

struct Meter {
    std::int32_t Measure(const Samples& samples, bool scannerActive) {
        scratch.resize(samples.size());
        return MeasureNoise(through, scratch.data(), noiseLevel, scannerActive, samples.data(),
                            static_cast<std::uint32_t>(samples.size()));
    }
    Through through;
    Samples scratch;
    float noiseLevel = 0.0F;
};

} // namespace

TEST(MeasureNoise, IsProportionalToTheRootMeanSquare) {
    for (const int level : {0, 1, 50, 1000, 4000}) {
        Meter meter;
        const double expected = level * 3.07692289352417 * 0.00666;
        EXPECT_EQ(meter.Measure(Samples(2400, static_cast<std::int16_t>(level)), true),
                  static_cast<int>(expected))
            << level;
        EXPECT_NEAR(meter.noiseLevel, expected, 1e-4 * expected) << level; // the sum is single precision
    }
}

TEST(MeasureNoise, AgreesWithTheFormulaInDouble) {
    test::RandomSource random(1);
    Samples samples(2400);
    double squares = 0.0;
    for (std::int16_t& sample : samples) {
        sample = static_cast<std::int16_t>(1500.0 * random.Gaussian());
        squares += static_cast<double>(sample) * sample;
    }
    EXPECT_NEAR(NoiseOf(samples.data(), 2400), std::sqrt(squares / 2400.0) * 3.07692289352417 * 0.00666,
                1e-3);
}

TEST(MeasureNoise, EndsAt99) {
    Meter meter;
    EXPECT_EQ(meter.Measure(Samples(2400, -32768), true), 99);
    EXPECT_EQ(meter.noiseLevel, 99.0F);
    // 99 / (3.0769 x 0.00666) = 4831
    EXPECT_EQ(meter.Measure(Samples(2400, 4832), true), 99);
    EXPECT_EQ(meter.Measure(Samples(2400, 4830), true), 98);
}

TEST(MeasureNoise, ScanningTakesTheBlockAlone) {
    Meter meter;
    meter.noiseLevel = 80.0F;
    EXPECT_EQ(meter.Measure(Samples(100, 1000), true), 20);
    EXPECT_EQ(meter.Measure(Samples(100, 0), true), 0);
}

TEST(MeasureNoise, OtherwiseTheLevelIsSmoothed) {
    Meter meter;
    const Samples block(100, 1000); // 20.49
    double expected = 0.0;
    for (int i = 0; i < 30; ++i) {
        expected = 0.15F * (1000.0 * 3.07692289352417 * 0.00666) + 0.85F * expected;
        EXPECT_EQ(meter.Measure(block, false), static_cast<int>(expected)) << i;
        EXPECT_NEAR(meter.noiseLevel, expected, 1e-4) << i;
    }
    EXPECT_EQ(meter.Measure(block, false), 20);
}

TEST(MeasureNoise, SharesAreSinglePrecisionConstants) {
    EXPECT_EQ(NextNoiseLevel(10.0F, 20.0, false),
              static_cast<float>(20.0 * 0.15000000596046448 + 10.0 * 0.8500000238418579));
    EXPECT_EQ(NextNoiseLevel(10.0F, 20.0, true), 20.0F);
}

TEST(MeasureNoise, NothingToMeasureGives0AndNoScratchMinus1) {
    Meter meter;
    meter.noiseLevel = 50.0F;
    std::int16_t sample = 100;
    EXPECT_EQ(MeasureNoise(meter.through, &sample, meter.noiseLevel, true, nullptr, 5), 0);
    EXPECT_EQ(MeasureNoise(meter.through, &sample, meter.noiseLevel, true, &sample, 0), 0);
    EXPECT_EQ(MeasureNoise(meter.through, nullptr, meter.noiseLevel, true, nullptr, 5), 0);
    EXPECT_EQ(MeasureNoise(meter.through, nullptr, meter.noiseLevel, true, &sample, 1), -1);
    EXPECT_EQ(meter.noiseLevel, 50.0F);
    EXPECT_EQ(meter.through.calls, 0);
}

TEST(MeasureNoise, SpeechBandDoesNotCount) {
    for (const int rate : {48000, 64000}) {
        dsp::TFIR_F32 highPass;
        highPass.SetSampleRate(rate);
        highPass.SetLength(kNoiseHighPassTaps);
        highPass.SetFilterType(dsp::kFilterHighPass);
        highPass.SetLowCut(kNoiseHighPassHz);
        float level = 0.0F;
        Samples scratch(2400);
        const auto measure = [&](double hz) {
            test::ToneSource tone(hz, rate, 4000.0);
            std::int32_t value = 0;
            for (int block = 0; block < 3; ++block) {
                Samples samples(2400);
                std::generate(samples.begin(), samples.end(),
                              [&] { return static_cast<std::int16_t>(tone.Next()); });
                value = MeasureNoise(highPass, scratch.data(), level, true, samples.data(), 2400);
            }
            return value;
        };
        EXPECT_EQ(measure(3000.0), 0) << rate;
        EXPECT_NEAR(measure(8000.0), 57, 1) << rate; // 4000 / sqrt(2) x 0.02049
    }
}

} // namespace orva::squelch
