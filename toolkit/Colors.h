/// Shades of colours, and areas filled with one.
#pragma once

#include <windows.h>

namespace orva::toolkit {

constexpr COLORREF kWhite = 0xFFFFFF;
constexpr COLORREF kBlack = 0;
constexpr int kFullPercent = 100;

/// Sum of the three channels, 0 .. 765.
[[nodiscard]] int BrightnessOf(COLORREF color);

/// Each channel times `percent` / 100, limited to a channel's range.
[[nodiscard]] COLORREF ScaleColor(COLORREF color, int percent);

/// Each channel plus `offset`, limited to a channel's range.
[[nodiscard]] COLORREF OffsetColor(COLORREF color, int offset);

/// From `from` at 0 percent to `to` at 100, channel by channel, rounded to the nearest; a percentage beyond
/// these is limited to them.
[[nodiscard]] COLORREF MixColors(COLORREF from, COLORREF to, int percent);

/// Fills `area`; an empty one draws nothing.
void FillSolid(HDC dc, const RECT& area, COLORREF color);

} // namespace orva::toolkit
