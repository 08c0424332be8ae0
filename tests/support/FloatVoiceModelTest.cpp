#include "tests/support/FloatVoiceModel.h"

#include "tests/support/ImbeWord.h"
#include "tests/support/VoiceEncoder.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

VoiceParameters Hill(int pitchCode, double octaves, bool voiced) {
    VoiceParameters parameters;
    parameters.pitchCode = pitchCode;
    parameters.voicedBands.fill(voiced);
    const int harmonics = HarmonicsOf(pitchCode);
    for (int l = 1; l <= harmonics; ++l) {
        parameters.logAmplitudes[static_cast<std::size_t>(l - 1)] =
            octaves - std::abs(l - 0.4 * harmonics) / harmonics;
    }
    return parameters;
}

// One stream through encoder and model, without a channel.
class Link {
public:
    void Send(const VoiceParameters& parameters) { Play(encoder.Encode(parameters)); }

    void Play(const VoiceBits& bits) {
        model.TakeBits(bits);
        model.SynthesizeFrame();
        samples.insert(samples.end(), model.ExactSamples().begin(), model.ExactSamples().end());
    }

    // The same bits again and again: the prediction settles, and with it every amplitude.
    void Hold(const VoiceParameters& parameters) {
        const VoiceBits bits = encoder.Encode(parameters);
        for (int frame = 0; frame < 40; ++frame) {
            Play(bits);
        }
    }

    const FloatVoiceModel& Model() const { return model; }

    // The last `count` samples.
    std::vector<double> Tail(std::size_t count) const {
        return {samples.end() - static_cast<std::ptrdiff_t>(count), samples.end()};
    }

private:
    VoiceEncoder encoder;
    FloatVoiceModel model;
    std::vector<double> samples;
};

// Amplitude and phase of a tone, by a Hann window. frequency  cycles per sample
std::complex<double> ToneAt(const std::vector<double>& samples, double frequency) {
    std::complex<double> sum;
    double weights = 0.0;
    const auto count = static_cast<double>(samples.size());
    for (std::size_t n = 0; n < samples.size(); ++n) {
        const double weight = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * static_cast<double>(n) / count);
        sum += weight * samples[n] *
               std::polar(1.0, -2.0 * std::numbers::pi * frequency * static_cast<double>(n));
        weights += weight;
    }
    return 2.0 * sum / weights;
}

double Rms(const std::vector<double>& samples) {
    double sum = 0.0;
    for (const double sample : samples) {
        sum += sample * sample;
    }
    return std::sqrt(sum / static_cast<double>(samples.size()));
}

double Frequency(const FloatVoiceFrame& frame, int harmonic) {
    return harmonic * std::ldexp(frame.fundamental, -19);
}

TEST(FloatVoiceModel, SteadyHarmonicsAreTonesOfTheirAmplitudes) {
    for (const int pitchCode : {10, 60, 120}) {
        Link link;
        link.Hold(Hill(pitchCode, 8.0, true));
        const auto samples = link.Tail(10 * kFloatFrameLength);
        const FloatVoiceFrame& frame = link.Model().PlayedFrame();
        for (int l = 1; l <= frame.harmonics; ++l) {
            const double expected = frame.amplitudes[static_cast<std::size_t>(l - 1)];
            // A table of 128 points read with straight lines loses up to a tenth at its highest harmonics,
            const double loss =
                l < 8 ? 1.0
                      : std::pow(std::sin(std::numbers::pi * l / 128.0) * 128.0 / std::numbers::pi / l, 2);
            // and its images may fall near another harmonic.
            const double bound = l < 16 ? 0.03 : 0.1;
            EXPECT_NEAR(std::abs(ToneAt(samples, Frequency(frame, l))) / (expected * loss), 1.0, bound)
                << "pitch code " << pitchCode << " harmonic " << l;
        }
    }
}

