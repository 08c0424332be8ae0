/// The modal loop.

#include "toolkit/TmyApplication.h"
#include "toolkit/TmyComponent.h"

#include <optional>

namespace orva::toolkit {

namespace {

/// The window, and perhaps the control, that a modal component keeps from input.
class DisabledOwner {
public:
    DisabledOwner(HWND ownerWindow, TmyControl* ownerControl)
        : window(ownerWindow),
          control(ownerControl),
          wasEnabled(control != nullptr ? !control->HasState(ControlState::Disabled)
                                        : IsWindowEnabled(window) != 0) {
        if (control != nullptr) {
            life.emplace(control);
        }
        SetEnabled(false);
    }

    /// Gives the owner back to the user, if it was his before.
    void Release() {
        if (wasEnabled) {
            SetEnabled(true);
        }
        if (window != nullptr) {
            SetForegroundWindow(window);
        }
    }

private:
    void SetEnabled(bool enabled) {
        if (control != nullptr && life->IsAlive()) {
            control->SetEnabled(enabled);
        } else if (control == nullptr && window != nullptr) {
            EnableWindow(window, enabled ? TRUE : FALSE);
        }
    }

    HWND window;
    TmyControl* control;
    std::optional<TmyControl::LifeGuard> life; ///< of the control
    bool wasEnabled;
};

} // namespace

int TmyComponent::ShowModal(HWND ownerWindow) {
    modalResult = 0;
    if (window == nullptr) {
        return 0; // nothing the user could close
    }
    inModal = true;
    TmyControl* ownerControl = ownerWindow == nullptr ? GetParent() : nullptr;
    DisabledOwner owner(ownerControl != nullptr ? ParentWindow() : ownerWindow, ownerControl);
    // The owner's being disabled is not meant for its dialog.
    SetParentEnabled(true);
    SetVisible(true);

    const LifeGuard life(this);
    const int result = RunModalLoop(life);
    owner.Release();
    if (life.IsAlive()) {
        SetVisible(false);
        inModal = false;
    }
    return result;
}

int TmyComponent::RunModalLoop(const LifeGuard& life) {
    TmyApplication& application = Application();
    while (life.IsAlive() && !application.quitting && modalResult == 0) {
        const BOOL got = GetMessageA(&application.message, nullptr, 0, 0);
        if (got == 0) {
            // Meant for the loop around this one, which is the host's.
            PostQuitMessage(static_cast<int>(application.message.wParam));
            return 0;
        }
        if (got < 0) {
            return 0;
        }
        const bool cancelled = !life.IsAlive() || !inModal;
        TranslateMessage(&application.message);
        DispatchMessageA(&application.message);
        if (cancelled) {
            return 0;
        }
    }
    return life.IsAlive() && !application.quitting ? modalResult : 0;
}

} // namespace orva::toolkit
