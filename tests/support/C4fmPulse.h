/// Shaping of C4FM symbols (TIA-102.BAAA): impulses through a raised cosine and an inverse sinc.
#pragma once

#include <string_view>

namespace orva::test {

constexpr double kSymbolRate = 4800.0; ///< symbols a second

/// Symbols before and behind its centre beyond which the pulse is taken as zero.
constexpr int kPulseReach = 16;

/// Frequency deviation that a dibit class stands for: "1" +1800 Hz, "0" +600 Hz, "2" -600 Hz, "3" -1800 Hz.
double NominalDeviation(char dibit);

/// Frequency response of the shaping filter, 1 at 0 Hz: flat to 1920 Hz and falling as a raised cosine to 0
/// at 2880 Hz, times (pi f / 4800) / sin(pi f / 4800).
double ShapingResponse(double hz);

/// Impulse response of that filter, `symbols` symbol periods from its centre, scaled so that a long run of
/// one symbol adds up to 1. A receiver that averages over a symbol period sees no neighbouring symbol.
double ShapingPulse(double symbols);

/// Deviation from the carrier in hertz of a transmission of `dibits` at time `symbols`, in symbol periods
/// from the begin of the first symbol; symbol k is centred on k + 0.5. Before the first and behind the last
/// symbol there is nothing but the skirts of the pulses.
double DeviationAt(std::string_view dibits, double symbols);

} // namespace orva::test
