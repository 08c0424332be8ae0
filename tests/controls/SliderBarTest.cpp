/// The slider bar: fill, values from the pointer, reversed, upright and empty ranges, look.

#include "controls/CtbSliderBar.h"
#include "tests/toolkit/WidgetSupport.h"

#include <gtest/gtest.h>

namespace orva::controls {
namespace {

using namespace orva::toolkit;

constexpr Placement kBarPlace{10, 10, 200, 6};
constexpr COLORREF kThumb = 0x00FF00;
constexpr COLORREF kTrack = 0x606060;

class SliderBar : public WidgetTest {
protected:
    SliderBar() : bar(new CtbSliderBar(&Top(), kBarPlace)) {
        bar->SetColours(kThumb, kTrack);
        changes.Watch(bar->onChange);
    }
    /// Columns from `left` to `right`, not included, are filled, and no others.
    void ExpectFilledColumns(int left, int right) {
        const Snapshot picture(*bar);
        for (int x = 0; x < picture.Width(); ++x) {
            const bool filled = x >= left && x < right;
            EXPECT_EQ(picture.Count({x, 0, x + 1, picture.Height()}, filled ? kThumb : kTrack),
                      picture.Height())
                << "column " << x;
        }
    }

    CtbSliderBar* bar;
    EventCount<int> changes;
};

TEST_F(SliderBar, BeginsLevelAtZeroOf100) {
    const CtbSliderBar fresh(&Top(), {10, 50, 100, 6});
    EXPECT_EQ(fresh.GetMinimum(), 0);
    EXPECT_EQ(fresh.GetMaximum(), 100);
    EXPECT_EQ(fresh.GetPosition(), 0);
    EXPECT_FALSE(fresh.IsVertical());
    EXPECT_FALSE(fresh.IsDragging());
    EXPECT_EQ(fresh.GetFillPixels(), 0);
    EXPECT_TRUE(fresh.GetText().IsEmpty());
}

TEST_F(SliderBar, FillIsInProportionRoundedToTheNearest) {
    bar->SetPosition(25);
    EXPECT_EQ(bar->GetFillPixels(), 50);
    ExpectFilledColumns(0, 50);
    bar->SetMaximum(300);
    bar->SetPosition(100); // 66.67
    EXPECT_EQ(bar->GetFillPixels(), 67);
    bar->SetPosition(200); // 133.33
    EXPECT_EQ(bar->GetFillPixels(), 133);
    ExpectFilledColumns(0, 133);
    bar->SetPosition(300);
    ExpectFilledColumns(0, 200);
}

TEST_F(SliderBar, SetPositionLimitsComparesAndAlwaysFires) {
    bar->SetPosition(150);
    EXPECT_EQ(bar->GetPosition(), 100);
    EXPECT_EQ(changes.count, 1);
    EXPECT_EQ(changes.last, 100);
    EXPECT_EQ(changes.sender, bar);
    bar->SetPosition(100);
    bar->SetPosition(1000);
    EXPECT_EQ(changes.count, 1);
    bar->SetPosition(-3);
    EXPECT_EQ(bar->GetPosition(), 0);
    EXPECT_EQ(changes.count, 2);
}

TEST_F(SliderBar, LimitsDoNotChangeThePosition) {
    bar->SetPosition(50);
    bar->SetMaximum(20);
    EXPECT_EQ(bar->GetPosition(), 50);
    EXPECT_EQ(bar->GetFillPixels(), 200); // of 500, no more than the bar is long
    bar->SetMaximum(200);
    EXPECT_EQ(bar->GetFillPixels(), 50);
    bar->SetMinimum(100);
    EXPECT_EQ(bar->GetPosition(), 50);
    EXPECT_EQ(bar->GetFillPixels(), 100); // by the position, whatever the lower end is
    EXPECT_EQ(changes.count, 1);
}

TEST_F(SliderBar, PressAndDragSetThePositionUntilTheRelease) {
    DragTo(*bar, 100, 3); // no press yet
    EXPECT_EQ(bar->GetPosition(), 0);
    PressAt(*bar, 40, 3);
    EXPECT_TRUE(bar->IsDragging());
    EXPECT_EQ(GetCapture(), bar->Window());
    EXPECT_EQ(bar->GetPosition(), 20);
    DragTo(*bar, 141, 3); // 70.5
    EXPECT_EQ(bar->GetPosition(), 71);
    DragTo(*bar, 141, 300);
    EXPECT_EQ(changes.count, 2);
    ReleaseAt(*bar, 141, 3);
    EXPECT_FALSE(bar->IsDragging());
    EXPECT_EQ(GetCapture(), nullptr);
    DragTo(*bar, 10, 3);
    EXPECT_EQ(bar->GetPosition(), 71);
}

TEST_F(SliderBar, DragPastTheEndsGivesTheirValues) {
    PressAt(*bar, 40, 3);
    DragTo(*bar, 5000, 3);
    EXPECT_EQ(bar->GetPosition(), 100);
    EXPECT_EQ(bar->GetFillPixels(), 200);
    DragTo(*bar, -5000, 3);
    EXPECT_EQ(bar->GetPosition(), 0);
    ReleaseAt(*bar, -5000, 3);
}

TEST_F(SliderBar, ReversedOneIsFilledFromTheRight) {
    bar->SetMinimum(100);
    bar->SetMaximum(0);
    bar->SetPosition(30);
    EXPECT_EQ(bar->GetFillPixels(), 60);
    ExpectFilledColumns(140, 200);
    PressAt(*bar, 180, 3);
    EXPECT_EQ(bar->GetPosition(), 10);
    DragTo(*bar, 0, 3);
    EXPECT_EQ(bar->GetPosition(), 100);
    ExpectFilledColumns(0, 200);
    DragTo(*bar, 9000, 3);
    EXPECT_EQ(bar->GetPosition(), 0);
    DragTo(*bar, -9000, 3);
    EXPECT_EQ(bar->GetPosition(), 100);
    ReleaseAt(*bar, 0, 3);
    bar->SetMaximum(40); // its lower end now
    PressAt(*bar, 100, 3);
    EXPECT_EQ(bar->GetPosition(), 70);
    ReleaseAt(*bar, 100, 3);
}

TEST_F(SliderBar, TurningTheRangeRoundRepaints) {
    bar->SetPosition(50);
    ExpectFilledColumns(0, 100);
    bar->SetMinimum(200);
    EXPECT_EQ(bar->GetFillPixels(), 100); // of the same distance
    ExpectFilledColumns(100, 200);
}

TEST_F(SliderBar, UprightOneIsFilledFromTheTop) {
    bar->SetPosition(50);
    bar->SetBounds(10, 10, 6, 100);
    bar->SetVertical(true);
    EXPECT_TRUE(bar->IsVertical());
    EXPECT_EQ(bar->GetFillPixels(), 50);
    Settle(*bar);
    const Snapshot picture(*bar);
    EXPECT_EQ(picture.Count({0, 0, 6, 50}, kThumb), 300);
    EXPECT_EQ(picture.Count({0, 50, 6, 100}, kTrack), 300);
    PressAt(*bar, 3, 20);
    EXPECT_EQ(bar->GetPosition(), 20);
    DragTo(*bar, 3, 500);
    EXPECT_EQ(bar->GetPosition(), 100);
    ReleaseAt(*bar, 3, 500);

    bar->SetMinimum(100);
    bar->SetMaximum(0);
    bar->SetPosition(30);
    const Snapshot reversed(*bar);
    EXPECT_EQ(reversed.Count({0, 70, 6, 100}, kThumb), 180);
    EXPECT_EQ(reversed.Count({0, 0, 6, 70}, kTrack), 420);
    PressAt(*bar, 3, 90);
    EXPECT_EQ(bar->GetPosition(), 10);
    ReleaseAt(*bar, 3, 90);
}

TEST_F(SliderBar, EmptyRangeHasNoFillAndNoFault) {
    bar->SetMinimum(5);
    bar->SetMaximum(5);
    EXPECT_EQ(bar->GetFillPixels(), 0);
    PressAt(*bar, 100, 3);
    DragTo(*bar, 150, 3);
    ReleaseAt(*bar, 150, 3);
    EXPECT_EQ(bar->GetPosition(), 5);
    EXPECT_EQ(bar->GetFillPixels(), 0);
    ExpectFilledColumns(0, 0);
}

TEST_F(SliderBar, NoLengthAndTheWidestRangeStayWithoutFault) {
    bar->SetSize(0, 0);
    PressAt(*bar, 0, 0);
    DragTo(*bar, 50, 0);
    ReleaseAt(*bar, 50, 0);
    EXPECT_EQ(bar->GetPosition(), 0);
    bar->SetSize(200, 6);
    bar->SetMinimum(INT32_MIN);
    bar->SetMaximum(INT32_MAX);
    PressAt(*bar, 32000, 3);
    EXPECT_EQ(bar->GetPosition(), INT32_MAX);
    DragTo(*bar, -32000, 3);
    EXPECT_EQ(bar->GetPosition(), INT32_MIN);
    EXPECT_EQ(bar->GetFillPixels(), 0); // below zero there is no fill
    ReleaseAt(*bar, 0, 3);
}

TEST_F(SliderBar, BorderNarrowsTheBar) {
    bar->SetSize(200, 20);
    bar->SetBorderStyle(4);
    bar->SetBorderWidth(5); // 190 inside
    bar->SetSize(210, 20);  // 200 inside
    bar->SetPosition(50);
    EXPECT_EQ(bar->GetFillPixels(), 100);
    Settle(*bar);
    const Snapshot picture(*bar);
    EXPECT_EQ(picture.Count({5, 5, 105, 15}, kThumb), 1000);
    EXPECT_EQ(picture.Count({105, 5, 205, 15}, kTrack), 1000);
    EXPECT_EQ(picture.Count(picture.Whole(), kThumb), 1000);
    EXPECT_EQ(picture.Count(picture.Whole(), kTrack), 1000);
    PressAt(*bar, 5 + 50, 10);
    EXPECT_EQ(bar->GetPosition(), 25);
    ReleaseAt(*bar, 5 + 50, 10);
    ClickAt(*bar, 0, 10);
    EXPECT_EQ(bar->GetPosition(), 0);
}

TEST_F(SliderBar, BorderNarrowsAReversedAndAnUprightBarToo) {
    bar->SetBorderStyle(4);
    bar->SetBorderWidth(5);
    bar->SetBounds(10, 10, 210, 20); // 200 by 10 inside
    bar->SetMinimum(100);
    bar->SetMaximum(0);
    bar->SetPosition(30);
    const Snapshot level(*bar);
    EXPECT_EQ(level.Count({145, 5, 205, 15}, kThumb), 600);
    EXPECT_EQ(level.Count({5, 5, 145, 15}, kTrack), 1400);
    ClickAt(*bar, 205 - 40, 10);
    EXPECT_EQ(bar->GetPosition(), 20);
    ClickAt(*bar, 209, 10); // on the border
    EXPECT_EQ(bar->GetPosition(), 0);

    bar->SetVertical(true);
    bar->SetBounds(10, 10, 20, 210);
    bar->SetPosition(30);
    const Snapshot upright(*bar);
    EXPECT_EQ(upright.Count({5, 145, 15, 205}, kThumb), 600);
    EXPECT_EQ(upright.Count({5, 5, 15, 145}, kTrack), 1400);
    ClickAt(*bar, 10, 205 - 40);
    EXPECT_EQ(bar->GetPosition(), 20);
    bar->SetMinimum(0);
    bar->SetMaximum(100);
    ClickAt(*bar, 10, 5 + 40);
    EXPECT_EQ(bar->GetPosition(), 20);
    EXPECT_EQ(Snapshot(*bar).Count({5, 5, 15, 45}, kThumb), 400);
}

TEST_F(SliderBar, ANewSizeMovesTheFill) {
    bar->SetPosition(50);
    bar->SetSize(100, 6);
    EXPECT_EQ(bar->GetFillPixels(), 50);
    ExpectFilledColumns(0, 50);
}

TEST_F(SliderBar, OnlyAChangeOfTheFillRepaints) {
    bar->SetMaximum(10000);
    Settle(*bar);
    bar->SetPosition(10); // 0.2 of a pixel
    EXPECT_TRUE(UpdateRegion(*bar).IsEmpty());
    EXPECT_EQ(changes.count, 1);
    bar->SetPosition(25); // 0.5: rounded up
    EXPECT_FALSE(UpdateRegion(*bar).IsEmpty());
    bar->Update();
    bar->SetColours(kThumb, kTrack);
    EXPECT_TRUE(UpdateRegion(*bar).IsEmpty());
}

TEST_F(SliderBar, DisabledIsGreyAndTakesNoInput) {
    bar->SetPosition(50);
    bar->SetEnabled(false);
    PressAt(*bar, 20, 3);
    DragTo(*bar, 30, 3);
    ReleaseAt(*bar, 30, 3);
    EXPECT_EQ(bar->GetPosition(), 50);
    EXPECT_FALSE(bar->IsDragging());
    const Snapshot picture(*bar);
    EXPECT_EQ(picture.Count({0, 0, 100, 6}, 0x888888), 600);
    EXPECT_EQ(picture.Count({100, 0, 200, 6}, kTrack), 600);
    bar->SetDisabledTextColor(0x112233);
    EXPECT_EQ(Snapshot(*bar).Count({0, 0, 100, 6}, 0x112233), 600);
}

TEST_F(SliderBar, BeingDisabledOrLosingTheCaptureEndsTheDrag) {
    PressAt(*bar, 20, 3);
    bar->SetEnabled(false);
    bar->SetEnabled(true);
    DragTo(*bar, 100, 3);
    EXPECT_EQ(bar->GetPosition(), 10);
    PressAt(*bar, 20, 3);
    ReleaseCapture();
    DragTo(*bar, 100, 3);
    EXPECT_EQ(bar->GetPosition(), 10);
    EXPECT_FALSE(bar->IsDragging());
}

TEST_F(SliderBar, HandlerMayDeleteIt) {
    changes.then = [&] { delete bar; };
    PressAt(*bar, 100, 3);
    EXPECT_EQ(changes.count, 1);
}

TEST_F(SliderBar, RealMouseDragsBeyondTheWindow) {
    Settle(*bar);
    real::MoveOnto(*bar);
    real::LeftDown();
    EXPECT_EQ(bar->GetPosition(), 50);
    real::MoveTo(1200, 900);
    EXPECT_EQ(bar->GetPosition(), 100);
    real::MoveTo(2, 2);
    EXPECT_EQ(bar->GetPosition(), 0);
    real::LeftUp();
    EXPECT_FALSE(bar->IsDragging());
}

} // namespace
} // namespace orva::controls
