/// The list box: lines, selection, mouse, wheel, keys, scrolling, look.

#include "tests/toolkit/WidgetSupport.h"
#include "toolkit/Colors.h"
#include "toolkit/TextDrawing.h"
#include "toolkit/TmyListBox.h"
#include "toolkit/Tmy_ScrollBar.h"

#include <cstdlib>
#include <functional>
#include <string>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

constexpr int kBorder = 2;
constexpr int kBarWidth = 16;
constexpr int kLines = 5; ///< that fit into the tests' list

/// Height of a line: the text's and 2 pixels.
int LineHeight() {
    const HDC screen = ::GetDC(nullptr);
    const HGDIOBJ before = SelectObject(screen, GetStockObject(DEFAULT_GUI_FONT));
    TEXTMETRICA metrics{};
    GetTextMetricsA(screen, &metrics);
    SelectObject(screen, before);
    ::ReleaseDC(nullptr, screen);
    return metrics.tmHeight + 2;
}

/// Notes Return and Escape.
class NotingList : public TmyListBox {
public:
    using TmyListBox::TmyListBox;
    void OnEnter() override {
        ++enters;
        TmyListBox::OnEnter();
    }
    int enters = 0;
};

class ListBox : public WidgetTest {
protected:
    ListBox() : lineHeight(LineHeight()), list(MakeList(ListStyle::Plain)) {}

    NotingList* MakeList(ListStyle listStyle) {
        auto* made = new NotingList(&Top(), {10, 10, 120, 2 * kBorder + kLines * lineHeight}, listStyle);
        changes.Watch(made->onChange);
        enters.Watch(made->onEnter);
        return made;
    }
    void Fill(int count) const {
        for (int i = 0; i < count; ++i) {
            EXPECT_EQ(list->AddItem(("Line " + std::to_string(i)).c_str()), i);
        }
    }
    [[nodiscard]] int MiddleOf(int row) const { return kBorder + row * lineHeight + lineHeight / 2; }

    int lineHeight;
    EventCount<std::int32_t> changes;
    EventCount<std::int32_t> enters;
    NotingList* list;
};

// --- lines -------------------------------------------------------------------------------------------------

TEST_F(ListBox, BeginsEmptyWithoutSelection) {
    EXPECT_EQ(list->GetCount(), 0);
    EXPECT_EQ(list->GetSelected(), -1);
    EXPECT_EQ(list->GetTopIndex(), 0);
    EXPECT_EQ(list->GetItemHeight(), lineHeight);
    EXPECT_EQ(list->VisibleCount(), kLines);
    EXPECT_EQ(list->GetItem(0), nullptr);
    EXPECT_TRUE(list->HasState(ControlState::Focusable));
    EXPECT_EQ(list->LinesRect(),
              (RECT{kBorder, kBorder, 120 - kBorder - kBarWidth, kBorder + kLines * lineHeight}));
}

TEST_F(ListBox, KeepsTextWordAndColourOfEachLine) {
    Fill(3);
    EXPECT_EQ(list->GetCount(), 3);
    EXPECT_TRUE(list->GetItem(2)->text == "Line 2");
    EXPECT_EQ(list->GetItem(1)->userWord, 0u);
    EXPECT_EQ(list->GetItem(1)->color, kListTextColor);
    list->GetItem(1)->userWord = 77;
    EXPECT_EQ(list->GetItem(1)->userWord, 77u);
    EXPECT_EQ(list->GetItem(-1), nullptr);
    EXPECT_EQ(list->GetItem(3), nullptr);
    EXPECT_EQ(list->AddItem(nullptr), 3);
    EXPECT_TRUE(list->GetItem(3)->text.IsEmpty());
}

TEST_F(ListBox, ClearForgetsLinesSelectionAndScroll) {
    Fill(20);
    list->Select(19, false);
    EXPECT_EQ(list->GetTopIndex(), 15);
    list->Clear();
    EXPECT_EQ(list->GetCount(), 0);
    EXPECT_EQ(list->GetSelected(), -1);
    EXPECT_EQ(list->GetTopIndex(), 0);
    EXPECT_FALSE(list->ScrollBar()->CanScroll());
    EXPECT_EQ(changes.count, 0);
}

