#include "squelch/CtbToneDetector.h"

#include "dsp/TFIR_F32.h"
#include "tests/squelch/SanitizedBuild.h"
#include "tests/squelch/ScannerChain.h"
#include "tests/support/FmModulator.h"
#include "tests/support/RandomSource.h"
#include "tests/support/ToneSource.h"
#include "tests/support/VoiceLikeNoise.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <numbers>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace orva::squelch {

struct CtbToneDetectorInspector {
    static const std::array<std::int32_t, 1024>& Window(const CtbToneDetector& d) { return d.window; }
    static float ReducedRate(const CtbToneDetector& d) { return d.reducedRate; }
    static float SampleRate(const CtbToneDetector& d) { return d.sampleRate; }
    static const CtbResampler& Resampler(const CtbToneDetector& d) { return d.resampler; }
};

namespace {

using Inspector = CtbToneDetectorInspector;
using Samples = std::vector<std::int16_t>;

constexpr double kToneLevel = 1500.0;

/// Tones whose truncated bin holds less than a quarter of the band at both rates of the receivers, because
/// most of the tone lies in the bin above.
const std::set<float> kTonesBetweenBins = {71.9F, 141.3F, 173.8F, 206.5F, 233.6F, 241.8F};

Samples Make(std::size_t count, const std::function<double()>& next) {
    Samples samples(count);
    std::generate(samples.begin(), samples.end(), [&] {
        return static_cast<std::int16_t>(std::lrint(std::clamp(next(), -32768.0, 32767.0)));
    });
    return samples;
}

Samples Tone(double hz, int rate, double seconds, double level = kToneLevel) {
    test::ToneSource tone(hz, rate, level);
    return Make(static_cast<std::size_t>(seconds * rate), [&] { return tone.Next(); });
}

/// Feeds `audio` block by block; returns what was found after each.
std::vector<std::int32_t> Feed(CtbToneDetector& detector, const Samples& audio) {
    std::vector<std::int32_t> found;
    test::ForEachBlock(audio, [&](std::span<const std::int16_t> block) {
        detector.Process(block.data(), static_cast<std::uint32_t>(block.size()), 1);
        found.push_back(detector.toneIndex);
    });
    return found;
}

std::int32_t FoundIn(const Samples& audio, int rate) {
    CtbToneDetector detector;
    detector.SetSampleRate(static_cast<float>(rate));
    return Feed(detector, audio).back();
}

void ExpectNothingIn(const Samples& audio, int rate, const char* what) {
    CtbToneDetector detector;
    detector.SetSampleRate(static_cast<float>(rate));
    const std::vector<std::int32_t> found = Feed(detector, audio);
    for (std::size_t i = 0; i < found.size(); ++i) {
        ASSERT_EQ(found[i], -1) << what << " at " << rate << " Hz, block " << i;
    }
}

/// The decision by the formulas, in double precision.
std::int32_t ReferenceDecision(const CtbToneDetector& detector) {
    const auto& window = Inspector::Window(detector);
    const double perHertz = 1.0 / Inspector::ReducedRate(detector);
    const int first = static_cast<int>(perHertz * 64000.0);
    const int last = static_cast<int>(perHertz * 260198.4);
    double total = 0.0;
    double best = 0.0;
    std::int32_t index = -1;
    for (int k = first; k <= last; ++k) {
        std::complex<double> sum = 0.0;
        for (int n = 0; n < 1024; ++n) {
            const double x = 2.0 * std::numbers::pi * n / 1023.0;
            const double blackman = 0.42 - 0.5 * std::cos(x) + 0.08 * std::cos(2.0 * x);
            sum += std::polar(blackman * window[static_cast<std::size_t>(n)],
                              -2.0 * std::numbers::pi * (k * n % 1024) / 1024.0);
        }
        const double power = std::norm(sum);
        total += power;
        for (std::size_t tone = 0; tone < kCtcssTones.size(); ++tone) {
            if (k == static_cast<int>(kCtcssTones[tone] * perHertz * 1024.0) && power > best) {
                best = power;
                index = static_cast<std::int32_t>(tone);
            }
        }
    }
    return best >= 0.25 * total ? index : -1;
}

} // namespace

TEST(CtcssTones, RiseFromFirstToLast) {
    EXPECT_EQ(kCtcssTones.front(), 62.5F);
    EXPECT_EQ(kCtcssTones.back(), 254.1F);
    for (std::size_t i = 1; i < kCtcssTones.size(); ++i) {
        // 2.2 Hz but for rounding.
        EXPECT_GE(kCtcssTones[i] - kCtcssTones[i - 1], 2.19F) << i;
    }
}

