#include "toolkit/Tmy_Label.h"

#include "toolkit/Colors.h"
#include "toolkit/ControlDrawing.h"
#include "toolkit/TypeRegistry.h"

namespace orva::toolkit {

Tmy_Label::Tmy_Label(TmyControl* parentControl, const Placement& placement, const char* labelText)
    : TmyControl(parentControl, placement), text(labelText) {
    RegisterType(this, TypeId::LightLabel, "_Label");
}

void Tmy_Label::SetText(const TmyString& newText, bool resize) {
    if (!(text == newText)) {
        text = newText;
        Invalidate();
    }
    if (resize) {
        const SIZE size = NaturalSize();
        SetSize(size.cx, size.cy);
    }
}

void Tmy_Label::SetTextAlignment(std::uint32_t alignmentCode) {
    if (textAlignment != alignmentCode) {
        textAlignment = alignmentCode;
        Invalidate();
    }
}

SIZE Tmy_Label::NaturalSize() const {
    const SIZE size = MeasureText(EffectiveFont(), text.Text());
    return {size.cx + 2 * kGlyphOverhang, size.cy};
}

void Tmy_Label::GetClientArea(RECT* area) const {
    *area = {0, 0, GetClientWidth(), GetClientHeight()};
}

void Tmy_Label::OnPaint(HDC dc) {
    RECT area{};
    GetClientArea(&area);
    IntersectClipRect(dc, area.left, area.top, area.right, area.bottom);
    if (!HasState(ControlState::Overlay)) {
        FillSolid(dc, area, GetStyleValue(StyleValue::WindowColor));
    }
    const COLORREF color = GetStyleValue(IsEnabled() ? StyleValue::TextColor : StyleValue::DisabledTextColor);
    InflateRect(&area, -kGlyphOverhang, 0);
    DrawAlignedText(dc, text.Text(), area, textAlignment, TextLookOf(*this, color));
    TmyControl::OnPaint(dc);
}

void Tmy_Label::OnResize() {
    Invalidate(); // the text moves with the size
    TmyControl::OnResize();
}

} // namespace orva::toolkit
