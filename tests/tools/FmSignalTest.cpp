// orva-signal's analogue FM, as orva-decode's squelch hears it.
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/EventLines.h"
#include "tools/orva-decode/DecodeJob.h"
#include "tools/orva-signal/SignalJob.h"

#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orva::test {
namespace {

class FmSignal : public testing::TestWithParam<const char*> {
protected:
    int Run(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--rate", GetParam(), "--output", folder.Path("fm.if.wav")});
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

    /// The squelch events of the signal that `arguments` make.
    Events Squelch(const std::vector<std::string>& arguments) {
        EXPECT_EQ(Run(arguments), 0) << complaint;
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> summary(
            std::fopen(folder.Path("summary.txt").c_str(), "wb"), &std::fclose);
        tools::Outputs outputs;
        EXPECT_TRUE(outputs.events.Open(folder.Path("events.jsonl")));
        tools::DecodeJob job(outputs, summary.get());
        job.SetFm(false, true);
        EXPECT_TRUE(job.DecodeWave(folder.Path("fm.if.wav")));
        EXPECT_TRUE(outputs.Close());
        Events squelch;
        for (const auto& event : ParseEvents(ReadWholeFile(folder.Path("events.jsonl")))) {
            if (event["event"] == "squelch") {
                squelch.push_back(event);
            }
        }
        return squelch;
    }

    TemporaryFolder folder;
    std::string complaint;
};

TEST_P(FmSignal, CarriesATone) {
    const Events events = Squelch({"--fm", "4", "--ctcss", "123.0", "--fm-audio", "none", "--snr", "25"});
    ASSERT_GE(events.size(), 8U);
    // The window of the tone is three quarters of a second.
    EXPECT_EQ(events[5]["ctcss"], 123000);
}

TEST_P(FmSignal, CarriesACodeOfEitherPolarity) {
    for (const auto& [text, code] : {std::pair{"023", 19}, std::pair{"-023", -19}}) {
        std::set<int> heard;
        for (const auto& event : Squelch({"--fm", "3", "--dcs", text, "--fm-audio", "none", "--snr", "25"})) {
            for (const auto& match : event["dcs"]) {
                heard.insert(match.get<int>());
            }
        }
        EXPECT_TRUE(heard.contains(code)) << text;
        EXPECT_FALSE(heard.contains(-code)) << text;
    }
}

TEST_P(FmSignal, CarriesVoiceThatTheVoiceMeasureKnowsFromNoise) {
    const auto mostVoice = [&](const char* audio) {
        int most = 0;
        for (const auto& event :
             Squelch({"--fm", "6", "--fm-audio", audio, "--snr", "30", "--lead-out", "0"})) {
            most = std::max(most, event["voice"].get<int>());
        }
        return most;
    };
    const int voice = mostVoice("voice");
    EXPECT_GT(voice, 20);
    EXPECT_GT(voice, mostVoice("1kHz"));
}

TEST_P(FmSignal, RefusesACodeThatIsNotOctal) {
    EXPECT_NE(Run({"--fm", "1", "--dcs", "089"}), 0);
    EXPECT_NE(complaint.find("089"), std::string::npos) << complaint;
    EXPECT_NE(Run({"--fm", "1", "--dcs", "23"}), 0);
}

TEST_P(FmSignal, RefusesToneAndCodeTogether) {
    EXPECT_NE(Run({"--fm", "1", "--dcs", "023", "--ctcss", "100"}), 0);
}

INSTANTIATE_TEST_SUITE_P(Rates, FmSignal, testing::Values("48000", "64000"));

} // namespace
} // namespace orva::test
