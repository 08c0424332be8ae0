/// What a signal holds, as JSON.
#pragma once

#include "tools/orva-signal/SignalMaker.h"
#include "tools/orva-signal/SignalOptions.h"

#include <string>

namespace orva::tools {

/// One object: how the signal was made, and `frames` in the order of time. A frame has `time` [s], `dibit`
/// (its place in the dibit text), `warm_up`, `nac`, `duid`, `frame` ("HDU", "LDU1", "LDU2", "TDU", "TDULC",
/// "TSBK", "PDU", "unknown"), and as its type has them `header`, `link_control`, `encryption_sync`, and
/// `voice`, the 88 bits of each voice frame as 22 hex digits, or `blocks`, the 12 bytes of each trunking
/// block as 24.
std::string TruthText(const SignalOptions& options, const Signal& signal);

} // namespace orva::tools
