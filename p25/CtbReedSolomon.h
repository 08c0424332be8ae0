/// Reed-Solomon codec over GF(2^m), one symbol a word entry.
#pragma once

#include <cstdint>
#include <memory>

namespace orva::p25 {

/// Systematic Reed-Solomon code over GF(2^m), m = 3..8, decoded by Berlekamp-Massey, an exhaustive root
/// search and Forney's formula. In a word of n symbols index 0 is the highest power of x and index n-1 the
/// constant term. Shortened codes are read as full words with leading zeros. One thread at a time: the work
/// space is the object's.
class CtbReedSolomon {
public:
    /// `bitsPerSymbol`  m, 3..8. Any other value leaves a codec that encodes and decodes nothing.
    explicit CtbReedSolomon(std::uint32_t bitsPerSymbol);

    /// Builds tables and generator polynomial, whose roots are alpha^((firstRoot + i) rootStep), i = 0 ..
    /// parityCount-1. A count of 201 or more, or not below 2^m - 1, is ignored and leaves no generator.
    void Init(std::uint32_t parityCount, std::uint32_t firstRoot, std::uint32_t rootStep);

    /// Systematic encoding of `message` into `word`: of the full word of 2^m - 1 symbols (zeros, message,
    /// parity) the first `wordLength` are written. False without a generator, for a null or empty argument,
    /// for a word shorter than the message, and for a message longer than the code's data part.
    bool Encode(std::uint32_t messageLength, const std::uint32_t* message, std::uint32_t wordLength,
                std::uint32_t* word) const;

    /// Corrects `word` of `length` symbols in place. True for a clean word, a corrected one, and one whose
    /// locator has the wrong number of roots, which stays as it was: callers cannot tell these apart. False,
    /// with the word unchanged, for `length` 0, without memory for the work space, or for a locator of too
    /// high a degree.
    bool Decode(std::int32_t length, std::uint32_t* word);

private:
    friend struct CtbReedSolomonInspector;

    static constexpr std::uint32_t kMaxDegree =
        64; ///< polynomials of the decoder have fewer coefficients than this
    using Array = std::unique_ptr<std::uint32_t[]>;

    std::uint32_t Multiply(std::uint32_t a, std::uint32_t b) const;
    std::uint32_t Divide(std::uint32_t a, std::uint32_t b) const;
    std::uint32_t Evaluate(const std::uint32_t* polynomial, std::uint32_t degree, std::uint32_t x) const;
    std::uint32_t MultiplyPolynomials(const std::uint32_t* a, std::uint32_t degreeA, const std::uint32_t* b,
                                      std::uint32_t degreeB, std::uint32_t maxDegree,
                                      std::uint32_t* product) const;

    bool BuildTables();
    bool PrepareWorkSpace();
    bool ComputeSyndromes(std::int32_t length, const std::uint32_t* word);
    void FindLocator();
    std::uint32_t FindRoots(const std::uint32_t* locator, std::uint32_t degree);
    std::uint32_t Differentiate(const std::uint32_t* locator, std::uint32_t degree);
    void CorrectErrors(const std::uint32_t* locator, std::uint32_t degree, std::int32_t length,
                       std::uint32_t* word);

    std::uint32_t symbolBits;
    std::uint32_t fieldPolynomial = 0;
    std::uint32_t fieldSize = 0;
    Array expTable;                ///< alpha^i, the last entry 1
    Array logTable;                ///< inverse of `expTable`, entry 0 is -1
    std::uint32_t parityCount = 0; ///< 0 until `Init` has run
    Array generator;               ///< highest degree first, [parityCount + 1]
    std::uint32_t dataCount = 0;
    Array roots;                                            ///< of the generator, [parityCount]
    Array syndromes;                                        ///< of the word in hand, [parityCount]
    std::uint32_t locatorRows[kMaxDegree][kMaxDegree] = {}; ///< locator after each step, lowest degree first
    std::uint32_t locatorDegrees[kMaxDegree] = {};          ///< degree of each row
    Array correction;                                       ///< working polynomials of Berlekamp-Massey
    Array scratch;
    Array discrepancies;
    std::uint32_t foundRoots[kMaxDegree] = {};
    std::uint32_t syndromePolynomial[kMaxDegree] = {};
    std::uint32_t evaluator[2 * kMaxDegree] = {};
    std::uint32_t derivative[kMaxDegree] = {};
    std::uint32_t magnitudes[kMaxDegree] = {};
};

} // namespace orva::p25
