/// The instance behind a top window.
#pragma once

#include <cstdint>

namespace orva::ui {

/// What the window asks of its owner directly; all else are events. The owner may delete the window from each
/// of these operations.
class IPluginWindowOwner {
public:
    /// The host's message loop has come to the rest of the start.
    virtual void DeferredStart() = 0;

    // What the play and record panel asks for.

    /// A file was chosen to be played.
    virtual void SelectFile(const char* path) = 0;
    virtual void StartPlayback() = 0; ///< of the file chosen last
    virtual void StartRecording() = 0;
    virtual void StopFile() = 0;
    virtual void SetPause(bool isOn) = 0;
    virtual void SeekFile(std::uint32_t position) = 0; ///< [bytes of samples]
    virtual void StepFile(std::int32_t direction) = 0; ///< -1 back, 1 forward, by a second
    virtual void SetPauseUnderSquelch(std::int32_t isOn) = 0;
    virtual void SetPauseNoOrva(std::int32_t isOn) = 0;

protected:
    ~IPluginWindowOwner() = default;
};

} // namespace orva::ui
