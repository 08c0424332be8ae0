#include "squelch/CtbVoiceDetector.h"

#include "tests/squelch/SanitizedBuild.h"
#include "tests/support/RandomSource.h"
#include "tests/support/ToneSource.h"
#include "tests/support/VoiceLikeNoise.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include <gtest/gtest.h>

namespace orva::squelch {

struct CtbVoiceDetectorInspector {
    static float Level(const CtbVoiceDetector& d) { return d.level; }
    static float CrossingRate(const CtbVoiceDetector& d) { return d.crossingRate; }
    static float Energy(const CtbVoiceDetector& d) { return d.blockEnergy; }
    static float Share(const CtbVoiceDetector& d) { return d.lowEnergyShare; }
    static float PreviousShare(const CtbVoiceDetector& d) { return d.previousShare; }
    static std::uint32_t Fill(const CtbVoiceDetector& d) { return d.blockFill; }
    static std::size_t Capacity(const CtbVoiceDetector& d) { return d.block.size(); }
    static float SampleRate(const CtbVoiceDetector& d) { return d.sampleRate; }
    static float LevelFloor(const CtbVoiceDetector& d) { return d.levelFloor; }
    static float Threshold(const CtbVoiceDetector& d) { return d.voiceThreshold; }
};

namespace {

using Inspector = CtbVoiceDetectorInspector;
using Samples = std::vector<std::int16_t>;

constexpr std::uint32_t kRate = 48000;
constexpr std::uint32_t kBlock = kRate / 2;
constexpr std::uint32_t kSubBlock = 1066; // 48000 Hz / 45

Samples Make(std::size_t count, const std::function<double()>& next) {
    Samples samples(count);
    std::generate(samples.begin(), samples.end(), [&] {
        return static_cast<std::int16_t>(std::lrint(std::clamp(next(), -32768.0, 32767.0)));
    });
    return samples;
}

struct Detector : CtbVoiceDetector {
    explicit Detector(float threshold = 0.5F, std::uint32_t length = kBlock) {
        SetSampleRate(kRate);
        SetBlockLength(length);
        SetLevelFloor(0.1F);
        SetVoiceThreshold(threshold);
    }
    void Take(const Samples& samples) {
        Process(samples.data(), static_cast<std::uint32_t>(samples.size()), 1);
    }
};

/// The analysis of one block by its formulas.
struct Reference {
    double lastInput = 0.0;
    double lastOutput = 0.0;
    double z = 0.0;
    double e = 0.0;
    double level = 0.0;
    double share = 0.0;
    double measure = 0.0;
    int result = 0;

    static double Square(double y) {
        const auto product = static_cast<std::uint64_t>(y * y);
        return static_cast<double>(static_cast<std::int32_t>(static_cast<std::uint32_t>(product)));
    }

