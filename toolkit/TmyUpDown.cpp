#include "toolkit/TmyUpDown.h"

#include "toolkit/FrameDrawing.h"
#include "toolkit/TmyIntEdit.h"
#include "toolkit/Tmy_Btn2.h"
#include "toolkit/TypeRegistry.h"

namespace orva::toolkit {

namespace {

constexpr WORD kHandCursor = 32649;

} // namespace

TmyUpDown::TmyUpDown(TmyControl* parentControl, const Placement& placement, bool withMiddle,
                     DWORD windowStyle, DWORD extendedStyle)
    : TmyPanel(parentControl, "", placement, windowStyle, extendedStyle),
      up(new Tmy_Btn2(this)),
      down(new Tmy_Btn2(this)),
      middle(withMiddle ? new Tmy_Btn2(this) : nullptr) {
    RegisterType(this, TypeId::UpDown, "UpDown");
    SetStyleValue(StyleValue::BorderStyle, kFrameNone);
    SetCursor(LoadCursorA(nullptr, MAKEINTRESOURCEA(kHandCursor)));
    up->onPress.Bind<&TmyUpDown::OnUpPress>(this);
    down->onPress.Bind<&TmyUpDown::OnDownPress>(this);
    if (middle != nullptr) {
        middle->SetArrow(ArrowGlyph::Square);
    }
    PlaceButtons();
}

void TmyUpDown::SetEdit(TmyIntEdit* newEdit) {
    edit.Set(newEdit);
    if (newEdit != nullptr) {
        newEdit->SetLinked(this, nullptr);
    }
}

// --- layout ------------------------------------------------------------------------------------------------

void TmyUpDown::OnResize() {
    const LifeGuard life(this);
    TmyPanel::OnResize();
    if (life.IsAlive()) {
        PlaceButtons();
    }
}

void TmyUpDown::PlaceButtons() {
    RECT area{};
    GetClientArea(&area);
    const int width = static_cast<int>(area.right - area.left);
    const int height = static_cast<int>(area.bottom - area.top);
    const bool upright = height >= width;
    const int length = upright ? height : width;
    const int middleLength = middle != nullptr ? length / 3 : 0;
    const int firstLength = (length - middleLength) / 2;
    const auto place = [&](Tmy_Btn2* button, int start, int end) {
        if (upright) {
            button->SetBounds(area.left, area.top + start, width, end - start);
        } else {
            button->SetBounds(area.left + start, area.top, end - start, height);
        }
    };
    place(upright ? up : down, 0, firstLength);
    place(upright ? down : up, firstLength + middleLength, length);
    if (middle != nullptr) {
        place(middle, firstLength, firstLength + middleLength);
    }
    up->SetArrow(upright ? ArrowGlyph::SolidUp : ArrowGlyph::SolidRight);
    down->SetArrow(upright ? ArrowGlyph::SolidDown : ArrowGlyph::SolidLeft);
}

// --- stepping ----------------------------------------------------------------------------------------------

void TmyUpDown::OnUpPress(TmyControl* /*sender*/) {
    Step(1);
}

void TmyUpDown::OnDownPress(TmyControl* /*sender*/) {
    Step(-1);
}

void TmyUpDown::OnMouseWheel(int delta, TmyControl* sender) {
    if (!IsEnabled()) {
        return;
    }
    if (edit.Get() != nullptr) {
        Step(delta);
    } else {
        TmyPanel::OnMouseWheel(delta, sender);
    }
}

void TmyUpDown::Step(int notches) {
    const LifeGuard life(this);
    TmyIntEdit* stepped = edit.Get();
    if (stepped != nullptr) {
        if (!stepped->IsEnabled() || stepped->IsReadOnly()) {
            return;
        }
        stepped->StepBy(notches);
    }
    if (life.IsAlive()) {
        onStep.Fire(this, notches);
    }
}

} // namespace orva::toolkit
