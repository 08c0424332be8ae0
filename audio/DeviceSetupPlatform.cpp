#include "audio/DeviceSetupPlatform.h"

namespace orva::audio {

const DeviceSetupPlatform& SystemDeviceSetup() {
    static const DeviceSetupPlatform platform;
    return platform;
}

} // namespace orva::audio
