/// orva-decode: P25 recordings to signalling and speech.
#include "tools/orva-decode/DecodeJob.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace {

using orva::tools::Complain;
using orva::tools::DecodeJob;
using orva::tools::Outputs;

constexpr int kExitInputFailed = 1;
constexpr int kExitUsage = 2;
constexpr const char* kStandardStream = "-";

struct Options {
    std::vector<std::string> inputs;
    std::uint32_t rawRate = 0;
    std::uint32_t tuned = orva::p25::ChannelTable::kUnknownFrequency;
    std::string dibitInput;
    std::string speech;
    std::string events;
    std::string dibits;
    std::string plot;
    std::string fm;
    bool squelch = false;
};

void Describe(CLI::App& app, Options& options) {
    app.add_option(
        "FILE", options.inputs,
        "Recordings of the intermediate frequency (.if.wav): 16 bit, mono, 48000 or 64000 Hz, centred on "
        "12000 Hz; '-' is standard input");
    app.add_option("--rate", options.rawRate, "Take raw 16-bit samples of this rate from standard input")
        ->check(CLI::IsMember({48000U, 64000U}));
    app.add_option("--from-dibits", options.dibitInput, "Take dibit text (0, 1, 2, 3) instead of samples");
    app.add_option("--tuned", options.tuned, "The frequency the receiver was tuned to, in hertz");
    app.add_option("-o,--output", options.speech, "Write the speech to this WAV file, 8000 Hz, 16 bit, mono");
    app.add_option("--events", options.events, "Write events as JSON Lines; '-' is standard output");
    app.add_option("--dibits", options.dibits, "Write the dibit text");
    app.add_option("--fm", options.fm, "Write the FM audio to this WAV file, 16000 Hz, 16 bit, mono");
    app.add_flag("--squelch", options.squelch, "Measure what the squelch would hear in the FM audio");
    app.add_option("--plot", options.plot,
                   "Draw spectrum, symbols, error rate and frames into this SVG file");
}

/// What is wrong with the options taken together; empty if nothing is.
std::string Contradiction(const Options& options) {
    const bool hasFiles = !options.inputs.empty();
    if (!options.dibitInput.empty() && (hasFiles || options.rawRate != 0)) {
        return "--from-dibits takes the place of recordings and --rate";
    }
    if (std::ranges::count(options.inputs, kStandardStream) > 1) {
        return "standard input can be read only once";
    }
    const bool onlyStandardInput = options.inputs.size() == 1 && options.inputs[0] == kStandardStream;
    if (options.rawRate != 0 && hasFiles && !onlyStandardInput) {
        return "--rate is for raw samples from standard input; a recording tells its own";
    }
    if (!hasFiles && options.rawRate == 0 && options.dibitInput.empty()) {
        return "nothing to decode: name a recording, or see --help";
    }
    if (!options.dibitInput.empty() && (!options.fm.empty() || options.squelch)) {
        return "there is no FM audio in dibit text";
    }
    return {};
}

/// True if both name one file; files that do not exist yet are told apart by their names.
bool IsSameFile(const std::string& a, const std::string& b) {
    if (a.empty() || b.empty() || a == kStandardStream || b == kStandardStream) {
        return false;
    }
    std::error_code ignored;
    if (std::filesystem::exists(a, ignored) || std::filesystem::exists(b, ignored)) {
        return std::filesystem::equivalent(a, b, ignored);
    }
    return std::filesystem::weakly_canonical(a, ignored) == std::filesystem::weakly_canonical(b, ignored);
}

/// An output that would overwrite an input; empty if none would.
std::string OverwrittenInput(const Options& options) {
    std::vector<std::string> inputs = options.inputs;
    inputs.push_back(options.dibitInput);
    for (const std::string& input : inputs) {
        for (const std::string* output :
             {&options.speech, &options.events, &options.dibits, &options.plot, &options.fm}) {
            if (IsSameFile(input, *output)) {
                return input;
            }
        }
    }
    return {};
}

/// A file that two outputs would be mixed in; empty if there is none. Devices may be named twice.
std::string SharedOutput(const Options& options) {
    const std::string* const outputs[] = {&options.speech, &options.events, &options.dibits, &options.plot,
                                          &options.fm};
    for (const auto* output = std::begin(outputs); output != std::end(outputs); ++output) {
        std::error_code ignored;
        const auto kind = std::filesystem::status(**output, ignored).type();
        const bool isDevice = std::filesystem::is_other(std::filesystem::file_status(kind));
        const auto isShared = [&](const std::string* other) { return IsSameFile(**output, *other); };
        if (!isDevice && std::any_of(output + 1, std::end(outputs), isShared)) {
            return **output;
        }
    }
    return {};
}

bool OpenOutputs(const Options& options, Outputs& outputs) {
    if (!options.speech.empty() && !outputs.OpenSpeech(options.speech)) {
        Complain(options.speech + ": cannot be created");
        return false;
    }
    if (!options.fm.empty() && !outputs.OpenFm(options.fm)) {
        Complain(options.fm + ": cannot be created");
        return false;
    }
    if (!options.events.empty() && !outputs.events.Open(options.events)) {
        Complain(options.events + ": cannot be created");
        return false;
    }
    if (!options.dibits.empty() && !outputs.OpenDibits(options.dibits)) {
        Complain(options.dibits + ": cannot be created");
        return false;
    }
    return true;
}

bool DecodeInputs(const Options& options, Outputs& outputs) {
    // Events on standard output must not be mixed with text for a person.
    DecodeJob job(outputs, options.events == kStandardStream ? stderr : stdout);
    job.SetTunedFrequency(options.tuned);
    job.SetPlotPath(options.plot);
    job.SetFm(!options.fm.empty(), options.squelch);
    if (!options.dibitInput.empty()) {
        return job.DecodeDibits(options.dibitInput);
    }
    if (options.rawRate != 0) {
        return job.DecodeRaw(options.rawRate);
    }
    bool whole = true;
    for (const std::string& input : options.inputs) {
        outputs.events.SetInput(options.inputs.size() > 1 ? input : std::string());
        whole = job.DecodeWave(input) && whole;
    }
    return whole;
}

int Run(int argc, char** argv) {
    Options options;
    CLI::App app(
        "Decodes recordings of P25 digital radio: signalling to a summary and events, voice to speech.",
        "orva-decode");
    app.allow_windows_style_options(false); // a path may begin with a slash
    Describe(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kExitUsage;
    }
    if (const std::string wrong = Contradiction(options); !wrong.empty()) {
        Complain(wrong);
        return kExitUsage;
    }
    if (const std::string input = OverwrittenInput(options); !input.empty()) {
        Complain(input + ": is both read and written");
        return kExitUsage;
    }
    if (const std::string output = SharedOutput(options); !output.empty()) {
        Complain(output + ": is written by two options");
        return kExitUsage;
    }
    Outputs outputs;
    if (!OpenOutputs(options, outputs)) {
        return kExitInputFailed;
    }
    const bool decoded = DecodeInputs(options, outputs);
    const bool written = outputs.Close();
    return decoded && written ? 0 : kExitInputFailed;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        Complain(error.what());
        return kExitInputFailed;
    }
}
