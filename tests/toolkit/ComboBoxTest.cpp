/// The combo box: selection, opening and closing, where the list stands, look.

#include "tests/toolkit/WidgetSupport.h"
#include "toolkit/TmyComboBox.h"
#include "toolkit/Tmy_Btn.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

constexpr Placement kBoxPlace{10, 10, 120, 20};
constexpr int kBorder = 2;
constexpr int kButtonWidth = 16;
constexpr int kFieldX = 30;   ///< on the text
constexpr int kButtonX = 110; ///< on the button
constexpr int kY = 10;
constexpr DWORD kSamePress = 100; ///< within which a press does not open the list that it closed [ms]

RECT WindowRectOf(const TmyComponent& component) {
    RECT place{};
    GetWindowRect(component.Window(), &place);
    return place;
}

class ComboBox : public WidgetTest {
protected:
    ComboBox() : box(new TmyComboBox(&Top(), kBoxPlace)) {
        changes.Watch(box->onChange);
        for (const char* text : {"Zero", "One", "Two", "Three"}) {
            box->AddItem(text);
        }
    }
    ~ComboBox() override { Top().SetPosition(kTopPlace.x, kTopPlace.y); }

    [[nodiscard]] TmyListBox& List() const { return *box->List(); }
    [[nodiscard]] bool ListIsOnShow() const { return IsWindowVisible(List().Window()) != 0; }
    static std::int32_t OpenPopups() { return Application().popupList.Count(); }
    /// In the list's window.
    void ClickLine(std::int32_t index) const {
        const RECT line = List().LineRect(index);
        ClickAt(List(), static_cast<int>(line.left) + 4, static_cast<int>(line.top + line.bottom) / 2);
    }

    TmyComboBox* box;
    EventCount<std::int32_t> changes;
};

// --- selection ---------------------------------------------------------------------------------------------

TEST_F(ComboBox, ShowsTheTextOfTheSelectedLine) {
    EXPECT_EQ(box->GetSelected(), -1);
    EXPECT_TRUE(box->GetText().IsEmpty());
    EXPECT_EQ(box->GetCount(), 4);
    box->Select(2, false);
    EXPECT_TRUE(box->GetText() == "Two");
    EXPECT_EQ(changes.count, 0);
    box->Select(2, true);
    EXPECT_EQ(changes.count, 0);
    box->Select(3, true);
    EXPECT_EQ(changes.count, 1);
    EXPECT_EQ(changes.last, 3);
    box->Select(4, true); // outside: none
    EXPECT_EQ(box->GetSelected(), -1);
    EXPECT_TRUE(box->GetText().IsEmpty());
    box->Select(1, false);
    box->Clear();
    EXPECT_EQ(box->GetSelected(), -1);
    EXPECT_TRUE(box->GetText().IsEmpty());
    EXPECT_EQ(box->GetCount(), 0);
    EXPECT_EQ(box->GetItem(0), nullptr);
    EXPECT_EQ(changes.count, 2);
}

TEST_F(ComboBox, KeysAndWheelSelectWhileItIsClosed) {
    box->SetFocus();
    KeyDown(*box, VK_UP);
    EXPECT_EQ(box->GetSelected(), 3);
    KeyDown(*box, VK_DOWN);
    EXPECT_EQ(changes.count, 1);
    KeyDown(*box, VK_UP);
    EXPECT_EQ(box->GetSelected(), 2);
    Wheel(*box, 1);
    EXPECT_EQ(box->GetSelected(), 1);
    Wheel(*box, -9);
    EXPECT_EQ(box->GetSelected(), 3);
    Wheel(*box, 9);
    EXPECT_EQ(box->GetSelected(), 0);
    EXPECT_EQ(changes.count, 5);
    EXPECT_FALSE(box->IsOpen());
    box->Clear();
    KeyDown(*box, VK_DOWN);
    EXPECT_EQ(box->GetSelected(), -1);
}

// --- opening and closing -----------------------------------------------------------------------------------

