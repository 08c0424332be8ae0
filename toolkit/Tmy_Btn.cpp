#include "toolkit/Tmy_Btn.h"

#include "toolkit/Colors.h"
#include "toolkit/ControlDrawing.h"
#include "toolkit/FocusMark.h"
#include "toolkit/TypeRegistry.h"

#include <algorithm>

namespace orva::toolkit {

namespace {

/// Three fifths of the area's shorter side, and as odd or even as it, so that the arrow has the same room on
/// both sides.
int FittingArrowSize(const RECT& area) {
    constexpr int kLeast = 4;
    const int side = static_cast<int>(std::min(area.right - area.left, area.bottom - area.top));
    const int size = std::max(side * 3 / 5, kLeast);
    return size + (size + side) % 2;
}

} // namespace

Tmy_Btn::Tmy_Btn(TmyControl* parentControl, const Placement& placement, const char* buttonText)
    : PressLogic<TmyControl>(parentControl, placement), text(buttonText) {
    RegisterType(this, TypeId::Btn, "Btn");
}

void Tmy_Btn::SetText(const TmyString& newText) {
    if (!(text == newText)) {
        text = newText;
        Invalidate();
    }
}

void Tmy_Btn::SetTextAlignment(std::uint32_t alignmentCode) {
    if (textAlignment != alignmentCode) {
        textAlignment = alignmentCode;
        Invalidate();
    }
}

void Tmy_Btn::SetArrow(ArrowGlyph newGlyph, int size) {
    if (glyph != newGlyph || glyphSize != size) {
        glyph = newGlyph;
        glyphSize = size;
        Invalidate();
    }
}

SIZE Tmy_Btn::NaturalSize() const {
    const SIZE size = MeasureText(EffectiveFont(), text.Text());
    const auto border = static_cast<int>(GetStyleValue(StyleValue::BorderWidth));
    return {size.cx + 2 * (border + kButtonPadding.cx), size.cy + 2 * (border + kButtonPadding.cy)};
}

// --- look --------------------------------------------------------------------------------------------------

int Tmy_Btn::EffectiveBorderWidth() const {
    constexpr int kLeastContent = 6; // the side of the smallest arrow worth drawing
    const int room = (std::min(GetClientWidth(), GetClientHeight()) - kLeastContent) / 2;
    return std::clamp(room, 1, std::max(static_cast<int>(GetStyleValue(StyleValue::BorderWidth)), 1));
}

void Tmy_Btn::GetClientArea(RECT* area) const {
    const int border = EffectiveBorderWidth();
    *area = {border, border, GetClientWidth() - border, GetClientHeight() - border};
}

void Tmy_Btn::UpdateLook() {
    if (drawnSunken != LooksSunken()) {
        drawnSunken = LooksSunken();
        Invalidate();
    }
}

void Tmy_Btn::OnResize() {
    Invalidate();
    PressLogic<TmyControl>::OnResize();
}

COLORREF Tmy_Btn::ContentColor() const {
    return GetStyleValue(IsEnabled() ? StyleValue::TextColor : StyleValue::DisabledTextColor);
}

void Tmy_Btn::OnPaint(HDC dc) {
    const RECT whole{0, 0, GetClientWidth(), GetClientHeight()};
    IntersectClipRect(dc, whole.left, whole.top, whole.right, whole.bottom);
    RECT area{};
    GetClientArea(&area);
    const LifeGuard life(this); // drawing operations of derived classes may fire events
    OnDrawBackground(dc, area);
    if (life.IsAlive()) {
        OnDrawContent(dc, area);
    }
    if (!life.IsAlive()) {
        return;
    }
    DrawTitle(dc, area);
    DrawFrame(dc, whole, LooksSunken() ? kFrameSunken : kFrameRaised, EffectiveBorderWidth(), *this);
    if (HasFocus()) {
        OnDrawFocus(dc, area);
    }
    if (life.IsAlive()) {
        PressLogic<TmyControl>::OnPaint(dc);
    }
}

void Tmy_Btn::OnDrawBackground(HDC dc, const RECT& area) {
    FillSolid(dc, area, FaceColor(GetStyleValue(StyleValue::WindowColor), IsEnabled()));
}

void Tmy_Btn::OnDrawContent(HDC dc, const RECT& area) {
    const int size = glyphSize != 0 ? glyphSize : FittingArrowSize(area);
    const RECT place = ContentPlace(area);
    DrawArrow(dc, glyph, (place.left + place.right - size) / 2, (place.top + place.bottom - size) / 2, size,
              ContentColor());
}

void Tmy_Btn::OnDrawFocus(HDC dc, const RECT& area) {
    if (HasState(ControlState::Focusable)) {
        DrawFocusMark(dc, ContentPlace(area));
    }
}

void Tmy_Btn::DrawTitle(HDC dc, const RECT& area) const {
    DrawAlignedText(dc, text.Text(), ContentPlace(area), textAlignment, TextLookOf(*this, ContentColor()));
}

} // namespace orva::toolkit
