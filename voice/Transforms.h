/// Fast Fourier transforms on 16-bit values with one block exponent.
///
/// Values are truncated after every stage and never saturate: the headroom is measured and a stage that could
/// overflow is halved, which raises the exponent by one. The value of an entry is mantissa x 2^exponent. All
/// work is in place, without allocation.
#pragma once

#include <cstdint>

namespace orva::voice {

/// Forward transform, e^-j, without a factor, of 2^m complex values, 3 <= m <= 7.
/// @param z         [2 x 2^m] real and imaginary parts in turn
/// @param exponent  block exponent of the input
/// @return          block exponent of the output
int FftComplex(std::int16_t* z, int exponent, int m);

/// Forward transform of 2^m real values, 4 <= m <= 8, into 2^(m - 1) bins of real and imaginary part.
/// mantissa x 2^exponent is one half of the true bin. Entry 1, the place of the Nyquist value, is 0.
/// @return  block exponent of the output
int FftReal(std::int16_t* buffer, int exponent, int m);

/// Inverse of 2^(m - 1) bins into 2^m real values, 4 <= m <= 8. Entry 1 is taken as 0; the magnitude of a bin
/// must be below 2^15. mantissa x 2^exponent is one half of the true inverse transform, e^+j with factor
/// 2^-m.
/// @return  block exponent of the output
int FftRealInverse(std::int16_t* buffer, int exponent, int m);

} // namespace orva::voice
