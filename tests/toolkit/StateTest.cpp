#include "tests/toolkit/WindowSupport.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using Entries = EventLog::Entries;

bool Has(const Entries& entries, const std::string& entry) {
    return std::find(entries.begin(), entries.end(), entry) != entries.end();
}

TEST(State, ANewControlForwardsKeysAndNothingElse) {
    const TmyControl control(nullptr);
    for (std::int32_t bit = 0; bit < 8; ++bit) {
        EXPECT_EQ(control.HasState(static_cast<ControlState>(bit)), bit == 7) << bit;
    }
    EXPECT_EQ(control.GetAlignment(), Alignment::None);
    EXPECT_EQ(control.GetFont(), InheritedFont());
    EXPECT_EQ(control.GetCursor(), nullptr);
    EXPECT_EQ(control.Window(), nullptr);
    EXPECT_EQ(control.GetParent(), nullptr);
    EXPECT_TRUE(control.IsEnabled());
    EXPECT_TRUE(control.IsVisible());
}

class States : public ::testing::Test {
protected:
    States() {
        panel = new RecordingControl(log, "panel", &top, Placement{10, 10, 100, 100});
        leaf = new RecordingControl(log, "leaf", panel, Placement{5, 5, 20, 20});
        sub = new RecordingComponent(log, "sub", panel, "", kChild, DWORD{0}, Placement{40, 5, 20, 20});
        Pump();
        log.Take();
    }

    EventLog log{{"SetParentEnabled", "OnEnableChanged", "OnVisibilityChanged", "Realign"}};
    RecordingComponent top{log, "top", nullptr, "", kPopup, DWORD{0}, kPlace};
    RecordingControl* panel;
    RecordingControl* leaf;
    RecordingComponent* sub;
};

// --- enabling ----------------------------------------------------------------------------------------------

TEST_F(States, DisablingTellsAllLevels) {
    panel->SetEnabled(false);
    const Entries entries = log.Take();
    EXPECT_TRUE(Has(entries, "leaf.SetParentEnabled(0)"));
    EXPECT_TRUE(Has(entries, "leaf.OnEnableChanged()"));
    EXPECT_TRUE(Has(entries, "sub.SetParentEnabled(0)"));
    EXPECT_FALSE(leaf->IsEnabled() || sub->IsEnabled() || panel->IsEnabled());
    EXPECT_FALSE(leaf->HasState(ControlState::Disabled));
    EXPECT_TRUE(leaf->HasState(ControlState::ParentDisabled));
    EXPECT_TRUE(top.IsEnabled());
    panel->SetEnabled(false);
    EXPECT_TRUE(log.Take().empty());
    panel->SetEnabled(true);
    EXPECT_TRUE(leaf->IsEnabled() && sub->IsEnabled());
}

TEST_F(States, EnablingDoesNotReachBelowAnotherDisabledLevel) {
    top.SetEnabled(false);
    panel->SetEnabled(false);
    top.SetEnabled(true);
    EXPECT_FALSE(leaf->IsEnabled());
    EXPECT_FALSE(panel->IsEnabled());
    panel->SetEnabled(true);
    EXPECT_TRUE(leaf->IsEnabled());
    top.SetEnabled(false);
    panel->SetEnabled(false);
    panel->SetEnabled(true); // its own state, but the window is still disabled
    EXPECT_FALSE(leaf->IsEnabled());
}

TEST_F(States, AComponentsStateIsThePlatforms) {
    top.SetEnabled(false);
    EXPECT_EQ(IsWindowEnabled(top.Window()), FALSE);
    EXPECT_TRUE(top.HasState(ControlState::Disabled));
    EnableWindow(top.Window(), TRUE);
    EXPECT_TRUE(top.IsEnabled());
    EXPECT_TRUE(leaf->IsEnabled());
}

TEST_F(States, NewControlsInheritDisabledAndGrey) {
    panel->SetEnabled(false);
    panel->SetGrey(true);
    const TmyControl later(panel);
    EXPECT_TRUE(later.HasState(ControlState::ParentDisabled));
    EXPECT_FALSE(later.HasState(ControlState::Disabled));
    EXPECT_TRUE(later.HasState(ControlState::Grey));
    const TmyControl below(leaf); // whose parent is only disabled through its own
    EXPECT_TRUE(below.HasState(ControlState::ParentDisabled));
    const TmyControl beside(&top);
    EXPECT_FALSE(beside.HasState(ControlState::ParentDisabled) || beside.HasState(ControlState::Grey));
}

TEST_F(States, GreyReachesAllLevels) {
    panel->SetGrey(true);
    EXPECT_TRUE(leaf->HasState(ControlState::Grey) && sub->HasState(ControlState::Grey));
    EXPECT_FALSE(top.HasState(ControlState::Grey));
    panel->SetGrey(false);
    EXPECT_FALSE(leaf->HasState(ControlState::Grey) || sub->HasState(ControlState::Grey));
}

