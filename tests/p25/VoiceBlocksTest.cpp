// The blocks that speech leaves the frame decoder in.
#include "p25/COrvaFrameDecoder.h"
#include "tests/p25/COrvaFrameDecoderInspector.h"
#include "tests/p25/DecodedStream.h"
#include "tests/support/AllocationProbe.h"
#include "tests/support/FrameBuilder.h"
#include "tests/support/SpeechSource.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using Block = dsp::CtbSampleBlock;
using Inspector = COrvaFrameDecoderInspector;
using test::DecodedStream;

constexpr std::size_t kNidEnd = 57;
/// Dibits of an LDU at which its voice frames are complete.
constexpr std::size_t kVoiceEnds[] = {kNidEnd + 74,  kNidEnd + 148, kNidEnd + 243,
                                      kNidEnd + 337, kNidEnd + 432, kNidEnd + 527,
                                      kNidEnd + 621, kNidEnd + 716, kNidEnd + 806};

/// An LDU2 of vowels.
const std::string& Ldu() {
    static const std::string frame = [] {
        test::SpeechSource speech(test::SpeechKind::Vowels);
        test::VoiceWords words;
        for (std::size_t i = 0; i < words.size(); ++i) {
            words[i] = speech.Frame(i + 5);
        }
        return test::FrameBuilder().Ldu2(0x293, {}, words);
    }();
    return frame;
}

/// A decoder whose caller decides what happens to the blocks, with a listener for the speech.
struct Receiver final : IFrameObserver {
    explicit Receiver(std::uint32_t blockSize) {
        decoder.SetBlockSize(blockSize);
        decoder.SetObserver(this);
    }

    std::int32_t Feed(const std::string& text) {
        return decoder.Decode(text.data(), static_cast<std::int32_t>(text.size()));
    }

    void OnVoiceFrame(const voice::ImbeFrameBlock& frame, float /*bitErrorRate*/) override {
        speech.insert(speech.end(), frame.samples, frame.samples + frame.sampleCount);
    }

    /// Takes the oldest ready block; its samples.
    std::vector<std::int16_t> Take() {
        const std::unique_ptr<Block> block(decoder.PopVoiceBlock());
        return block ? Samples(*block) : std::vector<std::int16_t>();
    }

    std::vector<std::int16_t> Samples(const Block& block) const {
        return {block.Data(), block.Data() + decoder.GetBlockSize()};
    }

    /// Speech from sample `first` on, one block of it.
    std::vector<std::int16_t> Spoken(std::size_t first) const {
        return {speech.begin() + static_cast<std::ptrdiff_t>(first),
                speech.begin() + static_cast<std::ptrdiff_t>(first + decoder.GetBlockSize())};
    }

    COrvaFrameDecoder decoder;
    std::vector<std::int16_t> speech;
};

TEST(VoiceBlocks, Of512SamplesEndInsideTheFourthFrame) {
    Receiver receiver(512);
    EXPECT_EQ(receiver.Feed(Ldu().substr(0, kVoiceEnds[2])), 0);
    EXPECT_EQ(receiver.decoder.GetPartialFill(), 480U);
    EXPECT_EQ(receiver.Feed(Ldu().substr(kVoiceEnds[2], kVoiceEnds[3] - kVoiceEnds[2])), 1);
    EXPECT_EQ(receiver.decoder.GetPartialFill(), 128U) << "32 samples complete a block, 128 begin the next";
    EXPECT_EQ(receiver.Take(), receiver.Spoken(0));
    const Block* partial = receiver.decoder.GetPartialBlock();
    EXPECT_TRUE(std::equal(partial->Data(), partial->Data() + 128, receiver.speech.begin() + 512));
}

