#include "tools/orva-host/CodeJournal.h"

#include "plugin/HostInterface.h"
#include "tests/support/TemporaryFolder.h"

#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::tools {

namespace {

using Json = nlohmann::ordered_json;
using Bytes = std::vector<std::uint8_t>;

void Put(Bytes& bytes, std::size_t offset, std::uint32_t value) {
    std::memcpy(bytes.data() + offset, &value, sizeof(value));
}

Json FromPlugin(std::int32_t code, const Bytes& bytes, std::uint32_t param = 0) {
    return DescribeFromPlugin(code, param, static_cast<std::uint32_t>(bytes.size()), bytes.data());
}

TEST(CodeJournal, KnowsEveryCodeByName) {
    const std::map<std::int32_t, std::string> fromPlugin = {
        {2304, "Mode"},         {2816, "SquelchSetup"}, {2818, "SquelchResult"},  {4352, "VolumeChanged"},
        {4353, "MuteChanged"},  {4362, "AudioOffer"},   {4365, "TrunkingReport"}, {16384, "Closing"},
        {16385, "StreamValue"}, {16386, "Query"},       {16390, "ReceiverRecord"}};
    const std::map<std::int32_t, std::string> fromHost = {
        {0, "Reset"},           {256, "Power"},         {2048, "Frequency"}, {2304, "Mode"},
        {2817, "SquelchSetup"}, {2818, "SquelchState"}, {3584, "Volume"},    {3585, "Mute"},
        {3840, "Scanner"},      {16384, "Close"}};
    for (std::int32_t code = -1; code < 20000; ++code) {
        const auto plugin = fromPlugin.find(code);
        const auto host = fromHost.find(code);
        ASSERT_EQ(NameFromPlugin(code), plugin != fromPlugin.end() ? plugin->second : "") << code;
        ASSERT_EQ(NameFromHost(code), host != fromHost.end() ? host->second : "") << code;
    }
}

TEST(CodeJournal, DescribesModes) {
    Bytes bytes(8);
    Put(bytes, 0, 2);
    Put(bytes, 4, 19);
    EXPECT_EQ(FromPlugin(2304, bytes), Json::parse(R"({"modes": [2, 19]})"));
    EXPECT_EQ(DescribeFromHost(2304, 0, 8, bytes.data()), Json::parse(R"({"modes": [2, 19]})"));
    EXPECT_EQ(DescribeFromHost(2304, 19, 0, nullptr), nullptr);
    EXPECT_EQ(FromPlugin(2304, {1, 2, 255}), Json::parse(R"({"bytes": "0102ff"})"));
}

TEST(CodeJournal, DescribesSquelchValues) {
    Bytes bytes(28);
    const std::uint32_t values[] = {1, 2, 100000, 9, 9, 5, static_cast<std::uint32_t>(-754)};
    std::memcpy(bytes.data(), values, sizeof(values));
    const Json expected =
        Json::parse(R"({"level": 1, "noise": 2, "ctcss": 100000, "voice": 5, "dcs": -754})");
    EXPECT_EQ(FromPlugin(2816, bytes), expected);
    EXPECT_EQ(FromPlugin(2818, bytes), expected);
    EXPECT_EQ(DescribeFromHost(2817, 4, 28, bytes.data()), expected);
}

TEST(CodeJournal, DescribesOfferedAudio) {
    Bytes bytes(16 + 3 * 2 + 3);
    Put(bytes, 0, 16000);
    Put(bytes, 4, 16);
    Put(bytes, 8, 1);
    Put(bytes, 12, 3);
    const std::int16_t samples[] = {3, -32768, 4};
    std::memcpy(bytes.data() + 16, samples, sizeof(samples));
    EXPECT_EQ(FromPlugin(4362, bytes, 3),
              Json::parse(R"({"sampleRate": 16000, "bitsPerSample": 16, "channels": 1, "sampleCount": 3,
                              "peak": 32768, "rms": 18919})"));
    Put(bytes, 12, 0x80000000U);
    EXPECT_FALSE(FromPlugin(4362, bytes, 3).contains("peak")) << "samples that are not there";
}

TEST(CodeJournal, DescribesTrunkingReports) {
    Bytes bytes(140 + 2 * 22);
    std::memcpy(bytes.data(), "K728 ORVA", 9);
    Put(bytes, 128, 256);
    Put(bytes, 132, 48);
    Put(bytes, 136, 2);
    const std::uint8_t grant[] = {1,    0x10, 0x34, 0x12, 0x93, 2, 0, 0, 0x80, 0x96, 0x98,
                                  0x00, 7,    0,    0,    0,    5, 0, 0, 0x80, 4,    0};
    std::memcpy(bytes.data() + 140, grant, sizeof(grant));
    bytes[162] = 129;
    Put(bytes, 163, 0x293);
    EXPECT_EQ(
        FromPlugin(4365, bytes),
        Json::parse(R"({"source": "K728 ORVA", "version": 256, "sizeFromHere": 48, "count": 2, "records": [
                  {"type": 1, "channelIdentifier": 16, "channelNumber": 4660, "nac": 659, "frequency": 10000000,
                   "source": 7, "destination": 2147483653, "serviceOptions": 4},
                  {"type": 129, "nac": 659}]})"));
    Put(bytes, 136, 0xFFFFFFFFU);
    EXPECT_EQ(FromPlugin(4365, bytes)["records"].size(), 2U) << "no more than there are";
}

