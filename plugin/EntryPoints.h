/// What happens behind the four exports of the library.
#pragma once

#include "plugin/HostInterface.h"
#include "plugin/IPluginInstance.h"
#include "plugin/PluginHandleList.h"

#include <cstdint>

namespace orva::plugin {

/// What the entry points need of the rest of the system and of the platform.
struct EntryCalls {
    /// Makes an instance; may throw.
    IPluginInstance* (*makeInstance)(std::uint32_t hostHandle, ReceiverRecord* record);
    /// Dispatches the thread's pending window messages until none is left.
    void (*processPendingMessages)();
    /// Posts the message that brings on the deferred start.
    void (*postDeferredStart)(WindowHandle window);
    /// Keep the library in the process, once for each running instance, and let it go again.
    void (*holdLibrary)() = [] {};
    void (*releaseLibrary)() = [] {};
};

/// The message that `postDeferredStart` posts, `WM_USER` and up.
constexpr std::uint32_t kDeferredStartMessage = 1024;

/// Starts, notifies and closes instances. One object serves the process. [window thread]
///
/// The host is not in good hands with an exception: what goes wrong inside is told in the debug output, and
/// the next step is taken. The host may call any of these operations again from inside its callback.
class EntryPoints {
public:
    explicit EntryPoints(const EntryCalls& entryCalls) : calls(entryCalls) {}
    EntryPoints(const EntryPoints&) = delete;
    EntryPoints& operator=(const EntryPoints&) = delete;

    /// Copies the plug-in's name, at most `nameBufferSize` characters, and fills the rest with zeros: a
    /// buffer of four or less gets no terminator. Returns the interface's number.
    static std::uint32_t Init(char* nameBuffer, std::int32_t nameBufferSize);

    /// Starts an instance. Returns its window, or `kStartRefused` if the handle is in use, if no instance
    /// could be made, or if the host closed it before its start was over.
    std::uint32_t Start(std::uint32_t hostHandle, ReceiverRecord* record, ZemHostCallback callback);

    /// A code from the host. Nothing for an unknown handle.
    void Notify(std::uint32_t hostHandle, std::int32_t code, std::uint32_t param, std::uint32_t size,
                void* data);

    /// Running instances, those in the middle of a close included.
    [[nodiscard]] const PluginHandleList& Instances() const { return instances; }

private:
    /// A start that is under way, innermost first.
    struct StartUnderWay {
        StartUnderWay(EntryPoints& entryPoints, std::uint32_t handle);
        ~StartUnderWay();
        StartUnderWay(const StartUnderWay&) = delete;
        StartUnderWay& operator=(const StartUnderWay&) = delete;

        EntryPoints& owner;
        std::uint32_t hostHandle;
        StartUnderWay* outer;
        bool wasClosed = false; ///< the host has closed the instance meanwhile
    };

    [[nodiscard]] bool IsInUse(std::uint32_t hostHandle) const;
    IPluginInstance* AddInstance(std::uint32_t hostHandle, ReceiverRecord* record, ZemHostCallback callback);
    void Close(PluginHandleEntry& entry);
    std::uint32_t SendClosing(WindowHandle window) const;

    EntryCalls calls;
    PluginHandleList instances;
    StartUnderWay* starts = nullptr;
};

} // namespace orva::plugin
