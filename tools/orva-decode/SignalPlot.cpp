#include "tools/orva-decode/SignalPlot.h"

#include "tools/orva-decode/SvgPanel.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace orva::tools {

namespace {

constexpr double kSymbolRange = 0.4; ///< radians per sample, on either side
constexpr double kThreshold = 0.165; ///< between the inner and outer symbols
constexpr double kLowestDb = -120.0;
constexpr double kHeadroom = 1.1; ///< above the highest value, so that it stays clear of the frame

constexpr double kWidth = 960;
constexpr double kHeight = 640;
constexpr double kTop = 50;
constexpr double kPanelHeight = 220;

constexpr const char* kRowNames[kFrameRows] = {"HDU",   "LDU1", "LDU2", "TDU",
                                               "TDULC", "TSBK", "PDU",  "unknown"};
constexpr const char* kRowColours[kFrameRows] = {"#7b3fa0", "#1f6fb5", "#35a0d0", "#c0392b",
                                                 "#e07b39", "#2e8b57", "#8a7a2f", "#8a8a8a"};
constexpr const char* kClassColours[4] = {"#c0392b", "#e07b39", "#35a0d0", "#1f6fb5"}; // -3, -1, +1, +3

FrameRow RowOf(std::int32_t duid) {
    switch (duid) {
    case 0:
        return FrameRow::Hdu;
    case 3:
        return FrameRow::Tdu;
    case 5:
        return FrameRow::Ldu1;
    case 7:
        return FrameRow::Tsbk;
    case 10:
        return FrameRow::Ldu2;
    case 12:
        return FrameRow::Pdu;
    case 15:
        return FrameRow::Tdulc;
    default:
        return FrameRow::Unknown;
    }
}

/// The level nearest to a discriminator output, 0 for -3 to 3 for +3.
std::size_t LevelOf(double sample) {
    if (sample < 0) {
        return sample <= -kThreshold ? 0 : 1;
    }
    return sample <= kThreshold ? 2 : 3;
}

/// A round length that divides `range` into some four to ten parts.
double TickStep(double range) {
    constexpr double kFewestParts = 4.0;
    const double rough = range / kFewestParts;
    const double decade = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double factor : {5.0, 2.0, 1.0}) {
        if (factor * decade <= rough) {
            return factor * decade;
        }
    }
    return decade;
}

std::string DrawSpectrum(const std::vector<double>& powerSums, std::uint64_t spectra, double halfRate) {
    SvgPanel panel({60, kTop, 420, kPanelHeight}, {0, halfRate / 1000, kLowestDb, 0});
    panel.Title("Spectrum of the intermediate frequency");
    panel.HorizontalTicks(TickStep(halfRate / 1000), "kHz");
    panel.VerticalTicks(20, "dB");
    std::vector<SvgPoint> line;
    for (std::size_t bin = 0; bin < powerSums.size(); ++bin) {
        const double mean = powerSums[bin] / static_cast<double>(std::max<std::uint64_t>(spectra, 1));
        const double db = std::max(kLowestDb, 10 * std::log10(mean + 1e-30));
        line.push_back(
            {halfRate / 1000 * static_cast<double>(bin) / static_cast<double>(powerSums.size()), db});
    }
    panel.Line(line, "#1f6fb5");
    return panel.Finish();
}

template <std::size_t Bins>
std::string DrawSymbols(const std::array<std::uint64_t, Bins>& counts) {
    const auto highest = static_cast<double>(*std::max_element(counts.begin(), counts.end()));
    SvgPanel panel({560, kTop, 370, kPanelHeight},
                   {-kSymbolRange, kSymbolRange, 0, kHeadroom * std::max(1.0, highest)});
    panel.Title("Discriminator at the symbol instants, rad/sample");
    panel.HorizontalTicks(0.2, "");
    for (const double threshold : {-kThreshold, 0.0, kThreshold}) {
        panel.Marker(threshold);
    }
    const double width = 2 * kSymbolRange / static_cast<double>(Bins);
    for (std::size_t bin = 0; bin < Bins; ++bin) {
        const double left = -kSymbolRange + width * static_cast<double>(bin);
        panel.Bar(left, left + width, 0, static_cast<double>(counts[bin]),
                  kClassColours[LevelOf(left + width / 2)]);
    }
    return panel.Finish();
}

