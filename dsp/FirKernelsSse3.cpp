#include "dsp/FirKernelVectors.h"

#include <pmmintrin.h>

namespace orva::dsp {
namespace {

struct HorizontalAdder {
    static __m128 Single(__m128 v) {
        const __m128 pair = _mm_hadd_ps(v, v);
        return _mm_hadd_ps(pair, pair);
    }

    static __m128 Four(__m128 a, __m128 b, __m128 c, __m128 d) {
        return _mm_hadd_ps(_mm_hadd_ps(a, b), _mm_hadd_ps(c, d));
    }
};

} // namespace

FirKernelTable FirKernelsSse3() {
    return VectorTable<HorizontalAdder>();
}

} // namespace orva::dsp
