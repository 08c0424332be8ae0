/// A control with a window of its own that shows where it stands.
#pragma once

#include "toolkit/TmyComponent.h"

#include <string>

namespace orva::gallery {

/// Draws its colour and its label. A click gives it the focus.
class SampleWindow : public toolkit::TmyComponent {
public:
    SampleWindow(toolkit::TmyControl* parent, const char* label, COLORREF color,
                 const toolkit::Placement& placement);

    void OnPaint(HDC dc) override;
    void OnResize() override;
    void OnFocusChange(bool gained) override;

private:
    std::string label;
    COLORREF color;
};

} // namespace orva::gallery
