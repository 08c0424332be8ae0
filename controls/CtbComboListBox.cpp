#include "controls/CtbComboListBox.h"

namespace orva::controls {

namespace {

constexpr DWORD kChildStyle = WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN;

} // namespace

CtbComboListBox::CtbComboListBox(toolkit::TmyControl* parentControl, const toolkit::Placement& placement)
    : TmyListBox(parentControl, placement, toolkit::ListStyle::InCombo, kChildStyle, WS_EX_TOOLWINDOW),
      place(placement) {
    LeaveParent();
}

/// The window becomes one on the desktop. The style goes first: a child cannot be without a parent.
void CtbComboListBox::LeaveParent() {
    if (window == nullptr) {
        return;
    }
    const HWND ownerWindow = GetAncestor(window, GA_ROOT);
    const auto childStyle = static_cast<DWORD>(GetWindowLongA(window, GWL_STYLE));
    SetWindowLongA(window, GWL_STYLE, static_cast<LONG>((childStyle & ~WS_CHILD) | WS_POPUP));
    ::SetParent(window, nullptr);
    SetWindowLongA(window, GWL_HWNDPARENT, static_cast<LONG>(reinterpret_cast<LONG_PTR>(ownerWindow)));
    TakePlace();
}

void CtbComboListBox::TakePlace() {
    const toolkit::TmyControl* container = GetParent();
    const toolkit::TmyComponent* component = container != nullptr ? GetParent()->NearestComponent() : nullptr;
    POINT corner{place.x, place.y};
    if (component != nullptr) {
        const POINT offset = container->OffsetInComponent();
        corner.x += offset.x;
        corner.y += offset.y;
        ClientToScreen(component->Window(), &corner);
    }
    SetBounds(static_cast<int>(corner.x), static_cast<int>(corner.y), place.width, place.height);
}

void CtbComboListBox::SetVisible(bool visible) {
    if (visible) {
        TakePlace();
    }
    TmyListBox::SetVisible(visible);
}

void CtbComboListBox::OnFocusChange(bool gained) {
    const LifeGuard life(this);
    if (!gained) {
        onClose.Fire(this);
    }
    if (life.IsAlive()) {
        TmyListBox::OnFocusChange(gained);
    }
}

} // namespace orva::controls