TEST(VoiceBlocks, HoldAllSpeechInOrderWhateverTheirSize) {
    for (const std::uint32_t size : {200U, 320U, 480U, 512U, 1000U, 1024U}) {
        DecodedStream stream(size);
        for (int i = 0; i < 3; ++i) {
            stream.Feed(Ldu());
        }
        const std::size_t expected = 27 * 160 / size * size;
        ASSERT_EQ(stream.speech.size(), expected) << "block size " << size;
        EXPECT_TRUE(std::equal(stream.speech.begin(), stream.speech.end(), stream.synthesised.begin()))
            << "block size " << size;
        const std::size_t rest = stream.synthesised.size() - expected;
        ASSERT_EQ(stream.decoder.GetPartialFill(), rest % size) << "block size " << size;
        if (rest > 0) {
            EXPECT_TRUE(std::equal(stream.synthesised.end() - static_cast<std::ptrdiff_t>(rest),
                                   stream.synthesised.end(), stream.decoder.GetPartialBlock()->Data()));
        }
    }
}

TEST(VoiceBlocks, KnowTheirLength) {
    Receiver receiver(512);
    receiver.Feed(Ldu());
    const std::unique_ptr<Block> block(receiver.decoder.PopVoiceBlock());
    ASSERT_TRUE(block);
    EXPECT_EQ(block->Used(), 512U);
}

TEST(VoiceBlocks, AFrameThatJustFillsABlockBeginsNone) {
    Receiver receiver(320);
    receiver.Feed(Ldu().substr(0, kVoiceEnds[1]));
    EXPECT_EQ(receiver.decoder.GetReadyCount(), 1);
    EXPECT_EQ(receiver.decoder.GetPartialBlock(), nullptr);
    EXPECT_EQ(receiver.decoder.GetPartialFill(), 0U);
}

TEST(VoiceBlocks, APartlyFilledBlockWaitsForTheNextCall) {
    Receiver receiver(1024);
    receiver.Feed(Ldu());
    ASSERT_EQ(receiver.decoder.GetPartialFill(), 416U);
    receiver.Feed(std::string(2000, '0')); // the call is lost
    ASSERT_EQ(receiver.decoder.GetTransmission(), 0U);
    EXPECT_EQ(receiver.decoder.GetPartialFill(), 416U);
    receiver.Feed(Ldu().substr(0, kVoiceEnds[3]));
    ASSERT_EQ(receiver.decoder.GetReadyCount(), 2);
    EXPECT_EQ(receiver.Take(), receiver.Spoken(0));
    EXPECT_EQ(receiver.Take(), receiver.Spoken(1024));
}

TEST(VoiceBlocks, ArePoppedOldestFirst) {
    Receiver receiver(480);
    EXPECT_EQ(receiver.Feed(Ldu()), 3);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(receiver.decoder.GetReadyCount(), static_cast<std::int32_t>(3 - i));
        EXPECT_EQ(receiver.Take(), receiver.Spoken(480 * i)) << "block " << i;
    }
    EXPECT_EQ(receiver.decoder.GetReadyCount(), 0);
    EXPECT_EQ(receiver.decoder.PopVoiceBlock(), nullptr);
    EXPECT_EQ(receiver.decoder.GetReadyCount(), 0);
}

TEST(VoiceBlocks, TheEleventhUnfetchedTakesTheOldest) {
    Receiver receiver(480);
    for (int i = 0; i < 5; ++i) {
        receiver.Feed(Ldu());
        EXPECT_LE(receiver.decoder.GetReadyCount(), 10);
    }
    EXPECT_EQ(receiver.decoder.GetReadyCount(), 10);
    EXPECT_EQ(receiver.speech.size(), 15U * 480U);
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(receiver.Take(), receiver.Spoken(480 * (i + 5))) << "the five oldest are gone, block " << i;
    }
}

TEST(VoiceBlocks, TheBacklogIsTakenWhenABlockIsBegunNotWhenItIsFull) {
    Receiver receiver(480);
    for (int i = 0; i < 3; ++i) {
        receiver.Feed(Ldu());
    }
    receiver.Feed(Ldu().substr(0, kVoiceEnds[2]));
    EXPECT_EQ(receiver.decoder.GetReadyCount(), 10);
    receiver.Feed(Ldu().substr(kVoiceEnds[2], kVoiceEnds[3] - kVoiceEnds[2]));
    EXPECT_EQ(receiver.decoder.GetReadyCount(), 9);
}

