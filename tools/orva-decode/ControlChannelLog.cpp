#include "tools/orva-decode/ControlChannelLog.h"

namespace orva::tools {

namespace {

constexpr std::size_t kMaxGrants = 1000;

bool IsGrant(p25::TrunkingRecordType type) {
    return type >= p25::TrunkingRecordType::GroupGrant && type <= p25::TrunkingRecordType::UnitGrantUpdate;
}

} // namespace

void ControlChannelLog::NoteBlock(const p25::TrunkingBlock& block, bool hasGoodCrc) {
    ++blocks;
    if (hasGoodCrc) {
        ++messages[block.Opcode()];
    } else {
        ++badBlocks;
    }
}

void ControlChannelLog::NoteRecord(const p25::TrunkingRecord& record) {
    if (record.Type() == p25::TrunkingRecordType::IdentifierUpdate) {
        identifiers[record.ChannelIdentifier()] = {p25::DecodeFrequency(record.Source()), record.Frequency()};
        return;
    }
    if (!IsGrant(record.Type())) {
        return;
    }
    ChannelGrant grant;
    grant.isGroup = (record.Destination() & p25::kGroupAddress) != 0;
    grant.destination = record.Destination() & ~p25::kGroupAddress;
    grant.frequency = p25::DecodeFrequency(record.Frequency());
    const auto known = grants.find(grant);
    if (known != grants.end()) {
        ++known->second;
    } else if (grants.size() < kMaxGrants) {
        grants.emplace(grant, 1);
    }
}

double ControlChannelLog::FailurePercent() const {
    constexpr double kPercent = 100.0;
    return blocks == 0 ? 0.0 : kPercent * static_cast<double>(badBlocks) / static_cast<double>(blocks);
}

} // namespace orva::tools
