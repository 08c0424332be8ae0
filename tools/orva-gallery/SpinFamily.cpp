#include "controls/CtbNumParamControl.h"
#include "toolkit/TmyUpDown.h"
#include "toolkit/Tmy_Btn2.h"
#include "tools/orva-gallery/Families.h"

namespace orva::gallery {

namespace {

using controls::CtbNumParamControl;
using toolkit::TmyUpDown;

constexpr int kNarrow = 10;
constexpr int kHeight = 20;

void FillSpinButtons(Family& family) {
    new TmyUpDown(&family, family.Cell(kNarrow, kHeight, "Halves"));
    new TmyUpDown(&family, family.Cell(16, 30, "Larger"));
    new TmyUpDown(&family, family.Cell(16, 39, "Thirds"), true);
    new TmyUpDown(&family, family.Cell(34, 16, "Level"));
    new TmyUpDown(&family, family.Cell(51, 16, "Level, thirds"), true);
    auto* pressed = new TmyUpDown(&family, family.Cell(16, 30, "Pressed"));
    WPARAM key = VK_SPACE;
    pressed->UpButton()->OnKeyDown(key, 0);
    auto* disabled = new TmyUpDown(&family, family.Cell(16, 30, "Disabled"));
    disabled->SetEnabled(false);
    auto* grey = new TmyUpDown(&family, family.Cell(16, 30, "Grey"));
    grey->SetGrey(true);
}

CtbNumParamControl* AddField(Family& family, const char* caption, const char* title, const char* unit) {
    constexpr int kRoom = 104;
    auto* field = new CtbNumParamControl(&family, family.Cell(kRoom, kHeight, caption));
    field->SetMinimum(-9999);
    field->SetMaximum(9999);
    field->SetValue(4550);
    field->SetFieldSize(43, kHeight);
    field->SetTitle(title, true);
    field->SetUnit(unit, true);
    return field;
}

void FillNumberFields(Family& family) {
    AddField(family, "Enabled", "Freq", "Hz");
    AddField(family, "Disabled", "Freq", "Hz")->SetEnabled(false);
    AddField(family, "No unit", "Volume", "");
    AddField(family, "No title", "", "dB/oct");
    AddField(family, "No spin buttons", "Filter", "taps")->SetSpinVisible(false, true);
}

} // namespace

void FillSpins(Family& family) {
    FillSpinButtons(family);
    family.StartRow();
    FillNumberFields(family);
}

} // namespace orva::gallery
