#include "tests/toolkit/WindowSupport.h"

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using Entries = EventLog::Entries;

bool OnPath(const TmyControl* control) {
    return control->HasState(ControlState::Focused);
}

/// top > panel (windowless) > one, two (windowless)
///     > sub (a window) > three (windowless)
///     > four (a window)
class Focus : public ::testing::Test {
protected:
    Focus() {
        panel = new RecordingControl(log, "panel", &top, Placement{0, 0, 100, 50});
        one = new RecordingControl(log, "one", panel, Placement{0, 0, 40, 40});
        two = new RecordingControl(log, "two", panel, Placement{50, 0, 40, 40});
        sub = new RecordingComponent(log, "sub", &top, "", kChild, DWORD{0}, Placement{0, 60, 100, 40});
        three = new RecordingControl(log, "three", sub, Placement{0, 0, 30, 30});
        four = new RecordingComponent(log, "four", &top, "", kChild, DWORD{0}, Placement{110, 60, 50, 40});
        for (TmyControl* each : {static_cast<TmyControl*>(one), static_cast<TmyControl*>(two),
                                 static_cast<TmyControl*>(three), static_cast<TmyControl*>(four)}) {
            each->SetFocusable(true);
        }
        Pump();
        log.Take();
    }

    void Tab(bool backward = false) {
        BYTE keys[256] = {};
        keys[VK_SHIFT] = backward ? 0x80 : 0;
        SetKeyboardState(keys);
        const HWND focused = GetFocus();
        ASSERT_NE(focused, nullptr);
        SendMessageA(focused, WM_KEYDOWN, VK_TAB, 0);
        keys[VK_SHIFT] = 0;
        SetKeyboardState(keys);
    }

    /// Name of the control that has the focus, "" if none of the four.
    std::string Focused() const {
        const std::pair<const char*, TmyControl*> all[] = {
            {"one", one}, {"two", two}, {"three", three}, {"four", four}};
        std::string found;
        for (const auto& [name, control] : all) {
            if (OnPath(control)) {
                found += name;
            }
        }
        return found;
    }

    EventLog log{{"Focus"}};
    RecordingComponent top{log, "top", nullptr, "", kPopup, DWORD{0}, kPlace};
    RecordingControl* panel;
    RecordingControl* one;
    RecordingControl* two;
    RecordingComponent* sub;
    RecordingControl* three;
    RecordingComponent* four;
};

TEST_F(Focus, PathIsMarkedFromTheControlToTheTop) {
    one->SetFocus();
    EXPECT_TRUE(OnPath(one) && OnPath(panel) && OnPath(&top));
    EXPECT_FALSE(OnPath(two) || OnPath(sub) || OnPath(three) || OnPath(four));
    EXPECT_EQ(GetFocus(), top.Window());
    EXPECT_EQ(log.Take(), (Entries{"one.Focus(1)"}));
}

TEST_F(Focus, SiblingsLoseItAndAreTold) {
    one->SetFocus();
    log.Take();
    two->SetFocus();
    EXPECT_EQ(log.Take(), (Entries{"one.Focus(0)", "two.Focus(1)"}));
    EXPECT_TRUE(OnPath(two) && OnPath(panel) && OnPath(&top));
    EXPECT_FALSE(OnPath(one));
}

TEST_F(Focus, AnotherBranchLosesItRecursively) {
    one->SetFocus();
    log.Take();
    three->SetFocus();
    EXPECT_EQ(log.Take(), (Entries{"one.Focus(0)", "three.Focus(1)"}));
    EXPECT_FALSE(OnPath(one) || OnPath(panel));
    EXPECT_TRUE(OnPath(three) && OnPath(sub) && OnPath(&top));
    EXPECT_EQ(GetFocus(), sub->Window());
    two->SetFocus();
    EXPECT_EQ(log.Take(), (Entries{"three.Focus(0)", "two.Focus(1)"}));
    EXPECT_FALSE(OnPath(three) || OnPath(sub));
    EXPECT_EQ(GetFocus(), top.Window());
}

