/// The network identifier (NID) behind every frame sync: 12 bits network access code, 4 bits data unit
/// identifier, BCH(63,16) with 11 correctable errors, one overall parity bit that is never read
/// (TIA-102.BAAA).
#pragma once

#include <cstdint>

namespace orva::p25 {

constexpr int kNidLength = 32; ///< dibits

/// Data units as the dispatch knows them: ten times the DUID's first dibit plus its second.
enum class DataUnit : int {
    Header = 0,
    Terminator = 3,
    Ldu1 = 11,
    Trunking = 13,
    Ldu2 = 22,
    Packet = 30,
    TerminatorLc = 33,
};

/// Corrects the NID in `text`, 32 dibit characters, first dibit first. True if it is now a valid word: dibits
/// 0 .. 30 are rewritten and position 31 becomes NUL. False, with the text unchanged, when there are more
/// errors than the code can correct, or for a null `text`. `errorCount`, which may be null, receives the
/// number of corrected bits, after a failure the degree of the locator that was found.
bool CorrectNid(char* text, std::uint32_t* errorCount);

} // namespace orva::p25
