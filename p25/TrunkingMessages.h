/// From trunking signalling blocks to the records that the host follows calls by.
#pragma once

#include "p25/ChannelTable.h"
#include "p25/TrunkingBlock.h"
#include "p25/TrunkingRecord.h"

#include <cstdint>

namespace orva::p25 {

/// The records of one block: none, one, or two for a message that names two channels.
struct TrunkingRecords {
    static constexpr int kCapacity = 2;

    TrunkingRecord record[kCapacity];
    int count = 0;

    void Add(const TrunkingRecord& next) { record[count++] = next; }
};

/// Interprets a block whose CRC is good and which is not protected: teaches `table` an identifier, or makes
/// records of grants with their channels turned into frequencies. `networkAccessCode` goes into each record.
TrunkingRecords InterpretTrunkingBlock(const TrunkingBlock& block, ChannelTable& table,
                                       std::uint32_t networkAccessCode);

} // namespace orva::p25
