/// The lines that tell the bench host what to do.
#pragma once

#include "ui/FileCommand.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orva::tools {

/// One line of a script.
///
///     2304 19            code and param
///     2304 0 2 19        the numbers after the param are the data, 32 bits each
///     @7 3584 12         to the instance of handle 7 only
///     wait 1.5           seconds
///     close              code 16384
///
/// Codes of squelch and scanning by name:
///
///     tune 155000000     [Hz]
///     mode auto          or orva, fm
///     scan on            or off
///     squelch noise 40   or: none, level N, ctcss HZ, voice PERCENT, dcs CODE (octal, negative inverted)
///     squelch closed     or open: the host's own state
///
/// Recording and playback, by messages to the plug-in's window:
///
///     record if NAME     or audio; the name may hold blanks
///     play FILE
///     seek BYTES         of samples
///     step SECONDS       negative ones back
///     pause, resume, stop
///
/// Numbers are decimal, negative or 0x hexadecimal. What follows a `#` is for people.
struct HostCommand {
    enum class Kind { Notify, Wait, File };

    Kind kind = Kind::Notify;
    std::optional<std::uint32_t> hostHandle; ///< only this instance; all if there is none
    std::int32_t code = 0;
    std::uint32_t param = 0;
    std::vector<std::uint32_t> data;
    double seconds = 0; ///< of a wait
    ui::FileCommand file = ui::FileCommand::Stop;
    std::string text; ///< of a file command

    /// What a line asks for; nothing for an empty one. Throws std::invalid_argument, with a phrase for a
    /// person, on a line that it does not understand.
    static std::optional<HostCommand> Parse(const std::string& line);

    /// Whether the text of the file command is a path.
    [[nodiscard]] bool HasPath() const;
};

/// A whole 32-bit number, decimal, negative or hexadecimal; nothing if `text` is none.
std::optional<std::uint32_t> ParseNumber(const std::string& text);

} // namespace orva::tools
