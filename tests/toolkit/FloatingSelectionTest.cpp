#include "tests/toolkit/EntrySupport.h"
#include "toolkit/Colors.h"
#include "toolkit/FrameDrawing.h"
#include "toolkit/TextDrawing.h"
#include "toolkit/TmyFloatingSelection.h"
#include "toolkit/TmyFloatingSelection2.h"
#include "toolkit/TmyIntEdit.h"
#include "toolkit/TypeRegistry.h"

namespace orva::toolkit {
namespace {

constexpr int kRow = 16;
constexpr int kRows = 4;

class FloatingSelectionTest : public EntryTest {
protected:
    FloatingSelectionTest() {
        edit.SetValue(30);
        for (int number = 0; number < 10; ++number) {
            list.AddItem(number * 10);
        }
        changed.Watch(edit.onValueChanged);
    }
    ~FloatingSelectionTest() override { Application().popupList.Clear(); }

    /// The middle of a shown row.
    static int RowY(int row) { return 1 + row * kRow + kRow / 2; }

    TmyIntEdit& edit = *new TmyIntEdit(&top, {10, 10, 80, 20});
    TmyFloatingSelection& list = *new TmyFloatingSelection(&edit, kRows, kRow);
    EventCount<std::int64_t> changed;
};

TEST_F(FloatingSelectionTest, IsAPopupOfItsEntry) {
    const TypeRecord* type = FindType(&list);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->typeId, 46u);
    EXPECT_STREQ(type->name, "FloatSel");
    const auto style = static_cast<DWORD>(GetWindowLongA(list.Window(), GWL_STYLE));
    EXPECT_EQ(style & (WS_POPUP | WS_CHILD), static_cast<DWORD>(WS_POPUP));
    EXPECT_EQ(static_cast<DWORD>(GetWindowLongA(list.Window(), GWL_EXSTYLE)) & 0x8000088u, 0x8000088u);
    EXPECT_EQ(GetWindow(list.Window(), GW_OWNER), top.Window());
    EXPECT_TRUE(list.SharesStyleWith(edit));
    EXPECT_EQ(list.EffectiveFont(), edit.EffectiveFont());
    EXPECT_FALSE(list.IsOpen());
    EXPECT_FALSE(IsWindowVisible(list.Window()));
    EXPECT_EQ(list.GetRows(), kRows);
}

TEST_F(FloatingSelectionTest, OpensBelowItsEntryWithTheNumberMarked) {
    list.Open();
    EXPECT_TRUE(list.IsOpen());
    ASSERT_EQ(Application().popupList.Count(), 1);
    EXPECT_EQ(Application().popupList.Get(0)->popup, &list);
    EXPECT_EQ(Application().popupList.Get(0)->owner, &edit);
    EXPECT_TRUE(IsWindowVisible(list.Window()));
    RECT box{};
    GetWindowRect(edit.Window(), &box);
    RECT place{};
    GetWindowRect(list.Window(), &place);
    EXPECT_EQ(place, (RECT{box.left, box.bottom, box.right, box.bottom + kRows * kRow + 2}));
    EXPECT_EQ(list.GetMarked(), 3);
    EXPECT_EQ(list.GetTopRow(), 1);
    EXPECT_EQ(::GetFocus(), edit.Window());
    list.Open();
    EXPECT_EQ(Application().popupList.Count(), 1);
    list.Close();
    EXPECT_EQ(Application().popupList.Count(), 0);
    EXPECT_FALSE(IsWindowVisible(list.Window()));
    list.Close();
    edit.SetValue(31);
    list.Open();
    EXPECT_EQ(list.GetMarked(), TmyFloatingSelection::kNone);
    EXPECT_EQ(list.GetTopRow(), 0);
}

TEST_F(FloatingSelectionTest, IsPlacedWithinTheWorkArea) {
    const RECT work{0, 0, 1000, 700};
    const auto place = [&](const RECT& entry, const SIZE& size) {
        return TmyFloatingSelection::Place(entry, size, work);
    };
    EXPECT_EQ(place({100, 100, 180, 120}, {80, 66}), (RECT{100, 120, 180, 186}));
    EXPECT_EQ(place({100, 614, 180, 634}, {80, 66}), (RECT{100, 634, 180, 700})); // just fits
    EXPECT_EQ(place({100, 615, 180, 635}, {80, 66}), (RECT{100, 549, 180, 615})); // above
    EXPECT_EQ(place({960, 100, 1040, 120}, {80, 66}), (RECT{920, 120, 1000, 186}));
    EXPECT_EQ(place({-30, 100, 50, 120}, {80, 66}), (RECT{0, 120, 80, 186}));
    EXPECT_EQ(place({100, 350, 180, 370}, {80, 600}), (RECT{100, 0, 180, 600})); // neither side has room
    EXPECT_EQ(place({100, 350, 180, 370}, {2000, 900}), (RECT{0, 0, 1000, 700}));
}

TEST_F(FloatingSelectionTest, OpensAboveNearTheBottomOfTheScreen) {
    RECT work{};
    SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
    top.SetPosition(100, static_cast<int>(work.bottom) - 60);
    list.Open();
    RECT box{};
    GetWindowRect(edit.Window(), &box);
    RECT place{};
    GetWindowRect(list.Window(), &place);
    EXPECT_EQ(place.bottom, box.top);
    list.Close();
    top.SetPosition(kTopPlace.x, kTopPlace.y);
}

TEST_F(FloatingSelectionTest, ChoosesByAClick) {
    EventCount<> chosen;
    chosen.Watch(list.onChange);
    list.Open();
    PressAt(list, 20, RowY(0));
    EXPECT_EQ(list.GetMarked(), 1);
    DragTo(list, 20, RowY(2));
    EXPECT_EQ(list.GetMarked(), 3);
    DragTo(list, 20, RowY(1));
    EXPECT_EQ(changed.count, 0);
    ReleaseAt(list, 20, RowY(1));
    EXPECT_EQ(edit.GetValue(), 20);
    EXPECT_EQ(changed.count, 1);
    EXPECT_EQ(chosen.count, 1);
    EXPECT_FALSE(list.IsOpen());
    EXPECT_TRUE(edit.HasFocus());
    list.Open();
    PressAt(list, 20, RowY(0));
    ReleaseAt(list, 20, 500); // let go elsewhere
    EXPECT_EQ(edit.GetValue(), 20);
    EXPECT_TRUE(list.IsOpen());
}

TEST_F(FloatingSelectionTest, ChoosesByKeysThatItsEntryPassesOn) {
    list.Open();
    Key(edit, VK_DOWN);
    EXPECT_EQ(list.GetMarked(), 4);
    EXPECT_EQ(list.GetTopRow(), 1);
    Key(edit, VK_DOWN);
    EXPECT_EQ(list.GetTopRow(), 2);
    Key(edit, VK_NEXT);
    EXPECT_EQ(list.GetMarked(), 9);
    EXPECT_EQ(list.GetTopRow(), 6);
    Key(edit, VK_DOWN);
    EXPECT_EQ(list.GetMarked(), 9);
    Key(edit, VK_PRIOR);
    EXPECT_EQ(list.GetMarked(), 5);
    EXPECT_EQ(list.GetTopRow(), 5);
    Key(edit, VK_UP);
    EXPECT_EQ(list.GetTopRow(), 4);
    Key(edit, VK_RETURN);
    Type(edit, "\r");
    EXPECT_EQ(edit.GetValue(), 40);
    EXPECT_FALSE(list.IsOpen());
    EXPECT_TRUE(edit.HasFocus()); // Return was the list's
    list.Open();
    Key(edit, VK_UP);
    Type(edit, "\x1B");
    EXPECT_FALSE(list.IsOpen());
    EXPECT_EQ(edit.GetValue(), 40);
    Type(edit, "\x1B"); // and now the entry's
    EXPECT_FALSE(edit.HasFocus());
}

TEST_F(FloatingSelectionTest, LetsTheEntryHaveAllOtherKeys) {
    list.Open();
    edit.Select(2, 2);
    Type(edit, "5");
    EXPECT_EQ(Text(edit), "305");
    Key(edit, VK_HOME);
    EXPECT_EQ(Selection(edit), 0u);
    EXPECT_TRUE(list.IsOpen());
}

TEST_F(FloatingSelectionTest, ScrollsByTheWheel) {
    list.Open();
    Wheel(edit, 1);
    EXPECT_EQ(list.GetTopRow(), 0);
    Wheel(edit, 1);
    EXPECT_EQ(list.GetTopRow(), 0);
    Wheel(list, -4);
    EXPECT_EQ(list.GetTopRow(), 4);
    Wheel(list, -200);
    EXPECT_EQ(list.GetTopRow(), 6);
    EXPECT_EQ(edit.GetValue(), 30);
    list.Close();
    Wheel(edit, 1);
    EXPECT_EQ(edit.GetValue(), 31);
}

TEST_F(FloatingSelectionTest, ScrollsByItsHandle) {
    list.Open();
    RECT handle = list.HandleRect();
    EXPECT_EQ(handle.right, list.GetClientWidth() - 1);
    EXPECT_EQ(handle.bottom - handle.top, kRows * kRow * kRows / 10);
    const int x = static_cast<int>(handle.left) + 2;
    PressAt(list, x, static_cast<int>(handle.top) + 3);
    EXPECT_EQ(list.GetTopRow(), 1);
    DragTo(list, x, 1000);
    EXPECT_EQ(list.GetTopRow(), 6);
    EXPECT_EQ(list.HandleRect().bottom, list.GetClientHeight() - 1);
    DragTo(list, x, -1000);
    EXPECT_EQ(list.GetTopRow(), 0);
    EXPECT_EQ(list.HandleRect().top, 1);
    ReleaseAt(list, x, -1000);
    EXPECT_TRUE(list.IsOpen());
    EXPECT_EQ(edit.GetValue(), 30);
    PressAt(list, x, static_cast<int>(list.GetClientHeight()) - 2); // beside the handle: it jumps there
    EXPECT_EQ(list.GetTopRow(), 6);
    ReleaseAt(list, x, 5);
    list.Clear();
    list.AddItem(1);
    EXPECT_TRUE(IsRectEmpty(&(handle = list.HandleRect())));
}

TEST_F(FloatingSelectionTest, ClosesWhenTheFocusGoes) {
    auto* other = new TmyEdit(&top, "", {10, 60, 50, 20});
    list.Open();
    other->SetFocus();
    EXPECT_FALSE(list.IsOpen());
    EXPECT_FALSE(IsWindowVisible(list.Window()));
    EXPECT_TRUE(other->HasFocus());
    list.Open(); // which brings it back
    EXPECT_TRUE(edit.HasFocus());
    const TmyComponent elsewhere(nullptr, "", kPopup, 0, kPlace);
    ::SetFocus(elsewhere.Window());
    EXPECT_FALSE(list.IsOpen());
}

TEST_F(FloatingSelectionTest, ClosesWhenItsEntryIsDisabledOrHidden) {
    list.Open();
    edit.SetEnabled(false);
    EXPECT_FALSE(list.IsOpen());
    list.Open();
    EXPECT_FALSE(list.IsOpen());
    edit.SetEnabled(true);
    edit.SetReadOnly(true);
    list.Open();
    EXPECT_FALSE(list.IsOpen());
    edit.SetReadOnly(false);
    list.Open();
    edit.SetVisible(false);
    Pump();
    EXPECT_FALSE(list.IsOpen());
}

TEST_F(FloatingSelectionTest, GoesWithItsEntry) {
    auto* other = new TmyIntEdit(&top, {10, 60, 50, 20});
    other->SetValue(1);
    auto* popup = new TmyFloatingSelection(other, 3, kRow);
    popup->AddItem(5);
    popup->Open();
    const HWND window = popup->Window();
    delete other;
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(Application().popupList.Count(), 0);
}

TEST_F(FloatingSelectionTest, LetsAHandlerDeleteTheEntryAtAChoice) {
    auto* other = new TmyIntEdit(&top, {10, 60, 50, 20});
    other->SetValue(1);
    auto* popup = new TmyFloatingSelection(other, 3, kRow);
    popup->AddItem(5);
    popup->Open();
    changed.Watch(other->onValueChanged);
    changed.then = [&] { delete other; };
    SendMessageA(popup->Window(), WM_LBUTTONDOWN, MK_LBUTTON, Point(5, RowY(0)));
    SendMessageA(popup->Window(), WM_LBUTTONUP, 0, Point(5, RowY(0)));
    EXPECT_EQ(changed.last, 5);
    EXPECT_EQ(Application().popupList.Count(), 0);
}

TEST_F(FloatingSelectionTest, DrawsTheMarkedRowInSwappedColours) {
    list.Open();
    Settle(list);
    const COLORREF back = list.GetStyleValue(StyleValue::BackColor);
    const COLORREF text = list.GetStyleValue(StyleValue::TextColor);
    const Snapshot shown(list);
    const int marked = list.GetMarked() - list.GetTopRow();
    for (int row = 0; row < kRows; ++row) {
        const RECT area{1, 1 + row * kRow, list.HandleRect().left, 1 + (row + 1) * kRow};
        const int most = shown.Count(area, row == marked ? text : back);
        EXPECT_GT(most, static_cast<int>(area.right - area.left) * kRow / 2) << row;
        EXPECT_GT(shown.Count(area, row == marked ? back : text), 5) << row;
    }
    const RECT handle = list.HandleRect();
    EXPECT_NE(shown.At(static_cast<int>(handle.left) + 4, static_cast<int>(handle.top) + 8), back);
}

TEST_F(FloatingSelectionTest, RowsShowTheirNumbersAsTheEntryWould) {
    struct Names {
        void Format(TmyControl* /*sender*/, std::int64_t number, TmyString& text) {
            text = number == 40 ? TmyString("forty") : text;
        }
    } names;
    edit.onFormat.Bind<&Names::Format>(&names);
    constexpr int kTextGap = 4;
    const char* const texts[kRows] = {"20", "30", "forty", "50"};
    real::MoveTo(1, 1); // a pointer over the list would mark a row
    list.Open();
    Wheel(list, -1);
    ASSERT_EQ(list.GetTopRow(), 2);
    ASSERT_EQ(list.GetMarked(), 3);
    Settle(list);
    const Snapshot shown(list);
    const int width = static_cast<int>(list.HandleRect().left) - 1;
    for (int row = 0; row < kRows; ++row) {
        const COLORREF paper = row == 1 ? kWhite : kBlack;
        const Snapshot expected = Snapshot::Drawn(width, kRow, paper, [&](HDC dc) {
            DrawAlignedText(dc, texts[row], {kTextGap, 0, width, kRow}, 65,
                            {list.EffectiveFont(), row == 1 ? kBlack : kWhite, paper, 0});
        });
        EXPECT_EQ(shown.Differences({1, 1 + row * kRow, 1 + width, 1 + (row + 1) * kRow}, expected), 0)
            << "row " << row;
    }
}

TEST_F(FloatingSelectionTest, HasAnOutline) {
    list.Open();
    Settle(list);
    const Snapshot shown(list);
    const RECT whole = shown.Whole();
    const Snapshot frame = Snapshot::Drawn(shown.Width(), shown.Height(), 0, [&](HDC dc) {
        DrawFrame(dc, whole, kFrameOutline, 1, list.GetStyleValue(StyleValue::WindowColor), 100);
    });
    for (int x = 0; x < shown.Width(); ++x) {
        EXPECT_EQ(shown.At(x, 0), frame.At(x, 0)) << x;
        EXPECT_EQ(shown.At(x, shown.Height() - 1), frame.At(x, shown.Height() - 1)) << x;
    }
}

TEST_F(FloatingSelectionTest, DisabledItTakesNoInput) {
    list.Open();
    list.SetEnabled(false);
    ASSERT_TRUE(list.IsOpen());
    Send(list, WM_MOUSEMOVE, 0, Point(20, RowY(0)));
    PressAt(list, 20, RowY(0));
    ReleaseAt(list, 20, RowY(0));
    Wheel(list, -1);
    Key(edit, VK_DOWN);
    EXPECT_EQ(list.GetMarked(), 3);
    EXPECT_EQ(list.GetTopRow(), 1);
    EXPECT_EQ(edit.GetValue(), 30);
    EXPECT_TRUE(list.IsOpen());
}

TEST_F(FloatingSelectionTest, IsChosenFromByTheRealMouse) {
    list.Open();
    Settle(list);
    POINT place{20, RowY(0)};
    ClientToScreen(list.Window(), &place);
    real::MoveTo(place.x, place.y);
    EXPECT_EQ(list.GetMarked(), 1);
    real::LeftDown();
    EXPECT_EQ(::GetCapture(), list.Window());
    EXPECT_EQ(::GetFocus(), edit.Window());
    EXPECT_EQ(GetForegroundWindow(), top.Window());
    real::LeftUp();
    EXPECT_EQ(edit.GetValue(), 10);
    EXPECT_FALSE(list.IsOpen());
    list.Open();
    POINT outside{150, 80};
    ClientToScreen(top.Window(), &outside);
    real::MoveTo(outside.x, outside.y);
    real::LeftDown();
    EXPECT_FALSE(list.IsOpen());
    real::LeftUp();
}

// --- digits ------------------------------------------------------------------------------------------------

class DigitSelectionTest : public EntryTest {
protected:
    DigitSelectionTest() {
        edit.SetValue(4500);
        changed.Watch(edit.onValueChanged);
        digits.Open();
    }
    ~DigitSelectionTest() override { Application().popupList.Clear(); }

