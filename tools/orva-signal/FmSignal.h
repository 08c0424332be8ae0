/// Analogue FM for the squelch to hear.
#pragma once

#include "tools/orva-signal/SignalOptions.h"

#include <cstdint>
#include <vector>

namespace orva::tools {

/// A carrier of `options.fm.seconds` with the audio, tone and code asked for, between a lead-in and a
/// lead-out without one.
std::vector<std::int16_t> MakeFmSignal(const SignalOptions& options);

} // namespace orva::tools
