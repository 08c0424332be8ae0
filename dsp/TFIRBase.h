/// The design half of the FIR filters.
///
/// A filter is given a rate, a length, a type and band edges, and designs its own taps in double precision by
/// the windowed-sinc or the frequency-sampling method. `TFIR_F32` and `TFIR_F32_2CH` add the run-time half.
///
/// Setters leave `GetLastError()` 0 on success. A bad argument gives 87 and a failed allocation 8; the setter
/// then returns false and the old value stays in force. All setters compare first: an unchanged value does
/// nothing. A filter has no lock and belongs to one thread at a time. No operation throws.
#pragma once

#include "dsp/DesignWindows.h"
#include "dsp/FirStorage.h"
#include "dsp/LastError.h"

#include <cstdint>
#include <memory>

namespace orva::dsp {

/// Types of `SetFilterType`.
enum FilterType : std::uint32_t {
    kFilterPassThrough = 0,       ///< a centre tap of the design's gain
    kFilterLowPass = 1,           ///< up to `highCut`
    kFilterHighPass = 2,          ///< from `lowCut` on
    kFilterBandPass = 3,          ///< `lowCut` to `highCut`
    kFilterBandStop = 4,          ///< all but `lowCut` to `highCut`
    kFilterHilbert = 5,           ///< Hilbert transformer, Hamming window built in
    kFilterMovingAverage = 6,     ///< all taps alike
    kFilterFrequencySampling = 7, ///< from a response given bin by bin
};
constexpr std::uint32_t kFilterTypes = 8;

class TFIRBase {
public:
    TFIRBase(const TFIRBase&) = delete;
    TFIRBase& operator=(const TFIRBase&) = delete;

    /// Loads `GetLength()` taps, in forward time order (the last one meets the newest sample), into the
    /// run-time form. The design itself stays, and returns with the next redesign. resetPosition  also puts
    /// the history's write position to its start, without clearing the history
    virtual void SetTaps(const double* taps, bool resetPosition) = 0;

    virtual ~TFIRBase() = default;

    /// Input rate [Hz], above 0 and finite. Band edges above the new Nyquist frequency come down to it, for
    /// good. The history stays, its write position starts anew.
    bool SetSampleRate(double rate);
    double GetSampleRate() const { return sampleRate; }
    /// Input rate x up / down [Hz].
    double GetOutputRate() const { return outputRate; }
    void GetRateRatio(std::uint32_t& up, std::uint32_t& down) const;

    /// Taps, rounded up to a multiple of 4, at least 4; also 4 for a value above the 31-bit range. Clears the
    /// history.
    bool SetLength(std::uint32_t taps);
    std::uint32_t GetLength() const { return length; }

    /// type  a `FilterType`, 0 .. 7
    bool SetFilterType(std::uint32_t type);
    std::uint32_t GetFilterType() const { return filterType; }

    /// Band edges [Hz], clamped to 0 .. Nyquist frequency. The other edge is moved along where they would
    /// cross.
    void SetLowCut(double frequency);
    void SetHighCut(double frequency);
    double GetLowCut() const { return lowCut; }
    double GetHighCut() const { return highCut; }

    /// Tilt of the high-pass and the band-pass [dB per octave], clamped to -9.9 .. 0.0, NaN counting as 0.0.
    void SetSlope(double decibelsPerOctave);
    double GetSlope() const { return slope; }

    /// Both edges and the slope with the same limits and a single redesign. A low edge that is not below the
    /// high one becomes `high` - 1.0, and at least 0.
    void SetBand(double low, double high, double decibelsPerOctave);

    /// kind  a `WindowKind`, 0 .. 12
    bool SetWindowKind(std::uint32_t kind);
    std::uint32_t GetWindowKind() const { return windowKind; }

    /// 0, 8 or 87, an `ErrorNumber`: the outcome of the last setter.
    std::uint32_t GetLastError() const { return lastError; }

protected:
    /// Sets the defaults only: a derived constructor allocates and designs.
    TFIRBase() = default;

    /// Makes the design arrays for `length` and the rate ratio. A derived class calls it and then makes its
    /// own storage. False when memory is short.
    virtual bool AllocateBuffers();

    /// First allocation and design, for the constructors of derived classes.
    void Build();

    /// The common part of the derived classes' `SetRateRatio`.
    bool ChangeRateRatio(std::uint32_t up, std::uint32_t down);

    FirGeometry Geometry() const { return {length, interpolation, decimation}; }
    bool Interpolates() const { return interpolation > 1; }
    bool Decimates() const { return decimation > 1; }
    double BaseGain() const { return baseGain; }
    void Succeed() { lastError = kErrorNone; }
    bool Fail(ErrorNumber number);

private:
    friend struct TFIRBaseInspector;

    /// Arrays of the design, made together.
    struct DesignArrays {
        std::unique_ptr<double[]> designTaps;     ///< the design's result; [length], the last one is always 0
        std::unique_ptr<double[]> cosineTable;    ///< cos(2 pi i / M), [M]; filled on first need
        std::unique_ptr<double[]> halfWindow;     ///< from its centre outward, [length / 2]
        std::unique_ptr<double[]> magnitudes;     ///< target response per bin, [length / 2]
        std::unique_ptr<double[]> userMagnitudes; ///< response of type 7, all 1.0 at first, [length / 2]
        bool cosineTableFilled = false;
    };

    bool ChangeGeometry(const FirGeometry& geometry);
    void DeriveRates();
    void LowerEdgesToNyquist();

    double ClampToBand(double frequency) const;
    double CompensationShift() const;
    double LowerEdge(double frequency) const;
    double UpperEdge(double frequency) const;

    std::uint32_t DesignLength() const { return length - 1; }
    std::uint32_t CentreIndex() const { return DesignLength() >> 1; }
    void MakeHalfWindow();
    void Redesign(bool resetPosition);
    void DesignDirectly();
    void DesignPassThrough();
    void DesignLowPass(double edge);
    void DesignHighPass();
    void DesignBandPass(double low, double high);
    void DesignBandStop();
    void DesignHilbert();
    void DesignMovingAverage();
    void DesignFromMagnitudes();
    void DesignTilted();
    void PutBrickWallMagnitudes();
    void PutUserMagnitudes();
    void NegateAndAddToCentre();
    void FillCosineTable();

    std::uint32_t filterType = kFilterBandPass;
    std::uint32_t length = 128;
    double baseGain = 1.0;       ///< gain asked for; also the scale of the delay-only path
    double designGain = 1.0;     ///< `baseGain`, times the up factor when that is above 1
    double sampleRate = 32000.0; ///< [Hz]
    double outputRate = 32000.0; ///< [Hz]
    double designRate = 32000.0; ///< rate at which the taps act [Hz]
    double lowCut = 300.0;       ///< [Hz]
    double highCut = 5000.0;     ///< [Hz]
    double slope = 0.0;          ///< [dB per octave]
    std::uint32_t interpolation = 1;
    std::uint32_t decimation = 1;
    double nyquist = 16000.0; ///< half the lesser of input and output rate [Hz]
    std::uint32_t windowKind = kWindowBlackmanHarris;
    bool edgeCompensation = false; ///< reserved: shifts the band edges by the window's measured transition
    std::uint32_t lastError = kErrorNone;
    double windowParameters[2] = {kDefaultWindowParameters[0], kDefaultWindowParameters[1]};
    DesignArrays arrays;
};

} // namespace orva::dsp
