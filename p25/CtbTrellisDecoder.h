/// Viterbi decoder of the rate 1/2 trellis code that protects trunking signalling blocks (TIA-102.BAAA).
#pragma once

#include "dsp/CtbSampleBlock.h"

#include <array>
#include <cstdint>

namespace orva::p25 {

/// One survivor: its last ten decisions are the whole path memory, so an output is never more than ten
/// symbols behind.
struct TrellisPath {
    static constexpr int kMemory = 10;

    std::uint8_t decisions[kMemory] = {}; ///< dibits, oldest first; the last one is the path's state
    std::uint32_t metric = 0;             ///< bit errors so far; all ones means empty
};

/// Decodes blocks of four-bit symbols to dibits. Any input decodes; errors show only in the count.
class CtbTrellisDecoder {
public:
    CtbTrellisDecoder() = default;
    CtbTrellisDecoder(const CtbTrellisDecoder&) = delete;
    CtbTrellisDecoder& operator=(const CtbTrellisDecoder&) = delete;

    /// Decodes `count` symbols, 0..15 each, to as many dibits, the last of them the flush dibit. Returns
    /// `count`, or 0 for a null argument or without memory.
    std::uint32_t Decode(const std::uint8_t* symbols, std::uint32_t count);

    /// The dibits of the last decode, one a byte; `errors`, which may be null, receives the bit errors of the
    /// best path.
    const std::uint8_t* GetResult(std::uint32_t* errors) const;

private:
    static constexpr int kStates = 4;

    std::uint8_t Advance(std::uint8_t symbol);

    using Survivors = std::array<TrellisPath, kStates>;

    Survivors survivors[2];
    Survivors* current = &survivors[0]; ///< before a step
    Survivors* next = &survivors[1];    ///< after it; the two swap at each step
    std::uint32_t totalErrors = 0;
    dsp::CtbBasicSampleBlock<std::uint8_t> output;
};

} // namespace orva::p25
