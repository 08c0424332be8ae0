#include "toolkit/Trace.h"

#include "tests/toolkit/DebugOutput.h"
#include "toolkit/TmyObject.h"
#include "toolkit/TypeRegistry.h"

#include <cstdio>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

std::int64_t ticksNow = 0;
std::uint32_t threadNow = 0x1234;

/// An object that traces, a clock of 1000 ticks a second and a thread of the test's own.
class TraceTest : public ::testing::Test {
protected:
    void SetUp() override {
        before = Diagnostics();
        Diagnostics().ticks = [] { return ticksNow; };
        Diagnostics().ticksPerSecond = []() -> std::int64_t { return 1000; };
        Diagnostics().threadId = [] { return threadNow; };
        object.traceEnabled = 1;
        Trace(&object, -1000, "no indent"); // whatever a test before left
        output.Clear();
    }
    void TearDown() override {
        Trace(&object, -1000, "no indent");
        const auto keep = Diagnostics().output;
        Diagnostics() = before;
        Diagnostics().output = keep; // the output gives its own back
    }

    /// The text of a line: what stands behind the second tab.
    static std::string TextOf(const std::string& line) {
        const std::size_t tab = line.find('\t', line.find('\t') + 1);
        return tab == std::string::npos ? "" : line.substr(tab + 1);
    }
    std::string LastText() const {
        return output.Lines().empty() ? "(no line)" : TextOf(output.Lines().back());
    }

    DebugOutput output;
    TmyObject object;
    DiagnosticsPlatform before{};
};

/// The first lines of the process: the thread joins the line from the second thread on, and stays.
TEST_F(TraceTest, LineHasNumberTimeTypeAndObjectAndTheThreadFromTheSecondOneOn) {
    char address[32];
    std::snprintf(address, sizeof address, "%p", static_cast<void*>(&object));
    Trace(&object, 0, "first");
    ASSERT_EQ(output.Lines().size(), 1u);
    unsigned number = 0;
    ASSERT_EQ(std::sscanf(output.Lines()[0].c_str(), "%u:", &number), 1);

    ticksNow += 1234;
    Trace(&object, 0, "value %d", 7);
    ASSERT_EQ(output.Lines().size(), 2u);
    char expected[200];
    std::snprintf(expected, sizeof expected, "%4u: [    1234]\t<   unknown:%s>\tvalue 7", number + 1,
                  address);
    EXPECT_EQ(output.Lines()[1], expected);

    ticksNow += 1;
    threadNow = 0xABC;
    Trace(&object, 0, "other");
    std::snprintf(expected, sizeof expected, "%4u: [       1]\t<   unknown:%s-   abc>\tother", number + 2,
                  address);
    EXPECT_EQ(output.Lines().back(), expected);

    threadNow = 0x1234;
    Trace(&object, 0, "back");
    std::snprintf(expected, sizeof expected, "%4u: [       0]\t<   unknown:%s-  1234>\tback", number + 3,
                  address);
    EXPECT_EQ(output.Lines().back(), expected);
}

TEST_F(TraceTest, IsSilentUnlessTheObjectTraces) {
    Trace(nullptr, 0, "nobody");
    object.traceEnabled = 0;
    Trace(&object, 0, "nothing");
    EXPECT_TRUE(output.Lines().empty());
    object.traceEnabled = 1;
    Trace(&object, 0, "something");
    EXPECT_EQ(output.Lines().size(), 1u);
}

TEST_F(TraceTest, ObjectsCopyTheSwitchWhenTheyAreMade) {
    const std::uint32_t level = TraceLevel();
    SetTraceLevel(2);
    const TmyObject tracing;
    SetTraceLevel(0);
    const TmyObject silent;
    SetTraceLevel(level);
    EXPECT_EQ(tracing.traceEnabled, 2u);
    EXPECT_EQ(silent.traceEnabled, 0u);
}

