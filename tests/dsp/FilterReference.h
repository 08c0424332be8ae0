/// Direct computation of what the filters do: sums in double over the whole input, nothing circular, nothing
/// clever.
#pragma once

#include <cstdint>
#include <vector>

namespace orva::test {

struct RateRatio {
    std::uint32_t up;
    std::uint32_t down;
};

/// One output and the sum of the magnitudes of its terms, which error bounds are proportional to.
struct ReferenceSample {
    double value;
    double magnitude;
};

/// The outputs for `input` (samples already narrowed to f32) after a cleared history. Without interpolation
/// the last tap meets the newest sample; with it tap p + j up meets the sample j steps back.
std::vector<ReferenceSample> FilterDirectly(const std::vector<double>& taps, const std::vector<float>& input,
                                            RateRatio ratio);

/// Reproducible noise, uniform over -1 .. 1.
class Noise {
public:
    explicit Noise(std::uint32_t seed) : state(seed * 2654435761U + 1U) {}
    double Next();

private:
    std::uint32_t state;
};

} // namespace orva::test
