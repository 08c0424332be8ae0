/// Looks into a frame decoder and puts it where a test wants it.
#pragma once

#include "p25/COrvaFrameDecoder.h"

#include <cstdint>

namespace orva::p25 {

struct COrvaFrameDecoderInspector {
    // The states by their values.
    static constexpr std::uint32_t kSearch = 0;
    static constexpr std::uint32_t kReadNid = 1;
    static constexpr std::uint32_t kReadLdu1 = 2;
    static constexpr std::uint32_t kReadLdu2 = 3;
    static constexpr std::uint32_t kExpectSync = 4;
    static constexpr std::uint32_t kReadHeader = 5;
    static constexpr std::uint32_t kSkipTerminatorLc = 6;
    static constexpr std::uint32_t kSkipTerminator = 7;
    static constexpr std::uint32_t kExpectSyncAfterEnd = 8;
    static constexpr std::uint32_t kReadTrunking = 9;
    static constexpr std::uint32_t kSeekAfterTrunking = 10;
    static constexpr std::uint32_t kDrop = 100;

    COrvaFrameDecoder& decoder;

    std::uint32_t State() const { return static_cast<std::uint32_t>(decoder.state); }
    /// Enters a state with its counter at 0.
    void SetState(std::uint32_t state) {
        decoder.state = static_cast<COrvaFrameDecoder::State>(state);
        decoder.frameCounter = 0;
    }

    std::int32_t& FrameCounter() { return decoder.frameCounter; }
    std::int32_t& VoicePosition() { return decoder.voicePosition; }
    std::int32_t& StatusPhase() { return decoder.statusPhase; }
    std::uint32_t& IdleCountdown() { return decoder.idleCountdown; }
    char* Window() { return decoder.window; }
    voice::ImbeFrameBlock& VoiceFrame() { return decoder.voiceFrame; }
    voice::ImbeDecoderState& VoiceState() { return decoder.voiceState; }

    std::uint32_t ErrorCode() const { return decoder.errorCode; }
    std::uint32_t BlockFill() const { return decoder.blockFill; }
    std::uint32_t ManufacturerId() const { return decoder.manufacturerId; }

    std::uint32_t* Symbols() { return decoder.symbols; }
    std::uint32_t& HeaderAccumulator() { return decoder.headerAccumulator; }
    std::uint32_t& HeaderWriteIndex() { return decoder.headerWriteIndex; }
    std::uint32_t& LinkAccumulator() { return decoder.linkWords.accumulator; }
    std::uint32_t& LinkBitCount() { return decoder.linkWords.bitCount; }
    std::uint32_t& LinkWordIndex() { return decoder.linkWords.wordIndex; }
    std::uint32_t& SyncAccumulator() { return decoder.syncWords.accumulator; }
    std::uint32_t& SyncBitCount() { return decoder.syncWords.bitCount; }
    std::uint32_t& SyncWordIndex() { return decoder.syncWords.wordIndex; }

    std::uint32_t ErrorSum() const { return decoder.errorSum; }
    std::uint32_t ErrorRingIndex() const { return decoder.errorRingIndex; }

    /// What is on the air and all that is known of it.
    void SetFields(Transmission transmission, std::int32_t algorithm, std::int32_t networkAccessCode,
                   std::int32_t talkGroup, std::int32_t source, std::int32_t destination) {
        decoder.transmission = transmission;
        decoder.algorithmId = algorithm;
        decoder.networkAccessCode = networkAccessCode;
        decoder.talkGroup = talkGroup;
        decoder.sourceId = source;
        decoder.destinationId = destination;
    }
};

} // namespace orva::p25
