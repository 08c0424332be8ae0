/// The four functions that a host finds in the library, bound to the instances of this process.
#include "plugin/EntryPoints.h"
#include "plugin/LibraryModule.h"

#include <type_traits>
#include <windows.h>

namespace orva::plugin {

namespace {

static_assert(kDeferredStartMessage == WM_USER);

void ProcessPendingMessages() {
    MSG message;
    bool quits = false;
    WPARAM exitCode = 0;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        if (message.message == WM_QUIT) {
            quits = true;
            exitCode = message.wParam;
        } else {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
    if (quits) {
        PostQuitMessage(static_cast<int>(exitCode)); // meant for the host's own loop
    }
}

void PostDeferredStart(WindowHandle window) {
    PostMessageA(window, kDeferredStartMessage, 0, 0);
}

/// A host that frees the library with instances in it leaves them alive: their windows, and the receiver's
/// thread, still need the code.
void HoldLibrary() {
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCSTR>(&HoldLibrary),
                       &module);
}

void ReleaseLibrary() {
    FreeLibrary(LibraryModule());
}

/// The instances of this process. It goes with the library, which stays as long as one is running.
EntryPoints& ProcessEntryPoints() {
    static EntryPoints entryPoints(
        {MakePluginInstance, ProcessPendingMessages, PostDeferredStart, HoldLibrary, ReleaseLibrary});
    return entryPoints;
}

} // namespace

extern "C" {

std::uint32_t ORVA_HOST_CALL zemPluginInit(std::uint32_t /*reserved1*/, std::uint32_t /*reserved2*/,
                                           char* nameBuffer, std::int32_t nameBufferSize) {
    return EntryPoints::Init(nameBuffer, nameBufferSize);
}

std::uint32_t ORVA_HOST_CALL zemPluginStart(std::uint32_t hostHandle, ReceiverRecord* record,
                                            ZemHostCallback callback, std::uint32_t /*reserved*/) {
    return ProcessEntryPoints().Start(hostHandle, record, callback);
}

void ORVA_HOST_CALL zemPluginNotify(std::uint32_t hostHandle, std::int32_t code, std::uint32_t param,
                                    std::uint32_t size, void* data) {
    ProcessEntryPoints().Notify(hostHandle, code, param, size, data);
}

void ORVA_HOST_CALL zemPluginDone() {}

} // extern "C"

// What a host calls must be what its author was told.
static_assert(std::is_same_v<decltype(&zemPluginInit), ZemPluginInit>);
static_assert(std::is_same_v<decltype(&zemPluginStart), ZemPluginStart>);
static_assert(std::is_same_v<decltype(&zemPluginNotify), ZemPluginNotify>);
static_assert(std::is_same_v<decltype(&zemPluginDone), ZemPluginDone>);

} // namespace orva::plugin
