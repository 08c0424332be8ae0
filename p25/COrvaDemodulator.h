/// C4FM demodulator: intermediate frequency to dibits.
#pragma once

#include "dsp/CtbSampleBlock.h"
#include "dsp/TFIR_F32.h"
#include "p25/ISymbolObserver.h"

#include <cstdint>

namespace orva::p25 {

/// Turns blocks of real intermediate-frequency samples into dibit text: table oscillator, low-pass pair,
/// arctangent discriminator, a frame-sync correlator that steers the oscillator, a zero-crossing symbol
/// clock, and a four-level slicer. No shaping or matched filter but the low-pass pair.
///
/// All calls on one thread. Once warm (same rate, no longer blocks), `Process` allocates nothing.
class COrvaDemodulator {
public:
    COrvaDemodulator();

    /// Input rate [Hz], above 0. A change makes the next `Process` build filters, correlator and oscillator
    /// anew.
    void SetSampleRate(std::uint32_t rate);

    /// Nominal intermediate frequency [Hz]. Setting it also moves the oscillator there.
    void SetCentreFrequency(std::uint32_t hz);
    std::uint32_t GetCentreFrequency() const { return centreFrequency; }

    /// Symbols per second, 4800 unless set.
    void SetSymbolRate(float rate);
    float GetSymbolRate() const { return symbolRate; }

    /// Puts the oscillator, the low-pass pair and the symbol clock back to their start. The correlator, its
    /// averages and history and the crossing state go on.
    void Reset();

    /// Demodulates `count` samples, -1.0 .. +1.0. Returns the number of dibit characters produced; -1, with
    /// the state as it was before the failing step, for a null pointer, a count below 1, a rate of 0, or
    /// without memory.
    std::int32_t Process(const float* samples, std::int32_t count);

    /// The text of the last `Process`, NUL-terminated. Stale after a call that produced nothing: go by its
    /// count.
    const char* GetDibits() const { return dibits.Data(); }

    /// Present oscillator frequency [Hz]: the centre frequency and what frequency control has added.
    double GetMixFrequency() const { return mixFrequency; }

    /// One listener, or null for none, the default. Not owned; must outlive its use here.
    void SetObserver(ISymbolObserver* listener) { observer = listener; }

private:
    friend struct COrvaDemodulatorInspector;

    bool BuildLowPassPair();
    bool BuildCorrelator();
    bool BuildOscillator();
    bool PrepareArrays(std::int32_t count);
    bool PrepareRing();
    void Mix(const float* samples, std::int32_t count);
    void Discriminate(std::int32_t count);
    void RemoveDc(std::int32_t count);
    void FindSync(std::int32_t count);
    void CorrectFrequency(std::int32_t end);
    void CarryCorrelated(std::int32_t count);
    void KeepHistory(std::int32_t count);
    std::int32_t RecoverSymbols(std::int32_t count);
    void NoteCrossing(std::int32_t index);
    void CorrectClock(float sample);
    bool AppendDibit(std::int32_t count, std::int32_t symbolClass);

    bool correlatorReady = false;
    bool oscillatorReady = false;
    std::uint32_t sampleRate = 48000;
    std::uint32_t centreFrequency = 12000;
    double mixFrequency = 0;
    float symbolRate = 4800.0F;
    bool filtersReady = false;
    float prevLagging = 0;
    float prevInPhase = 0;
    float samplesPerSymbol = 10.0F;
    dsp::CtbFloatBlock oscillatorTable; ///< one cycle of cosine, one entry per hertz of the rate
    dsp::CtbByteBlock dibits;
    dsp::TFIR_F32 correlator;
    float negativeAverage = 0; ///< running mean of the correlator's negative outputs
    float dcStage1 = 0;
    float dcStage2 = 0;
    dsp::CtbFloatBlock laggingBuffer;
    dsp::CtbFloatBlock inPhaseBuffer;
    dsp::CtbFloatBlock discriminated;
    dsp::CtbFloatBlock correlated; ///< two entries carried from the last block, then one per sample
    dsp::CtbFloatBlock history;    ///< the last `correlatorLength` discriminator samples
    dsp::TFIR_F32 lowPassLagging;
    dsp::TFIR_F32 lowPassInPhase;
    std::uint32_t oscillatorPhase = 0;
    std::uint32_t quarterCycle = 12000; ///< of the table, in entries
    std::int32_t ringIndex = 0;
    dsp::CtbFloatBlock ring; ///< the last discriminator samples, a symbol and one
    std::int32_t ringLength = 0;
    float crossingClock = 0; ///< `symbolClock` at the last zero crossing
    float prevSample = 0;
    std::int32_t midSymbolIndex =
        -1; ///< where the sample after a crossing is examined, -1 when none is pending
    std::int32_t crossingClass = 0; ///< class of the sample half a symbol before the crossing
    float symbolClock = 0;          ///< samples since the last symbol
    std::int32_t correlatorLength = 0;
    float rateRatio =
        1.0F; ///< of the rate to 48000 Hz; the slicing threshold is deliberately not scaled by it
    ISymbolObserver* observer = nullptr;
};

} // namespace orva::p25
