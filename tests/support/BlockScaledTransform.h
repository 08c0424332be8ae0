/// Inverse real transform that keeps book of the block exponent as a 16-bit transform would.
#pragma once

#include <complex>
#include <span>

namespace orva::test {

/// Writes N = 2^stages real values, N <= 256, to `values`.
///
/// In and out are mantissas: numbers that a 16-bit transform would hold in -32768..32767, not rounded here.
/// The result times 2^(returned exponent) is one half of the inverse discrete Fourier transform (with its
/// 1/N, e^+j) of the input times 2^exponent. spectrum  bins 0..N/2 - 1, [N/2]; the imaginary part of bin 0 is
/// not used and the bin at N/2 is zero values  [N]
int InverseRealTransform(std::span<const std::complex<double>> spectrum, std::span<double> values,
                         int exponent, int stages);

/// Forward discrete Fourier transform, e^-j, without scaling, in place. [power of two, <= 256]
void ForwardTransform(std::span<std::complex<double>> values);

} // namespace orva::test
