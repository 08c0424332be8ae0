#include "toolkit/TmyFloatEdit.h"
#include "toolkit/TmyIntEdit.h"
#include "tools/orva-gallery/Families.h"

namespace orva::gallery {

namespace {

using toolkit::NumberBase;
using toolkit::StyleValue;
using toolkit::TmyEdit;
using toolkit::TmyFloatEdit;
using toolkit::TmyIntEdit;
using toolkit::UnitMode;

constexpr int kWidth = 76;
constexpr int kHeight = 20;
constexpr int kUnitWidth = 26;

void FillTexts(Family& family) {
    new TmyEdit(&family, "Text", family.Cell(kWidth, kHeight, "Enabled"));
    auto* disabled = new TmyEdit(&family, "Text", family.Cell(kWidth, kHeight, "Disabled"));
    disabled->SetEnabled(false);
    new Focused<TmyEdit>(&family, "Text", family.Cell(kWidth, kHeight, "Focused"));
    auto* readOnly = new TmyEdit(&family, "Text", family.Cell(kWidth, kHeight, "Read-only"));
    readOnly->SetReadOnly(true);
    auto* grey = new TmyEdit(&family, "Text", family.Cell(kWidth, kHeight, "Grey"));
    grey->SetGrey(true);
    new TmyEdit(&family, "A text that is too long", family.Cell(kWidth, kHeight, "Long text"));
    new TmyEdit(&family, "", family.Cell(kWidth, kHeight, "Empty"));
}

TmyIntEdit* AddNumber(Family& family, const char* caption, std::int64_t value) {
    auto* number = new TmyIntEdit(&family, family.Cell(kWidth, kHeight, caption));
    number->SetValue(value);
    return number;
}

void AddUnit(TmyIntEdit* number, const char* unit) {
    number->SetUnitWidth(kUnitWidth);
    number->SetUnit(unit);
}

void FillNumbers(Family& family) {
    AddNumber(family, "Decimal", -4550);
    AddNumber(family, "Lower hex.", 0xF7E)->SetHexadecimal(NumberBase::LowerHexadecimal);
    auto* hexadecimal = AddNumber(family, "Upper hex., unit", 0xF7E);
    hexadecimal->SetHexadecimal(NumberBase::UpperHexadecimal);
    hexadecimal->SetUnitWidth(kUnitWidth / 2);
    auto* frequency = AddNumber(family, "Frequency", 4500);
    frequency->SetUnitMode(UnitMode::Frequency);
    AddUnit(frequency, "kHz");
    auto* time = AddNumber(family, "Time", 90);
    time->SetUnitMode(UnitMode::Time);
    AddUnit(time, "min");
    auto* off = AddNumber(family, "Unit, disabled", 4500);
    AddUnit(off, "MHz");
    off->SetEnabled(false);
    new TmyIntEdit(&family, family.Cell(kWidth, kHeight, "Fresh"));
}

void FillDecimals(Family& family) {
    constexpr std::int64_t kShown = 1234567;
    constexpr int kMostShown = 6;
    for (int decimals = 0; decimals <= kMostShown; ++decimals) {
        char caption[16];
        wsprintfA(caption, "%d decimals", decimals);
        auto* number = new TmyFloatEdit(&family, decimals, family.Cell(kWidth, kHeight, caption));
        number->SetValue(kShown);
    }
}

} // namespace

void FillEntries(Family& family) {
    FillTexts(family);
    family.StartRow();
    FillNumbers(family);
    family.StartRow();
    FillDecimals(family);
}

} // namespace orva::gallery
