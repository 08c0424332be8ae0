#include "tests/plugin/PluginSignals.h"

#include "tests/support/BusyControlChannel.h"
#include "tests/support/C4fmModulator.h"
#include "tests/support/FmModulator.h"
#include "tests/support/SpeechSource.h"
#include "tests/support/ToneSource.h"
#include "tests/support/Transmission.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <random>

namespace orva::test {

namespace {

constexpr double kPause = 0.3;         // [s]
constexpr double kCallSnr = 30.0;      // [dB]
constexpr int kTerminatorsBefore = 12; // 15 ms each
constexpr float kFullScale = 1.0F / 32768.0F;
constexpr double kPcmPerRadian = 10430.060040584269; // 32767 / pi

std::vector<std::int16_t> Transmit(int rate, const Transmission& transmission) {
    ModulatorSettings settings;
    settings.sampleRate = rate;
    settings.snrDb = kCallSnr;
    C4fmModulator modulator(settings);
    modulator.AddGap(kPause);
    modulator.Transmit(transmission.Dibits());
    modulator.AddGap(kPause);
    return modulator.Take();
}

std::vector<float> ToFloats(std::span<const std::int16_t> samples) {
    std::vector<float> floats(samples.size());
    std::transform(samples.begin(), samples.end(), floats.begin(),
                   [](std::int16_t sample) { return static_cast<float>(sample) * kFullScale; });
    return floats;
}

} // namespace

std::vector<std::int16_t> CallSignal(int rate, std::uint8_t algorithm, int superframes) {
    CallDescription call;
    call.networkAccessCode = kCallNac;
    call.header.algorithm = algorithm;
    call.header.talkGroup = kCallTalkGroup;
    call.encryption.algorithm = algorithm;
    call.link.talkGroup = kCallTalkGroup;
    call.link.source = kCallSource;
    call.superframes = superframes;
    SpeechSource speech(SpeechKind::Sentence);
    Transmission transmission;
    // The demodulator locks on these, so that little of the call is lost.
    for (int i = 0; i < kTerminatorsBefore; ++i) {
        transmission.AddTerminator(kCallNac);
    }
    transmission.AddCall(call, [&](std::size_t index) { return speech.Frame(index); });
    return Transmit(rate, transmission);
}

std::vector<std::int16_t> ControlChannelSignal(int rate, double seconds) {
    Transmission transmission;
    BusyControlChannel channel(kCallNac);
    channel.AddSeconds(transmission, seconds);
    return Transmit(rate, transmission);
}

std::vector<std::int16_t> FmSignal(int rate, double seconds, const std::function<double()>& audio,
                                   double snrDb) {
    FmModulator modulator({.sampleRate = rate, .snrDb = snrDb});
    std::vector<double> levels(static_cast<std::size_t>(seconds * rate));
    std::generate(levels.begin(), levels.end(), audio);
    return modulator.Modulate(levels);
}

std::vector<std::int16_t> FmTone(int rate, double seconds, double hz) {
    ToneSource tone(hz, rate);
    return FmSignal(rate, seconds, [&] { return tone.Next(); });
}

std::vector<std::int16_t> Carrier(int rate, double seconds) {
    return FmSignal(
        rate, seconds, [] { return 0.0; }, 25.0);
}

std::vector<std::int16_t> WithGrowingNoise(std::vector<std::int16_t> samples, double level) {
    const double energy = std::transform_reduce(samples.begin(), samples.end(), 0.0, std::plus<>(),
                                                [](std::int16_t sample) { return 1.0 * sample * sample; });
    const auto count = static_cast<double>(samples.size());
    const double step = level * std::sqrt(energy / count) / count;
    std::mt19937 generator(7);
    std::normal_distribution<double> noise;
    double reached = 0.0;
    for (std::int16_t& sample : samples) {
        reached += step;
        const double sum = sample + reached * noise(generator);
        sample = static_cast<std::int16_t>(std::clamp(sum, -32768.0, 32767.0));
    }
    return samples;
}

std::vector<std::int16_t> Noise(int rate, double seconds) {
    FmModulator modulator({.sampleRate = rate, .snrDb = 0.0});
    return modulator.WithoutCarrier(static_cast<std::size_t>(seconds * rate));
}

PortableDecoder::PortableDecoder(int rate) {
    decoder.SetBlockSize(512);
    demodulator.SetSampleRate(static_cast<std::uint32_t>(rate));
    interpolator.SetSampleRate(8000.0);
    interpolator.SetRateRatio(2, 1);
    interpolator.SetFilterType(dsp::kFilterLowPass);
    interpolator.SetLength(64);
    interpolator.SetHighCut(4000.0);
}

void PortableDecoder::Process(std::span<const std::int16_t> samples) {
    const std::vector<float> floats = ToFloats(samples);
    const std::int32_t dibits = demodulator.Process(floats.data(), static_cast<std::int32_t>(floats.size()));
    if (!decodes) {
        return;
    }
    const std::int32_t blocks = decoder.Decode(demodulator.GetDibits(), dibits);
    std::uint32_t size = 0;
    if (const auto report = decoder.TakeRecords(&size)) {
        reports.emplace_back(report.get(), report.get() + size);
    }
    for (std::int32_t i = 0; i < blocks; ++i) {
        dsp::CtbSampleBlock* block = decoder.PopVoiceBlock();
        const std::size_t place = voice.size();
        voice.resize(place + 1024);
        for (std::uint32_t n = 0; n < 512; ++n) {
            const double turns = std::trunc((*block)[n] * gain) + 32768.0;
            (*block)[n] = static_cast<std::int16_t>(turns - 65536.0 * std::floor(turns / 65536.0) - 32768.0);
        }
        interpolator.FilterI16(voice.data() + place, block->Data(), 512);
        decoder.PushFreeBlock(block);
        algorithms.push_back(decoder.GetAlgorithmId());
    }
}

std::vector<std::int16_t> PortableFm(std::span<const std::int16_t> samples, int rate, std::size_t blockSize) {
    p25::COrvaAnalogDemodulator demodulator;
    demodulator.SetSampleRate(static_cast<std::uint32_t>(rate));
    dsp::TFIR_F32 decimator;
    decimator.SetSampleRate(rate);
    decimator.SetRateRatio(1, rate == 48000 ? 3 : 4);
    decimator.SetFilterType(dsp::kFilterLowPass);
    decimator.SetLength(256);
    decimator.SetHighCut(7900.0);
    std::vector<std::int16_t> audio;
    std::vector<std::int16_t> pcm(blockSize);
    for (std::size_t begin = 0; begin + blockSize <= samples.size(); begin += blockSize) {
        const std::vector<float> floats = ToFloats(samples.subspan(begin, blockSize));
        const float* phaseSteps = demodulator.Process(floats.data(), static_cast<std::int32_t>(blockSize));
        std::transform(phaseSteps, phaseSteps + blockSize, pcm.begin(), [](float step) {
            return static_cast<std::int16_t>(std::nearbyint(static_cast<double>(step) * kPcmPerRadian));
        });
        const std::size_t place = audio.size();
        audio.resize(place + blockSize);
        const std::int32_t count =
            decimator.FilterI16(audio.data() + place, pcm.data(), static_cast<std::int32_t>(blockSize));
        audio.resize(place + static_cast<std::size_t>(count));
    }
    return audio;
}

std::vector<std::int16_t> AtVolume(std::vector<std::int16_t> samples, int volume) {
    // 2.5 times for each step, rounded down, and never beyond 32767 either way.
    for (std::int16_t& sample : samples) {
        const double scaled = std::floor(sample * volume * 2.5);
        sample = static_cast<std::int16_t>(std::clamp(scaled, -32767.0, 32767.0));
    }
    return samples;
}

} // namespace orva::test
