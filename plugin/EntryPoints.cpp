#include "plugin/EntryPoints.h"

#include "toolkit/Trace.h"

#include <cstring>
#include <exception>
#include <utility>

namespace orva::plugin {

namespace {

/// Takes one step, and tells the debug output if it failed. True if it did not.
template <class Step>
bool Guarded(const char* name, Step step) {
    try {
        step();
        return true;
    } catch (const std::exception& error) {
        toolkit::PrintDebug("ORVA: %s failed: %s\n", name, error.what());
    } catch (...) {
        toolkit::PrintDebug("ORVA: %s failed.\n", name);
    }
    return false;
}

/// The window as the host gets it: a 32-bit number.
std::uint32_t WindowNumber(WindowHandle window) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window));
}

} // namespace

EntryPoints::StartUnderWay::StartUnderWay(EntryPoints& entryPoints, std::uint32_t handle)
    : owner(entryPoints), hostHandle(handle), outer(entryPoints.starts) {
    owner.starts = this;
}

EntryPoints::StartUnderWay::~StartUnderWay() {
    owner.starts = outer;
}

std::uint32_t EntryPoints::Init(char* nameBuffer, std::int32_t nameBufferSize) {
    if (nameBuffer != nullptr) {
        for (std::int32_t i = 0; i < nameBufferSize; ++i) {
            nameBuffer[i] = static_cast<std::uint32_t>(i) < kPluginNameLength ? kPluginName[i] : '\0';
        }
    }
    return kInterfaceNumber;
}

bool EntryPoints::IsInUse(std::uint32_t hostHandle) const {
    // A construction may let messages run before its entry stands in the list.
    for (const StartUnderWay* start = starts; start != nullptr; start = start->outer) {
        if (start->hostHandle == hostHandle && !start->wasClosed) {
            return true;
        }
    }
    return instances.FindByHandle(hostHandle) != nullptr;
}

std::uint32_t EntryPoints::Start(std::uint32_t hostHandle, ReceiverRecord* record, ZemHostCallback callback) {
    if (IsInUse(hostHandle)) {
        return kStartRefused;
    }
    StartUnderWay start(*this, hostHandle);
    IPluginInstance* instance = nullptr;
    if (!Guarded("Start", [&] { instance = AddInstance(hostHandle, record, callback); }) ||
        instance == nullptr) {
        return kStartRefused;
    }
    WindowHandle window = instances.FindByHandle(hostHandle)->window;

    Guarded("AnnounceCapabilities", [&] { instance->AnnounceCapabilities(); });
    if (start.wasClosed) {
        return kStartRefused;
    }
    Guarded("Message", calls.processPendingMessages);
    if (start.wasClosed) {
        return kStartRefused;
    }
    if (window != nullptr) {
        calls.postDeferredStart(window);
    }
    return WindowNumber(window);
}

/// Makes an instance and its entry. Null or an exception if there is none.
IPluginInstance* EntryPoints::AddInstance(std::uint32_t hostHandle, ReceiverRecord* record,
                                          ZemHostCallback callback) {
    PluginHandleEntryOwner entry = PluginHandleList::MakeEntry();
    IPluginInstance* instance = calls.makeInstance(hostHandle, record);
    if (instance == nullptr) {
        return nullptr;
    }
    try {
        entry->plugin = instance;
        entry->window = instance->GetWindowHandle();
        entry->hostCallback = callback;
        instance->SetHostCallback(callback);
        entry->hostHandle = hostHandle;
        instances.Append(std::move(entry));
    } catch (...) {
        instance->Destroy();
        throw;
    }
    calls.holdLibrary();
    return instance;
}

void EntryPoints::Notify(std::uint32_t hostHandle, std::int32_t code, std::uint32_t param, std::uint32_t size,
                         void* data) {
    PluginHandleEntry* entry = instances.FindByHandle(hostHandle);
    if (entry == nullptr || entry->plugin == nullptr) {
        return;
    }
    if (code == static_cast<std::int32_t>(HostCode::Close)) {
        Close(*entry);
    } else {
        Guarded("Notify", [&] { entry->plugin->Notify(code, param, size, data); });
    }
}

void EntryPoints::Close(PluginHandleEntry& entry) {
    IPluginInstance* instance = entry.plugin;
    if (!instance->BeginClosing()) {
        return;
    }
    const std::uint32_t hostHandle = entry.hostHandle;
    WindowHandle window = entry.window;
    Guarded("WithdrawCapabilities", [&] { instance->WithdrawCapabilities(); });
    // Whatever the host says while the instance goes no longer reaches it; the handle stays in use until the
    // host has had the last message.
    entry.plugin = nullptr;
    Guarded("Destroy", [&] { instance->Destroy(); });
    Guarded("Closing", [&] { SendClosing(window); });
    instances.RemoveAll(hostHandle);
    calls.releaseLibrary();
    for (StartUnderWay* start = starts; start != nullptr; start = start->outer) {
        start->wasClosed = start->wasClosed || start->hostHandle == hostHandle;
    }
}

std::uint32_t EntryPoints::SendClosing(WindowHandle window) const {
    const PluginHandleEntry* entry = instances.FindByWindow(window);
    if (entry == nullptr || entry->hostCallback == nullptr) {
        return kUnsupported;
    }
    char name[sizeof(kPluginName)];
    std::memcpy(name, kPluginName, sizeof(name));
    return entry->hostCallback(window, static_cast<std::int32_t>(PluginCode::Closing), 0, kPluginNameLength,
                               name);
}

} // namespace orva::plugin
