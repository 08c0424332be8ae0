/// Where on a monitor windows may stand.
#pragma once

#include <windows.h>

namespace orva::toolkit {

/// Area that windows may cover of the monitor that a window is on, or that is nearest to it [screen pixels].
[[nodiscard]] RECT WorkAreaAt(HWND window);

} // namespace orva::toolkit