TEST_F(ListBox, SelectComparesFiresIfAskedAndBringsIntoView) {
    Fill(20);
    list->Select(3, false);
    EXPECT_EQ(changes.count, 0);
    list->Select(3, true);
    EXPECT_EQ(changes.count, 0);
    list->Select(12, true);
    EXPECT_EQ(changes.count, 1);
    EXPECT_EQ(changes.last, 12);
    EXPECT_EQ(list->GetTopIndex(), 8); // the last of five
    list->Select(9, true);
    EXPECT_EQ(list->GetTopIndex(), 8);
    list->Select(2, true);
    EXPECT_EQ(list->GetTopIndex(), 2);
    list->Select(20, true); // outside: none
    EXPECT_EQ(list->GetSelected(), -1);
    EXPECT_EQ(changes.last, -1);
    list->Select(-5, true);
    EXPECT_EQ(changes.count, 4);
}

// --- the mouse ---------------------------------------------------------------------------------------------

TEST_F(ListBox, ClickSelectsTheLineAndEntersAtTheRelease) {
    Fill(20);
    PressAt(*list, 20, MiddleOf(2));
    EXPECT_EQ(list->GetSelected(), 2);
    EXPECT_EQ(changes.count, 1);
    EXPECT_EQ(enters.count, 0);
    ReleaseAt(*list, 20, MiddleOf(2));
    EXPECT_EQ(enters.count, 1);
    EXPECT_EQ(enters.last, 2);
    ClickAt(*list, 20, MiddleOf(2)); // the same again is a choice, but no change
    EXPECT_EQ(changes.count, 1);
    EXPECT_EQ(enters.count, 2);
    EXPECT_TRUE(list->HasFocus());
}

TEST_F(ListBox, LinesBeginAndEndAtTheirRows) {
    Fill(20);
    EXPECT_EQ(list->IndexAt(kBorder, kBorder), 0);
    EXPECT_EQ(list->IndexAt(kBorder, kBorder + lineHeight - 1), 0);
    EXPECT_EQ(list->IndexAt(kBorder, kBorder + lineHeight), 1);
    EXPECT_EQ(list->IndexAt(kBorder, kBorder + kLines * lineHeight - 1), 4);
    EXPECT_EQ(list->IndexAt(kBorder - 1, kBorder), -1);
    EXPECT_EQ(list->IndexAt(120 - kBorder - kBarWidth, kBorder), -1);
    EXPECT_EQ(list->IndexAt(kBorder, kBorder + kLines * lineHeight), -1);
}

TEST_F(ListBox, ClickBelowTheLastLineDoesNothing) {
    Fill(2);
    ClickAt(*list, 20, MiddleOf(3));
    EXPECT_EQ(list->GetSelected(), -1);
    EXPECT_EQ(changes.count + enters.count, 0);
}

TEST_F(ListBox, DragSelectsAndScrollsBeyondTheEnds) {
    Fill(20);
    PressAt(*list, 20, MiddleOf(0));
    DragTo(*list, 20, MiddleOf(3));
    EXPECT_EQ(list->GetSelected(), 3);
    DragTo(*list, 20, 500);
    DragTo(*list, 20, 501);
    EXPECT_EQ(list->GetSelected(), 6);
    EXPECT_EQ(list->GetTopIndex(), 2);
    DragTo(*list, 20, -50);
    EXPECT_EQ(list->GetSelected(), 1);
    for (int i = 0; i < 5; ++i) {
        DragTo(*list, 20, -50);
    }
    EXPECT_EQ(list->GetSelected(), 0);
    ReleaseAt(*list, 20, -50); // outside: nothing is chosen
    EXPECT_EQ(enters.count, 0);
    DragTo(*list, 20, MiddleOf(3));
    EXPECT_EQ(list->GetSelected(), 0);
}

