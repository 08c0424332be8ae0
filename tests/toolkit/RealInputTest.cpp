/// Widgets under the machine's own mouse and keys: `SendInput` with `SetCursorPos`, through the platform's
/// whole way of input.

#include "tests/toolkit/WidgetSupport.h"
#include "toolkit/TmyButton.h"
#include "toolkit/TmyPanel.h"
#include "toolkit/Tmy_Btn2.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

class RealInput : public WidgetTest {
protected:
    RealInput() : button(new TmyButton(&Top(), "Text", {10, 10, 60, 24})) {
        clicks.Watch(button->onClick);
        presses.Watch(button->onPress);
    }
    ~RealInput() override {
        if ((GetAsyncKeyState(VK_LBUTTON) & 0x8000) != 0) {
            real::LeftUp();
        }
        real::MoveTo(kTopPlace.x + kTopPlace.width - 5, kTopPlace.y + kTopPlace.height - 5);
    }

    TmyButton* button;
    EventCount<> clicks;
    EventCount<> presses;
};

TEST_F(RealInput, ClickIsOneClick) {
    real::MoveOnto(*button);
    real::LeftDown();
    EXPECT_TRUE(button->IsPressed());
    EXPECT_EQ(GetCapture(), button->Window());
    EXPECT_EQ(::GetFocus(), button->Window());
    real::LeftUp();
    EXPECT_FALSE(button->IsPressed());
    EXPECT_EQ(GetCapture(), nullptr);
    EXPECT_EQ(clicks.count, 1);
    EXPECT_EQ(presses.count, 1);
}

TEST_F(RealInput, PressFollowsThePointerOutsideTheWindowAndBack) {
    real::MoveOnto(*button);
    real::LeftDown();
    real::MoveTo(kTopPlace.x - 50, kTopPlace.y - 50); // beyond the top window
    EXPECT_FALSE(button->IsPressed());
    real::MoveTo(kTopPlace.x + 12, kTopPlace.y + 12);
    EXPECT_TRUE(button->IsPressed());
    real::MoveTo(kTopPlace.x + 9, kTopPlace.y + 12); // beside the button
    EXPECT_FALSE(button->IsPressed());
    real::LeftUp();
    EXPECT_EQ(clicks.count, 0);
    EXPECT_EQ(GetCapture(), nullptr);
}

TEST_F(RealInput, ReleaseFarOutsideStillReachesTheButton) {
    real::MoveOnto(*button);
    real::LeftDown();
    real::MoveTo(1, 1);
    real::LeftUp();
    EXPECT_FALSE(button->IsPressed());
    EXPECT_EQ(clicks.count, 0);
    real::MoveOnto(*button);
    EXPECT_FALSE(button->IsPressed()) << "nothing is held any more";
}

TEST_F(RealInput, HoldingRepeats) {
    real::MoveOnto(*button);
    const DWORD start = GetTickCount();
    real::LeftDown();
    EXPECT_TRUE(PumpUntil([&] { return presses.count >= 3; }));
    EXPECT_GE(GetTickCount() - start, 530u); // 500 and 50 ms, less the clock's grain
    real::LeftUp();
    const int after = presses.count;
    PumpUntil([] { return false; }, 120);
    EXPECT_EQ(presses.count, after);
    EXPECT_EQ(clicks.count, 1);
}

TEST_F(RealInput, DisabledButtonTakesNoClickThoughItsParentGetsIt) {
    EventCount<MouseButton, WPARAM, int, int> ofTop;
    ofTop.Watch(Top().onMouseDown);
    EventCount<MouseButton, WPARAM, int, int> ofButton;
    ofButton.Watch(button->onMouseDown);
    button->SetEnabled(false);
    real::MoveOnto(*button);
    real::LeftDown();
    EXPECT_EQ(GetCapture(), Top().Window()) << "the platform gives a disabled child's click to its parent";
    real::LeftUp();
    EXPECT_EQ(clicks.count + presses.count, 0);
    EXPECT_EQ(ofButton.count, 0);
    EXPECT_FALSE(button->IsPressed());
    button->SetEnabled(true);
    real::LeftDown();
    real::LeftUp();
    EXPECT_EQ(clicks.count, 1);
    Top().onMouseDown.Clear();
}

