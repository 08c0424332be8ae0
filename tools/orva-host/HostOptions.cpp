#include "tools/orva-host/HostOptions.h"

#include <stdexcept>
#include <utility>

#include <CLI/CLI.hpp>

namespace orva::tools {

namespace {

/// Splits "4352=close" at the sign.
std::pair<std::uint32_t, std::string> SplitAtSign(const std::string& text) {
    const std::size_t sign = text.find('=');
    const auto number = ParseNumber(text.substr(0, sign));
    if (sign == std::string::npos || !number) {
        throw CLI::ValidationError("'" + text + "' is not CODE=SOMETHING");
    }
    return {*number, text.substr(sign + 1)};
}

void AddAnswer(HostOptions& options, const std::string& text) {
    const auto [code, value] = SplitAtSign(text);
    const auto number = ParseNumber(value);
    if (!number) {
        throw CLI::ValidationError("'" + value + "' is no number");
    }
    options.answers[code] = *number;
}

void AddReaction(HostOptions& options, const std::string& text) {
    const auto [code, line] = SplitAtSign(text);
    try {
        const auto command = HostCommand::Parse(line);
        if (!command || command->kind == HostCommand::Kind::Wait) {
            throw CLI::ValidationError("'" + line + "' cannot be sent");
        }
        options.reactions[static_cast<std::int32_t>(code)].push_back(*command);
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError(error.what());
    }
}

} // namespace

bool ReadHostOptions(int argumentCount, const char* const* arguments, HostOptions& options, int& exitCode) {
    CLI::App app("A bench host for receiver plug-ins: starts one, shows every code in both directions.",
                 "orva-host");
    app.allow_windows_style_options(false); // a path may begin with a slash
    std::vector<std::string> answers;
    std::vector<std::string> reactions;
    bool hasNoRecord = false;
    app.add_option("library", options.library, "the plug-in, a .zem or .dll file")->required();
    app.add_option("--device", options.deviceType,
                   "device type in the receiver record (\"K7USB...\" for a receiver)");
    app.add_option("--serial", options.serialNumber, "serial number in the receiver record, 8 characters");
    app.add_flag("--no-record", hasNoRecord, "give no receiver record at all");
    app.add_option("--handle", options.firstHandle, "handle of the first instance");
    app.add_option("--instances", options.instances, "number of instances, with handles in a row");
    app.add_option("--cycles", options.cycles, "start and close so many times");
    app.add_option("--seconds", options.seconds,
                   "run for so long, then close; otherwise until the script ends");
    app.add_option("--script", options.script, "file of commands; - is standard input, '' is none");
    app.add_option("--log", options.log, "file for the journal; - is standard output");
    app.add_option("--audio", options.audio, "WAV file for the audio that the first instance offers");
    app.add_option("--libraries", options.libraries,
                   "folder in which the plug-in may find a receiver library");
    app.add_option("--answer", answers, "CODE=VALUE: answer to a query, 0x80000000 for all others")
        ->allow_extra_args(false);
    app.add_option("--on", reactions,
                   "CODE=COMMAND: send a command from inside the callback when the code comes")
        ->allow_extra_args(false);
    app.add_flag("--overwrite", options.overwrites,
                 "answer Yes when the plug-in asks whether to write over a file; otherwise No");
    app.add_flag("--refuse", options.refusesAll, "answer 0x80000000 to everything");
    app.add_flag("--abandon", options.abandons, "end the program without closing the instances");
    app.add_flag("--hidden", options.isHidden, "do not show the windows of the plug-in");
    app.footer(
        "A command is a line:  CODE [PARAM [DATA ...]]  |  wait SECONDS  |  close\n"
        "  tune HZ  |  mode auto|orva|fm  |  scan on|off  |  squelch none|closed|open\n"
        "  squelch level N|noise N|ctcss HZ|voice PERCENT|dcs CODE\n"
        "  record if|audio NAME  |  play FILE  |  seek BYTES  |  step SECONDS  |  pause  |  resume  |  stop\n"
        "and goes to all instances, or with @HANDLE before it to one. Exit status 0: each instance answered\n"
        "its close, and the library was unloaded.");
    try {
        app.parse(argumentCount, arguments);
        options.hasRecord = !hasNoRecord;
        for (const std::string& text : answers) {
            AddAnswer(options, text);
        }
        for (const std::string& text : reactions) {
            AddReaction(options, text);
        }
    } catch (const CLI::ParseError& error) {
        exitCode = app.exit(error);
        return false;
    }
    return true;
}

} // namespace orva::tools
