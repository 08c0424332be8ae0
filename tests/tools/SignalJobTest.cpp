#include "tools/orva-signal/SignalJob.h"

#include "tests/support/TemporaryFolder.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orva::test {
namespace {

std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class SignalJob : public testing::Test {
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
        return nlohmann::json::parse(Content(folder.Path("truth.json")));
    }

    TemporaryFolder folder;
    std::string complaint;
};

std::vector<std::string> FrameNames(const nlohmann::json& truth) {
    std::vector<std::string> names;
    for (const auto& frame : truth["frames"]) {
        names.push_back(frame["frame"]);
    }
    return names;
}

TEST_F(SignalJob, WritesARecordingOfTheRateAndLengthAskedFor) {
    const std::string path = folder.Path("x.if.wav");
    ASSERT_EQ(
        Run({"-o", path, "--rate", "64000", "--superframes", "1", "--lead-in", "0.1", "--lead-out", "0"}), 0);
    const std::string bytes = Content(path);
    ASSERT_GT(bytes.size(), 46u);
    EXPECT_EQ(bytes.substr(0, 4), "RIFF");
    EXPECT_EQ(static_cast<unsigned char>(bytes[24]) + 256 * static_cast<unsigned char>(bytes[25]), 64000);
    // 0.1 s, then 396 + 2 * 864 + 72 symbols.
    EXPECT_NEAR(static_cast<double>(bytes.size() - 46) / 2.0, 6400.0 + 2196.0 * 64000.0 / 4800.0, 1.0);
}

TEST_F(SignalJob, WritesTheDibitText) {
    ASSERT_EQ(Run({"--dibits", folder.Path("x.txt"), "--superframes", "1"}), 0);
    const std::string text = Content(folder.Path("x.txt"));
    EXPECT_EQ(text.size(), 2197u);
    EXPECT_EQ(text.substr(0, 24), "111113113311333313133333");
    EXPECT_EQ(text.find_first_not_of("0123"), 2196u);
}

TEST_F(SignalJob, TellsTheTruthOfEveryFrame) {
    const auto truth = Truth({"--nac", "0x123", "--talkgroup", "77", "--source", "99", "--algorithm", "0x84",
                              "--superframes", "1", "--ending", "link-control"});
    ASSERT_EQ(FrameNames(truth), (std::vector<std::string>{"HDU", "LDU1", "LDU2", "TDULC"}));
    const auto& frames = truth["frames"];
    for (const auto& frame : frames) {
        EXPECT_EQ(frame["nac"], 0x123);
        EXPECT_EQ(frame["warm_up"], false);
    }
    EXPECT_EQ(frames[0]["header"]["talkgroup"], 77);
    EXPECT_EQ(frames[0]["header"]["algorithm"], 0x84);
    EXPECT_EQ(frames[1]["link_control"]["source"], 99);
    EXPECT_EQ(frames[1]["voice"].size(), 9u);
    EXPECT_EQ(frames[1]["voice"][0].get<std::string>().size(), 22u);
    EXPECT_EQ(frames[2]["encryption_sync"]["algorithm"], 0x84);
    EXPECT_EQ(frames[3]["link_control"]["talkgroup"], 77);
    EXPECT_EQ(frames[2]["dibit"], 396 + 864);
    EXPECT_NEAR(frames[2]["time"].get<double>(), 0.5 + 1260.0 / 4800.0, 1e-9);
}

TEST_F(SignalJob, UnitToUnitCallHasADestination) {
    const auto truth = Truth({"--format", "3", "--destination", "0x123456", "--superframes", "1"});
    EXPECT_EQ(truth["frames"][1]["link_control"]["destination"], 0x123456);
    EXPECT_FALSE(truth["frames"][1]["link_control"].contains("talkgroup"));
}

TEST_F(SignalJob, OtherFormatsHaveOctetsOnly) {
    const auto truth = Truth({"--format", "68", "--superframes", "1"});
    EXPECT_EQ(truth["frames"][1]["link_control"]["octets"], "0000000000000000");
    EXPECT_FALSE(truth["frames"][1]["link_control"].contains("source"));
}

TEST_F(SignalJob, SecondsAreRoundedUpToSuperframes) {
    EXPECT_EQ(Truth({"--seconds", "0.72"})["frames"].size(), 6u);
    EXPECT_EQ(Truth({"--seconds", "0.73"})["frames"].size(), 8u);
}

TEST_F(SignalJob, WarmUpCallsComeFirst) {
    const auto truth =
        Truth({"--warm-up", "--warm-up-superframes", "1", "--superframes", "1", "--no-header"});
    ASSERT_EQ(FrameNames(truth), (std::vector<std::string>{"HDU", "LDU1", "LDU2", "TDU", "HDU", "LDU1",
                                                           "LDU2", "TDU", "LDU1", "LDU2", "TDU"}));
    for (std::size_t frame = 0; frame < 11; ++frame) {
        EXPECT_EQ(truth["frames"][frame]["warm_up"], frame < 8) << frame;
    }
    EXPECT_NEAR(truth["frames"][4]["time"].get<double>(), 1.0 + 2196.0 / 4800.0, 1e-9);
}

TEST_F(SignalJob, DataAndUnknownFramesFollowEachCall) {
    const auto truth = Truth({"--calls", "2", "--superframes", "1", "--no-header", "--ending", "none",
                              "--packet-blocks", "2", "--unknown", "9"});
    EXPECT_EQ(FrameNames(truth),
              (std::vector<std::string>{"LDU1", "LDU2", "PDU", "unknown", "LDU1", "LDU2", "PDU", "unknown"}));
}

