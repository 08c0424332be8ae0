// What the detectors make of signals that come off the air, behind the FM demodulator, at both rates.
#include "squelch/CtbDcsDetector.h"
#include "squelch/CtbVoiceDetector.h"
#include "tests/squelch/SanitizedBuild.h"
#include "tests/squelch/ScannerChain.h"
#include "tests/support/FmModulator.h"
#include "tests/support/RandomSource.h"
#include "tests/support/ToneSource.h"
#include "tests/support/VoiceLikeNoise.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

constexpr int kLongSeconds = kSanitizedBuild ? 4 : 60;
constexpr int kShortSeconds = kSanitizedBuild ? 2 : 20;

class ScannerReception : public testing::TestWithParam<int> {
protected:
    static int Rate() { return GetParam(); }

    /// Calls `check` after each block of `seconds` of a carrier modulated by `audio`.
    static void Receive(FmModulator modulator, int seconds, const std::function<double()>& audio,
                        const std::function<void(ScannerChain&)>& check) {
        ScannerChain chain(static_cast<std::uint32_t>(Rate()));
        std::vector<double> block(kScannerBlock);
        for (std::size_t i = 0; i < Blocks(seconds); ++i) {
            std::generate(block.begin(), block.end(), audio);
            chain.TakeSignal(modulator.Modulate(block));
            check(chain);
        }
    }

    /// The same without a carrier.
    static void ReceiveNoise(int seconds, const std::function<void(ScannerChain&)>& check) {
        FmModulator modulator({.sampleRate = Rate(), .snrDb = 0.0});
        ScannerChain chain(static_cast<std::uint32_t>(Rate()));
        for (std::size_t i = 0; i < Blocks(seconds); ++i) {
            chain.TakeSignal(modulator.WithoutCarrier(kScannerBlock));
            check(chain);
        }
    }

    static std::size_t Blocks(int seconds) {
        return static_cast<std::size_t>(seconds) * static_cast<std::size_t>(Rate()) / kScannerBlock;
    }
};

double Silence() {
    return 0.0;
}

void ExpectNoTone(ScannerChain& chain) {
    EXPECT_EQ(chain.tone.toneIndex, -1);
}

} // namespace

TEST_P(ScannerReception, NoiseWithoutACarrierHasNoTone) {
    ReceiveNoise(kLongSeconds, ExpectNoTone);
}

TEST_P(ScannerReception, CarriersHaveNoTone) {
    for (const double offset : {0.0, -1500.0, 2000.0}) {
        Receive(FmModulator({.sampleRate = Rate(), .carrierOffset = offset}), kShortSeconds, Silence,
                ExpectNoTone);
        for (const double snrDb : {10.0, 25.0}) {
            Receive(FmModulator({.sampleRate = Rate(), .carrierOffset = offset, .snrDb = snrDb}),
                    kShortSeconds, Silence, ExpectNoTone);
        }
    }
}

TEST_P(ScannerReception, ModulatedNoiseHasNoTone) {
    RandomSource random(7);
    Receive(
        FmModulator({.sampleRate = Rate(), .deviation = 1000.0, .snrDb = 25.0}), kLongSeconds,
        [&] { return random.Gaussian(); }, ExpectNoTone);
}

TEST_P(ScannerReception, DeepVoicePassesForATonePartOfTheTimeOnly) {
    // A held vowel whose pitch stays on a tested bin holds a quarter of the band.
    for (const double pitch : {85.0, 120.0, 210.0}) {
        VoiceLikeNoise voice({.sampleRate = Rate(), .pitch = pitch, .lowestFrequency = 0.0});
        std::size_t found = 0;
        Receive(
            FmModulator({.sampleRate = Rate(), .snrDb = 25.0}), kLongSeconds, [&] { return voice.Next(); },
            [&](ScannerChain& chain) { found += chain.tone.toneIndex >= 0 ? 1 : 0; });
        const double percent = 100.0 * static_cast<double>(found) / static_cast<double>(Blocks(kLongSeconds));
        std::cout << "[ measured ] voice of " << pitch << " Hz at " << Rate() << " Hz: a tone in " << percent
                  << " % of the blocks\n";
        EXPECT_LT(percent, 5.0);
    }
}

namespace {

/// Times that a code comes up.
struct CodeCount {
    void operator()(ScannerChain& chain) {
        const bool has = chain.dcs.matchCount > 0;
        if (has) {
            EXPECT_EQ(chain.dcs.matchCount, 2U) << "a code comes with its inverse partner";
        }
        times += has && !had ? 1 : 0;
        had = has;
        chain.dcs.matchCount = 0;
    }
    int times = 0;
    bool had = false;
};

/// Times that random bits would make a code come up: of 2^23 words, 112 match in 23 rotations. A match lasts
/// as long as the bits repeat those 23 earlier, which makes runs of two bits on average.
double ChanceOfCodes(double seconds) {
    constexpr double kBitsPerSecond = 134.4;
    const double matching = static_cast<double>(squelch::kDcsCodeCount) * 23.0 / std::exp2(23.0);
    return seconds * kBitsPerSecond * matching / 2.0;
}

void ExpectChance(const CodeCount& count, int seconds, const std::string& what) {
    constexpr double kSpreads = 5.0;
    const double chance = ChanceOfCodes(seconds);
    std::cout << "[ measured ] " << what << ": a code " << count.times << " times in " << seconds
              << " s, by chance " << chance << "\n";
    EXPECT_LE(count.times, chance + kSpreads * std::sqrt(chance)) << what;
}

} // namespace

