#include "tools/orva-signal/TruthText.h"

#include "tests/support/ImbeWord.h"

#include <cstdint>
#include <span>
#include <string_view>

#include <nlohmann/json.hpp>

namespace orva::tools {

namespace {

using Json = nlohmann::ordered_json;

std::string HexOctets(std::span<const std::uint8_t> octets) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string hex;
    for (const std::uint8_t octet : octets) {
        hex += kDigits[octet >> 4];
        hex += kDigits[octet & 15];
    }
    return hex;
}

const char* FrameName(unsigned dataUnit) {
    switch (static_cast<test::DataUnit>(dataUnit)) {
    case test::DataUnit::Header:
        return "HDU";
    case test::DataUnit::Terminator:
        return "TDU";
    case test::DataUnit::Ldu1:
        return "LDU1";
    case test::DataUnit::Trunking:
        return "TSBK";
    case test::DataUnit::Ldu2:
        return "LDU2";
    case test::DataUnit::Packet:
        return "PDU";
    case test::DataUnit::TerminatorWithLinkControl:
        return "TDULC";
    }
    return "unknown";
}

Json ToJson(const test::HeaderFields& header) {
    return {{"algorithm", header.algorithm},
            {"talkgroup", header.talkGroup},
            {"key", header.key},
            {"manufacturer", header.manufacturer},
            {"message_indicator", HexOctets(header.messageIndicator)}};
}

Json ToJson(const test::LinkControl& link) {
    Json json = {{"format", link.format}};
    switch (link.format) {
    case test::LinkControl::kGroupVoice:
        json["talkgroup"] = link.talkGroup;
        break;
    case test::LinkControl::kUnitToUnitVoice:
        json["destination"] = link.destination;
        break;
    default:
        json["octets"] = HexOctets(link.otherOctets);
        return json;
    }
    json["source"] = link.source;
    json["manufacturer"] = link.manufacturer;
    return json;
}

Json ToJson(const test::EncryptionSync& sync) {
    return {{"algorithm", sync.algorithm},
            {"key", sync.key},
            {"message_indicator", HexOctets(sync.messageIndicator)}};
}

Json ToJson(const PlacedFrame& placed) {
    const test::SentFrame& frame = placed.frame;
    Json json = {{"time", placed.seconds},   {"dibit", frame.firstDibit},
                 {"warm_up", placed.warmUp}, {"nac", frame.networkAccessCode},
                 {"duid", frame.dataUnit},   {"frame", FrameName(frame.dataUnit)}};
    if (frame.header) {
        json["header"] = ToJson(*frame.header);
    }
    if (frame.link) {
        json["link_control"] = ToJson(*frame.link);
    }
    if (frame.encryption) {
        json["encryption_sync"] = ToJson(*frame.encryption);
    }
    for (const test::VoiceBits& voice : frame.voice) {
        json["voice"].push_back(test::ToHex(voice));
    }
    for (const test::TrunkingData& block : frame.trunking) {
        json["blocks"].push_back(HexOctets(test::WithTrunkingCrc(block)));
    }
    return json;
}

} // namespace

std::string TruthText(const SignalOptions& options, const Signal& signal) {
    const test::ModulatorSettings& modulator = options.modulator;
    Json json = {{"rate", modulator.sampleRate},     {"offset", modulator.carrierOffset},
                 {"ppm", modulator.clockErrorPpm},   {"phase", modulator.symbolPhase},
                 {"amplitude", modulator.amplitude}, {"snr", nullptr},
                 {"seed", modulator.seed},           {"samples", signal.samples.size()},
                 {"dibits", signal.dibits.size()},   {"frames", Json::array()}};
    if (modulator.snrDb) {
        json["snr"] = *modulator.snrDb;
    }
    for (const PlacedFrame& frame : signal.frames) {
        json["frames"].push_back(ToJson(frame));
    }
    return json.dump(1) + "\n";
}

} // namespace orva::tools
