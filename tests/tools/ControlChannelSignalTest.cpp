// orva-signal's control channel, as orva-decode hears it.
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/EventLines.h"
#include "tools/orva-decode/DecodeJob.h"
#include "tools/orva-signal/SignalJob.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orva::test {
namespace {

class ControlChannelSignal : public testing::Test {
protected:
    int Run(const std::vector<std::string>& arguments) {
        std::vector<const char*> pointers = {"orva-signal"};
        for (const std::string& argument : arguments) {
            pointers.push_back(argument.c_str());
        }
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int exitCode = tools::RunSignalJob(static_cast<int>(pointers.size()), pointers.data());
        testing::internal::GetCapturedStdout();
        complaint = testing::internal::GetCapturedStderr();
        return exitCode;
    }

    nlohmann::json Truth(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--truth", folder.Path("truth.json")});
        EXPECT_EQ(Run(arguments), 0) << complaint;
        return nlohmann::json::parse(ReadWholeFile(folder.Path("truth.json")));
    }

    /// What orva-decode tells of a recording or, if it is no recording, of dibit text.
    Events Decode(const std::string& path, bool isRecording) {
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> summary(
            std::fopen(folder.Path("summary.txt").c_str(), "wb"), &std::fclose);
        tools::Outputs outputs;
        EXPECT_TRUE(outputs.events.Open(folder.Path("events.jsonl")));
        tools::DecodeJob job(outputs, summary.get());
        EXPECT_TRUE(isRecording ? job.DecodeWave(path) : job.DecodeDibits(path));
        EXPECT_TRUE(outputs.Close());
        return ParseEvents(ReadWholeFile(folder.Path("events.jsonl")));
    }

    TemporaryFolder folder;
    std::string complaint;
};

std::vector<std::string> SentBlocks(const nlohmann::json& truth) {
    std::vector<std::string> blocks;
    for (const auto& frame : truth["frames"]) {
        if (frame["frame"] == "TSBK") {
            blocks.insert(blocks.end(), frame["blocks"].begin(), frame["blocks"].end());
        }
    }
    return blocks;
}

std::vector<std::string> HeardBlocks(const Events& events) {
    std::vector<std::string> blocks;
    for (const auto& event : Named(events, "tsbk")) {
        EXPECT_EQ(event["crc"], true) << event;
        blocks.push_back(event["bytes"]);
    }
    return blocks;
}

TEST_F(ControlChannelSignal, IsHeardBlockByBlockFromDibits) {
    const auto truth = Truth({"--control", "2", "--nac", "0x140", "--dibits", folder.Path("control.txt")});
    const Events events = Decode(folder.Path("control.txt"), false);
    EXPECT_EQ(HeardBlocks(events), SentBlocks(truth));
    for (const auto& frame : truth["frames"]) {
        EXPECT_EQ(frame["nac"], 0x140);
        EXPECT_EQ(frame["duid"], 7);
        EXPECT_FALSE(frame.contains("voice"));
    }
    const auto& summary = events.back()["control_channel"];
    EXPECT_EQ(summary["identifiers"].size(), 2U);
    EXPECT_EQ(summary["crc_failure_rate"], 0.0);
    EXPECT_GT(summary["grants"].size(), 20U);
}

TEST_F(ControlChannelSignal, IsHeardBlockByBlockFromTheAir) {
    const auto truth =
        Truth({"--control", "0.8", "--warm-up", "--warm-up-superframes", "1", "--pause", "0.1", "--lead-in",
               "0.1", "--snr", "25", "--offset", "-600", "-o", folder.Path("control.if.wav")});
    EXPECT_EQ(HeardBlocks(Decode(folder.Path("control.if.wav"), true)), SentBlocks(truth));
}

TEST_F(ControlChannelSignal, TakesThePlaceOfCalls) {
    for (const std::vector<std::string>& ofCalls : std::vector<std::vector<std::string>>{
             {"--calls", "2"}, {"--superframes", "1"}, {"--seconds", "1"}, {"--packet-blocks", "1"}}) {
        std::vector<std::string> arguments = {"--control", "1", "--truth", folder.Path("truth.json")};
        arguments.insert(arguments.end(), ofCalls.begin(), ofCalls.end());
        EXPECT_EQ(Run(arguments), tools::kExitUsage) << ofCalls[0];
    }
    EXPECT_EQ(Run({"--control", "0", "--truth", folder.Path("truth.json")}), tools::kExitUsage);
    EXPECT_EQ(Run({"--control", "-1", "--truth", folder.Path("truth.json")}), tools::kExitUsage);
}

} // namespace
} // namespace orva::test
