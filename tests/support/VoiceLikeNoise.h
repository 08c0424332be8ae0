#pragma once

#include "tests/support/RandomSource.h"

#include <cstdint>

namespace orva::test {

/// How the speaker goes on.
enum class VoiceRhythm {
    Running,  ///< stretches in no order: half a second may fall on one vowel
    Dictated, ///< word by word: a consonant, a vowel and a pause in turn, as numbers are read out
};

/// The speaker.
struct VoiceLikeSettings {
    int sampleRate = 48000;         ///< [Hz]
    double pitch = 120.0;           ///< mean of the voiced stretches [Hz]
    double lowestFrequency = 300.0; ///< no harmonic lies below it [Hz]
    double peak = 0.8;              ///< about what the loudest stretches reach; above 1 they are limited
    std::uint64_t seed = 1;
    VoiceRhythm rhythm = VoiceRhythm::Running;
};

/// Noise with the rhythm of speech: voiced stretches of gliding pitch with two formants, hissing stretches
/// and pauses, 40 to 260 ms each. A pause of dictation lasts 140 to 200 ms.
class VoiceLikeNoise {
public:
    explicit VoiceLikeNoise(const VoiceLikeSettings& voiceSettings);

    double Next();

private:
    enum class Stretch { Voiced, Hiss, Pause };

    void BeginStretch();
    double Voiced();
    double Hiss();
    double Fade() const;

    VoiceLikeSettings settings;
    RandomSource random;
    Stretch stretch = Stretch::Pause;
    int length = 0;       ///< of the stretch [samples]
    int position = 0;     ///< in the stretch [samples]
    double pitch = 0.0;   ///< [Hz]
    double glide = 0.0;   ///< of the pitch [Hz per sample]
    double phase = 0.0;   ///< of the pitch [radians]
    double formants[2]{}; ///< [Hz]
    double hissMemory[2]{};
};

} // namespace orva::test