TEST_F(ComboBox, PressOnFieldOrButtonOpensTheList) {
    for (const int x : {kFieldX, kButtonX}) {
        PressAt(*box, x, kY);
        EXPECT_TRUE(box->IsOpen());
        EXPECT_TRUE(ListIsOnShow());
        EXPECT_TRUE(List().HasFocus());
        EXPECT_TRUE(box->Button()->IsDown());
        ReleaseAt(*box, x, kY);
        Pump();
        EXPECT_TRUE(box->IsOpen());
        ASSERT_EQ(OpenPopups(), 1);
        EXPECT_EQ(Application().popupList.Get(0)->popup, &List());
        EXPECT_EQ(Application().popupList.Get(0)->owner, box);
        box->Close();
        Pump();
        EXPECT_FALSE(ListIsOnShow());
        EXPECT_FALSE(box->Button()->IsDown());
        EXPECT_TRUE(box->HasFocus());
        EXPECT_EQ(OpenPopups(), 0);
    }
}

TEST_F(ComboBox, ListIsAWindowOfItsOwnOnTheDesktop) {
    EXPECT_TRUE(List().IsTopLevelWindow());
    EXPECT_EQ(List().GetParent(), box);
    EXPECT_EQ(GetWindow(List().Window(), GW_OWNER), Top().Window());
    EXPECT_FALSE(ListIsOnShow());
    EXPECT_EQ(static_cast<std::uint32_t>(List().GetListStyle()), 1u);
}

TEST_F(ComboBox, OpensByKeys) {
    constexpr LPARAM kAlt = 0x20000001;
    box->SetFocus();
    for (const UINT key : {VK_SPACE, VK_F4}) {
        KeyDown(*box, key);
        EXPECT_TRUE(box->IsOpen());
        KeyDown(List(), VK_ESCAPE);
        Pump();
        EXPECT_FALSE(box->IsOpen());
        EXPECT_FALSE(ListIsOnShow());
        EXPECT_TRUE(box->HasFocus());
    }
    Send(*box, WM_SYSKEYDOWN, VK_DOWN, kAlt);
    EXPECT_TRUE(box->IsOpen());
    box->Close();
    EXPECT_EQ(changes.count, 0);
}

TEST_F(ComboBox, AClickOnALineSelectsItAndCloses) {
    box->Open();
    ClickLine(2);
    Pump();
    EXPECT_FALSE(box->IsOpen());
    EXPECT_FALSE(ListIsOnShow());
    EXPECT_EQ(box->GetSelected(), 2);
    EXPECT_TRUE(box->GetText() == "Two");
    EXPECT_EQ(changes.count, 1);
    EXPECT_EQ(changes.last, 2);
    EXPECT_TRUE(box->HasFocus());
    box->Open();
    ClickLine(2); // the same again: no change
    EXPECT_FALSE(box->IsOpen());
    EXPECT_EQ(changes.count, 1);
}

TEST_F(ComboBox, KeysMarkALineAndReturnTakesIt) {
    box->Select(0, false);
    box->Open();
    EXPECT_EQ(List().GetSelected(), 0);
    KeyDown(List(), VK_DOWN);
    KeyDown(List(), VK_DOWN);
    EXPECT_EQ(List().GetSelected(), 2);
    EXPECT_EQ(box->GetSelected(), 0);
    EXPECT_EQ(changes.count, 0);
    KeyDown(List(), VK_RETURN);
    EXPECT_EQ(box->GetSelected(), 2);
    EXPECT_EQ(changes.count, 1);
    EXPECT_FALSE(box->IsOpen());
}

TEST_F(ComboBox, EscapeLeavesTheSelectionAsItWas) {
    box->Select(1, false);
    box->Open();
    KeyDown(List(), VK_DOWN);
    KeyDown(List(), VK_ESCAPE);
    EXPECT_FALSE(box->IsOpen());
    EXPECT_EQ(box->GetSelected(), 1);
    EXPECT_EQ(List().GetSelected(), 1);
    EXPECT_EQ(changes.count, 0);
    EXPECT_TRUE(box->HasFocus());
}

TEST_F(ComboBox, ClosesWhenTheFocusGoesElsewhere) {
    auto* other = new TmyComponent(&Top(), "", kChild | WS_TABSTOP, 0, {200, 10, 30, 20});
    box->Select(1, false);
    box->Open();
    KeyDown(List(), VK_DOWN);
    PressAt(*other, 5, 5);
    EXPECT_FALSE(box->IsOpen());
    EXPECT_FALSE(ListIsOnShow());
    EXPECT_TRUE(other->HasFocus());
    EXPECT_EQ(OpenPopups(), 0);
    EXPECT_EQ(box->GetSelected(), 1);
    EXPECT_EQ(changes.count, 0);
    ReleaseAt(*other, 5, 5);
}