TEST_P(ScannerReception, CodesInNoiseAreNoMoreThanChanceGives) {
    const std::string where = " at " + std::to_string(Rate()) + " Hz";
    constexpr int kSeconds = 2 * kLongSeconds;
    CodeCount empty;
    ReceiveNoise(kSeconds, std::ref(empty));
    ExpectChance(empty, kSeconds, "noise without a carrier" + where);
    CodeCount weak;
    Receive(FmModulator({.sampleRate = Rate(), .snrDb = 10.0}), kSeconds, Silence, std::ref(weak));
    ExpectChance(weak, kSeconds, "carrier at 10 dB" + where);
}

TEST_P(ScannerReception, CodesInVoiceAreNoMoreThanChanceGives) {
    for (const double pitch : {85.0, 120.0, 210.0}) {
        VoiceLikeNoise voice({.sampleRate = Rate(), .pitch = pitch, .lowestFrequency = 0.0});
        CodeCount count;
        Receive(
            FmModulator({.sampleRate = Rate(), .snrDb = 25.0}), kLongSeconds, [&] { return voice.Next(); },
            std::ref(count));
        ExpectChance(count, kLongSeconds,
                     "voice of " + std::to_string(static_cast<int>(pitch)) + " Hz at " +
                         std::to_string(Rate()) + " Hz");
    }
}

namespace {

/// Results of the voice detector's half seconds but for the first, in which the filters fill.
class VoiceResults {
public:
    explicit VoiceResults(int sampleRate)
        : blocksPerSecond(sampleRate / static_cast<double>(kScannerBlock)) {}

    void operator()(ScannerChain& chain) {
        if (++blocks > blocksPerSecond) {
            ++results[static_cast<std::size_t>(chain.voice.result)];
        }
    }
    double Percent(squelch::VoiceResult result) const {
        return 100.0 * results[static_cast<std::size_t>(result)] / (blocks - std::floor(blocksPerSecond));
    }

private:
    double blocksPerSecond;
    int blocks = 0;
    std::vector<int> results = std::vector<int>(4, 0);
};

} // namespace

TEST_P(ScannerReception, SpeechIsSpeechMostOfTheTime) {
    for (const double pitch : {85.0, 120.0, 210.0}) {
        VoiceLikeNoise voice({.sampleRate = Rate(), .pitch = pitch});
        VoiceResults results(Rate());
        constexpr int kSeconds = 30;
        Receive(
            FmModulator({.sampleRate = Rate(), .snrDb = 25.0}), kSeconds, [&] { return voice.Next(); },
            std::ref(results));
        const double speech = results.Percent(squelch::kVoiceSpeech);
        std::cout << "[ measured ] voice of " << pitch << " Hz at " << Rate() << " Hz: speech " << speech
                  << " % of the time\n";
        EXPECT_GT(speech, 60.0) << pitch;
        EXPECT_EQ(results.Percent(squelch::kVoiceQuiet), 0.0) << pitch;
    }
}

TEST_P(ScannerReception, SteadyToneIsSteady) {
    ToneSource tone(1000.0, Rate());
    VoiceResults results(Rate());
    Receive(
        FmModulator({.sampleRate = Rate(), .snrDb = 25.0}), kShortSeconds, [&] { return tone.Next(); },
        std::ref(results));
    EXPECT_EQ(results.Percent(squelch::kVoiceSteady), 100.0);
}

TEST_P(ScannerReception, NoiseWithoutACarrierIsSteady) {
    VoiceResults results(Rate());
    ReceiveNoise(kLongSeconds, std::ref(results));
    EXPECT_EQ(results.Percent(squelch::kVoiceSteady), 100.0);
}

TEST_P(ScannerReception, SilentCarrierIsQuiet) {
    VoiceResults results(Rate());
    Receive(FmModulator({.sampleRate = Rate()}), kShortSeconds, Silence, std::ref(results));
    EXPECT_EQ(results.Percent(squelch::kVoiceQuiet), 100.0);
}

TEST_P(ScannerReception, NoiseMeasureTellsAnEmptyChannelFromACarrier) {
    int loudest = 0;
    int quietest = 99;
    Receive(FmModulator({.sampleRate = Rate(), .snrDb = 25.0}), kShortSeconds, Silence,
            [&, block = 0](ScannerChain& chain) mutable {
                loudest = ++block > 2 ? std::max(loudest, chain.noise) : 0;
            });
    ReceiveNoise(kShortSeconds, [&](ScannerChain& chain) { quietest = std::min(quietest, chain.noise); });
    std::cout << "[ measured ] noise at " << Rate() << " Hz: carrier at 25 dB at most " << loudest
              << ", empty channel at least " << quietest << "\n";
    EXPECT_LT(loudest, 5);
    EXPECT_GT(quietest, 30);
}

INSTANTIATE_TEST_SUITE_P(Rates, ScannerReception, testing::Values(48000, 64000));

} // namespace orva::test
