#include "voice/SpeechSynthesis.h"

#include "voice/FixedPoint.h"
#include "voice/FrameConditioning.h"
#include "voice/Oscillators.h"
#include "voice/UnvoicedSynthesis.h"
#include "voice/VoicedSynthesis.h"

namespace orva::voice {

namespace {

constexpr int kLongestBlock = 205;

} // namespace

void SynthesizeNewFrame(ImbeFrameParameters& record, std::int16_t* samples, int count,
                        ImbeDecoderState& state) {
    DerivePhases(record, state);
    LogToLinear(record);
    EnhanceSpectrum(record, state);
    AdaptVoicing(record, state);
    ScaleUnvoiced(record);
    SynthesizeFrame(record, samples, count, state);
}

void SynthesizeFrame(ImbeFrameParameters& record, std::int16_t* samples, int count, ImbeDecoderState& state) {
    if (count <= kLongestBlock) {
        SynthesizeBlock(record, samples, count, state);
        return;
    }
    const int half = count >> 1;
    SynthesizeBlock(record, samples, half, state);
    SynthesizeBlock(record, samples + half, count - half, state);
}

void SynthesizeSilence(ImbeFrameParameters& record, std::int16_t* samples, int count,
                       ImbeDecoderState& state) {
    record = state.silenceFrame;
    SynthesizeFrame(record, samples, count, state);
}

void SynthesizeBlock(const ImbeFrameParameters& record, std::int16_t* samples, int count,
                     ImbeDecoderState& state) {
    // A half of a split frame can end before the fade does; the buffer holds the rest, which is dropped.
    std::int32_t mix[kLongestBlock];
    SynthesizeUnvoiced(record, mix, count, state);
    AddVoiced(record, mix, count, state);
    for (int i = 0; i < count; ++i) {
        samples[i] = High16(AddSat(ShiftSat(mix[i], kBufferShift), 0x8000));
    }
    state.lastFrame = record;
    state.lastFrame.synthesize = SynthesizeFrame;
    UpdatePitchAverage(record, state);
}

} // namespace orva::voice
