/// The calls that start and stop the widgets' timers.
#pragma once

#include <windows.h>

namespace orva::toolkit {

/// The default is the platform's own; tests put theirs there, with a clock that they move.
struct TimerPlatform {
    UINT_PTR (*set)(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure);
    void (*kill)(HWND window, UINT_PTR id);
};

/// The table in force. [window thread]
TimerPlatform& TimerCalls();

} // namespace orva::toolkit
