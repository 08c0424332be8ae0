#include "audio/CtbWaveOut.h"

#include "tests/audio/ImportedFunction.h"
#include "tests/audio/WaveOutFixture.h"
#include "tests/support/AllocationProbe.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orva::test {
namespace {

using audio::CtbWaveOut;
using dsp::CtbSampleBlock;

class WaveOut : public WaveOutFixture {};

/// The fields as they are made, before anybody sets one.
TEST(WaveOutMade, StartsWithItsFields) {
    CallLog log;
    FakeWaveOut device(log);
    FakeVirtualCard card(log);
    const CtbWaveOut output(44100, device.Platform(), card.Platform());
    const audio::CtbWaveOutInspector inside{output};
    EXPECT_EQ(inside.PrebufferBlocks(), 2U);
    EXPECT_EQ(inside.MaxBlocks(), 6U);
    EXPECT_FALSE(inside.Running());
    EXPECT_EQ(output.GetSampleRate(), 44100U);
    EXPECT_EQ(inside.DeviceId(), 0U);
    EXPECT_EQ(inside.Handle(), nullptr);
    EXPECT_FALSE(inside.Prebuffering());
    EXPECT_EQ(inside.Gathered(), 0U);
    EXPECT_EQ(inside.FreeHeaders(), 0U);
    EXPECT_EQ(inside.BlocksInDevice(), 0U);
    EXPECT_EQ(output.GetVolume(), 8U);
    EXPECT_FALSE(inside.Mute());
    EXPECT_EQ(inside.DataSource(), nullptr);
    EXPECT_NE(inside.MessageWindow(), nullptr);
    EXPECT_EQ(inside.Card().Handle1(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(inside.Card().Handle2(), INVALID_HANDLE_VALUE);
    EXPECT_TRUE(log.calls.empty()) << "nothing is asked of the device before it is opened";
}

TEST(WaveOutMade, CallsThePlatformItselfByDefault) {
    const audio::WaveOutPlatform& platform = audio::SystemWaveOut();
    EXPECT_EQ(ImportedFunction(platform.getNumDevs), ImportedFunction("winmm", "waveOutGetNumDevs"));
    EXPECT_EQ(ImportedFunction(platform.getDevCaps), ImportedFunction("winmm", "waveOutGetDevCapsA"));
    EXPECT_EQ(ImportedFunction(platform.open), ImportedFunction("winmm", "waveOutOpen"));
    EXPECT_EQ(ImportedFunction(platform.prepareHeader), ImportedFunction("winmm", "waveOutPrepareHeader"));
    EXPECT_EQ(ImportedFunction(platform.write), ImportedFunction("winmm", "waveOutWrite"));
    EXPECT_EQ(ImportedFunction(platform.unprepareHeader),
              ImportedFunction("winmm", "waveOutUnprepareHeader"));
    EXPECT_EQ(ImportedFunction(platform.reset), ImportedFunction("winmm", "waveOutReset"));
    EXPECT_EQ(ImportedFunction(platform.close), ImportedFunction("winmm", "waveOutClose"));
}

TEST_F(WaveOut, ReportsToAHiddenWindow) {
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
    const auto style = static_cast<DWORD>(GetWindowLongA(window, GWL_STYLE));
    EXPECT_NE(style & WS_POPUP, 0U);
    EXPECT_EQ(style & (WS_VISIBLE | WS_CHILD), 0U);
}

// --- settings ----------------------------------------------------------------------------------------------

TEST_F(WaveOut, RaisesTheMostBlocksAboveThoseToGather) {
    output->SetPrebufferBlocks(10);
    EXPECT_EQ(Inside().PrebufferBlocks(), 10U);
    EXPECT_EQ(Inside().MaxBlocks(), 12U);
}

TEST_F(WaveOut, RaisesTheMostBlocksAlsoWhenTheyEqualThoseToGather) {
    output->SetPrebufferBlocks(6);
    EXPECT_EQ(Inside().MaxBlocks(), 8U);
}

TEST_F(WaveOut, LeavesTheMostBlocksThatAreAboveThoseToGather) {
    output->SetPrebufferBlocks(5);
    EXPECT_EQ(Inside().PrebufferBlocks(), 5U);
    EXPECT_EQ(Inside().MaxBlocks(), 6U);
}

TEST_F(WaveOut, RefusesFewerBlocksThanAreToBeGathered) {
    output->SetMaxBlocks(1);
    EXPECT_EQ(Inside().MaxBlocks(), 5U);
    output->SetMaxBlocks(kGathered);
    EXPECT_EQ(Inside().MaxBlocks(), 5U);
    output->SetMaxBlocks(kGathered + 1);
    EXPECT_EQ(Inside().MaxBlocks(), 4U);
    output->SetMaxBlocks(9);
    EXPECT_EQ(Inside().MaxBlocks(), 9U);
}

TEST_F(WaveOut, KeepsItsBlockCountsWhileRunning) {
    ASSERT_EQ(output->Start(), 0U);
    output->SetPrebufferBlocks(10);
    output->SetMaxBlocks(20);
    EXPECT_EQ(Inside().PrebufferBlocks(), kGathered);
    EXPECT_EQ(Inside().MaxBlocks(), kMostAtDevice);
    output->Stop();
    output->SetMaxBlocks(20);
    output->SetPrebufferBlocks(10);
    EXPECT_EQ(Inside().PrebufferBlocks(), 10U);
    EXPECT_EQ(Inside().MaxBlocks(), 20U);
}

TEST_F(WaveOut, KeepsItsRateWhileADeviceIsOpen) {
    output->SetSampleRate(8000);
    EXPECT_EQ(output->GetSampleRate(), 8000U);
    ASSERT_EQ(output->Start(), 0U);
    output->SetSampleRate(48000);
    EXPECT_EQ(output->GetSampleRate(), 8000U);
    output->Stop();
    output->SetSampleRate(48000);
    EXPECT_EQ(output->GetSampleRate(), 8000U) << "stopped, but open";
    Drain();
    ASSERT_EQ(output->Close(), 0U);
    output->SetSampleRate(48000);
    EXPECT_EQ(output->GetSampleRate(), 48000U);
}

TEST_F(WaveOut, KeepsItsDeviceWhileRunning) {
    output->SetDevice(2);
    EXPECT_EQ(Inside().DeviceId(), 2U);
    output->SetDevice(0);
    ASSERT_EQ(output->Start(), 0U);
    output->SetDevice(1);
    EXPECT_EQ(Inside().DeviceId(), 0U);
    output->Stop();
    output->SetDevice(1);
    EXPECT_EQ(Inside().DeviceId(), 1U) << "stopped, if open";
}

TEST_F(WaveOut, ClampsItsVolume) {
    const std::pair<std::int32_t, std::uint32_t> cases[] = {{-5, 0},
                                                            {-1, 0},
                                                            {0, 0},
                                                            {1, 1},
                                                            {31, 31},
                                                            {32, 32},
                                                            {33, 32},
                                                            {100, 32},
                                                            {std::numeric_limits<std::int32_t>::min(), 0},
                                                            {std::numeric_limits<std::int32_t>::max(), 32}};
    for (const auto& [asked, kept] : cases) {
        output->SetVolume(asked);
        EXPECT_EQ(output->GetVolume(), kept) << "asked for " << asked;
    }
}

TEST_F(WaveOut, CountsTheDevices) {
    device.deviceNames = {"one", "two", "three"};
    EXPECT_EQ(output->GetDeviceCount(), 3U);
}

TEST_F(WaveOut, NamesAnyDevice) {
    device.deviceNames = {"Loudspeaker", "Headphones"};
    EXPECT_EQ(output->GetDeviceName(0), "Loudspeaker");
    EXPECT_EQ(output->GetDeviceName(1), "Headphones");
    EXPECT_EQ(output->GetDeviceName(2), "");
    EXPECT_EQ(output->GetDeviceName(0xFFFFFFFF), "");
}

TEST_F(WaveOut, ReadsNoFurtherThanTheNameIsLong) {
    device.deviceNames = {std::string(MAXPNAMELEN, 'n')};
    EXPECT_EQ(output->GetDeviceName(0), std::string(MAXPNAMELEN, 'n'));
}

TEST_F(WaveOut, NamesDevicesAlsoAfterTheClose) {
    ASSERT_EQ(output->Start(), 0U);
    StopAndClose();
    EXPECT_EQ(output->GetDeviceName(0), "Loudspeaker");
    EXPECT_EQ(output->GetDeviceName(7), "");
}

// --- opening and closing -----------------------------------------------------------------------------------

TEST_F(WaveOut, OpensTheDeviceForItsFormat) {
    device.deviceNames = {"Loudspeaker", "Headphones"};
    output->SetDevice(1);
    EXPECT_EQ(output->Open(), 0U);
    ASSERT_EQ(device.openings.size(), 1U);
    const FakeWaveOut::Opening& opening = device.openings[0];
    EXPECT_EQ(opening.deviceId, 1U);
    EXPECT_EQ(opening.format.wFormatTag, 1);
    EXPECT_EQ(opening.format.nChannels, 1);
    EXPECT_EQ(opening.format.nSamplesPerSec, 16000U);
    EXPECT_EQ(opening.format.nAvgBytesPerSec, 32000U);
    EXPECT_EQ(opening.format.nBlockAlign, 2);
    EXPECT_EQ(opening.format.wBitsPerSample, 16);
    EXPECT_EQ(opening.format.cbSize, 0);
    EXPECT_EQ(opening.window, Inside().MessageWindow()->Window());
    EXPECT_EQ(opening.instance, 0U);
    EXPECT_EQ(opening.flags, 0x10000U);
    EXPECT_NE(Inside().Handle(), nullptr);
    EXPECT_FALSE(Inside().Running());
    EXPECT_FALSE(Inside().Prebuffering());
}

TEST_F(WaveOut, RefusesToOpenAnOpenDevice) {
    ASSERT_EQ(output->Open(), 0U);
    EXPECT_EQ(output->Open(), 4U);
    EXPECT_EQ(device.openings.size(), 1U);
    EXPECT_NE(Inside().Handle(), nullptr);
}

TEST_F(WaveOut, GivesThePlatformsErrorWhenItCannotOpen) {
    device.openResult = MMSYSERR_ALLOCATED + 100;
    EXPECT_EQ(output->Open(), device.openResult);
    EXPECT_EQ(Inside().Handle(), nullptr) << "whatever the platform left there";
    EXPECT_EQ(output->Close(), 102U);
}

TEST_F(WaveOut, BeginsToGatherWhenItStarts) {
    EXPECT_EQ(output->Start(), 0U);
    EXPECT_TRUE(Inside().Running());
    EXPECT_TRUE(Inside().Prebuffering());
}

TEST_F(WaveOut, BeginsNothingWhenItCannotOpen) {
    device.openResult = MMSYSERR_NODRIVER;
    EXPECT_EQ(output->Start(), static_cast<std::uint32_t>(MMSYSERR_NODRIVER));
    EXPECT_FALSE(Inside().Running());
    EXPECT_FALSE(Inside().Prebuffering());
}

TEST_F(WaveOut, LeavesItsStateWhenItIsStartedTwice) {
    StartFlowing();
    EXPECT_EQ(output->Start(), 4U);
    EXPECT_TRUE(Inside().Running());
    EXPECT_FALSE(Inside().Prebuffering());
}

TEST_F(WaveOut, DoesNotStartAgainBeforeItIsClosed) {
    ASSERT_EQ(output->Start(), 0U);
    ASSERT_EQ(output->Stop(), 0U);
    EXPECT_EQ(output->Start(), 4U);
    EXPECT_FALSE(Inside().Running());
}

TEST_F(WaveOut, StopTellsThatItIsNotRunning) {
    EXPECT_EQ(output->Stop(), 100U);
    ASSERT_EQ(output->Open(), 0U);
    EXPECT_EQ(output->Stop(), 100U) << "open, not running";
    EXPECT_EQ(log.Count("reset"), 0);
}

TEST_F(WaveOut, StopTellsThatTheDeviceIsClosed) {
    StartFlowing();
    device.Report(MM_WOM_CLOSE, 0);
    EXPECT_EQ(output->Stop(), 102U);
    EXPECT_TRUE(Inside().Running());
    EXPECT_EQ(log.Count("reset"), 0);
}

TEST_F(WaveOut, StopResetsTheDeviceAndGivesItsResult) {
    StartFlowing();
    device.resetResult = MMSYSERR_ERROR;
    EXPECT_EQ(output->Stop(), static_cast<std::uint32_t>(MMSYSERR_ERROR));
    EXPECT_FALSE(Inside().Running());
    EXPECT_EQ(log.Count("reset"), 1);
    EXPECT_EQ(output->Stop(), 100U);
}

TEST_F(WaveOut, CloseTellsThatNoDeviceIsOpen) {
    EXPECT_EQ(output->Close(), 102U);
    EXPECT_EQ(log.Count("close"), 0);
}

TEST_F(WaveOut, CloseThatFailsKeepsTheDevice) {
    ASSERT_EQ(output->Open(), 0U);
    device.closeResult = MMSYSERR_ERROR;
    EXPECT_EQ(output->Close(), static_cast<std::uint32_t>(MMSYSERR_ERROR));
    EXPECT_NE(Inside().Handle(), nullptr);
    device.closeResult = MMSYSERR_NOERROR;
    EXPECT_EQ(output->Close(), 0U);
    EXPECT_EQ(Inside().Handle(), nullptr);
}

TEST_F(WaveOut, ChangesItsDeviceInTheToldOrder) {
    device.deviceNames = {"Loudspeaker", "Headphones"};
    StartFlowing();
    WriteBlocks(4);
    ASSERT_EQ(output->Stop(), 0U);
    Drain();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
    ASSERT_EQ(output->Close(), 0U);
    Drain();
    output->SetDevice(1);
    ASSERT_EQ(output->Start(), 0U);
    EXPECT_EQ(device.openings.back().deviceId, 1U);
    Forget();
    WriteBlocks(3);
    EXPECT_EQ(device.played.size(), 3U);
}

// --- writing -----------------------------------------------------------------------------------------------

TEST_F(WaveOut, IgnoresNull) {
    output->Write(nullptr);
    StartFlowing();
    output->Write(nullptr);
    EXPECT_TRUE(device.played.empty());
    EXPECT_TRUE(pool.returned.empty());
}

TEST_F(WaveOut, GivesBlocksBackBeforeTheStart) {
    CtbSampleBlock* block = pool.Take(5);
    output->Write(block);
    ASSERT_EQ(pool.returned.size(), 1U);
    EXPECT_EQ((*block)[0], 5) << "and does not touch it";
}

TEST_F(WaveOut, GivesBlocksBackAfterTheStop) {
    StartFlowing();
    ASSERT_EQ(output->Stop(), 0U);
    CtbSampleBlock* block = pool.Take(5);
    output->Write(block);
    ASSERT_EQ(pool.returned.size(), 1U);
    EXPECT_EQ(pool.returned[0], block);
    EXPECT_EQ((*block)[0], 5);
    EXPECT_TRUE(device.played.empty());
}

TEST_F(WaveOut, BearsToHaveNoSource) {
    output->SetDataSource(nullptr);
    CtbSampleBlock block;
    block.Acquire(4);
    output->Write(&block);
    ASSERT_EQ(output->Start(), 0U);
    for (int i = 0; i < 9; ++i) {
        output->Write(&block);
    }
    EXPECT_EQ(device.played.size(), kMostAtDevice);
    device.FinishAllBlocks();
    EXPECT_EQ(Inside().BlocksInDevice(), 0U);
}

TEST_F(WaveOut, GivesBackABlockWithoutMemory) {
    StartFlowing();
    BlockPool hollow(1, 0); // there is memory, but for no sample
    output->SetDataSource(&hollow);
    output->Write(hollow.Take());
    EXPECT_EQ(hollow.returned.size(), 1U);

    CtbSampleBlock none;
    CtbSampleBlock* returned = nullptr;
    struct Source : audio::ItbWaveOutputDataSource {
        explicit Source(CtbSampleBlock** target) : place(target) {}
        void ReturnBlock(CtbSampleBlock* block) override { *place = block; }
        CtbSampleBlock** place;
    } source(&returned);
    output->SetDataSource(&source);
    output->Write(&none);
    EXPECT_EQ(returned, &none);
    EXPECT_TRUE(device.played.empty());
    output->SetDataSource(&pool);
}

TEST_F(WaveOut, PlaysTheWholeCapacityWhateverIsUsed) {
    StartFlowing();
    CtbSampleBlock* block = pool.Take(3);
    block->SetUsed(2);
    output->Write(block);
    ASSERT_EQ(device.played.size(), 1U);
    EXPECT_EQ(device.played[0].samples, std::vector<std::int16_t>(kBlockSamples, 60)) << "3 times 20";
    EXPECT_EQ(block->Used(), 2U);
}

TEST_F(WaveOut, FillsTheHeader) {
    StartFlowing();
    // Of a header in its second use nothing may be left of the first.
    WriteBlocks(1);
    device.OldestHeader()->dwBytesRecorded = 77;
    device.OldestHeader()->dwLoops = 5;
    device.FinishAllBlocks();
    Forget();
    for (int i = 0; i < 3; ++i) {
        CtbSampleBlock* block = pool.Take();
        output->Write(block);
        const WAVEHDR& header = device.prepared.back();
        EXPECT_EQ(header.lpData, reinterpret_cast<char*>(block->Data()));
        EXPECT_EQ(header.dwBufferLength, 2 * kBlockSamples);
        EXPECT_EQ(header.dwBytesRecorded, 0U);
        EXPECT_EQ(header.dwUser, reinterpret_cast<DWORD_PTR>(block));
        EXPECT_EQ(header.dwFlags, 0U);
        EXPECT_EQ(header.dwLoops, 0U);
    }
}

TEST_F(WaveOut, PreparesThenWritesThenUnprepares) {
    StartFlowing();
    device.logsTraffic = true;
    WriteBlocks(1);
    device.FinishBlock();
    EXPECT_EQ(log.calls, (std::vector<std::string>{"prepare", "write", "unprepare"}));
    device.logsTraffic = false;
}

// --- volume ------------------------------------------------------------------------------------------------

TEST_F(WaveOut, ScalesEverySampleByEveryVolume) {
    constexpr std::int32_t kValues = 65536;
    BlockPool wide(1, kValues);
    CtbWaveOut own(kRate, device.Platform(), card.Platform()); // goes before its source
    own.SetDataSource(&wide);
    own.SetPrebufferBlocks(1);
    ASSERT_EQ(own.Start(), 0U);
    for (std::int32_t volume = 0; volume <= 32; ++volume) {
        own.SetVolume(volume);
        CtbSampleBlock* block = wide.Take();
        for (std::int32_t i = 0; i < kValues; ++i) {
            (*block)[static_cast<std::uint32_t>(i)] = static_cast<std::int16_t>(i - 32768);
        }
        own.Write(block);
        for (std::int32_t i = 0; i < kValues; ++i) {
            const double exact = std::floor((i - 32768) * volume * 2.5);
            const auto expected = static_cast<std::int16_t>(std::clamp(exact, -32767.0, 32767.0));
            ASSERT_EQ((*block)[static_cast<std::uint32_t>(i)], expected)
                << "sample " << i - 32768 << " at volume " << volume;
        }
        device.FinishBlock();
    }
}

TEST_F(WaveOut, ClipsToSymmetricLimits) {
    StartFlowing();
    output->SetVolume(32);
    const std::pair<std::int16_t, std::int16_t> cases[] = {{-32768, -32767}, {-410, -32767}, {-409, -32720},
                                                           {409, 32720},     {410, 32767},   {32767, 32767}};
    for (const auto& [sample, played] : cases) {
        WriteBlocks(1, sample);
        EXPECT_EQ(device.played.back().samples[0], played) << "of " << sample;
        device.FinishBlock();
    }
}

TEST_F(WaveOut, RoundsTowardsMinusInfinity) {
    StartFlowing();
    output->SetVolume(1);
    const std::pair<std::int16_t, std::int16_t> cases[] = {{1, 2},   {-1, -3}, {3, 7},
                                                           {-3, -8}, {2, 5},   {-2, -5}};
    for (const auto& [sample, played] : cases) {
        WriteBlocks(1, sample);
        EXPECT_EQ(device.played.back().samples[0], played) << "of " << sample;
        device.FinishBlock();
    }
}

TEST_F(WaveOut, PlaysSilenceAtVolumeZero) {
    StartFlowing();
    output->SetVolume(0);
    WriteBlocks(1, -32768);
    ASSERT_EQ(device.played.size(), 1U);
    EXPECT_EQ(device.played[0].samples, std::vector<std::int16_t>(kBlockSamples, 0));
}

TEST_F(WaveOut, PlaysSilenceWhenMutedAndKeepsThePace) {
    StartFlowing();
    output->SetMute(true);
    WriteBlocks(2, 1000);
    ASSERT_EQ(device.played.size(), 2U);
    EXPECT_EQ(device.played[1].samples, std::vector<std::int16_t>(kBlockSamples, 0));
    output->SetMute(false);
    WriteBlocks(1, 1000);
    EXPECT_EQ(device.played[2].samples, std::vector<std::int16_t>(kBlockSamples, 20000));
}

TEST_F(WaveOut, ScalesABlockWhenItIsWrittenNotWhenItIsSent) {
    ASSERT_EQ(output->Start(), 0U);
    output->SetVolume(1);
    WriteBlocks(1, 4);
    output->SetVolume(2);
    WriteBlocks(1, 4);
    output->SetMute(true);
    WriteBlocks(1, 4);
    ASSERT_EQ(device.played.size(), 3U);
    EXPECT_EQ(device.played[0].samples[0], 10);
    EXPECT_EQ(device.played[1].samples[0], 20);
    EXPECT_EQ(device.played[2].samples[0], 0);
}

// --- gathering ---------------------------------------------------------------------------------------------

TEST_F(WaveOut, SendsWhatWasGatheredInOrder) {
    ASSERT_EQ(output->Start(), 0U);
    CtbSampleBlock* first = pool.Take();
    CtbSampleBlock* second = pool.Take();
    CtbSampleBlock* third = pool.Take();
    output->Write(first);
    output->Write(second);
    EXPECT_TRUE(device.played.empty());
    EXPECT_EQ(Inside().Gathered(), 2U);
    output->Write(third);
    ASSERT_EQ(device.played.size(), 3U);
    EXPECT_EQ(device.played[0].block, first);
    EXPECT_EQ(device.played[1].block, second);
    EXPECT_EQ(device.played[2].block, third);
    EXPECT_EQ(Inside().Gathered(), 0U);
    EXPECT_FALSE(Inside().Prebuffering());
}

TEST_F(WaveOut, SendsAtOnceWhenFlowing) {
    StartFlowing();
    WriteBlocks(1);
    EXPECT_EQ(device.played.size(), 1U);
}

TEST_F(WaveOut, GathersAgainWhenAsked) {
    StartFlowing();
    WriteBlocks(1);
    output->RequestPrebuffer();
    WriteBlocks(2);
    EXPECT_EQ(device.played.size(), 1U);
    EXPECT_TRUE(device.IsOpen());
    EXPECT_EQ(log.calls, std::vector<std::string>{}) << "the device is not touched";
    WriteBlocks(1);
    EXPECT_EQ(device.played.size(), 4U);
}

TEST_F(WaveOut, GivesBackWhatWasGatheredBeyondTheMost) {
    StartFlowing();
    WriteBlocks(5);
    output->RequestPrebuffer();
    WriteBlocks(2);
    CtbSampleBlock* last = pool.Take();
    output->Write(last);
    EXPECT_EQ(device.played.size(), 6U);
    EXPECT_EQ(pool.returned.size(), 2U);
    EXPECT_EQ(pool.returned.back(), last);
    EXPECT_EQ(Inside().Gathered(), 0U);
    EXPECT_FALSE(Inside().Prebuffering());
}

TEST_F(WaveOut, GathersNothingAgainWhenItRunsDry) {
    StartFlowing();
    WriteBlocks(1);
    device.FinishAllBlocks();
    WriteBlocks(1);
    EXPECT_EQ(device.played.size(), 2U);
    EXPECT_FALSE(Inside().Prebuffering());
}

TEST_F(WaveOut, GathersOneBlockWithoutWaiting) {
    for (const std::uint32_t count : {0U, 1U}) {
        output->SetPrebufferBlocks(count);
        ASSERT_EQ(output->Start(), 0U);
        Forget();
        WriteBlocks(1);
        EXPECT_EQ(device.played.size(), 1U) << count << " to gather";
        StopAndClose();
    }
}

TEST_F(WaveOut, KeepsWhatWasGatheredOverAStop) {
    ASSERT_EQ(output->Start(), 0U);
    WriteBlocks(2, 4);
    StopAndClose();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks - 2);
    EXPECT_EQ(Inside().Gathered(), 2U);
    ASSERT_EQ(output->Start(), 0U);
    EXPECT_TRUE(device.played.empty());
    WriteBlocks(1, 5);
    ASSERT_EQ(device.played.size(), 3U);
    EXPECT_EQ(device.played[0].samples[0], 80);
    EXPECT_EQ(device.played[2].samples[0], 100);
}

// --- at the device -----------------------------------------------------------------------------------------

TEST_F(WaveOut, GivesTheSeventhBlockBackUnplayed) {
    StartFlowing();
    WriteBlocks(6);
    EXPECT_EQ(Inside().BlocksInDevice(), 6U);
    EXPECT_TRUE(pool.returned.empty());
    CtbSampleBlock* seventh = pool.Take();
    output->Write(seventh);
    ASSERT_EQ(pool.returned.size(), 1U);
    EXPECT_EQ(pool.returned[0], seventh);
    EXPECT_EQ(device.played.size(), 6U);
    device.FinishBlock();
    WriteBlocks(1);
    EXPECT_EQ(device.played.size(), 7U) << "one done, one more may go";
    EXPECT_EQ(device.mostInside, 6U);
}

TEST_F(WaveOut, GivesABlockBackWhenItIsDone) {
    StartFlowing();
    CtbSampleBlock* first = pool.Take();
    CtbSampleBlock* second = pool.Take();
    output->Write(first);
    output->Write(second);
    EXPECT_TRUE(pool.returned.empty());
    device.FinishBlock();
    EXPECT_EQ(pool.returned, std::vector<CtbSampleBlock*>{first});
    EXPECT_EQ(Inside().BlocksInDevice(), 1U);
    device.FinishBlock();
    EXPECT_EQ(pool.returned, (std::vector<CtbSampleBlock*>{first, second}));
    EXPECT_EQ(Inside().BlocksInDevice(), 0U);
}

TEST_F(WaveOut, UsesItsHeadersInTurn) {
    StartFlowing(); // three headers
    EXPECT_EQ(Inside().FreeHeaders(), 3U);
    for (int i = 0; i < 9; ++i) {
        WriteBlocks(1);
        device.FinishBlock();
    }
    EXPECT_EQ(Inside().FreeHeaders(), 3U);
    for (std::size_t i = 3; i < 9; ++i) {
        EXPECT_EQ(device.written[i], device.written[i - 3]) << "the one that is free for longest";
    }
}

TEST_F(WaveOut, MakesNoMoreHeadersThanWereAtTheDevice) {
    StartFlowing();
    for (int i = 0; i < 20; ++i) {
        WriteBlocks(5);
        device.FinishAllBlocks();
    }
    EXPECT_EQ(Inside().FreeHeaders(), 5U);
}

TEST_F(WaveOut, AllocatesNothingOnceWarm) {
    device.keepsPlayed = false;
    pool.keepsReturns = false;
    StartFlowing();
    WriteBlocks(6);
    device.FinishAllBlocks();
    const std::uint64_t before = CountAllocations();
    for (int i = 0; i < 1000; ++i) {
        output->Write(pool.Take());
        output->Write(pool.Take());
        device.FinishBlock();
        if (i % 50 == 0) {
            output->RequestPrebuffer();
        }
        if (device.BlocksInside() > 2) {
            device.FinishBlock();
        }
    }
    EXPECT_EQ(CountAllocations() - before, 0U);
}

// --- notifications -----------------------------------------------------------------------------------------

TEST_F(WaveOut, DoesNothingAtTheOpening) {
    StartFlowing();
    WriteBlocks(1);
    device.Report(MM_WOM_OPEN, 0);
    EXPECT_EQ(Inside().BlocksInDevice(), 1U);
    EXPECT_TRUE(Inside().Running());
    EXPECT_NE(Inside().Handle(), nullptr);
}

TEST_F(WaveOut, ForgetsADeviceThatClosed) {
    StartFlowing();
    device.Report(MM_WOM_CLOSE, 0);
    EXPECT_EQ(Inside().Handle(), nullptr);
}

TEST_F(WaveOut, IgnoresAReportWithoutAHeader) {
    StartFlowing();
    WriteBlocks(1);
    device.Report(MM_WOM_DONE, 0);
    EXPECT_EQ(Inside().BlocksInDevice(), 1U);
    EXPECT_TRUE(pool.returned.empty());
}

TEST_F(WaveOut, UnpreparesOnlyWhileTheDeviceIsOpen) {
    StartFlowing();
    WriteBlocks(1);
    WAVEHDR* header = device.OldestHeader();
    device.logsTraffic = true;
    device.Report(MM_WOM_CLOSE, 0);
    device.FinishBlock();
    EXPECT_EQ(log.Count("unprepare"), 0);
    EXPECT_EQ(header->dwFlags, 0U);
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
    device.logsTraffic = false;
}

TEST_F(WaveOut, PassesAllMessagesOn) {
    struct Witness {
        void See(toolkit::TmyControl* /*sender*/, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/) {
            seen.push_back(message);
            freeWhenSeen = pool->FreeCount();
        }
        std::vector<UINT> seen;
        BlockPool* pool;
        std::size_t freeWhenSeen;
    } witness{{}, &pool, 0};
    StartFlowing();
    WriteBlocks(1);
    Drain();
    Inside().MessageWindow()->messageHook.Bind<&Witness::See>(&witness);
    device.FinishBlock();
    EXPECT_EQ(witness.freeWhenSeen, kPoolBlocks) << "the default handling comes after ours";
    device.Report(MM_WOM_OPEN, 0);
    device.Report(MM_WOM_CLOSE, 0);
    device.Report(WM_NULL, 0);
    EXPECT_EQ(witness.seen, (std::vector<UINT>{957, 955, 956, 0}));
    Inside().MessageWindow()->messageHook.Clear();
}

// --- the end -----------------------------------------------------------------------------------------------

TEST_F(WaveOut, EndsInOrder) {
    device.deviceNames = {"Tessaron Virtual Sound Card"};
    StartFlowing();
    WriteBlocks(4);
    const HWND window = Inside().MessageWindow()->Window();
    log.Clear();
    device.logsTraffic = true;
    output.reset();
    EXPECT_EQ(log.calls, (std::vector<std::string>{"reset", "unprepare", "unprepare", "unprepare",
                                                   "unprepare", "close", "close file", "close file"}));
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_TRUE(card.openFiles.empty());
    EXPECT_FALSE(device.IsOpen());
}

TEST_F(WaveOut, EndsWithoutEverHavingOpened) {
    output.reset();
    EXPECT_TRUE(log.calls.empty());
}

TEST_F(WaveOut, GivesBackWhatWasGatheredAtTheEnd) {
    ASSERT_EQ(output->Start(), 0U);
    WriteBlocks(2);
    output.reset();
    EXPECT_EQ(pool.FreeCount(), kPoolBlocks);
}

TEST_F(WaveOut, FreesAllItHas) {
    output.reset();
    device.keepsPlayed = false;
    pool.keepsReturns = false;
    std::int64_t live = 0;
    for (int round = 0; round < 4; ++round) {
        {
            CtbWaveOut own(kRate, device.Platform(), card.Platform());
            own.SetDataSource(&pool);
            ASSERT_EQ(own.Start(), 0U);
            for (int i = 0; i < 8; ++i) {
                own.Write(pool.Take());
            }
        }
        if (round == 0) {
            live = CountLiveAllocations(); // whatever is made once is made by now
        }
        EXPECT_EQ(CountLiveAllocations(), live) << "round " << round;
    }
}

} // namespace
} // namespace orva::test
