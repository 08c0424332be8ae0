/// From dibit text to frames, signalling and voice.
#pragma once

#include "dsp/CtbSampleBlock.h"
#include "dsp/Fifo.h"
#include "p25/ChannelTable.h"
#include "p25/CtbReedSolomon.h"
#include "p25/CtbTrellisDecoder.h"
#include "p25/IFrameObserver.h"
#include "p25/TrunkingBlock.h"
#include "p25/TrunkingRecord.h"
#include "voice/ImbeDecoder.h"

#include <cstdint>
#include <memory>

namespace orva::p25 {

/// What is on the air.
enum class Transmission : std::uint32_t {
    None = 0,
    Unknown = 1,
    Trunking = 2,
    Data = 3,
    Voice = 4,
    EndOfVoice = 5,
};

/// Walks the P25 phase 1 air interface frame by frame: hunts for the frame sync, reads the network
/// identifier, hands each frame's body to the code for its type, and gathers decoded speech into blocks.
///
/// Incremental: takes any slice of the stream; a frame may span any number of calls. A caller's cycle per
/// block of samples: `Decode`, read the fields, `TakeRecords`, then pop and give back as many voice blocks as
/// `Decode` reported.
///
/// Errors in frames never leave the machine: failed corrections pass into wrong values or a higher bit error
/// rate. All calls on one thread. Once warm, `Decode` allocates nothing.
class COrvaFrameDecoder {
public:
    COrvaFrameDecoder();
    ~COrvaFrameDecoder();
    COrvaFrameDecoder(const COrvaFrameDecoder&) = delete;
    COrvaFrameDecoder& operator=(const COrvaFrameDecoder&) = delete;

    /// Feeds `count` dibit characters "0" .. "3" (classes +1, +3, -1, -3), status symbols in their places.
    /// Returns the number of voice blocks ready to be popped; -1, with the rest of the input lost, for a null
    /// `text`, a count below 1, or when no memory could be had for a voice block.
    std::int32_t Decode(const char* text, std::int32_t count);

    /// Back to hunting for sync with all fields unknown. Drops ready voice blocks; keeps the block being
    /// filled, the free blocks and the queued records.
    void Reset();

    std::uint32_t GetTransmission() const { return static_cast<std::uint32_t>(transmission); }
    /// Encryption algorithm (0x80 none, 0x81 DES-OFB, 0x84 AES), -1 unknown.
    std::int32_t GetAlgorithmId() const { return algorithmId; }
    std::int32_t GetNetworkAccessCode() const { return networkAccessCode; } ///< 12 bits, -1 unknown
    std::int32_t GetTalkGroup() const { return talkGroup; }                 ///< 16 bits, -1 unknown
    std::int32_t GetSourceId() const { return sourceId; }                   ///< 24 bits, -1 unknown
    std::int32_t GetDestinationId() const { return destinationId; }         ///< 24 bits, -1 unknown
    float GetBitErrorRate() const { return bitErrorRate; }    ///< percent, of whatever came last
    std::uint32_t GetBlockSize() const { return blockSize; }  ///< samples of a voice block
    std::int32_t GetReadyCount() const { return readyCount; } ///< voice blocks waiting

    /// Samples of a voice block; below 200 becomes 200. A change destroys all blocks, the one being filled
    /// included.
    void SetBlockSize(std::uint32_t samples);

    /// The oldest ready voice block, of `GetBlockSize` samples at 8000 Hz, or null. The caller owns it, and
    /// gives it back with `PushFreeBlock` when done.
    dsp::CtbSampleBlock* PopVoiceBlock();
    void PushFreeBlock(dsp::CtbSampleBlock* block);

    /// The block being filled, or null, and the samples in it so far.
    const dsp::CtbSampleBlock* GetPartialBlock() const { return currentBlock.get(); }
    std::uint32_t GetPartialFill() const { return currentBlock ? blockFill : 0; }

    /// All queued records, in order, as one message for the host; null, with 0 stored, when there are none.
    /// Layout: name "K728 ORVA" in 128 bytes, u32 256, u32 22 n + 4, u32 n, n records of 22 bytes. The size
    /// in bytes goes to `byteSize`, which may be null. Without memory: null with the size stored, and the
    /// records stay queued.
    std::unique_ptr<std::uint8_t[]> TakeRecords(std::uint32_t* byteSize);

    /// Where the receiver is tuned [Hz], all ones when not known. Drops the queued records: they belong to
    /// the old frequency. Channel identifiers learned there are dropped when the next message needs them.
    void SetTunedFrequency(std::uint32_t hz);

    /// Channel identifiers learned from the air; they survive `Reset`.
    const ChannelTable& GetChannelTable() const { return channelTable; }

    /// Name of a trunking message, "Unknown" for an opcode without one.
    static const char* GetMessageName(std::uint8_t opcode);

    /// Dibits of the present `Decode` call not yet read; of use to an observer that wants to know where it
    /// is.
    std::int32_t GetInputLeft() const { return inputLeft; }

    /// One listener, or null for none, the default. Not owned; must outlive its use here.
    void SetObserver(IFrameObserver* listener) { observer = listener; }

private:
    friend struct COrvaFrameDecoderInspector;

