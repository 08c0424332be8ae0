/// CTCSS detector.
#pragma once

#include "squelch/CtbFftAnalyzer.h"
#include "squelch/CtbResampler.h"

#include <array>
#include <cstdint>

namespace orva::squelch {

/// Sub-audible tones in rising order [Hz].
constexpr std::array<float, 52> kCtcssTones = {
    62.5F,  64.7F,  67.0F,  69.3F,  71.9F,  74.4F,  77.0F,  79.7F,  82.5F,  85.4F,  88.5F,  91.5F,  94.8F,
    97.4F,  100.0F, 103.5F, 107.2F, 110.9F, 114.8F, 118.8F, 123.0F, 127.3F, 131.8F, 136.5F, 141.3F, 146.2F,
    151.4F, 156.7F, 159.8F, 162.2F, 165.5F, 167.9F, 171.3F, 173.8F, 177.3F, 179.9F, 183.5F, 186.2F, 189.9F,
    192.8F, 196.6F, 199.5F, 203.5F, 206.5F, 210.7F, 218.1F, 225.7F, 229.1F, 233.6F, 241.8F, 250.3F, 254.1F};

/// The tone as the host counts it, in thousandths of a hertz; 0 for an index outside of the table. The single
/// precision product is truncated, so that 64.7 Hz gives 64699.
std::int32_t ScaledCtcssTone(std::int32_t toneIndex);

/// Finds the sub-audible tone in a stream of audio by the spectrum of its last 0.74 s, looked at in the bins
/// of the tones alone. A tone is found when its bin holds a quarter of the band from the first tone to the
/// last.
///
/// All calls on one thread. Takes memory when the rate or the block length changes.
class CtbToneDetector {
public:
    CtbToneDetector();

    /// Rate of the samples [Hz]. To be told before every block; compares first, and ignores what no ratio can
    /// bring to the analyser's rate, such as 0. The samples collected at the old rate stay.
    void SetSampleRate(float rate);

    /// Takes `count` / `stride` samples, one every `stride` entries, and sets `toneIndex` anew. Samples
    /// beyond those that fill the whole window once are not looked at. Does nothing with null or a stride of
    /// 0.
    void Process(const std::int16_t* samples, std::uint32_t count, std::uint32_t stride);

    /// Index into `kCtcssTones` of the tone in the last 0.74 s, -1 for none. Read by the caller after a
    /// block.
    std::int32_t toneIndex = -1;

private:
    friend struct CtbToneDetectorInspector;

    static constexpr std::uint32_t kWindowLength = 1024;

    void Append(const std::int16_t* reduced, std::uint32_t count);
    void Analyse();

    std::array<std::int32_t, kWindowLength> window{}; ///< at the reduced rate, oldest first
    CtbFftAnalyzer analyzer;
    float reducedRate = 0.0F; ///< [Hz]
    CtbResampler resampler;
    float sampleRate = 0.0F; ///< [Hz]
};

} // namespace orva::squelch
