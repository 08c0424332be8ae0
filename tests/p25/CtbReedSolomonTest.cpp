#include "p25/CtbReedSolomon.h"

#include "tests/p25/CtbReedSolomonInspector.h"
#include "tests/support/GaloisField64.h"
#include "tests/support/RandomSource.h"
#include "tests/support/ReedSolomonEncoder.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace orva::p25 {
namespace {

using Word = std::vector<std::uint32_t>;

constexpr std::int32_t kWordLength = 63;

/// One of the shortened codes of the air interface: parity symbols and symbols sent.
struct Use {
    std::uint32_t parity;
    std::uint32_t sent;
};

void PrintTo(const Use& use, std::ostream* out) {
    *out << "(" << use.sent << "," << use.sent - use.parity << ")";
}

Word RandomSymbols(std::size_t count, std::uint32_t fieldSize, test::RandomSource& random) {
    Word symbols(count);
    for (std::uint32_t& symbol : symbols) {
        symbol = random.Below(fieldSize);
    }
    return symbols;
}

/// Changes `count` different entries of `word` from index `first` on.
Word Spoil(Word word, std::size_t count, std::size_t first, std::uint32_t fieldSize,
           test::RandomSource& random) {
    std::set<std::size_t> places;
    while (places.size() < count) {
        places.insert(first + random.Below(static_cast<std::uint32_t>(word.size() - first)));
    }
    for (const std::size_t place : places) {
        word[place] ^= 1 + random.Below(fieldSize - 1);
    }
    return word;
}

/// A random word of the code as 63 symbols with leading zeros, by the transmitter's encoder.
Word SentWord(const Use& use, test::RandomSource& random) {
    std::vector<std::uint8_t> message(use.sent - use.parity);
    for (std::uint8_t& symbol : message) {
        symbol = static_cast<std::uint8_t>(random.Below(64));
    }
    const std::vector<std::uint8_t> coded = test::EncodeReedSolomon(message, static_cast<int>(use.parity));
    Word word(kWordLength - use.sent, 0);
    word.insert(word.end(), coded.begin(), coded.end());
    return word;
}

/// Every syndrome of the 63 symbols is zero, by the test support's own field arithmetic.
bool IsCodeWord(const Word& word, std::uint32_t parity) {
    for (std::uint32_t root = 1; root <= parity; ++root) {
        unsigned sum = 0;
        for (std::size_t i = 0; i < word.size(); ++i) {
            const int power = static_cast<int>(root) * static_cast<int>(word.size() - 1 - i);
            sum ^= test::FieldProduct(static_cast<std::uint8_t>(word[i]), test::FieldPower(power));
        }
        if (sum != 0) {
            return false;
        }
    }
    return true;
}

class ReedSolomonUse : public testing::TestWithParam<Use> {
protected:
    ReedSolomonUse() { codec.Init(GetParam().parity, 1, 1); }

    std::size_t First() const { return kWordLength - GetParam().sent; }
    std::size_t Limit() const { return GetParam().parity / 2; }

