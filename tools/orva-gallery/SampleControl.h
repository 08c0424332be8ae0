/// A windowless control that shows where it stands.
#pragma once

#include "toolkit/TmyControl.h"

#include <string>

namespace orva::gallery {

/// Draws its colour and its label. A click gives it the focus.
class SampleControl : public toolkit::TmyControl {
public:
    SampleControl(toolkit::TmyControl* parent, const char* label, COLORREF color,
                  const toolkit::Placement& placement);

    void OnPaint(HDC dc) override;
    void OnResize() override;
    void OnFocusChange(bool gained) override;

private:
    std::string label;
    COLORREF color;
};

} // namespace orva::gallery
