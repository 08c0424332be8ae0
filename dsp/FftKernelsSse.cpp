#include "dsp/FftKernels.h"

#include <emmintrin.h>

namespace orva::dsp {
namespace {

// A vector holds two complex values, (re, im, re, im).

/// Signs of lanes 0 .. 3, to be flipped by exclusive or.
__m128 SignMask(bool lane0, bool lane1, bool lane2, bool lane3) {
    constexpr int kSign = INT32_MIN;
    return _mm_castsi128_ps(
        _mm_setr_epi32(lane0 ? kSign : 0, lane1 ? kSign : 0, lane2 ? kSign : 0, lane3 ? kSign : 0));
}

__m128 SwapParts(__m128 v) {
    return _mm_shuffle_ps(v, v, _MM_SHUFFLE(2, 3, 0, 1));
}

__m128 SwapValues(__m128 v) {
    return _mm_shuffle_ps(v, v, _MM_SHUFFLE(1, 0, 3, 2));
}

__m128 Reversed(__m128 v) {
    return _mm_shuffle_ps(v, v, _MM_SHUFFLE(0, 1, 2, 3));
}

void StorePairs(const FftState& state, std::uint32_t pair, __m128 windowed) {
    _mm_storel_pi(reinterpret_cast<__m64*>(state.work + state.bitReversal[pair]), windowed);
    _mm_storeh_pi(reinterpret_cast<__m64*>(state.work + state.bitReversal[pair + 1]), windowed);
}

/// The window's first half is read upward for the first half of the block and downward for the second.
void InputSse(const FftState& state, const float* in) {
    const std::uint32_t half = state.size / 2;
    for (std::uint32_t i = 0; i < half; i += 4) {
        StorePairs(state, i / 2, _mm_mul_ps(_mm_loadu_ps(in + i), _mm_loadu_ps(state.window + i)));
    }
    for (std::uint32_t i = half; i < state.size; i += 4) {
        const __m128 weights = Reversed(_mm_loadu_ps(state.window + state.size - 4 - i));
        StorePairs(state, i / 2, _mm_mul_ps(_mm_loadu_ps(in + i), weights));
    }
}

/// The two stages whose twiddles are 1 and -j, over four complex values.
void FirstStages(float* quad) {
    const __m128 negateSecond = SignMask(false, false, true, true);
    const __m128 ab = _mm_load_ps(quad);
    const __m128 cd = _mm_load_ps(quad + 4);
    const __m128 first = _mm_add_ps(_mm_movelh_ps(ab, ab), _mm_xor_ps(_mm_movehl_ps(ab, ab), negateSecond));
    const __m128 second = _mm_add_ps(_mm_movelh_ps(cd, cd), _mm_xor_ps(_mm_movehl_ps(cd, cd), negateSecond));
    // The difference of c and d is turned by -j: (im, -re).
    const __m128 turned = _mm_xor_ps(_mm_shuffle_ps(second, second, _MM_SHUFFLE(2, 3, 1, 0)),
                                     SignMask(false, false, false, true));
    _mm_store_ps(quad, _mm_add_ps(first, turned));
    _mm_store_ps(quad + 4, _mm_sub_ps(first, turned));
}

/// Two twiddles, `stride` pairs apart.
__m128 LoadTwiddles(const float* twiddles, std::size_t stride) {
    const __m128 first = _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(twiddles));
    return _mm_loadh_pi(first, reinterpret_cast<const __m64*>(twiddles + 2 * stride));
}

/// (c re + s im, c im - s re) for twiddles (-s, c).
__m128 Turn(__m128 values, __m128 twiddles) {
    const __m128 cosines = _mm_shuffle_ps(twiddles, twiddles, _MM_SHUFFLE(3, 3, 1, 1));
    const __m128 sines = _mm_shuffle_ps(twiddles, twiddles, _MM_SHUFFLE(2, 2, 0, 0));
    const __m128 signedSines = _mm_xor_ps(sines, SignMask(true, false, true, false));
    return _mm_add_ps(_mm_mul_ps(cosines, values), _mm_mul_ps(signedSines, SwapParts(values)));
}

void Group(const FftState& state, float* group, std::uint32_t halfSpan, float* lowerTarget) {
    // A transform has eight points at least. NOLINTNEXTLINE(clang-analyzer-core.DivideZero)
    const std::size_t stride = state.size / (2 * halfSpan);
    const float* twiddles = state.twiddles;
    for (std::uint32_t k = 0; k < halfSpan; k += 2, twiddles += 4 * stride) {
        const __m128 a = _mm_load_ps(group + 2 * k);
        const __m128 b = _mm_load_ps(group + 2 * (halfSpan + k));
        const __m128 t = Turn(b, LoadTwiddles(twiddles, stride));
        _mm_store_ps(group + 2 * k, _mm_add_ps(a, t));
        _mm_store_ps(lowerTarget + 2 * k, _mm_sub_ps(a, t));
    }
}

struct SplitResult {
    __m128 low;  ///< bins k, k + 1
    __m128 high; ///< bins N/2 - k, N/2 - k - 1
};

/// Bins of the real spectrum from Z[k], Z[k+1] and Z[N/2-k], Z[N/2-k-1].
SplitResult SplitBins(__m128 low, __m128 high, __m128 twiddles) {
    const __m128 conjugate = SignMask(false, true, false, true);
    const __m128 mirrored = _mm_xor_ps(high, conjugate);
    const __m128 a = _mm_add_ps(low, mirrored);
    const __m128 b = _mm_sub_ps(low, mirrored);
    // -j exp(-j t) = -sin t - j cos t
    const __m128 re = _mm_shuffle_ps(twiddles, twiddles, _MM_SHUFFLE(2, 2, 0, 0));
    const __m128 cosines = _mm_shuffle_ps(twiddles, twiddles, _MM_SHUFFLE(3, 3, 1, 1));
    const __m128 crossed = _mm_mul_ps(_mm_xor_ps(cosines, conjugate), SwapParts(b));
    const __m128 rotated = _mm_add_ps(_mm_mul_ps(re, b), crossed);
    return {_mm_add_ps(a, rotated), _mm_xor_ps(_mm_sub_ps(a, rotated), conjugate)};
}

void SplitReal(const FftState& state) {
    const std::uint32_t half = state.size / 2;
    const std::uint32_t quarter = state.size / 4;
    float* work = state.work;
    const float* upper = state.scratch; // Z[N/4] and on
    work[0] += work[1];
    work[1] = 0.0F;

    const __m128 zero = _mm_setzero_ps();
    const SplitResult first =
        SplitBins(_mm_loadl_pi(zero, reinterpret_cast<const __m64*>(work + 2)),
                  _mm_loadl_pi(zero, reinterpret_cast<const __m64*>(upper + half - 2)),
                  _mm_loadl_pi(zero, reinterpret_cast<const __m64*>(state.twiddles + 2)));
    _mm_storel_pi(reinterpret_cast<__m64*>(work + 2), first.low);
    _mm_storel_pi(reinterpret_cast<__m64*>(work + 2 * (half - 1)), first.high);
    for (std::uint32_t k = 2; k < quarter; k += 2) {
        const __m128 high = SwapValues(_mm_loadu_ps(upper + 2 * (quarter - k - 1)));
        const SplitResult bins =
            SplitBins(_mm_load_ps(work + 2 * k), high, _mm_load_ps(state.twiddles + 2 * k));
        _mm_store_ps(work + 2 * k, bins.low);
        _mm_storeu_ps(work + 2 * (half - k - 1), SwapValues(bins.high));
    }
    work[half] = 2.0F * upper[0];
    work[half + 1] = 2.0F * upper[1];
}

void TransformSse(const FftState& state) {
    const std::uint32_t points = state.size / 2;
    for (std::uint32_t i = 0; i < points; i += 4) {
        FirstStages(state.work + 2 * i);
    }
    // The stages go through the memory forward and backward in turn: each begins with what the last one left
    // in the cache.
    bool forward = false;
    for (std::uint32_t span = 8; span < points; span *= 2, forward = !forward) {
        for (std::uint32_t g = 0; g < points; g += span) {
            float* group = state.work + 2 * (forward ? g : points - span - g);
            Group(state, group, span / 2, group + span);
        }
    }
    Group(state, state.work, points / 2, state.scratch);
    SplitReal(state);
}

constexpr float kLowestPower = 1e-30F;

void DecibelsSse(const FftState& state, float* out) {
    const __m128i bias = _mm_set1_epi32(127);
    const __m128i indexMask = _mm_set1_epi32(511);
    for (std::uint32_t bin = state.size / 2; bin > 0;) {
        bin -= 4;
        const __m128 low = _mm_load_ps(state.work + 2 * bin);
        const __m128 high = _mm_load_ps(state.work + 2 * bin + 4);
        const __m128 re = _mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0));
        const __m128 im = _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1));
        const __m128 power =
            _mm_max_ps(_mm_add_ps(_mm_mul_ps(re, re), _mm_mul_ps(im, im)), _mm_set1_ps(kLowestPower));
        const __m128i bits = _mm_castps_si128(power);
        const __m128 exponent = _mm_cvtepi32_ps(_mm_sub_epi32(_mm_srli_epi32(bits, 23), bias));
        alignas(16) std::int32_t index[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(index),
                        _mm_and_si128(_mm_srli_epi32(bits, 14), indexMask));
        const __m128 mantissa = _mm_setr_ps(state.log2Table[index[0]], state.log2Table[index[1]],
                                            state.log2Table[index[2]], state.log2Table[index[3]]);
        const __m128 decibels =
            _mm_mul_ps(_mm_add_ps(exponent, mantissa), _mm_set1_ps(state.decibelsPerOctave));
        _mm_storeu_ps(out + bin,
                      _mm_max_ps(_mm_min_ps(decibels, _mm_setzero_ps()), _mm_set1_ps(state.floorDecibels)));
    }
}

} // namespace

FftKernels FftKernelsSse() {
    return {InputSse, TransformSse, DecibelsSse};
}

} // namespace orva::dsp
