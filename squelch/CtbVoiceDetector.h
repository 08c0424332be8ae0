/// Voice detector.
#pragma once

#include <cstdint>
#include <vector>

namespace orva::squelch {

/// Results of `CtbVoiceDetector`.
enum VoiceResult : std::int32_t {
    kVoiceFluctuates = 0, ///< loud enough, fluctuating, but under the threshold
    kVoiceQuiet = 1,      ///< level under the floor
    kVoiceSpeech = 2,     ///< speech
    kVoiceSteady = 3,     ///< loud enough, no fluctuation to speak of
};

/// Tells speech from steady signals block by block: speech alternates between voiced stretches, hissing ones
/// that cross zero often, and pauses, which shows in 45 sub-blocks per second compared with the whole block.
///
/// All calls on one thread. Takes memory when the block length grows.
class CtbVoiceDetector {
public:
    /// Rate of the samples [Hz], above 0; else ignored. Compares first.
    void SetSampleRate(float rate);
    /// Level under which a block counts as quiet, 0 .. 100 as `level` is made.
    void SetLevelFloor(float floor) { levelFloor = floor; }
    /// Speech measure from which a block counts as speech, 0 .. 1.
    void SetVoiceThreshold(float threshold) { voiceThreshold = threshold; }
    /// Samples per analysis. Compares first. Samples already collected stay.
    void SetBlockLength(std::uint32_t length);

    /// Takes `count` / `stride` samples, one every `stride` entries, and analyses whenever a block is full.
    /// Does nothing with null, a stride of 0 or a block length of 0.
    void Process(const std::int16_t* samples, std::uint32_t count, std::uint32_t stride);

    /// A `VoiceResult`, of the last full block. Read by the caller.
    std::int32_t result = kVoiceFluctuates;
    /// Speech measure of the last full block, 0 .. 1. Read by the caller.
    float voiceMeasure = 0.0F;

private:
    friend struct CtbVoiceDetectorInspector;

    /// Crossings per sample and mean square of a stretch of samples.
    struct Measures {
        double crossingRate;
        double energy;
    };
    /// Sub-blocks that stand out.
    struct SubBlockCounts {
        std::uint32_t highCrossing;
        std::uint32_t lowEnergy;
        std::uint32_t whole;
    };

    void Analyse();
    void RemoveDc();
    static Measures Measure(const std::int32_t* samples, std::uint32_t count, std::int32_t before);
    SubBlockCounts CountSubBlocks(const Measures& whole, std::int32_t before) const;
    void Decide(const SubBlockCounts& counts);

    std::vector<std::int32_t> block;
    std::uint32_t blockFill = 0;
    std::uint32_t blockLength = 0;
    std::int32_t lastInput = 0;
    std::int32_t lastOutput = 0;
    float crossingRate = 0.0F;
    float blockEnergy = 0.0F; ///< full scale is 1
    float previousShare = 0.0F;
    float lowEnergyShare = 0.0F;
    float sampleRate = 11025.0F; ///< [Hz]
    float level = 0.0F;
    float levelFloor = 0.15F;
    float voiceThreshold = 0.2F;
};

} // namespace orva::squelch
