/// Trunking signalling packets (TIA-102.AABB, TIA-102.BAAA), the sending end.
#pragma once

#include "tests/support/BitString.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orva::test {

/// Data of a trunking signalling block, without its CRC.
using TrunkingData = std::array<std::uint8_t, 10>;

/// A block with nothing to say to a listener: a status broadcast of the given arguments.
TrunkingData QuietTrunkingData(bool last, std::uint8_t argument = 0);

/// CRC-CCITT of the data, inverted.
std::uint16_t TrunkingCrc(const TrunkingData& data);

/// The 196 channel bits of a block. crcError  is XORed into the CRC; bitErrors  channel bits are wrong, each
/// in a trellis symbol of its own.
BitString EncodeTrunkingBlock(const TrunkingData& data, std::uint16_t crcError = 0, int bitErrors = 0);

/// The data with its CRC behind it, as a receiver gets them back.
using TrunkingBytes = std::array<std::uint8_t, 12>;
TrunkingBytes WithTrunkingCrc(const TrunkingData& data);

/// The same blocks, the last block flag set in the last one alone.
std::vector<TrunkingData> MarkLastBlock(std::span<const TrunkingData> blocks);

/// The body of a packet, the last block flags set as they must be.
BitString EncodeTrunkingBlocks(std::span<const TrunkingData> blocks);

/// A whole packet as dibits, status symbols and padding included.
std::string TrunkingPacket(unsigned networkAccessCode, std::span<const BitString> blocks);
/// The same from the data of the blocks, the last block flags set as they must be.
std::string TrunkingPacket(unsigned networkAccessCode, std::span<const TrunkingData> blocks);

} // namespace orva::test
