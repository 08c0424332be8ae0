/// Entries under the machine's own mouse and keys.

#include "tests/toolkit/EntrySupport.h"
#include "toolkit/TmyFloatEdit.h"
#include "toolkit/TmyFloatingSelection2.h"
#include "toolkit/TmyIntEdit.h"
#include "toolkit/Tmy_Panel.h"

#include <vector>

namespace orva::toolkit {
namespace {

class RealEntry : public EntryTest {
protected:
    RealEntry() {
        edit.SetValue(4500);
        changed.Watch(edit.onValueChanged);
    }
    ~RealEntry() override {
        if ((GetAsyncKeyState(VK_LBUTTON) & 0x8000) != 0) {
            real::LeftUp();
        }
        real::MoveTo(kTopPlace.x + kTopPlace.width - 5, kTopPlace.y + kTopPlace.height - 5);
    }

    /// All in one go, as fast fingers do.
    static void TypeKeys(const std::string& keys) {
        std::vector<INPUT> inputs;
        for (const char key : keys) {
            for (const DWORD flags : {DWORD{0}, DWORD{KEYEVENTF_KEYUP}}) {
                INPUT input{};
                input.type = INPUT_KEYBOARD;
                input.ki.wVk = static_cast<unsigned char>(key);
                input.ki.dwFlags = flags;
                inputs.push_back(input);
            }
        }
        SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT));
        PumpUntil([] { return false; }, 30);
    }
    static void With(WORD modifier, WORD key) {
        real::KeyPressed(modifier);
        real::Key(key);
        real::KeyReleased(modifier);
    }
    static void TurnWheel(int notches) {
        INPUT input{};
        input.type = INPUT_MOUSE;
        input.mi.dwFlags = MOUSEEVENTF_WHEEL;
        input.mi.mouseData = static_cast<DWORD>(notches * WHEEL_DELTA);
        SendInput(1, &input, sizeof input);
        PumpUntil([] { return false; }, 30);
    }
    /// To a place in a window's outer rectangle.
    static void MoveInto(const TmyComponent& component, int x, int y) {
        RECT place{};
        GetWindowRect(component.Window(), &place);
        real::MoveTo(static_cast<int>(place.left) + x, static_cast<int>(place.top) + y);
    }
    static void Click() {
        real::LeftDown();
        real::LeftUp();
    }

    TmyIntEdit& edit = *new TmyIntEdit(&top, {10, 10, 100, 20});
    TmyEdit& text = *new TmyEdit(&top, "abcdef", {10, 40, 100, 20});
    EventCount<std::int64_t> changed;
};

TEST_F(RealEntry, TypedNumberIsTakenAtReturn) {
    edit.SetFocus();
    edit.Select(0, -1);
    TypeKeys(std::string("\x6D") + "1X2 3\x6D"); // VK_SUBTRACT at both ends
    EXPECT_EQ(Text(edit), "-123");
    EXPECT_EQ(edit.GetValue(), 4500);
    real::Key(VK_RETURN);
    EXPECT_EQ(edit.GetValue(), -123);
    EXPECT_EQ(changed.count, 1);
    EXPECT_EQ(::GetFocus(), top.Window());
    TypeKeys("9");
    EXPECT_EQ(Text(edit), "-123");
}

TEST_F(RealEntry, EscapePutsTheNumberBack) {
    edit.SetFocus();
    TypeKeys("7");
    EXPECT_NE(Text(edit), "4500");
    real::Key(VK_ESCAPE);
    EXPECT_EQ(Text(edit), "4500");
    EXPECT_EQ(::GetFocus(), top.Window());
}

TEST_F(RealEntry, EditingKeysAreThePlatforms) {
    edit.SetFocus();
    real::Key(VK_END);
    real::Key(VK_BACK);
    EXPECT_EQ(Text(edit), "450");
    real::Key(VK_HOME);
    real::Key(VK_DELETE);
    EXPECT_EQ(Text(edit), "50");
    real::KeyPressed(VK_SHIFT);
    real::Key(VK_RIGHT);
    real::KeyReleased(VK_SHIFT);
    EXPECT_EQ(Selection(edit), static_cast<DWORD>(MAKELONG(0, 1)));
    With(VK_CONTROL, 'C');
    real::Key(VK_END);
    With(VK_CONTROL, 'V');
    EXPECT_EQ(Text(edit), "505");
}

TEST_F(RealEntry, TabGoesFromEntryToEntryAndTakesTheText) {
    edit.SetFocus();
    real::Key(VK_END);
    TypeKeys("9");
    real::Key(VK_TAB);
    EXPECT_EQ(::GetFocus(), text.Window());
    EXPECT_EQ(edit.GetValue(), 45009);
    TypeKeys("7");
    EXPECT_NE(Text(text).find('7'), std::string::npos);
    EXPECT_EQ(Text(text).find('\t'), std::string::npos);
    With(VK_SHIFT, VK_TAB);
    EXPECT_EQ(::GetFocus(), edit.Window());
    EXPECT_EQ(Text(edit), "45009");
}

