/// What the frame decoder tells of what it finds, to whoever wants to know.
#pragma once

#include "p25/TrunkingBlock.h"
#include "p25/TrunkingRecord.h"
#include "voice/ImbeDecoder.h"

#include <cstdint>

namespace orva::p25 {

/// Listener for the events of a `COrvaFrameDecoder`. Called from within `Decode`, on its thread, at the dibit
/// that completes the item; nothing in the decoder depends on it. Overrides must neither throw nor call the
/// decoder's changing operations; its accessors show the state after the item. -1 stands for an unknown
/// number throughout.
class IFrameObserver {
public:
    /// A network identifier was read. `duid` 0..15; `corrected` bits, -1 when it was beyond correction and is
    /// used as received.
    virtual void OnNid(std::int32_t /*networkAccessCode*/, std::int32_t /*duid*/,
                       std::int32_t /*corrected*/) {}

    /// A header data unit's fields were decoded.
    virtual void OnHeader(std::int32_t /*algorithmId*/, std::int32_t /*talkGroup*/) {}

    /// The link control word of an LDU1 was decoded. Only the formats 0 and 3 changed a field.
    virtual void OnLinkControl(std::int32_t /*format*/, std::int32_t /*talkGroup*/, std::int32_t /*sourceId*/,
                               std::int32_t /*destinationId*/) {}

    /// The encryption sync of an LDU2 was decoded.
    virtual void OnEncryptionSync(std::int32_t /*algorithmId*/) {}

    /// A voice frame's code words were corrected; the first 88 entries of `frame.bits` are the information
    /// bits. The synthesis, which comes next, may overwrite them.
    virtual void OnVoiceBits(const voice::ImbeFrameBlock& /*frame*/) {}

    /// The same frame was synthesised: `frame.status` holds the flags of the frame as it was treated.
    /// `bitErrorRate` in percent.
    virtual void OnVoiceFrame(const voice::ImbeFrameBlock& /*frame*/, float /*bitErrorRate*/) {}

    /// A trunking signalling block was read; with a bad CRC its bytes mean nothing. `errors` on the trellis
    /// path.
    virtual void OnTrunkingBlock(const TrunkingBlock& /*block*/, bool /*hasGoodCrc*/,
                                 std::uint32_t /*errors*/) {}

    /// A record was queued for `TakeRecords`.
    virtual void OnRecord(const TrunkingRecord& /*record*/) {}

    /// The body of a terminator, of either kind, has ended.
    virtual void OnTerminator() {}

    /// No sync where a call's next one was due. The call's fields still show; they are cleared before the
    /// next dibit is looked at.
    virtual void OnLost() {}

protected:
    ~IFrameObserver() = default;
};

} // namespace orva::p25
