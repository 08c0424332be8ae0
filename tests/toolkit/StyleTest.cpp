#include "tests/toolkit/WindowSupport.h"

#include <algorithm>
#include <memory>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using Entries = EventLog::Entries;

TEST(Style, ANewRootHasTheDefaults) {
    const TmyControl root(nullptr);
    EXPECT_EQ(root.GetStyleValue(StyleValue::WindowColor), 0x636363u);
    EXPECT_EQ(root.GetStyleValue(StyleValue::BackColor), 0u);
    EXPECT_EQ(root.GetStyleValue(StyleValue::TextColor), 0xFFFFFFu);
    EXPECT_EQ(root.GetStyleValue(StyleValue::DisabledTextColor), 0x888888u);
    EXPECT_EQ(root.GetStyleValue(StyleValue::BorderWidth), 3u);
    EXPECT_EQ(root.GetStyleValue(StyleValue::BorderStyle), 0u);
    EXPECT_EQ(root.GetStyleValue(StyleValue::Brightness), 100u);
    EXPECT_EQ(root.GetStyleValue(static_cast<StyleValue>(7)), 0u);
    EXPECT_EQ(root.GetStyleValue(StyleValue::Reserved), 0xFF000000u);
}

TEST(Style, EachSetterHasItsIndex) {
    TmyControl control(nullptr);
    control.SetWindowColor(10);
    control.SetBackColor(11);
    control.SetTextColor(12);
    control.SetDisabledTextColor(13);
    control.SetBorderWidth(14);
    control.SetBorderStyle(15);
    control.SetBrightness(16);
    for (std::uint32_t index = 0; index <= 6; ++index) {
        EXPECT_EQ(control.GetStyleValue(static_cast<StyleValue>(index)), 10 + index) << index;
    }
    control.SetStyleValue(static_cast<StyleValue>(7), 17);
    control.SetStyleValue(StyleValue::Reserved, 18);
    EXPECT_EQ(control.GetStyleValue(static_cast<StyleValue>(7)), 17u);
    EXPECT_EQ(control.GetStyleValue(StyleValue::Reserved), 18u);
}

class SharedStyle : public ::testing::Test {
protected:
    EventLog log{{"SetStyleValue", "SetBackColor", "SetBorderWidth", "InvalidateRegion"}};
    RecordingControl root{log, "root", nullptr};
    RecordingControl child{log, "child", &root};
    RecordingControl grandchild{log, "grandchild", &child};
};

TEST_F(SharedStyle, ChildrenShareTheirParents) {
    EXPECT_TRUE(child.SharesStyleWith(root));
    EXPECT_TRUE(grandchild.SharesStyleWith(root));
    const TmyControl other(nullptr);
    EXPECT_FALSE(other.SharesStyleWith(root));
    grandchild.SetBackColor(0x123456);
    EXPECT_EQ(root.GetStyleValue(StyleValue::BackColor), 0x123456u);
    EXPECT_EQ(other.GetStyleValue(StyleValue::BackColor), 0u);
}

TEST_F(SharedStyle, EachSharerIsToldGenericallyThenSpecificallyAndRepaints) {
    child.SetStyleValue(StyleValue::BackColor, 5);
    const Entries entries = log.Take();
    for (const std::string name : {"root", "child", "grandchild"}) {
        std::vector<std::string> own;
        for (const std::string& entry : entries) {
            if (entry.rfind(name + '.', 0) == 0) {
                own.push_back(entry);
            }
        }
        const auto generic = std::find(own.begin(), own.end(), name + ".SetStyleValue(1,5)");
        const auto specific = std::find(own.begin(), own.end(), name + ".SetBackColor(5)");
        ASSERT_NE(generic, own.end()) << name;
        ASSERT_NE(specific, own.end()) << name;
        EXPECT_LT(generic, specific) << name;
        EXPECT_NE(std::find(specific, own.end(), name + ".InvalidateRegion()"), own.end()) << name;
    }
}

