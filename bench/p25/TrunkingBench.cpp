// The control channel: the trellis decoder alone, and packets of three blocks through the frame decoder.
//
// Counters: `times_real_time`, a packet takes 75 ms on the air; `block_us`, microseconds a block.

#include "bench/BlockTimes.h"
#include "p25/COrvaFrameDecoder.h"
#include "p25/CtbTrellisDecoder.h"
#include "tests/support/RandomSource.h"
#include "tests/support/TrellisEncoder.h"
#include "tests/support/TrunkingMessage.h"

#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace orva::bench {
namespace {

constexpr std::uint32_t kBlockSymbols = 49;

/// Argument: wrong bits among the 196 of a block.
void DecodeTrellis(benchmark::State& state) {
    constexpr std::size_t kBlocks = 64; // different ones, so that no branch is known by heart
    test::RandomSource random(1);
    std::vector<std::vector<std::uint8_t>> blocks;
    for (std::size_t i = 0; i < kBlocks; ++i) {
        std::vector<std::uint8_t> dibits(kBlockSymbols);
        for (std::uint8_t& dibit : dibits) {
            dibit = static_cast<std::uint8_t>(random.Below(4));
        }
        blocks.push_back(test::EncodeTrellis(dibits));
        for (std::int64_t error = 0; error < state.range(0); ++error) {
            blocks.back()[random.Below(kBlockSymbols)] ^= static_cast<std::uint8_t>(1U << random.Below(4));
        }
    }
    p25::CtbTrellisDecoder decoder;
    BlockTimes times;
    std::size_t next = 0;
    for ([[maybe_unused]] auto _ : state) {
        times.Measure([&] { benchmark::DoNotOptimize(decoder.Decode(blocks[next].data(), kBlockSymbols)); });
        next = (next + 1) % kBlocks;
    }
    times.Report(state);
}
BENCHMARK(DecodeTrellis)->Arg(0)->Arg(8)->ArgName("errors")->Unit(benchmark::kMicrosecond);

/// Sync, network identifier, three blocks and their records, which the host takes.
void DecodeTrunkingPacket(benchmark::State& state) {
    constexpr double kBlocks = 3.0;
    constexpr double kPacketSeconds = 0.075;
    constexpr double kMicroseconds = 1e6;
    const std::string packet = test::TrunkingPacket(
        0x293, std::vector<test::TrunkingData>{
                   test::IdentifierUpdate({.identifier = 1, .spacing = 50, .baseFrequency = 170202500}),
                   test::GroupGrantUpdate({1, 100}, 1, {1, 200}, 2), test::OtherMessage(59)});
    p25::COrvaFrameDecoder decoder;
    BlockTimes times;
    std::size_t messages = 0;
    for ([[maybe_unused]] auto _ : state) {
        times.Measure([&] {
            decoder.Decode(packet.data(), static_cast<std::int32_t>(packet.size()));
            messages += decoder.TakeRecords(nullptr) != nullptr ? 1U : 0U;
        });
    }
    if (messages != static_cast<std::size_t>(state.iterations())) {
        state.SkipWithError("a packet was lost");
    }
    times.Report(state);
    state.counters["times_real_time"] = kPacketSeconds / times.MedianSeconds();
    state.counters["block_us"] = kMicroseconds * times.MedianSeconds() / kBlocks;
}
BENCHMARK(DecodeTrunkingPacket)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace orva::bench
