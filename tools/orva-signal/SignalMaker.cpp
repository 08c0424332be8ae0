#include "tools/orva-signal/SignalMaker.h"

#include "tests/support/BusyControlChannel.h"
#include "tests/support/C4fmPulse.h"
#include "tools/orva-signal/FmSignal.h"
#include "tools/orva-signal/ScanSignal.h"
#include "tools/orva-signal/VoiceChoice.h"

#include <utility>

namespace orva::tools {

namespace {

constexpr int kUnknownFrameBits = 400;

/// Puts stretches of carrier and gaps one behind the other and notes what goes where.
class SignalMaker {
public:
    explicit SignalMaker(const SignalOptions& signalOptions)
        : options(signalOptions),
          modulator(signalOptions.modulator),
          seconds(signalOptions.modulator.symbolPhase / signalOptions.modulator.sampleRate) {}

    void AddGap(double gapSeconds) {
        using Gap = test::C4fmModulator::Gap;
        seconds += gapSeconds;
        if (WantsSamples()) {
            modulator.AddGap(gapSeconds, options.silentGaps ? Gap::Silence : Gap::Noise);
        }
    }

    void Transmit(const test::Transmission& transmission, double carrierOffset, bool warmUp) {
        const double symbolRate = test::kSymbolRate * (1.0 + options.modulator.clockErrorPpm * 1e-6);
        for (const test::SentFrame& sent : transmission.Frames()) {
            PlacedFrame placed{sent, seconds + static_cast<double>(sent.firstDibit) / symbolRate, warmUp};
            placed.frame.firstDibit += signal.dibits.size();
            signal.frames.push_back(placed);
        }
        seconds += static_cast<double>(transmission.Dibits().size()) / symbolRate;
        signal.dibits += transmission.Dibits();
        if (WantsSamples()) {
            modulator.SetCarrierOffset(carrierOffset);
            modulator.Transmit(transmission.Dibits());
        }
    }

    Signal Take() {
        signal.samples = modulator.Take();
        return std::move(signal);
    }

private:
    bool WantsSamples() const { return !options.output.empty(); }

    const SignalOptions& options;
    test::C4fmModulator modulator;
    double seconds; ///< where the next stretch begins
    Signal signal;
};

test::ErrorInjector ErrorsOf(const SignalOptions& options) {
    return test::ErrorInjector(options.heaviestErrors ? test::ErrorPlan::Heaviest() : test::ErrorPlan{},
                               options.modulator.seed);
}

test::Transmission WarmUpCall(const SignalOptions& options) {
    test::CallDescription call = options.call;
    call.withHeader = true;
    call.superframes = options.warmUpSuperframes;
    call.ending = test::CallEnding::Terminator;
    test::Transmission transmission;
    transmission.AddCall(call, VoiceNamed("silence"));
    return transmission;
}

void AddCallWithFollowers(test::Transmission& transmission, const SignalOptions& options,
                          const test::VoiceSource& voice) {
    transmission.AddCall(options.call, voice);
    if (options.packetBlocks > 0) {
        transmission.AddPacket(options.call.networkAccessCode, options.packetBlocks, options.modulator.seed);
    }
    if (options.unknownDataUnit) {
        transmission.AddUnknown(options.call.networkAccessCode, *options.unknownDataUnit, kUnknownFrameBits,
                                options.modulator.seed);
    }
}

} // namespace

Signal MakeSignal(const SignalOptions& options, const test::VoiceSource& voice) {
    if (options.fm.seconds > 0.0) {
        return {MakeFmSignal(options), {}, {}};
    }
    if (options.scanSeconds > 0.0) {
        return {MakeScanSignal(options), {}, {}};
    }
    const double offset = options.modulator.carrierOffset;
    SignalMaker maker(options);
    maker.AddGap(options.leadIn);
    if (options.warmUp) {
        const test::Transmission call = WarmUpCall(options);
        for (const double carrierOffset : {0.0, offset}) {
            maker.Transmit(call, carrierOffset, true);
            maker.AddGap(options.pause);
        }
    }
    const test::ErrorInjector errors = ErrorsOf(options);
    if (options.controlSeconds > 0.0) {
        test::Transmission transmission(errors);
        test::BusyControlChannel(options.call.networkAccessCode)
            .AddSeconds(transmission, options.controlSeconds);
        maker.Transmit(transmission, offset, false);
        maker.AddGap(options.leadOut);
        return maker.Take();
    }
    for (int call = 0; call < options.calls; ++call) {
        if (call > 0) {
            maker.AddGap(options.pause);
        }
        test::Transmission transmission(errors);
        AddCallWithFollowers(transmission, options, voice);
        maker.Transmit(transmission, offset, false);
    }
    maker.AddGap(options.leadOut);
    return maker.Take();
}

} // namespace orva::tools
