/// Layout of a full-rate IMBE voice frame (TIA-102.BABA): which of the 88 information bits belongs to which
/// field, what the codes stand for, and the prediction that both ends of a link run.
///
/// Real arithmetic where the decoder under test computes in fixed point, the decoder's integers where a
/// field's length or an index depends on them. Written apart from the decoder: nothing here is shared with
/// it.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace orva::test {

constexpr int kVoiceBits = 88;
constexpr int kFewestHarmonics = 9;
constexpr int kMostHarmonics = 56;
constexpr int kMostBands = 12;
constexpr int kPitchCodes = 208; ///< pitch codes 0..207 are voice; those above say "no voice in this frame"
constexpr int kGainCodes = 64;

/// The 88 information bits of a voice frame, 0 or 1 each, in transmitted order.
using VoiceBits = std::array<std::uint8_t, kVoiceBits>;

/// Log2 amplitudes in octaves above one sample step, one per harmonic; entries beyond the harmonics are free.
using LogSpectrum = std::array<double, kMostHarmonics>;

/// Number of harmonics, 9..56. pitchCode  0..207
int HarmonicsOf(int pitchCode);

/// Number of voicing bands of a frame of `harmonics` harmonics, 3..12.
int BandsOf(int harmonics);

/// Voicing band, counted from 0, of harmonic `harmonic`, counted from 1; the last band takes all the rest.
int BandOfHarmonic(int harmonic);

/// Fundamental frequency, cycles per sample, Q19. pitchCode  0..255
int FundamentalOf(int pitchCode);

/// Lengths of the coefficient fields of a frame of `harmonics` harmonics, [harmonics - 1]. The first five
/// belong to the gain coefficients 1..5, the others to the higher coefficients in block order.
std::span<const std::uint8_t> AllocationOf(int harmonics);

/// For each transmitted bit its position in the parameter vector: pitch code, gain code, coefficient fields,
/// voicing bits and the spare bit, in this order, each most significant bit first.
std::array<int, kVoiceBits> ParameterPositions(int harmonics);

/// First position of the voicing bits in the parameter vector; the spare bit follows the last of them.
int VoicingPosition(int harmonics);

/// Value of gain code 0..63, octaves.
double GainOf(int code);

/// Standard deviations in octaves, Q16: of gain coefficient 1..5, of higher coefficient 0..8 of a block.
int GainDeviation(int coefficient);
int CoefficientDeviation(int coefficient);

/// Distance of neighbouring values of a field of `bits` bits, octaves. bits  1..12
double QuantiserStep(int bits, int deviation);

/// Value of `code` in a field of `bits` bits, octaves, cut down to the decoder's steps of 2^-11 octave; 0 for
/// a field without bits.
double Dequantise(int code, int bits, int deviation);

/// First harmonic, counted from 0, of block 0..5; block 6 gives the number of harmonics.
int BlockStart(int block, int harmonics);

/// Inverse cosine transform in place, with the decoder's 512 cosine steps and its 16-bit range (32 octaves,
/// wrapped).
void InverseCosineTransform(std::span<double> values);

/// Forward cosine transform in place: what `InverseCosineTransform` turns back within its cosine steps.
void CosineTransform(std::span<double> values);

/// Entry `index` modulo 512 of the decoder's table of one cosine period, as a real number.
double CosineStep(int index);

/// The memory of the amplitude prediction.
class SpectralPredictor {
public:
    /// Starts afresh: 30 harmonics of one sample step.
    void Reset();

    /// What the last spectrum lets expect of the next one. harmonics  9..56
    LogSpectrum Predict(int harmonics) const;

    /// Sums block values and prediction with the decoder's limits, and remembers the result.
    LogSpectrum Accept(const LogSpectrum& blockValues, int harmonics);

private:
    LogSpectrum previous{};
    int previousHarmonics = 30;
};

} // namespace orva::test
