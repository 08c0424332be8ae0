#include "voice/UnvoicedSynthesis.h"

#include "voice/FixedPoint.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace orva::voice {
namespace {

using Complex = std::complex<double>;

constexpr double kStep = 16384.0; // one sample step in the buffer

ImbeDecoderState FreshState() {
    ImbeDecoderState state;
    ImbeInit(state);
    state.unvoicedLength = kNominalFrameLength;
    state.voicedLength = kNominalFrameLength;
    return state;
}

ImbeFrameParameters UnvoicedRecord(int pitchCode, double level) {
    ImbeFrameParameters record{};
    record.kind = 1;
    record.harmonics = static_cast<std::int16_t>(((pitchCode / 4 + 10) * 60648) >> 16);
    record.fundamental = static_cast<std::int16_t>(((1 << 23) / (4 * pitchCode + 158)) >> 1);
    int exponent = 0;
    const double mantissa = std::frexp(level, &exponent);
    record.amplitudeExponent = static_cast<std::int16_t>(exponent - 15);
    for (int l = 0; l < record.harmonics; ++l) {
        record.amplitudes[l] = static_cast<std::int16_t>(mantissa * 32767.0 / (1 + l % 4));
    }
    return record;
}

std::vector<std::int32_t> Synthesize(const ImbeFrameParameters& record, int count, ImbeDecoderState& state) {
    std::vector<std::int32_t> out(static_cast<std::size_t>(std::max(count, 105)), 0x5A5A5A5A);
    SynthesizeUnvoiced(record, out.data(), count, state);
    return out;
}

// The synthesis in real numbers, with its own noise, carry and tail. Output in sample steps.
class ExactSynthesis {
public:
    std::vector<double> Next(const ImbeFrameParameters& record, int count) {
        std::vector<double> noise(55, 0.0);
        for (std::size_t i = 0; i < 50; ++i) {
            noise.push_back(carry[i] * Rise(i));
        }
        for (int i = 0; i < count - 50; ++i) {
            noise.push_back(Noise());
        }
        std::ranges::generate(carry, [&] { return Noise(); });
        for (std::size_t i = 0; i < 50; ++i) {
            noise.push_back(carry[i] * Rise(50 - i));
        }
        std::vector<double> folded(256, 0.0);
        for (std::size_t i = 0; i < noise.size(); ++i) {
            folded[i % 256] += noise[i];
        }
        const std::vector<double> shaped = Inverse(Shape(record, count, Forward(folded)));

        std::vector<double> out;
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            if (i < 55) {
                out.push_back(tail[i]);
            } else if (i < 105) {
                out.push_back(tail[i] * Rise(105 - i) + shaped[i] * Rise(i - 55));
            } else {
                out.push_back(shaped[i % 256]);
            }
        }
        for (std::size_t i = 0; i < 105; ++i) {
            tail[i] = shaped[(static_cast<std::size_t>(count) + i) % 256];
        }
        return out;
    }

private:
    static double Rise(std::size_t i) { return std::sqrt(static_cast<double>(i) / 50.0); }

    double Noise() {
        seed = (173 * seed + 13849) % 65536;
        return seed < 32768 ? seed : seed - 65536.0;
    }

    std::vector<Complex> Forward(const std::vector<double>& x) const {
        std::vector<Complex> bins(128);
        for (std::size_t k = 1; k < bins.size(); ++k) {
            for (std::size_t n = 0; n < x.size(); ++n) {
                bins[k] += x[n] * std::conj(turns[k * n % 256]);
            }
        }
        return bins;
    }

    std::vector<double> Inverse(const std::vector<Complex>& bins) const {
        std::vector<double> x(256, 0.0);
        for (std::size_t n = 0; n < x.size(); ++n) {
            for (std::size_t k = 1; k < bins.size(); ++k) {
                x[n] += 2.0 * (bins[k] * turns[k * n % 256]).real();
            }
            x[n] /= 2.0 * 256.0; // one half of the inverse transform
        }
        return x;
    }

