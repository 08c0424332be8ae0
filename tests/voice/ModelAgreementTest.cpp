// The fixed-point decoder against the floating-point model over whole streams.

#include "tests/support/FloatVoiceModel.h"
#include "tests/support/ImbeWord.h"
#include "tests/support/RandomSource.h"
#include "tests/support/SpeechSource.h"
#include "voice/ImbeDecoder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

using test::ChannelBits;
using test::FloatVoiceModel;
using test::RandomSource;
using test::SpeechKind;
using test::SpeechSource;

constexpr double kLeastSnrDb = 33.0;
constexpr double kLeastFrameSnrDb = 30.0; // 5th percentile of the frames that can be heard
constexpr double kAudibleRms = 100.0;     // sample steps; below it the rounding of samples counts
constexpr int kMostQuietSteps = 8;
constexpr double kNearTie = 0.01; // share of the voicing threshold, which is a whole number of sample steps

struct Power {
    double signal = 0.0;
    double error = 0.0;

    void Add(const Power& other) {
        signal += other.signal;
        error += other.error;
    }

    double SnrDb() const { return 10.0 * std::log10((signal + 1e-3) / (error + 1e-3)); }
};

// Runs decoder and model side by side; every discrete result is compared at once, the samples are summed up.
class SideBySide {
public:
    SideBySide() { ImbeInit(state); }

    void Play(const ChannelBits& received) {
        model.DecodeCodeWords(received);
        ImbeFrameBlock block{};
        std::copy(received.begin(), received.end(), block.bits);
        block.sampleCount = kNominalFrameLength;
        block.softBits = 1;
        ImbeDecodeCodeWords(block, state);
        CompareDecoding(block);
        flagsSeen |= block.status;

        model.SynthesizeFrame();
        ImbeSynthesizeFrame(block, state);
        CompareFrame(block);
        CompareSamples(block);
        ++frames;
    }

    double SnrDb() const { return total.SnrDb(); }

    // 5th percentile of the signal-to-noise ratio of the audible frames.
    double FrameSnrDb() const {
        auto ratios = audibleSnrDb;
        std::sort(ratios.begin(), ratios.end());
        return ratios.empty() ? INFINITY : ratios[ratios.size() / 20];
    }

    int LargestStep() const { return largestStep; }
    int FlagsSeen() const { return flagsSeen; }
    /// Frames of another voicing than the model's, and all frames.
    int Ties() const { return ties; }
    int Frames() const { return frames; }
    int Mutes() const { return mutes; }
    int Repeats() const { return repeats; }

private:
    void CompareDecoding(const ImbeFrameBlock& block) const {
        ASSERT_TRUE(std::equal(model.Bits().begin(), model.Bits().end(), block.bits)) << "frame " << frames;
        ASSERT_TRUE(std::equal(model.WordErrors().begin(), model.WordErrors().end(), state.wordErrors))
            << "frame " << frames;
        ASSERT_EQ(block.status, model.Flags()) << "after decoding, frame " << frames;
        ASSERT_EQ(block.errorTotal, model.ErrorTotal()) << "frame " << frames;
        ASSERT_EQ(block.errorRate, model.ErrorRate()) << "frame " << frames;
    }

    void CompareFrame(const ImbeFrameBlock& block) {
        const auto& played = model.PlayedFrame();
        ASSERT_EQ(block.status, model.Flags()) << "after synthesis, frame " << frames;
        ASSERT_EQ(state.lastFrame.harmonics, played.harmonics) << "frame " << frames;
        ASSERT_EQ(state.lastFrame.fundamental, played.fundamental) << "frame " << frames;
        // The decoder's phases have a sign.
        ASSERT_EQ(state.fundamentalPhase & 0x7FFF, model.FundamentalPhase()) << "frame " << frames;
        CompareVoicing();
        mutes += (block.status & kImbeFlagMute) != 0 ? 1 : 0;
        repeats += (block.status & kImbeFlagRepeat) != 0 ? 1 : 0;
    }

    // On a bad channel loud harmonics are forced to voiced; there an amplitude may lie so near the threshold
    // that the rounding of fixed point decides. Such a frame is another sound, and so is the one that it
    // fades into.
    void CompareVoicing() {
        const auto& played = model.PlayedFrame();
        wasTie = isTie;
        isTie = false;
        for (int i = 0; i < played.harmonics; ++i) {
            const bool isVoiced = state.lastFrame.voiced[i] != 0;
            if (isVoiced != played.voiced[static_cast<std::size_t>(i)]) {
                isTie = true;
                EXPECT_LT(model.VoicingMargin(), kNearTie)
                    << "frame " << frames << " harmonic " << i + 1 << ": voiced " << isVoiced;
            }
        }
        ties += isTie ? 1 : 0;
    }

    void CompareSamples(const ImbeFrameBlock& block) {
        if (isTie || wasTie) {
            return;
        }
        Power frame;
        for (std::size_t i = 0; i < model.Samples().size(); ++i) {
            const double exact = model.ExactSamples()[i];
            const double error = block.samples[i] - exact;
            frame.Add({exact * exact, error * error});
            largestStep = std::max(largestStep, std::abs(block.samples[i] - model.Samples()[i]));
        }
        total.Add(frame);
        if (std::sqrt(frame.signal / kNominalFrameLength) > kAudibleRms) {
            audibleSnrDb.push_back(frame.SnrDb());
        }
    }

