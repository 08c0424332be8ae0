#include "p25/COrvaFrameDecoder.h"

#include "p25/DibitText.h"
#include "p25/FrameSync.h"
#include "p25/NetworkIdentifier.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace orva::p25 {

namespace {

constexpr int kSearchLimit = 11;       ///< sync accepted below this sum, in the open
constexpr int kSearchLargestLimit = 2; ///< and with no position off by this much
constexpr int kExpectedLimit = 16;     ///< sync lost from this sum on, where its place is known

constexpr std::int32_t kPhaseAfterSync = kSyncLength;

/// Dibits behind the NID: a terminator has 72 in all, with link control 216; 24 are sync and 33 NID with
/// status.
constexpr std::int32_t kTerminatorLength = 15;
constexpr std::int32_t kTerminatorLcLength = 159;

/// A little over two seconds at 4800 symbols a second.
constexpr std::uint32_t kIdleDibits = 10000;

constexpr std::uint32_t kHeaderFirstSymbol = 27; ///< the (36,20) word fills the last 36 of 63 symbols

constexpr std::uint32_t kSymbolBits = 6;
constexpr std::uint32_t kParityEncryption = 8;
constexpr std::uint32_t kParityHeader = 16;
constexpr std::uint32_t kParityLinkControl = 12;

constexpr std::uint32_t kErrorBadArgument = 3;
constexpr std::uint32_t kErrorBadState = 4;

} // namespace

COrvaFrameDecoder::COrvaFrameDecoder()
    : rsEncryption(kSymbolBits), rsHeader(kSymbolBits), rsLinkControl(kSymbolBits) {
    rsEncryption.Init(kParityEncryption, 1, 1);
    rsHeader.Init(kParityHeader, 1, 1);
    rsLinkControl.Init(kParityLinkControl, 1, 1);
    Reset();
}

COrvaFrameDecoder::~COrvaFrameDecoder() {
    DestroyReadyBlocks();
    dsp::CtbSampleBlock* spare = nullptr;
    while (freeBlocks.Pop(spare)) {
        delete spare;
    }
}

void COrvaFrameDecoder::Reset() {
    constexpr std::size_t kClearedWindow = 25;
    state = State::Search;
    std::memset(window, 0, kClearedWindow);
    voice::ImbeInit(voiceState);
    errorCode = 0;
    blockFill = 0;
    bitErrorRate = 0;
    transmission = Transmission::None;
    algorithmId = -1;
    ForgetCall();
    DestroyReadyBlocks();
    errorSum = 0;
    std::fill(std::begin(errorRing), std::end(errorRing), 0U);
    errorRingIndex = 0;
}

std::int32_t COrvaFrameDecoder::Decode(const char* text, std::int32_t count) {
    if (text == nullptr || count < 1) {
        errorCode = kErrorBadArgument;
        return -1;
    }
    input = text;
    inputLeft = count;
    while (inputLeft != 0) {
        if (!RunState()) {
            inputLeft = 0;
            return -1;
        }
    }
    return readyCount;
}

bool COrvaFrameDecoder::RunState() {
    switch (state) {
    case State::Search:
        return Search();
    case State::ReadNid:
        return ReadNid();
    case State::ReadLdu1:
    case State::ReadLdu2:
        return ReadLdu(state);
    case State::ExpectSync:
        return ExpectSync(State::Drop);
    case State::ReadHeader:
        return ReadHeader();
    case State::SkipTerminatorLc:
        return SkipTerminator(kTerminatorLcLength);
    case State::SkipTerminator:
        return SkipTerminator(kTerminatorLength);
    case State::ExpectSyncAfterEnd:
        return ExpectSync(State::Search);
    case State::ReadTrunking:
        return ReadTrunking();
    case State::SeekAfterTrunking:
        return SeekAfterTrunking();
    case State::Drop:
        EnterState(State::Search);
        transmission = Transmission::None;
        ForgetCall();
        algorithmId = -1;
        return true;
    }
    errorCode = kErrorBadState;
    return false;
}