    static std::vector<Complex> Shape(const ImbeFrameParameters& record, int count,
                                      std::vector<Complex> bins) {
        const double spacing = record.fundamental / 2048.0;
        double edge = (spacing + 1.0) / 2.0;
        auto first = static_cast<std::size_t>(edge);
        std::fill_n(bins.begin(), first, Complex{});
        for (int l = 1; l <= record.harmonics; ++l) {
            edge += spacing;
            const auto end = static_cast<std::size_t>(edge);
            double power = 0.0;
            for (std::size_t k = first; k < end; ++k) {
                power += std::norm(bins[k]);
            }
            const double width = static_cast<double>(end - first);
            const double amplitude = std::ldexp(record.amplitudes[l - 1], record.amplitudeExponent);
            const double gain = record.voiced[l - 1] != 0
                                    ? 0.0
                                    : std::sqrt(width / power) * 1.4508 *
                                          std::sqrt(double{1} * record.harmonics * count) * amplitude;
            for (std::size_t k = first; k < end; ++k) {
                bins[k] *= gain;
            }
            first = end;
        }
        std::fill(bins.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(first, 121)), bins.end(),
                  Complex{});
        std::fill_n(bins.begin(), 3, Complex{});
        return bins;
    }

    // e^(j 2 pi i / 256)
    const std::vector<Complex> turns = [] {
        std::vector<Complex> values;
        for (int i = 0; i < 256; ++i) {
            values.push_back(std::polar(1.0, 2.0 * std::numbers::pi * i / 256.0));
        }
        return values;
    }();
    unsigned seed = 0;
    std::vector<double> carry = std::vector<double>(50, 0.0);
    std::vector<double> tail = std::vector<double>(105, 0.0);
};

double SignalToErrorDb(const std::vector<double>& expected, const std::vector<std::int32_t>& actual) {
    double signal = 0.0;
    double error = 0.0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const double difference = actual[i] / kStep - expected[i];
        signal += expected[i] * expected[i];
        error += difference * difference;
    }
    return 10.0 * std::log10(std::max(signal, 1e-30) / std::max(error, 1e-30));
}

TEST(UnvoicedSynthesis, NoiseStartsAt13849AndFollowsTheGenerator) {
    std::uint16_t seed = 0;
    EXPECT_EQ(NextNoise(seed), 13849);
    std::uint32_t x = 13849;
    for (int i = 0; i < 70000; ++i) {
        x = (173 * x + 13849) % 65536;
        ASSERT_EQ(NextNoise(seed), static_cast<int>(x < 32768 ? x : x - 65536)) << i;
        ASSERT_EQ(seed, x);
    }
}

TEST(UnvoicedSynthesis, NoiseGeneratorVisitsEveryValue) {
    std::vector<int> visits(65536, 0);
    std::uint16_t seed = 0;
    for (int i = 0; i < 65536; ++i) {
        ++visits[static_cast<std::uint16_t>(NextNoise(seed))];
    }
    EXPECT_EQ(std::ranges::count(visits, 1), 65536);
}

TEST(UnvoicedSynthesis, WindowIsTheRootOfALine) {
    ASSERT_EQ(kFadeWindow.size(), 51U);
    for (std::size_t i = 0; i <= 50; ++i) {
        EXPECT_NEAR(kFadeWindow[i], 32768.0 * std::sqrt(static_cast<double>(i) / 50.0), 1.0) << i;
        // Rising and falling slope keep the power.
        const double power = std::pow(kFadeWindow[i], 2.0) + std::pow(kFadeWindow[50 - i], 2.0);
        EXPECT_NEAR(power / std::pow(32768.0, 2.0), 1.0, 1e-4) << i;
    }
    EXPECT_EQ(kFadeWindow[0], 0);
    EXPECT_EQ(kFadeWindow[25], 23170);
    EXPECT_EQ(kFadeWindow[50], 32767);
}

TEST(UnvoicedSynthesis, FadeLiesInTheMiddleOfTheFrame) {
    EXPECT_EQ(FadeBegin(160), 55);
    EXPECT_EQ(FadeEnd(160), 105);
}

