#include "plugin/PluginPlatform.h"

#include "toolkit/TmyMsgBox.h"

namespace orva::plugin {

namespace {

void ShowErrorBox(HWND owner, const char* text, const char* title) {
    MessageBoxA(owner, text, title, MB_OK | MB_ICONERROR);
}

int ShowQuestionBox(toolkit::TmyMsgBox& box, const char* text, const char* title) {
    return box.ShowMessage(text, title);
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
