#pragma once

#include "tools/orva-signal/SignalOptions.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orva::tools {

/// A frame of the signal and where it stands in it.
struct PlacedFrame {
    test::SentFrame frame; ///< `firstDibit` counts within the dibit text of the whole signal
    double seconds = 0.0;  ///< begin of its sync, from the start of the signal
    bool warmUp = false;
};

/// A made signal and what is in it.
struct Signal {
    std::vector<std::int16_t> samples;
    std::string dibits; ///< all frames one behind the other, without the gaps
    std::vector<PlacedFrame> frames;
};

/// Makes the signal that `options` ask for; `voice` is asked anew from frame 0 for every call. The samples
/// are made only if `options.output` names a file.
Signal MakeSignal(const SignalOptions& options, const test::VoiceSource& voice);

} // namespace orva::tools
