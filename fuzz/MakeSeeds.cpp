/// Writes inputs that the fuzz targets start from, made by the test transmitter: whole frames, voice and
/// headers that are right, for the fuzzer to spoil.
///
/// Usage: make-fuzz-seeds FOLDER, which has the folders fuzz-dibits, fuzz-voice, fuzz-trunking and fuzz-wave
/// in it.
#include "tests/audio/RiffBytes.h"
#include "tests/support/SpeechSource.h"
#include "tests/support/Transmission.h"
#include "tests/support/TrunkingMessage.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace orva::fuzz {

namespace {

using Bytes = std::vector<std::uint8_t>;
using test::RiffBytes;
using test::SpeechKind;

std::filesystem::path folder;

void Write(const std::string& name, const Bytes& bytes) {
    std::ofstream file(folder / name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file) {
        std::fprintf(stderr, "%s could not be written\n", name.c_str());
    }
}

/// Dibits in the language of FuzzDibits.cpp.
Bytes DibitInput(std::uint8_t blockSize, std::uint8_t slices, const std::string& dibits) {
    constexpr std::uint8_t kOrder = 0xFF;
    constexpr std::uint8_t kSingle = 32;
    Bytes bytes = {blockSize, slices};
    std::size_t next = 0;
    const auto value = [&](std::size_t index) { return static_cast<std::uint8_t>(dibits[index] - '0'); };
    while (next < dibits.size()) {
        const std::size_t left = dibits.size() - next;
        const bool isOrder = left >= 4 && dibits.compare(next, 4, "3333") == 0;
        if (left < 4 || isOrder) {
            bytes.insert(bytes.end(), {kOrder, static_cast<std::uint8_t>(kSingle + value(next))});
            ++next;
            continue;
        }
        bytes.push_back(static_cast<std::uint8_t>(value(next) << 6 | value(next + 1) << 4 |
                                                  value(next + 2) << 2 | value(next + 3)));
        next += 4;
    }
    return bytes;
}

void WriteDibitSeeds() {
    const auto voice = [source = test::SpeechSource(SpeechKind::Vowels)](std::size_t index) mutable {
        return source.Frame(index);
    };
    test::CallDescription group;
    test::CallDescription unit;
    unit.link.format = test::LinkControl::kUnitToUnitVoice;
    unit.ending = test::CallEnding::TerminatorWithLinkControl;

    test::Transmission groupCall;
    groupCall.AddCall(group, voice);
    Write("fuzz-dibits/group-call", DibitInput(1, 0, groupCall.Dibits()));

    test::Transmission unitCall{test::ErrorInjector(test::ErrorPlan::Heaviest())};
    unitCall.AddCall(unit, voice);
    Write("fuzz-dibits/unit-call-with-errors", DibitInput(4, 0x81, unitCall.Dibits()));

    test::Transmission others;
    others.AddPacket(0x293, 2);
    others.AddUnknown(0x293, 1, 100);
    others.AddUnknown(0x293, static_cast<unsigned>(test::DataUnit::Trunking), 3 * 196);
    others.AddTerminator(0x293);
    Write("fuzz-dibits/other-frames", DibitInput(7, 3, others.Dibits()));

    Write("fuzz-dibits/each-type", [] {
        Bytes bytes = {2, 5};
        for (std::uint8_t duid = 0; duid < 16; ++duid) {
            bytes.insert(bytes.end(),
                         {0xFF, duid, 0x1B, 0xE4, 0xFF, static_cast<std::uint8_t>(0x18 + duid % 4)});
        }
        return bytes;
    }());
}

/// Frames in the language of FuzzVoice.cpp, coded without a flaw.
Bytes VoiceInput(std::uint8_t softBits, SpeechKind kind, std::size_t first, std::size_t count,
                 std::uint16_t sampleCount) {
    Bytes bytes = {softBits};
    test::SpeechSource source(kind);
    for (std::size_t frame = first; frame < first + count; ++frame) {
        bytes.insert(bytes.end(), {0, static_cast<std::uint8_t>(sampleCount),
                                   static_cast<std::uint8_t>(sampleCount >> 8)});
        const test::VoiceBits& bits = source.Frame(frame);
        for (std::size_t i = 0; i < bits.size(); i += 8) {
            std::uint8_t byte = 0;
            for (std::size_t bit = i; bit < i + 8; ++bit) {
                byte = static_cast<std::uint8_t>(byte << 1 | bits[bit]);
            }
            bytes.push_back(byte);
        }
    }
    return bytes;
}

void WriteVoiceSeeds() {
    constexpr std::size_t kFrames = 40;
    std::uint8_t softBits = 1;
    for (const SpeechKind kind : test::kSpeechKinds) {
        const std::string name(test::SpeechName(kind));
        Write("fuzz-voice/" + name, VoiceInput(1, kind, 20, kFrames, 160));
        softBits = static_cast<std::uint8_t>(softBits % 8 + 1);
        const auto sampleCount = static_cast<std::uint16_t>(100 + 20 * softBits);
        Write("fuzz-voice/" + name + "-soft", VoiceInput(softBits, kind, 0, kFrames / 4, sampleCount));
    }
}

/// Messages in the language of FuzzTrunking.cpp, each after a reset and in a packet of its own.
void WriteTrunkingSeeds() {
    constexpr std::uint8_t kCleanPacket = 6; // of one message
    constexpr std::uint8_t kDamagedPacket = 8;
    constexpr std::uint8_t kRetune = 14;
    constexpr std::uint8_t kTakeRecords = 15;
    const test::TrunkingData plan =
        test::IdentifierUpdate({.identifier = 1, .spacing = 50, .baseFrequency = 170202500});
    const std::vector<test::TrunkingData> messages = {
        plan,
        test::GroupGrant({1, 100}, 1, 2, 4),
        test::GroupGrantUpdate({1, 100}, 1, {2, 200}, 3),
        test::GroupGrantUpdateExplicit({1, 100}, {1, 200}, 1, 0),
        test::RegroupedGrant({1, 100}, 1, 2),
        test::RegroupedGrantUpdate({1, 100}, 1, {1, 100}, 1),
        test::UnitGrant({1, 100}, 1, 2),
        test::UnitGrantUpdate({1, 100}, 1, 2),
        test::Protected(plan),
        test::OtherMessage(61)};
    Bytes clean = {20};
    Bytes spoilt = {149};
    for (const test::TrunkingData& message : messages) {
        clean.push_back(kCleanPacket);
        clean.insert(clean.end(), message.begin(), message.end());
        spoilt.push_back(kDamagedPacket);
        spoilt.insert(spoilt.end(), message.begin(), message.end());
        spoilt.push_back(static_cast<std::uint8_t>(spoilt.size()));
    }
    clean.push_back(kTakeRecords);
    Write("fuzz-trunking/each-message", clean);
    Write("fuzz-trunking/each-message-with-an-error", spoilt);

    Bytes retuned = clean;
    retuned.insert(retuned.end(), {kRetune, 0x80, 0x25, 0xB9, 0x32});
    retuned.insert(retuned.end(), clean.begin() + 1, clean.end());
    Write("fuzz-trunking/retuned", retuned);
}

void WriteWave(const std::string& name, Bytes file, std::uint8_t choice = 2) { // read three samples at a time
    file.insert(file.begin(), choice);
    Write("fuzz-wave/" + name, file);
}

void WriteWaveSeeds() {
    const Bytes samples = test::SampleBytes(std::vector<std::int16_t>{1, -2, 3, -4, 5, -6, 7, -8});
    for (const std::size_t size : {16U, 18U, 40U}) {
        WriteWave("format-of-" + std::to_string(size),
                  RiffBytes().Chunk("fmt ", test::FormatBytes(size)).Chunk("data", samples).Bytes());
    }
    WriteWave("extensible", RiffBytes()
                                .Chunk("fmt ", test::FormatBytes(40, {.tag = test::kExtensibleTag}))
                                .Chunk("data", samples)
                                .Bytes());
    WriteWave("more-chunks", RiffBytes()
                                 .Chunk("JUNK", Bytes(3, 0xAA))
                                 .Chunk("fmt ", test::FormatBytes(18))
                                 .Chunk("LIST", Bytes(600, 0xBB))
                                 .Chunk("data", samples)
                                 .Chunk("id3 ", Bytes(9, 0xCC))
                                 .Bytes());
    WriteWave("unfinished", RiffBytes()
                                .Chunk("fmt ", test::FormatBytes(16))
                                .ChunkOfSize("data", 0xFFFFFFFF, samples)
                                .BytesOfSize(0xFFFFFFFF));
    WriteWave("cut-short",
              RiffBytes().Chunk("fmt ", test::FormatBytes(16)).ChunkOfSize("data", 999, samples).Bytes());
    WriteWave(
        "writer-killed",
        RiffBytes().Chunk("fmt ", test::FormatBytes(18)).ChunkOfSize("data", 0, samples).BytesOfSize(0));
    WriteWave("two-formats", RiffBytes()
                                 .Chunk("fmt ", test::FormatBytes(18))
                                 .Chunk("fmt ", test::FormatBytes(16, {.channels = 2}))
                                 .Chunk("data", samples)
                                 .Bytes());
    WriteWave("zeros", Bytes(600));
    constexpr std::uint8_t kThroughAPipe = 0x82;
    WriteWave("pipe",
              RiffBytes()
                  .Chunk("LIST", Bytes(301, 0xBB))
                  .Chunk("fmt ", test::FormatBytes(16))
                  .Chunk("data", samples)
                  .Bytes(),
              kThroughAPipe);
    WriteWave(
        "long-format",
        RiffBytes().ChunkOfSize("fmt ", 0xFFFFFFFF, test::FormatBytes(18)).Chunk("data", samples).Bytes());
}

} // namespace

} // namespace orva::fuzz

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    orva::fuzz::folder = argv[1];
    orva::fuzz::WriteDibitSeeds();
    orva::fuzz::WriteVoiceSeeds();
    orva::fuzz::WriteTrunkingSeeds();
    orva::fuzz::WriteWaveSeeds();
    return 0;
}
