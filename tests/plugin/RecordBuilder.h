/// Receiver records as a host makes them: a header and packed sections in one block.
#pragma once

#include "plugin/HostInterface.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace orva::test {

/// One of the thirteen sections, told independently of the code under test.
struct RecordSection {
    std::size_t pointerOffset;
    std::uint32_t size;          ///< bytes that this builder gives it
    std::size_t countOffset = 0; ///< where the number of entries stands, if it has one
    std::uint32_t count = 0;     ///< that number
    bool isSelfSized = false;    ///< its first u32 is its length
};

/// In the order of their pointers. The self-sized ones have odd lengths, so that what follows is unaligned.
constexpr std::array<RecordSection, 13> kRecordSections = {{
    {172, 24},
    {184, 28},
    {188, 16},
    {196, 37, 0, 0, true},
    {224, 36, 220, 3},
    {236, 84, 228, 3},
    {264, 24},
    {308, 96},
    {316, 5, 0, 0, true},
    {324, 24, 320, 2},
    {336, 20, 328, 1},
    {360, 12},
    {384, 96},
}};
constexpr std::size_t kModeSection = 5;
constexpr std::uint32_t kAllSections = (1U << kRecordSections.size()) - 1;

/// The low half of an address, as records hold it.
inline std::uint32_t Address32(const void* place) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(place));
}

inline std::uint32_t Field32(const void* block, std::size_t offset) {
    std::uint32_t value = 0;
    std::memcpy(&value, static_cast<const std::uint8_t*>(block) + offset, sizeof(value));
    return value;
}

/// A record in a heap block of its exact size. Every byte that has no other meaning is different from its
/// neighbours, so that misplaced copies show.
class RecordBuilder {
public:
    /// `present`: bit i for section i of `kRecordSections`.
    explicit RecordBuilder(std::uint32_t present, std::uint32_t headerSize = 400) {
        std::size_t size = 400;
        for (std::size_t i = 0; i < kRecordSections.size(); ++i) {
            size += (present >> i & 1) != 0 ? kRecordSections[i].size : 0;
        }
        bytes.resize(size);
        for (std::size_t i = 0; i < size; ++i) {
            bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 256 + 1);
        }
        Set(0, static_cast<std::uint32_t>(size));
        Set(4, headerSize);
        SetText(44, "K7USB receiver", 32);
        SetText(76, "A1234567", 9);
        std::size_t place = 400;
        for (std::size_t i = 0; i < kRecordSections.size(); ++i) {
            const RecordSection& section = kRecordSections[i];
            const bool isPresent = (present >> i & 1) != 0;
            Set(section.pointerOffset,
                isPresent ? Address32(bytes.data()) + static_cast<std::uint32_t>(place) : 0);
            if (section.countOffset != 0) {
                Set(section.countOffset, isPresent ? section.count : 0);
            }
            if (isPresent) {
                if (section.isSelfSized) {
                    Set(place, section.size);
                }
                place += section.size;
            }
        }
    }
    RecordBuilder(const RecordBuilder&) = delete;
    RecordBuilder& operator=(const RecordBuilder&) = delete;

    void Set(std::size_t offset, std::uint32_t value) {
        std::memcpy(bytes.data() + offset, &value, sizeof(value));
    }
    void SetText(std::size_t offset, const char* text, std::size_t capacity) {
        std::memset(bytes.data() + offset, 0, capacity);
        std::memcpy(bytes.data() + offset, text, std::min(capacity, std::strlen(text)));
    }

    plugin::ReceiverRecord* Record() { return reinterpret_cast<plugin::ReceiverRecord*>(bytes.data()); }
    const std::vector<std::uint8_t>& Bytes() const { return bytes; }

    /// Bytes of section `i`, as the pointer says; empty if it is absent.
    std::vector<std::uint8_t> SectionBytes(std::size_t i) const {
        const std::uint32_t pointer = Field32(bytes.data(), kRecordSections[i].pointerOffset);
        if (pointer == 0) {
            return {};
        }
        const std::uint8_t* start = bytes.data() + (pointer - Address32(bytes.data()));
        return {start, start + kRecordSections[i].size};
    }

private:
    std::vector<std::uint8_t> bytes;
};

} // namespace orva::test