TEST(CtcssTones, HostCountsThousandthsOfAHertzTruncated) {
    EXPECT_EQ(ScaledCtcssTone(0), 62500);
    EXPECT_EQ(ScaledCtcssTone(1), 64699);
    EXPECT_EQ(ScaledCtcssTone(14), 100000);
    for (std::int32_t i = 0; i < 52; ++i) {
        const double exact = std::round(kCtcssTones[static_cast<std::size_t>(i)] * 10.0) * 100.0;
        EXPECT_LE(ScaledCtcssTone(i), exact) << i;
        EXPECT_GE(ScaledCtcssTone(i), exact - 1.0) << i;
    }
    EXPECT_EQ(ScaledCtcssTone(-1), 0);
    EXPECT_EQ(ScaledCtcssTone(52), 0);
}

TEST(CtbToneDetector, StartsWithoutATone) {
    const CtbToneDetector detector;
    EXPECT_EQ(detector.toneIndex, -1);
    EXPECT_EQ(Inspector::SampleRate(detector), 1000.0F);
}

TEST(CtbToneDetector, ReducesToAbout1378Hertz) {
    struct Row {
        float rate;
        std::uint32_t up;
        std::uint32_t down;
        float reduced;
    };
    for (const Row& row :
         {Row{44100.0F, 1, 32, 1378.125F}, Row{48000.0F, 2, 69, 1391.3043F}, Row{64000.0F, 1, 46, 1391.3043F},
          Row{8000.0F, 4, 23, 1391.3043F}, Row{1378.0F, 1, 1, 1378.0F}}) {
        CtbToneDetector detector;
        detector.SetSampleRate(row.rate);
        EXPECT_EQ(Inspector::Resampler(detector).GetUp(), row.up) << row.rate;
        EXPECT_EQ(Inspector::Resampler(detector).GetDown(), row.down) << row.rate;
        EXPECT_FLOAT_EQ(Inspector::ReducedRate(detector), row.reduced) << row.rate;
    }
}

TEST(CtbToneDetector, IgnoresRatesThatCannotBeReduced) {
    CtbToneDetector detector;
    detector.SetSampleRate(48000.0F);
    for (const float rate : {0.0F, -48000.0F, std::nanf(""), INFINITY}) {
        detector.SetSampleRate(rate);
        EXPECT_EQ(Inspector::SampleRate(detector), 48000.0F) << rate;
    }
}

TEST(CtbToneDetector, FindsPureTonesThatTheirBinsAdmit) {
    for (const int rate : {48000, 64000}) {
        for (std::size_t i = 0; i < kCtcssTones.size(); i += test::kSanitizedBuild ? 3 : 1) {
            const std::int32_t expected =
                kTonesBetweenBins.contains(kCtcssTones[i]) ? -1 : static_cast<std::int32_t>(i);
            EXPECT_EQ(FoundIn(Tone(kCtcssTones[i], rate, 1.0), rate), expected)
                << kCtcssTones[i] << " Hz at " << rate;
        }
    }
}

TEST(CtbToneDetector, FindsThemThroughTheFmDemodulator) {
    constexpr std::size_t kStep = test::kSanitizedBuild ? 8 : 1;
    for (const int rate : {48000, 64000}) {
        for (std::size_t i = 0; i < kCtcssTones.size(); i += kStep) {
            test::FmModulator modulator({.sampleRate = rate, .deviation = 500.0});
            test::ToneSource tone(kCtcssTones[i], rate);
            test::ScannerChain chain(static_cast<std::uint32_t>(rate));
            std::vector<double> levels(static_cast<std::size_t>(rate));
            std::generate(levels.begin(), levels.end(), [&] { return tone.Next(); });
            const Samples signal = modulator.Modulate(levels);
            test::ForEachBlock(signal, [&](std::span<const std::int16_t> block) { chain.TakeSignal(block); });
            const std::int32_t expected =
                kTonesBetweenBins.contains(kCtcssTones[i]) ? -1 : static_cast<std::int32_t>(i);
            EXPECT_EQ(chain.tone.toneIndex, expected) << kCtcssTones[i] << " Hz at " << rate;
        }
    }
}

TEST(CtbToneDetector, FindsAToneUnderSpeech) {
    constexpr int kRate = 48000;
    test::VoiceLikeNoise voice({.sampleRate = kRate});
    test::ToneSource tone(100.0, kRate, kToneLevel);
    EXPECT_EQ(FoundIn(Make(kRate, [&] { return tone.Next() + 8000.0 * voice.Next(); }), kRate), 14);
}

