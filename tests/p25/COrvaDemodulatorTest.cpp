#include "p25/COrvaDemodulator.h"

#include "tests/p25/COrvaDemodulatorInspector.h"
#include "tests/support/AllocationProbe.h"
#include "tests/support/C4fmModulator.h"
#include "tests/support/RandomSource.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using Inspector = COrvaDemodulatorInspector;
using Samples = std::vector<float>;

constexpr float kThreshold = 0.165F;
constexpr int kSync[24] = {+1, +1, +1, +1, +1, -1, +1, +1, -1, -1, +1, +1,
                           -1, -1, -1, -1, +1, -1, +1, -1, -1, -1, -1, -1};

Samples Tone(double hz, double rate, std::size_t count, double amplitude = 0.5, double phase = 0.3) {
    Samples samples(count);
    for (std::size_t n = 0; n < count; ++n) {
        samples[n] = static_cast<float>(
            amplitude * std::cos(2.0 * std::numbers::pi * hz * static_cast<double>(n) / rate + phase));
    }
    return samples;
}

/// A carrier with random symbols, as the decoder's host delivers it.
Samples Carrier(int rate, std::size_t symbols, std::uint64_t seed = 1) {
    test::RandomSource random(seed);
    std::string dibits;
    for (std::size_t i = 0; i < symbols; ++i) {
        dibits.push_back(static_cast<char>('0' + random.Below(4)));
    }
    test::C4fmModulator modulator({.sampleRate = rate, .snrDb = 25.0, .seed = seed});
    modulator.Transmit(dibits);
    Samples samples;
    for (const std::int16_t sample : modulator.Samples()) {
        samples.push_back(static_cast<float>(sample) * 3.0517578125e-5F);
    }
    return samples;
}

std::string Demodulate(COrvaDemodulator& demodulator, const Samples& samples) {
    const std::int32_t count = demodulator.Process(samples.data(), static_cast<std::int32_t>(samples.size()));
    EXPECT_GE(count, 0);
    return {demodulator.GetDibits(), static_cast<std::size_t>(std::max(count, 0))};
}

/// The same in blocks of the given lengths by turns.
std::string DemodulateInBlocks(COrvaDemodulator& demodulator, const Samples& samples,
                               const std::vector<std::size_t>& lengths) {
    std::string dibits;
    std::size_t turn = 0;
    for (std::size_t place = 0; place < samples.size();) {
        const std::size_t length = std::min(lengths[turn++ % lengths.size()], samples.size() - place);
        const std::int32_t count =
            demodulator.Process(samples.data() + place, static_cast<std::int32_t>(length));
        EXPECT_GE(count, 0);
        dibits.append(demodulator.GetDibits(), static_cast<std::size_t>(count));
        place += length;
    }
    return dibits;
}

/// A demodulator with its arrays built, ready to be driven step by step.
struct Bench {
    explicit Bench(std::int32_t count, std::uint32_t rate = 48000) {
        demodulator.SetSampleRate(rate);
        EXPECT_TRUE(inspector.Prepare(count));
    }

    COrvaDemodulator demodulator;
    Inspector inspector{demodulator};
};

// Settings

TEST(Demodulator, StartsWithItsDefaults) {
    COrvaDemodulator demodulator;
    Inspector inspector{demodulator};
    EXPECT_FALSE(inspector.CorrelatorReady());
    EXPECT_FALSE(inspector.OscillatorReady());
    EXPECT_FALSE(inspector.FiltersReady());
    EXPECT_EQ(inspector.SampleRate(), 48000U);
    EXPECT_EQ(demodulator.GetCentreFrequency(), 12000U);
    EXPECT_EQ(demodulator.GetMixFrequency(), 12000.0);
    EXPECT_EQ(demodulator.GetSymbolRate(), 4800.0F);
    EXPECT_EQ(inspector.PrevLagging(), 0.0F);
    EXPECT_EQ(inspector.PrevInPhase(), 0.0F);
    EXPECT_EQ(inspector.SamplesPerSymbol(), 10.0F);
    EXPECT_EQ(demodulator.GetDibits(), nullptr);
    EXPECT_EQ(inspector.NegativeAverage(), 0.0F);
    EXPECT_EQ(inspector.DcStage1(), 0.0F);
    EXPECT_EQ(inspector.DcStage2(), 0.0F);
    EXPECT_EQ(inspector.OscillatorPhase(), 0U);
    EXPECT_EQ(inspector.QuarterCycle(), 12000U);
    EXPECT_EQ(inspector.RingIndex(), 0);
    EXPECT_EQ(inspector.RingLength(), 0);
    EXPECT_EQ(inspector.CrossingClock(), 0.0F);
    EXPECT_EQ(inspector.PrevSample(), 0.0F);
    EXPECT_EQ(inspector.MidSymbolIndex(), -1);
    EXPECT_EQ(inspector.CrossingClass(), 0);
    EXPECT_EQ(inspector.SymbolClock(), 0.0F);
    EXPECT_EQ(inspector.CorrelatorLength(), 0);
    EXPECT_EQ(inspector.RateRatio(), 1.0F);
}

TEST(Demodulator, SampleRateChangesWhatDependsOnIt) {
    Bench bench(100);
    bench.demodulator.SetSampleRate(64000);
    EXPECT_EQ(bench.inspector.SampleRate(), 64000U);
    EXPECT_FALSE(bench.inspector.CorrelatorReady());
    EXPECT_FALSE(bench.inspector.OscillatorReady());
    EXPECT_FALSE(bench.inspector.FiltersReady());
    EXPECT_EQ(bench.inspector.SamplesPerSymbol(), static_cast<float>(64000.0 / 4800.0));
    EXPECT_EQ(bench.inspector.RateRatio(), static_cast<float>(64000.0 / 48000.0));
}

TEST(Demodulator, TheSameSampleRateChangesNothing) {
    Bench bench(100);
    bench.demodulator.SetSampleRate(48000);
    EXPECT_TRUE(bench.inspector.CorrelatorReady());
    EXPECT_TRUE(bench.inspector.OscillatorReady());
    EXPECT_TRUE(bench.inspector.FiltersReady());
}

