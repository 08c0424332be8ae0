/// What an instance of the plug-in reaches of the machine.
#pragma once

#include "audio/DeviceSetupPlatform.h"
#include "audio/WaveInPlatform.h"
#include "audio/WaveOutPlatform.h"
#include "plugin/ReceiverLibrary.h"

#include <windows.h>

namespace orva::plugin {

/// Tables of the platform's calls, each filled with the real ones unless a test puts others there.
struct PluginPlatform {
    const audio::WaveOutPlatform* waveOut;
    const audio::WaveInPlatform* waveIn;
    const audio::DeviceSetupPlatform* deviceSetup;
    LibraryPlatform library;
    /// Shows a message to the user, modal to `owner`.
    void (*showError)(HWND owner, const char* text, const char* title);
};

/// The machine itself.
const PluginPlatform& RealPlatform();

} // namespace orva::plugin