TEST(VoiceBlocks, AReturnedBlockIsFilledAgain) {
    Receiver receiver(480);
    receiver.Feed(Ldu());
    Block* first = receiver.decoder.PopVoiceBlock();
    Block* second = receiver.decoder.PopVoiceBlock();
    Block* third = receiver.decoder.PopVoiceBlock();
    receiver.decoder.PushFreeBlock(second);
    receiver.decoder.PushFreeBlock(first);
    receiver.Feed(Ldu().substr(0, kVoiceEnds[0]));
    EXPECT_EQ(receiver.decoder.GetPartialBlock(), second) << "the one given back first";
    receiver.Feed(Ldu().substr(kVoiceEnds[0], kVoiceEnds[3] - kVoiceEnds[0]));
    EXPECT_EQ(receiver.decoder.GetPartialBlock(), first);
    delete third;
}

TEST(VoiceBlocks, AReturnedBlockIsPreferredToTheBacklog) {
    Receiver receiver(480);
    for (int i = 0; i < 3; ++i) {
        receiver.Feed(Ldu());
    }
    receiver.Feed(Ldu().substr(0, kVoiceEnds[2]));
    ASSERT_EQ(receiver.decoder.GetReadyCount(), 10);
    auto* spare = new Block;
    receiver.decoder.PushFreeBlock(spare);
    receiver.Feed(Ldu().substr(kVoiceEnds[2], kVoiceEnds[3] - kVoiceEnds[2]));
    EXPECT_EQ(receiver.decoder.GetPartialBlock(), spare);
    EXPECT_EQ(receiver.decoder.GetReadyCount(), 10);
}

TEST(VoiceBlocks, GivingBackNothingIsHarmless) {
    Receiver receiver(480);
    receiver.decoder.PushFreeBlock(nullptr);
    EXPECT_EQ(receiver.Feed(Ldu()), 3);
}

TEST(VoiceBlocks, ResetKeepsTheBlockBeingFilledAndStartsItAfresh) {
    Receiver receiver(480);
    receiver.Feed(Ldu() + Ldu().substr(0, kVoiceEnds[0]));
    const Block* partial = receiver.decoder.GetPartialBlock();
    ASSERT_EQ(receiver.decoder.GetReadyCount(), 3);
    receiver.decoder.Reset();
    EXPECT_EQ(receiver.decoder.GetReadyCount(), 0);
    EXPECT_EQ(receiver.decoder.PopVoiceBlock(), nullptr);
    EXPECT_EQ(receiver.decoder.GetPartialBlock(), partial);
    EXPECT_EQ(receiver.decoder.GetPartialFill(), 0U);
    receiver.speech.clear();
    receiver.Feed(Ldu());
    Block* block = receiver.decoder.PopVoiceBlock();
    EXPECT_EQ(block, partial);
    EXPECT_EQ(receiver.Samples(*block), receiver.Spoken(0));
    delete block;
}

TEST(VoiceBlocks, ResetKeepsTheReturnedBlocks) {
    Receiver receiver(480);
    auto* spare = new Block;
    receiver.decoder.PushFreeBlock(spare);
    receiver.decoder.Reset();
    receiver.Feed(Ldu().substr(0, kVoiceEnds[0]));
    EXPECT_EQ(receiver.decoder.GetPartialBlock(), spare);
}

TEST(BlockSize, IsAtLeast200) {
    for (const std::uint32_t samples : {0U, 1U, 199U, 200U}) {
        COrvaFrameDecoder decoder;
        decoder.SetBlockSize(samples);
        EXPECT_EQ(decoder.GetBlockSize(), 200U);
    }
    COrvaFrameDecoder decoder;
    decoder.SetBlockSize(201);
    EXPECT_EQ(decoder.GetBlockSize(), 201U);
}

TEST(BlockSize, AChangeDestroysAllBlocks) {
    Receiver receiver(480);
    receiver.Feed(Ldu() + Ldu().substr(0, kVoiceEnds[0]));
    receiver.decoder.PushFreeBlock(receiver.decoder.PopVoiceBlock());
    receiver.decoder.SetBlockSize(320);
    EXPECT_EQ(receiver.decoder.GetReadyCount(), 0);
    EXPECT_EQ(receiver.decoder.PopVoiceBlock(), nullptr);
    EXPECT_EQ(receiver.decoder.GetPartialBlock(), nullptr);
    EXPECT_EQ(receiver.decoder.GetPartialFill(), 0U);
    receiver.speech.clear();
    receiver.Feed(Ldu().substr(kVoiceEnds[0]));
    EXPECT_EQ(receiver.decoder.GetReadyCount(), 4);
    EXPECT_EQ(receiver.Take(), receiver.Spoken(0)) << "the next block starts at its first sample";
}

