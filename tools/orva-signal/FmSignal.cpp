#include "tools/orva-signal/FmSignal.h"

#include "tests/support/DcsEncoder.h"
#include "tests/support/FmModulator.h"
#include "tests/support/RandomSource.h"
#include "tests/support/ToneSource.h"
#include "tests/support/VoiceLikeNoise.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace orva::tools {

namespace {

// Shares of the peak deviation, as radios have them.
constexpr double kToneShare = 0.15;
constexpr double kCodeShare = 0.15;
constexpr double kAudioShare = 0.6;

constexpr double kTestTone = 1000.0;      // [Hz]
constexpr double kNoiseShare = 1.0 / 3.0; // of white noise: peaks of three deviations reach full scale

/// What is heard above the tone or the code.
class AudioSource {
public:
    explicit AudioSource(const SignalOptions& options)
        : kind(options.fm.audio),
          voice({.sampleRate = options.modulator.sampleRate, .seed = options.modulator.seed}),
          tone(kTestTone, options.modulator.sampleRate),
          noise(options.modulator.seed) {}

    double Next() {
        switch (kind) {
        case FmAudio::Voice:
            return voice.Next();
        case FmAudio::Noise:
            return std::clamp(noise.Gaussian() * kNoiseShare, -1.0, 1.0);
        case FmAudio::Tone:
            return tone.Next();
        case FmAudio::None:
            break;
        }
        return 0.0;
    }

private:
    FmAudio kind;
    test::VoiceLikeNoise voice;
    test::ToneSource tone;
    test::RandomSource noise;
};

std::vector<double> MakeAudio(const SignalOptions& options, std::size_t count) {
    const int rate = options.modulator.sampleRate;
    const FmOptions& fm = options.fm;
    AudioSource audible(options);
    test::ToneSource tone(fm.tone.value_or(0.0), rate, kToneShare);
    test::DcsEncoder code(static_cast<unsigned>(std::abs(fm.code.value_or(0))), fm.code.value_or(0) < 0,
                          rate);
    std::vector<double> audio(count);
    for (double& sample : audio) {
        sample = audible.Next() * kAudioShare;
        if (fm.tone) {
            sample += tone.Next();
        }
        if (fm.code) {
            sample += code.NextLevel() * kCodeShare;
        }
    }
    return audio;
}

void Append(std::vector<std::int16_t>& signal, const std::vector<std::int16_t>& more) {
    signal.insert(signal.end(), more.begin(), more.end());
}

} // namespace

std::vector<std::int16_t> MakeFmSignal(const SignalOptions& options) {
    const test::ModulatorSettings& channel = options.modulator;
    test::FmModulator modulator({.sampleRate = channel.sampleRate,
                                 .carrierOffset = channel.carrierOffset,
                                 .deviation = options.fm.deviation,
                                 .amplitude = channel.amplitude,
                                 .snrDb = channel.snrDb,
                                 .seed = channel.seed});
    const auto samplesOf = [&](double seconds) {
        return static_cast<std::size_t>(std::llround(seconds * channel.sampleRate));
    };
    const auto addGap = [&](std::vector<std::int16_t>& signal, double seconds) {
        const std::size_t count = samplesOf(seconds);
        Append(signal,
               options.silentGaps ? std::vector<std::int16_t>(count) : modulator.WithoutCarrier(count));
    };
    std::vector<std::int16_t> signal;
    addGap(signal, options.leadIn);
    Append(signal, modulator.Modulate(MakeAudio(options, samplesOf(options.fm.seconds))));
    addGap(signal, options.leadOut);
    return signal;
}

} // namespace orva::tools
