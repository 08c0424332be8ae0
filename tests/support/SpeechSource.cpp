#include "tests/support/SpeechSource.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace orva::test {
namespace {

constexpr double kSampleRateHz = 8000.0;
constexpr double kSilenceOctaves = -3.0;

// A sound: its formants if it is voiced, the corner of its hiss if it is not.
struct Phoneme {
    std::array<double, 3> formantsHz;
    double hissHz = 0.0; // 0: voiced
};

// Peterson and Barney's mean formants of men's vowels; the others are near enough to be understood.
constexpr Phoneme kA = {{730.0, 1090.0, 2440.0}};
constexpr Phoneme kE = {{530.0, 1840.0, 2480.0}};
constexpr Phoneme kI = {{270.0, 2290.0, 3010.0}};
constexpr Phoneme kO = {{570.0, 840.0, 2410.0}};
constexpr Phoneme kU = {{300.0, 870.0, 2240.0}};
constexpr Phoneme kM = {{250.0, 1000.0, 2200.0}};
constexpr Phoneme kR = {{420.0, 1300.0, 1600.0}};
constexpr Phoneme kS = {{}, 3300.0};
constexpr Phoneme kSh = {{}, 2200.0};
constexpr Phoneme kF = {{}, 1200.0};
constexpr Phoneme kVowels[] = {kA, kE, kI, kO, kU};

constexpr double kLoud = 9.0; // octaves of a vowel at low frequency; its first formant lies about two higher

int PitchCodeOf(double hertz) {
    return std::clamp(static_cast<int>(std::lround(2.0 * kSampleRateHz / hertz - 39.5)), 0, kPitchCodes - 1);
}

double HertzOf(int pitchCode) {
    return 2.0 * kSampleRateHz / (pitchCode + 39.5);
}

double Between(double from, double to, double share) {
    return from + (to - from) * share;
}

// Octaves of a resonance above its value at frequency 0.
double Resonance(double hertz, double centreHz, double widthHz) {
    const double x = hertz / centreHz;
    const double damping = x * widthHz / centreHz;
    return -0.5 * std::log2((1.0 - x * x) * (1.0 - x * x) + damping * damping);
}

double VoicedOctaves(const Phoneme& phoneme, double hertz) {
    const double glottisAndLips = -0.5 * std::log2(1.0 + (hertz / 400.0) * (hertz / 400.0));
    return glottisAndLips + Resonance(hertz, phoneme.formantsHz[0], 80.0) +
           Resonance(hertz, phoneme.formantsHz[1], 110.0) + Resonance(hertz, phoneme.formantsHz[2], 160.0) +
           Resonance(hertz, 3500.0, 250.0);
}

// A broad hill around the corner frequency, steeper below than above.
double HissOctaves(const Phoneme& phoneme, double hertz) {
    const double distance = std::log2((hertz + 100.0) / phoneme.hissHz);
    return -2.0 - (distance < 0.0 ? 1.8 : 1.0) * std::abs(distance);
}

Phoneme Blend(const Phoneme& from, const Phoneme& to, double share) {
    Phoneme blend = from;
    for (std::size_t i = 0; i < blend.formantsHz.size(); ++i) {
        blend.formantsHz[i] = Between(from.formantsHz[i], to.formantsHz[i], share);
    }
    blend.hissHz = Between(from.hissHz, to.hissHz, share);
    return blend;
}

// octaves  level of the sound at low frequency;  voicedToHz  where the voiced bands of a vowel end
VoiceParameters Say(const Phoneme& phoneme, int pitchCode, double octaves,
                    double voicedToHz = kSampleRateHz) {
    VoiceParameters frame;
    frame.pitchCode = pitchCode;
    const bool voiced = phoneme.hissHz == 0.0;
    for (int harmonic = 1; harmonic <= HarmonicsOf(pitchCode); ++harmonic) {
        const double hertz = harmonic * HertzOf(pitchCode);
        const double shape = voiced ? VoicedOctaves(phoneme, hertz) : HissOctaves(phoneme, hertz);
        frame.logAmplitudes[static_cast<std::size_t>(harmonic - 1)] =
            std::max(octaves + shape, kSilenceOctaves);
    }
    for (int band = 0; band < kMostBands; ++band) {
        const double topHz = (3 * band + 3) * HertzOf(pitchCode);
        frame.voicedBands[static_cast<std::size_t>(band)] = voiced && topHz <= voicedToHz;
    }
    return frame;
}

VoiceParameters Hush() {
    return Say(kF, PitchCodeOf(100.0), kSilenceOctaves);
}

struct Segment {
    std::size_t frames;
    Phoneme from;
    Phoneme to;
    double fromHz;
    double toHz;
    double fromOctaves;
    double toOctaves;
};

VoiceParameters Say(const Segment& segment, std::size_t index) {
    const double share = (static_cast<double>(index) + 0.5) / static_cast<double>(segment.frames);
    // Pitch and loudness of a voice are never quite still.
    const double time = static_cast<double>(index);
    const double hertz = Between(segment.fromHz, segment.toHz, share) + 1.5 * std::sin(0.7 * time);
    const double octaves =
        Between(segment.fromOctaves, segment.toOctaves, share) + 0.1 * std::sin(1.9 * time);
    return Say(Blend(segment.from, segment.to, share), PitchCodeOf(hertz), octaves, 3200.0);
}

constexpr Segment Pause(std::size_t frames) {
    return {frames, kF, kF, 100.0, 100.0, kSilenceOctaves, kSilenceOctaves};
}

constexpr Segment kSentence[] = {
    Pause(8),
    {6, kS, kS, 120.0, 120.0, 6.0, 8.5},
    {3, kI, kE, 128.0, 134.0, 8.0, 9.4},
    {9, kE, kE, 134.0, 126.0, 9.4, 9.0},
    {5, kM, kM, 126.0, 120.0, 8.2, 8.0},
    {12, kO, kU, 122.0, 112.0, 9.2, 8.2},
    Pause(4),
    {2, kF, kF, 120.0, 120.0, 8.0, 6.0},
    {4, kA, kA, 138.0, 146.0, 8.8, 9.6},
    {12, kA, kI, 146.0, 130.0, 9.6, 8.8},
    {7, kSh, kSh, 120.0, 120.0, 7.0, 8.6},
    {10, kU, kO, 124.0, 118.0, 8.8, 9.2},
    {5, kR, kR, 118.0, 116.0, 8.6, 8.4},
    {10, kI, kI, 118.0, 108.0, 9.0, 8.2},
    Pause(14),
    {5, kF, kF, 120.0, 120.0, 7.0, 8.0},
    {12, kO, kR, 140.0, 126.0, 9.4, 8.6},
    {4, kM, kM, 124.0, 122.0, 8.2, 8.2},
    {11, kE, kI, 124.0, 132.0, 9.2, 8.8},
    Pause(3),
    {3, kSh, kS, 120.0, 120.0, 9.0, 8.0},
    {14, kA, kO, 136.0, 110.0, 9.6, 8.8},
    {4, kM, kM, 110.0, 108.0, 8.0, 8.0},
    {8, kA, kE, 116.0, 104.0, 9.2, 8.6},
    {8, kS, kS, 110.0, 110.0, 8.6, 6.0},
    {6, kU, kI, 112.0, 104.0, 8.8, 8.6},
    {16, kI, kA, 106.0, 84.0, 9.2, 6.5},
    Pause(25),
};

constexpr std::size_t SentenceLength() {
    std::size_t frames = 0;
    for (const Segment& segment : kSentence) {
        frames += segment.frames;
    }
    return frames;
}

VoiceParameters SentenceFrame(std::size_t index) {
    index %= SentenceLength();
    const Segment* segment = std::begin(kSentence);
    while (index >= segment->frames) {
        index -= segment->frames;
        ++segment;
    }
    return Say(*segment, index);
}

constexpr std::size_t kVowelFrames = 30;

VoiceParameters VowelFrame(std::size_t index) {
    constexpr double kPitchesHz[] = {110.0, 220.0, 80.0, 150.0, 330.0};
    const std::size_t vowel = index / kVowelFrames % std::size(kVowels);
    return Say(kVowels[vowel], PitchCodeOf(kPitchesHz[vowel]), kLoud);
}

VoiceParameters GlideFrame(std::size_t index) {
    // Two pitch codes a frame, so that neighbouring frames stay within the tracks of the low harmonics.
    constexpr int kTurn = kPitchCodes - 1;
    const int place = static_cast<int>(2 * index % (2 * kTurn));
    return Say(kA, place <= kTurn ? place : 2 * kTurn - place, kLoud);
}

VoiceParameters JumpFrame(std::size_t index) {
    constexpr double kPitchesHz[] = {100.0, 140.0, 200.0, 90.0, 300.0, 125.0};
    const std::size_t jump = index / 4;
    return Say(kVowels[jump / 3 % std::size(kVowels)], PitchCodeOf(kPitchesHz[jump % std::size(kPitchesHz)]),
               kLoud);
}

VoiceParameters NoiseFrame(std::size_t index) {
    const double share = 0.5 - 0.5 * std::cos(0.05 * static_cast<double>(index));
    const double hertz = Between(80.0, 380.0, 0.5 - 0.5 * std::cos(0.031 * static_cast<double>(index)));
    return Say(Blend(kF, kS, share), PitchCodeOf(hertz), kLoud);
}

VoiceParameters MixedFrame(std::size_t index) {
    const double time = static_cast<double>(index);
    const double border = 1700.0 + 1500.0 * std::sin(0.11 * time);
    const double hertz = 140.0 + 40.0 * std::sin(0.043 * time);
    const Phoneme blend =
        Blend(kVowels[index / 40 % std::size(kVowels)], kVowels[(index / 40 + 1) % std::size(kVowels)],
              static_cast<double>(index % 40) / 40.0);
    return Say(blend, PitchCodeOf(hertz), kLoud, border);
}

VoiceParameters QuietFrame(std::size_t index) {
    const double time = static_cast<double>(index);
    return Say(kVowels[index / 25 % std::size(kVowels)], PitchCodeOf(120.0 + 30.0 * std::sin(0.1 * time)),
               -0.5 + 2.0 * std::sin(0.07 * time), 2500.0);
}

VoiceParameters OnsetFrame(std::size_t index) {
    const std::size_t place = index % 24;
    const Phoneme vowel = kVowels[index / 24 % std::size(kVowels)];
    if (place < 6 || (place >= 12 && place < 16)) {
        return Hush();
    }
    if (place < 12) {
        return Say(vowel, PitchCodeOf(130.0), kLoud, 3000.0);
    }
    return place < 20 ? Say(kSh, PitchCodeOf(130.0), kLoud) : Say(vowel, PitchCodeOf(190.0), kLoud);
}

struct KindEntry {
    SpeechKind kind;
    std::string_view name;
    VoiceParameters (*frame)(std::size_t index);
    std::size_t frameCount;
};

constexpr KindEntry kKinds[] = {
    {SpeechKind::Vowels, "vowels", VowelFrame, kVowelFrames* std::size(kVowels)},
    {SpeechKind::Glide, "glide", GlideFrame, kPitchCodes - 1},
    {SpeechKind::Jumps, "jumps", JumpFrame, 180},
    {SpeechKind::Noise, "noise", NoiseFrame, 203},
    {SpeechKind::Mixed, "mixed", MixedFrame, 200},
    {SpeechKind::Quiet, "quiet", QuietFrame, 180},
    {SpeechKind::Silence, "silence", [](std::size_t) { return Hush(); }, 50},
    {SpeechKind::Onsets, "onsets", OnsetFrame, 120},
    {SpeechKind::Sentence, "sentence", SentenceFrame, SentenceLength()},
};

const KindEntry& EntryOf(SpeechKind kind) {
    return *std::find_if(std::begin(kKinds), std::end(kKinds),
                         [kind](const KindEntry& entry) { return entry.kind == kind; });
}

} // namespace

std::string_view SpeechName(SpeechKind kind) {
    return EntryOf(kind).name;
}

std::optional<SpeechKind> SpeechKindNamed(std::string_view name) {
    for (const KindEntry& entry : kKinds) {
        if (entry.name == name) {
            return entry.kind;
        }
    }
    return std::nullopt;
}

VoiceParameters SpeechFrame(SpeechKind kind, std::size_t index) {
    return EntryOf(kind).frame(index);
}

const VoiceBits& SpeechSource::Frame(std::size_t index) {
    while (frames.size() <= index) {
        frames.push_back(encoder.Encode(SpeechFrame(kind, frames.size())));
    }
    return frames[index];
}

std::size_t SpeechSource::FrameCount() const {
    return EntryOf(kind).frameCount;
}

} // namespace orva::test
