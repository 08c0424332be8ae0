#include "controls/CtbSliderBar.h"

#include "toolkit/Colors.h"
#include "toolkit/FrameDrawing.h"

#include <algorithm>
#include <cmath>

namespace orva::controls {

using toolkit::StyleValue;

CtbSliderBar::CtbSliderBar(toolkit::TmyControl* parentControl, const toolkit::Placement& placement)
    : TmyPanel(parentControl, "", placement) {
    SetStyleValue(StyleValue::BorderStyle, toolkit::kFrameNone);
}

// --- values ------------------------------------------------------------------------------------------------

void CtbSliderBar::SetMinimum(int newMinimum) {
    if (newMinimum != minimum) {
        const bool wasReversed = IsReversed();
        minimum = newMinimum;
        UpdateFill();
        if (wasReversed != IsReversed()) {
            Invalidate();
        }
    }
}

void CtbSliderBar::SetMaximum(int newMaximum) {
    if (newMaximum != maximum) {
        const bool wasReversed = IsReversed();
        maximum = newMaximum;
        UpdateFill();
        if (wasReversed != IsReversed()) {
            Invalidate();
        }
    }
}

void CtbSliderBar::SetPosition(int newPosition) {
    const int limited = std::clamp(newPosition, std::min(minimum, maximum), std::max(minimum, maximum));
    if (limited != position) {
        position = limited;
        UpdateFill();
        onChange.Fire(this, position);
    }
}

void CtbSliderBar::SetVertical(bool isVertical) {
    if (isVertical != vertical) {
        vertical = isVertical;
        fillPixels = 0;
        UpdateFill();
        Invalidate();
    }
}

void CtbSliderBar::SetColours(COLORREF thumb, COLORREF track) {
    if (thumb != thumbColour || track != trackColour) {
        thumbColour = thumb;
        trackColour = track;
        Invalidate();
    }
}

// --- geometry ----------------------------------------------------------------------------------------------

double CtbSliderBar::Span() const {
    return std::abs(static_cast<double>(maximum) - minimum);
}

int CtbSliderBar::Length() const {
    RECT area{};
    GetClientArea(&area);
    return static_cast<int>(std::max<LONG>(vertical ? area.bottom - area.top : area.right - area.left, 0));
}

void CtbSliderBar::UpdateFill() {
    const double span = Span();
    int pixels = 0;
    if (span > 0.0) {
        const int length = Length();
        pixels = static_cast<int>(
            std::clamp(std::round(length * (position / span)), 0.0, static_cast<double>(length)));
    }
    if (pixels != fillPixels) {
        fillPixels = pixels;
        Invalidate();
    }
}

RECT CtbSliderBar::FillRect(const RECT& area) const {
    RECT fill = area;
    if (vertical) {
        (IsReversed() ? fill.top : fill.bottom) =
            IsReversed() ? area.bottom - fillPixels : area.top + fillPixels;
    } else {
        (IsReversed() ? fill.left : fill.right) =
            IsReversed() ? area.right - fillPixels : area.left + fillPixels;
    }
    return fill;
}

// --- mouse -------------------------------------------------------------------------------------------------

void CtbSliderBar::SetFromPointer(int x, int y) {
    const int length = Length();
    if (length == 0) {
        return;
    }
    RECT area{};
    GetClientArea(&area);
    const LONG at = vertical ? y : x;
    const LONG start = vertical ? area.top : area.left;
    const LONG end = vertical ? area.bottom : area.right;
    const LONG distance = std::max<LONG>(IsReversed() ? end - at : at - start, 0);
    const double value =
        std::min(minimum, maximum) + std::round(static_cast<double>(distance) * Span() / length);
    // A pointer far beyond the end gives more than a number can hold.
    SetPosition(static_cast<int>(std::min(value, static_cast<double>(std::max(minimum, maximum)))));
}

void CtbSliderBar::OnLeftButtonDown(WPARAM flags, int x, int y) {
    if (!IsEnabled()) {
        return;
    }
    const LifeGuard life(this);
    TmyPanel::OnLeftButtonDown(flags, x, y);
    if (life.IsAlive()) {
        dragging = true; // the mouse is captured already
        SetFromPointer(x, y);
    }
}

void CtbSliderBar::OnMouseMove(WPARAM flags, int x, int y) {
    if (!IsEnabled()) {
        return;
    }
    const LifeGuard life(this);
    TmyPanel::OnMouseMove(flags, x, y);
    if (!life.IsAlive() || !dragging) {
        return;
    }
    if (GetCapture() != window) {
        dragging = false; // someone took the mouse away: the release will not come here
        return;
    }
    SetFromPointer(x, y);
}

void CtbSliderBar::OnLeftButtonUp(WPARAM flags, int x, int y) {
    if (!IsEnabled()) {
        return;
    }
    dragging = false;
    TmyPanel::OnLeftButtonUp(flags, x, y);
}

void CtbSliderBar::OnEnableChanged() {
    dragging = false;
    TmyPanel::OnEnableChanged();
}

void CtbSliderBar::OnResize() {
    UpdateFill();
    Invalidate();
    TmyPanel::OnResize();
}

// --- painting ----------------------------------------------------------------------------------------------

void CtbSliderBar::OnDrawContent(HDC dc, const RECT& area) {
    const COLORREF thumb = IsEnabled() ? thumbColour : GetStyleValue(StyleValue::DisabledTextColor);
    toolkit::FillSolid(dc, area, trackColour);
    toolkit::FillSolid(dc, FillRect(area), thumb);
    TmyPanel::OnDrawContent(dc, area);
}

} // namespace orva::controls
