/// Rate 1/2 trellis code of trunking signalling blocks (TIA-102.BAAA), the sending end.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace orva::test {

/// The four-bit symbol that `dibit` sends from the state that the dibit before it left.
unsigned TrellisSymbol(unsigned state, unsigned dibit);

/// One symbol per dibit, from state 0; flush dibits are the caller's.
std::vector<std::uint8_t> EncodeTrellis(std::span<const std::uint8_t> dibits);

} // namespace orva::test
