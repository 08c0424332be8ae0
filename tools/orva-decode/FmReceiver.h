/// The FM chain: intermediate frequency to audio and squelch measures.
#pragma once

#include "dsp/TFIR_F32.h"
#include "p25/COrvaAnalogDemodulator.h"
#include "tools/orva-decode/Outputs.h"
#include "tools/orva-decode/SquelchMeter.h"

#include <cstdint>
#include <vector>

namespace orva::tools {

/// Demodulates FM beside the digital chain. Writes audio at 16000 Hz and squelch events to the outputs.
class FmReceiver {
public:
    /// `sinks` must outlive the receiver. Squelch is measured only if `wantsSquelch`.
    FmReceiver(Outputs& sinks, bool wantsSquelch) : outputs(sinks), measures(wantsSquelch) {}

    /// Rate of the samples [Hz], 48000 or 64000.
    void SetSampleRate(std::uint32_t rate);

    /// Demodulates `count` samples that end at `time`, in seconds of input. False without memory.
    bool Feed(const float* samples, std::size_t count, double time);

    bool HasSquelch() const { return measures; }
    const SquelchTotals& GetTotals() const { return totals; }

private:
    Outputs& outputs;
    bool measures;
    p25::COrvaAnalogDemodulator demodulator;
    dsp::TFIR_F32 inputDecimator;
    SquelchMeter meter;
    SquelchTotals totals;
    std::vector<std::int16_t> audio;     ///< at the rate of the input
    std::vector<std::int16_t> decimated; ///< at 16000 Hz
};

} // namespace orva::tools
