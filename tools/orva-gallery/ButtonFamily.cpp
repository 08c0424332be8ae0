#include "toolkit/TmyButton.h"
#include "tools/orva-gallery/Families.h"

namespace orva::gallery {

namespace {

using toolkit::ArrowGlyph;
using toolkit::StyleValue;
using toolkit::TmyButton;

constexpr int kWidth = 62;
constexpr int kHeight = 22;
constexpr COLORREF kDownTextColor = 0x66E0FF;

/// Holds a button as the Space key does.
template <class Button>
void Press(Button* button) {
    WPARAM key = VK_SPACE;
    button->OnKeyDown(key, 0);
}

void FillStates(Family& family) {
    new TmyButton(&family, "Apply", family.Cell(kWidth, kHeight, "Enabled"));
    auto* disabled = new TmyButton(&family, "Apply", family.Cell(kWidth, kHeight, "Disabled"));
    disabled->SetEnabled(false);
    new Focused<TmyButton>(&family, "Apply", family.Cell(kWidth, kHeight, "Focused"));
    Press(new TmyButton(&family, "Apply", family.Cell(kWidth, kHeight, "Pressed")));
    auto* down = new TmyButton(&family, "Apply", family.Cell(kWidth, kHeight, "Down"));
    down->SetDownTextColor(kDownTextColor);
    down->SetDown(true);
    auto* focusedDown = new Focused<TmyButton>(&family, "Apply", family.Cell(kWidth, kHeight, "Down, focus"));
    focusedDown->SetDown(true);
    auto* grey = new TmyButton(&family, "Apply", family.Cell(kWidth, kHeight, "Grey"));
    grey->SetGrey(true);
    new TmyButton(&family, "A long caption", family.Cell(kWidth, kHeight, "Long text"));
    new TmyButton(&family, "", family.Cell(kWidth, kHeight, "Empty"));
}

void FillGroups(Family& family) {
    constexpr std::uint32_t kGroup = 1;
    for (const char* text : {"Auto", "FM", "P25"}) {
        auto* radio = new TmyButton(&family, text, family.Cell(48, kHeight, "Radio"));
        radio->SetGroup(kGroup);
        radio->SetDown(radio->GetText() == "FM");
    }
    auto* shadow = new TmyButton(&family, "Shadow", family.Cell(kWidth, kHeight, "Shadow"));
    shadow->SetStyleValue(StyleValue::Shadow, toolkit::kAutomaticShadow);
    auto* thin = new TmyButton(&family, "Thin", family.Cell(kWidth, kHeight, "Border 1"));
    thin->SetBorderWidth(1);
    auto* bright = new TmyButton(&family, "Bright", family.Cell(kWidth, kHeight, "Brightness 140"));
    bright->SetBrightness(140);
    auto* arrow = new TmyButton(&family, "", family.Cell(19, 19, "Arrow"));
    arrow->SetArrow(ArrowGlyph::Down, 8);
}

} // namespace

void FillButtons(Family& family) {
    FillStates(family);
    family.StartRow();
    FillGroups(family);
}

} // namespace orva::gallery
