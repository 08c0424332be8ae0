#include "tests/support/RandomSource.h"

#include <cmath>
#include <numbers>

namespace orva::test {

std::uint64_t RandomSource::Next() {
    state += 0x9E3779B97F4A7C15u;
    std::uint64_t mixed = state;
    mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9u;
    mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EBu;
    return mixed ^ mixed >> 31;
}

std::uint32_t RandomSource::Below(std::uint32_t bound) {
    return static_cast<std::uint32_t>((Next() >> 32) * bound >> 32);
}

double RandomSource::Uniform() {
    constexpr double kStep = 0x1p-53;
    return static_cast<double>(Next() >> 11) * kStep;
}

double RandomSource::Gaussian() {
    if (hasSpare) {
        hasSpare = false;
        return spareGaussian;
    }
    // Box and Muller; 1 - u keeps the logarithm finite.
    const double radius = std::sqrt(-2.0 * std::log(1.0 - Uniform()));
    const double angle = 2.0 * std::numbers::pi * Uniform();
    spareGaussian = radius * std::sin(angle);
    hasSpare = true;
    return radius * std::cos(angle);
}

} // namespace orva::test
