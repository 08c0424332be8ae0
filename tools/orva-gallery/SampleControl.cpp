#include "tools/orva-gallery/SampleControl.h"

#include "tools/orva-gallery/SampleDrawing.h"

namespace orva::gallery {

SampleControl::SampleControl(toolkit::TmyControl* parentControl, const char* sampleLabel,
                             COLORREF sampleColor, const toolkit::Placement& placement)
    : TmyControl(parentControl, placement), label(sampleLabel), color(sampleColor) {
    SetFocusable(true);
}

void SampleControl::OnPaint(HDC dc) {
    DrawSample(*this, dc, color, label);
    TmyControl::OnPaint(dc);
}

void SampleControl::OnResize() {
    Invalidate(); // the label moves with the size
    TmyControl::OnResize();
}

void SampleControl::OnFocusChange(bool gained) {
    Invalidate();
    TmyControl::OnFocusChange(gained);
}

} // namespace orva::gallery
