#include "audio/WaveFileReader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace orva::audio {

namespace {

static_assert(std::endian::native == std::endian::little, "samples are read as they lie in the file");

constexpr std::uint32_t kMinFormatSize = 16;
constexpr std::uint32_t kExtensibleFormatSize = 26; ///< up to and with the sub-format's first two bytes
constexpr std::uint16_t kFormatPcm = 1;
constexpr std::uint16_t kFormatExtensible = 0xFFFE;
constexpr std::uint16_t kBitsPerSample = 16;
constexpr std::uint32_t kUnknownSize = 0xFFFFFFFF;

bool HasId(const char* id, const char* expected) {
    return std::memcmp(id, expected, 4) == 0;
}

std::uint16_t Word(const std::uint8_t* bytes) {
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

std::uint32_t DoubleWord(const std::uint8_t* bytes) {
    return Word(bytes) | static_cast<std::uint32_t>(Word(bytes + 2)) << 16;
}

} // namespace

const char* Describe(WaveFault fault) {
    switch (fault) {
    case WaveFault::None:
        return "no fault";
    case WaveFault::CannotOpen:
        return "cannot be opened";
    case WaveFault::NotWave:
        return "is not a WAV file";
    case WaveFault::NotPcm:
        return "does not hold plain PCM samples";
    case WaveFault::NotMono:
        return "has more than one channel; a mono recording is needed";
    case WaveFault::NotSixteenBit:
        return "does not have 16 bits a sample";
    case WaveFault::HeaderCutShort:
        return "is cut short inside its header";
    case WaveFault::NoSamples:
        return "is empty: there are no samples in it";
    }
    return "unknown fault";
}

WaveFault WaveFileReader::Open(const std::string& path) {
    return Open(std::fopen(path.c_str(), "rb"));
}

WaveFault WaveFileReader::Open(std::FILE* stream) {
    Close();
    if (stream == nullptr) {
        return WaveFault::CannotOpen;
    }
    file = stream;
    const WaveFault fault = ReadHeader();
    if (fault != WaveFault::None) {
        Close();
    }
    return fault;
}

void WaveFileReader::Close() {
    if (file != nullptr) {
        std::fclose(file);
        file = nullptr;
    }
    sampleRate = 0;
    promisedBytes = readBytes = 0;
    hasFirstSample = isUnfinished = atEnd = false;
}

bool WaveFileReader::IsAtEndOfFile() {
    const int next = std::fgetc(file);
    return next == EOF || std::ungetc(next, file) == EOF;
}

bool WaveFileReader::ReadBytes(void* bytes, std::size_t count) {
    return std::fread(bytes, 1, count, file) == count;
}

bool WaveFileReader::ReadChunkHeader(ChunkHeader& header) {
    std::uint8_t size[4];
    if (!ReadBytes(header.id, sizeof(header.id)) || !ReadBytes(size, sizeof(size))) {
        return false;
    }
    header.size = DoubleWord(size);
    return true;
}

bool WaveFileReader::Skip(std::uint64_t count) {
    std::array<char, 512> ignored;
    while (count > 0) {
        const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(count, ignored.size()));
        if (!ReadBytes(ignored.data(), part)) {
            return false;
        }
        count -= part;
    }
    return true;
}

WaveFault WaveFileReader::ReadHeader() {
    ChunkHeader riff;
    char form[4];
    if (IsAtEndOfFile()) {
        return std::ferror(file) != 0 ? WaveFault::CannotOpen : WaveFault::NoSamples;
    }
    if (!ReadChunkHeader(riff) || !HasId(riff.id, "RIFF")) {
        return WaveFault::NotWave;
    }
    if (!ReadBytes(form, sizeof(form))) {
        return WaveFault::HeaderCutShort;
    }
    if (!HasId(form, "WAVE")) {
        return WaveFault::NotWave;
    }
    for (ChunkHeader chunk; ReadChunkHeader(chunk);) {
        if (HasId(chunk.id, "data")) {
            return sampleRate == 0 ? WaveFault::NotWave : StartData(chunk.size, riff.size);
        }
        // Chunks are padded to an even length; the size does not count the pad byte.
        const std::uint64_t padded = std::uint64_t{chunk.size} + (chunk.size & 1U);
        if (!HasId(chunk.id, "fmt ") || sampleRate != 0) {
            if (!Skip(padded)) {
                return WaveFault::HeaderCutShort;
            }
            continue;
        }
        const WaveFault fault = ReadFormat(chunk.size);
        if (fault != WaveFault::None) {
            return fault;
        }
    }
    return sampleRate == 0 ? WaveFault::HeaderCutShort : WaveFault::NoSamples;
}

/// Reads a whole `fmt ` chunk, whatever its size.
WaveFault WaveFileReader::ReadFormat(std::uint32_t size) {
    std::uint8_t format[kExtensibleFormatSize] = {};
    if (size < kMinFormatSize) {
        return WaveFault::NotWave;
    }
    const std::uint32_t known = std::min(size, kExtensibleFormatSize);
    if (!ReadBytes(format, known) || !Skip(std::uint64_t{size} - known + (size & 1U))) {
        return WaveFault::HeaderCutShort;
    }
    std::uint16_t tag = Word(format);
    if (tag == kFormatExtensible && size >= kExtensibleFormatSize) {
        tag = Word(format + 24); // the sub-format's first bytes are a format tag
    }
    if (tag != kFormatPcm) {
        return WaveFault::NotPcm;
    }
    if (Word(format + 2) != 1) {
        return WaveFault::NotMono;
    }
    if (Word(format + 14) != kBitsPerSample) {
        return WaveFault::NotSixteenBit;
    }
    sampleRate = DoubleWord(format + 4);
    return sampleRate == 0 ? WaveFault::NotWave : WaveFault::None;
}

WaveFault WaveFileReader::StartData(std::uint32_t size, std::uint32_t riffSize) {
    // A recorder that writes to a pipe leaves all ones; one that was cut off, zeros in both sizes.
    isUnfinished = size == kUnknownSize || (size == 0 && riffSize == 0);
    promisedBytes = size;
    if (!isUnfinished && size < sizeof(firstSample)) {
        return WaveFault::NoSamples;
    }
    hasFirstSample = ReadBytes(&firstSample, sizeof(firstSample));
    return hasFirstSample ? WaveFault::None : WaveFault::NoSamples;
}

std::size_t WaveFileReader::Read(std::int16_t* samples, std::size_t capacity) {
    if (file == nullptr || samples == nullptr || capacity == 0 || atEnd) {
        return 0;
    }
    std::uint64_t wanted = capacity;
    if (!isUnfinished) {
        wanted = std::min<std::uint64_t>(wanted, (promisedBytes - readBytes) / sizeof(std::int16_t));
    }
    std::size_t count = 0;
    if (hasFirstSample && wanted > 0) {
        samples[count++] = firstSample;
        hasFirstSample = false;
    }
    if (wanted > count) {
        count +=
            std::fread(samples + count, sizeof(std::int16_t), static_cast<std::size_t>(wanted) - count, file);
    }
    readBytes += count * sizeof(std::int16_t);
    atEnd = count < capacity;
    return count;
}

} // namespace orva::audio
