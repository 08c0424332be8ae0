/// Control channels of any messages, damage and retuning into the frame decoder.
///
/// The input is a small language: a byte that chooses the slices, then orders of one byte each with their
/// arguments behind them (see `ControlChannel::Step`).
#include "fuzz/InputBytes.h"
#include "fuzz/Require.h"
#include "p25/COrvaFrameDecoder.h"
#include "tests/support/BitString.h"
#include "tests/support/TrunkingPacket.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace orva::fuzz {

namespace {

constexpr unsigned kNetworkAccessCode = 0x140;
constexpr std::size_t kMostOrders = 400;
constexpr std::size_t kBlockDibits = 98;

/// What one decoder told.
class Listener final : public p25::IFrameObserver {
public:
    void OnTrunkingBlock(const p25::TrunkingBlock& block, bool hasGoodCrc, std::uint32_t errors) override {
        Require(errors <= 2 * kBlockDibits, "a block has 196 bits to be wrong");
        test::TrunkingBytes bytes{};
        std::copy_n(block.bytes, bytes.size(), bytes.begin());
        test::TrunkingData data{};
        std::copy_n(block.bytes, data.size(), data.begin());
        Require(hasGoodCrc == (bytes == test::WithTrunkingCrc(data)), "a good CRC is that of the data");
        blocks.push_back(bytes);
        good.push_back(hasGoodCrc);
        errorCounts.push_back(errors);
    }

    void OnRecord(const p25::TrunkingRecord& record) override { records.push_back(record.Bytes()); }

    bool operator==(const Listener& other) const {
        return blocks == other.blocks && good == other.good && errorCounts == other.errorCounts &&
               records == other.records;
    }

    std::vector<test::TrunkingBytes> blocks;
    std::vector<bool> good;
    std::vector<std::uint32_t> errorCounts;
    std::vector<std::array<std::uint8_t, p25::kTrunkingRecordSize>> records;
};

/// Records that an unprotected message with a good CRC makes.
std::size_t CountRecords(const test::TrunkingData& data) {
    constexpr std::uint8_t kRegrouping = 144;
    const std::uint8_t manufacturer = data[1];
    switch (data[0] & 0x7F) { // with the protected flag
    case 0:
    case 4:
    case 6:
        return manufacturer == 0 ? 1 : 0;
    case 2:
        return manufacturer == kRegrouping ? 1 : manufacturer < 2 ? 2 : 0;
    case 3:
        return manufacturer == kRegrouping && std::memcmp(&data[2], &data[6], 4) != 0 ? 2 : 1;
    case 52:
        return 1;
    default:
        return 0;
    }
}

void RequireMessage(p25::COrvaFrameDecoder& decoder, const Listener& heard, std::size_t firstRecord) {
    constexpr std::size_t kHeader = 140;
    const std::size_t count = heard.records.size() - firstRecord;
    std::uint32_t size = 0;
    const auto message = decoder.TakeRecords(&size);
    Require((message != nullptr) == (count > 0), "records make a message");
    Require(size == (count > 0 ? kHeader + count * p25::kTrunkingRecordSize : 0), "each has its place in it");
    for (std::size_t i = 0; i < count; ++i) {
        Require(std::memcmp(message.get() + kHeader + i * p25::kTrunkingRecordSize,
                            heard.records[firstRecord + i].data(), p25::kTrunkingRecordSize) == 0,
                "the message has the records as they were queued");
    }
}

/// Two decoders on the same control channel: one gets it in slices.
class ControlChannel {
public:
    explicit ControlChannel(InputBytes bytes) : input(bytes), sliceLength(1U + input.Byte() % 150) {
        whole.SetObserver(&wholeHeard);
        sliced.SetObserver(&slicedHeard);
    }

    void Run() {
        for (std::size_t orders = 0; !input.IsAtEnd() && orders < kMostOrders; ++orders) {
            Step();
            Require(wholeHeard == slicedHeard, "the slices do not matter");
            RequireState(whole);
            RequireState(sliced);
        }
        RequireMessage(whole, wholeHeard, takenRecords);
        RequireMessage(sliced, slicedHeard, takenRecords);
    }

private:
    /// 0..3: a packet of one to three messages, after whatever was on the air. 4..7: the same after a reset,
    /// when it must be heard word for word. 8..11: a message with one to four wrong bits. 12: a packet of any
    /// 98 dibits. 13: dibits of no frame. 14: retuning. 15: taking the records.
    void Step() {
        const std::uint8_t order = input.Byte() % 16;
        switch (order) {
        case 12:
            Feed(test::TrunkingPacket(kNetworkAccessCode, std::vector<test::BitString>{AnyBlock()}));
            return;
        case 13:
            Feed(AnyBlock().Dibits().substr(0, 1U + input.Byte() % kBlockDibits));
            return;
        case 14: {
            const std::uint32_t hz = input.Word() | static_cast<std::uint32_t>(input.Word()) << 16;
            whole.SetTunedFrequency(hz);
            sliced.SetTunedFrequency(hz);
            takenRecords = wholeHeard.records.size();
            return;
        }
        case 15:
            RequireMessage(whole, wholeHeard, takenRecords);
            RequireMessage(sliced, slicedHeard, takenRecords);
            takenRecords = wholeHeard.records.size();
            return;
        default:
            if (order < 4) {
                Feed(test::TrunkingPacket(kNetworkAccessCode, Messages(order)));
            } else if (order < 8) {
                SendCleanly(Messages(order));
            } else {
                Feed(DamagedPacket(order - 7U));
            }
        }
    }

