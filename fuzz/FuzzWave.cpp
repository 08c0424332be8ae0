/// Any bytes as a WAV file. Byte 0 chooses how many samples are read at a time, the rest is the file.
#include "audio/WaveFileReader.h"
#include "fuzz/InputBytes.h"
#include "fuzz/Require.h"

#include <cstdio>
#include <cstring>
#include <vector>

namespace orva::fuzz {

namespace {

/// A stream over a copy of the bytes; null when there are none.
std::FILE* OpenMemory(std::vector<char>& bytes) {
    return bytes.empty() ? nullptr : fmemopen(bytes.data(), bytes.size(), "rb");
}

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

void Run(InputBytes input) {
    constexpr std::size_t kCapacities[] = {1, 2, 3, 64, 2400};
    const std::size_t capacity = kCapacities[input.Byte() % std::size(kCapacities)];
    std::vector<char> bytes(input.Left());
    if (!bytes.empty()) {
        std::memcpy(bytes.data(), input.Rest(), bytes.size());
    }

    audio::WaveFileReader reader;
    const audio::WaveFault fault = reader.Open(OpenMemory(bytes));
    if (fault != audio::WaveFault::None) {
        Require(std::strcmp(audio::Describe(fault), "unknown fault") != 0, "each fault has a description");
        RequireClosed(reader);
        return;
    }
    Require(reader.GetSampleRate() > 0, "a recording has a sample rate");
    Require(!reader.IsCutShort(), "nothing is missing before the end");
    const std::size_t total = ReadAll(reader, capacity, bytes.size() / sizeof(std::int16_t));
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

} // namespace

} // namespace orva::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    orva::fuzz::Run({data, size});
    return 0;
}
