#include "tools/orva-signal/SignalJob.h"

#include "audio/CtbWaveFile.h"
#include "tools/orva-signal/SignalMaker.h"
#include "tools/orva-signal/SignalOptions.h"
#include "tools/orva-signal/TruthText.h"
#include "tools/orva-signal/VoiceChoice.h"

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace orva::tools {

namespace {

int Complain(const std::string& problem, int exitCode) {
    std::fprintf(stderr, "orva-signal: %s\n", problem.c_str());
    return exitCode;
}

bool WriteText(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    return file.good();
}

bool WriteWave(const std::string& path, const Signal& signal, int sampleRate) {
    const std::size_t count = signal.samples.size();
    audio::CtbWaveFile file;
    return count <= audio::CtbWaveFile::kMaxFileSize / sizeof(signal.samples[0]) &&
           file.Create(path.c_str(), static_cast<std::uint32_t>(sampleRate)) &&
           file.Write(signal.samples.data(), static_cast<std::uint32_t>(count)) && file.Close();
}

/// The first file that could not be written; empty if all were.
std::string WriteOutputs(const SignalOptions& options, const Signal& signal) {
    if (!options.output.empty() && !WriteWave(options.output, signal, options.modulator.sampleRate)) {
        return options.output;
    }
    if (!options.dibits.empty() && !WriteText(options.dibits, signal.dibits + "\n")) {
        return options.dibits;
    }
    if (!options.truth.empty() && !WriteText(options.truth, TruthText(options, signal))) {
        return options.truth;
    }
    return {};
}

int Run(SignalOptions& options) {
    if (const std::string problem = CompleteOptions(options); !problem.empty()) {
        return Complain(problem, kExitUsage);
    }
    test::VoiceSource voice = VoiceNamed(options.voice);
    if (!options.voiceFile.empty()) {
        std::vector<test::VoiceBits> frames;
        std::string problem;
        if (!ReadVoiceFile(options.voiceFile, frames, problem)) {
            return Complain(problem, kExitFailed);
        }
        voice = RepeatVoice(frames);
    }

    const Signal signal = MakeSignal(options, voice);
    if (const std::string path = WriteOutputs(options, signal); !path.empty()) {
        return Complain(path + ": cannot be written", kExitFailed);
    }
    if (!options.output.empty()) {
        std::printf("%s: %.2f s at %d Hz, %zu frames\n", options.output.c_str(),
                    static_cast<double>(signal.samples.size()) / options.modulator.sampleRate,
                    options.modulator.sampleRate, signal.frames.size());
    }
    return 0;
}

} // namespace

int RunSignalJob(int argumentCount, const char* const* arguments) {
    CLI::App app(
        "Makes Project 25 calls as a receiver would record them: C4FM on a real intermediate frequency.");
    app.allow_windows_style_options(false); // a path may begin with a slash
    SignalOptions options;
    DescribeOptions(app, options);
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kExitUsage;
    }
    return Run(options);
}

} // namespace orva::tools
