#include "toolkit/Tmy_Label.h"

#include "toolkit/Colors.h"
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
    const COLORREF background = GetStyleValue(StyleValue::WindowColor);
    if (!HasState(ControlState::Overlay)) {
        FillSolid(dc, area, background);
    }
    const TextLook look{EffectiveFont(),
                        GetStyleValue(IsEnabled() ? StyleValue::TextColor : StyleValue::DisabledTextColor),
                        background, static_cast<std::int32_t>(GetStyleValue(StyleValue::Shadow))};
    InflateRect(&area, -kGlyphOverhang, 0);
    DrawAlignedText(dc, text.Text(), area, textAlignment, look);
    TmyControl::OnPaint(dc);
}

void Tmy_Label::OnResize() {
    Invalidate(); // the text moves with the size
    TmyControl::OnResize();
}

} // namespace orva::toolkit
