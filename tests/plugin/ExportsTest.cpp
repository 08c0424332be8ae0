/// A library with the real exports, entered as a host enters it.
#include "plugin/HostInterface.h"
#include "tests/plugin/LoadedLibrary.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>
#include <windows.h>

#include <gtest/gtest.h>

namespace orva::plugin {

namespace {

using Codes = std::vector<std::int32_t>;

Codes* heard = nullptr;

std::uint32_t ORVA_HOST_CALL Hear(WindowHandle /*window*/, std::int32_t code, std::uint32_t /*param*/,
                                  std::uint32_t /*size*/, void* /*data*/) {
    heard->push_back(code);
    return kUnsupported;
}

/// Calls `function` with all its arguments on a stack whose pointer is `shift` bytes off a multiple of 16.
[[gnu::noinline]] std::uint32_t CallShifted(const void* function, const std::uint32_t* arguments,
                                            std::uint32_t count, std::uint32_t shift) {
    std::uint32_t result = 0;
    __asm__ volatile("movl %%esp, %%ebx\n\t"
                     "andl $-16, %%esp\n\t"
                     "subl %[shift], %%esp\n\t"
                     "1: decl %[count]\n\t"
                     "js 2f\n\t"
                     "pushl (%[arguments], %[count], 4)\n\t"
                     "jmp 1b\n\t"
                     "2: call *%%eax\n\t"
                     "movl %%ebx, %%esp\n\t"
                     : "=a"(result), [count] "+c"(count), [shift] "+d"(shift)
                     : "a"(function), [arguments] "S"(arguments)
                     : "ebx", "memory", "cc");
    return result;
}

class ExportsTest : public testing::Test {
protected:
    ExportsTest() { heard = &codes; }
    ~ExportsTest() override { heard = nullptr; }

    void Close(std::uint32_t handle) { notify(handle, 16384, 0, 0, nullptr); }

    static void ProcessMessages() {
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            DispatchMessageA(&message);
        }
    }

    Codes codes;
    test::LoadedLibrary library{ORVA_ECHO_PLUGIN};
    ZemPluginInit init = library.Find<ZemPluginInit>("zemPluginInit");
    ZemPluginStart start = library.Find<ZemPluginStart>("zemPluginStart");
    ZemPluginNotify notify = library.Find<ZemPluginNotify>("zemPluginNotify");
    ZemPluginDone done = library.Find<ZemPluginDone>("zemPluginDone");
};

TEST_F(ExportsTest, AreFourPlainNames) {
    ASSERT_NE(library.Module(), nullptr);
    EXPECT_EQ(library.ExportedNames(), (std::vector<std::string>{"zemPluginDone", "zemPluginInit",
                                                                 "zemPluginNotify", "zemPluginStart"}));
}

TEST_F(ExportsTest, NeedNothingButTheSystem) {
    const std::set<std::string> system = {"GDI32.dll", "KERNEL32.dll", "USER32.dll", "msvcrt.dll"};
    for (const std::string& name : library.ImportedLibraries()) {
        EXPECT_TRUE(system.contains(name)) << name;
    }
    EXPECT_FALSE(library.ImportedLibraries().empty());
}

TEST_F(ExportsTest, TellTheirNameAndNumber) {
    std::string name(6, '#');
    EXPECT_EQ(init(0, 0, name.data(), 6), 1153U);
    EXPECT_EQ(name, std::string("ORVA\0\0", 6));
}

TEST_F(ExportsTest, RunAnInstanceFromStartToClose) {
    ReceiverRecord record{};
    record.totalSize = 400;
    record.headerSize = 400;
    const std::uint32_t window = start(7, &record, Hear, 0);
    ASSERT_TRUE(IsWindow(reinterpret_cast<HWND>(window)));
    EXPECT_EQ(codes, Codes{16390}) << "the deferred start waits for its message";
    ProcessMessages();
    EXPECT_EQ(codes, (Codes{16390, 16386, 16386, 16386, 16386, 16386, 4352}));
    EXPECT_EQ(start(7, &record, Hear, 0), 0xFFFFFFFFU);
    codes.clear();
    notify(7, 3584, 12, 0, nullptr);
    notify(7, 16385, 12, 0, nullptr);
    EXPECT_EQ(codes, Codes{4352});
    codes.clear();
    Close(7);
    EXPECT_EQ(codes, (Codes{16390, 16384}));
    EXPECT_FALSE(IsWindow(reinterpret_cast<HWND>(window)));
    done();
}

TEST_F(ExportsTest, DispatchWhatWaitsBeforeTheStartIsOver) {
    constexpr UINT kOwn = WM_APP + 7;
    for (int i = 0; i < 3; ++i) {
        PostThreadMessageA(GetCurrentThreadId(), kOwn, 0, 0);
    }
    PostQuitMessage(5);
    ASSERT_NE(start(7, nullptr, Hear, 0), 0xFFFFFFFFU);
    EXPECT_EQ(codes, Codes{}) << "the deferred start is posted behind them";
    MSG message;
    // Whatever is asked for, the end of the host's loop is told too, but behind what was asked for.
    EXPECT_NE(PeekMessageA(&message, nullptr, kOwn, kOwn, PM_REMOVE), FALSE);
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT)) << "the others are gone, this one is the host's";
    EXPECT_EQ(message.wParam, 5U);
    Close(7);
}

