// The demodulator, a block of 2400 samples at a time.
//
// Counters: `times_real_time`; `bare_dots`, bare dot products of 256 floats that take as long as one sample;
// block times.

#include "bench/BlockTimes.h"
#include "bench/p25/BenchSignals.h"
#include "p25/COrvaDemodulator.h"

#include <vector>

#include <benchmark/benchmark.h>

namespace orva::bench {
namespace {

void Demodulate(benchmark::State& state) {
    const auto rate = static_cast<int>(state.range(0));
    const std::vector<float> signal = VoiceSignal(rate);
    p25::COrvaDemodulator demodulator;
    demodulator.SetSampleRate(static_cast<std::uint32_t>(rate));
    demodulator.Process(signal.data(), kBlock);
    BlockTimes times;
    std::size_t next = 0;
    for ([[maybe_unused]] auto _ : state) {
        times.Measure([&] { benchmark::DoNotOptimize(demodulator.Process(signal.data() + next, kBlock)); });
        next = (next + kBlock) % signal.size();
    }
    times.Report(state);
    const double sampleSeconds = times.MedianSeconds() / static_cast<double>(kBlock);
    state.counters["times_real_time"] = 1.0 / (rate * sampleSeconds);
    state.counters["bare_dots"] = sampleSeconds / BareDotSeconds();
}
BENCHMARK(Demodulate)->Arg(48000)->Arg(64000)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace orva::bench
