#include "tools/orva-decode/FrameListener.h"

namespace orva::tools {

namespace {

constexpr std::int32_t kHeader = 0;
constexpr std::int32_t kLdu1 = 5;
constexpr std::int32_t kLdu2 = 10;
constexpr std::int32_t kFormatGroupVoice = 0;
constexpr std::int32_t kFormatUnitVoice = 3;

} // namespace

const char* FrameName(std::int32_t duid) {
    switch (duid) {
    case kHeader:
        return "HDU";
    case 3:
        return "TDU";
    case kLdu1:
        return "LDU1";
    case 7:
        return "TSBK";
    case kLdu2:
        return "LDU2";
    case 12:
        return "PDU";
    case 15:
        return "TDULC";
    default:
        return "unknown";
    }
}

void FrameListener::SetStretch(double start, double end, std::int32_t count) {
    stretchEnd = end;
    secondsPerDibit = count > 0 ? (end - start) / count : 0.0;
}

double FrameListener::Now() const {
    return stretchEnd - secondsPerDibit * decoder.GetInputLeft();
}

void FrameListener::OnNid(std::int32_t networkAccessCode, std::int32_t duid, std::int32_t corrected) {
    if (duid == kHeader && corrected >= 0) {
        calls.NoteHeader(Now());
    }
    const bool isVoice = duid == kHeader || duid == kLdu1 || duid == kLdu2;
    calls.NoteNid(Now(), networkAccessCode, FrameName(duid), isVoice, corrected >= 0);
    if (plot != nullptr) {
        plot->NoteFrame(Now(), duid);
    }
    if (events != nullptr) {
        events->Nid(Now(), networkAccessCode, duid, FrameName(duid), corrected);
    }
}

void FrameListener::OnHeader(std::int32_t algorithmId, std::int32_t talkGroup) {
    calls.NoteAlgorithm(algorithmId);
    calls.NoteTalkGroup(talkGroup);
    if (events != nullptr) {
        events->Header(Now(), algorithmId, talkGroup);
    }
}

void FrameListener::OnLinkControl(std::int32_t format, std::int32_t talkGroup, std::int32_t sourceId,
                                  std::int32_t destinationId) {
    if (format == kFormatGroupVoice || format == kFormatUnitVoice) {
        calls.NoteAddresses(format == kFormatGroupVoice, talkGroup, sourceId, destinationId);
    }
    if (events != nullptr) {
        events->LinkControl(Now(), format, talkGroup, sourceId, destinationId);
    }
}

void FrameListener::OnEncryptionSync(std::int32_t algorithmId) {
    calls.NoteAlgorithm(algorithmId);
    if (events != nullptr) {
        events->EncryptionSync(Now(), algorithmId);
    }
}

void FrameListener::OnVoiceBits(const voice::ImbeFrameBlock& frame) {
    if (events != nullptr) {
        voiceBits = HexOfBits(frame.bits);
    }
}

void FrameListener::OnVoiceFrame(const voice::ImbeFrameBlock& frame, float bitErrorRate) {
    calls.NoteVoice(Now(), frame);
    if (plot != nullptr) {
        plot->NoteErrorRate(Now(), bitErrorRate);
    }
    if (events != nullptr) {
        events->Voice(Now(), voiceBits, frame, bitErrorRate);
    }
}

void FrameListener::OnTrunkingBlock(const p25::TrunkingBlock& block, bool hasGoodCrc, std::uint32_t errors) {
    channel.NoteBlock(block, hasGoodCrc);
    if (plot != nullptr) {
        plot->NoteErrorRate(Now(), decoder.GetBitErrorRate());
    }
    if (events != nullptr) {
        events->TrunkingBlock(Now(), block, hasGoodCrc, errors);
    }
}

void FrameListener::OnRecord(const p25::TrunkingRecord& record) {
    channel.NoteRecord(record);
    if (events != nullptr) {
        events->Record(Now(), record);
    }
}

void FrameListener::OnTerminator() {
    calls.NoteTerminator(Now());
    if (events != nullptr) {
        events->Terminator(Now());
    }
}

void FrameListener::OnLost() {
    calls.NoteLost(Now());
    if (events != nullptr) {
        events->Lost(Now());
    }
}

} // namespace orva::tools
