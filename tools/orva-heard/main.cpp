/// orva-heard: says what was heard of a plug-in that ran in the bench host.
#include "audio/WaveFileReader.h"
#include "tools/orva-heard/HostDiary.h"
#include "tools/orva-heard/SpeechMatch.h"

#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace {

using orva::tools::AtTwiceTheRate;
using orva::tools::HostDiary;
using orva::tools::SpeechMatch;

constexpr int kExitDiffers = 1;
constexpr int kExitFailed = 2;
constexpr std::uint32_t kSpeechRate = 8000;    // [Hz]
constexpr std::uint32_t kRecordedRate = 16000; // [Hz]
constexpr double kLeastCorrelation = 0.98;

struct Options {
    std::string journal;
    std::string recording;
    std::string speech;
    std::vector<std::int32_t> codes;
};

std::vector<std::int16_t> ReadWave(const std::string& path, std::uint32_t rate) {
    orva::audio::WaveFileReader reader;
    const auto fault = reader.Open(path);
    if (fault != orva::audio::WaveFault::None) {
        throw std::runtime_error(path + ": " + orva::audio::Describe(fault));
    }
    if (reader.GetSampleRate() != rate) {
        throw std::runtime_error(path + ": its rate is not " + std::to_string(rate) + " Hz");
    }
    std::vector<std::int16_t> samples;
    std::int16_t block[4096];
    while (const std::size_t count = reader.Read(block, std::size(block))) {
        samples.insert(samples.end(), block, block + count);
    }
    return samples;
}

HostDiary ReadJournal(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    return HostDiary(file);
}

bool TellCodes(const HostDiary& diary, const std::vector<std::int32_t>& needed) {
    bool areAllThere = true;
    std::printf("  told the host    ");
    const char* separator = "";
    for (const auto& [code, seen] : diary.Codes()) {
        std::printf("%s%d %s", separator, static_cast<int>(code), seen.name.c_str());
        if (seen.count > 1) {
            std::printf(" (%zu times)", seen.count);
        }
        separator = ", ";
    }
    std::printf("\n");
    for (const std::int32_t code : needed) {
        if (!diary.Codes().contains(code)) {
            std::printf("  missing          code %d\n", static_cast<int>(code));
            areAllThere = false;
        }
    }
    return areAllThere;
}

void TellSpeakers(const HostDiary& diary) {
    for (const HostDiary::Speaker& speaker : diary.Speakers()) {
        std::printf("  speaker          NAC 0x%03X, %s %u, from %u\n",
                    static_cast<unsigned>(speaker.networkAccessCode),
                    speaker.isGroup ? "talk group" : "to unit", static_cast<unsigned>(speaker.destination),
                    static_cast<unsigned>(speaker.source));
    }
}

bool TellSpeech(const SpeechMatch& match) {
    const double correlation = match.Correlation();
    std::printf("  loudspeaker      %.2f of %.2f s of speech (pauses left out), %zu break%s\n",
                static_cast<double>(match.FoundAudibleSamples()) / kRecordedRate,
                static_cast<double>(match.AudibleSamples()) / kRecordedRate, match.Breaks(),
                match.Breaks() == 1 ? "" : "s");
    std::printf("  correlation      %.4f with the speech of orva-decode\n", correlation);
    if (correlation <= kLeastCorrelation) {
        std::printf("  too low          it should be above %.2f; on a machine too busy for sound it is not\n",
                    kLeastCorrelation);
    }
    return correlation > kLeastCorrelation;
}

int Tell(const Options& options) {
    const HostDiary diary = ReadJournal(options.journal);
    TellSpeakers(diary);
    bool isGood = true;
    if (!options.recording.empty()) {
        const std::vector<std::int16_t> speech = ReadWave(options.speech, kSpeechRate);
        const std::vector<std::int16_t> recording = ReadWave(options.recording, kRecordedRate);
        isGood = TellSpeech(SpeechMatch(AtTwiceTheRate(speech), recording));
    }
    isGood = TellCodes(diary, options.codes) && isGood;
    if (!diary.IsComplete()) {
        std::printf("  incomplete       the plug-in was not closed and unloaded\n");
        isGood = false;
    }
    return isGood ? 0 : kExitDiffers;
}

/// Reads the command line and does what it says.
int Run(int argc, char** argv) {
    Options options;
    CLI::App app(
        "Says what was heard of a plug-in that ran in the bench host: who spoke, how much of the speech\n"
        "came out of the loudspeaker, and which codes the host was sent.",
        "orva-heard");
    app.allow_windows_style_options(false); // a path may begin with a slash
    app.add_option("journal", options.journal, "journal of orva-host")->required();
    auto* speech = app.add_option("--speech", options.speech, "what orva-decode makes of the same signal");
    auto* recording =
        app.add_option("--recording", options.recording, "recording of the wave output, 16000 Hz");
    recording->needs(speech);
    speech->needs(recording);
    app.add_option("--codes", options.codes, "codes that the host must have been sent")->delimiter(',');
    app.footer(
        "Exit status 0: every code was sent, the plug-in closed and unloaded, and the recording, if there\n"
        "is one, correlates with the speech above 0.98.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kExitFailed;
    }
    return Tell(options);
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orva-heard: %s\n", error.what());
        return kExitFailed;
    }
}
