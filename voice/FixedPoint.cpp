#include "voice/FixedPoint.h"

namespace orva::voice {

Scaled16 DivBlock(Scaled32 numerator, Scaled16 denominator) {
    const bool negative = (numerator.mantissa < 0) != (denominator.mantissa < 0);
    std::int64_t n = numerator.mantissa;
    std::int32_t d = denominator.mantissa;
    n = n < 0 ? -n : n;
    d = d < 0 ? -d : d;

    int exponent = numerator.exponent - denominator.exponent;
    // Once is enough for normalised mantissas, but for -1 by one half.
    while (std::int64_t{d} * 65536 <= n) {
        n >>= 1;
        ++exponent;
    }
    const auto magnitude = static_cast<std::int32_t>((n / d) >> 1);
    if (magnitude == 0) {
        return {0, 0};
    }
    std::int32_t quotient = To16(magnitude) * 65536;
    if (negative) {
        quotient = -quotient;
    }
    const int shift = Normalize(quotient);
    return {High16(quotient), exponent - shift};
}

std::int32_t Log2(std::int16_t value, int exponent) {
    // A polynomial around the mantissa 2^-0.5, whose own logarithm is the last constant.
    constexpr std::int16_t kCentre = 23170;
    constexpr std::int16_t kC1 = -23636;
    constexpr std::int16_t kC2 = 22285;
    constexpr std::int16_t kC3 = -23636;
    constexpr std::int16_t kC4 = 16714;
    constexpr std::int16_t kC5 = -16384;

    std::int32_t mantissa = ToHigh(value);
    exponent -= Normalize(mantissa);
    const std::int16_t d = To16(High16(mantissa) - kCentre);

    std::int32_t y = MulRound(kC1, d);
    y = MulRound(High16(Add(y, ToHigh(kC2))), d);
    y = MulRound(High16(Add(y, ToHigh(kC3))), d);
    y = MulRound(High16(Add(y >> 1, ToHigh(kC4))), d);
    y = Add(Shift(y, 2), ToHigh(kC5));
    return Add(y >> 15, exponent * 65536);
}

Scaled32 Exp2(std::int32_t x) {
    constexpr std::int16_t kC0 = 22370;
    constexpr std::int16_t kC1 = 20171;
    constexpr std::int16_t kC2 = 29100;
    constexpr std::int16_t kC3 = 31487;
    constexpr std::int16_t kC4 = 22713;
    constexpr std::int16_t kC5 = 16384;

    const std::int16_t f = To16(Low16(x) >> 1);
    std::int32_t y = MulRound(kC0, f);
    y = MulRound(High16(Add(y >> 3, ToHigh(kC1))), f);
    y = MulRound(High16(Add(y >> 3, ToHigh(kC2) >> 1)), f);
    y = MulRound(High16(Add(y >> 2, ToHigh(kC3) >> 1)), f);
    y = MulRound(High16(Add(y >> 1, ToHigh(kC4))), f);
    y = Add(y >> 1, ToHigh(kC5));
    return {y, High16(x) + 1};
}

Scaled16 Sqrt(Scaled32 x) {
    constexpr std::int16_t kC0 = -6538;
    constexpr std::int16_t kC1 = 29003;
    constexpr std::int16_t kC2 = 10303;
    constexpr std::int16_t kRootHalf = 23170;

    if (x.mantissa == 0) {
        return {0, x.exponent};
    }
    std::int32_t mantissa = x.mantissa;
    const int exponent = x.exponent - Normalize(mantissa);
    const std::int16_t m = High16(mantissa);

    std::int32_t y = MacRound(ToHigh(kC1), kC0, m);
    y = MacRound(ToHigh(kC2), High16(y), m);
    if (exponent % 2 != 0) {
        y = MulRound(High16(y), kRootHalf);
    }
    return {High16(y), (exponent + 1) >> 1};
}

} // namespace orva::voice
