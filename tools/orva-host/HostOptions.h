/// What a user asks of the bench host.
#pragma once

#include "tools/orva-host/HostScript.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace orva::tools {

struct HostOptions {
    std::string library;              ///< path of the plug-in
    std::string deviceType = "bench"; ///< of the receiver record; "K7USB..." for the receiver library
    std::string serialNumber = "BENCH001";
    bool hasRecord = true;
    std::uint32_t firstHandle = 1;
    std::uint32_t instances = 1; ///< with handles in a row
    std::uint32_t cycles = 1;    ///< how often all is started and closed
    double seconds = 0;          ///< to run for; 0: until the script ends
    std::string script = "-";    ///< file of commands; "-" is standard input, "" none
    std::string log = "-";       ///< where the journal goes; "-" is standard output
    std::string audio;           ///< WAV file for what is offered with code 4362
    std::string libraries;       ///< folder in which the plug-in may find a receiver library
    bool isHidden = false;       ///< the plug-ins' windows are not shown
    bool overwrites = false;     ///< files of recordings, when the plug-in asks
    bool refusesAll = false;     ///< every code is answered with 0x80000000
    bool abandons = false;       ///< ends without closing or unloading anything
    std::map<std::uint32_t, std::uint32_t> answers; ///< to queries, by code
    /// Sent from inside the callback whenever the plug-in sends the code.
    std::map<std::int32_t, std::vector<HostCommand>> reactions;
};

/// Reads the command line. Returns false when the program is to end at once, with `exitCode`; what the user
/// must know is printed then.
bool ReadHostOptions(int argumentCount, const char* const* arguments, HostOptions& options, int& exitCode);

} // namespace orva::tools