    void Analyse(const Samples& x, double rate, double floor, double threshold) {
        const double a = std::exp(-10.0 * 3.14159265358979323846 / rate);
        std::vector<double> y{lastOutput};
        for (const double input : x) {
            lastOutput = std::trunc((input - lastInput) * (1.0 + a) / 2.0 + a * lastOutput);
            lastInput = input;
            y.push_back(lastOutput);
        }
        const auto negative = [](double v) { return v < 0.0; };
        const std::size_t n = x.size();
        z = e = 0.0;
        for (std::size_t i = 1; i <= n; ++i) {
            z += negative(y[i]) != negative(y[i - 1]) ? 1.0 / static_cast<double>(n) : 0.0;
            e += Square(y[i]) / (static_cast<double>(n) * 1073741824.0);
        }
        const auto m = static_cast<std::size_t>(rate / 45.0);
        const std::size_t c = n / m;
        double high = 0.0;
        double low = 0.0;
        for (std::size_t block = 0; block < c; ++block) {
            double zs = 0.0;
            double es = 0.0;
            for (std::size_t i = block * m + 1; i <= (block + 1) * m; ++i) {
                zs += negative(y[i]) != negative(y[i - 1]) ? 1.0 : 0.0;
                es += Square(y[i]) / (static_cast<double>(m) * 1073741824.0);
            }
            high += 1.5 * z <= zs / static_cast<double>(m) + 1e-12 ? 1.0 : 0.0;
            low += es <= 0.1 * e ? 1.0 : 0.0;
        }
        level = std::sqrt(e * z * 10000.0);
        const double big = 10.0 * high / static_cast<double>(c);
        const double pauses = low / static_cast<double>(c) * 16.666666666666668;
        if (level < floor) {
            result = 1;
            measure = 0.0;
            share = low / static_cast<double>(c);
            return;
        }
        share = pauses;
        measure = std::min(0.2 * std::max(big, pauses), 1.0);
        result = measure >= threshold ? 2 : big > 1.0 || pauses > 1.0 ? 0 : 3;
    }
};

/// `quiet` of 22 sub-blocks at a tenth of the level of the others.
Samples WithPauses(int quiet) {
    test::ToneSource tone(1000.0, kRate);
    int index = 0;
    return Make(kBlock, [&] {
        const int subBlock = index++ / static_cast<int>(kSubBlock);
        return tone.Next() * (subBlock < quiet ? 800.0 : 8000.0);
    });
}

} // namespace

TEST(CtbVoiceDetector, Defaults) {
    const CtbVoiceDetector detector;
    EXPECT_EQ(detector.result, 0);
    EXPECT_EQ(detector.voiceMeasure, 0.0F);
    EXPECT_EQ(Inspector::SampleRate(detector), 11025.0F);
    EXPECT_EQ(Inspector::LevelFloor(detector), 0.15F);
    EXPECT_EQ(Inspector::Threshold(detector), 0.2F);
}

TEST(CtbVoiceDetector, AgreesWithTheFormulasInDouble) {
    test::VoiceLikeNoise voice({.sampleRate = kRate});
    test::RandomSource random(2);
    Detector detector;
    Reference reference;
    for (int block = 0; block < 24; ++block) {
        const double level = block % 3 == 2 ? 20.0 : 12000.0; // every third one quiet
        const Samples samples = Make(kBlock, [&] {
            return level * voice.Next() + 400.0 + (block % 4 == 3 ? random.Gaussian() : 0.0);
        });
        detector.Take(samples);
        reference.Analyse(samples, kRate, 0.1, 0.5);
        EXPECT_FLOAT_EQ(Inspector::CrossingRate(detector), static_cast<float>(reference.z)) << block;
        EXPECT_FLOAT_EQ(Inspector::Energy(detector), static_cast<float>(reference.e)) << block;
        EXPECT_FLOAT_EQ(Inspector::Level(detector), static_cast<float>(reference.level)) << block;
        EXPECT_FLOAT_EQ(Inspector::Share(detector), static_cast<float>(reference.share)) << block;
        EXPECT_FLOAT_EQ(detector.voiceMeasure, static_cast<float>(reference.measure)) << block;
        EXPECT_EQ(detector.result, reference.result) << block;
    }
}

TEST(CtbVoiceDetector, SpeechLikeBurstsAreSpeech) {
    for (const double pitch : {85.0, 120.0, 210.0}) {
        test::VoiceLikeNoise voice({.sampleRate = kRate, .pitch = pitch});
        Detector detector;
        int speech = 0;
        constexpr int kBlocks = test::kSanitizedBuild ? 16 : 40;
        for (int block = 0; block < kBlocks; ++block) {
            detector.Take(Make(kBlock, [&] { return 12000.0 * voice.Next(); }));
            speech += detector.result == kVoiceSpeech ? 1 : 0;
        }
        EXPECT_GE(speech, kBlocks * 5 / 8) << pitch;
    }
}

TEST(CtbVoiceDetector, DcAloneIsRemoved) {
    Detector detector;
    detector.Take(Samples(kBlock, 20000));
    detector.Take(Samples(kBlock, 20000));
    EXPECT_EQ(Inspector::CrossingRate(detector), 0.0F);
    EXPECT_EQ(Inspector::Energy(detector), 0.0F);
    EXPECT_EQ(Inspector::Level(detector), 0.0F);
    EXPECT_EQ(detector.result, kVoiceQuiet);
}

TEST(CtbVoiceDetector, SilenceIsQuiet) {
    Detector detector;
    detector.voiceMeasure = 1.0F;
    detector.Take(Samples(kBlock, 0));
    EXPECT_EQ(detector.result, kVoiceQuiet);
    EXPECT_EQ(detector.voiceMeasure, 0.0F);
}

TEST(CtbVoiceDetector, SteadyToneIsSteady) {
    test::ToneSource tone(1000.0, kRate, 8000.0);
    Detector detector;
    for (int block = 0; block < 3; ++block) {
        detector.Take(Make(kBlock, [&] { return tone.Next(); }));
        EXPECT_EQ(detector.result, kVoiceSteady);
        EXPECT_EQ(detector.voiceMeasure, 0.0F);
    }
    EXPECT_NEAR(Inspector::CrossingRate(detector), 2000.0 / kRate, 1e-4);
    EXPECT_NEAR(Inspector::Energy(detector), 0.5 * std::pow(8000.0 / 32768.0, 2), 1e-5);
}

TEST(CtbVoiceDetector, SteadyNoiseIsSteady) {
    test::RandomSource random(1);
    Detector detector;
    for (int block = 0; block < 20; ++block) {
        detector.Take(Make(kBlock, [&] { return 5000.0 * random.Gaussian(); }));
        EXPECT_EQ(detector.result, kVoiceSteady) << block;
    }
}

TEST(CtbVoiceDetector, LevelUnderTheFloorIsQuiet) {
    test::ToneSource tone(1000.0, kRate, 1000.0);
    const Samples samples = Make(kBlock, [&] { return tone.Next(); });
    // sqrt(E Z 10000), E = 0.000466, Z = 0.0417: 0.44
    Detector loud;
    loud.SetLevelFloor(0.43F);
    loud.Take(samples);
    EXPECT_EQ(loud.result, kVoiceSteady);
    Detector quiet;
    quiet.SetLevelFloor(0.45F);
    quiet.Take(samples);
    EXPECT_EQ(quiet.result, kVoiceQuiet);
}

TEST(CtbVoiceDetector, PausesRaiseTheMeasureUpToSaturation) {
    for (int quiet = 0; quiet <= 10; ++quiet) {
        Detector detector;
        detector.Take(WithPauses(quiet));
        const double b = quiet / 22.0 * 16.666666666666668;
        EXPECT_FLOAT_EQ(detector.voiceMeasure, static_cast<float>(std::min(0.2 * b, 1.0))) << quiet;
        EXPECT_EQ(detector.result, 0.2 * b >= 0.5 ? kVoiceSpeech
                                   : b > 1.0      ? kVoiceFluctuates
                                                  : kVoiceSteady)
            << quiet;
    }
}

TEST(CtbVoiceDetector, HighCrossingsRaiseTheMeasure) {
    // 4 of 22 sub-blocks hiss at 6 kHz among 300 Hz, at the same level.
    test::ToneSource low(300.0, kRate, 8000.0);
    test::ToneSource high(6000.0, kRate, 8000.0);
    int index = 0;
    Detector detector;
    detector.Take(Make(kBlock, [&] {
        const double hum = low.Next();
        const double hiss = high.Next();
        return index++ < 4 * static_cast<int>(kSubBlock) ? hiss : hum;
    }));
    EXPECT_FLOAT_EQ(detector.voiceMeasure, static_cast<float>(0.2 * 10.0 * 4 / 22.0));
    EXPECT_EQ(detector.result, kVoiceFluctuates);
}

TEST(CtbVoiceDetector, ThresholdZeroMakesEveryLoudBlockSpeech) {
    test::ToneSource tone(1000.0, kRate, 8000.0);
    Detector detector(0.0F);
    detector.Take(Make(kBlock, [&] { return tone.Next(); }));
    EXPECT_EQ(detector.result, kVoiceSpeech);
    detector.Take(Samples(kBlock, 0));
    detector.Take(Samples(kBlock, 0));
    EXPECT_EQ(detector.result, kVoiceQuiet);
}

TEST(CtbVoiceDetector, MeasureEqualToTheThresholdIsSpeech) {
    Detector detector(1.0F);
    detector.Take(WithPauses(10));
    EXPECT_EQ(detector.voiceMeasure, 1.0F);
    EXPECT_EQ(detector.result, kVoiceSpeech);
}

TEST(CtbVoiceDetector, KeepsTheShareOfTheBlockBefore) {
    Detector detector;
    detector.Take(WithPauses(3));
    const float first = Inspector::Share(detector);
    EXPECT_GT(first, 0.0F);
    detector.Take(WithPauses(0));
    EXPECT_EQ(Inspector::PreviousShare(detector), first);
    EXPECT_EQ(Inspector::Share(detector), 0.0F);
}

TEST(CtbVoiceDetector, QuietBlockStoresTheUnscaledShare) {
    test::RandomSource random(1);
    int index = 0;
    Detector detector;
    detector.Take(Make(kBlock, [&] { return index++ < 11 * static_cast<int>(kSubBlock) ? 0.0 : 2.0; }));
    EXPECT_EQ(detector.result, kVoiceQuiet);
    EXPECT_GT(Inspector::Share(detector), 0.4F);
    EXPECT_LE(Inspector::Share(detector), 1.0F);
}

TEST(CtbVoiceDetector, SquaresOfTheLargestJumpsWrap) {
    // A filtered jump over the full range reaches 65535; its square is above 2^31 and counts as negative.
    Samples samples(kBlock);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = i % 2 == 0 ? std::int16_t{32767} : std::int16_t{-32768};
    }
    Samples jump(kBlock, -32768);
    std::fill(jump.begin() + kBlock / 2, jump.end(), std::int16_t{32767});
    Detector detector;
    Reference reference;
    for (const Samples* block : {&samples, &jump}) {
        detector.Take(*block);
        reference.Analyse(*block, kRate, 0.1, 0.5);
        EXPECT_FLOAT_EQ(Inspector::Energy(detector), static_cast<float>(reference.e));
    }
}

