#include "tests/p25/ReceivedControlChannel.h"

#include "p25/COrvaDemodulator.h"
#include "tests/support/BusyControlChannel.h"
#include "tests/support/SpeechSource.h"
#include "tests/support/Transmission.h"

#include <algorithm>

namespace orva::test {

namespace {

constexpr std::size_t kBlockSamples = 2400;
constexpr float kFullScale = 3.0517578125e-5F;
constexpr double kPause = 0.08; ///< seconds between the transmissions
constexpr unsigned kOtherNac = 0x111;

Transmission ShortCall() {
    SpeechSource speech(SpeechKind::Vowels);
    Transmission call;
    call.AddCall({.networkAccessCode = kOtherNac, .superframes = 1},
                 [&speech](std::size_t index) { return speech.Frame(index); });
    return call;
}

Transmission PacketsOfThreeBlocks(int packets) {
    constexpr unsigned kBlocks = 3;
    BusyControlChannel channel(ControlChannelStream::kNac);
    Transmission transmission;
    for (int packet = 0; packet < packets; ++packet) {
        channel.AddPacket(transmission, kBlocks);
    }
    return transmission;
}

void Receive(const std::vector<std::int16_t>& samples, int sampleRate, ControlChannelStream& stream) {
    p25::COrvaDemodulator demodulator;
    demodulator.SetSampleRate(static_cast<std::uint32_t>(sampleRate));
    std::vector<float> block;
    for (std::size_t place = 0; place < samples.size(); place += kBlockSamples) {
        block.clear();
        for (std::size_t n = place; n < std::min(place + kBlockSamples, samples.size()); ++n) {
            block.push_back(static_cast<float>(samples[n]) * kFullScale);
        }
        const std::int32_t count = demodulator.Process(block.data(), static_cast<std::int32_t>(block.size()));
        if (count > 0) {
            stream.decoder.Decode(demodulator.GetDibits(), count);
            while (dsp::CtbSampleBlock* voice = stream.decoder.PopVoiceBlock()) {
                stream.decoder.PushFreeBlock(voice);
            }
        }
    }
}

} // namespace

ReceivedControlChannel::ReceivedControlChannel(const ModulatorSettings& settings, int packets) {
    const Transmission call = ShortCall();
    const Transmission channel = PacketsOfThreeBlocks(packets);
    ControlChannelStream perfect;
    perfect.Feed(channel.Dibits());
    sentBlocks = perfect.blocks;
    sentRecords = perfect.records;

    C4fmModulator modulator(settings);
    modulator.AddGap(kPause);
    modulator.SetCarrierOffset(0.0);
    modulator.Transmit(call.Dibits());
    modulator.AddGap(kPause);
    modulator.SetCarrierOffset(settings.carrierOffset);
    modulator.Transmit(call.Dibits());
    modulator.AddGap(kPause);
    modulator.Transmit(channel.Dibits());
    modulator.AddGap(kPause);

    ControlChannelStream stream;
    Receive(modulator.Samples(), settings.sampleRate, stream);
    heardBlocks = stream.blocks;
    // What the calls made: new speakers and ends of calls.
    std::copy_if(
        stream.records.begin(), stream.records.end(), std::back_inserter(heardRecords),
        [](const std::string& record) { return !record.starts_with("05") && !record.starts_with("81"); });
    Compare();
}

void ReceivedControlChannel::Compare() {
    ControlChannelStream fromRightBlocks;
    auto next = sentBlocks.begin();
    for (const HeardBlock& heard : heardBlocks) {
        if (!heard.good) {
            continue;
        }
        const auto sent = std::find_if(next, sentBlocks.end(),
                                       [&](const HeardBlock& block) { return block.bytes == heard.bytes; });
        if (sent == sentBlocks.end()) {
            ++wrongBlocks;
            continue;
        }
        ++rightBlocks;
        next = sent + 1;
        TrunkingData data{};
        std::copy_n(heard.bytes.begin(), data.size(), data.begin());
        fromRightBlocks.Send({data});
    }
    const auto [heard, made] = std::mismatch(heardRecords.begin(), heardRecords.end(),
                                             fromRightBlocks.records.begin(), fromRightBlocks.records.end());
    wrongRecords = static_cast<std::size_t>(heardRecords.end() - heard) +
                   static_cast<std::size_t>(fromRightBlocks.records.end() - made);
}

double ReceivedControlChannel::RightPercent() const {
    return 100.0 * static_cast<double>(rightBlocks) /
           static_cast<double>(std::max<std::size_t>(sentBlocks.size(), 1));
}

} // namespace orva::test
