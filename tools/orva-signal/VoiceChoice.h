/// Where the voice frames of a call come from.
#pragma once

#include "tests/support/Transmission.h"

#include <string>
#include <vector>

namespace orva::tools {

/// The speech of that name, see `test::SpeechName`; no source for any other name.
test::VoiceSource VoiceNamed(const std::string& name);

/// Reads voice frames, one line of 22 hex digits each; empty lines are passed over. False with `problem` told
/// in one line when the file cannot be read, holds anything else, or no frame at all.
bool ReadVoiceFile(const std::string& path, std::vector<test::VoiceBits>& frames, std::string& problem);

/// `frames`, at least one, again and again.
test::VoiceSource RepeatVoice(const std::vector<test::VoiceBits>& frames);

} // namespace orva::tools