TEST_F(TraceTest, PositiveIndentCountsForItsLineAndNegativeForTheNext) {
    Trace(&object, 2, "in");
    EXPECT_EQ(LastText(), "  in");
    Trace(&object, 0, "same");
    EXPECT_EQ(LastText(), "  same");
    Trace(&object, 3, "deeper");
    EXPECT_EQ(LastText(), "     deeper");
    Trace(&object, -4, "still deep");
    EXPECT_EQ(LastText(), "     still deep");
    Trace(&object, 0, "out");
    EXPECT_EQ(LastText(), " out");
}

TEST_F(TraceTest, IndentStaysWithin0And500) {
    Trace(&object, -7, "below");
    Trace(&object, 0, "none");
    EXPECT_EQ(LastText(), "none");
    Trace(&object, 499, "a");
    EXPECT_EQ(LastText(), std::string(499, ' ') + "a");
    Trace(&object, 5, "b");
    EXPECT_EQ(LastText(), std::string(500, ' ') + "b");
    Trace(&object, -1, "c");
    Trace(&object, 0, "d");
    EXPECT_EQ(LastText(), std::string(499, ' ') + "d");
}

TEST_F(TraceTest, TextIsCutAt1024CharactersWithItsEnd) {
    const std::string text(3000, 'x');
    Trace(&object, 0, "%s", text.c_str());
    EXPECT_EQ(LastText(), std::string(1023, 'x'));
    Trace(&object, 500, "%s", text.c_str());
    EXPECT_EQ(LastText(), std::string(500, ' ') + std::string(1023, 'x'));
}

TEST_F(TraceTest, OneTrailingLineEndIsCut) {
    Trace(&object, 0, "line\n");
    EXPECT_EQ(LastText(), "line");
    Trace(&object, 0, "two\n\n");
    EXPECT_EQ(LastText(), "two\n");
    Trace(&object, 0, "\n");
    EXPECT_EQ(LastText(), "");
    Trace(&object, 0, "%s", "");
    EXPECT_EQ(LastText(), "");
}

TEST_F(TraceTest, TimeWithoutACounterIsNoDivisionByZero) {
    Diagnostics().ticksPerSecond = []() -> std::int64_t { return 0; };
    Trace(&object, 0, "still a line");
    EXPECT_EQ(LastText(), "still a line");
}

class Named : public TmyObject {
public:
    Named() { RegisterType(this, TypeId::Panel, "Panel"); }
};
class Nameless : public TmyObject {
public:
    Nameless() { RegisterType(this, TypeId::FloatEdit, nullptr); }
};
class Unregistered : public TmyObject {};

TEST_F(TraceTest, NamesTheTypeOfTheRegistry) {
    CreateTypeRegistry();
    Named named;
    Nameless nameless;
    Unregistered unregistered;
    for (TmyObject* each : {static_cast<TmyObject*>(&named), static_cast<TmyObject*>(&nameless),
                            static_cast<TmyObject*>(&unregistered)}) {
        each->traceEnabled = 1;
        Trace(each, 0, "x");
    }
    DeleteTypeRegistry();
    ASSERT_EQ(output.Lines().size(), 3u);
    EXPECT_NE(output.Lines()[0].find("\t<     Panel:"), std::string::npos) << output.Lines()[0];
    EXPECT_NE(output.Lines()[1].find("\t<   Type:52:"), std::string::npos) << output.Lines()[1];
    EXPECT_NE(output.Lines()[2].find("\t<   unknown:"), std::string::npos) << output.Lines()[2];
}

TEST(PrintDebug, FormatsUpTo1023Characters) {
    const DebugOutput output;
    PrintDebug("Message %x\r\n", 0x10u);
    PrintDebug("%s", std::string(2000, 'y').c_str());
    ASSERT_EQ(output.Lines().size(), 2u);
    EXPECT_EQ(output.Lines()[0], "Message 10\r\n");
    EXPECT_EQ(output.Lines()[1], std::string(1023, 'y'));
}

} // namespace
} // namespace orva::toolkit
