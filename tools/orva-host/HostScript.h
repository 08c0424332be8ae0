/// The lines that tell the bench host what to do.
#pragma once

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
/// Numbers are decimal, negative or 0x hexadecimal. What follows a `#` is for people.
struct HostCommand {
    enum class Kind { Notify, Wait };

    Kind kind = Kind::Notify;
    std::optional<std::uint32_t> hostHandle; ///< only this instance; all if there is none
    std::int32_t code = 0;
    std::uint32_t param = 0;
    std::vector<std::uint32_t> data;
    double seconds = 0; ///< of a wait

    /// What a line asks for; nothing for an empty one. Throws std::invalid_argument, with a phrase for a
    /// person, on a line that it does not understand.
    static std::optional<HostCommand> Parse(const std::string& line);
};

/// A whole 32-bit number, decimal, negative or hexadecimal; nothing if `text` is none.
std::optional<std::uint32_t> ParseNumber(const std::string& text);

} // namespace orva::tools
