#include "tools/orva-decode/DecodeJob.h"

#include <array>
#include <cinttypes>
#include <cmath>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace orva::tools {

namespace {

constexpr const char* kStandardInput = "standard input";
constexpr std::size_t kListedCalls = 1000; ///< in a summary event; keeps memory bounded whatever the length
constexpr std::size_t kDibitChunk = 240;   ///< 50 ms, as a block of samples gives

/// Standard input without translation of line ends.
std::FILE* BinaryStandardInput() {
#ifdef _WIN32
    _setmode(_fileno(stdin), _O_BINARY);
#endif
    return stdin;
}

const char* NameOf(const std::string& path) {
    return path == "-" ? kStandardInput : path.c_str();
}

std::string EncryptionName(std::int32_t algorithm) {
    switch (algorithm) {
    case -1:
        return "encryption unknown";
    case 0x80:
        return "clear";
    case 0x81:
        return "DES-OFB";
    case 0x84:
        return "AES";
    default:
        return "encrypted, algorithm " + std::to_string(algorithm);
    }
}

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
bool IsDibit(char c) {
    return c >= '0' && c <= '3';
}

} // namespace

bool IsSupportedRate(std::uint32_t rate) {
    return rate == 48000 || rate == 64000;
}

DecodeJob::Run::Run(DecodeJob& job, const std::string& inputName)
    : name(inputName),
      log([this, &job](const Call& call) {
          if (calls.size() < kListedCalls) {
              calls.push_back(call);
          }
          job.PrintCall(call, log.GetTotals().calls);
      }),
      receiver(job.outputs, log) {
    job.progress.Start(name);
}

bool DecodeJob::DecodeWave(const std::string& path) {
    audio::WaveFileReader reader;
    const audio::WaveFault fault = path == "-" ? reader.Open(BinaryStandardInput()) : reader.Open(path);
    if (fault != audio::WaveFault::None) {
        Complain(std::string(NameOf(path)) + ": " + Describe(fault));
        return false;
    }
    if (!IsSupportedRate(reader.GetSampleRate())) {
        Complain(std::string(NameOf(path)) + ": has " + std::to_string(reader.GetSampleRate()) +
                 " samples a second; 48000 or 64000 are needed");
        return false;
    }
    std::fprintf(report, "%s: %" PRIu32 " Hz\n", NameOf(path), reader.GetSampleRate());
    Run run(*this, NameOf(path));
    bool whole = FeedWave(reader, run);
    Finish(run);
    if (reader.IsUnfinished()) {
        Complain(run.name + ": its header was never completed; decoded to the end of the file");
    }
    if (reader.IsCutShort()) {
        Complain(run.name + ": is cut short: " + std::to_string(reader.GetReadSamples()) + " of " +
                 std::to_string(reader.GetPromisedSamples()) + " samples are there and were decoded");
        whole = false;
    }
    return whole;
}

bool DecodeJob::FeedWave(audio::WaveFileReader& reader, Run& run) {
    run.receiver.SetSampleRate(reader.GetSampleRate());
    std::array<std::int16_t, kBlockSamples> block;
    while (const std::size_t count = reader.Read(block.data(), block.size())) {
        if (!run.receiver.FeedSamples(block.data(), count)) {
            Complain(run.name + ": out of memory");
            return false;
        }
        progress.Update(reader.GetReadSamples(), reader.GetPromisedSamples(), run.receiver.GetSeconds());
    }
    return true;
}

bool DecodeJob::DecodeRaw(std::uint32_t rate) {
    std::FILE* file = BinaryStandardInput();
    std::array<std::int16_t, kBlockSamples> block;
    std::size_t count = std::fread(block.data(), sizeof(block[0]), block.size(), file);
    if (count == 0) {
        Complain(std::string(kStandardInput) + ": is empty: there are no samples in it");
        return false;
    }
    std::fprintf(report, "%s: %" PRIu32 " Hz\n", kStandardInput, rate);
    Run run(*this, kStandardInput);
    run.receiver.SetSampleRate(rate);
    bool whole = true;
    for (; count > 0 && whole; count = std::fread(block.data(), sizeof(block[0]), block.size(), file)) {
        whole = run.receiver.FeedSamples(block.data(), count);
        outputs.events.Flush(); // the samples may come live
        progress.Update(0, 0, run.receiver.GetSeconds());
    }
    Finish(run);
    if (!whole) {
        Complain(run.name + ": out of memory");
    }
    return whole;
}

