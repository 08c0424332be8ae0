#include "tools/orva-decode/Receiver.h"

namespace orva::tools {

namespace {

constexpr float kFullScale = 3.0517578125e-5F; ///< 1 / 32768
constexpr double kSymbolRate = 4800.0;
constexpr std::uint32_t kVoiceBlockSamples = 512;

} // namespace

Receiver::Receiver(Outputs& sinks, CallLog& calls, ControlChannelLog& channel)
    : outputs(sinks),
      listener(decoder, calls, channel, outputs.events.IsOpen() ? &outputs.events : nullptr),
      floats(kBlockSamples) {
    decoder.SetBlockSize(kVoiceBlockSamples);
    decoder.SetObserver(&listener);
}

void Receiver::SetSampleRate(std::uint32_t rate) {
    sampleRate = rate;
    demodulator.SetSampleRate(rate);
    if (fm != nullptr) {
        fm->SetSampleRate(rate);
    }
}

void Receiver::SetPlot(SignalPlot* picture) {
    plot = picture;
    demodulator.SetObserver(picture);
    listener.SetPlot(picture);
}

bool Receiver::FeedSamples(const std::int16_t* samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        floats[i] = static_cast<float>(samples[i]) * kFullScale;
    }
    if (plot != nullptr) {
        plot->NoteSamples(floats.data(), count, sampleRate);
    }
    const std::int32_t dibits = demodulator.Process(floats.data(), static_cast<std::int32_t>(count));
    const double duration = static_cast<double>(count) / sampleRate;
    if (dibits < 0 || !Decode(demodulator.GetDibits(), dibits, duration)) {
        return false;
    }
    return fm == nullptr || fm->Feed(floats.data(), count, seconds);
}

bool Receiver::FeedDibits(const char* text, std::int32_t count) {
    return Decode(text, count, count / kSymbolRate);
}

bool Receiver::Decode(const char* text, std::int32_t count, double duration) {
    const double start = seconds;
    seconds += duration;
    if (count == 0) {
        return true;
    }
    outputs.WriteDibits(text, static_cast<std::size_t>(count));
    listener.SetStretch(start, seconds, count);
    const std::int32_t ready = decoder.Decode(text, count);
    for (std::int32_t i = 0; i < ready; ++i) {
        dsp::CtbSampleBlock* block = decoder.PopVoiceBlock();
        outputs.WriteSpeech(block->Data(), block->Used());
        decoder.PushFreeBlock(block);
    }
    decoder.TakeRecords(nullptr); // the listener has told of them
    return ready >= 0;
}

void Receiver::Finish() {
    if (decoder.GetPartialFill() > 0) {
        outputs.WriteSpeech(decoder.GetPartialBlock()->Data(), decoder.GetPartialFill());
    }
}

} // namespace orva::tools
