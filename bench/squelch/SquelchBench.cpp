/// The squelch detectors and the FM chain, in blocks of the scanner. `times_real_time` says how many such
/// chains one core can keep up with.
#include "squelch/CtbBitClock.h"
#include "squelch/CtbDcsDetector.h"
#include "squelch/CtbFftAnalyzer.h"
#include "squelch/CtbFixedFir.h"
#include "squelch/CtbResampler.h"
#include "squelch/CtbToneDetector.h"
#include "squelch/CtbVoiceDetector.h"
#include "squelch/DcBlock.h"
#include "squelch/NoiseMeasure.h"
#include "tests/squelch/ScannerChain.h"
#include "tests/support/DcsEncoder.h"
#include "tests/support/FmModulator.h"
#include "tests/support/VoiceLikeNoise.h"

#include <algorithm>
#include <span>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using orva::test::kScannerBlock;
using Samples = std::vector<std::int16_t>;

constexpr std::uint32_t kBlock = kScannerBlock;
constexpr float kRateTolerance = 0.01F;
constexpr std::uint32_t kTapsPerBranch = 127;

/// Speech on a digital code at 25 dB, 4 s of it.
Samples Signal(std::uint32_t rate) {
    constexpr std::uint32_t kSeconds = 4;
    const int hertz = static_cast<int>(rate);
    orva::test::VoiceLikeNoise voice({.sampleRate = hertz});
    orva::test::DcsEncoder code(0023, false, hertz);
    orva::test::FmModulator modulator({.sampleRate = hertz, .snrDb = 25.0});
    std::vector<double> audio(kSeconds * rate / kBlock * kBlock);
    std::generate(audio.begin(), audio.end(), [&] { return 0.8 * voice.Next() + 0.15 * code.NextLevel(); });
    return modulator.Modulate(audio);
}

Samples Audio(std::uint32_t rate) {
    orva::test::FmReceiver receiver(rate);
    Samples audio;
    orva::test::ForEachBlock(Signal(rate), [&](std::span<const std::int16_t> block) {
        const Samples part = receiver.Receive(block);
        audio.insert(audio.end(), part.begin(), part.end());
    });
    return audio;
}

/// Runs `take` over the blocks of `samples` again and again and reports the speed.
template <class Action>
void RunBlocks(benchmark::State& state, const Samples& samples, double rate, Action take) {
    std::size_t begin = 0;
    for ([[maybe_unused]] auto _ : state) {
        take(std::span<const std::int16_t>(samples).subspan(begin, kBlock));
        begin = begin + 2 * kBlock <= samples.size() ? begin + kBlock : 0;
    }
    const double samplesDone = static_cast<double>(state.iterations()) * kBlock;
    state.counters["times_real_time"] = benchmark::Counter(samplesDone / rate, benchmark::Counter::kIsRate);
}

std::uint32_t Rate(const benchmark::State& state) {
    return static_cast<std::uint32_t>(state.range(0));
}

void Resampler(benchmark::State& state) {
    const Samples audio = Audio(Rate(state));
    orva::squelch::CtbResampler resampler;
    resampler.Configure(kTapsPerBranch, static_cast<float>(Rate(state)), 2688.0F, kRateTolerance);
    resampler.SetBlockLength(kBlock);
    RunBlocks(state, audio, Rate(state), [&](std::span<const std::int16_t> block) {
        benchmark::DoNotOptimize(resampler.Resample(nullptr, block.data(), kBlock, 1));
    });
}

void FixedFir(benchmark::State& state) {
    const Samples audio = Audio(48000);
    orva::squelch::CtbFixedFir filter;
    filter.SetKind(orva::squelch::kFixedFirLowPass);
    filter.SetTaps(255);
    filter.SetBlockLength(kBlock);
    RunBlocks(state, audio, 48000, [&](std::span<const std::int16_t> block) {
        benchmark::DoNotOptimize(filter.Filter(nullptr, block.data(), kBlock, 1));
    });
}

void FftAnalyzer(benchmark::State& state) {
    const Samples audio = Audio(48000);
    orva::squelch::CtbFftAnalyzer analyzer;
    analyzer.SetWindow(orva::squelch::kAnalyzerBlackman);
    RunBlocks(state, audio, 48000, [&](std::span<const std::int16_t> block) {
        analyzer.Analyze(block.data());
        benchmark::DoNotOptimize(analyzer.Power());
    });
}

