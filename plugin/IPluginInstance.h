/// What the library's entry points need of an instance of the plug-in.
#pragma once

#include "plugin/HostInterface.h"

#include <cstdint>

namespace orva::plugin {

/// One running instance. [window thread]
///
/// The host may call any entry point from inside its callback, so that each of these operations may be
/// entered again from within, and `Destroy` too.
class IPluginInstance {
public:
    /// Top window, which exists from construction on; null if there is none.
    [[nodiscard]] virtual WindowHandle GetWindowHandle() const = 0;

    /// From here on the instance may talk to the host.
    virtual void SetHostCallback(ZemHostCallback callback) = 0;

    /// Tells the host what the instance can do, and keeps the record that it sent. Nothing without a record.
    virtual void AnnounceCapabilities() = 0;

    /// A code from the host, other than `HostCode::Close`. An unknown one does nothing.
    virtual void Notify(std::int32_t code, std::uint32_t param, std::uint32_t size, void* data) = 0;

    /// The first step of a close: from here on a deferred start that is still under way does nothing. False
    /// if a close has begun before.
    virtual bool BeginClosing() = 0;

    /// Takes back what `AnnounceCapabilities` told the host.
    virtual void WithdrawCapabilities() = 0;

    /// Ends the instance, which is never used again by its caller. The instance does not call the host any
    /// more. If one of its own functions is running further out, the memory goes when the outermost of them
    /// is left; otherwise at once.
    virtual void Destroy() = 0;

protected:
    ~IPluginInstance() = default;
};

/// Makes an instance of the product. Defined by what is linked with the entry points. `record` may be null
/// and is the host's: it is copied. May throw.
IPluginInstance* MakePluginInstance(std::uint32_t hostHandle, ReceiverRecord* record);

} // namespace orva::plugin
