#include "plugin/PluginPlatform.h"

namespace orva::plugin {

namespace {

void ShowErrorBox(HWND owner, const char* text, const char* title) {
    MessageBoxA(owner, text, title, MB_OK | MB_ICONERROR);
}

int ShowQuestionBox(HWND owner, const char* text, const char* title) {
    return MessageBoxA(owner, text, title, MB_YESNO | MB_ICONQUESTION) == IDYES ? 0 : 1;
}

} // namespace

const PluginPlatform& RealPlatform() {
    static const PluginPlatform platform{&audio::SystemWaveOut(),
                                         &audio::SystemWaveIn(),
                                         &audio::SystemDeviceSetup(),
                                         &audio::SystemFiles(),
                                         LibraryPlatform{},
                                         ShowErrorBox,
                                         ShowQuestionBox,
                                         nullptr};
    return platform;
}

} // namespace orva::plugin
