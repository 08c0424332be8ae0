/// Recordings to be decoded from start to end, checked before the first sample.
#pragma once

#include "audio/CtbWaveFile.h"

#include <cstddef>
#include <cstdint>
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

/// Reads one recording after the other, each from its first sample to its last, and never past the end of
/// `data`. Unlike `CtbWaveFile`, which it reads by, it refuses what is not 16-bit mono PCM, and tells why.
/// Works on pipes: nothing is sought. A recording whose writer was cut off, with sizes of 0 or all ones in
/// its header, is read to its end.
class WaveFileReader {
public:
    /// \param files  calls to the platform; must outlive the object
    explicit WaveFileReader(const FilePlatform& files = SystemFiles()) : file(files) {}

    /// Opens `path`, in the platform's encoding, and reads up to the first sample.
    WaveFault Open(const std::string& path);

    /// The same from what the process was given to read.
    WaveFault OpenStandardInput();

    void Close();

    std::uint32_t GetSampleRate() const { return sampleRate; } ///< Hz, as the header says

    /// Samples that the header promises; 0 when it does not know.
    std::uint64_t GetPromisedSamples() const { return promisedBytes / sizeof(std::int16_t); }

    /// Reads up to `capacity` samples; returns how many there were, 0 at the end.
    std::size_t Read(std::int16_t* samples, std::size_t capacity);

    std::uint64_t GetReadSamples() const { return readSamples; }

    /// The header's sizes were never filled in: the writer did not get to close the file.
    bool IsUnfinished() const { return file.IsUnfinished(); }

    /// After the end: the file held fewer samples than its header promised.
    bool IsCutShort() const { return atEnd && readSamples < GetPromisedSamples(); }

private:
    WaveFault Check();
    WaveFault Fault() const;

    CtbWaveFile file;
    std::uint32_t sampleRate = 0;
    std::uint32_t promisedBytes = 0; ///< 0 of an unfinished recording
    std::uint64_t readSamples = 0;
    std::int16_t firstSample = 0; ///< read ahead, to know an empty recording before anything is done with it
    bool hasFirstSample = false;
    bool atEnd = false;
};

} // namespace orva::audio