TEST_F(ListBox, LostCaptureEndsTheDrag) {
    Fill(5);
    PressAt(*list, 20, MiddleOf(0));
    ReleaseCapture();
    DragTo(*list, 20, MiddleOf(3));
    EXPECT_EQ(list->GetSelected(), 0);
    ReleaseAt(*list, 20, MiddleOf(0));
    EXPECT_EQ(enters.count, 0);
}

TEST_F(ListBox, WheelScrollsOneLineANotchUpForPositive) {
    Fill(20);
    list->SetFocus();
    Wheel(*list, -3);
    EXPECT_EQ(list->GetTopIndex(), 3);
    Wheel(*list, 1);
    EXPECT_EQ(list->GetTopIndex(), 2);
    Wheel(*list, 100);
    EXPECT_EQ(list->GetTopIndex(), 0);
    Wheel(*list, -100);
    EXPECT_EQ(list->GetTopIndex(), 15);
    EXPECT_EQ(list->ScrollBar()->GetPosition(), 15);
    EXPECT_EQ(list->GetSelected(), -1);
    EXPECT_EQ(changes.count, 0);
}

/// Keeps every wheel event.
struct WheelKeeper {
    void On(TmyControl* /*sender*/, int notches, WPARAM /*keys*/, bool& passOn) {
        seen = notches;
        passOn = false;
    }
    int seen = 0;
};

TEST_F(ListBox, HandlerMayKeepTheWheelAndTheParentNeverGetsIt) {
    Fill(20);
    EventCount<int, WPARAM, bool&> parent;
    parent.Watch(Top().onWheel);
    WheelKeeper keeper;
    list->SetFocus();
    Wheel(*list, -1);
    EXPECT_EQ(list->GetTopIndex(), 1);
    list->onWheel.Bind<&WheelKeeper::On>(&keeper);
    Wheel(*list, -2);
    EXPECT_EQ(keeper.seen, -2);
    EXPECT_EQ(list->GetTopIndex(), 1);
    EXPECT_EQ(parent.count, 0);
    Top().onWheel.Clear();
}

TEST_F(ListBox, ScrollBarMovesTheLines) {
    Fill(20);
    const int barX = 120 - kBorder - kBarWidth / 2;
    ClickAt(*list, barX, list->GetClientHeight() - kBorder - 4); // the lower arrow
    EXPECT_EQ(list->GetTopIndex(), 1);
    EXPECT_EQ(list->ScrollBar()->GetPageSize(), kLines);
    EXPECT_EQ(list->ScrollBar()->GetMaximum(), 15);
    EXPECT_EQ(list->GetSelected(), -1);
    EXPECT_EQ(enters.count, 0);
}

// --- keys --------------------------------------------------------------------------------------------------

TEST_F(ListBox, ArrowsAndPagesMoveTheSelectionWithinTheList) {
    for (const ListStyle listStyle : {ListStyle::Plain, ListStyle::InCombo}) {
        delete list;
        list = MakeList(listStyle);
        Fill(12);
        KeyDown(*list, VK_DOWN);
        EXPECT_EQ(list->GetSelected(), 0);
        KeyDown(*list, VK_DOWN);
        EXPECT_EQ(list->GetSelected(), 1);
        KeyDown(*list, VK_NEXT);
        EXPECT_EQ(list->GetSelected(), 1 + kLines);
        KeyDown(*list, VK_NEXT);
        EXPECT_EQ(list->GetSelected(), 11);
        KeyDown(*list, VK_DOWN);
        EXPECT_EQ(list->GetSelected(), 11);
        KeyDown(*list, VK_UP);
        EXPECT_EQ(list->GetSelected(), 10);
        KeyDown(*list, VK_PRIOR);
        EXPECT_EQ(list->GetSelected(), 10 - kLines);
        KeyDown(*list, VK_PRIOR);
        EXPECT_EQ(list->GetSelected(), 0);
        KeyDown(*list, VK_UP);
        EXPECT_EQ(list->GetSelected(), 0);
    }
    EXPECT_EQ(changes.count, 2 * 7);
}