TEST(CtbToneDetector, DecidesAsTheFormulasInDouble) {
    constexpr int kRate = 48000;
    test::RandomSource random(3);
    int found = 0;
    for (int trial = 0; trial < 12; ++trial) {
        const double level = trial * 250.0;
        test::ToneSource tone(60.0 + 200.0 * random.Uniform(), kRate, level);
        CtbToneDetector detector;
        detector.SetSampleRate(kRate);
        Feed(detector, Make(kRate, [&] { return tone.Next() + 3000.0 * random.Gaussian(); }));
        EXPECT_EQ(detector.toneIndex, ReferenceDecision(detector)) << "trial " << trial;
        found += detector.toneIndex >= 0 ? 1 : 0;
    }
    EXPECT_GT(found, 0);
    EXPECT_LT(found, 12);
}

TEST(CtbToneDetector, SilenceHasNoTone) {
    ExpectNothingIn(Samples(96000, 0), 48000, "silence");
}

TEST(CtbToneDetector, NoiseHasNoTone) {
    for (const int rate : {48000, 64000}) {
        test::RandomSource random(5);
        const int seconds = test::kSanitizedBuild ? 3 : 60;
        ExpectNothingIn(
            Make(static_cast<std::size_t>(seconds * rate), [&] { return 5000.0 * random.Gaussian(); }), rate,
            "noise");
    }
}

TEST(CtbToneDetector, CarriersAndChannelNoiseHaveNoTone) {
    for (const int rate : {48000, 64000}) {
        test::FmModulator modulator({.sampleRate = rate, .snrDb = 20.0});
        test::FmReceiver receiver(static_cast<std::uint32_t>(rate));
        const auto seconds = [&](int count) { return static_cast<std::size_t>(count * rate); };
        Samples audio;
        const auto append = [&](const Samples& signal) {
            const Samples part = receiver.Receive(signal);
            audio.insert(audio.end(), part.begin(), part.end());
        };
        append(modulator.WithoutCarrier(seconds(2)));
        append(modulator.Modulate(std::vector<double>(seconds(2), 0.0)));
        append(modulator.Modulate(std::vector<double>(seconds(2), 0.3)));
        ExpectNothingIn(audio, rate, "carriers");
    }
}

namespace {

/// Speech with nothing below 300 Hz: without those harmonics, and without what the edges of its stretches
/// have there.
Samples HighVoice(double pitch, int rate, int seconds) {
    dsp::TFIR_F32 highPass;
    highPass.SetSampleRate(rate);
    highPass.SetLength(2048);
    highPass.SetFilterType(dsp::kFilterHighPass);
    highPass.SetLowCut(400.0); // the stop band begins below 300 Hz
    test::VoiceLikeNoise voice({.sampleRate = rate, .pitch = pitch});
    Samples audio = Make(static_cast<std::size_t>(seconds * rate), [&] { return 20000.0 * voice.Next(); });
    highPass.FilterI16(audio.data(), audio.data(), static_cast<std::int32_t>(audio.size()));
    return audio;
}

} // namespace

TEST(CtbToneDetector, VoiceWithoutLowFrequenciesHasNoTone) {
    constexpr int kSeconds = test::kSanitizedBuild ? 2 : 30;
    for (const int rate : {48000, 64000}) {
        for (const double pitch : {85.0, 120.0, 210.0}) {
            ExpectNothingIn(HighVoice(pitch, rate, kSeconds), rate, "voice");
        }
    }
}

TEST(CtbToneDetector, WhistleThatFoldsOntoATestedBinPassesForItsTone) {
    // The resampler's filter is wide: 1137 to 1329 Hz fold onto the tones, 24 to 37 dB down at 48000 Hz, 16
    // to 23 dB down at 64000 Hz. When nothing else is there, that is enough.
    for (const int rate : {48000, 64000}) {
        const double reduced = rate == 48000 ? 48000.0 * 2.0 / 69.0 : 64000.0 / 46.0;
        EXPECT_EQ(FoundIn(Tone(reduced - 100.0, rate, 1.0, 12000.0), rate), 14) << rate;
    }
}

TEST(CtbToneDetector, AToneBetweenTwoOfTheTableIsNotFound) {
    EXPECT_EQ(FoundIn(Tone(245.9, 48000, 1.0), 48000), -1);
}

