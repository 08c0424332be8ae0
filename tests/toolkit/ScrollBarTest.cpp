/// The scroll bar: geometry, arrows, pages, drag, their times, look.

#include "tests/toolkit/WidgetSupport.h"
#include "toolkit/Colors.h"
#include "toolkit/FrameDrawing.h"
#include "toolkit/Tmy_ScrollBar.h"

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

// 16 by 100 at 10, 10 of the top window, which gets the messages. Between the arrows there are rows 16 to 83.
// Of positions 0 to 30 with a page of 10, the thumb has 10 parts of 40: 17 of 68 pixels, and a way of 51.
constexpr Placement kUprightBar{10, 10, 16, 100};
constexpr int kX = 18;
constexpr int kY = 10; ///< of the bar's top in the window

class ScrollBar : public WidgetTest {
protected:
    ScrollBar() : bar(new Tmy_ScrollBar(&Top(), ScrollDirection::Vertical, kUprightBar)) {
        bar->SetRange(0, 30);
        bar->SetPageSize(10);
        bar->SetPosition(10, false);
        scrolls.Watch(bar->onScroll);
    }
    static void Press(int y) { PressAt(Top(), kX, kY + y); }
    static void Drag(int y) { DragTo(Top(), kX, kY + y); }
    static void Release(int y) { ReleaseAt(Top(), kX, kY + y); }

    FakeTimers timers;
    Tmy_ScrollBar* bar;
    EventCount<int> scrolls;
};

TEST_F(ScrollBar, BeginsWithNothingToMove) {
    const Tmy_ScrollBar fresh(&Top(), ScrollDirection::Vertical, {50, 10, 16, 100});
    EXPECT_EQ(fresh.GetMinimum(), 0);
    EXPECT_EQ(fresh.GetMaximum(), 0);
    EXPECT_EQ(fresh.GetPosition(), 0);
    EXPECT_EQ(fresh.GetPageSize(), 1);
    EXPECT_FALSE(fresh.CanScroll());
    EXPECT_EQ(fresh.ThumbRect().top, fresh.ThumbRect().bottom);
    EXPECT_EQ(fresh.Window(), nullptr);
}

TEST_F(ScrollBar, ThumbIsAsLongAPartAsThePageIs) {
    EXPECT_EQ(bar->TroughRect(), (RECT{0, 16, 16, 84}));
    EXPECT_EQ(bar->ThumbRect(), (RECT{0, 33, 16, 50}));
    bar->SetPosition(0, false);
    EXPECT_EQ(bar->ThumbRect(), (RECT{0, 16, 16, 33}));
    bar->SetPosition(30, false);
    EXPECT_EQ(bar->ThumbRect(), (RECT{0, 67, 16, 84}));
    bar->SetRange(0, 100000);
    EXPECT_EQ(bar->ThumbRect().bottom - bar->ThumbRect().top, 8); // the smallest
}

TEST_F(ScrollBar, LevelOneRunsFromLeftToRight) {
    Tmy_ScrollBar level(&Top(), ScrollDirection::Horizontal, {50, 150, 100, 16});
    level.SetRange(0, 30);
    level.SetPageSize(10);
    level.SetPosition(10, false);
    EXPECT_EQ(level.TroughRect(), (RECT{16, 0, 84, 16}));
    EXPECT_EQ(level.ThumbRect(), (RECT{33, 0, 50, 16}));
    ClickAt(Top(), 50 + 5, 158);
    EXPECT_EQ(level.GetPosition(), 9);
    ClickAt(Top(), 50 + 95, 158);
    EXPECT_EQ(level.GetPosition(), 10);
    ClickAt(Top(), 50 + 80, 158);
    EXPECT_EQ(level.GetPosition(), 20);
}

TEST_F(ScrollBar, SettersLimitAndCompare) {
    bar->SetPosition(99, true);
    EXPECT_EQ(bar->GetPosition(), 30);
    bar->SetPosition(31, true);
    EXPECT_EQ(scrolls.count, 1);
    EXPECT_EQ(scrolls.last, 30);
    bar->SetRange(40, 35); // the highest moves up to the lowest
    EXPECT_EQ(bar->GetMaximum(), 40);
    EXPECT_EQ(bar->GetPosition(), 40);
    bar->SetPageSize(-4);
    EXPECT_EQ(bar->GetPageSize(), 1);
    EXPECT_EQ(scrolls.count, 1);
}

