/// Counts what the squelch detectors make of signals that hold nothing for them, and times nothing:
/// squelch_statistics [MINUTES [NAME]], 10 minutes unless given, prints one line per signal, or per signal
/// with NAME in its name.
#include "dsp/TFIR_F32.h"
#include "squelch/CtbDcsDetector.h"
#include "tests/squelch/ScannerChain.h"
#include "tests/support/FmModulator.h"
#include "tests/support/RandomSource.h"
#include "tests/support/VoiceLikeNoise.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace {

using orva::test::FmModulator;
using orva::test::kScannerBlock;
using orva::test::RandomSource;
using orva::test::ScannerChain;
using orva::test::VoiceLikeNoise;

constexpr std::array<std::uint32_t, 2> kRates = {48000, 64000};
constexpr std::size_t kVoiceResults = 4;

/// Audio samples of a block, -1.0 .. 1.0.
using Source = std::function<void(std::span<double>)>;

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

/// What to measure.
struct Task {
    double minutes = 10.0; ///< of each signal
    std::string name;      ///< part of the names of the signals wanted
};

void Measure(const std::string& name, std::uint32_t rate, const Task& task, FmModulator& modulator,
             const Source& audio) {
    if (name.find(task.name) == std::string::npos) {
        return;
    }
    ScannerChain chain(rate);
    const auto blocks =
        static_cast<std::size_t>(task.minutes * 60.0 * rate / static_cast<double>(kScannerBlock));
    std::vector<double> block(kScannerBlock);
    Print(name.c_str(), rate, Count(chain, blocks, [&](ScannerChain& into) {
              if (!audio) {
                  into.TakeSignal(modulator.WithoutCarrier(kScannerBlock));
                  return;
              }
              audio(block);
              into.TakeSignal(modulator.Modulate(block));
          }));
}

/// Samples of one of the sources of the test transmitter.
template <class Generator>
Source Of(Generator next) {
    return [next](std::span<double> block) mutable {
        std::generate(block.begin(), block.end(), std::ref(next));
    };
}

/// A voice with nothing below 300 Hz: without those harmonics, and without what the edges of its stretches
/// have there.
Source HighVoice(std::uint32_t rate, double pitch) {
    constexpr std::uint32_t kTaps = 4096;
    constexpr double kEdgeHz = 400.0; // the stop band begins below 300 Hz
    auto highPass = std::make_shared<orva::dsp::TFIR_F32>();
    highPass->SetSampleRate(rate);
    highPass->SetLength(kTaps);
    highPass->SetFilterType(orva::dsp::kFilterHighPass);
    highPass->SetLowCut(kEdgeHz);
    VoiceLikeNoise voice({.sampleRate = static_cast<int>(rate), .pitch = pitch});
    return [highPass, voice](std::span<double> block) mutable {
        std::vector<float> samples(block.size());
        std::generate(samples.begin(), samples.end(), [&] { return static_cast<float>(voice.Next()); });
        highPass->Filter(samples.data(), samples.data(), static_cast<std::int32_t>(samples.size()));
        std::copy(samples.begin(), samples.end(), block.begin());
    };
}

Source DeepVoice(std::uint32_t rate, double pitch) {
    return Of([voice = VoiceLikeNoise({.sampleRate = static_cast<int>(rate),
                                       .pitch = pitch,
                                       .lowestFrequency = 0.0})]() mutable { return voice.Next(); });
}

/// What random bits would give: of 2^23 words, 112 in 23 rotations match. A match lasts as long as the bits
/// repeat those 23 earlier, two bits on average, and so comes up half as often as there are matching bits.
void PrintChance(std::uint32_t rate) {
    constexpr double kBitsPerSecond = 134.4;
    constexpr double kWordBits = 23.0;
    constexpr double kMeanRun = 2.0;
    const double matching =
        static_cast<double>(orva::squelch::kDcsCodeCount) * kWordBits / std::exp2(kWordBits);
    const double runs = 60.0 * kBitsPerSecond * matching / kMeanRun;
    const double bitsPerBlock = kBitsPerSecond * static_cast<double>(kScannerBlock) / rate;
    const double blocks = runs * (1.0 + (kMeanRun - 1.0) / bitsPerBlock);
    std::printf("%u Hz: by chance %.2f blocks a minute have a code, %.2f codes\n", rate, blocks,
                2.0 * blocks);
}

void MeasureAt(std::uint32_t rate, double snrDb, const Task& task) {
    const int hertz = static_cast<int>(rate);
    const std::string level = " at " + std::to_string(static_cast<int>(snrDb)) + " dB";
    FmModulator carrier({.sampleRate = hertz, .snrDb = snrDb});
    Measure("carrier" + level, rate, task, carrier, Of([] { return 0.0; }));
    FmModulator noise({.sampleRate = hertz, .deviation = 1000.0, .snrDb = snrDb});
    Measure("white noise" + level, rate, task, noise,
            Of([random = RandomSource(7)]() mutable { return random.Gaussian(); }));
    const std::string above = " above 300" + level;
    const std::string whole = ", whole" + level;
    for (const double pitch : {85.0, 120.0, 210.0}) {
        const std::string name = "voice of " + std::to_string(static_cast<int>(pitch)) + " Hz";
        FmModulator high({.sampleRate = hertz, .snrDb = snrDb});
        Measure(name + above, rate, task, high, HighVoice(rate, pitch));
        FmModulator deep({.sampleRate = hertz, .snrDb = snrDb});
        Measure(name + whole, rate, task, deep, DeepVoice(rate, pitch));
    }
}

} // namespace

int main(int argumentCount, char** arguments) {
    Task task;
    if (argumentCount > 1) {
        task.minutes = std::atof(arguments[1]);
    }
    if (argumentCount > 2) {
        task.name = arguments[2];
    }
    for (const std::uint32_t rate : kRates) {
        PrintChance(rate);
        FmModulator empty({.sampleRate = static_cast<int>(rate), .snrDb = 0.0});
        Measure("channel noise", rate, task, empty, {});
        for (const double snrDb : {10.0, 25.0}) {
            MeasureAt(rate, snrDb, task);
        }
    }
}
