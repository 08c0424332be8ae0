#include "bench/p25/BenchSignals.h"

#include "bench/dsp/BareDotProduct.h"
#include "tests/support/C4fmModulator.h"
#include "tests/support/SpeechSource.h"
#include "tests/support/Transmission.h"

#include <algorithm>

namespace orva::bench {

const std::string& VoiceDibits() {
    static const std::string dibits = [] {
        test::CallDescription call;
        call.withHeader = false;
        call.superframes = kDataUnits / 2;
        call.ending = test::CallEnding::None;
        test::SpeechSource speech(test::SpeechKind::Sentence);
        test::Transmission transmission;
        transmission.AddCall(call, [&](std::size_t index) { return speech.Frame(index); });
        return transmission.Dibits();
    }();
    return dibits;
}

std::vector<float> VoiceSignal(int sampleRate) {
    constexpr float kFullScale = 1.0F / 32768.0F;
    test::ModulatorSettings settings;
    settings.sampleRate = sampleRate;
    settings.snrDb = 25.0;
    test::C4fmModulator modulator(settings);
    modulator.Transmit(VoiceDibits());
    const std::vector<std::int16_t> samples = modulator.Take();
    std::vector<float> signal(samples.size() / kBlock * kBlock);
    std::transform(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(signal.size()),
                   signal.begin(),
                   [](std::int16_t sample) { return static_cast<float>(sample) * kFullScale; });
    return signal;
}

double BareDotSeconds() {
    constexpr int kTaps = 256;
    return MeasureBareDotProduct(kTaps);
}

} // namespace orva::bench