TEST_F(ListBox, UpBeginsAtTheLastLine) {
    Fill(7);
    KeyDown(*list, VK_UP);
    EXPECT_EQ(list->GetSelected(), 6);
}

TEST_F(ListBox, ReturnEntersEvenWithoutASelection) {
    Fill(3);
    KeyDown(*list, VK_RETURN);
    EXPECT_EQ(list->enters, 1);
    EXPECT_EQ(enters.last, -1);
    list->Select(1, false);
    KeyDown(*list, VK_RETURN);
    EXPECT_EQ(enters.last, 1);
}

TEST_F(ListBox, EscapeClosesOnlyAListInACombo) {
    KeyDown(*list, VK_ESCAPE);
    Pump();
    EXPECT_TRUE(list->IsVisible());
    delete list;
    list = MakeList(ListStyle::InCombo);
    list->SetFocus();
    KeyDown(*list, VK_ESCAPE);
    Pump();
    EXPECT_FALSE(list->IsVisible());
    EXPECT_TRUE(Top().HasFocus());
}

TEST_F(ListBox, OtherStylesTakeNoKeys) {
    for (const ListStyle listStyle : {ListStyle::Mouse, ListStyle::Large}) {
        delete list;
        list = MakeList(listStyle);
        Fill(12);
        for (const UINT key : {VK_DOWN, VK_UP, VK_NEXT, VK_PRIOR, VK_RETURN, VK_ESCAPE}) {
            KeyDown(*list, key);
        }
        EXPECT_EQ(list->GetSelected(), -1);
        ClickAt(*list, 20, 10);
        EXPECT_EQ(list->GetSelected(), 0);
    }
    EXPECT_EQ(enters.count, 2); // of the clicks
}

TEST_F(ListBox, KeysInAnEmptyListDoNothing) {
    for (const UINT key : {VK_DOWN, VK_UP, VK_NEXT, VK_PRIOR}) {
        KeyDown(*list, key);
    }
    EXPECT_EQ(list->GetSelected(), -1);
    EXPECT_EQ(changes.count, 0);
}

// --- handlers that delete the list -------------------------------------------------------------------------

TEST_F(ListBox, MayBeDeletedByItsHandlers) {
    const auto isDeletedBy = [&](const std::function<void()>& input) {
        delete list;
        list = MakeList(ListStyle::Plain);
        Fill(12);
        const HWND window = list->Window();
        input();
        const bool gone = IsWindow(window) == 0;
        list = gone ? nullptr : list;
        return gone;
    };
    const auto end = [this] { delete list; };
    const auto press = [&](int row) { PressAt(*list, 20, MiddleOf(row)); };

    changes.then = end;
    EXPECT_TRUE(isDeletedBy([&] { press(1); }));
    EXPECT_TRUE(isDeletedBy([&] {
        changes.then = nullptr;
        press(1);
        changes.then = end;
        DragTo(*list, 20, MiddleOf(2));
    }));
    EXPECT_TRUE(isDeletedBy([&] { KeyDown(*list, VK_NEXT); }));
    EXPECT_TRUE(isDeletedBy([&] { list->Select(2, true); }));
    EXPECT_FALSE(isDeletedBy([&] { list->Select(2, false); }));

    changes.then = nullptr;
    enters.then = end;
    EXPECT_TRUE(isDeletedBy([&] { KeyDown(*list, VK_RETURN); }));
    EXPECT_TRUE(isDeletedBy([&] {
        press(1);
        SendMessageA(list->Window(), WM_LBUTTONUP, 0, Point(20, MiddleOf(1)));
    }));

    EventCount<int, WPARAM, bool&> wheel;
    wheel.then = end;
    EXPECT_TRUE(isDeletedBy([&] {
        wheel.Watch(list->onWheel);
        list->SetFocus();
        Wheel(*list, -1);
    }));
}

// --- states and styles -------------------------------------------------------------------------------------

