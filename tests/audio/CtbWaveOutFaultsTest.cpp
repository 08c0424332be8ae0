/// Wave output on devices that misbehave, and without memory. Whatever they do, the owner gets every block
/// back, once.

#include "tests/audio/WaveOutFixture.h"
#include "tests/support/AllocationProbe.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orva::test {
namespace {

using audio::CtbWaveOut;
using dsp::CtbSampleBlock;

class WaveOutFaults : public WaveOutFixture {};

TEST_F(WaveOutFaults, GivesBlocksBackWhenThereIsNoDevice) {
    device.deviceNames.clear();
    EXPECT_EQ(output->GetDeviceCount(), 0U);
    EXPECT_EQ(output->Start(), static_cast<std::uint32_t>(MMSYSERR_BADDEVICEID));
    WriteBlocks(5);
    EXPECT_EQ(pool.returned.size(), 5U);
    EXPECT_EQ(output->Stop(), 100U);
    EXPECT_EQ(output->Close(), 102U);
}

TEST_F(WaveOutFaults, StartsWhenTheDeviceComes) {
    device.deviceNames.clear();
    ASSERT_NE(output->Start(), 0U);
    device.deviceNames = {"Loudspeaker"};
    ASSERT_EQ(output->Start(), 0U);
    WriteBlocks(3);
    EXPECT_EQ(device.played.size(), 3U);
}

/// Where a call fails, and whether it does so once or from then on.
struct Failure {
    bool inPrepare;
    int call;
    CallFault::Reach reach;
};

std::string NameOf(const testing::TestParamInfo<Failure>& info) {
    return std::string(info.param.inPrepare ? "Prepare" : "Write") + std::to_string(info.param.call) +
           (info.param.reach == CallFault::Reach::Once ? "Once" : "FromThenOn");
}

std::vector<Failure> AllFailures() {
    std::vector<Failure> all;
    for (int call = 1; call <= 12; ++call) {
        for (const bool inPrepare : {true, false}) {
            all.push_back({inPrepare, call, CallFault::Reach::Once});
            all.push_back({inPrepare, call, CallFault::Reach::FromThenOn});
        }
    }
    return all;
}

class WaveOutCallFailure : public WaveOutFixture, public testing::WithParamInterface<Failure> {
protected:
    static constexpr int kBlocks = 20;

    /// Blocks that are sent with success, of those sent in all.
    static std::size_t Played() {
        const Failure failure = GetParam();
        return static_cast<std::size_t>(failure.reach == CallFault::Reach::Once ? kBlocks - 1
                                                                                : failure.call - 1);
    }
};

TEST_P(WaveOutCallFailure, GivesTheBlockBackAndPlaysTheOthers) {
    CallFault& fault = GetParam().inPrepare ? device.prepareFault : device.writeFault;
    fault = {GetParam().call, GetParam().reach};
    ASSERT_EQ(output->Start(), 0U);
    for (int i = 0; i < kBlocks; ++i) {
        CtbSampleBlock* block = pool.Take(static_cast<std::int16_t>(i));
        ASSERT_NE(block, nullptr);
        output->Write(block);
        if (device.BlocksInside() > 3) {
            device.FinishBlock();
        }
    }
    EXPECT_EQ(device.played.size(), Played());
    EXPECT_EQ(Inside().BlocksInDevice(), device.BlocksInside());
    // No sample of what was played is missing but those of the failed block.
    int expected = 0;
    for (const FakeWaveOut::Block& block : device.played) {
        expected += expected == GetParam().call - 1 ? 1 : 0;
        EXPECT_EQ(block.samples[0], 20 * expected++);
    }
    device.FinishAllBlocks();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
    EXPECT_LE(Inside().FreeHeaders(), kMostAtDevice);
    output.reset();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
}

INSTANTIATE_TEST_SUITE_P(EachCall, WaveOutCallFailure, testing::ValuesIn(AllFailures()), NameOf);

TEST_F(WaveOutFaults, UsesTheHeaderOfAFailedBlockAgain) {
    StartFlowing(); // three headers
    device.writeFault = {device.writeFault.calls + 1, CallFault::Reach::Once, device.writeFault.calls};
    WriteBlocks(1);
    EXPECT_EQ(Inside().FreeHeaders(), 3U);
    WriteBlocks(3);
    EXPECT_EQ(Inside().FreeHeaders(), 0U);
    EXPECT_EQ(device.played.size(), 3U);
}

// --- a device that stalls ----------------------------------------------------------------------------------

TEST_F(WaveOutFaults, DropsBlocksWhenTheDeviceStalls) {
    StartFlowing();
    device.isStalled = true;
    for (int i = 0; i < 100; ++i) {
        WriteBlocks(1);
    }
    EXPECT_EQ(device.played.size(), kMostAtDevice);
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks - kMostAtDevice);
    EXPECT_EQ(pool.returned.size(), 100 - kMostAtDevice);
    device.isStalled = false;
    device.FinishAllBlocks();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
    WriteBlocks(1);
    EXPECT_EQ(device.played.size(), kMostAtDevice + 1) << "and goes on when it does";
}

