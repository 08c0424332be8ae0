/// Floating-point model of the IMBE voice decoder: 144 channel bits in, 160 speech samples at 8000 Hz out.
///
/// Flags, error figures, fundamental, number of harmonics, voicing, noise and the running phase are the
/// decoder's integers; amplitudes, prediction, conditioning and synthesis are real arithmetic without
/// rounding. The model shares no code with the decoder that it judges.
#pragma once

#include "tests/support/FloatUnvoicedSynthesis.h"
#include "tests/support/FloatVoiceConditioner.h"
#include "tests/support/FloatVoiceFrame.h"
#include "tests/support/FloatVoicedSynthesis.h"
#include "tests/support/VoiceErrorCorrection.h"

#include <array>
#include <cstdint>
#include <span>

namespace orva::test {

class FloatVoiceModel {
public:
    static constexpr int kRepeat = 4;     ///< too many errors: the frame is not unpacked
    static constexpr int kMute = 8;       ///< the smoothed error rate is too high
    static constexpr int kConcealed = 32; ///< the frame played is not the frame received

    /// Starts a new stream.
    void Init();

    /// Corrects a code word and updates the error figures. received  144 bits in received order, 0 or 1 each
    void DecodeCodeWords(std::span<const std::uint8_t> received);

    /// Hands over corrected bits as if they had come without errors, in place of `DecodeCodeWords`.
    void TakeBits(const VoiceBits& informationBits);

    /// Makes the frame's samples.
    void SynthesizeFrame();

    const VoiceBits& Bits() const { return corrected.bits; }
    /// Corrected bits of each code word of the frame.
    const std::array<int, kProtectedVoiceWords>& WordErrors() const { return corrected.wordErrors; }
    int ErrorTotal() const { return errorTotal; }
    /// Smoothed error rate, Q15.
    int ErrorRate() const { return errorRate; }
    /// Flags of the channel decoder, and after synthesis those of the frame as treated.
    int Flags() const { return flags; }
    /// The frame played last.
    const FloatVoiceFrame& PlayedFrame() const { return lastFrame; }
    const PhaseOffsets& Phases() const { return conditioner.Phases(); }
    int FundamentalPhase() const { return voiced.FundamentalPhase(); }
    /// See `FloatVoiceConditioner::VoicingMargin`.
    double VoicingMargin() const { return conditioner.VoicingMargin(); }
    double Energy() const { return conditioner.Energy(); }

    /// Samples before rounding, in sample steps, within the 16-bit range.
    const std::array<double, kFloatFrameLength>& ExactSamples() const { return exactSamples; }
    const std::array<std::int16_t, kFloatFrameLength>& Samples() const { return samples; }

private:
    struct UnpackedFrame {
        FloatVoiceFrame frame;
        LogSpectrum logAmplitudes{};
    };

    void UpdateErrorFigures();
    UnpackedFrame Unpack();
    FloatVoiceFrame ChooseFrame();
    void Synthesize(const FloatVoiceFrame& frame);

    CorrectedVoiceWord corrected;
    int errorTotal = 0;
    int errorRate = 0;
    int flags = 0;
    std::uint16_t concealedHistory = 0; // bit 0: the current frame
    SpectralPredictor predictor;
    FloatVoiceConditioner conditioner;
    FloatVoicedSynthesis voiced;
    FloatUnvoicedSynthesis unvoiced;
    FloatVoiceFrame lastFrame;
    std::array<double, kFloatFrameLength> exactSamples{};
    std::array<std::int16_t, kFloatFrameLength> samples{};
};

} // namespace orva::test