// --- visibility --------------------------------------------------------------------------------------------

TEST_F(States, HidingTellsAllLevelsAndTheParentsLayout) {
    panel->SetVisible(false);
    const Entries entries = log.Take();
    EXPECT_TRUE(Has(entries, "panel.OnVisibilityChanged(0)"));
    EXPECT_TRUE(Has(entries, "leaf.OnVisibilityChanged(0)"));
    EXPECT_TRUE(Has(entries, "sub.OnVisibilityChanged(0)"));
    EXPECT_TRUE(Has(entries, "top.Realign()"));
    EXPECT_FALSE(panel->IsVisible() || leaf->IsVisible() || sub->IsVisible());
    EXPECT_FALSE(leaf->HasState(ControlState::Hidden));
    panel->SetVisible(false);
    EXPECT_TRUE(log.Take().empty());
    panel->SetVisible(true);
    EXPECT_TRUE(panel->IsVisible() && leaf->IsVisible() && sub->IsVisible());
}

TEST_F(States, AWindowBelowAHiddenControlIsHiddenWithIt) {
    panel->SetVisible(false);
    Pump();
    EXPECT_EQ(IsWindowVisible(sub->Window()), FALSE);
    panel->SetVisible(true);
    Pump();
    EXPECT_NE(IsWindowVisible(sub->Window()), FALSE);
    EXPECT_TRUE(sub->IsVisible());
    sub->SetVisible(false);
    Pump();
    panel->SetVisible(false);
    panel->SetVisible(true);
    Pump();
    EXPECT_EQ(IsWindowVisible(sub->Window()), FALSE); // hidden by itself
    panel->SetVisible(false);
    sub->SetVisible(true);
    Pump();
    EXPECT_EQ(IsWindowVisible(sub->Window()), FALSE);
    panel->SetVisible(true);
    Pump();
    EXPECT_NE(IsWindowVisible(sub->Window()), FALSE);
}

TEST_F(States, AWindowMadeBelowAHiddenControlIsHiddenWithIt) {
    panel->SetVisible(false);
    const TmyComponent later(panel, "", kChild, 0, {0, 0, 10, 10});
    EXPECT_EQ(IsWindowVisible(later.Window()), FALSE);
    panel->SetVisible(true);
    Pump();
    EXPECT_NE(IsWindowVisible(later.Window()), FALSE);
    EXPECT_TRUE(later.IsVisible());
}

TEST_F(States, AComponentsVisibilityFollowsWhenMessagesArePumped) {
    sub->SetVisible(false);
    EXPECT_EQ(IsWindowVisible(sub->Window()), FALSE);
    EXPECT_FALSE(sub->HasState(ControlState::Hidden));
    Pump();
    EXPECT_TRUE(sub->HasState(ControlState::Hidden));
    EXPECT_TRUE(Has(log.Take(), "sub.OnVisibilityChanged(0)"));
    sub->SetVisible(true);
    Pump();
    EXPECT_FALSE(sub->HasState(ControlState::Hidden));
}

TEST_F(States, TheFirstStateIsThatOfTheWindowStyle) {
    const TmyComponent hidden(&top, "", WS_CHILD, 0, {0, 0, 10, 10});
    EXPECT_TRUE(hidden.HasState(ControlState::Hidden));
    EXPECT_FALSE(top.HasState(ControlState::Hidden));
}

TEST_F(States, AnAlignedControlHasItsParentRealigned) {
    leaf->SetAlignment(Alignment::Top);
    log.Take();
    leaf->OnVisibilityChanged(true);
    EXPECT_EQ(log.Take(), (Entries{"leaf.OnVisibilityChanged(1)", "panel.Realign()"}));
    leaf->SetAlignment(Alignment::None);
    log.Take();
    leaf->OnVisibilityChanged(true);
    EXPECT_EQ(log.Take(), (Entries{"leaf.OnVisibilityChanged(1)"}));
}

TEST_F(States, TopLevelIsTheFirstWindowThatIsNoChild) {
    EXPECT_EQ(leaf->GetTopLevel(), &top);
    EXPECT_EQ(sub->GetTopLevel(), &top);
    EXPECT_EQ(top.GetTopLevel(), &top);
    TmyComponent owned(panel, "", kPopupHidden, 0, {300, 300, 20, 20});
    const TmyControl inside(&owned);
    EXPECT_EQ(owned.GetTopLevel(), &owned);
    EXPECT_EQ(owned.GetParent(), panel);
    EXPECT_EQ(GetWindow(owned.Window(), GW_OWNER), top.Window());
    TmyControl loose(nullptr);
    EXPECT_EQ(loose.GetTopLevel(), nullptr);
}

// --- fonts -------------------------------------------------------------------------------------------------

int HeightOf(HFONT font) {
    const HDC dc = ::GetDC(nullptr);
    const HGDIOBJ before = SelectObject(dc, font);
    TEXTMETRICA metrics{};
    GetTextMetricsA(dc, &metrics);
    SelectObject(dc, before);
    ::ReleaseDC(nullptr, dc);
    return metrics.tmHeight;
}

