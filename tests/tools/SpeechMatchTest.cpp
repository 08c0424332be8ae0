/// Speech in recordings whose faults are known.
#include "tools/orva-heard/SpeechMatch.h"

#include "tests/support/RandomSource.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {

namespace {

using tools::AtTwiceTheRate;
using tools::SpeechMatch;
using Samples = std::vector<std::int16_t>;

constexpr std::size_t kBlock = 1024; // a voice block, 64 ms

/// Noise of a voice's colour, never the same twice.
Samples Babble(std::size_t count, std::uint64_t seed) {
    RandomSource random(seed);
    Samples samples;
    double smooth = 0;
    for (std::size_t i = 0; i < count; ++i) {
        smooth = 0.8 * smooth + random.Gaussian();
        samples.push_back(static_cast<std::int16_t>(std::lround(2000 * smooth)));
    }
    return samples;
}

Samples Silence(std::size_t count) {
    return Samples(count);
}

Samples operator+(Samples a, const Samples& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Samples Part(const Samples& samples, std::size_t begin, std::size_t end) {
    return {samples.begin() + static_cast<std::ptrdiff_t>(begin),
            samples.begin() + static_cast<std::ptrdiff_t>(end)};
}

std::vector<double> Exact(const Samples& samples) {
    return {samples.begin(), samples.end()};
}

double Power(const Samples& samples) {
    double sum = 0;
    for (const std::int16_t sample : samples) {
        sum += static_cast<double>(sample) * sample;
    }
    return sum;
}

class SpeechMatchTest : public testing::Test {
protected:
    const Samples speech = Babble(12 * kBlock, 1);
    const Samples noise = Babble(5000, 2);
};

TEST(AtTwiceTheRate, PutsASampleBetweenEachTwo) {
    Samples tone(400);
    const auto at = [](double place) { return 10000 * std::sin(2 * std::numbers::pi * 0.3 * place); };
    for (std::size_t i = 0; i < tone.size(); ++i) {
        tone[i] = static_cast<std::int16_t>(std::lround(at(static_cast<double>(i))));
    }
    const std::vector<double> twice = AtTwiceTheRate(tone);
    ASSERT_EQ(twice.size(), 800U);
    for (std::size_t i = 100; i < 700; ++i) { // behind the edges
        EXPECT_NEAR(twice[i], at(static_cast<double>(i) / 2), 2.0) << i;
        if (i % 2 == 0) {
            EXPECT_EQ(twice[i], tone[i / 2]);
        }
    }
    EXPECT_TRUE(AtTwiceTheRate({}).empty());
}

TEST_F(SpeechMatchTest, FindsSpeechAtAnyPlaceAndLevel) {
    for (const std::size_t before : {std::size_t{0}, std::size_t{1}, std::size_t{4321}}) {
        Samples recording = Part(noise, 0, before) + speech + noise;
        for (std::int16_t& sample : recording) {
            sample = static_cast<std::int16_t>(sample / 4);
        }
        const SpeechMatch match(Exact(speech), recording);
        EXPECT_GT(match.Correlation(), 0.99999) << before;
        EXPECT_EQ(match.Pieces().front().place, before);
        EXPECT_EQ(match.AudibleSamples(), speech.size());
        EXPECT_EQ(match.FoundAudibleSamples(), speech.size());
        EXPECT_EQ(match.Breaks(), 0U);
    }
}

TEST_F(SpeechMatchTest, GoesOnBehindSilenceWhereTheDeviceRanDry) {
    const Samples recording = Silence(700) + Part(speech, 0, 5 * kBlock) + Silence(333) +
                              Part(speech, 5 * kBlock, 9 * kBlock) + Silence(10000) +
                              Part(speech, 9 * kBlock, speech.size());
    const SpeechMatch match(Exact(speech), recording);
    EXPECT_GT(match.Correlation(), 0.99999);
    EXPECT_EQ(match.FoundAudibleSamples(), speech.size());
    EXPECT_EQ(match.Breaks(), 2U);
}

TEST_F(SpeechMatchTest, LosesOnlyThePieceInWhichTheDeviceRanDry) {
    const std::size_t inside = 5 * kBlock + 50;
    const Samples recording = Part(speech, 0, inside) + Silence(160) + Part(speech, inside, speech.size());
    const SpeechMatch match(Exact(speech), recording);
    EXPECT_EQ(match.FoundAudibleSamples(), speech.size() - 64);
    EXPECT_EQ(match.Breaks(), 1U);
    EXPECT_GT(match.Correlation(), 0.99);
}

TEST_F(SpeechMatchTest, CountsWhatIsLostAsSilence) {
    const Samples lost = Part(speech, 4 * kBlock, 6 * kBlock);
    const Samples recording = Part(speech, 0, 4 * kBlock) + Part(speech, 6 * kBlock, speech.size());
    const SpeechMatch match(Exact(speech), recording);
    EXPECT_EQ(match.FoundAudibleSamples(), speech.size() - lost.size());
    EXPECT_NEAR(match.Correlation(), std::sqrt(1 - Power(lost) / Power(speech)), 1e-9);
}

TEST_F(SpeechMatchTest, IsNotSatisfiedWithAnotherSpeech) {
    const SpeechMatch match(Exact(speech), Babble(speech.size() + 1000, 3));
    EXPECT_LT(match.Correlation(), 0.1);
    EXPECT_EQ(match.FoundAudibleSamples(), 0U);
}

TEST_F(SpeechMatchTest, NoticesNoiseInTheSpeech) {
    Samples recording = speech;
    const Samples other = Babble(speech.size(), 4);
    for (std::size_t i = 0; i < recording.size(); ++i) {
        recording[i] = static_cast<std::int16_t>(recording[i] + other[i] / 2);
    }
    EXPECT_LT(SpeechMatch(Exact(speech), recording).Correlation(), 0.95);
}

TEST_F(SpeechMatchTest, DoesNotTakeTheSameWordsSaidLaterForTheirBeginning) {
    // The beginning is lost; three seconds on it is said again.
    const Samples said = speech + Babble(40000, 5) + speech + noise;
    const SpeechMatch match(Exact(said), Part(said, kBlock, said.size()));
    EXPECT_EQ(match.FoundAudibleSamples(), said.size() - kBlock);
    EXPECT_EQ(match.Breaks(), 0U);
}

TEST_F(SpeechMatchTest, ExpectsPausesToStaySilent) {
    const Samples said = speech + Silence(8 * kBlock) + speech;
    const SpeechMatch silent(Exact(said), said);
    EXPECT_GT(silent.Correlation(), 0.99999);
    EXPECT_EQ(silent.AudibleSamples(), 2 * speech.size());
    const SpeechMatch noisy(Exact(said), speech + Babble(8 * kBlock, 6) + speech);
    EXPECT_LT(noisy.Correlation(), 0.95);
}

TEST_F(SpeechMatchTest, FindsNothingInSilenceOrNothing) {
    EXPECT_EQ(SpeechMatch(Exact(speech), Silence(15000)).Correlation(), 0);
    EXPECT_EQ(SpeechMatch(Exact(speech), Samples()).Correlation(), 0);
    EXPECT_EQ(SpeechMatch(Exact(speech), Part(speech, 0, 300)).FoundAudibleSamples(), 0U) << "too short";
    EXPECT_EQ(SpeechMatch({}, speech).Correlation(), 0);
    EXPECT_EQ(SpeechMatch(Exact(Silence(5000)), speech).AudibleSamples(), 0U);
}

} // namespace

} // namespace orva::test