void BitClock(benchmark::State& state) {
    const Samples audio = Audio(48000);
    const std::vector<std::int32_t> samples(audio.begin(), audio.end());
    orva::squelch::CtbBitClock clock;
    std::uint32_t ones = 0;
    clock.SetCallback([](void* count, std::uint32_t bit) { *static_cast<std::uint32_t*>(count) += bit; },
                      &ones);
    for ([[maybe_unused]] auto _ : state) {
        clock.Process(samples.data(), kBlock);
        benchmark::DoNotOptimize(ones);
    }
}

void ToneDetector(benchmark::State& state) {
    const Samples audio = Audio(Rate(state));
    orva::squelch::CtbToneDetector detector;
    detector.SetSampleRate(static_cast<float>(Rate(state)));
    RunBlocks(state, audio, Rate(state), [&](std::span<const std::int16_t> block) {
        detector.Process(block.data(), kBlock, 1);
        benchmark::DoNotOptimize(detector.toneIndex);
    });
}

void DcsDetector(benchmark::State& state) {
    const Samples audio = Audio(Rate(state));
    orva::squelch::CtbDcsDetector detector;
    detector.SetSampleRate(static_cast<float>(Rate(state)));
    RunBlocks(state, audio, Rate(state), [&](std::span<const std::int16_t> block) {
        detector.Process(block.data(), kBlock, 1);
        benchmark::DoNotOptimize(detector.matchCount);
    });
}

void VoiceDetector(benchmark::State& state) {
    const Samples audio = Audio(Rate(state));
    orva::squelch::CtbVoiceDetector detector;
    detector.SetSampleRate(static_cast<float>(Rate(state)));
    detector.SetBlockLength(Rate(state) / 2);
    RunBlocks(state, audio, Rate(state), [&](std::span<const std::int16_t> block) {
        detector.Process(block.data(), kBlock, 1);
        benchmark::DoNotOptimize(detector.result);
    });
}

void DcBlocker(benchmark::State& state) {
    const Samples audio = Audio(Rate(state));
    orva::squelch::DcBlockState blocker;
    Samples block(kBlock);
    RunBlocks(state, audio, Rate(state), [&](std::span<const std::int16_t> samples) {
        std::copy(samples.begin(), samples.end(), block.begin());
        orva::squelch::DcBlock(blocker, block.data(), kBlock, Rate(state));
        benchmark::DoNotOptimize(block.data());
    });
}

/// With its high-pass.
void NoiseMeter(benchmark::State& state) {
    const Samples audio = Audio(Rate(state));
    orva::dsp::TFIR_F32 highPass;
    highPass.SetSampleRate(Rate(state));
    highPass.SetLength(orva::squelch::kNoiseHighPassTaps);
    highPass.SetFilterType(orva::dsp::kFilterHighPass);
    highPass.SetLowCut(orva::squelch::kNoiseHighPassHz);
    Samples scratch(kBlock);
    float level = 0.0F;
    RunBlocks(state, audio, Rate(state), [&](std::span<const std::int16_t> block) {
        benchmark::DoNotOptimize(
            orva::squelch::MeasureNoise(highPass, scratch.data(), level, true, block.data(), kBlock));
    });
}

void FmDemodulator(benchmark::State& state) {
    const Samples signal = Signal(Rate(state));
    orva::test::FmReceiver receiver(Rate(state));
    RunBlocks(state, signal, Rate(state), [&](std::span<const std::int16_t> block) {
        benchmark::DoNotOptimize(receiver.Receive(block).data());
    });
}

/// FM demodulator, noise measure and the three detectors together.
void FmChainWithAllDetectors(benchmark::State& state) {
    const Samples signal = Signal(Rate(state));
    orva::test::ScannerChain chain(Rate(state));
    RunBlocks(state, signal, Rate(state), [&](std::span<const std::int16_t> block) {
        chain.TakeSignal(block);
        benchmark::DoNotOptimize(chain.noise);
    });
}

} // namespace

BENCHMARK(Resampler)->Arg(48000)->Arg(64000);
BENCHMARK(FixedFir);
BENCHMARK(FftAnalyzer);
BENCHMARK(BitClock);
BENCHMARK(ToneDetector)->Arg(48000)->Arg(64000);
BENCHMARK(DcsDetector)->Arg(48000)->Arg(64000);
BENCHMARK(VoiceDetector)->Arg(48000)->Arg(64000);
BENCHMARK(DcBlocker)->Arg(48000)->Arg(64000);
BENCHMARK(NoiseMeter)->Arg(48000)->Arg(64000);
BENCHMARK(FmDemodulator)->Arg(48000)->Arg(64000);
BENCHMARK(FmChainWithAllDetectors)->Arg(48000)->Arg(64000);
