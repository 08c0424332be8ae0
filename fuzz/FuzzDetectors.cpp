/// Any audio, signal, rate and block size into the squelch detectors, their signal kit and the FM chain.
///
/// Byte 0 says whether there is a demodulator. Then steps: a byte says what, then come its parameters.
/// Samples are a repeated cut of the input, so that short inputs make long blocks.
#include "dsp/TFIR_F32.h"
#include "fuzz/InputBytes.h"
#include "fuzz/Require.h"
#include "p25/COrvaAnalogDemodulator.h"
#include "squelch/CtbDcsDetector.h"
#include "squelch/CtbFftAnalyzer.h"
#include "squelch/CtbFixedFir.h"
#include "squelch/CtbResampler.h"
#include "squelch/CtbToneDetector.h"
#include "squelch/CtbVoiceDetector.h"
#include "squelch/DcBlock.h"
#include "squelch/NoiseMeasure.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <memory>
#include <vector>

namespace orva::fuzz {

namespace {

constexpr int kMostSteps = 40;
constexpr std::uint32_t kMostSamples = 6000;  ///< of a block
constexpr double kMostSamplesInAll = 30000.0; ///< through the detectors, before or behind their resamplers
constexpr std::uint32_t kMostPatternBytes = 64;
constexpr int kMostRateChanges = 4; ///< each designs filters, which takes time

using Samples = std::vector<std::int16_t>;

enum class Step : std::uint8_t {
    Signal = 0,
    Audio = 1,
    DetectorRate = 2,
    DemodulatorRate = 3,
    Voice = 4,
    Resampler = 5,
    Filter = 6,
    Analyzer = 7,
};

float FloatOf(InputBytes& input) {
    const std::uint32_t low = input.Word();
    const std::uint32_t high = input.Word();
    return std::bit_cast<float>(low | high << 16);
}

/// Rates of receivers, and any number.
float RateOf(InputBytes& input) {
    constexpr std::array<float, 6> kRates = {48000.0F, 64000.0F, 44100.0F, 16000.0F, 8000.0F, 1000.0F};
    const std::uint8_t choice = input.Byte();
    return choice < kRates.size() ? kRates[choice] : FloatOf(input);
}

Samples SamplesOf(InputBytes& input) {
    const std::uint32_t count = input.Word() % kMostSamples;
    const std::uint32_t bytes = input.Byte() % kMostPatternBytes;
    std::vector<std::uint8_t> pattern(2 * std::max(bytes, 1U));
    std::generate(pattern.begin(), pattern.end(), [&] { return input.Byte(); });
    Samples samples(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t place = 2 * i % pattern.size();
        samples[i] = static_cast<std::int16_t>(pattern[place] | pattern[place + 1] << 8);
    }
    return samples;
}

std::uint32_t CountOf(const Samples& samples) {
    return static_cast<std::uint32_t>(samples.size());
}

/// What one receiver owns.
class Chain {
public:
    explicit Chain(InputBytes& input) : signalAllowed(input.Byte() % 2U == 0) {
        noiseHighPass.SetSampleRate(rate);
        noiseHighPass.SetLength(squelch::kNoiseHighPassTaps);
        noiseHighPass.SetFilterType(dsp::kFilterHighPass);
        noiseHighPass.SetLowCut(squelch::kNoiseHighPassHz);
        tone.SetSampleRate(rate);
        dcs.SetSampleRate(rate);
    }

    void TakeStep(InputBytes& input) {
        switch (static_cast<Step>(input.Byte() & 7U)) {
        case Step::Signal:
            if (signalAllowed) {
                TakeSignal(input);
            }
            break;
        case Step::Audio:
            TakeAudio(SamplesOf(input), 1U + input.Byte() % 3U);
            break;
        case Step::DetectorRate:
            ChangeDetectorRate(RateOf(input));
            break;
        case Step::DemodulatorRate:
            ChangeDemodulatorRate(input.Word());
            break;
        case Step::Voice:
            voice.SetSampleRate(RateOf(input));
            voice.SetBlockLength(input.Word());
            voice.SetLevelFloor(FloatOf(input));
            voice.SetVoiceThreshold(FloatOf(input));
            break;
        case Step::Resampler:
            RunResampler(input);
            break;
        case Step::Filter:
            RunFilter(input);
            break;
        case Step::Analyzer:
            RunAnalyzer(input);
            break;
        }
    }

private:
    void TakeSignal(InputBytes& input) {
        const Samples signal = SamplesOf(input);
        std::vector<float> scaled(signal.size());
        std::transform(signal.begin(), signal.end(), scaled.begin(),
                       [](std::int16_t x) { return static_cast<float>(x) / 32768.0F; });
        const float* audio = demodulator.Process(scaled.data(), static_cast<std::int32_t>(scaled.size()));
        Require((audio != nullptr) == (!signal.empty() && demodulatorRate >= 12000),
                "a block of a usable rate gives audio");
        if (audio == nullptr) {
            return;
        }
        Samples pcm(signal.size());
        for (std::size_t i = 0; i < pcm.size(); ++i) {
            Require(audio[i] >= -3.0F && audio[i] <= 3.0F, "audio is limited");
            pcm[i] = static_cast<std::int16_t>(std::lrint(audio[i] * 10430.06));
        }
        TakeAudio(std::move(pcm), 1);
    }