TEST_F(ComboBox, ThePressThatClosedItDoesNotOpenItAgain) {
    PressAt(*box, kButtonX, kY);
    ReleaseAt(*box, kButtonX, kY);
    ASSERT_TRUE(box->IsOpen());
    PressAt(*box, kButtonX, kY); // takes the focus from the list first
    EXPECT_FALSE(box->IsOpen());
    ReleaseAt(*box, kButtonX, kY);
    PressAt(*box, kButtonX, kY); // a press of its own
    EXPECT_TRUE(box->IsOpen());
    ReleaseAt(*box, kButtonX, kY);
}

TEST_F(ComboBox, APressLongAfterALossOfTheFocusOpens) {
    auto* other = new TmyComponent(&Top(), "", kChild | WS_TABSTOP, 0, {200, 10, 30, 20});
    box->Open();
    other->SetFocus();
    EXPECT_FALSE(box->IsOpen());
    Sleep(kSamePress + 20);
    PressAt(*box, kFieldX, kY);
    EXPECT_TRUE(box->IsOpen());
    ReleaseAt(*box, kFieldX, kY);
}

TEST_F(ComboBox, AnEmptyOneDoesNotOpen) {
    box->Clear();
    box->Open();
    EXPECT_FALSE(box->IsOpen());
    ClickAt(*box, kButtonX, kY);
    EXPECT_FALSE(box->IsOpen());
    EXPECT_EQ(OpenPopups(), 0);
}

TEST_F(ComboBox, ClosesWhenItIsDisabledOrHidden) {
    box->Open();
    box->SetEnabled(false);
    EXPECT_FALSE(box->IsOpen());
    EXPECT_FALSE(ListIsOnShow());
    box->SetEnabled(true);
    box->Open();
    box->SetVisible(false);
    Pump();
    EXPECT_FALSE(box->IsOpen());
    EXPECT_FALSE(ListIsOnShow());
}

TEST_F(ComboBox, ClosesWhenItsParentIsDisabledOrHidden) {
    auto* panel = new TmyPanel(&Top(), "", {10, 60, 200, 100});
    auto* inner = new TmyComboBox(panel, kBoxPlace);
    inner->AddItem("Only");
    inner->Open();
    ASSERT_TRUE(inner->IsOpen());
    panel->SetEnabled(false);
    EXPECT_FALSE(inner->IsOpen());
    panel->SetEnabled(true);
    inner->Open();
    ASSERT_TRUE(inner->IsOpen());
    panel->SetVisible(false);
    Pump();
    EXPECT_FALSE(inner->IsOpen());
    EXPECT_FALSE(IsWindowVisible(inner->List()->Window()));
    EXPECT_EQ(OpenPopups(), 0);
}

TEST_F(ComboBox, DisabledTakesNoInput) {
    box->SetFocus();
    box->SetEnabled(false);
    ClickAt(*box, kFieldX, kY);
    ClickAt(*box, kButtonX, kY);
    KeyDown(*box, VK_DOWN);
    KeyDown(*box, VK_SPACE);
    Wheel(*box, -1);
    EXPECT_FALSE(box->IsOpen());
    EXPECT_EQ(box->GetSelected(), -1);
    EXPECT_EQ(changes.count, 0);
}

TEST_F(ComboBox, CanBeDeletedWhileOpenAndByItsHandler) {
    box->Open();
    delete box;
    EXPECT_EQ(OpenPopups(), 0);
    box = new TmyComboBox(&Top(), kBoxPlace);
    box->AddItem("Only");
    changes.Watch(box->onChange);
    changes.then = [&] { delete box; };
    box->Open();
    ClickLine(0);
    EXPECT_EQ(changes.count, 1);
    EXPECT_EQ(OpenPopups(), 0);
}

TEST_F(ComboBox, BearsTheLossOfItsListWindow) {
    box->Open();
    DestroyWindow(List().Window());
    EXPECT_EQ(box->List(), nullptr);
    EXPECT_FALSE(box->IsOpen());
    EXPECT_EQ(OpenPopups(), 0);
    EXPECT_EQ(box->GetCount(), 0);
    box->Open();
    box->AddItem("No list");
    box->Select(0, true);
    ClickAt(*box, kButtonX, kY);
    EXPECT_FALSE(box->IsOpen());
}

