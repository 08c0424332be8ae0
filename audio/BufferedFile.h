/// A file that is read or written through a buffer.
#pragma once

#include "audio/FilePlatform.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace orva::audio {

/// One file, read or written, in which any place can be sought. A process that is killed loses no more of
/// what it wrote than the buffer holds.
///
/// Nothing is allocated once the file is open. Used by one thread at a time.
class BufferedFile {
public:
    /// Eight reads or writes a second at 64000 samples a second, and half a second of decoded audio.
    static constexpr std::size_t kBufferBytes = 16384;

    /// \param files  calls to the platform; must outlive the object
    explicit BufferedFile(const FilePlatform& files) : platform(&files) {}
    BufferedFile(const BufferedFile&) = delete;
    BufferedFile& operator=(const BufferedFile&) = delete;
    ~BufferedFile() { Close(); }

    /// Each first closes what is open. Without memory for the path they throw std::bad_alloc.
    ///
    /// \return false if the platform refuses
    bool OpenForReading(const char* existingPath);
    bool Create(const char* newPath);
    /// Reads what the process was given; only places further on can be sought in it.
    bool OpenStandardInput();

    /// Writes what the buffer holds, and closes the file.
    /// \return false if something could not be written; true without a file
    bool Close();

    [[nodiscard]] bool IsOpen() const { return file != kNoFile; }

    /// Bytes in the file when it was opened for reading; below 0 if that cannot be told, as of a pipe.
    [[nodiscard]] std::int64_t GetSize() const { return bytesInFile; }

    /// Offset of the next byte read or written.
    [[nodiscard]] std::uint64_t GetPosition() const { return IsWriting() ? origin + length : position; }

    /// Moves there, beyond the end too; reading then gives nothing.
    /// \return false without a file, and if what the buffer holds cannot be written
    bool Seek(std::uint64_t offset);

    /// \return bytes read; fewer than `count` at the end of the file, after a failure, and while writing
    std::size_t Read(void* bytes, std::size_t count);

    /// \return bytes taken; fewer than `count` once the platform takes no more, when the path no longer leads
    /// to the file, and while reading. The buffer keeps what it took for the next attempt.
    std::size_t Write(const void* bytes, std::size_t count);

    /// Gives the platform what the buffer holds.
    /// \return false if it does not take all, and when the path no longer leads to the file
    bool Flush();

    /// Forgets what the buffer holds: the position is then the end of what the platform took.
    void DropUnwritten();

private:
    enum class Mode { Closed, Reading, Writing };

    [[nodiscard]] bool IsWriting() const { return mode == Mode::Writing; }
    bool Start(FileHandle opened, Mode how);
    bool Fill();

    const FilePlatform* platform;
    FileHandle file = kNoFile;
    Mode mode = Mode::Closed;
    std::int64_t bytesInFile = -1;
    bool canSeek = false;
    bool isWatched = false; ///< writing: `path` led to the file when it was made
    std::string path;
    bool isBorrowed = false;
    std::uint64_t position = 0; ///< reading: offset of the next byte
    std::uint64_t origin = 0;   ///< offset of the buffer's first byte
    std::size_t length = 0;     ///< bytes in the buffer
    std::array<std::uint8_t, kBufferBytes> buffer{};
};

} // namespace orva::audio
