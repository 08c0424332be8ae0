#include "tools/orva-gallery/WidgetsPage.h"

#include "tools/orva-gallery/Families.h"

#include <algorithm>
#include <array>

namespace orva::gallery {

namespace {

struct Entry {
    const char* title;
    void (*fill)(Family& family);
};

/// In the order of the page.
constexpr Entry kFamilies[] = {
    {"TmyButton", FillButtons},
    {"TmyPanel, Tmy_Panel: border styles", FillPanels},
    {"Tmy_Btn, Tmy_Btn2", FillLightButtons},
    {"TmyLabel, Tmy_Label", FillLabels},
    {"Arrows", FillArrows},
    {"TmySlider, Tmy_ScrollBar", FillSliders},
    {"TmyListBox", FillLists},
    {"TmyComboBox", FillComboBoxes},
    {"TmyEdit, TmyIntEdit, TmyFloatEdit", FillEntries},
    {"TmyUpDown, CtbNumParamControl", FillSpins},
    {"TmyFloatingSelection, TmyFloatingSelection2", FillFloatingSelections},
    {"CtbSliderBar, CtbComboListBox", FillSmallControls},
    {"TmyMsgBox", FillMsgBoxes},
};

constexpr std::size_t kColumns = 2;
constexpr int kGap = 6;

} // namespace

void FillWidgetsPage(toolkit::TmyControl* page) {
    const int width = (page->GetClientWidth() - kGap) / static_cast<int>(kColumns) - kGap;
    std::array<int, kColumns> bottoms{};
    bottoms.fill(kGap);
    for (const Entry& entry : kFamilies) {
        auto* shortest = std::min_element(bottoms.begin(), bottoms.end());
        const auto column = static_cast<int>(shortest - bottoms.begin());
        auto* family = new Family(page, entry.title, kGap + column * (width + kGap), *shortest, width);
        entry.fill(*family);
        family->Finish();
        *shortest = static_cast<int>(family->Bounds().bottom) + kGap;
    }
}

} // namespace orva::gallery
