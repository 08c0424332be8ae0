#include "dsp/TFIRBase.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <numbers>
#include <numeric>

namespace orva::dsp {
namespace {

using std::numbers::pi;

constexpr double kLowestSlope = -9.9;
constexpr std::uint32_t kShortestLength = 4;

/// What the edge compensation was measured with, and the edges found where 5000 Hz was asked, by window kind
/// [Hz].
struct EdgeCompensation {
    double referenceRate;
    double referenceLength;
    double referenceFrequency;
    double measuredEdges[kWindowKinds];
};
constexpr EdgeCompensation kCompensation{64000.0,
                                         1024.0,
                                         5000.0,
                                         {5009.2475536675, 5018.7492743755, 5014.5884936348, 5017.2844306255,
                                          5022.2036078114, 5018.5929177986, 5015.7853006111, 5018.871344688,
                                          5018.6679564939, 5026.2929287475, 5025.9877874989, 5025.6215765614,
                                          5019.4569912475}};
constexpr double kLowestCompensatedEdge = 1e-05;

/// Rounded up to a multiple of 4 as a signed number, so that a value out of its range ends at the lower
/// limit.
std::uint32_t RoundLength(std::uint32_t taps) {
    const auto rounded = static_cast<std::int32_t>((taps + 3U) & ~3U);
    return rounded < static_cast<std::int32_t>(kShortestLength) ? kShortestLength
                                                                : static_cast<std::uint32_t>(rounded);
}

double LimitSlope(double decibelsPerOctave) {
    if (!(decibelsPerOctave <= 0.0)) {
        return 0.0;
    }
    return std::max(decibelsPerOctave, kLowestSlope);
}

std::unique_ptr<double[]> MakeArray(std::uint32_t entries) {
    return std::unique_ptr<double[]>(new (std::nothrow) double[entries]());
}

} // namespace

bool TFIRBase::Fail(ErrorNumber number) {
    lastError = number;
    return false;
}

// Geometry and rates

bool TFIRBase::AllocateBuffers() {
    DesignArrays fresh;
    fresh.designTaps = MakeArray(length);
    fresh.cosineTable = MakeArray(length);
    fresh.halfWindow = MakeArray(length / 2);
    fresh.magnitudes = MakeArray(length / 2);
    fresh.userMagnitudes = MakeArray(length / 2);
    if (!fresh.designTaps || !fresh.cosineTable || !fresh.halfWindow || !fresh.magnitudes ||
        !fresh.userMagnitudes) {
        return false;
    }
    std::fill_n(fresh.userMagnitudes.get(), length / 2, 1.0);
    arrays = std::move(fresh);
    return true;
}

void TFIRBase::Build() {
    if (!AllocateBuffers()) {
        arrays = {};
        lastError = kErrorOutOfMemory;
        return;
    }
    MakeHalfWindow();
    Redesign(true);
}

bool TFIRBase::ChangeGeometry(const FirGeometry& geometry) {
    const FirGeometry old = Geometry();
    DesignArrays oldArrays = std::move(arrays);
    length = geometry.length;
    interpolation = geometry.interpolation;
    decimation = geometry.decimation;
    if (AllocateBuffers()) {
        MakeHalfWindow();
        return true;
    }
    length = old.length;
    interpolation = old.interpolation;
    decimation = old.decimation;
    arrays = std::move(oldArrays);
    return Fail(kErrorOutOfMemory);
}

void TFIRBase::DeriveRates() {
    outputRate = sampleRate * interpolation / decimation;
    designRate = Interpolates() ? sampleRate * interpolation : sampleRate;
    nyquist = 0.5 * std::min(sampleRate, outputRate);
}

void TFIRBase::LowerEdgesToNyquist() {
    lowCut = std::min(lowCut, nyquist);
    highCut = std::min(highCut, nyquist);
}

bool TFIRBase::SetSampleRate(double rate) {
    if (!(rate > 0.0) || std::isinf(rate)) {
        return Fail(kErrorInvalidParameter);
    }
    Succeed();
    if (rate == sampleRate) {
        return true;
    }
    sampleRate = rate;
    DeriveRates();
    LowerEdgesToNyquist();
    Redesign(true);
    return true;
}

void TFIRBase::GetRateRatio(std::uint32_t& up, std::uint32_t& down) const {
    up = interpolation;
    down = decimation;
}

bool TFIRBase::ChangeRateRatio(std::uint32_t up, std::uint32_t down) {
    if (up == 0 || down == 0) {
        return Fail(kErrorInvalidParameter);
    }
    const std::uint32_t divisor = std::gcd(up, down);
    up /= divisor;
    down /= divisor;
    Succeed();
    if (up == interpolation && down == decimation) {
        return true;
    }
    if (!ChangeGeometry({length, up, down})) {
        return false;
    }
    DeriveRates();
    LowerEdgesToNyquist();
    designGain = Interpolates() ? baseGain * interpolation : baseGain;
    Redesign(true);
    return true;
}

bool TFIRBase::SetLength(std::uint32_t taps) {
    const std::uint32_t rounded = RoundLength(taps);
    Succeed();
    if (rounded == length && arrays.designTaps) {
        return true;
    }
    if (!ChangeGeometry({rounded, interpolation, decimation})) {
        return false;
    }
    Redesign(true);
    return true;
}

// Type, edges, window

bool TFIRBase::SetFilterType(std::uint32_t type) {
    if (type >= kFilterTypes) {
        return Fail(kErrorInvalidParameter);
    }
    Succeed();
    if (type != filterType) {
        filterType = type;
        Redesign(false);
    }
    return true;
}

double TFIRBase::ClampToBand(double frequency) const {
    return frequency > 0.0 ? std::min(frequency, nyquist) : 0.0;
}

void TFIRBase::SetLowCut(double frequency) {
    const double edge = ClampToBand(frequency);
    Succeed();
    if (edge == lowCut) {
        return;
    }
    lowCut = edge;
    highCut = std::max(highCut, lowCut);
    if (filterType >= kFilterLowPass && filterType <= kFilterBandStop) {
        Redesign(false);
    }
}

void TFIRBase::SetHighCut(double frequency) {
    const double edge = ClampToBand(frequency);
    Succeed();
    if (edge == highCut) {
        return;
    }
    highCut = edge;
    lowCut = std::min(lowCut, highCut);
    if (filterType >= kFilterLowPass && filterType <= kFilterBandStop) {
        Redesign(false);
    }
}

void TFIRBase::SetSlope(double decibelsPerOctave) {
    const double limited = LimitSlope(decibelsPerOctave);
    Succeed();
    if (limited == slope) {
        return;
    }
    slope = limited;
    if (filterType == kFilterHighPass || filterType == kFilterBandPass) {
        Redesign(false);
    }
}

void TFIRBase::SetBand(double low, double high, double decibelsPerOctave) {
    double newLow = ClampToBand(low);
    const double newHigh = ClampToBand(high);
    const double newSlope = LimitSlope(decibelsPerOctave);
    if (newLow >= newHigh) {
        newLow = std::max(newHigh - 1.0, 0.0);
    }
    Succeed();
    if (newLow == lowCut && newHigh == highCut && newSlope == slope) {
        return;
    }
    lowCut = newLow;
    highCut = newHigh;
    slope = newSlope;
    if (filterType >= kFilterLowPass && filterType <= kFilterBandStop) {
        Redesign(false);
    }
}

bool TFIRBase::SetWindowKind(std::uint32_t kind) {
    if (kind >= kWindowKinds) {
        return Fail(kErrorInvalidParameter);
    }
    Succeed();
    if (kind != windowKind) {
        windowKind = kind;
        if (arrays.halfWindow) {
            MakeHalfWindow();
        }
        Redesign(false);
    }
    return true;
}

double TFIRBase::CompensationShift() const {
    const double ratio = kCompensation.referenceLength / length *
                         (kCompensation.measuredEdges[windowKind] / kCompensation.referenceFrequency - 1.0);
    return ratio * kCompensation.referenceFrequency / kCompensation.referenceRate * designRate;
}

double TFIRBase::LowerEdge(double frequency) const {
    if (!edgeCompensation) {
        return frequency;
    }
    return std::min(frequency + CompensationShift(), designRate / 2.0);
}

double TFIRBase::UpperEdge(double frequency) const {
    if (!edgeCompensation) {
        return frequency;
    }
    const double shifted = frequency - CompensationShift() * frequency / highCut;
    return shifted > 0.0 ? shifted : kLowestCompensatedEdge;
}

// Design

void TFIRBase::MakeHalfWindow() {
    MakeWindow(windowKind, windowParameters, arrays.halfWindow.get(), DesignLength(),
               WindowLayout::Descending);
}

void TFIRBase::Redesign(bool resetPosition) {
    if (!arrays.designTaps) {
        return;
    }
    const bool tilts = filterType == kFilterHighPass || filterType == kFilterBandPass;
    if (tilts && slope != 0.0) {
        DesignTilted();
    } else if (filterType == kFilterFrequencySampling) {
        PutUserMagnitudes();
        DesignFromMagnitudes();
    } else {
        DesignDirectly();
    }
    arrays.designTaps[length - 1] = 0.0;
    SetTaps(arrays.designTaps.get(), resetPosition);
}

/// A filter that changes the rate must also keep out what lies above the lower of the two Nyquist
/// frequencies.
void TFIRBase::DesignDirectly() {
    const bool changesRate = interpolation != decimation;
    switch (filterType) {
    case kFilterPassThrough:
        changesRate ? DesignLowPass(UpperEdge(nyquist)) : DesignPassThrough();
        break;
    case kFilterLowPass:
        DesignLowPass(UpperEdge(highCut));
        break;
    case kFilterHighPass:
        changesRate ? DesignBandPass(LowerEdge(lowCut), UpperEdge(nyquist)) : DesignHighPass();
        break;
    case kFilterBandPass:
        DesignBandPass(LowerEdge(lowCut), UpperEdge(highCut));
        break;
    case kFilterBandStop:
        if (changesRate) {
            PutBrickWallMagnitudes();
            DesignFromMagnitudes();
        } else {
            DesignBandStop();
        }
        break;
    case kFilterHilbert:
        DesignHilbert();
        break;
    default:
        DesignMovingAverage();
        break;
    }
}

void TFIRBase::DesignPassThrough() {
    std::fill_n(arrays.designTaps.get(), length, 0.0);
    arrays.designTaps[CentreIndex()] = designGain;
}

void TFIRBase::DesignLowPass(double edge) {
    double* taps = arrays.designTaps.get();
    const std::uint32_t centre = CentreIndex();
    const double cutoff = edge / (designRate / 2.0);
    taps[centre] = cutoff;
    double sum = cutoff;
    for (std::uint32_t k = 1; k <= centre; ++k) {
        const double value = std::sin(k * cutoff * pi) * arrays.halfWindow[k] / (k * pi);
        taps[centre + k] = value;
        taps[centre - k] = value;
        sum += 2.0 * value;
    }
    if (sum == 0.0) {
        return;
    }
    const double scale = designGain / sum;
    for (std::uint32_t i = 0; i < DesignLength(); ++i) {
        taps[i] *= scale;
    }
}

void TFIRBase::NegateAndAddToCentre() {
    double* taps = arrays.designTaps.get();
    for (std::uint32_t i = 0; i < DesignLength(); ++i) {
        taps[i] = -taps[i];
    }
    taps[CentreIndex()] += designGain;
}

void TFIRBase::DesignHighPass() {
    DesignLowPass(LowerEdge(lowCut));
    NegateAndAddToCentre();
}

void TFIRBase::DesignBandPass(double low, double high) {
    double* taps = arrays.designTaps.get();
    const std::uint32_t centre = CentreIndex();
    const double width = (high - low) / designRate;
    taps[centre] = designGain * 2.0 * width;
    for (std::uint32_t k = 1; k <= centre; ++k) {
        const double value = std::cos(k * (high + low) * pi / designRate) * std::sin(k * width * pi) *
                             arrays.halfWindow[k] / (k * pi) * designGain * 2.0;
        taps[centre + k] = value;
        taps[centre - k] = value;
    }
}

void TFIRBase::DesignBandStop() {
    DesignBandPass(LowerEdge(lowCut), UpperEdge(highCut));
    NegateAndAddToCentre();
}

void TFIRBase::DesignHilbert() {
    double* taps = arrays.designTaps.get();
    const std::uint32_t centre = CentreIndex();
    taps[centre] = 0.0;
    for (std::uint32_t k = 1; k <= centre; ++k) {
        const double w = k * pi;
        const double value = (1.0 - std::cos(w)) * (0.54 + 0.46 * std::cos(pi * k / centre)) * designGain / w;
        taps[centre + k] = value;
        taps[centre - k] = -value;
    }
}

void TFIRBase::DesignMovingAverage() {
    std::fill_n(arrays.designTaps.get(), DesignLength(), designGain / DesignLength());
}

void TFIRBase::FillCosineTable() {
    if (arrays.cosineTableFilled) {
        return;
    }
    const std::uint32_t entries = DesignLength();
    for (std::uint32_t i = 0; i < entries; ++i) {
        arrays.cosineTable[i] = std::cos(2.0 * pi * i / entries);
    }
    arrays.cosineTableFilled = true;
}

/// Frequency sampling: the inverse transform of a real, even response, times the window.
void TFIRBase::DesignFromMagnitudes() {
    FillCosineTable();
    double* taps = arrays.designTaps.get();
    const std::uint32_t centre = CentreIndex();
    for (std::uint32_t i = 0; i <= centre; ++i) {
        double sum = 0.0;
        for (std::uint32_t j = 0; j <= centre; ++j) {
            const std::uint64_t turns = static_cast<std::uint64_t>(j) * i;
            // A filter has three taps at least. NOLINTNEXTLINE(clang-analyzer-core.DivideZero)
            const auto step = static_cast<std::uint32_t>(turns % DesignLength());
            sum += arrays.magnitudes[j] * arrays.cosineTable[step];
        }
        const double value = 2.0 * sum * arrays.halfWindow[i] * designGain;
        taps[centre + i] = value;
        taps[centre - i] = value;
    }
}

void TFIRBase::PutUserMagnitudes() {
    for (std::uint32_t j = 0; j < length / 2; ++j) {
        arrays.magnitudes[j] = arrays.userMagnitudes[j] * 1.0 / length;
    }
}

void TFIRBase::PutBrickWallMagnitudes() {
    const std::uint32_t bins = length / 2;
    const auto binOf = [&](double frequency) {
        return static_cast<std::uint32_t>(frequency * (bins - 1) / (designRate / 2.0));
    };
    const std::uint32_t lowBin = binOf(lowCut);
    const std::uint32_t highBin = binOf(highCut);
    const std::uint32_t lastBin = binOf(nyquist);
    const double unity = 1.0 / bins;
    for (std::uint32_t j = 0; j < bins; ++j) {
        const bool passes = j <= lowBin || (j > highBin && j <= lastBin);
        arrays.magnitudes[j] = passes ? unity : 0.0;
    }
}

/// The lowest bin gets 1/h and the tilted ones fractions of 1/M, a step of about a factor 2. That is the
/// design's shape, and the listener's.
void TFIRBase::DesignTilted() {
    double* magnitudes = arrays.magnitudes.get();
    const std::uint32_t lastBin = DesignLength() >> 1;
    const double binWidth = designRate / 2.0 / lastBin;
    const bool toNyquist = filterType == kFilterHighPass;
    const double top = toNyquist ? nyquist : highCut;
    const double logLowCut = std::log2(lowCut == 0.0 ? 1.0 : lowCut);

    std::fill_n(magnitudes, lastBin + 1, 0.0);
    std::uint32_t bin = std::min(static_cast<std::uint32_t>(std::lrint(lowCut / binWidth)), lastBin);
    double last = 1.0 / lastBin;
    magnitudes[bin++] = last;
    for (double frequency = lowCut + binWidth; frequency <= top && bin <= lastBin; frequency += binWidth) {
        const double decibels = slope * (std::log2(frequency) - logLowCut);
        last = std::pow(10.0, decibels * 0.05) / DesignLength();
        magnitudes[bin++] = last;
    }
    if (toNyquist) {
        for (; bin <= lastBin; ++bin) {
            magnitudes[bin] = last;
        }
    }
    DesignFromMagnitudes();
}

} // namespace orva::dsp
