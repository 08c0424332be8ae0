#include "tests/support/TrellisEncoder.h"

#include <bit>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

TEST(TrellisEncoder, SendsEachSymbolFromOneStateOnly) {
    std::set<unsigned> symbols;
    for (unsigned state = 0; state < 4; ++state) {
        for (unsigned dibit = 0; dibit < 4; ++dibit) {
            symbols.insert(TrellisSymbol(state, dibit));
        }
    }
    EXPECT_EQ(symbols.size(), 16U);
}

TEST(TrellisEncoder, KeepsTheBranchesOfAStateTwoBitsApart) {
    for (unsigned state = 0; state < 4; ++state) {
        for (unsigned a = 0; a < 4; ++a) {
            for (unsigned b = 0; b < a; ++b) {
                EXPECT_GE(std::popcount(TrellisSymbol(state, a) ^ TrellisSymbol(state, b)), 2)
                    << "state " << state << " dibits " << a << " and " << b;
            }
        }
    }
}

TEST(TrellisEncoder, GoesToTheStateOfTheLastDibit) {
    const std::vector<std::uint8_t> dibits = {1, 2, 3, 0, 0};
    EXPECT_EQ(EncodeTrellis(dibits), (std::vector<std::uint8_t>{12, 13, 4, 5, 2}));
}

} // namespace
} // namespace orva::test
