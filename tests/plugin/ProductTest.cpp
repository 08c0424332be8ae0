/// The product itself, Orva.dll with everything in it, and the receiver library for tests, between hosts that
/// behave in every way a host can.
#include "plugin/HostInterface.h"
#include "tests/plugin/LoadedLibrary.h"
#include "tests/plugin/PluginSignals.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WavFile.h"
#include "tools/orva-host/ProcessResources.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>
#include <windows.h>

#include <gtest/gtest.h>

namespace orva::plugin {

namespace {

using Samples = std::vector<std::int16_t>;
using tools::ProcessResources;

constexpr int kRate = 64000;
constexpr ULONGLONG kPatience = 20000; // [ms]

/// All codes that come without files being played.
const std::vector<std::int32_t> kCodes = {16390, 16386, 2816, 4352, 4353, 2304, 4365, 4362, 2818, 16384};

class Product;
Product* product = nullptr;

class Product : public testing::Test {
protected:
    static void SetUpTestSuite() {
        folder = new test::TemporaryFolder;
        // A control channel, a call, FM audio: every code that a signal can bring on.
        Samples samples = test::ControlChannelSignal(kRate, 0.5);
        for (const Samples& more :
             {test::CallSignal(kRate, test::kAlgorithmClear, 1), test::FmTone(kRate, 1.2)}) {
            samples.insert(samples.end(), more.begin(), more.end());
        }
        folder->Write("all.if.wav", test::WavBytes(samples, kRate));
    }
    static void TearDownTestSuite() {
        delete folder;
        folder = nullptr;
    }

    Product() {
        product = this;
        SetDllDirectoryA(ORVA_RECEIVER_FOLDER);
        Set("RECORDING", folder->Path("all.if.wav"));
        Set("SPEED", "6");
        Set("END", "loop");
        library.emplace(ORVA_PLUGIN);
        init = library->Find<ZemPluginInit>("zemPluginInit");
        start = library->Find<ZemPluginStart>("zemPluginStart");
        notify = library->Find<ZemPluginNotify>("zemPluginNotify");
    }
    ~Product() override {
        onCall = nullptr;
        for (const auto& [handle, window] : windows) {
            Close(handle);
        }
        Pump();
        library.reset();
        EXPECT_EQ(GetModuleHandleA("Orva.dll"), nullptr) << "still loaded";
        EXPECT_EQ(GetModuleHandleA("TRK718API.DLL"), nullptr) << "still loaded";
        for (const std::string& name : set) {
            SetEnvironmentVariableA(name.c_str(), nullptr);
        }
        SetDllDirectoryA(nullptr);
        product = nullptr;
    }

    void Set(const std::string& name, const std::string& value) {
        set.push_back("ORVA_RECEIVER_" + name);
        SetEnvironmentVariableA(set.back().c_str(), value.c_str());
    }

    std::uint32_t Start(std::uint32_t handle) {
        ReceiverRecord record{};
        record.totalSize = record.headerSize = sizeof record;
        std::copy_n("K7USB", 5, record.deviceType);
        std::copy_n("TEST0001", 8, record.serialNumber);
        const std::uint32_t window = start(handle, &record, Hear, 0);
        if (window != kStartRefused) {
            windows[handle] = reinterpret_cast<HWND>(window);
        }
        return window;
    }
    void Notify(std::uint32_t handle, std::int32_t code, std::uint32_t param) {
        notify(handle, code, param, 0, nullptr);
    }
    void Close(std::uint32_t handle) { Notify(handle, 16384, 0); }

