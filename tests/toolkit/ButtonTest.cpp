/// The button with a window: presses, clicks, groups, keys, times and look.

#include "tests/toolkit/WidgetSupport.h"
#include "toolkit/FrameDrawing.h"
#include "toolkit/TmyButton.h"

#include <memory>
#include <utility>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

constexpr Placement kPlaceOfButton{10, 10, 60, 24};
constexpr int kInsideX = 5;
constexpr int kInsideY = 5;
constexpr COLORREF kBlackPixel = 0;
constexpr COLORREF kWhitePixel = 0xFFFFFF;

class Button : public WidgetTest {
protected:
    Button() : button(new TmyButton(&Top(), "Text", kPlaceOfButton)) { Watch(*button); }

    void Watch(TmyButton& watched) {
        clicks.Watch(watched.onClick);
        downs.Watch(watched.onDown);
        presses.Watch(watched.onPress);
    }
    TmyButton* AddToGroup(std::uint32_t group, int x = 80) {
        auto* other = new TmyButton(&Top(), "Other", {x, 10, 60, 24});
        other->SetGroup(group);
        return other;
    }
    void Click() const { ClickAt(*button, kInsideX, kInsideY); }

    FakeTimers timers;
    TmyButton* button;
    EventCount<> clicks;
    EventCount<bool> downs;
    EventCount<> presses;
};

// --- at the start ------------------------------------------------------------------------------------------

TEST_F(Button, BeginsUpWithAThinBorderAndItsTextInTheMiddle) {
    const TmyButton fresh(&Top(), "Fresh", {10, 100, 60, 24}, WS_CHILD);
    EXPECT_FALSE(fresh.IsDown());
    EXPECT_FALSE(fresh.IsPressed());
    EXPECT_TRUE(fresh.GetShowPressed());
    EXPECT_EQ(fresh.GetGroup(), 0u);
    EXPECT_FALSE(fresh.GetAllowAllUp());
    EXPECT_EQ(fresh.GetTextAlignment(), 68u);
    EXPECT_EQ(fresh.GetStyleValue(StyleValue::BorderStyle), 1u);
    EXPECT_EQ(fresh.GetDownTextColor(), fresh.GetStyleValue(StyleValue::TextColor));
    EXPECT_FALSE(fresh.SharesStyleWith(Top()));
    EXPECT_FALSE(fresh.HasState(ControlState::Focusable)); // without WS_TABSTOP
    EXPECT_TRUE(button->HasState(ControlState::Focusable));
}

TEST_F(Button, LooksRaisedFromTheFirstPaintOn) {
    Top().Update();
    button->Update();
    EXPECT_EQ(button->GetStyleValue(StyleValue::BorderStyle), static_cast<std::uint32_t>(kFrameRaised));
}

// --- the mouse ---------------------------------------------------------------------------------------------

TEST_F(Button, PressAndReleaseInsideIsOneClick) {
    PressAt(*button, kInsideX, kInsideY);
    EXPECT_TRUE(button->IsPressed());
    EXPECT_EQ(button->GetStyleValue(StyleValue::BorderStyle), static_cast<std::uint32_t>(kFrameSunken));
    EXPECT_EQ(presses.count, 1);
    EXPECT_EQ(clicks.count, 0);
    ReleaseAt(*button, kInsideX + 1, kInsideY);
    EXPECT_FALSE(button->IsPressed());
    EXPECT_EQ(button->GetStyleValue(StyleValue::BorderStyle), static_cast<std::uint32_t>(kFrameRaised));
    EXPECT_EQ(clicks.count, 1);
    EXPECT_EQ(clicks.sender, button);
    EXPECT_EQ(presses.count, 1);
    EXPECT_EQ(downs.count, 0); // group 0 does not latch
    EXPECT_FALSE(button->IsDown());
}

TEST_F(Button, DraggingOffShowsItUpAndBackShowsItPressedAgain) {
    PressAt(*button, kInsideX, kInsideY);
    DragTo(*button, 60, kInsideY); // one beyond the right edge
    EXPECT_FALSE(button->IsPressed());
    EXPECT_EQ(button->GetStyleValue(StyleValue::BorderStyle), static_cast<std::uint32_t>(kFrameRaised));
    DragTo(*button, 59, 23); // the last pixel
    EXPECT_TRUE(button->IsPressed());
    EXPECT_EQ(button->GetStyleValue(StyleValue::BorderStyle), static_cast<std::uint32_t>(kFrameSunken));
    DragTo(*button, -1, 0);
    EXPECT_FALSE(button->IsPressed());
    DragTo(*button, 0, 0);
    EXPECT_TRUE(button->IsPressed());
    DragTo(*button, 0, 24);
    EXPECT_FALSE(button->IsPressed());
    DragTo(*button, 0, -1);
    EXPECT_FALSE(button->IsPressed());
    DragTo(*button, 10, 10);
    ReleaseAt(*button, 10, 10);
    EXPECT_EQ(clicks.count, 1);
    EXPECT_EQ(presses.count, 1);
}

