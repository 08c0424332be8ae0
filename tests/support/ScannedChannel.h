/// What a scanner comes upon.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace orva::test {

enum class ChannelKind {
    Noise,        ///< nothing on the air
    Carrier,      ///< without modulation
    Tone,         ///< the tone that is looked for
    OtherTone,    ///< another one
    Code,         ///< the digital code that is looked for
    InvertedCode, ///< the same in inverted polarity
    OtherCode,    ///< another one
    Speech,       ///< read out loud, without tone or code
    Digital,      ///< a C4FM call
};

constexpr ChannelKind kChannelKinds[] = {
    ChannelKind::Noise,     ChannelKind::Carrier, ChannelKind::Tone,
    ChannelKind::OtherTone, ChannelKind::Code,    ChannelKind::InvertedCode,
    ChannelKind::OtherCode, ChannelKind::Speech,  ChannelKind::Digital};

constexpr double kSoughtTone = 100.0; ///< [Hz]
constexpr double kOtherTone = 123.0;  ///< [Hz]
constexpr unsigned kSoughtCode = 023; ///< octal, as codes are written
constexpr unsigned kOtherCode = 0114;

/// The kind's name, for messages.
std::string_view ChannelName(ChannelKind kind);

/// How a channel is received.
struct ChannelReception {
    int rate = 48000;       ///< [Hz]
    double seconds = 2.0;   ///< a digital call ends after 2.1 s: not longer
    double snrDb = 20.0;    ///< carrier to noise in 12500 Hz
    bool hasSpeech = false; ///< on a tone or a code, above it
    std::uint64_t seed = 1; ///< of noise and speech
};

/// Samples of the intermediate frequency.
std::vector<std::int16_t> ReceivedChannel(ChannelKind kind, const ChannelReception& reception);

} // namespace orva::test
