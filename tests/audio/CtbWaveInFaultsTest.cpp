/// Wave input on devices that misbehave, and with owners that act from inside the processing.

#include "tests/audio/WaveInFixture.h"
#include "tests/support/AllocationProbe.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace orva::test {
namespace {

using audio::CtbWaveIn;

class WaveInFaults : public WaveInFixture {
protected:
    /// All buffers are either at the device or out, none is lost: after a stop all can be queued again.
    void ExpectAllBuffersUsable() {
        StopAndClose();
        ASSERT_TRUE(input->Open());
        EXPECT_EQ(device.BuffersInside(), kBuffers);
        EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
        owner.buffers.clear();
        for (std::uint32_t i = 0; i < 2 * kBuffers; ++i) {
            device.Fill(kFull);
        }
        EXPECT_EQ(owner.buffers.size(), 2 * kBuffers);
    }
};

TEST_F(WaveInFaults, OpensNothingWhenThereIsNoDevice) {
    device.deviceNames.clear();
    EXPECT_EQ(input->GetDeviceCount(), 0U);
    EXPECT_FALSE(input->Open());
    EXPECT_EQ(Inside().Handle(), nullptr);
    device.deviceNames = {"Microphone"};
    EXPECT_TRUE(input->Open()) << "until one comes";
}

TEST_F(WaveInFaults, DoesNotMindHeadersThatCannotBePrepared) {
    device.prepareFault = {1, CallFault::Reach::FromThenOn};
    EXPECT_TRUE(input->Open());
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
}

/// The queueing call that fails, the first ones being those of the start.
class WaveInAddFailure : public WaveInFaults,
                         public testing::WithParamInterface<std::tuple<int, CallFault::Reach>> {};

TEST_P(WaveInAddFailure, LosesTheBufferUntilTheNextStart) {
    const auto [call, reach] = GetParam();
    device.addFault = {call, reach};
    ASSERT_TRUE(input->Open());
    for (int i = 0; i < 12 && device.BuffersInside() > 0; ++i) {
        device.Fill(kFull);
        EXPECT_EQ(Inside().BuffersQueued(), device.BuffersInside());
    }
    if (reach == CallFault::Reach::Once) {
        EXPECT_EQ(device.BuffersInside(), kBuffers - 1);
        EXPECT_EQ(owner.buffers.size(), 12U);
    }
    device.addFault = {};
    ExpectAllBuffersUsable();
}

INSTANTIATE_TEST_SUITE_P(EachCall, WaveInAddFailure,
                         testing::Combine(testing::Range(1, 13),
                                          testing::Values(CallFault::Reach::Once,
                                                          CallFault::Reach::FromThenOn)));

TEST_F(WaveInFaults, WaitsForADeviceThatStalls) {
    ASSERT_TRUE(input->Open());
    device.isStalled = true;
    input->Stop();
    Drain();
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
    // It has the buffers still: they are not queued a second time.
    EXPECT_TRUE(input->Start());
    EXPECT_EQ(device.BuffersInside(), kBuffers);
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
    device.isStalled = false;
    device.Fill(kFull);
    EXPECT_EQ(owner.buffers.size(), 1U);
    ExpectAllBuffersUsable();
}

TEST_F(WaveInFaults, OpensNothingAfterADeviceThatWouldNotClose) {
    ASSERT_TRUE(input->Open());
    device.closeResult = MMSYSERR_ERROR;
    StopAndClose();
    EXPECT_EQ(Inside().Handle(), nullptr);
    EXPECT_TRUE(Inside().Closing());
    EXPECT_FALSE(input->Open());
    device.Report(MM_WIM_CLOSE, 0); // until it tells that it did
    device.closeResult = MMSYSERR_NOERROR;
    EXPECT_FALSE(Inside().Closing());
}

TEST_F(WaveInFaults, LeavesAStalledDeviceItsBuffersAtTheEnd) {
    ASSERT_TRUE(input->Open());
    device.isStalled = true;
    const std::vector<WAVEHDR*> headers = device.Headers();
    std::vector<const void*> held(headers.begin(), headers.end());
    for (const WAVEHDR* header : headers) {
        held.push_back(header->lpData);
    }
    input.reset();
    // The device records on; what it writes to belongs to nobody else.
    std::vector<std::unique_ptr<std::int16_t[]>> others;
    for (int i = 0; i < 256; ++i) {
        others.push_back(std::make_unique<std::int16_t[]>(kSamples));
        EXPECT_EQ(std::count(held.begin(), held.end(), others.back().get()), 0);
    }
    EXPECT_EQ(headers[0]->dwBufferLength, kFull);
    EXPECT_EQ(headers[0]->lpData, held[kBuffers]);
}

TEST_F(WaveInFaults, FreesItsBuffersWhenTheDeviceVanished) {
    ASSERT_TRUE(input->Open());
    device.Vanish();
    device.Report(MM_WIM_CLOSE, 0);
    const std::int64_t live = CountLiveAllocations();
    input.reset();
    // Window, blocks with their memory, headers: the object and what is in it is gone.
    EXPECT_LE(CountLiveAllocations(), live - static_cast<std::int64_t>(kBuffers) - 4);
}

TEST_F(WaveInFaults, TellsThatAVanishedDeviceCannotBeOpened) {
    ASSERT_TRUE(input->Open());
    device.Vanish();
    device.Report(MM_WIM_CLOSE, 0);
    EXPECT_FALSE(input->Requeue(0) && input->Requeue(1));
    EXPECT_FALSE(input->Start());
    EXPECT_FALSE(input->Open());
}

TEST_F(WaveInFaults, RecordsAgainWhenTheDeviceComesBack) {
    for (int round = 0; round < 100; ++round) {
        ASSERT_TRUE(input->Open()) << "round " << round;
        EXPECT_EQ(device.BuffersInside(), kBuffers);
        EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
        device.Fill(kFull);
        EXPECT_EQ(owner.buffers.size(), static_cast<std::size_t>(round) + 1);
        device.Vanish();
        device.Report(MM_WIM_CLOSE, 0);
        device.isGone = false;
    }
}

TEST_F(WaveInFaults, CountsBuffersThatComeAfterTheClose) {
    ASSERT_TRUE(input->Open());
    input->Stop();
    input->Close(); // its reports are all still in the queue
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
    Drain();
    EXPECT_EQ(Inside().BuffersQueued(), 0U);
    EXPECT_TRUE(owner.buffers.empty());
    ASSERT_TRUE(input->Open());
    EXPECT_EQ(device.BuffersInside(), kBuffers);
}

TEST_F(WaveInFaults, ProcessesABufferOnceThatIsReportedTwice) {
    ASSERT_TRUE(input->Open());
    const WAVEHDR* header = device.OldestHeader();
    device.Fill(kFull);
    device.ReportAgain(header);
    device.ReportAgain(header);
    EXPECT_EQ(owner.buffers.size(), 1U);
    EXPECT_EQ(device.BuffersInside(), kBuffers);
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
}

TEST_F(WaveInFaults, QueuesABufferOnceThatIsReportedTwiceWhileItIsProcessed) {
    ASSERT_TRUE(input->Open());
    const WAVEHDR* header = device.OldestHeader();
    bool isNested = false;
    owner.onBuffer = [&] {
        if (!isNested) {
            isNested = true;
            device.ReportAgain(header); // messages may run while the owner works
        }
    };
    device.Fill(kFull);
    EXPECT_EQ(device.BuffersInside(), kBuffers);
    EXPECT_LE(Inside().BuffersQueued(), kBuffers);
}

TEST_F(WaveInFaults, CountsNoBuffersBelowNone) {
    ASSERT_TRUE(input->Open());
    const WAVEHDR* header = device.OldestHeader();
    input->Stop();
    Drain();
    EXPECT_EQ(Inside().BuffersQueued(), 0U);
    device.ReportAgain(header);
    EXPECT_EQ(Inside().BuffersQueued(), 0U);
}

TEST_F(WaveInFaults, IgnoresReportsThatAreNotItsOwn) {
    ASSERT_TRUE(input->Open());
    WAVEHDR foreign{};
    foreign.dwUser = 1;
    foreign.dwBytesRecorded = kFull;
    device.ReportAgain(&foreign);
    device.Report(MM_WIM_DATA, 0);
    device.Report(MM_WIM_DATA, 0x10); // no address of anything
    device.Report(MM_WIM_DATA, -1);
    EXPECT_TRUE(owner.buffers.empty());
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
}

TEST_F(WaveInFaults, IgnoresAnIndexOutOfRange) {
    ASSERT_TRUE(input->Open());
    for (const DWORD_PTR index : {DWORD_PTR{kBuffers}, DWORD_PTR{0x7FFFFFFF}, DWORD_PTR{0xFFFFFFFF}}) {
        WAVEHDR* header = device.OldestHeader();
        const DWORD_PTR kept = header->dwUser;
        header->dwUser = index;
        device.Fill(kFull);
        header->dwUser = kept;
        EXPECT_TRUE(owner.buffers.empty());
    }
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
}

TEST_F(WaveInFaults, TakesNoMoreSamplesThanABufferHas) {
    ASSERT_TRUE(input->Open());
    device.Fill(0xFFFFFFFF);
    ASSERT_EQ(owner.buffers.size(), 1U);
    EXPECT_EQ(owner.buffers[0].samples.size(), kSamples);
}

TEST_F(WaveInFaults, BearsThatItsOwnerStopsIt) {
    ASSERT_TRUE(input->Open());
    owner.onBuffer = [&] { input->Stop(); };
    device.Fill(kFull);
    owner.onBuffer = nullptr;
    Drain();
    EXPECT_EQ(owner.buffers.size(), 1U);
    input->Stop(); // the owner gave his buffer back after the stop
    Drain();
    EXPECT_EQ(Inside().BuffersQueued(), 0U);
    ExpectAllBuffersUsable();
}

TEST_F(WaveInFaults, BearsThatItsOwnerChangesTheDevice) {
    device.deviceNames = {"Microphone", "Line"};
    ASSERT_TRUE(input->Open());
    owner.onBuffer = [&] {
        owner.onBuffer = nullptr;
        StopAndClose();
        input->SetDevice(1);
        EXPECT_TRUE(input->Open());
    };
    device.Fill(kFull);
    EXPECT_EQ(device.BuffersInside(), kBuffers) << "the buffer he gave back was at the device already";
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
    ExpectAllBuffersUsable();
}

TEST_F(WaveInFaults, BearsThatItsOwnerDeletesIt) {
    ASSERT_TRUE(input->Open());
    device.PostFilled(kFull);
    owner.onBuffer = [&] { input.reset(); };
    device.Fill(kFull);
    EXPECT_EQ(input, nullptr);
    EXPECT_EQ(owner.buffers.size(), 1U);
    EXPECT_FALSE(device.IsOpen());
}

TEST_F(WaveInFaults, BearsAnOwnerThatThrows) {
    ASSERT_TRUE(input->Open());
    owner.onBuffer = [] { throw std::string("the owner failed"); };
    device.Fill(kFull); // goes no further than the window
    owner.onBuffer = nullptr;
    device.Fill(kFull);
    EXPECT_EQ(owner.buffers.size(), 2U);
    ExpectAllBuffersUsable();
}

TEST_F(WaveInFaults, OutlivesItsWindow) {
    ASSERT_TRUE(input->Open());
    DestroyWindow(Inside().MessageWindow()->Window());
    EXPECT_EQ(Inside().MessageWindow(), nullptr);
    StopAndClose();
    EXPECT_FALSE(input->Open()) << "it cannot hear that the device has closed";
    input.reset();
    EXPECT_FALSE(device.IsOpen());
}

TEST_F(WaveInFaults, RefusesBuffersWithoutMemory) {
    {
        const AllocationFailure failure(0, AllocationFailure::Reach::FromThenOn);
        input = std::make_unique<CtbWaveIn>(kBuffers, kSamples, device.Platform());
    }
    input->SetDevice(0);
    EXPECT_TRUE(input->Open());
    EXPECT_EQ(Inside().BuffersQueued(), 0U);
    EXPECT_EQ(input->GetBlock(0)->Capacity(), 0U);
}

} // namespace
} // namespace orva::test