    CtbReedSolomon codec{6};
    test::RandomSource random{GetParam().parity};
};

TEST_P(ReedSolomonUse, CleanWordStaysAsItIs) {
    for (int trial = 0; trial < 50; ++trial) {
        const Word sent = SentWord(GetParam(), random);
        Word word = sent;
        ASSERT_TRUE(codec.Decode(kWordLength, word.data()));
        ASSERT_EQ(word, sent);
    }
}

TEST_P(ReedSolomonUse, CorrectsUpToHalfItsParity) {
    for (std::size_t wrong = 1; wrong <= Limit(); ++wrong) {
        for (int trial = 0; trial < 100; ++trial) {
            const Word sent = SentWord(GetParam(), random);
            Word word = Spoil(sent, wrong, First(), 64, random);
            ASSERT_TRUE(codec.Decode(kWordLength, word.data()));
            ASSERT_EQ(word, sent) << wrong << " wrong symbols, trial " << trial;
        }
    }
}

TEST_P(ReedSolomonUse, CorrectsErrorsInTheLeadingZerosToo) {
    for (int trial = 0; trial < 50; ++trial) {
        const Word sent = SentWord(GetParam(), random);
        Word word = Spoil(sent, Limit(), 0, 64, random);
        ASSERT_TRUE(codec.Decode(kWordLength, word.data()));
        ASSERT_EQ(word, sent) << "trial " << trial;
    }
}

TEST_P(ReedSolomonUse, CorrectsEverySingleSymbolByEveryValue) {
    const Word sent = SentWord(GetParam(), random);
    for (std::size_t place = First(); place < kWordLength; ++place) {
        for (std::uint32_t change = 1; change < 64; ++change) {
            Word word = sent;
            word[place] ^= change;
            ASSERT_TRUE(codec.Decode(kWordLength, word.data()));
            ASSERT_EQ(word, sent) << "place " << place << " change " << change;
        }
    }
}

TEST_P(ReedSolomonUse, OneErrorMoreIsLeftAloneOrEndsInAnotherWord) {
    int leftAlone = 0;
    constexpr int kTrials = 300;
    for (int trial = 0; trial < kTrials; ++trial) {
        const Word sent = SentWord(GetParam(), random);
        const Word received = Spoil(sent, Limit() + 1, First(), 64, random);
        Word word = received;
        ASSERT_TRUE(codec.Decode(kWordLength, word.data())) << "an uncorrectable word is not told";
        if (word == received) {
            ++leftAlone;
            continue;
        }
        ASSERT_NE(word, sent) << "trial " << trial;
        ASSERT_TRUE(IsCodeWord(word, GetParam().parity)) << "trial " << trial;
    }
    EXPECT_GT(leftAlone, kTrials * 8 / 10);
}

TEST_P(ReedSolomonUse, WordsOfNoiseNeverFindALocatorThatIsTooLong) {
    for (int trial = 0; trial < 300; ++trial) {
        Word word = RandomSymbols(kWordLength, 64, random);
        ASSERT_TRUE(codec.Decode(kWordLength, word.data()));
        ASSERT_LE(CtbReedSolomonInspector{codec}.LocatorDegree(), GetParam().parity);
    }
}

TEST_P(ReedSolomonUse, EncodesAsTheTransmitterDoes) {
    for (int trial = 0; trial < 50; ++trial) {
        const Word sent = SentWord(GetParam(), random);
        const Word message(sent.begin() + static_cast<std::ptrdiff_t>(First()),
                           sent.end() - GetParam().parity);
        Word word(kWordLength, 77);
        ASSERT_TRUE(codec.Encode(static_cast<std::uint32_t>(message.size()), message.data(), kWordLength,
                                 word.data()));
        ASSERT_EQ(word, sent) << "trial " << trial;
    }
}

TEST_P(ReedSolomonUse, GeneratorHasItsRoots) {
    const CtbReedSolomonInspector inspector{codec};
    const Word generator = inspector.Generator();
    ASSERT_EQ(generator.size(), GetParam().parity + 1U);
    EXPECT_EQ(generator.front(), 1U);
    EXPECT_TRUE(IsCodeWord(generator, GetParam().parity));
    const Word roots = inspector.Roots();
    for (std::size_t i = 0; i < roots.size(); ++i) {
        EXPECT_EQ(roots[i], test::FieldPower(static_cast<int>(i) + 1)) << "root " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(AirInterface, ReedSolomonUse, testing::Values(Use{8, 24}, Use{16, 36}, Use{12, 24}));

TEST(CtbReedSolomon, SixtyThreeZerosAreClean) {
    for (const std::uint32_t parity : {8U, 12U, 16U}) {
        CtbReedSolomon codec(6);
        codec.Init(parity, 1, 1);
        Word word(kWordLength, 0);
        EXPECT_TRUE(codec.Decode(kWordLength, word.data()));
        EXPECT_EQ(word, Word(kWordLength, 0));
    }
}

TEST(CtbReedSolomon, RefusesToDecodeNothing) {
    CtbReedSolomon codec(6);
    codec.Init(12, 1, 1);
    Word word(kWordLength, 1);
    EXPECT_FALSE(codec.Decode(0, word.data()));
    EXPECT_FALSE(codec.Decode(-1, word.data()));
    EXPECT_FALSE(codec.Decode(kWordLength, nullptr));
    EXPECT_EQ(word, Word(kWordLength, 1));
}

TEST(CtbReedSolomon, TablesHoldThePowersOfAlpha) {
    constexpr std::uint32_t kPolynomials[] = {11, 19, 37, 67, 137, 391};
    for (std::uint32_t m = 3; m <= 8; ++m) {
        CtbReedSolomon codec(m);
        codec.Init(2, 1, 1);
        const CtbReedSolomonInspector inspector{codec};
        const std::uint32_t fieldSize = 1U << m;
        ASSERT_EQ(inspector.FieldSize(), fieldSize);
        ASSERT_EQ(inspector.FieldPolynomial(), kPolynomials[m - 3]);
        const Word expTable = inspector.ExpTable();
        const Word logTable = inspector.LogTable();
        EXPECT_EQ(expTable.front(), 1U);
        EXPECT_EQ(expTable.back(), 1U) << "m " << m;
        EXPECT_EQ(logTable[0], 0xFFFFFFFFU);
        std::set<std::uint32_t> values;
        for (std::uint32_t i = 0; i + 1 < fieldSize; ++i) {
            std::uint32_t next = expTable[i] << 1;
            next ^= (next & fieldSize) != 0 ? kPolynomials[m - 3] : 0;
            EXPECT_EQ(expTable[i + 1], next) << "m " << m << " power " << i;
            EXPECT_EQ(logTable[expTable[i]], i) << "m " << m;
            values.insert(expTable[i]);
        }
        EXPECT_EQ(values.size(), fieldSize - 1) << "all non-zero elements, m " << m;
    }
}

TEST(CtbReedSolomon, MultipliesAndDividesInTheField) {
    CtbReedSolomon codec(6);
    codec.Init(8, 1, 1);
    const CtbReedSolomonInspector inspector{codec};
    for (std::uint32_t a = 0; a < 64; ++a) {
        for (std::uint32_t b = 0; b < 64; ++b) {
            const std::uint32_t product = inspector.Product(a, b);
            ASSERT_EQ(product,
                      test::FieldProduct(static_cast<std::uint8_t>(a), static_cast<std::uint8_t>(b)));
            ASSERT_EQ(inspector.Quotient(product, b), b == 0 ? 0U : a) << a << " x " << b;
        }
    }
}

TEST(CtbReedSolomon, ProductOfPolynomialsKeepsOutWhenItWouldBeTooLong) {
    CtbReedSolomon codec(6);
    codec.Init(8, 1, 1);
    const CtbReedSolomonInspector inspector{codec};
    Word product = {9, 9, 9, 9};
    EXPECT_EQ(inspector.MultiplyPolynomials({1, 2}, {3, 4, 5}, 2, product), 3U);
    EXPECT_EQ(product, (Word{9, 9, 9, 9}));
    EXPECT_EQ(inspector.MultiplyPolynomials({1, 2}, {3, 4, 5}, 3, product), 3U);
    EXPECT_EQ(product, (Word{3, 4 ^ 6, 5 ^ 8, 10}));
}

TEST(CtbReedSolomon, InitIgnoresParityThatLeavesNoData) {
    for (const std::uint32_t parity : {63U, 64U, 200U, 201U, 0xFFFFFFFFU}) {
        CtbReedSolomon codec(6);
        codec.Init(parity, 1, 1);
        const CtbReedSolomonInspector inspector{codec};
        EXPECT_FALSE(inspector.HasGenerator()) << "parity " << parity;
        EXPECT_EQ(inspector.ParityCount(), 0U);
        const Word message = {1};
        Word word(kWordLength, 77);
        EXPECT_FALSE(codec.Encode(1, message.data(), kWordLength, word.data()));
        EXPECT_EQ(word, Word(kWordLength, 77));
    }
    CtbReedSolomon codec(6);
    codec.Init(62, 1, 1);
    EXPECT_TRUE(CtbReedSolomonInspector{codec}.HasGenerator());
    EXPECT_EQ(CtbReedSolomonInspector{codec}.DataCount(), 1U);
}

TEST(CtbReedSolomon, InitIgnoresMoreThan200ParitySymbols) {
    CtbReedSolomon most(8);
    most.Init(200, 1, 1);
    EXPECT_TRUE(CtbReedSolomonInspector{most}.HasGenerator());
    EXPECT_EQ(CtbReedSolomonInspector{most}.DataCount(), 55U);
    CtbReedSolomon tooMany(8);
    tooMany.Init(201, 1, 1);
    EXPECT_FALSE(CtbReedSolomonInspector{tooMany}.HasGenerator());
    EXPECT_EQ(CtbReedSolomonInspector{tooMany}.ParityCount(), 0U);
}

TEST(CtbReedSolomon, AnIgnoredInitTakesTheOldCodeAway) {
    CtbReedSolomon codec(6);
    codec.Init(12, 1, 1);
    codec.Init(63, 1, 1);
    const Word message = {1};
    Word word(kWordLength, 77);
    EXPECT_FALSE(codec.Encode(1, message.data(), kWordLength, word.data()));
    word.assign(kWordLength, 5);
    EXPECT_TRUE(codec.Decode(kWordLength, word.data())) << "no parity, no syndromes: nothing is wrong";
    EXPECT_EQ(word, Word(kWordLength, 5));
}

TEST(CtbReedSolomon, CanBeGivenAnotherCode) {
    CtbReedSolomon codec(6);
    test::RandomSource random(3);
    for (const Use& use : {Use{8, 24}, Use{16, 36}, Use{12, 24}}) {
        codec.Init(use.parity, 1, 1);
        const Word sent = SentWord(use, random);
        Word word = Spoil(sent, use.parity / 2, kWordLength - use.sent, 64, random);
        EXPECT_TRUE(codec.Decode(kWordLength, word.data()));
        EXPECT_EQ(word, sent);
    }
}

TEST(CtbReedSolomon, EncodeRefusesWhatItCannotWrite) {
    CtbReedSolomon codec(6);
    const Word message(51, 3);
    Word word(kWordLength, 77);
    EXPECT_FALSE(codec.Encode(51, message.data(), kWordLength, word.data())) << "before Init";
    codec.Init(12, 1, 1);
    EXPECT_FALSE(codec.Encode(0, message.data(), kWordLength, word.data()));
    EXPECT_FALSE(codec.Encode(51, message.data(), 0, word.data()));
    EXPECT_FALSE(codec.Encode(51, message.data(), 50, word.data()));
    EXPECT_FALSE(codec.Encode(51, message.data(), kWordLength, nullptr));
    EXPECT_FALSE(codec.Encode(51, nullptr, kWordLength, word.data()));
    EXPECT_FALSE(codec.Encode(52, Word(52, 3).data(), kWordLength, word.data())) << "more than the data part";
    EXPECT_EQ(word, Word(kWordLength, 77));
    EXPECT_TRUE(codec.Encode(51, message.data(), kWordLength, word.data()));
}

TEST(CtbReedSolomon, EncodeWritesAsManySymbolsAsAskedFor) {
    CtbReedSolomon codec(6);
    codec.Init(12, 1, 1);
    const Word message = {1, 2, 3};
    Word whole(kWordLength);
    ASSERT_TRUE(codec.Encode(3, message.data(), kWordLength, whole.data()));
    EXPECT_TRUE(IsCodeWord(whole, 12));
    EXPECT_EQ(Word(whole.begin() + 48, whole.begin() + 51), message)
        << "the message ends at the data part's end";
    Word part(60, 77);
    ASSERT_TRUE(codec.Encode(3, message.data(), 55, part.data()));
    EXPECT_TRUE(std::equal(part.begin(), part.begin() + 55, whole.begin()));
    EXPECT_EQ(part[55], 77U);
}

TEST(CtbReedSolomon, RoundTripsInEveryField) {
    test::RandomSource random(11);
    for (std::uint32_t m = 3; m <= 8; ++m) {
        const std::uint32_t length = (1U << m) - 1;
        const std::uint32_t parity = std::min(length - 3, 20U) & ~1U;
        CtbReedSolomon codec(m);
        codec.Init(parity, 1, 1);
        for (std::size_t wrong = 0; wrong <= parity / 2; ++wrong) {
            const Word message = RandomSymbols(length - parity, 1U << m, random);
            Word sent(length);
            ASSERT_TRUE(codec.Encode(length - parity, message.data(), length, sent.data()));
            Word word = Spoil(sent, wrong, 0, 1U << m, random);
            ASSERT_TRUE(codec.Decode(static_cast<std::int32_t>(length), word.data()));
            ASSERT_EQ(word, sent) << "m " << m << ", " << wrong << " wrong";
        }
    }
}

TEST(CtbReedSolomon, OtherRootsGiveOtherCodes) {
    // Roots alpha^((first + i) step). Forney's formula as it stands belongs to first root 1 and step 1; the
    // generator takes any.
    CtbReedSolomon codec(6);
    codec.Init(4, 3, 5);
    const Word roots = CtbReedSolomonInspector{codec}.Roots();
    ASSERT_EQ(roots.size(), 4U);
    for (std::size_t i = 0; i < roots.size(); ++i) {
        EXPECT_EQ(roots[i], test::FieldPower((3 + static_cast<int>(i)) * 5)) << "root " << i;
    }
    const Word message = {1, 2, 3, 4};
    Word word(kWordLength);
    ASSERT_TRUE(codec.Encode(4, message.data(), kWordLength, word.data()));
    EXPECT_TRUE(codec.Decode(kWordLength, word.data()));
}

TEST(CtbReedSolomon, FieldsThatAreNotOfferedDoNothing) {
    for (const std::uint32_t m : {0U, 2U, 9U, 32U}) {
        CtbReedSolomon codec(m);
        codec.Init(2, 1, 1);
        const Word message = {1};
        Word word(7, 1);
        EXPECT_FALSE(codec.Encode(1, message.data(), 7, word.data())) << "m " << m;
        codec.Decode(7, word.data());
        EXPECT_EQ(word, Word(7, 1)) << "m " << m;
    }
}

} // namespace
} // namespace orva::p25
