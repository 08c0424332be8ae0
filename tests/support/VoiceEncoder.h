/// Makes full-rate IMBE voice frames from a speech model, tracking the prediction of the decoder.
#pragma once

#include "tests/support/VoiceCode.h"

namespace orva::test {

/// Speech model of one frame of 20 ms.
struct VoiceParameters {
    int pitchCode = 80;                         ///< 0..207; fundamental 16000 / (code + 39.5) Hz
    std::array<bool, kMostBands> voicedBands{}; ///< one per voicing band, see `BandsOf`
    LogSpectrum logAmplitudes{};                ///< octaves above one sample step, -15..15, one per harmonic
};

/// The fields of one frame before they are spread over the 88 bits: code numbers, most significant bit first.
struct VoiceFields {
    int pitchCode = 0;
    int gainCode = 0;
    std::array<int, kMostHarmonics - 1> coefficientCodes{}; ///< one per entry of the allocation row
    std::array<bool, kMostBands> voicedBands{};
    bool spare = false;
};

/// Spreads `fields` over the transmitted bits.
VoiceBits PackVoiceFields(const VoiceFields& fields);

/// Bits of a frame that says "no voice". pitchCode  208..255; all other bits are 0
VoiceBits PackVoicelessFrame(int pitchCode);

/// Encodes one voice stream, frame by frame. Each amplitude goes to the nearest value that the decoder can
/// reach from the frames that it was sent before, so errors do not add up over the frames.
class VoiceEncoder {
public:
    /// Starts a new stream; the decoder at the other end starts afresh as well.
    void Reset();

    /// The bits of the next frame.
    VoiceBits Encode(const VoiceParameters& parameters);

    /// The log amplitudes that the decoder makes of the last encoded frame, octaves.
    const LogSpectrum& Reconstructed() const { return reconstructed; }

private:
    SpectralPredictor predictor;
    LogSpectrum reconstructed{};
};

} // namespace orva::test
