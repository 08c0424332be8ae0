#include "tools/orva-decode/EventWriter.h"

#include <array>
#include <cmath>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace orva::tools {

namespace {

constexpr double kMicro = 1e6;

/// Times need no more than a microsecond, and read better without a float's tail.
double Rounded(double value) {
    return std::round(value * kMicro) / kMicro;
}

/// Standard output without translation of line ends: the same bytes as in a file.
std::FILE* BinaryStandardOutput() {
#ifdef _WIN32
    _setmode(_fileno(stdout), _O_BINARY);
#endif
    return stdout;
}

nlohmann::ordered_json ToJson(const Call& call) {
    return {{"start", Rounded(call.start)},
            {"end", Rounded(call.end)},
            {"nac", call.networkAccessCode},
            {"talkgroup", call.talkGroup},
            {"source", call.source},
            {"destination", call.destination},
            {"algorithm", call.algorithm},
            {"encrypted", call.IsEncrypted()},
            {"voice_seconds", Rounded(call.VoiceSeconds())},
            {"voice_frames", call.voiceFrames},
            {"concealed_frames", call.concealedFrames},
            {"error_rate", Rounded(call.ErrorRatePercent())},
            {"terminated", call.terminated}};
}

/// A source or destination: a talk group when marked as one, else a unit; -1 for the one it is not, or for
/// neither.
void AddAddress(nlohmann::ordered_json& json, const char* groupKey, const char* unitKey,
                std::uint32_t address) {
    constexpr std::uint32_t kNoAddress = 0xFFFFFFFF;
    const bool isGroup = address != kNoAddress && (address & p25::kGroupAddress) != 0;
    const bool isUnit = address != kNoAddress && !isGroup;
    json[groupKey] = isGroup ? static_cast<std::int64_t>(address & ~p25::kGroupAddress) : -1;
    json[unitKey] = isUnit ? static_cast<std::int64_t>(address) : -1;
}

void AddRecordFields(nlohmann::ordered_json& json, const p25::TrunkingRecord& record) {
    json["nac"] = record.NetworkAccessCode();
    if (record.Type() == p25::TrunkingRecordType::EndOfCall) {
        return;
    }
    if (record.Type() == p25::TrunkingRecordType::IdentifierUpdate) {
        json["identifier"] = record.ChannelIdentifier();
        json["base_frequency"] = p25::DecodeFrequency(record.Source());
        json["spacing"] = record.Frequency();
        json["offset"] = static_cast<std::int16_t>(record.ChannelNumber());
        return;
    }
    if (record.Type() != p25::TrunkingRecordType::NewSpeaker) {
        json["identifier"] = record.ChannelIdentifier();
        json["channel"] = record.ChannelNumber();
        json["frequency"] = p25::DecodeFrequency(record.Frequency());
    }
    AddAddress(json, "source_group", "source", record.Source());
    AddAddress(json, "talkgroup", "destination", record.Destination());
    json["options"] = record.ServiceOptions();
}

nlohmann::ordered_json ToJson(const ControlChannelLog& channel) {
    nlohmann::ordered_json json = {{"blocks", channel.Blocks()},
                                   {"bad_blocks", channel.BadBlocks()},
                                   {"crc_failure_rate", Rounded(channel.FailurePercent())},
                                   {"identifiers", nlohmann::ordered_json::array()},
                                   {"grants", nlohmann::ordered_json::array()},
                                   {"messages", nlohmann::ordered_json::array()}};
    for (const auto& [identifier, plan] : channel.Identifiers()) {
        json["identifiers"].push_back({{"identifier", identifier},
                                       {"base_frequency", plan.baseFrequency},
                                       {"spacing", plan.channelSpacing}});
    }
    for (const auto& [grant, count] : channel.Grants()) {
        json["grants"].push_back({{grant.isGroup ? "talkgroup" : "destination", grant.destination},
                                  {"frequency", grant.frequency},
                                  {"count", count}});
    }
    for (std::size_t opcode = 0; opcode < channel.Messages().size(); ++opcode) {
        if (channel.Messages()[opcode] > 0) {
            json["messages"].push_back(
                {{"opcode", opcode},
                 {"name", p25::GetTrunkingMessageName(static_cast<std::uint8_t>(opcode))},
                 {"count", channel.Messages()[opcode]}});
        }
    }
    return json;
}

nlohmann::ordered_json ToJson(const SquelchTotals& totals) {
    nlohmann::ordered_json json = {{"readings", totals.readings},
                                   {"ctcss", nlohmann::ordered_json::array()},
                                   {"dcs", nlohmann::ordered_json::array()},
                                   {"highest_voice", totals.highestVoice},
                                   {"mean_noise", Rounded(totals.MeanNoise())}};
    for (const auto& [tone, count] : totals.tones) {
        json["ctcss"].push_back({{"tone", tone}, {"readings", count}});
    }
    for (const auto& [code, count] : totals.codes) {
        json["dcs"].push_back({{"code", code}, {"readings", count}});
    }
    return json;
}

} // namespace

std::string HexDigits(const std::uint8_t* bytes, std::size_t count) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string digits;
    for (std::size_t i = 0; i < count; ++i) {
        digits += kDigits[bytes[i] >> 4];
        digits += kDigits[bytes[i] & 15];
    }
    return digits;
}

std::string HexOfBits(const std::uint8_t* bits) {
    std::array<std::uint8_t, voice::kInformationBits / 8> bytes{};
    for (std::size_t i = 0; i < voice::kInformationBits; ++i) {
        bytes[i / 8] = static_cast<std::uint8_t>(bytes[i / 8] << 1 | (bits[i] & 1));
    }
    return HexDigits(bytes.data(), bytes.size());
}

