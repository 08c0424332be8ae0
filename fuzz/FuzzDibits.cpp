/// Any dibit text, in any slices, into the frame decoder.
///
/// The input is a small language, so that the fuzzer gets past sync and network identifier and into the
/// bodies of the frames: byte 0 chooses the block size, byte 1 the slices, and then each byte gives four
/// dibits, but the byte 0xFF takes the next one as an order (see `DibitText::Order`).
#include "fuzz/InputBytes.h"
#include "fuzz/Require.h"
#include "p25/COrvaFrameDecoder.h"
#include "tests/support/FrameBuilder.h"

#include <array>
#include <cstring>
#include <string>

namespace orva::fuzz {

namespace {

constexpr std::size_t kDataUnits = 16;
constexpr std::size_t kOpeningDibits = 57; ///< sync and network identifier, a status symbol among them
constexpr std::size_t kLongestText = 20000;
constexpr std::int32_t kReadyLimit = 10;
constexpr std::size_t kMostHeld = 3; ///< voice blocks that the caller keeps for a while

/// Sync and network identifier of a frame of each type.
const std::array<std::string, kDataUnits>& Openings() {
    static const auto openings = [] {
        constexpr unsigned kNetworkAccessCode = 0x293;
        std::array<std::string, kDataUnits> texts;
        test::FrameBuilder builder;
        for (unsigned duid = 0; duid < kDataUnits; ++duid) {
            texts[duid] = builder.Frame(kNetworkAccessCode, duid, {}).substr(0, kOpeningDibits);
        }
        return texts;
    }();
    return openings;
}

/// Dibit text as the input describes it.
class DibitText {
public:
    explicit DibitText(InputBytes& input) {
        constexpr std::uint8_t kOrder = 0xFF;
        while (!input.IsAtEnd() && text.size() < kLongestText) {
            const std::uint8_t byte = input.Byte();
            if (byte == kOrder) {
                Order(input.Byte());
                continue;
            }
            for (int shift = 6; shift >= 0; shift -= 2) {
                text += static_cast<char>('0' + (byte >> shift & 3));
            }
        }
    }

    const std::string& Text() const { return text; }
    bool IsAllDibits() const { return isAllDibits; }

private:
    /// 0..15: a frame of this type begins. 16..31: a stretch of one dibit. 32..47: one of four dibits alone,
    /// to shift what follows. From 48 on: the character as it stands, whether it is a dibit or not.
    void Order(std::uint8_t order) {
        constexpr std::uint8_t kStretch = 16;
        constexpr std::uint8_t kSingle = 32;
        constexpr std::uint8_t kCharacter = 48;
        constexpr std::size_t kStretchUnit = 50;
        if (order < kStretch) {
            text += Openings()[order];
        } else if (order < kSingle) {
            text.append(kStretchUnit << (order >> 2 & 3U), static_cast<char>('0' + (order & 3)));
        } else if (order < kCharacter) {
            text += static_cast<char>('0' + (order & 3));
        } else {
            const auto character = static_cast<char>(order);
            isAllDibits = isAllDibits && character >= '0' && character <= '3';
            text += character;
        }
    }

