#include "tests/toolkit/OpenHandles.h"

#include <string>
#include <vector>
#include <windows.h>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using WorkFunction = unsigned (*)(unsigned);
using VerifyFunction = int (*)();

/// The library beside this program, by full path, so that copies can stand there too.
std::string Beside(const char* name) {
    char path[MAX_PATH];
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    const std::string program(path);
    return program.substr(0, program.rfind('\\') + 1) + name;
}

template <class Function>
Function Get(HMODULE library, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

void LoadWorkUnload(const std::string& path) {
    HMODULE library = LoadLibraryA(path.c_str());
    ASSERT_NE(library, nullptr) << GetLastError();
    EXPECT_EQ(Get<WorkFunction>(library, "ProbeWork")(1000), 1088U); // 1001 bytes, the header, whole units
    EXPECT_EQ(Get<VerifyFunction>(library, "ProbeVerify")(), 1);
    ASSERT_TRUE(FreeLibrary(library));
}

/// Slots for data of the threads' own that the process can still have.
std::size_t CountFreeThreadSlots() {
    std::vector<DWORD> slots;
    for (DWORD slot = TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = TlsAlloc()) {
        slots.push_back(slot);
    }
    for (const DWORD slot : slots) {
        TlsFree(slot);
    }
    return slots.size();
}

TEST(HeapUnload, TheTestSeesHandles) {
    const int before = test::CountOpenHandles();
    HANDLE mutex = CreateMutexA(nullptr, FALSE, nullptr);
    EXPECT_EQ(test::CountOpenHandles(), before + 1);
    CloseHandle(mutex);
    EXPECT_EQ(test::CountOpenHandles(), before);
}

TEST(HeapUnload, NothingIsLeftBehind) {
    const std::string path = Beside("heap_probe.dll");
    LoadWorkUnload(path); // what the system itself does only once
    const int handles = test::CountOpenHandles();
    const DWORD heaps = GetProcessHeaps(0, nullptr);
    const std::size_t threadSlots = CountFreeThreadSlots();
    for (int i = 0; i < 200; ++i) {
        LoadWorkUnload(path);
    }
    EXPECT_EQ(CountFreeThreadSlots(), threadSlots);
    EXPECT_EQ(test::CountOpenHandles(), handles);
    EXPECT_EQ(GetProcessHeaps(0, nullptr), heaps);
}

TEST(HeapUnload, TwoCopiesHaveAHeapEach) {
    const std::string path = Beside("heap_probe.dll");
    const std::string copy = Beside("heap_probe_copy.dll");
    ASSERT_TRUE(CopyFileA(path.c_str(), copy.c_str(), FALSE));
    HMODULE first = LoadLibraryA(path.c_str());
    HMODULE second = LoadLibraryA(copy.c_str());
    ASSERT_NE(first, second);
    const unsigned firstUsed = Get<WorkFunction>(first, "ProbeWork")(10000);
    const unsigned secondUsed = Get<WorkFunction>(second, "ProbeWork")(100);
    EXPECT_EQ(firstUsed, 10112U);
    EXPECT_EQ(secondUsed, 192U);
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_EQ(Get<VerifyFunction>(second, "ProbeVerify")(), 1);
    EXPECT_TRUE(FreeLibrary(second));
    DeleteFileA(copy.c_str());
}

} // namespace
} // namespace orva::toolkit