    int ColumnX(int column) const {
        const RECT place = digits.ColumnRect(column);
        return static_cast<int>(place.left + place.right) / 2;
    }
    void Point(int column) { Send(digits, WM_MOUSEMOVE, 0, toolkit::Point(ColumnX(column), 20)); }
    void Finish() { timers.Advance(1000); }

    FakeTimers timers;
    TmyIntEdit& edit = *new TmyIntEdit(&top, {10, 10, 80, 20});
    TmyFloatingSelection2& digits = *new TmyFloatingSelection2(&edit, 3, kRow);
    EventCount<std::int64_t> changed;
};

TEST_F(DigitSelectionTest, HasSixteenColumnsInGroupsOfThree) {
    const TypeRecord* type = FindType(&digits);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->typeId, 47u);
    EXPECT_STREQ(type->name, "FloatSel2");
    int widest = 0;
    const HDC dc = ::GetDC(nullptr);
    const HGDIOBJ before = SelectObject(dc, digits.EffectiveFont());
    ABC widths[10]{};
    ASSERT_TRUE(GetCharABCWidthsA(dc, '0', '9', widths));
    SelectObject(dc, before);
    ::ReleaseDC(nullptr, dc);
    for (const ABC& each : widths) {
        widest = std::max(widest, each.abcA + static_cast<int>(each.abcB) + each.abcC);
    }
    for (int column = 0; column < 16; ++column) {
        const RECT place = digits.ColumnRect(column);
        EXPECT_GE(place.right - place.left, widest);
        EXPECT_EQ(digits.ColumnAt(static_cast<int>(place.left)), column);
        EXPECT_EQ(digits.ColumnAt(static_cast<int>(place.right) - 1), column);
        if (column > 0) {
            const LONG gap = digits.ColumnRect(column - 1).left - place.right;
            EXPECT_EQ(gap > 0, column % 3 == 0) << column;
            if (gap > 0) {
                EXPECT_EQ(digits.ColumnAt(static_cast<int>(place.right)), TmyFloatingSelection::kNone);
            }
        }
    }
    EXPECT_GT(digits.ColumnRect(15).left, widest);
    EXPECT_LT(digits.ColumnRect(0).right, digits.GetClientWidth());
    EXPECT_EQ(digits.ColumnAt(0), TmyFloatingSelection::kNone);
    EXPECT_EQ(digits.ColumnAt(-50), TmyFloatingSelection::kNone);
    EXPECT_EQ(digits.ColumnAt(5000), TmyFloatingSelection::kNone);
    EXPECT_EQ(digits.GetClientHeight(), 3 * kRow + 2);
}