TEST(BlockSize, TheSameValueDestroysNothing) {
    Receiver receiver(200);
    receiver.Feed(Ldu());
    const std::int32_t ready = receiver.decoder.GetReadyCount();
    receiver.decoder.SetBlockSize(100);
    EXPECT_EQ(receiver.decoder.GetReadyCount(), ready);
}

TEST(BlockSize, ABlockReturnedAfterTheChangeGrows) {
    Receiver receiver(200);
    receiver.Feed(Ldu());
    Block* small = receiver.decoder.PopVoiceBlock();
    receiver.decoder.SetBlockSize(1024);
    receiver.decoder.PushFreeBlock(small);
    receiver.speech.clear();
    receiver.Feed(Ldu());
    EXPECT_EQ(receiver.Take(), receiver.Spoken(0));
}

TEST(VoiceBlocksWithoutMemory, TheFirstBlockFailsWithErrorOne) {
    Receiver receiver(480);
    receiver.Feed(Ldu().substr(0, kVoiceEnds[0] - 1));
    const test::AllocationFailure failure(0);
    EXPECT_EQ(receiver.decoder.Decode("0000", 4), -1);
    EXPECT_TRUE(failure.HasStruck());
    EXPECT_EQ(Inspector{receiver.decoder}.ErrorCode(), 1U);
    EXPECT_EQ(receiver.decoder.GetInputLeft(), 0) << "the rest of the input is lost";
}

TEST(VoiceBlocksWithoutMemory, ABlockWithoutStorageFailsTheSameWay) {
    Receiver receiver(480);
    receiver.Feed(Ldu().substr(0, kVoiceEnds[0] - 1));
    const test::AllocationFailure failure(1);
    EXPECT_EQ(receiver.decoder.Decode("0", 1), -1);
    EXPECT_TRUE(failure.HasStruck());
    EXPECT_EQ(Inspector{receiver.decoder}.ErrorCode(), 1U);
    EXPECT_EQ(receiver.decoder.GetPartialBlock(), nullptr);
}

TEST(VoiceBlocksWithoutMemory, TheNextBlockAfterAFullOneFailsWithErrorTwo) {
    Receiver receiver(480);
    receiver.Feed(Ldu().substr(0, kVoiceEnds[3] - 1));
    ASSERT_EQ(receiver.decoder.GetReadyCount(), 1);
    const test::AllocationFailure failure(0);
    EXPECT_EQ(receiver.decoder.Decode("0", 1), -1);
    EXPECT_TRUE(failure.HasStruck());
    EXPECT_EQ(Inspector{receiver.decoder}.ErrorCode(), 2U);
    EXPECT_EQ(receiver.decoder.GetReadyCount(), 1) << "the full one is still there";
}

TEST(VoiceBlocksWithoutMemory, ASplitFrameWithoutASecondBlockFailsWithErrorOne) {
    Receiver receiver(512);
    receiver.Feed(Ldu().substr(0, kVoiceEnds[3] - 1));
    // The queue of ready blocks makes its room first.
    const test::AllocationFailure failure(1);
    EXPECT_EQ(receiver.decoder.Decode("0", 1), -1);
    EXPECT_TRUE(failure.HasStruck());
    EXPECT_EQ(Inspector{receiver.decoder}.ErrorCode(), 1U);
    EXPECT_EQ(receiver.decoder.GetReadyCount(), 1);
}

TEST(VoiceBlocksWithoutMemory, GoesOnWhenThereIsMemoryAgain) {
    Receiver receiver(480);
    receiver.Feed(Ldu().substr(0, kVoiceEnds[0] - 1));
    {
        const test::AllocationFailure failure(0);
        receiver.decoder.Decode("0", 1);
    }
    EXPECT_EQ(receiver.Feed(Ldu().substr(kVoiceEnds[0])), 2);
}

} // namespace
} // namespace orva::p25
