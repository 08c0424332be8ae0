#include "tests/support/receiver-library/ReceiverSettings.h"

#include <initializer_list>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace orva::test {

namespace {

using Variables = std::map<std::string, std::string>;

ReceiverSettings Read(const Variables& variables, const std::string& ini = "") {
    return ReceiverSettings::Read(
        [&](const std::string& name) {
            const auto found = variables.find(name);
            return found != variables.end() ? std::optional(found->second) : std::nullopt;
        },
        ini);
}

TEST(ReceiverSettings, PlaysNothingInRealTimeByDefault) {
    const ReceiverSettings settings = Read({});
    EXPECT_EQ(settings.recording, "");
    EXPECT_DOUBLE_EQ(settings.speed, 1);
    EXPECT_DOUBLE_EQ(settings.patience, 0.1);
    EXPECT_EQ(settings.failingStarts, 0U);
    EXPECT_EQ(settings.end, ReceiverEnd::Stop);
    EXPECT_FALSE(settings.isInverted);
    EXPECT_EQ(settings.memory, "");
    EXPECT_EQ(settings.log, "");
}

TEST(ReceiverSettings, ReadsTheFile) {
    const ReceiverSettings settings =
        Read({}, "recording = a b.wav \r\nspeed=0\nfailing_starts=3\nend=loop\n"
                 "patience=5\ninverted=1\nmemory=m.bin\nlog=l.txt\nother=1\nnothing\n");
    EXPECT_EQ(settings.recording, "a b.wav");
    EXPECT_DOUBLE_EQ(settings.speed, 0);
    EXPECT_DOUBLE_EQ(settings.patience, 5);
    EXPECT_EQ(settings.failingStarts, 3U);
    EXPECT_EQ(settings.end, ReceiverEnd::Loop);
    EXPECT_TRUE(settings.isInverted);
    EXPECT_EQ(settings.memory, "m.bin");
    EXPECT_EQ(settings.log, "l.txt");
}

TEST(ReceiverSettings, LetsTheEnvironmentComeFirst) {
    const ReceiverSettings settings = Read({{"ORVA_RECEIVER_SPEED", "2.5"},
                                            {"ORVA_RECEIVER_END", "silence"},
                                            {"ORVA_RECEIVER_FAILING_STARTS", "1"}},
                                           "speed = 4\nrecording = x.wav\nend = loop\n");
    EXPECT_DOUBLE_EQ(settings.speed, 2.5);
    EXPECT_EQ(settings.end, ReceiverEnd::Silence);
    EXPECT_EQ(settings.failingStarts, 1U);
    EXPECT_EQ(settings.recording, "x.wav");
}

TEST(ReceiverSettings, RefusesWhatMakesNoSense) {
    for (const char* line : {"speed=fast", "speed=-1", "speed=", "speed=inf", "failing_starts=x",
                             "patience=x", "end=never", "inverted=yes"}) {
        EXPECT_THROW(Read({}, line), std::invalid_argument) << line;
    }
}

} // namespace

} // namespace orva::test
