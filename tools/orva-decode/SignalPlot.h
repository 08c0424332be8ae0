/// A picture of a recording: its spectrum, its symbols, its errors and frames over time.
#pragma once

#include "dsp/TFFT_F32.h"
#include "p25/ISymbolObserver.h"
#include "tools/orva-decode/Timeline.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace orva::tools {

/// Gathers what the picture shows while an input is decoded, in bounded memory, and writes it as SVG.
class SignalPlot final : public p25::ISymbolObserver {
public:
    SignalPlot();

    /// Samples of the intermediate frequency, -1.0 .. 1.0, at `rate` Hz.
    void NoteSamples(const float* samples, std::size_t count, std::uint32_t rate);
    void OnSymbol(float sample, std::int32_t symbolClass) override;
    /// `time` in seconds of input.
    void NoteFrame(double time, std::int32_t duid);
    void NoteErrorRate(double time, float percent);

    /// Draws what has been gathered. `title` names the input. False if the file could not be written.
    bool Write(const std::string& path, const std::string& title, double seconds) const;

private:
    static constexpr std::uint32_t kFftSize = 2048;
    static constexpr std::size_t kSymbolBins = 160;

    dsp::TFFT_F32 fft;
    std::vector<float> fftInput;
    std::vector<float> fftOutput;
    std::size_t fftFill = 0;
    std::vector<double> powerSums; ///< per bin, linear
    std::uint64_t spectra = 0;
    std::uint32_t sampleRate = 0;
    std::array<std::uint64_t, kSymbolBins> symbolCounts{};
    Timeline timeline;
};

} // namespace orva::tools
