/// Trunking signalling blocks: trellis, CRC and error count, and the way back to the next frame.
#include "p25/COrvaFrameDecoder.h"
#include "p25/FrameSync.h"

namespace orva::p25 {

namespace {

constexpr char kEndOfInput = static_cast<char>(0xFF);
constexpr std::uint32_t kDibitMask = 3;
constexpr std::int32_t kStatusPeriod = 36;

constexpr std::int32_t kBlockDibits = 98;
constexpr std::uint32_t kBlockSymbols = kBlockDibits / 2;
constexpr std::uint32_t kBlockBits = 196;
constexpr std::uint32_t kDataBytes = 10;
constexpr std::uint8_t kLastBlockFlag = 0x80;

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

/// CRC of the first ten bytes: x^16 + x^12 + x^5 + 1 over the data and 16 zero bits, inverted.
std::uint32_t ComputeCrc(const std::uint8_t* data) {
    constexpr std::uint32_t kPolynomial = 0x11021;
    constexpr std::uint32_t kCarry = 0x10000;
    constexpr std::uint32_t kMask = 0xFFFF;
    std::uint32_t remainder = static_cast<std::uint32_t>(data[0]) << 8 | data[1];
    for (std::uint32_t i = 2; i < kDataBytes + 2; ++i) {
        const std::uint32_t byte = i < kDataBytes ? data[i] : 0;
        for (int bit = 7; bit >= 0; --bit) {
            remainder = remainder << 1 | (byte >> bit & 1U);
            if ((remainder & kCarry) != 0) {
                remainder ^= kPolynomial;
            }
        }
    }
    return (remainder ^ kMask) & kMask;
}

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
                if ((block[0] & kLastBlockFlag) != 0) {
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
        block[i] = static_cast<std::uint8_t>(four[0] << 6 | four[1] << 4 | four[2] << 2 | four[3]);
    }
    const std::uint32_t received = static_cast<std::uint32_t>(block[10]) << 8 | block[11];
    CountTrunkingErrors(ComputeCrc(block) == received ? errors : kBlockBits);
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
