/// Files made of chunks, as RIFF arranges them.
#pragma once

#include "audio/BufferedFile.h"

#include <cstdint>
#include <string_view>

namespace orva::audio {

/// Four characters that name a chunk, or what is in a RIFF chunk: as a number, the first lowest.
constexpr std::uint32_t FourCharacters(std::string_view name) {
    std::uint32_t code = 0;
    for (int i = 3; i >= 0; --i) {
        code = code << 8 | static_cast<std::uint8_t>(name[static_cast<std::size_t>(i)]);
    }
    return code;
}

constexpr std::uint32_t kRiffId = FourCharacters("RIFF");

/// A chunk that was found or made.
struct RiffChunk {
    std::uint32_t id = 0;
    std::uint32_t size = 0;       ///< bytes of contents, as the file says; a form type counts as contents
    std::uint32_t form = 0;       ///< form type; 0 in a chunk that has none
    std::uint64_t dataOffset = 0; ///< of the first byte of contents, the form type if there is one
    bool isBeingMade = false;     ///< made here, and not yet ascended from
};

/// How a search for a chunk ended.
enum class RiffSearch {
    Found,
    NotThere,   ///< the file ends between two chunks, or inside the header of one
    HeaderCut,  ///< the file ends inside the header of the chunk searched for
    ContentsCut ///< the file ends inside the contents of another chunk, as its size says
};

/// A file of chunks, read or written.
///
/// A search goes from chunk to chunk up to the end of the file. It does not mind where the chunk around them
/// ends: a writer that was cut off, or wrote into a pipe, has left any size there. Offsets are 64 bits wide,
/// so that a size leads forward whatever its value, and only so many chunks are looked at.
class RiffFile : public BufferedFile {
public:
    /// A file of zeros would otherwise be a file of one empty chunk every eight bytes.
    static constexpr int kMostChunks = 65536;

    using BufferedFile::BufferedFile;

    /// Searches from the present position for a chunk `id`; with a form other than 0, for one of that form.
    /// Once it is found the position is the first byte of its contents, behind the form type.
    RiffSearch Descend(RiffChunk& chunk, std::uint32_t id, std::uint32_t form = 0);

    /// Of a chunk that was found, moves behind it and its pad byte. Of one being made, writes the size that
    /// it has come to and moves behind it; what cannot be written is left out of the size. Of no chunk at
    /// all, does nothing.
    ///
    /// \return false if the file ends inside the chunk, and if something could not be written
    bool Ascend(RiffChunk& chunk);

    /// Writes the header of a chunk at the present position.
    ///
    /// \param size  bytes of contents; written again by `Ascend` if it has come to another one
    /// \param form  form type; 0 for a chunk that has none
    /// \return false if it could not be written
    bool CreateChunk(RiffChunk& chunk, std::uint32_t id, std::uint32_t size, std::uint32_t form = 0);

private:
    bool EndsBefore(std::uint64_t offset);
    bool FinishChunk(RiffChunk& chunk);
};

} // namespace orva::audio
