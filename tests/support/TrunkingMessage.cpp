#include "tests/support/TrunkingMessage.h"

#include "tests/support/BitString.h"

#include <cstdlib>

namespace orva::test {

namespace {

constexpr int kOctetBits = 8;
constexpr int kGroupBits = 16;
constexpr int kAddressBits = 24;

constexpr unsigned kGroupGrant = 0;
constexpr unsigned kGroupGrantUpdate = 2;
constexpr unsigned kGroupGrantUpdateExplicit = 3;
constexpr unsigned kUnitGrant = 4;
constexpr unsigned kUnitGrantUpdate = 6;
constexpr unsigned kIdentifierUpdate = 52;

/// Opcode and manufacturer, with which every message begins.
BitString Begin(unsigned opcode, unsigned manufacturer = 0) {
    BitString bits;
    bits.Append(opcode, kOctetBits);
    bits.Append(manufacturer, kOctetBits);
    return bits;
}

void Append(BitString& bits, ChannelField channel) {
    bits.Append(channel.identifier, 4);
    bits.Append(channel.number, 12);
}

TrunkingData Finish(const BitString& bits) {
    TrunkingData data{};
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<std::uint8_t>(bits.Field(kOctetBits * i, kOctetBits));
    }
    return data;
}

TrunkingData TwoGroups(BitString bits, ChannelField first, unsigned firstGroup, ChannelField second,
                       unsigned secondGroup) {
    Append(bits, first);
    bits.Append(firstGroup, kGroupBits);
    Append(bits, second);
    bits.Append(secondGroup, kGroupBits);
    return Finish(bits);
}

TrunkingData TwoUnits(BitString bits, ChannelField channel, unsigned target, unsigned source) {
    Append(bits, channel);
    bits.Append(target, kAddressBits);
    bits.Append(source, kAddressBits);
    return Finish(bits);
}

TrunkingData OneGroup(BitString bits, unsigned options, ChannelField channel, unsigned group,
                      unsigned source) {
    bits.Append(options, kOctetBits);
    Append(bits, channel);
    bits.Append(group, kGroupBits);
    bits.Append(source, kAddressBits);
    return Finish(bits);
}

} // namespace

TrunkingData GroupGrant(ChannelField channel, unsigned group, unsigned source, unsigned options) {
    return OneGroup(Begin(kGroupGrant), options, channel, group, source);
}

TrunkingData GroupGrantUpdate(ChannelField first, unsigned firstGroup, ChannelField second,
                              unsigned secondGroup) {
    return TwoGroups(Begin(kGroupGrantUpdate), first, firstGroup, second, secondGroup);
}

TrunkingData GroupGrantUpdateExplicit(ChannelField transmit, ChannelField receive, unsigned group,
                                      unsigned options) {
    BitString bits = Begin(kGroupGrantUpdateExplicit);
    bits.Append(options, kOctetBits);
    bits.Append(0, kOctetBits); // reserved
    Append(bits, transmit);
    Append(bits, receive);
    bits.Append(group, kGroupBits);
    return Finish(bits);
}

TrunkingData RegroupedGrant(ChannelField channel, unsigned group, unsigned source) {
    return OneGroup(Begin(kGroupGrantUpdate, kRegroupingManufacturer), 0, channel, group, source);
}

TrunkingData RegroupedGrantUpdate(ChannelField first, unsigned firstGroup, ChannelField second,
                                  unsigned secondGroup) {
    return TwoGroups(Begin(kGroupGrantUpdateExplicit, kRegroupingManufacturer), first, firstGroup, second,
                     secondGroup);
}

TrunkingData UnitGrant(ChannelField channel, unsigned target, unsigned source) {
    return TwoUnits(Begin(kUnitGrant), channel, target, source);
}

TrunkingData UnitGrantUpdate(ChannelField channel, unsigned target, unsigned source) {
    return TwoUnits(Begin(kUnitGrantUpdate), channel, target, source);
}

TrunkingData IdentifierUpdate(const BandPlan& plan) {
    BitString bits = Begin(kIdentifierUpdate);
    bits.Append(plan.identifier, 4);
    bits.Append(plan.bandwidth, 4);
    bits.Append(plan.transmitOffset < 0 ? 1 : 0, 1); // sign and magnitude
    bits.Append(static_cast<unsigned>(std::abs(plan.transmitOffset)), 13);
    bits.Append(plan.spacing, 10);
    bits.Append(plan.baseFrequency, 32);
    return Finish(bits);
}

TrunkingData OtherMessage(unsigned opcode, unsigned manufacturer,
                          const std::array<std::uint8_t, 8>& arguments) {
    BitString bits = Begin(opcode, manufacturer);
    for (const std::uint8_t argument : arguments) {
        bits.Append(argument, kOctetBits);
    }
    return Finish(bits);
}

TrunkingData OfManufacturer(TrunkingData message, unsigned manufacturer) {
    message[1] = static_cast<std::uint8_t>(manufacturer);
    return message;
}

TrunkingData Protected(TrunkingData message) {
    constexpr std::uint8_t kProtectedFlag = 0x40;
    message[0] |= kProtectedFlag;
    return message;
}

} // namespace orva::test
