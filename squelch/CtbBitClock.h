/// Bit clock for a two-level baseband signal.
#pragma once

#include <cstdint>

namespace orva::squelch {

/// Takes bits out of a stream of samples by their sign, at a nominal rate that the zero crossings pull into
/// step. Without crossings it runs on at that rate. Takes no memory.
class CtbBitClock {
public:
    /// bit  1 when the sample at the bit instant was not negative, else 0
    using Callback = void (*)(void* context, std::uint32_t bit);

    void SetCallback(Callback receiver, void* receiverContext);

    /// Bits per second, above 0; else ignored.
    void SetBitRate(double rate);
    /// Share of the timing error that a zero crossing corrects, 0 .. 1.
    void SetGain(double share) { gain = share; }
    /// Kept for the rate loop that the clock does not have.
    void SetRateGain(double share) { rateGain = share; }
    /// Samples per second, above 0; else ignored.
    void SetSampleRate(double rate);

    /// Forgets the phase and the last sample; the settings stay.
    void Reset();

    /// Calls the receiver once per bit found.
    void Process(const std::int32_t* samples, std::uint32_t count);

private:
    friend struct CtbBitClockInspector;

    Callback callback = nullptr;
    void* context = nullptr;
    double bitRate = 1000.0;
    double gain = 0.01;
    double rateGain = 0.0008;
    double clockSampleRate = 44100.0;
    double sinceTick = 0.0; ///< last bit instant, relative to the present one [samples], 0 or negative
    double toTick = 0.0;    ///< to the next bit instant [samples]
    std::int32_t lastSample = 0;
};

} // namespace orva::squelch
