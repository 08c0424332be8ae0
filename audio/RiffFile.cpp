#include "audio/RiffFile.h"

#include <array>
#include <bit>

namespace orva::audio {

namespace {

static_assert(std::endian::native == std::endian::little,
              "numbers are read and written as they lie in memory");

constexpr std::uint32_t kHeaderBytes = 8; ///< name and size
constexpr std::uint32_t kSizeBytes = 4;
constexpr std::uint32_t kFormBytes = 4;

/// Offset behind a chunk: contents are padded to an even length, which the size does not tell.
std::uint64_t EndOf(const RiffChunk& chunk) {
    return chunk.dataOffset + chunk.size + (chunk.size & 1U);
}

} // namespace

RiffSearch RiffFile::Descend(RiffChunk& chunk, std::uint32_t id, std::uint32_t form) {
    for (int looked = 0; looked < kMostChunks; ++looked) {
        std::array<std::uint32_t, 2> header; // as in the file
        if (Read(header.data(), kHeaderBytes) < kHeaderBytes) {
            return RiffSearch::NotThere;
        }
        chunk = {.id = header[0], .size = header[1], .dataOffset = GetPosition()};
        if (chunk.id == id) {
            if (form == 0) {
                return RiffSearch::Found;
            }
            if (Read(&chunk.form, kFormBytes) < kFormBytes) {
                return RiffSearch::HeaderCut;
            }
            if (chunk.form == form) {
                return RiffSearch::Found;
            }
        }
        if (EndsBefore(chunk.dataOffset + chunk.size)) {
            return RiffSearch::ContentsCut;
        }
        Seek(EndOf(chunk));
    }
    return RiffSearch::NotThere;
}

/// Whether the file has no byte before `offset`. In a pipe that is known once the byte has come.
bool RiffFile::EndsBefore(std::uint64_t offset) {
    if (GetSize() >= 0) {
        return offset > static_cast<std::uint64_t>(GetSize());
    }
    std::uint8_t last;
    return offset > GetPosition() && Seek(offset - 1) && Read(&last, sizeof(last)) == 0;
}

bool RiffFile::Ascend(RiffChunk& chunk) {
    if (chunk.isBeingMade) {
        return FinishChunk(chunk);
    }
    return chunk.dataOffset == 0 || (!EndsBefore(chunk.dataOffset + chunk.size) && Seek(EndOf(chunk)));
}

bool RiffFile::FinishChunk(RiffChunk& chunk) {
    chunk.isBeingMade = false;
    if (GetPosition() == chunk.dataOffset + chunk.size && chunk.size % 2 == 0) {
        return true;
    }
    bool whole = Flush();
    DropUnwritten();
    chunk.size = static_cast<std::uint32_t>(GetPosition() - chunk.dataOffset);
    const std::uint64_t end = GetPosition();
    whole = Seek(chunk.dataOffset - kSizeBytes) && Write(&chunk.size, kSizeBytes) == kSizeBytes && whole;
    whole = Seek(end) && whole;
    constexpr std::uint8_t kPad = 0;
    return (chunk.size % 2 == 0 || Write(&kPad, sizeof(kPad)) == sizeof(kPad)) && whole;
}

bool RiffFile::CreateChunk(RiffChunk& chunk, std::uint32_t id, std::uint32_t size, std::uint32_t form) {
    chunk = {.id = id,
             .size = size,
             .form = form,
             .dataOffset = GetPosition() + kHeaderBytes,
             .isBeingMade = true};
    const std::array<std::uint32_t, 3> header = {id, size, form};
    const std::uint32_t count = form == 0 ? kHeaderBytes : kHeaderBytes + kFormBytes;
    return Write(header.data(), count) == count;
}

} // namespace orva::audio
