#include "tests/toolkit/EntrySupport.h"
#include "toolkit/TmyFloatEdit.h"
#include "toolkit/TmyIntEdit.h"
#include "toolkit/TmyUpDown.h"
#include "toolkit/Tmy_Btn2.h"
#include "toolkit/TypeRegistry.h"

namespace orva::toolkit {
namespace {

class UpDownTest : public EntryTest {
protected:
    UpDownTest() {
        edit.SetValue(10);
        spin.SetEdit(&edit);
    }

    static constexpr int kUpY = 5;
    static constexpr int kDownY = 15;

    FakeTimers timers;
    TmyIntEdit& edit = *new TmyIntEdit(&top, {10, 10, 50, 20});
    TmyUpDown& spin = *new TmyUpDown(&top, {0, 0, 10, 20});
};

TEST_F(UpDownTest, HasTwoButtonsAndTheHandPointer) {
    const TypeRecord* type = FindType(&spin);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->typeId, 27u);
    EXPECT_STREQ(type->name, "UpDown");
    EXPECT_EQ(spin.GetCursor(), LoadCursorA(nullptr, MAKEINTRESOURCEA(32649)));
    EXPECT_EQ(spin.FirstChild(), spin.UpButton());
    EXPECT_EQ(spin.FirstChild()->NextSibling(), spin.DownButton());
    EXPECT_EQ(spin.DownButton()->NextSibling(), nullptr);
    EXPECT_EQ(spin.MiddleButton(), nullptr);
    EXPECT_TRUE(spin.UpButton()->SharesStyleWith(*spin.DownButton()));
    EXPECT_FALSE(spin.UpButton()->SharesStyleWith(top));
    EXPECT_EQ(spin.GetStyleValue(StyleValue::BorderStyle), 0u);
}

TEST_F(UpDownTest, SplitsTheLongerSideInHalves) {
    EXPECT_EQ(spin.UpButton()->Bounds(), (RECT{0, 0, 10, 10}));
    EXPECT_EQ(spin.DownButton()->Bounds(), (RECT{0, 10, 10, 20}));
    EXPECT_EQ(spin.UpButton()->GetArrow(), ArrowGlyph::SolidUp);
    EXPECT_EQ(spin.DownButton()->GetArrow(), ArrowGlyph::SolidDown);
    spin.SetSize(14, 21);
    EXPECT_EQ(spin.UpButton()->Bounds(), (RECT{0, 0, 14, 10}));
    EXPECT_EQ(spin.DownButton()->Bounds(), (RECT{0, 10, 14, 21}));
    spin.SetSize(31, 20);
    EXPECT_EQ(spin.DownButton()->Bounds(), (RECT{0, 0, 15, 20}));
    EXPECT_EQ(spin.UpButton()->Bounds(), (RECT{15, 0, 31, 20}));
    EXPECT_EQ(spin.UpButton()->GetArrow(), ArrowGlyph::SolidRight);
    EXPECT_EQ(spin.DownButton()->GetArrow(), ArrowGlyph::SolidLeft);
    spin.SetSize(20, 20);
    EXPECT_EQ(spin.UpButton()->Bounds(), (RECT{0, 0, 20, 10}));
    spin.SetSize(0, 0);
    EXPECT_EQ(spin.UpButton()->Bounds(), (RECT{0, 0, 0, 0}));
}

TEST_F(UpDownTest, GivesAThirdToTheMiddleButton) {
    auto* three = new TmyUpDown(&top, {100, 0, 10, 30}, true);
    ASSERT_NE(three->MiddleButton(), nullptr);
    EXPECT_EQ(three->UpButton()->Bounds(), (RECT{0, 0, 10, 10}));
    EXPECT_EQ(three->MiddleButton()->Bounds(), (RECT{0, 10, 10, 20}));
    EXPECT_EQ(three->DownButton()->Bounds(), (RECT{0, 20, 10, 30}));
    three->SetSize(41, 10);
    EXPECT_EQ(three->DownButton()->Bounds(), (RECT{0, 0, 14, 10}));
    EXPECT_EQ(three->MiddleButton()->Bounds(), (RECT{14, 0, 27, 10}));
    EXPECT_EQ(three->UpButton()->Bounds(), (RECT{27, 0, 41, 10}));
    EventCount<> clicked;
    EventCount<int> stepped;
    clicked.Watch(three->MiddleButton()->onClick);
    stepped.Watch(three->onStep);
    ClickAt(*three, 20, 5);
    EXPECT_EQ(clicked.count, 1);
    EXPECT_EQ(stepped.count, 0);
    ClickAt(*three, 30, 5);
    EXPECT_EQ(stepped.count, 1);
    EXPECT_EQ(stepped.last, 1);
}

TEST_F(UpDownTest, StandsAtTheRightOfItsEntry) {
    EXPECT_EQ(spin.Bounds(), (RECT{60, 10, 70, 30}));
    edit.SetBounds(20, 50, 70, 20);
    EXPECT_EQ(spin.Bounds(), (RECT{90, 50, 100, 70}));
}

TEST_F(UpDownTest, StepsAtThePressAndRepeatsWhileHeld) {
    EventCount<int> stepped;
    stepped.Watch(spin.onStep);
    edit.SetStep(5);
    PressAt(spin, 5, kUpY);
    EXPECT_EQ(edit.GetValue(), 15);
    timers.Advance(499);
    EXPECT_EQ(edit.GetValue(), 15);
    timers.Advance(1);
    EXPECT_EQ(edit.GetValue(), 20);
    timers.Advance(100);
    EXPECT_EQ(edit.GetValue(), 30);
    ReleaseAt(spin, 5, kUpY);
    timers.Advance(2000);
    EXPECT_EQ(edit.GetValue(), 30);
    EXPECT_EQ(stepped.count, 4);
    ClickAt(spin, 5, kDownY);
    EXPECT_EQ(edit.GetValue(), 25);
    EXPECT_EQ(stepped.last, -1);
}

TEST_F(UpDownTest, TakesTheTextOnShowFirst) {
    edit.SetText("40");
    ClickAt(spin, 5, kUpY);
    EXPECT_EQ(edit.GetValue(), 41);
    edit.SetText("junk");
    ClickAt(spin, 5, kDownY);
    EXPECT_EQ(edit.GetValue(), -1);
}

TEST_F(UpDownTest, FollowsTheRulesOfTheWheel) {
    edit.SetWheelDigits(1);
    edit.SetWheelSnap(true);
    edit.SetValue(4550);
    ClickAt(spin, 5, kUpY);
    EXPECT_EQ(edit.GetValue(), 4600);
    EXPECT_EQ(edit.GetStep(), 100);
    edit.SetValue(1000);
    ClickAt(spin, 5, kDownY);
    EXPECT_EQ(edit.GetValue(), 990);
    edit.SetMaximum(995);
    ClickAt(spin, 5, kUpY);
    EXPECT_EQ(edit.GetValue(), 995);
    ClickAt(spin, 5, kUpY);
    EXPECT_EQ(edit.GetValue(), 995);
}

TEST_F(UpDownTest, StepsAnEntryWithDecimals) {
    TmyFloatEdit decimals(&top, 1, {10, 60, 50, 20});
    decimals.SetMaximum(120);
    decimals.SetValue(60);
    spin.SetEdit(&decimals);
    ClickAt(spin, 5, kUpY);
    EXPECT_EQ(Text(decimals), "6.1");
    EXPECT_EQ(edit.GetValue(), 10);
}

TEST_F(UpDownTest, StepsByTheWheel) {
    Wheel(spin, 3);
    EXPECT_EQ(edit.GetValue(), 13);
    spin.SetEdit(nullptr);
    EventCount<int, WPARAM, bool&> passed;
    passed.Watch(top.onWheel);
    Wheel(spin, 1);
    EXPECT_EQ(edit.GetValue(), 13);
    EXPECT_EQ(passed.count, 1);
    top.onWheel.Clear();
}

TEST_F(UpDownTest, DoesNothingWhileItOrItsEntryIsDisabled) {
    EventCount<int> stepped;
    stepped.Watch(spin.onStep);
    spin.SetEnabled(false);
    ClickAt(spin, 5, kUpY);
    Wheel(spin, 1);
    spin.SetEnabled(true);
    edit.SetEnabled(false);
    ClickAt(spin, 5, kUpY);
    Wheel(spin, 1);
    edit.SetEnabled(true);
    edit.SetReadOnly(true);
    ClickAt(spin, 5, kUpY);
    EXPECT_EQ(edit.GetValue(), 10);
    EXPECT_EQ(stepped.count, 0);
}

TEST_F(UpDownTest, OutlivesItsEntryAndTheOtherWayRound) {
    auto* shortLived = new TmyIntEdit(&top, {10, 60, 50, 20});
    spin.SetEdit(shortLived);
    delete shortLived;
    EventCount<int> stepped;
    stepped.Watch(spin.onStep);
    ClickAt(spin, 5, kUpY);
    EXPECT_EQ(stepped.count, 1);
    auto* second = new TmyUpDown(&top, {0, 0, 10, 20});
    second->SetEdit(&edit);
    delete second;
    edit.SetBounds(30, 30, 50, 20);
    ClickAt(spin, 5, kUpY);
}

TEST_F(UpDownTest, LetsAHandlerDeleteItWhileHeld) {
    EventCount<std::int64_t> changed;
    changed.Watch(edit.onValueChanged);
    auto* victim = new TmyUpDown(&top, {100, 0, 10, 20});
    victim->SetEdit(&edit);
    changed.then = [&] {
        delete victim;
        victim = nullptr;
    };
    SendMessageA(victim->Window(), WM_LBUTTONDOWN, MK_LBUTTON, Point(5, 5));
    EXPECT_EQ(victim, nullptr);
    changed.then = nullptr;
    timers.Advance(1000);
    EXPECT_TRUE(timers.Running().empty());
    EXPECT_EQ(changed.count, 1);
}

TEST_F(UpDownTest, StopsWhenTheMouseIsTakenAway) {
    PressAt(spin, 5, kUpY);
    timers.Advance(500);
    EXPECT_EQ(edit.GetValue(), 12);
    SetCapture(top.Window()); // whoever has it gets the release
    timers.Advance(5000);
    EXPECT_EQ(edit.GetValue(), 12);
    EXPECT_FALSE(spin.UpButton()->IsPressed());
    EXPECT_TRUE(timers.Running().empty());
    ReleaseCapture();
}

TEST_F(UpDownTest, DrawsAnArrowOnEachButton) {
    Settle(top);
    const COLORREF text = spin.GetStyleValue(StyleValue::TextColor);
    const Snapshot enabled(spin);
    EXPECT_GE(enabled.Count({0, 0, 10, 10}, text), 4);
    EXPECT_GE(enabled.Count({0, 10, 10, 20}, text), 4);
    spin.SetEnabled(false);
    Pump();
    const Snapshot disabled(spin);
    EXPECT_EQ(disabled.Count(disabled.Whole(), text), 0);
    EXPECT_GE(disabled.Count(disabled.Whole(), spin.GetStyleValue(StyleValue::DisabledTextColor)), 8);
}

TEST_F(UpDownTest, IsSpunByTheRealMouse) {
    edit.SetFocus();
    edit.SetText("77");
    POINT place{5, kUpY};
    ClientToScreen(spin.Window(), &place);
    real::MoveTo(place.x, place.y);
    real::LeftDown();
    EXPECT_EQ(edit.GetValue(), 78);
    EXPECT_EQ(::GetCapture(), spin.Window());
    EXPECT_FALSE(edit.HasFocus()); // a press takes it to the window, which has no other taker
    real::MoveTo(place.x + 200, place.y + 100);
    timers.Advance(600);
    EXPECT_EQ(edit.GetValue(), 81); // at 500, 550 and 600 ms, though the pointer has left
    real::LeftUp();
    EXPECT_EQ(::GetCapture(), nullptr);
    timers.Advance(600);
    EXPECT_EQ(edit.GetValue(), 81);
}

} // namespace
} // namespace orva::toolkit