TEST_F(Button, ReleaseOutsideIsNoClickThoughThePressesHaveFired) {
    PressAt(*button, kInsideX, kInsideY);
    timers.Advance(560);
    DragTo(*button, 200, 200);
    ReleaseAt(*button, 200, 200);
    EXPECT_EQ(clicks.count, 0);
    EXPECT_EQ(presses.count, 3);
    EXPECT_TRUE(timers.Running().empty());
    EXPECT_FALSE(button->IsPressed());
}

TEST_F(Button, ReleaseOutsideWithoutAMoveBeforeItIsNoClickEither) {
    button->SetGroup(1);
    for (const auto& [x, y] : {std::pair{60, 5}, {5, 24}, {-1, 5}, {5, -1}}) {
        PressAt(*button, kInsideX, kInsideY);
        ReleaseAt(*button, x, y);
        EXPECT_FALSE(button->IsPressed());
    }
    EXPECT_EQ(clicks.count + downs.count, 0);
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(Button, MovingWithoutTheButtonOrTheCaptureChangesNothing) {
    Send(*button, WM_MOUSEMOVE, 0, Point(5, 5));
    DragTo(*button, 5, 5); // pressed elsewhere, no capture here
    EXPECT_FALSE(button->IsPressed());
    PressAt(*button, kInsideX, kInsideY);
    ReleaseCapture();
    DragTo(*button, 200, 5);
    EXPECT_TRUE(button->IsPressed());
    ReleaseAt(*button, kInsideX, kInsideY);
}

TEST_F(Button, LostCaptureEndsTheRepetition) {
    PressAt(*button, kInsideX, kInsideY);
    ReleaseCapture();
    timers.Advance(5000);
    EXPECT_EQ(presses.count, 1);
    EXPECT_TRUE(timers.Running().empty());
    EXPECT_FALSE(button->IsPressed());
}

TEST_F(Button, HoldingRepeatsFirstAfter500ThenEvery50Milliseconds) {
    std::vector<std::uint32_t> times;
    presses.then = [&] { times.push_back(timers.Now()); };
    PressAt(*button, kInsideX, kInsideY);
    ASSERT_EQ(timers.Running().size(), 1u);
    EXPECT_EQ(timers.Running()[0].window, button->Window());
    EXPECT_EQ(timers.Running()[0].id, 1u);
    timers.Advance(500);
    ASSERT_EQ(timers.Running().size(), 1u);
    EXPECT_EQ(timers.Running()[0].id, 2u);
    timers.Advance(99);
    ReleaseAt(*button, kInsideX, kInsideY); // just before 600
    timers.Advance(1000);
    EXPECT_EQ(times, (std::vector<std::uint32_t>{0, 500, 550}));
    EXPECT_EQ(clicks.count, 1);
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(Button, RepeatsWhileDraggedOff) {
    PressAt(*button, kInsideX, kInsideY);
    DragTo(*button, 300, 5);
    timers.Advance(600);
    EXPECT_EQ(presses.count, 4); // 0, 500, 550, 600
    ReleaseAt(*button, 300, 5);
    EXPECT_EQ(clicks.count, 0);
}

TEST_F(Button, WithoutShowPressedItIsNeverPressedAndNeverClicks) {
    button->SetShowPressed(false);
    PressAt(*button, kInsideX, kInsideY);
    EXPECT_FALSE(button->IsPressed());
    DragTo(*button, 6, 6);
    EXPECT_FALSE(button->IsPressed());
    timers.Advance(500);
    EXPECT_EQ(presses.count, 2);
    ReleaseAt(*button, 6, 6);
    EXPECT_EQ(clicks.count, 0);
}

TEST_F(Button, WithoutShowPressedSpaceStillClicks) {
    button->SetShowPressed(false);
    KeyDown(*button, VK_SPACE);
    EXPECT_TRUE(button->IsPressed());
    KeyUp(*button, VK_SPACE);
    EXPECT_EQ(clicks.count, 1);
}

TEST_F(Button, HasDoneAllElseOfAPressWhenItTellsOfIt) {
    bool told = false;
    presses.then = [&] {
        told = true;
        EXPECT_TRUE(button->IsPressed());
        EXPECT_EQ(::GetFocus(), button->Window());
        EXPECT_EQ(button->GetStyleValue(StyleValue::BorderStyle), 3u);
        ASSERT_EQ(timers.Running().size(), 1u);
        EXPECT_EQ(timers.Running()[0].id, 1u);
    };
    PressAt(*button, kInsideX, kInsideY);
    EXPECT_TRUE(told);
}

TEST_F(Button, AMoveThatNoLongerHoldsTheButtonChangesNothing) {
    PressAt(*button, kInsideX, kInsideY);
    DragTo(*button, 200, 5);
    Send(*button, WM_MOUSEMOVE, 0, Point(kInsideX, kInsideY));
    EXPECT_FALSE(button->IsPressed());
    DragTo(*button, kInsideX, kInsideY);
    EXPECT_TRUE(button->IsPressed());
    ReleaseAt(*button, kInsideX, kInsideY);
}

TEST_F(Button, TakesTheFocusAtAPressOnlyWithATabStop) {
    PressAt(*button, kInsideX, kInsideY);
    EXPECT_EQ(::GetFocus(), button->Window());
    ReleaseAt(*button, kInsideX, kInsideY);
    const TmyButton plain(&Top(), "", {10, 100, 60, 24}, kWidgetStyle);
    ClickAt(plain, 5, 5);
    EXPECT_NE(::GetFocus(), plain.Window());
}

TEST_F(Button, FiresTheMouseEventsBeforeItsOwn) {
    std::string order;
    EventCount<MouseButton, WPARAM, int, int> mouseDown;
    EventCount<MouseButton, WPARAM, int, int> mouseUp;
    mouseDown.Watch(button->onMouseDown);
    mouseUp.Watch(button->onMouseUp);
    mouseDown.then = [&] { order += button->IsPressed() ? 'x' : 'd'; };
    presses.then = [&] { order += button->IsPressed() ? 'p' : 'x'; };
    mouseUp.then = [&] { order += button->IsPressed() ? 'u' : 'x'; };
    clicks.then = [&] { order += button->IsPressed() || !timers.Running().empty() ? 'x' : 'c'; };
    Click();
    EXPECT_EQ(order, "dpuc");
}

TEST_F(Button, SecondClickOfAPairIsAClickLikeTheFirst) {
    Click();
    Click();
    EXPECT_EQ(clicks.count, 2);
    EXPECT_EQ(presses.count, 2);
}

// --- groups ------------------------------------------------------------------------------------------------

TEST_F(Button, InAGroupAClickLatchesAndPutsTheOthersUp) {
    button->SetGroup(1);
    TmyButton* other = AddToGroup(1);
    EventCount<bool> otherDowns;
    otherDowns.Watch(other->onDown);
    other->SetDown(true);
    EXPECT_EQ(otherDowns.count, 1);
    std::string order;
    downs.then = [&] { order += 'd'; };
    otherDowns.then = [&] { order += 'o'; };
    clicks.then = [&] { order += 'c'; };
    Click();
    EXPECT_TRUE(button->IsDown());
    EXPECT_FALSE(other->IsDown());
    EXPECT_EQ(downs.last, 1);
    EXPECT_EQ(otherDowns.last, 0);
    EXPECT_EQ(order, "doc");
    EXPECT_EQ(button->GetStyleValue(StyleValue::BorderStyle), static_cast<std::uint32_t>(kFrameSunken));
    EXPECT_EQ(other->GetStyleValue(StyleValue::BorderStyle), static_cast<std::uint32_t>(kFrameRaised));
}

TEST_F(Button, TheLastOneDownOfAGroupCannotBeReleasedByAClick) {
    button->SetGroup(1);
    AddToGroup(1);
    button->SetDown(true);
    Click();
    EXPECT_TRUE(button->IsDown());
    EXPECT_EQ(clicks.count, 1); // it is a click all the same
    EXPECT_EQ(downs.count, 1);  // of `SetDown`
    button->SetDown(false);
    EXPECT_TRUE(button->IsDown());
}

TEST_F(Button, WithAllUpAllowedAClickReleasesTheLast) {
    button->SetGroup(1);
    button->SetAllowAllUp(true);
    Click();
    EXPECT_TRUE(button->IsDown());
    Click();
    EXPECT_FALSE(button->IsDown());
    EXPECT_EQ(downs.count, 2);
    EXPECT_EQ(downs.last, 0);
    EXPECT_EQ(clicks.count, 2);
}

TEST_F(Button, AllUpIsTheReleasedButtonsOwnAffair) {
    button->SetGroup(1);
    TmyButton* other = AddToGroup(1);
    other->SetAllowAllUp(true);
    button->SetDown(true);
    Click();
    EXPECT_TRUE(button->IsDown());
}

TEST_F(Button, GoesUpWhenAnotherOfItsGroupIsDown) {
    button->SetGroup(1);
    TmyButton* other = AddToGroup(2);
    other->SetDown(true);
    button->SetDown(true);
    other->SetGroup(1); // now two of the group are down
    Click();
    EXPECT_FALSE(button->IsDown());
    EXPECT_TRUE(other->IsDown());
}

class OtherKindOfButton : public TmyButton {
public:
    using TmyButton::TmyButton;
};

TEST_F(Button, GroupsAreOfOneParentOneTypeAndOneNumber) {
    button->SetGroup(1);
    TmyButton* otherGroup = AddToGroup(2);
    auto* otherType = new OtherKindOfButton(&Top(), "", {10, 40, 60, 24});
    otherType->SetGroup(1);
    auto* otherParent = new TmyPanel(&Top(), "", {10, 80, 100, 60});
    auto* cousin = new TmyButton(otherParent, "", {10, 10, 60, 24});
    cousin->SetGroup(1);
    for (TmyButton* each : {otherGroup, static_cast<TmyButton*>(otherType), cousin}) {
        each->SetDown(true);
    }
    Click();
    EXPECT_TRUE(button->IsDown());
    EXPECT_TRUE(otherGroup->IsDown());
    EXPECT_TRUE(otherType->IsDown());
    EXPECT_TRUE(cousin->IsDown());
    Click(); // nor do they let it go up
    EXPECT_TRUE(button->IsDown());
}

TEST_F(Button, SetDownTellsOfEachChangeOnceAndIsNoClick) {
    button->SetDown(true);
    EXPECT_TRUE(button->IsDown());
    EXPECT_EQ(downs.count, 1);
    EXPECT_EQ(downs.last, 1);
    EXPECT_EQ(downs.sender, button);
    button->SetDown(true);
    EXPECT_EQ(downs.count, 1);
    button->SetDown(false); // without a group it may always go up
    EXPECT_EQ(downs.count, 2);
    EXPECT_EQ(downs.last, 0);
    EXPECT_EQ(clicks.count, 0);
    EXPECT_EQ(presses.count, 0);
}

TEST_F(Button, SetDownInAGroupTellsToo) {
    button->SetGroup(1);
    TmyButton* other = AddToGroup(1);
    EventCount<bool> otherDowns;
    otherDowns.Watch(other->onDown);
    other->SetDown(true);
    EXPECT_EQ(otherDowns.count, 1);
    button->SetDown(true);
    EXPECT_EQ(downs.count, 1);
    EXPECT_EQ(downs.last, 1);
    EXPECT_EQ(otherDowns.count, 2);
    EXPECT_EQ(otherDowns.last, 0);
    EXPECT_FALSE(other->IsDown());
    button->SetAllowAllUp(true);
    button->SetDown(false);
    EXPECT_FALSE(button->IsDown());
    EXPECT_EQ(downs.count, 2);
}

TEST_F(Button, InGroup0AClickLeavesOthersOfGroup0Alone) {
    TmyButton* other = AddToGroup(0);
    other->SetDown(true);
    Click();
    EXPECT_FALSE(button->IsDown());
    EXPECT_TRUE(other->IsDown());
    EXPECT_TRUE(button->OnGroupChange(true));
    EXPECT_TRUE(other->IsDown());
    EXPECT_FALSE(button->OnGroupChange(false)) << "no one else can be down in group 0";
}

// --- keys --------------------------------------------------------------------------------------------------

TEST_F(Button, ReturnClicksAndLatchesAtOnce) {
    button->SetGroup(1);
    button->SetAllowAllUp(true);
    KeyDown(*button, VK_RETURN);
    EXPECT_TRUE(button->IsDown());
    EXPECT_FALSE(button->IsPressed());
    EXPECT_EQ(clicks.count, 1);
    EXPECT_EQ(presses.count, 0);
    KeyUp(*button, VK_RETURN);
    EXPECT_EQ(clicks.count, 1);
    KeyDown(*button, VK_RETURN);
    EXPECT_FALSE(button->IsDown());
    EXPECT_EQ(downs.count, 2);
}

TEST_F(Button, SpacePressesAndClicksWhenItIsReleased) {
    button->SetGroup(1);
    KeyDown(*button, VK_SPACE);
    EXPECT_TRUE(button->IsPressed());
    EXPECT_FALSE(button->IsDown());
    EXPECT_EQ(presses.count, 1);
    EXPECT_EQ(clicks.count, 0);
    EXPECT_EQ(button->GetStyleValue(StyleValue::BorderStyle), static_cast<std::uint32_t>(kFrameSunken));
    EXPECT_TRUE(timers.Running().empty()); // the keyboard repeats by itself
    bool wasDownAtTheLatch = false;
    downs.then = [&] { wasDownAtTheLatch = button->IsDown() && button->IsPressed(); };
    clicks.then = [&] { EXPECT_FALSE(button->IsPressed()); };
    KeyUp(*button, VK_SPACE);
    EXPECT_TRUE(wasDownAtTheLatch);
    EXPECT_TRUE(button->IsDown());
    EXPECT_FALSE(button->IsPressed());
    EXPECT_EQ(clicks.count, 1);
}

TEST_F(Button, EachRepeatOfSpaceIsAPressAndItsReleaseOneClick) {
    constexpr LPARAM kRepeated = 0x40000001;
    KeyDown(*button, VK_SPACE);
    for (int count = 2; count <= 3; ++count) {
        Send(*button, WM_KEYDOWN, VK_SPACE, kRepeated);
        EXPECT_EQ(presses.count, count);
    }
    KeyUp(*button, VK_SPACE);
    EXPECT_EQ(clicks.count, 1);
}

TEST_F(Button, SpaceReleasedWithoutAPressIsNothing) {
    KeyUp(*button, VK_SPACE);
    EXPECT_EQ(clicks.count, 0);
}

TEST_F(Button, OtherKeysAreNothing) {
    for (const UINT key : {UINT{'A'}, UINT{VK_ESCAPE}, UINT{VK_DOWN}, UINT{VK_F1}}) {
        KeyDown(*button, key);
        KeyUp(*button, key);
    }
    EXPECT_EQ(clicks.count + presses.count + downs.count, 0);
}

TEST_F(Button, AHandlerMayDropAKey) {
    struct Dropper {
        void Drop(TmyControl* /*sender*/, WPARAM& key, LPARAM /*flags*/) { key = 0; }
    } dropper;
    button->onKeyDown.Bind<&Dropper::Drop>(&dropper);
    KeyDown(*button, VK_RETURN);
    KeyDown(*button, VK_SPACE);
    EXPECT_EQ(clicks.count + presses.count, 0);
}

TEST_F(Button, LosingTheFocusLetsGoOfSpaceWithoutAClick) {
    button->SetFocus();
    KeyDown(*button, VK_SPACE);
    AddToGroup(0)->SetFocus();
    EXPECT_FALSE(button->IsPressed());
    KeyUp(*button, VK_SPACE);
    EXPECT_EQ(clicks.count, 0);
}

// --- disabled ----------------------------------------------------------------------------------------------

TEST_F(Button, DisabledTakesNoInputAtAll) {
    button->SetGroup(1);
    button->SetEnabled(false);
    EventCount<MouseButton, WPARAM, int, int> mouse;
    EventCount<WPARAM, int, int> moves;
    EventCount<WPARAM&, LPARAM> keys;
    mouse.Watch(button->onMouseDown);
    moves.Watch(button->onMouseMove);
    keys.Watch(button->onKeyDown);
    EventCount<MouseButton, WPARAM, int, int> ups;
    ups.Watch(button->onMouseUp);
    PressAt(*button, kInsideX, kInsideY);
    Send(*button, WM_TIMER, 1);
    Send(*button, WM_TIMER, 2);
    DragTo(*button, 6, 6);
    ReleaseAt(*button, kInsideX, kInsideY);
    KeyDown(*button, VK_RETURN);
    KeyDown(*button, VK_SPACE);
    KeyUp(*button, VK_SPACE);
    EXPECT_EQ(clicks.count + downs.count + presses.count, 0);
    EXPECT_EQ(mouse.count + ups.count + moves.count + keys.count, 0);
    EXPECT_FALSE(button->IsPressed());
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(Button, OfADisabledParentTakesNoInputEither) {
    auto* panel = new TmyPanel(&Top(), "", {10, 80, 100, 60});
    auto* child = new TmyButton(panel, "", {10, 10, 60, 24});
    Watch(*child);
    panel->SetEnabled(false);
    ClickAt(*child, 5, 5);
    EXPECT_EQ(clicks.count + presses.count, 0);
    panel->SetEnabled(true);
    ClickAt(*child, 5, 5);
    EXPECT_EQ(clicks.count, 1);
}

TEST_F(Button, SetDownWorksOnADisabledOne) {
    button->SetEnabled(false);
    button->SetDown(true);
    EXPECT_TRUE(button->IsDown());
    EXPECT_EQ(downs.count, 1);
}

TEST_F(Button, DisabledWhileHeldItLetsGoWithoutAClick) {
    PressAt(*button, kInsideX, kInsideY);
    button->SetEnabled(false);
    EXPECT_FALSE(button->IsPressed());
    EXPECT_TRUE(timers.Running().empty());
    button->SetEnabled(true);
    ReleaseAt(*button, kInsideX, kInsideY);
    EXPECT_EQ(clicks.count, 0);
}

TEST_F(Button, HiddenWhileHeldItLetsGoWithoutAClick) {
    PressAt(*button, kInsideX, kInsideY);
    button->SetVisible(false);
    Pump();
    EXPECT_FALSE(button->IsPressed());
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(Button, LetsGoWhenAnotherWindowTakesTheMouse) {
    PressAt(*button, kInsideX, kInsideY);
    SetCapture(Top().Window());
    EXPECT_FALSE(button->IsPressed());
    EXPECT_TRUE(timers.Running().empty());
}

// --- handlers that change the world ------------------------------------------------------------------------

TEST_F(Button, MayBeDeletedByAnyOfItsHandlers) {
    const auto deletedBy = [&](auto bind, auto act) {
        auto* doomed = new TmyButton(&Top(), "", {10, 60, 60, 24});
        doomed->SetGroup(9);
        bool gone = false;
        EventCount<> destroyed;
        destroyed.Watch(doomed->onDestroy);
        destroyed.then = [&] { gone = true; };
        bind(*doomed, [doomed] { delete doomed; });
        act(*doomed, doomed->Window());
        return gone;
    };
    EventCount<> plain;
    EventCount<bool> withState;
    EventCount<MouseButton, WPARAM, int, int> mouse;
    const auto click = [](TmyButton&, HWND window) {
        SendMessageA(window, WM_LBUTTONDOWN, MK_LBUTTON, Point(5, 5));
        SendMessageA(window, WM_LBUTTONUP, 0, Point(5, 5));
    };
    const auto space = [](TmyButton&, HWND window) {
        SendMessageA(window, WM_KEYDOWN, VK_SPACE, 1);
        SendMessageA(window, WM_KEYUP, VK_SPACE, 1);
    };
    const auto enter = [](TmyButton&, HWND window) { SendMessageA(window, WM_KEYDOWN, VK_RETURN, 1); };
    const auto onClick = [&](TmyButton& doomed, auto end) {
        plain.Watch(doomed.onClick);
        plain.then = end;
    };
    const auto onPress = [&](TmyButton& doomed, auto end) {
        plain.Watch(doomed.onPress);
        plain.then = end;
    };
    const auto onDown = [&](TmyButton& doomed, auto end) {
        withState.Watch(doomed.onDown);
        withState.then = end;
    };
    const auto onMouseDown = [&](TmyButton& doomed, auto end) {
        mouse.Watch(doomed.onMouseDown);
        mouse.then = end;
    };
    const auto onMouseUp = [&](TmyButton& doomed, auto end) {
        mouse.Watch(doomed.onMouseUp);
        mouse.then = end;
    };
    EXPECT_TRUE(deletedBy(onClick, click));
    EXPECT_TRUE(deletedBy(onClick, space));
    EXPECT_TRUE(deletedBy(onClick, enter));
    EXPECT_TRUE(deletedBy(onPress, click));
    EXPECT_TRUE(deletedBy(onPress, space));
    EXPECT_TRUE(deletedBy(onDown, click));
    EXPECT_TRUE(deletedBy(onDown, space));
    EXPECT_TRUE(deletedBy(onDown, enter));
    EXPECT_TRUE(deletedBy(onMouseDown, click));
    EXPECT_TRUE(deletedBy(onMouseUp, click));
    EXPECT_TRUE(deletedBy(onDown, [](TmyButton& doomed, HWND) { doomed.SetDown(true); }));
}

TEST_F(Button, MayBeDeletedByASiblingThatGoesUp) {
    button->SetGroup(1);
    auto* other = AddToGroup(1);
    other->SetDown(true);
    EventCount<bool> otherDowns;
    otherDowns.Watch(other->onDown);
    otherDowns.then = [this] {
        delete button;
        button = nullptr;
    };
    button->SetDown(true);
    EXPECT_EQ(button, nullptr);
    EXPECT_FALSE(other->IsDown());
}

TEST_F(Button, DisabledByItsPressHandlerItStopsRepeating) {
    presses.then = [this] { button->SetEnabled(false); };
    PressAt(*button, kInsideX, kInsideY);
    timers.Advance(1000);
    EXPECT_EQ(presses.count, 1);
    EXPECT_FALSE(button->IsPressed());
}

TEST_F(Button, StaysUpIfASiblingsHandlerPutsItUp) {
    button->SetGroup(1);
    button->SetAllowAllUp(true);
    auto* other = AddToGroup(1);
    other->SetDown(true);
    EventCount<bool> otherDowns;
    otherDowns.Watch(other->onDown);
    otherDowns.then = [this] { button->SetDown(false); };
    button->SetDown(true);
    EXPECT_FALSE(button->IsDown());
    EXPECT_EQ(downs.last, 0);
}

// --- text and look -----------------------------------------------------------------------------------------

TEST_F(Button, SetTextResizesOnlyWhenAsked) {
    const RECT before = button->Bounds();
    button->SetText(TmyString("A much longer text than before"), false);
    EXPECT_EQ(button->Bounds(), before);
    EXPECT_STREQ(button->GetText().Text(), "A much longer text than before");
    button->SetText(TmyString("A much longer text than before"), true);
    const RECT after = button->Bounds();
    EXPECT_EQ(after.left, before.left);
    EXPECT_EQ(after.top, before.top);
    const SIZE natural = button->NaturalSize();
    EXPECT_EQ(after.right - after.left, natural.cx);
    EXPECT_EQ(after.bottom - after.top, natural.cy);
    const HDC dc = ::GetDC(nullptr);
    const SIZE text = MeasureText(dc, button->EffectiveFont(), "A much longer text than before");
    ::ReleaseDC(nullptr, dc);
    EXPECT_EQ(natural.cx, text.cx + 2 * 3 + 2 * 4); // border and padding
    EXPECT_EQ(natural.cy, text.cy + 2 * 3 + 2 * 1);
}

TEST_F(Button, FreshOneFitsItsTextWithTheBorderThatItWillHave) {
    auto* fresh = new TmyButton(&Top(), "", {200, 10, 10, 10}, WS_CHILD);
    fresh->SetText(TmyString("Text"), true);
    const LONG width = fresh->Bounds().right - fresh->Bounds().left;
    EXPECT_EQ(width, fresh->NaturalSize().cx);
    button->SetText(TmyString("Text"), true);
    EXPECT_EQ(width, button->Bounds().right - button->Bounds().left);
}

/// Rows and columns of the frame, by the layout: width 3, on the window colour.
struct FrameEdges {
    explicit FrameEdges(const Snapshot& picture)
        : top(picture.At(picture.Width() / 2, 0)),
          bottom(picture.At(picture.Width() / 2, picture.Height() - 1)),
          left(picture.At(0, picture.Height() / 2)),
          right(picture.At(picture.Width() - 1, picture.Height() / 2)) {}
    COLORREF top;
    COLORREF bottom;
    COLORREF left;
    COLORREF right;
};

int Sum(COLORREF color) {
    return GetRValue(color) + GetGValue(color) + GetBValue(color);
}

TEST_F(Button, RaisedIsLightAtTheTopAndLeftAndSunkenTheOtherWay) {
    const COLORREF face = button->GetStyleValue(StyleValue::WindowColor);
    const FrameEdges raised{Snapshot(*button)};
    EXPECT_GT(Sum(raised.top), Sum(face));
    EXPECT_GT(Sum(raised.left), Sum(face));
    EXPECT_LT(Sum(raised.bottom), Sum(face));
    EXPECT_LT(Sum(raised.right), Sum(face));
    PressAt(*button, kInsideX, kInsideY);
    const FrameEdges sunken{Snapshot(*button)};
    EXPECT_LT(Sum(sunken.top), Sum(face));
    EXPECT_LT(Sum(sunken.left), Sum(face));
    EXPECT_GT(Sum(sunken.bottom), Sum(face));
    EXPECT_GT(Sum(sunken.right), Sum(face));
    ReleaseAt(*button, kInsideX, kInsideY);
    button->SetDown(true);
    const FrameEdges down{Snapshot(*button)};
    EXPECT_EQ(down.top, sunken.top);
    EXPECT_EQ(down.bottom, sunken.bottom);
}

constexpr RECT kInsideFrame{3, 3, 57, 21};

TEST_F(Button, TextIsInTheTextColourTheDisabledOneOrThatOfADownButton) {
    button->SetTextColor(RGB(255, 255, 0));
    button->SetDisabledTextColor(RGB(1, 2, 3));
    button->SetDownTextColor(RGB(0, 255, 255));
    const auto counts = [this] {
        const Snapshot picture(*button);
        return std::array<bool, 3>{picture.Count(kInsideFrame, RGB(255, 255, 0)) > 0,
                                   picture.Count(kInsideFrame, RGB(1, 2, 3)) > 0,
                                   picture.Count(kInsideFrame, RGB(0, 255, 255)) > 0};
    };
    EXPECT_EQ(counts(), (std::array<bool, 3>{true, false, false}));
    button->SetDown(true);
    EXPECT_EQ(counts(), (std::array<bool, 3>{false, false, true}));
    button->SetEnabled(false);
    EXPECT_EQ(counts(), (std::array<bool, 3>{false, true, false}));
    button->SetDown(false);
    EXPECT_EQ(counts(), (std::array<bool, 3>{false, true, false}));
}

TEST_F(Button, FaceIsDimmerWhenDisabled) {
    button->SetText(TmyString(""), false);
    button->SetWindowColor(RGB(100, 80, 40));
    EXPECT_EQ(Snapshot(*button).CountOther(kInsideFrame, RGB(100, 80, 40)), 0);
    button->SetEnabled(false);
    EXPECT_EQ(Snapshot(*button).CountOther(kInsideFrame, RGB(75, 60, 30)), 0);
}

TEST_F(Button, DownTextColourFollowsTheTextColourUntilItIsSet) {
    button->SetTextColor(RGB(9, 8, 7));
    EXPECT_EQ(button->GetDownTextColor(), RGB(9, 8, 7));
    button->SetDownTextColor(RGB(1, 1, 1));
    button->SetTextColor(RGB(5, 5, 5));
    EXPECT_EQ(button->GetDownTextColor(), RGB(1, 1, 1));
}

TEST_F(Button, TextAndArrowMoveByOnePixelWhenPressed) {
    const COLORREF face = button->GetStyleValue(StyleValue::WindowColor);
    for (const bool arrow : {false, true}) {
        button->SetText(TmyString(arrow ? "" : "Text"), false);
        button->SetArrow(arrow ? ArrowGlyph::Down : ArrowGlyph::None, 8);
        RECT up = Snapshot(*button).BoxOfOther(kInsideFrame, face);
        button->SetDown(true);
        const RECT down = Snapshot(*button).BoxOfOther(kInsideFrame, face);
        button->SetDown(false);
        EXPECT_LT(up.left, up.right);
        OffsetRect(&up, 1, 1);
        EXPECT_EQ(down, up);
    }
}

TEST_F(Button, ArrowStandsInTheMiddleInTheColourOfTheText) {
    button->SetText(TmyString(""), false);
    button->SetArrow(ArrowGlyph::Square, 8);
    const Snapshot picture(*button);
    EXPECT_EQ(picture.BoxOfOther(kInsideFrame, button->GetStyleValue(StyleValue::WindowColor)),
              (RECT{26, 8, 34, 16}));
    EXPECT_EQ(picture.Count({26, 8, 34, 16}, button->GetStyleValue(StyleValue::TextColor)), 64);
    button->SetEnabled(false);
    EXPECT_EQ(Snapshot(*button).Count({26, 8, 34, 16}, button->GetStyleValue(StyleValue::DisabledTextColor)),
              64);
}

TEST_F(Button, FocusIsMarkedAlongTheInsideOfTheFrameAndFollowsThePress) {
    button->SetText(TmyString(""), false);
    const COLORREF face = button->GetStyleValue(StyleValue::WindowColor);
    EXPECT_EQ(Snapshot(*button).CountOther(kInsideFrame, face), 0);
    button->SetFocus();
    const Snapshot focused(*button);
    EXPECT_EQ(focused.BoxOfOther(kInsideFrame, face), kInsideFrame);
    EXPECT_EQ(focused.CountOther({4, 4, 56, 20}, face), 0) << "a rectangle, one pixel wide";
    // Every other pixel is black, the others white: seen on any face.
    EXPECT_EQ(focused.Count({3, 3, 57, 4}, kBlackPixel) + focused.Count({3, 3, 57, 4}, kWhitePixel), 54);
    button->SetDown(true);
    const Snapshot pressed(*button);
    EXPECT_EQ(pressed.CountOther({3, 3, 57, 4}, face), 0);
    EXPECT_EQ(pressed.BoxOfOther({3, 3, 57, 21}, face), (RECT{4, 4, 57, 21}));
    button->SetDown(false);
    Top().SetFocus();
    EXPECT_EQ(Snapshot(*button).CountOther(kInsideFrame, face), 0);
}

} // namespace
} // namespace orva::toolkit