TEST(Demodulator, SymbolRateRebuildsTheCorrelatorOnly) {
    Bench bench(100);
    bench.demodulator.SetSymbolRate(4800.0F);
    EXPECT_TRUE(bench.inspector.CorrelatorReady());
    bench.demodulator.SetSymbolRate(2400.0F);
    EXPECT_EQ(bench.demodulator.GetSymbolRate(), 2400.0F);
    EXPECT_EQ(bench.inspector.SamplesPerSymbol(), 20.0F);
    EXPECT_FALSE(bench.inspector.CorrelatorReady());
    EXPECT_TRUE(bench.inspector.OscillatorReady());
    EXPECT_TRUE(bench.inspector.FiltersReady());
}

TEST(Demodulator, CentreFrequencyMovesTheOscillator) {
    COrvaDemodulator demodulator;
    Inspector{demodulator}.MixFrequency() = 12345.6;
    demodulator.SetCentreFrequency(12000);
    EXPECT_EQ(demodulator.GetMixFrequency(), 12000.0) << "also when it is the same";
    demodulator.SetCentreFrequency(11000);
    EXPECT_EQ(demodulator.GetCentreFrequency(), 11000U);
    EXPECT_EQ(demodulator.GetMixFrequency(), 11000.0);
}

TEST(Demodulator, ResetClearsTheOscillatorTheFiltersAndTheClock) {
    COrvaDemodulator demodulator;
    Inspector inspector{demodulator};
    Demodulate(demodulator, Carrier(48000, 300));
    inspector.MixFrequency() = 12345.6;
    demodulator.Reset();
    EXPECT_EQ(inspector.OscillatorPhase(), 0U);
    EXPECT_EQ(inspector.PrevLagging(), 0.0F);
    EXPECT_EQ(inspector.PrevInPhase(), 0.0F);
    EXPECT_EQ(inspector.SymbolClock(), 0.0F);
    EXPECT_EQ(demodulator.GetMixFrequency(), 12000.0);
    Samples silence(40, 0.0F);
    for (dsp::TFIR_F32* filter : {&inspector.LowPassLagging(), &inspector.LowPassInPhase()}) {
        filter->Filter(silence.data(), silence.data(), 40);
        EXPECT_EQ(silence, Samples(40, 0.0F)) << "nothing is left in the delay line";
    }
}

TEST(Demodulator, ResetKeepsTheRest) {
    COrvaDemodulator demodulator;
    Inspector inspector{demodulator};
    Demodulate(demodulator, Carrier(48000, 300));
    inspector.MidSymbolIndex() = 3;
    inspector.RingIndex() = 7;
    const float average = inspector.NegativeAverage();
    const float stage1 = inspector.DcStage1();
    const float stage2 = inspector.DcStage2();
    const float sample = inspector.PrevSample();
    const float clock = inspector.CrossingClock();
    const std::int32_t crossing = inspector.CrossingClass();
    const Samples history(inspector.History().Data(), inspector.History().Data() + 240);
    const Samples ring(inspector.Ring().Data(), inspector.Ring().Data() + 11);
    ASSERT_NE(average, 0.0F);
    ASSERT_NE(stage2, 0.0F);
    demodulator.Reset();
    EXPECT_EQ(inspector.NegativeAverage(), average);
    EXPECT_EQ(inspector.DcStage1(), stage1);
    EXPECT_EQ(inspector.DcStage2(), stage2);
    EXPECT_EQ(inspector.PrevSample(), sample);
    EXPECT_EQ(inspector.CrossingClock(), clock);
    EXPECT_EQ(inspector.CrossingClass(), crossing);
    EXPECT_EQ(inspector.MidSymbolIndex(), 3);
    EXPECT_EQ(inspector.RingIndex(), 7);
    EXPECT_TRUE(std::equal(history.begin(), history.end(), inspector.History().Data()));
    EXPECT_TRUE(std::equal(ring.begin(), ring.end(), inspector.Ring().Data()));
    EXPECT_TRUE(inspector.CorrelatorReady());
    EXPECT_TRUE(inspector.FiltersReady());
    EXPECT_TRUE(inspector.OscillatorReady());
}

TEST(Demodulator, RefusesNothingToDo) {
    COrvaDemodulator demodulator;
    const Samples samples(10, 0.0F);
    EXPECT_EQ(demodulator.Process(nullptr, 10), -1);
    EXPECT_EQ(demodulator.Process(samples.data(), 0), -1);
    EXPECT_EQ(demodulator.Process(samples.data(), -1), -1);
    EXPECT_FALSE(Inspector{demodulator}.FiltersReady()) << "nothing was built";
}

TEST(Demodulator, WithoutMemoryRefusesAndWorksLater) {
    // Each allocation of a first block is made to fail in turn.
    const Samples samples = Carrier(48000, 100);
    COrvaDemodulator untroubled;
    const std::string expected = Demodulate(untroubled, samples);
    for (int successes = 0;; ++successes) {
        COrvaDemodulator demodulator;
        bool struck = false;
        {
            const test::AllocationFailure failure(successes);
            const std::int32_t count =
                demodulator.Process(samples.data(), static_cast<std::int32_t>(samples.size()));
            struck = failure.HasStruck();
            if (struck) {
                EXPECT_EQ(count, -1) << "allocation " << successes;
            }
        }
        if (!struck) {
            EXPECT_GT(successes, 5);
            break;
        }
        EXPECT_EQ(Demodulate(demodulator, samples), expected) << "after allocation " << successes;
    }
}

// Building

TEST(DemodulatorLowPass, HasItsSettings) {
    for (const std::uint32_t rate : {48000U, 64000U, 48000U}) {
        Bench bench(10, rate);
        for (const dsp::TFIR_F32* filter :
             {&bench.inspector.LowPassLagging(), &bench.inspector.LowPassInPhase()}) {
            EXPECT_EQ(filter->GetLength(), 32U);
            EXPECT_EQ(filter->GetSampleRate(), rate);
            EXPECT_EQ(filter->GetFilterType(), 1U);
            EXPECT_EQ(filter->GetHighCut(), 3000.0);
        }
    }
}

TEST(DemodulatorLowPass, IsThatOfTheNewRateAfterAChange) {
    // A rate so low that the cut-off had to come down leaves no trace.
    Bench bench(10, 4800);
    bench.demodulator.SetSampleRate(64000);
    ASSERT_TRUE(bench.inspector.Prepare(10));
    EXPECT_EQ(bench.inspector.LowPassLagging().GetHighCut(), 3000.0);
}

