/// Whole runs of the bench host with a small plug-in that answers every code.
#include "tests/audio/RiffBytes.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WavFile.h"
#include "tests/tools/ProgramRun.h"

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace orva::test {

namespace {

using Json = nlohmann::json;

struct HostRun {
    ProgramResult program;
    std::vector<Json> lines;

    /// Codes from one side, in order, as "code param".
    std::vector<std::string> Codes(const std::string& from) const {
        std::vector<std::string> codes;
        for (const Json& line : lines) {
            if (line.value("from", "") == from) {
                codes.push_back(line["code"].dump() + ' ' + line["param"].dump());
            }
        }
        return codes;
    }

    /// The first line in which `key` is `value`.
    Json Find(const std::string& key, const Json& value) const {
        for (const Json& line : lines) {
            if (line.value(key, Json()) == value) {
                return line;
            }
        }
        return {};
    }

    std::size_t Count(const std::string& key, const Json& value) const {
        std::size_t count = 0;
        for (const Json& line : lines) {
            count += line.value(key, Json()) == value ? 1 : 0;
        }
        return count;
    }
};

class HostProgramTest : public testing::Test {
protected:
    HostRun Run(const std::string& script, std::vector<std::string> more = {},
                const char* plugin = ORVA_ECHO_PLUGIN) {
        more.insert(more.begin(), {plugin, "--hidden"});
        HostRun run;
        run.program = RunProgram(ORVA_HOST_PROGRAM, folder, more, folder.Write("script.txt", script));
        std::istringstream text(run.program.output);
        for (std::string line; std::getline(text, line);) {
            run.lines.push_back(Json::parse(line));
        }
        return run;
    }

    TemporaryFolder folder;
};

using Codes = std::vector<std::string>;

TEST_F(HostProgramTest, RunsAPluginFromStartToEnd) {
    const HostRun run = Run("3584 12\nclose\n", {"--device", "K7USB", "--serial", "12345678"});
    EXPECT_EQ(run.program.exitCode, 0) << run.program.errors;
    ASSERT_GE(run.lines.size(), 8U);
    EXPECT_EQ(run.lines.front()["event"], "loaded");
    EXPECT_EQ(run.lines.front()["interface"], 1153);
    EXPECT_EQ(run.Find("code", 16390)["data"]["serialNumber"], "12345678");
    EXPECT_EQ(run.Codes("host"), (Codes{"3584 12", "16384 0"}));
    EXPECT_EQ(run.Codes("plugin"),
              (Codes{"16390 0", "16386 2048", "16386 3840", "16386 2818", "16386 256", "16386 16385",
                     "4352 2147483648", "4352 12", "16390 0", "16384 0"}));
    EXPECT_EQ(run.Find("event", "unloaded")["event"], "unloaded");
}

TEST_F(HostProgramTest, CarriesEveryCodeBothWays) {
    const HostRun run =
        Run("0\n256 1\n2048 155000000\n2304 19\n2817 4 1 2 3 0 0 5 -23\n2818 1\n3584 31\n3585 1\n"
            "3840 1\n2304 0 2 19\n");
    EXPECT_EQ(run.program.exitCode, 0);
    EXPECT_EQ(run.Codes("host"), (Codes{"0 0", "256 1", "2048 155000000", "2304 19", "2817 4", "2818 1",
                                        "3584 31", "3585 1", "3840 1", "2304 0", "16384 0"}))
        << "and closed at the end of the script";
    const Codes codes = run.Codes("plugin");
    EXPECT_EQ(Codes(codes.begin() + 7, codes.end()),
              (Codes{"16385 1", "16390 0", "4365 0", "2304 19", "2818 4", "2816 1", "4352 31", "4353 1",
                     "4362 3", "2304 0", "16390 0", "16384 0"}));
    EXPECT_EQ(run.Find("name", "SquelchResult")["data"]["dcs"], -23);
    EXPECT_EQ(run.Find("name", "TrunkingReport")["data"]["records"][0]["frequency"], 155000000);
    EXPECT_EQ(run.Find("name", "AudioOffer")["data"]["peak"], 400);
}

TEST_F(HostProgramTest, AnswersQueriesAsTold) {
    const HostRun run = Run("", {"--answer", "2048=155000000", "--answer", "16385=77"});
    EXPECT_EQ(run.program.exitCode, 0);
    EXPECT_EQ(run.Find("param", 2048)["answer"], 155000000);
    EXPECT_EQ(run.Find("param", 3840)["answer"], 0x80000000U);
    EXPECT_EQ(run.Codes("plugin")[6], "4352 77") << "the plug-in tells the last answer as its volume";
    EXPECT_EQ(Run("", {"--refuse"}).Count("answer", 0x80000000U), 9U);
}

TEST_F(HostProgramTest, RunsSeveralInstancesAndSpeaksToOne) {
    const HostRun run = Run("@5 3584 7\n0\n@4 close\n3585 1\n", {"--handle", "4", "--instances", "3"});
    EXPECT_EQ(run.program.exitCode, 0);
    EXPECT_EQ(run.Count("name", "Closing"), 3U);
    EXPECT_EQ(run.Find("param", 7)["handle"], 5);
    EXPECT_EQ(run.Count("code", 4353), 2U) << "the closed one hears nothing more";
    EXPECT_EQ(run.Count("code", 16385), 3U);
}

TEST_F(HostProgramTest, SendsFromInsideTheCallback) {
    for (const char* code : {"16390", "16386", "4352"}) {
        const HostRun run = Run("wait 0.2\n", {"--on", std::string(code) + "=close"});
        EXPECT_EQ(run.program.exitCode, 0) << code;
        EXPECT_EQ(run.Count("name", "Closing"), 1U) << code;
        EXPECT_EQ(run.Count("event", "unloaded"), 1U) << code;
    }
}

TEST_F(HostProgramTest, ShowsThePluginWhereTheReceiverLibraryIs) {
    EXPECT_EQ(Run("0 718\n").Find("name", "StreamValue")["param"], 0);
    const HostRun run = Run("0 718\n", {"--libraries", ORVA_RECEIVER_FOLDER});
    EXPECT_EQ(run.Find("name", "StreamValue")["param"], 718);
}

TEST_F(HostProgramTest, TellsAndDismissesErrorBoxes) {
    const HostRun run = Run("0 719\n3584 5\n0 719\n");
    EXPECT_EQ(run.program.exitCode, 0);
    EXPECT_EQ(run.Count("event", "box"), 2U);
    EXPECT_EQ(run.Find("event", "box")["title"], "ORVA Error");
    EXPECT_EQ(run.Count("name", "StreamValue"), 2U);
    EXPECT_EQ(run.Count("name", "VolumeChanged"), 2U) << "the script goes on";
}

TEST_F(HostProgramTest, RunsForTheTimeGiven) {
    const HostRun run = Run("", {"--seconds", "0.7"});
    EXPECT_EQ(run.program.exitCode, 0);
    EXPECT_GE(run.Find("name", "Close")["seconds"].get<double>(), 0.7);
    const HostRun waiting = Run("wait 0.5\n3584 1\n");
    EXPECT_GE(waiting.Find("name", "Volume")["seconds"].get<double>(), 0.5);
}

TEST_F(HostProgramTest, StartsAndClosesAgainAndAgain) {
    const HostRun run = Run("", {"--cycles", "20"});
    EXPECT_EQ(run.program.exitCode, 0);
    EXPECT_EQ(run.Count("event", "unloaded"), 20U);
    EXPECT_EQ(run.Count("name", "Closing"), 20U);
}

constexpr std::size_t kHeader = 46; // bytes before the samples of a recording

/// A recording that never looks like itself at another place.
std::vector<std::uint8_t> ReceiverInput(std::uint32_t samples) {
    LittleEndianBytes bytes;
    bytes.Text("RIFF").Number(2 * samples + 38, 4).Text("WAVEfmt ").Number(18, 4);
    bytes.Raw(FormatBytes(18, {1, 1, 64000, 16})).Text("data").Number(2 * samples, 4);
    std::uint32_t state = 1;
    for (std::uint32_t i = 0; i < samples; ++i) {
        state = state * 1664525 + 1013904223;
        bytes.Number(state >> 20, 2);
    }
    return bytes.Bytes();
}

TEST_F(HostProgramTest, WorksTheRealPluginsRecordingAndPlayback) {
    constexpr std::uint32_t kSamples = 320000;
    const std::string input = folder.Write("in.if.wav", ReceiverInput(kSamples));
    _putenv_s("ORVA_RECEIVER_RECORDING", input.c_str());
    _putenv_s("ORVA_RECEIVER_SPEED", "2");
    _putenv_s("ORVA_RECEIVER_END", "stop");
    const std::string take = folder.Path("first take");
    const std::string stereo = folder.Write("stereo.wav", LittleEndianBytes()
                                                              .Text("RIFF")
                                                              .Number(42, 4)
                                                              .Text("WAVEfmt ")
                                                              .Number(18, 4)
                                                              .Raw(FormatBytes(18, {1, 2, 48000, 16}))
                                                              .Text("data")
                                                              .Number(4, 4)
                                                              .Number(0, 4)
                                                              .Bytes());
    const HostRun run =
        Run("mode orva\nrecord if " + take + "\nwait 0.3\nplay " + input +
                "\npause\nresume\nwait 0.1\nstop\nstop\n" // no file is played while one is recorded
                "record if " +
                take +
                ".if.wav\n" // it is there: the answer is no
                "play " +
                stereo + "\nplay " + take +
                ".if.wav\nwait 0.1\nseek 2000\nstep 1\nstop\n"
                "record audio " +
                take + "\nstop\n",
            {"--device", "K7USB", "--libraries", ORVA_RECEIVER_FOLDER, "--answer", "16385=7"}, ORVA_PLUGIN);
    for (const char* name : {"ORVA_RECEIVER_RECORDING", "ORVA_RECEIVER_SPEED", "ORVA_RECEIVER_END"}) {
        _putenv_s(name, "");
    }
    EXPECT_EQ(run.program.exitCode, 0) << run.program.errors;
    std::vector<std::string> done;
    for (const Json& line : run.lines) {
        if (line.value("event", "") == "file") {
            done.push_back(line["command"].get<std::string>() + (line["done"].get<bool>() ? "" : ": no"));
        }
    }
    EXPECT_EQ(done, (Codes{"record if", "play: no", "pause", "resume", "stop", "stop: no", "record if: no",
                           "play: no", "play", "seek", "step", "stop", "record audio", "stop"}));
    EXPECT_EQ(run.Find("event", "box")["title"], "Overwrite existing file?");
    EXPECT_EQ(run.Find("event", "box")["answer"], "No");
    Codes values;
    for (const std::string& code : run.Codes("plugin")) {
        if (code.starts_with("16385 ")) {
            values.push_back(code);
        }
    }
    EXPECT_EQ(values, (Codes{"16385 0", "16385 2048", "16385 7", "16385 7"}));

    // What was recorded is what the receiver gave, in one piece.
    const std::string given = ReadWholeFile(input).substr(kHeader);
    const std::string recorded = ReadWholeFile(folder.Path("first take.if.wav"));
    ASSERT_GT(recorded.size(), kHeader + 20000);
    EXPECT_NE(given.find(recorded.substr(kHeader)), std::string::npos);
    EXPECT_EQ(recorded.size() % 4800, kHeader) << "whole blocks";
    EXPECT_EQ(ReadWholeFile(folder.Path("first take.wav")).size(), kHeader) << "no voice came";
}

TEST_F(HostProgramTest, WritesOverAFileWhenTold) {
    const std::string file = folder.Write("x.if.wav", "precious");
    const HostRun run = Run("record if " + file + "\nstop\n", {"--overwrite"}, ORVA_PLUGIN);
    EXPECT_EQ(run.program.exitCode, 0) << run.program.errors;
    EXPECT_EQ(run.Find("answer", "Yes")["title"], "Overwrite existing file?");
    EXPECT_EQ(ReadWholeFile(file).substr(0, 4), "RIFF");
}

TEST_F(HostProgramTest, CountsWhatItHolds) {
    const HostRun run = Run("", {"--cycles", "12"});
    EXPECT_EQ(run.Count("event", "resources"), 3U) << "after 1, 10 and the last";
    const Json last = run.Find("cycle", 12);
    EXPECT_GT(last["handles"], 0);
    EXPECT_GT(last["windows"], 0) << "its own";
    EXPECT_GT(last["graphicsObjects"], 0);
    EXPECT_GT(last["heapBlocks"], 0);
    EXPECT_GT(last["threads"], 0);
    EXPECT_GT(last["memory"], 65536);
}

TEST_F(HostProgramTest, MayEndWithoutAClose) {
    const HostRun run = Run("3584 5\n", {"--abandon"});
    EXPECT_EQ(run.program.exitCode, 0);
    EXPECT_EQ(run.lines.back()["event"], "abandoned");
    EXPECT_EQ(run.Count("name", "Closing"), 0U);
}

TEST_F(HostProgramTest, APluginThatIsAbandonedWhileItDecodesEndsWithTheProcess) {
    HostRun run;
    folder.Write("noise.if.wav", WavBytes(std::vector<std::int16_t>(64000, 1000), 64000));
    _putenv_s("ORVA_RECEIVER_RECORDING", folder.Path("noise.if.wav").c_str());
    _putenv_s("ORVA_RECEIVER_END", "loop");
    for (const char* instances : {"1", "3"}) {
        run.program =
            RunProgram(ORVA_HOST_PROGRAM, folder,
                       {ORVA_PLUGIN, "--hidden", "--device", "K7USB", "--libraries", ORVA_RECEIVER_FOLDER,
                        "--script", "", "--seconds", "0.3", "--abandon", "--instances", instances});
        EXPECT_EQ(run.program.exitCode, 0);
        EXPECT_NE(run.program.output.find("abandoned"), std::string::npos);
        EXPECT_NE(run.program.output.find("MuteChanged"), std::string::npos) << "it had started";
    }
    _putenv_s("ORVA_RECEIVER_RECORDING", "");
    _putenv_s("ORVA_RECEIVER_END", "");
}

TEST_F(HostProgramTest, FailsOnABadCommandAndAMissingPlugin) {
    const HostRun run = Run("jump\n3584 1\n");
    EXPECT_EQ(run.program.exitCode, 1);
    EXPECT_EQ(run.Count("event", "bad command"), 1U);
    EXPECT_EQ(run.Count("name", "Volume"), 1U) << "and goes on";
    const ProgramResult missing = RunProgram(ORVA_HOST_PROGRAM, folder, {"no-such.zem"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_EQ(missing.ErrorLines().size(), 1U);
    const ProgramResult foreign = RunProgram(ORVA_HOST_PROGRAM, folder, {"kernel32.dll"});
    EXPECT_EQ(foreign.exitCode, 1);
}

} // namespace

} // namespace orva::test
