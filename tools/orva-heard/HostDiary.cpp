#include "tools/orva-heard/HostDiary.h"

#include <algorithm>
#include <stdexcept>

namespace orva::tools {

using json = nlohmann::json;

namespace {

constexpr std::int32_t kTrunkingReport = 4365;
constexpr std::uint8_t kNewSpeaker = 5;
constexpr std::uint32_t kGroupBit = 0x80000000; ///< of a destination

} // namespace

HostDiary::HostDiary(std::istream& journal) {
    for (std::string text; std::getline(journal, text);) {
        json line = json::parse(text, nullptr, false);
        if (!line.is_object()) {
            throw std::invalid_argument("no line of a journal: " + text);
        }
        if (line.value("from", "") == "plugin") {
            CodeCount& code = codes[line.value("code", std::int32_t{0})];
            code.name = line.value("name", "");
            ++code.count;
        }
        isUnloaded = isUnloaded || line.value("event", "") == "unloaded";
        lines.push_back(std::move(line));
    }
}

std::vector<json> HostDiary::FromPlugin() const {
    std::vector<json> found;
    std::ranges::copy_if(lines, std::back_inserter(found),
                         [](const json& line) { return line.value("from", "") == "plugin"; });
    return found;
}

std::vector<json> HostDiary::FromPlugin(std::int32_t code) const {
    std::vector<json> found = FromPlugin();
    std::erase_if(found, [code](const json& line) { return line.value("code", std::int32_t{0}) != code; });
    return found;
}

std::vector<json> HostDiary::TrunkingRecords() const {
    std::vector<json> records;
    for (const json& report : FromPlugin(kTrunkingReport)) {
        for (const json& record : report["data"]["records"]) {
            records.push_back(record);
        }
    }
    return records;
}

std::vector<HostDiary::Speaker> HostDiary::Speakers() const {
    std::vector<Speaker> speakers;
    for (const json& record : TrunkingRecords()) {
        if (record.value("type", 0) != kNewSpeaker) {
            continue;
        }
        const auto destination = record.value("destination", std::uint32_t{0});
        const Speaker speaker{record.value("nac", std::uint32_t{0}), record.value("source", std::uint32_t{0}),
                              destination & ~kGroupBit, (destination & kGroupBit) != 0};
        if (std::ranges::find(speakers, speaker) == speakers.end()) {
            speakers.push_back(speaker);
        }
    }
    return speakers;
}

} // namespace orva::tools
