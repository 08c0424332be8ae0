#include "toolkit/Tmy_Panel.h"

#include "toolkit/Colors.h"
#include "toolkit/ControlDrawing.h"
#include "toolkit/TypeRegistry.h"

namespace orva::toolkit {

Tmy_Panel::Tmy_Panel(TmyControl* parentControl, const Placement& placement)
    : TmyControl(parentControl, placement) {
    RegisterType(this, TypeId::LightPanel, "_Panel");
    SetStyleValue(StyleValue::BorderStyle, kFrameRaised, true);
    SetStyleValue(StyleValue::BorderWidth, kPanelBorderWidth);
}

void Tmy_Panel::OnPaint(HDC dc) {
    const RECT whole{0, 0, GetClientWidth(), GetClientHeight()};
    IntersectClipRect(dc, whole.left, whole.top, whole.right, whole.bottom);
    FillSolid(dc, whole, GetStyleValue(StyleValue::WindowColor));
    DrawFrame(dc, whole, GetStyleValue(StyleValue::BorderStyle),
              static_cast<int>(GetStyleValue(StyleValue::BorderWidth)), *this);
    TmyControl::OnPaint(dc);
}

void Tmy_Panel::OnResize() {
    Invalidate(); // the frame stands elsewhere
    TmyControl::OnResize();
}

} // namespace orva::toolkit
