#include "tests/support/VoiceLikeNoise.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace orva::test {

namespace {

constexpr double kFadeSeconds = 0.012;
constexpr double kHighestFrequency = 3400.0;
constexpr double kFormantWidth = 180.0;
constexpr double kFormantFloor = 0.08; // of a harmonic far from the formants
constexpr double kGlideShare = 0.15;   // of the pitch, over a stretch, up or down
constexpr double kHissLevel = 0.12;
constexpr double kHissReferenceRate = 16000.0; // where the hiss has its level without correction

} // namespace

VoiceLikeNoise::VoiceLikeNoise(const VoiceLikeSettings& voiceSettings)
    : settings(voiceSettings), random(voiceSettings.seed) {}

double VoiceLikeNoise::Next() {
    if (position == length) {
        BeginStretch();
    }
    double sample = 0.0;
    if (stretch == Stretch::Voiced) {
        sample = Voiced();
    } else if (stretch == Stretch::Hiss) {
        sample = Hiss();
    }
    sample *= settings.peak * Fade();
    ++position;
    return std::clamp(sample, -1.0, 1.0);
}

void VoiceLikeNoise::BeginStretch() {
    const bool isDictated = settings.rhythm == VoiceRhythm::Dictated;
    if (isDictated) {
        stretch = stretch == Stretch::Pause  ? Stretch::Hiss
                  : stretch == Stretch::Hiss ? Stretch::Voiced
                                             : Stretch::Pause;
    } else {
        const std::uint32_t draw = random.Below(10);
        stretch = draw < 5 ? Stretch::Voiced : draw < 8 ? Stretch::Hiss : Stretch::Pause;
    }
    const double seconds = stretch == Stretch::Voiced ? 0.1 + 0.16 * random.Uniform()
                           : stretch == Stretch::Hiss ? 0.06 + 0.08 * random.Uniform()
                           : isDictated               ? 0.14 + 0.06 * random.Uniform()
                                                      : 0.04 + 0.2 * random.Uniform();
    length = static_cast<int>(seconds * settings.sampleRate);
    position = 0;
    pitch = settings.pitch * (1.0 + kGlideShare * (2.0 * random.Uniform() - 1.0));
    glide = settings.pitch * kGlideShare * (2.0 * random.Uniform() - 1.0) / length;
    formants[0] = 350.0 + 450.0 * random.Uniform();
    formants[1] = 900.0 + 1500.0 * random.Uniform();
}

double VoiceLikeNoise::Voiced() {
    pitch += glide;
    phase =
        std::remainder(phase + 2.0 * std::numbers::pi * pitch / settings.sampleRate, 2.0 * std::numbers::pi);
    double sum = 0.0;
    const int highest = static_cast<int>(kHighestFrequency / pitch);
    // sin(k x) follows from the two before it.
    const double twiceCosine = 2.0 * std::cos(phase);
    double before = 0.0;
    double sine = std::sin(phase);
    for (int k = 1; k <= highest; ++k) {
        const double frequency = k * pitch;
        if (frequency >= settings.lowestFrequency) {
            double gain = kFormantFloor;
            for (const double formant : formants) {
                const double distance = (frequency - formant) / kFormantWidth;
                gain += 1.0 / (1.0 + distance * distance);
            }
            sum += gain * sine;
        }
        const double next = twiceCosine * sine - before;
        before = sine;
        sine = next;
    }
    return 0.25 * sum;
}

// White noise, differenced twice so that little of it lies low.
double VoiceLikeNoise::Hiss() {
    const double white = random.Gaussian();
    const double difference = white - 2.0 * hissMemory[0] + hissMemory[1];
    hissMemory[1] = hissMemory[0];
    hissMemory[0] = white;
    return kHissLevel * difference * std::sqrt(kHissReferenceRate / settings.sampleRate);
}

double VoiceLikeNoise::Fade() const {
    const double fade = kFadeSeconds * settings.sampleRate;
    const double edge = std::min({1.0, position / fade, (length - position) / fade});
    return 0.5 - 0.5 * std::cos(std::numbers::pi * edge);
}

} // namespace orva::test
