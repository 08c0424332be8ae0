/// Analogue FM demodulator: intermediate frequency to audio.
#pragma once

#include "dsp/CtbSampleBlock.h"
#include "dsp/TFIR_F32_2CH.h"

#include <cstdint>

namespace orva::p25 {

/// Turns blocks of real intermediate-frequency samples into narrow-band FM audio: table oscillator, complex
/// low-pass, arctangent discriminator, DC blocker. The oscillator stays where it is.
///
/// Audio is negative while the carrier is above the oscillator, the opposite sense of `COrvaDemodulator`. The
/// discriminator compares with the present power, so that it compresses deviation: a carrier d radians per
/// sample off gives atan(sin d). All calls on one thread. Once warm (same rate, no longer blocks), `Process`
/// allocates nothing.
class COrvaAnalogDemodulator {
public:
    COrvaAnalogDemodulator();

    /// Input rate [Hz], at least 12000. A change makes the next `Process` build the filter, the blocker and
    /// the oscillator anew.
    void SetSampleRate(std::uint32_t rate);

    /// Oscillator frequency [Hz], 12000 unless set.
    void SetMixStep(std::uint32_t hz) { mixStep = hz; }

    /// Scale of the output, 1.0 unless set.
    void SetGain(float scale) { gain = scale; }

    /// Puts the oscillator, the filter, the discriminator and the blocker back to their start.
    void Reset();

    /// Demodulates `count` samples, -1.0 .. +1.0. Returns `count` values, radians per sample times the gain,
    /// limited to -3.0 .. +3.0, which stay good until the next call. Null for a null pointer, a count below
    /// 1, a rate below 12000, or without memory.
    const float* Process(const float* samples, std::int32_t count);

private:
    friend struct COrvaAnalogDemodulatorInspector;

    void SetUpBlocker();
    bool BuildFilter();
    bool BuildOscillator();
    bool PrepareArrays(std::int32_t count);
    void Mix(const float* samples, std::int32_t count);
    void Discriminate(std::int32_t count);
    void RemoveDc(std::int32_t count);

    bool filterReady = false;
    bool oscillatorReady = false;
    std::uint32_t sampleRate = 48000;
    std::uint32_t oscillatorPhase = 0;
    std::uint32_t quarterCycle = 12000; ///< of the table, in entries
    std::uint32_t mixStep = 12000;
    float prevInPhase = 0;
    float prevLagging = 0;
    float gain = 1.0F;
    float blockerFeed = 0;
    float blockerPole = 0;
    float blockerState = 0;
    float blockerLast = 0;
    dsp::TFIR_F32_2CH channelFilter;
    dsp::CtbFloatBlock oscillatorTable; ///< one cycle of cosine, one entry per hertz of the rate
    dsp::CtbFloatBlock complexBuffer;   ///< pairs, in-phase then lagging
    dsp::CtbFloatBlock audio;
};

} // namespace orva::p25
