#include "tests/p25/DecodedStream.h"

#include <algorithm>
#include <memory>
#include <ostream>

namespace orva::test {

void PrintTo(const CallFields& fields, std::ostream* out) {
    *out << "transmission " << fields.transmission << " algorithm " << fields.algorithm << " NAC "
         << fields.networkAccessCode << " talk group " << fields.talkGroup << " source " << fields.source
         << " destination " << fields.destination;
}

CallFields FieldsOf(const p25::COrvaFrameDecoder& decoder) {
    return {decoder.GetTransmission(), decoder.GetAlgorithmId(), decoder.GetNetworkAccessCode(),
            decoder.GetTalkGroup(),    decoder.GetSourceId(),    decoder.GetDestinationId()};
}

std::string ToHex(const p25::TrunkingRecord& record) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string hex;
    for (const std::uint8_t byte : record.Bytes()) {
        hex.push_back(kDigits[byte >> 4]);
        hex.push_back(kDigits[byte & 15]);
    }
    return hex;
}

std::string NidEvent(std::int32_t networkAccessCode, std::int32_t duid, std::int32_t corrected) {
    return "nid " + std::to_string(networkAccessCode) + " duid " + std::to_string(duid) + " corrected " +
           std::to_string(corrected);
}

std::string HeaderEvent(std::int32_t algorithm, std::int32_t talkGroup) {
    return "header algorithm " + std::to_string(algorithm) + " talk group " + std::to_string(talkGroup);
}

std::string LinkControlEvent(std::int32_t format, std::int32_t talkGroup, std::int32_t source,
                             std::int32_t destination) {
    return "link format " + std::to_string(format) + " talk group " + std::to_string(talkGroup) + " source " +
           std::to_string(source) + " destination " + std::to_string(destination);
}

std::string EncryptionSyncEvent(std::int32_t algorithm) {
    return "encryption algorithm " + std::to_string(algorithm);
}

std::string RecordEvent(const p25::TrunkingRecord& record) {
    return "record " + ToHex(record);
}

DecodedStream::DecodedStream(std::uint32_t blockSize) {
    decoder.SetBlockSize(blockSize);
    decoder.SetObserver(this);
}

std::int32_t DecodedStream::Feed(std::string_view dibits) {
    fed += dibits.size();
    const std::int32_t ready = decoder.Decode(dibits.data(), static_cast<std::int32_t>(dibits.size()));
    for (dsp::CtbSampleBlock* block = decoder.PopVoiceBlock(); block != nullptr;
         block = decoder.PopVoiceBlock()) {
        speech.insert(speech.end(), block->Data(), block->Data() + decoder.GetBlockSize());
        decoder.PushFreeBlock(block);
    }
    return ready;
}

void DecodedStream::FeedInPieces(std::string_view dibits, const std::function<std::size_t()>& nextLength) {
    while (!dibits.empty()) {
        const std::size_t length = std::min(nextLength(), dibits.size());
        Feed(dibits.substr(0, length));
        dibits.remove_prefix(length);
    }
}

void DecodedStream::OnNid(std::int32_t networkAccessCode, std::int32_t duid, std::int32_t corrected) {
    Note(NidEvent(networkAccessCode, duid, corrected));
}

void DecodedStream::OnHeader(std::int32_t algorithmId, std::int32_t talkGroup) {
    Note(HeaderEvent(algorithmId, talkGroup));
}

void DecodedStream::OnLinkControl(std::int32_t format, std::int32_t talkGroup, std::int32_t sourceId,
                                  std::int32_t destinationId) {
    Note(LinkControlEvent(format, talkGroup, sourceId, destinationId));
}

void DecodedStream::OnEncryptionSync(std::int32_t algorithmId) {
    Note(EncryptionSyncEvent(algorithmId));
}

void DecodedStream::OnVoiceBits(const voice::ImbeFrameBlock& frame) {
    VoiceBits bits;
    std::copy_n(frame.bits, bits.size(), bits.begin());
    voice.push_back(bits);
    errorTotals.push_back(frame.errorTotal);
}

void DecodedStream::OnVoiceFrame(const voice::ImbeFrameBlock& frame, float bitErrorRate) {
    errorRates.push_back(bitErrorRate);
    synthesised.insert(synthesised.end(), frame.samples, frame.samples + frame.sampleCount);
    Note(kVoiceEvent);
}

void DecodedStream::OnRecord(const p25::TrunkingRecord& record) {
    Note(RecordEvent(record));
}

void DecodedStream::OnTerminator() {
    Note(kTerminatorEvent);
}

void DecodedStream::OnLost() {
    Note(kLostEvent);
}

void DecodedStream::Note(const std::string& event) {
    events.push_back(event);
    places.push_back(fed - static_cast<std::size_t>(decoder.GetInputLeft()));
}

} // namespace orva::test
