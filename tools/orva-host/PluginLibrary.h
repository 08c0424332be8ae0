/// A plug-in's library, loaded.
#pragma once

#include "plugin/HostInterface.h"

#include <string>
#include <windows.h>

namespace orva::tools {

/// Loads a plug-in and finds its four functions. Unloads it when destroyed.
class PluginLibrary {
public:
    /// Throws std::runtime_error, with a phrase for a person, if the library or a function is missing.
    explicit PluginLibrary(const std::string& path);
    ~PluginLibrary() { Unload(); }
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    /// True when the library is no longer mapped.
    bool Unload();

    plugin::ZemPluginInit init = nullptr;
    plugin::ZemPluginStart start = nullptr;
    plugin::ZemPluginNotify notify = nullptr;
    plugin::ZemPluginDone done = nullptr;

private:
    template <class Function>
    void Find(Function& function, const char* name);

    std::string fullPath;
    HMODULE module = nullptr;
};

} // namespace orva::tools
