#include "toolkit/TmyComboBox.h"
#include "toolkit/TmyListBox.h"
#include "toolkit/Tmy_Btn.h"
#include "tools/orva-gallery/Families.h"

namespace orva::gallery {

namespace {

using toolkit::ListStyle;
using toolkit::TmyComboBox;
using toolkit::TmyListBox;

constexpr int kWidth = 76;
constexpr int kHeight = 76;
constexpr int kLargeHeight = 76;
constexpr int kBoxHeight = 20;
constexpr COLORREF kMarkedColor = 0x66E0FF;

template <class List>
List* WithLines(List* list) {
    for (const char* line :
         {"Speakers", "Phones", "A sound card with a long name", "Line out", "Cable", "Digital", "Modem"}) {
        list->AddItem(line);
    }
    list->Select(1, false);
    return list;
}

TmyListBox* AddList(Family& family, const char* caption, int height = kHeight,
                    ListStyle style = ListStyle::Plain) {
    return WithLines(new TmyListBox(&family, family.Cell(kWidth, height, caption), style));
}

} // namespace

void FillLists(Family& family) {
    AddList(family, "Enabled");
    WithLines(new Focused<TmyListBox>(&family, family.Cell(kWidth, kHeight, "Focused")));
    AddList(family, "Disabled")->SetEnabled(false);
    AddList(family, "Grey")->SetGrey(true);
    auto* few = new TmyListBox(&family, family.Cell(kWidth, kHeight, "Few, in colours"));
    few->AddItem("Plain");
    few->GetItem(few->AddItem("Marked"))->color = kMarkedColor;
    few->Select(1, false);
    AddList(family, "Large", kLargeHeight, ListStyle::Large);
    new TmyListBox(&family, family.Cell(kWidth, kHeight, "Empty"));
}

void FillComboBoxes(Family& family) {
    WithLines(new TmyComboBox(&family, family.Cell(kWidth, kBoxHeight, "Enabled")));
    WithLines(new Focused<TmyComboBox>(&family, family.Cell(kWidth, kBoxHeight, "Focused")));
    WithLines(new TmyComboBox(&family, family.Cell(kWidth, kBoxHeight, "Disabled")))->SetEnabled(false);
    WithLines(new TmyComboBox(&family, family.Cell(kWidth, kBoxHeight, "Grey")))->SetGrey(true);
    auto* open = WithLines(new TmyComboBox(&family, family.Cell(kWidth, kBoxHeight, "Open")));
    open->Button()->SetDown(true);
    WithLines(new TmyComboBox(&family, family.Cell(kWidth, kBoxHeight, "Long text")))->Select(2, false);
    new TmyComboBox(&family, family.Cell(kWidth, kBoxHeight, "Empty"));
}

} // namespace orva::gallery
