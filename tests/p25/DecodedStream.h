#pragma once

#include "p25/COrvaFrameDecoder.h"
#include "tests/support/VoiceCode.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace orva::test {

/// The fields that a frame decoder shows.
struct CallFields {
    std::uint32_t transmission = 0;
    std::int32_t algorithm = -1;
    std::int32_t networkAccessCode = -1;
    std::int32_t talkGroup = -1;
    std::int32_t source = -1;
    std::int32_t destination = -1;

    bool operator==(const CallFields&) const = default;
};

void PrintTo(const CallFields& fields, std::ostream* out);

CallFields FieldsOf(const p25::COrvaFrameDecoder& decoder);

/// The 22 bytes as 44 hex digits.
std::string ToHex(const p25::TrunkingRecord& record);

// How a `DecodedStream` writes events down.
std::string NidEvent(std::int32_t networkAccessCode, std::int32_t duid, std::int32_t corrected);
std::string HeaderEvent(std::int32_t algorithm, std::int32_t talkGroup);
std::string LinkControlEvent(std::int32_t format, std::int32_t talkGroup, std::int32_t source,
                             std::int32_t destination);
std::string EncryptionSyncEvent(std::int32_t algorithm);
std::string RecordEvent(const p25::TrunkingRecord& record);
inline constexpr const char* kVoiceEvent = "voice";
inline constexpr const char* kTerminatorEvent = "terminator";
inline constexpr const char* kLostEvent = "lost";

/// A frame decoder that is fed dibit text and everything that comes out of it. Voice blocks are taken after
/// each call and given back.
class DecodedStream final : public p25::IFrameObserver {
public:
    explicit DecodedStream(std::uint32_t blockSize = 512);

    /// One `Decode` call; returns its result.
    std::int32_t Feed(std::string_view dibits);

    /// One `Decode` call for each piece; `nextLength` gives the pieces' lengths, above 0.
    void FeedInPieces(std::string_view dibits, const std::function<std::size_t()>& nextLength);

    /// Events in order, and for each the number of dibits read when it came.
    std::vector<std::string> events;
    std::vector<std::size_t> places;

    std::vector<VoiceBits> voice;          ///< corrected bits of each voice frame
    std::vector<std::int16_t> errorTotals; ///< of each voice frame
    std::vector<float> errorRates;         ///< of each voice frame [percent]
    std::vector<std::int16_t> synthesised; ///< speech as the voice decoder made it
    std::vector<std::int16_t> speech;      ///< speech of the voice blocks that were full
    p25::COrvaFrameDecoder decoder;

    void OnNid(std::int32_t networkAccessCode, std::int32_t duid, std::int32_t corrected) override;
    void OnHeader(std::int32_t algorithmId, std::int32_t talkGroup) override;
    void OnLinkControl(std::int32_t format, std::int32_t talkGroup, std::int32_t sourceId,
                       std::int32_t destinationId) override;
    void OnEncryptionSync(std::int32_t algorithmId) override;
    void OnVoiceBits(const voice::ImbeFrameBlock& frame) override;
    void OnVoiceFrame(const voice::ImbeFrameBlock& frame, float bitErrorRate) override;
    void OnRecord(const p25::TrunkingRecord& record) override;
    void OnTerminator() override;
    void OnLost() override;

private:
    void Note(const std::string& event);

    std::size_t fed = 0; ///< dibits, those of the present call included
};

} // namespace orva::test
