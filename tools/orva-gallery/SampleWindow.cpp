#include "tools/orva-gallery/SampleWindow.h"

#include "tools/orva-gallery/SampleDrawing.h"

namespace orva::gallery {

SampleWindow::SampleWindow(toolkit::TmyControl* parentControl, const char* sampleLabel, COLORREF sampleColor,
                           const toolkit::Placement& placement)
    : TmyComponent(parentControl, sampleLabel, WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_CLIPSIBLINGS, 0,
                   placement),
      label(sampleLabel),
      color(sampleColor) {}

void SampleWindow::OnPaint(HDC dc) {
    DrawSample(*this, dc, color, label);
    TmyComponent::OnPaint(dc);
}

void SampleWindow::OnResize() {
    Invalidate(); // the label moves with the size
    TmyComponent::OnResize();
}

void SampleWindow::OnFocusChange(bool gained) {
    Invalidate();
    TmyComponent::OnFocusChange(gained);
}

} // namespace orva::gallery
