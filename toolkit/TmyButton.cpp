#include "toolkit/TmyButton.h"

#include "toolkit/Colors.h"
#include "toolkit/FocusMark.h"
#include "toolkit/FrameDrawing.h"
#include "toolkit/TimerPlatform.h"
#include "toolkit/TypeRegistry.h"

#include <typeinfo>

namespace orva::toolkit {

TmyButton::TmyButton(TmyControl* parentControl, const char* text, const Placement& placement,
                     DWORD windowStyle, DWORD extendedStyle)
    : PressLogic<TmyPanel>(parentControl, text, placement, windowStyle, extendedStyle) {
    RegisterType(this, TypeId::Button, "Button");
    SetTextAlignment(kTextInTheMiddle);
    SetBorderStyle(kFrameOutline);
}

void TmyButton::SetText(const TmyString& text, bool resize) {
    if (!(GetText() == text)) {
        PressLogic<TmyPanel>::SetText(text);
    }
    if (resize) {
        UpdateLook(); // before the first paint the border is not the one that it will have
        const SIZE size = NaturalSize();
        SetSize(size.cx, size.cy);
    }
}

// --- groups ------------------------------------------------------------------------------------------------

TmyButton* TmyButton::AsSibling(TmyControl* control) const {
    auto* button = dynamic_cast<TmyButton*>(control);
    const bool sameGroup = button != nullptr && button != this && group != 0 && button->group == group;
    return sameGroup && typeid(*button) == typeid(*this) ? button : nullptr;
}

bool TmyButton::HasSiblingDown() const {
    if (GetParent() == nullptr) {
        return false;
    }
    for (TmyControl* child = GetParent()->FirstChild(); child != nullptr; child = child->NextSibling()) {
        const TmyButton* sibling = AsSibling(child);
        if (sibling != nullptr && sibling->down) {
            return true;
        }
    }
    return false;
}

void TmyButton::PutSiblingsUp() {
    if (GetParent() == nullptr) {
        return;
    }
    const LifeGuard life(this);
    ChildWalk children(GetParent());
    while (TmyControl* child = children.Next()) {
        TmyButton* sibling = AsSibling(child);
        if (sibling != nullptr && sibling->down) {
            sibling->SetDown(false);
        }
        if (!life.IsAlive()) {
            return;
        }
    }
}

bool TmyButton::OnGroupChange(bool newDown) {
    if (newDown) {
        PutSiblingsUp();
        return true;
    }
    return allowAllUp || HasSiblingDown();
}

void TmyButton::Latch() {
    if (group == 0) {
        return;
    }
    if (down) {
        if (OnGroupChange(false)) {
            ChangeDown(false);
        }
        return;
    }
    const LifeGuard life(this);
    ChangeDown(true);
    if (life.IsAlive()) {
        OnGroupChange(true);
    }
}

void TmyButton::SetDown(bool newDown) {
    if (down == newDown || (group != 0 && !newDown && !OnGroupChange(false))) {
        return;
    }
    if (group != 0 && newDown) {
        // The others go up while this one is down already, so that each is free to.
        down = true;
        const LifeGuard life(this);
        OnGroupChange(true);
        if (!life.IsAlive() || !down) {
            return;
        }
    }
    ChangeDown(newDown);
}

// --- repetition --------------------------------------------------------------------------------------------

void TmyButton::StartRepeat() {
    TimerCalls().set(Window(), delayTimerId, kRepeatDelay, nullptr);
}

void TmyButton::StopRepeat() {
    TimerCalls().kill(Window(), delayTimerId);
    TimerCalls().kill(Window(), repeatTimerId);
}

void TmyButton::OnTimer(UINT_PTR id) {
    if (id != delayTimerId && id != repeatTimerId) {
        PressLogic<TmyPanel>::OnTimer(id);
        return;
    }
    if (!IsEnabled()) {
        return;
    }
    if (!HasCapture()) {
        CancelPress(); // someone took the mouse away: the release will not come here
        return;
    }
    if (id == delayTimerId) {
        TimerCalls().kill(Window(), delayTimerId);
        TimerCalls().set(Window(), repeatTimerId, kRepeatInterval, nullptr);
    }
    OnPress();
}

LRESULT TmyButton::WndProc(UINT message, WPARAM wParam, LPARAM lParam) {
    // A window that takes the mouse away, a dialog for instance, also takes the release.
    const bool taken =
        message == WM_CAPTURECHANGED && lParam != 0 && reinterpret_cast<HWND>(lParam) != Window();
    if (taken || message == WM_CANCELMODE) {
        CancelPress();
    }
    return PressLogic<TmyPanel>::WndProc(message, wParam, lParam);
}

// --- look --------------------------------------------------------------------------------------------------

void TmyButton::UpdateLook() {
    SetBorderStyle(LooksSunken() ? kFrameSunken : kFrameRaised);
}

void TmyButton::SetDownTextColor(COLORREF color) {
    if (GetDownTextColor() != color) {
        Invalidate();
    }
    downTextColor = color;
}

COLORREF TmyButton::GetDownTextColor() const {
    return downTextColor.value_or(GetStyleValue(StyleValue::TextColor));
}

void TmyButton::SetArrow(ArrowGlyph newGlyph, int size) {
    if (glyph != newGlyph || glyphSize != size) {
        glyph = newGlyph;
        glyphSize = size;
        Invalidate();
    }
}

COLORREF TmyButton::ContentColor() const {
    if (!IsEnabled()) {
        return GetStyleValue(StyleValue::DisabledTextColor);
    }
    return down ? GetDownTextColor() : GetStyleValue(StyleValue::TextColor);
}

TmyPanel::TitlePlace TmyButton::PlaceTitle(const RECT& area) const {
    return {ContentPlace(area), ContentColor()};
}

SIZE TmyButton::Padding() const {
    return kButtonPadding;
}

void TmyButton::OnPaint(HDC dc) {
    UpdateLook();
    PressLogic<TmyPanel>::OnPaint(dc);
}

void TmyButton::OnDrawBackground(HDC dc, const RECT& area) {
    FillSolid(dc, area, FaceColor(GetStyleValue(StyleValue::WindowColor), IsEnabled()));
}

void TmyButton::OnDrawContent(HDC dc, const RECT& area) {
    const RECT place = ContentPlace(area);
    PressLogic<TmyPanel>::OnDrawContent(dc, place);
    DrawArrow(dc, glyph, (place.left + place.right - glyphSize) / 2,
              (place.top + place.bottom - glyphSize) / 2, glyphSize, ContentColor());
}

void TmyButton::OnDrawFocus(HDC dc, const RECT& area) {
    DrawFocusMark(dc, ContentPlace(area));
}

} // namespace orva::toolkit
