#include "toolkit/WorkArea.h"

namespace orva::toolkit {

RECT WorkAreaAt(HWND window) {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoA(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
    return monitor.rcWork;
}

} // namespace orva::toolkit
