#include "p25/TrunkingMessages.h"

namespace orva::p25 {

namespace {

/// Identifier and channel number in two bytes of a block.
struct Channel {
    explicit Channel(std::uint32_t pair) : identifier(pair >> 12), number(pair & 0xFFF) {}

    std::uint32_t identifier;
    std::uint32_t number;
};

std::uint32_t GroupAddress(std::uint32_t group) {
    return group | kGroupAddress;
}

/// What the messages have in common: where records get their network and frequencies from.
class RecordMaker {
public:
    RecordMaker(const TrunkingBlock& trunkingBlock, ChannelTable& channelTable, std::uint32_t accessCode)
        : block(trunkingBlock), table(channelTable), networkAccessCode(accessCode) {}

    TrunkingRecords Interpret();

private:
    TrunkingRecord Grant(TrunkingRecordType type, int channelAt, std::uint32_t source,
                         std::uint32_t destination, std::uint32_t options) const;
    TrunkingRecord GroupGrant(TrunkingRecordType type, int channelAt, int groupAt,
                              std::uint32_t options) const;
    TrunkingRecord UnitGrant(TrunkingRecordType type) const;
    void AddGroupGrant();
    void AddGroupGrantUpdates();
    void AddExplicitUpdates();
    void AddIdentifierUpdate();

    const TrunkingBlock& block;
    ChannelTable& table;
    std::uint32_t networkAccessCode;
    TrunkingRecords records;
};

TrunkingRecords RecordMaker::Interpret() {
    switch (static_cast<TrunkingOpcode>(block.Opcode())) {
    case TrunkingOpcode::GroupGrant:
        table.CheckValidity();
        AddGroupGrant();
        break;
    case TrunkingOpcode::GroupGrantUpdate:
        table.CheckValidity();
        AddGroupGrantUpdates();
        break;
    case TrunkingOpcode::GroupGrantUpdateExplicit:
        table.CheckValidity();
        AddExplicitUpdates();
        break;
    case TrunkingOpcode::UnitGrant:
        if (block.Manufacturer() == kManufacturerStandard) {
            records.Add(UnitGrant(TrunkingRecordType::UnitGrant));
        }
        break;
    case TrunkingOpcode::UnitGrantUpdate:
        if (block.Manufacturer() == kManufacturerStandard) {
            records.Add(UnitGrant(TrunkingRecordType::UnitGrantUpdate));
        }
        break;
    case TrunkingOpcode::IdentifierUpdateVhfUhf:
        table.CheckValidity();
        AddIdentifierUpdate();
        break;
    }
    return records;
}

TrunkingRecord RecordMaker::Grant(TrunkingRecordType type, int channelAt, std::uint32_t source,
                                  std::uint32_t destination, std::uint32_t options) const {
    const Channel channel(block.Pair(channelAt));
    TrunkingRecord record(type);
    record.SetChannel(static_cast<std::uint8_t>(channel.identifier),
                      static_cast<std::uint16_t>(channel.number));
    record.SetNetworkAccessCode(networkAccessCode);
    record.SetFrequency(table.CodedFrequency(channel.identifier, channel.number));
    record.SetSource(source);
    record.SetDestination(destination);
    record.SetServiceOptions(options);
    return record;
}

/// A grant that names no source: the group stands in its place too.
TrunkingRecord RecordMaker::GroupGrant(TrunkingRecordType type, int channelAt, int groupAt,
                                       std::uint32_t options) const {
    const std::uint32_t group = GroupAddress(block.Pair(groupAt));
    return Grant(type, channelAt, group, group, options);
}

TrunkingRecord RecordMaker::UnitGrant(TrunkingRecordType type) const {
    return Grant(type, 2, block.Triple(7), block.Triple(4), kDefaultServiceOptions);
}

void RecordMaker::AddGroupGrant() {
    if (block.Manufacturer() == kManufacturerStandard) {
        records.Add(Grant(TrunkingRecordType::GroupGrant, 3, block.Triple(7), GroupAddress(block.Pair(5)),
                          block.bytes[2]));
    }
}

void RecordMaker::AddGroupGrantUpdates() {
    if (block.Manufacturer() == kManufacturerRegrouping) {
        records.Add(GroupGrant(TrunkingRecordType::GroupGrant, 3, 5, 0));
    } else if (block.Manufacturer() == kManufacturerStandard ||
               block.Manufacturer() == kManufacturerStandardToo) {
        records.Add(GroupGrant(TrunkingRecordType::GroupGrantUpdate, 2, 4, kDefaultServiceOptions));
        records.Add(GroupGrant(TrunkingRecordType::GroupGrantUpdate, 6, 8, kDefaultServiceOptions));
    }
}

void RecordMaker::AddExplicitUpdates() {
    if (block.Manufacturer() != kManufacturerRegrouping) {
        // Bytes 4 and 5 hold the transmit channel, which is of no use to a listener.
        records.Add(GroupGrant(TrunkingRecordType::GroupGrantUpdate, 6, 8, block.bytes[2]));
        return;
    }
    records.Add(GroupGrant(TrunkingRecordType::GroupGrantUpdate, 2, 4, 0));
    if (block.Pair(6) != block.Pair(2) || block.Pair(8) != block.Pair(4)) {
        records.Add(GroupGrant(TrunkingRecordType::GroupGrantUpdate, 6, 8, 0));
    }
}

void RecordMaker::AddIdentifierUpdate() {
    constexpr std::uint32_t kSpacingUnitHz = 125;
    constexpr std::int64_t kBaseUnitHz = 5;
    const auto& b = block.bytes;
    const std::uint32_t identifier = b[2] >> 4;
    const auto magnitude = static_cast<std::uint32_t>((b[3] & 127) << 7 | b[4] >> 2);
    const std::uint32_t offset = (b[3] & 128) != 0 ? 0U - magnitude : magnitude;
    const auto base = static_cast<std::int32_t>(block.Pair(6) << 16 | block.Pair(8));

    ChannelIdentifier plan;
    plan.baseFrequency = static_cast<std::uint64_t>(std::int64_t{base} * kBaseUnitHz);
    plan.channelSpacing = (block.Pair(4) & 0x3FF) * kSpacingUnitHz;
    table.Learn(identifier, plan);

    // This record carries the spacing where others have a frequency, and the base frequency as its source.
    TrunkingRecord record(TrunkingRecordType::IdentifierUpdate);
    record.SetChannel(static_cast<std::uint8_t>(identifier), static_cast<std::uint16_t>(offset));
    record.SetNetworkAccessCode(networkAccessCode);
    record.SetFrequency(plan.channelSpacing);
    record.SetSource(CodeFrequency(plan.baseFrequency));
    records.Add(record);
}

} // namespace

TrunkingRecords InterpretTrunkingBlock(const TrunkingBlock& block, ChannelTable& table,
                                       std::uint32_t networkAccessCode) {
    return RecordMaker(block, table, networkAccessCode).Interpret();
}

} // namespace orva::p25
