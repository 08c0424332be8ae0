/// Takes the DC off audio before the code detector sees it.
#pragma once

#include <cstdint>

namespace orva::squelch {

/// What survives between blocks.
struct DcBlockState {
    std::int16_t dcBlockPrevIn = 0;
    float dcBlockPrevOut = 0.0F;
};

/// One-pole high-pass with a corner at 1 Hz, in place; results are truncated to integers. Results beyond 16
/// bits, which follow a jump of more than full scale, are limited.
///
/// \param rate  [Hz]; at 0 nothing is done
void DcBlock(DcBlockState& state, std::int16_t* samples, std::uint32_t count, std::uint32_t rate);

} // namespace orva::squelch
