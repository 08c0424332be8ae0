// A host that does in its callback what it likes: pumps messages, calls back, closes the instance, throws.
#include "tests/plugin/PluginFixture.h"
#include "tests/plugin/PluginSignals.h"
#include "tests/support/AllocationProbe.h"
#include "tests/toolkit/OpenHandles.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <vector>

namespace orva::plugin {

namespace {

using Samples = std::vector<std::int16_t>;

constexpr std::uint32_t kBlock = 2400;

class PluginReentrancy : public test::PluginFixture {
protected:
    PluginReentrancy() {
        library.onInvert = [this](std::int16_t* samples, std::uint32_t) { firsts.push_back(samples[0]); };
    }
    ~PluginReentrancy() override { library.onInvert = nullptr; }

    /// A call, then FM.
    static Samples Signal(int rate) {
        Samples signal = test::CallSignal(rate, test::kAlgorithmClear, 2);
        const Samples tone = test::FmTone(rate, 1.5);
        signal.insert(signal.end(), tone.begin(), tone.end());
        signal.resize(signal.size() / kBlock * kBlock);
        return signal;
    }
    static Samples FirstsOf(const Samples& signal) {
        Samples firsts;
        for (std::size_t i = 0; i < signal.size(); i += kBlock) {
            firsts.push_back(signal[i]);
        }
        return firsts;
    }
    /// Four blocks at a time, so that messages wait while a block is under way.
    void DeliverAll(const Samples& signal) {
        constexpr std::size_t kPiece = 4 * kBlock;
        for (std::size_t i = 0; i < signal.size() && IsRunning(); i += kPiece) {
            library.Deliver(std::span(signal).subspan(i, std::min(kPiece, signal.size() - i)));
            Pump();
            if (IsRunning()) {
                waveOut.FinishAllBlocks();
            }
        }
    }

    Samples firsts; ///< first sample of each block that was walked
};

} // namespace

// --- messages inside the callback --------------------------------------------------------------------------

TEST_F(PluginReentrancy, BlocksOfTheReceiverThatArriveInsideABlockAreTakenAfterwards) {
    StartWithReceiver();
    const Samples signal = Signal(64000);
    int depth = 0;
    int nested = 0;
    host.onCall = [&](const test::FakeHost::Call&, void*) {
        ++depth;
        const std::size_t before = firsts.size();
        Pump();
        nested += depth;
        EXPECT_EQ(firsts.size(), before) << "a block inside a block";
        --depth;
    };
    DeliverAll(signal);
    EXPECT_GT(nested, 10);
    EXPECT_EQ(firsts, FirstsOf(signal)) << "all of them, in order";
    EXPECT_EQ(Inside().FilledInputBlocks().Count(), 0U);
    EXPECT_EQ(Inside().FreeInputBlocks().Count(), 9U);
}

TEST_F(PluginReentrancy, BuffersOfTheWaveInputThatArriveInsideABlockAreTakenAfterwards) {
    library.isPresent = true;
    StartWithWaveInput();
    Notify(2304, 2);
    std::int16_t next = 100;
    int filled = 0;
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 4362 && filled < 40) {
            for (int i = 0; i < 3; ++i) {
                waveIn.PostFilled(4800, next++);
                ++filled;
            }
            Pump();
        }
    };
    for (int i = 0; i < 10; ++i) {
        waveIn.Fill(4800, next++);
        waveOut.FinishAllBlocks();
    }
    EXPECT_GT(filled, 9);
    Samples expected;
    for (std::int16_t first = 100; first < next; ++first) {
        expected.push_back(first);
    }
    Samples sorted = firsts;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, expected) << "none lost, none twice";
    EXPECT_EQ(waveIn.BuffersInside(), 32U);
}

TEST_F(PluginReentrancy, AHostThatPumpsHearsTheSameVoice) {
    const Samples signal = Signal(64000);
    StartWithReceiver();
    DeliverAll(signal);
    const Samples quiet = Played();
    Close();
    Pump();
    waveOut.played.clear();
    StartWithReceiver();
    host.onCall = [&](const test::FakeHost::Call&, void*) { Pump(); };
    DeliverAll(signal);
    EXPECT_EQ(Played(), quiet);
}

TEST_F(PluginReentrancy, AnInputDeviceChangedInsideABlockDropsTheOldDevicesBuffers) {
    library.isPresent = true;
    waveIn.deviceNames = {"First", "Second"};
    StartWithWaveInput();
    Notify(2304, 2);
    bool isChanged = false;
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 4362 && !isChanged) {
            isChanged = true;
            waveIn.PostFilled(4800, 77);
            Pump();
            Plugin().SetWaveInDevice(1);
        }
    };
    for (int i = 0; i < 5; ++i) {
        waveIn.Fill(4800, 1);
    }
    EXPECT_TRUE(isChanged);
    EXPECT_EQ(firsts, Samples(5, 1));
    EXPECT_EQ(waveIn.BuffersInside(), 32U);
}

