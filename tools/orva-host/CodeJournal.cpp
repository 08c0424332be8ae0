#include "tools/orva-host/CodeJournal.h"

#include "plugin/HostInterface.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <optional>
#include <string_view>

namespace orva::tools {

using json = nlohmann::ordered_json;
using plugin::HostCode;
using plugin::PluginCode;

namespace {

constexpr std::size_t kMostBytesShown = 64;

/// Bytes that came with a code.
class Payload {
public:
    Payload(std::uint32_t length, const void* data)
        : bytes(static_cast<const std::uint8_t*>(data)), size(data != nullptr ? length : 0) {}

    [[nodiscard]] std::uint32_t Size() const { return size; }
    [[nodiscard]] bool Holds(std::uint64_t offset, std::uint64_t length) const {
        return offset + length <= size;
    }

    /// The record at `offset`, which must be there.
    template <class Record>
    [[nodiscard]] Record At(std::size_t offset) const {
        Record record{};
        std::memcpy(&record, bytes + offset, sizeof(record));
        return record;
    }

    /// Text of at most `capacity` bytes.
    [[nodiscard]] std::string Text(std::size_t offset, std::size_t capacity) const {
        const char* text = reinterpret_cast<const char*>(bytes) + offset;
        const std::string shown(text, std::find(text, text + capacity, '\0'));
        // What is no plain text would make no JSON.
        std::string plain;
        for (const char c : shown) {
            plain += c >= ' ' && c <= '~' ? c : '?';
        }
        return plain;
    }

    [[nodiscard]] std::string Hexadecimal() const {
        std::string text;
        for (std::size_t i = 0; i < std::min<std::size_t>(size, kMostBytesShown); ++i) {
            std::array<char, 3> digits{};
            std::snprintf(digits.data(), digits.size(), "%02x", static_cast<unsigned>(bytes[i]));
            text += digits.data();
        }
        return text;
    }

