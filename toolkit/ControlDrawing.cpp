#include "toolkit/ControlDrawing.h"

#include "toolkit/TmyControl.h"

namespace orva::toolkit {

void DrawFrame(HDC dc, const RECT& area, std::uint32_t frameStyle, int width, const TmyControl& control) {
    DrawFrame(dc, area, frameStyle, width, control.GetStyleValue(StyleValue::WindowColor),
              static_cast<int>(control.GetStyleValue(StyleValue::Brightness)));
}

TextLook TextLookOf(const TmyControl& control, COLORREF color) {
    return {control.EffectiveFont(), color, control.GetStyleValue(StyleValue::WindowColor),
            static_cast<std::int32_t>(control.GetStyleValue(StyleValue::Shadow))};
}

} // namespace orva::toolkit
