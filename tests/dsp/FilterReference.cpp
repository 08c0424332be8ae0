#include "tests/dsp/FilterReference.h"

#include <cmath>

namespace orva::test {

std::vector<ReferenceSample> FilterDirectly(const std::vector<double>& taps, const std::vector<float>& input,
                                            RateRatio ratio) {
    const auto length = static_cast<std::int64_t>(taps.size());
    const auto samples = static_cast<std::int64_t>(input.size());
    const std::int64_t up = ratio.up;
    std::vector<ReferenceSample> outputs;
    // Time in steps of the raised rate; the input stands at the multiples of `up`, zeros between.
    for (std::int64_t time = 0; time < samples * up; time += ratio.down) {
        ReferenceSample sum{0.0, 0.0};
        for (std::int64_t lag = 0; lag < length && lag <= time; ++lag) {
            if ((time - lag) % up != 0) {
                continue;
            }
            const std::int64_t index = up > 1 ? lag : length - 1 - lag;
            const auto tap = static_cast<float>(taps[static_cast<std::size_t>(index)]);
            const double term = static_cast<double>(tap) * input[static_cast<std::size_t>((time - lag) / up)];
            sum.value += term;
            sum.magnitude += std::fabs(term);
        }
        outputs.push_back(sum);
    }
    return outputs;
}

double Noise::Next() {
    state = state * 1664525U + 1013904223U;
    return static_cast<double>(state >> 8) / 8388608.0 - 1.0;
}

} // namespace orva::test
