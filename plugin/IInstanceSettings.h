/// What a user has chosen, kept from one run to the next.
#pragma once

#include <string>

namespace orva::plugin {

class COrvaPlugin;

/// Keeps the settings of instances, those of each receiver under a key of its own. [window thread]
class IInstanceSettings {
public:
    /// Gives an instance that is being constructed what was saved under `key`, and defaults for what was not.
    /// All of its stages and devices exist; the receiver's stream may be running already.
    virtual void Load(COrvaPlugin& plugin, const std::string& key) = 0;

    /// Saves what an instance holds that is about to be destroyed. Everything of it still stands.
    virtual void Save(COrvaPlugin& plugin, const std::string& key) = 0;

protected:
    ~IInstanceSettings() = default;
};

} // namespace orva::plugin