TEST(FloatVoiceModel, HighHarmonicsHandOverCoherently) {
    Link link;
    link.Hold(Hill(60, 8.0, true));
    const FloatVoiceFrame& frame = link.Model().PlayedFrame();
    auto samples = link.Tail(10 * kFloatFrameLength);
    const double before = Rms(samples);
    const auto whole = samples;
    for (int l = 1; l <= frame.harmonics; ++l) {
        const auto tone = ToneAt(whole, Frequency(frame, l));
        for (std::size_t n = 0; n < samples.size(); ++n) {
            samples[n] -= (tone * std::polar(1.0, 2.0 * std::numbers::pi * Frequency(frame, l) *
                                                      static_cast<double>(n)))
                              .real();
        }
    }
    EXPECT_LT(Rms(samples), 0.04 * before);
}

TEST(FloatVoiceModel, RunningPhaseAdvancesByTheFundamental) {
    Link link;
    int expected = 0;
    int before = 16384;
    for (const int pitchCode : {60, 61, 62, 20, 200, 200}) {
        link.Send(Hill(pitchCode, 8.0, true));
        const int now = FundamentalOf(pitchCode);
        const int advance = (now / 2 + before / 2) * 320 + 32 * expected;
        expected = advance % 1048576 / 32;
        before = now;
        EXPECT_EQ(link.Model().FundamentalPhase(), expected) << pitchCode;
    }
}

TEST(FloatVoiceModel, UnvoicedPowerFollowsTheAmplitudes) {
    Link link;
    for (int frame = 0; frame < 60; ++frame) {
        link.Send(Hill(60, 8.0, false));
    }
    const FloatVoiceFrame& frame = link.Model().PlayedFrame();
    const auto samples = link.Tail(50 * kFloatFrameLength);
    double energy = 0.0; // of a transform of 256 points, all bands together
    int edge = (frame.fundamental * 32 + 65536) / 2;
    for (int l = 1; l <= frame.harmonics; ++l) {
        const int first = std::max(edge >> 16, 3);
        edge += frame.fundamental * 32;
        const double amplitude = frame.amplitudes[static_cast<std::size_t>(l - 1)];
        const int width = std::min(edge >> 16, 121) - first;
        energy += width * amplitude * amplitude * frame.harmonics * 160.0 * 34486.0 / 16384.0;
    }
    // Half the amplitude of an inverse transform of 256 points; overlapped frames follow each other by 160
    // samples.
    const double expected = std::sqrt(2.0 * energy / 4.0 / 256.0 / 160.0);
    EXPECT_NEAR(Rms(samples) / expected, 1.0, 0.1);
}

TEST(FloatVoiceModel, VoicedBandsCarryNoNoise) {
    Link link;
    for (int frame = 0; frame < 40; ++frame) {
        VoiceParameters parameters = Hill(60, 8.0, true);
        std::fill(parameters.voicedBands.begin() + 3, parameters.voicedBands.end(), false);
        link.Send(parameters);
    }
    const FloatVoiceFrame& frame = link.Model().PlayedFrame();
    const auto samples = link.Tail(16 * kFloatFrameLength);
    // Between two voiced harmonics there is nothing; between unvoiced ones as much as anywhere in the band.
    const double below = std::abs(ToneAt(samples, 5.5 * Frequency(frame, 1)));
    const double above = std::abs(ToneAt(samples, 14.5 * Frequency(frame, 1)));
    EXPECT_LT(below, 0.1 * above);
}

TEST(FloatVoiceModel, VoiceEndsByTheSecondFadePoint) {
    Link link;
    for (int frame = 0; frame < 10; ++frame) {
        link.Send(Hill(60, 9.0, true));
    }
    link.Send(Hill(60, -3.0, false));
    const auto samples = link.Tail(kFloatFrameLength);
    EXPECT_GT(Rms({samples.begin(), samples.begin() + 55}), 300.0);
    EXPECT_LT(Rms({samples.begin() + 105, samples.end()}), 10.0);
}