TEST_F(ScrollBar, ArrowsMoveByOneAndRepeat) {
    Press(90);
    EXPECT_EQ(bar->GetPosition(), 11);
    timers.Advance(499);
    EXPECT_EQ(bar->GetPosition(), 11);
    timers.Advance(101); // at 500, 550 and 600
    EXPECT_EQ(bar->GetPosition(), 14);
    Release(90);
    timers.Advance(1000);
    EXPECT_EQ(bar->GetPosition(), 14);
    Press(5);
    timers.Advance(5000);
    Release(5);
    EXPECT_EQ(bar->GetPosition(), 0);
    EXPECT_EQ(scrolls.count, 4 + 14); // none at the end of the way
}

TEST_F(ScrollBar, PressBesideTheThumbMovesAPage) {
    Press(80);
    EXPECT_EQ(bar->GetPosition(), 20);
    Release(80);
    Press(20);
    EXPECT_EQ(bar->GetPosition(), 10);
    Release(20);
    EXPECT_EQ(scrolls.count, 2);
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(ScrollBar, HeldPageRepeatsUntilTheThumbIsThere) {
    bar->SetPosition(0, false);
    Press(60); // the thumb comes there at 20: rows 50 to 66
    EXPECT_EQ(bar->GetPosition(), 10);
    timers.Advance(499);
    EXPECT_EQ(bar->GetPosition(), 10);
    timers.Advance(1);
    EXPECT_EQ(bar->GetPosition(), 20);
    timers.Advance(2000);
    EXPECT_EQ(bar->GetPosition(), 20);
    Drag(83); // the pointer goes on: so do the pages
    timers.Advance(50);
    EXPECT_EQ(bar->GetPosition(), 30);
    Drag(20); // but not back
    timers.Advance(500);
    EXPECT_EQ(bar->GetPosition(), 30);
    Release(20);
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(ScrollBar, DragMovesTheThumbWithThePointer) {
    Press(40);
    Drag(57); // 17 of 51 pixels further: 10 of 30 positions
    EXPECT_EQ(bar->GetPosition(), 20);
    EXPECT_EQ(bar->ThumbRect().top, 50);
    Drag(4000);
    EXPECT_EQ(bar->GetPosition(), 30);
    Drag(-4000);
    EXPECT_EQ(bar->GetPosition(), 0);
    Release(-4000);
    EXPECT_EQ(scrolls.count, 3);
    Drag(60);
    EXPECT_EQ(bar->GetPosition(), 0);
}

TEST_F(ScrollBar, WithoutARangeNothingMoves) {
    bar->SetRange(0, 0);
    for (const int y : {5, 50, 90}) {
        Press(y);
        timers.Advance(700);
        Release(y);
    }
    EXPECT_EQ(scrolls.count, 0);
}

TEST_F(ScrollBar, DisabledTakesNoInput) {
    bar->SetEnabled(false);
    for (const int y : {5, 40, 60, 90}) {
        Press(y);
        Drag(y + 5);
        timers.Advance(700);
        Release(y);
    }
    EXPECT_EQ(bar->GetPosition(), 10);
    EXPECT_EQ(scrolls.count, 0);
}

TEST_F(ScrollBar, BeingDisabledOrEmptiedEndsWhatIsUnderWay) {
    Press(80);
    bar->SetEnabled(false);
    EXPECT_TRUE(timers.Running().empty());
    bar->SetEnabled(true);
    Release(80);
    Press(60);
    bar->SetRange(0, 0);
    EXPECT_TRUE(timers.Running().empty());
    Release(60);
}

TEST_F(ScrollBar, LostCaptureEndsThePages) {
    bar->SetPosition(0, false);
    Press(80);
    ReleaseCapture();
    timers.Advance(5000);
    EXPECT_EQ(bar->GetPosition(), 10);
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(ScrollBar, LostCaptureEndsTheRepetitionOfAnArrow) {
    Press(90);
    ReleaseCapture();
    timers.Advance(5000);
    EXPECT_EQ(bar->GetPosition(), 11);
    EXPECT_TRUE(timers.Running().empty());
    Release(90);
    Press(90);
    timers.Advance(500);
    EXPECT_EQ(bar->GetPosition(), 13);
    Release(90);
}

TEST_F(ScrollBar, LostCaptureEndsTheDrag) {
    Press(40);
    ReleaseCapture();
    Drag(57); // over the bar, with a button that was pressed elsewhere
    Drag(4000);
    EXPECT_EQ(bar->GetPosition(), 10);
    EXPECT_EQ(scrolls.count, 0);
    const Snapshot picture(Top(), {10, 10, 26, 110});
    EXPECT_GT(picture.At(0, 33), picture.At(15, 49)) << "raised again";
    Release(57);
}

TEST_F(ScrollBar, HandlerMayDeleteItAtAPage) {
    auto* doomed = new Tmy_ScrollBar(&Top(), ScrollDirection::Vertical, {50, 10, 16, 100});
    doomed->SetRange(0, 30);
    scrolls.Watch(doomed->onScroll);
    scrolls.then = [&] { delete doomed; };
    PressAt(Top(), 58, 80);
    EXPECT_EQ(scrolls.count, 1);
    EXPECT_TRUE(timers.Running().empty());
    ReleaseAt(Top(), 58, 80);
}

TEST_F(ScrollBar, ButtonsHaveTheSizeAskedForAndShareAShortBar) {
    bar->SetButtonSize(12, 10);
    EXPECT_EQ(bar->TroughRect(), (RECT{0, 10, 16, 90}));
    bar->SetBounds(10, 10, 16, 14);
    EXPECT_EQ(bar->TroughRect(), (RECT{0, 7, 16, 7}));
    const RECT thumb = bar->ThumbRect();
    EXPECT_EQ(thumb.top, thumb.bottom);
    Press(3);
    EXPECT_EQ(bar->GetPosition(), 9);
    Release(3);
}

TEST_F(ScrollBar, DrawsTroughAndThumb) {
    const Snapshot picture(Top(), {10, 10, 26, 110});
    const COLORREF trough = MixColors(0x636363, 0, 30);
    EXPECT_EQ(picture.CountOther({0, 16, 16, 33}, trough), 0);
    EXPECT_EQ(picture.CountOther({0, 50, 16, 84}, trough), 0);
    EXPECT_EQ(picture.Count({2, 35, 14, 48}, 0x636363), 12 * 13); // inside the thumb's border
    EXPECT_GT(picture.At(0, 33), picture.At(15, 49));             // raised
    Press(40);
    const Snapshot held(Top(), {10, 10, 26, 110});
    EXPECT_LT(held.At(0, 33), held.At(15, 49));
    Release(40);
    bar->SetEnabled(false);
    const Snapshot off(Top(), {10, 10, 26, 110});
    EXPECT_EQ(off.CountOther({0, 16, 16, 84}, trough), 0);
    EXPECT_EQ(off.Count({0, 0, 16, 16}, 0xFFFFFF), 0); // the arrow is grey
    EXPECT_GT(off.Count({0, 0, 16, 16}, 0x888888), 0);
}

TEST_F(ScrollBar, ThumbIsDrawnInTheStylesColoursAndBrightness) {
    TmyComponent host(&Top(), "", kChild, 0, {50, 10, 16, 100});
    host.SetStyleValue(StyleValue::WindowColor, 0x806040, true);
    host.SetStyleValue(StyleValue::Brightness, 140);
    Tmy_ScrollBar own(&host, ScrollDirection::Vertical, {0, 0, 16, 100});
    own.SetRange(0, 30);
    own.SetPageSize(10);
    const Snapshot expected = Snapshot::Drawn(16, 17, 0x806040, [](HDC dc) {
        DrawFrame(dc, {0, 0, 16, 17}, kFrameRaised, 2, 0x806040, 140);
    });
    EXPECT_EQ(own.ThumbRect(), (RECT{0, 16, 16, 33}));
    EXPECT_EQ(Snapshot(host).Differences(own.ThumbRect(), expected), 0);
}

TEST_F(ScrollBar, RealMouseDragsBeyondTheWindow) {
    real::MoveTo(kTopPlace.x + kX, kTopPlace.y + kY + 40);
    real::LeftDown();
    real::MoveTo(900, 900);
    EXPECT_EQ(bar->GetPosition(), 30);
    real::MoveTo(900, 5);
    EXPECT_EQ(bar->GetPosition(), 0);
    real::LeftUp();
    EXPECT_EQ(GetCapture(), nullptr);
}

} // namespace
} // namespace orva::toolkit
