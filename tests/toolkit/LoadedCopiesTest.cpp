/// The toolkit inside libraries: two copies in one process, unloading, callers with a misaligned stack.
#include "tests/toolkit/library/ToolkitLibrary.h"

#include <array>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace orva::test {

namespace {

std::string ProgramFolder() {
    std::array<char, MAX_PATH> path{};
    GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    std::string folder = path.data();
    return folder.substr(0, folder.find_last_of("\\/") + 1);
}

template <class Function>
Function Find(HMODULE module, const char* name) {
    const FARPROC found = GetProcAddress(module, name);
    Function function = nullptr;
    static_assert(sizeof function == sizeof found);
    std::memcpy(&function, &found, sizeof function);
    return function;
}

/// One loaded copy of the library, under a file name of its own.
class Copy {
public:
    explicit Copy(const char* name) : path(ProgramFolder() + name) {
        CopyFileA((ProgramFolder() + "toolkit-library.dll").c_str(), path.c_str(), FALSE);
        module = LoadLibraryA(path.c_str());
        open = Find<OpenTestWindow>(module, "OpenTestWindow");
        close = Find<CloseTestWindow>(module, "CloseTestWindow");
        pump = Find<PumpTestMessages>(module, "PumpTestMessages");
        provoke = Find<ProvokeException>(module, "ProvokeException");
        read = Find<ReadStatistics>(module, "ReadStatistics");
        openWidgets = Find<OpenWidgets>(module, "OpenWidgets");
        driveWidgets = Find<DriveWidgets>(module, "DriveWidgets");
        closeWidgets = Find<CloseWidgets>(module, "CloseWidgets");
    }
    ~Copy() {
        Unload();
        DeleteFileA(path.c_str());
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;

    [[nodiscard]] bool IsComplete() const {
        return open && close && pump && provoke && read && openWidgets && driveWidgets && closeWidgets;
    }
    [[nodiscard]] LibraryStatistics Statistics() const {
        LibraryStatistics statistics{};
        read(&statistics);
        return statistics;
    }
    void Unload() {
        if (module != nullptr) {
            FreeLibrary(module);
            module = nullptr;
        }
    }
    [[nodiscard]] bool IsLoaded() const { return GetModuleHandleA(path.c_str()) != nullptr; }

    OpenTestWindow open = nullptr;
    CloseTestWindow close = nullptr;
    PumpTestMessages pump = nullptr;
    ProvokeException provoke = nullptr;
    ReadStatistics read = nullptr;
    OpenWidgets openWidgets = nullptr;
    DriveWidgets driveWidgets = nullptr;
    CloseWidgets closeWidgets = nullptr;

private:
    std::string path;
    HMODULE module = nullptr;
};

} // namespace

TEST(LoadedCopies, TwoWorkBesideEachOtherAndUnloadCleanly) {
    Copy first("toolkit-copy-1.dll");
    Copy second("toolkit-copy-2.dll");
    ASSERT_TRUE(first.IsComplete());
    ASSERT_TRUE(second.IsComplete());
    const HWND mine = first.open("first");
    const HWND other = second.open("second");
    ASSERT_NE(mine, nullptr);
    ASSERT_NE(other, nullptr);
    first.pump();
    EXPECT_GE(first.Statistics().paintedWindows, 1U);
    EXPECT_GE(second.Statistics().paintedWindows, 1U);
    EXPECT_EQ(first.close(other), 0) << "a window of the other copy is a stranger's";
    EXPECT_EQ(second.close(mine), 0);

    EXPECT_EQ(first.close(mine), 1);
    first.pump();
    first.Unload();
    EXPECT_FALSE(first.IsLoaded());
    EXPECT_TRUE(IsWindow(other));
    std::array<char, 16> title{};
    EXPECT_EQ(SendMessageA(other, WM_GETTEXT, title.size(), reinterpret_cast<LPARAM>(title.data())), 6);
    EXPECT_STREQ(title.data(), "second") << "the second copy lives on";
    EXPECT_EQ(second.close(other), 1);
    second.Unload();
    EXPECT_FALSE(second.IsLoaded());
}

TEST(LoadedCopies, LeaveTheirHeapAsItWasAfterAWindow) {
    Copy copy("toolkit-copy-3.dll");
    ASSERT_TRUE(copy.IsComplete());
    copy.close(copy.open("warms up"));
    copy.pump();
    const LibraryStatistics before = copy.Statistics();
    for (int i = 0; i < 20; ++i) {
        const HWND window = copy.open("again");
        copy.pump();
        ASSERT_EQ(copy.close(window), 1);
    }
    const LibraryStatistics after = copy.Statistics();
    EXPECT_EQ(after.heapBlocks, before.heapBlocks);
    EXPECT_EQ(after.heapIsSound, 1U);
}

TEST(LoadedCopies, CanBeLoadedAndUnloadedManyTimes) {
    for (int i = 0; i < 20; ++i) {
        Copy copy("toolkit-copy-4.dll");
        ASSERT_TRUE(copy.IsComplete()) << "load " << i;
        const HWND window = copy.open("short");
        ASSERT_NE(window, nullptr) << "load " << i;
        copy.pump();
        ASSERT_EQ(copy.close(window), 1);
    }
}

TEST(LoadedCopies, WidgetsOfTwoBearAStreamOfMessagesAndLeaveNothing) {
    constexpr int kWidgets = 120; // five of each class
    constexpr int kMessages = 1000;
    constexpr int kTurns = 2;
    Copy first("toolkit-copy-6.dll");
    Copy second("toolkit-copy-7.dll");
    ASSERT_TRUE(first.IsComplete());
    ASSERT_TRUE(second.IsComplete());
    Copy* const both[] = {&first, &second};
    std::array<LibraryStatistics, 2> before{};
    for (std::size_t i = 0; i < before.size(); ++i) { // what is made once, and kept
        both[i]->openWidgets(1, kWidgets);
        both[i]->driveWidgets(kMessages);
        both[i]->closeWidgets();
        before[i] = both[i]->Statistics();
    }

    const HWND mine = first.openWidgets(2, kWidgets);
    const HWND other = second.openWidgets(3, kWidgets);
    ASSERT_NE(mine, nullptr);
    ASSERT_NE(other, nullptr);
    for (int turn = 0; turn < kTurns; ++turn) {
        EXPECT_GT(first.driveWidgets(kMessages), 0U);
        EXPECT_GT(second.driveWidgets(kMessages), 0U);
    }
    first.closeWidgets();
    EXPECT_FALSE(IsWindow(mine));
    EXPECT_EQ(first.Statistics().heapBlocks, before[0].heapBlocks);
    EXPECT_EQ(first.Statistics().heapIsSound, 1U);
    first.Unload();
    EXPECT_FALSE(first.IsLoaded());

    EXPECT_TRUE(IsWindow(other));
    EXPECT_GT(second.driveWidgets(kMessages), 0U) << "the second copy plays on";
    second.closeWidgets();
    EXPECT_FALSE(IsWindow(other));
    EXPECT_EQ(second.Statistics().heapBlocks, before[1].heapBlocks);
    EXPECT_EQ(second.Statistics().heapIsSound, 1U);
}

TEST(LoadedCopies, KeepExceptionsInside) {
    Copy copy("toolkit-copy-5.dll");
    ASSERT_TRUE(copy.IsComplete());
    const HWND window = copy.open("throws");
    EXPECT_EQ(copy.provoke(window), 0);
    EXPECT_TRUE(IsWindow(window));
    EXPECT_EQ(copy.close(window), 1);
}

} // namespace orva::test
