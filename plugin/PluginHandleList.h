/// The list of running instances.
#pragma once

#include "plugin/HostInterface.h"
#include "plugin/IPluginInstance.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <list>
#include <memory>

namespace orva::plugin {

/// One running instance, as the entry points know it.
struct PluginHandleEntry {
    std::uint32_t hostHandle;     ///< what the host calls the instance
    IPluginInstance* plugin;      ///< null once the instance is being destroyed
    WindowHandle window;          ///< top window; kept when it is gone, to name the instance to the host
    ZemHostCallback hostCallback; ///< the host's function
};
static_assert(sizeof(void*) != 4 || sizeof(PluginHandleEntry) == 16);

/// Frees an entry, which comes from the C library's heap and outlives whatever the system's pool does.
struct FreeEntry {
    void operator()(PluginHandleEntry* entry) const { std::free(entry); }
};
using PluginHandleEntryOwner = std::unique_ptr<PluginHandleEntry, FreeEntry>;

/// Entries in order of start; each lookup walks them from the front. Owns its entries, not the instances.
/// Not locked: everything happens on the window thread.
class PluginHandleList {
public:
    /// A new entry, all zero, in no list yet. Throws std::bad_alloc.
    static PluginHandleEntryOwner MakeEntry();

    /// Puts an entry at the end. Throws std::bad_alloc, and then nothing has changed.
    void Append(PluginHandleEntryOwner entry);

    /// The first entry of this handle or window; null if there is none.
    [[nodiscard]] PluginHandleEntry* FindByHandle(std::uint32_t hostHandle) const;
    [[nodiscard]] PluginHandleEntry* FindByWindow(WindowHandle window) const;

    /// Removes and frees every entry of this handle.
    void RemoveAll(std::uint32_t hostHandle);

    [[nodiscard]] std::size_t Count() const { return entries.size(); }

private:
    std::list<PluginHandleEntryOwner> entries;
};

} // namespace orva::plugin
