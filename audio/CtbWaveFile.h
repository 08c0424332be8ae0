/// Recordings: RIFF WAVE files of 16-bit PCM, read or written.
#pragma once

#include "audio/RiffFile.h"
#include "dsp/CtbSampleBlock.h"
#include "toolkit/TmyString.h"

#include <cstdint>

namespace orva::audio {

/// The contents of a `fmt ` chunk, as they lie in the file.
#pragma pack(push, 1)
struct WaveFormatRecord {
    std::uint16_t formatTag = 0; ///< 1: PCM
    std::uint16_t channels = 0;
    std::uint32_t samplesPerSecond = 0;
    std::uint32_t bytesPerSecond = 0;
    std::uint16_t blockAlignment = 0; ///< bytes of one sample of each channel
    std::uint16_t bitsPerSample = 0;
    std::uint16_t extraSize = 0; ///< of what an extended format has behind these fields
};
#pragma pack(pop)
static_assert(sizeof(WaveFormatRecord) == 18);

/// Where opening a recording for reading came to.
enum class WaveOpening {
    Opened,
    CannotOpen,
    Empty,           ///< the file has no byte in it
    NotWave,         ///< no RIFF chunk of form WAVE
    NoFormat,        ///< no `fmt ` chunk, or one cut short
    CutShort,        ///< the file ends inside a chunk before the samples
    NoData,          ///< no `data` chunk
    DataBeforeFormat ///< the only `data` chunk is before the `fmt ` chunk
};

/// One recording, read or written.
///
/// | state   | is left by                                                    |
/// |---------|---------------------------------------------------------------|
/// | closed  | `Open`, to reading; `Create`, to writing                      |
/// | reading | `Close`; `Open` and `Create`, which close first               |
/// | writing | `Close`, which completes the header; `Open`, `Create` as well |
///
/// A recording of an intermediate frequency differs from one of audio by its name alone, which ends in ".if"
/// before the last extension. While a recording is written the sizes in its header are 0: a process that is
/// killed leaves it so, with all samples but those of the last `BufferedFile::kBufferBytes`.
///
/// All calls on one thread. Nothing is allocated between opening and closing. No call throws.
class CtbWaveFile {
public:
    static constexpr std::uint32_t kMaxFileSize = 2000000000; ///< [bytes] limit of a recording, unless set
    static constexpr std::uint32_t kNoFileSize = 0xFFFFFFFF;  ///< file size after a close

    /// \param files  calls to the platform; must outlive the object
    explicit CtbWaveFile(const FilePlatform& files = SystemFiles()) : file(files) {}
    CtbWaveFile(const CtbWaveFile&) = delete;
    CtbWaveFile& operator=(const CtbWaveFile&) = delete;
    ~CtbWaveFile() { Close(); }

    /// Opens for reading and stands at the first sample. The format's values are not checked.
    ///
    /// \param newPath  full path; null for the path of the last opening or creation
    /// \return false when there is no such file or no recording in it; the object is then closed
    bool Open(const char* newPath);

    /// The same from what the process was given to read. No position before the present one can be sought in
    /// it, it has no size, and path and name stay what they were.
    bool OpenStandardInput();

    /// What the last `Open` came to.
    [[nodiscard]] WaveOpening GetOpening() const { return opening; }

    /// Creates a file for writing, in place of any of that name.
    ///
    /// \param newPath     full path
    /// \param sampleRate  [Hz]
    /// \return false without a path, and if the file or its header could not be written
    bool Create(const char* newPath, std::uint32_t sampleRate);

    /// Completes the header of a file that was written, and closes. Path, name and format stay.
    ///
    /// \return false if something of what `Write` was given is not in the file, or the file no longer under
    ///         its path; true without an open file
    bool Close();

    [[nodiscard]] bool IsOpen() const { return file.IsOpen(); }
    [[nodiscard]] bool IsWriting() const { return writing; }
    /// By its name the open file is a recording of an intermediate frequency.
    [[nodiscard]] bool IsIF() const { return isIF; }
    /// Full path of the last opening or creation.
    [[nodiscard]] const toolkit::TmyString& GetPath() const { return path; }
    /// Name without folder and without its last extension.
    [[nodiscard]] const toolkit::TmyString& GetFileName() const { return fileName; }

