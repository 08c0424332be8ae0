/// Reads recordings: RIFF WAVE files of 16-bit PCM, from start to end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace orva::audio {

/// Why a file cannot be read as a recording.
enum class WaveFault {
    None,
    CannotOpen,
    NotWave,        ///< no RIFF WAVE header, or no `fmt ` before `data`
    NotPcm,         ///< compressed or floating point samples
    NotMono,        ///< more than one channel
    NotSixteenBit,  ///< other than 16 bits a sample
    HeaderCutShort, ///< the file ends inside its header
    NoSamples,      ///< no `data` chunk, nothing in it, or nothing in the file at all
};

/// One clear phrase for a person, without the file's name.
const char* Describe(WaveFault fault);

/// Sequential reader. Takes `fmt ` chunks of 16 bytes and more, extensible ones included, skips unknown
/// chunks before the samples, and never reads past the end of `data`. Works on pipes: nothing is sought.
/// Closes its file when destroyed. A recording whose writer was cut off, with sizes of 0 or all ones in its
/// header, is read to its end.
class WaveFileReader {
public:
    WaveFileReader() = default;
    ~WaveFileReader() { Close(); }
    WaveFileReader(const WaveFileReader&) = delete;
    WaveFileReader& operator=(const WaveFileReader&) = delete;

    /// Opens `path` (UTF-8 natively, the ANSI code page on Windows) and reads up to the first sample.
    WaveFault Open(const std::string& path);

    /// The same from an open binary stream, which the reader takes over.
    WaveFault Open(std::FILE* stream);

    void Close();

    std::uint32_t GetSampleRate() const { return sampleRate; } ///< Hz, as the header says

    /// Samples that the header promises; 0 when it does not know.
    std::uint64_t GetPromisedSamples() const {
        return isUnfinished ? 0 : promisedBytes / sizeof(std::int16_t);
    }

    /// Reads up to `capacity` samples; returns how many there were, 0 at the end.
    std::size_t Read(std::int16_t* samples, std::size_t capacity);

    std::uint64_t GetReadSamples() const { return readBytes / sizeof(std::int16_t); }

    /// The header's sizes were never filled in: the writer did not get to close the file.
    bool IsUnfinished() const { return isUnfinished; }

    /// After the end: the file held fewer samples than its header promised.
    bool IsCutShort() const { return !isUnfinished && atEnd && readBytes + 1 < promisedBytes; }

private:
    struct ChunkHeader {
        char id[4];
        std::uint32_t size;
    };

    bool IsAtEndOfFile();
    bool ReadBytes(void* bytes, std::size_t count);
    bool ReadChunkHeader(ChunkHeader& header);
    bool Skip(std::uint64_t count);
    WaveFault ReadHeader();
    WaveFault ReadFormat(std::uint32_t size);
    WaveFault StartData(std::uint32_t size, std::uint32_t riffSize);

    std::FILE* file = nullptr;
    std::uint32_t sampleRate = 0;
    std::uint64_t promisedBytes = 0;
    std::uint64_t readBytes = 0;
    std::int16_t firstSample = 0; ///< read ahead, to know an empty recording before anything is done with it
    bool hasFirstSample = false;
    bool isUnfinished = false;
    bool atEnd = false;
};

} // namespace orva::audio
