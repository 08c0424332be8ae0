/// What a person wants to know of a control channel.
#pragma once

#include "p25/ChannelTable.h"
#include "p25/TrunkingBlock.h"
#include "p25/TrunkingRecord.h"

#include <array>
#include <cstdint>
#include <map>
#include <tuple>

namespace orva::tools {

/// A channel given to a group or a unit; the count of its messages is kept beside it.
struct ChannelGrant {
    bool isGroup = false;
    std::uint32_t destination = 0; ///< talk group or unit
    std::uint64_t frequency = 0;   ///< Hz, 0 while its channel identifier is unknown

    bool operator<(const ChannelGrant& other) const {
        return std::tie(isGroup, destination, frequency) <
               std::tie(other.isGroup, other.destination, other.frequency);
    }
};

/// Counts blocks, messages and grants of one input, in bounded memory whatever its length.
class ControlChannelLog {
public:
    static constexpr std::size_t kOpcodes = 64;

    void NoteBlock(const p25::TrunkingBlock& block, bool hasGoodCrc);
    void NoteRecord(const p25::TrunkingRecord& record);

    std::uint64_t Blocks() const { return blocks; }
    std::uint64_t BadBlocks() const { return badBlocks; }
    double FailurePercent() const; ///< of blocks whose CRC was bad

    /// Good blocks by opcode.
    const std::array<std::uint64_t, kOpcodes>& Messages() const { return messages; }

    /// By identifier, as last heard.
    const std::map<std::uint32_t, p25::ChannelIdentifier>& Identifiers() const { return identifiers; }

    /// Messages by grant; the first 1000 different ones.
    const std::map<ChannelGrant, std::uint64_t>& Grants() const { return grants; }

private:
    std::uint64_t blocks = 0;
    std::uint64_t badBlocks = 0;
    std::array<std::uint64_t, kOpcodes> messages{};
    std::map<std::uint32_t, p25::ChannelIdentifier> identifiers;
    std::map<ChannelGrant, std::uint64_t> grants;
};

} // namespace orva::tools
