#include "tests/toolkit/WindowSupport.h"

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using Entries = EventLog::Entries;

/// top > panel (windowless, 10,10 100x100) > leaf (windowless, 20,20 30x30)
///                                        > inner (a window, 60,20 30x30)
///     > sub (a window, 120,10 60x100) > subLeaf (windowless, 5,5 20x20)
class MouseDispatch : public ::testing::Test {
protected:
    MouseDispatch() {
        panel = new RecordingControl(log, "panel", &top, Placement{10, 10, 100, 100});
        leaf = new RecordingControl(log, "leaf", panel, Placement{20, 20, 30, 30});
        inner = new RecordingComponent(log, "inner", panel, "", kChild, DWORD{0}, Placement{60, 20, 30, 30});
        sub = new RecordingComponent(log, "sub", &top, "", kChild, DWORD{0}, Placement{120, 10, 60, 100});
        subLeaf = new RecordingControl(log, "subLeaf", sub, Placement{5, 5, 20, 20});
        Pump();
        log.Take();
    }

    Entries Dispatch(MouseCode code, int x, int y, WPARAM flags = 0) {
        top.DispatchMouse(code, flags, x, y);
        return log.Take();
    }

    EventLog log{{"Move", "LeftDown", "LeftUp", "RightDown", "RightUp", "DoubleClick", "Wheel"}};
    RecordingComponent top{log, "top", nullptr, "", kPopup, DWORD{0}, kPlace};
    RecordingControl* panel;
    RecordingControl* leaf;
    RecordingComponent* inner;
    RecordingComponent* sub;
    RecordingControl* subLeaf;
};

TEST_F(MouseDispatch, MoveGoesDownToTheDeepestChildAtThePoint) {
    EXPECT_EQ(Dispatch(MouseCode::Move, 5, 140, 8), (Entries{"top.Move(8,5,140)"}));
    EXPECT_EQ(Dispatch(MouseCode::Move, 12, 15), (Entries{"panel.Move(0,2,5)"}));
    EXPECT_EQ(Dispatch(MouseCode::Move, 31, 32), (Entries{"leaf.Move(0,1,2)"}));
    EXPECT_EQ(Dispatch(MouseCode::Move, 73, 35), (Entries{"inner.Move(0,3,5)"}));
    EXPECT_EQ(Dispatch(MouseCode::Move, 150, 100), (Entries{"sub.Move(0,30,90)"}));
    EXPECT_EQ(Dispatch(MouseCode::Move, 127, 18), (Entries{"subLeaf.Move(0,2,3)"}));
}

TEST_F(MouseDispatch, BoundsIncludeTheirLeftAndTopEdgesOnly) {
    EXPECT_EQ(Dispatch(MouseCode::Move, 10, 10), (Entries{"panel.Move(0,0,0)"}));
    EXPECT_EQ(Dispatch(MouseCode::Move, 9, 10), (Entries{"top.Move(0,9,10)"}));
    EXPECT_EQ(Dispatch(MouseCode::Move, 109, 109), (Entries{"panel.Move(0,99,99)"}));
    EXPECT_EQ(Dispatch(MouseCode::Move, 110, 109), (Entries{"top.Move(0,110,109)"}));
}

TEST_F(MouseDispatch, EachButtonHasItsSlots) {
    EXPECT_EQ(Dispatch(MouseCode::LeftDown, 31, 32, 1), (Entries{"leaf.LeftDown(1,1,2)"}));
    EXPECT_EQ(Dispatch(MouseCode::LeftUp, 32, 33, 0), (Entries{"leaf.LeftUp(0,2,3)"}));
    EXPECT_EQ(Dispatch(MouseCode::RightDown, 127, 18, 2), (Entries{"subLeaf.RightDown(2,2,3)"}));
    EXPECT_EQ(Dispatch(MouseCode::RightUp, 128, 19, 0), (Entries{"subLeaf.RightUp(0,3,4)"}));
    EXPECT_EQ(Dispatch(MouseCode::RightDown, 1, 140), (Entries{"top.RightDown(0,1,140)"}));
    EXPECT_EQ(Dispatch(MouseCode::RightUp, 1, 140), (Entries{"top.RightUp(0,1,140)"}));
    EXPECT_EQ(Dispatch(MouseCode::LeftDown, 73, 35), (Entries{"inner.LeftDown(0,3,5)"}));
    EXPECT_EQ(Dispatch(MouseCode::LeftUp, 73, 35), (Entries{"inner.LeftUp(0,3,5)"}));
}

