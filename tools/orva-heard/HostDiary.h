/// A journal of the bench host, read again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace orva::tools {

/// What a run of the bench host wrote down, for those who want to know what happened in it.
class HostDiary {
public:
    /// Someone who began to speak, as the plug-in reported it to the host.
    struct Speaker {
        std::uint32_t networkAccessCode = 0;
        std::uint32_t source = 0;
        std::uint32_t destination = 0;
        bool isGroup = false; ///< the destination is a talk group

        bool operator==(const Speaker&) const = default;
    };

    struct CodeCount {
        std::string name;
        std::size_t count = 0;
    };

    /// Takes lines up to the end. Throws std::invalid_argument for one that is no JSON object.
    explicit HostDiary(std::istream& journal);

    /// What the plug-in sent, by code.
    [[nodiscard]] const std::map<std::int32_t, CodeCount>& Codes() const { return codes; }

    /// All lines from the plug-in; those with one code.
    [[nodiscard]] std::vector<nlohmann::json> FromPlugin() const;
    [[nodiscard]] std::vector<nlohmann::json> FromPlugin(std::int32_t code) const;

    /// All records of all trunking reports, in order.
    [[nodiscard]] std::vector<nlohmann::json> TrunkingRecords() const;

    /// Each only once, in order.
    [[nodiscard]] std::vector<Speaker> Speakers() const;

    /// The plug-in said its last word and was unloaded.
    [[nodiscard]] bool IsComplete() const { return isUnloaded && codes.contains(kClosing); }

private:
    static constexpr std::int32_t kClosing = 16384;

    std::vector<nlohmann::json> lines;
    std::map<std::int32_t, CodeCount> codes;
    bool isUnloaded = false;
};

} // namespace orva::tools
