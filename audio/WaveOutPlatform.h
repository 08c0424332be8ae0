/// The platform's wave output, as a table of calls.
#pragma once

#include "audio/WindowsMultimedia.h"

namespace orva::audio {

/// The calls by which a wave output reaches its device. A table as it is made holds the platform's own; tests
/// put a device of theirs behind it.
struct WaveOutPlatform {
    decltype(&waveOutGetNumDevs) getNumDevs = &waveOutGetNumDevs;
    decltype(&waveOutGetDevCapsA) getDevCaps = &waveOutGetDevCapsA;
    decltype(&waveOutOpen) open = &waveOutOpen;
    decltype(&waveOutPrepareHeader) prepareHeader = &waveOutPrepareHeader;
    decltype(&waveOutWrite) write = &waveOutWrite;
    decltype(&waveOutUnprepareHeader) unprepareHeader = &waveOutUnprepareHeader;
    decltype(&waveOutReset) reset = &waveOutReset;
    decltype(&waveOutClose) close = &waveOutClose;
};

/// The platform's own calls.
const WaveOutPlatform& SystemWaveOut();

} // namespace orva::audio
