/// Looks into a demodulator and puts it where a test wants it.
#pragma once

#include "p25/COrvaDemodulator.h"

#include <cstdint>
#include <vector>

namespace orva::p25 {

struct COrvaDemodulatorInspector {
    COrvaDemodulator& demodulator;

    bool CorrelatorReady() const { return demodulator.correlatorReady; }
    bool OscillatorReady() const { return demodulator.oscillatorReady; }
    bool FiltersReady() const { return demodulator.filtersReady; }
    std::uint32_t SampleRate() const { return demodulator.sampleRate; }
    float SamplesPerSymbol() const { return demodulator.samplesPerSymbol; }
    float RateRatio() const { return demodulator.rateRatio; }
    std::uint32_t QuarterCycle() const { return demodulator.quarterCycle; }
    std::int32_t RingLength() const { return demodulator.ringLength; }
    std::int32_t CorrelatorLength() const { return demodulator.correlatorLength; }
    std::uint32_t DibitCapacity() const { return demodulator.dibits.Capacity(); }

    double& MixFrequency() { return demodulator.mixFrequency; }
    float& PrevLagging() { return demodulator.prevLagging; }
    float& PrevInPhase() { return demodulator.prevInPhase; }
    float& NegativeAverage() { return demodulator.negativeAverage; }
    float& DcStage1() { return demodulator.dcStage1; }
    float& DcStage2() { return demodulator.dcStage2; }
    std::uint32_t& OscillatorPhase() { return demodulator.oscillatorPhase; }
    std::int32_t& RingIndex() { return demodulator.ringIndex; }
    float& CrossingClock() { return demodulator.crossingClock; }
    float& PrevSample() { return demodulator.prevSample; }
    std::int32_t& MidSymbolIndex() { return demodulator.midSymbolIndex; }
    std::int32_t& CrossingClass() { return demodulator.crossingClass; }
    float& SymbolClock() { return demodulator.symbolClock; }

    dsp::TFIR_F32& Correlator() { return demodulator.correlator; }
    dsp::TFIR_F32& LowPassLagging() { return demodulator.lowPassLagging; }
    dsp::TFIR_F32& LowPassInPhase() { return demodulator.lowPassInPhase; }
    dsp::CtbFloatBlock& OscillatorTable() { return demodulator.oscillatorTable; }
    dsp::CtbFloatBlock& Correlated() { return demodulator.correlated; }
    dsp::CtbFloatBlock& Discriminated() { return demodulator.discriminated; }
    dsp::CtbFloatBlock& History() { return demodulator.history; }
    dsp::CtbFloatBlock& Ring() { return demodulator.ring; }
    dsp::CtbFloatBlock& LaggingBuffer() { return demodulator.laggingBuffer; }
    dsp::CtbFloatBlock& InPhaseBuffer() { return demodulator.inPhaseBuffer; }

    /// Builds what `Process` builds on its first use, for blocks of up to `count` samples.
    bool Prepare(std::int32_t count) {
        return demodulator.BuildLowPassPair() && demodulator.BuildCorrelator() &&
               demodulator.BuildOscillator() && demodulator.PrepareArrays(count);
    }

    // The steps of `Process`, each on what the arrays hold.
    void Mix(const std::vector<float>& samples) {
        demodulator.Mix(samples.data(), static_cast<std::int32_t>(samples.size()));
    }
    void Discriminate(std::int32_t count) { demodulator.Discriminate(count); }
    void RemoveDc(std::int32_t count) { demodulator.RemoveDc(count); }
    void FindSync(std::int32_t count) { demodulator.FindSync(count); }
    void CorrectFrequency(std::int32_t end) { demodulator.CorrectFrequency(end); }
    void CarryCorrelated(std::int32_t count) { demodulator.CarryCorrelated(count); }
    void KeepHistory(std::int32_t count) { demodulator.KeepHistory(count); }
    std::int32_t RecoverSymbols(std::int32_t count) { return demodulator.RecoverSymbols(count); }

    /// Puts `values` where a step's input is expected.
    static void Fill(dsp::CtbFloatBlock& block, const std::vector<float>& values) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            block[static_cast<std::uint32_t>(i)] = values[i];
        }
    }
};

} // namespace orva::p25
