#include "controls/CtbNumParamControl.h"

#include "toolkit/FrameDrawing.h"
#include "toolkit/TmyIntEdit.h"
#include "toolkit/TmyLabel.h"
#include "toolkit/TmyUpDown.h"

#include <algorithm>

namespace orva::controls {

namespace {

using toolkit::Placement;

constexpr int kMargin = 2; // at the left and the right end [pixels]
constexpr int kTextTop = 3;
constexpr int kTextHeight = 15;
constexpr int kSpinWidth = 10;

constexpr Placement kLabelPlace{kMargin, kTextTop, 100, kTextHeight};
constexpr Placement kEditPlace{102, 0, 35, 20};
constexpr Placement kSpinPlace{kEditPlace.x + kEditPlace.width, 0, kSpinWidth, kEditPlace.height};
constexpr Placement kUnitPlace{kSpinPlace.x + kSpinWidth, kTextTop, 20, kTextHeight};

constexpr char kFirstTitle[] = "Param name:";

int WidthOf(const toolkit::TmyControl& control) {
    return static_cast<int>(control.Bounds().right - control.Bounds().left);
}

int HeightOf(const toolkit::TmyControl& control) {
    return static_cast<int>(control.Bounds().bottom - control.Bounds().top);
}

} // namespace

CtbNumParamControl::CtbNumParamControl(toolkit::TmyControl* parentControl, const Placement& placement)
    : TmyPanel(parentControl, "", placement),
      edit(new toolkit::TmyIntEdit(this, kEditPlace)),
      label(new toolkit::TmyLabel(this, kFirstTitle, kLabelPlace)),
      unitLabel(new toolkit::TmyLabel(this, "", kUnitPlace)),
      spin(new toolkit::TmyUpDown(this, kSpinPlace)) {
    SetBorderStyle(toolkit::kFrameNone);
    spin->SetEdit(edit);
    edit->SetValue(value);
    edit->onValueChanged.Bind<&CtbNumParamControl::OnEditValueChanged>(this);
}

// --- texts -------------------------------------------------------------------------------------------------

void CtbNumParamControl::SetTitle(const char* text, bool relayout) {
    label->SetText(text != nullptr ? text : "", false);
    if (relayout) {
        Relayout();
    }
}

void CtbNumParamControl::SetUnit(const char* text, bool relayout) {
    unitLabel->SetText(text != nullptr ? text : "", false);
    hasUnit = unitLabel->GetTextLength() > 0;
    if (relayout) {
        Relayout();
    }
}

void CtbNumParamControl::SetSpinVisible(bool visible, bool relayout) {
    spinVisible = visible;
    spin->SetVisible(visible);
    if (relayout) {
        Relayout();
    }
}

// --- the number --------------------------------------------------------------------------------------------

void CtbNumParamControl::SetMinimum(std::int64_t newMinimum) {
    if (minimum == newMinimum) {
        return;
    }
    const LifeGuard life(this);
    minimum = newMinimum;
    if (minimum > maximum) {
        SetMaximum(minimum);
    }
    if (life.IsAlive()) {
        edit->SetMinimum(minimum);
    }
    if (life.IsAlive() && value < minimum) {
        SetValue(minimum);
    }
}

void CtbNumParamControl::SetMaximum(std::int64_t newMaximum) {
    if (maximum == newMaximum) {
        return;
    }
    const LifeGuard life(this);
    maximum = newMaximum;
    if (maximum < minimum) {
        SetMinimum(maximum);
    }
    if (life.IsAlive()) {
        edit->SetMaximum(maximum);
    }
    if (life.IsAlive() && value > maximum) {
        SetValue(maximum);
    }
}

void CtbNumParamControl::SetStep(std::int64_t newStep) {
    step = newStep;
    edit->SetStep(newStep);
}

void CtbNumParamControl::SetValue(std::int64_t newValue) {
    newValue = std::clamp(newValue, minimum, maximum);
    const bool changed = newValue != value;
    value = newValue;
    const LifeGuard life(this);
    edit->SetValue(newValue); // comes back here if the entry had another
    if (changed && life.IsAlive() && value == newValue) {
        onChange.Fire(this, newValue);
    }
}

void CtbNumParamControl::OnEditValueChanged(toolkit::TmyControl* /*sender*/, std::int64_t newValue) {
    SetValue(newValue);
}

void CtbNumParamControl::SetDigits(int count) {
    edit->SetTextLimit(count);
}

void CtbNumParamControl::SetWheelSnap(bool snaps) {
    edit->SetWheelSnap(snaps);
    SetValue(value);
}

void CtbNumParamControl::SetWheelDigits(int digits) {
    edit->SetWheelDigits(digits);
}

// --- layout ------------------------------------------------------------------------------------------------

void CtbNumParamControl::SetFieldSize(int width, int height) {
    edit->SetSize(width, height);
}

void CtbNumParamControl::Relayout() {
    int x = kMargin;
    const int height = HeightOf(*edit);
    if (label->GetTextLength() > 0) {
        const int width = static_cast<int>(label->NaturalSize().cx);
        label->SetBounds(x, kTextTop, width, kTextHeight);
        x += width;
    }
    edit->SetPosition(x, 0);
    x += WidthOf(*edit);
    if (spinVisible) {
        spin->SetBounds(x, 0, kSpinWidth, height);
        x += kSpinWidth;
    }
    if (hasUnit) {
        const int width = static_cast<int>(unitLabel->NaturalSize().cx);
        unitLabel->SetBounds(x, kTextTop, width, kTextHeight);
        x += width;
    }
    label->SetVisible(label->GetTextLength() > 0);
    unitLabel->SetVisible(hasUnit);
    SetSize(x + kMargin, height);
}

} // namespace orva::controls