TEST_F(Focus, HasFocusAsksThePathAndThePlatform) {
    EXPECT_FALSE(one->HasFocus());
    one->SetFocus();
    EXPECT_TRUE(one->HasFocus());
    EXPECT_TRUE(panel->HasFocus()); // leads to it
    EXPECT_FALSE(two->HasFocus());
    EXPECT_TRUE(top.HasFocus());
    EXPECT_FALSE(sub->HasFocus());
    three->SetFocus();
    EXPECT_FALSE(top.HasFocus()); // a component asks the platform
    EXPECT_TRUE(sub->HasFocus());
    EXPECT_TRUE(three->HasFocus());
    const TmyComponent other(nullptr, "", kPopup, 0, {400, 100, 50, 50});
    ::SetFocus(other.Window());
    EXPECT_FALSE(three->HasFocus());
    EXPECT_TRUE(OnPath(three));
}

TEST_F(Focus, ControlsBelowNoWindowBearIt) {
    TmyControl loose(nullptr);
    TmyControl child(&loose);
    child.SetFocus();
    EXPECT_FALSE(child.HasFocus());
}

TEST_F(Focus, BackFromAChildIsToldToo) {
    panel->SetFocus();
    one->SetFocus();
    EXPECT_TRUE(OnPath(panel));
    panel->SetFocus();
    EXPECT_EQ(log.Take(), (Entries{"panel.Focus(1)", "one.Focus(1)", "one.Focus(0)", "panel.Focus(1)"}));
    EXPECT_FALSE(OnPath(one));
}

TEST_F(Focus, AWindowInTheBackgroundKeepsItsPath) {
    one->SetFocus();
    log.Take();
    const TmyComponent other(nullptr, "", kPopup, 0, {400, 100, 50, 50});
    ::SetFocus(other.Window());
    EXPECT_EQ(log.Take(), (Entries{"one.Focus(0)"}));
    EXPECT_TRUE(OnPath(one));
    ::SetFocus(top.Window());
    EXPECT_EQ(log.Take(), (Entries{"one.Focus(1)"}));
    EXPECT_EQ(Focused(), "one");
}

TEST_F(Focus, AWindowInTheBackgroundGivesItBackToADeeperWindow) {
    three->SetFocus();
    const TmyComponent other(nullptr, "", kPopup, 0, {400, 100, 50, 50});
    ::SetFocus(other.Window());
    log.Take();
    ::SetFocus(top.Window());
    EXPECT_EQ(GetFocus(), sub->Window());
    EXPECT_EQ(log.Take(), (Entries{"three.Focus(1)"}));
}

TEST_F(Focus, PlatformsFocusInTheSameWindowMarksThePath) {
    one->SetFocus();
    log.Take();
    ::SetFocus(four->Window());
    EXPECT_EQ(Focused(), "four");
    EXPECT_EQ(log.Take(), (Entries{"one.Focus(0)", "four.Focus(1)"}));
}

TEST_F(Focus, ClickGivesItToTheFirstFocusableFromTheLeafUp) {
    auto* leaf = new RecordingControl(log, "leaf", one, Placement{0, 0, 10, 10});
    top.DispatchMouse(MouseCode::LeftDown, 0, 5, 5);
    top.DispatchMouse(MouseCode::LeftUp, 0, 5, 5);
    EXPECT_FALSE(OnPath(leaf));
    EXPECT_EQ(Focused(), "one");
    top.DispatchMouse(MouseCode::LeftDown, 0, 45, 45); // on the panel, which is not focusable
    top.DispatchMouse(MouseCode::LeftUp, 0, 45, 45);
    EXPECT_EQ(Focused(), "");
    EXPECT_TRUE(OnPath(&top));
    EXPECT_FALSE(OnPath(panel));
    EXPECT_EQ(GetFocus(), top.Window());
}

TEST_F(Focus, ClickOnAParentTakesItFromTheChild) {
    panel->SetFocusable(true);
    one->SetFocus();
    log.Take();
    top.DispatchMouse(MouseCode::LeftDown, 0, 45, 45);
    EXPECT_EQ(log.Take(), (Entries{"one.Focus(0)", "panel.Focus(1)"}));
    top.DispatchMouse(MouseCode::LeftDown, 0, 45, 45); // it has it, and no child of it does
    EXPECT_TRUE(log.Take().empty());
}

TEST_F(Focus, RightClickLeavesIt) {
    one->SetFocus();
    top.DispatchMouse(MouseCode::RightDown, 0, 55, 5);
    top.DispatchMouse(MouseCode::RightUp, 0, 55, 5);
    EXPECT_EQ(Focused(), "one");
}

