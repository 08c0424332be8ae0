// Every FIR kernel at the lengths in use, in blocks of 2400 samples as the receiver delivers them.
//
// Counters: `ratio`, throughput in multiply-adds against a bare SSE dot product of the same length in the
// same run; `Msamples`, million input samples (pairs) a second; block times.

#include "bench/BlockTimes.h"
#include "bench/dsp/BareDotProduct.h"
#include "dsp/ProcessorDispatch.h"
#include "dsp/ProcessorFeatures.h"
#include "dsp/TFIR_F32.h"
#include "dsp/TFIR_F32_2CH.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include <benchmark/benchmark.h>

namespace orva::bench {
namespace {

constexpr std::int32_t kBlock = 2400;
constexpr std::uint32_t kLengths[] = {32, 240, 256, 512, 1024};

struct Family {
    const char* name;
    std::uint32_t features;
};
constexpr Family kFamilies[] = {
    {"x87", 0},
    {"SSE", dsp::kFeatureSse | dsp::kFeatureSse2},
    {"SSE3", dsp::kFeatureSse | dsp::kFeatureSse2 | dsp::kFeatureSse3},
};

struct Mode {
    const char* name;
    std::uint32_t up;
    std::uint32_t down;
};
constexpr Mode kModes[] = {{"plain", 1, 1}, {"interpolating", 2, 1}, {"decimating", 1, 3}};

template <class Sample>
const char* SampleName() {
    if (std::is_same_v<Sample, float>) {
        return "F32";
    }
    return sizeof(Sample) == 2 ? "I16" : "I32";
}

// One name for the seven operations.

template <class Filter>
std::int32_t Run(Filter& filter, float* out, const float* in) {
    return filter.Filter(out, in, kBlock);
}
template <class Filter>
std::int32_t Run(Filter& filter, std::int16_t* out, const std::int16_t* in) {
    return filter.FilterI16(out, in, kBlock);
}
template <class Filter>
std::int32_t Run(Filter& filter, float* out, const std::int16_t* in) {
    return filter.FilterI16ToF32(out, in, kBlock);
}
template <class Filter>
std::int32_t Run(Filter& filter, std::int32_t* out, const std::int32_t* in) {
    return filter.FilterI32(out, in, kBlock);
}
template <class Filter>
std::int32_t Run(Filter& filter, float* out, const std::int32_t* in) {
    return filter.FilterI32ToF32(out, in, kBlock);
}
template <class Filter>
std::int32_t Run(Filter& filter, std::int16_t* out, const float* in) {
    return filter.FilterF32ToI16(out, in, kBlock);
}
template <class Filter>
std::int32_t Run(Filter& filter, std::int32_t* out, const float* in) {
    return filter.FilterF32ToI32(out, in, kBlock);
}

template <class Filter, int channels, class Out, class In>
void FilterBlocks(benchmark::State& state, Family family, Mode mode, std::uint32_t length) {
    const std::uint32_t realFeatures = dsp::GetDispatchTables().features;
    dsp::ForceDispatch(family.features);
    Filter filter;
    filter.SetLength(length);
    filter.SetSampleRate(48000.0);
    filter.SetRateRatio(mode.up, mode.down);
    dsp::ForceDispatch(realFeatures);

    std::vector<In> in(kBlock * channels);
    for (std::size_t i = 0; i < in.size(); ++i) {
        in[i] = static_cast<In>(10000.0 * std::sin(0.001 * static_cast<double>(i * i)));
    }
    std::vector<Out> out(in.size() * mode.up + 2 * channels);
    // A sub-filter has length / up taps; a pair is two dot products.
    const int floats = static_cast<int>(length / mode.up) * channels / 4 * 4;
    const double bare = MeasureBareDotProduct(floats);
    std::int64_t outputs = 0;
    BlockTimes times;
    for ([[maybe_unused]] auto _ : state) {
        times.Measure([&] { outputs += Run(filter, out.data(), in.data()); });
        benchmark::ClobberMemory();
    }
    const double outputsPerBlock = static_cast<double>(outputs) / static_cast<double>(state.iterations());
    state.counters["ratio"] = bare * outputsPerBlock / times.MedianSeconds();
    state.counters["Msamples"] = 1e-6 * kBlock / times.MedianSeconds();
    times.Report(state);
}

template <class Filter, int channels, class Out, class In>
void Register(const Family& family, const char* filterName) {
    for (const Mode& mode : kModes) {
        for (const std::uint32_t length : kLengths) {
            const std::string name = std::string(filterName) + "/" + family.name + "/" + mode.name + "/" +
                                     SampleName<In>() + "to" + SampleName<Out>() + "/" +
                                     std::to_string(length);
            benchmark::RegisterBenchmark(name.c_str(), FilterBlocks<Filter, channels, Out, In>, family, mode,
                                         length)
                ->MinTime(0.03)
                ->Unit(benchmark::kMicrosecond);
        }
    }
}

template <class Filter, int channels>
void RegisterIntegerFormats(const Family& family, const char* filterName) {
    Register<Filter, channels, std::int16_t, std::int16_t>(family, filterName);
    Register<Filter, channels, float, std::int16_t>(family, filterName);
    Register<Filter, channels, std::int32_t, std::int32_t>(family, filterName);
    Register<Filter, channels, float, std::int32_t>(family, filterName);
    Register<Filter, channels, std::int16_t, float>(family, filterName);
    Register<Filter, channels, std::int32_t, float>(family, filterName);
}

bool RegisterAll() {
    const std::uint32_t realFeatures = dsp::GetDispatchTables().features;
    for (const Family& family : kFamilies) {
        if ((family.features & ~realFeatures) != 0) {
            continue;
        }
        Register<dsp::TFIR_F32, 1, float, float>(family, "TFIR_F32");
        RegisterIntegerFormats<dsp::TFIR_F32, 1>(family, "TFIR_F32");
    }
    Register<dsp::TFIR_F32_2CH, 2, float, float>(kFamilies[0], "TFIR_F32_2CH");
    Register<dsp::TFIR_F32_2CH, 2, float, float>(kFamilies[1], "TFIR_F32_2CH");
    RegisterIntegerFormats<dsp::TFIR_F32_2CH, 2>(kFamilies[0], "TFIR_F32_2CH");
    return true;
}

const bool kAreRegistered = RegisterAll();

} // namespace
} // namespace orva::bench
