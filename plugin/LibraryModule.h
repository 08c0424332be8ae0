/// The library as the platform knows it.
#pragma once

#include <windows.h>

namespace orva::plugin {

/// Module handle of this library, from the time it is loaded.
HINSTANCE LibraryModule();

} // namespace orva::plugin