class Fonts : public States {
protected:
    Fonts() { log = EventLog({"SetFont"}); }
    ~Fonts() override {
        top.SetFont(InheritedFont());
        DeleteObject(small);
        DeleteObject(large);
    }

    HFONT small = CreateFontA(-11, 0, 0, 0, FW_NORMAL, 0, 0, 0, 0, 0, 0, 0, 0, "Arial");
    HFONT large = CreateFontA(-37, 0, 0, 0, FW_NORMAL, 0, 0, 0, 0, 0, 0, 0, 0, "Arial");
};

TEST_F(Fonts, AreInheritedThroughAllLevels) {
    auto* deep = new TmyControl(leaf);
    top.SetFont(large);
    for (const TmyControl* each :
         {static_cast<const TmyControl*>(panel), static_cast<const TmyControl*>(leaf),
          static_cast<const TmyControl*>(deep), static_cast<const TmyControl*>(sub)}) {
        EXPECT_EQ(each->GetFont(), InheritedFont());
        EXPECT_EQ(each->EffectiveFont(), large);
        EXPECT_EQ(each->TextHeight(), HeightOf(large));
    }
    EXPECT_EQ(log.Take(), (Entries{"top.SetFont(own)", "panel.SetFont(inherited)", "leaf.SetFont(inherited)",
                                   "sub.SetFont(inherited)"}));
    const TmyControl later(deep);
    EXPECT_EQ(later.EffectiveFont(), large);
    EXPECT_EQ(later.TextHeight(), HeightOf(large));
}

TEST_F(Fonts, AFontOfOnesOwnStopsTheInheritance) {
    panel->SetFont(small);
    log.Take();
    top.SetFont(large);
    EXPECT_EQ(log.Take(), (Entries{"top.SetFont(own)"}));
    EXPECT_EQ(leaf->EffectiveFont(), small);
    EXPECT_EQ(leaf->TextHeight(), HeightOf(small));
    EXPECT_EQ(top.TextHeight(), HeightOf(large));
    panel->SetFont(InheritedFont());
    EXPECT_EQ(leaf->EffectiveFont(), large);
    EXPECT_EQ(leaf->TextHeight(), HeightOf(large));
    panel->SetFont(InheritedFont());
}

std::vector<HFONT> fontsSet;

LRESULT CALLBACK FontOriginal(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_SETFONT) {
        fontsSet.push_back(reinterpret_cast<HFONT>(wParam));
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

TEST_F(Fonts, AComponentsWindowIsToldTheFontInForce) {
    sub->SetOriginal(FontOriginal);
    fontsSet.clear();
    top.SetFont(large);
    EXPECT_EQ(fontsSet, (std::vector<HFONT>{large}));
    sub->SetFont(small);
    EXPECT_EQ(fontsSet.back(), small);
    sub->SetFont(InheritedFont());
    EXPECT_EQ(fontsSet.back(), large);
}

// --- the caret ---------------------------------------------------------------------------------------------

TEST_F(Fonts, CaretCallsGoToTheWindowWithTheOffsetAdded) {
    log = EventLog({"CreateCaret", "ShowCaret", "SetCaretPos", "DestroyCaret"});
    leaf->SetFont(large);
    leaf->CreateCaret(2, -1, nullptr);
    const std::string height = std::to_string(HeightOf(large));
    EXPECT_EQ(log.Take(), (Entries{"leaf.CreateCaret(2,-1)", "panel.CreateCaret(2," + height + ")",
                                   "top.CreateCaret(2," + height + ")"}));
    leaf->SetCaretPos(3, 4);
    EXPECT_EQ(log.Take(),
              (Entries{"leaf.SetCaretPos(3,4)", "panel.SetCaretPos(8,9)", "top.SetCaretPos(18,19)"}));
    POINT place{};
    GetCaretPos(&place);
    EXPECT_TRUE(place.x == 18 && place.y == 19);
    leaf->ShowCaret(true);
    leaf->ShowCaret(false);
    EXPECT_EQ(log.Take(), (Entries{"leaf.ShowCaret(1)", "panel.ShowCaret(1)", "top.ShowCaret(1)",
                                   "leaf.ShowCaret(0)", "panel.ShowCaret(0)", "top.ShowCaret(0)"}));
    leaf->DestroyCaret();
    EXPECT_EQ(log.Take(), (Entries{"leaf.DestroyCaret()", "panel.DestroyCaret()", "top.DestroyCaret()"}));
    sub->CreateCaret(2, 10, nullptr); // a window's own goes no further
    EXPECT_EQ(log.Take(), (Entries{"sub.CreateCaret(2,10)"}));
    sub->SetCaretPos(1, 2);
    GetCaretPos(&place);
    EXPECT_TRUE(place.x == 1 && place.y == 2);
    sub->DestroyCaret();
}

} // namespace
} // namespace orva::toolkit
