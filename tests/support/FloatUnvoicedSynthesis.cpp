#include "tests/support/FloatUnvoicedSynthesis.h"

#include "tests/support/BlockScaledTransform.h"
#include "tests/support/FloatVoicedSynthesis.h"

#include <algorithm>
#include <cmath>

namespace orva::test {
namespace {

constexpr int kFadeStart = 55;
constexpr int kLowestBin = 3; // all below about 94 Hz is cleared
constexpr int kHighestBin = 120;

// The rising slope of the window: the square root of a straight line, so that rise and fall add up in power.
double Slope(int index) {
    return index == 50 ? 32767.0 / 32768.0 : std::round(32768.0 * std::sqrt(index / 50.0)) / 32768.0;
}

double LargestUnvoiced(const FloatVoiceFrame& frame) {
    double largest = 0.0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(frame.harmonics); ++i) {
        largest = std::max(largest, frame.voiced[i] ? 0.0 : frame.amplitudes[i]);
    }
    return largest;
}

double Energy(std::span<const std::complex<double>> band) {
    double energy = 0.0;
    for (const auto& bin : band) {
        energy += std::norm(bin);
    }
    return energy;
}

void ScaleBand(std::span<std::complex<double>> band, double factor) {
    for (auto& bin : band) {
        bin *= factor;
    }
}

} // namespace

void FloatUnvoicedSynthesis::Reset() {
    *this = FloatUnvoicedSynthesis();
}

void FloatUnvoicedSynthesis::Write(std::span<double> buffer, const FloatVoiceFrame& frame) {
    constexpr int kStages = 8;
    Spectrum spectrum = NoiseSpectrum();
    const int exponent = Shape(spectrum, frame);

    std::array<double, kRecordLength> record{};
    const auto period = std::span(record).first<kTransformLength>();
    const int recordExponent = InverseRealTransform(spectrum, period, exponent, kStages);
    const bool isHeard = recordExponent - 2 >= -15;
    for (double& value : period) {
        value = isHeard ? std::ldexp(value, recordExponent) : 0.0;
    }
    std::copy_n(record.begin(), kRecordLength - kTransformLength, record.begin() + kTransformLength);

    for (std::size_t i = 0; i < buffer.size(); ++i) {
        const int fade = static_cast<int>(i) - kFadeStart;
        if (fade < 0) {
            buffer[i] = tail[i];
        } else if (fade < kFadeLength) {
            buffer[i] = 0.0;
            AddWithinBuffer(buffer[i], tail[i] * Slope(kFadeLength - fade) + record[i] * Slope(fade));
        } else {
            buffer[i] = record[i];
        }
    }
    std::copy(record.begin() + kFloatFrameLength, record.end(), tail.begin());
}

double FloatUnvoicedSynthesis::NextNoise() {
    seed = static_cast<std::uint16_t>(173 * seed + 13849);
    return static_cast<std::int16_t>(seed);
}

FloatUnvoicedSynthesis::Spectrum FloatUnvoicedSynthesis::NoiseSpectrum() {
    std::array<double, kRecordLength> record{};
    auto write = record.begin() + kFadeStart;
    for (int i = 0; i < kFadeLength; ++i) {
        *write++ = carriedNoise[static_cast<std::size_t>(i)] * Slope(i);
    }
    for (int i = 0; i < kFloatFrameLength - kFadeLength; ++i) {
        *write++ = NextNoise();
    }
    for (double& value : carriedNoise) {
        value = NextNoise();
    }
    for (int i = 0; i < kFadeLength; ++i) {
        *write++ = carriedNoise[static_cast<std::size_t>(i)] * Slope(kFadeLength - i);
    }
    std::copy(record.begin() + kTransformLength, record.end(), record.begin());

    std::array<std::complex<double>, kTransformLength> points{};
    std::copy_n(record.begin(), kTransformLength, points.begin());
    ForwardTransform(points);
    Spectrum spectrum{};
    std::copy_n(points.begin(), spectrum.size(), spectrum.begin());
    return spectrum;
}

// Gives each band of the spectrum the energy of its harmonic. Returns the block exponent; the bins are
// mantissas.
int FloatUnvoicedSynthesis::Shape(Spectrum& spectrum, const FloatVoiceFrame& frame) {
    const double loudest = LargestUnvoiced(frame);
    const double scale =
        std::sqrt(frame.harmonics * kFloatFrameLength * (34486.0 / 16384.0)); // of a bin, for amplitude 1
    const int exponent = loudest == 0.0 ? 0 : std::ilogb(loudest) - 14 + std::ilogb(scale) + 1 + 2;

    const int spacing = frame.fundamental * 32; // bins, Q16
    int edge = (spacing + 65536) / 2;
    auto bins = std::span(spectrum);
    ScaleBand(bins.first(static_cast<std::size_t>(edge >> 16)), 0.0);
    for (int l = 1; l <= frame.harmonics; ++l) {
        const int first = edge >> 16;
        edge += spacing;
        const int width = (edge >> 16) - first;
        const auto band = bins.subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(width));
        const auto i = static_cast<std::size_t>(l - 1);
        const double energy = Energy(band);
        const bool isSilent = frame.voiced[i] || energy == 0.0;
        ScaleBand(band, isSilent
                            ? 0.0
                            : std::ldexp(std::sqrt(width / energy) * scale * frame.amplitudes[i], -exponent));
    }
    ScaleBand(bins.subspan(static_cast<std::size_t>(std::min(edge >> 16, kHighestBin + 1))), 0.0);
    ScaleBand(bins.first(kLowestBin), 0.0);
    return exponent;
}

} // namespace orva::test
