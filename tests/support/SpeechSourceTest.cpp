#include "tests/support/SpeechSource.h"

#include "tests/support/FloatVoiceModel.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <set>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

struct Loudness {
    int peak = 0;
    double rms = 0.0;
};

Loudness Listen(SpeechKind kind) {
    SpeechSource source(kind);
    FloatVoiceModel model;
    Loudness loudness;
    double energy = 0.0;
    for (std::size_t i = 0; i < source.FrameCount(); ++i) {
        model.TakeBits(source.Frame(i));
        model.SynthesizeFrame();
        for (const int sample : model.Samples()) {
            loudness.peak = std::max(loudness.peak, std::abs(sample));
            energy += sample * sample;
        }
    }
    loudness.rms = std::sqrt(energy / static_cast<double>(source.FrameCount() * kFloatFrameLength));
    return loudness;
}

TEST(SpeechSource, NamesFindTheirKinds) {
    for (const SpeechKind kind : kSpeechKinds) {
        EXPECT_EQ(SpeechKindNamed(SpeechName(kind)), kind) << SpeechName(kind);
    }
    EXPECT_EQ(SpeechKindNamed("sentence"), SpeechKind::Sentence);
    EXPECT_FALSE(SpeechKindNamed("Sentence").has_value());
    EXPECT_FALSE(SpeechKindNamed("").has_value());
}

TEST(SpeechSource, FrameDoesNotDependOnTheOrderOfAsking) {
    SpeechSource forwards(SpeechKind::Sentence);
    SpeechSource backwards(SpeechKind::Sentence);
    const VoiceBits last = backwards.Frame(40);
    for (std::size_t i = 0; i < 40; ++i) {
        EXPECT_EQ(forwards.Frame(i), backwards.Frame(i)) << i;
    }
    EXPECT_EQ(forwards.Frame(40), last);
}

TEST(SpeechSource, EveryKindIsShortAndGoesOnBeyondItsEnd) {
    for (const SpeechKind kind : kSpeechKinds) {
        SpeechSource source(kind);
        EXPECT_GT(source.FrameCount(), 0U) << SpeechName(kind);
        EXPECT_LE(source.FrameCount(), 1000U) << SpeechName(kind);
        const VoiceBits& bits = source.Frame(source.FrameCount() + 10);
        EXPECT_TRUE(std::all_of(bits.begin(), bits.end(), [](int bit) { return bit <= 1; }))
            << SpeechName(kind);
    }
}

TEST(SpeechSource, GlideVisitsEveryNumberOfHarmonics) {
    std::set<int> seen;
    int lowest = kPitchCodes;
    int highest = 0;
    const std::size_t frames = SpeechSource(SpeechKind::Glide).FrameCount();
    for (std::size_t i = 0; i < frames; ++i) {
        const int pitchCode = SpeechFrame(SpeechKind::Glide, i).pitchCode;
        seen.insert(HarmonicsOf(pitchCode));
        lowest = std::min(lowest, pitchCode);
        highest = std::max(highest, pitchCode);
    }
    EXPECT_EQ(seen.size(), 48U);
    EXPECT_EQ(lowest, 0);
    EXPECT_GE(highest, 206);
}

TEST(SpeechSource, JumpsAreBeyondAFifthOfThePitch) {
    int jumps = 0;
    for (std::size_t i = 1; i < 180; ++i) {
        const int before = FundamentalOf(SpeechFrame(SpeechKind::Jumps, i - 1).pitchCode);
        const int after = FundamentalOf(SpeechFrame(SpeechKind::Jumps, i).pitchCode);
        if (before != after) {
            EXPECT_GT(std::abs(after - before), after / 5) << i;
            ++jumps;
        }
    }
    EXPECT_EQ(jumps, 44);
}

TEST(SpeechSource, NoiseHasNoVoicedBand) {
    for (std::size_t i = 0; i < 203; ++i) {
        const auto bands = SpeechFrame(SpeechKind::Noise, i).voicedBands;
        EXPECT_EQ(std::count(bands.begin(), bands.end(), true), 0) << i;
    }
}

TEST(SpeechSource, MixedHasBothKindsOfBands) {
    bool moves = false;
    for (std::size_t i = 0; i < 200; ++i) {
        const VoiceParameters frame = SpeechFrame(SpeechKind::Mixed, i);
        moves = moves || frame.voicedBands != SpeechFrame(SpeechKind::Mixed, 0).voicedBands;
        EXPECT_FALSE(frame.voicedBands[kMostBands - 1]) << i;
    }
    EXPECT_TRUE(moves);
}

TEST(SpeechSource, LoudKindsAreLoudAndDoNotClip) {
    for (const SpeechKind kind : {SpeechKind::Vowels, SpeechKind::Glide, SpeechKind::Jumps, SpeechKind::Noise,
                                  SpeechKind::Mixed, SpeechKind::Onsets, SpeechKind::Sentence}) {
        const Loudness loudness = Listen(kind);
        EXPECT_GT(loudness.rms, 300.0) << SpeechName(kind);
        EXPECT_LT(loudness.peak, 32767) << SpeechName(kind);
    }
}

TEST(SpeechSource, QuietKindsAreQuiet) {
    const Loudness quiet = Listen(SpeechKind::Quiet);
    EXPECT_GT(quiet.peak, 4);
    EXPECT_LT(quiet.peak, 100);
    EXPECT_LE(Listen(SpeechKind::Silence).peak, 8);
}

TEST(SpeechSource, SentenceHasPausesBetweenItsSounds) {
    int pauses = 0;
    int sounds = 0;
    for (std::size_t i = 0; i < SpeechSource(SpeechKind::Sentence).FrameCount(); ++i) {
        const auto spectrum = SpeechFrame(SpeechKind::Sentence, i).logAmplitudes;
        const double loudest = *std::max_element(spectrum.begin(), spectrum.end());
        (loudest > 3.0 ? sounds : pauses) += 1;
    }
    EXPECT_GT(sounds, 150);
    EXPECT_GT(pauses, 40);
}

} // namespace
} // namespace orva::test
