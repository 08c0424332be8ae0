#include "tools/orva-decode/CallLog.h"

namespace orva::tools {

namespace {

constexpr std::int32_t kAlgorithmClear = 0x80;
constexpr double kFramesPerSecond = 50.0;

} // namespace

double VoiceErrorPercent(std::uint64_t errors, std::uint64_t frames) {
    constexpr double kPercent = 100.0;
    return frames == 0 ? 0.0
                       : kPercent * static_cast<double>(errors) /
                             (static_cast<double>(frames) * static_cast<double>(voice::kCodedBits));
}

double VoiceSeconds(std::uint64_t frames) {
    return static_cast<double>(frames) / kFramesPerSecond;
}

bool Call::IsEncrypted() const {
    return algorithm != -1 && algorithm != kAlgorithmClear;
}
double Call::VoiceSeconds() const {
    return tools::VoiceSeconds(voiceFrames);
}
double Call::ErrorRatePercent() const {
    return VoiceErrorPercent(correctedBits, voiceFrames);
}

void CallLog::NoteNid(double time, std::int32_t networkAccessCode, const char* frame, bool isVoice,
                      bool isCorrected) {
    ++totals.frames[frame];
    if (!isCorrected) {
        ++totals.uncorrectable;
    } else if (networkAccessCode >= 0 &&
               networkAccessCode < static_cast<std::int32_t>(Totals::kNetworkAccessCodes)) {
        totals.networkAccessCodes.set(static_cast<std::size_t>(networkAccessCode));
    }
    if (!isVoice) {
        return;
    }
    if (!call) {
        call.emplace();
        call->start = time;
    }
    // An identifier beyond correction names a network only until a better one comes.
    if (isCorrected || call->networkAccessCode == -1) {
        call->networkAccessCode = networkAccessCode;
    }
}

void CallLog::NoteHeader(double time) {
    if (call && call->voiceFrames > 0) {
        EndCall(time, false);
    }
}

void CallLog::NoteTalkGroup(std::int32_t talkGroup) {
    if (call) {
        call->talkGroup = talkGroup;
    }
}

void CallLog::NoteAlgorithm(std::int32_t algorithm) {
    if (call) {
        call->algorithm = algorithm;
    }
}

void CallLog::NoteAddresses(bool isGroup, std::int32_t talkGroup, std::int32_t source,
                            std::int32_t destination) {
    if (!call) {
        return;
    }
    call->source = source;
    if (isGroup) {
        call->talkGroup = talkGroup;
    } else {
        call->destination = destination;
    }
}

void CallLog::NoteVoice(double time, const voice::ImbeFrameBlock& frame) {
    const auto errors = static_cast<std::uint64_t>(frame.errorTotal);
    const std::uint64_t concealed = (frame.status & voice::kImbeFlagConcealed) != 0 ? 1 : 0;
    ++totals.voiceFrames;
    totals.correctedBits += errors;
    totals.concealedFrames += concealed;
    if (call) {
        ++call->voiceFrames;
        call->correctedBits += errors;
        call->concealedFrames += concealed;
        call->end = time;
    }
}

void CallLog::NoteTerminator(double time) {
    EndCall(time, true);
}

void CallLog::NoteLost(double time) {
    ++totals.lost;
    EndCall(time, false);
}

void CallLog::Finish(double time) {
    EndCall(time, false);
}

void CallLog::EndCall(double time, bool terminated) {
    if (!call) {
        return;
    }
    call->terminated = terminated;
    call->end = time;
    ++totals.calls;
    report(*call);
    call.reset();
}

} // namespace orva::tools
