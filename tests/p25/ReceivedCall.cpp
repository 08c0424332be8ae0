#include "tests/p25/ReceivedCall.h"

#include "p25/COrvaDemodulator.h"
#include "tests/p25/ExpectedEvents.h"
#include "tests/support/SpeechSource.h"

#include <algorithm>

namespace orva::test {

namespace {

constexpr std::size_t kBlockSamples = 2400;
constexpr float kFullScale = 3.0517578125e-5F;
constexpr double kPause = 0.08; ///< seconds between the calls
constexpr std::size_t kNidEnd = 57;

constexpr unsigned kCentreNac = 0x111;
constexpr unsigned kWarmUpNac = 0x222;
constexpr unsigned kNac = 0x293;

Transmission MakeCall(const CallDescription& description) {
    SpeechSource speech(SpeechKind::Vowels);
    Transmission call;
    call.AddCall(description, [&speech](std::size_t index) { return speech.Frame(index); });
    return call;
}

/// The text that the demodulator makes of `samples`, also fed to `stream`.
std::string Receive(const std::vector<std::int16_t>& samples, int sampleRate, DecodedStream& stream) {
    p25::COrvaDemodulator demodulator;
    demodulator.SetSampleRate(static_cast<std::uint32_t>(sampleRate));
    std::string text;
    std::vector<float> block;
    for (std::size_t place = 0; place < samples.size(); place += kBlockSamples) {
        block.clear();
        for (std::size_t n = place; n < std::min(place + kBlockSamples, samples.size()); ++n) {
            block.push_back(static_cast<float>(samples[n]) * kFullScale);
        }
        const std::int32_t count = demodulator.Process(block.data(), static_cast<std::int32_t>(block.size()));
        if (count > 0) {
            const std::string piece(demodulator.GetDibits(), static_cast<std::size_t>(count));
            stream.Feed(piece);
            text += piece;
        }
    }
    return text;
}

/// The number of corrected bits depends on the noise.
std::string WithoutCorrections(const std::string& event) {
    return event.substr(0, event.find(" corrected"));
}

} // namespace

ReceivedCall::ReceivedCall(const ModulatorSettings& settings, int superframes) {
    const Transmission centre = MakeCall({.networkAccessCode = kCentreNac, .superframes = 1});
    const Transmission warmUp = MakeCall({.networkAccessCode = kWarmUpNac, .superframes = 1});
    CallDescription description{.networkAccessCode = kNac,
                                .superframes = superframes,
                                .ending = CallEnding::TerminatorWithLinkControl};
    description.header.talkGroup = 4711;
    description.header.algorithm = 0x84;
    description.link.talkGroup = 4711;
    description.link.source = 1234567;
    description.encryption.algorithm = 0x84;
    const Transmission call = MakeCall(description);

    C4fmModulator modulator(settings);
    modulator.AddGap(kPause);
    modulator.SetCarrierOffset(0.0);
    modulator.Transmit(centre.Dibits());
    modulator.AddGap(kPause);
    modulator.SetCarrierOffset(settings.carrierOffset);
    modulator.Transmit(warmUp.Dibits());
    modulator.AddGap(kPause);
    modulator.Transmit(call.Dibits());
    modulator.AddGap(kPause);

    DecodedStream stream;
    const std::string text = Receive(modulator.Samples(), settings.sampleRate, stream);
    Compare(text, stream, call, description);
}

void ReceivedCall::Compare(const std::string& text, const DecodedStream& stream, const Transmission& call,
                           const CallDescription& description) {
    for (const std::string& event : ExpectedEvents(call.Frames(), 0)) {
        expectedEvents.push_back(WithoutCorrections(event));
    }
    const std::string nid = "nid " + std::to_string(description.networkAccessCode) + " ";
    std::size_t frame = 0;
    std::size_t voice = 0;
    bool begun = false;
    const std::vector<SentFrame>& sent = call.Frames();
    std::size_t sentVoice = 0;
    for (std::size_t i = 0; i < stream.events.size(); ++i) {
        const bool isVoice = stream.events[i] == kVoiceEvent;
        if (!begun && stream.events[i].starts_with(nid)) {
            begun = true;
        }
        if (begun) {
            events.push_back(WithoutCorrections(stream.events[i]));
            if (stream.events[i].starts_with("nid ") && frame < sent.size()) {
                const std::size_t first = stream.places[i] - kNidEnd;
                for (std::size_t n = 0; n < sent[frame].dibitCount && first + n < text.size(); ++n) {
                    ++dibits;
                    wrongDibits += text[first + n] != call.Dibits()[sent[frame].firstDibit + n] ? 1U : 0U;
                }
                ++frame;
                sentVoice = 0;
            } else if (isVoice && frame > 0 && sentVoice < sent[frame - 1].voice.size()) {
                ++voiceFrames;
                exactVoiceFrames += stream.voice[voice] == sent[frame - 1].voice[sentVoice] ? 1U : 0U;
                ++sentVoice;
            }
        }
        voice += isVoice ? 1U : 0U;
    }
}

double ReceivedCall::DibitErrorPercent() const {
    return 100.0 * static_cast<double>(wrongDibits) / static_cast<double>(std::max<std::size_t>(dibits, 1));
}

double ReceivedCall::ExactVoicePercent() const {
    return 100.0 * static_cast<double>(exactVoiceFrames) /
           static_cast<double>(std::max<std::size_t>(voiceFrames, 1));
}

} // namespace orva::test
