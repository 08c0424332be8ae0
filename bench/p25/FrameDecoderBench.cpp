// The frame decoder with the voice decoder behind it, a logical link data unit of nine voice frames at a
// time.
//
// Counters: `times_real_time`, data units take 180 ms on the air; `frame_us`, microseconds a voice frame;
// times of a data unit.

#include "bench/BlockTimes.h"
#include "bench/p25/BenchSignals.h"
#include "p25/COrvaFrameDecoder.h"

#include <benchmark/benchmark.h>

namespace orva::bench {
namespace {

void DecodeDataUnit(benchmark::State& state) {
    constexpr double kVoiceFrames = 9.0;
    constexpr double kMicroseconds = 1e6;
    const std::string& dibits = VoiceDibits();
    p25::COrvaFrameDecoder decoder;
    BlockTimes times;
    std::size_t unit = 0;
    for ([[maybe_unused]] auto _ : state) {
        times.Measure([&] {
            decoder.Decode(dibits.data() + unit * kDataUnitDibits, kDataUnitDibits);
            while (dsp::CtbSampleBlock* block = decoder.PopVoiceBlock()) {
                decoder.PushFreeBlock(block);
            }
        });
        decoder.TakeRecords(nullptr);
        unit = (unit + 1) % kDataUnits;
    }
    times.Report(state);
    state.counters["times_real_time"] = kDataUnitSeconds / times.MedianSeconds();
    state.counters["frame_us"] = kMicroseconds * times.MedianSeconds() / kVoiceFrames;
}
BENCHMARK(DecodeDataUnit)->Unit(benchmark::kMicrosecond);

/// Noise, in which every dibit is compared with the sync word.
void SearchForSync(benchmark::State& state) {
    const std::string noise = [] {
        std::string text(kDataUnitDibits, '0');
        std::uint32_t seed = 1;
        for (char& dibit : text) {
            seed = 1664525U * seed + 1013904223U;
            dibit = static_cast<char>('0' + (seed >> 30));
        }
        return text;
    }();
    p25::COrvaFrameDecoder decoder;
    BlockTimes times;
    for ([[maybe_unused]] auto _ : state) {
        times.Measure([&] { decoder.Decode(noise.data(), kDataUnitDibits); });
    }
    times.Report(state);
    state.counters["times_real_time"] = kDataUnitSeconds / times.MedianSeconds();
}
BENCHMARK(SearchForSync)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace orva::bench