    [[nodiscard]] std::uint32_t GetSampleRate() const { return format.samplesPerSecond; } ///< [Hz], may be 0
    [[nodiscard]] std::uint32_t GetChannels() const { return format.channels; }
    [[nodiscard]] std::uint32_t GetBitsPerSample() const { return format.bitsPerSample; }
    [[nodiscard]] std::uint32_t GetBytesPerSecond() const { return format.bytesPerSecond; } ///< may be 0
    /// The format tag; of an extensible format, the one that its sub-format stands for.
    [[nodiscard]] std::uint32_t GetFormatTag() const;
    /// Bytes in the `fmt ` chunk of the file read, as it says.
    [[nodiscard]] std::uint32_t GetFormatSize() const { return formatSize; }

    /// Reading: bytes in the file, modulo 2^32. Writing: bytes written, header included. `kNoFileSize` once
    /// closed.
    [[nodiscard]] std::uint32_t GetFileSize() const { return fileSize; }
    /// Bytes of samples; reading, as the header says.
    [[nodiscard]] std::uint32_t GetDataSize() const { return dataSize; }
    [[nodiscard]] std::uint32_t GetDurationSeconds() const { return Seconds(dataSize); }
    /// Bytes from the first sample to the next one read. Stays 0 while writing.
    [[nodiscard]] std::uint32_t GetPositionBytes() const { return dataPosition; }
    [[nodiscard]] std::uint32_t GetPositionSeconds() const { return Seconds(dataPosition); }

    /// The file read was never completed: its header does not tell how many samples there are, since its
    /// writer was killed or wrote into a pipe. They go on to the end of the file.
    [[nodiscard]] bool IsUnfinished() const { return isUnfinished; }

    /// Moves to a byte of the samples, at most to their end, rounded down to a whole sample.
    ///
    /// \return whether the position moved; false while writing, and without a file, where it is only stored
    bool Seek(std::uint32_t position);

    /// Back to the first sample.
    ///
    /// \return false while writing, and without a file
    bool Rewind();

    /// Reads samples. Goes on behind the last one to the end of the file, whatever is there.
    ///
    /// \param buffer   room for `samples`
    /// \return samples read; 0 at the end, without buffer or file, and while writing
    std::uint32_t Read(std::int16_t* buffer, std::uint32_t samples);

    /// As `Read`, as many samples as the block has room for; its used count becomes the number read.
    std::uint32_t ReadBlock(dsp::CtbSampleBlock& block);

    /// Appends samples, unless the file has reached its limit; it may pass that by the length of one write.
    ///
    /// \return false when it has, when not all could be written, and when not writing; the recording is at
    ///         its end then, and is to be closed
    bool Write(const std::int16_t* buffer, std::uint32_t samples);

    /// \param bytes  file size at which `Write` refuses; 0 for none
    void SetMaxFileSize(std::uint32_t bytes) { maxFileSize = bytes; }

private:
    bool OpenFile(const char* newPath, bool (RiffFile::*open)(const char*));
    bool FinishOpening(WaveOpening result);
    WaveOpening OpenChunks();
    WaveOpening ReadFormat();
    WaveOpening OpenData(std::uint32_t riffSize);
    bool CreateChunks(std::uint32_t sampleRate);
    bool FinishChunks();
    bool WriteBytes(const void* bytes, std::uint64_t count);
    void ForgetFile();
    [[nodiscard]] std::uint32_t Seconds(std::uint32_t bytes) const;

    toolkit::TmyString path;
    toolkit::TmyString fileName;
    std::uint32_t fileSize = 0;
    RiffFile file;
    WaveFormatRecord format;
    std::uint32_t dataSize = 0;
    std::int32_t dataStart = -1;
    bool isIF = false;
    std::uint32_t dataPosition = 0;
    bool writing = false;
    RiffChunk riffChunk; ///< writing
    RiffChunk dataChunk; ///< writing
    std::uint32_t maxFileSize = kMaxFileSize;

    WaveOpening opening = WaveOpening::CannotOpen;
    std::uint32_t formatSize = 0;
    std::uint16_t subFormat = 0; ///< of an extensible format
    bool isUnfinished = false;
    bool hasLostSamples = false; ///< a write was refused, or failed
};

} // namespace orva::audio