    FloatVoiceModel model;
    ImbeDecoderState state{};
    int frames = 0;
    Power total;
    std::vector<double> audibleSnrDb;
    int largestStep = 0;
    int flagsSeen = 0;
    bool isTie = false;
    bool wasTie = false;
    int ties = 0;
    int mutes = 0;
    int repeats = 0;
};

void ExpectAgreement(const SideBySide& stream, std::string_view name) {
    EXPECT_GE(stream.SnrDb(), kLeastSnrDb) << name;
    EXPECT_GE(stream.FrameSnrDb(), kLeastFrameSnrDb) << name;
    EXPECT_LE(stream.Ties(), stream.Frames() / 50) << name;
    const std::string prefix(name);
    ::testing::Test::RecordProperty(prefix + " ties", stream.Ties());
    ::testing::Test::RecordProperty(prefix + " dB", std::to_string(stream.SnrDb()));
    ::testing::Test::RecordProperty(prefix + " 5th percentile dB", std::to_string(stream.FrameSnrDb()));
}

ChannelBits WithErrors(ChannelBits bits, RandomSource& random, double rate) {
    for (auto& bit : bits) {
        bit = static_cast<std::uint8_t>(bit ^ (random.Uniform() < rate ? 1 : 0));
    }
    return bits;
}

TEST(ModelAgreement, CleanSpeech) {
    for (const SpeechKind kind : {SpeechKind::Vowels, SpeechKind::Glide, SpeechKind::Jumps, SpeechKind::Noise,
                                  SpeechKind::Mixed, SpeechKind::Onsets, SpeechKind::Sentence}) {
        SpeechSource source(kind);
        SideBySide stream;
        for (std::size_t i = 0; i < source.FrameCount(); ++i) {
            stream.Play(test::EncodeImbeWord(source.Frame(i)));
        }
        ExpectAgreement(stream, test::SpeechName(kind));
        EXPECT_EQ(stream.FlagsSeen(), 0) << test::SpeechName(kind);
    }
}

TEST(ModelAgreement, QuietStreamsWithinAFewSteps) {
    for (const SpeechKind kind : {SpeechKind::Quiet, SpeechKind::Silence}) {
        SpeechSource source(kind);
        SideBySide stream;
        for (std::size_t i = 0; i < source.FrameCount(); ++i) {
            stream.Play(test::EncodeImbeWord(source.Frame(i)));
        }
        EXPECT_LE(stream.LargestStep(), kMostQuietSteps) << test::SpeechName(kind);
    }
}

TEST(ModelAgreement, ChannelErrorsUpToEightPercent) {
    struct Case {
        SpeechKind kind;
        int percent;
    };
    constexpr Case kCases[] = {{SpeechKind::Sentence, 1}, {SpeechKind::Mixed, 2},    {SpeechKind::Glide, 3},
                               {SpeechKind::Sentence, 4}, {SpeechKind::Jumps, 5},    {SpeechKind::Glide, 6},
                               {SpeechKind::Mixed, 7},    {SpeechKind::Sentence, 8}, {SpeechKind::Noise, 8}};
    for (const auto& [kind, percent] : kCases) {
        RandomSource random(static_cast<std::uint64_t>(percent));
        SpeechSource source(kind);
        SideBySide stream;
        for (std::size_t i = 0; i < 170; ++i) {
            stream.Play(WithErrors(test::EncodeImbeWord(source.Frame(i)), random, 0.01 * percent));
        }
        ExpectAgreement(stream,
                        std::string(test::SpeechName(kind)) + " at " + std::to_string(percent) + " %");
    }
}

TEST(ModelAgreement, BurstsThatForceRepeats) {
    RandomSource random(20);
    SpeechSource source(SpeechKind::Sentence);
    SideBySide stream;
    for (std::size_t i = 0; i < source.FrameCount(); ++i) {
        const double rate = i % 37 < 3 ? 0.3 : 0.005;
        stream.Play(WithErrors(test::EncodeImbeWord(source.Frame(i)), random, rate));
    }
    ExpectAgreement(stream, "short bursts");
    EXPECT_GT(stream.Repeats(), 10);
}

TEST(ModelAgreement, BurstsThatForceMutes) {
    RandomSource random(21);
    SpeechSource source(SpeechKind::Mixed);
    SideBySide stream;
    for (std::size_t i = 0; i < 240; ++i) {
        const double rate = i % 120 < 70 ? 0.3 : 0.01;
        stream.Play(WithErrors(test::EncodeImbeWord(source.Frame(i)), random, rate));
    }
    ExpectAgreement(stream, "long bursts");
    EXPECT_GT(stream.Mutes(), 10);
}

TEST(ModelAgreement, RandomInformation) {
    RandomSource random(30);
    SideBySide stream;
    for (int frame = 0; frame < 300; ++frame) {
        test::VoiceBits information{};
        for (auto& bit : information) {
            bit = static_cast<std::uint8_t>(random.Below(2));
        }
        stream.Play(test::EncodeImbeWord(information));
    }
    ExpectAgreement(stream, "random information");
}

TEST(ModelAgreement, RandomChannelBits) {
    RandomSource random(31);
    SideBySide stream;
    for (int frame = 0; frame < 200; ++frame) {
        ChannelBits bits{};
        for (auto& bit : bits) {
            bit = static_cast<std::uint8_t>(random.Below(2));
        }
        stream.Play(bits);
    }
    // The bits of a hopeless channel give nothing but silence, and that to the sample.
    EXPECT_EQ(stream.LargestStep(), 0);
    EXPECT_GT(stream.Mutes(), 100);
}

} // namespace
} // namespace orva::voice
