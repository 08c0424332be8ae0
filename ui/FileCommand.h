/// Numbers by which a program works the recording and the playback of an instance, as a user does with the
/// panel.
///
/// Nothing here depends on the rest of the system. `docs/HOST-INTERFACE.md` tells how they are sent.
#pragma once

#include <cstdint>

namespace orva::ui {

/// The number of a `WM_COPYDATA` to the window of an instance; the data are text, without a terminator. The
/// answer is 1 if the command was carried out, otherwise 0.
enum class FileCommand : std::uint32_t {
    RecordIf = 0x4F524301, ///< text: full path of the new file, with or without extensions
    RecordAudio,           ///< the same
    Play,                  ///< text: full path
    Stop,
    Pause,
    Resume,
    Seek, ///< text: position in bytes of samples
    Step, ///< text: seconds, negative ones back
};

} // namespace orva::ui
