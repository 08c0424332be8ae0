#include "tools/orva-decode/SummaryPrinter.h"

#include <cinttypes>
#include <cstdlib>

namespace orva::tools {

namespace {

constexpr double kHertzPerMegahertz = 1e6;

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

double Megahertz(std::uint64_t hz) {
    return static_cast<double>(hz) / kHertzPerMegahertz;
}

} // namespace

void SummaryPrinter::PrintInput(const std::string& name, const std::string& kind) {
    std::fprintf(file, "%s: %s\n", name.c_str(), kind.c_str());
}

void SummaryPrinter::PrintCall(const Call& call, std::uint64_t number) {
    std::fprintf(file, "  call %-4" PRIu64 " %.2f s to %.2f s, NAC 0x%03X (%" PRId32 ")", number, call.start,
                 call.end, static_cast<unsigned>(call.networkAccessCode), call.networkAccessCode);
    if (call.talkGroup != -1) {
        std::fprintf(file, ", talk group %" PRId32, call.talkGroup);
    }
    if (call.source != -1) {
        std::fprintf(file, ", from %" PRId32, call.source);
    }
    if (call.destination != -1) {
        std::fprintf(file, " to %" PRId32, call.destination);
    }
    std::fprintf(file, ", %s, %.2f s of voice, %.2f %% bit errors%s\n",
                 EncryptionName(call.algorithm).c_str(), call.VoiceSeconds(), call.ErrorRatePercent(),
                 call.terminated ? "" : ", no terminator");
}

void SummaryPrinter::PrintTotals(const Totals& totals, double seconds) {
    std::fprintf(file, "  length    %.2f s\n", seconds);
    PrintNetworkAccessCodes(totals);
    PrintFrames(totals);
    std::fprintf(file,
                 "  voice     %.2f s in %" PRIu64 " call%s, %.2f %% bit errors, %" PRIu64 " of %" PRIu64
                 " frames concealed\n",
                 VoiceSeconds(totals.voiceFrames), totals.calls, totals.calls == 1 ? "" : "s",
                 VoiceErrorPercent(totals.correctedBits, totals.voiceFrames), totals.concealedFrames,
                 totals.voiceFrames);
}

void SummaryPrinter::PrintNetworkAccessCodes(const Totals& totals) {
    std::fprintf(file, "  NACs     ");
    for (std::size_t code = 0; code < totals.networkAccessCodes.size(); ++code) {
        if (totals.networkAccessCodes.test(code)) {
            std::fprintf(file, " 0x%03X (%u)", static_cast<unsigned>(code), static_cast<unsigned>(code));
        }
    }
    std::fprintf(file, "%s\n", totals.networkAccessCodes.none() ? " none" : "");
}

void SummaryPrinter::PrintFrames(const Totals& totals) {
    std::fprintf(file, "  frames   ");
    for (const auto& [frame, count] : totals.frames) {
        std::fprintf(file, " %s %" PRIu64, std::string(frame).c_str(), count);
    }
    std::fprintf(file, "%s", totals.frames.empty() ? " none" : "");
    if (totals.uncorrectable > 0) {
        std::fprintf(file, " (%" PRIu64 " with an identifier beyond correction)", totals.uncorrectable);
    }
    std::fprintf(file, "\n");
}

void SummaryPrinter::PrintControlChannel(const ControlChannelLog& channel) {
    if (channel.Blocks() == 0) {
        return;
    }
    std::fprintf(file, "  trunking  %" PRIu64 " blocks, %.1f %% with a bad CRC\n", channel.Blocks(),
                 channel.FailurePercent());
    for (const auto& [identifier, plan] : channel.Identifiers()) {
        std::fprintf(file, "    identifier %-2" PRIu32 "  base %.6f MHz, spacing %.3f kHz\n", identifier,
                     Megahertz(plan.baseFrequency), plan.channelSpacing / 1e3);
    }
    for (const auto& [grant, count] : channel.Grants()) {
        std::fprintf(file, "    %s %-8" PRIu32 " on ", grant.isGroup ? "talk group" : "unit      ",
                     grant.destination);
        if (grant.frequency == 0) {
            std::fprintf(file, "an unknown frequency");
        } else {
            std::fprintf(file, "%.6f MHz", Megahertz(grant.frequency));
        }
        std::fprintf(file, ", %" PRIu64 " time%s\n", count, count == 1 ? "" : "s");
    }
    for (std::size_t opcode = 0; opcode < channel.Messages().size(); ++opcode) {
        if (channel.Messages()[opcode] > 0) {
            std::fprintf(file, "    %5" PRIu64 "  %2u %s\n", channel.Messages()[opcode],
                         static_cast<unsigned>(opcode),
                         p25::GetTrunkingMessageName(static_cast<std::uint8_t>(opcode)));
        }
    }
}

void SummaryPrinter::PrintSquelch(const SquelchTotals& squelch) {
    std::fprintf(file, "  squelch   %" PRIu64 " readings, mean noise %.0f, highest voice %" PRId32 "\n",
                 squelch.readings, squelch.MeanNoise(), squelch.highestVoice);
    for (const auto& [tone, count] : squelch.tones) {
        std::fprintf(file, "    CTCSS %.1f Hz, %" PRIu64 " readings\n", tone / 1e3, count);
    }
    for (const auto& [code, count] : squelch.codes) {
        std::fprintf(file, "    DCS %03o%s, %" PRIu64 " readings\n", static_cast<unsigned>(std::abs(code)),
                     code < 0 ? " inverted" : "", count);
    }
}

void SummaryPrinter::PrintSpeed(double seconds, double wallSeconds) {
    if (wallSeconds > 0) {
        std::fprintf(file, "  speed     %.0f times real time\n", seconds / wallSeconds);
    }
    std::fflush(file);
}

} // namespace orva::tools