char COrvaFrameDecoder::ReadDibit() {
    if (inputLeft < 1 || input == nullptr) {
        return kEndOfInput;
    }
    --inputLeft;
    return *input++;
}

void COrvaFrameDecoder::ShiftWindow(char dibit) {
    std::memmove(window, window + 1, kSyncLength - 1);
    window[kSyncLength - 1] = dibit;
}

void COrvaFrameDecoder::EnterState(State next) {
    state = next;
    frameCounter = 0;
}

void COrvaFrameDecoder::EnterReadNid() {
    EnterState(State::ReadNid);
    statusPhase = kPhaseAfterSync;
}

void COrvaFrameDecoder::ForgetCall() {
    networkAccessCode = -1;
    talkGroup = -1;
    sourceId = -1;
    destinationId = -1;
}

bool COrvaFrameDecoder::Search() {
    constexpr std::size_t kClearedText = 35;
    for (char dibit = ReadDibit(); dibit != kEndOfInput; dibit = ReadDibit()) {
        ShiftWindow(dibit);
        int largest = 0;
        if (SyncDistance(window, largest) < kSearchLimit && largest < kSearchLargestLimit) {
            EnterReadNid();
            std::memset(window, '0', kClearedText);
            window[kClearedText] = '\0';
            return true;
        }
        const bool mayExpire = transmission == Transmission::Unknown ||
                               transmission == Transmission::Trunking || transmission == Transmission::Data;
        if (mayExpire && --idleCountdown == 0) {
            transmission = Transmission::None;
            EnterState(State::Search);
            ForgetCall();
            algorithmId = -1;
        }
    }
    return true;
}

bool COrvaFrameDecoder::ReadNid() {
    for (char dibit = ReadDibit(); dibit != kEndOfInput; dibit = ReadDibit()) {
        if (statusPhase != kStatusPeriod - 1) {
            window[frameCounter] = dibit;
            ++frameCounter;
        }
        statusPhase = (statusPhase + 1) % kStatusPeriod;
        if (frameCounter == kNidLength) {
            window[kNidLength] = '\0';
            std::uint32_t corrected = 0;
            // Beyond correction the word is used as it was received: the frame is handled all the same.
            const bool valid = CorrectNid(window, &corrected);
            constexpr int kNacDibits = 6;
            networkAccessCode = 0;
            for (int i = 0; i < kNacDibits; ++i) {
                networkAccessCode = 4 * networkAccessCode + (window[i] - '0');
            }
            const int high = window[kNacDibits] - '0';
            const int low = window[kNacDibits + 1] - '0';
            if (observer != nullptr) {
                observer->OnNid(networkAccessCode, 4 * high + low,
                                valid ? static_cast<std::int32_t>(corrected) : -1);
            }
            DispatchDataUnit(10 * high + low);
            return true;
        }
    }
    return true;
}

void COrvaFrameDecoder::DispatchDataUnit(int key) {
    switch (static_cast<DataUnit>(key)) {
    case DataUnit::Header:
        EnterState(State::ReadHeader);
        transmission = Transmission::Voice;
        algorithmId = -1;
        sourceId = -1;
        destinationId = -1;
        std::fill(std::begin(symbols), std::end(symbols), 0U);
        headerWriteIndex = kHeaderFirstSymbol;
        headerAccumulator = 0;
        return;
    case DataUnit::Terminator:
        EnterState(State::SkipTerminator);
        transmission = Transmission::EndOfVoice;
        return;
    case DataUnit::TerminatorLc:
        EnterState(State::SkipTerminatorLc);
        transmission = Transmission::EndOfVoice;
        return;
    case DataUnit::Ldu1:
        EnterState(State::ReadLdu1);
        transmission = Transmission::Voice;
        voicePosition = 0;
        linkWords.Restart();
        return;
    case DataUnit::Ldu2:
        EnterState(State::ReadLdu2);
        transmission = Transmission::Voice;
        voicePosition = 0;
        syncWords.Restart();
        return;
    case DataUnit::Trunking:
        EnterState(State::ReadTrunking);
        transmission = Transmission::Trunking;
        return;
    case DataUnit::Packet:
        // The packet's blocks are not decoded: the search slides over them.
        EnterState(State::Search);
        transmission = Transmission::Data;
        idleCountdown = kIdleDibits;
        return;
    }
    EnterState(State::Search);
    transmission = Transmission::Unknown;
    idleCountdown = kIdleDibits;
}

