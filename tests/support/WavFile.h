/// Recordings as a receiver program writes them: RIFF WAVE, 16-bit PCM, one channel, an 18-byte `fmt ` chunk.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace orva::test {

/// The bytes of such a file.
std::vector<std::uint8_t> WavBytes(std::span<const std::int16_t> samples, int sampleRate);

} // namespace orva::test