TEST_F(PluginReentrancy, CallsBackFromEveryCode) {
    library.isPresent = true;
    std::set<std::int32_t> seen;
    int depth = 0;
    std::uint32_t both[2] = {2, 19};
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        seen.insert(call.code);
        if (depth > 2 || !IsRunning()) {
            return;
        }
        ++depth;
        Notify(0, 0);
        if (call.code == 4362) {
            Notify(2048, 155000000); // which drops trunking records that wait
        }
        Notify(2304, static_cast<std::uint32_t>(seen.size()) % 2 == 0 ? 19 : 2);
        Notify(2304, 0, 8, both);
        Notify(2817, 2);
        Notify(2818, 1);
        Notify(2818, 0);
        Notify(3584, static_cast<std::uint32_t>(host.calls.size()) % 32);
        Notify(3585, 0);
        Notify(3840, 0);
        Notify(256, 1);
        --depth;
    };
    record.SetText(44, "K7USB", 32);
    Start(record.Record());
    Pump();
    DeliverAll(Signal(64000));
    Close();
    EXPECT_TRUE(IsDestroyed());
    for (const std::int32_t code : {2304, 2816, 2818, 4352, 4353, 4362, 4365, 16384, 16386, 16390}) {
        EXPECT_TRUE(seen.contains(code)) << code;
    }
}

TEST_F(PluginReentrancy, AnExceptionOfTheHostCostsOneBlock) {
    StartWithReceiver();
    Notify(2304, 2);
    int offers = 0;
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        offers += call.code == 4362 ? 1 : 0;
        if (call.code == 4362 && offers == 1) {
            throw std::runtime_error("host");
        }
        if (call.code == 4362 && offers == 2) {
            throw 2; // of any type
        }
    };
    const Samples tone = test::FmTone(64000, 1.0);
    const Samples signal(tone.begin(), tone.begin() + 20 * kBlock);
    DeliverAll(signal);
    EXPECT_GT(offers, 2);
    EXPECT_EQ(firsts, FirstsOf(signal));
    EXPECT_EQ(Inside().FreeInputBlocks().Count(), 9U);
}

TEST_F(PluginReentrancy, AnExceptionInTheModeCallDoesNotLockTheMode) {
    StartWithReceiver();
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 2304) {
            throw std::runtime_error("host");
        }
    };
    Notify(2304, 19);
    host.onCall = nullptr;
    EXPECT_FALSE(Inside().InHostModeCall());
    Notify(2304, 2);
    EXPECT_EQ(Inside().DemodulationMode(), DemodulationMode::Fm);
}

// --- closes inside the callback ----------------------------------------------------------------------------

namespace {

/// Closes the instance from inside the first call with one code, with messages of all kinds waiting.
class PluginCloses : public PluginReentrancy, public testing::WithParamInterface<std::int32_t> {
protected:
    void CloseInside() {
        host.onCall = [this](const test::FakeHost::Call& call, void*) {
            if (call.code == GetParam() && !isClosed) {
                isClosed = true;
                PostMessageA(window, 1024, 0, 0);
                PostMessageA(window, 1025, 0, 0);
                PostMessageA(window, WM_TIMER, 1, 0);
                Close();
                EXPECT_FALSE(IsDestroyed()) << "its own functions are running";
                callsAtClose = host.calls.size();
            }
        };
    }
    void ExpectGone() {
        ASSERT_TRUE(isClosed);
        EXPECT_TRUE(IsDestroyed());
        EXPECT_FALSE(IsRunning());
        EXPECT_FALSE(waveOut.IsOpen());
        EXPECT_FALSE(waveIn.IsOpen());
        EXPECT_EQ(host.Of(16384).size(), 1U);
        EXPECT_EQ(host.calls.size(), callsAtClose) << "nothing comes after the last message";
        EXPECT_EQ(log.Count("CodecStop"), log.Count("CodecStart") > 0 ? 1 : 0);
        EXPECT_EQ(log.Count("free library"), 1);
    }

    bool isClosed = false;
    std::size_t callsAtClose = 0;
};

} // namespace

TEST_P(PluginCloses, WithTheReceiver) {
    library.isPresent = true;
    record.SetText(44, "K7USB", 32);
    CloseInside();
    entries.Start(kHandle, record.Record(), test::FakeHost::Callback());
    Pump();
    if (IsRunning()) {
        Notify(2817, 2); // the noise of FM is measured, which is answered with code 2818
        DeliverAll(Signal(64000));
    }
    Pump();
    ExpectGone();
}

TEST_P(PluginCloses, WithTheWaveInput) {
    library.isPresent = true;
    record.SetText(44, "OTHER", 32);
    CloseInside();
    entries.Start(kHandle, record.Record(), test::FakeHost::Callback());
    Pump();
    if (IsRunning()) {
        Notify(2817, 2);
    }
    const Samples signal = Signal(48000);
    for (std::size_t i = 0; i < signal.size() && IsRunning(); i += kBlock) {
        std::copy_n(signal.begin() + static_cast<std::ptrdiff_t>(i), kBlock,
                    reinterpret_cast<std::int16_t*>(waveIn.OldestHeader()->lpData));
        WAVEHDR* header = waveIn.OldestHeader();
        const Samples keep(signal.begin() + static_cast<std::ptrdiff_t>(i),
                           signal.begin() + static_cast<std::ptrdiff_t>(i + kBlock));
        library.onInvert = [&keep](std::int16_t* samples, std::uint32_t count) {
            std::copy_n(keep.begin(), count, samples); // the device's ramp becomes the signal
        };
        ASSERT_NE(header, nullptr);
        waveIn.Fill(4800);
        if (IsRunning()) {
            waveOut.FinishAllBlocks();
        }
    }
    Pump();
    ExpectGone();
}

