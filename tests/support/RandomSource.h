#pragma once

#include <cstdint>

namespace orva::test {

/// Repeatable random numbers, the same on every platform (the distributions of <random> are not): SplitMix64
/// (Steele, Lea, Flood, "Fast splittable pseudorandom number generators", 2014).
class RandomSource {
public:
    explicit RandomSource(std::uint64_t seed) : state(seed) {}

    /// 64 random bits.
    std::uint64_t Next();

    /// Uniform in 0 .. bound - 1; `bound` > 0.
    std::uint32_t Below(std::uint32_t bound);

    /// Uniform, 0 <= x < 1.
    double Uniform();

    /// Normal, mean 0, deviation 1.
    double Gaussian();

private:
    std::uint64_t state;
    double spareGaussian = 0.0;
    bool hasSpare = false;
};

} // namespace orva::test