TEST_F(ExportsTest, AnnounceNothingWithoutARecord) {
    ASSERT_NE(start(7, nullptr, Hear, 0), 0xFFFFFFFFU);
    EXPECT_EQ(codes, Codes{});
    Close(7);
    EXPECT_EQ(codes, Codes{16384});
}

TEST_F(ExportsTest, SkipTheDeferredStartWhenClosedBeforeIt) {
    ASSERT_NE(start(7, nullptr, Hear, 0), 0xFFFFFFFFU);
    Close(7);
    ProcessMessages();
    EXPECT_EQ(codes, Codes{16384});
}

TEST_F(ExportsTest, LeaveInstancesAliveWhenDoneIsCalled) {
    ASSERT_NE(start(7, nullptr, Hear, 0), 0xFFFFFFFFU);
    done();
    notify(7, 3585, 1, 0, nullptr);
    EXPECT_EQ(codes, Codes{4353});
    Close(7);
}

TEST_F(ExportsTest, AreEnteredFromAnyStack) {
    ReceiverRecord record{};
    record.totalSize = 400;
    record.headerSize = 400;
    for (const std::uint32_t shift : {0U, 4U, 8U, 12U}) {
        SCOPED_TRACE(shift);
        codes.clear();
        char name[8];
        const std::uint32_t initArguments[] = {0, 0, reinterpret_cast<std::uint32_t>(name), sizeof(name)};
        EXPECT_EQ(CallShifted(reinterpret_cast<void*>(init), initArguments, 4, shift), 1153U);
        EXPECT_STREQ(name, "ORVA");
        const std::uint32_t startArguments[] = {7, reinterpret_cast<std::uint32_t>(&record),
                                                reinterpret_cast<std::uint32_t>(&Hear), 0};
        EXPECT_NE(CallShifted(reinterpret_cast<void*>(start), startArguments, 4, shift), 0xFFFFFFFFU);
        const std::uint32_t volumeArguments[] = {7, 3584, 12, 0, 0};
        CallShifted(reinterpret_cast<void*>(notify), volumeArguments, 5, shift);
        const std::uint32_t closeArguments[] = {7, 16384, 0, 0, 0};
        CallShifted(reinterpret_cast<void*>(notify), closeArguments, 5, shift);
        CallShifted(reinterpret_cast<void*>(done), nullptr, 0, shift);
        EXPECT_EQ(codes, (Codes{16390, 4352, 16390, 16384}));
    }
}

TEST_F(ExportsTest, CarryAVersionBlock) {
    char path[MAX_PATH];
    ASSERT_NE(GetModuleFileNameA(library.Module(), path, sizeof(path)), 0U);
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeA(path, &ignored);
    ASSERT_NE(size, 0U);
    std::vector<char> block(size);
    ASSERT_TRUE(GetFileVersionInfoA(path, 0, size, block.data()));
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueA(block.data(), "\\", reinterpret_cast<void**>(&fixed), &length));
    EXPECT_EQ(std::to_string(HIWORD(fixed->dwFileVersionMS)) + '.' +
                  std::to_string(LOWORD(fixed->dwFileVersionMS)) + '.' +
                  std::to_string(HIWORD(fixed->dwFileVersionLS)),
              ORVA_VERSION);
    EXPECT_EQ(fixed->dwFileType, static_cast<DWORD>(VFT_DLL));
    char* text = nullptr;
    ASSERT_TRUE(VerQueryValueA(block.data(), "\\StringFileInfo\\040904b0\\FileVersion",
                               reinterpret_cast<void**>(&text), &length));
    EXPECT_STREQ(text, ORVA_VERSION);
}

} // namespace

} // namespace orva::plugin
