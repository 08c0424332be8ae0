/// The mouse: down the tree to the control concerned.

#include "toolkit/TmyApplication.h"
#include "toolkit/TmyComponent.h"
#include "toolkit/TmyControl.h"

#include <cstdlib>

namespace orva::toolkit {

TmyControl* TmyControl::ChildAt(int x, int y) const {
    const POINT point{x, y};
    for (TmyControl* child = firstChild; child != nullptr; child = child->nextSibling) {
        if (!child->HasState(ControlState::Hidden) && !child->IsTopLevelWindow() &&
            PtInRect(&child->bounds, point) != 0) {
            return child;
        }
    }
    return nullptr;
}

/// The child that the message goes on to, or this control itself. Notes and forgets the pressed child on the
/// way.
TmyControl* TmyControl::MouseTarget(MouseCode code, int x, int y) {
    TmyControl* target = nullptr;
    switch (code) {
    case MouseCode::Move:
        target = pressedChild;
        break;
    case MouseCode::LeftUp:
        target = pressedChild;
        pressedChild = nullptr;
        break;
    case MouseCode::Wheel:
        target = FocusedChild();
        return target != nullptr ? target : this;
    default:
        break;
    }
    if (target == nullptr) {
        target = ChildAt(x, y);
    }
    if (target == nullptr) {
        target = this;
    }
    if (code == MouseCode::LeftDown) {
        pressedChild = target;
    }
    return target;
}

void TmyControl::DispatchMouse(MouseCode code, WPARAM flags, int x, int y) {
    TmyControl* target = MouseTarget(code, x, y);
    if (target != this) {
        target->DispatchMouse(code, flags, x - target->bounds.left, y - target->bounds.top);
        return;
    }
    switch (code) {
    case MouseCode::Move:
        OnMouseMove(flags, x, y);
        break;
    case MouseCode::LeftDown:
        HandleLeftDown(flags, x, y);
        break;
    case MouseCode::RightDown:
        OnRightButtonDown(flags, x, y);
        break;
    case MouseCode::LeftUp:
        HandleLeftUp(flags, x, y);
        break;
    case MouseCode::RightUp:
        OnRightButtonUp(flags, x, y);
        break;
    case MouseCode::Wheel:
        OnMouseWheel(static_cast<int>(flags), this);
        break;
    }
}

void TmyControl::HandleLeftDown(WPARAM flags, int x, int y) {
    const LifeGuard life(this);
    FocusByClick();
    if (life.IsAlive()) {
        OnLeftButtonDown(flags, x, y);
    }
}

/// A click gives the focus to the first control from here up that can take it, or to the top window. The
/// click on a disabled window comes by its parent: it must not lead the keys to where they are ignored.
void TmyControl::FocusByClick() {
    const auto takesFocus = [](const TmyControl& control) {
        return control.HasState(ControlState::Focusable) && control.IsEnabled();
    };
    TmyControl* taker = this;
    while (!takesFocus(*taker) && !taker->IsTopLevelWindow()) {
        if (taker->parent == nullptr) {
            return;
        }
        taker = taker->parent;
    }
    if (!taker->HasFocus() || taker->FocusedChild() != nullptr) {
        taker->SetFocus();
    }
}

void TmyControl::HandleLeftUp(WPARAM flags, int x, int y) {
    const DWORD now = GetTickCount();
    const bool doubleClick = lastClickTime != 0 && now - lastClickTime <= GetDoubleClickTime() &&
                             std::abs(x - lastClickX) < GetSystemMetrics(SM_CXDOUBLECLK) &&
                             std::abs(y - lastClickY) < GetSystemMetrics(SM_CYDOUBLECLK);
    lastClickTime = now;
    lastClickX = x;
    lastClickY = y;
    const LifeGuard life(this);
    OnLeftButtonUp(flags, x, y);
    if (doubleClick && life.IsAlive()) {
        OnDoubleClick(x, y);
    }
}

void TmyControl::OnLeftButtonDown(WPARAM flags, int x, int y) {
    onMouseDown.Fire(this, MouseButton::Left, flags, x, y);
}

void TmyControl::OnLeftButtonUp(WPARAM flags, int x, int y) {
    onMouseUp.Fire(this, MouseButton::Left, flags, x, y);
}

void TmyControl::OnRightButtonDown(WPARAM flags, int x, int y) {
    onMouseDown.Fire(this, MouseButton::Right, flags, x, y);
}

void TmyControl::OnRightButtonUp(WPARAM flags, int x, int y) {
    const LifeGuard life(this);
    onMouseUp.Fire(this, MouseButton::Right, flags, x, y);
    if (life.IsAlive()) {
        onRightClick.Fire(this, flags, x, y);
    }
}

void TmyControl::OnMouseMove(WPARAM flags, int x, int y) {
    Application().StartHover(this);
    onMouseMove.Fire(this, flags, x, y);
}

void TmyControl::OnDoubleClick(int x, int y) {
    onDoubleClick.Fire(this, x, y);
}

void TmyControl::OnMouseWheel(int delta, TmyControl* sender) {
    bool passOn = true;
    const LifeGuard life(this);
    onWheel.Fire(this, delta, wheelKeys, passOn);
    if (passOn && life.IsAlive() && parent != nullptr) {
        parent->OnMouseWheel(delta, sender);
    }
}

} // namespace orva::toolkit
