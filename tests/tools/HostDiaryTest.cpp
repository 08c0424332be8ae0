/// Journals of the bench host, as they are read again.
#include "tools/orva-heard/HostDiary.h"

#include <sstream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace orva::test {

namespace {

using tools::HostDiary;

HostDiary Read(const std::string& text) {
    std::istringstream journal(text);
    return HostDiary(journal);
}

std::string FromPlugin(int code, const std::string& name, const std::string& data = "null") {
    return R"({"seconds":0.1,"from":"plugin","handle":1,"code":)" + std::to_string(code) + R"(,"name":")" +
           name + R"(","param":0,"size":0,"data":)" + data + ",\"answer\":0}\n";
}

std::string Report(const std::string& records) {
    return FromPlugin(4365, "TrunkingReport",
                      R"({"source":"K728 ORVA","count":1,"records":[)" + records + "]}");
}

TEST(HostDiary, CountsWhatThePluginSent) {
    const HostDiary diary =
        Read(FromPlugin(2304, "Mode") + FromPlugin(4352, "VolumeChanged") +
             R"({"from":"host","code":3584,"name":"Volume","param":1})" + "\n" + FromPlugin(2304, "Mode"));
    ASSERT_EQ(diary.Codes().size(), 2U);
    EXPECT_EQ(diary.Codes().at(2304).count, 2U);
    EXPECT_EQ(diary.Codes().at(2304).name, "Mode");
    EXPECT_EQ(diary.FromPlugin().size(), 3U);
    EXPECT_EQ(diary.FromPlugin(2304).size(), 2U);
    EXPECT_EQ(diary.FromPlugin(4352)[0]["name"], "VolumeChanged");
    EXPECT_TRUE(diary.FromPlugin(3584).empty()) << "that was the host";
}

TEST(HostDiary, KnowsWhoSpoke) {
    const std::string group = R"({"type":5,"nac":659,"source":56789,"destination":2147484882})";
    const std::string unit = R"({"type":5,"nac":659,"source":56789,"destination":1234})";
    const HostDiary diary =
        Read(Report(group) + Report(R"({"type":129,"nac":659})") + Report(unit + "," + group));
    EXPECT_EQ(diary.TrunkingRecords().size(), 4U);
    ASSERT_EQ(diary.Speakers().size(), 2U) << "each once";
    EXPECT_EQ(diary.Speakers()[0], (HostDiary::Speaker{659, 56789, 1234, true}));
    EXPECT_EQ(diary.Speakers()[1], (HostDiary::Speaker{659, 56789, 1234, false}));
}

TEST(HostDiary, IsCompleteWhenThePluginClosedAndWasUnloaded) {
    const std::string closing = FromPlugin(16384, "Closing");
    const std::string unloaded = "{\"event\":\"unloaded\"}\n";
    EXPECT_TRUE(Read(closing + unloaded).IsComplete());
    EXPECT_FALSE(Read(closing + "{\"event\":\"still loaded\"}\n").IsComplete());
    EXPECT_FALSE(Read(unloaded).IsComplete());
    EXPECT_FALSE(Read("").IsComplete());
}

TEST(HostDiary, RefusesWhatIsNoJournal) {
    EXPECT_THROW(Read("code 5\n"), std::invalid_argument);
    EXPECT_THROW(Read("[1]\n"), std::invalid_argument);
    EXPECT_THROW(Read(FromPlugin(2304, "Mode") + "{\"event\":"), std::invalid_argument) << "cut short";
}

} // namespace

} // namespace orva::test
