#include "voice/ImbeDecoder.h"

#include "voice/FrameInput.h"
#include "voice/ModelParameters.h"
#include "voice/SpeechSynthesis.h"

#include <algorithm>
#include <cstring>

namespace orva::voice {

namespace {

// A very quiet unvoiced frame, not digital zero.
ImbeFrameParameters MakeSilence(ImbeSynthesisStep step) {
    ImbeFrameParameters record{};
    record.kind = 1;
    record.harmonics = 14;
    record.fundamental = 16384; // one thirty-second of the sample rate, 250 Hz
    std::ranges::fill(record.amplitudes, std::int16_t{26214});
    record.amplitudeExponent = -18;
    record.synthesize = step;
    return record;
}

// Replaces a frame that cannot be played: by the last one, or by silence when muted or after three
// replacements.
void Conceal(ImbeFrameParameters& record, bool mute, ImbeDecoderState& state) {
    constexpr std::uint16_t kThreeFramesBefore = 0xE;
    constexpr std::uint16_t kThisFrame = 1;
    const bool worn = (state.frameHistory & kThreeFramesBefore) == kThreeFramesBefore;
    record = mute || worn ? state.silenceFrame : state.lastFrame;
    state.frameHistory = static_cast<std::uint16_t>(state.frameHistory | kThisFrame);
}

// Chooses what to play and returns the frame's status.
std::int16_t ChooseFrame(const ImbeFrameBlock& block, ImbeFrameParameters& record, ImbeDecoderState& state) {
    const bool repeat = (block.status & kImbeFlagRepeat) != 0;
    const bool mute = (block.status & kImbeFlagMute) != 0;
    state.frameHistory = static_cast<std::uint16_t>(state.frameHistory << 1);
    if (!repeat) {
        // Muted frames are unpacked too, so that prediction keeps following the signal.
        UnpackFrame(record, state, block.bits);
    }
    if (!mute && !repeat && record.kind == 1) {
        record.synthesize = SynthesizeNewFrame;
        return 0;
    }
    Conceal(record, mute, state);
    return static_cast<std::int16_t>(block.status | kImbeFlagConcealed);
}

// Samples that do not fit the record's field run on over its bits, which are no longer needed.
void StoreSamples(const std::int16_t* samples, int count, ImbeFrameBlock& block) {
    const int fitting = std::min(count, kSampleCapacity);
    std::copy_n(samples, fitting, block.samples);
    const auto overhang =
        std::min(static_cast<std::size_t>(count - fitting) * sizeof(*samples), sizeof(block.bits));
    std::memcpy(block.bits, samples + fitting, overhang);
}

} // namespace

void ImbeInit(ImbeDecoderState& state) {
    state = ImbeDecoderState{};
    state.pitchAverage = 7365;
    state.energyMantissa = 18750;
    state.energyExponent = -13;
    state.lastFrame = MakeSilence(SynthesizeFrame);
    state.silenceFrame = MakeSilence(SynthesizeSilence);
    state.previousHarmonics = 30;
}

void ImbeDecodeCodeWords(ImbeFrameBlock& block, ImbeDecoderState& state) {
    const int softBits = std::clamp<int>(block.softBits, 1, kLargestSoftBits);
    std::uint8_t received[kCodedBits];
    const int sampleMask = (1 << softBits) - 1;
    std::ranges::transform(block.bits, received, [=](std::uint8_t sample) {
        return static_cast<std::uint8_t>(sample & sampleMask);
    });

    DecodeFrame(received, softBits, block.bits, state);
    block.status = UpdateErrorStatistics(softBits, state);
    block.errorTotal = state.errorTotal;
    block.softMetric = state.softMetricTotal;
    block.errorRate = state.errorRate;
}

void ImbeSynthesizeFrame(ImbeFrameBlock& block, ImbeDecoderState& state) {
    ImbeFrameParameters record{};
    block.status = ChooseFrame(block, record, state);

    const int count = std::clamp<int>(block.sampleCount, kMinSampleCount, kMaxSampleCount);
    block.sampleCount = static_cast<std::int16_t>(count);
    state.unvoicedLength = kNominalFrameLength;
    state.voicedLength = kNominalFrameLength;

    std::int16_t samples[kMaxSampleCount];
    record.synthesize(record, samples, count, state);
    StoreSamples(samples, count, block);
}

} // namespace orva::voice
