#include "tools/orva-gallery/SampleDrawing.h"

namespace orva::gallery {

namespace {

constexpr COLORREF kOutline = 0x303030;
constexpr COLORREF kFocusOutline = 0x00FFFF;

void Outline(HDC dc, const RECT& area, COLORREF color, int width) {
    const HBRUSH brush = CreateSolidBrush(color);
    RECT ring = area;
    for (int i = 0; i < width; ++i) {
        FrameRect(dc, &ring, brush);
        InflateRect(&ring, -1, -1);
    }
    DeleteObject(brush);
}

} // namespace

void DrawSample(const toolkit::TmyControl& control, HDC dc, COLORREF color, const std::string& label) {
    RECT area{0, 0, control.GetClientWidth(), control.GetClientHeight()};
    const HBRUSH brush = CreateSolidBrush(color);
    FillRect(dc, &area, brush);
    DeleteObject(brush);
    const bool focused = control.HasFocus();
    Outline(dc, area, focused ? kFocusOutline : kOutline, focused ? 2 : 1);

    const HGDIOBJ before = SelectObject(dc, control.EffectiveFont());
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, control.GetStyleValue(control.IsEnabled() ? toolkit::StyleValue::TextColor
                                                               : toolkit::StyleValue::DisabledTextColor));
    DrawTextA(dc, label.c_str(), -1, &area, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_END_ELLIPSIS);
    SelectObject(dc, before);
}

} // namespace orva::gallery