TEST(CtbVoiceDetector, FilterAndSignRunThroughFromBlockToBlock) {
    test::ToneSource tone(900.0, kRate, 8000.0);
    const Samples samples = Make(4 * 1000, [&] { return tone.Next(); });
    Detector detector(0.5F, 1000);
    for (std::ptrdiff_t begin = 0; begin < 4000; begin += 1000) {
        const Samples block(samples.begin() + begin, samples.begin() + begin + 1000);
        detector.Take(block);
        // Shorter than a sub-block: the whole-block measures are made all the same.
        EXPECT_EQ(detector.result, kVoiceQuiet);
        EXPECT_EQ(detector.voiceMeasure, 0.0F);
    }
    EXPECT_NEAR(Inspector::CrossingRate(detector), 1800.0 / kRate, 1.1e-3);
}

TEST(CtbVoiceDetector, BlockShorterThanASubBlockIsQuiet) {
    for (const std::uint32_t length : {1U, 100U, kSubBlock - 1}) {
        Detector detector(0.0F, length);
        detector.Take(Make(length, [i = 0]() mutable { return ++i % 2 == 0 ? 20000.0 : -20000.0; }));
        EXPECT_EQ(detector.result, kVoiceQuiet) << length;
        EXPECT_EQ(Inspector::Share(detector), 0.0F) << length;
    }
    // Sub-blocks of no samples, and of more than there are.
    for (const float rate : {1e-30F, 40.0F, 1e30F, INFINITY}) {
        CtbVoiceDetector detector;
        detector.SetSampleRate(rate);
        detector.SetBlockLength(10);
        const Samples samples(10, 1000);
        detector.Process(samples.data(), 10, 1);
        EXPECT_EQ(detector.result, kVoiceQuiet) << rate;
    }
}

