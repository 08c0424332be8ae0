#include "toolkit/TmyApplication.h"

#include "toolkit/CommandLine.h"
#include "toolkit/MemoryMap.h"
#include "toolkit/TmyComponent.h"
#include "toolkit/TmyHoveringMonitor.h"
#include "toolkit/TmyProfiler.h"
#include "toolkit/Trace.h"
#include "toolkit/TypeRegistry.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>

namespace orva::toolkit {

namespace {

constexpr char kWindowClass[] = "TmyComponent";
constexpr char kTraceOption[] = "/l";
constexpr std::uint32_t kMemoryMapTraceLevel = 2;

constexpr SIZE_T kThunkMemorySize = 0x10000;
constexpr std::int32_t kThunkSize = 13;
static_assert(TmyApplication::kThunkCount == kThunkMemorySize / kThunkSize);

// mov dword [esp+4], object: the first argument, the window handle, becomes the object.
constexpr std::array<std::uint8_t, 4> kStoreFirstArgument{0xC7, 0x44, 0x24, 0x04};
constexpr std::int32_t kObjectOffset = 4;
constexpr std::uint8_t kJump = 0xE9; // jmp, relative to the end of the instruction
constexpr std::int32_t kJumpOffset = 8;
constexpr std::int32_t kDistanceOffset = 9;
static_assert(sizeof(void*) == 4, "thunks are code for 32-bit x86");

void AimThunk(std::byte* thunk, ThunkTarget target) {
    const auto distance =
        reinterpret_cast<std::uintptr_t>(target) - reinterpret_cast<std::uintptr_t>(thunk + kThunkSize);
    std::memcpy(thunk + kDistanceOffset, &distance, sizeof distance);
    FlushInstructionCache(GetCurrentProcess(), thunk, kThunkSize);
}

LRESULT CALLBACK OrphanWndProc(TmyComponent* object, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/) {
    PrintDebug("Message %x to non-existing control %x\r\n", message,
               static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(object)));
    return 0;
}

TmyApplication application;

} // namespace

TmyApplication& Application() {
    return application;
}

TmyApplication::TmyApplication() : thunkUsed(0, kThunkCount - 1), threadSlot(TlsAlloc()) {
    // Comes before there is a registry: the application itself stays unrecorded.
    RegisterType(this, TypeId::Application, "Application");
    CreateTypeRegistry();
    FindModule();
    if (TraceIsAskedFor()) {
        SetTraceLevel(1);
        traceEnabled = TraceLevel();
    }
    defaultCursor = LoadCursorA(nullptr, IDC_ARROW);
    AllocateThunks();
    RegisterWindowClass();
    if (traceEnabled != 0) {
        profiler = std::make_unique<TmyProfiler>();
    }
}

TmyApplication::~TmyApplication() {
    hoverMonitor.reset();
    profiler.reset();
    if (TraceLevel() >= kMemoryMapTraceLevel) {
        TraceMemoryMap(this);
    }
    if (UnregisterClassA(kWindowClass, moduleHandle) == 0) {
        PrintDebug("Class failed to unregister\r\n");
    }
    ReportUndeletedControls();
    VirtualFree(thunkMemory, 0, MEM_RELEASE);
    TlsFree(threadSlot);
    const TypeRegistryStatistics types = DeleteTypeRegistry();
    if (traceEnabled != 0) {
        PrintDebug("Type IDs count: %d [empty %d, depth=%d]\r\n", static_cast<int>(types.count),
                   static_cast<int>(types.empty), static_cast<int>(types.depth));
        PrintDebug("Max. thunk index: %d / %d\r\n", static_cast<int>(maxThunkIndex),
                   static_cast<int>(kThunkCount));
    }
}

void TmyApplication::FindModule() {
    MEMORY_BASIC_INFORMATION pages{};
    VirtualQuery(reinterpret_cast<const void*>(&OrphanWndProc), &pages, sizeof pages);
    moduleHandle = static_cast<HINSTANCE>(pages.AllocationBase);
}

