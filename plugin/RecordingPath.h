/// Names of new recordings.
#pragma once

#include <string>

namespace orva::plugin {

/// Where a recording goes: `folder`, a backslash, the name as typed without the extensions "wav" and then
/// "if", which count in these letters only, and ".if.wav" or ".wav". An empty name is "unnamed".
std::string RecordingPath(const std::string& folder, const std::string& typedName, bool isAudio);

/// What the user is asked before a file is written over.
std::string OverwriteQuestion(const std::string& path);

} // namespace orva::plugin
