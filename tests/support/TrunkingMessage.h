/// What trunking signalling blocks say (TIA-102.AABC), as the ten data bytes of a block.
#pragma once

#include "tests/support/TrunkingPacket.h"

#include <array>
#include <cstdint>

namespace orva::test {

/// Grants of regrouped talk groups are this manufacturer's own messages.
constexpr std::uint8_t kRegroupingManufacturer = 144;

/// A channel by its band plan's identifier, 0..15, and its number, 0..4095.
struct ChannelField {
    unsigned identifier = 0;
    unsigned number = 0;

    bool operator==(const ChannelField&) const = default;
};

/// A band plan as an identifier update tells it.
struct BandPlan {
    unsigned identifier = 0;         ///< 0..15
    unsigned bandwidth = 4;          ///< code of the channel bandwidth, 0..15; 4 is 6.25 kHz
    int transmitOffset = 0;          ///< of the mobiles, -8191..8191 channel spacings
    unsigned spacing = 0;            ///< of the channels, 0..1023 [125 Hz]
    std::uint32_t baseFrequency = 0; ///< [5 Hz]
};

/// Group voice channel grant.
TrunkingData GroupGrant(ChannelField channel, unsigned group, unsigned source, unsigned options);

/// Group voice channel grant update: two channels and their groups.
TrunkingData GroupGrantUpdate(ChannelField first, unsigned firstGroup, ChannelField second,
                              unsigned secondGroup);

/// Group voice channel grant update, explicit: one group, the channel pair in full.
TrunkingData GroupGrantUpdateExplicit(ChannelField transmit, ChannelField receive, unsigned group,
                                      unsigned options);

/// Grant of a channel to a regrouped talk group.
TrunkingData RegroupedGrant(ChannelField channel, unsigned group, unsigned source);

/// Update of the grants of two regrouped talk groups.
TrunkingData RegroupedGrantUpdate(ChannelField first, unsigned firstGroup, ChannelField second,
                                  unsigned secondGroup);

/// Unit to unit voice channel grant and its update.
TrunkingData UnitGrant(ChannelField channel, unsigned target, unsigned source);
TrunkingData UnitGrantUpdate(ChannelField channel, unsigned target, unsigned source);

/// Identifier update for VHF and UHF bands.
TrunkingData IdentifierUpdate(const BandPlan& plan);

/// A message of any opcode, manufacturer and arguments.
TrunkingData OtherMessage(unsigned opcode, unsigned manufacturer = 0,
                          const std::array<std::uint8_t, 8>& arguments = {});

/// The same message in another manufacturer's name.
TrunkingData OfManufacturer(TrunkingData message, unsigned manufacturer);

/// The same message with the protected flag set: its arguments are encrypted.
TrunkingData Protected(TrunkingData message);

} // namespace orva::test
