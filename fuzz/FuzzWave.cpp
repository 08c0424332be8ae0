/// Any bytes as a WAV file. Byte 0 chooses how many samples are read at a time, and by its highest bit
/// whether they come through a pipe; the rest is the file.
#include "audio/CtbWaveFile.h"
#include "audio/WaveFileReader.h"
#include "fuzz/InputBytes.h"
#include "fuzz/Require.h"
#include "tests/audio/MemoryFiles.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace orva::fuzz {

namespace {

constexpr const char* kPath = "fuzzed.if.wav";
constexpr std::uint8_t kIsPipe = 0x80;

void RequireClosed(audio::WaveFileReader& reader) {
    std::int16_t sample = 0;
    Require(reader.Read(&sample, 1) == 0, "a reader without a file has no samples");
    Require(reader.GetSampleRate() == 0 && reader.GetPromisedSamples() == 0 && reader.GetReadSamples() == 0 &&
                !reader.IsUnfinished() && !reader.IsCutShort(),
            "a reader without a file knows nothing");
}

/// Reads to the end, `capacity` samples at a time; returns how many there were.
std::size_t ReadAll(audio::WaveFileReader& reader, std::size_t capacity, std::size_t mostSamples) {
    std::vector<std::int16_t> block(capacity);
    std::size_t total = 0;
    while (const std::size_t count = reader.Read(block.data(), capacity)) {
        Require(count <= capacity, "no more is read than there is room for");
        total += count;
        Require(total <= mostSamples, "no more is read than there is in the file");
        Require(reader.GetReadSamples() == total, "the reader counts what it reads");
    }
    Require(reader.Read(block.data(), capacity) == 0, "the end stays the end");
    return total;
}

/// As orva-decode reads it.
void ReadForDecoding(const test::MemoryFiles& memory, std::size_t capacity) {
    const std::size_t mostSamples = memory.files.at(kPath).size() / sizeof(std::int16_t);
    audio::WaveFileReader reader(memory.Platform());
    const audio::WaveFault fault = memory.isPipe ? reader.OpenStandardInput() : reader.Open(kPath);
    if (fault != audio::WaveFault::None) {
        Require(std::strcmp(audio::Describe(fault), "unknown fault") != 0, "each fault has a description");
        RequireClosed(reader);
        return;
    }
    Require(reader.GetSampleRate() > 0, "a recording has a sample rate");
    Require(!reader.IsCutShort(), "nothing is missing before the end");
    const std::size_t total = ReadAll(reader, capacity, mostSamples);
    Require(total > 0, "a recording without samples does not open");
    if (reader.IsUnfinished()) {
        Require(reader.GetPromisedSamples() == 0 && !reader.IsCutShort(),
                "an unfinished header promises nothing");
    } else {
        Require(reader.IsCutShort() == (total < reader.GetPromisedSamples()),
                "a recording is cut short if less was read than promised");
        Require(total <= reader.GetPromisedSamples(), "no more is read than promised");
    }
    reader.Close();
    RequireClosed(reader);
}

/// Reads from `position` on to the end of the file; returns the bytes passed.
std::uint32_t ReadFrom(audio::CtbWaveFile& file, std::uint32_t position, std::uint32_t capacity) {
    const std::uint32_t before = file.GetPositionBytes();
    const bool moved = file.Seek(position);
    const std::uint32_t start = file.GetPositionBytes();
    Require(start == (std::min(position, file.GetDataSize()) & ~1U),
            "it seeks to a sample, at most to the end");
    Require(moved == (start != before), "it tells whether it moved");
    std::vector<std::int16_t> block(capacity);
    while (const std::uint32_t count = file.Read(block.data(), capacity)) {
        Require(count <= capacity, "no more is read than there is room for");
    }
    return file.GetPositionBytes() - start;
}

/// As playback reads it.
void ReadForPlayback(const test::MemoryFiles& memory, std::uint32_t capacity) {
    const auto fileBytes = static_cast<std::uint32_t>(memory.files.at(kPath).size());
    audio::CtbWaveFile file(memory.Platform());
    const bool opened = memory.isPipe ? file.OpenStandardInput() : file.Open(kPath);
    Require(opened == file.IsOpen(), "it is open when it says so");
    Require(opened == (file.GetOpening() == audio::WaveOpening::Opened), "it knows what came of it");
    Require(file.GetBytesPerSecond() > 0 || file.GetDurationSeconds() == 0, "no rate, no duration");
    if (!opened) {
        Require(file.GetDataSize() == 0 && file.GetFileSize() == audio::CtbWaveFile::kNoFileSize,
                "a file that did not open has no size");
        return;
    }
    if (memory.isPipe) {
        return;
    }
    Require(file.IsIF(), "its name ends so");
    Require(file.GetFileSize() == fileBytes, "its size is the file's");
    Require(!file.Seek(0), "it begins at the first sample");
    const std::uint32_t whole = ReadFrom(file, 0, capacity);
    Require(whole <= fileBytes, "no more is read than there is in the file");
    for (const std::uint32_t position : {0U, 1U, file.GetDataSize() / 2, file.GetDataSize(), 0xFFFFFFFFU}) {
        const std::uint32_t rest = ReadFrom(file, position, capacity);
        const std::uint32_t start = std::min(position, file.GetDataSize()) & ~1U;
        Require(rest == whole - std::min(whole, start), "the samples stay where they are");
    }
    Require(file.Rewind() && file.GetPositionBytes() == 0, "it rewinds");
}

void Run(InputBytes input) {
    constexpr std::size_t kCapacities[] = {1, 2, 3, 64, 2400};
    const std::uint8_t choice = input.Byte();
    const std::size_t capacity = kCapacities[(choice & ~kIsPipe) % std::size(kCapacities)];
    test::MemoryFiles memory;
    memory.files[kPath].assign(input.Rest(), input.Rest() + input.Left());
    memory.standardInput = kPath;
    memory.isPipe = (choice & kIsPipe) != 0;
    ReadForDecoding(memory, capacity);
    ReadForPlayback(memory, static_cast<std::uint32_t>(capacity));
}

} // namespace

} // namespace orva::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    orva::fuzz::Run({data, size});
    return 0;
}
