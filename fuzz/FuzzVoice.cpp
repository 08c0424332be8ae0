/// Any channel words into the voice decoder, frame after frame.
///
/// Byte 0 gives the width of a soft sample. Then frames: a byte of choices, two bytes of `sampleCount`, and
/// the word as 11 bytes of information bits that are coded without a flaw, 18 bytes of hard bits, or 144 soft
/// samples.
#include "fuzz/InputBytes.h"
#include "fuzz/Require.h"
#include "tests/support/ImbeWord.h"
#include "voice/ImbeDecoder.h"

#include <algorithm>
#include <cstring>

namespace orva::fuzz {

namespace {

constexpr int kMostFrames = 200;
constexpr int kMinSampleCount = 132;
constexpr int kMaxSampleCount = 240;

/// The low bits of a frame's first byte.
enum class Word : std::uint8_t { Coded = 0, Hard = 1, Soft = 2, CodedWithErrors = 3 };

int LargestSample(std::uint16_t softBits) {
    return (1 << std::clamp<int>(softBits, 1, 8)) - 1;
}

void UnpackBits(InputBytes& input, std::uint8_t* bits, int count) {
    for (int i = 0; i < count; i += 8) {
        const std::uint8_t byte = input.Byte();
        for (int bit = 0; bit < 8; ++bit) {
            bits[i + bit] = static_cast<std::uint8_t>(byte >> (7 - bit) & 1);
        }
    }
}

void ReadWord(InputBytes& input, Word word, voice::ImbeFrameBlock& block) {
    if (word == Word::Soft) {
        std::generate(std::begin(block.bits), std::end(block.bits), [&] { return input.Byte(); });
        return;
    }
    if (word == Word::Hard) {
        UnpackBits(input, block.bits, voice::kCodedBits);
    } else {
        test::VoiceBits information;
        UnpackBits(input, information.data(), test::kVoiceBits);
        test::VoiceErrorPattern errors{};
        if (word == Word::CodedWithErrors) {
            errors[input.Byte() % errors.size()] = input.Word();
        }
        std::ranges::copy(test::EncodeImbeWord(information, errors), block.bits);
    }
    const int largest = LargestSample(block.softBits);
    for (std::uint8_t& bit : block.bits) {
        bit = static_cast<std::uint8_t>(bit * largest);
    }
}

void RequireHardBits(const std::uint8_t* bits, int count) {
    Require(std::all_of(bits, bits + count, [](std::uint8_t bit) { return bit <= 1; }), "bits are 0 or 1");
}

void RequireFrame(const voice::ImbeFrameParameters& frame) {
    Require(frame.kind == 0 || frame.kind == 1, "a kept frame is voice or none");
    Require(frame.harmonics >= voice::kMinHarmonics && frame.harmonics <= voice::kMaxHarmonics,
            "a kept frame has 9 to 56 harmonics");
    Require(frame.fundamental > 0, "a kept frame has a fundamental");
    Require(frame.synthesize != nullptr, "a kept frame can be played again");
    Require(std::all_of(frame.voiced, frame.voiced + frame.harmonics,
                        [](std::int16_t voiced) { return voiced == 0 || voiced == 1; }),
            "a harmonic is voiced or not");
}

void RequireState(const voice::ImbeDecoderState& state) {
    RequireFrame(state.lastFrame);
    RequireFrame(state.silenceFrame);
    Require(state.previousHarmonics >= voice::kMinHarmonics &&
                state.previousHarmonics <= voice::kMaxHarmonics,
            "the last unpacked frame had 9 to 56 harmonics");
    Require(state.errorRate >= 0, "an error rate is not negative");
    int errors = 0;
    for (const std::int16_t wordErrors : state.wordErrors) {
        Require(wordErrors >= 0 && wordErrors <= 23, "a word has no more errors than bits");
        errors += wordErrors;
    }
    Require(state.errorTotal == errors, "the errors of the words make the total");
    Require(state.waveTable[voice::kWaveTableLength] == state.waveTable[0], "the wave table closes");
}

void RequireSameResult(const voice::ImbeFrameBlock& a, const voice::ImbeFrameBlock& b) {
    Require(a.status == b.status && a.sampleCount == b.sampleCount && a.errorTotal == b.errorTotal &&
                a.errorRate == b.errorRate,
            "a copied state decodes to the same figures");
    Require(std::memcmp(a.samples, b.samples, sizeof(a.samples)) == 0,
            "a copied state decodes to the same samples");
}

void DecodeFrame(voice::ImbeFrameBlock& block, std::int16_t addedFlags, voice::ImbeDecoderState& state) {
    voice::ImbeDecodeCodeWords(block, state);
    RequireHardBits(block.bits, voice::kInformationBits);
    Require(block.errorTotal == state.errorTotal && block.errorRate == state.errorRate,
            "the block tells the state's figures");
    block.status = static_cast<std::int16_t>(block.status | addedFlags);
    voice::ImbeSynthesizeFrame(block, state);
    Require(block.sampleCount >= kMinSampleCount && block.sampleCount <= kMaxSampleCount,
            "the sample count is clamped");
    RequireState(state);
}

void Run(InputBytes input) {
    const std::uint16_t softBits = input.Byte();
    voice::ImbeDecoderState state;
    voice::ImbeInit(state);
    for (int frame = 0; frame < kMostFrames && !input.IsAtEnd(); ++frame) {
        const std::uint8_t choices = input.Byte();
        voice::ImbeFrameBlock block{};
        block.softBits = softBits;
        block.sampleCount = static_cast<std::int16_t>(input.Word());
        block.status = static_cast<std::int16_t>(choices & 0x40U ? -1 : 0); // entry values do not count
        ReadWord(input, static_cast<Word>(choices & 3U), block);
        // A caller may ask for a frame to be repeated or muted that could be decoded.
        const auto addedFlags = static_cast<std::int16_t>(
            choices & 0x20U ? choices & (voice::kImbeFlagRepeat | voice::kImbeFlagMute) : 0);

        voice::ImbeFrameBlock copiedBlock = block;
        voice::ImbeDecoderState copiedState = state;
        DecodeFrame(block, addedFlags, state);
        DecodeFrame(copiedBlock, addedFlags, copiedState);
        RequireSameResult(block, copiedBlock);
    }
}

} // namespace

} // namespace orva::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    orva::fuzz::Run({data, size});
    return 0;
}
