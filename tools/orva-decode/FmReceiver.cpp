#include "tools/orva-decode/FmReceiver.h"

#include <algorithm>
#include <cmath>

namespace orva::tools {

namespace {

constexpr std::uint32_t kAudioRate = 16000;
constexpr std::uint32_t kDecimatorTaps = 256;
constexpr double kDecimatorHz = 7900.0;
constexpr double kAudioScale = 10430.060040584269; ///< 32767 / pi: the output is a phase step in radians
constexpr double kMostAudio = 32767.0;

std::int16_t ToAudio(float phaseStep) {
    const double scaled = std::clamp(static_cast<double>(phaseStep) * kAudioScale, -kMostAudio, kMostAudio);
    return static_cast<std::int16_t>(std::lrint(scaled));
}

} // namespace

void FmReceiver::SetSampleRate(std::uint32_t rate) {
    demodulator.SetSampleRate(rate);
    inputDecimator.SetLength(kDecimatorTaps);
    inputDecimator.SetSampleRate(rate);
    inputDecimator.SetRateRatio(1, rate / kAudioRate);
    inputDecimator.SetFilterType(dsp::kFilterLowPass);
    inputDecimator.SetHighCut(kDecimatorHz);
    if (measures) {
        meter.SetSampleRate(rate);
    }
}

bool FmReceiver::Feed(const float* samples, std::size_t count, double time) {
    const float* phaseSteps = demodulator.Process(samples, static_cast<std::int32_t>(count));
    if (phaseSteps == nullptr) {
        return false;
    }
    audio.resize(count);
    std::transform(phaseSteps, phaseSteps + count, audio.begin(), ToAudio);
    if (outputs.HasFm()) {
        decimated.resize(count + 1);
        const std::int32_t written =
            inputDecimator.FilterI16(decimated.data(), audio.data(), static_cast<std::int32_t>(count));
        outputs.WriteFm(decimated.data(), static_cast<std::size_t>(written));
    }
    if (measures && meter.Feed(audio.data(), static_cast<std::uint32_t>(count))) {
        const SquelchReading reading = meter.Take();
        totals.Add(reading);
        if (outputs.events.IsOpen()) {
            outputs.events.Squelch(time, reading);
        }
    }
    return true;
}

} // namespace orva::tools