TEST_F(DigitSelectionTest, ShowsTheEntrysDigits) {
    EXPECT_EQ(digits.Columns().Value(), 4500);
    EXPECT_EQ(digits.Columns().Offset(3), 4 * kRow);
    EXPECT_EQ(digits.Columns().Offset(2), 5 * kRow);
    EXPECT_EQ(digits.Columns().Offset(0), 0);
}

TEST_F(DigitSelectionTest, RollsTheColumnUnderThePointerByTheWheel) {
    EventCount<> chosen;
    chosen.Watch(digits.onChange);
    Point(2);
    Wheel(edit, 1);
    EXPECT_EQ(edit.GetValue(), 4500); // while it moves
    timers.Advance(49);
    EXPECT_EQ(digits.Columns().Offset(2), 5 * kRow);
    timers.Advance(1);
    EXPECT_EQ(digits.Columns().Offset(2), 5 * kRow + kRow / 2);
    Finish();
    EXPECT_EQ(edit.GetValue(), 4600);
    EXPECT_EQ(changed.count, 1);
    EXPECT_EQ(chosen.count, 1);
    EXPECT_TRUE(digits.IsOpen());
    EXPECT_TRUE(timers.Running().empty());
    Point(0);
    Wheel(digits, -1);
    Finish();
    EXPECT_EQ(edit.GetValue(), 4609);
    Wheel(digits, 0);
    EXPECT_EQ(edit.GetValue(), 4609);
}

