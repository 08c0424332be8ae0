/// What recordings need of the platform: plain files, as a table of calls.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orva::audio {

/// A file as the platform knows it.
using FileHandle = std::intptr_t;

constexpr FileHandle kNoFile = -1;

/// The calls by which a recording reaches its file. Tests put files of theirs behind it.
///
/// Paths are bytes in the platform's own encoding: natively any, on Windows those of the ANSI code page. They
/// may be as long as the platform's file system allows, beyond 260 characters too.
struct FilePlatform {
    /// For reading from the start, while others may write. `kNoFile` when that fails, and for a folder.
    FileHandle (*openForReading)(const char* path);
    /// An empty file for writing, in place of any of that name. On Windows nobody else may open it.
    FileHandle (*create)(const char* path);
    /// What the process was given to read; `kNoFile` if nothing.
    FileHandle (*standardInput)();
    /// Bytes in the file; below 0 for what is no file, a pipe for instance, in which nothing can be sought.
    std::int64_t (*size)(FileHandle file);
    /// Moves to an offset from the start, beyond the end too.
    bool (*seek)(FileHandle file, std::uint64_t offset);
    /// Up to `count` bytes; returns how many, 0 at the end, below 0 after a failure.
    std::int64_t (*read)(FileHandle file, void* bytes, std::size_t count);
    /// Up to `count` bytes; returns how many, 0 or below after a failure.
    std::int64_t (*write)(FileHandle file, const void* bytes, std::size_t count);
    /// The path still leads to the file: neither was it deleted, nor a folder above it taken away.
    bool (*isInPlace)(FileHandle file, const char* path);
    /// False when the platform reports that something of the file was lost.
    bool (*close)(FileHandle file);
};

/// The platform's own calls.
const FilePlatform& SystemFiles();

} // namespace orva::audio
