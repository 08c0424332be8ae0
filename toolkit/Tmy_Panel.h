/// A frame without a window.
#pragma once

#include "toolkit/TmyControl.h"

namespace orva::toolkit {

/// Fills its area with the window colour and draws the frame of its border style around it. Like a panel with
/// a window it has a style record of its own, with border style 4 and width 3, which its children share.
class Tmy_Panel : public TmyControl {
public:
    explicit Tmy_Panel(TmyControl* parent, const Placement& placement = {});

    void OnPaint(HDC dc) override;
    void OnResize() override;
};

} // namespace orva::toolkit
