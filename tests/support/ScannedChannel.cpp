#include "tests/support/ScannedChannel.h"

#include "tests/support/C4fmModulator.h"
#include "tests/support/DcsEncoder.h"
#include "tests/support/FmModulator.h"
#include "tests/support/SpeechSource.h"
#include "tests/support/ToneSource.h"
#include "tests/support/Transmission.h"
#include "tests/support/VoiceLikeNoise.h"

#include <algorithm>
#include <functional>

namespace orva::test {

namespace {

// Shares of the peak deviation, as radios have them.
constexpr double kBelowSpeech = 0.15;
constexpr double kSpeech = 0.85;

constexpr double kPitch = 120.0; // [Hz]
constexpr double kIntoTheLimiter =
    5.0;                               // 15 % of the samples are limited, as of someone close to a microphone
constexpr int kSuperframes = 5;        // 360 ms each
constexpr int kTerminatorsBefore = 12; // 15 ms each
constexpr unsigned kNetworkAccessCode = 0x293;

std::vector<std::int16_t> FirstOf(std::vector<std::int16_t> samples, std::size_t count) {
    samples.resize(std::min(samples.size(), count));
    return samples;
}

std::vector<std::int16_t> DigitalCall(const ChannelReception& reception, std::size_t count) {
    CallDescription call;
    call.networkAccessCode = kNetworkAccessCode;
    call.superframes = kSuperframes;
    SpeechSource speech(SpeechKind::Sentence);
    Transmission transmission;
    for (int i = 0; i < kTerminatorsBefore; ++i) {
        transmission.AddTerminator(kNetworkAccessCode);
    }
    transmission.AddCall(call, [&](std::size_t index) { return speech.Frame(index); });
    ModulatorSettings settings;
    settings.sampleRate = reception.rate;
    settings.snrDb = reception.snrDb;
    settings.seed = reception.seed;
    C4fmModulator modulator(settings);
    modulator.Transmit(transmission.Dibits());
    return FirstOf(modulator.Take(), count);
}

} // namespace

std::string_view ChannelName(ChannelKind kind) {
    switch (kind) {
    case ChannelKind::Noise:
        return "noise";
    case ChannelKind::Carrier:
        return "plain carrier";
    case ChannelKind::Tone:
        return "tone";
    case ChannelKind::OtherTone:
        return "other tone";
    case ChannelKind::Code:
        return "code";
    case ChannelKind::InvertedCode:
        return "inverted code";
    case ChannelKind::OtherCode:
        return "other code";
    case ChannelKind::Speech:
        return "speech";
    case ChannelKind::Digital:
        return "digital call";
    }
    return "";
}

std::vector<std::int16_t> ReceivedChannel(ChannelKind kind, const ChannelReception& reception) {
    const auto count = static_cast<std::size_t>(reception.seconds * reception.rate);
    if (kind == ChannelKind::Digital) {
        return DigitalCall(reception, count);
    }
    FmModulator modulator({.sampleRate = reception.rate, .snrDb = reception.snrDb, .seed = reception.seed});
    if (kind == ChannelKind::Noise) {
        return modulator.WithoutCarrier(count);
    }
    VoiceLikeNoise voice({.sampleRate = reception.rate,
                          .pitch = kPitch,
                          .peak = kIntoTheLimiter,
                          .seed = reception.seed,
                          .rhythm = VoiceRhythm::Dictated});
    ToneSource tone(kind == ChannelKind::Tone ? kSoughtTone : kOtherTone, reception.rate, kBelowSpeech);
    DcsEncoder code(kind == ChannelKind::OtherCode ? kOtherCode : kSoughtCode,
                    kind == ChannelKind::InvertedCode, reception.rate);
    const auto above = [&] { return reception.hasSpeech ? kSpeech * voice.Next() : 0.0; };
    std::function<double()> audio;
    switch (kind) {
    case ChannelKind::Tone:
    case ChannelKind::OtherTone:
        audio = [&] { return tone.Next() + above(); };
        break;
    case ChannelKind::Code:
    case ChannelKind::InvertedCode:
    case ChannelKind::OtherCode:
        audio = [&] { return kBelowSpeech * code.NextLevel() + above(); };
        break;
    case ChannelKind::Speech:
        audio = [&] { return voice.Next(); };
        break;
    default:
        audio = [] { return 0.0; };
        break;
    }
    std::vector<double> levels(count);
    std::generate(levels.begin(), levels.end(), audio);
    return modulator.Modulate(levels);
}

} // namespace orva::test
