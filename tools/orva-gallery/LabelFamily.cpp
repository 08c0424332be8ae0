#include "toolkit/TmyLabel.h"
#include "toolkit/Tmy_Label.h"
#include "tools/orva-gallery/Families.h"

namespace orva::gallery {

namespace {

using toolkit::StyleValue;
using toolkit::Tmy_Label;
using toolkit::TmyLabel;

constexpr int kWidth = 74;
constexpr int kHeight = 18;

void FillWindowed(Family& family) {
    new TmyLabel(&family, "NAC $293", family.Cell(kWidth, kHeight, "Enabled"));
    auto* disabled = new TmyLabel(&family, "NAC $293", family.Cell(kWidth, kHeight, "Disabled"));
    disabled->SetEnabled(false);
    auto* grey = new TmyLabel(&family, "NAC $293", family.Cell(kWidth, kHeight, "Grey"));
    grey->SetGrey(true);
    auto* right = new TmyLabel(&family, "NAC $293", family.Cell(kWidth, kHeight, "Right"));
    right->SetTextAlignment(toolkit::kTextRight | toolkit::kTextMiddle);
    auto* sunken = new TmyLabel(&family, "NAC $293", family.Cell(kWidth, kHeight + 4, "Border 3"));
    sunken->SetBorderStyle(3);
    sunken->SetBorderWidth(1);
    auto* shadow = new TmyLabel(&family, "NAC $293", family.Cell(kWidth, kHeight, "Shadow"));
    shadow->SetStyleValue(StyleValue::Shadow, toolkit::kAutomaticShadow);
    new TmyLabel(&family, "A text that is too long", family.Cell(kWidth, kHeight, "Long text"));
}

void FillLight(Family& family) {
    new Tmy_Label(&family, family.Cell(kWidth, kHeight, "Tmy_Label"), "NAC $293");
    auto* disabled = new Tmy_Label(&family, family.Cell(kWidth, kHeight, "Disabled"), "NAC $293");
    disabled->SetEnabled(false);
    auto* grey = new Tmy_Label(&family, family.Cell(kWidth, kHeight, "Grey"), "NAC $293");
    grey->SetGrey(true);
    auto* centred = new Tmy_Label(&family, family.Cell(kWidth, kHeight, "Centre"), "NAC $293");
    centred->SetTextAlignment(toolkit::kTextInTheMiddle);
    new Tmy_Label(&family, family.Cell(kWidth, kHeight, "Long text"), "A text that is too long");
    new Tmy_Label(&family, family.Cell(kWidth, 2 * kHeight, "Two lines"), "First line\nSecond line");
}

} // namespace

void FillLabels(Family& family) {
    FillWindowed(family);
    family.StartRow();
    FillLight(family);
}

} // namespace orva::gallery
