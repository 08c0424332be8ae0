/// Trunking signalling blocks: trellis, CRC and error count, and the way back to the next frame.
#include "p25/COrvaFrameDecoder.h"
#include "p25/DibitText.h"
#include "p25/FrameSync.h"
#include "p25/TrunkingMessages.h"

namespace orva::p25 {

namespace {

constexpr std::int32_t kBlockDibits = 98;
constexpr std::uint32_t kBlockSymbols = kBlockDibits / 2;
constexpr std::uint32_t kBlockBits = 196;
constexpr std::uint8_t kLastHandledOpcode = 52;

constexpr std::int32_t kSeekLimit = 100;
constexpr int kSeekDistance = 16;

/// Received symbol i belongs at position `InterleaverPosition(i)`: rows by stride 4, the first with 13
/// symbols.
constexpr std::uint32_t kInterleaverStride = 4;
constexpr std::uint32_t InterleaverPosition(std::uint32_t i) {
    std::uint32_t row = 0;
    std::uint32_t length = kBlockSymbols / kInterleaverStride + 1;
    while (i >= length) {
        i -= length;
        ++row;
        length = kBlockSymbols / kInterleaverStride;
    }
    return kInterleaverStride * i + row;
}
static_assert(InterleaverPosition(12) == 48 && InterleaverPosition(13) == 1 && InterleaverPosition(48) == 47);

} // namespace

bool COrvaFrameDecoder::ReadTrunking() {
    for (char dibit = ReadDibit(); dibit != kEndOfInput; dibit = ReadDibit()) {
        if (statusPhase != kStatusPeriod - 1) {
            const std::uint32_t value = static_cast<std::uint32_t>(dibit) & kDibitMask;
            if (frameCounter % 2 == 0) {
                trunkingNibble = static_cast<std::uint8_t>(4 * value);
            } else {
                trunkingNibble = static_cast<std::uint8_t>(trunkingNibble | value);
                window[frameCounter / 2] = static_cast<char>(trunkingNibble);
            }
            if (++frameCounter == kBlockDibits) {
                DecodeTrunkingBlock();
                frameCounter = 0;
                if (block.IsLast()) {
                    state = State::SeekAfterTrunking;
                    return true;
                }
            }
        }
        statusPhase = (statusPhase + 1) % kStatusPeriod;
    }
    return true;
}

void COrvaFrameDecoder::DecodeTrunkingBlock() {
    std::uint8_t ordered[kBlockSymbols] = {};
    for (std::uint32_t i = 0; i < kBlockSymbols; ++i) {
        ordered[InterleaverPosition(i)] = static_cast<std::uint8_t>(window[i]);
    }
    std::uint32_t errors = 0;
    if (trellis.Decode(ordered, kBlockSymbols) != kBlockSymbols) {
        return;
    }
    const std::uint8_t* dibits = trellis.GetResult(&errors);
    for (std::uint32_t i = 0; i < kTrunkingBlockBytes; ++i) {
        const std::uint8_t* four = dibits + std::size_t{4} * i;
        block.bytes[i] = static_cast<std::uint8_t>(four[0] << 6 | four[1] << 4 | four[2] << 2 | four[3]);
    }
    const bool isGood = block.HasGoodCrc();
    CountTrunkingErrors(isGood ? errors : kBlockBits);
    if (observer != nullptr) {
        observer->OnTrunkingBlock(block, isGood, errors);
    }
    if (isGood && !block.IsProtected() && block.Opcode() <= kLastHandledOpcode) {
        HandleTrunkingBlock();
    }
}

void COrvaFrameDecoder::HandleTrunkingBlock() {
    const TrunkingRecords made =
        InterpretTrunkingBlock(block, channelTable, static_cast<std::uint32_t>(networkAccessCode));
    for (int i = 0; i < made.count; ++i) {
        QueueRecord(made.record[i]);
    }
}

const char* COrvaFrameDecoder::GetMessageName(std::uint8_t opcode) {
    return GetTrunkingMessageName(opcode);
}

void COrvaFrameDecoder::SetTunedFrequency(std::uint32_t hz) {
    channelTable.SetTunedFrequency(hz);
    records.Clear();
}

/// The rate over the last 50 blocks; a block with a bad CRC counts as wrong in all its bits.
void COrvaFrameDecoder::CountTrunkingErrors(std::uint32_t errors) {
    errorSum = errorSum - errorRing[errorRingIndex] + errors;
    errorRing[errorRingIndex] = errors;
    errorRingIndex = (errorRingIndex + 1) % kErrorRingSize;
    bitErrorRate = static_cast<float>(errorSum * 100.0 / (kErrorRingSize * kBlockBits));
}

bool COrvaFrameDecoder::SeekAfterTrunking() {
    for (char dibit = ReadDibit(); dibit != kEndOfInput; dibit = ReadDibit()) {
        if (frameCounter < kSyncLength) {
            window[frameCounter++] = dibit;
            continue;
        }
        ShiftWindow(dibit);
        int largest = 0;
        if (SyncDistance(window, largest) < kSeekDistance) {
            EnterReadNid();
            return true;
        }
        if (++frameCounter == kSeekLimit) {
            EnterState(State::Search);
            transmission = Transmission::None;
            ForgetCall();
            return true;
        }
    }
    return true;
}

} // namespace orva::p25