bool EventWriter::Open(const std::string& path) {
    Close();
    failed = false;
    file = path == "-" ? BinaryStandardOutput() : std::fopen(path.c_str(), "wb");
    return file != nullptr;
}

bool EventWriter::Close() {
    if (file == nullptr) {
        return !failed;
    }
    failed = std::fflush(file) != 0 || failed;
    if (file != stdout) {
        failed = std::fclose(file) != 0 || failed;
    }
    file = nullptr;
    return !failed;
}

void EventWriter::Flush() {
    if (file != nullptr) {
        failed = std::fflush(file) != 0 || failed;
    }
}

nlohmann::ordered_json EventWriter::Begin(const char* event, double time) const {
    nlohmann::ordered_json json = {{"event", event}, {"time", Rounded(time)}};
    if (!inputName.empty()) {
        json["file"] = inputName;
    }
    return json;
}

void EventWriter::Write(const nlohmann::ordered_json& event) {
    // A file name need not be valid UTF-8; what cannot be shown is replaced.
    std::string line = event.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    line += '\n';
    failed = std::fwrite(line.data(), 1, line.size(), file) != line.size() || failed;
}

void EventWriter::Nid(double time, std::int32_t networkAccessCode, std::int32_t duid, const char* frame,
                      std::int32_t corrected) {
    auto json = Begin("nid", time);
    json["nac"] = networkAccessCode;
    json["duid"] = duid;
    json["frame"] = frame;
    json["corrected"] = corrected;
    Write(json);
}

void EventWriter::Header(double time, std::int32_t algorithm, std::int32_t talkGroup) {
    auto json = Begin("header", time);
    json["algorithm"] = algorithm;
    json["talkgroup"] = talkGroup;
    Write(json);
}

void EventWriter::LinkControl(double time, std::int32_t format, std::int32_t talkGroup, std::int32_t source,
                              std::int32_t destination) {
    auto json = Begin("link_control", time);
    json["format"] = format;
    json["talkgroup"] = talkGroup;
    json["source"] = source;
    json["destination"] = destination;
    Write(json);
}

void EventWriter::EncryptionSync(double time, std::int32_t algorithm) {
    auto json = Begin("encryption_sync", time);
    json["algorithm"] = algorithm;
    Write(json);
}

void EventWriter::Voice(double time, const std::string& bits, const voice::ImbeFrameBlock& frame,
                        float errorRate) {
    auto json = Begin("voice", time);
    json["bits"] = bits;
    json["errors"] = frame.errorTotal;
    json["flags"] = frame.status;
    json["error_rate"] = errorRate;
    Write(json);
}

void EventWriter::TrunkingBlock(double time, const p25::TrunkingBlock& block, bool hasGoodCrc,
                                std::uint32_t errors) {
    auto json = Begin("tsbk", time);
    json["bytes"] = HexDigits(block.bytes, p25::kTrunkingBlockBytes);
    json["crc"] = hasGoodCrc;
    json["errors"] = errors;
    json["opcode"] = block.Opcode();
    json["name"] = p25::GetTrunkingMessageName(block.Opcode());
    Write(json);
}

void EventWriter::Record(double time, const p25::TrunkingRecord& record) {
    auto json = Begin("record", time);
    json["type"] = static_cast<int>(record.Type());
    json["bytes"] = HexDigits(record.Bytes().data(), record.Bytes().size());
    AddRecordFields(json, record);
    Write(json);
}

void EventWriter::Squelch(double time, const SquelchReading& reading) {
    auto json = Begin("squelch", time);
    json["ctcss"] = reading.ctcss;
    json["dcs"] = reading.dcs;
    json["voice"] = reading.voice;
    json["noise"] = reading.noise;
    Write(json);
}

void EventWriter::Terminator(double time) {
    Write(Begin("terminator", time));
}

void EventWriter::Lost(double time) {
    Write(Begin("lost", time));
}

void EventWriter::Summary(double seconds, double realTime, const Totals& totals,
                          const std::vector<Call>& calls, const ControlChannelLog& channel,
                          const SquelchTotals* squelch) {
    auto json = Begin("summary", seconds);
    json["seconds"] = Rounded(seconds);
    json["times_real_time"] = Rounded(realTime);
    json["nacs"] = nlohmann::ordered_json::array();
    for (std::size_t code = 0; code < totals.networkAccessCodes.size(); ++code) {
        if (totals.networkAccessCodes.test(code)) {
            json["nacs"].push_back(code);
        }
    }
    json["frames"] = nlohmann::ordered_json::object();
    for (const auto& [frame, count] : totals.frames) {
        json["frames"][std::string(frame)] = count;
    }
    json["uncorrectable_nids"] = totals.uncorrectable;
    json["voice_frames"] = totals.voiceFrames;
    json["voice_seconds"] = Rounded(VoiceSeconds(totals.voiceFrames));
    json["concealed_frames"] = totals.concealedFrames;
    json["error_rate"] = Rounded(VoiceErrorPercent(totals.correctedBits, totals.voiceFrames));
    json["lost"] = totals.lost;
    json["call_count"] = totals.calls;
    json["calls"] = nlohmann::ordered_json::array();
    for (const Call& call : calls) {
        json["calls"].push_back(ToJson(call));
    }
    if (channel.Blocks() > 0) {
        json["control_channel"] = ToJson(channel);
    }
    if (squelch != nullptr) {
        json["squelch"] = ToJson(*squelch);
    }
    Write(json);
}

} // namespace orva::tools