TEST(CodeJournal, DescribesQueriesAndTheLastMessage) {
    for (const auto& [code, name] : std::map<std::uint32_t, std::string>{{256, "Power"},
                                                                         {2048, "Frequency"},
                                                                         {2818, "SquelchState"},
                                                                         {3840, "Scanner"},
                                                                         {16385, "StreamValue"},
                                                                         {7, ""}}) {
        EXPECT_EQ(DescribeFromPlugin(16386, code, 0, nullptr)["of"], name);
    }
    EXPECT_EQ(FromPlugin(16384, {'O', 'R', 'V', 'A'})["name"], "ORVA");
    EXPECT_EQ(FromPlugin(16384, {'O', 0xFF, '\n'})["name"], "O??") << "still text";
}

TEST(CodeJournal, DescribesReceiverRecords) {
    Bytes bytes(400 + 56);
    plugin::ReceiverRecord record{};
    record.totalSize = 456;
    record.headerSize = 400;
    std::memcpy(record.deviceType, "K7USB", 5);
    std::memcpy(record.serialNumber, "12345678", 8);
    record.audioHighHz = 8000;
    record.squelchTypes = 0x306;
    record.modeCount = 2;
    record.modeTable = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(bytes.data())) + 400;
    record.volumeMax = 31;
    std::memcpy(bytes.data(), &record, sizeof(record));
    Put(bytes, 400, 19);
    Put(bytes, 428, 2);
    const Json told = FromPlugin(16390, bytes);
    EXPECT_EQ(told["deviceType"], "K7USB");
    EXPECT_EQ(told["serialNumber"], "12345678");
    EXPECT_EQ(told["squelchTypes"], 774);
    EXPECT_EQ(told["modeTable"], Json::parse("[[19,0,0,0,0,0,0],[2,0,0,0,0,0,0]]"));
    EXPECT_EQ(DescribeFromPlugin(16390, 0, 400, bytes.data())["modeTable"], Json::array())
        << "the table lies behind what was sent";
    EXPECT_EQ(FromPlugin(16390, Bytes(399))["bytes"].get<std::string>().size(), 128U);
}

TEST(CodeJournal, DescribesWhateverComesWithoutReadingBehindIt) {
    std::mt19937 generator(5);
    for (int round = 0; round < 4000; ++round) {
        for (const std::int32_t code : {2304, 2816, 2818, 4362, 4365, 16384, 16386, 16390, 1}) {
            const auto size = static_cast<std::uint32_t>(generator() % 500);
            const auto bytes = std::make_unique<std::uint8_t[]>(size);
            for (std::uint32_t i = 0; i < size; ++i) {
                bytes[i] = static_cast<std::uint8_t>(generator() % 4 == 0 ? generator() : 0);
            }
            // Must not throw either: text of any bytes becomes JSON.
            ASSERT_FALSE(DescribeFromPlugin(code, 0, size, bytes.get()).dump().empty());
            ASSERT_FALSE(DescribeFromHost(code, 0, size, bytes.get()).dump().empty());
        }
    }
    EXPECT_EQ(DescribeFromPlugin(16390, 0, 400, nullptr), nullptr);
}

TEST(CodeJournal, WritesOneLineForEachCode) {
    const test::TemporaryFolder folder;
    const std::string path = folder.Path("journal");
    std::FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_NE(file, nullptr);
    CodeJournal journal(file);
    journal.WriteEvent("loaded", {{"name", "ORVA"}});
    const std::uint32_t modes[] = {2, 19};
    journal.WriteFromHost(7, 2304, 19, 8, modes);
    journal.WriteFromPlugin(7, 16386, 2048, 0, nullptr, 0x80000000U);
    std::fclose(file);

    std::istringstream text(test::ReadWholeFile(path));
    std::vector<Json> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(Json::parse(line));
        EXPECT_GE(lines.back()["seconds"], 0.0);
        lines.back().erase("seconds");
    }
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0], Json::parse(R"({"event": "loaded", "name": "ORVA"})"));
    EXPECT_EQ(lines[1],
              Json::parse(R"({"from": "host", "handle": 7, "code": 2304, "name": "Mode", "param": 19,
                                        "size": 8, "data": {"modes": [2, 19]}})"));
    EXPECT_EQ(lines[2], Json::parse(R"({"from": "plugin", "handle": 7, "code": 16386, "name": "Query",
                                        "param": 2048, "size": 0, "data": {"of": "Frequency"},
                                        "answer": 2147483648})"));
}

} // namespace

} // namespace orva::tools
