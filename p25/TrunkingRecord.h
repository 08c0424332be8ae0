/// The signalling record of 22 bytes in which trunking information reaches the host.
#pragma once

#include <array>
#include <cstdint>

namespace orva::p25 {

constexpr std::uint32_t kTrunkingRecordSize = 22;

/// `recordType`, the first byte.
enum class TrunkingRecordType : std::uint8_t {
    GroupGrant = 1,
    GroupGrantUpdate = 2,
    UnitGrant = 3,
    UnitGrantUpdate = 4,
    NewSpeaker = 5,
    IdentifierUpdate = 128,
    EndOfCall = 129,
};

constexpr std::uint32_t kGroupAddress = 0x80000000U;    ///< marks a destination that is a talk group
constexpr std::uint32_t kDefaultServiceOptions = 32768; ///< of a record whose message carries none
constexpr std::uint8_t kNoChannelIdentifier = 0xFF;     ///< of a record without a channel
constexpr std::uint16_t kNoChannelNumber = 0xFFFF;
constexpr std::uint32_t kNoFrequency = 0xFFFFFFFFU;

/// A packed, little-endian record. Offsets: 0 type; 1 channel identifier; 2 channel number, u16; 4 network
/// access code, u32; 8 coded frequency, u32; 12 source, u32; 16 destination, u32; 20 service options, u16.
class TrunkingRecord {
public:
    /// A record of `type` with all other bytes zero.
    explicit TrunkingRecord(TrunkingRecordType type) { bytes[0] = static_cast<std::uint8_t>(type); }
    TrunkingRecord() = default;

    void SetChannel(std::uint8_t identifier, std::uint16_t number) {
        bytes[1] = identifier;
        Store(2, number, 2);
    }
    void SetNetworkAccessCode(std::uint32_t code) { Store(4, code, 4); }
    void SetFrequency(std::uint32_t coded) { Store(8, coded, 4); }
    void SetSource(std::uint32_t address) { Store(12, address, 4); }
    void SetDestination(std::uint32_t address) { Store(16, address, 4); }
    void SetServiceOptions(std::uint32_t options) { Store(20, options, 2); }

    /// An end-of-call record differs from the others: the network access code stands at offset 1, the rest is
    /// zero.
    static TrunkingRecord MakeEndOfCall(std::uint32_t networkAccessCode) {
        TrunkingRecord record(TrunkingRecordType::EndOfCall);
        record.Store(1, networkAccessCode, 4);
        return record;
    }

    std::uint32_t ChannelIdentifier() const { return Load(1, 1); }
    std::uint32_t ChannelNumber() const { return Load(2, 2); }
    /// Wherever the type keeps it.
    std::uint32_t NetworkAccessCode() const {
        return Load(Type() == TrunkingRecordType::EndOfCall ? 1 : 4, 4);
    }
    std::uint32_t Frequency() const { return Load(8, 4); } ///< coded
    std::uint32_t Source() const { return Load(12, 4); }
    std::uint32_t Destination() const { return Load(16, 4); }
    std::uint32_t ServiceOptions() const { return Load(20, 2); }

    TrunkingRecordType Type() const { return static_cast<TrunkingRecordType>(bytes[0]); }
    const std::array<std::uint8_t, kTrunkingRecordSize>& Bytes() const { return bytes; }

private:
    void Store(std::size_t offset, std::uint32_t value, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) {
            bytes[offset + i] = static_cast<std::uint8_t>(value >> 8 * i);
        }
    }

    std::uint32_t Load(std::size_t offset, std::size_t size) const {
        std::uint32_t value = 0;
        for (std::size_t i = size; i-- > 0;) {
            value = value << 8 | bytes[offset + i];
        }
        return value;
    }

    std::array<std::uint8_t, kTrunkingRecordSize> bytes{};
};

} // namespace orva::p25
