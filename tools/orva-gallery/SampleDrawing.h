/// How the gallery's samples look.
#pragma once

#include "toolkit/TmyControl.h"

#include <string>

namespace orva::gallery {

/// Fills the control's area with `color`, outlines it, brighter while it has the focus, and writes `label` in
/// its middle.
void DrawSample(const toolkit::TmyControl& control, HDC dc, COLORREF color, const std::string& label);

} // namespace orva::gallery
