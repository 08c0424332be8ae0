// Where samples come from: the receiver's library and its thread, the wave input, the receiver's memory.
#include "tests/plugin/PluginFixture.h"
#include "tests/support/AllocationProbe.h"
#include "ui/COrvaPluginWindow.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>
#include <vector>

namespace orva::plugin {

namespace {

using Calls = std::vector<std::string>;
using Samples = std::vector<std::int16_t>;

constexpr std::uint32_t kBlock = 2400;

/// Notes the blocks that the stages get: their first samples and lengths.
class PluginReceiver : public test::PluginFixture {
protected:
    struct Walked {
        std::int16_t first;
        std::int16_t last;
        std::uint32_t count;
        bool operator==(const Walked&) const = default;
    };

    PluginReceiver() {
        library.onInvert = [this](std::int16_t* samples, std::uint32_t count) {
            walked.push_back({samples[0], samples[count - 1], count});
        };
    }

    /// Samples that count up from `first`.
    static Samples Ramp(std::size_t count, std::int16_t first) {
        Samples samples(count);
        std::iota(samples.begin(), samples.end(), first);
        return samples;
    }
    /// The receiver's memory with a table of one value and the right sum, or another one.
    void SetMemory(std::uint32_t crossover, const std::array<std::uint8_t, 11>& table, std::uint16_t sum) {
        std::memcpy(library.memory.data() + 140, &crossover, sizeof crossover);
        std::copy(table.begin(), table.end(), library.memory.begin() + 216);
        std::memcpy(library.memory.data() + 227, &sum, sizeof sum);
    }
    [[nodiscard]] std::size_t FreeBlocks() const { return Inside().FreeInputBlocks().Count(); }
    [[nodiscard]] std::size_t FilledBlocks() const { return Inside().FilledInputBlocks().Count(); }
    [[nodiscard]] std::size_t WaitingMessages() const {
        std::size_t count = 0;
        MSG message;
        while (PeekMessageA(&message, window, 1025, 1025, PM_REMOVE) != FALSE) {
            ++count;
        }
        return count;
    }