    std::vector<test::TrunkingData> Messages(unsigned order) {
        std::vector<test::TrunkingData> messages(1U + order % 3);
        for (test::TrunkingData& message : messages) {
            std::generate(message.begin(), message.end(), [this] { return input.Byte(); });
        }
        return messages;
    }

    test::BitString AnyBlock() {
        test::BitString bits;
        while (bits.Size() < 2 * kBlockDibits) {
            bits.Append(input.Byte(), 4);
        }
        return bits;
    }

    std::string DamagedPacket(unsigned wrongBits) {
        const test::BitString clean = test::EncodeTrunkingBlocks(Messages(0));
        std::vector<std::uint64_t> bits;
        for (std::size_t i = 0; i < clean.Size(); ++i) {
            bits.push_back(clean.Field(i, 1));
        }
        for (unsigned i = 0; i < wrongBits; ++i) {
            bits[input.Byte() % bits.size()] ^= 1;
        }
        test::BitString damaged;
        for (const std::uint64_t bit : bits) {
            damaged.Append(bit, 1);
        }
        return test::TrunkingPacket(kNetworkAccessCode, std::vector<test::BitString>{damaged});
    }

    void SendCleanly(const std::vector<test::TrunkingData>& messages) {
        whole.Reset();
        sliced.Reset();
        const std::size_t firstBlock = wholeHeard.blocks.size();
        const std::size_t firstRecord = wholeHeard.records.size();
        Feed(test::TrunkingPacket(kNetworkAccessCode, messages));
        Require(wholeHeard.blocks.size() == firstBlock + messages.size(), "every block is heard");
        std::size_t records = 0;
        const std::vector<test::TrunkingData> sent = test::MarkLastBlock(messages);
        for (std::size_t i = 0; i < sent.size(); ++i) {
            Require(wholeHeard.good[firstBlock + i] && wholeHeard.errorCounts[firstBlock + i] == 0 &&
                        wholeHeard.blocks[firstBlock + i] == test::WithTrunkingCrc(sent[i]),
                    "a clean block is heard word for word");
            records += CountRecords(sent[i]);
        }
        Require(wholeHeard.records.size() == firstRecord + records, "every message makes its records");
        Require(whole.GetBitErrorRate() == 0.0F, "clean blocks have no errors");
    }

    void Feed(std::string_view dibits) {
        whole.Decode(dibits.data(), static_cast<std::int32_t>(dibits.size()));
        while (!dibits.empty()) {
            const std::size_t length = std::min(sliceLength, dibits.size());
            sliced.Decode(dibits.data(), static_cast<std::int32_t>(length));
            dibits.remove_prefix(length);
        }
    }

    static void RequireState(const p25::COrvaFrameDecoder& decoder) {
        Require(decoder.GetBitErrorRate() >= 0.0F && decoder.GetBitErrorRate() <= 100.0F,
                "an error rate is a percentage");
        for (std::uint32_t i = 0; i < p25::ChannelTable::kIdentifiers; ++i) {
            const p25::ChannelIdentifier& plan = decoder.GetChannelTable().Get(i);
            Require(plan.channelSpacing % 125 == 0 && plan.channelSpacing <= 1023 * 125,
                    "a spacing is ten bits of 125 Hz");
            Require(static_cast<std::int64_t>(plan.baseFrequency) % 5 == 0, "a base counts in 5 Hz");
        }
    }

    InputBytes input;
    std::size_t sliceLength;
    p25::COrvaFrameDecoder whole;
    p25::COrvaFrameDecoder sliced;
    Listener wholeHeard;
    Listener slicedHeard;
    std::size_t takenRecords = 0;
};

} // namespace

} // namespace orva::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    orva::fuzz::ControlChannel({data, size}).Run();
    return 0;
}