TEST_F(ListBox, DisabledTakesNoInput) {
    Fill(20);
    list->SetFocus();
    list->SetEnabled(false);
    ClickAt(*list, 20, MiddleOf(1));
    DragTo(*list, 20, MiddleOf(2));
    ClickAt(*list, 120 - kBorder - kBarWidth / 2, list->GetClientHeight() - kBorder - 4);
    Wheel(*list, -3);
    KeyDown(*list, VK_DOWN);
    KeyDown(*list, VK_RETURN);
    EXPECT_EQ(list->GetSelected(), -1);
    EXPECT_EQ(list->GetTopIndex(), 0);
    EXPECT_EQ(changes.count + enters.count, 0);
}

TEST_F(ListBox, LargeStyleHasNoScrollBarAndArial20) {
    delete list;
    list = MakeList(ListStyle::Large);
    EXPECT_FALSE(list->ScrollBar()->IsVisible());
    EXPECT_EQ(list->LinesRect().right, 120 - kBorder);
    LOGFONTA logical{};
    ASSERT_EQ(GetObjectA(list->GetFont(), sizeof logical, &logical), static_cast<int>(sizeof logical));
    EXPECT_EQ(logical.lfHeight, -20);
    EXPECT_STREQ(logical.lfFaceName, "Arial");
    EXPECT_EQ(list->GetItemHeight(), list->TextHeight() + 2);
    EXPECT_GE(list->TextHeight(), 20);
}

TEST_F(ListBox, LinesFollowFontAndSize) {
    Fill(20);
    const HFONT big = CreateFontA(-30, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, "Arial");
    list->SetFont(big);
    EXPECT_EQ(list->GetItemHeight(), list->TextHeight() + 2);
    EXPECT_EQ(list->VisibleCount(),
              static_cast<int>(list->LinesRect().bottom - kBorder) / list->GetItemHeight());
    list->SetFont(InheritedFont());
    DeleteObject(big);
    EXPECT_EQ(list->GetItemHeight(), lineHeight);
    list->SetSize(120, 2 * kBorder + 12 * lineHeight + 3);
    EXPECT_EQ(list->VisibleCount(), 12);
    EXPECT_EQ(list->ScrollBar()->GetMaximum(), 8);
    list->SetTopIndex(8);
    list->SetSize(120, 2 * kBorder + 18 * lineHeight);
    EXPECT_EQ(list->GetTopIndex(), 2); // no empty rows below the last line
    list->SetSize(0, 0);
    EXPECT_EQ(list->VisibleCount(), 1);
    EXPECT_EQ(list->HeightFor(4), 2 * kBorder + 4 * lineHeight);
}

// --- look --------------------------------------------------------------------------------------------------

TEST_F(ListBox, DrawsTheSelectedLineInSwappedColours) {
    Fill(20);
    list->Select(1, false);
    const Snapshot picture(*list);
    const RECT lines = list->LinesRect();
    const RECT first{lines.left, lines.top, lines.right, lines.top + lineHeight};
    const RECT second{lines.left, first.bottom, lines.right, first.bottom + lineHeight};
    EXPECT_EQ(picture.At(kBorder, kBorder), 0u);
    EXPECT_GT(picture.Count(first, 0xFFFFFF), 10); // letters
    EXPECT_GT(picture.Count(first, 0), picture.CountOther(first, 0));
    EXPECT_GT(picture.Count(second, 0xFFFFFF), picture.CountOther(second, 0xFFFFFF));
    EXPECT_GT(picture.Count(second, 0), 10);
    // The whole row: both columns at its ends, from its first to its last pixel.
    for (const LONG x : {second.left, second.right - 1}) {
        EXPECT_EQ(picture.Count({x, second.top, x + 1, second.bottom}, 0xFFFFFF), lineHeight);
        EXPECT_EQ(picture.At(static_cast<int>(x), static_cast<int>(second.bottom)), 0u);
    }
    EXPECT_LT(picture.At(0, 0), picture.At(119, list->GetClientHeight() - 1)); // sunken
}

