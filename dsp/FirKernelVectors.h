/// The vector forms of the FIR kernels, written once for the two families that differ in how the four lanes
/// of a sum are added up.
///
/// Included by the SSE and SSE3 units only; internal linkage for the reason given in FirKernelLoops.h.
///
/// An `Adder` gives: `Single(v)`, the four lanes of v added up; `Four(a, b, c, d)`, the same for four vectors
/// at once; `Pair(v)`, lanes 0 + 2 and 1 + 3, in the two low lanes. `Four` adds in the same order as
/// `Single`.
#pragma once

#include "dsp/FirKernelLoops.h"

#include <emmintrin.h>

namespace orva::dsp {
namespace {

// Four input samples as floats.

inline __m128 LoadFour(const float* in) {
    return _mm_loadu_ps(in);
}

inline __m128 LoadFour(const std::int32_t* in) {
    return _mm_cvtepi32_ps(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in)));
}

inline __m128 LoadFour(const std::int16_t* in) {
    const __m128i words = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(in));
    return _mm_cvtepi32_ps(_mm_srai_epi32(_mm_unpacklo_epi16(words, words), 16));
}

// Sums to output samples, rounded to nearest and saturated.

inline __m128i RoundedToI16(__m128 sums) {
    const __m128 limited =
        _mm_max_ps(_mm_min_ps(sums, _mm_set1_ps(static_cast<float>(INT16_MAX))), _mm_set1_ps(INT16_MIN));
    return _mm_packs_epi32(_mm_cvtps_epi32(limited), _mm_setzero_si128());
}

/// The two low sums. The upper limit has no single-precision form, so the rounding is done in double.
inline __m128i RoundedToI32(__m128 sums) {
    const __m128d wide = _mm_cvtps_pd(sums);
    return _mm_cvtpd_epi32(_mm_max_pd(_mm_min_pd(wide, _mm_set1_pd(INT32_MAX)), _mm_set1_pd(INT32_MIN)));
}

inline void StoreFour(float* out, __m128 sums) {
    _mm_storeu_ps(out, sums);
}

inline void StoreFour(std::int16_t* out, __m128 sums) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), RoundedToI16(sums));
}

inline void StoreFour(std::int32_t* out, __m128 sums) {
    const __m128i low = RoundedToI32(sums);
    const __m128i high = RoundedToI32(_mm_movehl_ps(sums, sums));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi64(low, high));
}

inline void StoreOne(float* out, __m128 sum) {
    _mm_store_ss(out, sum);
}

inline void StoreOne(std::int16_t* out, __m128 sum) {
    *out = static_cast<std::int16_t>(_mm_cvtsi128_si32(RoundedToI16(sum)));
}

inline void StoreOne(std::int32_t* out, __m128 sum) {
    *out = _mm_cvtsi128_si32(RoundedToI32(sum));
}

/// Adds the products of `floats` taps and history entries, a multiple of 4, to `sum` in order of time slots.
/// `data` is aligned to 16 bytes, `taps` need not be.
inline __m128 Accumulate(__m128 sum, const float* taps, const float* data, std::int32_t floats) {
    for (std::int32_t k = 0; k < floats; k += 4) {
        sum = _mm_add_ps(sum, _mm_mul_ps(_mm_loadu_ps(taps + k), _mm_load_ps(data + k)));
    }
    return sum;
}

/// The same sum in four independent chains, where no other form has to agree with its rounding.
inline __m128 AccumulateFast(const float* taps, const float* data, std::int32_t floats) {
    __m128 sum0 = _mm_setzero_ps();
    __m128 sum1 = _mm_setzero_ps();
    __m128 sum2 = _mm_setzero_ps();
    __m128 sum3 = _mm_setzero_ps();
    std::int32_t k = 0;
    for (; k + 16 <= floats; k += 16) {
        sum0 = _mm_add_ps(sum0, _mm_mul_ps(_mm_loadu_ps(taps + k), _mm_load_ps(data + k)));
        sum1 = _mm_add_ps(sum1, _mm_mul_ps(_mm_loadu_ps(taps + k + 4), _mm_load_ps(data + k + 4)));
        sum2 = _mm_add_ps(sum2, _mm_mul_ps(_mm_loadu_ps(taps + k + 8), _mm_load_ps(data + k + 8)));
        sum3 = _mm_add_ps(sum3, _mm_mul_ps(_mm_loadu_ps(taps + k + 12), _mm_load_ps(data + k + 12)));
    }
    const __m128 sum = _mm_add_ps(_mm_add_ps(sum0, sum2), _mm_add_ps(sum1, sum3));
    return Accumulate(sum, taps + k, data + k, floats - k);
}