    /// Offset that a section pointer leads to; none if it leads out of the data.
    [[nodiscard]] std::optional<std::uint32_t> Offset(std::uint32_t pointer) const {
        const auto start = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(bytes));
        return pointer != 0 && pointer - start < size ? std::optional(pointer - start) : std::nullopt;
    }

private:
    const std::uint8_t* bytes;
    std::uint32_t size;
};

json Raw(const Payload& payload) {
    return payload.Size() == 0 ? json(nullptr) : json{{"bytes", payload.Hexadecimal()}};
}

json DescribeModes(const Payload& payload) {
    if (payload.Size() != plugin::kModeListSize) {
        return Raw(payload);
    }
    return {{"modes", {payload.At<std::uint32_t>(0), payload.At<std::uint32_t>(sizeof(std::uint32_t))}}};
}

json DescribeSquelch(const Payload& payload) {
    if (!payload.Holds(0, sizeof(plugin::SquelchValues))) {
        return Raw(payload);
    }
    const auto values = payload.At<plugin::SquelchValues>(0);
    return {{"level", values.level},
            {"noise", values.noise},
            {"ctcss", values.ctcss},
            {"voice", values.voice},
            {"dcs", values.dcs}};
}

json DescribeAudio(const Payload& payload) {
    if (!payload.Holds(0, sizeof(plugin::AudioOffer))) {
        return Raw(payload);
    }
    const auto offer = payload.At<plugin::AudioOffer>(0);
    json description = {{"sampleRate", offer.sampleRate},
                        {"bitsPerSample", offer.bitsPerSample},
                        {"channels", offer.channels},
                        {"sampleCount", offer.sampleCount}};
    const std::uint64_t length = std::uint64_t{offer.sampleCount} * sizeof(std::int16_t);
    if (offer.sampleCount != 0 && payload.Holds(sizeof(offer), length)) {
        int peak = 0;
        double squares = 0;
        for (std::uint32_t i = 0; i < offer.sampleCount; ++i) {
            const int sample = payload.At<std::int16_t>(sizeof(offer) + i * sizeof(std::int16_t));
            peak = std::max(peak, std::abs(sample));
            squares += static_cast<double>(sample) * sample;
        }
        description["peak"] = peak;
        description["rms"] = std::lround(std::sqrt(squares / offer.sampleCount));
    }
    return description;
}

json DescribeTrunkingRecord(const Payload& payload, std::size_t start) {
    const auto field = [&]<class Number>(Number /*type*/, std::size_t offset) {
        return payload.At<Number>(start + offset);
    };
    return {{"type", field(std::uint8_t{}, 0)},           {"channelIdentifier", field(std::uint8_t{}, 1)},
            {"channelNumber", field(std::uint16_t{}, 2)}, {"nac", field(std::uint32_t{}, 4)},
            {"frequency", field(std::uint32_t{}, 8)},     {"source", field(std::uint32_t{}, 12)},
            {"destination", field(std::uint32_t{}, 16)},  {"serviceOptions", field(std::uint16_t{}, 20)}};
}

/// An end of call has its network access code at another place, and nothing else.
json DescribeEndOfCall(const Payload& payload, std::size_t start) {
    return {{"type", payload.At<std::uint8_t>(start)}, {"nac", payload.At<std::uint32_t>(start + 1)}};
}

json DescribeTrunking(const Payload& payload) {
    constexpr std::uint8_t kEndOfCall = 129;
    if (!payload.Holds(0, sizeof(plugin::TrunkingReport))) {
        return Raw(payload);
    }
    const auto report = payload.At<plugin::TrunkingReport>(0);
    json records = json::array();
    std::size_t place = sizeof(report);
    for (std::uint32_t i = 0; i < report.count && payload.Holds(place, plugin::kTrunkingReportRecordSize);
         ++i) {
        records.push_back(payload.At<std::uint8_t>(place) == kEndOfCall
                              ? DescribeEndOfCall(payload, place)
                              : DescribeTrunkingRecord(payload, place));
        place += plugin::kTrunkingReportRecordSize;
    }
    return {{"source", payload.Text(0, sizeof(report.source))},
            {"version", report.version},
            {"sizeFromHere", report.sizeFromHere},
            {"count", report.count},
            {"records", records}};
}

json DescribeModeTable(const Payload& payload, const plugin::ReceiverRecord& record) {
    json modes = json::array();
    const auto offset = payload.Offset(record.modeTable);
    std::size_t place = offset.value_or(0);
    for (std::uint32_t i = 0;
         offset && i < record.modeCount && payload.Holds(place, sizeof(plugin::ModeEntry)); ++i) {
        const auto entry = payload.At<plugin::ModeEntry>(place);
        json fields = json::array({entry.mode});
        for (const std::uint32_t field : entry.fields) {
            fields.push_back(field);
        }
        modes.push_back(fields);
        place += sizeof(entry);
    }
    return modes;
}

json DescribeRecord(const Payload& payload) {
    using plugin::ReceiverRecord;
    if (!payload.Holds(0, sizeof(ReceiverRecord))) {
        return Raw(payload);
    }
    const auto record = payload.At<ReceiverRecord>(0);
    return {
        {"totalSize", record.totalSize},
        {"headerSize", record.headerSize},
        {"deviceType", payload.Text(offsetof(ReceiverRecord, deviceType), sizeof(record.deviceType))},
        {"serialNumber", payload.Text(offsetof(ReceiverRecord, serialNumber), sizeof(record.serialNumber))},
        {"audioLowHz", record.audioLowHz},
        {"audioHighHz", record.audioHighHz},
        {"featureFlags", record.featureFlags},
        {"squelchTypes", record.squelchTypes},
        {"squelchLevelMin", record.squelchLevelMin},
        {"squelchLevelMax", record.squelchLevelMax},
        {"modeCount", record.modeCount},
        {"modeTable", DescribeModeTable(payload, record)},
        {"volumeMax", record.volumeMax},
        {"volumeStep", record.volumeStep}};
}

} // namespace

