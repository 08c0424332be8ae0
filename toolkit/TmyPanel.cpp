#include "toolkit/TmyPanel.h"

#include "toolkit/Colors.h"
#include "toolkit/ControlDrawing.h"
#include "toolkit/FocusMark.h"
#include "toolkit/TmyApplication.h"
#include "toolkit/TypeRegistry.h"

#include <algorithm>

namespace orva::toolkit {

TmyPanel::TmyPanel(TmyControl* parentControl, const char* title, const Placement& placement,
                   DWORD windowStyle, DWORD extendedStyle)
    : TmyComponent(parentControl, title, windowStyle, extendedStyle, placement) {
    RegisterType(this, TypeId::Panel, "Panel");
    SetStyleValue(StyleValue::BorderStyle, kFrameRaised, true);
    SetStyleValue(StyleValue::BorderWidth, kPanelBorderWidth);
}

bool TmyPanel::SetBitmap(int resource, HINSTANCE module) {
    const HINSTANCE source = module == ThisLibrary() ? Application().ModuleHandle() : module;
    picture = TwoStatePicture::Load(source, resource, GetStyleValue(StyleValue::DisabledTextColor));
    Invalidate();
    return picture != nullptr;
}

void TmyPanel::SetTextAlignment(std::uint32_t alignmentCode) {
    if (alignmentCode != textAlignment) {
        textAlignment = alignmentCode;
        Invalidate();
    }
}

SIZE TmyPanel::NaturalSize() const {
    SIZE size = MeasureText(EffectiveFont(), GetText().Text());
    if (picture != nullptr) {
        size.cx = std::max<LONG>(size.cx, picture->Width());
        size.cy = std::max<LONG>(size.cy, picture->Height());
    }
    RECT area{};
    GetClientArea(&area);
    const SIZE padding = Padding();
    size.cx += GetClientWidth() - (area.right - area.left) + 2 * padding.cx;
    size.cy += GetClientHeight() - (area.bottom - area.top) + 2 * padding.cy;
    return size;
}

// --- painting ----------------------------------------------------------------------------------------------

void TmyPanel::OnPaint(HDC dc) {
    const RECT client{0, 0, GetClientWidth(), GetClientHeight()};
    const std::uint32_t borderStyle = GetStyleValue(StyleValue::BorderStyle);
    RECT area = client;
    if (borderStyle != kFrameFlat) {
        GetClientArea(&area);
    }
    const LifeGuard life(this); // drawing operations of derived classes may fire events
    OnDrawBackground(dc, area);
    if (life.IsAlive()) {
        OnDrawContent(dc, area);
    }
    if (!life.IsAlive()) {
        return;
    }
    DrawTitle(dc, area);
    DrawFrame(dc, client, borderStyle, static_cast<int>(GetStyleValue(StyleValue::BorderWidth)), *this);
    if (HasFocus()) {
        OnDrawFocus(dc, area);
    }
    if (life.IsAlive()) {
        TmyComponent::OnPaint(dc);
    }
}

void TmyPanel::OnDrawBackground(HDC dc, const RECT& area) {
    FillSolid(dc, area, GetStyleValue(StyleValue::WindowColor));
}

void TmyPanel::OnDrawContent(HDC dc, const RECT& area) {
    if (picture != nullptr) {
        picture->Draw(dc, area, IsEnabled());
    }
}

void TmyPanel::OnDrawFocus(HDC dc, const RECT& area) {
    // A top window keeps the focus when nobody else takes it: that is nothing to show.
    if (HasState(ControlState::Focusable)) {
        DrawFocusMark(dc, area);
    }
}

void TmyPanel::DrawTitle(HDC dc, const RECT& area) const {
    const TmyString title = GetText();
    if (title.IsEmpty()) {
        return;
    }
    const TitlePlace place = PlaceTitle(area);
    DrawAlignedText(dc, title.Text(), place.area, textAlignment, TextLookOf(*this, place.color));
}

TmyPanel::TitlePlace TmyPanel::PlaceTitle(const RECT& area) const {
    return {area, GetStyleValue(IsEnabled() ? StyleValue::TextColor : StyleValue::DisabledTextColor)};
}

// --- what calls for it -------------------------------------------------------------------------------------

void TmyPanel::OnResize() {
    // What is aligned to an edge, or to the middle, moves with it.
    if (picture != nullptr || GetTextLength() > 0) {
        Invalidate();
    }
    TmyComponent::OnResize();
}

void TmyPanel::OnFocusChange(bool gained) {
    Invalidate();
    TmyComponent::OnFocusChange(gained);
}

void TmyPanel::SetDisabledTextColor(COLORREF color) {
    const LifeGuard life(this);
    TmyComponent::SetDisabledTextColor(color);
    if (life.IsAlive() && picture != nullptr) {
        picture->SetDisabledColor(GetStyleValue(StyleValue::DisabledTextColor));
    }
}

} // namespace orva::toolkit
