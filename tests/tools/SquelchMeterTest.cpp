#include "tools/orva-decode/SquelchMeter.h"

#include "tests/support/DcsEncoder.h"
#include "tests/support/RandomSource.h"
#include "tests/support/ToneSource.h"
#include "tests/support/VoiceLikeNoise.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include <gtest/gtest.h>

namespace orva::tools {
namespace {

constexpr std::uint32_t kBlock = 2400;

/// Readings of `seconds` of audio, -1.0 .. 1.0.
std::vector<SquelchReading> Measure(std::uint32_t rate, double seconds,
                                    const std::function<double()>& audio) {
    SquelchMeter meter;
    meter.SetSampleRate(rate);
    std::vector<SquelchReading> readings;
    const auto samples = static_cast<std::uint32_t>(seconds * rate);
    for (std::uint32_t begin = 0; begin < samples; begin += kBlock) {
        std::vector<std::int16_t> block(std::min(kBlock, samples - begin));
        std::generate(block.begin(), block.end(),
                      [&] { return static_cast<std::int16_t>(std::lrint(32767.0 * audio())); });
        if (meter.Feed(block.data(), static_cast<std::uint32_t>(block.size()))) {
            readings.push_back(meter.Take());
        }
    }
    return readings;
}

/// A code as the FM demodulator hears it, whose audio is above zero while the carrier is below its rest
/// frequency.
double CodeAudio(test::DcsEncoder& code) {
    return -0.1 * code.NextLevel();
}

class SquelchMeterTest : public testing::TestWithParam<std::uint32_t> {};

TEST_P(SquelchMeterTest, ReadsEveryHalfSecond) {
    EXPECT_EQ(Measure(GetParam(), 3.0, [] { return 0.0; }).size(), 6U);
}

TEST_P(SquelchMeterTest, SilenceIsNothing) {
    for (const SquelchReading& reading : Measure(GetParam(), 2.0, [] { return 0.0; })) {
        EXPECT_EQ(reading.ctcss, 0);
        EXPECT_TRUE(reading.dcs.empty());
        EXPECT_EQ(reading.voice, 0);
        EXPECT_EQ(reading.noise, 0);
    }
}

TEST_P(SquelchMeterTest, HearsATone) {
    test::ToneSource tone(100.0, GetParam(), 0.1);
    const auto readings = Measure(GetParam(), 2.0, [&] { return tone.Next(); });
    ASSERT_EQ(readings.size(), 4U);
    EXPECT_EQ(readings[2].ctcss, 100000);
    EXPECT_EQ(readings[3].ctcss, 100000);
    EXPECT_LT(readings[3].noise, 5);
}

TEST_P(SquelchMeterTest, HearsACodeOfEitherPolarity) {
    constexpr std::int32_t kCode = 0023;
    for (const bool inverted : {false, true}) {
        test::DcsEncoder code(kCode, inverted, static_cast<int>(GetParam()));
        const auto readings = Measure(GetParam(), 2.0, [&] { return CodeAudio(code); });
        ASSERT_EQ(readings.size(), 4U);
        const std::int32_t expected = inverted ? -kCode : kCode;
        for (std::size_t i = 1; i < readings.size(); ++i) {
            EXPECT_EQ(readings[i].dcs.count(expected), 1U) << "reading " << i;
            EXPECT_EQ(readings[i].dcs.size(), 2U) << "a code and the one whose inverse it is";
        }
    }
}

TEST_P(SquelchMeterTest, CodesAreThoseOfTheirHalfSecondAlone) {
    test::DcsEncoder code(0023, false, static_cast<int>(GetParam()));
    std::uint32_t n = 0;
    const auto readings = Measure(GetParam(), 3.0, [&] { return ++n < GetParam() ? CodeAudio(code) : 0.0; });
    ASSERT_EQ(readings.size(), 6U);
    EXPECT_FALSE(readings[1].dcs.empty());
    EXPECT_TRUE(readings[4].dcs.empty());
    EXPECT_TRUE(readings[5].dcs.empty());
}

TEST_P(SquelchMeterTest, HearsNoise) {
    test::RandomSource random(1);
    const auto readings = Measure(GetParam(), 2.0, [&] { return 2.0 * random.Uniform() - 1.0; });
    for (const SquelchReading& reading : readings) {
        EXPECT_EQ(reading.noise, 99);
        EXPECT_EQ(reading.ctcss, 0);
    }
}

TEST_P(SquelchMeterTest, NoiseIsThatOfTheLastBlockAlone) {
    test::RandomSource random(1);
    // Noise up to the last block of the second half second.
    std::uint32_t n = 0;
    const std::uint32_t quiet = GetParam() - 2 * kBlock;
    const auto readings =
        Measure(GetParam(), 1.2, [&] { return ++n <= quiet ? 2.0 * random.Uniform() - 1.0 : 0.0; });
    ASSERT_EQ(readings.size(), 2U);
    EXPECT_EQ(readings[0].noise, 99);
    EXPECT_EQ(readings[1].noise, 0);
}

TEST_P(SquelchMeterTest, HearsSpeech) {
    test::VoiceLikeNoise speech({.sampleRate = static_cast<int>(GetParam())});
    const auto readings = Measure(GetParam(), 5.0, [&] { return 0.5 * speech.Next(); });
    const auto highest =
        std::max_element(readings.begin(), readings.end(),
                         [](const SquelchReading& a, const SquelchReading& b) { return a.voice < b.voice; });
    EXPECT_GT(highest->voice, 30);
    EXPECT_LE(highest->voice, 100);
}

INSTANTIATE_TEST_SUITE_P(Rates, SquelchMeterTest, testing::Values(48000U, 64000U));

TEST(SquelchTotals, CountToneAndCodesOncePerReading) {
    SquelchTotals totals;
    EXPECT_EQ(totals.MeanNoise(), 0.0);
    SquelchReading reading;
    totals.Add(reading);
    reading.ctcss = 67000;
    reading.dcs = {19, -39};
    reading.voice = 70;
    reading.noise = 10;
    totals.Add(reading);
    reading.voice = 20;
    reading.noise = 5;
    totals.Add(reading);
    EXPECT_EQ(totals.readings, 3U);
    EXPECT_EQ(totals.tones, (std::map<std::int32_t, std::uint64_t>{{67000, 2}}));
    EXPECT_EQ(totals.codes, (std::map<std::int32_t, std::uint64_t>{{-39, 2}, {19, 2}}));
    EXPECT_EQ(totals.highestVoice, 70);
    EXPECT_EQ(totals.MeanNoise(), 5.0);
}

} // namespace
} // namespace orva::tools
