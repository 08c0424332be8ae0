#pragma once

#include "tests/support/ImbeWord.h"
#include "tests/support/RandomSource.h"

#include <cstdint>
#include <span>
#include <string>

namespace orva::test {

/// How many errors each code word of each frame carries. All zero: a clean transmission.
struct ErrorPlan {
    int syncDibits = 0;            ///< sync dibits received one class character off, of 24
    int nidBits = 0;               ///< wrong bits among the 63 of the BCH word
    bool nidParity = false;        ///< the network identifier's parity bit is random
    int headerWordBits = 0;        ///< wrong bits in each 18-bit Golay word
    int headerSymbols = 0;         ///< wrong Reed-Solomon symbols in a header
    int linkWordBits = 0;          ///< wrong bits in each Hamming word of link control and encryption sync
    int linkControlSymbols = 0;    ///< wrong Reed-Solomon symbols in a link control word
    int encryptionSyncSymbols = 0; ///< wrong Reed-Solomon symbols in an encryption sync word
    int terminatorWordBits = 0;    ///< wrong bits in each 24-bit Golay word of a terminator
    int voiceGolayBits = 0;        ///< wrong bits in each of the voice words c0 .. c3
    int voiceHammingBits = 0;      ///< wrong bits in each of the voice words c4 .. c6
    bool randomStatus = false;     ///< status symbols are random instead of all alike

    /// The most that every code corrects for certain, all at once.
    static ErrorPlan Heaviest();
};

/// Spoils code words by an `ErrorPlan` at random places, never the same place of a word twice.
class ErrorInjector {
public:
    explicit ErrorInjector(const ErrorPlan& errorPlan = {}, std::uint64_t seed = 1)
        : plan(errorPlan), random(seed) {}

    const ErrorPlan& Plan() const { return plan; }

    /// `word` with `count` of its low `width` bits flipped.
    std::uint64_t FlipBits(std::uint64_t word, int width, int count);

    /// Replaces `count` of the 6-bit `symbols` by other values.
    void ReplaceSymbols(std::span<std::uint8_t> symbols, int count);

    /// The sync text with the plan's number of characters one off.
    std::string SpoilSync(const std::string& sync);

    /// The 64-bit network identifier with the plan's errors.
    std::uint64_t SpoilNid(std::uint64_t nid);

    /// Error masks for one voice frame; the uncoded bits stay as they are.
    VoiceErrorPattern VoiceErrors();

    /// The next status symbol, "0" .. "3".
    char StatusSymbol();

private:
    ErrorPlan plan;
    RandomSource random;
};

} // namespace orva::test