    std::vector<Walked> walked;
};

} // namespace

// --- the library -------------------------------------------------------------------------------------------

TEST_F(PluginReceiver, WithoutALibraryTheWaveInputIsUsed) {
    record.SetText(44, "K7USB", 32);
    Start(record.Record());
    Pump();
    EXPECT_FALSE(Inside().ReceiverStreaming());
    EXPECT_EQ(Inside().InputSampleRate(), 48000U);
    EXPECT_EQ(Inside().ScanSettleSamples(), 1536);
    EXPECT_FALSE(Inside().InputLock().has_value());
    EXPECT_TRUE(waveIn.IsRecording());
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(Inside().ReceiverHandle(), kHandle);
}

TEST_F(PluginReceiver, EachNeededFunctionIsNeeded) {
    for (const char* name : {"CodecStart", "CodecStop", "CodecRead", "K7GetEEP"}) {
        library.missing = {name};
        StartWithReceiver();
        EXPECT_FALSE(Inside().ReceiverStreaming()) << name;
        EXPECT_EQ(Inside().FreeInputBlocks().Count(), 0U) << name;
        EXPECT_TRUE(waveIn.IsOpen());
        Close();
        EXPECT_EQ(log.Count("free library"), 1) << name;
        EXPECT_EQ(log.Count("CodecStop"), 0);
        Pump();
        log.Clear();
    }
}

TEST_F(PluginReceiver, OptionalFunctionsAreOptional) {
    library.missing = {"IsSpectrumInverted", "K7InvertSpectrum", "GetHwInfo"};
    StartWithReceiver();
    EXPECT_TRUE(Inside().ReceiverStreaming());
}

TEST_F(PluginReceiver, WhatIsBoundIsNotLookedUpAgain) {
    library.missing = {"CodecRead"};
    library.isPresent = true;
    Start(record.Record());
    EXPECT_EQ(std::count(library.lookups.begin(), library.lookups.end(), "CodecStart"), 1);
    library.lookups.clear();
    EXPECT_FALSE(Inside().ReceiverLibrary().Load());
    EXPECT_EQ(std::count(library.lookups.begin(), library.lookups.end(), "CodecStart"), 0);
    EXPECT_EQ(std::count(library.lookups.begin(), library.lookups.end(), "CodecRead"), 1);
    EXPECT_EQ(log.Count("load library"), 1) << "and it is loaded once";
}

TEST_F(PluginReceiver, AHandleOfZeroHasNoReceiver) {
    library.isPresent = true;
    Start(record.Record(), 0);
    EXPECT_FALSE(Inside().ReceiverStreaming());
    EXPECT_EQ(log.Count("load library"), 0);
    entries.Notify(0, 16384, 0, 0, nullptr);
}

TEST_F(PluginReceiver, TheMemoryOfABoundReceiverIsReadWithoutTheOtherFunctions) {
    SetMemory(123456789, {}, 0);
    library.isPresent = true;
    library.missing = {"CodecRead"};
    Start(record.Record());
    EXPECT_EQ(Inside().SpectrumCrossover(), 123456789U) << "the function stands since the attempt to connect";
    Close();
    record.SetText(44, "OTHER", 32);
    Start(record.Record());
    EXPECT_EQ(Inside().SpectrumCrossover(), 0xFFFFFFFFU) << "loading it only now fails";
    Close();
    library.missing = {"K7GetEEP"};
    Start(record.Record());
    EXPECT_EQ(Inside().SpectrumCrossover(), 0xFFFFFFFFU);
}

TEST_F(PluginReceiver, ThePoolHoldsTenBlocksOfZerosAndASpareOne) {
    StartWithReceiver();
    EXPECT_EQ(FreeBlocks(), 10U);
    for (dsp::CtbSampleBlock& block : Inside().InputBlocks()) {
        ASSERT_EQ(block.Capacity(), kBlock);
        EXPECT_EQ(Samples(block.Data(), block.Data() + kBlock), Samples(kBlock, 0));
        dsp::CtbSampleBlock* next = nullptr;
        ASSERT_TRUE(Inside().FreeInputBlocks().Pop(next));
        EXPECT_EQ(next, &block) << "in their order";
        Inside().FreeInputBlocks().Push(next);
    }
    EXPECT_EQ(Inside().SpareInputBlock().Capacity(), kBlock);
}

// --- the stream's start ------------------------------------------------------------------------------------

TEST_F(PluginReceiver, AFailedStartIsTriedAgainEachSecond) {
    library.startResults = {0, 0};
    library.isPresent = true;
    Start(record.Record());
    Pump();
    EXPECT_TRUE(Inside().ReceiverStreaming());
    EXPECT_EQ(Inside().ProcessingRate(), 48000U) << "until the stream runs";
    EXPECT_EQ(Inside().ScanSettleSamples(), 2304);
    EXPECT_TRUE(waveIn.openings.empty()) << "nor is the wave input opened meanwhile";
    SendMessageA(window, WM_TIMER, 1, 0);
    EXPECT_EQ(log.Count("CodecStart"), 2);
    EXPECT_EQ(Inside().ProcessingRate(), 48000U);
    ASSERT_TRUE(Inside().WaveIn()->Open());
    SendMessageA(window, WM_TIMER, 1, 0);
    EXPECT_EQ(log.Count("CodecStart"), 3);
    EXPECT_EQ(log.Count("reset"), 1) << "the wave input ends where the stream begins";
    EXPECT_FALSE(waveIn.IsRecording());
    EXPECT_EQ(Inside().ProcessingRate(), 64000U);
    EXPECT_EQ(KillTimer(window, 1), FALSE) << "the timer was stopped";
}

TEST_F(PluginReceiver, TheTimerRunsOnlyAfterAFailure) {
    StartWithReceiver();
    EXPECT_EQ(KillTimer(window, 1), FALSE);
    Close();
    Pump();
    library.startResults = {0};
    StartWithReceiver();
    EXPECT_NE(KillTimer(window, 1), FALSE);
}

TEST_F(PluginReceiver, TheTimerFiresByItself) {
    library.startResults = {0};
    StartWithReceiver();
    const ULONGLONG end = GetTickCount64() + 5000;
    while (Inside().ProcessingRate() != 64000 && GetTickCount64() < end) {
        Pump();
        Sleep(10);
    }
    EXPECT_EQ(log.Count("CodecStart"), 1);
    EXPECT_EQ(Inside().ProcessingRate(), 64000U);
}

TEST_F(PluginReceiver, WithoutAReceiverATickStopsTheTimer) {
    StartWithWaveInput();
    Inside().Window()->StartRetryTimer();
    SendMessageA(window, WM_TIMER, 1, 0);
    EXPECT_EQ(KillTimer(window, 1), FALSE);
    EXPECT_EQ(log.Count("CodecStart"), 0);
}

// --- the reader --------------------------------------------------------------------------------------------

TEST_F(PluginReceiver, ANullContextReadsNothing) {
    StartWithReceiver();
    library.CallReader(nullptr);
    EXPECT_TRUE(library.reads.empty());
}

TEST_F(PluginReceiver, AFullBlockIsPostedAndWalked) {
    StartWithReceiver();
    library.Deliver(Ramp(kBlock, 7));
    EXPECT_EQ(FilledBlocks(), 1U);
    EXPECT_TRUE(walked.empty()) << "not on the reader's thread";
    Pump();
    EXPECT_EQ(walked, (std::vector<Walked>{{7, 2406, kBlock}}));
    EXPECT_EQ(FreeBlocks(), 9U) << "one is being filled";
}

TEST_F(PluginReceiver, AShortReadEndsTheLoop) {
    StartWithReceiver();
    library.Deliver(Ramp(1000, 1));
    ASSERT_EQ(library.reads.size(), 1U);
    EXPECT_EQ(library.reads[0].receiver, kHandle);
    EXPECT_EQ(library.reads[0].bytes, 4800U);
    EXPECT_EQ(Inside().InputBlockFill(), 1000U);
    library.Deliver(Ramp(500, 1001));
    ASSERT_EQ(library.reads.size(), 2U);
    EXPECT_EQ(library.reads[1].bytes, 2800U) << "the rest of the block";
    EXPECT_EQ(library.reads[1].buffer, static_cast<std::int16_t*>(library.reads[0].buffer) + 1000);
}

TEST_F(PluginReceiver, AnExactReadGoesOnReading) {
    StartWithReceiver();
    library.Deliver(Ramp(kBlock, 1));
    ASSERT_EQ(library.reads.size(), 2U);
    EXPECT_EQ(library.reads[0].result, 4800);
    EXPECT_EQ(library.reads[1].result, 0);
    EXPECT_NE(library.reads[1].buffer, library.reads[0].buffer);
    EXPECT_EQ(WaitingMessages(), 1U);
}

TEST_F(PluginReceiver, AnOddByteIsLost) {
    StartWithReceiver();
    library.readResults = {1001};
    library.Deliver(Ramp(1000, 1));
    EXPECT_EQ(Inside().InputBlockFill(), 500U);
    library.readResults = {1};
    library.CallReader();
    EXPECT_EQ(Inside().InputBlockFill(), 500U);
}

TEST_F(PluginReceiver, AFailedReadIsNothingRead) {
    StartWithReceiver();
    library.readResults = {-1};
    library.CallReader();
    EXPECT_EQ(Inside().InputBlockFill(), 0U);
    EXPECT_EQ(library.reads.size(), 1U);
}

TEST_F(PluginReceiver, BlocksPassInOrderHoweverTheyWereRead) {
    StartWithReceiver();
    const Samples stream = Ramp(4 * kBlock, 0);
    std::size_t place = 0;
    for (std::size_t piece = 1; place < stream.size(); piece = piece * 3 % 1999 + 1) {
        const std::size_t count = std::min(piece, stream.size() - place);
        library.Deliver(std::span(stream).subspan(place, count));
        place += count;
        Pump();
    }
    EXPECT_EQ(walked,
              (std::vector<Walked>{
                  {0, 2399, kBlock}, {2400, 4799, kBlock}, {4800, 7199, kBlock}, {7200, 9599, kBlock}}));
}

TEST_F(PluginReceiver, WhatThePoolCannotHoldIsLostInTheSpareBlock) {
    StartWithReceiver();
    for (int i = 0; i < 10; ++i) {
        library.Deliver(Ramp(kBlock, static_cast<std::int16_t>(1000 * i)));
    }
    EXPECT_EQ(FilledBlocks(), 10U);
    EXPECT_EQ(FreeBlocks(), 0U);
    library.reads.clear();
    library.Deliver(Ramp(kBlock, 20000));
    ASSERT_FALSE(library.reads.empty());
    EXPECT_EQ(library.reads[0].buffer, Inside().SpareInputBlock().Data());
    EXPECT_EQ(Inside().SpareInputBlock()[0], 20000);
    EXPECT_EQ(FilledBlocks(), 10U);
    Pump();
    ASSERT_EQ(walked.size(), 10U);
    for (std::int16_t i = 0; i < 10; ++i) {
        const auto first = static_cast<std::int16_t>(1000 * i);
        EXPECT_EQ(walked[static_cast<std::size_t>(i)],
                  (Walked{first, static_cast<std::int16_t>(first + 2399), kBlock}));
    }
    library.Deliver(Ramp(kBlock, 5));
    Pump();
    EXPECT_EQ(walked.back(), (Walked{5, 2404, kBlock})) << "and the stream goes on";
}

TEST_F(PluginReceiver, APieceInTheSpareBlockIsNoBeginOfTheNextBlock) {
    StartWithReceiver();
    for (int i = 0; i < 10; ++i) {
        library.Deliver(Ramp(kBlock, 0));
    }
    library.reads.clear();
    library.Deliver(Ramp(1000, 20000));
    library.Deliver(Ramp(1000, 21000));
    for (const test::FakeReceiverLibrary::Read& read : library.reads) {
        EXPECT_EQ(read.buffer, Inside().SpareInputBlock().Data()) << "each call begins the block anew";
        EXPECT_EQ(read.bytes, 4800U);
    }
    Pump();
    walked.clear();
    library.Deliver(Ramp(kBlock, 5));
    Pump();
    EXPECT_EQ(walked, (std::vector<Walked>{{5, 2404, kBlock}}));
}

TEST_F(PluginReceiver, NothingIsReadWhileTheStreamIsEnded) {
    StartWithReceiver();
    library.Deliver(Ramp(1000, 0));
    bool wasLocked = false;
    library.onStop = [&] {
        EXPECT_FALSE(Inside().ReceiverStreaming());
        wasLocked = Inside().InputLock().has_value();
        library.reads.clear();
        library.Deliver(Ramp(1000, 0)); // its thread may still be on the way
    };
    Close();
    library.onStop = nullptr;
    EXPECT_TRUE(wasLocked) << "the lock stands until no callback can come";
    EXPECT_TRUE(library.reads.empty());
}

TEST_F(PluginReceiver, APoolThatRunsDryInOneCallOverwritesTheBlockJustHandedOver) {
    StartWithReceiver();
    Samples stream = Ramp(10 * kBlock, 0);
    const Samples more = Ramp(100, 30000);
    stream.insert(stream.end(), more.begin(), more.end());
    library.Deliver(stream);
    EXPECT_EQ(FilledBlocks(), 10U);
    EXPECT_EQ(library.reads.back().buffer, library.reads[library.reads.size() - 2].buffer);
    Pump();
    ASSERT_EQ(walked.size(), 10U);
    EXPECT_EQ(walked[8].first, static_cast<std::int16_t>(8 * kBlock));
    EXPECT_EQ(walked[9].first, 30000) << "the begin of the last block is the newest samples";
    EXPECT_EQ(walked[9].last, static_cast<std::int16_t>(10 * kBlock - 1));
}

TEST_F(PluginReceiver, WithoutTheSpareBlockOverflowIsNotRead) {
    StartWithReceiver();
    for (int i = 0; i < 10; ++i) {
        library.Deliver(Ramp(kBlock, 0));
    }
    dsp::CtbSampleBlock& spare = Inside().SpareInputBlock();
    spare.~CtbBasicSampleBlock();
    new (&spare) dsp::CtbSampleBlock;
    library.reads.clear();
    library.CallReader();
    EXPECT_TRUE(library.reads.empty());
}

TEST_F(PluginReceiver, TheReaderAllocatesNothing) {
    StartWithReceiver();
    library.keepsReads = false;
    const Samples block = Ramp(kBlock, 0);
    library.stream.assign(block.begin(), block.end());
    const std::uint64_t before = test::CountAllocations();
    library.CallReader();
    EXPECT_EQ(FilledBlocks(), 1U);
    EXPECT_EQ(test::CountAllocations(), before);
}

TEST_F(PluginReceiver, ARetuneSkipsWholeBlocks) {
    StartWithReceiver();
    Notify(2048, 155000000);
    EXPECT_EQ(Inside().SkipInputSamples(), 3200U);
    for (std::int16_t i = 0; i < 4; ++i) {
        library.Deliver(Ramp(kBlock, static_cast<std::int16_t>(5000 * i)));
    }
    Pump();
    ASSERT_EQ(walked.size(), 2U) << "50 ms are two blocks";
    EXPECT_EQ(walked[0].first, 10000);
    EXPECT_EQ(Inside().SkipInputSamples(), 0U);
    EXPECT_EQ(FreeBlocks(), 9U);
}

TEST_F(PluginReceiver, AMessageWithoutABlockDoesNothing) {
    StartWithReceiver();
    SendMessageA(window, 1025, 0, 0);
    EXPECT_TRUE(walked.empty());
    EXPECT_EQ(FreeBlocks(), 10U);
}

TEST_F(PluginReceiver, ALostWindowGetsNoMessages) {
    StartWithReceiver();
    DestroyWindow(window);
    library.Deliver(Ramp(kBlock, 0));
    MSG message;
    EXPECT_EQ(PeekMessageA(&message, nullptr, 1025, 1025, PM_REMOVE), FALSE);
}

namespace {

struct DeliveryOnAThread {
    test::FakeReceiverLibrary* library;
    int blocks;

