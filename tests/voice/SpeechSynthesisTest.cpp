#include "voice/SpeechSynthesis.h"

#include "tests/voice/VoiceFrames.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

using test::CorrectedBlock;
using test::PackFields;
using test::PlainFields;

// A voiced frame at a moderate level.
ImbeFrameBlock VoicedBlock(int pitchCode = 90, int gainCode = 30) {
    return CorrectedBlock(PackFields(PlainFields(pitchCode, gainCode, 1)));
}

// A block between guard words.
struct GuardedBlock {
    std::uint32_t before = 0xDEADBEEF;
    ImbeFrameBlock block{};
    std::uint32_t behind = 0xFEEDFACE;
    bool IsIntact() const { return before == 0xDEADBEEF && behind == 0xFEEDFACE; }
};

constexpr std::int16_t kUntouched = 0x4242;

ImbeDecoderState WarmState() {
    ImbeDecoderState state;
    ImbeInit(state);
    for (int frame = 0; frame < 3; ++frame) {
        ImbeFrameBlock block = VoicedBlock();
        ImbeSynthesizeFrame(block, state);
    }
    return state;
}

TEST(SpeechSynthesis, SampleCountsAreClampedAndThoseNumbersWritten) {
    for (const auto& [wanted, given] :
         {std::pair{0, 132}, {-7, 132},  {131, 132}, {132, 132}, {133, 133}, {160, 160},   {164, 164},
          {165, 165},        {205, 205}, {206, 206}, {207, 207}, {208, 208}, {209, 209},   {210, 210},
          {236, 236},        {239, 239}, {240, 240}, {241, 240}, {500, 240}, {32767, 240}, {-32768, 132}}) {
        ImbeDecoderState state = WarmState();
        GuardedBlock guarded;
        guarded.block = VoicedBlock();
        guarded.block.sampleCount = static_cast<std::int16_t>(wanted);
        std::ranges::fill(guarded.block.samples, kUntouched);
        const ImbeFrameBlock before = guarded.block;
        ImbeSynthesizeFrame(guarded.block, state);
        EXPECT_TRUE(guarded.IsIntact()) << wanted;
        EXPECT_EQ(guarded.block.sampleCount, given) << wanted;
        EXPECT_EQ(guarded.block.status, 0) << wanted;

        const int fitting = std::min(given, kSampleCapacity);
        EXPECT_LT(std::count(guarded.block.samples, guarded.block.samples + fitting, kUntouched), 3)
            << wanted;
        EXPECT_EQ(std::count(guarded.block.samples + fitting, std::end(guarded.block.samples), kUntouched),
                  kSampleCapacity - fitting)
            << wanted;
        // The rest runs on over the bits, as far as these reach.
        const int overhang = std::clamp((given - kSampleCapacity) * 2, 0, kCodedBits);
        EXPECT_TRUE(
            std::equal(guarded.block.bits + overhang, std::end(guarded.block.bits), before.bits + overhang))
            << wanted;
        if (overhang > 20) {
            EXPECT_FALSE(std::equal(guarded.block.bits, guarded.block.bits + overhang, before.bits))
                << wanted;
        }
    }
}

TEST(SpeechSynthesis, LongFramesAreTwoBlocksOfTheSameRecord) {
    for (const int count : {206, 209, 225, 240}) {
        ImbeDecoderState whole = WarmState();
        ImbeDecoderState halves = whole;
        ImbeFrameParameters record = whole.lastFrame;
        std::vector<std::int16_t> expected(static_cast<std::size_t>(count));
        std::vector<std::int16_t> actual(static_cast<std::size_t>(count));
        SynthesizeFrame(record, actual.data(), count, whole);
        SynthesizeBlock(record, expected.data(), count >> 1, halves);
        SynthesizeBlock(record, expected.data() + (count >> 1), count - (count >> 1), halves);
        EXPECT_EQ(actual, expected) << count;
        test::Digest wholeDigest;
        test::Digest halvesDigest;
        wholeDigest.Add(whole);
        halvesDigest.Add(halves);
        EXPECT_EQ(wholeDigest.Value(), halvesDigest.Value()) << count;
    }
}

TEST(SpeechSynthesis, FramesUpTo205AreOneBlock) {
    for (const int count : {132, 160, 205}) {
        ImbeDecoderState frame = WarmState();
        ImbeDecoderState block = frame;
        ImbeFrameParameters record = frame.lastFrame;
        std::vector<std::int16_t> expected(static_cast<std::size_t>(count));
        std::vector<std::int16_t> actual(static_cast<std::size_t>(count));
        SynthesizeFrame(record, actual.data(), count, frame);
        SynthesizeBlock(record, expected.data(), count, block);
        EXPECT_EQ(actual, expected) << count;
    }
}