INSTANTIATE_TEST_SUITE_P(Codes, PluginCloses,
                         testing::Values(2304, 2816, 2818, 4352, 4353, 4362, 4365, 16386, 16390));

TEST_F(PluginReentrancy, ACloseWhileADeviceChangesEndsTheInstanceAfterwards) {
    waveIn.deviceNames = {"First", "Second"};
    waveOut.deviceNames = {"First", "Second"};
    for (const bool isInput : {true, false}) {
        StartWithWaveInput();
        const std::size_t inputsOpened = waveIn.openings.size();
        PostMessageA(window, 1024, 0, 0); // which the change of the device dispatches
        host.onCall = [&](const test::FakeHost::Call& call, void*) {
            if (call.code == 2816) {
                Close();
                EXPECT_FALSE(IsDestroyed());
            }
        };
        if (isInput) {
            Plugin().SetWaveInDevice(1);
        } else {
            Plugin().SetWaveOutDevice(1);
        }
        EXPECT_TRUE(IsDestroyed());
        EXPECT_FALSE(waveOut.IsOpen());
        EXPECT_EQ(waveIn.openings.size(), inputsOpened);
        host.onCall = nullptr;
        Pump();
    }
}

TEST_F(PluginReentrancy, ACloseInsideTheCloseIsIgnored) {
    StartWithReceiver();
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        EXPECT_TRUE(call.code == 16390 || call.code == 16384);
        Close();
    };
    Close();
    EXPECT_EQ(host.Codes(), (std::vector<std::int32_t>{16390, 16384}));
    EXPECT_TRUE(IsDestroyed());
    EXPECT_FALSE(IsRunning());
}

TEST_F(PluginReentrancy, AHandleIsFreeAgainOnceItsInstanceHasSaidItsLast) {
    StartWithReceiver();
    bool isRestarted = false;
    HWND first = window;
    host.onCall = [&](const test::FakeHost::Call& call, void*) {
        if (call.code == 2304 && !isRestarted) {
            isRestarted = true;
            Close();
        }
    };
    library.Deliver(test::Noise(64000, 0.1));
    Pump();
    ASSERT_TRUE(isRestarted);
    EXPECT_EQ(IsWindow(first), FALSE);
    StartWithReceiver();
    EXPECT_TRUE(IsRunning());
    library.Deliver(test::Noise(64000, 0.1));
    Pump();
    EXPECT_FALSE(host.Of(2304).empty());
}

TEST_F(PluginReentrancy, AClosingInstanceStartsNothing) {
    library.startResults = {0};
    library.isPresent = true;
    auto* alone = new COrvaPlugin(kHandle, record.Record(), platform);
    const HWND itsWindow = alone->GetWindowHandle();
    log.Clear();
    ASSERT_TRUE(alone->BeginClosing());
    EXPECT_FALSE(alone->BeginClosing());
    SendMessageA(itsWindow, WM_TIMER, 1, 0);
    SendMessageA(itsWindow, 1024, 0, 0);
    EXPECT_EQ(log.Count("CodecStart"), 0);
    const Samples samples(kBlock);
    EXPECT_FALSE(alone->ProcessData(samples.data(), kBlock));
    alone->Destroy();
    EXPECT_EQ(IsWindow(itsWindow), FALSE);
}

TEST_F(PluginReentrancy, AHundredInstancesComeAndGoAndLeaveNothing) {
    host.keeps = false;
    library.keepsReads = false;
    waveOut.keepsPlayed = false;
    struct Held {
        std::int64_t allocations;
        int handles;
        DWORD userObjects;
        DWORD graphicsObjects;
    };
    const Samples block(kBlock, 100);
    const auto comeAndGo = [&](int times) {
        for (int i = 0; i < times; ++i) {
            StartWithReceiver();
            library.Deliver(block);
            Pump();
            Close();
            Pump();
            EXPECT_TRUE(IsDestroyed());
            firsts.clear();
            log.Clear();
            library.lookups.clear();
        }
        return Held{test::CountLiveAllocations(), test::CountOpenHandles(),
                    GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS),
                    GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)};
    };
    const Held early = comeAndGo(10);
    const Held late = comeAndGo(100);
    EXPECT_EQ(late.allocations, early.allocations);
    EXPECT_EQ(late.handles, early.handles);
    EXPECT_EQ(late.userObjects, early.userObjects);
    EXPECT_EQ(late.graphicsObjects, early.graphicsObjects);
}

} // namespace orva::plugin
