/// Numbers as the number entries write and read them.
#pragma once

#include <cstdint>
#include <string>

namespace orva::toolkit {

/// How a number entry writes its number.
enum class NumberBase : std::uint32_t {
    Decimal = 0,
    LowerHexadecimal = 1, ///< digits a to f
    UpperHexadecimal = 2, ///< digits A to F
};

/// Most decimals of a fixed-point number: ten to that power still is a 64-bit number.
constexpr int kMostDecimals = 18;

/// The number as decimal digits with a sign if it is negative, or as the hexadecimal digits of its two's
/// complement; without leading zeros.
std::string FormatNumber(std::int64_t value, NumberBase base);

/// The number that a text begins with, behind white space and an optional sign; in a hexadecimal base an
/// optional "0x" too. What follows the digits is ignored, and without a digit the result is 0.
///
/// \return a decimal number limited to 64 bits with a sign. A hexadecimal one of up to 64 bits is taken as
/// two's
///         complement, as `FormatNumber` writes it; a longer one is limited like a decimal one.
std::int64_t ParseNumber(const char* text, NumberBase base);

/// A number in units of its last decimal, with the point in its place and a digit before it: 5 with two
/// decimals is "0.05". Without decimals there is no point.
///
/// \param decimals  limited to 0 .. `kMostDecimals`
std::string FormatFixedPoint(std::int64_t value, int decimals);

/// The number in units of its last decimal that a text begins with, behind white space: an optional sign,
/// digits, an optional point, and digits. Decimals beyond `decimals` are cut, missing ones are 0; limited to
/// 64 bits.
std::int64_t ParseFixedPoint(const char* text, int decimals);

} // namespace orva::toolkit
