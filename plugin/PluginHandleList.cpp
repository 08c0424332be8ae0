#include "plugin/PluginHandleList.h"

#include <new>
#include <utility>

namespace orva::plugin {

PluginHandleEntryOwner PluginHandleList::MakeEntry() {
    auto* entry = static_cast<PluginHandleEntry*>(std::calloc(1, sizeof(PluginHandleEntry)));
    if (entry == nullptr) {
        throw std::bad_alloc();
    }
    return PluginHandleEntryOwner(entry);
}

void PluginHandleList::Append(PluginHandleEntryOwner entry) {
    entries.push_back(std::move(entry));
}

PluginHandleEntry* PluginHandleList::FindByHandle(std::uint32_t hostHandle) const {
    for (const PluginHandleEntryOwner& entry : entries) {
        if (entry->hostHandle == hostHandle) {
            return entry.get();
        }
    }
    return nullptr;
}

PluginHandleEntry* PluginHandleList::FindByWindow(WindowHandle window) const {
    for (const PluginHandleEntryOwner& entry : entries) {
        if (entry->window == window) {
            return entry.get();
        }
    }
    return nullptr;
}

void PluginHandleList::RemoveAll(std::uint32_t hostHandle) {
    entries.remove_if(
        [hostHandle](const PluginHandleEntryOwner& entry) { return entry->hostHandle == hostHandle; });
}

} // namespace orva::plugin