template <class Adder>
struct VectorMono {
    static constexpr int kChannels = 1;
    using Sum = __m128;

    static Sum Dot(const float* taps, const float* data, std::int32_t count) {
        return Adder::Single(AccumulateFast(taps, data, count));
    }

    template <class Out>
    static void Store(Out* out, Sum sum) {
        StoreOne(out, sum);
    }
};

template <class Adder>
struct VectorPair {
    static constexpr int kChannels = 2;
    using Sum = __m128;

    static Sum Dot(const float* taps, const float* data, std::int32_t count) {
        return Adder::Pair(AccumulateFast(taps, data, 2 * count));
    }

    static void Store(float* out, Sum sum) { _mm_storel_pi(reinterpret_cast<__m64*>(out), sum); }
};

/// Sums of four outputs under way, one chain each.
struct FourSums {
    __m128 sum[4];
};

/// Adds `floats` history entries to all four sums. Output j lies one time step behind output j - 1, so its
/// taps start `tapStep` floats further down; the history is loaded once for the four. All in the order of
/// `Accumulate`.
template <std::int32_t tapStep>
FourSums AccumulateFour(FourSums sums, const float* taps, const float* data, std::int32_t floats) {
    __m128 sum0 = sums.sum[0];
    __m128 sum1 = sums.sum[1];
    __m128 sum2 = sums.sum[2];
    __m128 sum3 = sums.sum[3];
    for (std::int32_t k = 0; k < floats; k += 4) {
        const __m128 samples = _mm_load_ps(data + k);
        sum0 = _mm_add_ps(sum0, _mm_mul_ps(_mm_loadu_ps(taps + k), samples));
        sum1 = _mm_add_ps(sum1, _mm_mul_ps(_mm_loadu_ps(taps + k - tapStep), samples));
        sum2 = _mm_add_ps(sum2, _mm_mul_ps(_mm_loadu_ps(taps + k - 2 * tapStep), samples));
        sum3 = _mm_add_ps(sum3, _mm_mul_ps(_mm_loadu_ps(taps + k - 3 * tapStep), samples));
    }
    return {{sum0, sum1, sum2, sum3}};
}

inline __m128 MultiplyAdd(__m128 sum, const float* taps, __m128 samples) {
    return _mm_add_ps(sum, _mm_mul_ps(_mm_loadu_ps(taps), samples));
}

/// Four outputs in one pass over the history. Their samples fill one aligned vector of it, the only one that
/// differs between the four: it holds 1, 2, 3 and 4 new samples in front of older ones.
template <class Adder, class Out, class In>
void FilterFour(FirState& state, Out* out, const In* in) {
    const std::int32_t slot = state.length - 1 - state.position;
    const float* taps = state.taps + state.position;
    const __m128 fresh = LoadFour(in);
    const __m128 old = _mm_load_ps(state.delayLine + slot);
    const __m128 thirdAndOld = _mm_shuffle_ps(fresh, old, _MM_SHUFFLE(3, 3, 2, 2));

    FourSums sums{{_mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps()}};
    sums = AccumulateFour<1>(sums, taps, state.delayLine, slot);
    sums.sum[0] = MultiplyAdd(sums.sum[0], taps + slot, _mm_move_ss(old, fresh));
    sums.sum[1] =
        MultiplyAdd(sums.sum[1], taps + slot - 1, _mm_shuffle_ps(fresh, old, _MM_SHUFFLE(3, 2, 1, 0)));
    sums.sum[2] = MultiplyAdd(sums.sum[2], taps + slot - 2,
                              _mm_shuffle_ps(fresh, thirdAndOld, _MM_SHUFFLE(2, 0, 1, 0)));
    sums.sum[3] = MultiplyAdd(sums.sum[3], taps + slot - 3, fresh);
    sums = AccumulateFour<1>(sums, taps + slot + 4, state.delayLine + slot + 4, state.length - slot - 4);

    _mm_store_ps(state.delayLine + slot, fresh);
    state.position = state.position > 3 ? state.position - 4 : state.length - 1;
    StoreFour(out, Adder::Four(sums.sum[0], sums.sum[1], sums.sum[2], sums.sum[3]));
}

