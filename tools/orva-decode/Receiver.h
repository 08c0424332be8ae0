/// The receiving chain: samples or dibits in, events and speech out.
#pragma once

#include "p25/COrvaDemodulator.h"
#include "p25/COrvaFrameDecoder.h"
#include "tools/orva-decode/FmReceiver.h"
#include "tools/orva-decode/FrameListener.h"
#include "tools/orva-decode/Outputs.h"
#include "tools/orva-decode/SignalPlot.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orva::tools {

constexpr std::size_t kBlockSamples = 2400; ///< samples of input handed on at a time

/// Demodulator, frame decoder and whoever listens to them, for one input. Keeps time by what it is fed.
class Receiver {
public:
    /// `sinks`, `calls` and `channel` must outlive the receiver.
    Receiver(Outputs& sinks, CallLog& calls, ControlChannelLog& channel);

    /// Rate of the samples that follow [Hz].
    void SetSampleRate(std::uint32_t rate);

    /// Where the receiver was tuned [Hz].
    void SetTunedFrequency(std::uint32_t hz) { decoder.SetTunedFrequency(hz); }

    /// The FM chain that runs beside, or null for none, the default; must outlive the receiver.
    void SetFm(FmReceiver* chain) { fm = chain; }

    /// What draws the picture, or null for none, the default; must outlive the receiver.
    void SetPlot(SignalPlot* picture);

    /// Decodes `count` samples, at most `kBlockSamples`. False without memory.
    bool FeedSamples(const std::int16_t* samples, std::size_t count);

    /// Decodes dibit text at 4800 symbols a second. False without memory.
    bool FeedDibits(const char* text, std::int32_t count);

    /// Hands out the last, partly filled voice block. Nothing may be fed after it.
    void Finish();

    double GetSeconds() const { return seconds; } ///< of input so far

private:
    bool Decode(const char* text, std::int32_t count, double duration);

    Outputs& outputs;
    p25::COrvaDemodulator demodulator;
    p25::COrvaFrameDecoder decoder;
    FrameListener listener;
    std::vector<float> floats;
    SignalPlot* plot = nullptr;
    FmReceiver* fm = nullptr;
    std::uint32_t sampleRate = 0;
    double seconds = 0;
};

} // namespace orva::tools
