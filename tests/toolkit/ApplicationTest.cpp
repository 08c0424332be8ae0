#include "tests/toolkit/DebugOutput.h"
#include "tests/toolkit/WindowSupport.h"
#include "toolkit/TmyHoveringMonitor.h"
#include "toolkit/TypeRegistry.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

TEST(Application, ModuleIsTheOneThatHoldsItsCode) {
    HMODULE module = nullptr;
    ASSERT_NE(GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                     GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                 reinterpret_cast<const char*>(&Application), &module),
              0);
    EXPECT_EQ(Application().ModuleHandle(), module);
}

TEST(Application, WindowClassHasNoStyleArrowAndBlackBrush) {
    WNDCLASSA found{};
    ASSERT_NE(GetClassInfoA(Application().ModuleHandle(), "TmyComponent", &found), 0);
    EXPECT_STREQ(Application().WindowClass(), "TmyComponent");
    EXPECT_EQ(found.style, 0u);
    EXPECT_EQ(found.hCursor, LoadCursorA(nullptr, IDC_ARROW));
    EXPECT_EQ(found.hbrBackground, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
    EXPECT_EQ(found.cbClsExtra, 0);
    EXPECT_EQ(found.cbWndExtra, 0);
    EXPECT_EQ(found.lpszMenuName, nullptr);
    EXPECT_EQ(found.lpfnWndProc, &TmyComponent::InitialWndProc);
}

TEST(Application, ArgumentsAreThoseOfTheProcess) {
    ASSERT_GE(Application().GetArgumentCount(), 1);
    std::string own = Application().GetArgument(0);
    std::transform(own.begin(), own.end(), own.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    EXPECT_NE(own.find(".exe"), std::string::npos) << own;
    EXPECT_EQ(Application().GetArgument(Application().GetArgumentCount()), "");
}

TEST(Application, OwnRecordIsMadeBeforeThereIsARegistry) {
    EXPECT_EQ(FindType(&Application()), nullptr);
    const TmyComponent component(nullptr, "", kPopupHidden, 0, kPlace);
    const TmyControl control(nullptr);
    ASSERT_NE(FindType(&component), nullptr);
    EXPECT_STREQ(FindType(&component)->name, "Component");
    ASSERT_NE(FindType(&control), nullptr);
    EXPECT_STREQ(FindType(&control)->name, "Control");
    const TmyHoveringMonitor monitor;
    ASSERT_NE(FindType(&monitor), nullptr);
    EXPECT_STREQ(FindType(&monitor)->name, "HoverMonitor");
    EXPECT_EQ(FindType(&monitor)->typeId, 33u);
}

TEST(ProcessPendingMessages, EmptiesTheQueue) {
    EventLog log({"OnUserMessage"});
    RecordingComponent window(log, "window", nullptr, "", kPopupHidden, DWORD{0}, kPlace);
    for (UINT id = 1; id <= 3; ++id) {
        window.PostUserMessage(id, id * 10, -static_cast<LPARAM>(id));
    }
    EXPECT_TRUE(log.Take().empty());
    TmyApplication::ProcessPendingMessages();
    EXPECT_EQ(log.Take(), (EventLog::Entries{"window.OnUserMessage(1,10,-1)", "window.OnUserMessage(2,20,-2)",
                                             "window.OnUserMessage(3,30,-3)"}));
}

TEST(ProcessPendingMessages, TranslatesKeys) {
    EventLog log({"Char"});
    RecordingComponent window(log, "window", nullptr, "", kPopup, DWORD{0}, kPlace);
    window.SetFocus();
    Pump();
    log.Take();
    PostMessageA(window.Window(), WM_KEYDOWN, 'A', 0x1E0001);
    TmyApplication::ProcessPendingMessages();
    EXPECT_EQ(log.Take().size(), 1u);
}

TEST(ProcessPendingMessages, PostsAQuitMessageAgain) {
    EventLog log({"OnUserMessage"});
    RecordingComponent window(log, "window", nullptr, "", kPopupHidden, DWORD{0}, kPlace);
    Pump();
    PostQuitMessage(42);
    window.PostUserMessage(5, 0, 0);
    TmyApplication::ProcessPendingMessages();
    EXPECT_EQ(log.Take(), (EventLog::Entries{"window.OnUserMessage(5,0,0)"}));
    MSG message{};
    ASSERT_NE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE), 0);
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
    EXPECT_EQ(message.wParam, 42u);
}

