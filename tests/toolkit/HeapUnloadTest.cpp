#include <cstdint>
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

/// Handles of the process, and heaps.
struct Resources {
    DWORD handles = 0;
    DWORD heaps = 0;
};

Resources Count() {
    Resources resources;
    GetProcessHandleCount(GetCurrentProcess(), &resources.handles);
    resources.heaps = GetProcessHeaps(0, nullptr);
    return resources;
}

void LoadWorkUnload(const std::string& path) {
    HMODULE library = LoadLibraryA(path.c_str());
    ASSERT_NE(library, nullptr) << GetLastError();
    EXPECT_GT(Get<WorkFunction>(library, "ProbeWork")(1000), 1000U);
    EXPECT_EQ(Get<VerifyFunction>(library, "ProbeVerify")(), 1);
    ASSERT_TRUE(FreeLibrary(library));
}

TEST(HeapUnload, NothingIsLeftBehind) {
    const std::string path = Beside("heap_probe.dll");
    LoadWorkUnload(path); // what the system itself does only once
    const Resources before = Count();
    for (int i = 0; i < 200; ++i) {
        LoadWorkUnload(path);
    }
    const Resources after = Count();
    EXPECT_EQ(after.handles, before.handles);
    EXPECT_EQ(after.heaps, before.heaps);
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
    EXPECT_EQ(firstUsed - secondUsed, 10112U - 192U) << "blocks of the kept bytes";
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_EQ(Get<VerifyFunction>(second, "ProbeVerify")(), 1);
    EXPECT_TRUE(FreeLibrary(second));
    DeleteFileA(copy.c_str());
}

} // namespace
} // namespace orva::toolkit
