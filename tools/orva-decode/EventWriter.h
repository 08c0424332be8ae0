/// Events as JSON Lines.
#pragma once

#include "p25/TrunkingRecord.h"
#include "tools/orva-decode/CallLog.h"
#include "tools/orva-decode/ControlChannelLog.h"
#include "tools/orva-decode/SquelchMeter.h"
#include "voice/ImbeDecoder.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace orva::tools {

/// Writes one JSON object a line, the event's name under "event" and its place under "time", in seconds of
/// input.
class EventWriter {
public:
    /// Writes to `path`, "-" meaning standard output. False if that cannot be opened.
    bool Open(const std::string& path);

    /// Hands on what has been written so far, for whoever reads along.
    void Flush();

    /// Completes the file; false if a write has failed.
    bool Close();
    ~EventWriter() { Close(); }
    EventWriter() = default;
    EventWriter(const EventWriter&) = delete;
    EventWriter& operator=(const EventWriter&) = delete;

    bool IsOpen() const { return file != nullptr; }

    /// Named in each event from now on; an empty name leaves the field out.
    void SetInput(const std::string& name) { inputName = name; }

    void Nid(double time, std::int32_t networkAccessCode, std::int32_t duid, const char* frame,
             std::int32_t corrected);
    void Header(double time, std::int32_t algorithm, std::int32_t talkGroup);
    void LinkControl(double time, std::int32_t format, std::int32_t talkGroup, std::int32_t source,
                     std::int32_t destination);
    void EncryptionSync(double time, std::int32_t algorithm);
    /// `bits` are the frame's 88 information bits as hex digits.
    void Voice(double time, const std::string& bits, const voice::ImbeFrameBlock& frame, float errorRate);
    void TrunkingBlock(double time, const p25::TrunkingBlock& block, bool hasGoodCrc, std::uint32_t errors);
    void Record(double time, const p25::TrunkingRecord& record);
    void Squelch(double time, const SquelchReading& reading);
    void Terminator(double time);
    void Lost(double time);
    /// `realTime` is how many times faster than real time the input was decoded. `squelch` is null when it
    /// was not measured. Lists `calls`, all or the first ones.
    void Summary(double seconds, double realTime, const Totals& totals, const std::vector<Call>& calls,
                 const ControlChannelLog& channel, const SquelchTotals* squelch);

private:
    nlohmann::ordered_json Begin(const char* event, double time) const;
    void Write(const nlohmann::ordered_json& event);

    std::FILE* file = nullptr;
    std::string inputName;
    bool failed = false;
};

/// `count` bytes as lower-case hex digits.
std::string HexDigits(const std::uint8_t* bytes, std::size_t count);

/// The 88 information bits at the front of `bits`, one a byte, as 22 hex digits.
std::string HexOfBits(const std::uint8_t* bits);

} // namespace orva::tools