TEST(SpeechSynthesis, SamplesBeyondFullScaleSaturate) {
    ImbeDecoderState state = WarmState();
    ImbeFrameParameters record{};
    record.kind = 1;
    record.harmonics = 20;
    record.fundamental = 10000;
    record.amplitudeExponent = 0;
    std::fill_n(record.amplitudes, 20, std::int16_t{20000});
    std::fill_n(record.voiced, 20, std::int16_t{1});
    std::vector<std::int16_t> samples(160);
    for (int frame = 0; frame < 3; ++frame) {
        SynthesizeBlock(record, samples.data(), 160, state);
    }
    EXPECT_EQ(*std::ranges::max_element(samples), 32767);
    record.amplitudeExponent = 1;
    std::ranges::fill(state.phaseDispersion, std::int16_t{16384}); // upside down
    for (int frame = 0; frame < 3; ++frame) {
        SynthesizeBlock(record, samples.data(), 160, state);
    }
    EXPECT_EQ(*std::ranges::min_element(samples), -32768);
}

TEST(SpeechSynthesis, TheFrameBecomesTheLastFrameWithThePlainStep) {
    ImbeDecoderState state;
    ImbeInit(state);
    ImbeFrameBlock block = VoicedBlock(100);
    ImbeSynthesizeFrame(block, state);
    EXPECT_EQ(state.lastFrame.synthesize, &SynthesizeFrame);
    EXPECT_EQ(state.lastFrame.fundamental, ((1 << 23) / (4 * 100 + 158)) >> 1);
    EXPECT_EQ(state.lastFrame.voiced[0], 1);

    std::vector<std::int16_t> samples(160);
    ImbeFrameParameters record{};
    SynthesizeSilence(record, samples.data(), 160, state);
    EXPECT_EQ(state.lastFrame.synthesize, &SynthesizeFrame);
    EXPECT_EQ(state.lastFrame.fundamental, 16384);
    EXPECT_EQ(record.harmonics, 14);
}

TEST(SpeechSynthesis, NominalLengthsAreSetPerFrame) {
    ImbeDecoderState state;
    ImbeInit(state);
    EXPECT_EQ(state.unvoicedLength, 0);
    EXPECT_EQ(state.voicedLength, 0);
    ImbeFrameBlock block = VoicedBlock();
    block.sampleCount = 200;
    ImbeSynthesizeFrame(block, state);
    EXPECT_EQ(state.unvoicedLength, 160);
    EXPECT_EQ(state.voicedLength, 160);
}

TEST(SpeechSynthesis, RepeatsSkipConditioningAndKeepTheAmplitudes) {
    ImbeDecoderState state = WarmState();
    const ImbeDecoderState before = state;
    ImbeFrameParameters record = state.lastFrame;
    std::vector<std::int16_t> samples(160);
    SynthesizeFrame(record, samples.data(), 160, state);
    EXPECT_TRUE(std::ranges::equal(state.lastFrame.amplitudes, before.lastFrame.amplitudes));
    EXPECT_TRUE(std::ranges::equal(state.phaseDispersion, before.phaseDispersion));
    EXPECT_EQ(state.energyMantissa, before.energyMantissa);
    EXPECT_NE(state.fundamentalPhase, before.fundamentalPhase);
    EXPECT_NE(state.noiseSeed, before.noiseSeed);
}

TEST(SpeechSynthesis, SilenceEndsInDigitalZero) {
    ImbeDecoderState state = WarmState();
    std::uint16_t seed = state.noiseSeed;
    for (int frame = 0; frame < 6; ++frame) {
        ImbeFrameBlock block = VoicedBlock();
        block.status = kImbeFlagMute;
        ImbeSynthesizeFrame(block, state);
        EXPECT_NE(state.noiseSeed, seed) << "the noise generator keeps running";
        seed = state.noiseSeed;
        if (frame > 0) {
            EXPECT_EQ(std::count(block.samples, block.samples + 160, 0), 160) << "frame " << frame;
        }
    }
}

TEST(SpeechSynthesis, AFreshDecoderStaysWithinItsFadeInTheFirstFrame) {
    ImbeDecoderState state;
    ImbeInit(state);
    ImbeFrameBlock block = VoicedBlock();
    ImbeSynthesizeFrame(block, state);
    EXPECT_EQ(std::count(block.samples, block.samples + 55, 0), 55);
    EXPECT_GT(std::abs(*std::max_element(block.samples + 105, block.samples + 160)), 100);
}

} // namespace
} // namespace orva::voice