TEST_F(SharedStyle, TheValueIsStoredBeforeAnyoneIsTold) {
    std::uint32_t seen = 0;
    root.styleTold = [&](StyleValue index) { seen = root.GetStyleValue(index); };
    grandchild.SetStyleValue(StyleValue::BorderWidth, 9);
    EXPECT_EQ(seen, 9u);
}

TEST_F(SharedStyle, AnUnchangedValueTellsNobody) {
    child.SetBorderWidth(3);
    EXPECT_EQ(log.Take(),
              (Entries{"child.SetBorderWidth(3)", "child.SetStyleValue(4,3)"})); // the calls as such
}

TEST_F(SharedStyle, UnsharingGivesARecordOfOnesOwn) {
    child.SetStyleValue(StyleValue::BackColor, 7, true);
    EXPECT_FALSE(child.SharesStyleWith(root));
    EXPECT_FALSE(child.SharesStyleWith(grandchild));
    EXPECT_TRUE(grandchild.SharesStyleWith(root));
    EXPECT_EQ(child.GetStyleValue(StyleValue::BackColor), 7u);
    EXPECT_EQ(root.GetStyleValue(StyleValue::BackColor), 0u);
    EXPECT_EQ(child.GetStyleValue(StyleValue::TextColor), 0xFFFFFFu); // copied
    for (const std::string& entry : log.Take()) {
        // The ancestors only hear of the area to repaint.
        EXPECT_TRUE(entry.rfind("child.", 0) == 0 || entry == "root.InvalidateRegion()") << entry;
    }
    const TmyControl later(&child);
    EXPECT_TRUE(later.SharesStyleWith(child));
    root.SetTextColor(0x11);
    EXPECT_EQ(grandchild.GetStyleValue(StyleValue::TextColor), 0x11u);
    EXPECT_EQ(child.GetStyleValue(StyleValue::TextColor), 0xFFFFFFu);
}

TEST_F(SharedStyle, ARecordThatNobodySharesIsKept) {
    child.SetStyleValue(StyleValue::BackColor, 7, true);
    const TmyControl later(&child);
    child.SetStyleValue(StyleValue::BackColor, 8, true); // shared again: leaves it to the later one
    EXPECT_FALSE(later.SharesStyleWith(child));
    EXPECT_EQ(later.GetStyleValue(StyleValue::BackColor), 7u);
    TmyControl alone(nullptr);
    alone.SetStyleValue(StyleValue::TextColor, 1);
    alone.SetStyleValue(StyleValue::BackColor, 2, true);
    EXPECT_EQ(alone.GetStyleValue(StyleValue::TextColor), 1u);
}

TEST_F(SharedStyle, ASharerThatLeavesWhenToldKeepsNobodyFromHearingIt) {
    child.styleTold = [&](StyleValue index) {
        if (index == StyleValue::BackColor) {
            child.styleTold = nullptr;
            child.SetStyleValue(StyleValue::TextColor, 1, true);
        }
    };
    log.Take();
    root.SetStyleValue(StyleValue::BackColor, 7);
    const Entries entries = log.Take();
    EXPECT_NE(std::find(entries.begin(), entries.end(), "grandchild.SetBackColor(7)"), entries.end());
    EXPECT_FALSE(child.SharesStyleWith(root));
    EXPECT_TRUE(grandchild.SharesStyleWith(root));
}

TEST_F(SharedStyle, ASharerThatIsDeletedWhenAnotherIsToldIsNotCalled) {
    auto* doomed = new RecordingControl(log, "doomed", &root);
    child.styleTold = [&](StyleValue) {
        delete doomed;
        child.styleTold = nullptr;
    };
    log.Take();
    root.SetStyleValue(StyleValue::BackColor, 7);
    const Entries entries = log.Take();
    EXPECT_EQ(std::find(entries.begin(), entries.end(), "doomed.SetBackColor(7)"), entries.end());
    EXPECT_NE(std::find(entries.begin(), entries.end(), "grandchild.SetBackColor(7)"), entries.end());
}

} // namespace
} // namespace orva::toolkit
