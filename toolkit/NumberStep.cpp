#include "toolkit/NumberStep.h"

#include <limits>

namespace orva::toolkit {

namespace {

constexpr std::uint64_t kDecimalBase = 10;

std::int64_t LimitFor(bool positive) {
    return positive ? std::numeric_limits<std::int64_t>::max() : std::numeric_limits<std::int64_t>::min();
}

std::int64_t AddLimited(std::int64_t one, std::int64_t other) {
    std::int64_t sum = 0;
    return __builtin_add_overflow(one, other, &sum) ? LimitFor(one > 0) : sum;
}

/// `value` moved by so many steps; a way that is too long for 64 bits leads to the end in its direction.
std::int64_t AddSteps(std::int64_t value, std::int64_t count, std::int64_t step) {
    std::int64_t way = 0;
    if (__builtin_mul_overflow(count, step, &way)) {
        return LimitFor((count > 0) == (step > 0));
    }
    return AddLimited(value, way);
}

std::uint64_t MagnitudeOf(std::int64_t value) {
    const auto bits = static_cast<std::uint64_t>(value);
    return value < 0 ? std::uint64_t{0} - bits : bits;
}

/// To a multiple of the step, on the side from which the coming move brings the number to the next multiple.
std::int64_t Align(std::int64_t value, int notches, std::int64_t step) {
    const std::int64_t aligned = RoundToStep(value, step);
    if (aligned == value) {
        return value;
    }
    if (notches < 0 && value >= 0) {
        return AddSteps(aligned, 1, step);
    }
    if (notches > 0 && value < 0) {
        return AddSteps(aligned, -1, step);
    }
    return aligned;
}

} // namespace

std::int64_t NumberRange::Limit(std::int64_t value) const {
    if (!IsLimited()) {
        return value;
    }
    if (value > maximum) {
        value = maximum;
    }
    return value < minimum ? minimum : value;
}

std::int64_t RoundToStep(std::int64_t value, std::int64_t step) {
    // Dividing by -1 has no result for the smallest number.
    if (step == 0 || step == -1) {
        return value;
    }
    return value / step * step;
}

std::int64_t StepForSize(std::int64_t base, int digits) {
    const std::uint64_t size = MagnitudeOf(base);
    std::uint64_t power = 1;
    while (size / power >= kDecimalBase) {
        power *= kDecimalBase;
    }
    for (; digits > 0 && power > 1; --digits) {
        power /= kDecimalBase;
    }
    return static_cast<std::int64_t>(power);
}

WheelMove MoveByWheel(std::int64_t value, int notches, const WheelRules& rules, const NumberRange& range) {
    std::int64_t step = rules.step;
    if (rules.digits != 0) {
        step = StepForSize(notches < 0 ? AddLimited(value, notches) : value, rules.digits);
    }
    const std::int64_t start = rules.snap ? Align(value, notches, step) : value;
    return {range.Limit(AddSteps(start, notches, step)), step};
}

} // namespace orva::toolkit
