/// The cosine table of oscillators, inverse cosine transforms and FFT twiddles.
#pragma once

#include <array>
#include <cstdint>

namespace orva::voice {

constexpr int kCosTableSize = 512; ///< entries in one period; an index wraps by `kCosTableMask`
constexpr int kCosTableMask = kCosTableSize - 1;

/// One period of 32767 cos, rounded: index 0 is 32767, 128 is 0, 256 is -32767. The sine of the same angle is
/// the entry 384 further on, its negative the entry 128 further on.
constexpr std::array<std::int16_t, kCosTableSize> MakeCosTable() {
    // The series is summed by the compiler in doubles, so every target gets the same numbers.
    constexpr double kPi = 3.14159265358979323846;
    constexpr double kPeak = 32767.0;
    constexpr double kHalf = 0.5;
    constexpr std::size_t kSize = kCosTableSize;
    std::array<std::int16_t, kCosTableSize> table{};
    for (std::size_t i = 0; i <= kSize / 4; ++i) {
        const double angle = 2.0 * kPi * static_cast<double>(i) / kCosTableSize;
        double term = 1.0;
        double cosine = 1.0;
        for (int n = 1; n <= 12; ++n) {
            term *= -angle * angle / ((2.0 * n - 1.0) * (2.0 * n));
            cosine += term;
        }
        const auto value = static_cast<std::int16_t>(kPeak * cosine + kHalf);
        const auto mirrored = static_cast<std::int16_t>(-value);
        table[i] = value;
        table[kSize / 2 - i] = mirrored;
        table[kSize / 2 + i] = mirrored;
        table[(kSize - i) % kSize] = value;
    }
    return table;
}

inline constexpr std::array<std::int16_t, kCosTableSize> kCosTable = MakeCosTable();

static_assert(kCosTable[0] == 32767 && kCosTable[128] == 0 && kCosTable[256] == -32767 &&
              kCosTable[384] == 0);

/// Table entry at any index, negative ones included.
constexpr std::int16_t CosAt(int index) {
    return kCosTable[static_cast<std::size_t>(index & kCosTableMask)];
}

} // namespace orva::voice