TEST_F(ListBox, ScrolledRowsShowTheTextsOfTheirLines) {
    Fill(20);
    list->SetTopIndex(7);
    list->Select(9, false);
    ASSERT_EQ(list->GetTopIndex(), 7);
    const Snapshot picture(*list);
    for (int row = 0; row < kLines; ++row) {
        const RECT line = list->LineRect(7 + row);
        EXPECT_EQ(line.top, kBorder + row * lineHeight);
        const int width = static_cast<int>(line.right - line.left);
        const COLORREF paper = row == 2 ? kWhite : kBlack;
        const Snapshot expected = Snapshot::Drawn(width, lineHeight, paper, [&](HDC dc) {
            DrawAlignedText(dc, ("Line " + std::to_string(7 + row)).c_str(), {3, 0, width - 3, lineHeight},
                            65, {list->EffectiveFont(), row == 2 ? kBlack : kWhite, paper, 0});
        });
        EXPECT_EQ(picture.Differences(line, expected), 0) << "row " << row;
    }
}

TEST_F(ListBox, DrawsDisabledLinesGreyAndColouredOnesInTheirColour) {
    Fill(3);
    list->GetItem(0)->color = 0x00FFFF; // yellow
    list->Select(1, false);
    const RECT lines = list->LinesRect();
    const RECT first{lines.left, lines.top, lines.right, lines.top + lineHeight};
    const RECT second{lines.left, first.bottom, lines.right, first.bottom + lineHeight};
    const Snapshot picture(*list);
    EXPECT_GT(picture.Count(first, 0x00FFFF), 10);
    EXPECT_EQ(picture.Count(first, 0xFFFFFF), 0);
    list->SetEnabled(false);
    const Snapshot grey(*list);
    EXPECT_GT(grey.Count(first, 0x888888), 10);
    EXPECT_EQ(grey.Count(first, 0x00FFFF), 0);
    EXPECT_GT(grey.Count(second, 0x888888), grey.CountOther(second, 0x888888));
    EXPECT_EQ(grey.Count(lines, 0xFFFFFF), 0);
}

TEST_F(ListBox, SelectedLineInItsColourStandsOnIt) {
    Fill(2);
    list->GetItem(0)->color = 0x00FFFF;
    list->Select(0, false);
    const Snapshot picture(*list);
    EXPECT_EQ(picture.At(kBorder, kBorder), 0x00FFFFu);
}

TEST_F(ListBox, MarksTheSelectedLineWhileItHasTheFocus) {
    Fill(3);
    list->Select(1, false);
    const Snapshot without(*list);
    list->SetFocus();
    const Snapshot with(*list);
    const RECT line = list->LineRect(1);
    const RECT edge{line.left, line.top, line.right, line.top + 1};
    EXPECT_EQ(without.Count(edge, 0xFFFFFF), static_cast<int>(edge.right - edge.left));
    EXPECT_LT(with.Count(edge, 0xFFFFFF), static_cast<int>(edge.right - edge.left));
}

TEST_F(ListBox, MarksAllOfItsLinesWithTheFocusAndNoSelection) {
    list->SetFocus();
    const Snapshot empty(*list);
    EXPECT_EQ(empty.BoxOfOther(list->LinesRect(), kBlack), list->LinesRect());
    Top().SetFocus();
    const Snapshot without(*list);
    EXPECT_EQ(without.CountOther(list->LinesRect(), kBlack), 0);
}

TEST_F(ListBox, RealMouseAndKeysSelect) {
    Fill(20);
    Settle(*list);
    RECT place{};
    GetWindowRect(list->Window(), &place);
    real::MoveTo(static_cast<int>(place.left) + 20, static_cast<int>(place.top) + MiddleOf(3));
    real::LeftDown();
    EXPECT_EQ(list->GetSelected(), 3);
    real::MoveTo(static_cast<int>(place.left) + 20, static_cast<int>(place.top) + MiddleOf(1));
    EXPECT_EQ(list->GetSelected(), 1);
    real::LeftUp();
    EXPECT_EQ(enters.count, 1);
    EXPECT_EQ(enters.last, 1);
    real::Key(VK_DOWN);
    EXPECT_EQ(list->GetSelected(), 2);
}

} // namespace
} // namespace orva::toolkit
