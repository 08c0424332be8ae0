#include "tools/orva-signal/ScanSignal.h"

#include "tests/support/ScannedChannel.h"

namespace orva::tools {

std::vector<std::int16_t> MakeScanSignal(const SignalOptions& options) {
    constexpr double kSnr = 20.0; // [dB]
    test::ChannelReception reception{.rate = options.modulator.sampleRate,
                                     .seconds = options.scanSeconds,
                                     .snrDb = options.modulator.snrDb.value_or(kSnr),
                                     .seed = options.modulator.seed};
    std::vector<std::int16_t> signal;
    const auto append = [&](test::ChannelKind kind) {
        const std::vector<std::int16_t> channel = test::ReceivedChannel(kind, reception);
        signal.insert(signal.end(), channel.begin(), channel.end());
    };
    for (const test::ChannelKind kind : test::kChannelKinds) {
        append(kind);
    }
    reception.hasSpeech = true;
    append(test::ChannelKind::Tone);
    return signal;
}

} // namespace orva::tools