    void TakeAudio(Samples audio, std::uint32_t stride) {
        const std::uint32_t count = CountOf(audio);
        samplesTaken += count * samplesForOne;
        if (samplesTaken > kMostSamplesInAll) {
            return;
        }
        Samples scratch(audio.size());
        const std::int32_t noise = squelch::MeasureNoise(noiseHighPass, scratch.data(), noiseLevel,
                                                         count % 2 == 0, audio.data(), count);
        Require(noise >= (count == 0 ? -1 : 0) && noise <= 99, "noise is 0 to 99");
        tone.Process(audio.data(), count, stride);
        Require(tone.toneIndex >= -1 && tone.toneIndex <= 51, "a tone is one of the table");
        voice.Process(audio.data(), count, stride);
        Require(voice.result >= 0 && voice.result <= 3, "the voice result is one of four");
        Require(voice.voiceMeasure >= 0.0F && voice.voiceMeasure <= 1.0F, "the measure is 0 to 1");
        squelch::DcBlock(dcBlock, audio.data(), count, rate);
        dcs.Process(audio.data(), count, stride);
        Require(dcs.matchCount <= 23, "a bit matches at most 23 codes");
        for (std::uint32_t i = 0; i < dcs.matchCount; ++i) {
            Require(dcs.matches[i] >= 0 && dcs.matches[i] < 2 * squelch::kDcsInverted, "a match is a code");
        }
    }

    void ChangeDetectorRate(float hz) {
        if (rateChanges++ < kMostRateChanges) {
            tone.SetSampleRate(hz);
            dcs.SetSampleRate(hz);
            // A low rate is resampled to many times as much, which is slow.
            constexpr float kCodeRate = 2688.0F;
            samplesForOne = std::max<double>(samplesForOne, hz > 0.0F ? kCodeRate / hz : 1.0F);
        }
    }

    void ChangeDemodulatorRate(std::uint32_t hz) {
        if (rateChanges++ < kMostRateChanges) {
            demodulatorRate = hz;
            demodulator.SetSampleRate(hz);
            demodulator.Reset();
        }
    }

    static void RunResampler(InputBytes& input) {
        squelch::CtbResampler resampler;
        const std::uint32_t perBranch = input.Byte() % 8U;
        const float from = RateOf(input);
        const float to = RateOf(input);
        resampler.Configure(perBranch, from, to, FloatOf(input));
        resampler.SetBlockLength(input.Word() % 512U);
        const Samples samples = SamplesOf(input);
        if (resampler.MostOutputs(CountOf(samples)) > 16 * kMostSamples) {
            return;
        }
        Samples output(resampler.MostOutputs(CountOf(samples)) + resampler.GetUp());
        const std::uint32_t produced = resampler.Resample(output.data(), samples.data(), CountOf(samples), 1);
        Require(produced <= resampler.MostOutputs(CountOf(samples)), "no more samples than foretold");
    }

    static void RunFilter(InputBytes& input) {
        squelch::CtbFixedFir filter;
        filter.SetFilterRate(RateOf(input));
        filter.SetUpperFrequency(RateOf(input));
        filter.SetKind(input.Byte() % 9U);
        filter.SetTaps(input.Word() % 512U);
        filter.SetBlockLength(input.Word() % 512U);
        const Samples samples = SamplesOf(input);
        std::vector<std::int32_t> output(samples.size());
        Require(filter.Filter(output.data(), samples.data(), CountOf(samples), 1) == samples.size(),
                "a filter gives what it takes");
    }

    static void RunAnalyzer(InputBytes& input) {
        squelch::CtbFftAnalyzer analyzer;
        analyzer.SetWindow(input.Byte() % 6U);
        analyzer.SetLength(input.Word() % 4096U);
        Samples samples = SamplesOf(input);
        samples.resize(analyzer.GetLength());
        analyzer.Analyze(samples.data());
        Require(std::all_of(analyzer.Power(), analyzer.Power() + analyzer.GetHalfLength(),
                            [](float power) { return power >= 0.0F; }),
                "power is not negative");
    }

    static constexpr std::uint32_t rate = 48000;
    bool signalAllowed; ///< half of the inputs spare the demodulator's slow set-up
    int rateChanges = 0;
    double samplesTaken = 0.0;
    double samplesForOne = 1.0;
    std::uint32_t demodulatorRate = 48000;
    p25::COrvaAnalogDemodulator demodulator;
    dsp::TFIR_F32 noiseHighPass;
    float noiseLevel = 0.0F;
    squelch::DcBlockState dcBlock;
    squelch::CtbToneDetector tone;
    squelch::CtbDcsDetector dcs;
    squelch::CtbVoiceDetector voice;
};

void Run(InputBytes input) {
    const auto chain = std::make_unique<Chain>(input);
    for (int step = 0; step < kMostSteps && !input.IsAtEnd(); ++step) {
        chain->TakeStep(input);
    }
}

} // namespace

} // namespace orva::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    orva::fuzz::Run({data, size});
    return 0;
}
