#include "toolkit/DigitColumns.h"

#include <algorithm>
#include <limits>

namespace orva::toolkit {

namespace {

constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();

/// The remainder that is never below 0.
int Modulo(int value, int divisor) {
    return (value % divisor + divisor) % divisor;
}

} // namespace

DigitColumns::DigitColumns(int height) : rowHeight(std::max(height, 1)) {}

void DigitColumns::SetValue(std::int64_t value) {
    negative = value < 0;
    const auto bits = static_cast<std::uint64_t>(value);
    above = negative ? std::uint64_t{0} - bits : bits;
    for (Strip& strip : strips) {
        strip = {static_cast<int>(above % kDigits) * rowHeight, 0};
        above /= kDigits;
    }
}

std::int64_t DigitColumns::Value() const {
    std::uint64_t magnitude = above;
    std::for_each(strips.rbegin(), strips.rend(), [&](const Strip& strip) {
        magnitude = magnitude * kDigits + static_cast<std::uint64_t>(DigitOf(strip));
    });
    // The digits above are at most 922: the sum stays far below what 64 bits without a sign hold.
    if (magnitude > kLargest) {
        return negative ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
    }
    return negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
}

/// The digit at which the strip comes to rest, or the nearest one.
int DigitColumns::DigitOf(const Strip& strip) const {
    return Wrap(strip.offset + strip.remaining + rowHeight / 2) / rowHeight;
}

int DigitColumns::Wrap(int offset) const {
    return Modulo(offset, kDigits * rowHeight);
}

void DigitColumns::Drag(int column, int pixels) {
    if (Exists(column)) {
        Strip& strip = strips[static_cast<std::size_t>(column)];
        strip.offset = Wrap(strip.offset + pixels % (kDigits * rowHeight));
        strip.remaining = 0;
    }
}

void DigitColumns::Roll(int column, int rows) {
    if (Exists(column)) {
        Strip& strip = strips[static_cast<std::size_t>(column)];
        const int goal = strip.offset + strip.remaining;
        const int nearest = (goal + rowHeight / 2) - Modulo(goal + rowHeight / 2, rowHeight);
        const int way = nearest - strip.offset + rows % kDigits * rowHeight;
        strip.remaining = way % (kDigits * rowHeight); // more than a turn shows nothing more
    }
}

void DigitColumns::Release(int column) {
    Roll(column, 0);
}

bool DigitColumns::Step() {
    for (Strip& strip : strips) {
        // The half is rounded away from 0, so that the last pixel is gone too.
        const int step = (strip.remaining + (strip.remaining > 0 ? 1 : -1)) / 2;
        strip.offset = Wrap(strip.offset + step);
        strip.remaining -= step;
    }
    return IsMoving();
}

bool DigitColumns::IsMoving() const {
    return std::any_of(strips.begin(), strips.end(), [](const Strip& strip) { return strip.remaining != 0; });
}

int DigitColumns::Offset(int column) const {
    return Exists(column) ? strips[static_cast<std::size_t>(column)].offset : 0;
}

} // namespace orva::toolkit