/// Plain mode: four outputs a pass wherever the history stands on a vector, single ones before and after,
/// with the same sums in the same order, so that the result does not depend on how a signal is cut into
/// blocks.
template <class Adder, class Out, class In>
std::int32_t RunPlainVector(FirState& state, Out* out, const In* in, std::int32_t count) {
    std::int32_t n = 0;
    while (n < count) {
        const bool onVector = (state.position & 3) == 3;
        if (onVector && count - n >= 4) {
            FilterFour<Adder>(state, out + n, in + n);
            n += 4;
        } else {
            const std::int32_t position = PushSample<1>(state, in + n, state.length);
            StoreOne(out + n, Adder::Single(Accumulate(_mm_setzero_ps(), state.taps + position,
                                                       state.delayLine, state.length)));
            ++n;
        }
    }
    return n;
}

/// As `FilterFour` for pairs. Four pairs fill two vectors of the history.
template <class Adder>
void FilterFourPairs(FirState& state, float* out, const float* in) {
    const std::int32_t slot = 2 * (state.length - 1 - state.position);
    const float* taps = state.taps + 2 * state.position;
    float* history = state.delayLine + slot;
    const __m128 fresh0 = _mm_loadu_ps(in);
    const __m128 fresh1 = _mm_loadu_ps(in + 4);
    const __m128 old0 = _mm_load_ps(history);
    const __m128 old1 = _mm_load_ps(history + 4);

    FourSums sums{{_mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps(), _mm_setzero_ps()}};
    sums = AccumulateFour<2>(sums, taps, state.delayLine, slot);
    const float* nearTaps = taps + slot;
    sums.sum[0] = MultiplyAdd(sums.sum[0], nearTaps, _mm_shuffle_ps(fresh0, old0, _MM_SHUFFLE(3, 2, 1, 0)));
    sums.sum[0] = MultiplyAdd(sums.sum[0], nearTaps + 4, old1);
    sums.sum[1] = MultiplyAdd(sums.sum[1], nearTaps - 2, fresh0);
    sums.sum[1] = MultiplyAdd(sums.sum[1], nearTaps + 2, old1);
    sums.sum[2] = MultiplyAdd(sums.sum[2], nearTaps - 4, fresh0);
    sums.sum[2] = MultiplyAdd(sums.sum[2], nearTaps, _mm_shuffle_ps(fresh1, old1, _MM_SHUFFLE(3, 2, 1, 0)));
    sums.sum[3] = MultiplyAdd(sums.sum[3], nearTaps - 6, fresh0);
    sums.sum[3] = MultiplyAdd(sums.sum[3], nearTaps - 2, fresh1);
    sums = AccumulateFour<2>(sums, nearTaps + 8, history + 8, 2 * state.length - slot - 8);

    _mm_store_ps(history, fresh0);
    _mm_store_ps(history + 4, fresh1);
    state.position = state.position > 3 ? state.position - 4 : state.length - 1;
    _mm_storeu_ps(out, _mm_movelh_ps(Adder::Pair(sums.sum[0]), Adder::Pair(sums.sum[1])));
    _mm_storeu_ps(out + 4, _mm_movelh_ps(Adder::Pair(sums.sum[2]), Adder::Pair(sums.sum[3])));
}

template <class Adder>
std::int32_t RunPlainPairs(FirState& state, float* out, const float* in, std::int32_t count) {
    std::int32_t n = 0;
    while (n < count) {
        const bool onVectors = (state.position & 3) == 3;
        if (onVectors && count - n >= 4) {
            FilterFourPairs<Adder>(state, out + 2 * n, in + 2 * n);
            n += 4;
        } else {
            const std::int32_t position = PushSample<2>(state, in + 2 * n, state.length);
            const __m128 sum = Adder::Pair(
                Accumulate(_mm_setzero_ps(), state.taps + 2 * position, state.delayLine, 2 * state.length));
            _mm_storel_pi(reinterpret_cast<__m64*>(out + 2 * n), sum);
            ++n;
        }
    }
    return n;
}

template <class Adder>
FirKernelTable VectorTable() {
    using Family = VectorMono<Adder>;
    FirKernelTable table{};
    table.plain = {RunPlainVector<Adder>, RunPlainVector<Adder>, RunPlainVector<Adder>, RunPlainVector<Adder>,
                   RunPlainVector<Adder>, RunPlainVector<Adder>, RunPlainVector<Adder>};
    table.interpolating = {RunInterpolating<Family>, RunInterpolating<Family>, RunInterpolating<Family>,
                           RunInterpolating<Family>, RunInterpolating<Family>, RunInterpolating<Family>,
                           RunInterpolating<Family>};
    table.decimating = {RunDecimating<Family>, RunDecimating<Family>, RunDecimating<Family>,
                        RunDecimating<Family>, RunDecimating<Family>, RunDecimating<Family>,
                        RunDecimating<Family>};
    return table;
}

} // namespace
} // namespace orva::dsp
