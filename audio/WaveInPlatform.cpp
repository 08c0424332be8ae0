#include "audio/WaveInPlatform.h"

namespace orva::audio {

const WaveInPlatform& SystemWaveIn() {
    static const WaveInPlatform platform;
    return platform;
}

} // namespace orva::audio
