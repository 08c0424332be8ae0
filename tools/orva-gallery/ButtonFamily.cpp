#include "toolkit/TmyButton.h"
#include "tools/orva-gallery/Families.h"

namespace orva::gallery {

namespace {

using toolkit::ArrowGlyph;
using toolkit::StyleValue;
using toolkit::TmyButton;

constexpr int kWidth = 58;
constexpr int kHeight = 22;
constexpr COLORREF kDownTextColor = 0x66E0FF;
constexpr COLORREF kTransportColor = 0x757575;

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

/// The transport buttons, in the order in which they stand in a row of a recorder.
void FillPictures(Family& family, bool enabled) {
    struct Picture {
        int resource;
        const char* caption;
    };
    constexpr Picture kPictures[] = {{112, "112"}, {109, "109"}, {110, "110"}, {105, "105"}, {107, "107"},
                                     {101, "101"}, {111, "111"}, {103, "103"}, {108, "108"}};
    constexpr int kSide = 19;
    for (const Picture& picture : kPictures) {
        auto* button =
            new TmyButton(&family, "", family.Cell(kSide, kSide, enabled ? picture.caption : "off"));
        button->SetWindowColor(kTransportColor);
        button->SetBitmap(picture.resource);
        button->SetEnabled(enabled);
    }
}

} // namespace

void FillButtons(Family& family) {
    FillStates(family);
    family.StartRow();
    FillGroups(family);
    family.StartRow();
    FillPictures(family, true);
    FillPictures(family, false);
}

} // namespace orva::gallery