TEST(FloatVoiceModel, FourthBadFrameIsSilence) {
    Link link;
    for (int frame = 0; frame < 5; ++frame) {
        link.Send(Hill(60, 9.0, true));
    }
    for (int bad = 1; bad <= 8; ++bad) {
        link.Play(PackVoicelessFrame(255));
        EXPECT_EQ(link.Model().Flags(), FloatVoiceModel::kConcealed) << bad;
        EXPECT_EQ(link.Model().PlayedFrame().fundamental, bad <= 3 ? FundamentalOf(60) : 16384) << bad;
        if (bad >= 6) {
            EXPECT_EQ(Rms(link.Tail(kFloatFrameLength)), 0.0) << bad;
        }
    }
}

TEST(FloatVoiceModel, BadFrameAfterOneGoodFrameIsRepeated) {
    Link link;
    for (int bad = 0; bad < 5; ++bad) {
        link.Play(PackVoicelessFrame(208));
    }
    link.Send(Hill(60, 9.0, true));
    EXPECT_EQ(link.Model().Flags(), 0);
    link.Play(PackVoicelessFrame(208));
    EXPECT_EQ(link.Model().PlayedFrame().fundamental, FundamentalOf(60));
}

TEST(FloatVoiceModel, RepeatsWhenTheFirstWordIsBad) {
    VoiceEncoder encoder;
    FloatVoiceModel model;
    VoiceErrorPattern errors{};
    errors.fill(1); // eight words, seven of them protected
    errors[0] = 7;
    model.DecodeCodeWords(EncodeImbeWord(encoder.Encode(Hill(60, 8.0, true)), errors));
    EXPECT_EQ(model.ErrorTotal(), 9);
    EXPECT_EQ(model.Flags(), 0);
    model.SynthesizeFrame();
    errors[1] = 3;
    model.DecodeCodeWords(EncodeImbeWord(encoder.Encode(Hill(60, 8.0, true)), errors));
    EXPECT_EQ(model.ErrorTotal(), 10);
    EXPECT_EQ(model.Flags(), FloatVoiceModel::kRepeat);
    model.SynthesizeFrame();
    EXPECT_EQ(model.Flags(), FloatVoiceModel::kRepeat | FloatVoiceModel::kConcealed);
}

TEST(FloatVoiceModel, OneErrorInTheFirstWordNeverRepeats) {
    FloatVoiceModel model;
    VoiceErrorPattern errors{1, 7, 7, 7, 1, 1, 0, 0};
    model.DecodeCodeWords(EncodeImbeWord({}, errors));
    EXPECT_EQ(model.ErrorTotal(), 12);
    EXPECT_EQ(model.Flags(), 0);
}

TEST(FloatVoiceModel, MutesAboveTheErrorRate) {
    FloatVoiceModel model;
    const VoiceErrorPattern errors{1, 7, 7, 7, 1, 1, 1, 0};
    bool wasMuted = false;
    int rate = 0;
    for (int frame = 0; frame < 60; ++frame) {
        model.DecodeCodeWords(EncodeImbeWord({}, errors));
        rate = (783744 * 13 + 62260 * rate) / 65536;
        EXPECT_EQ(model.ErrorRate(), rate) << frame;
        EXPECT_EQ(model.Flags(), rate > 2867 ? FloatVoiceModel::kMute : 0) << frame;
        model.SynthesizeFrame();
        wasMuted = wasMuted || rate > 2867;
    }
    EXPECT_TRUE(wasMuted);
    EXPECT_EQ(model.PlayedFrame().fundamental, 16384);
    EXPECT_EQ(model.Samples()[80], 0);
}

TEST(FloatVoiceModel, InitForgetsTheStream) {
    VoiceEncoder encoder;
    const VoiceBits first = encoder.Encode(Hill(40, 8.0, false));
    FloatVoiceModel model;
    model.TakeBits(first);
    model.SynthesizeFrame();
    const auto samples = model.Samples();
    model.TakeBits(encoder.Encode(Hill(90, 8.0, true)));
    model.SynthesizeFrame();
    model.Init();
    model.TakeBits(first);
    model.SynthesizeFrame();
    EXPECT_EQ(model.Samples(), samples);
}

} // namespace
} // namespace orva::test
