/// What the headers of wave devices tell.
#pragma once

#include "audio/WindowsMultimedia.h"

namespace orva::audio {

static_assert(sizeof(WAVEHDR) == 32);

/// The device still has the header's buffer. A notification about it is a stale one, of an earlier use.
inline bool IsWithDevice(const WAVEHDR& header) {
    return (header.dwFlags & (WHDR_INQUEUE | WHDR_DONE)) == WHDR_INQUEUE;
}

/// The one format of this system: 16 bits, one channel, uncompressed.
inline WAVEFORMATEX MonoFormat(DWORD sampleRate) {
    WAVEFORMATEX format{};
    format.wFormatTag = WAVE_FORMAT_PCM;
    format.nChannels = 1;
    format.nSamplesPerSec = sampleRate;
    format.nBlockAlign = sizeof(short);
    format.nAvgBytesPerSec = sampleRate * format.nBlockAlign;
    format.wBitsPerSample = 8 * sizeof(short);
    format.cbSize = 0;
    return format;
}

} // namespace orva::audio
