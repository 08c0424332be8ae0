/// Bodies of header and logical link data units: signalling words, voice code words, and the blocks that
/// speech leaves in. The low-speed data of the data units is not decoded.
#include "p25/COrvaFrameDecoder.h"
#include "p25/DibitText.h"
#include "p25/GolayCode.h"
#include "p25/HammingCode.h"

#include <algorithm>
#include <new>

namespace orva::p25 {

namespace {

constexpr std::int32_t kHeaderWordDibits = 9;
constexpr std::int32_t kHeaderWordsEnd = 325;  ///< first count behind the 36 words
constexpr std::int32_t kHeaderLastDibit = 328; ///< counted without status symbols
constexpr std::int32_t kLduLength = 807;       ///< dibits behind the NID, the last a status symbol

constexpr std::int32_t kVoiceDibits = 72;
constexpr std::uint32_t kLinkWordBits = 10;
constexpr std::uint32_t kFirstShortSymbol = 39; ///< where the 24 words of a data unit lie among 63 symbols

constexpr std::uint32_t kMinBlockSize = 200;
constexpr std::int32_t kReadyLimit =
    10; ///< beyond it the oldest audio is overwritten, which bounds the delay
constexpr std::uint32_t kErrorNoBlock = 1;
constexpr std::uint32_t kErrorNoNextBlock = 2;

constexpr std::uint32_t kFormatGroupVoice = 0;
constexpr std::uint32_t kFormatUnitVoice = 3;

/// Places of a data unit's dibits, counted from 1 behind the NID with status symbols (TIA-102.BAAA).
struct Range {
    std::int32_t first;
    std::int32_t last;

    bool Contains(std::int32_t position) const { return position >= first && position <= last; }
};
constexpr Range kSignallingWords[] = {{149, 169}, {244, 263}, {338, 358}, {433, 453}, {528, 547}, {622, 642}};
constexpr Range kLowSpeedData = {717, 732};

bool IsSignalling(std::int32_t position) {
    return std::any_of(std::begin(kSignallingWords), std::end(kSignallingWords),
                       [position](const Range& range) { return range.Contains(position); });
}

std::uint32_t DibitValue(char dibit) {
    return static_cast<std::uint32_t>(dibit) & kDibitMask;
}

/// An unsigned number of three or four 6-bit symbols, the first the most significant.
std::uint32_t JoinSymbols(const std::uint32_t* first, int count) {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i) {
        value = 64 * value + first[i];
    }
    return value;
}

/// The 16-bit talk group in symbols 44 to 46, of which the first gives its low four bits.
std::uint32_t TalkGroupIn(const std::uint32_t* symbols) {
    return (symbols[44] & 15U) * 4096U + symbols[45] * 64U + symbols[46];
}

} // namespace

bool COrvaFrameDecoder::ReadHeader() {
    for (char dibit = ReadDibit(); dibit != kEndOfInput; dibit = ReadDibit()) {
        if (frameCounter > kHeaderLastDibit) {
            EnterState(State::ExpectSync);
            statusPhase = 0;
            voice::ImbeInit(voiceState);
            return true;
        }
        if (++statusPhase == kStatusPeriod) {
            statusPhase = 0;
            continue;
        }
        ++frameCounter;
        headerAccumulator = 4 * headerAccumulator + DibitValue(dibit);
        if (frameCounter < kHeaderWordsEnd && frameCounter % kHeaderWordDibits == 0) {
            symbols[headerWriteIndex++] = DecodeHeaderWord(headerAccumulator);
            headerAccumulator = 0;
            if (headerWriteIndex == kSymbols) {
                DecodeHeader();
            }
        }
    }
    return true;
}

void COrvaFrameDecoder::DecodeHeader() {
    rsHeader.Decode(kSymbols, symbols);
    headerWriteIndex = 0;
    manufacturerId = (symbols[39] & 3U) * 4U + (symbols[40] >> 4);
    algorithmId = static_cast<std::int32_t>((symbols[40] & 15U) * 16U + (symbols[41] >> 2 & 15U));
    talkGroup = static_cast<std::int32_t>(TalkGroupIn(symbols));
    if (observer != nullptr) {
        observer->OnHeader(algorithmId, talkGroup);
    }
}

