/// Named windows that weight a buffer in place.
#pragma once

#include <cstdint>

namespace orva::dsp {

/// A utility apart from the design windows: no instance is needed, and nothing is kept. All operations that
/// weight return false, with nothing done, for a null pointer, a count that is not positive or an index
/// above 10.
class CWindow {
public:
    virtual ~CWindow() = default;

    /// 11.
    static std::uint32_t GetWindowCount();

    /// Copies the name of a window to `text`, at most `maxLength` characters, and a terminating zero if there
    /// is room for it. Returns the name's length. An index above 10 has the name "N/A".
    static std::int32_t GetWindowName(std::uint32_t index, char* text, std::int32_t maxLength);

    static bool ApplyF32(std::uint32_t index, float* data, std::int32_t count);
    static bool ApplyF64(std::uint32_t index, double* data, std::int32_t count);

    /// Weights the elements 0, 2, 4 .. of `count` floats and leaves the others alone. The window is `count`
    /// long.
    static bool ApplyInterleavedF32(std::uint32_t index, float* data, std::int32_t count);
};

} // namespace orva::dsp