// --- where the list stands ---------------------------------------------------------------------------------

TEST_F(ComboBox, ListStandsBelowAtTheLeftEdgeAndAsWide) {
    box->Open();
    const RECT field = WindowRectOf(*box);
    const RECT list = WindowRectOf(List());
    EXPECT_EQ(list, (RECT{field.left, field.bottom, field.right, field.bottom + List().HeightFor(4)}));
    EXPECT_EQ(List().VisibleCount(), 4);
}

TEST_F(ComboBox, ListStandsAboveNearTheBottomOfTheScreen) {
    const int screenHeight = GetSystemMetrics(SM_CYSCREEN);
    const int height = List().HeightFor(4);
    // The box's bottom edge is 30 below the window's top: just room enough, and one pixel less.
    Top().SetPosition(100, screenHeight - height - 30);
    box->Open();
    EXPECT_EQ(WindowRectOf(List()).top, WindowRectOf(*box).bottom);
    EXPECT_EQ(WindowRectOf(List()).bottom, screenHeight);
    box->Close();
    Top().SetPosition(100, screenHeight - height - 29);
    box->Open();
    EXPECT_EQ(WindowRectOf(List()).bottom, WindowRectOf(*box).top);
    EXPECT_EQ(WindowRectOf(List()).bottom - WindowRectOf(List()).top, height);
}

TEST_F(ComboBox, LongListShowsTwelveLinesAndScrolls) {
    for (int i = 4; i < 30; ++i) {
        box->AddItem(std::to_string(i).c_str());
    }
    box->Select(25, false);
    box->Open();
    EXPECT_EQ(List().VisibleCount(), 12);
    EXPECT_LE(List().GetTopIndex(), 25); // the selected line is on show, and no empty row below the last
    EXPECT_GE(List().GetTopIndex(), 14);
    EXPECT_LE(List().GetTopIndex(), 18);
}

TEST(DropDown, StandsBelowAboveOrWhereThereIsMoreRoom) {
    const RECT work{0, 0, 1000, 600};
    EXPECT_EQ(PlaceDropDown({50, 100, 150, 120}, 200, work), (RECT{50, 120, 150, 320}));
    EXPECT_EQ(PlaceDropDown({50, 380, 150, 400}, 200, work), (RECT{50, 400, 150, 600}));
    EXPECT_EQ(PlaceDropDown({50, 381, 150, 401}, 200, work), (RECT{50, 181, 150, 381}));
    EXPECT_EQ(PlaceDropDown({50, 300, 150, 320}, 500, work), (RECT{50, 0, 150, 300}));   // cut at the top
    EXPECT_EQ(PlaceDropDown({50, 100, 150, 120}, 900, work), (RECT{50, 120, 150, 600})); // at the bottom
    EXPECT_EQ(PlaceDropDown({50, 700, 150, 720}, 100, work), (RECT{50, 600, 150, 700})); // box below all
    EXPECT_EQ(PlaceDropDown({50, -60, 150, -40}, 100, work), (RECT{50, -40, 150, 60}));
}

// --- look --------------------------------------------------------------------------------------------------

TEST_F(ComboBox, DrawsTextFrameAndButton) {
    box->Select(3, false);
    const Snapshot picture(*box);
    const RECT field{kBorder, kBorder, 120 - kBorder - kButtonWidth, 20 - kBorder};
    EXPECT_GT(picture.Count(field, 0xFFFFFF), 10);
    EXPECT_GT(picture.Count(field, 0), picture.CountOther(field, 0));
    EXPECT_LT(picture.At(0, 0), picture.At(119, 19)); // sunken
    const RECT button{field.right, field.top, field.right + kButtonWidth, field.bottom};
    EXPECT_GT(picture.At(static_cast<int>(button.left), kBorder), 0x636363u); // raised
    EXPECT_GT(picture.Count(button, 0xFFFFFF), 5);                            // the arrow
    box->SetEnabled(false);
    const Snapshot grey(*box);
    EXPECT_EQ(grey.Count(grey.Whole(), 0xFFFFFF), 0);
    EXPECT_GT(grey.Count(field, 0x888888), 10);
    EXPECT_GT(grey.Count(button, 0x888888), 5);
}