    static void Pump() {
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
    /// False if it has not come true after long.
    template <class Condition>
    static bool PumpUntil(Condition condition) {
        const ULONGLONG end = GetTickCount64() + kPatience;
        while (!condition()) {
            if (GetTickCount64() > end) {
                return false;
            }
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
            Pump();
        }
        return true;
    }

    static std::uint32_t ORVA_HOST_CALL Hear(WindowHandle window, std::int32_t code, std::uint32_t param,
                                             std::uint32_t /*size*/, void* /*data*/) {
        ++product->heard[code];
        product->seen[window].insert(code);
        if (product->onCall) {
            product->onCall(code, param);
        }
        if (code == 16386 && !product->refuses) {
            return param == 2048 ? 155000000 : kUnsupported;
        }
        return product->refuses ? kUnsupported : 0;
    }

    bool HasHeardAllButTheLast() {
        return std::all_of(kCodes.begin(), kCodes.end() - 1,
                           [this](std::int32_t code) { return heard[code] > 0; });
    }

    static test::TemporaryFolder* folder;

    std::vector<std::string> set;
    std::optional<test::LoadedLibrary> library;
    ZemPluginInit init = nullptr;
    ZemPluginStart start = nullptr;
    ZemPluginNotify notify = nullptr;
    std::map<std::uint32_t, HWND> windows; ///< by handle
    std::map<std::int32_t, int> heard;     ///< how often each code came
    std::map<HWND, std::set<std::int32_t>> seen;
    std::function<void(std::int32_t code, std::uint32_t param)> onCall;
    bool refuses = false;
};

test::TemporaryFolder* Product::folder = nullptr;

} // namespace

TEST_F(Product, HasFourPlainNamesAndNeedsNothingButTheSystem) {
    ASSERT_NE(library->Module(), nullptr);
    EXPECT_EQ(library->ExportedNames(), (std::vector<std::string>{"zemPluginDone", "zemPluginInit",
                                                                  "zemPluginNotify", "zemPluginStart"}));
    const std::set<std::string> system = {"advapi32.dll", "gdi32.dll",   "kernel32.dll", "msimg32.dll",
                                          "msvcrt.dll",   "ole32.dll",   "setupapi.dll", "shell32.dll",
                                          "user32.dll",   "version.dll", "winmm.dll"};
    for (std::string name : library->ImportedLibraries()) {
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
        EXPECT_TRUE(system.contains(name)) << name;
    }
}

TEST_F(Product, SendsEveryCodeOfASignalInTime) {
    Start(1);
    Notify(1, 2817, 2); // noise is measured while FM is heard
    EXPECT_TRUE(PumpUntil([this] { return HasHeardAllButTheLast(); }));
    Close(1);
    EXPECT_EQ(heard[16384], 1);
    EXPECT_EQ(IsWindow(windows[1]), FALSE);
}

TEST_F(Product, SurvivesACloseFromInsideEveryCode) {
    std::uint32_t handle = 0;
    for (const std::int32_t code : kCodes) {
        ++handle;
        heard.clear();
        bool isClosed = false;
        onCall = [&](std::int32_t sent, std::uint32_t) {
            if (sent == code && !isClosed) {
                isClosed = true;
                Close(handle);
            }
        };
        const std::uint32_t window = Start(handle);
        EXPECT_EQ(window == kStartRefused, code == 16390) << code;
        Notify(handle, 2817, 2);
        if (code == 16384) {
            Close(handle);
        }
        EXPECT_TRUE(PumpUntil([&] { return isClosed; })) << code;
        EXPECT_EQ(heard[16384], 1) << code;
        const auto before = heard;
        Pump();
        EXPECT_EQ(heard, before) << "silent from then on";
        EXPECT_EQ(IsWindow(reinterpret_cast<HWND>(window)), FALSE) << code;
    }
}

TEST_F(Product, BearsAHostThatSupportsNothing) {
    refuses = true;
    Start(1);
    Notify(1, 2817, 2);
    EXPECT_TRUE(PumpUntil([this] { return HasHeardAllButTheLast(); }));
    Close(1);
    EXPECT_EQ(heard[16384], 1);
}

TEST_F(Product, BearsAHostThatCallsBackFromEveryCode) {
    int depth = 0;
    int calls = 0;
    onCall = [&](std::int32_t code, std::uint32_t) {
        if (depth >= 2 || code == 16384) {
            return;
        }
        ++depth;
        std::uint32_t both[2] = {19, 2};
        for (const std::int32_t back : {0, 256, 2817, 3584, 3585}) {
            Notify(1, back, 1 + static_cast<std::uint32_t>(++calls) % 30);
        }
        Notify(1, 2818, 0);
        Notify(1, 3840, 0);
        notify(1, 2304, 0, sizeof both, both);
        Notify(1, 2817, 2);
        EXPECT_EQ(Start(1), kStartRefused) << "its handle is in use";
        Pump();
        --depth;
    };
    Start(1);
    EXPECT_TRUE(PumpUntil([this] { return heard[4362] >= 5; }));
    Close(1);
    EXPECT_EQ(heard[16384], 1);
}

TEST_F(Product, BearsThatItsWindowIsDestroyed) {
    Start(1);
    EXPECT_TRUE(PumpUntil([this] { return heard[4365] > 0; }));
    DestroyWindow(windows[1]);
    const ULONGLONG end = GetTickCount64() + 200;
    PumpUntil([end] { return GetTickCount64() >= end; });
    Notify(1, 2304, 19);
    Close(1);
    EXPECT_EQ(heard[16384], 1);
    EXPECT_NE(Start(1), kStartRefused) << "and begins anew";
}

TEST_F(Product, StaysInPlaceWhenItIsFreedWithInstancesInIt) {
    Start(1);
    EXPECT_TRUE(PumpUntil([this] { return heard[4365] > 0; }));
    library.reset();
    EXPECT_NE(GetModuleHandleA("Orva.dll"), nullptr);
    EXPECT_TRUE(PumpUntil([this] { return heard[4362] >= 2; })) << "and goes on";
    library.emplace(ORVA_PLUGIN);
    Close(1);
    EXPECT_EQ(heard[16384], 1);
}

TEST_F(Product, SixteenInstancesDecodeAtOnce) {
    constexpr std::uint32_t kInstances = 16;
    Set("SPEED", "0"); // as fast as all of them take it
    Set("END", "stop");
    std::uint32_t refused = 0;
    for (std::uint32_t handle = 1; handle <= kInstances; ++handle) {
        refused += Start(handle) == kStartRefused ? 1 : 0;
    }
    EXPECT_EQ(refused, 0U);
    EXPECT_TRUE(PumpUntil([this] { return heard[4362] >= 5 * static_cast<int>(kInstances); }));
    for (const auto& [handle, window] : windows) {
        for (const std::int32_t code : {2304, 4352, 4362, 4365}) {
            EXPECT_TRUE(seen[window].contains(code)) << handle << ' ' << code;
        }
        Close(handle);
    }
    EXPECT_EQ(heard[16384], static_cast<int>(kInstances));
}

TEST_F(Product, InstancesComeAndGoAndLeaveNothing) {
    Set("SPEED", "1");
    const test::LoadedLibrary receiver(ORVA_RECEIVER_LIBRARY); // its own loading is none of ours
    const auto comeAndGo = [this](int times) {
        for (int i = 0; i < times; ++i) {
            Start(1);
            Pump();
            Close(1);
            Pump();
        }
        return ProcessResources::Count();
    };
    const ProcessResources early = comeAndGo(10);
    ProcessResources late = comeAndGo(40);
    // The multimedia library's own thread, with megabytes of stack, is there or not as it happens: only like
    // is compared with like.
    for (int more = 0; late.threads != early.threads && more < 50; ++more) {
        late = comeAndGo(1);
    }
    ASSERT_EQ(late.threads, early.threads);
    EXPECT_LE(late.handles, early.handles + 3); // the multimedia library's, which come and go too
    EXPECT_EQ(late.windows, early.windows);
    EXPECT_EQ(late.graphicsObjects, early.graphicsObjects);
    EXPECT_LE(late.memory, early.memory + 64 * 1024);
}

// The library's own heap goes when it is unloaded, unless something is left in it: so nothing can hide there.
TEST_F(Product, LoadsComeAndGoAndLeaveNothing) {
    library.reset();
    const test::LoadedLibrary multimedia("winmm.dll"); // the platform's own comings and goings are not free
    SetDllDirectoryA(nullptr); // the wave input's road, which is closed before it opens
    const auto comeAndGo = [this](int times) {
        for (int i = 0; i < times; ++i) {
            const test::LoadedLibrary loaded(ORVA_PLUGIN);
            start = loaded.Find<ZemPluginStart>("zemPluginStart");
            notify = loaded.Find<ZemPluginNotify>("zemPluginNotify");
            Start(1);
            Close(1);
            Pump();
        }
        windows.clear();
        return ProcessResources::Count();
    };
    constexpr int kLoads = 20;
    constexpr int kAllowed = 10; // of the platform's own
    constexpr int kHeapRegion = 1 << 20;
    const ProcessResources early = comeAndGo(kLoads / 2);
    const ProcessResources late = comeAndGo(kLoads);
    EXPECT_LE(late.handles, early.handles + kAllowed);
    EXPECT_EQ(late.windows, early.windows);
    EXPECT_EQ(late.graphicsObjects, early.graphicsObjects);
    EXPECT_LE(late.memory, early.memory + kAllowed * kHeapRegion);
}

} // namespace orva::plugin
