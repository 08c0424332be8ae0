/// From the frame decoder's events to the event file and the call log.
#pragma once

#include "p25/COrvaFrameDecoder.h"
#include "tools/orva-decode/CallLog.h"
#include "tools/orva-decode/ControlChannelLog.h"
#include "tools/orva-decode/EventWriter.h"
#include "tools/orva-decode/SignalPlot.h"

#include <string>

namespace orva::tools {

/// Name of a data unit by its identifier, 0..15: "HDU", "LDU1", "LDU2", "TDU", "TDULC", "TSBK", "PDU",
/// "unknown".
const char* FrameName(std::int32_t duid);

/// Observer that knows when things happen: the caller tells it where each stretch of dibits lies in the
/// input.
class FrameListener final : public p25::IFrameObserver {
public:
    /// `eventWriter` may be null. All must outlive the listener.
    FrameListener(const p25::COrvaFrameDecoder& frameDecoder, CallLog& callLog, ControlChannelLog& channelLog,
                  EventWriter* eventWriter)
        : decoder(frameDecoder), calls(callLog), channel(channelLog), events(eventWriter) {}

    /// What draws the picture, or null for none, the default.
    void SetPlot(SignalPlot* picture) { plot = picture; }

    /// The next `count` dibits given to the decoder span `start` to `end`, in seconds of input.
    void SetStretch(double start, double end, std::int32_t count);

    void OnNid(std::int32_t networkAccessCode, std::int32_t duid, std::int32_t corrected) override;
    void OnHeader(std::int32_t algorithmId, std::int32_t talkGroup) override;
    void OnLinkControl(std::int32_t format, std::int32_t talkGroup, std::int32_t sourceId,
                       std::int32_t destinationId) override;
    void OnEncryptionSync(std::int32_t algorithmId) override;
    void OnVoiceBits(const voice::ImbeFrameBlock& frame) override;
    void OnVoiceFrame(const voice::ImbeFrameBlock& frame, float bitErrorRate) override;
    void OnTrunkingBlock(const p25::TrunkingBlock& block, bool hasGoodCrc, std::uint32_t errors) override;
    void OnRecord(const p25::TrunkingRecord& record) override;
    void OnTerminator() override;
    void OnLost() override;

private:
    double Now() const;

    const p25::COrvaFrameDecoder& decoder;
    CallLog& calls;
    ControlChannelLog& channel;
    EventWriter* events;
    SignalPlot* plot = nullptr;
    double stretchEnd = 0;
    double secondsPerDibit = 0;
    std::string voiceBits; ///< of the frame in hand, kept until it has been synthesised
};

} // namespace orva::tools
