/// Static text with a window.
#pragma once

#include "toolkit/TmyPanel.h"
#include "toolkit/TmyString.h"

namespace orva::toolkit {

/// A panel without a border, whose text stands left and vertically in the middle.
class TmyLabel : public TmyPanel {
public:
    TmyLabel(TmyControl* parent, const char* text, const Placement& placement,
             DWORD windowStyle = kWidgetStyle, DWORD extendedStyle = 0);

    using TmyPanel::SetText;
    /// Compares first. With `resize` the label fits itself to the text, at the place where it is.
    virtual void SetText(const char* text, bool resize);
    virtual void SetText(const TmyString& text, bool resize);

protected:
    [[nodiscard]] TitlePlace PlaceTitle(const RECT& area) const override;
    [[nodiscard]] SIZE Padding() const override;
};

} // namespace orva::toolkit
