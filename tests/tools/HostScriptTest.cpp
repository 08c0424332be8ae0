#include "tools/orva-host/HostScript.h"

#include "tests/support/TemporaryFolder.h"
#include "tools/orva-host/CommandSource.h"
#include "tools/orva-host/HostOptions.h"

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orva::tools {

namespace {

HostCommand Parsed(const std::string& line) {
    return HostCommand::Parse(line).value();
}

TEST(HostScript, ReadsNumbersOf32Bits) {
    EXPECT_EQ(ParseNumber("0"), 0U);
    EXPECT_EQ(ParseNumber("4294967295"), 0xFFFFFFFFU);
    EXPECT_EQ(ParseNumber("-1"), 0xFFFFFFFFU);
    EXPECT_EQ(ParseNumber("-2147483648"), 0x80000000U);
    EXPECT_EQ(ParseNumber("0x80000000"), 0x80000000U);
    EXPECT_EQ(ParseNumber("010"), 10U) << "decimal, whatever the zero";
    for (const char* text : {"", "-", "4294967296", "-2147483649", "12a", "x12", "0xg", "1.5", "+1", " 1",
                             "0x", "99999999999999999999", "1x2"}) {
        EXPECT_FALSE(ParseNumber(text)) << text;
    }
}

TEST(HostScript, ReadsCodeParamAndData) {
    EXPECT_EQ(Parsed("2304 19").code, 2304);
    EXPECT_EQ(Parsed("2304 19").param, 19U);
    EXPECT_TRUE(Parsed("2304 19").data.empty());
    EXPECT_EQ(Parsed("  0x100   1 # on").code, 256);
    EXPECT_EQ(Parsed("0").param, 0U);
    EXPECT_EQ(Parsed("2304 0 2 19").data, (std::vector<std::uint32_t>{2, 19}));
    EXPECT_EQ(Parsed("-5").code, -5);
    EXPECT_EQ(Parsed("close").code, 16384);
    EXPECT_FALSE(Parsed("close").hostHandle);
    EXPECT_EQ(Parsed("@7 close").hostHandle, 7U);
    EXPECT_EQ(Parsed("@7 3584 12").param, 12U);
}

TEST(HostScript, ReadsWaits) {
    EXPECT_EQ(Parsed("wait 1.5").kind, HostCommand::Kind::Wait);
    EXPECT_DOUBLE_EQ(Parsed("wait 1.5").seconds, 1.5);
    EXPECT_DOUBLE_EQ(Parsed("wait 0").seconds, 0);
}

TEST(HostScript, NamesTheCodesOfScanning) {
    EXPECT_EQ(Parsed("tune 155000000").code, 2048);
    EXPECT_EQ(Parsed("@7 tune 155000000").param, 155000000U);
    EXPECT_EQ(Parsed("@7 tune 155000000").hostHandle, 7U);
    EXPECT_EQ(Parsed("scan on").code, 3840);
    EXPECT_EQ(Parsed("scan on").param, 1U);
    EXPECT_EQ(Parsed("scan off").param, 0U);
    EXPECT_EQ(Parsed("mode orva").code, 2304);
    EXPECT_EQ(Parsed("mode orva").param, 19U);
    EXPECT_TRUE(Parsed("mode orva").data.empty());
    EXPECT_EQ(Parsed("mode fm").param, 2U);
    EXPECT_EQ(Parsed("mode auto").data, (std::vector<std::uint32_t>{2, 19}));
}

TEST(HostScript, NamesTheTypesOfSquelch) {
    using Data = std::vector<std::uint32_t>;
    EXPECT_EQ(Parsed("squelch none").code, 2817);
    EXPECT_EQ(Parsed("squelch none").param, 0U);
    EXPECT_EQ(Parsed("squelch none").data, Data(7));
    EXPECT_EQ(Parsed("squelch level 30").param, 1U);
    EXPECT_EQ(Parsed("squelch level 30").data, (Data{30, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Parsed("squelch noise 40").param, 2U);
    EXPECT_EQ(Parsed("squelch noise 40").data, (Data{0, 40, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Parsed("squelch ctcss 67").param, 4U);
    EXPECT_EQ(Parsed("squelch ctcss 114.8").data, (Data{0, 0, 114800, 0, 0, 0, 0}));
    EXPECT_EQ(Parsed("squelch ctcss 64.7").data[2], 64699U) << "as it is compared";
    EXPECT_EQ(Parsed("squelch ctcss 79.7").data[2], 79700U);
    EXPECT_EQ(Parsed("squelch voice 50").param, 256U);
    EXPECT_EQ(Parsed("squelch voice 50").data, (Data{0, 0, 0, 0, 0, 50, 0}));
    EXPECT_EQ(Parsed("squelch dcs 023").param, 512U);
    EXPECT_EQ(Parsed("squelch dcs 023").data, (Data{0, 0, 0, 0, 0, 0, 19}));
    EXPECT_EQ(Parsed("squelch dcs -023").data, (Data{0, 0, 0, 0, 0, 0, 0xFFFFFFEDU}));
    EXPECT_EQ(Parsed("squelch closed").code, 2818);
    EXPECT_EQ(Parsed("squelch closed").param, 1U);
    EXPECT_EQ(Parsed("squelch open").param, 0U);
    EXPECT_TRUE(Parsed("squelch open").data.empty());
}

TEST(HostScript, ReadsRecordingAndPlayback) {
    using ui::FileCommand;
    EXPECT_EQ(Parsed("record if call").kind, HostCommand::Kind::File);
    EXPECT_EQ(Parsed("record if call").file, FileCommand::RecordIf);
    EXPECT_EQ(Parsed("record audio call").file, FileCommand::RecordAudio);
    EXPECT_EQ(Parsed("@3 record if  two  words \r# a call").text, "two  words");
    EXPECT_EQ(Parsed("@3 record if call").hostHandle, 3U);
    EXPECT_EQ(Parsed("play x.if.wav").file, FileCommand::Play);
    EXPECT_EQ(Parsed("play x.if.wav").text, "x.if.wav");
    EXPECT_TRUE(Parsed("play x.if.wav").HasPath());
    EXPECT_EQ(Parsed("seek 96000").file, FileCommand::Seek);
    EXPECT_EQ(Parsed("seek 96000").text, "96000");
    EXPECT_FALSE(Parsed("seek 96000").HasPath());
    EXPECT_EQ(Parsed("step -2").file, FileCommand::Step);
    EXPECT_EQ(Parsed("step -2").text, "-2");
    EXPECT_EQ(Parsed("seek 0x100").text, "256") << "the window takes decimal numbers alone";
    EXPECT_EQ(Parsed("step 0xFFFFFFFE").text, "-2");
    EXPECT_EQ(Parsed("pause").file, FileCommand::Pause);
    EXPECT_EQ(Parsed("resume").file, FileCommand::Resume);
    EXPECT_EQ(Parsed("stop").file, FileCommand::Stop);
}

TEST(HostScript, TheScanTunesToTenChannels) {
    CommandSource commands(ORVA_SCAN_SCRIPT);
    int tuned = 0;
    bool isOn = false;
    double seconds = 0.0;
    while (const auto command = commands.Next()) {
        tuned += command->code == 2048 ? 1 : 0;
        isOn = command->code == 3840 ? command->param != 0 : isOn;
        EXPECT_TRUE(command->code != 2048 || isOn);
        seconds += command->seconds;
    }
    EXPECT_TRUE(commands.IsAtEnd());
    EXPECT_EQ(tuned, 10);
    EXPECT_FALSE(isOn);
    EXPECT_LE(seconds, 20.0) << "what the recording lasts";
}

TEST(HostScript, SkipsEmptyLinesAndRemarks) {
    for (const char* line : {"", "   ", "\t\r", "# 2304 19", "  #"}) {
        EXPECT_FALSE(HostCommand::Parse(line)) << line;
    }
}

TEST(HostScript, RefusesWhatItDoesNotUnderstand) {
    for (const char* line : {"volume 12",      "3584 loud",
                             "2304 0 2 x",     "wait",
                             "wait x",         "wait -1",
                             "wait 1 2",       "wait inf",
                             "wait nan",       "@",
                             "@x 1",           "@7",
                             "close 1",        "2304,19",
                             "tune",           "tune x",
                             "scan",           "scan 1",
                             "mode am",        "mode",
                             "squelch",        "squelch tone",
                             "squelch noise",  "squelch ctcss x",
                             "squelch dcs 9",  "squelch dcs",
                             "squelch dcs -",  "squelch dcs 1000",
                             "squelch open 1", "record",
                             "record if",      "record raw x",
                             "play",           "play #",
                             "seek",           "seek x",
                             "step",           "stop now",
                             "pause 1"}) {
        EXPECT_THROW(HostCommand::Parse(line), std::invalid_argument) << line;
    }
}

TEST(CommandSource, HandsOutAFileLineByLine) {
    const test::TemporaryFolder folder;
    CommandSource source(folder.Write("script", "3584 1\n\n# no\nwait 2\nfoo\n3584 2"));
    EXPECT_FALSE(source.IsAtEnd());
    EXPECT_EQ(source.Next()->param, 1U);
    EXPECT_EQ(source.Next()->kind, HostCommand::Kind::Wait);
    EXPECT_THROW(source.Next(), std::invalid_argument);
    EXPECT_EQ(source.Next()->param, 2U) << "goes on after a bad line";
    EXPECT_TRUE(source.IsAtEnd());
    EXPECT_FALSE(source.Next());
}

TEST(CommandSource, IsEmptyWithoutAScript) {
    CommandSource source("");
    EXPECT_TRUE(source.IsAtEnd());
    EXPECT_FALSE(source.Next());
    EXPECT_THROW(CommandSource("no/such/file"), std::runtime_error);
}

/// Reads the options after the program's name and a library's.
bool Read(std::initializer_list<const char*> words, HostOptions& options, int& exitCode) {
    std::vector<const char*> arguments = {"orva-host", "/plugin.zem"};
    arguments.insert(arguments.end(), words);
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    const bool isRead =
        ReadHostOptions(static_cast<int>(arguments.size()), arguments.data(), options, exitCode);
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    return isRead;
}

TEST(HostOptions, ReadsEverything) {
    HostOptions options;
    int exitCode = -1;
    ASSERT_TRUE(Read({"--device",
                      "K7USB",
                      "--serial",
                      "12345678",
                      "--handle",
                      "9",
                      "--instances",
                      "16",
                      "--cycles",
                      "3",
                      "--seconds",
                      "2.5",
                      "--script",
                      "s.txt",
                      "--log",
                      "l.txt",
                      "--audio",
                      "a.wav",
                      "--hidden",
                      "--refuse",
                      "--answer",
                      "2048=155000000",
                      "--answer",
                      "256=0x1",
                      "--on",
                      "4352=close",
                      "--on",
                      "4352=@3 3584 1",
                      "--no-record",
                      "--libraries",
                      "r"},
                     options, exitCode));
    EXPECT_EQ(options.library, "/plugin.zem");
    EXPECT_EQ(options.deviceType, "K7USB");
    EXPECT_EQ(options.serialNumber, "12345678");
    EXPECT_EQ(options.firstHandle, 9U);
    EXPECT_EQ(options.instances, 16U);
    EXPECT_EQ(options.cycles, 3U);
    EXPECT_DOUBLE_EQ(options.seconds, 2.5);
    EXPECT_EQ(options.script, "s.txt");
    EXPECT_EQ(options.log, "l.txt");
    EXPECT_EQ(options.audio, "a.wav");
    EXPECT_EQ(options.libraries, "r");
    EXPECT_TRUE(options.isHidden);
    EXPECT_TRUE(options.refusesAll);
    EXPECT_FALSE(options.hasRecord);
    EXPECT_EQ(options.answers, (std::map<std::uint32_t, std::uint32_t>{{256, 1}, {2048, 155000000}}));
    ASSERT_EQ(options.reactions.size(), 1U);
    ASSERT_EQ(options.reactions[4352].size(), 2U);
    EXPECT_EQ(options.reactions[4352][0].code, 16384);
    EXPECT_EQ(options.reactions[4352][1].hostHandle, 3U);
}

TEST(HostOptions, RefusesWhatMakesNoSense) {
    for (const std::initializer_list<const char*>& words :
         {std::initializer_list<const char*>{"--answer", "2048"},
          {"--answer", "x=1"},
          {"--answer", "2048=x"},
          {"--on", "close"},
          {"--on", "4352=wait 1"},
          {"--on", "4352=jump"},
          {"--on", "4352="},
          {"--no-such"}}) {
        HostOptions options;
        int exitCode = 0;
        EXPECT_FALSE(Read(words, options, exitCode)) << *words.begin();
        EXPECT_NE(exitCode, 0);
    }
    HostOptions options;
    int exitCode = -1;
    EXPECT_FALSE(Read({"--help"}, options, exitCode));
    EXPECT_EQ(exitCode, 0);
}

} // namespace

} // namespace orva::tools