TEST_F(Focus, TabStopMakesAComponentFocusable) {
    const TmyComponent stop(&top, "", kChild | WS_TABSTOP, 0, {0, 110, 10, 10});
    const TmyComponent none(&top, "", kChild, 0, {20, 110, 10, 10});
    EXPECT_TRUE(stop.HasState(ControlState::Focusable));
    EXPECT_FALSE(none.HasState(ControlState::Focusable));
}

// --- the tab order -----------------------------------------------------------------------------------------

TEST_F(Focus, TabGoesForwardAndAround) {
    one->SetFocus();
    for (const char* next : {"two", "three", "four", "one", "two"}) {
        Tab();
        EXPECT_EQ(Focused(), next);
    }
}

TEST_F(Focus, ShiftTabGoesBackwardAndAround) {
    one->SetFocus();
    for (const char* next : {"four", "three", "two", "one", "four"}) {
        Tab(true);
        EXPECT_EQ(Focused(), next);
    }
}

TEST_F(Focus, TabWithoutAFocusBeginsAtTheEnds) {
    top.SetFocus();
    Tab();
    EXPECT_EQ(Focused(), "one");
    top.SetFocus();
    EXPECT_EQ(Focused(), "");
    Tab(true);
    EXPECT_EQ(Focused(), "four");
}

TEST_F(Focus, TabSkipsHiddenAndDisabled) {
    two->SetVisible(false);
    sub->SetEnabled(false);
    one->SetFocus();
    Tab();
    EXPECT_EQ(Focused(), "four");
    Tab(true);
    EXPECT_EQ(Focused(), "one");
    two->SetVisible(true);
    two->SetEnabled(false);
    sub->SetEnabled(true);
    three->SetFocusable(false);
    Tab();
    EXPECT_EQ(Focused(), "four");
    panel->SetVisible(false); // hides its children with it
    four->SetFocusable(false);
    three->SetFocusable(true);
    Tab();
    EXPECT_EQ(Focused(), "three");
}

TEST_F(Focus, TheOnlyOneLosesItAndTakesItAgain) {
    for (TmyControl* each :
         {static_cast<TmyControl*>(two), static_cast<TmyControl*>(three), static_cast<TmyControl*>(four)}) {
        each->SetFocusable(false);
    }
    one->SetFocus();
    log.Take();
    Tab();
    EXPECT_EQ(Focused(), "one");
    EXPECT_EQ(log.Take(), (Entries{"one.Focus(0)", "one.Focus(1)"}));
}

TEST_F(Focus, TabSkipsWindowsOnTheDesktop) {
    const TmyComponent popup(&top, "", kPopup | WS_TABSTOP, 0, {400, 100, 50, 50});
    four->SetFocus();
    Tab();
    EXPECT_EQ(Focused(), "one");
    EXPECT_EQ(GetFocus(), top.Window());
}

TEST_F(Focus, AFocusedParentsChildrenComeNext) {
    panel->SetFocusable(true);
    panel->SetFocus();
    Tab();
    EXPECT_EQ(Focused(), "one");
}

// --- keys --------------------------------------------------------------------------------------------------

struct KeyTarget {
    void OnKeyDown(TmyControl* /*sender*/, WPARAM& key, LPARAM /*flags*/) {
        log.Note("", "down", key);
        Drop(key);
    }
    void OnKey(TmyControl* /*sender*/, WPARAM& key, LPARAM /*flags*/) {
        log.Note("", "key", key);
        Drop(key);
    }
    void OnPreview(TmyControl* /*sender*/, WPARAM& key, LPARAM /*flags*/, TmyControl* from) {
        log.Note("", "preview", key, from != nullptr);
        last = from;
        Drop(key);
    }
    void Drop(WPARAM& key) const {
        if (key == dropped) {
            key = 0;
        }
    }
    WPARAM dropped = 0xFFFF;
    TmyControl* last = nullptr;
    EventLog log;
};

std::vector<UINT> keysSeen;

