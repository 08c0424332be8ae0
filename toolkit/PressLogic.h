/// What makes a button of a panel or of a control.
#pragma once

#include "toolkit/TmyComponent.h"
#include "toolkit/TmyControl.h"

#include <utility>
#include <windows.h>

namespace orva::toolkit {

/// How long a button is held before it repeats, and the time between two repetitions [ms].
constexpr UINT kRepeatDelay = 500;
constexpr UINT kRepeatInterval = 50;

/// Around a button's text, in its natural size [pixels].
constexpr SIZE kButtonPadding{4, 1};

/// Follows the mouse, Return and Space, and tells presses from clicks. `Base` is what the button is drawn by.
///
/// | state   | begins                                      | ends                                          |
/// |---------|---------------------------------------------|-----------------------------------------------|
/// | pressed | left button, Space; the pointer comes back  | release; the pointer leaves while it is held   |
/// | down    | `SetDown`, or a click where there is a latch | the same                                      |
///
/// | event     | fires                                                                     |
/// |-----------|---------------------------------------------------------------------------|
/// | `onPress` | at once when pressed by the left button or Space, then at each repetition |
/// | `onClick` | at a release inside, at the release of Space, and at Return               |
/// | `onDown`  | after each change of `down`, with the new state                           |
///
/// A release outside is no click. A button that is disabled or hidden while it is pressed lets go without
/// one, and so does Space when the focus is lost. A disabled one takes no input at all.
template <class Base>
class PressLogic : public Base {
public:
    template <class... BaseArguments>
    explicit PressLogic(BaseArguments&&... arguments) : Base(std::forward<BaseArguments>(arguments)...) {}

    [[nodiscard]] bool IsDown() const { return down; }
    [[nodiscard]] bool IsPressed() const { return pressed; }
    [[nodiscard]] bool LooksSunken() const { return down || pressed; }
    /// Where the contents are drawn: they move with the face.
    [[nodiscard]] RECT ContentPlace(RECT area) const {
        const int offset = LooksSunken() ? 1 : 0;
        OffsetRect(&area, offset, offset);
        return area;
    }

    /// Latches or releases; no click is fired. Compares first.
    virtual void SetDown(bool newDown) {
        if (down != newDown) {
            ChangeDown(newDown);
        }
    }

    /// Without it the mouse never presses the button, so that it never clicks either: only `onPress` fires.
    void SetShowPressed(bool show) { showPressed = show; }
    [[nodiscard]] bool GetShowPressed() const { return showPressed; }

    virtual void UpdateLook() = 0; ///< shows the states
    virtual void OnDownChanged() { onDown.Fire(this, down); }
    virtual void OnClick() { onClick.Fire(this); }
    virtual void OnPress() { onPress.Fire(this); }

    void OnLeftButtonDown(WPARAM flags, int x, int y) override {
        if (!this->IsEnabled()) {
            return;
        }
        const TmyControl::LifeGuard life(this);
        Base::OnLeftButtonDown(flags, x, y);
        if (!life.IsAlive() || !this->IsEnabled()) {
            return;
        }
        held = true;
        if (showPressed) {
            pressed = true;
        }
        if (this->HasState(ControlState::Focusable) && !this->HasFocus()) {
            this->SetFocus();
        }
        if (!life.IsAlive() || !held) {
            return;
        }
        UpdateLook();
        StartRepeat();
        OnPress();
    }

    void OnMouseMove(WPARAM flags, int x, int y) override {
        if (!this->IsEnabled()) {
            return;
        }
        const TmyControl::LifeGuard life(this);
        Base::OnMouseMove(flags, x, y);
        if (life.IsAlive() && held && (flags & MK_LBUTTON) != 0 && HasCapture()) {
            pressed = showPressed && IsInside(x, y);
            UpdateLook();
        }
    }

    void OnLeftButtonUp(WPARAM flags, int x, int y) override {
        if (!this->IsEnabled()) {
            return;
        }
        const TmyControl::LifeGuard life(this);
        Base::OnLeftButtonUp(flags, x, y);
        if (!life.IsAlive()) {
            return;
        }
        const bool clicked = std::exchange(pressed, false) && IsInside(x, y);
        held = false;
        StopRepeat(); // before a handler may run messages
        if (clicked) {
            Latch();
        }
        if (life.IsAlive()) {
            UpdateLook();
        }
        if (clicked && life.IsAlive()) {
            OnClick();
        }
    }

    void OnKeyDown(WPARAM& key, LPARAM flags) override {
        if (!this->IsEnabled()) {
            return;
        }
        const TmyControl::LifeGuard life(this);
        Base::OnKeyDown(key, flags);
        if (!life.IsAlive() || !this->IsEnabled()) {
            return;
        }
        if (key == VK_RETURN) {
            Latch();
            if (life.IsAlive()) {
                OnClick();
            }
        } else if (key == VK_SPACE) {
            pressed = true;
            UpdateLook();
            OnPress();
        }
    }

    void OnKeyUp(WPARAM key, LPARAM flags) override {
        if (!this->IsEnabled()) {
            return;
        }
        const TmyControl::LifeGuard life(this);
        Base::OnKeyUp(key, flags);
        if (!life.IsAlive() || key != VK_SPACE || !pressed) {
            return;
        }
        Latch();
        if (life.IsAlive()) {
            pressed = false;
            UpdateLook();
            OnClick();
        }
    }

    void OnEnableChanged() override {
        if (!this->IsEnabled()) {
            CancelPress();
        }
        Base::OnEnableChanged();
    }

    void OnVisibilityChanged(bool visible) override {
        if (!visible) {
            CancelPress();
        }
        Base::OnVisibilityChanged(visible);
    }

    void OnFocusChange(bool gained) override {
        if (!gained && !held) {
            CancelPress(); // the release of Space goes elsewhere
        }
        this->Invalidate();
        Base::OnFocusChange(gained);
    }

    TmyEvent<> onClick;
    TmyEvent<bool> onDown;
    TmyEvent<> onPress;

protected:
    /// What a click changes besides being told.
    virtual void Latch() {}
    virtual void StartRepeat() {}
    virtual void StopRepeat() {}

    /// Sets the state and tells of it.
    void ChangeDown(bool newDown) {
        down = newDown;
        UpdateLook();
        this->Invalidate();
        OnDownChanged();
    }
    /// Whether the mouse is still its component's.
    [[nodiscard]] bool HasCapture() {
        const TmyComponent* component = this->NearestComponent();
        return component != nullptr && GetCapture() == component->Window();
    }
    /// Ends a press that is no click.
    void CancelPress() {
        if (pressed || held) {
            pressed = false;
            held = false;
            StopRepeat();
            UpdateLook();
        }
    }

    bool down = false;
    bool pressed = false;
    bool held = false; ///< pressed by the mouse, wherever the pointer is now
    bool showPressed = true;

private:
    [[nodiscard]] bool IsInside(int x, int y) const {
        return x >= 0 && y >= 0 && x < this->GetClientWidth() && y < this->GetClientHeight();
    }
};

} // namespace orva::toolkit
