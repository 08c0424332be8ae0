#include "audio/WaveOutPlatform.h"

namespace orva::audio {

const WaveOutPlatform& SystemWaveOut() {
    static const WaveOutPlatform platform;
    return platform;
}

} // namespace orva::audio