/// Output of the correlator for a single 1: its taps, the last one first.
Samples ImpulseResponse(Inspector& inspector, std::size_t count) {
    Samples impulse(count, 0.0F);
    impulse[0] = 1.0F;
    inspector.Correlator().ClearHistory();
    inspector.Correlator().Filter(impulse.data(), impulse.data(), static_cast<std::int32_t>(count));
    return impulse;
}

TEST(DemodulatorCorrelator, Has240TapsAt48000) {
    Bench bench(10);
    EXPECT_EQ(bench.inspector.CorrelatorLength(), 240);
    EXPECT_EQ(bench.inspector.Correlator().GetLength(), 240U);
    const Samples response = ImpulseResponse(bench.inspector, 250);
    for (std::size_t tap = 0; tap < 240; ++tap) {
        const std::size_t symbol = tap / 10;
        ASSERT_EQ(response[239 - tap], static_cast<float>(kSync[symbol])) << "tap " << tap;
    }
    EXPECT_EQ(response[240], 0.0F);
}

TEST(DemodulatorCorrelator, SpreadsSymbolsByACarriedRemainderAt64000) {
    Bench bench(10, 64000);
    EXPECT_EQ(bench.inspector.SamplesPerSymbol(), 13.333333F);
    EXPECT_EQ(bench.inspector.CorrelatorLength(), 319);
    EXPECT_EQ(bench.inspector.Correlator().GetLength(), 320U);
    const Samples response = ImpulseResponse(bench.inspector, 330);
    EXPECT_EQ(response[0], 0.0F) << "the filter's own last tap, the newest, counts nothing";
    double position = 0.0;
    std::size_t symbol = 0;
    int lengths[24] = {};
    for (std::size_t tap = 0; tap < 319; ++tap) {
        ASSERT_LT(symbol, 24U);
        ++lengths[symbol];
        ASSERT_EQ(response[319 - tap], static_cast<float>(kSync[symbol])) << "tap " << tap;
        position += 1.0;
        if (position >= static_cast<double>(13.333333F)) {
            position -= static_cast<double>(13.333333F);
            ++symbol;
        }
    }
    EXPECT_EQ(lengths[0], 14);
    EXPECT_EQ(lengths[1], 13);
    EXPECT_EQ(lengths[2], 13);
    EXPECT_EQ(lengths[3], 14);
    EXPECT_EQ(*std::min_element(lengths, lengths + 24), 12)
        << "the last symbol is short by the tap left over";
}

TEST(DemodulatorCorrelator, ARebuildClearsDelayLineAndHistory) {
    COrvaDemodulator demodulator;
    Inspector inspector{demodulator};
    Demodulate(demodulator, Carrier(48000, 100));
    demodulator.SetSampleRate(64000);
    demodulator.SetSampleRate(48000);
    ASSERT_TRUE(inspector.Prepare(10));
    EXPECT_TRUE(std::all_of(inspector.History().Data(), inspector.History().Data() + 240,
                            [](float value) { return value == 0.0F; }));
    Samples silence(240, 0.0F);
    inspector.Correlator().Filter(silence.data(), silence.data(), 240);
    EXPECT_EQ(silence, Samples(240, 0.0F));
}

TEST(DemodulatorOscillator, TableHoldsOneCycleOfCosine) {
    for (const std::uint32_t rate : {48000U, 64000U}) {
        Bench bench(10, rate);
        ASSERT_GE(bench.inspector.OscillatorTable().Capacity(), rate);
        for (std::uint32_t i = 0; i < rate; ++i) {
            ASSERT_EQ(bench.inspector.OscillatorTable()[i],
                      static_cast<float>(std::cos(2.0 * std::numbers::pi * i / rate)))
                << "entry " << i;
        }
        EXPECT_EQ(bench.inspector.QuarterCycle(), rate >> 2);
    }
}

TEST(DemodulatorRing, KeepsTheLengthOfTheFirstRate) {
    COrvaDemodulator demodulator;
    Inspector inspector{demodulator};
    ASSERT_TRUE(inspector.Prepare(10));
    EXPECT_EQ(inspector.RingLength(), 11);
    demodulator.SetSampleRate(64000);
    const Samples samples = Carrier(64000, 200);
    EXPECT_NEAR(static_cast<double>(Demodulate(demodulator, samples).size()), 200.0, 2.0);
    EXPECT_EQ(inspector.RingLength(), 11);

    Bench bench(10, 64000);
    EXPECT_EQ(bench.inspector.RingLength(), 14);
    bench.demodulator.SetSampleRate(48000);
    ASSERT_TRUE(bench.inspector.Prepare(10));
    EXPECT_EQ(bench.inspector.RingLength(), 14);
}

TEST(DemodulatorRing, IsReadSafelyWhenItIsShorterThanHalfASymbol) {
    COrvaDemodulator demodulator;
    Inspector inspector{demodulator};
    ASSERT_TRUE(inspector.Prepare(10));
    demodulator.SetSymbolRate(600.0F); // 80 samples a symbol, and a ring of 11
    EXPECT_GT(Demodulate(demodulator, Carrier(48000, 300)).size(), 10U);
}

// Mixing

TEST(DemodulatorMixer, StepsThroughTheTableByWholeHertz) {
    test::RandomSource random(2);
    for (const double frequency : {12000.0, 11999.0, 12000.9, 8000.0, 15999.99, 1.0}) {
        constexpr std::uint32_t kRate = 48000;
        Bench bench(500);
        Samples samples(500);
        for (float& sample : samples) {
            sample = static_cast<float>(random.Uniform() - 0.5);
        }
        bench.inspector.MixFrequency() = frequency;
        bench.inspector.OscillatorPhase() = 47990;
        bench.inspector.Mix(samples);
        const auto step = static_cast<std::uint32_t>(frequency);
        std::uint32_t phase = 47990;
        const auto& table = bench.inspector.OscillatorTable();
        for (std::uint32_t n = 0; n < 500; ++n) {
            ASSERT_EQ(bench.inspector.InPhaseBuffer()[n], samples[n] * table[phase]) << "sample " << n;
            ASSERT_EQ(bench.inspector.LaggingBuffer()[n], samples[n] * table[(phase + 12000) % kRate])
                << "sample " << n;
            phase = (phase + step) % kRate;
        }
        EXPECT_EQ(bench.inspector.OscillatorPhase(), phase);
    }
}