TEST(CtbToneDetector, AQuarterOfTheBandIsEnough) {
    constexpr int kRate = 48000;
    // Two tones in tested bins: the stronger is found, until three others share the band with it.
    test::ToneSource strong(100.0, kRate, 1000.0);
    test::ToneSource weak(123.0, kRate, 700.0);
    EXPECT_EQ(FoundIn(Make(kRate, [&] { return strong.Next() + weak.Next(); }), kRate), 14);
    test::ToneSource others[] = {{100.0, kRate, 1000.0}, {123.0, kRate, 1000.0}, {151.4, kRate, 1000.0},
                                 {179.9, kRate, 1000.0}, {203.5, kRate, 1000.0}, {225.7, kRate, 1000.0}};
    EXPECT_EQ(FoundIn(Make(kRate,
                           [&] {
                               double sum = 0.0;
                               for (test::ToneSource& tone : others) {
                                   sum += tone.Next();
                               }
                               return sum;
                           }),
                      kRate),
              -1);
}

TEST(CtbToneDetector, ToneComesAndGoesWithTheWindow) {
    CtbToneDetector detector;
    detector.SetSampleRate(48000.0F);
    EXPECT_EQ(Feed(detector, Tone(100.0, 48000, 0.8)).back(), 14);
    // 0.74 s of silence push it out.
    const std::vector<std::int32_t> after = Feed(detector, Samples(48000, 0));
    EXPECT_EQ(after.front(), 14);
    EXPECT_EQ(after.back(), -1);
}

TEST(CtbToneDetector, BlockWithoutReducedSamplesGivesTheSameAnswer) {
    CtbToneDetector detector;
    detector.SetSampleRate(48000.0F);
    Feed(detector, Tone(100.0, 48000, 1.0));
    detector.toneIndex = -1;
    const auto before = Inspector::Window(detector);
    const std::int16_t sample = 30000;
    detector.Process(&sample, 0, 1);
    EXPECT_EQ(detector.toneIndex, 14);
    EXPECT_EQ(Inspector::Window(detector), before);
}

TEST(CtbToneDetector, NothingHappensWithoutSamplesOrStride) {
    CtbToneDetector detector;
    detector.SetSampleRate(48000.0F);
    Feed(detector, Tone(100.0, 48000, 1.0));
    detector.toneIndex = 7;
    const std::int16_t sample = 0;
    detector.Process(nullptr, 100, 1);
    detector.Process(&sample, 1, 0);
    EXPECT_EQ(detector.toneIndex, 7);
}

TEST(CtbToneDetector, WindowHoldsTheLatestSamplesOldestFirst) {
    CtbToneDetector detector;
    detector.SetSampleRate(1378.0F);
    Samples ramp(2000);
    for (std::size_t i = 0; i < ramp.size(); ++i) {
        ramp[i] = static_cast<std::int16_t>(i);
    }
    detector.Process(ramp.data(), 1000, 1);
    detector.Process(ramp.data() + 1000, 1000, 1);
    const auto& window = Inspector::Window(detector);
    for (std::size_t i = 200; i < window.size(); ++i) {
        EXPECT_NEAR(window[i] - window[i - 1], 1, 1) << i;
    }
    EXPECT_GT(window.back(), 1900);
}

TEST(CtbToneDetector, RateChangeKeepsTheWindow) {
    CtbToneDetector detector;
    detector.SetSampleRate(48000.0F);
    Feed(detector, Tone(100.0, 48000, 1.0));
    const auto before = Inspector::Window(detector);
    detector.SetSampleRate(64000.0F);
    EXPECT_EQ(Inspector::Window(detector), before);
}

TEST(CtbToneDetector, BlockBeyondTheWindowIsCutToWhatFits) {
    CtbToneDetector detector;
    detector.SetSampleRate(48000.0F);
    const Samples audio = Tone(100.0, 48000, 2.0);
    detector.Process(audio.data(), static_cast<std::uint32_t>(audio.size()), 1);
    EXPECT_EQ(detector.toneIndex, 14);
    EXPECT_EQ(Inspector::Resampler(detector).GetBlockLength(), 1024U * 69U / 2U);
}

TEST(CtbToneDetector, TakesEveryStridethSample) {
    const Samples audio = Tone(151.4, 48000, 1.0);
    Samples spread(2 * audio.size(), std::int16_t{-7});
    for (std::size_t i = 0; i < audio.size(); ++i) {
        spread[2 * i] = audio[i];
    }
    CtbToneDetector plain;
    CtbToneDetector strided;
    plain.SetSampleRate(48000.0F);
    strided.SetSampleRate(48000.0F);
    for (std::size_t begin = 0; begin < audio.size(); begin += 2400) {
        plain.Process(audio.data() + begin, 2400, 1);
        strided.Process(spread.data() + 2 * begin, 4800, 2);
    }
    EXPECT_EQ(strided.toneIndex, 26);
    EXPECT_EQ(Inspector::Window(strided), Inspector::Window(plain));
}

} // namespace orva::squelch
