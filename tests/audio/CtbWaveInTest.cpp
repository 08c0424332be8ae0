#include "audio/CtbWaveIn.h"

#include "tests/audio/ImportedFunction.h"
#include "tests/audio/WaveInFixture.h"
#include "tests/support/AllocationProbe.h"

#include <string>
#include <vector>

namespace orva::test {
namespace {

using audio::CtbWaveIn;
using Samples = std::vector<std::int16_t>;
using Calls = std::vector<std::string>;

class WaveIn : public WaveInFixture {};

TEST(WaveInMade, StartsWithItsFields) {
    CallLog log;
    FakeWaveIn device(log);
    const CtbWaveIn input(32, 2400, device.Platform());
    const audio::CtbWaveInInspector inside{input};
    EXPECT_EQ(inside.Handle(), nullptr);
    EXPECT_EQ(inside.DeviceId(), 0xFFFFFFFFU);
    EXPECT_EQ(inside.BufferCount(), 32U);
    EXPECT_EQ(inside.BufferSamples(), 2400U);
    EXPECT_EQ(inside.BuffersQueued(), 0U);
    EXPECT_EQ(input.GetOwner(), nullptr);
    EXPECT_FALSE(inside.Closing());
    EXPECT_FALSE(inside.Stopping());
    EXPECT_FALSE(inside.Started());
    EXPECT_NE(inside.MessageWindow(), nullptr);
    EXPECT_TRUE(log.calls.empty());
}

TEST(WaveInMade, AllocatesItsBuffersAndZeroesThem) {
    CallLog log;
    FakeWaveIn device(log);
    const CtbWaveIn input(32, 2400, device.Platform());
    for (std::int32_t index = 0; index < 32; ++index) {
        const dsp::CtbSampleBlock* block = input.GetBlock(index);
        ASSERT_NE(block, nullptr);
        ASSERT_EQ(block->Capacity(), 2400U);
        EXPECT_EQ(Samples(block->Data(), block->Data() + 2400), Samples(2400, 0));
        for (std::int32_t other = 0; other < index; ++other) {
            EXPECT_NE(input.GetBlock(other), block);
            EXPECT_NE(input.GetBlock(other)->Data(), block->Data());
        }
    }
}

TEST(WaveInMade, CallsThePlatformItselfByDefault) {
    const audio::WaveInPlatform& platform = audio::SystemWaveIn();
    EXPECT_EQ(ImportedFunction(platform.getNumDevs), ImportedFunction("winmm", "waveInGetNumDevs"));
    EXPECT_EQ(ImportedFunction(platform.getDevCaps), ImportedFunction("winmm", "waveInGetDevCapsA"));
    EXPECT_EQ(ImportedFunction(platform.open), ImportedFunction("winmm", "waveInOpen"));
    EXPECT_EQ(ImportedFunction(platform.prepareHeader), ImportedFunction("winmm", "waveInPrepareHeader"));
    EXPECT_EQ(ImportedFunction(platform.addBuffer), ImportedFunction("winmm", "waveInAddBuffer"));
    EXPECT_EQ(ImportedFunction(platform.start), ImportedFunction("winmm", "waveInStart"));
    EXPECT_EQ(ImportedFunction(platform.reset), ImportedFunction("winmm", "waveInReset"));
    EXPECT_EQ(ImportedFunction(platform.unprepareHeader), ImportedFunction("winmm", "waveInUnprepareHeader"));
    EXPECT_EQ(ImportedFunction(platform.close), ImportedFunction("winmm", "waveInClose"));
}

TEST_F(WaveIn, ReportsToAHiddenWindow) {
    const HWND window = Inside().MessageWindow()->Window();
    RECT bounds;
    GetWindowRect(window, &bounds);
    EXPECT_EQ(bounds.left, 0);
    EXPECT_EQ(bounds.top, 0);
    EXPECT_EQ(bounds.right, 1);
    EXPECT_EQ(bounds.bottom, 1);
    EXPECT_FALSE(IsWindowVisible(window));
    EXPECT_EQ(GetWindowTextLengthA(window), 0);
    EXPECT_EQ(GetWindow(window, GW_OWNER), nullptr);
    EXPECT_NE(static_cast<DWORD>(GetWindowLongA(window, GWL_STYLE)) & WS_POPUP, 0U);
}

TEST_F(WaveIn, KnowsItsOwner) {
    EXPECT_EQ(input->GetOwner(), &owner);
    input->SetOwner(nullptr);
    EXPECT_EQ(input->GetOwner(), nullptr);
}

TEST_F(WaveIn, GivesItsBlocksByIndex) {
    EXPECT_NE(input->GetBlock(0), nullptr);
    EXPECT_NE(input->GetBlock(kBuffers - 1), nullptr);
    EXPECT_EQ(input->GetBlock(kBuffers), nullptr);
    EXPECT_EQ(input->GetBlock(-1), nullptr);
    EXPECT_EQ(input->GetBlock(INT32_MIN), nullptr);
    EXPECT_EQ(input->GetBlock(INT32_MAX), nullptr);
}

TEST_F(WaveIn, CountsAndNamesTheDevices) {
    device.deviceNames = {"Microphone", std::string(MAXPNAMELEN, 'n')};
    EXPECT_EQ(input->GetDeviceCount(), 2U);
    EXPECT_EQ(input->GetDeviceName(0), "Microphone");
    EXPECT_EQ(input->GetDeviceName(1), std::string(MAXPNAMELEN, 'n'));
    EXPECT_EQ(input->GetDeviceName(2), "");
    EXPECT_EQ(input->GetDeviceName(0xFFFFFFFF), "");
}

// --- opening and starting ----------------------------------------------------------------------------------

TEST_F(WaveIn, OpensNoDeviceWithoutANumber) {
    input->SetDevice(CtbWaveIn::kNoDevice);
    EXPECT_FALSE(input->Open());
    EXPECT_TRUE(device.openings.empty());
}

TEST_F(WaveIn, OpensTheDeviceForItsFormat) {
    device.deviceNames = {"Microphone", "Line"};
    input->SetDevice(1);
    ASSERT_TRUE(input->Open());
    ASSERT_EQ(device.openings.size(), 1U);
    const FakeWaveIn::Opening& opening = device.openings[0];
    EXPECT_EQ(opening.deviceId, 1U);
    EXPECT_EQ(opening.format.wFormatTag, 1);
    EXPECT_EQ(opening.format.nChannels, 1);
    EXPECT_EQ(opening.format.nSamplesPerSec, 48000U);
    EXPECT_EQ(opening.format.nAvgBytesPerSec, 96000U);
    EXPECT_EQ(opening.format.nBlockAlign, 2);
    EXPECT_EQ(opening.format.wBitsPerSample, 16);
    EXPECT_EQ(opening.format.cbSize, 0);
    EXPECT_EQ(opening.window, Inside().MessageWindow()->Window());
    EXPECT_EQ(opening.instance, 0U);
    EXPECT_EQ(opening.flags, 0x10000U);
}

TEST_F(WaveIn, OpensInOrder) {
    device.logsTraffic = true;
    ASSERT_TRUE(input->Open());
    EXPECT_EQ(log.calls, (Calls{"open", "prepare", "prepare", "prepare", "prepare", "add", "add", "add",
                                "add", "start"}));
    EXPECT_TRUE(device.IsRecording());
    EXPECT_TRUE(Inside().Started());
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
}

TEST_F(WaveIn, PreparesAHeaderForEachBuffer) {
    ASSERT_TRUE(input->Open());
    ASSERT_EQ(device.prepared.size(), kBuffers);
    for (std::uint32_t index = 0; index < kBuffers; ++index) {
        const WAVEHDR& header = device.prepared[index];
        const dsp::CtbSampleBlock* block = input->GetBlock(static_cast<std::int32_t>(index));
        EXPECT_EQ(header.lpData, reinterpret_cast<const char*>(block->Data()));
        EXPECT_EQ(header.dwBufferLength, 2 * kSamples);
        EXPECT_EQ(header.dwFlags, 0U);
        EXPECT_EQ(header.dwUser, index);
    }
}

TEST_F(WaveIn, QueuesBuffersAsEmptyAndPrepared) {
    ASSERT_TRUE(input->Open());
    device.Fill(kFull);
    ASSERT_EQ(device.added.size(), kBuffers + 1);
    for (const WAVEHDR& header : device.added) {
        EXPECT_EQ(header.dwBytesRecorded, 0U);
        EXPECT_EQ(header.dwFlags, static_cast<DWORD>(WHDR_PREPARED));
    }
}

TEST_F(WaveIn, TellsThatItCannotOpen) {
    device.openResult = MMSYSERR_ALLOCATED;
    EXPECT_FALSE(input->Open());
    EXPECT_EQ(Inside().Handle(), nullptr) << "whatever the platform left there";
    EXPECT_EQ(log.calls, Calls{"open"});
    EXPECT_FALSE(input->Start());
}

TEST_F(WaveIn, StartsNothingWithoutADevice) {
    EXPECT_FALSE(input->Start());
    EXPECT_TRUE(log.calls.empty());
}

TEST_F(WaveIn, StartsTwiceWithoutHarm) {
    ASSERT_TRUE(input->Open());
    log.Clear();
    device.logsTraffic = true;
    EXPECT_TRUE(input->Start());
    EXPECT_TRUE(input->Start());
    EXPECT_TRUE(log.calls.empty());
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
}

TEST_F(WaveIn, OnlyStartsAnOpenDevice) {
    ASSERT_TRUE(input->Open());
    EXPECT_TRUE(input->Open()) << "started already";
    input->Stop();
    Drain();
    EXPECT_TRUE(input->Open());
    EXPECT_EQ(device.openings.size(), 1U);
    EXPECT_TRUE(device.IsRecording());
}

TEST_F(WaveIn, TellsThatItCannotStart) {
    device.startResult = MMSYSERR_ERROR;
    EXPECT_FALSE(input->Open());
    EXPECT_FALSE(Inside().Started());
    EXPECT_NE(Inside().Handle(), nullptr);
    // The second attempt finds the buffers at the device.
    device.startResult = MMSYSERR_NOERROR;
    EXPECT_TRUE(input->Start());
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
    EXPECT_EQ(device.BuffersInside(), kBuffers);
}

TEST_F(WaveIn, StartsAgainAfterAStop) {
    ASSERT_TRUE(input->Open());
    input->Stop();
    Drain();
    ASSERT_TRUE(input->Start());
    EXPECT_FALSE(Inside().Stopping());
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
    device.Fill(kFull);
    EXPECT_EQ(owner.buffers.size(), 1U);
}

// --- data --------------------------------------------------------------------------------------------------

TEST_F(WaveIn, HandsEachBufferToItsOwnerAndThenBack) {
    ASSERT_TRUE(input->Open());
    WAVEHDR* header = device.OldestHeader();
    std::uint32_t queuedMeanwhile = 0;
    owner.onBuffer = [&] { queuedMeanwhile = Inside().BuffersQueued(); };
    device.Fill(kFull, 100);
    EXPECT_EQ(queuedMeanwhile, kBuffers - 1) << "it stays out until it is processed";
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
    EXPECT_EQ(device.NewestHeader(), header);
    ASSERT_EQ(owner.buffers.size(), 1U);
    EXPECT_EQ(owner.buffers[0].samples, (Samples{100, 101, 102, 103, 104, 105}));
}

TEST_F(WaveIn, KeepsTheOrderOfTheBuffers) {
    ASSERT_TRUE(input->Open());
    for (std::int16_t i = 0; i < 12; ++i) {
        device.Fill(kFull, i);
    }
    ASSERT_EQ(owner.buffers.size(), 12U);
    for (std::size_t i = 0; i < 12; ++i) {
        EXPECT_EQ(owner.buffers[i].index, static_cast<std::int32_t>(i % kBuffers));
        EXPECT_EQ(owner.buffers[i].samples[0], static_cast<std::int16_t>(i));
    }
}

TEST_F(WaveIn, RecordsForNobody) {
    input->SetOwner(nullptr);
    ASSERT_TRUE(input->Open());
    for (int i = 0; i < 12; ++i) {
        device.Fill(kFull);
    }
    EXPECT_EQ(device.BuffersInside(), kBuffers) << "each goes back at once";
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
    EXPECT_EQ(input->GetBlock(0)->Used(), kSamples);
}

TEST_F(WaveIn, KeepsBuffersOutThatTheOwnerKeeps) {
    owner.requeues = false;
    ASSERT_TRUE(input->Open());
    for (std::uint32_t i = 0; i < kBuffers; ++i) {
        device.Fill(kFull);
    }
    EXPECT_EQ(device.BuffersInside(), 0U) << "the device has run out of buffers";
    EXPECT_EQ(Inside().BuffersQueued(), 0U);
    EXPECT_TRUE(input->Requeue(2));
    EXPECT_EQ(device.BuffersInside(), 1U);
    EXPECT_EQ(Inside().BuffersQueued(), 1U);
}

TEST_F(WaveIn, RequeuesNothingOutsideItsRange) {
    ASSERT_TRUE(input->Open());
    EXPECT_FALSE(input->Requeue(-1));
    EXPECT_FALSE(input->Requeue(kBuffers));
    EXPECT_FALSE(input->Requeue(INT32_MAX));
    EXPECT_EQ(device.BuffersInside(), kBuffers);
}

TEST_F(WaveIn, TellsThatTheDeviceRefusesABuffer) {
    owner.requeues = false;
    ASSERT_TRUE(input->Open());
    device.Fill(kFull);
    device.addFault = {1, CallFault::Reach::Once};
    EXPECT_FALSE(input->Requeue(0));
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers - 1);
    EXPECT_TRUE(input->Requeue(0));
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
}

TEST_F(WaveIn, ProcessesAnEmptyBuffer) {
    ASSERT_TRUE(input->Open());
    device.Fill(kFull);
    device.Fill(0);
    ASSERT_EQ(owner.buffers.size(), 2U);
    EXPECT_TRUE(owner.buffers[1].samples.empty());
    EXPECT_EQ(device.BuffersInside(), kBuffers);
}

TEST_F(WaveIn, TakesShortAndOddBuffers) {
    ASSERT_TRUE(input->Open());
    const std::pair<DWORD, std::size_t> cases[] = {{1, 0}, {2, 1}, {3, 1}, {5, 2}, {kFull - 1, kSamples - 1}};
    for (const auto& [bytes, samples] : cases) {
        device.Fill(bytes, 7);
        EXPECT_EQ(owner.buffers.back().samples.size(), samples) << bytes << " bytes";
    }
    EXPECT_EQ(owner.buffers.back().samples, (Samples{7, 8, 9, 10, 11}));
    EXPECT_EQ(input->GetBlock(0)->Capacity(), kSamples);
}

TEST_F(WaveIn, AllocatesNothingOnceOpen) {
    owner.keeps = false;
    ASSERT_TRUE(input->Open());
    device.added.reserve(2000);
    for (int i = 0; i < 8; ++i) {
        device.Fill(kFull);
    }
    const std::uint64_t before = CountAllocations();
    for (int i = 0; i < 1000; ++i) {
        device.Fill(kFull);
    }
    EXPECT_EQ(CountAllocations() - before, 0U);
}

TEST_F(WaveIn, PassesAllMessagesOn) {
    struct Witness {
        void See(toolkit::TmyControl* /*sender*/, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/) {
            seen.push_back(message);
            processedWhenSeen = owner->buffers.size();
        }
        std::vector<UINT> seen;
        RecordingOwner* owner;
        std::size_t processedWhenSeen;
    } witness{{}, &owner, 0};
    ASSERT_TRUE(input->Open());
    Drain();
    Inside().MessageWindow()->messageHook.Bind<&Witness::See>(&witness);
    device.Fill(kFull);
    EXPECT_EQ(witness.processedWhenSeen, 1U) << "the default handling comes after ours";
    device.Report(MM_WIM_OPEN, 0);
    device.Report(MM_WIM_CLOSE, 0);
    device.Report(WM_NULL, 0);
    EXPECT_EQ(witness.seen, (std::vector<UINT>{960, 958, 959, 0}));
    Inside().MessageWindow()->messageHook.Clear();
}

TEST_F(WaveIn, DoesNothingAtTheOpening) {
    ASSERT_TRUE(input->Open());
    device.Report(MM_WIM_OPEN, 0);
    EXPECT_TRUE(Inside().Started());
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
    EXPECT_TRUE(owner.buffers.empty());
}

// --- stopping and closing ----------------------------------------------------------------------------------

TEST_F(WaveIn, StopsNothingWithoutADevice) {
    input->Stop();
    EXPECT_TRUE(log.calls.empty());
    EXPECT_FALSE(Inside().Stopping());
}

TEST_F(WaveIn, KeepsAllBuffersOutAfterTheStop) {
    ASSERT_TRUE(input->Open());
    log.Clear();
    input->Stop();
    EXPECT_TRUE(Inside().Stopping());
    EXPECT_FALSE(Inside().Started());
    EXPECT_EQ(log.calls, Calls{"reset"});
    EXPECT_EQ(Inside().BuffersQueued(), kBuffers);
    Drain();
    EXPECT_EQ(Inside().BuffersQueued(), 0U);
    EXPECT_EQ(device.BuffersInside(), 0U);
    EXPECT_TRUE(owner.buffers.empty()) << "nor are they processed";
}

TEST_F(WaveIn, ProcessesNothingThatWasRecordedBeforeTheStop) {
    ASSERT_TRUE(input->Open());
    device.PostFilled(kFull);
    input->Stop();
    Drain();
    EXPECT_TRUE(owner.buffers.empty());
    EXPECT_EQ(Inside().BuffersQueued(), 0U);
}

TEST_F(WaveIn, UnpreparesAllThenCloses) {
    ASSERT_TRUE(input->Open());
    input->Stop();
    Drain();
    log.Clear();
    device.logsTraffic = true;
    input->Close();
    EXPECT_EQ(log.calls, (Calls{"unprepare", "unprepare", "unprepare", "unprepare", "close"}));
    EXPECT_EQ(Inside().Handle(), nullptr);
    EXPECT_TRUE(Inside().Closing());
    for (std::uint32_t index = 0; index < kBuffers; ++index) {
        EXPECT_EQ(Inside().Headers()[index].dwFlags & WHDR_PREPARED, 0U);
    }
    EXPECT_FALSE(device.IsOpen());
}

TEST_F(WaveIn, UnpreparesAlsoWithoutADevice) {
    device.logsTraffic = true;
    input->Close();
    EXPECT_EQ(log.calls, (Calls{"unprepare", "unprepare", "unprepare", "unprepare"}));
    EXPECT_FALSE(Inside().Closing());
}

TEST_F(WaveIn, DoesNotOpenBeforeTheDeviceHasClosed) {
    ASSERT_TRUE(input->Open());
    input->Stop();
    Drain();
    input->Close();
    EXPECT_FALSE(input->Open());
    EXPECT_EQ(device.openings.size(), 1U);
    Drain(); // the device tells that it has closed
    EXPECT_FALSE(Inside().Closing());
    EXPECT_FALSE(Inside().Stopping());
    EXPECT_TRUE(input->Open());
}

TEST_F(WaveIn, BearsACloseWhileItCloses) {
    ASSERT_TRUE(input->Open());
    input->Stop();
    Drain();
    input->Close();
    log.Clear();
    input->Close();
    EXPECT_EQ(log.Count("close"), 0);
    EXPECT_TRUE(Inside().Closing());
}

TEST_F(WaveIn, ForgetsADeviceThatClosed) {
    ASSERT_TRUE(input->Open());
    input->Stop();
    device.Report(MM_WIM_CLOSE, 0);
    EXPECT_EQ(Inside().Handle(), nullptr);
    EXPECT_FALSE(Inside().Stopping());
    EXPECT_FALSE(Inside().Closing());
}

TEST_F(WaveIn, ChangesItsDeviceInTheToldOrder) {
    device.deviceNames = {"Microphone", "Line"};
    ASSERT_TRUE(input->Open());
    device.Fill(kFull);
    StopAndClose();
    input->SetDevice(1);
    ASSERT_TRUE(input->Open());
    EXPECT_EQ(device.openings.back().deviceId, 1U);
    device.Fill(kFull, 9);
    ASSERT_EQ(owner.buffers.size(), 2U);
    EXPECT_EQ(owner.buffers[1].samples[0], 9);
}

TEST_F(WaveIn, StopsAndClosesWhenItGetsADevice) {
    device.deviceNames = {"Microphone", "Line"};
    ASSERT_TRUE(input->Open());
    input->Stop();
    Drain();
    log.Clear();
    input->SetDevice(1);
    EXPECT_EQ(log.calls, (Calls{"reset", "close"}));
    EXPECT_EQ(Inside().DeviceId(), 1U);
    EXPECT_EQ(device.openings.size(), 1U) << "the next opening uses it";
}

TEST_F(WaveIn, EndsInOrder) {
    ASSERT_TRUE(input->Open());
    const HWND window = Inside().MessageWindow()->Window();
    log.Clear();
    device.logsTraffic = true;
    input.reset();
    EXPECT_EQ(log.calls, (Calls{"reset", "unprepare", "unprepare", "unprepare", "unprepare", "close"}));
    EXPECT_FALSE(device.IsOpen()) << "the buffers had come back before";
    EXPECT_FALSE(IsWindow(window));
    EXPECT_TRUE(owner.buffers.empty());
}

TEST_F(WaveIn, FreesAllItHas) {
    input.reset();
    owner.keeps = false;
    std::int64_t live = 0;
    for (int round = 0; round < 4; ++round) {
        input = std::make_unique<CtbWaveIn>(kBuffers, kSamples, device.Platform());
        input->SetOwner(&owner);
        input->SetDevice(0);
        ASSERT_TRUE(input->Open());
        device.Fill(kFull);
        input.reset();
        if (round == 0) {
            live = CountLiveAllocations(); // whatever is made once is made by now
        }
        EXPECT_EQ(CountLiveAllocations(), live) << "round " << round;
    }
}

} // namespace
} // namespace orva::test
