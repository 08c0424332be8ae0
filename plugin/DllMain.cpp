/// The library's entry routine.
#include "dsp/ProcessorDispatch.h"
#include "plugin/LibraryModule.h"

namespace orva::plugin {

namespace {

HINSTANCE libraryModule = nullptr;

} // namespace

HINSTANCE LibraryModule() {
    return libraryModule;
}

} // namespace orva::plugin

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
    orva::plugin::libraryModule = module;
    if (reason == DLL_PROCESS_ATTACH) {
        orva::dsp::InitDispatch();
    }
    return TRUE;
}
