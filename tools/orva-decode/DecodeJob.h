/// Decoding of whole inputs, one after another.
#pragma once

#include "audio/WaveFileReader.h"
#include "tools/orva-decode/CallLog.h"
#include "tools/orva-decode/ControlChannelLog.h"
#include "tools/orva-decode/Outputs.h"
#include "tools/orva-decode/ProgressBar.h"
#include "tools/orva-decode/Receiver.h"
#include "tools/orva-decode/SummaryPrinter.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace orva::tools {

/// Decodes inputs into the same outputs and prints what it found. Each input has a receiver of its own. A
/// fault is told in one line on standard error.
class DecodeJob {
public:
    /// `sinks` must outlive the job; `summary` is where the summary for a person goes.
    DecodeJob(Outputs& sinks, std::FILE* summary) : outputs(sinks), printer(summary) {}

    /// Where the receiver was tuned [Hz]; channel identifiers are kept per control channel.
    void SetTunedFrequency(std::uint32_t hz) { tunedFrequency = hz; }

    /// Run the FM chain beside, for audio if the outputs want it, and for squelch measures if told.
    void SetFm(bool audio, bool squelch) {
        wantsFm = audio || squelch;
        wantsSquelch = squelch;
    }

    /// Draw each input into this SVG file; of several inputs the last one stays. Empty for none.
    void SetPlotPath(const std::string& path) { plotPath = path; }

    /// A WAV file, "-" meaning standard input. False if it, or a part of it, could not be decoded.
    bool DecodeWave(const std::string& path);

    /// Raw 16-bit samples of `rate` Hz from standard input.
    bool DecodeRaw(std::uint32_t rate);

    /// Dibit text, "-" meaning standard input; white space is passed over.
    bool DecodeDibits(const std::string& path);

private:
    using Clock = std::chrono::steady_clock;

    /// What is known while one input is being decoded.
    struct Run {
        Run(DecodeJob& job, const std::string& name);

        std::string name;
        std::vector<Call> calls; ///< the first ones, for the summary event
        CallLog log;
        ControlChannelLog channel;
        std::optional<SignalPlot> plot;
        std::optional<FmReceiver> fm;
        Receiver receiver;
        Clock::time_point start = Clock::now();
    };

    bool FeedWave(audio::WaveFileReader& reader, Run& run);
    bool FeedDibitFile(std::FILE* file, Run& run);
    bool Finish(Run& run);
    void ReportCall(const Call& call, std::uint64_t number);

    Outputs& outputs;
    SummaryPrinter printer;
    std::string plotPath;
    bool wantsFm = false;
    bool wantsSquelch = false;
    std::uint32_t tunedFrequency = p25::ChannelTable::kUnknownFrequency;
    ProgressBar progress;
};

/// True for the rates of intermediate-frequency recordings, 48000 and 64000 Hz.
bool IsSupportedRate(std::uint32_t rate);

} // namespace orva::tools
