/// Integer FIR filter with a designer of its own.
#pragma once

#include <cstdint>
#include <vector>

namespace orva::squelch {

/// Kinds of `CtbFixedFir::SetKind`. All but the last two have a Blackman window.
enum FixedFirKind : std::uint32_t {
    kFixedFirPassThrough = 0,   ///< a centre tap of the gain
    kFixedFirLowPass = 1,       ///< up to the upper frequency
    kFixedFirHighPass = 2,      ///< from the lower frequency on, inverted
    kFixedFirBandPass = 3,      ///< between the two
    kFixedFirBandStop = 4,      ///< all but between the two
    kFixedFirHilbert = 5,       ///< odd taps only, Hamming window
    kFixedFirMovingAverage = 6, ///< all taps alike
};

/// Filters 16-bit samples with Q15 taps and 32-bit sums.
///
/// The setters take memory and design, `Filter` does neither. All setters compare first.
class CtbFixedFir {
public:
    CtbFixedFir();

    /// [Hz], limited to 2.0 .. half the rate. Moves the lower frequency to 1 Hz below where it would not be
    /// under it.
    void SetUpperFrequency(float hz);

    /// Rate of the samples [Hz], at least 4.0; lowers the frequencies to its half.
    void SetFilterRate(float hz);

    /// kind  a `FixedFirKind`; other values pass through
    void SetKind(std::uint32_t kind);

    /// Number of taps, at least 3, made odd by its lowest bit. A change clears the history.
    void SetTaps(std::uint32_t count);

    /// Samples per inner pass, at least 1. A change clears the history.
    void SetBlockLength(std::uint32_t length);
    std::uint32_t GetBlockLength() const { return blockLength; }

    /// Filters `count` / `stride` samples, one every `stride` entries, `stride` above 0, and returns their
    /// number. output  gets the results, unsaturated; null: they stay in `Output`, and of a call with more
    /// than a block length of samples those of the last pass only, which then are also the number returned.
    std::uint32_t Filter(std::int32_t* output, const std::int16_t* samples, std::uint32_t count,
                         std::uint32_t stride);
    /// The same for the top 16 bits of 32-bit samples.
    std::uint32_t Filter(std::int32_t* output, const std::int32_t* samples, std::uint32_t count,
                         std::uint32_t stride);

    /// Results of the last pass.
    const std::int32_t* Output() const { return outputBuffer.data(); }

private:
    friend struct CtbFixedFirInspector;

    template <class Sample>
    std::uint32_t FilterSamples(std::int32_t* output, const Sample* samples, std::uint32_t count,
                                std::uint32_t stride);
    void RunPass(std::uint32_t count);
    void KeepLowerBelowUpper();
    void Allocate();
    void Design();
    void DesignLowPass(double* side, double hz) const;
    void DesignBandPass(double* side) const;
    void DesignHilbert();
    void StoreSymmetric(const double* side);
    std::uint32_t Half() const { return taps >> 1; }

    std::vector<std::int16_t> inputBuffer;  ///< `taps` - 1 earlier samples, room for a block, padding
    std::vector<std::int32_t> outputBuffer; ///< of one pass
    std::vector<std::int16_t> coefficients; ///< Q15, oldest sample first; zero-padded to a multiple of 32
    std::uint32_t blockLength = 1024;
    std::uint32_t taps = 31;
    float upperFrequency = 3000.0F; ///< [Hz]
    float lowerFrequency = 1000.0F; ///< [Hz]
    float filterRate = 11025.0F;    ///< [Hz]
    float filterGain = 1.0F;
    std::uint32_t filterKind = kFixedFirPassThrough;
};

} // namespace orva::squelch