    static DWORD WINAPI Run(void* argument) {
        const auto& delivery = *static_cast<DeliveryOnAThread*>(argument);
        for (int i = 0; i < delivery.blocks; ++i) {
            const Samples block(kBlock, static_cast<std::int16_t>(i));
            delivery.library->Deliver(block);
            Sleep(3);
        }
        return 0;
    }
};

} // namespace

TEST_F(PluginReceiver, TheLibrarysOwnThreadFeedsTheWindows) {
    StartWithReceiver();
    DeliveryOnAThread delivery{&library, 40};
    HANDLE thread = CreateThread(nullptr, 0, &DeliveryOnAThread::Run, &delivery, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    while (WaitForSingleObject(thread, 1) == WAIT_TIMEOUT) {
        Pump();
    }
    CloseHandle(thread);
    Pump();
    // On a machine under load a block may be lost, but none may come twice or out of order.
    ASSERT_FALSE(walked.empty());
    for (std::size_t i = 0; i < walked.size(); ++i) {
        EXPECT_EQ(walked[i].first, walked[i].last);
        EXPECT_EQ(walked[i].count, kBlock);
        if (i > 0) {
            EXPECT_GT(walked[i].first, walked[i - 1].first);
        }
    }
    EXPECT_EQ(FilledBlocks(), 0U);
}

// --- the wave input ----------------------------------------------------------------------------------------

TEST_F(PluginReceiver, TheWaveInputsBuffersAreWalkedAndGivenBack) {
    library.isPresent = true; // for its function that sees each block
    StartWithWaveInput();
    waveIn.Fill(4800, 3);
    waveIn.Fill(10, 100);
    EXPECT_EQ(walked, (std::vector<Walked>{{3, 2402, kBlock}, {100, 104, 5}}));
    EXPECT_EQ(waveIn.BuffersInside(), 32U);
}

TEST_F(PluginReceiver, ShortEmptyAndOddBuffersGoBackToo) {
    library.isPresent = true;
    StartWithWaveInput();
    waveIn.Fill(0);
    waveIn.Fill(1);
    waveIn.Fill(3, 9);
    EXPECT_EQ(walked, (std::vector<Walked>{{9, 9, 1}}));
    EXPECT_EQ(waveIn.BuffersInside(), 32U);
}

TEST_F(PluginReceiver, AnUnknownBufferIsIgnored) {
    StartWithWaveInput();
    Plugin().OnWaveInBuffer(32);
    Plugin().OnWaveInBuffer(-1);
    EXPECT_EQ(waveIn.BuffersInside(), 32U);
    Inside().WaveIn().reset();
    Plugin().OnWaveInBuffer(0);
}

TEST_F(PluginReceiver, TheWaveInputSkipsNothingAfterARetune) {
    library.isPresent = true;
    StartWithWaveInput();
    Notify(2048, 155000000);
    EXPECT_EQ(Inside().SkipInputSamples(), 2400U);
    waveIn.Fill(4800, 3);
    EXPECT_EQ(walked.size(), 1U);
    EXPECT_EQ(Inside().SkipInputSamples(), 2400U) << "set, and never counted down";
}

TEST_F(PluginReceiver, WithoutAReceiverTheInputQueuesAreNotTouched) {
    StartWithWaveInput();
    SendMessageA(window, 1025, 0, 0);
    waveIn.Fill(4800);
    EXPECT_FALSE(Inside().InputLock().has_value());
    EXPECT_EQ(FreeBlocks() + FilledBlocks(), 0U);
}

// --- the receiver's memory ---------------------------------------------------------------------------------

TEST_F(PluginReceiver, TheCrossoverIsTakenWhateverTheSum) {
    library.isPresent = true;
    SetMemory(123456789, {}, 0xFFFF);
    Start(record.Record());
    EXPECT_EQ(Inside().SpectrumCrossover(), 123456789U);
}

TEST_F(PluginReceiver, AReceiverThatGivesNoMemoryIsNeverMirrored) {
    library.hasMemory = false;
    SetMemory(123456789, {}, 0);
    StartWithReceiver();
    EXPECT_EQ(Inside().SpectrumCrossover(), 0xFFFFFFFFU);
}

TEST_F(PluginReceiver, AHandleOfZeroHasNoMemory) {
    StartWithReceiver();
    Inside().ReadReceiverMemory(0);
    EXPECT_EQ(log.Count("K7GetEEP"), 0);
    Inside().ReadReceiverMemory(5);
    EXPECT_EQ(log.Count("K7GetEEP"), 1);
    EXPECT_EQ(library.handles.back(), 5U);
}

} // namespace orva::plugin