TEST(UnvoicedSynthesis, FramesDrawTheirNoiseAndCarryTheOverlap) {
    ImbeDecoderState state = FreshState();
    Synthesize(UnvoicedRecord(80, 1000.0), 160, state);
    std::uint16_t seed = 0;
    for (int i = 0; i < 110; ++i) {
        NextNoise(seed);
    }
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(state.noiseCarry[i], NextNoise(seed)) << i;
    }
    EXPECT_EQ(state.noiseSeed, seed);
}

TEST(UnvoicedSynthesis, MatchesTheFormulasForEveryPitch) {
    for (int pitchCode = 0; pitchCode < 208; pitchCode += 9) {
        ImbeDecoderState state = FreshState();
        ExactSynthesis exact;
        for (int frame = 0; frame < 4; ++frame) {
            ImbeFrameParameters record = UnvoicedRecord(pitchCode, frame == 2 ? 60.0 : 4000.0);
            for (int l = 0; l < record.harmonics; ++l) {
                record.voiced[l] = static_cast<std::int16_t>(frame == 3 && l % 3 == 0 ? 1 : 0);
            }
            const auto expected = exact.Next(record, 160);
            const auto actual = Synthesize(record, 160, state);
            ASSERT_GT(SignalToErrorDb(expected, actual), 50.0)
                << "pitch code " << pitchCode << ", frame " << frame;
        }
    }
}

TEST(UnvoicedSynthesis, MatchesTheFormulasForEveryLength) {
    const ImbeFrameParameters record = UnvoicedRecord(77, 3000.0);
    for (int count = 103; count <= 205; ++count) {
        ImbeDecoderState state = FreshState();
        ExactSynthesis exact;
        for (int frame = 0; frame < 2; ++frame) {
            const auto expected = exact.Next(record, count);
            const auto actual = Synthesize(record, count, state);
            ASSERT_GT(SignalToErrorDb(expected, actual), 50.0) << count << " samples, frame " << frame;
        }
    }
}

TEST(UnvoicedSynthesis, NineSamplesWrapAroundTheTransform) {
    // 265 samples of record in 256 points: the tail's last nine are the transform's first nine, which belong
    // to the overlap's end and not to the silence at the start.
    ImbeDecoderState state = FreshState();
    const ImbeFrameParameters record = UnvoicedRecord(50, 8000.0);
    Synthesize(record, 160, state);
    ExactSynthesis exact;
    exact.Next(record, 160);
    const auto expected = exact.Next(record, 160);
    const auto actual = Synthesize(record, 160, state);
    for (std::size_t i = 96; i < 105; ++i) {
        ASSERT_NEAR(actual[i] / kStep, expected[i], 0.008 * std::fabs(expected[i]) + 20.0) << i;
    }
    EXPECT_TRUE(
        std::all_of(state.unvoicedTail + 105, std::end(state.unvoicedTail), [](int x) { return x == 0; }));
}

TEST(UnvoicedSynthesis, AllVoicedIsSilentButForTheOldTail) {
    ImbeDecoderState state = FreshState();
    ImbeFrameParameters record = UnvoicedRecord(60, 5000.0);
    Synthesize(record, 160, state);
    std::ranges::fill(record.voiced, std::int16_t{1});
    auto out = Synthesize(record, 160, state);
    EXPECT_GT(std::count_if(out.begin(), out.begin() + 104, [](int x) { return x != 0; }), 90);
    EXPECT_EQ(std::count(out.begin() + 105, out.end(), 0), 55);
    out = Synthesize(record, 160, state);
    EXPECT_EQ(std::count(out.begin(), out.end(), 0), 160);
}