bool DecodeJob::DecodeDibits(const std::string& path) {
    std::FILE* file = path == "-" ? BinaryStandardInput() : std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        Complain(path + ": cannot be opened");
        return false;
    }
    std::fprintf(report, "%s: dibit text\n", NameOf(path));
    Run run(*this, NameOf(path));
    const bool whole = FeedDibitFile(file, run);
    Finish(run);
    if (file != stdin) {
        std::fclose(file);
    }
    return whole;
}

bool DecodeJob::FeedDibitFile(std::FILE* file, Run& run) {
    std::array<char, kDibitChunk> text;
    std::uint64_t position = 0;
    std::uint64_t fed = 0;
    while (const std::size_t count = std::fread(text.data(), 1, text.size(), file)) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < count; ++i, ++position) {
            if (IsDibit(text[i])) {
                text[kept++] = text[i];
            } else if (!IsSpace(text[i])) {
                Complain(run.name + ": byte " + std::to_string(position) +
                         " is no dibit; only 0, 1, 2 and 3 are");
                return false;
            }
        }
        fed += kept;
        if (kept > 0 && !run.receiver.FeedDibits(text.data(), static_cast<std::int32_t>(kept))) {
            Complain(run.name + ": out of memory");
            return false;
        }
        progress.Update(0, 0, run.receiver.GetSeconds());
    }
    if (fed == 0) {
        Complain(run.name + ": is empty: there are no dibits in it");
    }
    return fed > 0;
}

void DecodeJob::Finish(Run& run) {
    run.receiver.Finish();
    run.log.Finish(run.receiver.GetSeconds());
    progress.Clear();
    const double wallSeconds = std::chrono::duration<double>(Clock::now() - run.start).count();
    PrintTotals(run, wallSeconds);
    if (outputs.events.IsOpen()) {
        const double realTime = wallSeconds > 0 ? run.receiver.GetSeconds() / wallSeconds : 0.0;
        outputs.events.Summary(run.receiver.GetSeconds(), realTime, run.log.GetTotals(), run.calls);
    }
}

void DecodeJob::PrintCall(const Call& call, std::uint64_t number) {
    progress.Clear();
    std::fprintf(report, "  call %-4" PRIu64 " %8.2f s to %.2f s, NAC 0x%03X (%" PRId32 ")", number,
                 call.start, call.end, static_cast<unsigned>(call.networkAccessCode), call.networkAccessCode);
    if (call.talkGroup != -1) {
        std::fprintf(report, ", talk group %" PRId32, call.talkGroup);
    }
    if (call.source != -1) {
        std::fprintf(report, ", from %" PRId32, call.source);
    }
    if (call.destination != -1) {
        std::fprintf(report, " to %" PRId32, call.destination);
    }
    std::fprintf(report, ", %s, %.2f s of voice, %.2f %% bit errors%s\n",
                 EncryptionName(call.algorithm).c_str(), call.VoiceSeconds(), call.ErrorRatePercent(),
                 call.terminated ? "" : ", no terminator");
}

void DecodeJob::PrintTotals(const Run& run, double wallSeconds) {
    const Totals& totals = run.log.GetTotals();
    std::fprintf(report, "  length    %.2f s\n  NACs     ", run.receiver.GetSeconds());
    for (std::size_t code = 0; code < totals.networkAccessCodes.size(); ++code) {
        if (totals.networkAccessCodes.test(code)) {
            std::fprintf(report, " 0x%03X (%u)", static_cast<unsigned>(code), static_cast<unsigned>(code));
        }
    }
    std::fprintf(report, "%s\n  frames   ", totals.networkAccessCodes.none() ? " none" : "");
    for (const auto& [frame, count] : totals.frames) {
        std::fprintf(report, " %s %" PRIu64, std::string(frame).c_str(), count);
    }
    std::fprintf(report, "%s", totals.frames.empty() ? " none" : "");
    if (totals.uncorrectable > 0) {
        std::fprintf(report, " (%" PRIu64 " with an identifier beyond correction)", totals.uncorrectable);
    }
    std::fprintf(report,
                 "\n  voice     %.2f s in %" PRIu64 " call%s, %.2f %% bit errors, %" PRIu64 " of %" PRIu64
                 " frames concealed\n",
                 VoiceSeconds(totals.voiceFrames), totals.calls, totals.calls == 1 ? "" : "s",
                 VoiceErrorPercent(totals.correctedBits, totals.voiceFrames), totals.concealedFrames,
                 totals.voiceFrames);
    if (wallSeconds > 0) {
        std::fprintf(report, "  speed     %.0f times real time\n", run.receiver.GetSeconds() / wallSeconds);
    }
    std::fflush(report);
}

} // namespace orva::tools
