/// The summary that a person reads.
#pragma once

#include "tools/orva-decode/CallLog.h"
#include "tools/orva-decode/ControlChannelLog.h"
#include "tools/orva-decode/SquelchMeter.h"

#include <cstdint>
#include <cstdio>
#include <string>

namespace orva::tools {

/// Writes plain text to a stream that it does not own.
class SummaryPrinter {
public:
    explicit SummaryPrinter(std::FILE* stream) : file(stream) {}

    void PrintInput(const std::string& name, const std::string& kind);
    /// `number` counts the calls of an input from 1.
    void PrintCall(const Call& call, std::uint64_t number);
    /// `seconds` of input were decoded.
    void PrintTotals(const Totals& totals, double seconds);
    /// Nothing for an input without trunking blocks.
    void PrintControlChannel(const ControlChannelLog& channel);
    void PrintSquelch(const SquelchTotals& squelch);
    void PrintSpeed(double seconds, double wallSeconds);

private:
    void PrintNetworkAccessCodes(const Totals& totals);
    void PrintFrames(const Totals& totals);

    std::FILE* file;
};

} // namespace orva::tools
