/// The bench host's diary: every code in both directions, one JSON object a line.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

#include <nlohmann/json.hpp>

namespace orva::tools {

/// What came with a code, in words and numbers; null if nothing did. Reads no more than `size` bytes. The
/// data need not be aligned; section pointers of a record count only if they point into the data.
nlohmann::ordered_json DescribeFromPlugin(std::int32_t code, std::uint32_t param, std::uint32_t size,
                                          const void* data);
nlohmann::ordered_json DescribeFromHost(std::int32_t code, std::uint32_t param, std::uint32_t size,
                                        const void* data);

/// Name of a code; empty for an unknown one.
std::string NameFromPlugin(std::int32_t code);
std::string NameFromHost(std::int32_t code);

/// Writes lines, each at once, with the seconds since the journal began. Not locked.
class CodeJournal {
public:
    /// `stream` is not owned.
    explicit CodeJournal(std::FILE* stream) : out(stream) {}

    void WriteFromPlugin(std::uint32_t hostHandle, std::int32_t code, std::uint32_t param, std::uint32_t size,
                         const void* data, std::uint32_t answer);
    void WriteFromHost(std::uint32_t hostHandle, std::int32_t code, std::uint32_t param, std::uint32_t size,
                       const void* data);

    /// Something that is no code: `{"event": name, ...}`.
    void WriteEvent(const std::string& name,
                    const nlohmann::ordered_json& details = nlohmann::ordered_json::object());

private:
    void Write(const nlohmann::ordered_json& contents);

    std::FILE* out;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

} // namespace orva::tools
