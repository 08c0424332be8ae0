/// The platform's wave input, as a table of calls.
#pragma once

#include "audio/WindowsMultimedia.h"

namespace orva::audio {

/// The calls by which a wave input reaches its device. A table as it is made holds the platform's own; tests
/// put a device of theirs behind it.
struct WaveInPlatform {
    decltype(&waveInGetNumDevs) getNumDevs = &waveInGetNumDevs;
    decltype(&waveInGetDevCapsA) getDevCaps = &waveInGetDevCapsA;
    decltype(&waveInOpen) open = &waveInOpen;
    decltype(&waveInPrepareHeader) prepareHeader = &waveInPrepareHeader;
    decltype(&waveInAddBuffer) addBuffer = &waveInAddBuffer;
    decltype(&waveInStart) start = &waveInStart;
    decltype(&waveInReset) reset = &waveInReset;
    decltype(&waveInUnprepareHeader) unprepareHeader = &waveInUnprepareHeader;
    decltype(&waveInClose) close = &waveInClose;
};

/// The platform's own calls.
const WaveInPlatform& SystemWaveIn();

} // namespace orva::audio
