#include "plugin/COrvaPlugin.h"

namespace orva::plugin {

IPluginInstance* MakePluginInstance(std::uint32_t hostHandle, ReceiverRecord* record) {
    return new COrvaPlugin(hostHandle, record, RealPlatform());
}

} // namespace orva::plugin