bool COrvaFrameDecoder::ExpectSync(State onLoss) {
    for (char dibit = ReadDibit(); dibit != kEndOfInput; dibit = ReadDibit()) {
        window[frameCounter++] = dibit;
        if (frameCounter < kSyncLength) {
            continue;
        }
        int largest = 0;
        if (SyncDistance(window, largest) < kExpectedLimit) {
            EnterReadNid();
        } else {
            LoseSync(onLoss);
        }
        return true;
    }
    return true;
}

void COrvaFrameDecoder::LoseSync(State onLoss) {
    if (onLoss == State::Drop) {
        state = State::Drop;
        if (observer != nullptr) {
            observer->OnLost();
        }
        return;
    }
    // After a terminator the transmission has simply ended; `algorithmId` stays as it was.
    EnterState(State::Search);
    transmission = Transmission::None;
    ForgetCall();
}

bool COrvaFrameDecoder::SkipTerminator(std::int32_t length) {
    for (char dibit = ReadDibit(); dibit != kEndOfInput; dibit = ReadDibit()) {
        if (++frameCounter == length) {
            QueueRecord(TrunkingRecord::MakeEndOfCall(static_cast<std::uint32_t>(networkAccessCode)));
            if (observer != nullptr) {
                observer->OnTerminator();
            }
            EnterState(State::ExpectSyncAfterEnd);
            return true;
        }
    }
    return true;
}

void COrvaFrameDecoder::QueueRecord(const TrunkingRecord& record) {
    // A record that finds no memory is lost; nothing else depends on it.
    if (records.Push(record) && observer != nullptr) {
        observer->OnRecord(record);
    }
}

std::unique_ptr<std::uint8_t[]> COrvaFrameDecoder::TakeRecords(std::uint32_t* byteSize) {
    static constexpr char kMessageName[] = "K728 ORVA";
    constexpr std::size_t kNameSize = 128;
    constexpr std::uint32_t kVersion = 256;
    constexpr std::uint32_t kMessageHeader = kNameSize + 3 * sizeof(std::uint32_t);

    const auto count = static_cast<std::uint32_t>(records.Count());
    const std::uint32_t size = count == 0 ? 0 : kMessageHeader + count * kTrunkingRecordSize;
    if (byteSize != nullptr) {
        *byteSize = size;
    }
    if (count == 0) {
        return nullptr;
    }
    std::unique_ptr<std::uint8_t[]> message(new (std::nothrow) std::uint8_t[size]());
    if (!message) {
        return nullptr;
    }
    std::memcpy(message.get(), kMessageName, sizeof(kMessageName));
    std::uint8_t* place = message.get() + kNameSize;
    for (const std::uint32_t field :
         {kVersion, count * kTrunkingRecordSize + static_cast<std::uint32_t>(sizeof(count)), count}) {
        for (std::size_t i = 0; i < sizeof(field); ++i) {
            *place++ = static_cast<std::uint8_t>(field >> 8 * i);
        }
    }
    TrunkingRecord record;
    while (records.Pop(record)) {
        place = std::copy(record.Bytes().begin(), record.Bytes().end(), place);
    }
    return message;
}

} // namespace orva::p25
