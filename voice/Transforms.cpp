#include "voice/Transforms.h"

#include "voice/CosineTable.h"
#include "voice/FixedPoint.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace orva::voice {

namespace {

constexpr int kLargestLog2 = 7;
constexpr int kLargestPoints = 1 << kLargestLog2;

constexpr std::array<std::uint8_t, kLargestPoints> MakeReversed() {
    std::array<std::uint8_t, kLargestPoints> reversed{};
    for (unsigned i = 0; i < kLargestPoints; ++i) {
        unsigned mirror = 0;
        for (unsigned bit = 0; bit < kLargestLog2; ++bit) {
            mirror |= ((i >> bit) & 1U) << (kLargestLog2 - 1 - bit);
        }
        reversed[i] = static_cast<std::uint8_t>(mirror);
    }
    return reversed;
}

constexpr std::array<std::uint8_t, kLargestPoints> kReversed = MakeReversed();

// The left shifts that the largest squared magnitude allows, less one: -1 for magnitudes of 2^15 and more, at
// least 2 for magnitudes below 2^14, which a stage may double.
int MeasureHeadroom(const std::int16_t* z, std::ptrdiff_t points) {
    constexpr std::uint32_t kFloor = 0x1000000;
    std::uint32_t largest = kFloor;
    for (std::ptrdiff_t i = 0; i < points; ++i) {
        const auto re = std::int32_t{z[2 * i]};
        const auto im = std::int32_t{z[2 * i + 1]};
        largest =
            std::max(largest, static_cast<std::uint32_t>(re * re) + static_cast<std::uint32_t>(im * im));
    }
    return NormShift(static_cast<std::int32_t>(std::min<std::uint32_t>(largest, kMax32))) - 1;
}

void ReverseBits(std::int16_t* z, int m) {
    const std::ptrdiff_t points = std::ptrdiff_t{1} << m;
    for (std::ptrdiff_t i = 0; i < points; ++i) {
        const std::ptrdiff_t j = kReversed[static_cast<std::size_t>(i)] >> (kLargestLog2 - m);
        if (i < j) {
            std::swap(z[2 * i], z[2 * j]);
            std::swap(z[2 * i + 1], z[2 * j + 1]);
        }
    }
}

// Butterflies of neighbouring points; `scale` is 0, -1 or -2.
void FirstStage(std::int16_t* z, std::ptrdiff_t points, int scale) {
    for (std::ptrdiff_t i = 0; i < points; i += 2) {
        std::int16_t* p = z + 2 * i;
        const int re = p[0];
        const int im = p[1];
        const int otherRe = p[2];
        const int otherIm = p[3];
        p[0] = To16((re + otherRe) >> -scale);
        p[1] = To16((im + otherIm) >> -scale);
        p[2] = To16((re - otherRe) >> -scale);
        p[3] = To16((im - otherIm) >> -scale);
    }
}

// Butterflies at distance `half`. Operands are halved, so that sums fit 32 bits; `halved` leaves them so.
void LaterStage(std::int16_t* z, std::ptrdiff_t points, std::ptrdiff_t half, int stride, bool halved) {
    const int shift = halved ? 16 : 15;
    int angle = 0;
    for (std::ptrdiff_t k = 0; k < half; ++k, angle += stride) {
        const std::int32_t c = CosAt(angle);
        const std::int32_t s = CosAt(angle + kCosTableSize / 4);
        for (std::ptrdiff_t i = k; i < points; i += 2 * half) {
            std::int16_t* p = z + 2 * i;
            std::int16_t* q = p + 2 * half;
            const std::int32_t turnedRe = q[0] * c - q[1] * s;
            const std::int32_t turnedIm = q[0] * s + q[1] * c;
            const std::int32_t re = p[0] * 0x8000;
            const std::int32_t im = p[1] * 0x8000;
            p[0] = To16(Add(re, turnedRe) >> shift);
            p[1] = To16(Add(im, turnedIm) >> shift);
            q[0] = To16(Sub(re, turnedRe) >> shift);
            q[1] = To16(Sub(im, turnedIm) >> shift);
        }
    }
}

enum class Direction { Forward, Inverse };

// Between the spectrum of a real signal and that of its even and odd samples taken as one complex signal; the
// same pass either way but for the sign of the cosine, and for the inverse the sign of the imaginary results,
// which makes the forward transform behind it an inverse one. Everything leaves at half its size.
void SplitPass(std::int16_t* buffer, int m, Direction direction) {
    const std::ptrdiff_t points = std::ptrdiff_t{1} << (m - 1);
    const int stride = kCosTableSize >> m;
    const bool inverse = direction == Direction::Inverse;

    int angle = stride;
    for (std::ptrdiff_t k = 1; k < points / 2; ++k, angle += stride) {
        std::int16_t* p = buffer + 2 * k;
        std::int16_t* q = buffer + 2 * (points - k);
        const std::int32_t sumRe = p[0] + q[0];
        const std::int32_t sumIm = p[1] - q[1];
        const std::int32_t differenceRe = p[0] - q[0];
        const std::int32_t differenceIm = p[1] + q[1];
        const std::int64_t c = inverse ? -CosAt(angle) : CosAt(angle);
        const std::int64_t s = CosAt(angle + kCosTableSize / 4);
        const std::int64_t turnedRe = differenceIm * c + differenceRe * s;
        const std::int64_t turnedIm = differenceIm * s - differenceRe * c;
        // Two bits for the quarter of the sums, fifteen for the twiddle.
        constexpr int kShift = 17;
        const std::int64_t re = std::int64_t{sumRe} * 0x8000;
        const std::int64_t im = std::int64_t{sumIm} * 0x8000;
        const auto lowIm = static_cast<std::int32_t>((im + turnedIm) >> kShift);
        const auto highIm = static_cast<std::int32_t>((turnedIm - im) >> kShift);
        p[0] = To16(static_cast<std::int32_t>((re + turnedRe) >> kShift));
        p[1] = To16(inverse ? -lowIm : lowIm);
        q[0] = To16(static_cast<std::int32_t>((re - turnedRe) >> kShift));
        q[1] = To16(inverse ? -highIm : highIm);
    }
    std::int16_t* middle = buffer + points;
    const int middleIm = inverse ? middle[1] : -middle[1];
    middle[0] = To16(middle[0] >> 1);
    middle[1] = To16(middleIm >> 1);
}

} // namespace

