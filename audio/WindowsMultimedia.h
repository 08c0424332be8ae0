/// The platform's headers of wave devices, in the order in which they compile.
#pragma once

// clang-format off
#include <windows.h>
#include <mmsystem.h>
// clang-format on
