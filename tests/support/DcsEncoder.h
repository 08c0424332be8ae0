/// Transmitter of continuous digital squelch codes.
#pragma once

#include <cstdint>

namespace orva::test {

/// Word of nine code bits: the code, the fixed bits 100, and the 11 parity bits of the cyclic Golay(23,12)
/// code with the generator 0xC75. Sent from bit 0 on.
std::uint32_t DcsWord(unsigned code);

/// An endless stream of one code's word at 134.4 bits per second.
class DcsEncoder {
public:
    static constexpr double kBitsPerSecond = 134.4;

    DcsEncoder(unsigned code, bool invertedPolarity, int rate);

    /// Level of the next sample: -1.0 for a one, a carrier below its rest frequency; +1.0 for a zero. The
    /// other way round in inverted polarity.
    double NextLevel();

private:
    std::uint32_t word;
    double oneLevel;
    double bitsPerSample;
    double position = 0.0; ///< in the word [bits]
};

} // namespace orva::test