TEST(UnvoicedSynthesis, EveryUnvoicedHarmonicHasItsPower) {
    // Mean power per band: n 2.1049 L A^2 / 512 for a band of n bins.
    for (const int harmonic : {4, 9, 13}) {
        ImbeFrameParameters record = UnvoicedRecord(0, 1.0);
        record.harmonics = 14;
        record.fundamental = 16384; // 8 bins
        record.amplitudeExponent = -4;
        std::ranges::fill(record.amplitudes, std::int16_t{16000});
        std::ranges::fill(record.voiced, std::int16_t{1});
        record.voiced[harmonic - 1] = 0;
        ImbeDecoderState state = FreshState();
        Synthesize(record, 160, state);
        double power = 0.0;
        constexpr int kFrames = 200;
        for (int frame = 0; frame < kFrames; ++frame) {
            for (const std::int32_t value : Synthesize(record, 160, state)) {
                power += std::pow(value / kStep, 2.0) / (160.0 * kFrames);
            }
        }
        EXPECT_NEAR(power / (1000.0 * 1000.0), 8.0 * 14.0 * 2.1049 / 512.0, 0.05) << "harmonic " << harmonic;
    }
}

TEST(UnvoicedSynthesis, LowestPitchHasTwoBinsInEveryBand) {
    const ImbeFrameParameters record = UnvoicedRecord(207, 1000.0);
    const int spacing = record.fundamental * 32;
    int edge = (spacing + 65536) / 2;
    for (int l = 1; l <= record.harmonics; ++l) {
        const int width = ((edge + spacing) >> 16) - (edge >> 16);
        EXPECT_GE(width, 2) << l;
        edge += spacing;
    }
    // A single band out of them sounds with its power.
    ImbeFrameParameters single = record;
    std::ranges::fill(single.voiced, std::int16_t{1});
    single.voiced[20] = 0;
    ImbeDecoderState state = FreshState();
    ExactSynthesis exact;
    for (int frame = 0; frame < 3; ++frame) {
        const auto expected = exact.Next(single, 160);
        ASSERT_GT(SignalToErrorDb(expected, Synthesize(single, 160, state)), 50.0) << frame;
    }
}

TEST(UnvoicedSynthesis, NothingSoundsBelowTheFourthBin) {
    ImbeFrameParameters record = UnvoicedRecord(207, 3000.0); // bands two bins wide
    std::ranges::fill(record.voiced, std::int16_t{1});
    record.voiced[0] = 0; // bins 1 and 2
    ImbeDecoderState state = FreshState();
    for (int frame = 0; frame < 3; ++frame) {
        const auto out = Synthesize(record, 160, state);
        EXPECT_LE(std::abs(*std::ranges::max_element(out)), kStep) << frame;
    }
}

TEST(UnvoicedSynthesis, TooQuietSpectraAreSilent) {
    ImbeDecoderState state = FreshState();
    const auto out = Synthesize(state.silenceFrame, 160, state);
    EXPECT_EQ(std::count(out.begin(), out.end(), 0), 160);
    EXPECT_EQ(std::ranges::count(state.unvoicedTail, 0), kUnvoicedTailLength);
    EXPECT_NE(state.noiseSeed, 0);
}

TEST(UnvoicedSynthesis, LoudSpectraSaturate) {
    ImbeFrameParameters record = UnvoicedRecord(100, 32000.0);
    record.amplitudeExponent = 6;
    ImbeDecoderState state = FreshState();
    Synthesize(record, 160, state);
    const auto out = Synthesize(record, 160, state);
    EXPECT_EQ(*std::ranges::max_element(out), kMax32);
    EXPECT_EQ(*std::ranges::min_element(out), kMin32);
}

TEST(UnvoicedSynthesis, PitchAverageMovesOnlyWithHalfTheGateSet) {
    ImbeFrameParameters record{};
    record.fundamental = 20000;
    for (int set = 0; set <= 16; ++set) {
        record.pitchGate = static_cast<std::int16_t>((1U << set) - 1);
        ImbeDecoderState state = FreshState();
        UpdatePitchAverage(record, state);
        const std::int64_t moved = (((std::int64_t{20000} * 52428) >> 4) + std::int64_t{7365} * 62258) >> 16;
        EXPECT_EQ(state.pitchAverage, set >= 8 ? moved : 7365) << set << " bits";
    }
    EXPECT_NEAR(0.05 * 20000 + 0.95 * 7365,
                (((std::int64_t{20000} * 52428) >> 4) + std::int64_t{7365} * 62258) >> 16, 2.0);
}

} // namespace
} // namespace orva::voice
