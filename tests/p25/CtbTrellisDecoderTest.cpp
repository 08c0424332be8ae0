#include "p25/CtbTrellisDecoder.h"

#include "tests/support/RandomSource.h"
#include "tests/support/TrellisEncoder.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using Dibits = std::vector<std::uint8_t>;

constexpr std::size_t kBlockSymbols = 49;

/// 48 random dibits and the flush dibit.
Dibits RandomBlock(std::uint64_t seed) {
    test::RandomSource random(seed);
    Dibits dibits;
    for (std::size_t i = 0; i + 1 < kBlockSymbols; ++i) {
        dibits.push_back(static_cast<std::uint8_t>(random.Below(4)));
    }
    dibits.push_back(0);
    return dibits;
}

struct Decoded {
    Dibits dibits;
    std::uint32_t errors = 0;

    bool operator==(const Decoded&) const = default;
};

Decoded Decode(CtbTrellisDecoder& decoder, const Dibits& symbols) {
    Decoded decoded;
    EXPECT_EQ(decoder.Decode(symbols.data(), static_cast<std::uint32_t>(symbols.size())), symbols.size());
    const std::uint8_t* result = decoder.GetResult(&decoded.errors);
    decoded.dibits.assign(result, result + symbols.size());
    return decoded;
}

Decoded Decode(const Dibits& symbols) {
    CtbTrellisDecoder decoder;
    return Decode(decoder, symbols);
}

/// The nearest path by trying all of them. Of equally near ones that of the lowest last state, then of the
/// lowest state before it, and so on: what survives when the lower-numbered path wins every tie.
Decoded DecodeByTrial(const Dibits& symbols) {
    Decoded best;
    best.errors = ~0U;
    const std::size_t length = symbols.size();
    for (std::uint32_t path = 0; path < 1U << 2 * length; ++path) {
        // The last dibit stands in the highest place, so that counting up tries the paths in the order told.
        Dibits dibits(length);
        std::uint32_t errors = 0;
        unsigned state = 0;
        for (std::size_t i = 0; i < length; ++i) {
            dibits[i] = path >> 2 * i & 3U;
            errors +=
                static_cast<std::uint32_t>(std::popcount(test::TrellisSymbol(state, dibits[i]) ^ symbols[i]));
            state = dibits[i];
        }
        if (errors < best.errors) {
            best = {dibits, errors};
        }
    }
    return best;
}

TEST(CtbTrellisDecoder, CleanBlockComesBackWithItsFlushDibit) {
    for (std::uint64_t seed = 1; seed <= 50; ++seed) {
        const Dibits sent = RandomBlock(seed);
        ASSERT_EQ(Decode(test::EncodeTrellis(sent)), (Decoded{sent, 0})) << "seed " << seed;
    }
}

TEST(CtbTrellisDecoder, OneFlippedBitCountsOnceAndIsCorrected) {
    const Dibits sent = RandomBlock(1);
    for (std::size_t symbol = 0; symbol + 1 < kBlockSymbols; ++symbol) {
        for (int bit = 0; bit < 4; ++bit) {
            Dibits symbols = test::EncodeTrellis(sent);
            symbols[symbol] ^= static_cast<std::uint8_t>(1U << bit);
            const Decoded decoded = Decode(symbols);
            ASSERT_EQ(decoded.errors, 1U) << "symbol " << symbol << " bit " << bit;
            ASSERT_EQ(decoded.dibits, sent) << "symbol " << symbol << " bit " << bit;
        }
    }
}

TEST(CtbTrellisDecoder, TiesKeepTheLowerNumberedPath) {
    // Inputs of four symbols, spread over all there are; most have several nearest paths.
    for (unsigned input = 0; input < 1U << 16; input += 31) {
        Dibits symbols;
        for (int shift = 12; shift >= 0; shift -= 4) {
            symbols.push_back(static_cast<std::uint8_t>(input >> shift & 15U));
        }
        ASSERT_EQ(Decode(symbols), DecodeByTrial(symbols)) << "input " << input;
    }
}

TEST(CtbTrellisDecoder, RemembersNoMoreThanTenDecisions) {
    // Bit errors so dense that the best path changes its past after more than ten symbols: an output is the
    // oldest decision of the path that was best then, which need not agree with the path that is best in the
    // end. The step of the decoder, written once more without its bookkeeping:
    struct Path {
        Dibits decisions = Dibits(10, 0);
        unsigned metric = 0;
    };
    test::RandomSource random(5);
    for (int trial = 0; trial < 20; ++trial) {
        Dibits symbols;
        for (std::size_t i = 0; i < kBlockSymbols; ++i) {
            symbols.push_back(static_cast<std::uint8_t>(random.Below(16)));
        }
        Decoded expected;
        std::vector<Path> paths(4);
        for (std::size_t i = 0; i < symbols.size(); ++i) {
            std::vector<Path> extended(4);
            unsigned best = ~0U;
            std::uint8_t oldest = 0;
            for (unsigned dibit = 0; dibit < 4; ++dibit) {
                extended[dibit].metric = ~0U;
            }
            for (const Path& path : paths) {
                for (unsigned dibit = 0; dibit < 4; ++dibit) {
                    const unsigned metric =
                        path.metric + static_cast<unsigned>(std::popcount(
                                          test::TrellisSymbol(path.decisions.back(), dibit) ^ symbols[i]));
                    if (metric < extended[dibit].metric) {
                        extended[dibit].metric = metric;
                        extended[dibit].decisions.assign(path.decisions.begin() + 1, path.decisions.end());
                        extended[dibit].decisions.push_back(static_cast<std::uint8_t>(dibit));
                        if (metric < best) {
                            best = metric;
                            oldest = path.decisions.front();
                        }
                    }
                }
            }
            if (i >= 10) {
                expected.dibits.push_back(oldest);
            }
            paths = extended;
        }
        const auto last = std::min_element(paths.begin(), paths.end(),
                                           [](const Path& a, const Path& b) { return a.metric < b.metric; });
        expected.dibits.insert(expected.dibits.end(), last->decisions.begin(), last->decisions.end());
        expected.errors = last->metric;
        ASSERT_EQ(Decode(symbols), expected) << "trial " << trial;
    }
}

TEST(CtbTrellisDecoder, EveryDecodeStartsAfresh) {
    CtbTrellisDecoder decoder;
    Dibits noise(kBlockSymbols, 7);
    Decode(decoder, noise);
    const Dibits sent = RandomBlock(3);
    EXPECT_EQ(Decode(decoder, test::EncodeTrellis(sent)), (Decoded{sent, 0}));
}

TEST(CtbTrellisDecoder, LooksAtFourBitsOfASymbol) {
    const Dibits sent = RandomBlock(4);
    Dibits symbols = test::EncodeTrellis(sent);
    for (std::uint8_t& symbol : symbols) {
        symbol |= 0xF0;
    }
    EXPECT_EQ(Decode(symbols), (Decoded{sent, 0}));
}

TEST(CtbTrellisDecoder, RefusesNullAndTakesNullForTheErrorCount) {
    CtbTrellisDecoder decoder;
    EXPECT_EQ(decoder.Decode(nullptr, 49), 0U);
    const Dibits sent = RandomBlock(6);
    const Dibits symbols = test::EncodeTrellis(sent);
    decoder.Decode(symbols.data(), kBlockSymbols);
    EXPECT_TRUE(std::equal(sent.begin(), sent.end(), decoder.GetResult(nullptr)));
}

} // namespace
} // namespace orva::p25
