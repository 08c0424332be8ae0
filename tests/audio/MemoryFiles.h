/// Files in memory, and a disk that can fail in every way.
#pragma once

#include "audio/FilePlatform.h"

#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace orva::test {

/// A platform whose files lie in memory. Behaves as the real ones do, and can be told to misbehave. One at a
/// time exists.
class MemoryFiles {
public:
    using Bytes = std::vector<std::uint8_t>;
    static constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

    MemoryFiles();
    ~MemoryFiles();
    MemoryFiles(const MemoryFiles&) = delete;
    MemoryFiles& operator=(const MemoryFiles&) = delete;

    [[nodiscard]] const audio::FilePlatform& Platform() const;

    /// The samples of a recording, its sizes 0 or not, behind a header of 46 bytes.
    [[nodiscard]] Bytes Samples(const std::string& path) const;

    std::map<std::string, Bytes> files; ///< by path; a file written lies here at once

    // How the platform behaves.

    std::uint64_t capacity = kUnlimited; ///< bytes that one file may have: the disk is full then
    std::uint64_t kept = kUnlimited;     ///< bytes of a file that are kept; the rest is only counted
    std::size_t mostPerCall = 1 << 30;   ///< bytes that one read or write moves
    std::string standardInput;           ///< path of what the process was given; empty: nothing
    bool isPipe = false;                 ///< what is opened has no size, and nothing can be sought in it
    bool refusesToOpen = false;
    bool refusesToSeek = false;
    bool refusesToRead = false;
    bool refusesToClose = false; ///< closes, but says that something was lost
    bool isGone = false;         ///< the disk was pulled out: every call fails
    bool isMoved = false;        ///< paths no longer lead to what is open

    // What the platform saw.

    int opened = 0; ///< files opened and created
    int closed = 0;
    int reads = 0;
    int writes = 0;
    int seeks = 0;
    std::uint64_t written = 0; ///< bytes taken
};

} // namespace orva::test