TEST_F(DigitSelectionTest, RollsByKeys) {
    Point(1);
    Key(edit, VK_UP);
    Key(edit, VK_UP);
    Key(edit, VK_DOWN);
    Finish();
    EXPECT_EQ(edit.GetValue(), 4510);
}

TEST_F(DigitSelectionTest, FollowsADrag) {
    const int x = ColumnX(3);
    PressAt(digits, x, 30);
    DragTo(digits, x, 30 - kRow); // up: the next digit comes
    EXPECT_EQ(digits.Columns().Offset(3), 5 * kRow);
    DragTo(digits, ColumnX(0),
           30 - 2 * kRow - 5); // wherever the pointer goes, the column stays the pressed one
    EXPECT_EQ(digits.Columns().Offset(3), 6 * kRow + 5);
    EXPECT_EQ(edit.GetValue(), 4500);
    ReleaseAt(digits, x, 30 - 2 * kRow - 5);
    Finish();
    EXPECT_EQ(digits.Columns().Offset(3), 6 * kRow);
    EXPECT_EQ(edit.GetValue(), 6500);
    PressAt(digits, x, 10);
    DragTo(digits, x, 10 + 7 * kRow); // down, through 0
    ReleaseAt(digits, x, 10 + 7 * kRow);
    EXPECT_EQ(edit.GetValue(), 9500);
    PressAt(digits, 1, 10); // beside the columns
    DragTo(digits, 1, 100);
    ReleaseAt(digits, 1, 100);
    EXPECT_EQ(edit.GetValue(), 9500);
}