TEST(DemodulatorMixer, TakesAFrequencyBelowZeroModuloTheRate) {
    Bench bench(10);
    bench.demodulator.SetCentreFrequency(0);
    bench.inspector.MixFrequency() = -100.5;
    bench.inspector.Mix(Samples(3, 1.0F));
    EXPECT_EQ(bench.inspector.OscillatorPhase(), 48000U - 300U);
}

// Discriminator

TEST(DemodulatorDiscriminator, TakesTheCrossProductAgainstThePresentPower) {
    constexpr std::int32_t kCount = 200;
    Bench bench(kCount);
    test::RandomSource random(3);
    Samples a(kCount);
    Samples b(kCount);
    for (std::size_t n = 0; n < a.size(); ++n) {
        a[n] = static_cast<float>(random.Gaussian());
        b[n] = static_cast<float>(random.Gaussian());
    }
    a[50] = b[50] = 0.0F;
    Inspector::Fill(bench.inspector.LaggingBuffer(), a);
    Inspector::Fill(bench.inspector.InPhaseBuffer(), b);
    bench.inspector.PrevLagging() = 0.25F;
    bench.inspector.PrevInPhase() = -0.5F;
    bench.inspector.Discriminate(kCount);
    double lastA = 0.25;
    double lastB = -0.5;
    for (std::size_t n = 0; n < a.size(); ++n) {
        const double x = a[n];
        const double y = b[n];
        const double expected = x == 0.0 && y == 0.0 ? 0.0 : std::atan2(lastB * x - lastA * y, x * x + y * y);
        ASSERT_EQ(bench.inspector.Discriminated()[static_cast<std::uint32_t>(n)],
                  static_cast<float>(expected))
            << "sample " << n;
        lastA = x;
        lastB = y;
    }
    EXPECT_EQ(bench.inspector.PrevLagging(), a.back());
    EXPECT_EQ(bench.inspector.PrevInPhase(), b.back());
}

TEST(DemodulatorDiscriminator, HandsItsLastSampleToTheNextBlock) {
    const Samples samples = Tone(12600.0, 48000.0, 400);
    COrvaDemodulator whole;
    Inspector inWhole{whole};
    Demodulate(whole, samples);
    COrvaDemodulator cut;
    Inspector inCut{cut};
    Demodulate(cut, Samples(samples.begin(), samples.begin() + 123));
    Demodulate(cut, Samples(samples.begin() + 123, samples.end()));
    for (std::uint32_t n = 0; n < 277; ++n) {
        ASSERT_EQ(inCut.Discriminated()[n], inWhole.Discriminated()[n + 123]) << "sample " << n;
    }
}

TEST(DemodulatorDiscriminator, ShowsTheDeviationOfATone) {
    // atan of the sine of the phase step: with a steady tone cross product and power differ by that only.
    for (const double deviation : {-1800.0, -600.0, 600.0, 1800.0, 123.0}) {
        COrvaDemodulator demodulator;
        Inspector inspector{demodulator};
        // Short enough for the frequency control to see no peak that it follows before the end.
        const Samples samples = Tone(12000.0 + deviation, 48000.0, 200);
        Demodulate(demodulator, samples);
        const double step = 2.0 * std::numbers::pi * deviation / 48000.0;
        for (std::uint32_t n = 100; n < 200; ++n) {
            // The image at twice the intermediate frequency is 50 dB down at least.
            ASSERT_NEAR(inspector.Discriminated()[n], std::atan(std::sin(step)), 0.01) << "sample " << n;
        }
    }
}

TEST(DemodulatorDiscriminator, DoesNotDependOnTheAmplitude) {
    for (const double amplitude : {0.003, 0.03, 0.9}) {
        COrvaDemodulator demodulator;
        Inspector inspector{demodulator};
        Demodulate(demodulator, Tone(13800.0, 48000.0, 200, amplitude));
        COrvaDemodulator reference;
        Inspector inReference{reference};
        Demodulate(reference, Tone(13800.0, 48000.0, 200, 0.5));
        for (std::uint32_t n = 50; n < 200; ++n) {
            ASSERT_NEAR(inspector.Discriminated()[n], inReference.Discriminated()[n], 1e-4) << "sample " << n;
        }
    }
}

// DC removal and correlation

TEST(DemodulatorDcRemoval, RunsThroughTwoTrackers) {
    constexpr std::int32_t kCount = 300;
    Bench bench(kCount);
    test::RandomSource random(4);
    Samples input(kCount);
    for (float& value : input) {
        value = static_cast<float>(0.1 + 0.2 * random.Gaussian());
    }
    Inspector::Fill(bench.inspector.Discriminated(), input);
    bench.inspector.Correlated()[0] = 5.0F;
    bench.inspector.Correlated()[1] = 6.0F;
    bench.inspector.RemoveDc(kCount);
    float stage1 = 0.0F;
    float stage2 = 0.0F;
    for (std::size_t n = 0; n < input.size(); ++n) {
        stage1 = static_cast<float>(0.001 * input[n] + 0.999 * stage1);
        stage2 = static_cast<float>(0.001 * stage1 + 0.999 * stage2);
        ASSERT_EQ(bench.inspector.Correlated()[static_cast<std::uint32_t>(n) + 2], input[n] - stage2)
            << "sample " << n;
    }
    EXPECT_EQ(bench.inspector.DcStage1(), stage1);
    EXPECT_EQ(bench.inspector.DcStage2(), stage2);
    EXPECT_EQ(bench.inspector.Correlated()[0], 5.0F) << "the carried entries stand before the block's own";
    EXPECT_EQ(bench.inspector.Correlated()[1], 6.0F);
}

