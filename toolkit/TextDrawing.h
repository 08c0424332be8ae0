/// The text drawer of all widgets.
#pragma once

#include <cstdint>
#include <windows.h>

namespace orva::toolkit {

/// Bits of a text alignment code, one of each axis; without a bit of an axis the text stands left, or at the
/// top.
enum TextAlignment : std::uint32_t {
    kTextLeft = 1,
    kTextRight = 2,
    kTextCentre = 4,
    kTextTop = 16,
    kTextBottom = 32,
    kTextMiddle = 64, ///< vertically centred
};

/// Alignment of a button's text, in the middle of both axes: 68.
constexpr std::uint32_t kTextInTheMiddle = kTextCentre | kTextMiddle;
/// Alignment of a label's text: 65.
constexpr std::uint32_t kTextLeftMiddle = kTextLeft | kTextMiddle;

/// Value of a shadow that is chosen by the brightness.
constexpr std::int32_t kAutomaticShadow = 127;
/// What is added to the background's channels for the automatic shadow, if the background is brighter than
/// the text, and if it is not.
constexpr std::int32_t kShadowOnBright = -32;
constexpr std::int32_t kShadowOnDark = -128;

/// What the glyphs at a text's ends may reach beyond its measure, and a shadow too [pixels]: room to leave at
/// its sides.
constexpr int kGlyphOverhang = 1;

/// How a text looks.
struct TextLook {
    HFONT font;
    COLORREF color;
    COLORREF background; ///< what it stands on; not painted
    std::int32_t
        shadow; ///< added to the background's channels for the shadow's colour; 0 none, 127 automatic
};

/// Width and height of a text of one or more lines [pixels]; (0, 0) for an empty one.
[[nodiscard]] SIZE MeasureText(HDC dc, HFONT font, const char* text);

/// The same for the screen, where there is no context to draw on at hand.
[[nodiscard]] SIZE MeasureText(HFONT font, const char* text);

/// Where a text of this size stands in `area`. A text wider than the area begins at its left edge and ends at
/// its right; one that is higher may pass both the top and the bottom.
[[nodiscard]] RECT PlaceText(const SIZE& size, const RECT& area, std::uint32_t alignment);

/// The colour of the shadow; nothing is drawn for a shadow value of 0.
[[nodiscard]] COLORREF ShadowColor(const TextLook& look);

/// Draws a text of one or more lines into `area`; ampersands are characters like others. What is too wide
/// ends in an ellipsis. With a shadow, the text is first drawn one pixel right and down in the shadow's
/// colour.
void DrawAlignedText(HDC dc, const char* text, const RECT& area, std::uint32_t alignment,
                     const TextLook& look);

} // namespace orva::toolkit
