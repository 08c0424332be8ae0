/// DCS decoder.
#pragma once

#include "squelch/CtbBitClock.h"
#include "squelch/CtbFixedFir.h"
#include "squelch/CtbResampler.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace orva::squelch {

constexpr std::size_t kDcsCodeCount = 112;

/// The codes that are looked for, in the order of the search; nine bits, by custom written in octal.
extern const std::array<std::uint16_t, kDcsCodeCount> kDcsCodes;

/// Their words of the Golay(23,12) code with the generator 0xC75, 12 data bits low, 11 parity bits high, sent
/// from bit 0 on.
extern const std::array<std::uint32_t, kDcsCodeCount> kDcsWords;

/// Added to a code that was received in inverted polarity.
constexpr std::int32_t kDcsInverted = 512;

/// A value of `CtbDcsDetector::matches` as the host counts it: inverted codes are negative.
constexpr std::int32_t SignedDcsCode(std::int32_t match) {
    return match >= kDcsInverted ? kDcsInverted - match : match;
}

/// Finds continuous digital squelch codes: 134.4 bits per second, words of 23 bits without framing. After
/// each bit the last 23 are compared, in all rotations and both polarities, with all words. A code's words
/// are, rotated, also the inverse of another code's, so that one signal always matches as two.
///
/// The audio must be free of DC. All calls on one thread. Takes memory when the rate or the block length
/// changes.
class CtbDcsDetector {
public:
    CtbDcsDetector();
    CtbDcsDetector(const CtbDcsDetector&) = delete; // the bit clock knows its owner's address
    CtbDcsDetector& operator=(const CtbDcsDetector&) = delete;

    /// Rate of the samples [Hz]. To be told before every block; compares first, and ignores what no ratio can
    /// bring to the bit clock's rate, such as 0. Bits received at the old rate stay.
    void SetSampleRate(float rate);

    /// Takes `count` / `stride` samples, one every `stride` entries. Does nothing with null or a stride of 0.
    void Process(const std::int16_t* samples, std::uint32_t count, std::uint32_t stride);

    static constexpr std::size_t kMostMatches = 32;

    /// What the last bit that matched at all matched: codes, with `kDcsInverted` added for inverted polarity.
    std::array<std::int32_t, kMostMatches> matches{};
    /// Entries of `matches`. Stays until the next match; the caller clears it.
    std::uint32_t matchCount = 0;

private:
    friend struct CtbDcsDetectorInspector;

    void TakeBit(std::uint32_t bit);
    void AddMatch(std::int32_t value);

    CtbFixedFir filter;
    CtbBitClock bitClock;
    float reducedRate = 0.0F; ///< [Hz]
    CtbResampler resampler;
    std::uint32_t shiftRegister = 0; ///< the last 23 bits, the newest in bit 22
    float sampleRate = 0.0F;         ///< [Hz]
};

} // namespace orva::squelch