TEST(DemodulatorCorrelation, PeaksWhenTheSyncHasJustEnded) {
    std::string dibits;
    for (int i = 0; i < 100; ++i) {
        dibits.push_back("02"[i % 2]);
    }
    for (const int sign : kSync) {
        dibits.push_back(sign > 0 ? '1' : '3');
    }
    dibits += "020202020202020202020202020202";
    test::C4fmModulator modulator({});
    modulator.Transmit(dibits);
    Samples samples;
    for (const std::int16_t sample : modulator.Samples()) {
        samples.push_back(static_cast<float>(sample) * 3.0517578125e-5F);
    }
    COrvaDemodulator demodulator;
    Inspector inspector{demodulator};
    Demodulate(demodulator, samples);
    const float* correlated = inspector.Correlated().Data();
    const auto* peak = std::max_element(correlated, correlated + samples.size() + 2);
    // Behind the low-pass pair by half its 32 taps, and two entries carried.
    EXPECT_NEAR(static_cast<double>(peak - correlated), 1240.0 + 15.0 + 2.0, 4.0);
}

// Peak search and frequency control

/// `FindSync` on given correlator output; entries 0 and 1 are the carried ones. Returns the oscillator's
/// move.
double Move(Bench& bench, const Samples& correlated) {
    Inspector::Fill(bench.inspector.Correlated(), correlated);
    const double before = bench.inspector.MixFrequency();
    bench.inspector.FindSync(static_cast<std::int32_t>(correlated.size()) - 2);
    return bench.inspector.MixFrequency() - before;
}

/// What a sync over silence moves the oscillator by: the offset of the pattern's own sum.
const double kSilentMove = static_cast<float>(4.3 * 32.9);

TEST(DemodulatorPeakSearch, TakesEveryPositiveMaximumBeforeTheFirstNegativeOutput) {
    Bench bench(100);
    EXPECT_EQ(Move(bench, {0.0F, 0.0F, 1e-6F, 0.0F, 0.0F}), kSilentMove);
    EXPECT_EQ(bench.inspector.NegativeAverage(), 0.0F);
}

TEST(DemodulatorPeakSearch, WantsBothNeighboursStrictlyLower) {
    for (const Samples& output :
         {Samples{0.0F, 0.0F, 1.0F, 1.0F, 0.0F}, Samples{0.0F, 1.0F, 1.0F, 1.0F, 1.0F},
          Samples{0.0F, 0.0F, 1.0F, 2.0F, 3.0F}, Samples{3.0F, 2.0F, 1.0F, 0.0F, 0.0F}}) {
        Bench bench(100);
        EXPECT_EQ(Move(bench, output), 0.0);
    }
}

TEST(DemodulatorPeakSearch, LooksAtThePositionsOneToCount) {
    // Three samples: entries 0 and 1 are carried, entry 4 is the last neighbour.
    for (std::size_t peak = 0; peak < 5; ++peak) {
        Bench bench(100);
        Samples output(5, 0.0F);
        output[peak] = 1.0F;
        EXPECT_EQ(Move(bench, output), peak >= 1 && peak <= 3 ? kSilentMove : 0.0) << "peak at " << peak;
    }
}

TEST(DemodulatorPeakSearch, TracksTheMeanOfTheNegativeOutputs) {
    Bench bench(100);
    Move(bench, {0.0F, -2.0F, -1.0F, -4.0F, -8.0F});
    float expected = -2.0F; // the first one as it is
    expected = static_cast<float>(0.0002 * -1.0 + 0.9998 * expected);
    expected = static_cast<float>(0.0002 * -4.0 + 0.9998 * expected);
    EXPECT_EQ(bench.inspector.NegativeAverage(), expected) << "positions 1 to count: the last one not yet";
}

TEST(DemodulatorPeakSearch, WantsSixTimesTheMeanNegativeOutput) {
    Bench bench(100);
    bench.inspector.NegativeAverage() = -2.0F;
    EXPECT_EQ(Move(bench, {0.0F, 0.0F, 12.0F, 0.0F, 0.0F}), 0.0) << "not above";
    EXPECT_EQ(Move(bench, {0.0F, 0.0F, 12.000001F, 0.0F, 0.0F}), kSilentMove);
}

TEST(DemodulatorFrequencyControl, SumsTheSamplesBeforeThePeak) {
    // A window that lies in the block from end to end.
    Bench bench(400);
    Samples block(400);
    for (std::size_t n = 0; n < block.size(); ++n) {
        block[n] = static_cast<float>(n) * 1e-5F;
    }
    Inspector::Fill(bench.inspector.Discriminated(), block);
    bench.inspector.CorrectFrequency(300);
    double sum = 0.0;
    for (std::size_t n = 60; n < 300; ++n) {
        sum += block[n];
    }
    EXPECT_NEAR(bench.inspector.MixFrequency(), 12000.0 + (sum + 4.3) * 32.9, 1e-4);
}

TEST(DemodulatorFrequencyControl, APeakEndsItsWindowOneIndexBefore) {
    Bench bench(400);
    Samples block(400, 0.0F);
    block[299] = 1.0F; // inside a window with end 300, outside of one with end 299
    Inspector::Fill(bench.inspector.Discriminated(), block);
    Samples output(402, 0.0F);
    output[301] = 1.0F;
    EXPECT_NEAR(Move(bench, output), (1.0 + 4.3) * 32.9, 1e-4);
    output[301] = 0.0F;
    output[300] = 1.0F;
    EXPECT_NEAR(Move(bench, output), 4.3 * 32.9, 1e-4);
}

TEST(DemodulatorFrequencyControl, TakesTheEarlyPartFromTheHistory) {
    Bench bench(100);
    Samples history(240);
    for (std::size_t n = 0; n < history.size(); ++n) {
        history[n] = static_cast<float>(n) * 1e-5F;
    }
    Inspector::Fill(bench.inspector.History(), history);
    Inspector::Fill(bench.inspector.Discriminated(), Samples(100, 0.01F));
    bench.inspector.CorrectFrequency(70);
    double sum = 70 * static_cast<double>(0.01F);
    for (std::size_t n = 70; n < 240; ++n) {
        sum += history[n];
    }
    EXPECT_NEAR(bench.inspector.MixFrequency(), 12000.0 + (sum + 4.3) * 32.9, 1e-4);
}

