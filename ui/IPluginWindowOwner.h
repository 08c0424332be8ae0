/// The instance behind a top window.
#pragma once

namespace orva::ui {

/// What the window asks of its owner directly; all else are events.
class IPluginWindowOwner {
public:
    /// The host's message loop has come to the rest of the start. The owner may delete the window from here.
    virtual void DeferredStart() = 0;

protected:
    ~IPluginWindowOwner() = default;
};

} // namespace orva::ui
