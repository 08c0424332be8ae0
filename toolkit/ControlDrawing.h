/// The drawing functions in the looks of a control.
#pragma once

#include "toolkit/FrameDrawing.h"
#include "toolkit/TextDrawing.h"

#include <cstdint>
#include <windows.h>

namespace orva::toolkit {

class TmyControl;

/// Draws a frame in the shades of a control's window colour, at its brightness.
///
/// \param width  in rings [pixels]
void DrawFrame(HDC dc, const RECT& area, std::uint32_t frameStyle, int width, const TmyControl& control);

/// How a control's text looks in a colour: in its font, on its window colour, with its shadow.
[[nodiscard]] TextLook TextLookOf(const TmyControl& control, COLORREF color);

} // namespace orva::toolkit