    enum class State : std::uint32_t {
        Search = 0,             ///< slide over the stream until the sync matches strictly
        ReadNid = 1,            ///< 32 dibits of network identifier
        ReadLdu1 = 2,           ///< body of a logical link data unit 1
        ReadLdu2 = 3,           ///< body of a logical link data unit 2
        ExpectSync = 4,         ///< the next 24 dibits must be a sync
        ReadHeader = 5,         ///< body of a header data unit
        SkipTerminatorLc = 6,   ///< body of a terminator with link control
        SkipTerminator = 7,     ///< body of a simple terminator
        ExpectSyncAfterEnd = 8, ///< as `ExpectSync`, after a terminator
        ReadTrunking = 9,       ///< trunking signalling blocks
        SeekAfterTrunking = 10, ///< look for the next sync within 100 dibits
        Drop = 100,             ///< clear the call's fields and search
    };

    /// A logical link data unit's code words in progress: 24 Hamming words of 10 bits.
    struct WordCollector {
        static constexpr std::uint32_t kWords = 24;

        std::uint32_t accumulator = 0;
        std::uint32_t bitCount = 0;
        std::uint32_t wordIndex = 0;
        std::uint32_t words[kWords] = {}; ///< corrected, 6 bits each

        void Restart() { accumulator = bitCount = wordIndex = 0; }
        /// Takes the next dibit; true when it completed the last word, after which collecting starts over.
        bool Collect(std::uint32_t dibit);
    };

    // Driver and sync (COrvaFrameDecoder.cpp). A state function returns true to go on, also when the input
    // has run out, and false on failure.
    bool RunState();
    char ReadDibit();
    void ShiftWindow(char dibit);
    void EnterReadNid();
    void EnterState(State next);
    void ForgetCall();
    bool Search();
    bool ReadNid();
    void DispatchDataUnit(int key);
    bool ExpectSync(State onLoss);
    void LoseSync(State onLoss);
    bool SkipTerminator(std::int32_t length);
    void QueueRecord(const TrunkingRecord& record);

    // Headers, signalling words and voice (COrvaFrameDecoderVoice.cpp).
    bool ReadHeader();
    void DecodeHeader();
    bool ReadLdu(State kind);
    bool TakeLduDibit(State kind, char dibit);
    void LoadSymbols(const WordCollector& collector);
    void DecodeLinkControl();
    void ApplyGroupVoice(std::uint32_t& destination);
    void ApplyUnitVoice(std::uint32_t& destination);
    void QueueNewSpeaker(std::uint32_t destination);
    void DecodeEncryptionSync();
    bool TakeVoiceDibit(char dibit);
    bool DecodeVoiceFrame();
    bool StoreSamples(const std::int16_t* samples, std::uint32_t count);
    bool ObtainBlock();
    void DestroyReadyBlocks();

    // Trunking signalling (COrvaFrameDecoderTrunking.cpp).
    bool ReadTrunking();
    bool SeekAfterTrunking();
    void DecodeTrunkingBlock();
    void HandleTrunkingBlock();
    void CountTrunkingErrors(std::uint32_t errors);

    static constexpr std::uint32_t kDefaultBlockSize = 1024;
    static constexpr int kWindowSize = 100;
    static constexpr std::uint32_t kSymbols = 63;
    static constexpr std::uint32_t kErrorRingSize = 50;

    State state = State::Search;
    const char* input = nullptr;
    std::int32_t inputLeft = 0;
    char window[kWindowSize] =
        {}; ///< sync window, NID text, voice dibits or trunking symbols, one use at a time
    std::int32_t frameCounter = 0;  ///< dibits since the state began; which ones count differs by state
    std::int32_t voicePosition = 0; ///< dibits stored towards the next voice frame
    std::int32_t statusPhase = 0;   ///< position in the 36-dibit status period
    voice::ImbeDecoderState voiceState = {};
    voice::ImbeFrameBlock voiceFrame = {};
    std::uint32_t blockSize = kDefaultBlockSize;
    std::unique_ptr<dsp::CtbSampleBlock> currentBlock;
    std::uint32_t blockFill = 0;
    std::uint32_t errorCode = 0; ///< last internal failure, 1..4, 0 none
    dsp::Fifo<dsp::CtbSampleBlock*> readyBlocks;
    dsp::Fifo<dsp::CtbSampleBlock*> freeBlocks;
    std::int32_t readyCount = 0;
    float bitErrorRate = 0;
    Transmission transmission = Transmission::None;
    std::int32_t algorithmId = -1;
    std::int32_t networkAccessCode = -1;
    std::int32_t talkGroup = -1;
    std::int32_t sourceId = -1;
    std::int32_t destinationId = -1;
    std::uint32_t idleCountdown = 0; ///< dibits left before a transmission that is no voice is dropped
    dsp::Fifo<TrunkingRecord> records;

    std::uint32_t symbols[kSymbols] = {}; ///< Reed-Solomon word in hand, shared by header, LDU1 and LDU2
    CtbReedSolomon rsEncryption;          ///< (24,16)
    CtbReedSolomon rsHeader;              ///< (36,20)
    CtbReedSolomon rsLinkControl;         ///< (24,12)
    std::uint32_t headerAccumulator = 0;
    std::uint32_t headerWriteIndex = 0;
    std::uint32_t manufacturerId = 0;
    WordCollector linkWords;
    WordCollector syncWords;

    std::uint8_t trunkingNibble = 0;
    TrunkingBlock block; ///< in hand
    ChannelTable channelTable;
    CtbTrellisDecoder trellis;
    std::uint32_t errorSum = 0;                   ///< bit errors of the last 50 trunking blocks
    std::uint32_t errorRing[kErrorRingSize] = {}; ///< and each block's part of it
    std::uint32_t errorRingIndex = 0;

    IFrameObserver* observer = nullptr;
};

} // namespace orva::p25