TEST(DemodulatorFrequencyControl, AWildReadingReturnsToTheCentre) {
    // A correction of 2 Hz: the sum that makes up for the offset, and 2 / 32.9 more.
    for (const double start : {15999.0, 8001.0}) {
        Bench bench(400);
        const double wanted = start > 12000.0 ? 2.0 : -2.0;
        Samples block(400, 0.0F);
        block[200] = static_cast<float>(wanted / 32.9 - 4.3);
        Inspector::Fill(bench.inspector.Discriminated(), block);
        bench.inspector.MixFrequency() = start;
        bench.inspector.CorrectFrequency(300);
        EXPECT_EQ(bench.inspector.MixFrequency(), 12000.0);
    }
}

TEST(DemodulatorFrequencyControl, TheLimitItselfIsAllowed) {
    Bench bench(400);
    bench.inspector.MixFrequency() = 16000.0 - kSilentMove;
    bench.inspector.CorrectFrequency(300);
    EXPECT_EQ(bench.inspector.MixFrequency(), 16000.0);
}

TEST(DemodulatorFrequencyControl, TakesEffectWithTheNextBlock) {
    COrvaDemodulator demodulator;
    Inspector inspector{demodulator};
    const Samples samples = Carrier(48000, 100);
    Demodulate(demodulator, samples);
    ASSERT_NE(demodulator.GetMixFrequency(), 12000.0) << "the first maximum was taken for a sync";
    EXPECT_EQ(inspector.OscillatorPhase(), samples.size() * 12000 % 48000)
        << "the block itself kept its step";
}

// What is carried from block to block