TEST(CtbVoiceDetector, BlockOfOneSubBlockIsEnough) {
    Detector detector(0.0F, kSubBlock);
    detector.Take(Make(kSubBlock, [i = 0]() mutable { return ++i % 2 == 0 ? 20000.0 : -20000.0; }));
    EXPECT_EQ(detector.result, kVoiceSpeech);
}

TEST(CtbVoiceDetector, SplitsAnywhere) {
    test::VoiceLikeNoise voice({.sampleRate = kRate});
    const Samples samples = Make(4 * kBlock, [&] { return 12000.0 * voice.Next(); });
    Detector whole;
    whole.Take(samples);
    for (const std::uint32_t piece : {1U, 7U, 2400U, 30000U}) {
        Detector detector;
        for (std::uint32_t begin = 0; begin < samples.size(); begin += piece) {
            const auto left = static_cast<std::uint32_t>(samples.size()) - begin;
            detector.Process(samples.data() + begin, std::min(piece, left), 1);
        }
        EXPECT_EQ(detector.result, whole.result) << piece;
        EXPECT_EQ(detector.voiceMeasure, whole.voiceMeasure) << piece;
        EXPECT_EQ(Inspector::Energy(detector), Inspector::Energy(whole)) << piece;
    }
}

TEST(CtbVoiceDetector, TakesEveryStridethSample) {
    const Samples samples = WithPauses(5);
    Samples spread(3 * samples.size(), std::int16_t{99});
    for (std::size_t i = 0; i < samples.size(); ++i) {
        spread[3 * i] = samples[i];
    }
    Detector plain;
    Detector strided;
    plain.Take(samples);
    strided.Process(spread.data(), static_cast<std::uint32_t>(spread.size()), 3);
    EXPECT_EQ(Inspector::Energy(strided), Inspector::Energy(plain));
    EXPECT_EQ(strided.voiceMeasure, plain.voiceMeasure);
}

