#include "tools/orva-signal/SignalOptions.h"

#include "tests/support/SpeechSource.h"

#include <cmath>
#include <map>
#include <vector>

#include <CLI/CLI.hpp>

namespace orva::tools {

namespace {

constexpr double kSuperframeSeconds = 0.36;
constexpr unsigned kGreatestAccessCode = 0xFFF;
constexpr unsigned kGreatestAddress = 0xFFFFFF;
constexpr unsigned kGreatestDataUnit = 15;

/// What is wrong with the text of a digital code; empty if nothing is.
std::string IsOctalCode(const std::string& text) {
    const std::string digits = text.substr(text.rfind('-', 0) == 0 ? 1 : 0);
    const bool octal = digits.size() == 3 && digits.find_first_not_of("01234567") == std::string::npos;
    return octal ? std::string() : "a digital code has three octal digits: " + text;
}

std::vector<std::string> SpeechNames() {
    std::vector<std::string> names;
    for (const test::SpeechKind kind : test::kSpeechKinds) {
        names.emplace_back(test::SpeechName(kind));
    }
    return names;
}

void DescribeFiles(CLI::App& app, SignalOptions& options) {
    const std::string group = "Files";
    app.add_option("-o,--output", options.output,
                   "Write the signal to this recording (.if.wav): 16 bit, mono, centred on 12000 Hz")
        ->group(group);
    app.add_option("--dibits", options.dibits, "Write the dibit text of all frames, without the gaps")
        ->group(group);
    app.add_option("--truth", options.truth, "Write what was sent, frame by frame, as JSON")->group(group);
}

void DescribeCall(CLI::App& app, SignalOptions& options) {
    const std::string group = "Call";
    test::CallDescription& call = options.call;
    app.add_option("--nac", call.networkAccessCode, "Network access code")
        ->check(CLI::Range(0U, kGreatestAccessCode))
        ->capture_default_str()
        ->group(group);
    app.add_option("--format", call.link.format, "Link control format: 0 group, 3 unit to unit")
        ->check(CLI::Range(0, 255))
        ->default_str("0")
        ->group(group);
    app.add_option("--talkgroup", call.link.talkGroup, "Talk group")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str()
        ->group(group);
    app.add_option("--source", call.link.source, "Address of the speaker")
        ->check(CLI::Range(0U, kGreatestAddress))
        ->capture_default_str()
        ->group(group);
    app.add_option("--destination", call.link.destination, "Address called, in format 3")
        ->check(CLI::Range(0U, kGreatestAddress))
        ->capture_default_str()
        ->group(group);
    app.add_option("--algorithm", call.encryption.algorithm, "Encryption algorithm; 128 is none")
        ->check(CLI::Range(0, 255))
        ->default_str("128")
        ->group(group);
    app.add_option("--key", call.encryption.key, "Encryption key identifier")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str()
        ->group(group);
    app.add_option("--manufacturer", call.link.manufacturer, "Manufacturer identifier")
        ->check(CLI::Range(0, 255))
        ->default_str("0")
        ->group(group);
    app.add_flag("!--no-header", call.withHeader, "Begin with the first voice frame: late entry")
        ->group(group);
    const std::map<std::string, test::CallEnding> endings = {
        {"none", test::CallEnding::None},
        {"plain", test::CallEnding::Terminator},
        {"link-control", test::CallEnding::TerminatorWithLinkControl}};
    app.add_option("--ending", call.ending, "Terminator: none, plain (the default) or link-control")
        ->transform(CLI::CheckedTransformer(endings))
        ->group(group);

    auto* superframes = app.add_option("--superframes", call.superframes, "Length of a call, 0.36 s each")
                            ->check(CLI::Range(1, 1000000))
                            ->group(group);
    app.add_option("--seconds", options.seconds, "Length of a call, rounded up to superframes")
        ->check(CLI::PositiveNumber)
        ->excludes(superframes)
        ->group(group);
    app.add_option("--calls", options.calls, "Number of calls")
        ->check(CLI::Range(1, 10000))
        ->capture_default_str()
        ->group(group);
    app.add_option("--packet-blocks", options.packetBlocks, "Packet data of so many blocks behind each call")
        ->check(CLI::Range(0, 127))
        ->group(group);
    app.add_option("--unknown", options.unknownDataUnit, "Frame of this type behind each call, random bits")
        ->check(CLI::Range(0U, kGreatestDataUnit))
        ->group(group);
    app.add_flag("--heaviest-errors", options.heaviestErrors,
                 "Give every code word the most errors that it still corrects")
        ->group(group);
}

void DescribeVoice(CLI::App& app, SignalOptions& options) {
    const std::string group = "Voice";
    auto* voice = app.add_option("--voice", options.voice, "What is said")
                      ->check(CLI::IsMember(SpeechNames()))
                      ->capture_default_str()
                      ->group(group);
    app.add_option("--voice-file", options.voiceFile,
                   "Voice frames as lines of 22 hex digits; begins again when it is too short")
        ->excludes(voice)
        ->group(group);
}

void DescribeChannel(CLI::App& app, SignalOptions& options) {
    const std::string group = "Channel";
    test::ModulatorSettings& modulator = options.modulator;
    app.add_option("--rate", modulator.sampleRate, "Sample rate [Hz]")
        ->check(CLI::IsMember({48000, 64000}))
        ->capture_default_str()
        ->group(group);
    app.add_option("--snr", modulator.snrDb, "Carrier to noise in 12.5 kHz [dB]; none: no noise")
        ->group(group);
    app.add_option("--offset", modulator.carrierOffset, "Carrier offset [Hz]")
        ->check(CLI::Range(-4000.0, 4000.0))
        ->capture_default_str()
        ->group(group);
    app.add_option("--ppm", modulator.clockErrorPpm, "Error of the symbol clock [ppm]")
        ->check(CLI::Range(-10000.0, 10000.0))
        ->capture_default_str()
        ->group(group);
    app.add_option("--phase", modulator.symbolPhase, "First symbol behind a sample [samples, 0 .. 1]")
        ->check(CLI::Range(0.0, 1.0))
        ->capture_default_str()
        ->group(group);
    app.add_option("--amplitude", modulator.amplitude, "Of the carrier, 1 is full scale")
        ->check(CLI::Range(0.0, 1.0))
        ->capture_default_str()
        ->group(group);
    app.add_option("--seed", modulator.seed, "Of noise, errors and random bits")
        ->capture_default_str()
        ->group(group);
    app.add_option("--lead-in", options.leadIn, "No carrier before the first call [s]")
        ->check(CLI::Range(0.0, 3600.0))
        ->capture_default_str()
        ->group(group);
    app.add_option("--lead-out", options.leadOut, "No carrier behind the last call [s]")
        ->check(CLI::Range(0.0, 3600.0))
        ->capture_default_str()
        ->group(group);
    app.add_option("--pause", options.pause, "No carrier between calls [s]")
        ->check(CLI::Range(0.0, 3600.0))
        ->capture_default_str()
        ->group(group);
    app.add_flag("--silent-gaps", options.silentGaps, "Samples of 0 instead of noise where no carrier is")
        ->group(group);
    app.add_flag("--warm-up", options.warmUp,
                 "Begin with a short call on the centre frequency and one at the offset, so that frequency "
                 "control has settled")
        ->group(group);
    app.add_option("--warm-up-superframes", options.warmUpSuperframes, "Length of the warm-up calls")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str()
        ->group(group);
}

void DescribeControlChannel(CLI::App& app, SignalOptions& options) {
    auto* control =
        app.add_option("--control", options.controlSeconds,
                       "Transmit a control channel of this length instead of calls [s]: band plans, "
                       "grants and other messages in packets of one to three blocks")
            ->check(CLI::PositiveNumber)
            ->group("Control channel");
    for (const char* ofCalls : {"--calls", "--superframes", "--seconds", "--no-header", "--ending", "--voice",
                                "--voice-file", "--packet-blocks", "--unknown"}) {
        control->excludes(app.get_option(ofCalls));
    }
}

void DescribeFm(CLI::App& app, SignalOptions& options) {
    const std::string group = "FM";
    FmOptions& fm = options.fm;
    auto* length =
        app.add_option("--fm", fm.seconds, "Transmit analogue FM of this length instead of calls [s]")
            ->check(CLI::PositiveNumber)
            ->group(group);
    const std::map<std::string, FmAudio> kinds = {{"none", FmAudio::None},
                                                  {"voice", FmAudio::Voice},
                                                  {"noise", FmAudio::Noise},
                                                  {"1kHz", FmAudio::Tone}};
    app.add_option("--fm-audio", fm.audio,
                   "What is heard: voice (voice-like, the default), noise, 1kHz or none")
        ->transform(CLI::CheckedTransformer(kinds))
        ->needs(length)
        ->group(group);
    app.add_option("--deviation", fm.deviation, "Peak deviation [Hz]")
        ->check(CLI::Range(100.0, 6000.0))
        ->capture_default_str()
        ->needs(length)
        ->group(group);
    auto* tone = app.add_option("--ctcss", fm.tone, "Sub-audible tone [Hz]")
                     ->check(CLI::Range(1.0, 300.0))
                     ->needs(length)
                     ->group(group);
    app.add_option("--dcs", fm.codeText, "Digital code in octal, as 023; -023 in inverted polarity")
        ->check(IsOctalCode, "CODE")
        ->needs(length)
        ->excludes(tone)
        ->group(group);
    for (const char* other :
         {"--calls", "--superframes", "--seconds", "--no-header", "--ending", "--voice", "--voice-file",
          "--packet-blocks", "--unknown", "--control", "--warm-up", "--dibits", "--truth"}) {
        length->excludes(app.get_option(other));
    }
}

void DescribeScan(CLI::App& app, SignalOptions& options) {
    constexpr double kLongest = 2.0; // the digital call is hardly longer
    auto* scan =
        app.add_option("--scan", options.scanSeconds,
                       "Transmit ten channels for a scanner instead of calls, of this length each [s]: "
                       "noise, a carrier, the tone 100 Hz and 123 Hz, the code 023, inverted, and 114, "
                       "speech, a digital call, speech above the tone 100 Hz; at 20 dB unless --snr says so")
            ->check(CLI::Range(0.1, kLongest))
            ->group("Scan");
    for (const char* other :
         {"--calls", "--superframes", "--seconds", "--no-header", "--ending", "--voice", "--voice-file",
          "--packet-blocks", "--unknown", "--control", "--fm", "--warm-up", "--dibits", "--truth"}) {
        scan->excludes(app.get_option(other));
    }
}

} // namespace

void DescribeOptions(CLI::App& app, SignalOptions& options) {
    DescribeFiles(app, options);
    DescribeCall(app, options);
    DescribeVoice(app, options);
    DescribeControlChannel(app, options);
    DescribeChannel(app, options);
    DescribeFm(app, options);
    DescribeScan(app, options);
}

std::string CompleteOptions(SignalOptions& options) {
    if (options.output.empty() && options.dibits.empty() && options.truth.empty()) {
        return "nothing to write: name a file with --output, --dibits or --truth, or see --help";
    }
    if (!options.fm.codeText.empty()) {
        constexpr int kOctal = 8;
        options.fm.code = std::stoi(options.fm.codeText, nullptr, kOctal);
    }
    if (options.seconds > 0.0) {
        options.call.superframes = static_cast<int>(std::ceil(options.seconds / kSuperframeSeconds - 1e-9));
    }
    options.call.header.manufacturer = options.call.link.manufacturer;
    options.call.header.algorithm = options.call.encryption.algorithm;
    options.call.header.key = options.call.encryption.key;
    options.call.header.talkGroup = options.call.link.talkGroup;
    return {};
}

} // namespace orva::tools
