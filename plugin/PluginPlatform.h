/// What an instance of the plug-in reaches of the machine.
#pragma once

#include "audio/DeviceSetupPlatform.h"
#include "audio/FilePlatform.h"
#include "audio/WaveInPlatform.h"
#include "audio/WaveOutPlatform.h"
#include "plugin/IInstanceSettings.h"
#include "plugin/ReceiverLibrary.h"

#include <windows.h>

namespace orva::toolkit {
class TmyMsgBox;
}

namespace orva::plugin {

/// Tables of the platform's calls, each filled with the real ones unless a test puts others there.
struct PluginPlatform {
    const audio::WaveOutPlatform* waveOut;
    const audio::WaveInPlatform* waveIn;
    const audio::DeviceSetupPlatform* deviceSetup;
    const audio::FilePlatform* files; ///< of recordings
    LibraryPlatform library;
    /// Shows a box until the user answers. Returns the index of the button, or a number below 0.
    int (*ask)(toolkit::TmyMsgBox& box, const char* text, const char* title);
    /// Null: every instance begins with what its constructor gives it.
    IInstanceSettings* settings = nullptr;
};

/// The machine itself.
const PluginPlatform& RealPlatform();

} // namespace orva::plugin