bool TmyApplication::TraceIsAskedFor() const {
    const int count = GetArgumentCount();
    for (int index = 1; index < count; ++index) {
        std::string argument = GetArgument(index);
        std::transform(argument.begin(), argument.end(), argument.begin(),
                       [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
        if (argument == kTraceOption) {
            return true;
        }
    }
    return false;
}

void TmyApplication::AllocateThunks() {
    thunkMemory = static_cast<std::byte*>(
        VirtualAlloc(nullptr, kThunkMemorySize, MEM_COMMIT | MEM_RESERVE, PAGE_EXECUTE_READWRITE));
}

void TmyApplication::RegisterWindowClass() {
    WNDCLASSA windowClass{};
    windowClass.lpfnWndProc = TmyComponent::InitialWndProc;
    windowClass.hInstance = moduleHandle;
    windowClass.hCursor = defaultCursor;
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    windowClass.lpszClassName = kWindowClass;
    classAtom = RegisterClassA(&windowClass);
    if (classAtom == 0) {
        PrintDebug("Class failed to register, err=%lu\r\n", GetLastError());
    }
}

const char* TmyApplication::WindowClass() const {
    return kWindowClass;
}

std::byte* TmyApplication::ThunkAt(std::int32_t index) const {
    return thunkMemory + static_cast<std::ptrdiff_t>(index) * kThunkSize;
}

/// Index of the thunk that begins at `address`; -1 if none does.
std::int32_t TmyApplication::IndexOfThunk(const void* address) const {
    const auto offset =
        reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(thunkMemory);
    if (thunkMemory == nullptr || offset >= static_cast<std::uintptr_t>(kThunkCount) * kThunkSize ||
        offset % kThunkSize != 0) {
        return -1;
    }
    return static_cast<std::int32_t>(offset / kThunkSize);
}

void* TmyApplication::CreateThunk(ThunkTarget target, TmyComponent* object) {
    std::int32_t index = 0;
    while (index < kThunkCount && thunkUsed.Contains(index)) {
        ++index;
    }
    if (index == kThunkCount || thunkMemory == nullptr) {
        PrintDebug("No free WndProc thunk\r\n");
        return nullptr;
    }
    maxThunkIndex = std::max(maxThunkIndex, index);
    thunkUsed.Add(index);

    std::byte* thunk = ThunkAt(index);
    std::memcpy(thunk, kStoreFirstArgument.data(), kStoreFirstArgument.size());
    std::memcpy(thunk + kObjectOffset, &object, sizeof object);
    thunk[kJumpOffset] = std::byte{kJump};
    AimThunk(thunk, target);
    return thunk;
}

void TmyApplication::FreeThunk(void* thunk) {
    const std::int32_t index = IndexOfThunk(thunk);
    if (index < 0) {
        return;
    }
    if (traceEnabled != 0 && !thunkUsed.Contains(index)) {
        Trace(this, 0, "Trying to free nonexisting WNDPROC thunk");
        return;
    }
    AimThunk(ThunkAt(index), OrphanWndProc);
    thunkUsed.Remove(index);
}

TmyComponent* TmyApplication::ObjectFromThunk(const void* address) const {
    const std::int32_t index = IndexOfThunk(address);
    // A freed thunk still holds the address of an object that is gone.
    if (index < 0 || !thunkUsed.Contains(index)) {
        return nullptr;
    }
    TmyComponent* object = nullptr;
    std::memcpy(&object, ThunkAt(index) + kObjectOffset, sizeof object);
    return object;
}

TmyComponent* TmyApplication::ObjectFromWindow(HWND window) {
    const LONG procedure = GetWindowLongA(window, GWL_WNDPROC);
    TmyObject* object = Application().ObjectFromThunk(reinterpret_cast<const void*>(procedure));
    return dynamic_cast<TmyComponent*>(object);
}

void TmyApplication::ReportUndeletedControls() {
    for (std::int32_t index = thunkUsed.First(); index >= 0; index = thunkUsed.First()) {
        Trace(this, 0, "Undeleted thunk control: %p", static_cast<void*>(ObjectFromThunk(ThunkAt(index))));
        thunkUsed.Remove(index);
    }
}

void TmyApplication::ProcessPendingMessages() {
    MSG pending;
    bool quit = false;
    WPARAM exitCode = 0;
    while (PeekMessageA(&pending, nullptr, 0, 0, PM_REMOVE) != 0) {
        if (pending.message == WM_QUIT) {
            quit = true;
            exitCode = pending.wParam;
            continue;
        }
        TranslateMessage(&pending);
        DispatchMessageA(&pending);
    }
    if (quit) {
        PostQuitMessage(static_cast<int>(exitCode)); // meant for the host's own loop
    }
}

void TmyApplication::StartHover(TmyControl* control) {
    if (!hoverMonitor) {
        hoverMonitor = std::make_unique<TmyHoveringMonitor>();
        hoverMonitor->onDestroy.Bind<&TmyApplication::ForgetHoverMonitor>(this);
    }
    hoverMonitor->Start(control);
}

void TmyApplication::StopHover(const TmyControl* control) {
    if (hoverMonitor) {
        hoverMonitor->Stop(control);
    }
}

void TmyApplication::ForgetHoverMonitor(TmyControl* /*sender*/) {
    // Its window went away by itself, and it deletes itself. (Nothing is left to release if we are deleting
    // it.)
    static_cast<void>(hoverMonitor.release());
}

int TmyApplication::GetArgumentCount() const {
    return CountArguments(GetCommandLineA());
}

std::string TmyApplication::GetArgument(int index) const {
    const char* line = GetCommandLineA();
    if (index == 0 && CountArguments(line) == 0) {
        std::array<char, MAX_PATH> name{};
        GetModuleFileNameA(moduleHandle, name.data(), static_cast<DWORD>(name.size()));
        return name.data();
    }
    return ArgumentOf(line, index);
}

void TmyApplication::SetWindowUnderConstruction(TmyComponent* object) const {
    TlsSetValue(threadSlot, object);
}

TmyComponent* TmyApplication::TakeWindowUnderConstruction() const {
    auto* object = static_cast<TmyComponent*>(TlsGetValue(threadSlot));
    TlsSetValue(threadSlot, nullptr);
    return object;
}

} // namespace orva::toolkit
