/// A trunking signalling block (TSBK) of 12 bytes: fields, check, and the names of the messages.
#pragma once

#include <cstdint>

namespace orva::p25 {

constexpr std::uint32_t kTrunkingBlockBytes = 12;

/// Opcodes that become records.
enum class TrunkingOpcode : std::uint8_t {
    GroupGrant = 0,
    GroupGrantUpdate = 2,
    GroupGrantUpdateExplicit = 3,
    UnitGrant = 4,
    UnitGrantUpdate = 6,
    IdentifierUpdateVhfUhf = 52,
};

/// Manufacturers whose blocks differ from the standard's.
constexpr std::uint8_t kManufacturerStandard = 0;
constexpr std::uint8_t kManufacturerStandardToo = 1;
constexpr std::uint8_t kManufacturerRegrouping = 144; ///< grants of regrouped talk groups

/// Bytes 0 .. 9 are data, 10 and 11 their CRC.
struct TrunkingBlock {
    std::uint8_t bytes[kTrunkingBlockBytes] = {};

    bool IsLast() const { return (bytes[0] & 0x80) != 0; }
    bool IsProtected() const { return (bytes[0] & 0x40) != 0; }
    std::uint8_t Opcode() const { return bytes[0] & 0x3F; }
    std::uint8_t Manufacturer() const { return bytes[1]; }

    /// Numbers of two and three bytes, the first byte the most significant.
    std::uint32_t Pair(int index) const {
        return static_cast<std::uint32_t>(bytes[index]) << 8 | bytes[index + 1];
    }
    std::uint32_t Triple(int index) const { return Pair(index) << 8 | bytes[index + 2]; }

    /// The CRC of the data is the one received: x^16 + x^12 + x^5 + 1 over 80 bits, inverted.
    bool HasGoodCrc() const;
};

/// Name of a message, "Unknown" for an opcode without one. The upper two bits of `opcode` do not count.
const char* GetTrunkingMessageName(std::uint8_t opcode);

} // namespace orva::p25
