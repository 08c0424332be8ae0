#include "bench/dsp/BareDotProduct.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <xmmintrin.h>

#include <benchmark/benchmark.h>

namespace orva::bench {
namespace {

constexpr int kRuns = 20;
/// Floats a run, whatever the length: about 30 microseconds.
constexpr int kFloatsPerRun = 1 << 17;

} // namespace

float BareDotProduct(const float* a, const float* b, int count) {
    __m128 sums[4] = {_mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps()};
    int i = 0;
    for (; i + 16 <= count; i += 16) {
        sums[0] = _mm_add_ps(sums[0], _mm_mul_ps(_mm_load_ps(a + i), _mm_load_ps(b + i)));
        sums[1] = _mm_add_ps(sums[1], _mm_mul_ps(_mm_load_ps(a + i + 4), _mm_load_ps(b + i + 4)));
        sums[2] = _mm_add_ps(sums[2], _mm_mul_ps(_mm_load_ps(a + i + 8), _mm_load_ps(b + i + 8)));
        sums[3] = _mm_add_ps(sums[3], _mm_mul_ps(_mm_load_ps(a + i + 12), _mm_load_ps(b + i + 12)));
    }
    for (; i < count; i += 4) {
        sums[0] = _mm_add_ps(sums[0], _mm_mul_ps(_mm_load_ps(a + i), _mm_load_ps(b + i)));
    }
    const __m128 sum = _mm_add_ps(_mm_add_ps(sums[0], sums[1]), _mm_add_ps(sums[2], sums[3]));
    const __m128 pair = _mm_add_ps(sum, _mm_movehl_ps(sum, sum));
    return _mm_cvtss_f32(_mm_add_ss(pair, _mm_shuffle_ps(pair, pair, 1)));
}

double MeasureBareDotProduct(int count) {
    alignas(64) static float a[kLongestDotProduct];
    alignas(64) static float b[kLongestDotProduct];
    std::fill_n(a, kLongestDotProduct, 0.5F);
    std::fill_n(b, kLongestDotProduct, 0.25F);
    const int repetitions = kFloatsPerRun / count;
    double best = std::numeric_limits<double>::max();
    for (int run = 0; run < kRuns; ++run) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < repetitions; ++i) {
            benchmark::DoNotOptimize(BareDotProduct(a, b, count));
            benchmark::ClobberMemory();
        }
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        best = std::min(best, elapsed.count() / repetitions);
    }
    return best;
}

} // namespace orva::bench