    std::string text;
    bool isAllDibits = true;
};

/// All events in a single number: two decoders that were told the same agree in it.
class EventDigest final : public p25::IFrameObserver {
public:
    void OnNid(std::int32_t nac, std::int32_t duid, std::int32_t corrected) override {
        Add({1, nac, duid, corrected});
    }
    void OnHeader(std::int32_t algorithm, std::int32_t talkGroup) override { Add({2, algorithm, talkGroup}); }
    void OnLinkControl(std::int32_t format, std::int32_t talkGroup, std::int32_t source,
                       std::int32_t destination) override {
        Add({3, format, talkGroup, source, destination});
    }
    void OnEncryptionSync(std::int32_t algorithm) override { Add({4, algorithm}); }
    void OnVoiceBits(const voice::ImbeFrameBlock& frame) override {
        Add({5, frame.errorTotal, frame.errorRate, frame.status});
        AddBytes(frame.bits, voice::kInformationBits);
    }
    void OnVoiceFrame(const voice::ImbeFrameBlock& frame, float rate) override {
        Require(frame.sampleCount == voice::kNominalFrameLength, "a voice frame has 160 samples");
        Require(rate >= 0.0F && rate <= 100.0F, "a voice error rate is a percentage");
        Add({6, frame.status, frame.sampleCount});
        AddBytes(frame.samples, sizeof(frame.samples[0]) * voice::kNominalFrameLength);
    }
    void OnRecord(const p25::TrunkingRecord& record) override {
        Add({7});
        AddBytes(record.Bytes().data(), record.Bytes().size());
        ++records;
    }
    void OnTerminator() override { Add({8}); }
    void OnLost() override { Add({9}); }

    std::uint64_t Value() const { return digest; }
    std::uint32_t Records() const { return records; }

private:
    void Add(std::initializer_list<std::int32_t> values) {
        for (const std::int32_t value : values) {
            AddBytes(&value, sizeof(value));
        }
    }
    /// Fowler, Noll and Vo's hash 1a.
    void AddBytes(const void* bytes, std::size_t count) {
        constexpr std::uint64_t kPrime = 0x100000001B3;
        for (std::size_t i = 0; i < count; ++i) {
            digest = (digest ^ static_cast<const std::uint8_t*>(bytes)[i]) * kPrime;
        }
    }

    std::uint64_t digest = 0xCBF29CE484222325;
    std::uint32_t records = 0;
};

/// Slices of the text: all of one length, or of changing ones.
class Slices {
public:
    explicit Slices(std::uint8_t choice) : seed(choice) {}

    std::size_t Next() {
        constexpr std::array<std::size_t, 8> kLengths = {1, 2, 7, 36, 57, 240, 1000, kLongestText};
        constexpr std::uint8_t kChanging = 0x80;
        if ((seed & kChanging) == 0) {
            return kLengths[seed % kLengths.size()];
        }
        state = 1103515245U * state + 12345U + seed;
        return 1 + (state >> 16) % 300;
    }

private:
    std::uint8_t seed;
    std::uint32_t state = 0;
};

/// A caller that keeps a few voice blocks for a while before it gives them back.
class VoiceCaller {
public:
    explicit VoiceCaller(p25::COrvaFrameDecoder& frameDecoder) : decoder(frameDecoder) {}
    ~VoiceCaller() { GiveBack(); }
    VoiceCaller(const VoiceCaller&) = delete;
    VoiceCaller& operator=(const VoiceCaller&) = delete;

    void Collect(std::int32_t ready) {
        Require(ready == decoder.GetReadyCount(), "Decode returns the number of ready blocks");
        Require(ready >= 0 && ready <= kReadyLimit + static_cast<std::int32_t>(kMostHeld),
                "the backlog is bounded");
        Require(decoder.GetPartialFill() < decoder.GetBlockSize(), "a full block is a ready block");
        GiveBack();
        for (; ready > 0; --ready) {
            dsp::CtbSampleBlock* block = decoder.PopVoiceBlock();
            Require(block != nullptr && block->Used() == decoder.GetBlockSize(), "a ready block is full");
            if (heldCount < kMostHeld) {
                held[heldCount++] = block;
            } else {
                decoder.PushFreeBlock(block);
            }
        }
        Require(decoder.PopVoiceBlock() == nullptr, "there are as many ready blocks as Decode says");
    }

private:
    void GiveBack() {
        while (heldCount > 0) {
            decoder.PushFreeBlock(held[--heldCount]);
        }
    }

