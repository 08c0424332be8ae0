#include "dsp/FirKernelVectors.h"

namespace orva::dsp {
namespace {

struct ShuffleAdder {
    static __m128 Pair(__m128 v) { return _mm_add_ps(v, _mm_movehl_ps(v, v)); }

    static __m128 Single(__m128 v) {
        const __m128 pair = Pair(v);
        return _mm_add_ss(pair, _mm_shuffle_ps(pair, pair, 1));
    }

    static __m128 Four(__m128 a, __m128 b, __m128 c, __m128 d) {
        // Lanes 0 + 2 and 1 + 3 of a and c, then of b and d: (a02, c02, a13, c13).
        const __m128 ac = _mm_add_ps(_mm_unpacklo_ps(a, c), _mm_unpackhi_ps(a, c));
        const __m128 bd = _mm_add_ps(_mm_unpacklo_ps(b, d), _mm_unpackhi_ps(b, d));
        return _mm_add_ps(_mm_unpacklo_ps(ac, bd), _mm_unpackhi_ps(ac, bd));
    }
};

} // namespace

FirKernelTable FirKernelsSse() {
    return VectorTable<ShuffleAdder>();
}

FirPairKernels FirPairKernelsSse() {
    using Family = VectorPair<ShuffleAdder>;
    return {RunPlainPairs<ShuffleAdder>, RunInterpolating<Family>, RunDecimating<Family>};
}

} // namespace orva::dsp
