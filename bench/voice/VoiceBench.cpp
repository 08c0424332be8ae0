// Cost of the voice decoder per 20 ms frame, next to the cost of a bare pass over a frame's synthesis buffer.

#include "tests/voice/VoiceFrames.h"
#include "voice/CodeWords.h"
#include "voice/ImbeDecoder.h"
#include "voice/Transforms.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

namespace orva::voice {
namespace {

// Frames enough that neither the branch predictor nor the decoder's memory knows them by heart.
constexpr std::size_t kFrames = 256;

using Frames = std::vector<ImbeFrameBlock>;

// A vowel that glides, all bands voiced or not.
Frames MakeFrames(int voicing) {
    std::mt19937 random(1);
    Frames frames;
    int pitchCode = 100;
    for (std::size_t i = 0; i < kFrames; ++i) {
        pitchCode = std::clamp(pitchCode + static_cast<int>(random() % 5) - 2, 60, 150);
        test::VoiceFields fields = test::PlainFields(pitchCode, 28 + static_cast<int>(random() % 8), voicing);
        for (int& code : fields.coefficients) {
            code = std::max(code - static_cast<int>(random() % 2), 0);
        }
        frames.push_back(test::ReceivedBlock(test::PackFields(fields)));
    }
    return frames;
}

// The same with the given number of wrong channel bits in every thousand.
Frames Disturbed(Frames frames, unsigned perThousand) {
    std::mt19937 random(2);
    for (ImbeFrameBlock& frame : frames) {
        for (std::uint8_t& bit : frame.bits) {
            bit ^= static_cast<std::uint8_t>(random() % 1000 < perThousand ? 1 : 0);
        }
    }
    return frames;
}

Frames Corrected(Frames frames) {
    ImbeDecoderState state;
    ImbeInit(state);
    for (ImbeFrameBlock& frame : frames) {
        ImbeDecodeCodeWords(frame, state);
    }
    return frames;
}

// One frame an iteration; the block is copied first, because decoding works in place.
template <typename Work>
void RunOverFrames(benchmark::State& run, const Frames& frames, Work&& work) {
    ImbeDecoderState state;
    ImbeInit(state);
    std::size_t next = 0;
    for ([[maybe_unused]] auto _ : run) {
        ImbeFrameBlock block = frames[next++ % kFrames];
        work(block, state);
        benchmark::DoNotOptimize(block);
    }
    run.SetItemsProcessed(run.iterations());
}

void BareFramePass(benchmark::State& run) {
    std::array<std::int32_t, kNominalFrameLength> buffer{};
    for ([[maybe_unused]] auto _ : run) {
        for (std::int32_t& value : buffer) {
            value += 3;
        }
        benchmark::DoNotOptimize(buffer);
    }
    run.SetItemsProcessed(run.iterations());
}
BENCHMARK(BareFramePass);

void GolayWord(benchmark::State& run) {
    const auto errors = static_cast<std::uint32_t>(run.range(0));
    std::mt19937 random(3);
    std::array<std::uint32_t, kFrames> words;
    for (std::uint32_t& word : words) {
        word = test::EncodeGolay(random() & 0xFFF);
        for (std::uint32_t i = 0; i < errors; ++i) {
            word ^= 1U << (random() % kGolayLength);
        }
    }
    std::size_t next = 0;
    for ([[maybe_unused]] auto _ : run) {
        benchmark::DoNotOptimize(DecodeGolay(words[next++ % kFrames]));
    }
}
BENCHMARK(GolayWord)->Arg(0)->Arg(3);

void DecodeCodeWords(benchmark::State& run) {
    const Frames frames = Disturbed(MakeFrames(1), static_cast<unsigned>(run.range(0)));
    RunOverFrames(run, frames,
                  [](ImbeFrameBlock& block, ImbeDecoderState& state) { ImbeDecodeCodeWords(block, state); });
}
BENCHMARK(DecodeCodeWords)->Arg(0)->Arg(30);

void UnpackAndSynthesizeVoiced(benchmark::State& run) {
    RunOverFrames(run, Corrected(MakeFrames(1)), ImbeSynthesizeFrame);
}
BENCHMARK(UnpackAndSynthesizeVoiced);

void UnpackAndSynthesizeUnvoiced(benchmark::State& run) {
    RunOverFrames(run, Corrected(MakeFrames(0)), ImbeSynthesizeFrame);
}
BENCHMARK(UnpackAndSynthesizeUnvoiced);

void WholeFrame(benchmark::State& run) {
    const Frames frames = Disturbed(MakeFrames(1), static_cast<unsigned>(run.range(0)));
    RunOverFrames(run, frames, [](ImbeFrameBlock& block, ImbeDecoderState& state) {
        ImbeDecodeCodeWords(block, state);
        ImbeSynthesizeFrame(block, state);
    });
}
BENCHMARK(WholeFrame)->Arg(0)->Arg(30);

void RealTransformPair(benchmark::State& run) {
    const int log2 = static_cast<int>(run.range(0));
    std::vector<std::int16_t> buffer(std::size_t{1} << log2);
    std::iota(buffer.begin(), buffer.end(), std::int16_t{-64});
    for ([[maybe_unused]] auto _ : run) {
        std::vector<std::int16_t>& work = buffer;
        int exponent = FftReal(work.data(), 0, log2);
        exponent = FftRealInverse(work.data(), exponent, log2);
        benchmark::DoNotOptimize(exponent);
        work[1] = 12345; // keeps the contents from fading out
    }
}
BENCHMARK(RealTransformPair)->Arg(7)->Arg(8);

} // namespace
} // namespace orva::voice