TEST(CtbVoiceDetector, NothingHappensWithoutABlockLengthSamplesOrStride) {
    CtbVoiceDetector detector;
    const Samples samples(100, 1000);
    detector.Process(samples.data(), 100, 1);
    EXPECT_EQ(Inspector::Fill(detector), 0U);
    detector.SetBlockLength(10);
    detector.Process(samples.data(), 0, 1);
    detector.Process(samples.data(), 100, 0);
    detector.Process(nullptr, 100, 1);
    EXPECT_EQ(Inspector::Fill(detector), 0U);
    EXPECT_EQ(detector.result, 0);
}

TEST(CtbVoiceDetector, GrowingBlockKeepsWhatItHolds) {
    const Samples samples = WithPauses(4);
    Detector grown(0.5F, kBlock / 2);
    const std::uint32_t first = 5000;
    grown.Process(samples.data(), first, 1);
    grown.SetBlockLength(kBlock);
    EXPECT_EQ(Inspector::Fill(grown), first);
    grown.Process(samples.data() + first, kBlock - first, 1);
    Detector plain;
    plain.Take(samples);
    EXPECT_EQ(Inspector::Fill(grown), 0U);
    EXPECT_EQ(Inspector::Energy(grown), Inspector::Energy(plain));
    EXPECT_EQ(grown.voiceMeasure, plain.voiceMeasure);
}

TEST(CtbVoiceDetector, BufferDoesNotShrink) {
    Detector detector;
    detector.SetBlockLength(10);
    EXPECT_EQ(Inspector::Capacity(detector), kBlock);
}

TEST(CtbVoiceDetector, BlockLengthBelowTheFillEndsTheBlockAtTheNextSample) {
    Detector detector;
    const Samples samples(3000, 1000);
    detector.Process(samples.data(), 2000, 1);
    detector.SetBlockLength(1500);
    EXPECT_EQ(Inspector::Fill(detector), 2000U);
    detector.Process(samples.data(), 1, 1);
    EXPECT_EQ(Inspector::Fill(detector), 0U);
    EXPECT_EQ(detector.result, kVoiceQuiet);
}

TEST(CtbVoiceDetector, IgnoresRatesThatAreNotAboveZero) {
    CtbVoiceDetector detector;
    for (const float rate : {0.0F, -1.0F, std::nanf("")}) {
        detector.SetSampleRate(rate);
        EXPECT_EQ(Inspector::SampleRate(detector), 11025.0F) << rate;
    }
}

} // namespace orva::squelch
