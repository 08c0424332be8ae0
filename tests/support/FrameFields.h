/// What the frames of a call say, in the terms of TIA-102.BAAA and TIA-102.AABF.
#pragma once

#include "tests/support/ImbeWord.h"

#include <array>
#include <cstdint>

namespace orva::test {

constexpr std::uint8_t kAlgorithmClear = 0x80; ///< "unencrypted"

/// Initial vector of an encryption algorithm, first octet first.
using MessageIndicator = std::array<std::uint8_t, 9>;

/// Data unit identifiers that have a frame of their own; all others are unknown types.
enum class DataUnit : std::uint8_t {
    Header = 0x0,
    Terminator = 0x3,
    Ldu1 = 0x5,
    Trunking = 0x7,
    Ldu2 = 0xA,
    Packet = 0xC,
    TerminatorWithLinkControl = 0xF,
};

/// Header data unit.
struct HeaderFields {
    MessageIndicator messageIndicator = {};
    std::uint8_t manufacturer = 0;
    std::uint8_t algorithm = kAlgorithmClear;
    std::uint16_t key = 0;
    std::uint16_t talkGroup = 1;
};

/// Link control word. Formats 0 and 3 are made from the named fields, any other one from `otherOctets`.
struct LinkControl {
    static constexpr std::uint8_t kGroupVoice = 0;
    static constexpr std::uint8_t kUnitToUnitVoice = 3;

    std::uint8_t format = kGroupVoice;
    std::uint8_t manufacturer = 0;
    std::uint8_t serviceOptions = 0;
    std::uint16_t talkGroup = 1;                  ///< format 0
    std::uint32_t destination = 0;                ///< format 3, 24 bits
    std::uint32_t source = 1;                     ///< formats 0 and 3, 24 bits
    std::array<std::uint8_t, 8> otherOctets = {}; ///< what follows the format octet in any other format
};

/// Encryption sync word of an LDU2.
struct EncryptionSync {
    MessageIndicator messageIndicator = {};
    std::uint8_t algorithm = kAlgorithmClear;
    std::uint16_t key = 0;
};

constexpr int kVoiceWordsPerFrame = 9;

/// The nine voice frames of an LDU in the order of time.
using VoiceWords = std::array<VoiceBits, kVoiceWordsPerFrame>;

/// Two octets of low-speed data, the share of one LDU.
using LowSpeedData = std::array<std::uint8_t, 2>;

} // namespace orva::test
