/// Focus, keys and the tab order.
///
/// Bit 6 marks the way from a top-level window down to the control that has the focus. A top-level window
/// keeps its path while it is in the background, and gives the focus back along it.

#include "toolkit/TmyApplication.h"
#include "toolkit/TmyComponent.h"
#include "toolkit/TmyControl.h"

namespace orva::toolkit {

TmyControl* TmyControl::FocusedChild() const {
    for (TmyControl* child = firstChild; child != nullptr; child = child->nextSibling) {
        if (child->HasState(ControlState::Focused) && !child->IsTopLevelWindow()) {
            return child;
        }
    }
    return nullptr;
}

TmyControl* TmyControl::FocusedSibling() const {
    for (TmyControl* sibling = parent->firstChild; sibling != nullptr; sibling = sibling->nextSibling) {
        if (sibling != this && sibling->HasState(ControlState::Focused) && !sibling->IsTopLevelWindow()) {
            return sibling;
        }
    }
    return nullptr;
}

TmyControl* TmyControl::DeepestFocused() {
    TmyControl* control = this;
    while (TmyControl* child = control->FocusedChild()) {
        control = child;
    }
    return control;
}

void TmyControl::SetFocus() {
    TmyComponent* component = NearestComponent();
    if (component == nullptr) {
        return;
    }
    const LifeGuard life(this);
    if (FocusedChild() != nullptr) {
        focusTold = false; // it led to the focus, now it has it
    }
    // The path comes first: the component passes a focus that the platform gives it on along its path.
    MarkFocusPath();
    if (life.IsAlive()) {
        ::SetFocus(component->Window());
    }
    if (life.IsAlive()) {
        TellFocus(true);
    }
}

bool TmyControl::HasFocus() const {
    if (!HasState(ControlState::Focused)) {
        return false;
    }
    const TmyControl* component = this;
    while (component != nullptr && component->window == nullptr) {
        component = component->parent;
    }
    const HWND focused = ::GetFocus();
    return component != nullptr && focused != nullptr &&
           GetAncestor(focused, GA_ROOT) == GetAncestor(component->window, GA_ROOT);
}

void TmyControl::MarkFocusPath() {
    const LifeGuard life(this);
    ClearFocusedChildren();
    SetState(ControlState::Focused, true);
    for (TmyControl* control = this; control->parent != nullptr && !control->IsTopLevelWindow();
         control = control->parent) {
        while (TmyControl* rival = control->FocusedSibling()) {
            rival->ClearFocus();
            if (!life.IsAlive()) {
                return;
            }
        }
        control->parent->SetState(ControlState::Focused, true);
    }
}

/// Takes the focus, or the way to it, from this control and all below.
void TmyControl::ClearFocus() {
    const LifeGuard life(this);
    ClearFocusedChildren();
    if (life.IsAlive()) {
        SetState(ControlState::Focused, false);
        TellFocus(false);
    }
}

void TmyControl::ClearFocusedChildren() {
    const LifeGuard life(this);
    while (life.IsAlive()) {
        TmyControl* child = FocusedChild();
        if (child == nullptr) {
            return;
        }
        child->ClearFocus();
    }
}

void TmyControl::TellFocus(bool gained) {
    if (focusTold != gained) {
        focusTold = gained;
        OnFocusChange(gained);
    }
}

void TmyControl::TellDeepestOfLostFocus() {
    DeepestFocused()->TellFocus(false);
}

void TmyControl::OnFocusChange(bool gained) {
    onFocus.Fire(this, gained);
}

// --- keys --------------------------------------------------------------------------------------------------

void TmyControl::OnKeyDown(WPARAM& key, LPARAM flags) {
    const LifeGuard life(this);
    onKeyDown.Fire(this, key, flags);
    if (!life.IsAlive() || key == 0) {
        return;
    }
    if (HasState(ControlState::ForwardsKeys)) {
        if (TmyComponent* top = GetTopLevel()) {
            top->OnKeyPreview(key, flags, this);
        }
    }
    if (life.IsAlive() && key == VK_TAB) {
        MoveFocusByTab(GetKeyState(VK_SHIFT) < 0);
    }
}

void TmyControl::OnKeyUp(WPARAM key, LPARAM flags) {
    onKey.Fire(this, key, flags);
}

void TmyControl::OnChar(WPARAM& code, LPARAM flags) {
    onKey.Fire(this, code, flags);
}

void TmyControl::OnKeyPreview(WPARAM& key, LPARAM flags, TmyControl* sender) {
    onKeyPreview.Fire(this, key, flags, sender);
}

// --- tab order ---------------------------------------------------------------------------------------------

void TmyControl::MoveFocusByTab(bool backward) {
    TmyControl* top = GetTopLevel();
    if (top == nullptr || top->MoveFocus(backward)) {
        return;
    }
    // The end of the order: from its other end once more, with no one on the path.
    const LifeGuard life(top);
    if (TmyControl* child = top->FocusedChild()) {
        child->ClearFocus();
    } else {
        top->TellFocus(false);
    }
    if (life.IsAlive()) {
        top->MoveFocus(backward);
    }
}

/// Gives the focus to the next control behind the one that has it, in this subtree.
///
/// \return whether one took it
bool TmyControl::MoveFocus(bool backward) {
    if (!HasState(ControlState::Focused) && HasState(ControlState::Focusable) && IsEnabled() && IsVisible()) {
        SetFocus();
        return true;
    }
    TmyControl* child = FocusedChild();
    if (child == nullptr) {
        child = backward ? LastChild() : firstChild;
    }
    while (child != nullptr) {
        if (!child->IsTopLevelWindow() && child->MoveFocus(backward)) {
            return true;
        }
        child = backward ? Predecessor(child) : child->nextSibling;
    }
    return false;
}

} // namespace orva::toolkit
