// The spectrum at the display's size. Counter `ratio`: throughput against a bare SSE dot product in the same
// run, with a real transform counted as 2.5 N log2 N operations and a dot product as 2 N.

#include "bench/BlockTimes.h"
#include "bench/dsp/BareDotProduct.h"
#include "dsp/ProcessorDispatch.h"
#include "dsp/ProcessorFeatures.h"
#include "dsp/TFFT_F32.h"

#include <cmath>
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

namespace orva::bench {
namespace {

constexpr std::uint32_t kSize = 2048;
constexpr int kDotProduct = 1024;

void ComputeSpectrum(benchmark::State& state, std::uint32_t features) {
    const std::uint32_t realFeatures = dsp::GetDispatchTables().features;
    dsp::ForceDispatch(features);
    dsp::TFFT_F32 fft;
    dsp::ForceDispatch(realFeatures);
    fft.SetSize(kSize);
    std::vector<float> in(kSize);
    for (std::size_t i = 0; i < in.size(); ++i) {
        in[i] = static_cast<float>(std::sin(0.001 * static_cast<double>(i * i)));
    }
    std::vector<float> out(kSize / 2);
    const double operationSeconds = MeasureBareDotProduct(kDotProduct) / (2.0 * kDotProduct);
    const double operations = 2.5 * kSize * std::log2(static_cast<double>(kSize));
    BlockTimes times;
    for ([[maybe_unused]] auto _ : state) {
        times.Measure([&] { fft.ComputeSpectrum(out.data(), in.data()); });
        benchmark::ClobberMemory();
    }
    state.counters["ratio"] = operationSeconds * operations / times.MedianSeconds();
    state.counters["GFlops"] = 1e-9 * operations / times.MedianSeconds();
    times.Report(state);
}

BENCHMARK_CAPTURE(ComputeSpectrum, x87, 0U)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(ComputeSpectrum, SSE, dsp::kFeatureSse | dsp::kFeatureSse2)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace orva::bench
