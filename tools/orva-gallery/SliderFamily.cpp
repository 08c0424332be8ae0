#include "toolkit/TmySlider.h"
#include "toolkit/Tmy_ScrollBar.h"
#include "tools/orva-gallery/Families.h"

namespace orva::gallery {

namespace {

using toolkit::ScrollDirection;
using toolkit::SliderDirection;
using toolkit::Tmy_ScrollBar;
using toolkit::TmySlider;

constexpr int kLength = 110;
constexpr int kThickness = 20;
constexpr int kTall = 100;
constexpr int kWide = 36;

TmySlider* AddSlider(Family& family, const char* caption) {
    return new TmySlider(&family, SliderDirection::Horizontal, family.Cell(kLength, kThickness, caption));
}

TmySlider* AddTallSlider(Family& family, const char* caption) {
    return new TmySlider(&family, SliderDirection::Vertical, family.Cell(kWide, kTall, caption));
}

/// Holds the middle of the knob.
void Press(TmySlider* slider) {
    const RECT knob = slider->KnobRect();
    slider->OnLeftButtonDown(MK_LBUTTON, static_cast<int>(knob.left + knob.right) / 2,
                             static_cast<int>(knob.top + knob.bottom) / 2);
}

Tmy_ScrollBar* AddBar(Family& family, ScrollDirection direction, const char* caption) {
    const bool vertical = direction == ScrollDirection::Vertical;
    auto* bar = new Tmy_ScrollBar(&family, direction,
                                  family.Cell(vertical ? Tmy_ScrollBar::kDefaultThickness : kLength,
                                              vertical ? kTall : Tmy_ScrollBar::kDefaultThickness, caption));
    bar->SetRange(0, 30);
    bar->SetPageSize(10);
    bar->SetPosition(10, false);
    return bar;
}

void FillScrollBars(Family& family) {
    AddBar(family, ScrollDirection::Vertical, "Bar");
    auto* held = AddBar(family, ScrollDirection::Vertical, "Held");
    const RECT thumb = held->ThumbRect();
    held->OnLeftButtonDown(MK_LBUTTON, 1, static_cast<int>(thumb.top + thumb.bottom) / 2);
    AddBar(family, ScrollDirection::Vertical, "Off")->SetEnabled(false);
    AddBar(family, ScrollDirection::Vertical, "Grey")->SetGrey(true);
    AddBar(family, ScrollDirection::Vertical, "Empty")->SetRange(0, 0);
}

} // namespace

void FillSliders(Family& family) {
    AddSlider(family, "Enabled");
    Press(AddSlider(family, "Dragged"));
    AddSlider(family, "Disabled")->SetEnabled(false);
    auto* shown = AddSlider(family, "With value");
    shown->SetValueShown(true);
    shown->SetValue(80, false);
    AddBar(family, ScrollDirection::Horizontal, "Tmy_ScrollBar");
    family.StartRow();
    AddTallSlider(family, "Vertical");
    Press(AddTallSlider(family, "Dragged"));
    AddTallSlider(family, "Disabled")->SetEnabled(false);
    AddTallSlider(family, "Grey")->SetGrey(true);
    AddTallSlider(family, "With value")->SetValueShown(true);
    FillScrollBars(family);
}

} // namespace orva::gallery
