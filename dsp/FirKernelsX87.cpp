#include "dsp/FirKernelLoops.h"

#include <cmath>

namespace orva::dsp {
namespace {

// The sums are kept in the floating-point stack's extended form, 64 bits of mantissa.

void StoreSample(float* out, long double value) {
    *out = static_cast<float>(value);
}

/// Rounds in the current mode and saturates at the limits of `Out`.
template <class Out>
void StoreSaturated(Out* out, long double value, Out lowest, Out highest) {
    if (value >= static_cast<long double>(highest)) {
        *out = highest;
    } else if (value <= static_cast<long double>(lowest)) {
        *out = lowest;
    } else {
        *out = static_cast<Out>(std::llrint(value));
    }
}

void StoreSample(std::int16_t* out, long double value) {
    StoreSaturated<std::int16_t>(out, value, INT16_MIN, INT16_MAX);
}

void StoreSample(std::int32_t* out, long double value) {
    StoreSaturated<std::int32_t>(out, value, INT32_MIN, INT32_MAX);
}

long double Product(float tap, float sample) {
    return static_cast<long double>(tap) * static_cast<long double>(sample);
}

struct X87Mono {
    static constexpr int kChannels = 1;
    using Sum = long double;

    static Sum Dot(const float* taps, const float* data, std::int32_t count) {
        Sum sum = 0.0L;
        for (std::int32_t k = 0; k < count; k += 4) {
            sum += Product(taps[k], data[k]) + Product(taps[k + 1], data[k + 1]) +
                   Product(taps[k + 2], data[k + 2]) + Product(taps[k + 3], data[k + 3]);
        }
        return sum;
    }

    template <class Out>
    static void Store(Out* out, const Sum& sum) {
        StoreSample(out, sum);
    }
};

struct X87Pair {
    static constexpr int kChannels = 2;
    struct Sum {
        long double first;
        long double second;
    };

    static Sum Dot(const float* taps, const float* data, std::int32_t count) {
        Sum sum{0.0L, 0.0L};
        for (std::int32_t k = 0; k < 2 * count; k += 8) {
            sum.first += Product(taps[k], data[k]) + Product(taps[k + 2], data[k + 2]) +
                         Product(taps[k + 4], data[k + 4]) + Product(taps[k + 6], data[k + 6]);
            sum.second += Product(taps[k + 1], data[k + 1]) + Product(taps[k + 3], data[k + 3]) +
                          Product(taps[k + 5], data[k + 5]) + Product(taps[k + 7], data[k + 7]);
        }
        return sum;
    }

    template <class Out>
    static void Store(Out* out, const Sum& sum) {
        StoreSample(out, sum.first);
        StoreSample(out + 1, sum.second);
    }
};

template <class Family>
FirKernelTable TableOf() {
    FirKernelTable table{};
    table.plain = {RunPlain<Family>, RunPlain<Family>, RunPlain<Family>, RunPlain<Family>,
                   RunPlain<Family>, RunPlain<Family>, RunPlain<Family>};
    table.interpolating = {RunInterpolating<Family>, RunInterpolating<Family>, RunInterpolating<Family>,
                           RunInterpolating<Family>, RunInterpolating<Family>, RunInterpolating<Family>,
                           RunInterpolating<Family>};
    table.decimating = {RunDecimating<Family>, RunDecimating<Family>, RunDecimating<Family>,
                        RunDecimating<Family>, RunDecimating<Family>, RunDecimating<Family>,
                        RunDecimating<Family>};
    return table;
}

} // namespace

FirKernelTable FirKernelsX87() {
    return TableOf<X87Mono>();
}

FirKernelTable FirPairKernelsX87() {
    return TableOf<X87Pair>();
}

} // namespace orva::dsp
