/// Ranges and steps of the number entries.
#pragma once

#include <cstdint>

namespace orva::toolkit {

/// Limits of a number; both 0 mean none.
struct NumberRange {
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;

    [[nodiscard]] bool IsLimited() const { return minimum != 0 || maximum != 0; }
    [[nodiscard]] std::int64_t Limit(std::int64_t value) const;
};

/// How a number follows the wheel.
struct WheelRules {
    std::int64_t step = 1;
    /// 0 for a fixed step. Otherwise the step follows the size of the number: this many of the number's
    /// digits behind the first are left to the wheel.
    int digits = 0;
    bool snap = false; ///< the number moves from one multiple of the step to the next
};

/// Where a wheel takes a number.
struct WheelMove {
    std::int64_t value;
    std::int64_t step; ///< that was used
};

/// `value` rounded towards 0 to a multiple of `step`; as it is for a step of 0.
std::int64_t RoundToStep(std::int64_t value, std::int64_t step);

/// Step that goes with the size of a number: 1 for 0, otherwise the power of ten of its first digit, divided
/// by ten `digits` times, and at least 1. By integers, so that it holds at every power of ten.
std::int64_t StepForSize(std::int64_t base, int digits);

/// Moves a number by `notches` of the wheel, up positive, inside `range`. Downwards, the step is that of the
/// number below, so that 1000 goes down by the steps of 999. Results beyond 64 bits are limited to them.
WheelMove MoveByWheel(std::int64_t value, int notches, const WheelRules& rules, const NumberRange& range);

} // namespace orva::toolkit
