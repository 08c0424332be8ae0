/// The windows that shape filter designs and spectrum blocks.
///
/// Thirteen symmetric windows in double precision. A caller that works from the centre outward, or that keeps
/// one half only, asks for the layout it needs and saves the reordering.
#pragma once

#include <cstdint>

namespace orva::dsp {

/// Shapes of `MakeWindow`. The last is not normalised: it reaches 4.64 at its centre.
enum WindowKind : std::uint32_t {
    kWindowRectangular = 0,
    kWindowTriangular = 1,
    kWindowSine = 2,
    kWindowHamming = 3,
    kWindowBlackman = 4, ///< parametric, a = parameters[0]
    kWindowHann = 5,
    kWindowLanczos = 6,
    kWindowGaussian = 7, ///< b = parameters[1]
    kWindowBartlettHann = 8,
    kWindowNuttall = 9,
    kWindowBlackmanHarris = 10,
    kWindowBlackmanNuttall = 11,
    kWindowFlatTop = 12,
};
constexpr std::uint32_t kWindowKinds = 13;

/// Orders in which `MakeWindow` writes; h = (length + 1) >> 1.
enum class WindowLayout : std::uint32_t {
    Ascending = 1,  ///< w[0] .. w[h-1], h entries
    Descending = 2, ///< the same from the centre outward, h entries
    Full = 3,       ///< all `length` entries
};

/// Default a and b of the parametric kinds.
constexpr double kDefaultWindowParameters[2] = {0.16, 0.4};

/// Writes one window.
/// kind        0 .. 12
/// parameters  a and b of the parametric kinds, two doubles; the caller's
/// output      [entries returned]; the caller's
/// length      N, points of the whole window; a window of one point is 1.0
/// Returns the entries written: 0, with nothing written, for an unknown kind or layout or a length of 0.
std::uint32_t MakeWindow(std::uint32_t kind, const double* parameters, double* output, std::uint32_t length,
                         WindowLayout layout);

} // namespace orva::dsp
