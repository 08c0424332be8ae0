#include "tests/support/TrellisEncoder.h"

namespace orva::test {

unsigned TrellisSymbol(unsigned state, unsigned dibit) {
    // A row of the standard's state transition table per state.
    static constexpr unsigned kSymbols[4][4] = {{2, 12, 1, 15}, {14, 0, 13, 3}, {9, 7, 10, 4}, {5, 11, 6, 8}};
    return kSymbols[state][dibit];
}

std::vector<std::uint8_t> EncodeTrellis(std::span<const std::uint8_t> dibits) {
    std::vector<std::uint8_t> symbols;
    unsigned state = 0;
    for (const std::uint8_t dibit : dibits) {
        symbols.push_back(static_cast<std::uint8_t>(TrellisSymbol(state, dibit)));
        state = dibit;
    }
    return symbols;
}

} // namespace orva::test
