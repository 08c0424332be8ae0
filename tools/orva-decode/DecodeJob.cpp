#include "tools/orva-decode/DecodeJob.h"

#include <array>

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

std::string RateText(std::uint32_t rate) {
    return std::to_string(rate) + " Hz";
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
          job.ReportCall(call, log.GetTotals().calls);
      }),
      receiver(job.outputs, log, channel) {
    receiver.SetTunedFrequency(job.tunedFrequency);
    if (job.wantsFm) {
        receiver.SetFm(&fm.emplace(job.outputs, job.wantsSquelch));
    }
    if (!job.plotPath.empty()) {
        receiver.SetPlot(&plot.emplace());
    }
    job.progress.Start(name);
}

bool DecodeJob::DecodeWave(const std::string& path) {
    audio::WaveFileReader reader;
    const audio::WaveFault fault = path == "-" ? reader.OpenStandardInput() : reader.Open(path);
    if (fault != audio::WaveFault::None) {
        Complain(std::string(NameOf(path)) + ": " + Describe(fault));
        return false;
    }
    if (!IsSupportedRate(reader.GetSampleRate())) {
        Complain(std::string(NameOf(path)) + ": has " + std::to_string(reader.GetSampleRate()) +
                 " samples a second; 48000 or 64000 are needed");
        return false;
    }
    printer.PrintInput(NameOf(path), RateText(reader.GetSampleRate()));
    Run run(*this, NameOf(path));
    bool whole = FeedWave(reader, run);
    whole = Finish(run) && whole;
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
            progress.Clear();
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
    printer.PrintInput(kStandardInput, RateText(rate));
    Run run(*this, kStandardInput);
    run.receiver.SetSampleRate(rate);
    bool whole = true;
    for (; count > 0 && whole; count = std::fread(block.data(), sizeof(block[0]), block.size(), file)) {
        whole = run.receiver.FeedSamples(block.data(), count);
        outputs.events.Flush(); // the samples may come live
        progress.Update(0, 0, run.receiver.GetSeconds());
    }
    const bool drawn = Finish(run);
    if (!whole) {
        Complain(run.name + ": out of memory");
    }
    return whole && drawn;
}

bool DecodeJob::DecodeDibits(const std::string& path) {
    std::FILE* file = path == "-" ? BinaryStandardInput() : std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        Complain(path + ": cannot be opened");
        return false;
    }
    printer.PrintInput(NameOf(path), "dibit text");
    Run run(*this, NameOf(path));
    bool whole = FeedDibitFile(file, run);
    whole = Finish(run) && whole;
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
                progress.Clear();
                Complain(run.name + ": byte " + std::to_string(position) +
                         " is no dibit; only 0, 1, 2 and 3 are");
                return false;
            }
        }
        fed += kept;
        if (kept > 0 && !run.receiver.FeedDibits(text.data(), static_cast<std::int32_t>(kept))) {
            progress.Clear();
            Complain(run.name + ": out of memory");
            return false;
        }
        progress.Update(0, 0, run.receiver.GetSeconds());
    }
    if (fed == 0) {
        progress.Clear();
        Complain(run.name + ": is empty: there are no dibits in it");
    }
    return fed > 0;
}

bool DecodeJob::Finish(Run& run) {
    run.receiver.Finish();
    run.log.Finish(run.receiver.GetSeconds());
    progress.Clear();
    const double wallSeconds = std::chrono::duration<double>(Clock::now() - run.start).count();
    printer.PrintTotals(run.log.GetTotals(), run.receiver.GetSeconds());
    printer.PrintControlChannel(run.channel);
    const bool measured = run.fm && run.fm->HasSquelch();
    if (measured) {
        printer.PrintSquelch(run.fm->GetTotals());
    }
    printer.PrintSpeed(run.receiver.GetSeconds(), wallSeconds);
    if (outputs.events.IsOpen()) {
        const double realTime = wallSeconds > 0 ? run.receiver.GetSeconds() / wallSeconds : 0.0;
        outputs.events.Summary(run.receiver.GetSeconds(), realTime, run.log.GetTotals(), run.calls,
                               run.channel, measured ? &run.fm->GetTotals() : nullptr);
    }
    if (run.plot && !run.plot->Write(plotPath, run.name, run.receiver.GetSeconds())) {
        Complain(plotPath + ": could not be written whole");
        return false;
    }
    return true;
}

void DecodeJob::ReportCall(const Call& call, std::uint64_t number) {
    progress.Clear();
    printer.PrintCall(call, number);
}

} // namespace orva::tools
