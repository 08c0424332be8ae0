#include "plugin/PluginPlatform.h"

#include "toolkit/TmyMsgBox.h"

namespace orva::plugin {

namespace {

int ShowBox(toolkit::TmyMsgBox& box, const char* text, const char* title) {
    return box.ShowMessage(text, title);
}

} // namespace

const PluginPlatform& RealPlatform() {
    static const PluginPlatform platform{&audio::SystemWaveOut(),
                                         &audio::SystemWaveIn(),
                                         &audio::SystemDeviceSetup(),
                                         &audio::SystemFiles(),
                                         LibraryPlatform{},
                                         ShowBox,
                                         nullptr};
    return platform;
}

} // namespace orva::plugin