TEST_F(MouseDispatch, PressedControlGetsMovesAndTheUpWhereverThePointerIs) {
    Dispatch(MouseCode::LeftDown, 31, 32);
    EXPECT_EQ(Dispatch(MouseCode::Move, 150, 20), (Entries{"leaf.Move(0,120,-10)"}));
    EXPECT_EQ(Dispatch(MouseCode::Move, -500, 900), (Entries{"leaf.Move(0,-530,870)"}));
    // The other button goes by the place.
    EXPECT_EQ(Dispatch(MouseCode::RightDown, 127, 18), (Entries{"subLeaf.RightDown(0,2,3)"}));
    EXPECT_EQ(Dispatch(MouseCode::RightUp, 127, 18), (Entries{"subLeaf.RightUp(0,2,3)"}));
    EXPECT_EQ(Dispatch(MouseCode::LeftUp, -500, 900), (Entries{"leaf.LeftUp(0,-530,870)"}));
    // With the button up the place counts again, at every level.
    EXPECT_EQ(Dispatch(MouseCode::Move, 12, 15), (Entries{"panel.Move(0,2,5)"}));
    EXPECT_EQ(Dispatch(MouseCode::LeftUp, 127, 18), (Entries{"subLeaf.LeftUp(0,2,3)"}));
}

TEST_F(MouseDispatch, AComponentPressedByItselfKeepsTheMouseFromItsChildren) {
    Dispatch(MouseCode::LeftDown, 1, 140);
    EXPECT_EQ(Dispatch(MouseCode::Move, 31, 32), (Entries{"top.Move(0,31,32)"}));
    EXPECT_EQ(Dispatch(MouseCode::LeftUp, 31, 32), (Entries{"top.LeftUp(0,31,32)"}));
    EXPECT_EQ(Dispatch(MouseCode::Move, 31, 32), (Entries{"leaf.Move(0,1,2)"}));
}

TEST_F(MouseDispatch, ButtonReleasedOutsideTheWindowReachesThePressedControl) {
    Send(top, WM_LBUTTONDOWN, MK_LBUTTON, Point(31, 32));
    EXPECT_EQ(GetCapture(), top.Window());
    Send(top, WM_MOUSEMOVE, MK_LBUTTON, Point(-40, -50));
    Send(top, WM_LBUTTONUP, 0, Point(1000, -50));
    EXPECT_EQ(GetCapture(), nullptr);
    EXPECT_EQ(log.Take(),
              (Entries{"leaf.LeftDown(1,1,2)", "leaf.Move(1,-70,-80)", "leaf.LeftUp(0,970,-80)"}));
}

TEST_F(MouseDispatch, PressedControlThatGoesIsForgotten) {
    Dispatch(MouseCode::LeftDown, 31, 32);
    delete leaf;
    EXPECT_EQ(Dispatch(MouseCode::LeftUp, 31, 32), (Entries{"panel.LeftUp(0,21,22)"}));
    Dispatch(MouseCode::LeftDown, 12, 15);
    delete panel;
    EXPECT_EQ(Dispatch(MouseCode::Move, 12, 15), (Entries{"top.Move(0,12,15)"}));
}

TEST_F(MouseDispatch, HiddenChildrenTakeNoMouse) {
    leaf->SetVisible(false);
    EXPECT_EQ(Dispatch(MouseCode::Move, 31, 32), (Entries{"panel.Move(0,21,22)"}));
    EXPECT_EQ(Dispatch(MouseCode::LeftDown, 31, 32), (Entries{"panel.LeftDown(0,21,22)"}));
    EXPECT_EQ(Dispatch(MouseCode::LeftUp, 31, 32), (Entries{"panel.LeftUp(0,21,22)"}));
    EXPECT_EQ(Dispatch(MouseCode::RightDown, 31, 32), (Entries{"panel.RightDown(0,21,22)"}));
    panel->SetVisible(false);
    EXPECT_EQ(Dispatch(MouseCode::Move, 31, 32), (Entries{"top.Move(0,31,32)"}));
    sub->SetVisible(false);
    Pump();
    log.Take();
    EXPECT_EQ(Dispatch(MouseCode::Move, 127, 18), (Entries{"top.Move(0,127,18)"}));
}