std::string NameFromPlugin(std::int32_t code) {
    switch (static_cast<PluginCode>(code)) {
    case PluginCode::Mode:
        return "Mode";
    case PluginCode::SquelchSetup:
        return "SquelchSetup";
    case PluginCode::SquelchResult:
        return "SquelchResult";
    case PluginCode::VolumeChanged:
        return "VolumeChanged";
    case PluginCode::MuteChanged:
        return "MuteChanged";
    case PluginCode::AudioOffer:
        return "AudioOffer";
    case PluginCode::TrunkingReport:
        return "TrunkingReport";
    case PluginCode::Closing:
        return "Closing";
    case PluginCode::StreamValue:
        return "StreamValue";
    case PluginCode::Query:
        return "Query";
    case PluginCode::ReceiverRecord:
        return "ReceiverRecord";
    }
    return "";
}

std::string NameFromHost(std::int32_t code) {
    switch (static_cast<HostCode>(code)) {
    case HostCode::Reset:
        return "Reset";
    case HostCode::Power:
        return "Power";
    case HostCode::Frequency:
        return "Frequency";
    case HostCode::Mode:
        return "Mode";
    case HostCode::SquelchSetup:
        return "SquelchSetup";
    case HostCode::SquelchState:
        return "SquelchState";
    case HostCode::Volume:
        return "Volume";
    case HostCode::Mute:
        return "Mute";
    case HostCode::Scanner:
        return "Scanner";
    case HostCode::Close:
        return "Close";
    }
    return "";
}

json DescribeFromPlugin(std::int32_t code, std::uint32_t param, std::uint32_t size, const void* data) {
    const Payload payload(size, data);
    switch (static_cast<PluginCode>(code)) {
    case PluginCode::Mode:
        return DescribeModes(payload);
    case PluginCode::SquelchSetup:
    case PluginCode::SquelchResult:
        return DescribeSquelch(payload);
    case PluginCode::AudioOffer:
        return DescribeAudio(payload);
    case PluginCode::TrunkingReport:
        return DescribeTrunking(payload);
    case PluginCode::Closing:
        return payload.Size() == 0 ? json(nullptr) : json{{"name", payload.Text(0, payload.Size())}};
    case PluginCode::Query:
        // A stream value's number means the same in both directions; the others are the host's.
        return {{"of", param == static_cast<std::uint32_t>(PluginCode::StreamValue)
                           ? "StreamValue"
                           : NameFromHost(static_cast<std::int32_t>(param))}};
    case PluginCode::ReceiverRecord:
        return DescribeRecord(payload);
    default:
        return Raw(payload);
    }
}

json DescribeFromHost(std::int32_t code, std::uint32_t /*param*/, std::uint32_t size, const void* data) {
    const Payload payload(size, data);
    switch (static_cast<HostCode>(code)) {
    case HostCode::Mode:
        return DescribeModes(payload);
    case HostCode::SquelchSetup:
        return DescribeSquelch(payload);
    default:
        return Raw(payload);
    }
}

void CodeJournal::WriteFromPlugin(std::uint32_t hostHandle, std::int32_t code, std::uint32_t param,
                                  std::uint32_t size, const void* data, std::uint32_t answer) {
    Write({{"from", "plugin"},
           {"handle", hostHandle},
           {"code", code},
           {"name", NameFromPlugin(code)},
           {"param", param},
           {"size", size},
           {"data", DescribeFromPlugin(code, param, size, data)},
           {"answer", answer}});
}

void CodeJournal::WriteFromHost(std::uint32_t hostHandle, std::int32_t code, std::uint32_t param,
                                std::uint32_t size, const void* data) {
    Write({{"from", "host"},
           {"handle", hostHandle},
           {"code", code},
           {"name", NameFromHost(code)},
           {"param", param},
           {"size", size},
           {"data", DescribeFromHost(code, param, size, data)}});
}

void CodeJournal::WriteEvent(const std::string& name, const json& details) {
    json line = {{"event", name}};
    line.update(details);
    Write(line);
}

void CodeJournal::Write(const json& contents) {
    constexpr double kMilliseconds = 1000;
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    json line = {{"seconds", std::round(passed.count() * kMilliseconds) / kMilliseconds}};
    line.update(contents);
    std::fprintf(out, "%s\n", line.dump().c_str());
    std::fflush(out);
}

} // namespace orva::tools
