/// The small glyphs on buttons.
#pragma once

#include <cstdint>
#include <windows.h>

namespace orva::toolkit {

/// Codes of the glyphs.
enum class ArrowGlyph : std::uint32_t {
    None = 0,
    Up = 1, ///< the arrows are open angles
    Down = 2,
    Left = 3,
    Right = 4,
    Bar = 5, ///< level, as wide as the square
    Square = 8,
    DoubleLeft = 10,
    DoubleRight = 11,
    SolidUp = 16, ///< these are filled triangles
    SolidDown = 17,
    SolidLeft = 18,
    SolidRight = 19,
};

/// Draws a glyph into the square of `size` pixels whose top left corner is at x, y. Every glyph is symmetric,
/// whether the size is odd or even, and made of whole pixels. Unknown codes and sizes below 1 draw nothing.
void DrawArrow(HDC dc, ArrowGlyph glyph, int x, int y, int size, COLORREF color);

} // namespace orva::toolkit
