#include "controls/CtbNumParamControl.h"
#include "tests/toolkit/EntrySupport.h"
#include "toolkit/TmyIntEdit.h"
#include "toolkit/TmyLabel.h"
#include "toolkit/TmyUpDown.h"

namespace orva::controls {
namespace {

using toolkit::Pump;

class NumParamControlTest : public toolkit::EntryTest {
protected:
    NumParamControlTest() { changed.Watch(field.onChange); }

    /// Types over all of the text, and presses Return.
    void Enter(const std::string& text) {
        field.Edit()->Select(0, -1);
        Type(*field.Edit(), "\b" + text + "\r");
    }
    void SetRange(std::int64_t minimum, std::int64_t maximum) {
        field.SetMinimum(minimum);
        field.SetMaximum(maximum);
        changed.Take();
    }
    std::string Shown() const { return Text(*field.Edit()); }
    static int WidthOf(const toolkit::TmyControl& control) {
        return static_cast<int>(control.Bounds().right - control.Bounds().left);
    }

    toolkit::FakeTimers timers;
    CtbNumParamControl& field = *new CtbNumParamControl(&top, {20, 20, 160, 20});
    toolkit::EventCount<std::int64_t> changed;
};

TEST_F(NumParamControlTest, BeginsAt0WithItsPartsInPlace) {
    EXPECT_EQ(field.GetValue(), 0);
    EXPECT_EQ(field.GetMinimum(), 0);
    EXPECT_EQ(field.GetMaximum(), 0);
    EXPECT_EQ(field.GetStep(), 1);
    EXPECT_FALSE(field.HasUnit());
    EXPECT_TRUE(field.IsSpinVisible());
    EXPECT_STREQ(field.GetText().Text(), "");
    EXPECT_STREQ(field.Label()->GetText().Text(), "Param name:");
    EXPECT_EQ(field.Label()->Bounds(), (RECT{2, 3, 102, 18}));
    EXPECT_EQ(field.Edit()->Bounds(), (RECT{102, 0, 137, 20}));
    EXPECT_EQ(field.Spin()->Bounds(), (RECT{137, 0, 147, 20}));
    EXPECT_EQ(field.UnitLabel()->Bounds().left, 147);
    EXPECT_EQ(field.UnitLabel()->Bounds().top, 3);
    EXPECT_STREQ(field.UnitLabel()->GetText().Text(), "");
    EXPECT_EQ(Shown(), "0");
    EXPECT_EQ(field.GetStyleValue(toolkit::StyleValue::BorderStyle), 0u);
}

// --- the number --------------------------------------------------------------------------------------------

TEST_F(NumParamControlTest, LimitsTheNumberAndTellsOnce) {
    SetRange(0, 31);
    field.SetValue(40);
    EXPECT_EQ(field.GetValue(), 31);
    EXPECT_EQ(Shown(), "31");
    EXPECT_EQ(changed.Take(), 1);
    EXPECT_EQ(changed.last, 31);
    field.SetValue(40);
    EXPECT_EQ(changed.Take(), 0);
    field.SetValue(-1);
    EXPECT_EQ(field.GetValue(), 0);
    EXPECT_EQ(changed.Take(), 1);
}

TEST_F(NumParamControlTest, MovesTheNumberWithTheMinimumAtOnce) {
    SetRange(0, 100);
    field.SetMinimum(10);
    EXPECT_EQ(field.GetValue(), 10);
    EXPECT_EQ(Shown(), "10");
    EXPECT_EQ(changed.Take(), 1);
    EXPECT_EQ(changed.last, 10);
    field.SetMinimum(5);
    EXPECT_EQ(field.GetValue(), 10);
    EXPECT_EQ(changed.Take(), 0);
}

TEST_F(NumParamControlTest, MovesTheNumberWithTheMaximumAtOnce) {
    SetRange(0, 100);
    field.SetValue(80);
    changed.Take();
    field.SetMaximum(50);
    EXPECT_EQ(field.GetValue(), 50);
    EXPECT_EQ(Shown(), "50");
    EXPECT_EQ(changed.Take(), 1);
}

TEST_F(NumParamControlTest, MovesTheOtherLimitAlong) {
    field.SetMinimum(16);
    EXPECT_EQ(field.GetMaximum(), 16);
    EXPECT_EQ(field.GetValue(), 16);
    EXPECT_EQ(changed.Take(), 1);
    field.SetMaximum(4096);
    EXPECT_EQ(field.GetMinimum(), 16);
    field.SetMaximum(-3);
    EXPECT_EQ(field.GetMinimum(), -3);
    EXPECT_EQ(field.GetMaximum(), -3);
    EXPECT_EQ(field.GetValue(), -3);
    EXPECT_EQ(field.Edit()->GetMinimum(), -3);
    EXPECT_EQ(field.Edit()->GetMaximum(), -3);
    EXPECT_EQ(Shown(), "-3");
    EXPECT_EQ(changed.Take(), 1);
}

TEST_F(NumParamControlTest, Holds0UntilItHasARange) {
    field.SetValue(5);
    EXPECT_EQ(field.GetValue(), 0);
    Enter("7");
    EXPECT_EQ(field.GetValue(), 0);
    EXPECT_EQ(Shown(), "0");
    EXPECT_EQ(changed.count, 0);
}

TEST_F(NumParamControlTest, ShowsTheNumberBeforeItTellsOfIt) {
    SetRange(0, 31);
    std::string shown;
    changed.then = [&] { shown = Shown(); };
    field.SetValue(12);
    EXPECT_EQ(shown, "12");
    field.SetMinimum(20);
    EXPECT_EQ(shown, "20");
}

TEST_F(NumParamControlTest, TakesATypedNumber) {
    SetRange(-9999, 9999);
    Enter("-450");
    EXPECT_EQ(field.GetValue(), -450);
    EXPECT_EQ(changed.Take(), 1);
    EXPECT_EQ(changed.last, -450);
    Enter("12345678901234567890");
    EXPECT_EQ(field.GetValue(), 9999);
    EXPECT_EQ(Shown(), "9999");
    EXPECT_EQ(changed.Take(), 1);
    Enter("9999");
    EXPECT_EQ(changed.Take(), 0);
    Enter("");
    EXPECT_EQ(field.GetValue(), 0);
}

TEST_F(NumParamControlTest, IsSpun) {
    SetRange(0, 100);
    field.SetStep(10);
    EXPECT_EQ(field.GetStep(), 10);
    toolkit::PressAt(*field.Spin(), 5, 5);
    EXPECT_EQ(field.GetValue(), 10);
    timers.Advance(550);
    EXPECT_EQ(field.GetValue(), 30);
    toolkit::ReleaseAt(*field.Spin(), 5, 5);
    EXPECT_EQ(changed.Take(), 3);
    toolkit::ClickAt(*field.Spin(), 5, 15);
    EXPECT_EQ(field.GetValue(), 20);
    field.SetValue(95);
    toolkit::ClickAt(*field.Spin(), 5, 5);
    EXPECT_EQ(field.GetValue(), 100);
}

TEST_F(NumParamControlTest, IsWheeled) {
    SetRange(-9999, 9999);
    field.SetStep(10);
    toolkit::Wheel(*field.Edit(), 1);
    EXPECT_EQ(field.GetValue(), 10);
    EXPECT_EQ(changed.Take(), 1);
    field.SetWheelSnap(true);
    EXPECT_EQ(field.GetValue(), 10);
    EXPECT_EQ(changed.Take(), 0);
    EXPECT_TRUE(field.Edit()->GetWheelSnap());
    field.SetWheelDigits(1);
    EXPECT_EQ(field.Edit()->GetWheelDigits(), 1);
    field.SetValue(4550);
    toolkit::Wheel(*field.Edit(), 1);
    EXPECT_EQ(field.GetValue(), 4600);
    toolkit::Wheel(*field.Edit(), 100);
    EXPECT_EQ(field.GetValue(), 9999);
}

TEST_F(NumParamControlTest, SetsTheTextBackWhenTheWheelSnapIsSet) {
    SetRange(0, 100);
    field.SetValue(5);
    Type(*field.Edit(), "9");
    EXPECT_NE(Shown(), "5");
    field.SetWheelSnap(true);
    EXPECT_EQ(Shown(), "5");
}

TEST_F(NumParamControlTest, LimitsTheCharactersOfItsEntry) {
    SetRange(0, 100000);
    field.SetDigits(3);
    Enter("12345");
    EXPECT_EQ(field.GetValue(), 123);
}

TEST_F(NumParamControlTest, LetsTheOwnerRefuseANumber) {
    SetRange(0, 100);
    field.SetValue(20);
    changed.then = [&] {
        changed.then = nullptr;
        field.SetValue(20);
    };
    Enter("70");
    EXPECT_EQ(field.GetValue(), 20);
    EXPECT_EQ(Shown(), "20");
}

TEST_F(NumParamControlTest, LetsAHandlerDeleteIt) {
    SetRange(0, 100);
    const HWND edit = field.Edit()->Window();
    changed.then = [&] { delete &field; };
    field.Edit()->SetText("70");
    SendMessageA(edit, WM_CHAR, '\r', 0);
    EXPECT_EQ(changed.last, 70);
    EXPECT_FALSE(IsWindow(edit));
    EXPECT_EQ(top.FirstChild(), nullptr);
}

TEST_F(NumParamControlTest, LetsAHandlerDeleteItWhenALimitMovesTheNumber) {
    changed.then = [&] { delete &field; };
    field.SetMinimum(5);
    EXPECT_EQ(changed.last, 5);
    EXPECT_EQ(top.FirstChild(), nullptr);
}

TEST_F(NumParamControlTest, TakesNothingWhileDisabled) {
    SetRange(0, 100);
    field.SetEnabled(false);
    Pump();
    Enter("70");
    toolkit::Wheel(*field.Edit(), 1);
    toolkit::ClickAt(*field.Spin(), 5, 5);
    EXPECT_EQ(field.GetValue(), 0);
    EXPECT_EQ(Shown(), "0");
    field.SetValue(3); // the program may
    EXPECT_EQ(Shown(), "3");
}

// --- texts and layout --------------------------------------------------------------------------------------

TEST_F(NumParamControlTest, SetsItsTexts) {
    field.SetTitle("Freq", false);
    EXPECT_STREQ(field.Label()->GetText().Text(), "Freq");
    EXPECT_EQ(field.Label()->Bounds(), (RECT{2, 3, 102, 18}));
    field.SetTitle(nullptr, false);
    EXPECT_STREQ(field.Label()->GetText().Text(), "");
    field.SetUnit("Hz", false);
    EXPECT_TRUE(field.HasUnit());
    EXPECT_STREQ(field.UnitLabel()->GetText().Text(), "Hz");
    field.SetUnit("", false);
    EXPECT_FALSE(field.HasUnit());
    field.SetUnit("Hz", false);
    field.SetUnit(nullptr, false);
    EXPECT_FALSE(field.HasUnit());
    EXPECT_EQ(WidthOf(field), 160);
}

TEST_F(NumParamControlTest, PlacesItsPartsInARow) {
    field.SetFieldSize(43, 20);
    field.SetTitle("Freq", true);
    field.SetUnit("Hz", true);
    const int label = static_cast<int>(field.Label()->NaturalSize().cx);
    const int unit = static_cast<int>(field.UnitLabel()->NaturalSize().cx);
    EXPECT_GT(label, 10);
    EXPECT_GT(unit, 5);
    EXPECT_EQ(field.Label()->Bounds(), (RECT{2, 3, 2 + label, 18}));
    EXPECT_EQ(field.Edit()->Bounds(), (RECT{2 + label, 0, 2 + label + 43, 20}));
    EXPECT_EQ(field.Spin()->Bounds(), (RECT{2 + label + 43, 0, 2 + label + 53, 20}));
    EXPECT_EQ(field.UnitLabel()->Bounds(), (RECT{2 + label + 53, 3, 2 + label + 53 + unit, 18}));
    EXPECT_EQ(field.Bounds(), (RECT{20, 20, 20 + 2 + label + 53 + unit + 2, 40}));
}

TEST_F(NumParamControlTest, LeavesOutWhatIsNotThere) {
    field.SetFieldSize(28, 22);
    field.SetTitle("", true);
    Pump();
    EXPECT_EQ(field.Edit()->Bounds(), (RECT{2, 0, 30, 22}));
    EXPECT_EQ(field.Spin()->Bounds(), (RECT{30, 0, 40, 22}));
    EXPECT_EQ(field.Bounds(), (RECT{20, 20, 62, 42}));
    EXPECT_FALSE(field.Label()->IsVisible());
    EXPECT_FALSE(field.UnitLabel()->IsVisible());
    field.SetSpinVisible(false, true);
    Pump();
    EXPECT_FALSE(field.Spin()->IsVisible());
    EXPECT_EQ(field.Bounds(), (RECT{20, 20, 52, 42}));
    field.SetSpinVisible(true, false);
    field.SetTitle("Q", true);
    Pump();
    EXPECT_TRUE(field.Spin()->IsVisible());
    EXPECT_TRUE(field.Label()->IsVisible());
}

TEST_F(NumParamControlTest, DrawsTextsWithoutClippingThem) {
    field.SetTitle("Squelch gyp", true);
    field.SetUnit("dB/oct", true);
    Settle(top);
    for (toolkit::TmyLabel* part : {field.Label(), field.UnitLabel()}) {
        const toolkit::Snapshot shown(*part);
        const COLORREF back = part->GetStyleValue(toolkit::StyleValue::WindowColor);
        const RECT box = shown.BoxOfOther(shown.Whole(), back);
        EXPECT_GT(box.right, box.left);
        EXPECT_GE(box.left, 0);
        EXPECT_LE(box.bottom, shown.Height());
        // Without the edges the text is whole: nothing touches them but overhang.
        EXPECT_EQ(shown.CountOther({0, 0, shown.Width(), 1}, back), 0);
        EXPECT_EQ(shown.CountOther({0, shown.Height() - 1, shown.Width(), shown.Height()}, back), 0);
    }
}

} // namespace
} // namespace orva::controls
