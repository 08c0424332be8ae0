#include "plugin/PluginPlatform.h"

namespace orva::plugin {

namespace {

void ShowErrorBox(HWND owner, const char* text, const char* title) {
    MessageBoxA(owner, text, title, MB_OK | MB_ICONERROR);
}

} // namespace

const PluginPlatform& RealPlatform() {
    static const PluginPlatform platform{&audio::SystemWaveOut(), &audio::SystemWaveIn(),
                                         &audio::SystemDeviceSetup(), LibraryPlatform{}, ShowErrorBox};
    return platform;
}

} // namespace orva::plugin
