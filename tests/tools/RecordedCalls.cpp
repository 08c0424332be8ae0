#include "tests/tools/RecordedCalls.h"

#include "audio/WaveFileReader.h"
#include "p25/COrvaFrameDecoder.h"
#include "tests/support/C4fmModulator.h"
#include "tests/support/SpeechSource.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace orva::test {

namespace {

constexpr std::size_t kIdleDibits = 300;

VoiceSource Saying(SpeechKind kind) {
    return [source = SpeechSource(kind)](std::size_t index) mutable { return source.Frame(index); };
}

CallDescription GroupCall() {
    CallDescription call;
    call.networkAccessCode = kRecordedNac;
    call.header.talkGroup = kRecordedTalkGroup;
    call.link.talkGroup = kRecordedTalkGroup;
    call.link.source = kRecordedSource;
    call.superframes = 2;
    return call;
}

CallDescription UnitCall() {
    constexpr std::uint8_t kAlgorithmAes = 0x84;
    CallDescription call;
    call.networkAccessCode = kRecordedNac;
    call.header.talkGroup = 0;
    call.header.algorithm = kAlgorithmAes;
    call.encryption.algorithm = kAlgorithmAes;
    call.link.format = LinkControl::kUnitToUnitVoice;
    call.link.source = kRecordedUnitSource;
    call.link.destination = kRecordedUnitDestination;
    call.ending = CallEnding::None;
    return call;
}

CallDescription WarmUpCall() {
    CallDescription call;
    call.networkAccessCode = kRecordedNac;
    return call;
}

} // namespace

const Transmission& RecordedCalls() {
    static const Transmission calls = [] {
        Transmission transmission;
        transmission.AddIdle(kIdleDibits);
        transmission.AddCall(GroupCall(), Saying(SpeechKind::Vowels));
        transmission.AddIdle(kIdleDibits);
        transmission.AddCall(UnitCall(), Saying(SpeechKind::Onsets));
        transmission.AddIdle(kIdleDibits);
        return transmission;
    }();
    return calls;
}

std::vector<VoiceBits> RecordedVoice() {
    std::vector<VoiceBits> voice;
    for (const SentFrame& frame : RecordedCalls().Frames()) {
        voice.insert(voice.end(), frame.voice.begin(), frame.voice.end());
    }
    return voice;
}

const std::vector<std::int16_t>& RecordedSignal() {
    static const std::vector<std::int16_t> signal = [] {
        constexpr double kSilence = 0.3;
        C4fmModulator modulator{ModulatorSettings{}};
        Transmission warmUp;
        warmUp.AddCall(WarmUpCall(), Saying(SpeechKind::Silence));
        modulator.AddGap(kSilence, C4fmModulator::Gap::Silence);
        modulator.Transmit(warmUp.Dibits());
        modulator.Transmit(RecordedCalls().Dibits());
        modulator.AddGap(kSilence, C4fmModulator::Gap::Silence);
        return modulator.Take();
    }();
    return signal;
}

std::vector<std::int16_t> DecodeSpeech(const std::string& dibits) {
    constexpr std::size_t kSlice = 1000;
    std::vector<std::int16_t> speech;
    p25::COrvaFrameDecoder decoder;
    for (std::size_t first = 0; first < dibits.size(); first += kSlice) {
        const auto count = static_cast<std::int32_t>(std::min(kSlice, dibits.size() - first));
        decoder.Decode(dibits.data() + first, count);
        while (dsp::CtbSampleBlock* block = decoder.PopVoiceBlock()) {
            speech.insert(speech.end(), block->Data(), block->Data() + block->Used());
            decoder.PushFreeBlock(block);
        }
    }
    if (const std::uint32_t fill = decoder.GetPartialFill(); fill > 0) {
        const std::int16_t* partial = decoder.GetPartialBlock()->Data();
        speech.insert(speech.end(), partial, partial + fill);
    }
    return speech;
}

std::vector<std::int16_t> ReadSpeechFile(const std::string& path) {
    audio::WaveFileReader reader;
    EXPECT_EQ(reader.Open(path), audio::WaveFault::None) << path;
    EXPECT_EQ(reader.GetSampleRate(), 8000U);
    EXPECT_FALSE(reader.IsUnfinished());
    std::vector<std::int16_t> samples(static_cast<std::size_t>(reader.GetPromisedSamples()));
    EXPECT_EQ(reader.Read(samples.data(), samples.size()), samples.size());
    return samples;
}

} // namespace orva::test