TEST_F(DigitSelectionTest, FollowsTheEntryThatLimitsTheNumber) {
    edit.SetMaximum(5000);
    Point(3);
    Wheel(digits, 5);
    Finish();
    EXPECT_EQ(edit.GetValue(), 5000);
    EXPECT_EQ(digits.Columns().Value(), 5000);
    edit.SetValue(77);
    Point(0);
    Wheel(digits, 1);
    Finish();
    EXPECT_EQ(edit.GetValue(), 78);
}

TEST_F(DigitSelectionTest, CountsWhatStillMovesAsAtRestWhenItCloses) {
    Point(0);
    Wheel(digits, 3);
    Type(edit, "\r");
    EXPECT_FALSE(digits.IsOpen());
    EXPECT_EQ(edit.GetValue(), 4503);
    EXPECT_TRUE(timers.Running().empty());
    digits.Open();
    PressAt(digits, ColumnX(0), 10);
    DragTo(digits, ColumnX(0), 10 - kRow - 3);
    top.SetFocus();
    EXPECT_FALSE(digits.IsOpen());
    EXPECT_EQ(edit.GetValue(), 4504);
    digits.Open();
    Wheel(digits, 1);
    edit.SetEnabled(false);
    EXPECT_EQ(edit.GetValue(), 4505);
}

