/// How the widgets show which of them has the focus.
#pragma once

#include <windows.h>

namespace orva::toolkit {

/// Draws the platform's focus rectangle along the inside of `area`, where every other pixel is black.
void DrawFocusMark(HDC dc, const RECT& area);

} // namespace orva::toolkit