TEST_F(WaveOutFaults, LeavesAStalledDeviceOpen) {
    StartFlowing();
    WriteBlocks(4);
    device.isStalled = true;
    EXPECT_EQ(output->Stop(), 0U);
    Drain();
    EXPECT_EQ(output->Close(), static_cast<std::uint32_t>(WAVERR_STILLPLAYING));
    EXPECT_EQ(Inside().BlocksInDevice(), 4U);
    EXPECT_EQ(output->Start(), 4U);
    device.isStalled = false;
    device.FinishAllBlocks();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
    EXPECT_EQ(output->Close(), 0U);
}

TEST_F(WaveOutFaults, LeavesAStalledDeviceItsBlocksAtTheEnd) {
    StartFlowing();
    WriteBlocks(4);
    device.isStalled = true;
    pool.returned.clear();
    std::vector<WAVEHDR*> held(device.written.begin(), device.written.end());
    output.reset();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks - 4) << "the device may still read them";
    // Nor is the memory of their headers given to anybody else.
    for (int i = 0; i < 64; ++i) {
        auto* other = new WAVEHDR{};
        for (const WAVEHDR* header : held) {
            EXPECT_NE(other, header);
        }
        other->dwLoops = 1;
        static std::vector<std::unique_ptr<WAVEHDR>> kept;
        kept.emplace_back(other);
    }
    EXPECT_NE(held[0]->dwUser, 0U);
}

// --- a device that vanishes --------------------------------------------------------------------------------

TEST_F(WaveOutFaults, GivesBlocksBackWhenTheDeviceVanishes) {
    StartFlowing();
    WriteBlocks(4);
    device.isGone = true;
    WriteBlocks(2);
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks - 4);
    EXPECT_EQ(output->Stop(), static_cast<std::uint32_t>(MMSYSERR_NODRIVER));
    EXPECT_FALSE(Inside().Running());
    EXPECT_EQ(output->Close(), static_cast<std::uint32_t>(MMSYSERR_NODRIVER));
    EXPECT_NE(Inside().Handle(), nullptr);
}

TEST_F(WaveOutFaults, GivesTheBlocksOfAVanishedDeviceBackAtTheNextOpening) {
    StartFlowing();
    WriteBlocks(4);
    device.Vanish();
    device.Report(MM_WOM_CLOSE, 0);
    EXPECT_EQ(Inside().Handle(), nullptr);
    WriteBlocks(2);
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks - 4) << "what is written to no device comes back";
    StopAndClose();
    EXPECT_NE(output->Open(), 0U);
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks) << "also when it fails";
    EXPECT_EQ(Inside().BlocksInDevice(), 0U);
    device.isGone = false;
    ASSERT_EQ(output->Start(), 0U);
    Forget();
    WriteBlocks(6);
    EXPECT_EQ(device.played.size(), 6U);
}

TEST_F(WaveOutFaults, GivesTheBlocksOfAVanishedDeviceBackAtTheEnd) {
    StartFlowing();
    WriteBlocks(5);
    output->RequestPrebuffer();
    WriteBlocks(2);
    device.Vanish();
    device.Report(MM_WOM_CLOSE, 0);
    output.reset();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
}

TEST_F(WaveOutFaults, BearsADeviceThatComesAndGoes) {
    device.keepsPlayed = false;
    std::size_t headers = 0;
    for (int round = 0; round < 1000; ++round) {
        ASSERT_EQ(output->Start(), 0U);
        WriteBlocks(static_cast<std::size_t>(round) % 8);
        device.Vanish();
        device.Report(MM_WOM_CLOSE, 0);
        WriteBlocks(2);
        device.isGone = false;
        headers = std::max(headers, Inside().FreeHeaders() + Inside().BlocksInDevice());
    }
    EXPECT_LE(headers, kMostAtDevice);
    output.reset();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
}

// --- reports that come late, or twice ----------------------------------------------------------------------

TEST_F(WaveOutFaults, TakesBlocksThatComeAfterTheClose) {
    StartFlowing();
    WriteBlocks(3);
    output->Stop(); // leaves the reports in the queue
    ASSERT_EQ(output->Close(), 0U);
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks - 3);
    Drain();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
    EXPECT_EQ(Inside().BlocksInDevice(), 0U);
    EXPECT_EQ(Inside().FreeHeaders(), 3U);
}