TEST_F(RealEntry, ClickPutsTheCaretWhereItFalls) {
    MoveInto(text, 5, 10);
    Click();
    EXPECT_EQ(::GetFocus(), text.Window());
    EXPECT_EQ(Selection(text), 0u);
    MoveInto(text, 90, 10);
    Click();
    EXPECT_EQ(Selection(text), static_cast<DWORD>(MAKELONG(6, 6)));
    EXPECT_EQ(::GetCapture(), nullptr);
}

TEST_F(RealEntry, ClickBesideTheLineOrOnTheUnitIsOneIntoTheText) {
    edit.SetUnitWidth(30);
    edit.SetUnit("kHz");
    edit.SetSize(100, 30);
    MoveInto(edit, 85, 15); // the unit
    Click();
    EXPECT_EQ(::GetFocus(), edit.Window());
    EXPECT_EQ(Selection(edit), static_cast<DWORD>(MAKELONG(4, 4)));
    top.SetFocus();
    MoveInto(edit, 5, 4); // above the line
    Click();
    EXPECT_EQ(::GetFocus(), edit.Window());
    EXPECT_EQ(Selection(edit), 0u);
    top.SetFocus();
    MoveInto(edit, 50, 1); // the frame
    Click();
    EXPECT_NE(::GetFocus(), edit.Window());
}

TEST_F(RealEntry, DragSelectsBeyondTheWindow) {
    MoveInto(text, 5, 10);
    real::LeftDown();
    EXPECT_EQ(::GetCapture(), text.Window());
    real::MoveTo(kTopPlace.x + kTopPlace.width + 100, kTopPlace.y + 50);
    EXPECT_EQ(Selection(text), static_cast<DWORD>(MAKELONG(0, 6)));
    real::LeftUp();
    EXPECT_EQ(::GetCapture(), nullptr);
    EXPECT_EQ(Selection(text), static_cast<DWORD>(MAKELONG(0, 6)));
}

TEST_F(RealEntry, WheelStepsTheEntryWithTheFocus) {
    edit.SetStep(100);
    MoveInto(edit, 50, 10);
    Click();
    TurnWheel(1);
    EXPECT_EQ(edit.GetValue(), 4600);
    TurnWheel(-2);
    EXPECT_EQ(edit.GetValue(), 4400);
}

TEST_F(RealEntry, DisabledEntryTakesNoClickAndIsPassedByTab) {
    auto* last = new TmyFloatEdit(&top, 2, {10, 70, 100, 20});
    text.SetEnabled(false);
    Pump();
    MoveInto(text, 50, 10);
    Click();
    EXPECT_NE(::GetFocus(), text.Window());
    edit.SetFocus();
    real::Key(VK_TAB);
    EXPECT_EQ(::GetFocus(), last->Window());
    last->SetValue(0);
    last->Select(0, -1);
    TypeKeys("1\xBE"
             "255\r"); // with VK_OEM_PERIOD and VK_RETURN
    EXPECT_EQ(last->GetValue(), 125);
    EXPECT_EQ(Text(*last), "1.25");
}

TEST_F(RealEntry, EntryOnADisabledControlWithoutAWindowTakesNoClick) {
    auto* panel = new Tmy_Panel(&top, {10, 70, 150, 60});
    auto* inner = new TmyEdit(panel, "inner", {10, 10, 100, 20});
    Pump();
    panel->SetEnabled(false);
    edit.SetFocus();
    MoveInto(*inner, 50, 10);
    Click();
    EXPECT_NE(::GetFocus(), inner->Window());
    EXPECT_FALSE(inner->HasState(ControlState::Focused));
    panel->SetEnabled(true);
    Click();
    EXPECT_EQ(::GetFocus(), inner->Window());
}

TEST_F(RealEntry, DigitsAreTurnedByTheMouse) {
    auto* digits = new TmyFloatingSelection2(&edit, 3, 16);
    digits->Open();
    Settle(*digits);
    const RECT column = digits->ColumnRect(2);
    POINT place{(column.left + column.right) / 2, 24};
    ClientToScreen(digits->Window(), &place);
    real::MoveTo(place.x, place.y);
    TurnWheel(1);
    EXPECT_TRUE(PumpUntil([&] { return edit.GetValue() == 4600; }));
    real::LeftDown();
    real::MoveTo(place.x, place.y - 150); // beyond the pop-up, and the window below it
    EXPECT_EQ(::GetCapture(), digits->Window());
    real::MoveTo(place.x, place.y - 34);
    real::LeftUp();
    EXPECT_TRUE(PumpUntil([&] { return edit.GetValue() == 4800; }));
    EXPECT_EQ(::GetFocus(), edit.Window());
    real::Key(VK_ESCAPE);
    EXPECT_FALSE(digits->IsOpen());
    EXPECT_EQ(::GetFocus(), edit.Window());
}

} // namespace
} // namespace orva::toolkit
