/// What the test receiver is to do.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace orva::test {

/// What comes after the last sample of the recording.
enum class ReceiverEnd {
    Stop,    ///< nothing
    Silence, ///< zeros without end
    Loop,    ///< the recording again
};

/// Settings come from the file `TRK718API.ini` beside the library, one `name = value` a line, and from the
/// environment, which comes first: `ORVA_RECEIVER_` and the name in capitals.
struct ReceiverSettings {
    std::string recording; ///< `recording`: WAV file of the intermediate frequency, 64000 Hz
    double speed = 1;      ///< `speed`: times real time; 0 is as fast as the samples are processed
    double patience = 0.1; ///< `patience`: at speed 0, samples not processed within so long never will be [s]
    std::uint32_t failingStarts = 0;     ///< `failing_starts`: so many calls of CodecStart fail first
    ReceiverEnd end = ReceiverEnd::Stop; ///< `end`: stop, silence or loop
    bool isInverted = false;             ///< `inverted`: 1 mirrors the stream; K7InvertSpectrum undoes it
    std::string memory;                  ///< `memory`: file of 256 bytes for K7GetEEP, which fails without
    std::string log;                     ///< `log`: file to which each call but CodecRead adds a line

    /// \param environment  value of a variable, none if it is not set
    /// \param ini          text of the file, empty if there is none
    ///
    /// Throws std::invalid_argument on a value that makes no sense; unknown names are left alone.
    static ReceiverSettings
    Read(const std::function<std::optional<std::string>(const std::string&)>& environment,
         const std::string& ini);
};

} // namespace orva::test
