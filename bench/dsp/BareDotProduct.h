/// The yardstick of the filter kernels: an unrolled dot product and nothing around it.
#pragma once

namespace orva::bench {

/// Longest dot product of the yardstick, in floats.
constexpr int kLongestDotProduct = 2048;

/// Dot product of `count` floats, a multiple of 4, in four chains of SSE additions over aligned data.
float BareDotProduct(const float* a, const float* b, int count);

/// Seconds of one dot product of `count` floats over data in the first cache: the best of several runs, here
/// and now.
double MeasureBareDotProduct(int count);

} // namespace orva::bench
