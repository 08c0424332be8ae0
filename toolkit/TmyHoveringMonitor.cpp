#include "toolkit/TmyHoveringMonitor.h"

#include "toolkit/TypeRegistry.h"

namespace orva::toolkit {

namespace {

constexpr UINT_PTR kTimer = 1;
constexpr UINT kDelay = 500; ///< [ms]

bool PointerIsIn(TmyControl* control) {
    POINT corner;
    control->GetPosition(&corner, true);
    const RECT& bounds = control->Bounds();
    const RECT area{corner.x, corner.y, corner.x + (bounds.right - bounds.left),
                    corner.y + (bounds.bottom - bounds.top)};
    POINT pointer;
    return GetCursorPos(&pointer) != 0 && PtInRect(&area, pointer) != 0;
}

} // namespace

TmyHoveringMonitor::TmyHoveringMonitor()
    : TmyComponent(nullptr, "myHoverMonitor", WS_POPUP, 0, {0, 0, 1, 1}) {
    RegisterType(this, TypeId::HoverMonitor, "HoverMonitor");
}

void TmyHoveringMonitor::Start(TmyControl* control) {
    if (control == tracked) {
        return;
    }
    KillTimer(Window(), kTimer);
    tracked = control;
    startTicks = GetTickCount();
    SetTimer(Window(), kTimer, kDelay, nullptr);
}

void TmyHoveringMonitor::Stop(const TmyControl* control) {
    if (tracked != nullptr && control == tracked) {
        EndWatch();
    }
}

void TmyHoveringMonitor::OnTimer(UINT_PTR id) {
    TmyComponent::OnTimer(id);
    TmyControl* control = tracked;
    // A timer may fire a tick early: the delay as such is enough.
    const bool rested =
        control != nullptr && static_cast<LONG>(GetTickCount() - startTicks) >= static_cast<LONG>(kDelay);
    EndWatch();
    if (rested && PointerIsIn(control)) {
        control->OnHover();
    }
}

void TmyHoveringMonitor::EndWatch() {
    KillTimer(Window(), kTimer);
    tracked = nullptr;
}

} // namespace orva::toolkit