bool COrvaFrameDecoder::ReadLdu(State kind) {
    for (char dibit = ReadDibit(); dibit != kEndOfInput; dibit = ReadDibit()) {
        if (frameCounter >= kLduLength - 1) {
            EnterState(State::ExpectSync);
            return true;
        }
        ++frameCounter;
        if (++statusPhase == kStatusPeriod) {
            statusPhase = 0;
            continue;
        }
        if (!TakeLduDibit(kind, dibit)) {
            return false;
        }
    }
    return true;
}

bool COrvaFrameDecoder::TakeLduDibit(State kind, char dibit) {
    const bool lowSpeed = kLowSpeedData.Contains(frameCounter);
    if (!lowSpeed && !IsSignalling(frameCounter)) {
        return TakeVoiceDibit(dibit);
    }
    if (kind == State::ReadLdu2) {
        // Low-speed data goes the same way here: the words are complete by then, and it only leaves stale
        // ones.
        if (syncWords.Collect(DibitValue(dibit))) {
            DecodeEncryptionSync();
        }
    } else if (!lowSpeed && linkWords.Collect(DibitValue(dibit))) {
        DecodeLinkControl();
    }
    return true;
}

bool COrvaFrameDecoder::WordCollector::Collect(std::uint32_t dibit) {
    accumulator = 4 * accumulator + dibit;
    bitCount += 2;
    if (bitCount < kLinkWordBits) {
        return false;
    }
    words[wordIndex++] = DecodeHamming(accumulator);
    accumulator = 0;
    bitCount = 0;
    if (wordIndex < kWords) {
        return false;
    }
    wordIndex = 0;
    return true;
}

void COrvaFrameDecoder::LoadSymbols(const WordCollector& collector) {
    std::fill_n(symbols, kFirstShortSymbol, 0U);
    std::copy(std::begin(collector.words), std::end(collector.words), symbols + kFirstShortSymbol);
}

void COrvaFrameDecoder::DecodeLinkControl() {
    const std::int32_t previousSource = sourceId;
    auto destination = static_cast<std::uint32_t>(-1);
    LoadSymbols(linkWords);
    rsLinkControl.Decode(kSymbols, symbols);

    const std::uint32_t format = (symbols[39] * 4U + (symbols[40] >> 4 & 3U)) & 0xFFU;
    if (format == kFormatGroupVoice) {
        ApplyGroupVoice(destination);
    } else if (format == kFormatUnitVoice) {
        ApplyUnitVoice(destination);
    }
    if (observer != nullptr) {
        observer->OnLinkControl(static_cast<std::int32_t>(format), talkGroup, sourceId, destinationId);
    }
    if (sourceId != previousSource) {
        QueueNewSpeaker(destination);
    }
}

void COrvaFrameDecoder::ApplyGroupVoice(std::uint32_t& destination) {
    // The shift of 4, against 2 in the header, is kept.
    manufacturerId = (symbols[40] & 15U) * 16U + (symbols[41] >> 4 & 15U);
    talkGroup = static_cast<std::int32_t>(TalkGroupIn(symbols));
    destination = static_cast<std::uint32_t>(talkGroup) | kGroupAddress;
    sourceId = static_cast<std::int32_t>(JoinSymbols(symbols + 47, 4));
}

void COrvaFrameDecoder::ApplyUnitVoice(std::uint32_t& destination) {
    manufacturerId = (symbols[40] & 15U) * 16U + (symbols[41] >> 4 & 15U);
    destinationId = static_cast<std::int32_t>(JoinSymbols(symbols + 43, 4));
    destination = static_cast<std::uint32_t>(destinationId);
    sourceId = static_cast<std::int32_t>(JoinSymbols(symbols + 47, 4));
}

void COrvaFrameDecoder::QueueNewSpeaker(std::uint32_t destination) {
    TrunkingRecord record(TrunkingRecordType::NewSpeaker);
    record.SetChannel(kNoChannelIdentifier, kNoChannelNumber);
    record.SetNetworkAccessCode(static_cast<std::uint32_t>(networkAccessCode));
    record.SetFrequency(kNoFrequency);
    record.SetSource(static_cast<std::uint32_t>(sourceId));
    record.SetDestination(destination);
    record.SetServiceOptions(kDefaultServiceOptions);
    QueueRecord(record);
}

void COrvaFrameDecoder::DecodeEncryptionSync() {
    LoadSymbols(syncWords);
    rsEncryption.Decode(kSymbols, symbols);
    algorithmId = static_cast<std::int32_t>(symbols[51] * 4U + (symbols[52] >> 4 & 3U));
    if (observer != nullptr) {
        observer->OnEncryptionSync(algorithmId);
    }
}