TEST(DemodulatorCarry, TakesThePositionsBeforeTheLastTwo) {
    Bench bench(10);
    Inspector::Fill(bench.inspector.Correlated(), {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
    bench.inspector.CarryCorrelated(10);
    EXPECT_EQ(bench.inspector.Correlated()[0], 8.0F);
    EXPECT_EQ(bench.inspector.Correlated()[1], 9.0F);
}

TEST(DemodulatorCarry, OfOneSampleLeavesTheFirstEntry) {
    Bench bench(1);
    Inspector::Fill(bench.inspector.Correlated(), {5, 6, 7});
    bench.inspector.CarryCorrelated(1);
    EXPECT_EQ(bench.inspector.Correlated()[0], 5.0F);
    EXPECT_EQ(bench.inspector.Correlated()[1], 5.0F) << "index count - 1";
}

TEST(DemodulatorCarry, OfTwoSamplesStaysAsItIs) {
    Bench bench(2);
    Inspector::Fill(bench.inspector.Correlated(), {5, 6, 7, 8});
    bench.inspector.CarryCorrelated(2);
    EXPECT_EQ(bench.inspector.Correlated()[0], 5.0F);
    EXPECT_EQ(bench.inspector.Correlated()[1], 6.0F);
}

TEST(DemodulatorCarry, APeakAtIndexOneComparesAgainstTheCarriedValues) {
    // A block whose entry count - 1 lies above entry count - 2: carried, it can be a maximum at index 1.
    const Samples samples = Carrier(48000, 60);
    for (std::size_t count = 300; count < 400; ++count) {
        COrvaDemodulator demodulator;
        Inspector inspector{demodulator};
        Demodulate(demodulator,
                   Samples(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(count)));
        dsp::CtbFloatBlock& correlated = inspector.Correlated();
        ASSERT_EQ(correlated[0], correlated[static_cast<std::uint32_t>(count) - 2]);
        ASSERT_EQ(correlated[1], correlated[static_cast<std::uint32_t>(count) - 1]);
        if (!(correlated[1] > correlated[0] && correlated[1] > 0.0F)) {
            continue;
        }
        inspector.NegativeAverage() = 0.0F;
        const double start = demodulator.GetMixFrequency();
        std::fill_n(correlated.Data() + 2, 11, correlated[1]);
        inspector.FindSync(10);
        EXPECT_EQ(demodulator.GetMixFrequency(), start) << "not above its right neighbour, count " << count;
        std::fill_n(correlated.Data() + 2, 11, 0.0F);
        inspector.FindSync(10);
        EXPECT_NE(demodulator.GetMixFrequency(), start) << "count " << count;
        return;
    }
    FAIL() << "no block ended in a rise";
}

TEST(DemodulatorHistory, OfAShortBlockMovesDown) {
    Bench bench(100);
    Samples history(240);
    for (std::size_t n = 0; n < history.size(); ++n) {
        history[n] = static_cast<float>(n);
    }
    Samples block(100);
    for (std::size_t n = 0; n < block.size(); ++n) {
        block[n] = static_cast<float>(1000 + n);
    }
    Inspector::Fill(bench.inspector.History(), history);
    Inspector::Fill(bench.inspector.Discriminated(), block);
    bench.inspector.KeepHistory(100);
    for (std::uint32_t n = 0; n < 240; ++n) {
        ASSERT_EQ(bench.inspector.History()[n],
                  n < 140 ? static_cast<float>(n + 100) : static_cast<float>(860 + n));
    }
}

TEST(DemodulatorHistory, OfALongBlockIsItsEnd) {
    for (const std::int32_t count : {240, 241, 500}) {
        Bench bench(500);
        Samples block(500);
        for (std::size_t n = 0; n < block.size(); ++n) {
            block[n] = static_cast<float>(n + 1);
        }
        Inspector::Fill(bench.inspector.Discriminated(), block);
        bench.inspector.KeepHistory(count);
        for (std::int32_t n = 0; n < 240; ++n) {
            ASSERT_EQ(bench.inspector.History()[static_cast<std::uint32_t>(n)],
                      static_cast<float>(count - 240 + n + 1));
        }
    }
}

// Symbol clock and slicer

/// The dibits of a run of discriminator samples.
std::string Recover(Bench& bench, const Samples& samples) {
    Inspector::Fill(bench.inspector.Discriminated(), samples);
    const std::int32_t count = bench.inspector.RecoverSymbols(static_cast<std::int32_t>(samples.size()));
    return {bench.demodulator.GetDibits(), static_cast<std::size_t>(count)};
}

TEST(DemodulatorSlicer, HasItsLimits) {
    const float above = std::nextafter(kThreshold, 1.0F);
    const float below = std::nextafter(kThreshold, 0.0F);
    struct Level {
        float sample;
        char dibit;
    };
    for (const Level& level : {Level{0.0F, '0'}, Level{-0.0F, '0'}, Level{below, '0'}, Level{kThreshold, '0'},
                               Level{above, '1'}, Level{3.0F, '1'}, Level{-1e-30F, '2'}, Level{-below, '2'},
                               Level{-kThreshold, '3'}, Level{-above, '3'}, Level{-3.0F, '3'}}) {
        Bench bench(10);
        EXPECT_EQ(Recover(bench, Samples(10, level.sample)), std::string(1, level.dibit))
            << "sample " << level.sample;
    }
}

TEST(DemodulatorSlicer, KeepsItsThresholdAt64000) {
    const float above = std::nextafter(kThreshold, 1.0F);
    Bench bench(14, 64000);
    EXPECT_EQ(Recover(bench, Samples(14, kThreshold)), "0");
    Bench other(14, 64000);
    EXPECT_EQ(Recover(other, Samples(14, above)), "1");
}

TEST(DemodulatorSlicer, TakesTheSampleAtTheInstantWithoutAveraging) {
    Bench bench(30);
    Samples samples(30, 0.3F);
    samples[9] = -0.1F;
    samples[19] = 0.01F;
    EXPECT_EQ(Recover(bench, samples), "201");
}

TEST(DemodulatorSymbolClock, EmitsEverySamplesPerSymbol) {
    for (const std::uint32_t rate : {48000U, 64000U}) {
        Bench bench(4800, rate);
        const std::string dibits = Recover(bench, Samples(4800, 0.0F));
        EXPECT_EQ(dibits, std::string(4800U * 4800U / rate, '0'));
    }
}

TEST(DemodulatorSymbolClock, NotesACrossing) {
    Bench bench(20);
    Samples samples(8, 0.1F);
    samples[6] = samples[7] = -0.3F;
    Recover(bench, samples);
    EXPECT_EQ(bench.inspector.CrossingClock(), 6.0F) << "before the sample itself is counted";
    EXPECT_EQ(bench.inspector.CrossingClass(), 0);
    EXPECT_EQ(bench.inspector.MidSymbolIndex(), 11 - 8) << "five samples on, in the next block's indexing";
    EXPECT_EQ(bench.inspector.PrevSample(), -0.3F);
}

TEST(DemodulatorSymbolClock, LooksHalfASymbolBackInTheRing) {
    // The ring holds eleven samples and its index is already past the crossing: five back from there is the
    // fourth sample before the crossing.
    constexpr std::size_t kCrossing = 12;
    for (std::size_t place = 0; place < kCrossing; ++place) {
        Bench bench(20);
        Samples samples(kCrossing + 1, 0.1F);
        samples[place] = 0.3F;
        samples[kCrossing] = -0.1F;
        Recover(bench, samples);
        EXPECT_EQ(bench.inspector.CrossingClass(), place == kCrossing - 4 ? 1 : 0)
            << "marked sample " << place;
    }
}

TEST(DemodulatorSymbolClock, AZeroSampleIsNoCrossing) {
    Bench bench(20);
    Recover(bench, {0.1F, 0.1F, 0.0F, -0.1F, -0.1F});
    EXPECT_EQ(bench.inspector.MidSymbolIndex(), -1);
    EXPECT_EQ(bench.inspector.CrossingClock(), 0.0F);
}

/// Steps from `before` to `after` at sample 6 of a symbol; where the clock then stands after 12 samples.
float ClockAfterStep(float before, float after) {
    Bench bench(20);
    Samples samples(12, before);
    std::fill(samples.begin() + 6, samples.end(), after);
    Recover(bench, samples);
    EXPECT_EQ(bench.inspector.MidSymbolIndex(), -1) << "examined at sample 11";
    return bench.inspector.SymbolClock();
}

TEST(DemodulatorSymbolClock, IsCorrectedByOppositeSwingsOnly) {
    // Crossing at clock 6, one sample late: a hundredth of that comes off.
    const auto corrected = static_cast<float>(1.0F + 0.01 * (5.0 - 6.0)) + 1.0F;
    constexpr float kLevels[4] = {0.1F, 0.3F, -0.1F, -0.3F}; // of classes 0 to 3
    for (int before = 0; before < 4; ++before) {
        for (int after = 0; after < 4; ++after) {
            if ((before < 2) == (after < 2)) {
                continue; // no crossing
            }
            const bool opposite = before + 2 == after || after + 2 == before;
            EXPECT_EQ(ClockAfterStep(kLevels[before], kLevels[after]), opposite ? corrected : 2.0F)
                << "from class " << before << " to " << after;
        }
    }
}

TEST(DemodulatorSymbolClock, ExaminesAfterTheBlocksEndInTheNextOne) {
    for (std::size_t cut = 7; cut <= 12; ++cut) {
        Samples samples(14, 0.1F);
        std::fill(samples.begin() + 6, samples.end(), -0.1F);
        Bench whole(20);
        const std::string expected = Recover(whole, samples);
        Bench bench(20);
        std::string dibits =
            Recover(bench, Samples(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(cut)));
        if (cut <= 11) {
            EXPECT_EQ(bench.inspector.MidSymbolIndex(), 11 - static_cast<std::int32_t>(cut))
                << "cut at " << cut;
        } else {
            EXPECT_EQ(bench.inspector.MidSymbolIndex(), -1);
        }
        dibits += Recover(bench, Samples(samples.begin() + static_cast<std::ptrdiff_t>(cut), samples.end()));
        EXPECT_EQ(dibits, expected) << "cut at " << cut;
        EXPECT_EQ(bench.inspector.SymbolClock(), whole.inspector.SymbolClock()) << "cut at " << cut;
        EXPECT_EQ(bench.inspector.MidSymbolIndex(), -1);
    }
}

TEST(DemodulatorSymbolClock, ExaminesAtIndexZeroWhatWasDueAtTheBlocksEnd) {
    Bench bench(20);
    Samples samples(11, 0.1F);
    std::fill(samples.begin() + 6, samples.end(), -0.1F);
    Recover(bench, samples);
    EXPECT_EQ(bench.inspector.MidSymbolIndex(), 0);
    Recover(bench, {-0.1F});
    EXPECT_EQ(bench.inspector.MidSymbolIndex(), -1);
    EXPECT_EQ(bench.inspector.SymbolClock(), static_cast<float>(1.0F + 0.01 * (5.0 - 6.0)) + 1.0F);
}

TEST(DemodulatorSymbolClock, WaitsThroughBlocksOfOneSample) {
    Bench bench(20);
    for (int i = 0; i < 6; ++i) {
        Recover(bench, {0.1F});
    }
    Recover(bench, {-0.1F});
    for (std::int32_t left = 4; left >= 0; --left) {
        EXPECT_EQ(bench.inspector.MidSymbolIndex(), left);
        Recover(bench, {-0.1F});
    }
    EXPECT_EQ(bench.inspector.MidSymbolIndex(), -1);
}

// The text

TEST(DemodulatorText, EndsWithANulAndGrowsWithItsContents) {
    Bench bench(10000);
    ASSERT_EQ(bench.inspector.DibitCapacity(), 100U);
    test::RandomSource random(6);
    constexpr float kLevels[4] = {0.1F, 0.3F, -0.1F, -0.3F};
    Samples samples;
    std::string expected;
    for (int symbol = 0; symbol < 1000; ++symbol) {
        const std::uint32_t dibit = random.Below(4);
        samples.insert(samples.end(), 10, kLevels[dibit]);
        expected.push_back(static_cast<char>('0' + dibit));
    }
    // Steps at symbol bounds cross at clock 0; the corrections are small and the levels steady.
    EXPECT_EQ(Recover(bench, samples), expected);
    EXPECT_EQ(std::strlen(bench.demodulator.GetDibits()), 1000U);
    EXPECT_EQ(bench.inspector.DibitCapacity(), 100U + 10U * 99U);
}

TEST(DemodulatorText, GrowsWhenItIsNotAboveTheCountAndOne) {
    Bench bench(1000);
    Recover(bench, Samples(990, 0.0F));
    EXPECT_EQ(bench.inspector.DibitCapacity(), 100U);
    Recover(bench, Samples(1000, 0.0F));
    EXPECT_EQ(bench.inspector.DibitCapacity(), 199U);
}

TEST(DemodulatorText, IsStaleAfterABlockWithoutASymbol) {
    COrvaDemodulator demodulator;
    EXPECT_EQ(Demodulate(demodulator, Samples(30, 0.0F)), "000");
    EXPECT_EQ(Demodulate(demodulator, Samples(5, 0.0F)), "");
    EXPECT_STREQ(demodulator.GetDibits(), "000");
    EXPECT_EQ(Demodulate(demodulator, Samples(5, 0.0F)), "0");
    EXPECT_STREQ(demodulator.GetDibits(), "0");
}

// The whole

TEST(Demodulator, SilenceIsExactlyZero) {
    for (const std::uint32_t rate : {48000U, 64000U}) {
        COrvaDemodulator demodulator;
        demodulator.SetSampleRate(rate);
        Inspector inspector{demodulator};
        const std::string dibits = Demodulate(demodulator, Samples(rate / 10, 0.0F));
        EXPECT_EQ(dibits, std::string(480, '0'));
        for (std::uint32_t n = 0; n < rate / 10; ++n) {
            ASSERT_EQ(inspector.Discriminated()[n], 0.0F);
        }
        EXPECT_EQ(inspector.MidSymbolIndex(), -1) << "no crossings";
        EXPECT_EQ(demodulator.GetMixFrequency(), 12000.0);
    }
}

TEST(Demodulator, CuttingChangesNothingWhileTheFrequencyStands) {
    // A limit that no peak reaches keeps the oscillator where it is.
    for (const int rate : {48000, 64000}) {
        const Samples samples = Carrier(rate, 500);
        const auto make = [rate](COrvaDemodulator& demodulator) {
            demodulator.SetSampleRate(static_cast<std::uint32_t>(rate));
            Inspector{demodulator}.NegativeAverage() = -1e30F;
        };
        COrvaDemodulator whole;
        make(whole);
        const std::string expected = Demodulate(whole, samples);
        ASSERT_EQ(whole.GetMixFrequency(), 12000.0);
        for (const std::vector<std::size_t>& lengths :
             {std::vector<std::size_t>{1}, {2}, {7}, {239}, {240}, {1, 2, 3, 500}, {2400}, {37, 1, 1000}}) {
            COrvaDemodulator cut;
            make(cut);
            ASSERT_EQ(DemodulateInBlocks(cut, samples, lengths), expected)
                << "blocks of " << lengths.front() << ", rate " << rate;
            ASSERT_EQ(Inspector{cut}.SymbolClock(), Inspector{whole}.SymbolClock());
            ASSERT_EQ(Inspector{cut}.OscillatorPhase(), Inspector{whole}.OscillatorPhase());
            ASSERT_EQ(Inspector{cut}.DcStage2(), Inspector{whole}.DcStage2());
        }
    }
}

TEST(Demodulator, AllocatesNothingOnceWarm) {
    const Samples samples = Carrier(48000, 1000);
    COrvaDemodulator demodulator;
    DemodulateInBlocks(demodulator, samples, {2400});
    const std::uint64_t before = test::CountAllocations();
    for (std::size_t place = 0; place + 2400 <= samples.size(); place += 2400) {
        demodulator.Process(samples.data() + place, 2400);
        demodulator.Process(samples.data() + place, 333);
    }
    EXPECT_EQ(test::CountAllocations(), before);
}

TEST(Demodulator, TheObserverHearsEverySymbolAndChangesNothing) {
    struct Listener final : ISymbolObserver {
        void OnSymbol(float sample, std::int32_t symbolClass) override {
            dibits.push_back(static_cast<char>('0' + symbolClass));
            inClass = inClass && (symbolClass >= 2) == (sample < 0.0F);
        }
        std::string dibits;
        bool inClass = true;
    };
    const Samples samples = Carrier(48000, 300);
    COrvaDemodulator unheard;
    const std::string expected = Demodulate(unheard, samples);
    COrvaDemodulator heard;
    Listener listener;
    heard.SetObserver(&listener);
    EXPECT_EQ(Demodulate(heard, samples), expected);
    EXPECT_EQ(listener.dibits, expected);
    EXPECT_TRUE(listener.inClass);
}

} // namespace
} // namespace orva::p25
