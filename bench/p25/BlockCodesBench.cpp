// The block codes of signalling: network identifier and Reed-Solomon words, clean and with as many errors as
// they correct.

#include "tests/support/BlockCodes.h"

#include "bench/BlockTimes.h"
#include "p25/CtbReedSolomon.h"
#include "p25/NetworkIdentifier.h"
#include "tests/support/ErrorInjector.h"
#include "tests/support/ReedSolomonEncoder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

namespace orva::bench {
namespace {

constexpr std::size_t kWords = 64; ///< different ones, so that no branch is known by heart

using NidText = std::array<char, p25::kNidLength + 1>;

NidText MakeNid(unsigned networkAccessCode, int errors, test::ErrorInjector& injector) {
    constexpr unsigned kLdu1 = 5;
    // The parity bit lies lowest; errors go into the 63 bits above it.
    const std::uint64_t clean = test::EncodeNid(networkAccessCode, kLdu1);
    const std::uint64_t word = injector.FlipBits(clean >> 1, test::kNidBits - 1, errors) << 1 | (clean & 1);
    NidText text{};
    for (std::size_t i = 0; i < p25::kNidLength; ++i) {
        text[i] = static_cast<char>('0' + (word >> (62 - 2 * i) & 3));
    }
    return text;
}

void CorrectNid(benchmark::State& state) {
    const auto errors = static_cast<int>(state.range(0));
    test::ErrorInjector injector;
    std::vector<NidText> words;
    for (unsigned i = 0; i < kWords; ++i) {
        words.push_back(MakeNid(i * 61 % 4096, errors, injector));
    }
    BlockTimes times;
    std::size_t next = 0;
    std::uint64_t corrected = 0;
    for ([[maybe_unused]] auto _ : state) {
        NidText text = words[next];
        std::uint32_t errorCount = 0;
        times.Measure([&] { benchmark::DoNotOptimize(p25::CorrectNid(text.data(), &errorCount)); });
        corrected += errorCount;
        next = (next + 1) % kWords;
    }
    if (corrected != static_cast<std::uint64_t>(errors) * static_cast<std::uint64_t>(state.iterations())) {
        state.SkipWithError("a word was not corrected");
    }
    times.Report(state);
}
BENCHMARK(CorrectNid)->Arg(0)->Arg(11)->ArgName("errors")->Unit(benchmark::kMicrosecond);

/// Arguments: symbols of the word, of them parity, and wrong.
void DecodeReedSolomon(benchmark::State& state) {
    constexpr std::size_t kFullWord = 63;
    constexpr std::uint32_t kSymbolBits = 6;
    using Word = std::array<std::uint32_t, kFullWord>;
    const auto length = static_cast<std::size_t>(state.range(0));
    const auto parity = static_cast<int>(state.range(1));
    const auto errors = static_cast<int>(state.range(2));

    test::ErrorInjector injector;
    test::RandomSource random(1);
    std::vector<Word> clean;
    std::vector<Word> received;
    for (std::size_t i = 0; i < kWords; ++i) {
        std::vector<std::uint8_t> message(length - static_cast<std::size_t>(parity));
        std::ranges::generate(message, [&] { return static_cast<std::uint8_t>(random.Below(64)); });
        std::vector<std::uint8_t> symbols = test::EncodeReedSolomon(message, parity);
        clean.emplace_back();
        std::ranges::copy(symbols, clean.back().end() - static_cast<std::ptrdiff_t>(length));
        injector.ReplaceSymbols(symbols, errors);
        received.emplace_back();
        std::ranges::copy(symbols, received.back().end() - static_cast<std::ptrdiff_t>(length));
    }

    p25::CtbReedSolomon decoder(kSymbolBits);
    decoder.Init(static_cast<std::uint32_t>(parity), 1, 1);
    BlockTimes times;
    std::size_t next = 0;
    bool allCorrected = true;
    for ([[maybe_unused]] auto _ : state) {
        Word word = received[next];
        times.Measure([&] { benchmark::DoNotOptimize(decoder.Decode(kFullWord, word.data())); });
        allCorrected = allCorrected && word == clean[next];
        next = (next + 1) % kWords;
    }
    if (!allCorrected) {
        state.SkipWithError("a word was not corrected");
    }
    times.Report(state);
}
BENCHMARK(DecodeReedSolomon)
    ->ArgNames({"word", "parity", "errors"})
    ->Args({36, 16, 0})
    ->Args({36, 16, 8})
    ->Args({24, 12, 0})
    ->Args({24, 12, 6})
    ->Args({24, 8, 0})
    ->Args({24, 8, 4})
    ->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace orva::bench
