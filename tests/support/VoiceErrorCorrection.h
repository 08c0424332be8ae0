/// Channel decoding of an IMBE full-rate voice frame by nearest code word, for hard bits.
#pragma once

#include "tests/support/VoiceCode.h"

#include <array>
#include <cstdint>
#include <span>

namespace orva::test {

constexpr int kProtectedVoiceWords = 7; ///< four Golay words, three Hamming words

struct CorrectedVoiceWord {
    VoiceBits bits{};                                   ///< information bits in transmitted order
    std::array<int, kProtectedVoiceWords> wordErrors{}; ///< bits corrected in each code word
};

/// De-interleaves, demodulates and corrects. channelBits  144 bits in received order, 0 or 1 each
CorrectedVoiceWord CorrectVoiceWord(std::span<const std::uint8_t> channelBits);

} // namespace orva::test
