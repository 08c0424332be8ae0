#pragma once

#include "tests/support/C4fmModulator.h"
#include "tests/support/Transmission.h"

#include <cstdint>
#include <optional>
#include <string>

#include <CLI/App.hpp>

namespace orva::tools {

/// What an FM signal carries beside its tone or code.
enum class FmAudio { None, Voice, Noise, Tone };

/// Analogue FM in place of the calls.
struct FmOptions {
    double seconds = 0.0;      ///< length of the carrier; 0: calls
    double deviation = 3000.0; ///< peak [Hz]
    FmAudio audio = FmAudio::Voice;
    std::optional<double> tone = {}; ///< CTCSS [Hz]
    std::optional<int> code = {};    ///< DCS as a plain number; negative is the inverted polarity
    std::string codeText;            ///< the code as it was asked for: octal digits
};

/// What the user of orva-signal asks for.
struct SignalOptions {
    std::string output; ///< recording to write; empty: none
    std::string dibits; ///< file for the dibit text; empty: none
    std::string truth;  ///< file for the list of what was sent; empty: none

    test::ModulatorSettings modulator;
    test::CallDescription call;
    double seconds = 0.0; ///< least voice time of a call; 0: by the number of superframes

    std::string voice = "sentence"; ///< name of a kind of speech
    std::string voiceFile;          ///< voice frames as lines of 22 hex digits; empty: by `voice`

    int calls = 1;
    double pause = 0.5;   ///< between transmissions [s]
    double leadIn = 0.5;  ///< before the first transmission [s]
    double leadOut = 0.2; ///< behind the last one [s]
    bool silentGaps = false;

    double controlSeconds = 0.0; ///< least length of a control channel in place of the calls; 0: calls

    FmOptions fm;

    double scanSeconds = 0.0; ///< length of each channel for a scanner in place of the calls; 0: calls

    bool warmUp = false;
    int warmUpSuperframes = 2;

    int packetBlocks = 0; ///< blocks of a packet data unit behind each call; 0: no such frame
    std::optional<unsigned> unknownDataUnit; ///< type of a frame without a meaning behind each call
    bool heaviestErrors = false;
};

/// Declares the options of the command line and their limits.
void DescribeOptions(CLI::App& app, SignalOptions& options);

/// Settles what options say together. Returns what is wrong with them, empty if nothing is.
std::string CompleteOptions(SignalOptions& options);

} // namespace orva::tools