// --- the end of the process, seen from another one ---------------------------------------------------------

/// What a second run of this program printed to the debug output, from its start to its end.
std::vector<std::string> OutputOfRun(const std::string& arguments) {
    char folder[MAX_PATH];
    char file[MAX_PATH];
    GetTempPathA(sizeof folder, folder);
    GetTempFileNameA(folder, "tmy", 0, file);
    char program[MAX_PATH];
    GetModuleFileNameA(nullptr, program, sizeof program);
    std::string line = '"' + std::string(program) + "\" --debug-output=" + file + ' ' + arguments;
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                       &process) == 0) {
        return {"not started"};
    }
    WaitForSingleObject(process.hProcess, 60000);
    DWORD exitCode = 1;
    GetExitCodeProcess(process.hProcess, &exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    std::vector<std::string> lines;
    if (exitCode != 0) {
        lines.push_back("exit code " + std::to_string(exitCode));
    }
    {
        std::ifstream text(file);
        for (std::string one; std::getline(text, one);) {
            lines.push_back(one.substr(0, one.find('\r')));
        }
    }
    DeleteFileA(file);
    return lines;
}

bool Has(const std::vector<std::string>& lines, const std::string& part) {
    return std::any_of(lines.begin(), lines.end(),
                       [&](const std::string& line) { return line.find(part) != std::string::npos; });
}

std::string Joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + '\n';
    }
    return text;
}

TEST(ApplicationEnd, IsSilentWithoutTheTraceOption) {
    EXPECT_EQ(Joined(OutputOfRun("--scenario=windows")), "");
    EXPECT_EQ(Joined(OutputOfRun("--scenario=windows /log")), "");
    EXPECT_EQ(Joined(OutputOfRun("--scenario=windows x/l")), "");
}

TEST(ApplicationEnd, TraceOptionTellsOfTypesAndThunks) {
    for (const char* option : {"/l", "/L", "\"/l\""}) {
        const std::vector<std::string> lines = OutputOfRun(std::string("--scenario=windows ") + option);
        // The classes of the run: object, control, component, its recording subclass is nobody's own,
        // profiler, set.
        EXPECT_TRUE(Has(lines, "Type IDs count: ")) << Joined(lines);
        EXPECT_TRUE(Has(lines, "[empty ")) << Joined(lines);
        EXPECT_TRUE(Has(lines, "Max. thunk index: 2 / 5041")) << Joined(lines);
        EXPECT_FALSE(Has(lines, "Undeleted")) << Joined(lines);
        EXPECT_FALSE(Has(lines, "unregister")) << Joined(lines);
    }
}

TEST(ApplicationEnd, TellsOfControlsThatNobodyDeleted) {
    const std::vector<std::string> lines = OutputOfRun("--scenario=leak /l");
    int told = 0;
    for (const std::string& line : lines) {
        told += line.find("Undeleted thunk control: ") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(told, 2) << Joined(lines);
    EXPECT_TRUE(Has(lines, "Class failed to unregister")) << Joined(lines); // its windows still stand
}

TEST(ApplicationEnd, TraceLevelTwoPrintsTheMemoryMap) {
    const std::vector<std::string> lines = OutputOfRun("--scenario=memory-map /l");
    EXPECT_TRUE(Has(lines, "EXEC_RW")) << lines.size(); // the thunks
    EXPECT_TRUE(Has(lines, "PRIVATE"));
    EXPECT_TRUE(Has(lines, "IMAGE"));
}

} // namespace
} // namespace orva::toolkit
