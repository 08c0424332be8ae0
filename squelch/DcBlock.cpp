#include "squelch/DcBlock.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace orva::squelch {

namespace {

std::int16_t Truncate(float x) {
    constexpr auto kLowest = static_cast<float>(std::numeric_limits<std::int16_t>::min());
    constexpr auto kHighest = static_cast<float>(std::numeric_limits<std::int16_t>::max());
    return static_cast<std::int16_t>(std::clamp(x, kLowest, kHighest));
}

} // namespace

void DcBlock(DcBlockState& state, std::int16_t* samples, std::uint32_t count, std::uint32_t rate) {
    if (samples == nullptr || rate == 0) {
        return;
    }
    const auto pole = static_cast<float>(std::exp(-2.0 * std::numbers::pi / rate));
    const float feed = (pole + 1.0F) / 2.0F;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::int16_t input = samples[i];
        const float output =
            pole * state.dcBlockPrevOut + static_cast<float>(input - state.dcBlockPrevIn) * feed;
        state.dcBlockPrevIn = input;
        samples[i] = Truncate(output);
        state.dcBlockPrevOut = output;
    }
}

} // namespace orva::squelch
