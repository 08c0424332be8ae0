#include "toolkit/TmyLabel.h"

#include "toolkit/FrameDrawing.h"
#include "toolkit/TypeRegistry.h"

namespace orva::toolkit {

TmyLabel::TmyLabel(TmyControl* parentControl, const char* text, const Placement& placement, DWORD windowStyle,
                   DWORD extendedStyle)
    : TmyPanel(parentControl, text, placement, windowStyle, extendedStyle) {
    RegisterType(this, TypeId::Label, "Label");
    SetBorderStyle(kFrameNone); // the record is the panel's own
    SetTextAlignment(kTextLeftMiddle);
}

void TmyLabel::SetText(const char* text, bool resize) {
    if (!(GetText() == text)) {
        TmyPanel::SetText(text);
    }
    if (resize) {
        const SIZE size = NaturalSize();
        SetSize(size.cx, size.cy);
    }
}

void TmyLabel::SetText(const TmyString& text, bool resize) {
    SetText(text.Text(), resize);
}

TmyPanel::TitlePlace TmyLabel::PlaceTitle(const RECT& area) const {
    TitlePlace place = TmyPanel::PlaceTitle(area);
    InflateRect(&place.area, -kGlyphOverhang, 0);
    return place;
}

SIZE TmyLabel::Padding() const {
    return {kGlyphOverhang, 0};
}

} // namespace orva::toolkit