std::string DrawTimeline(const Timeline& timeline, double seconds) {
    double highest = 1.0;
    for (const TimeSlot& slot : timeline.Slots()) {
        if (slot.errorRateCount > 0) {
            highest = std::max(highest, slot.errorRateSum / slot.errorRateCount);
        }
    }
    highest *= kHeadroom;
    const double end = std::max(seconds, timeline.SlotSeconds());
    constexpr double kErrorHeight = 110;
    constexpr double kRowsTop = kTop + kPanelHeight + 70 + kErrorHeight + 20;
    SvgPanel errors({60, kTop + kPanelHeight + 70, kWidth - 90, kErrorHeight}, {0, end, 0, highest});
    errors.Title("Bit error rate");
    errors.VerticalTicks(TickStep(highest), "%");
    SvgPanel rows({60, kRowsTop, kWidth - 90, 130}, {0, end, 0, static_cast<double>(kFrameRows)});
    rows.HorizontalTicks(TickStep(end), "s");
    std::vector<SvgPoint> line;
    for (std::size_t i = 0; i < timeline.Slots().size(); ++i) {
        const TimeSlot& slot = timeline.Slots()[i];
        const double left = timeline.SlotSeconds() * static_cast<double>(i);
        if (slot.errorRateCount > 0) {
            line.push_back({left + timeline.SlotSeconds() / 2, slot.errorRateSum / slot.errorRateCount});
        }
        for (std::size_t row = 0; row < kFrameRows; ++row) {
            if (slot.frames[row] > 0) {
                const double bottom = static_cast<double>(kFrameRows - 1 - row);
                rows.Bar(left, left + std::max(timeline.SlotSeconds(), end / 400), bottom + 0.15,
                         bottom + 0.85, kRowColours[row]);
            }
        }
    }
    errors.Line(line, "#c0392b");
    for (std::size_t row = 0; row < kFrameRows; ++row) {
        rows.RowLabel(static_cast<double>(kFrameRows - 1 - row) + 0.5, kRowNames[row], kRowColours[row]);
    }
    return errors.Finish() + rows.Finish();
}

} // namespace

SignalPlot::SignalPlot() : fftInput(kFftSize), fftOutput(kFftSize / 2), powerSums(kFftSize / 2) {
    fft.SetSize(kFftSize);
}

void SignalPlot::NoteSamples(const float* samples, std::size_t count, std::uint32_t rate) {
    sampleRate = rate;
    while (count > 0) {
        const std::size_t part = std::min<std::size_t>(count, kFftSize - fftFill);
        std::copy_n(samples, part, fftInput.begin() + static_cast<std::ptrdiff_t>(fftFill));
        fftFill += part;
        samples += part;
        count -= part;
        if (fftFill < kFftSize) {
            return;
        }
        fftFill = 0;
        if (fft.ComputeSpectrum(fftOutput.data(), fftInput.data())) {
            ++spectra;
            for (std::size_t bin = 0; bin < powerSums.size(); ++bin) {
                powerSums[bin] += std::pow(10.0, 0.1 * static_cast<double>(fftOutput[bin]));
            }
        }
    }
}

void SignalPlot::OnSymbol(float sample, std::int32_t /*symbolClass*/) {
    const double place = (static_cast<double>(sample) + kSymbolRange) / (2 * kSymbolRange);
    if (place >= 0.0 && place < 1.0) {
        ++symbolCounts[static_cast<std::size_t>(place * static_cast<double>(kSymbolBins))];
    }
}

void SignalPlot::NoteFrame(double time, std::int32_t duid) {
    ++timeline.At(time).frames[static_cast<std::size_t>(RowOf(duid))];
}

void SignalPlot::NoteErrorRate(double time, float percent) {
    TimeSlot& slot = timeline.At(time);
    slot.errorRateSum += static_cast<double>(percent);
    ++slot.errorRateCount;
}

bool SignalPlot::Write(const std::string& path, const std::string& title, double seconds) const {
    std::string svg = SvgPanel::BeginDocument(kWidth, kHeight, title);
    svg += DrawSpectrum(powerSums, spectra, sampleRate / 2.0);
    svg += DrawSymbols(symbolCounts);
    svg += DrawTimeline(timeline, seconds);
    svg += SvgPanel::EndDocument();
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        return false;
    }
    const bool written = std::fwrite(svg.data(), 1, svg.size(), file) == svg.size();
    return std::fclose(file) == 0 && written;
}

} // namespace orva::tools
