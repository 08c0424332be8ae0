/// A control that shows where it stands.
#pragma once

#include "toolkit/TmyComponent.h"
#include "tools/orva-gallery/SampleDrawing.h"

#include <string>
#include <utility>

namespace orva::gallery {

/// Draws its colour and its label, on top of what `Base` is. A click gives it the focus.
template <class Base>
class Sample : public Base {
public:
    template <class... BaseArguments>
    Sample(const char* sampleLabel, COLORREF sampleColor, BaseArguments&&... arguments)
        : Base(std::forward<BaseArguments>(arguments)...), label(sampleLabel), color(sampleColor) {}

    void OnPaint(HDC dc) override {
        DrawSample(*this, dc, color, label);
        Base::OnPaint(dc);
    }

    void OnResize() override {
        this->Invalidate(); // the label moves with the size
        Base::OnResize();
    }

    void OnFocusChange(bool gained) override {
        this->Invalidate();
        Base::OnFocusChange(gained);
    }

private:
    std::string label;
    COLORREF color;
};

/// One without a window.
class SampleControl : public Sample<toolkit::TmyControl> {
public:
    SampleControl(toolkit::TmyControl* parentControl, const char* sampleLabel, COLORREF sampleColor,
                  const toolkit::Placement& placement)
        : Sample(sampleLabel, sampleColor, parentControl, placement) {
        SetFocusable(true);
    }
};

/// One with a window of its own.
class SampleWindow : public Sample<toolkit::TmyComponent> {
public:
    SampleWindow(toolkit::TmyControl* parentControl, const char* sampleLabel, COLORREF sampleColor,
                 const toolkit::Placement& placement)
        : Sample(sampleLabel, sampleColor, parentControl, sampleLabel,
                 WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_CLIPSIBLINGS, 0, placement) {}
};

} // namespace orva::gallery
