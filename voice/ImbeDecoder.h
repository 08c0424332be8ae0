/// IMBE full-rate voice decoder (TIA-102.BABA): 144 channel bits in, 160 speech samples at 8000 Hz out.
///
/// Plain functions over plain records: no allocation, no locks, no global state, no failure returns.
/// Everything that survives between frames lies in one `ImbeDecoderState` that the caller owns. For each code
/// word, in this order: fill `bits`, set `sampleCount` 160, `softBits` 1 and `status` 0;
/// `ImbeDecodeCodeWords`; `ImbeSynthesizeFrame`.
#pragma once

#include <cstdint>

namespace orva::voice {

constexpr int kMaxHarmonics = 56;
constexpr int kMinHarmonics = 9;
constexpr int kCodedBits = 144;
constexpr int kInformationBits = 88;
constexpr int kWordsPerFrame = 7;
constexpr int kSampleCapacity = 164;
constexpr int kNominalFrameLength = 160;

/// Flags of `ImbeFrameBlock::status`.
constexpr std::int16_t kImbeFlagRepeat = 4;     ///< too many errors: the frame was not unpacked
constexpr std::int16_t kImbeFlagMute = 8;       ///< smoothed error rate above the mute threshold
constexpr std::int16_t kImbeFlagConcealed = 32; ///< the frame played was not the frame received

/// Exchange record between caller and decoder.
struct ImbeFrameBlock {
    std::int16_t samples[kSampleCapacity]; ///< output speech, the first `sampleCount` entries
    std::uint8_t bits[kCodedBits]; ///< in: one channel bit (or soft sample) a byte, in received order;
                                   ///< after decoding the first 88 are the corrected information bits
    std::int16_t status;           ///< 0 on entry; flags after decoding; flags as treated after synthesis
    std::int16_t sampleCount;      ///< samples wanted, clamped to 132..240 by synthesis
    std::uint16_t softBits;        ///< width of a received sample in bits, 1 for hard bits
    std::int16_t softMetric;       ///< copy of `softMetricTotal`
    std::int16_t errorRate;        ///< copy of the smoothed error rate, Q15
    std::int16_t errorTotal;       ///< copy of the frame's corrected error count
};

struct ImbeDecoderState;
struct ImbeFrameParameters;

/// A synthesis step: turns `parameters` into `count` samples and updates `state`.
using ImbeSynthesisStep = void (*)(ImbeFrameParameters& parameters, std::int16_t* samples, int count,
                                   ImbeDecoderState& state);

/// One frame's speech model.
struct ImbeFrameParameters {
    std::int32_t kind;        ///< 1 voice frame, 0 a frame that holds no voice
    std::int16_t harmonics;   ///< L, 9..56
    std::int16_t pitchGate;   ///< history word of the pitch average; nothing sets its bits
    std::int16_t fundamental; ///< cycles per sample, Q19
    std::int16_t
        amplitudes[kMaxHarmonics];      ///< log2 in Q11 after unpacking, linear mantissas after conditioning
    std::int16_t amplitudeExponent;     ///< block exponent of the linear mantissas
    std::int16_t voiced[kMaxHarmonics]; ///< 1 voiced, 0 unvoiced, one per harmonic
    ImbeSynthesisStep synthesize;       ///< the step that turns this record into samples
};

constexpr int kNoiseCarryLength = 50;
constexpr int kUnvoicedTailLength = 127;
constexpr int kLowHarmonics = 7;
constexpr int kWaveTableLength = 128;

/// All that survives between frames. Owned by the caller; `ImbeInit` gives every field its initial value.
struct ImbeDecoderState {
    std::uint16_t frameHistory;                     ///< shift register, bit 0: current frame was concealed
    std::int16_t pitchAverage;                      ///< smoothed fundamental, Q19
    std::int16_t energyMantissa;                    ///< smoothed energy, mantissa Q15
    std::int16_t energyExponent;                    ///< smoothed energy, exponent
    ImbeFrameParameters lastFrame;                  ///< the last frame synthesised, conditioned
    ImbeFrameParameters silenceFrame;               ///< the frame played when muted
    std::uint16_t noiseSeed;                        ///< linear congruential noise generator
    std::int16_t noiseCarry[kNoiseCarryLength];     ///< noise that overlaps into the next frame
    std::int16_t unvoicedTail[kUnvoicedTailLength]; ///< overlap tail of the unvoiced signal
    std::int16_t unvoicedTailExponent;              ///< its block exponent
    std::int16_t unvoicedLength;                    ///< nominal frame length of unvoiced synthesis
    std::int16_t voicedLength;                      ///< nominal frame length of voiced synthesis
    std::int16_t fundamentalPhase;                  ///< running phase of the fundamental, Q15 cycles
    std::int16_t lowPhases[kLowHarmonics];          ///< end phases of harmonics 1..7, Q15 cycles
    std::int16_t phaseDispersion[kMaxHarmonics];    ///< phase offset of each harmonic, Q15 cycles
    std::int16_t waveTableExponent;                 ///< block exponent of the wave table
    std::int16_t
        waveTable[kWaveTableLength + 1];     ///< one period of the high harmonics, the first entry repeated
    std::int16_t wordErrors[kWordsPerFrame]; ///< errors corrected in each code word of this frame
    std::int16_t errorTotal;                 ///< their sum
    std::int16_t softMetricTotal;            ///< sum of the soft metrics
    std::int16_t errorRate;                  ///< smoothed error rate, Q15
    std::int16_t previousLogAmplitudes[kMaxHarmonics]; ///< log2 amplitudes of the last unpacked frame, Q11
    std::int16_t previousHarmonics;                    ///< L of the last unpacked frame
};

/// Gives every field of `state` its initial value: prediction, phases and error rate start afresh.
void ImbeInit(ImbeDecoderState& state);

/// De-interleaves and corrects the 144 received samples of `block.bits` and updates the error statistics.
/// Writes the 88 information bits over the front of `bits`, sets `status`, and copies the error figures.
void ImbeDecodeCodeWords(ImbeFrameBlock& block, ImbeDecoderState& state);

/// Turns the 88 corrected bits into `sampleCount` samples. Reads `bits`, `status`, `sampleCount`; writes
/// `samples`, the clamped `sampleCount` and `status`. Samples beyond the 164 of `samples` run on over the
/// first bytes of `bits`.
void ImbeSynthesizeFrame(ImbeFrameBlock& block, ImbeDecoderState& state);

} // namespace orva::voice