TEST_F(MouseDispatch, DisabledChildrenAreHitAllTheSame) {
    leaf->SetEnabled(false);
    EXPECT_EQ(Dispatch(MouseCode::LeftDown, 31, 32), (Entries{"leaf.LeftDown(0,1,2)"}));
    EXPECT_EQ(Dispatch(MouseCode::LeftUp, 31, 32), (Entries{"leaf.LeftUp(0,1,2)"}));
}

TEST_F(MouseDispatch, AmongOverlappingChildrenTheFirstInTheListWins) {
    RecordingControl second(log, "second", &top, Placement{0, 0, 200, 150});
    EXPECT_EQ(Dispatch(MouseCode::Move, 12, 15), (Entries{"panel.Move(0,2,5)"}));
    EXPECT_EQ(Dispatch(MouseCode::Move, 5, 140), (Entries{"second.Move(0,5,140)"}));
}

TEST_F(MouseDispatch, WindowsOnTheDesktopAreNotHit) {
    RecordingComponent popup(log, "popup", &top, "", kPopup, DWORD{0}, Placement{0, 120, 50, 30});
    log.Take();
    EXPECT_EQ(Dispatch(MouseCode::Move, 5, 140), (Entries{"top.Move(0,5,140)"}));
}

// --- double clicks -----------------------------------------------------------------------------------------

class DoubleClick : public MouseDispatch {
protected:
    DoubleClick() : width(GetSystemMetrics(SM_CXDOUBLECLK)), height(GetSystemMetrics(SM_CYDOUBLECLK)) {}

    Entries Click(int x, int y) {
        top.DispatchMouse(MouseCode::LeftDown, 0, x, y);
        log.Take();
        top.DispatchMouse(MouseCode::LeftUp, 0, x, y);
        return log.Take();
    }

    int width;
    int height;
};

TEST_F(DoubleClick, SecondClickGivesTheUpAndThenTheDoubleClick) {
    EXPECT_EQ(Click(31, 32), (Entries{"leaf.LeftUp(0,1,2)"}));
    EXPECT_EQ(Click(31, 32), (Entries{"leaf.LeftUp(0,1,2)", "leaf.DoubleClick(1,2)"}));
}

TEST_F(DoubleClick, DistanceCountsFromTheLastClickInBothAxes) {
    ASSERT_GE(width, 2);
    ASSERT_GE(height, 2);
    Click(40, 40);
    EXPECT_EQ(Click(40 + width - 1, 40 - height + 1).size(), 2u);
    Click(40, 40); // near enough to be one, too
    EXPECT_EQ(Click(40 + width, 40).size(), 1u);
    EXPECT_EQ(Click(40, 40).size(), 1u);
    EXPECT_EQ(Click(40, 40 - height).size(), 1u);
    EXPECT_EQ(Click(40, 40).size(), 1u);
    EXPECT_EQ(Click(40, 40).size(), 2u);
}

TEST_F(DoubleClick, TimeIsTheSystems) {
    const UINT before = GetDoubleClickTime();
    SetDoubleClickTime(60);
    Click(31, 32);
    Sleep(120);
    EXPECT_EQ(Click(31, 32).size(), 1u);
    SetDoubleClickTime(5000);
    EXPECT_EQ(Click(31, 32).size(), 2u);
    SetDoubleClickTime(before);
}

TEST_F(DoubleClick, EachControlCountsItsOwnClicks) {
    Click(31, 32);
    EXPECT_EQ(Click(22, 25), (Entries{"panel.LeftUp(0,12,15)"}));
    EXPECT_EQ(Click(31, 32), (Entries{"leaf.LeftUp(0,1,2)", "leaf.DoubleClick(1,2)"}));
}

TEST_F(DoubleClick, FirstClickAtTheOriginIsSingle) {
    RecordingControl fresh(log, "fresh", &top, Placement{0, 120, 20, 20});
    EXPECT_EQ(Click(0, 120), (Entries{"fresh.LeftUp(0,0,0)"}));
}

// --- the wheel ---------------------------------------------------------------------------------------------