bool COrvaFrameDecoder::TakeVoiceDibit(char dibit) {
    window[voicePosition++] = dibit;
    if (voicePosition < kVoiceDibits) {
        return true;
    }
    voicePosition = 0;
    return DecodeVoiceFrame();
}

bool COrvaFrameDecoder::DecodeVoiceFrame() {
    for (int i = 0; i < kVoiceDibits; ++i) {
        const int value = window[i] - '0';
        if (value >= 0 && value <= 3) {
            voiceFrame.bits[2 * i] = static_cast<std::uint8_t>(value >> 1);
            voiceFrame.bits[2 * i + 1] = static_cast<std::uint8_t>(value & 1);
        }
    }
    voiceFrame.sampleCount = voice::kNominalFrameLength;
    voiceFrame.softBits = 1;
    voiceFrame.status = 0;
    voice::ImbeDecodeCodeWords(voiceFrame, voiceState);
    constexpr double kPercentPerStep =
        100.0 / 32768.0; // of a Q15 number; exact, as the divisor is a power of two
    bitErrorRate = static_cast<float>(voiceFrame.errorRate * kPercentPerStep);
    if (observer != nullptr) {
        observer->OnVoiceBits(voiceFrame);
    }
    voice::ImbeSynthesizeFrame(voiceFrame, voiceState);
    if (observer != nullptr) {
        observer->OnVoiceFrame(voiceFrame, bitErrorRate);
    }
    return StoreSamples(voiceFrame.samples, static_cast<std::uint32_t>(voiceFrame.sampleCount));
}

bool COrvaFrameDecoder::StoreSamples(const std::int16_t* samples, std::uint32_t count) {
    if (!currentBlock && !ObtainBlock()) {
        errorCode = blockFill > 0 ? kErrorNoNextBlock : kErrorNoBlock;
        return false;
    }
    const std::uint32_t fitting = std::min(count, blockSize - blockFill);
    std::copy_n(samples, fitting, currentBlock->Data() + blockFill);
    blockFill += fitting;
    if (blockFill < blockSize) {
        return true;
    }
    currentBlock->SetUsed(blockSize);
    if (readyBlocks.Push(currentBlock.get())) {
        (void)currentBlock.release(); // the queue owns it now
        ++readyCount;
    } else {
        currentBlock.reset();
    }
    if (fitting == count) {
        return true;
    }
    if (!ObtainBlock()) {
        errorCode = kErrorNoBlock;
        return false;
    }
    std::copy_n(samples + fitting, count - fitting, currentBlock->Data());
    blockFill = count - fitting;
    return true;
}

/// A recycled block, else the oldest ready one when the listener has fallen behind, else a new one.
bool COrvaFrameDecoder::ObtainBlock() {
    dsp::CtbSampleBlock* recycled = nullptr;
    if (!freeBlocks.Pop(recycled) && readyCount >= kReadyLimit && readyBlocks.Pop(recycled)) {
        --readyCount;
    }
    currentBlock.reset(recycled != nullptr ? recycled : new (std::nothrow) dsp::CtbSampleBlock);
    if (!currentBlock || currentBlock->Acquire(blockSize) == nullptr) {
        currentBlock.reset();
        return false;
    }
    blockFill = 0;
    return true;
}

void COrvaFrameDecoder::SetBlockSize(std::uint32_t samples) {
    samples = std::max(samples, kMinBlockSize);
    if (samples == blockSize) {
        return;
    }
    blockSize = samples;
    currentBlock.reset();
    DestroyReadyBlocks();
    dsp::CtbSampleBlock* spare = nullptr;
    while (freeBlocks.Pop(spare)) {
        delete spare;
    }
}

void COrvaFrameDecoder::DestroyReadyBlocks() {
    dsp::CtbSampleBlock* ready = nullptr;
    while (readyBlocks.Pop(ready)) {
        delete ready;
    }
    readyCount = 0;
}

dsp::CtbSampleBlock* COrvaFrameDecoder::PopVoiceBlock() {
    dsp::CtbSampleBlock* ready = nullptr;
    if (!readyBlocks.Pop(ready)) {
        return nullptr;
    }
    --readyCount;
    return ready;
}

void COrvaFrameDecoder::PushFreeBlock(dsp::CtbSampleBlock* returned) {
    if (returned != nullptr && !freeBlocks.Push(returned)) {
        delete returned;
    }
}

} // namespace orva::p25
