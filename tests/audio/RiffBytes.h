/// RIFF files put together chunk by chunk, well-formed or not.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace orva::test {

/// Bytes in little-endian order.
class LittleEndianBytes {
public:
    LittleEndianBytes& Text(std::string_view text) {
        bytes.insert(bytes.end(), text.begin(), text.end());
        return *this;
    }
    LittleEndianBytes& Number(std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
        }
        return *this;
    }
    LittleEndianBytes& Raw(const std::vector<std::uint8_t>& more) {
        bytes.insert(bytes.end(), more.begin(), more.end());
        return *this;
    }
    const std::vector<std::uint8_t>& Bytes() const { return bytes; }

private:
    std::vector<std::uint8_t> bytes;
};

/// What a `fmt ` chunk says; as made it is what the reader wants.
struct WaveFormat {
    std::uint16_t tag = 1;
    std::uint16_t channels = 1;
    std::uint32_t rate = 48000;
    std::uint16_t bits = 16;
    std::uint16_t subFormat = 1; ///< of the 40-byte form
};

constexpr std::uint16_t kExtensibleTag = 0xFFFE;

/// The contents of a `fmt ` chunk of 16, 18 or 40 bytes.
inline std::vector<std::uint8_t> FormatBytes(std::size_t size, const WaveFormat& format = {}) {
    const auto blockAlign = static_cast<std::uint32_t>(format.channels * format.bits / 8);
    LittleEndianBytes bytes;
    bytes.Number(format.tag, 2).Number(format.channels, 2).Number(format.rate, 4);
    bytes.Number(format.rate * blockAlign, 4).Number(blockAlign, 2).Number(format.bits, 2);
    if (size > 16) {
        bytes.Number(static_cast<std::uint32_t>(size - 18), 2);
    }
    if (size == 40) {
        bytes.Number(format.bits, 2).Number(4, 4).Number(format.subFormat, 2);
        bytes.Text(std::string_view("\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 14));
    }
    return bytes.Bytes();
}

inline std::vector<std::uint8_t> SampleBytes(std::span<const std::int16_t> samples) {
    LittleEndianBytes bytes;
    for (const std::int16_t sample : samples) {
        bytes.Number(static_cast<std::uint16_t>(sample), 2);
    }
    return bytes.Bytes();
}

/// A RIFF WAVE file under construction.
class RiffBytes {
public:
    /// Appends a chunk, padded to an even length. Its size field says what `contents` has.
    RiffBytes& Chunk(std::string_view id, const std::vector<std::uint8_t>& contents) {
        ChunkOfSize(id, static_cast<std::uint32_t>(contents.size()), contents);
        if (contents.size() % 2 != 0) {
            chunks.Number(0, 1);
        }
        return *this;
    }

    /// Appends a chunk whose size field says `size`, without padding.
    RiffBytes& ChunkOfSize(std::string_view id, std::uint32_t size,
                           const std::vector<std::uint8_t>& contents) {
        chunks.Text(id).Number(size, 4).Raw(contents);
        return *this;
    }

    /// The file, its RIFF size field right.
    std::vector<std::uint8_t> Bytes() const {
        return BytesOfSize(static_cast<std::uint32_t>(chunks.Bytes().size() + 4));
    }

    /// The file, its RIFF size field as given.
    std::vector<std::uint8_t> BytesOfSize(std::uint32_t size) const {
        return LittleEndianBytes().Text("RIFF").Number(size, 4).Text("WAVE").Raw(chunks.Bytes()).Bytes();
    }

private:
    LittleEndianBytes chunks;
};

} // namespace orva::test
