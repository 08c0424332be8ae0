#pragma once

#include "tests/support/RandomSource.h"

#include <cstdint>

namespace orva::test {

/// The speaker.
struct VoiceLikeSettings {
    int sampleRate = 48000;         ///< [Hz]
    double pitch = 120.0;           ///< mean of the voiced stretches [Hz]
    double lowestFrequency = 300.0; ///< no harmonic lies below it [Hz]
    double peak = 0.8;              ///< about what the loudest stretches reach
    std::uint64_t seed = 1;
};

/// Noise with the rhythm of speech: voiced stretches of gliding pitch with two formants, hissing stretches
/// and pauses, 40 to 260 ms each.
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
