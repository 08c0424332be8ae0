/// Steps from line to line of a list.
#pragma once

#include <algorithm>
#include <cstdint>

namespace orva::toolkit {

/// The line at so many lines from another, down positive, limited to a list that is not empty. From no line,
/// -1, down begins at the first and up at the last.
[[nodiscard]] inline std::int32_t StepIndex(std::int32_t from, std::int32_t lines, std::int32_t count) {
    const std::int32_t start = from < 0 && lines < 0 ? count : from;
    return std::clamp(start + lines, 0, count - 1);
}

} // namespace orva::toolkit