struct WheelKeeper {
    void Keep(TmyControl* sender, int delta, WPARAM keys, bool& passOn) {
        log.Note("kept", "Wheel", delta, keys, passOn, sender != nullptr);
        passOn = false;
    }
    EventLog log;
};

TEST_F(MouseDispatch, WheelFollowsTheFocusAndClimbsToTheTop) {
    leaf->SetFocus();
    EXPECT_EQ(Dispatch(MouseCode::Wheel, 127, 18, 3),
              (Entries{"leaf.Wheel(3,self)", "panel.Wheel(3,other)", "top.Wheel(3,other)"}));
    subLeaf->SetFocus();
    Send(top, WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<WORD>(-120)), 0);
    EXPECT_EQ(log.Take(), (Entries{"subLeaf.Wheel(-1,self)", "sub.Wheel(-1,other)", "top.Wheel(-1,other)"}));
}

TEST_F(MouseDispatch, WheelStopsWhereAHandlerKeepsIt) {
    WheelKeeper keeper;
    panel->onWheel.Bind<&WheelKeeper::Keep>(&keeper);
    leaf->SetFocus();
    Send(top, WM_MOUSEWHEEL, MAKEWPARAM(MK_SHIFT | MK_CONTROL, 240), 0);
    EXPECT_EQ(log.Take(), (Entries{"leaf.Wheel(2,self)", "panel.Wheel(2,other)"}));
    EXPECT_EQ(keeper.log.Take(), (Entries{"kept.Wheel(2,12,1,1)"}));
    panel->onWheel.Clear();
}

TEST_F(MouseDispatch, WheelWithoutAFocusGoesToTheComponent) {
    TmyComponent* fresh = new RecordingComponent(log, "fresh", nullptr, "", kPopupHidden, DWORD{0}, kPlace);
    new RecordingControl(log, "child", fresh, Placement{0, 0, 200, 150});
    fresh->DispatchMouse(MouseCode::Wheel, 1, 10, 10);
    EXPECT_EQ(log.Take(), (Entries{"fresh.Wheel(1,self)"}));
    delete fresh;
}

// --- the events of the slots -------------------------------------------------------------------------------

struct MouseTarget {
    void OnDown(TmyControl* /*sender*/, MouseButton button, WPARAM flags, int x, int y) {
        log.Note("", "down", static_cast<unsigned>(button), flags, x, y);
    }
    void OnUp(TmyControl* /*sender*/, MouseButton button, WPARAM flags, int x, int y) {
        log.Note("", "up", static_cast<unsigned>(button), flags, x, y);
    }
    void OnRight(TmyControl* /*sender*/, WPARAM flags, int x, int y) { log.Note("", "right", flags, x, y); }
    void OnMove(TmyControl* /*sender*/, WPARAM flags, int x, int y) { log.Note("", "move", flags, x, y); }
    void OnDouble(TmyControl* /*sender*/, int x, int y) { log.Note("", "double", x, y); }
    EventLog log;
};

TEST_F(MouseDispatch, SlotsFireTheirEvents) {
    MouseTarget target;
    leaf->onMouseDown.Bind<&MouseTarget::OnDown>(&target);
    leaf->onMouseUp.Bind<&MouseTarget::OnUp>(&target);
    leaf->onMouseMove.Bind<&MouseTarget::OnMove>(&target);
    leaf->onDoubleClick.Bind<&MouseTarget::OnDouble>(&target);
    leaf->onRightClick.Bind<&MouseTarget::OnRight>(&target);
    Dispatch(MouseCode::Move, 31, 32, 4);
    Dispatch(MouseCode::LeftDown, 31, 32, 5);
    Dispatch(MouseCode::LeftUp, 31, 32, 6);
    Dispatch(MouseCode::LeftDown, 31, 32, 5);
    Dispatch(MouseCode::LeftUp, 31, 32, 6);
    Dispatch(MouseCode::RightDown, 32, 33, 7);
    Dispatch(MouseCode::RightUp, 32, 33, 8);
    EXPECT_EQ(target.log.Take(),
              (Entries{".move(4,1,2)", ".down(0,5,1,2)", ".up(0,6,1,2)", ".down(0,5,1,2)", ".up(0,6,1,2)",
                       ".double(1,2)", ".down(1,7,2,3)", ".up(1,8,2,3)", ".right(8,2,3)"}));
}

} // namespace
} // namespace orva::toolkit