TEST_F(RealInput, ClickOnADisabledButtonDoesNotLeadTheKeysToIt) {
    auto* other = new TmyButton(&Top(), "other", {80, 10, 60, 24});
    other->SetFocus();
    button->SetEnabled(false);
    real::MoveOnto(*button);
    real::LeftDown();
    real::LeftUp();
    EXPECT_FALSE(button->HasState(ControlState::Focused));
    EXPECT_EQ(::GetFocus(), Top().Window()) << "as after a click beside the button";
    real::Key(VK_TAB);
    EXPECT_EQ(::GetFocus(), other->Window());
}

TEST_F(RealInput, DisabledWhileHeldItGivesTheMouseBack) {
    real::MoveOnto(*button);
    real::LeftDown();
    button->SetEnabled(false);
    EXPECT_FALSE(button->IsPressed());
    real::LeftUp();
    EXPECT_EQ(clicks.count, 0);
    button->SetEnabled(true);
    real::LeftDown();
    real::LeftUp();
    EXPECT_EQ(clicks.count, 1);
}

TEST_F(RealInput, LightButtonOnAPanelClicksAndFollowsThePointer) {
    auto* panel = new TmyPanel(&Top(), "", {10, 50, 100, 60});
    auto* light = new Tmy_Btn2(panel, {20, 20, 30, 20});
    clicks.Watch(light->onClick);
    presses.Watch(light->onPress);
    Pump();
    const int x = kTopPlace.x + 10 + 25;
    const int y = kTopPlace.y + 50 + 25;
    real::MoveTo(x, y);
    real::LeftDown();
    EXPECT_TRUE(light->IsPressed());
    EXPECT_EQ(GetCapture(), panel->Window());
    real::MoveTo(5, 5);
    EXPECT_FALSE(light->IsPressed());
    real::MoveTo(x, y);
    EXPECT_TRUE(light->IsPressed());
    real::LeftUp();
    EXPECT_EQ(clicks.count, 1);
    EXPECT_EQ(presses.count, 1);
}

TEST_F(RealInput, ReturnAndSpaceGoToTheButtonInFocus) {
    button->SetFocus();
    real::Key(VK_RETURN);
    EXPECT_EQ(clicks.count, 1);
    real::KeyPressed(VK_SPACE);
    EXPECT_TRUE(button->IsPressed());
    real::KeyReleased(VK_SPACE);
    EXPECT_FALSE(button->IsPressed());
    EXPECT_EQ(clicks.count, 2);
}

TEST_F(RealInput, TabWalksTheButtonsInTheirOrderPastDisabledAndHiddenOnes) {
    auto* second = new TmyButton(&Top(), "2", {80, 10, 40, 24});
    auto* off = new TmyButton(&Top(), "off", {130, 10, 40, 24});
    auto* hidden = new TmyButton(&Top(), "hidden", {180, 10, 40, 24});
    auto* third = new TmyButton(&Top(), "3", {230, 10, 40, 24});
    auto* noStop = new TmyButton(&Top(), "no stop", {280, 10, 40, 24}, kWidgetStyle);
    off->SetEnabled(false);
    hidden->SetVisible(false);
    Pump();
    button->SetFocus();
    EXPECT_EQ(::GetFocus(), button->Window());
    real::Key(VK_TAB);
    EXPECT_EQ(::GetFocus(), second->Window());
    real::Key(VK_TAB);
    EXPECT_EQ(::GetFocus(), third->Window());
    real::Key(VK_TAB);
    EXPECT_EQ(::GetFocus(), button->Window()) << "around the end";
    real::KeyPressed(VK_SHIFT);
    real::Key(VK_TAB);
    EXPECT_EQ(::GetFocus(), third->Window());
    real::Key(VK_TAB);
    EXPECT_EQ(::GetFocus(), second->Window());
    real::KeyReleased(VK_SHIFT);
    EXPECT_NE(::GetFocus(), noStop->Window());
}

TEST_F(RealInput, PointerThatRestsOnAButtonIsToldOnlyWhileItIsEnabled) {
    EventCount<> hovers;
    hovers.Watch(button->onHover);
    button->SetEnabled(false);
    real::MoveOnto(*button);
    Send(*button, WM_MOUSEMOVE, 0, Point(30, 12));
    PumpUntil([&] { return hovers.count > 0; }, 650);
    EXPECT_EQ(hovers.count, 0);
    button->SetEnabled(true);
    real::MoveTo(kTopPlace.x + 20, kTopPlace.y + 20);
    EXPECT_TRUE(PumpUntil([&] { return hovers.count > 0; }, 3000));
    EXPECT_EQ(hovers.sender, button);
}

} // namespace
} // namespace orva::toolkit