int FftComplex(std::int16_t* z, int exponent, int m) {
    const std::ptrdiff_t points = std::ptrdiff_t{1} << m;
    int headroom = MeasureHeadroom(z, points);
    const int firstScale = headroom < 0 ? -2 : headroom < 2 ? -1 : 0;
    ReverseBits(z, m);
    FirstStage(z, points, firstScale);
    exponent -= firstScale;

    int stride = kCosTableSize / 4;
    std::ptrdiff_t half = 2;
    for (int stage = 1; stage < m; ++stage) {
        headroom = stage % 2 == 0 ? MeasureHeadroom(z, points) : headroom - 2;
        const bool halved = headroom < 2;
        LaterStage(z, points, half, stride, halved);
        exponent += halved ? 1 : 0;
        stride >>= 1;
        half <<= 1;
    }
    return exponent;
}

int FftReal(std::int16_t* buffer, int exponent, int m) {
    exponent = FftComplex(buffer, exponent, m - 1);
    buffer[0] = To16((buffer[0] + buffer[1]) >> 1);
    SplitPass(buffer, m, Direction::Forward);
    buffer[1] = 0;
    return exponent;
}

int FftRealInverse(std::int16_t* buffer, int exponent, int m) {
    // Even and odd samples share the constant part alike, since the Nyquist value is 0.
    const auto constantPart = To16(buffer[0] >> 2);
    buffer[0] = constantPart;
    buffer[1] = To16(-constantPart);
    SplitPass(buffer, m, Direction::Inverse);
    exponent = FftComplex(buffer, exponent + 1 - m, m - 1);
    const std::ptrdiff_t points = std::ptrdiff_t{1} << (m - 1);
    for (std::ptrdiff_t i = 0; i < points; ++i) {
        buffer[2 * i + 1] = To16Sat(-buffer[2 * i + 1]);
    }
    return exponent;
}

} // namespace orva::voice