    p25::COrvaFrameDecoder& decoder;
    dsp::CtbSampleBlock* held[kMostHeld] = {};
    std::size_t heldCount = 0;
};

void RequireFieldRanges(const p25::COrvaFrameDecoder& decoder) {
    constexpr std::int32_t kUnknown = -1;
    const auto isNumber = [](std::int32_t value, int bits) {
        return value >= kUnknown && value < std::int32_t{1} << bits;
    };
    Require(isNumber(decoder.GetNetworkAccessCode(), 12), "a network access code has 12 bits");
    Require(isNumber(decoder.GetTalkGroup(), 16), "a talk group has 16 bits");
    Require(isNumber(decoder.GetSourceId(), 24), "a source has 24 bits");
    Require(isNumber(decoder.GetDestinationId(), 24), "a destination has 24 bits");
    Require(isNumber(decoder.GetAlgorithmId(), 8), "an algorithm has 8 bits");
    Require(decoder.GetBitErrorRate() >= 0.0F && decoder.GetBitErrorRate() <= 100.0F,
            "an error rate is a percentage");
}

void RequireSameFields(const p25::COrvaFrameDecoder& a, const p25::COrvaFrameDecoder& b) {
    Require(a.GetTransmission() == b.GetTransmission() &&
                a.GetNetworkAccessCode() == b.GetNetworkAccessCode() &&
                a.GetTalkGroup() == b.GetTalkGroup() && a.GetSourceId() == b.GetSourceId() &&
                a.GetDestinationId() == b.GetDestinationId() && a.GetAlgorithmId() == b.GetAlgorithmId() &&
                a.GetBitErrorRate() == b.GetBitErrorRate() && a.GetPartialFill() == b.GetPartialFill(),
            "the slices do not matter to any field");
}

void RequireRecordMessage(p25::COrvaFrameDecoder& decoder, std::uint32_t records) {
    constexpr std::uint32_t kMessageHeader = 140;
    std::uint32_t size = 0;
    const auto message = decoder.TakeRecords(&size);
    Require((message != nullptr) == (records > 0), "records make a message");
    Require(size == (records > 0 ? kMessageHeader + records * p25::kTrunkingRecordSize : 0),
            "each record has its place in the message");
}

void Run(InputBytes input) {
    constexpr std::uint32_t kBlockSizes[] = {0, 200, 320, 333, 512, 1024, 1600, 8000};
    const std::uint32_t blockSize = kBlockSizes[input.Byte() % std::size(kBlockSizes)];
    Slices slices(input.Byte());
    const DibitText dibits(input);
    const std::string& text = dibits.Text();
    if (text.empty()) {
        return;
    }

    EventDigest slicedEvents;
    p25::COrvaFrameDecoder sliced;
    sliced.SetBlockSize(blockSize);
    sliced.SetObserver(&slicedEvents);
    {
        VoiceCaller caller(sliced);
        for (std::size_t first = 0; first < text.size();) {
            const std::size_t count = std::min(slices.Next(), text.size() - first);
            const std::int32_t ready = sliced.Decode(text.data() + first, static_cast<std::int32_t>(count));
            caller.Collect(ready);
            if (dibits.IsAllDibits()) {
                RequireFieldRanges(sliced);
            }
            first += count;
        }
    }

    EventDigest wholeEvents;
    p25::COrvaFrameDecoder whole;
    whole.SetBlockSize(blockSize);
    whole.SetObserver(&wholeEvents);
    const std::int32_t ready = whole.Decode(text.data(), static_cast<std::int32_t>(text.size()));
    Require(ready >= 0 && ready <= kReadyLimit, "the backlog is bounded");
    RequireSameFields(sliced, whole);
    Require(slicedEvents.Value() == wholeEvents.Value(), "the slices do not matter to any event");
    RequireRecordMessage(sliced, slicedEvents.Records());
    RequireRecordMessage(whole, wholeEvents.Records());
}

} // namespace

} // namespace orva::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    orva::fuzz::Run({data, size});
    return 0;
}
