/// The frame drawer of all widgets, and the face of the buttons inside.
#pragma once

#include <cstdint>
#include <windows.h>

namespace orva::toolkit {

/// Styles of a frame, as style value 5 has them. Light means light at the top and left and dark at the bottom
/// and right.
enum FrameStyle : std::uint32_t {
    kFrameNone = 0,
    kFrameOutline = 1,         ///< one pixel, lit from the top left
    kFrameRounded = 2,         ///< two rounded rectangles, one pixel apart
    kFrameSunken = 3,          ///< of a button that is down
    kFrameRaised = 4,          ///< of a button that is up
    kFrameFlat = 5,            ///< dark rings; the content reaches below them
    kFrameFlatLight = 6,       ///< light rings
    kFrameFaint = 7,           ///< sunken, hardly lit: what is there but not in use
    kFrameGroove = 8,          ///< sunken outside, raised inside
    kFrameDouble = 9,          ///< raised outside, sunken inside, each of the full width
    kFrameRidge = 10,          ///< raised outside, sunken inside, each of half the width
    kFrameSoftSunken = 11,     ///< sunken at half the strength
    kFrameSoftRaised = 12,     ///< raised at half the strength
    kFrameSunkenOutlined = 13, ///< sunken inside a dark ring
    kFrameRaisedOutlined = 14, ///< raised inside a dark ring
};

/// Width of a panel's border until it is given another [pixels].
constexpr std::uint32_t kPanelBorderWidth = 3;

/// Draws a frame along the inside of `area`. A style of 0 or above 14 draws nothing; so does what no longer
/// fits.
///
/// \param width       rings, each one pixel; style 9 has twice as many; styles 1 and 2 have their own
/// \param color       of the surface that the frame stands on; its shades make the frame
/// \param brightness  [percent] of the colour that is shaded; 100 leaves it as it is
void DrawFrame(HDC dc, const RECT& area, std::uint32_t style, int width, COLORREF color, int brightness);

/// Colour of a button's face: that of the surface it stands on, dimmed when it is disabled, so that what is
/// drawn on it in the disabled text colour stands out.
[[nodiscard]] COLORREF FaceColor(COLORREF surface, bool enabled);

} // namespace orva::toolkit
