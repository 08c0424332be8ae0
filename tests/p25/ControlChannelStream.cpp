#include "tests/p25/ControlChannelStream.h"

#include <algorithm>
#include <memory>
#include <ostream>

#include <gtest/gtest.h>

namespace orva::test {

void PrintTo(const HeardBlock& block, std::ostream* out) {
    *out << Hex(block.bytes.data(), block.bytes.size()) << (block.good ? " good" : " bad") << ", "
         << block.errors << " bit errors";
}

std::string Hex(const std::uint8_t* bytes, std::size_t count) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string hex;
    for (std::size_t i = 0; i < count; ++i) {
        hex.push_back(kDigits[bytes[i] >> 4]);
        hex.push_back(kDigits[bytes[i] & 15]);
    }
    return hex;
}

std::string Packed(std::string_view hex) {
    std::string packed(hex);
    std::erase(packed, ' ');
    return packed;
}

void ControlChannelStream::Feed(std::string_view dibits) {
    EXPECT_EQ(decoder.Decode(dibits.data(), static_cast<std::int32_t>(dibits.size())), 0);
}

void ControlChannelStream::FeedInPieces(std::string_view dibits,
                                        const std::function<std::size_t()>& nextLength) {
    while (!dibits.empty()) {
        const std::size_t length = std::min(nextLength(), dibits.size());
        Feed(dibits.substr(0, length));
        dibits.remove_prefix(length);
    }
}

void ControlChannelStream::Send(std::initializer_list<TrunkingData> messages) {
    Feed(TrunkingPacket(kNac, std::vector<TrunkingData>(messages)));
}

std::vector<std::string> ControlChannelStream::TakeRecords() {
    constexpr std::size_t kMessageHeader = 140;
    constexpr std::size_t kRecordSize = 22;
    std::uint32_t size = 1;
    const std::unique_ptr<std::uint8_t[]> message = decoder.TakeRecords(&size);
    std::vector<std::string> taken;
    if (message == nullptr) {
        EXPECT_EQ(size, 0U);
        return taken;
    }
    for (std::size_t place = kMessageHeader; place + kRecordSize <= size; place += kRecordSize) {
        taken.push_back(Hex(message.get() + place, kRecordSize));
    }
    return taken;
}

void ControlChannelStream::OnNid(std::int32_t /*networkAccessCode*/, std::int32_t duid,
                                 std::int32_t /*corrected*/) {
    packets += duid == 7 ? 1U : 0U;
}

void ControlChannelStream::OnTrunkingBlock(const p25::TrunkingBlock& block, bool hasGoodCrc,
                                           std::uint32_t errors) {
    HeardBlock heard;
    std::copy(std::begin(block.bytes), std::end(block.bytes), heard.bytes.begin());
    heard.good = hasGoodCrc;
    heard.errors = errors;
    blocks.push_back(heard);
}

void ControlChannelStream::OnRecord(const p25::TrunkingRecord& record) {
    records.push_back(Hex(record.Bytes().data(), record.Bytes().size()));
}

} // namespace orva::test
