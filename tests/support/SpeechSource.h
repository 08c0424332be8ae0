/// Speech-like voice streams, made from formants and pitch contours by the voice encoder.
#pragma once

#include "tests/support/VoiceEncoder.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace orva::test {

/// What a stream says.
enum class SpeechKind {
    Vowels,   ///< a, e, i, o, u in turn, steady, each at a pitch of its own
    Glide,    ///< one vowel, the pitch gliding over every pitch code, 405 Hz to 65 Hz and back
    Jumps,    ///< a vowel whose pitch jumps by more than 20 % every few frames
    Noise,    ///< unvoiced throughout, changing colour
    Mixed,    ///< vowels with voiced low bands and unvoiced high bands, the border moving
    Quiet,    ///< a vowel of a few sample steps, fading in and out
    Silence,  ///< unvoiced at the lowest gain that the code has
    Onsets,   ///< bursts of vowels and fricatives out of silence
    Sentence, ///< syllables of vowels with pitch contours, fricatives and pauses; for listening
};

constexpr SpeechKind kSpeechKinds[] = {SpeechKind::Vowels,  SpeechKind::Glide,  SpeechKind::Jumps,
                                       SpeechKind::Noise,   SpeechKind::Mixed,  SpeechKind::Quiet,
                                       SpeechKind::Silence, SpeechKind::Onsets, SpeechKind::Sentence};

/// The kind's name: "vowels", "glide", "jumps", "noise", "mixed", "quiet", "silence", "onsets" or "sentence".
std::string_view SpeechName(SpeechKind kind);

/// The kind of that name; nothing for any other text.
std::optional<SpeechKind> SpeechKindNamed(std::string_view name);

/// Model of frame `index` of a stream that starts with frame 0 and never ends.
VoiceParameters SpeechFrame(SpeechKind kind, std::size_t index);

/// An endless stream of voice frames of 20 ms, the same at every run.
class SpeechSource {
public:
    explicit SpeechSource(SpeechKind speechKind) : kind(speechKind) {}

    /// Bits of frame `index` in transmitted order; frames before it are encoded as well.
    const VoiceBits& Frame(std::size_t index);

    /// Frames after which the stream has shown all it has, at most 20 s.
    std::size_t FrameCount() const;

private:
    SpeechKind kind;
    VoiceEncoder encoder;
    std::vector<VoiceBits> frames;
};

} // namespace orva::test
