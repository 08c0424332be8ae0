#include "toolkit/TimerPlatform.h"

namespace orva::toolkit {

namespace {

UINT_PTR SetPlatformTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) {
    return ::SetTimer(window, id, milliseconds, procedure);
}

void KillPlatformTimer(HWND window, UINT_PTR id) {
    ::KillTimer(window, id);
}

constinit TimerPlatform platform{SetPlatformTimer, KillPlatformTimer};

} // namespace

TimerPlatform& TimerCalls() {
    return platform;
}

} // namespace orva::toolkit
