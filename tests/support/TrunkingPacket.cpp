#include "tests/support/TrunkingPacket.h"

#include "tests/support/FrameBuilder.h"
#include "tests/support/TrellisEncoder.h"

#include <algorithm>
#include <vector>

namespace orva::test {

namespace {

constexpr std::size_t kBlockSymbols = 49;
constexpr std::uint8_t kStatusBroadcast = 58;
constexpr std::uint8_t kLastBlock = 0x80;
constexpr std::size_t kErrorSpacing = 4; ///< symbols between wrong bits, more than the code needs

/// The order of the air: symbol i of a block is the trellis symbol at `AirOrder()[i]`.
std::vector<std::size_t> AirOrder() {
    std::vector<std::size_t> order;
    for (std::size_t first = 0; first < 4; ++first) {
        for (std::size_t place = first; place < kBlockSymbols; place += 4) {
            order.push_back(place);
        }
    }
    return order;
}

} // namespace

TrunkingData QuietTrunkingData(bool last, std::uint8_t argument) {
    TrunkingData data = {};
    data[0] = static_cast<std::uint8_t>(kStatusBroadcast | (last ? kLastBlock : 0));
    data[5] = argument;
    return data;
}

std::uint16_t TrunkingCrc(const TrunkingData& data) {
    // A shift register that divides as the bits come; the 16 zero bits behind them are in its construction.
    constexpr unsigned kPolynomial = 0x1021;
    unsigned crc = 0;
    for (const std::uint8_t byte : data) {
        for (int bit = 7; bit >= 0; --bit) {
            const unsigned feedback = (crc >> 15 ^ byte >> bit) & 1U;
            crc = (crc << 1 & 0xFFFFU) ^ (feedback != 0 ? kPolynomial : 0);
        }
    }
    return static_cast<std::uint16_t>(~crc);
}

BitString EncodeTrunkingBlock(const TrunkingData& data, std::uint16_t crcError, int bitErrors) {
    BitString content;
    for (const std::uint8_t byte : data) {
        content.Append(byte, 8);
    }
    content.Append(TrunkingCrc(data) ^ crcError, 16);
    std::vector<std::uint8_t> dibits;
    for (std::size_t place = 0; place < content.Size(); place += 2) {
        dibits.push_back(static_cast<std::uint8_t>(content.Field(place, 2)));
    }
    dibits.push_back(0);

    std::vector<std::uint8_t> symbols = EncodeTrellis(dibits);
    for (std::size_t error = 0; error < static_cast<std::size_t>(bitErrors); ++error) {
        symbols[error * kErrorSpacing] ^= static_cast<std::uint8_t>(1U << error % 4);
    }
    BitString coded;
    for (const std::size_t place : AirOrder()) {
        coded.Append(symbols[place], 4);
    }
    return coded;
}

TrunkingBytes WithTrunkingCrc(const TrunkingData& data) {
    TrunkingBytes bytes{};
    std::copy(data.begin(), data.end(), bytes.begin());
    const unsigned crc = TrunkingCrc(data);
    bytes[10] = static_cast<std::uint8_t>(crc >> 8);
    bytes[11] = static_cast<std::uint8_t>(crc & 0xFF);
    return bytes;
}

std::vector<TrunkingData> MarkLastBlock(std::span<const TrunkingData> blocks) {
    std::vector<TrunkingData> marked(blocks.begin(), blocks.end());
    for (TrunkingData& block : marked) {
        block[0] = static_cast<std::uint8_t>(block[0] & ~kLastBlock);
    }
    if (!marked.empty()) {
        marked.back()[0] |= kLastBlock;
    }
    return marked;
}

BitString EncodeTrunkingBlocks(std::span<const TrunkingData> blocks) {
    BitString body;
    for (const TrunkingData& block : MarkLastBlock(blocks)) {
        body.Append(EncodeTrunkingBlock(block));
    }
    return body;
}

std::string TrunkingPacket(unsigned networkAccessCode, std::span<const TrunkingData> blocks) {
    return FrameBuilder().Frame(networkAccessCode, static_cast<unsigned>(DataUnit::Trunking),
                                EncodeTrunkingBlocks(blocks));
}

std::string TrunkingPacket(unsigned networkAccessCode, std::span<const BitString> blocks) {
    BitString body;
    for (const BitString& block : blocks) {
        body.Append(block);
    }
    return FrameBuilder().Frame(networkAccessCode, static_cast<unsigned>(DataUnit::Trunking), body);
}

} // namespace orva::test
