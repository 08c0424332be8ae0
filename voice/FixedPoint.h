/// The voice decoder's arithmetic: 16-bit mantissas, 32-bit products, block exponents.
///
/// Number forms: Q15 is an int16 in units of 2^-15, Q31 an int32 in units of 2^-31. A scaled number is a
/// mantissa in Q15 or Q31 times 2^exponent; a mantissa of 0 carries exponent 0. Extended sums are held in 64
/// bits and brought back by `NormalizeSum`.
///
/// Plain operations are meant to stay in range and are watched in the checked build (`ArithmeticCheck.h`);
/// out of range they wrap. Operations whose name ends in `Sat` saturate, those that end in `Wrap` wrap on
/// purpose. Truncation is an arithmetic right shift, towards minus infinity, unless an operation says
/// otherwise.
#pragma once

#include "voice/ArithmeticCheck.h"

#include <bit>
#include <cstdint>
#include <limits>

namespace orva::voice {

static_assert((std::int32_t{-3} >> 1) == -2, "right shifts of negative values are arithmetic");
static_assert(static_cast<std::int32_t>(0x80000001U) == -0x7FFFFFFF, "conversions to signed wrap");

constexpr std::int32_t kMax32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int16_t kMax16 = std::numeric_limits<std::int16_t>::max();
constexpr std::int16_t kMin16 = std::numeric_limits<std::int16_t>::min();

/// mantissa / 2^15 x 2^exponent
struct Scaled16 {
    std::int16_t mantissa;
    int exponent;
};

/// mantissa / 2^31 x 2^exponent
struct Scaled32 {
    std::int32_t mantissa;
    int exponent;
};

// --- Moving between widths ---------------------------------------------------------------------------------

/// Narrows a value that fits 16 bits.
constexpr std::int16_t To16(std::int32_t x, SourcePlace place = SourcePlace()) {
    CheckRange(x, kMin16, kMax16, "To16", place);
    return static_cast<std::int16_t>(x);
}

/// Narrows a value that fits 32 bits.
constexpr std::int32_t To32(std::int64_t x, SourcePlace place = SourcePlace()) {
    CheckRange(x, kMin32, kMax32, "To32", place);
    return static_cast<std::int32_t>(x);
}

/// The low 16 bits of x, read as signed.
constexpr std::int16_t To16Wrap(std::int32_t x) {
    return static_cast<std::int16_t>(x);
}

constexpr std::int16_t To16Sat(std::int32_t x) {
    return static_cast<std::int16_t>(x > kMax16 ? kMax16 : x < kMin16 ? kMin16 : x);
}

/// The top 16 bits: Q31 to Q15, truncated.
constexpr std::int16_t High16(std::int32_t x) {
    return static_cast<std::int16_t>(x >> 16);
}

/// The low 16 bits, unsigned.
constexpr std::uint16_t Low16(std::int32_t x) {
    return static_cast<std::uint16_t>(x);
}

/// Q15 to Q31.
constexpr std::int32_t ToHigh(std::int16_t x) {
    return std::int32_t{x} * 65536;
}

// --- Sums --------------------------------------------------------------------------------------------------

constexpr std::int32_t Add(std::int32_t a, std::int32_t b, SourcePlace place = SourcePlace()) {
    const std::int64_t sum = std::int64_t{a} + b;
    CheckRange(sum, kMin32, kMax32, "Add", place);
    return static_cast<std::int32_t>(sum);
}

constexpr std::int32_t Sub(std::int32_t a, std::int32_t b, SourcePlace place = SourcePlace()) {
    const std::int64_t difference = std::int64_t{a} - b;
    CheckRange(difference, kMin32, kMax32, "Sub", place);
    return static_cast<std::int32_t>(difference);
}

constexpr std::int32_t AddWrap(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

constexpr std::int32_t SubWrap(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

constexpr std::int32_t AddSat(std::int32_t a, std::int32_t b) {
    std::int32_t sum = 0;
    if (__builtin_add_overflow(a, b, &sum)) {
        return b < 0 ? kMin32 : kMax32;
    }
    return sum;
}

constexpr std::int32_t SubSat(std::int32_t a, std::int32_t b) {
    std::int32_t difference = 0;
    if (__builtin_sub_overflow(a, b, &difference)) {
        return b < 0 ? kMax32 : kMin32;
    }
    return difference;
}

/// The negation of the most negative value is the largest positive one.
constexpr std::int32_t NegateSat(std::int32_t x) {
    return x == kMin32 ? kMax32 : -x;
}

/// Adds 32768 with saturation and clears the low 16 bits.
constexpr std::int32_t RoundSat(std::int32_t x) {
    return AddSat(x, 0x8000) & ~0xFFFF;
}

// --- Shifts ------------------------------------------------------------------------------------------------

/// Left shifts that bring x into 0x40000000..0x7FFFFFFF, or the mirror range when negative; 0 for 0.
constexpr int NormShift(std::int32_t x) {
    if (x == 0) {
        return 0;
    }
    return std::countl_zero(static_cast<std::uint32_t>(x < 0 ? ~x : x)) - 1;
}

/// Shifts x to the left, to the right for a negative count. A right shift of 31 or more yields the sign.
constexpr std::int32_t Shift(std::int32_t x, int count, SourcePlace place = SourcePlace()) {
    if (count <= 0) {
        return x >> (count < -31 ? 31 : -count);
    }
    const bool fits = x == 0 || count <= NormShift(x);
    CheckRange(fits ? 0 : count, 0, 0, "Shift", place);
    return count > 31 ? 0 : static_cast<std::int32_t>(static_cast<std::uint32_t>(x) << count);
}

/// As `Shift`, saturating when the left shift would lose bits.
constexpr std::int32_t ShiftSat(std::int32_t x, int count) {
    if (count <= 0) {
        return x >> (count < -31 ? 31 : -count);
    }
    if (x != 0 && count > NormShift(x)) {
        return x < 0 ? kMin32 : kMax32;
    }
    return count > 31 ? 0 : static_cast<std::int32_t>(static_cast<std::uint32_t>(x) << count);
}

/// Shifts x by `NormShift` in place and returns the count.
constexpr int Normalize(std::int32_t& x) {
    const int count = NormShift(x);
    x = Shift(x, count);
    return count;
}

/// A Q31 value at `exponent`, normalised.
constexpr Scaled32 Normalized(std::int32_t x, int exponent) {
    if (x == 0) {
        return {0, 0};
    }
    const int count = Normalize(x);
    return {x, exponent - count};
}

/// The normalised form of an extended sum in Q31 units at `exponent`.
constexpr Scaled32 NormalizeSum(std::int64_t sum, int exponent) {
    if (sum == 0) {
        return {0, 0};
    }
    const int spare = std::countl_zero(static_cast<std::uint64_t>(sum < 0 ? ~sum : sum)) - 33;
    const std::int64_t mantissa = spare < 0 ? sum >> -spare : sum * (std::int64_t{1} << spare);
    return {To32(mantissa), exponent - spare};
}

// --- Products ----------------------------------------------------------------------------------------------

/// Q15 x Q15 = Q31.
constexpr std::int32_t MulQ15(std::int16_t a, std::int16_t b, SourcePlace place = SourcePlace()) {
    const std::int32_t half = std::int32_t{a} * b;
    const std::int64_t product = std::int64_t{half} * 2;
    CheckRange(product, kMin32, kMax32, "MulQ15", place);
    return static_cast<std::int32_t>(product);
}

/// As `MulQ15`; -32768 x -32768 saturates.
constexpr std::int32_t MulQ15Sat(std::int16_t a, std::int16_t b) {
    const std::int32_t product = std::int32_t{a} * b;
    return AddSat(product, product);
}

/// acc + a b, rounded to the top 16 bits; the low 16 bits are cleared.
constexpr std::int32_t MacRound(std::int32_t acc, std::int16_t a, std::int16_t b,
                                SourcePlace place = SourcePlace()) {
    const std::int32_t half = std::int32_t{a} * b;
    const std::int64_t sum = acc + std::int64_t{half} * 2 + 0x8000;
    CheckRange(sum, kMin32, kMax32, "MacRound", place);
    return static_cast<std::int32_t>(sum) & ~0xFFFF;
}

/// a b, rounded to the top 16 bits; the low 16 bits are cleared.
constexpr std::int32_t MulRound(std::int16_t a, std::int16_t b, SourcePlace place = SourcePlace()) {
    return MacRound(0, a, b, place);
}

/// Q31 x Q15 = Q31, the two halves of x multiplied and truncated apart.
constexpr std::int32_t MulFrac(std::int32_t x, std::int16_t y, SourcePlace place = SourcePlace()) {
    const std::int32_t high = High16(x) * y;
    const std::int64_t product = std::int64_t{high} * 2 + ((std::int64_t{Low16(x)} * y) >> 15);
    CheckRange(product, kMin32, kMax32, "MulFrac", place);
    return static_cast<std::int32_t>(product);
}

// --- Quotients ---------------------------------------------------------------------------------------------

/// |n| / |d|, truncated, with the sign of n XOR d. d is not 0.
constexpr std::int32_t DivInt(std::int32_t n, std::int16_t d) {
    const std::int64_t quotient = std::int64_t{n} / d;
    return To32(quotient);
}

/// (|n| / |d|) >> 1 with the sign of n XOR d: Q31 / Q15 = Q15. d is not 0.
constexpr std::int32_t DivQ15(std::int32_t n, std::int16_t d) {
    return static_cast<std::int32_t>(std::int64_t{n} / d / 2);
}

/// The quotient of two scaled numbers, normalised. The denominator's mantissa is not 0; both mantissas should
/// be normalised for a quotient of full precision, and for one that fits.
Scaled16 DivBlock(Scaled32 numerator, Scaled16 denominator);

// --- Phases ------------------------------------------------------------------------------------------------

/// Takes off the whole cycles of x, one cycle being 2^(31 - s), and shifts the remainder left by s, so that a
/// cycle becomes 2^31. Cut towards zero: the remainder keeps the sign of x.
constexpr std::int32_t WrapCycles(std::int32_t x, int s) {
    const std::int64_t cycle = std::int64_t{1} << (31 - s);
    return static_cast<std::int32_t>((x % cycle) * (std::int64_t{1} << s));
}

/// Takes off the nearest whole number of cycles of x, one cycle being 2^(31 - s), and shifts the remainder
/// left by s + 1, so that half a cycle becomes 2^31.
constexpr std::int32_t WrapPrincipal(std::int32_t x, int s) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(x) << (s + 1));
}

// --- Functions ---------------------------------------------------------------------------------------------

/// log2(value / 2^15 x 2^exponent) in Q16. value is positive.
std::int32_t Log2(std::int16_t value, int exponent);

/// 2^(x / 2^16): the mantissa in 0x40000000..0x7FFFFFFF, unrounded.
Scaled32 Exp2(std::int32_t x);

/// The square root of a non-negative number. A mantissa of 0 leaves the exponent alone.
Scaled16 Sqrt(Scaled32 x);

} // namespace orva::voice