TEST_F(DigitSelectionTest, KeepsTheSign) {
    edit.SetValue(-20);
    Point(1);
    Wheel(digits, 3);
    Finish();
    EXPECT_EQ(edit.GetValue(), -50);
}

TEST_F(DigitSelectionTest, GoesWithItsEntryWhileItMoves) {
    auto* other = new TmyIntEdit(&top, {10, 60, 50, 20});
    other->SetValue(1);
    auto* popup = new TmyFloatingSelection2(other, 3, kRow);
    popup->Open();
    Wheel(*popup, 1);
    changed.Watch(other->onValueChanged);
    changed.then = [&] { delete other; };
    Finish();
    EXPECT_EQ(changed.last, 2);
    EXPECT_TRUE(timers.Running().empty());
    EXPECT_EQ(Application().popupList.Count(), 0);
}

TEST_F(DigitSelectionTest, LetsAHandlerDeleteItAtAPressAMoveOrARelease) {
    EventCount<MouseButton, WPARAM, int, int> buttons;
    EventCount<WPARAM, int, int> moves;
    for (const UINT message : {UINT{WM_LBUTTONDOWN}, UINT{WM_MOUSEMOVE}, UINT{WM_LBUTTONUP}}) {
        auto* popup = new TmyFloatingSelection2(&edit, 3, kRow);
        popup->Open();
        ASSERT_TRUE(popup->IsOpen());
        const LPARAM place = toolkit::Point(ColumnX(2), 20);
        const HWND window = popup->Window();
        buttons.then = moves.then = nullptr;
        buttons.Watch(popup->onMouseDown);
        buttons.Watch(popup->onMouseUp);
        moves.Watch(popup->onMouseMove);
        if (message != WM_LBUTTONDOWN) {
            SendMessageA(window, WM_LBUTTONDOWN, MK_LBUTTON, place);
        }
        buttons.then = moves.then = [&] { delete popup; };
        SendMessageA(window, message, MK_LBUTTON, place);
        EXPECT_FALSE(IsWindow(window)) << message;
    }
    EXPECT_EQ(Application().popupList.Count(), 1) << "the test's own";
    EXPECT_EQ(edit.GetValue(), 4500);
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(DigitSelectionTest, DrawsADigitInTheMiddleRowOfEachColumn) {
    Settle(digits);
    const Snapshot shown(digits);
    const COLORREF text = digits.GetStyleValue(StyleValue::TextColor);
    const COLORREF faint = digits.GetStyleValue(StyleValue::DisabledTextColor);
    for (int column = 0; column < 16; ++column) {
        const RECT place = digits.ColumnRect(column);
        const RECT middle{place.left, 1 + kRow, place.right, 1 + 2 * kRow};
        EXPECT_GT(shown.Count(middle, column < 4 ? text : faint), 3) << column;
        EXPECT_EQ(shown.Count(middle, column < 4 ? faint : text), 0) << column;
    }
}

/// What a column shows: the digits in a row each, one pixel higher for each that it has been turned by.
Snapshot ColumnOf(const TmyFloatingSelection2& digits, int column, int digit, int turned, COLORREF paper) {
    const RECT place = digits.ColumnRect(column);
    const auto width = static_cast<int>(place.right - place.left);
    return Snapshot::Drawn(width, 3 * kRow, paper, [&](HDC dc) {
        FillSolid(dc, {0, kRow, width, 2 * kRow}, MixColors(kBlack, kWhite, 35)); // the middle row
        for (int row = 0; row < 4; ++row) {
            const std::string text = std::to_string((digit + row + 9) % 10);
            DrawAlignedText(dc, text.c_str(), {0, row * kRow - turned, width, (row + 1) * kRow - turned}, 68,
                            {digits.EffectiveFont(), kWhite, kBlack, 0});
        }
    });
}

TEST_F(DigitSelectionTest, ColumnsShowTheirDigitBetweenTheOneBelowAndTheNext) {
    Settle(digits);
    const Snapshot shown(digits);
    EXPECT_EQ(shown.Differences(digits.ColumnRect(3), ColumnOf(digits, 3, 4, 0, kBlack)), 0);
    EXPECT_EQ(shown.Differences(digits.ColumnRect(2), ColumnOf(digits, 2, 5, 0, kBlack)), 0);
    const COLORREF pointedAt = MixColors(kBlack, kWhite, 15);
    EXPECT_EQ(shown.Differences(digits.ColumnRect(0), ColumnOf(digits, 0, 0, 0, pointedAt)), 0);
}

TEST_F(DigitSelectionTest, ATurnedColumnIsDrawnHigherByAsManyPixels) {
    Settle(digits);
    const int x = ColumnX(3);
    PressAt(digits, x, 30);
    DragTo(digits, x, 30 - 5);
    const COLORREF pointedAt = MixColors(kBlack, kWhite, 15);
    EXPECT_EQ(Snapshot(digits).Differences(digits.ColumnRect(3), ColumnOf(digits, 3, 4, 5, pointedAt)), 0);
    ReleaseAt(digits, x, 30 - 5);
}

TEST_F(DigitSelectionTest, ShowsTheSignBeforeTheDigits) {
    Settle(digits);
    const LONG first = digits.ColumnRect(15).left;
    const RECT beforeDigits{1, 1, first, 1 + 3 * kRow};
    const COLORREF band = MixColors(kBlack, kWhite, 35);
    const auto inkOf = [&] {
        const Snapshot shown(digits);
        return shown.CountOther(beforeDigits, kBlack) - shown.Count(beforeDigits, band);
    };
    EXPECT_EQ(inkOf(), 0);
    edit.SetValue(-20);
    digits.Invalidate();
    EXPECT_GT(inkOf(), 1);
    edit.SetValue(20);
    digits.Invalidate();
    EXPECT_EQ(inkOf(), 0);
}

} // namespace
} // namespace orva::toolkit
