#include "toolkit/Tmy_Btn2.h"
#include "tools/orva-gallery/Families.h"

namespace orva::gallery {

namespace {

using toolkit::ArrowGlyph;
using toolkit::Tmy_Btn;
using toolkit::Tmy_Btn2;

constexpr int kWidth = 58;
constexpr int kHeight = 22;

void Press(Tmy_Btn* button) {
    WPARAM key = VK_SPACE;
    button->OnKeyDown(key, 0);
}

void FillStates(Family& family) {
    new Tmy_Btn(&family, family.Cell(kWidth, kHeight, "Enabled"), "Apply");
    auto* disabled = new Tmy_Btn(&family, family.Cell(kWidth, kHeight, "Disabled"), "Apply");
    disabled->SetEnabled(false);
    auto* focused = new Focused<Tmy_Btn>(&family, family.Cell(kWidth, kHeight, "Focused"), "Apply");
    focused->SetFocusable(true);
    Press(new Tmy_Btn(&family, family.Cell(kWidth, kHeight, "Pressed"), "Apply"));
    auto* down = new Tmy_Btn(&family, family.Cell(kWidth, kHeight, "Down"), "Apply");
    down->SetDown(true);
    auto* grey = new Tmy_Btn(&family, family.Cell(kWidth, kHeight, "Grey"), "Apply");
    grey->SetGrey(true);
    new Tmy_Btn(&family, family.Cell(kWidth, kHeight, "Long text"), "A long caption");
    new Tmy_Btn(&family, family.Cell(kWidth, kHeight, "Empty"));
}

void FillSizes(Family& family) {
    constexpr int kSmallest = 8;
    constexpr int kLargest = 22;
    for (int side = kSmallest; side <= kLargest; side += 2) {
        char caption[16];
        wsprintfA(caption, "%d", side);
        auto* arrow = new Tmy_Btn2(&family, family.Cell(side, side, caption));
        arrow->SetArrow(ArrowGlyph::SolidUp);
    }
    auto* off = new Tmy_Btn2(&family, family.Cell(16, 16, "Disabled"));
    off->SetArrow(ArrowGlyph::SolidUp);
    off->SetEnabled(false);
    auto* pressed = new Tmy_Btn2(&family, family.Cell(16, 16, "Pressed"));
    pressed->SetArrow(ArrowGlyph::SolidUp);
    Press(pressed);
}

} // namespace

void FillLightButtons(Family& family) {
    FillStates(family);
    family.StartRow();
    FillSizes(family);
}

} // namespace orva::gallery
