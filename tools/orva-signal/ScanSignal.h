#pragma once

#include "tools/orva-signal/SignalOptions.h"

#include <cstdint>
#include <vector>

namespace orva::tools {

/// Ten channels back to back, as a scanner that is tuned from one to the next receives them.
std::vector<std::int16_t> MakeScanSignal(const SignalOptions& options);

} // namespace orva::tools
