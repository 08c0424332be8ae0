#include "tools/orva-host/PluginLibrary.h"

#include <stdexcept>
#include <utility>

namespace orva::tools {

PluginLibrary::PluginLibrary(const std::string& path) {
    // Loaded by its full path, the library is looked for nowhere else.
    char full[MAX_PATH];
    const DWORD length = GetFullPathNameA(path.c_str(), sizeof(full), full, nullptr);
    fullPath = length != 0 && length < sizeof(full) ? full : path;
    module = LoadLibraryA(fullPath.c_str());
    if (module == nullptr) {
        throw std::runtime_error("cannot load " + path + " (error " + std::to_string(GetLastError()) + ")");
    }
    Find(init, "zemPluginInit");
    Find(start, "zemPluginStart");
    Find(notify, "zemPluginNotify");
    Find(done, "zemPluginDone");
}

template <class Function>
void PluginLibrary::Find(Function& function, const char* name) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    if (function == nullptr) {
        Unload();
        throw std::runtime_error(fullPath + " has no function " + name);
    }
}

bool PluginLibrary::Unload() {
    if (module != nullptr) {
        FreeLibrary(std::exchange(module, nullptr));
    }
    return GetModuleHandleA(fullPath.c_str()) == nullptr;
}

} // namespace orva::tools
