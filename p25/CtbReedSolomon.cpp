#include "p25/CtbReedSolomon.h"

#include <algorithm>
#include <new>

namespace orva::p25 {

namespace {

constexpr std::uint32_t kMinSymbolBits = 3;
/// Primitive polynomials of GF(2^m), m = 3..8, one bit a coefficient.
constexpr std::uint32_t kFieldPolynomials[] = {11, 19, 37, 67, 137, 391};
constexpr std::uint32_t kParityLimit = 201;
constexpr std::uint32_t kNoLog = ~0U;

std::unique_ptr<std::uint32_t[]> MakeArray(std::uint32_t count) {
    return std::unique_ptr<std::uint32_t[]>(new (std::nothrow) std::uint32_t[count]());
}

} // namespace

CtbReedSolomon::CtbReedSolomon(std::uint32_t bitsPerSymbol) : symbolBits(bitsPerSymbol) {
    const std::uint32_t index = symbolBits - kMinSymbolBits;
    if (index < std::size(kFieldPolynomials)) {
        fieldPolynomial = kFieldPolynomials[index];
        fieldSize = 1U << symbolBits;
    }
}

void CtbReedSolomon::Init(std::uint32_t parity, std::uint32_t firstRoot, std::uint32_t rootStep) {
    parityCount = 0;
    generator.reset();
    if (parity == 0 || parity >= kParityLimit || parity + 1 >= fieldSize || !BuildTables()) {
        return;
    }
    generator = MakeArray(parity + 1);
    roots = MakeArray(parity);
    if (!generator || !roots) {
        generator.reset();
        return;
    }
    const std::uint32_t order = fieldSize - 1;
    generator[0] = 1;
    for (std::uint32_t i = 0; i < parity; ++i) {
        // A field has more elements than parity symbols. NOLINTNEXTLINE(clang-analyzer-core.DivideZero)
        const std::uint32_t root = expTable[(firstRoot + i) * rootStep % order];
        roots[i] = root;
        // Times (x + root): the product's coefficient j is the old one plus the old one before it times the
        // root.
        for (std::uint32_t j = i + 1; j > 0; --j) {
            generator[j] ^= Multiply(generator[j - 1], root);
        }
    }
    parityCount = parity;
    dataCount = fieldSize - parityCount - 1;
    // Work arrays of an earlier code may be too short for this one.
    syndromes.reset();
    correction.reset();
    scratch.reset();
    discrepancies.reset();
}

bool CtbReedSolomon::BuildTables() {
    if (expTable && logTable) {
        return true;
    }
    if (fieldSize == 0) {
        return false;
    }
    expTable = MakeArray(fieldSize);
    logTable = MakeArray(fieldSize);
    if (!expTable || !logTable) {
        return false;
    }
    const std::uint32_t order = fieldSize - 1;
    std::uint32_t value = 1;
    for (std::uint32_t i = 0; i < order; ++i) {
        expTable[i] = value;
        logTable[value] = i;
        value <<= 1;
        if ((value & fieldSize) != 0) {
            value ^= fieldPolynomial;
        }
    }
    expTable[order] = value;
    logTable[0] = kNoLog;
    return true;
}

std::uint32_t CtbReedSolomon::Multiply(std::uint32_t a, std::uint32_t b) const {
    if (a == 0 || b == 0 || !expTable) {
        return 0;
    }
    return expTable[(logTable[a] + logTable[b]) % (fieldSize - 1)];
}

std::uint32_t CtbReedSolomon::Divide(std::uint32_t a, std::uint32_t b) const {
    if (a == 0 || b == 0) {
        return 0;
    }
    const std::uint32_t order = fieldSize - 1;
    return expTable[(logTable[a] + order - logTable[b]) % order];
}

std::uint32_t CtbReedSolomon::Evaluate(const std::uint32_t* polynomial, std::uint32_t degree,
                                       std::uint32_t x) const {
    std::uint32_t power = 1;
    std::uint32_t sum = 0;
    for (std::uint32_t i = 0; i <= degree; ++i) {
        sum ^= Multiply(polynomial[i], power);
        power = Multiply(power, x);
    }
    return sum;
}

std::uint32_t CtbReedSolomon::MultiplyPolynomials(const std::uint32_t* a, std::uint32_t degreeA,
                                                  const std::uint32_t* b, std::uint32_t degreeB,
                                                  std::uint32_t maxDegree, std::uint32_t* product) const {
    const std::uint32_t degree = degreeA + degreeB;
    if (degree > maxDegree) {
        return degree;
    }
    std::fill_n(product, degree + 1, 0U);
    for (std::uint32_t i = 0; i <= degreeA; ++i) {
        for (std::uint32_t j = 0; j <= degreeB; ++j) {
            product[i + j] ^= Multiply(a[i], b[j]);
        }
    }
    return degree;
}

bool CtbReedSolomon::Encode(std::uint32_t messageLength, const std::uint32_t* message,
                            std::uint32_t wordLength, std::uint32_t* word) const {
    if (parityCount == 0 || messageLength == 0 || message == nullptr || wordLength < messageLength ||
        word == nullptr || messageLength > dataCount) {
        return false;
    }
    // The remainder of message x^parityCount by the generator, in a shift register of parityCount symbols.
    std::uint32_t remainder[kParityLimit] = {};
    for (std::uint32_t i = 0; i < messageLength; ++i) {
        const std::uint32_t feedback = (message[i] ^ remainder[0]) & (fieldSize - 1);
        for (std::uint32_t j = 0; j + 1 < parityCount; ++j) {
            remainder[j] = remainder[j + 1] ^ Multiply(feedback, generator[j + 1]);
        }
        remainder[parityCount - 1] = Multiply(feedback, generator[parityCount]);
    }
    const std::uint32_t messageStart = dataCount - messageLength;
    for (std::uint32_t i = 0; i < wordLength; ++i) {
        if (i < messageStart) {
            word[i] = 0;
        } else if (i < dataCount) {
            word[i] = message[i - messageStart];
        } else {
            word[i] = i < dataCount + parityCount ? remainder[i - dataCount] : 0;
        }
    }
    return true;
}

bool CtbReedSolomon::PrepareWorkSpace() {
    // One entry more than the highest degree: multiplying the correction by x moves its top coefficient
    // there.
    const std::uint32_t count = parityCount + 2;
    if (!syndromes) {
        syndromes = MakeArray(parityCount);
    }
    if (!correction) {
        correction = MakeArray(count);
    }
    if (!scratch) {
        scratch = MakeArray(count);
    }
    if (!discrepancies) {
        discrepancies = MakeArray(count);
    }
    return syndromes && correction && scratch && discrepancies;
}

bool CtbReedSolomon::Decode(std::int32_t length, std::uint32_t* word) {
    // The locator rows hold polynomials of up to 63 coefficients; a code with more parity cannot be decoded
    // here.
    if (length <= 0 || word == nullptr || parityCount + 1 >= kMaxDegree || !PrepareWorkSpace()) {
        return false;
    }
    if (ComputeSyndromes(length, word)) {
        return true;
    }
    FindLocator();
    const std::uint32_t degree = locatorDegrees[parityCount];
    if (degree > parityCount) {
        return false;
    }
    const std::uint32_t* locator = locatorRows[parityCount];
    if (FindRoots(locator, degree) != degree) {
        return true;
    }
    CorrectErrors(locator, degree, length, word);
    return true;
}

/// True when all syndromes are zero.
bool CtbReedSolomon::ComputeSyndromes(std::int32_t length, const std::uint32_t* word) {
    std::uint32_t any = 0;
    for (std::uint32_t i = 0; i < parityCount; ++i) {
        std::uint32_t power = 1;
        std::uint32_t sum = 0;
        for (std::int32_t j = length - 1; j >= 0; --j) {
            sum ^= Multiply(power, word[j] & (fieldSize - 1));
            power = Multiply(power, roots[i]);
        }
        syndromes[i] = sum;
        any |= sum;
    }
    return any == 0;
}

/// Berlekamp-Massey: row k of `locatorRows` is the shortest polynomial that explains the first k syndromes.
void CtbReedSolomon::FindLocator() {
    const std::uint32_t count = parityCount + 2;
    std::fill(&locatorRows[0][0], &locatorRows[0][0] + kMaxDegree * kMaxDegree, 0U);
    std::fill_n(locatorDegrees, kMaxDegree, 0U);
    std::fill_n(correction.get(), count, 0U);
    locatorRows[0][0] = 1;
    correction[1] = 1;
    std::uint32_t correctionDegree = 1;
    std::uint32_t registerLength = 0;

    for (std::uint32_t k = 1; k <= parityCount; ++k) {
        const std::uint32_t* previous = locatorRows[k - 1];
        std::uint32_t* row = locatorRows[k];
        std::copy_n(previous, kMaxDegree, row);
        locatorDegrees[k] = locatorDegrees[k - 1];

        std::uint32_t discrepancy = syndromes[k - 1];
        for (std::uint32_t j = 1; j <= registerLength; ++j) {
            discrepancy ^= Multiply(previous[j], syndromes[k - j - 1]);
        }
        discrepancies[k] = discrepancy;
        if (discrepancy != 0) {
            for (std::uint32_t i = 0; i < count; ++i) {
                scratch[i] = Multiply(discrepancy, correction[i]);
                row[i] ^= scratch[i];
            }
            locatorDegrees[k] = std::max(locatorDegrees[k - 1], correctionDegree);
            if (2 * registerLength < k) {
                registerLength = k - registerLength;
                for (std::uint32_t i = 0; i < count; ++i) {
                    correction[i] = Divide(previous[i], discrepancy);
                }
                correctionDegree = locatorDegrees[k - 1];
            }
        }
        std::copy_backward(correction.get(), correction.get() + count - 1, correction.get() + count);
        correction[0] = 0;
        ++correctionDegree;
    }
}

/// Tries every non-zero field element; returns the number of zeros, which `foundRoots` then holds.
std::uint32_t CtbReedSolomon::FindRoots(const std::uint32_t* locator, std::uint32_t degree) {
    std::uint32_t count = 0;
    for (std::uint32_t i = 0; i + 1 < fieldSize && count < kMaxDegree; ++i) {
        if (Evaluate(locator, degree, expTable[i]) == 0) {
            foundRoots[count++] = expTable[i];
        }
    }
    return count;
}

/// The formal derivative: in characteristic 2 only the odd powers of the locator leave a term. Returns its
/// degree.
std::uint32_t CtbReedSolomon::Differentiate(const std::uint32_t* locator, std::uint32_t degree) {
    if (degree == 0) {
        derivative[0] = 0;
        return 0;
    }
    for (std::uint32_t i = 0; i < degree; ++i) {
        derivative[i] = i % 2 == 0 ? locator[i + 1] : 0;
    }
    const std::uint32_t top = degree - 1;
    return derivative[top] != 0 || top == 0 ? top : top - 1;
}

/// Forney's formula at each root of the locator.
void CtbReedSolomon::CorrectErrors(const std::uint32_t* locator, std::uint32_t degree, std::int32_t length,
                                   std::uint32_t* word) {
    syndromePolynomial[0] = 1;
    std::copy_n(syndromes.get(), parityCount, syndromePolynomial + 1);
    const std::uint32_t product =
        MultiplyPolynomials(locator, degree, syndromePolynomial, parityCount, 2 * kMaxDegree - 1, evaluator);
    const std::uint32_t evaluatorDegree = std::min(product, parityCount);
    const std::uint32_t derivativeDegree = Differentiate(locator, degree);

    const std::uint32_t order = fieldSize - 1;
    for (std::uint32_t i = 0; i < degree; ++i) {
        const std::uint32_t root = foundRoots[i];
        const std::uint32_t location = expTable[order - logTable[root]];
        const std::uint32_t numerator = Multiply(Evaluate(evaluator, evaluatorDegree, root), location);
        magnitudes[i] = Divide(numerator, Evaluate(derivative, derivativeDegree, root));
        // In a word shorter than the code an error cannot lie in the part that was never sent.
        const auto power = static_cast<std::int32_t>(logTable[location]);
        if (power < length) {
            word[length - 1 - power] ^= magnitudes[i];
        }
    }
}

} // namespace orva::p25
