#include "toolkit/CommandLine.h"

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

TEST(CommandLine, HasNoArgumentsWithoutText) {
    EXPECT_EQ(CountArguments(nullptr), 0);
    EXPECT_EQ(CountArguments(""), 0);
    EXPECT_EQ(CountArguments(" \t\r\n "), 0);
    EXPECT_EQ(ArgumentOf(nullptr, 0), "");
    EXPECT_EQ(ArgumentOf("", 0), "");
    EXPECT_EQ(ArgumentOf("   ", 0), "");
}

TEST(CommandLine, SplitsAtWhiteSpace) {
    const char* line = "  host.exe\t/l   second\r\nthird ";
    EXPECT_EQ(CountArguments(line), 4);
    EXPECT_EQ(ArgumentOf(line, 0), "host.exe");
    EXPECT_EQ(ArgumentOf(line, 1), "/l");
    EXPECT_EQ(ArgumentOf(line, 2), "second");
    EXPECT_EQ(ArgumentOf(line, 3), "third");
}

TEST(CommandLine, QuotesGroup) {
    const char* line = "\"C:\\Program Files\\host.exe\" a\" b c\"d \"/l\"";
    EXPECT_EQ(CountArguments(line), 3);
    EXPECT_EQ(ArgumentOf(line, 0), "C:\\Program Files\\host.exe");
    EXPECT_EQ(ArgumentOf(line, 1), "a b cd");
    EXPECT_EQ(ArgumentOf(line, 2), "/l");
}

TEST(CommandLine, SkipsTwoQuotesInARow) {
    EXPECT_EQ(CountArguments("one a\"\"b \"c\"\"d e\" two"), 4);
    EXPECT_EQ(ArgumentOf("one a\"\"b two", 1), "ab");
    EXPECT_EQ(ArgumentOf("one \"c\"\"d e\" two", 1), "cd e");
}

TEST(CommandLine, AnOpenQuoteReachesTheEnd) {
    EXPECT_EQ(CountArguments("one \"two three"), 2);
    EXPECT_EQ(ArgumentOf("one \"two three", 1), "two three");
}

TEST(CommandLine, IsEmptyOutsideTheArguments) {
    EXPECT_EQ(ArgumentOf("one two", 2), "");
    EXPECT_EQ(ArgumentOf("one two", 1000), "");
    EXPECT_EQ(ArgumentOf("one two", -1), "");
}

TEST(CommandLine, CutsAnArgumentAt4095Characters) {
    const std::string longest(4095, 'x');
    const std::string line = "host " + longest + "yz \"" + std::string(5000, 'q') + "\" last";
    EXPECT_EQ(CountArguments(line.c_str()), 4);
    EXPECT_EQ(ArgumentOf(("host " + longest).c_str(), 1), longest);
    EXPECT_EQ(ArgumentOf(line.c_str(), 1), longest);
    EXPECT_EQ(ArgumentOf(line.c_str(), 2), std::string(4095, 'q'));
    EXPECT_EQ(ArgumentOf(line.c_str(), 3), "last");
}

} // namespace
} // namespace orva::toolkit