TEST_F(ComboBox, MarksTheTextWhileItHasTheFocus) {
    const RECT field{kBorder, kBorder, 120 - kBorder - kButtonWidth, 20 - kBorder};
    const Snapshot without(*box);
    EXPECT_EQ(without.Count(field, 0), static_cast<int>((field.right - field.left) * 16));
    box->SetFocus();
    const Snapshot with(*box);
    EXPECT_EQ(with.BoxOfOther(with.Whole(), 0).right, 120);
    EXPECT_GT(with.CountOther({field.left, field.top, field.right, field.top + 1}, 0), 40);
}

TEST_F(ComboBox, ListFollowsColoursAndFont) {
    box->SetBackColor(0x203040);
    box->SetTextColor(0x00FF00);
    EXPECT_EQ(List().GetStyleValue(StyleValue::BackColor), 0x203040u);
    EXPECT_EQ(List().GetStyleValue(StyleValue::TextColor), 0x00FF00u);
    EXPECT_EQ(List().GetStyleValue(StyleValue::BorderWidth), 2u);
    box->SetBorderWidth(5);
    EXPECT_EQ(List().GetStyleValue(StyleValue::BorderWidth), 2u);
    const HFONT big = CreateFontA(-30, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, "Arial");
    box->SetFont(big);
    EXPECT_EQ(List().GetItemHeight(), box->TextHeight() + 2);
    box->SetFont(InheritedFont());
    DeleteObject(big);
}

// --- real input --------------------------------------------------------------------------------------------

TEST_F(ComboBox, RealClicksOpenChooseAndClose) {
    Settle(*box);
    const RECT field = WindowRectOf(*box);
    const int x = static_cast<int>(field.left) + kFieldX;
    const int y = static_cast<int>(field.top) + kY;
    real::MoveTo(x, y);
    real::LeftDown();
    real::LeftUp();
    ASSERT_TRUE(box->IsOpen());
    EXPECT_EQ(GetForegroundWindow(), List().Window());
    const RECT line = List().LineRect(1);
    real::MoveTo(x, static_cast<int>(WindowRectOf(List()).top + line.top) + 3);
    real::LeftDown();
    real::LeftUp();
    EXPECT_FALSE(box->IsOpen());
    EXPECT_EQ(box->GetSelected(), 1);
    EXPECT_EQ(changes.count, 1);

    real::MoveTo(x, y);
    real::LeftDown();
    real::LeftUp();
    ASSERT_TRUE(box->IsOpen());
    real::LeftDown(); // on the box: closes, and does not open again
    real::LeftUp();
    EXPECT_FALSE(box->IsOpen());

    real::LeftDown();
    real::LeftUp();
    ASSERT_TRUE(box->IsOpen());
    real::MoveTo(kTopPlace.x + 300, kTopPlace.y + 250); // outside, on the top window
    real::LeftDown();
    real::LeftUp();
    EXPECT_FALSE(box->IsOpen());
    EXPECT_EQ(changes.count, 1);
}

TEST_F(ComboBox, TabLeavesTheOpenListForTheBox) {
    box->Select(1, false);
    box->SetFocus();
    real::Key(VK_F4);
    real::Key(VK_DOWN);
    real::Key(VK_TAB);
    EXPECT_FALSE(box->IsOpen());
    EXPECT_FALSE(ListIsOnShow());
    EXPECT_EQ(OpenPopups(), 0);
    EXPECT_EQ(box->GetSelected(), 1);
    EXPECT_EQ(::GetFocus(), box->Window());
    real::Key(VK_DOWN);
    EXPECT_EQ(box->GetSelected(), 2) << "the keys are the box's again";
}

TEST_F(ComboBox, RealKeysReachTheOpenList) {
    box->SetFocus();
    real::Key(VK_F4);
    ASSERT_TRUE(box->IsOpen());
    real::Key(VK_DOWN);
    real::Key(VK_DOWN);
    real::Key(VK_RETURN);
    EXPECT_FALSE(box->IsOpen());
    EXPECT_EQ(box->GetSelected(), 1);
    real::Key(VK_F4);
    real::Key(VK_DOWN);
    real::Key(VK_ESCAPE);
    EXPECT_FALSE(box->IsOpen());
    EXPECT_EQ(box->GetSelected(), 1);
    EXPECT_TRUE(box->HasFocus());
}

} // namespace
} // namespace orva::toolkit
