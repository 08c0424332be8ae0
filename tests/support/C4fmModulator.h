#pragma once

#include "tests/support/RandomSource.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace orva::test {

/// The signal that a receiver hands to the decoder.
struct ModulatorSettings {
    int sampleRate = 48000;           ///< [Hz]
    double centreFrequency = 12000.0; ///< intermediate frequency of a carrier without offset [Hz]
    double carrierOffset = 0.0;       ///< of the carrier from the centre [Hz]
    double clockErrorPpm = 0.0;       ///< of the symbol clock; positive: symbols come too fast
    double symbolPhase = 0.0;         ///< begin of the first symbol behind a sample, 0 <= x < 1 [samples]
    double amplitude = 0.5;           ///< of the carrier, 1 is full scale
    std::optional<double> snrDb = {}; ///< carrier to noise in `kNoiseBandwidth`; none: no noise at all
    std::uint64_t seed = 1;           ///< of the noise
};

/// Bandwidth in which the noise of a stated signal-to-noise ratio is measured [Hz]. The noise itself is white
/// up to half the sample rate.
constexpr double kNoiseBandwidth = 12500.0;

/// Turns dibits into a real intermediate-frequency signal: C4FM by an FM modulator whose phase is exact to
/// double precision. A signal is put together from stretches with and without a carrier; symbol clock,
/// carrier phase and noise run through.
class C4fmModulator {
public:
    /// What there is where no carrier is: noise as strong as under the carrier, or samples of 0.
    enum class Gap { Noise, Silence };

    explicit C4fmModulator(const ModulatorSettings& modulatorSettings);

    /// Takes effect from the next stretch on. [Hz]
    void SetCarrierOffset(double hz) { settings.carrierOffset = hz; }

    /// Appends a stretch without a carrier.
    void AddGap(double seconds, Gap kind = Gap::Noise);

    /// Appends a stretch of one symbol period per character of `dibits`.
    void Transmit(std::string_view dibits);

    /// The signal so far.
    const std::vector<std::int16_t>& Samples() const { return samples; }

    /// Moves the signal so far out, so that a long one can be made piece by piece; the next stretch goes on
    /// from there.
    std::vector<std::int16_t> Take();

private:
    void AppendSample(double carrier);

    ModulatorSettings settings;
    double samplesPerSymbol;
    double noiseDeviation;
    RandomSource noise;
    double phase = 0.0;           ///< of the carrier, radians
    double stretchEnd;            ///< end of the last stretch on the time axis of the samples
    std::int64_t sampleCount = 0; ///< samples made since the begin
    std::vector<std::int16_t> samples;
};

} // namespace orva::test
