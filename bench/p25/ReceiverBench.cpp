// The whole chain, from samples to speech, during a voice call: demodulator, frame decoder, voice decoder, a
// block of 2400 samples at a time.
//
// Counters: `times_real_time`, seconds of signal a second; `bare_dots`, bare dot products of 256 floats that
// take as long as one sample; `voice_share`, voice frames decoded of those sent; block times.

#include "bench/BlockTimes.h"
#include "bench/p25/BenchSignals.h"
#include "p25/COrvaDemodulator.h"
#include "p25/COrvaFrameDecoder.h"

#include <vector>

#include <benchmark/benchmark.h>

namespace orva::bench {
namespace {

class VoiceFrameCounter final : public p25::IFrameObserver {
public:
    void OnVoiceFrame(const voice::ImbeFrameBlock& /*frame*/, float /*bitErrorRate*/) override { ++frames; }
    double Frames() const { return frames; }

private:
    double frames = 0;
};

void DecodeBlock(p25::COrvaDemodulator& demodulator, p25::COrvaFrameDecoder& decoder, const float* samples) {
    const std::int32_t dibits = demodulator.Process(samples, kBlock);
    if (dibits > 0) {
        decoder.Decode(demodulator.GetDibits(), dibits);
    }
    while (dsp::CtbSampleBlock* block = decoder.PopVoiceBlock()) {
        decoder.PushFreeBlock(block);
    }
}

void Receive(benchmark::State& state) {
    constexpr double kVoiceFramesPerSecond = 50.0;
    const auto rate = static_cast<int>(state.range(0));
    const std::vector<float> signal = VoiceSignal(rate);
    p25::COrvaDemodulator demodulator;
    demodulator.SetSampleRate(static_cast<std::uint32_t>(rate));
    p25::COrvaFrameDecoder decoder;
    VoiceFrameCounter voice;
    // Once through, for the receiver to lock and all memory to be taken.
    for (std::size_t first = 0; first < signal.size(); first += kBlock) {
        DecodeBlock(demodulator, decoder, signal.data() + first);
    }
    decoder.SetObserver(&voice);

    BlockTimes times;
    std::size_t next = 0;
    for ([[maybe_unused]] auto _ : state) {
        times.Measure([&] { DecodeBlock(demodulator, decoder, signal.data() + next); });
        decoder.TakeRecords(nullptr);
        next = (next + kBlock) % signal.size();
    }
    times.Report(state);
    const double blockSeconds = static_cast<double>(kBlock) / rate;
    const double received = blockSeconds * static_cast<double>(state.iterations());
    // Blocks differ: only some complete a voice frame. The mean counts them all, and what else ran on the
    // machine.
    state.counters["times_real_time"] = benchmark::Counter(received, benchmark::Counter::kIsRate);
    state.counters["bare_dots"] = times.MedianSeconds() / static_cast<double>(kBlock) / BareDotSeconds();
    state.counters["voice_share"] = voice.Frames() / (received * kVoiceFramesPerSecond);
}
BENCHMARK(Receive)->Arg(48000)->Arg(64000)->Unit(benchmark::kMicrosecond);

/// The yardstick itself, in the same run.
void BareDot(benchmark::State& state) {
    double seconds = 0;
    for ([[maybe_unused]] auto _ : state) {
        seconds = BareDotSeconds();
    }
    state.counters["ns_a_dot"] = 1e9 * seconds;
}
BENCHMARK(BareDot)->Iterations(1);

} // namespace
} // namespace orva::bench
