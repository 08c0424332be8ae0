/// Counts what the squelch detectors make of signals that hold nothing for them, and times nothing:
/// squelch_statistics [MINUTES], 10 unless given, prints one line per signal.
#include "tests/squelch/ScannerChain.h"
#include "tests/support/FmModulator.h"
#include "tests/support/RandomSource.h"
#include "tests/support/ToneSource.h"
#include "tests/support/VoiceLikeNoise.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace {

using orva::test::FmModulator;
using orva::test::kScannerBlock;
using orva::test::RandomSource;
using orva::test::ScannerChain;
using orva::test::ToneSource;
using orva::test::VoiceLikeNoise;

constexpr std::array<std::uint32_t, 2> kRates = {48000, 64000};
constexpr std::size_t kVoiceResults = 4;

/// The next block of FM audio or of signal.
using Source = std::function<std::vector<std::int16_t>()>;

struct Counts {
    std::size_t blocks = 0;
    std::size_t blocksWithTone = 0;
    std::size_t toneRuns = 0; ///< times that a tone came up after a block without one
    std::size_t blocksWithCode = 0;
    std::size_t codes = 0; ///< values matched
    std::array<std::size_t, kVoiceResults> voiceBlocks{};
    double noiseSum = 0.0;
};

Counts Count(ScannerChain& chain, std::size_t blocks, const std::function<void(ScannerChain&)>& feed) {
    Counts counts;
    bool hadTone = false;
    for (; counts.blocks < blocks; ++counts.blocks) {
        feed(chain);
        const bool hasTone = chain.tone.toneIndex >= 0;
        counts.blocksWithTone += hasTone ? 1 : 0;
        counts.toneRuns += hasTone && !hadTone ? 1 : 0;
        hadTone = hasTone;
        counts.blocksWithCode += chain.dcs.matchCount > 0 ? 1 : 0;
        counts.codes += chain.dcs.matchCount;
        chain.dcs.matchCount = 0;
        ++counts.voiceBlocks[static_cast<std::size_t>(chain.voice.result)];
        counts.noiseSum += chain.noise;
    }
    return counts;
}

void Print(const char* name, std::uint32_t rate, const Counts& counts) {
    const double minutes =
        static_cast<double>(counts.blocks) * static_cast<double>(kScannerBlock) / rate / 60.0;
    const auto blocks = static_cast<double>(counts.blocks);
    std::printf(
        "%-34s %5u Hz: ctcss %6.3f %% of blocks, %6.2f times a minute; dcs %6.2f codes, %5.2f times a "
        "minute; voice 0/1/2/3 %5.1f %5.1f %5.1f %5.1f %%; noise %4.1f\n",
        name, rate, 100.0 * static_cast<double>(counts.blocksWithTone) / blocks,
        static_cast<double>(counts.toneRuns) / minutes, static_cast<double>(counts.codes) / minutes,
        static_cast<double>(counts.blocksWithCode) / minutes,
        100.0 * static_cast<double>(counts.voiceBlocks[0]) / blocks,
        100.0 * static_cast<double>(counts.voiceBlocks[1]) / blocks,
        100.0 * static_cast<double>(counts.voiceBlocks[2]) / blocks,
        100.0 * static_cast<double>(counts.voiceBlocks[3]) / blocks, counts.noiseSum / blocks);
    std::fflush(stdout);
}

void Measure(const char* name, std::uint32_t rate, double minutes, FmModulator& modulator,
             const std::function<double()>& audio) {
    ScannerChain chain(rate);
    const auto blocks = static_cast<std::size_t>(minutes * 60.0 * rate / static_cast<double>(kScannerBlock));
    std::vector<double> block(kScannerBlock);
    Print(name, rate, Count(chain, blocks, [&](ScannerChain& into) {
              if (!audio) {
                  into.TakeSignal(modulator.WithoutCarrier(kScannerBlock));
                  return;
              }
              for (double& sample : block) {
                  sample = audio();
              }
              into.TakeSignal(modulator.Modulate(block));
          }));
}

} // namespace

int main(int argumentCount, char** arguments) {
    constexpr double kDefaultMinutes = 10.0;
    const double minutes = argumentCount > 1 ? std::atof(arguments[1]) : kDefaultMinutes;
    for (const std::uint32_t rate : kRates) {
        const int hertz = static_cast<int>(rate);
        FmModulator empty({.sampleRate = hertz, .snrDb = 0.0});
        Measure("channel noise", rate, minutes, empty, {});
        for (const double snrDb : {10.0, 25.0}) {
            const std::string level = " at " + std::to_string(static_cast<int>(snrDb)) + " dB";
            FmModulator carrier({.sampleRate = hertz, .snrDb = snrDb});
            Measure(("carrier" + level).c_str(), rate, minutes, carrier, [] { return 0.0; });
            RandomSource random(7);
            FmModulator noise({.sampleRate = hertz, .deviation = 1000.0, .snrDb = snrDb});
            Measure(("white noise" + level).c_str(), rate, minutes, noise, [&] { return random.Gaussian(); });
            for (const double lowest : {300.0, 0.0}) {
                for (const double pitch : {85.0, 120.0, 210.0}) {
                    FmModulator talk({.sampleRate = hertz, .snrDb = snrDb});
                    VoiceLikeNoise voice({.sampleRate = hertz, .pitch = pitch, .lowestFrequency = lowest});
                    const std::string name = "voice of " + std::to_string(static_cast<int>(pitch)) +
                                             " Hz from " + std::to_string(static_cast<int>(lowest)) + level;
                    Measure(name.c_str(), rate, minutes, talk, [&] { return voice.Next(); });
                }
            }
        }
    }
}
