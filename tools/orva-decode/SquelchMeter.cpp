#include "tools/orva-decode/SquelchMeter.h"

#include "squelch/NoiseMeasure.h"

#include <algorithm>

namespace orva::tools {

namespace {

constexpr float kLevelFloor = 0.1F;
constexpr float kPercent = 100.0F;

} // namespace

void SquelchTotals::Add(const SquelchReading& reading) {
    ++readings;
    if (reading.ctcss != 0) {
        ++tones[reading.ctcss];
    }
    for (const std::int32_t code : reading.dcs) {
        ++codes[code];
    }
    highestVoice = std::max(highestVoice, reading.voice);
    noiseSum += static_cast<std::uint64_t>(reading.noise);
}

double SquelchTotals::MeanNoise() const {
    return readings == 0 ? 0.0 : static_cast<double>(noiseSum) / static_cast<double>(readings);
}

void SquelchMeter::SetSampleRate(std::uint32_t rate) {
    sampleRate = rate;
    nextReading = rate / 2;
    noiseHighPass.SetLength(squelch::kNoiseHighPassTaps);
    noiseHighPass.SetSampleRate(rate);
    noiseHighPass.SetFilterType(dsp::kFilterHighPass);
    noiseHighPass.SetLowCut(squelch::kNoiseHighPassHz);
    toneDetector.SetSampleRate(static_cast<float>(rate));
    dcsDetector.SetSampleRate(static_cast<float>(rate));
    voiceDetector.SetSampleRate(static_cast<float>(rate));
    voiceDetector.SetBlockLength(rate / 2);
    voiceDetector.SetLevelFloor(kLevelFloor);
}

bool SquelchMeter::Feed(const std::int16_t* audio, std::uint32_t count) {
    constexpr bool kEachBlockAlone = true;
    scratch.resize(std::max<std::size_t>(scratch.size(), count));
    reading.noise =
        squelch::MeasureNoise(noiseHighPass, scratch.data(), noiseLevel, kEachBlockAlone, audio, count);
    toneDetector.Process(audio, count, 1);
    reading.ctcss = squelch::ScaledCtcssTone(toneDetector.toneIndex);
    FeedCodes(audio, count);
    voiceDetector.Process(audio, count, 1);
    reading.voice = static_cast<std::int32_t>(voiceDetector.voiceMeasure * kPercent);

    samples += count;
    return samples >= nextReading;
}

/// The codes' audio goes through a DC blocker of its own, in place: the other detectors must not see it.
void SquelchMeter::FeedCodes(const std::int16_t* audio, std::uint32_t count) {
    std::copy_n(audio, count, scratch.begin());
    squelch::DcBlock(dcBlock, scratch.data(), count, sampleRate);
    dcsDetector.Process(scratch.data(), count, 1);
    for (std::uint32_t i = 0; i < dcsDetector.matchCount; ++i) {
        reading.dcs.insert(squelch::SignedDcsCode(dcsDetector.matches[i]));
    }
    dcsDetector.matchCount = 0;
}

SquelchReading SquelchMeter::Take() {
    SquelchReading taken = reading;
    reading.dcs.clear();
    nextReading += sampleRate / 2;
    return taken;
}

} // namespace orva::tools
