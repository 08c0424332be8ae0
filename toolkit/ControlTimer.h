/// A timer for a control without a window.
#pragma once

#include "toolkit/TmyControl.h"

#include <windows.h>

namespace orva::toolkit {

/// Calls `OnTimer(id)` of its control again and again while it runs, wherever in the tree the control is: the
/// timers of the platform reach windows alone. It runs on the window of the control's nearest component, and
/// stops with itself. Owned by the control, as a member. [window thread]
class ControlTimer {
public:
    ControlTimer(TmyControl* timedControl, UINT_PTR timerId);
    ~ControlTimer();
    ControlTimer(const ControlTimer&) = delete;
    ControlTimer& operator=(const ControlTimer&) = delete;

    /// Starts it, or starts the interval anew; does nothing without a window.
    void Start(UINT milliseconds);
    void Stop();
    [[nodiscard]] bool IsRunning() const { return window != nullptr; }

private:
    static void CALLBACK OnElapsed(HWND timedWindow, UINT message, UINT_PTR platformId, DWORD time);

    TmyControl* control;
    UINT_PTR id;
    HWND window = nullptr;        ///< that it runs on; null while it does not run
    ControlTimer* next = nullptr; ///< of those that run
};

} // namespace orva::toolkit