TEST_F(WaveOutFaults, IgnoresReportsThatComeAfterTheNextOpening) {
    StartFlowing();
    WriteBlocks(3);
    output->Stop();
    ASSERT_EQ(output->Close(), 0U);
    ASSERT_EQ(output->Start(), 0U);
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
    WriteBlocks(3);
    EXPECT_EQ(Inside().BlocksInDevice(), 3U);
    // The old reports name headers that are in use again, and the last of them tells of the old device's
    // close.
    Drain();
    EXPECT_EQ(Inside().BlocksInDevice(), 3U);
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks - 3);
    EXPECT_EQ(Inside().Handle(), nullptr) << "this is why owners drain the messages first";
    device.FinishAllBlocks();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
}

TEST_F(WaveOutFaults, CountsABlockOnceThatIsReportedTwice) {
    StartFlowing();
    WriteBlocks(3);
    WAVEHDR* header = device.OldestHeader();
    device.FinishBlock();
    for (int i = 0; i < 10; ++i) {
        device.ReportAgain(header);
    }
    EXPECT_EQ(pool.returned.size(), 1U);
    EXPECT_EQ(Inside().BlocksInDevice(), 2U);
    EXPECT_EQ(Inside().FreeHeaders(), 1U);
    device.FinishAllBlocks();
    EXPECT_EQ(Inside().BlocksInDevice(), 0U);
    device.ReportAgain(header);
    EXPECT_EQ(Inside().BlocksInDevice(), 0U) << "and not below nothing";
    EXPECT_EQ(pool.returned.size(), 3U);
    EXPECT_EQ(Inside().FreeHeaders(), 3U);
    // The limit still is what it was.
    WriteBlocks(8);
    EXPECT_EQ(device.BlocksInside(), kMostAtDevice);
}

TEST_F(WaveOutFaults, IgnoresASecondReportWhenTheHeaderIsInUseAgain) {
    StartFlowing();
    WriteBlocks(1);
    WAVEHDR* header = device.OldestHeader();
    device.FinishBlock();
    do {
        WriteBlocks(1);
        ASSERT_LT(device.BlocksInside(), kMostAtDevice);
    } while (device.NewestHeader() != header);
    const std::size_t inside = device.BlocksInside();
    device.ReportAgain(header);
    EXPECT_EQ(Inside().BlocksInDevice(), inside);
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks - inside);
    device.FinishAllBlocks();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
}

TEST_F(WaveOutFaults, IgnoresASecondReportAfterTheClose) {
    StartFlowing();
    WriteBlocks(1);
    WAVEHDR* header = device.OldestHeader();
    StopAndClose();
    device.ReportAgain(header);
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
    EXPECT_EQ(Inside().FreeHeaders(), 3U);
}

TEST_F(WaveOutFaults, IgnoresHeadersOfOthers) {
    StartFlowing();
    WriteBlocks(1);
    WAVEHDR foreign{};
    foreign.dwUser = 0xDEAD;
    device.ReportAgain(&foreign);
    device.Report(MM_WOM_DONE, 0x10); // no address of anything
    EXPECT_EQ(Inside().BlocksInDevice(), 1U);
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks - 1);
}

TEST_F(WaveOutFaults, TakesBlocksInAnyOrder) {
    StartFlowing();
    WriteBlocks(5);
    const std::vector<WAVEHDR*> headers = device.written;
    for (const std::size_t index : {3U, 0U, 4U, 2U, 1U}) {
        device.FinishHeader(headers[index]);
    }
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
    EXPECT_EQ(Inside().BlocksInDevice(), 0U);
    EXPECT_EQ(pool.returned[0], device.played[3].block);
    EXPECT_EQ(pool.returned[4], device.played[1].block);
}

// --- what runs in between ----------------------------------------------------------------------------------

/// Calls a function when a message comes.
class CallingWindow : public toolkit::TmyComponent {
public:
    explicit CallingWindow(std::function<void()> call)
        : TmyComponent(nullptr, "", WS_POPUP, 0, {0, 0, 1, 1}), function(std::move(call)) {}
    void OnUserMessage(UINT /*id*/, WPARAM /*wParam*/, LPARAM /*lParam*/) override { function(); }

private:
    std::function<void()> function;
};

TEST_F(WaveOutFaults, GivesBlocksBackThatAreWrittenBetweenStopAndClose) {
    StartFlowing();
    WriteBlocks(2);
    std::size_t returned = 0;
    CallingWindow window([&] {
        returned = pool.returned.size();
        WriteBlocks(1);
        returned = pool.returned.size() - returned;
    });
    window.PostUserMessage(1, 0, 0);
    output->Stop();
    Drain();
    EXPECT_EQ(returned, 1U);
    EXPECT_EQ(output->Close(), 0U);
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
}

