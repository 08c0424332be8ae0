// A whole instance on devices that misbehave, and without memory: no block is lost, and it lives on.
#include "tests/audio/CtbWaveInInspector.h"
#include "tests/audio/CtbWaveOutInspector.h"
#include "tests/plugin/PluginFixture.h"
#include "tests/plugin/PluginSignals.h"
#include "tests/support/AllocationProbe.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

namespace orva::plugin {

namespace {

using Samples = std::vector<std::int16_t>;
using test::CallFault;

constexpr std::uint32_t kBlock = 2400;
constexpr std::size_t kPool = 10;
constexpr int kRate = 48000;

class PluginFaults : public test::PluginFixture {
protected:
    PluginFaults() { waveOut.deviceNames = {"First", "Second"}; }

    /// In FM mode, so that audio flows from the first block on.
    void StartListening() {
        library.isPresent = true; // for its function that sees each block
        StartWithWaveInput();
        Notify(2304, 2);
        host.Clear();
    }

    /// Blocks of the pool, wherever they are.
    [[nodiscard]] std::size_t Blocks() const {
        std::size_t blocks = Inside().FreeAudioBlocks().Count();
        blocks += Inside().CurrentAudioBlock() != nullptr ? 1 : 0;
        const audio::CtbWaveOutInspector output{*Inside().WaveOut()};
        return blocks + output.Gathered() + output.BlocksInDevice();
    }
    [[nodiscard]] std::size_t BlocksInDevice() const {
        return audio::CtbWaveOutInspector{*Inside().WaveOut()}.BlocksInDevice();
    }

    /// Two seconds of FM and a call; the device does after each block what the test says.
    template <class AfterBlock>
    void Listen(AfterBlock afterBlock) {
        for (const Samples* signal : {&tone, &call}) {
            for (std::size_t begin = 0; begin + kBlock <= signal->size(); begin += kBlock) {
                EXPECT_TRUE(Plugin().ProcessData(signal->data() + begin, kBlock));
                ASSERT_EQ(Blocks(), kPool);
                afterBlock();
                ASSERT_EQ(Blocks(), kPool);
            }
        }
    }
    void Listen() {
        Listen([this] { waveOut.FinishAllBlocks(); });
    }

    /// After all that has happened, the output plays, and every block of the pool comes round.
    void ExpectItPlays() {
        waveOut.played.clear();
        Listen();
        std::vector<const dsp::CtbSampleBlock*> seen;
        for (const test::FakeWaveOut::Block& block : waveOut.played) {
            if (std::find(seen.begin(), seen.end(), block.block) == seen.end()) {
                seen.push_back(block.block);
            }
        }
        EXPECT_EQ(seen.size(), kPool);
    }

    void ExpectAGoodEnd() {
        Close();
        Pump();
        EXPECT_TRUE(IsDestroyed());
        EXPECT_EQ(host.Codes().back(), 16384);
    }

