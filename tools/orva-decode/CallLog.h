/// What a person wants to know of a recording: its calls, and figures over all of it.
#pragma once

#include "voice/ImbeDecoder.h"

#include <bitset>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string_view>

namespace orva::tools {

/// One transmission, from its first header or voice frame to its terminator, or to where it was lost.
/// -1 stands for an unknown number.
struct Call {
    double start = 0; ///< seconds of input
    double end = 0;   ///< seconds of input
    std::int32_t networkAccessCode = -1;
    std::int32_t talkGroup = -1;
    std::int32_t source = -1;
    std::int32_t destination = -1; ///< of a unit to unit call
    std::int32_t algorithm = -1;
    std::uint64_t voiceFrames = 0;
    std::uint64_t correctedBits = 0; ///< in all its voice frames
    std::uint64_t concealedFrames = 0;
    bool terminated = false; ///< a terminator was received

    bool IsEncrypted() const;
    double VoiceSeconds() const;
    double ErrorRatePercent() const; ///< corrected bits of all bits of the voice code words
};

/// Figures over one input, of bounded size whatever its length.
struct Totals {
    static constexpr std::size_t kNetworkAccessCodes = 4096;

    std::map<std::string_view, std::uint64_t> frames;    ///< network identifiers by kind of frame
    std::bitset<kNetworkAccessCodes> networkAccessCodes; ///< of network identifiers that could be corrected
    std::uint64_t uncorrectable = 0;                     ///< network identifiers beyond correction
    std::uint64_t calls = 0;
    std::uint64_t voiceFrames = 0;
    std::uint64_t correctedBits = 0;
    std::uint64_t concealedFrames = 0;
    std::uint64_t lost = 0;
};

/// Gathers events into calls, and reports each call when it has ended.
class CallLog {
public:
    using Report = std::function<void(const Call&)>;

    explicit CallLog(Report onCall) : report(std::move(onCall)) {}

    void NoteNid(double time, std::int32_t networkAccessCode, const char* frame, bool isVoice,
                 bool isCorrected);
    /// A header was received: what follows is another call, if the present one has had voice already.
    void NoteHeader(double time);
    void NoteTalkGroup(std::int32_t talkGroup);
    void NoteAlgorithm(std::int32_t algorithm);
    void NoteAddresses(bool isGroup, std::int32_t talkGroup, std::int32_t source, std::int32_t destination);
    void NoteVoice(double time, const voice::ImbeFrameBlock& frame);
    void NoteTerminator(double time);
    void NoteLost(double time);

    /// Ends what is going on at the end of the input.
    void Finish(double time);

    const Totals& GetTotals() const { return totals; }

private:
    void EndCall(double time, bool terminated);

    Report report;
    std::optional<Call> call;
    Totals totals;
};

/// Percentage of wrong bits when `errors` were corrected in `frames` voice frames.
double VoiceErrorPercent(std::uint64_t errors, std::uint64_t frames);
double VoiceSeconds(std::uint64_t frames);

} // namespace orva::tools
