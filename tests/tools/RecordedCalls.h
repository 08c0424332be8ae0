/// Two calls on the air, as the tests of the command-line decoder need them.
#pragma once

#include "tests/support/Transmission.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orva::test {

constexpr unsigned kRecordedNac = 0x5A3;
constexpr std::uint16_t kRecordedTalkGroup = 0x1234;
constexpr std::uint32_t kRecordedSource = 0x00ABCD;
constexpr std::uint32_t kRecordedUnitSource = 0x765432;
constexpr std::uint32_t kRecordedUnitDestination = 0x123456;

/// Idle dibits, a group call that a simple terminator ends, idle dibits, a unit to unit call that loses its
/// sync, idle dibits.
const Transmission& RecordedCalls();

/// Where voice frames of `RecordedCalls` come from, in order.
std::vector<VoiceBits> RecordedVoice();

/// The same at 48000 Hz on 12000 Hz, behind silence and a warm-up call.
const std::vector<std::int16_t>& RecordedSignal();

/// What `COrvaFrameDecoder` makes of `dibits` when it gets all of it in one go: the samples of all voice
/// blocks, the last, partly filled one included.
std::vector<std::int16_t> DecodeSpeech(const std::string& dibits);

/// The samples of a finished WAV file of 8000 Hz; fails the test in hand for any other file.
std::vector<std::int16_t> ReadSpeechFile(const std::string& path);

} // namespace orva::test
