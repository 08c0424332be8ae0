#pragma once

#include "p25/COrvaFrameDecoder.h"
#include "tests/support/TrunkingPacket.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace orva::test {

/// A trunking signalling block as a receiver heard it.
struct HeardBlock {
    TrunkingBytes bytes = {};
    bool good = false;
    std::uint32_t errors = 0; ///< on the trellis path

    bool operator==(const HeardBlock&) const = default;
};

void PrintTo(const HeardBlock& block, std::ostream* out);

/// A frame decoder on a control channel and all it tells.
class ControlChannelStream final : public p25::IFrameObserver {
public:
    static constexpr unsigned kNac = 0x293;

    ControlChannelStream() { decoder.SetObserver(this); }

    /// One `Decode` call; its result is checked.
    void Feed(std::string_view dibits);

    /// One `Decode` call for each piece; `nextLength` gives the pieces' lengths, above 0.
    void FeedInPieces(std::string_view dibits, const std::function<std::size_t()>& nextLength);

    /// A packet of these messages.
    void Send(std::initializer_list<TrunkingData> messages);

    /// The queued records as the host gets them, each as 44 hex digits.
    std::vector<std::string> TakeRecords();

    p25::COrvaFrameDecoder decoder;
    std::vector<HeardBlock> blocks;
    std::vector<std::string> records; ///< all since the begin, in hex digits
    std::size_t packets = 0;

    void OnNid(std::int32_t networkAccessCode, std::int32_t duid, std::int32_t corrected) override;
    void OnTrunkingBlock(const p25::TrunkingBlock& block, bool hasGoodCrc, std::uint32_t errors) override;
    void OnRecord(const p25::TrunkingRecord& record) override;
};

/// `count` bytes as hex digits.
std::string Hex(const std::uint8_t* bytes, std::size_t count);

/// Hex digits without the spaces that make them readable.
std::string Packed(std::string_view hex);

} // namespace orva::test
