#include "tests/squelch/ScannerChain.h"

#include "squelch/NoiseMeasure.h"

#include <cmath>

namespace orva::test {

namespace {

constexpr double kPcmPerRadian = 10430.060040584269; // 32767 / pi
constexpr float kSampleScale = 1.0F / 32768.0F;
constexpr float kLevelFloor = 0.1F;
constexpr float kVoiceThreshold = 0.5F;

} // namespace

std::vector<std::int16_t> ToPcm(std::span<const float> audio) {
    std::vector<std::int16_t> pcm(audio.size());
    std::transform(audio.begin(), audio.end(), pcm.begin(),
                   [](float x) { return static_cast<std::int16_t>(std::lrint(x * kPcmPerRadian)); });
    return pcm;
}

std::vector<std::int16_t> FmReceiver::Receive(std::span<const std::int16_t> signal) {
    scaled.resize(signal.size());
    std::transform(signal.begin(), signal.end(), scaled.begin(),
                   [](std::int16_t x) { return static_cast<float>(x) * kSampleScale; });
    const float* audio = demodulator.Process(scaled.data(), static_cast<std::int32_t>(scaled.size()));
    return audio == nullptr ? std::vector<std::int16_t>{} : ToPcm({audio, scaled.size()});
}

ScannerChain::ScannerChain(std::uint32_t sampleRate) : rate(sampleRate), receiver(sampleRate) {
    noiseHighPass.SetSampleRate(rate);
    noiseHighPass.SetLength(squelch::kNoiseHighPassTaps);
    noiseHighPass.SetFilterType(dsp::kFilterHighPass);
    noiseHighPass.SetLowCut(squelch::kNoiseHighPassHz);
    voice.SetSampleRate(static_cast<float>(rate));
    voice.SetBlockLength(rate / 2);
    voice.SetLevelFloor(kLevelFloor);
    voice.SetVoiceThreshold(kVoiceThreshold);
}

void ScannerChain::TakeAudio(std::vector<std::int16_t> audio) {
    const auto count = static_cast<std::uint32_t>(audio.size());
    noiseScratch.resize(count);
    noise = squelch::MeasureNoise(noiseHighPass, noiseScratch.data(), noiseLevel, true, audio.data(), count);
    tone.SetSampleRate(static_cast<float>(rate));
    tone.Process(audio.data(), count, 1);
    voice.Process(audio.data(), count, 1);
    squelch::DcBlock(dcBlock, audio.data(), count, rate);
    dcs.SetSampleRate(static_cast<float>(rate));
    dcs.Process(audio.data(), count, 1);
}

} // namespace orva::test