LRESULT CALLBACK KeyOriginal(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message >= WM_KEYFIRST && message <= WM_KEYLAST) {
        keysSeen.push_back(message);
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

class Keys : public Focus {
protected:
    Keys() {
        log = EventLog({"KeyDown", "KeyUp", "Char", "KeyPreview"});
        top.SetOriginal(KeyOriginal);
        keysSeen.clear();
    }
};

TEST_F(Keys, KeyDownGoesOneLevelDownAndUpsAndCharactersToTheEnd) {
    one->SetFocus();
    panel->SetKeyForwarding(false);
    for (const UINT message : {WM_KEYDOWN, WM_SYSKEYDOWN, WM_KEYUP, WM_CHAR}) {
        Send(top, message, 'X');
    }
    EXPECT_EQ(log.Take(),
              (Entries{"panel.KeyDown(88)", "panel.KeyDown(88)", "one.KeyUp(88)", "one.Char(88)"}));
    EXPECT_EQ(keysSeen, (std::vector<UINT>{WM_KEYDOWN, WM_SYSKEYDOWN, WM_KEYUP, WM_CHAR}));
}

TEST_F(Keys, WithoutAFocusedChildTheComponentTakesThem) {
    top.SetFocus();
    top.SetKeyForwarding(false);
    for (const UINT message : {WM_KEYDOWN, WM_KEYUP, WM_CHAR}) {
        Send(top, message, 'X');
    }
    EXPECT_EQ(log.Take(), (Entries{"top.KeyDown(88)", "top.KeyUp(88)", "top.Char(88)"}));
}

TEST_F(Keys, KeysAreShownToTheTopWindowFirst) {
    EXPECT_TRUE(panel->GetKeyForwarding()); // on in every new control
    KeyTarget target;
    panel->onKeyDown.Bind<&KeyTarget::OnKeyDown>(&target);
    top.onKeyPreview.Bind<&KeyTarget::OnPreview>(&target);
    one->SetFocus();
    Send(top, WM_KEYDOWN, 'X');
    EXPECT_EQ(target.log.Take(), (Entries{".down(88)", ".preview(88,1)"}));
    EXPECT_EQ(target.last, panel);
    EXPECT_EQ(log.Take(), (Entries{"panel.KeyDown(88)", "top.KeyPreview(88,other)"}));
    panel->SetKeyForwarding(false);
    EXPECT_FALSE(panel->GetKeyForwarding());
    Send(top, WM_KEYDOWN, 'X');
    EXPECT_EQ(target.log.Take(), (Entries{".down(88)"}));
    top.onKeyPreview.Clear();
}

TEST_F(Keys, AHandlerDropsAKeyBySettingItToZero) {
    KeyTarget target;
    panel->onKeyDown.Bind<&KeyTarget::OnKeyDown>(&target);
    one->onKey.Bind<&KeyTarget::OnKey>(&target);
    one->SetFocus();
    target.dropped = 'X';
    EXPECT_EQ(Send(top, WM_KEYDOWN, 'X'), 0);
    EXPECT_EQ(log.Take(), (Entries{"panel.KeyDown(88)"})); // and no preview
    EXPECT_EQ(Send(top, WM_CHAR, 'X'), 0);
    EXPECT_TRUE(keysSeen.empty());
    Send(top, WM_KEYDOWN, 'Y');
    Send(top, WM_CHAR, 'Y');
    EXPECT_EQ(keysSeen, (std::vector<UINT>{WM_KEYDOWN, WM_CHAR}));
}

TEST_F(Keys, PreviewCanDropTheTabKey) {
    KeyTarget target;
    target.dropped = VK_TAB;
    top.onKeyPreview.Bind<&KeyTarget::OnPreview>(&target);
    one->SetFocus();
    Tab();
    EXPECT_EQ(Focused(), "one");
    EXPECT_TRUE(keysSeen.empty());
    target.dropped = 0xFFFF;
    Tab();
    EXPECT_EQ(Focused(), "two");
    top.onKeyPreview.Clear();
}

TEST_F(Keys, UpsAndCharactersFireTheKeyEvent) {
    KeyTarget target;
    one->onKey.Bind<&KeyTarget::OnKey>(&target);
    one->SetFocus();
    Send(top, WM_KEYUP, 'Q');
    Send(top, WM_CHAR, 'q');
    EXPECT_EQ(target.log.Take(), (Entries{".key(81)", ".key(113)"}));
}

} // namespace
} // namespace orva::toolkit
