// Demodulator and frame decoder together on a radio signal.
#include "tests/p25/ReceivedCall.h"

#include <iostream>

#include <gtest/gtest.h>

namespace orva::test {
namespace {

constexpr double kNoNoise = 0.0;

struct Signal {
    int sampleRate;
    double offset;       ///< of the carrier [Hz]
    double clock;        ///< error [ppm]
    double amplitude;    ///< of full scale
    double snrDb = 25.0; ///< in 12.5 kHz
};

void PrintTo(const Signal& signal, std::ostream* out) {
    *out << signal.sampleRate << " Hz, carrier " << signal.offset << " Hz off, clock " << signal.clock
         << " ppm, amplitude " << signal.amplitude;
    if (signal.snrDb == kNoNoise) {
        *out << ", no noise";
    } else {
        *out << ", " << signal.snrDb << " dB";
    }
}

ReceivedCall Receive(const Signal& signal) {
    constexpr int kSuperframes = 2;
    ModulatorSettings settings{.sampleRate = signal.sampleRate,
                               .carrierOffset = signal.offset,
                               .clockErrorPpm = signal.clock,
                               .symbolPhase = 0.3,
                               .amplitude = signal.amplitude};
    if (signal.snrDb != kNoNoise) {
        settings.snrDb = signal.snrDb;
    }
    ReceivedCall call(settings, kSuperframes);
    std::cout << "[ measured ] " << testing::PrintToString(signal) << ": " << call.DibitErrorPercent()
              << " % of the dibits wrong, " << call.ExactVoicePercent() << " % of the voice frames exact\n";
    return call;
}

class WholeReceiverAt48000 : public testing::TestWithParam<Signal> {};

TEST_P(WholeReceiverAt48000, HearsAllSignallingOfACall) {
    const ReceivedCall call = Receive(GetParam());
    ASSERT_EQ(call.events, call.expectedEvents);
    EXPECT_LT(call.DibitErrorPercent(), 2.5);
    EXPECT_GT(call.ExactVoicePercent(), 85.0);
}

INSTANTIATE_TEST_SUITE_P(Signals, WholeReceiverAt48000,
                         testing::Values(Signal{48000, 0, 0, 0.5, kNoNoise},
                                         Signal{48000, 0, 100, 0.5, kNoNoise},
                                         Signal{48000, 0, -100, 0.5, kNoNoise}, Signal{48000, 0, 0, 0.5},
                                         Signal{48000, 500, 0, 0.03}, Signal{48000, -500, 0, 0.1},
                                         Signal{48000, 1500, 100, 0.003}, Signal{48000, 1500, -100, 0.5},
                                         Signal{48000, -1500, -100, 0.9}, Signal{48000, -1500, 100, 0.5}));

class WholeReceiverAt64000 : public testing::TestWithParam<Signal> {};

TEST_P(WholeReceiverAt64000, HearsAllSignallingOfACallThroughMoreErrors) {
    const ReceivedCall call = Receive(GetParam());
    ASSERT_EQ(call.events, call.expectedEvents);
    // The slicing threshold is the same at every rate, so that outer symbols are often taken for inner ones
    // here; far fewer errors would mean that it was scaled.
    EXPECT_GT(call.DibitErrorPercent(), 2.5);
    EXPECT_LT(call.DibitErrorPercent(), 12.0);
    EXPECT_GT(call.ExactVoicePercent(), 30.0);
    EXPECT_LT(call.ExactVoicePercent(), 95.0);
}

INSTANTIATE_TEST_SUITE_P(Signals, WholeReceiverAt64000,
                         testing::Values(Signal{64000, 0, 0, 0.5, kNoNoise}, Signal{64000, 0, 0, 0.5},
                                         Signal{64000, 1500, 0, 0.9}, Signal{64000, -1500, 100, 0.003},
                                         Signal{64000, 500, -100, 0.5}));

} // namespace
} // namespace orva::test