TEST_F(WaveOutFaults, TakesABlockFromInsideTheReturnOfAnother) {
    StartFlowing();
    WriteBlocks(2);
    int written = 0;
    pool.onReturn = [&](CtbSampleBlock* /*block*/) {
        if (written < 50) {
            ++written;
            WriteBlocks(1);
        }
    };
    for (int i = 0; i < 50; ++i) {
        device.FinishBlock();
        EXPECT_EQ(Inside().BlocksInDevice(), 2U);
    }
    EXPECT_EQ(written, 50);
    EXPECT_EQ(device.played.size(), 52U);
    pool.onReturn = nullptr;
    device.FinishAllBlocks();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
}

TEST_F(WaveOutFaults, KeepsNewBlocksThatAreWrittenWhileLostOnesReturn) {
    StartFlowing();
    WriteBlocks(4);
    device.Vanish();
    device.Report(MM_WOM_CLOSE, 0);
    device.isGone = false;
    int written = 0;
    pool.onReturn = [&](CtbSampleBlock* /*block*/) {
        if (written++ < 4) {
            WriteBlocks(1); // running still, and flowing: goes to the new device at once
        }
    };
    ASSERT_EQ(output->Open(), 0U);
    pool.onReturn = nullptr;
    EXPECT_EQ(device.BlocksInside(), 4U);
    EXPECT_EQ(Inside().BlocksInDevice(), 4U);
    device.FinishAllBlocks();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
}

TEST_F(WaveOutFaults, OutlivesItsWindow) {
    StartFlowing();
    WriteBlocks(2);
    DestroyWindow(Inside().MessageWindow()->Window());
    EXPECT_EQ(Inside().MessageWindow(), nullptr);
    output->Stop();
    output->Close();
    EXPECT_EQ(output->Open(), 0U);
    EXPECT_EQ(device.openings.back().window, nullptr);
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks) << "whose reports had nowhere to go";
    output.reset();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
}

// --- without memory ----------------------------------------------------------------------------------------

TEST_F(WaveOutFaults, GivesBlocksBackWithoutMemory) {
    device.keepsPlayed = false;
    pool.keepsReturns = false;
    for (int successes = 0; successes < 16; ++successes) {
        for (const auto reach : {AllocationFailure::Reach::Once, AllocationFailure::Reach::FromThenOn}) {
            output = std::make_unique<CtbWaveOut>(kRate, device.Platform(), card.Platform());
            output->SetDataSource(&pool);
            output->SetPrebufferBlocks(kGathered);
            ASSERT_EQ(output->Start(), 0U);
            {
                const AllocationFailure failure(successes, reach);
                for (int i = 0; i < 12; ++i) {
                    WriteBlocks(1);
                    if (i % 3 == 2) {
                        device.FinishAllBlocks();
                    }
                }
                device.FinishAllBlocks();
            }
            EXPECT_EQ(pool.FreeCount() + Inside().Gathered(), kPoolBlocks);
            EXPECT_EQ(Inside().BlocksInDevice(), 0U);
            output.reset();
            EXPECT_EQ(pool.FreeCount(), kPoolBlocks) << successes << " successes";
        }
    }
}

TEST_F(WaveOutFaults, PlaysNothingWithoutAHeader) {
    ASSERT_EQ(output->Start(), 0U);
    WriteBlocks(2);
    const AllocationFailure failure(0, AllocationFailure::Reach::FromThenOn);
    WriteBlocks(1);
    EXPECT_TRUE(failure.HasStruck());
    EXPECT_TRUE(device.played.empty());
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
}

TEST_F(WaveOutFaults, GivesBackABlockThatLostItsMemoryWhileItWasGathered) {
    ASSERT_EQ(output->Start(), 0U);
    CtbSampleBlock* unlucky = pool.Take();
    output->Write(unlucky);
    WriteBlocks(1);
    {
        const AllocationFailure failure(0);
        unlucky->Acquire(2 * kBlockSamples);
    }
    ASSERT_EQ(unlucky->Data(), nullptr);
    WriteBlocks(1);
    EXPECT_EQ(device.played.size(), 2U);
    EXPECT_EQ(pool.returned, std::vector<CtbSampleBlock*>{unlucky});
    device.FinishAllBlocks();
    EXPECT_EQ(Inside().FreeHeaders(), 2U) << "the one that was not used served the next block";
    unlucky->Acquire(kBlockSamples);
}

} // namespace
} // namespace orva::test
