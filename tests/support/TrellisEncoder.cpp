#include "tests/support/TrellisEncoder.h"

namespace orva::test {

namespace {

// As the standard prints them: the state machine gives a point of the constellation, a point is a pair of
// symbols.
constexpr unsigned kPoints[4][4] = {{0, 15, 12, 3}, {4, 11, 8, 7}, {13, 2, 1, 14}, {9, 6, 5, 10}};

struct SymbolPair {
    int first;
    int second;
};
constexpr SymbolPair kConstellation[16] = {{+1, -1}, {-1, -1}, {+3, -3}, {-3, -3}, {-3, -1}, {+3, -1},
                                           {-1, -3}, {+1, -3}, {-3, +3}, {+3, +3}, {-1, +1}, {+1, +1},
                                           {+1, +3}, {-1, +3}, {+3, +1}, {-3, +1}};

unsigned DibitOf(int symbol) {
    switch (symbol) {
    case +1:
        return 0;
    case +3:
        return 1;
    case -1:
        return 2;
    default:
        return 3;
    }
}

} // namespace

unsigned TrellisSymbol(unsigned state, unsigned dibit) {
    const SymbolPair pair = kConstellation[kPoints[state][dibit]];
    return DibitOf(pair.first) << 2 | DibitOf(pair.second);
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