TEST_F(SignalJob, EachCallBeginsItsVoiceAnew) {
    const auto truth = Truth({"--calls", "2", "--superframes", "1", "--voice", "glide"});
    EXPECT_EQ(truth["frames"][1]["voice"], truth["frames"][5]["voice"]);
    EXPECT_NE(truth["frames"][1]["voice"], truth["frames"][2]["voice"]);
}

TEST_F(SignalJob, VoiceFileIsRepeated) {
    std::ofstream(folder.Path("voice.txt")) << "0123456789abcdef012345\r\n\nfedcba9876543210fedcba\n";
    const auto truth = Truth({"--voice-file", folder.Path("voice.txt"), "--superframes", "1"});
    const auto& voice = truth["frames"][1]["voice"];
    EXPECT_EQ(voice[0], "0123456789abcdef012345");
    EXPECT_EQ(voice[1], "fedcba9876543210fedcba");
    EXPECT_EQ(voice[8], voice[0]);
    EXPECT_EQ(truth["frames"][2]["voice"][0], voice[1]);
}

TEST_F(SignalJob, HeaviestErrorsSpoilTheDibitsAndNotTheTruth) {
    const auto clean = Truth({"--dibits", folder.Path("clean.txt"), "--superframes", "1"});
    const auto spoilt =
        Truth({"--dibits", folder.Path("spoilt.txt"), "--superframes", "1", "--heaviest-errors"});
    EXPECT_EQ(clean["frames"], spoilt["frames"]);
    EXPECT_NE(Content(folder.Path("clean.txt")), Content(folder.Path("spoilt.txt")));
}

TEST_F(SignalJob, SameSeedMakesTheSameRecording) {
    const auto make = [&](const std::string& name, const std::string& seed) {
        EXPECT_EQ(Run({"-o", folder.Path(name), "--superframes", "1", "--snr", "10", "--seed", seed}), 0);
        return Content(folder.Path(name));
    };
    const std::string first = make("a.if.wav", "1");
    EXPECT_EQ(first, make("b.if.wav", "1"));
    EXPECT_NE(first, make("c.if.wav", "2"));
}

TEST_F(SignalJob, MakesTenChannelsForAScanner) {
    const std::string path = folder.Path("x.if.wav");
    ASSERT_EQ(Run({"-o", path, "--scan", "0.5", "--rate", "64000"}), 0) << complaint;
    constexpr std::size_t kHeader = 46;
    constexpr std::size_t kChannel = 32000 * sizeof(std::int16_t);
    const std::string bytes = Content(path);
    ASSERT_EQ(bytes.size(), kHeader + 10 * kChannel);
    // The first holds noise alone, at 20 dB below each of the others.
    const auto power = [&](std::size_t channel) {
        double sum = 0.0;
        for (std::size_t i = 0; i < kChannel; i += sizeof(std::int16_t)) {
            std::int16_t sample = 0;
            std::memcpy(&sample, bytes.data() + kHeader + channel * kChannel + i, sizeof sample);
            sum += static_cast<double>(sample) * sample;
        }
        return sum;
    };
    // Over half the rate there is 32000 / 12500 times the noise that the ratio speaks of: 4.1 dB.
    const double noise = power(0);
    for (std::size_t channel = 1; channel < 10; ++channel) {
        EXPECT_NEAR(10.0 * std::log10((power(channel) - noise) / noise), 20.0 - 4.08, 0.3) << channel;
    }
    EXPECT_NE(Run({"-o", path, "--scan", "2.5"}), 0) << "a digital call is not that long";
    EXPECT_NE(Run({"-o", path, "--scan", "1", "--fm", "1"}), 0);
}

TEST_F(SignalJob, RefusesToWriteNothing) {
    EXPECT_EQ(Run({}), tools::kExitUsage);
    EXPECT_NE(complaint.find("nothing to write"), std::string::npos) << complaint;
}

TEST_F(SignalJob, RefusesValuesOutOfRange) {
    for (const auto& [option, value] :
         std::vector<std::pair<std::string, std::string>>{{"--rate", "44100"},
                                                          {"--nac", "4096"},
                                                          {"--amplitude", "1.5"},
                                                          {"--offset", "5000"},
                                                          {"--voice", "song"},
                                                          {"--ending", "abrupt"},
                                                          {"--unknown", "16"},
                                                          {"--superframes", "0"}}) {
        EXPECT_EQ(Run({"--dibits", folder.Path("x.txt"), option, value}), tools::kExitUsage) << option;
        EXPECT_FALSE(complaint.empty()) << option;
    }
}

TEST_F(SignalJob, ReportsFilesThatCannotBeUsed) {
    EXPECT_EQ(Run({"--dibits", folder.Path("no/such/x.txt"), "--superframes", "1"}), tools::kExitFailed);
    EXPECT_NE(complaint.find("cannot be written"), std::string::npos) << complaint;
    EXPECT_EQ(Run({"--dibits", folder.Path("x.txt"), "--voice-file", folder.Path("none.txt")}),
              tools::kExitFailed);
    EXPECT_NE(complaint.find("cannot be read"), std::string::npos) << complaint;
    std::ofstream(folder.Path("bad.txt")) << "0123456789abcdef012345\nhello\n";
    EXPECT_EQ(Run({"--dibits", folder.Path("x.txt"), "--voice-file", folder.Path("bad.txt")}),
              tools::kExitFailed);
    EXPECT_NE(complaint.find("line 2"), std::string::npos) << complaint;
    std::ofstream(folder.Path("empty.txt")) << "\n";
    EXPECT_EQ(Run({"--dibits", folder.Path("x.txt"), "--voice-file", folder.Path("empty.txt")}),
              tools::kExitFailed);
    EXPECT_NE(complaint.find("no voice frame"), std::string::npos) << complaint;
}

} // namespace
} // namespace orva::test