    static const Samples tone;
    static const Samples call;
};

const Samples PluginFaults::tone = test::FmTone(kRate, 1.5);
const Samples PluginFaults::call = test::CallSignal(kRate, test::kAlgorithmClear, 2);

} // namespace

// --- the output --------------------------------------------------------------------------------------------

TEST_F(PluginFaults, WithoutAnOutputDeviceTheHostStillHears) {
    waveOut.deviceNames.clear();
    StartListening();
    Listen();
    EXPECT_TRUE(waveOut.played.empty());
    EXPECT_FALSE(host.Of(4362).empty());
    EXPECT_TRUE(errors.empty()) << "nobody is told";
    waveOut.deviceNames = {"First"};
    Plugin().SetWaveOutDevice(0);
    ExpectItPlays();
    ExpectAGoodEnd();
}

TEST_F(PluginFaults, AnOutputThatCannotBeOpenedGivesAllBlocksBack) {
    waveOut.openResult = MMSYSERR_ALLOCATED;
    StartListening();
    Listen();
    EXPECT_TRUE(waveOut.played.empty());
    EXPECT_EQ(Blocks(), kPool);
    waveOut.openResult = MMSYSERR_NOERROR;
    Plugin().SetWaveOutDevice(1);
    ExpectItPlays();
    ExpectAGoodEnd();
}

namespace {

/// Prepare or write, the call that fails, and whether all later ones do too.
class PluginOutputCallFails : public PluginFaults,
                              public testing::WithParamInterface<std::tuple<bool, int, CallFault::Reach>> {};

} // namespace

TEST_P(PluginOutputCallFails, OnlyItsBlockIsNotPlayed) {
    const auto [isWrite, failingCall, reach] = GetParam();
    StartListening();
    Listen();
    const std::size_t whole = waveOut.played.size();
    waveOut.played.clear();
    (isWrite ? waveOut.writeFault : waveOut.prepareFault) = {failingCall, reach};
    Listen();
    // The second run begins where the first one ended, in the middle of a block.
    const auto lost = reach == CallFault::Reach::Once ? 1U : whole - static_cast<unsigned>(failingCall) + 1U;
    EXPECT_NEAR(static_cast<double>(waveOut.played.size()), static_cast<double>(whole - lost), 3.0);
    EXPECT_LT(waveOut.played.size(), whole + 3);
    waveOut.writeFault = waveOut.prepareFault = {};
    ExpectItPlays();
    ExpectAGoodEnd();
}

INSTANTIATE_TEST_SUITE_P(Calls, PluginOutputCallFails,
                         testing::Combine(testing::Bool(), testing::Values(1, 2, 5),
                                          testing::Values(CallFault::Reach::Once,
                                                          CallFault::Reach::FromThenOn)));

TEST_F(PluginFaults, AStalledOutputTakesSixBlocksAndNoMore) {
    StartListening();
    Listen([] {});
    EXPECT_EQ(BlocksInDevice(), 6U);
    EXPECT_EQ(waveOut.played.size(), 6U);
    waveOut.FinishAllBlocks();
    EXPECT_EQ(Blocks(), kPool);
    EXPECT_EQ(BlocksInDevice(), 0U);
    ExpectItPlays();
    ExpectAGoodEnd();
}

TEST_F(PluginFaults, AnOutputThatStallsForGoodKeepsItsBlocksWhenTheInstanceEnds) {
    StartListening();
    waveOut.isStalled = true;
    Listen([] {});
    EXPECT_EQ(BlocksInDevice(), 6U);
    ExpectAGoodEnd();
}

TEST_F(PluginFaults, TheBlocksOfAVanishedOutputComeHomeWithTheNextDevice) {
    StartListening();
    for (const bool isTold : {true, false}) {
        Listen([] {});
        ASSERT_EQ(BlocksInDevice(), 6U);
        waveOut.Vanish();
        if (isTold) {
            waveOut.Report(MM_WOM_CLOSE, 0);
        }
        waveOut.played.clear();
        Listen([] {});
        EXPECT_TRUE(waveOut.played.empty());
        waveOut.isGone = false;
        if (!isTold) {
            waveOut.Report(MM_WOM_CLOSE, 0);
        }
        Plugin().SetWaveOutDevice(isTold ? 1 : 0);
        EXPECT_EQ(BlocksInDevice(), 0U);
        ExpectItPlays();
    }
    ExpectAGoodEnd();
}

TEST_F(PluginFaults, BlocksMayComeBackLateInAnyOrderAndTwice) {
    StartListening();
    std::vector<WAVEHDR*> done;
    std::size_t blocks = 0;
    Listen([&] {
        ++blocks;
        for (WAVEHDR* header : done) {
            waveOut.ReportAgain(header); // once more, though it may be in use again
        }
        done.clear();
        while (waveOut.BlocksInside() > blocks % 5) {
            WAVEHDR* header = blocks % 2 == 0 ? waveOut.NewestHeader() : waveOut.OldestHeader();
            waveOut.FinishHeader(header);
            waveOut.ReportAgain(header);
            done.push_back(header);
        }
    });
    waveOut.FinishAllBlocks();
    ExpectItPlays();
    ExpectAGoodEnd();
}

TEST_F(PluginFaults, BlocksMayComeBackAfterTheClose) {
    StartListening();
    Listen([] {});
    std::vector<WAVEHDR*> inside;
    while (waveOut.BlocksInside() > 0) {
        inside.push_back(waveOut.OldestHeader());
        waveOut.FinishBlock();
    }
    Plugin().SetWaveOutDevice(1);
    for (WAVEHDR* header : inside) {
        waveOut.ReportAgain(header);
        EXPECT_EQ(Blocks(), kPool);
    }
    ExpectItPlays();
    // The last ones are on their way when the instance goes.
    Listen([] {});
    while (waveOut.BlocksInside() > 0) {
        waveOut.PostFinishedBlock();
    }
    ExpectAGoodEnd();
}

TEST_F(PluginFaults, AnOutputThatDoesNotCloseStaysInUse) {
    StartListening();
    waveOut.closeResult = MMSYSERR_ERROR;
    Plugin().SetWaveOutDevice(1);
    EXPECT_EQ(waveOut.openings.size(), 1U);
    Listen();
    EXPECT_EQ(Blocks(), kPool);
    ExpectAGoodEnd();
    waveOut.closeResult = MMSYSERR_NOERROR;
}

// --- the input ---------------------------------------------------------------------------------------------

TEST_F(PluginFaults, WithoutAnInputDeviceTheUserIsToldOnceAndMayChooseAnother) {
    waveIn.deviceNames.clear();
    StartListening();
    EXPECT_EQ(errors, std::vector<std::string>{"ORVA Error: Failed to open WaveIn device."});
    EXPECT_TRUE(Inside().StartupDone());
    waveIn.deviceNames = {"Microphone"};
    Plugin().SetWaveInDevice(0);
    EXPECT_EQ(errors.size(), 1U);
    EXPECT_EQ(waveIn.BuffersInside(), 32U);
    waveIn.Fill(2 * kBlock);
    EXPECT_EQ(library.inversions.size(), 1U);
    ExpectAGoodEnd();
}

TEST_F(PluginFaults, AnInputThatDoesNotStartIsToldToo) {
    waveIn.startResult = MMSYSERR_ERROR;
    StartListening();
    EXPECT_EQ(errors.size(), 1U);
    EXPECT_TRUE(Inside().StartupDone());
    ExpectAGoodEnd();
}

TEST_F(PluginFaults, InputBuffersThatCannotBePreparedOrQueuedAreMissedByNobodyElse) {
    for (const bool isPrepare : {true, false}) {
        (isPrepare ? waveIn.prepareFault : waveIn.addFault) = {7, CallFault::Reach::Once};
        StartListening();
        EXPECT_TRUE(errors.empty());
        EXPECT_EQ(waveIn.BuffersInside(), isPrepare ? 32U : 31U);
        for (int i = 0; i < 100; ++i) {
            waveIn.Fill(2 * kBlock);
            waveOut.FinishAllBlocks();
        }
        EXPECT_EQ(library.inversions.size(), 100U);
        EXPECT_EQ(waveIn.BuffersInside(), isPrepare ? 32U : 31U);
        waveIn.prepareFault = waveIn.addFault = {};
        library.inversions.clear();
        ExpectAGoodEnd();
    }
}

TEST_F(PluginFaults, AnInputThatRefusesItsBuffersRunsDryAndNothingElseHappens) {
    StartListening();
    waveIn.addFault = {1, CallFault::Reach::FromThenOn};
    for (int i = 0; i < 32; ++i) {
        waveIn.Fill(2 * kBlock);
        waveOut.FinishAllBlocks();
    }
    EXPECT_EQ(waveIn.BuffersInside(), 0U);
    EXPECT_EQ(library.inversions.size(), 32U);
    waveIn.addFault = {};
    waveIn.deviceNames = {"Microphone", "Line"};
    Plugin().SetWaveInDevice(1);
    EXPECT_EQ(waveIn.BuffersInside(), 32U) << "all of them again";
    ExpectAGoodEnd();
}

TEST_F(PluginFaults, AnInputThatVanishesIsNoneAnyMoreUntilItComesBack) {
    waveIn.deviceNames = {"Microphone", "Line"};
    StartListening();
    waveIn.Fill(2 * kBlock);
    waveIn.Vanish();
    waveIn.Report(MM_WIM_CLOSE, 0);
    Plugin().OnWaveInBuffer(3); // a report that was under way
    waveIn.isGone = false;
    Plugin().SetWaveInDevice(1);
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(waveIn.BuffersInside(), 32U);
    waveIn.Fill(2 * kBlock);
    EXPECT_EQ(library.inversions.size(), 2U) << "the one that was under way is empty";
    ExpectAGoodEnd();
}

TEST_F(PluginFaults, AnInputThatStallsEndsWithTheInstance) {
    StartListening();
    waveIn.isStalled = true;
    Plugin().SetWaveInDevice(0);
    ExpectAGoodEnd();
}

TEST_F(PluginFaults, ABufferThatIsReportedTwiceIsProcessedOnce) {
    StartListening();
    WAVEHDR* first = waveIn.OldestHeader();
    waveIn.Fill(2 * kBlock);
    waveIn.ReportAgain(first); // which is at the device again
    EXPECT_EQ(library.inversions.size(), 1U);
    EXPECT_EQ(waveIn.BuffersInside(), 32U);
    ExpectAGoodEnd();
}

TEST_F(PluginFaults, BuffersOfAnySizePassAndComeBack) {
    StartListening();
    for (const DWORD bytes : {0U, 1U, 2U, 3U, 9U, 10U, 11U, 4799U, 4800U, 4801U, 0xFFFFFFFFU}) {
        library.inversions.clear();
        waveIn.Fill(bytes);
        waveOut.FinishAllBlocks();
        const std::uint32_t samples = std::min<std::uint32_t>(bytes / 2, kBlock);
        if (samples == 0) {
            EXPECT_TRUE(library.inversions.empty()) << bytes;
        } else {
            ASSERT_EQ(library.inversions.size(), 1U) << bytes;
            EXPECT_EQ(library.inversions[0].count, samples) << bytes;
        }
        EXPECT_EQ(waveIn.BuffersInside(), 32U);
        EXPECT_EQ(Blocks(), kPool);
    }
}

// --- memory ------------------------------------------------------------------------------------------------

TEST_F(PluginFaults, AStartBearsThatAnyAllocationFails) {
    library.isPresent = true;
    record.SetText(44, "K7USB", 32);
    Start(record.Record());
    Close();
    Pump();
    log.Clear();
    bool hasStruck = true;
    int refused = 0;
    int successes = 0;
    for (; hasStruck; ++successes) {
        std::uint32_t started = 0;
        {
            const test::AllocationFailure failure(successes);
            started = entries.Start(kHandle, record.Record(), test::FakeHost::Callback());
            hasStruck = failure.HasStruck();
        }
        Pump();
        refused += started == 0xFFFFFFFFU ? 1 : 0;
        EXPECT_EQ(IsRunning(), started != 0xFFFFFFFFU) << successes;
        if (IsRunning()) {
            library.Deliver(std::span(tone).first(kBlock));
            Pump();
            Close();
        }
        Pump();
        ASSERT_EQ(entries.Instances().Count(), 0U);
        EXPECT_EQ(log.Count("CodecStop"), log.Count("CodecStart")) << successes;
        EXPECT_EQ(log.Count("free library"), log.Count("load library")) << successes;
        EXPECT_FALSE(waveOut.IsOpen()) << successes;
        log.Clear();
        library.stream.clear();
    }
    EXPECT_GT(successes, 20);
    EXPECT_GE(refused, 20) << "without its pools there is no instance";
}

TEST_F(PluginFaults, AWaitingBufferWithoutMemoryGoesBackUnprocessed) {
    StartListening();
    std::size_t posted = 0;
    host.onCall = [&](const test::FakeHost::Call& sent, void*) {
        if (sent.code == 4362 && posted == 0) {
            for (; posted < 20; ++posted) {
                waveIn.PostFilled(2 * kBlock);
            }
            const test::AllocationFailure failure(0, test::AllocationFailure::Reach::FromThenOn);
            Pump();
            EXPECT_TRUE(failure.HasStruck());
        }
    };
    for (int i = 0; i < 5; ++i) {
        waveIn.Fill(2 * kBlock);
    }
    EXPECT_EQ(posted, 20U);
    EXPECT_EQ(library.inversions.size(), 5U) << "none of those that could not wait";
    EXPECT_EQ(waveIn.BuffersInside(), 32U) << "but the device has them all";
}

} // namespace orva::plugin
