/// The slider: geometry, drag, steps and their times, look.

#include "tests/toolkit/WidgetSupport.h"
#include "toolkit/Colors.h"
#include "toolkit/FrameDrawing.h"
#include "toolkit/TextDrawing.h"
#include "toolkit/TmySlider.h"

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

// Level: the knob is 80 % of 20 = 16 high and 40 % of 16 = 6 wide, so that it moves by 210 - 6 = 204 pixels.
constexpr Placement kLevel{10, 10, 210, 20};
constexpr int kMiddleY = 10;
// Upright: 7 % of 200 = 14 high, 230 % of 14 = 32 wide, a way of 200 - 14 = 186.
constexpr Placement kUpright{10, 40, 40, 200};

class Slider : public WidgetTest {
protected:
    Slider() : slider(new TmySlider(&Top(), SliderDirection::Horizontal, kLevel)) { Watch(*slider); }

    void Watch(TmySlider& watched) {
        changes.Watch(watched.onChange);
        drags.Watch(watched.onDragStart);
    }

    FakeTimers timers;
    TmySlider* slider;
    EventCount<int> changes;
    EventCount<> drags;
};

TEST_F(Slider, BeginsAt50Of0To100WithoutAPlaceInTheTabOrder) {
    EXPECT_EQ(slider->GetMinimum(), 0);
    EXPECT_EQ(slider->GetMaximum(), 100);
    EXPECT_EQ(slider->GetValue(), 50);
    EXPECT_FALSE(slider->IsDragging());
    EXPECT_TRUE(slider->IsDoubleBuffered());
    EXPECT_FALSE(slider->HasState(ControlState::Focusable));
    const LONG windowStyle = GetWindowLongA(slider->Window(), GWL_STYLE);
    EXPECT_EQ(static_cast<DWORD>(windowStyle), static_cast<DWORD>(WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS));
}

TEST_F(Slider, KnobFollowsTheHeight) {
    EXPECT_EQ(slider->KnobRect(), (RECT{102, 2, 108, 18}));
    slider->SetSize(210, 40); // 32 high, 12 wide: a way of 198
    EXPECT_EQ(slider->KnobRect(), (RECT{99, 4, 111, 36}));
    const TmySlider upright(&Top(), SliderDirection::Vertical, kUpright);
    EXPECT_EQ(upright.KnobRect(), (RECT{4, 93, 36, 107}));
}

TEST_F(Slider, LowestValueIsLeftOrAtTheBottom) {
    TmySlider upright(&Top(), SliderDirection::Vertical, kUpright);
    slider->SetValue(0, false);
    upright.SetValue(0, false);
    EXPECT_EQ(slider->KnobRect().left, 0);
    EXPECT_EQ(upright.KnobRect().bottom, 200);
    slider->SetValue(100, false);
    upright.SetValue(100, false);
    EXPECT_EQ(slider->KnobRect().right, 210);
    EXPECT_EQ(upright.KnobRect().top, 0);
}

TEST_F(Slider, SetValueLimitsComparesAndFiresIfAsked) {
    slider->SetValue(120, true);
    EXPECT_EQ(slider->GetValue(), 100);
    EXPECT_EQ(changes.count, 1);
    EXPECT_EQ(changes.last, 100);
    slider->SetValue(100, true);
    slider->SetValue(500, true);
    EXPECT_EQ(changes.count, 1);
    slider->SetValue(-7, false);
    EXPECT_EQ(slider->GetValue(), 0);
    EXPECT_EQ(changes.count, 1);
}

TEST_F(Slider, LimitsMoveEachOtherAndTheValueSilently) {
    slider->SetMinimum(60);
    EXPECT_EQ(slider->GetValue(), 60);
    slider->SetMinimum(200);
    EXPECT_EQ(slider->GetMaximum(), 200);
    EXPECT_EQ(slider->GetValue(), 200);
    slider->SetMaximum(-5);
    EXPECT_EQ(slider->GetMinimum(), -5);
    EXPECT_EQ(slider->GetValue(), -5);
    EXPECT_EQ(changes.count, 0);
}

TEST_F(Slider, WidestRangeOfNumbersDoesNotOverflow) {
    slider->SetMinimum(INT32_MIN);
    slider->SetMaximum(INT32_MAX);
    slider->SetStep(INT32_MAX);
    slider->SetValue(INT32_MAX, false);
    EXPECT_EQ(slider->KnobRect().right, 210);
    ClickAt(*slider, 1, kMiddleY); // a step down: to 0
    EXPECT_EQ(slider->GetValue(), 0);
    PressAt(*slider, 105, kMiddleY);
    DragTo(*slider, -100, kMiddleY);
    EXPECT_EQ(slider->GetValue(), INT32_MIN);
    ReleaseAt(*slider, 0, 0);
}

TEST_F(Slider, DragKeepsThePointerWhereItTookTheKnob) {
    PressAt(*slider, 105, kMiddleY); // 3 pixels behind the knob's edge at 102
    EXPECT_TRUE(slider->IsDragging());
    EXPECT_EQ(drags.count, 1);
    EXPECT_EQ(changes.count, 0);
    DragTo(*slider, 156, kMiddleY); // edge at 153: 153 * 100 / 204 = 75
    EXPECT_EQ(slider->GetValue(), 75);
    EXPECT_EQ(slider->KnobRect().left, 153);
    EXPECT_EQ(changes.count, 1);
    EXPECT_EQ(changes.last, 75);
    DragTo(*slider, 156, 100); // nothing new
    EXPECT_EQ(changes.count, 1);
    ReleaseAt(*slider, 156, kMiddleY);
    EXPECT_FALSE(slider->IsDragging());
    DragTo(*slider, 20, kMiddleY);
    EXPECT_EQ(slider->GetValue(), 75);
    EXPECT_EQ(drags.count, 1);
}

TEST_F(Slider, DragPastTheEndsGivesTheirValues) {
    PressAt(*slider, 105, kMiddleY);
    DragTo(*slider, -3000, kMiddleY);
    EXPECT_EQ(slider->GetValue(), 0);
    DragTo(*slider, 3000, -3000);
    EXPECT_EQ(slider->GetValue(), 100);
    ReleaseAt(*slider, 3000, 0);
    EXPECT_EQ(changes.count, 2);
}

TEST_F(Slider, UprightDragsUpwards) {
    TmySlider upright(&Top(), SliderDirection::Vertical, kUpright);
    Watch(upright);
    PressAt(upright, 20, 100);
    DragTo(upright, 20, 100 - 93);
    EXPECT_EQ(upright.GetValue(), 100);
    DragTo(upright, 20, 100 + 60); // edge at 153 of 186: (186 - 153) * 100 / 186 = 17.7
    EXPECT_EQ(upright.GetValue(), 18);
    ReleaseAt(upright, 0, 0);
}

TEST_F(Slider, PressBesideTheKnobMovesAStepTowardsIt) {
    slider->SetStep(7);
    ClickAt(*slider, 108, kMiddleY); // the first pixel behind the knob
    EXPECT_EQ(slider->GetValue(), 57);
    slider->SetValue(50, false);
    ClickAt(*slider, 101, kMiddleY);
    EXPECT_EQ(slider->GetValue(), 43);
    EXPECT_EQ(changes.count, 2);
    EXPECT_EQ(drags.count, 0);
    TmySlider upright(&Top(), SliderDirection::Vertical, kUpright);
    ClickAt(upright, 20, 10);
    EXPECT_EQ(upright.GetValue(), 51);
    ClickAt(upright, 20, 190);
    ClickAt(upright, 20, 190);
    EXPECT_EQ(upright.GetValue(), 49);
}

TEST_F(Slider, HeldPressRepeatsFromTimer1By2And3By4) {
    PressAt(*slider, 205, kMiddleY);
    ASSERT_EQ(timers.Running().size(), 1u);
    EXPECT_EQ(timers.Running()[0].id, 1u);
    EXPECT_EQ(timers.Running()[0].interval, 500u);
    EXPECT_EQ(slider->GetValue(), 51);
    timers.Advance(500); // turns into the repeat timer
    EXPECT_EQ(slider->GetValue(), 51);
    ASSERT_EQ(timers.Running().size(), 1u);
    EXPECT_EQ(timers.Running()[0].id, 2u);
    EXPECT_EQ(timers.Running()[0].interval, 50u);
    timers.Advance(149);
    EXPECT_EQ(slider->GetValue(), 53);
    ReleaseAt(*slider, 205, kMiddleY);
    EXPECT_TRUE(timers.Running().empty());

    PressAt(*slider, 2, kMiddleY);
    EXPECT_EQ(timers.Running()[0].id, 3u);
    timers.Advance(600);
    EXPECT_EQ(timers.Running()[0].id, 4u);
    EXPECT_EQ(slider->GetValue(), 50); // one at the press, at 550 and at 600
    ReleaseAt(*slider, 2, kMiddleY);
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(Slider, RepeatWaitsWhileTheKnobIsUnderThePointer) {
    slider->SetStep(10);
    PressAt(*slider, 130, kMiddleY); // 60 puts the knob at 122 to 128, 70 at 143 to 149
    timers.Advance(2000);
    EXPECT_EQ(slider->GetValue(), 70);
    DragTo(*slider, 200, kMiddleY); // 100 would be at 204
    timers.Advance(2000);
    EXPECT_EQ(slider->GetValue(), 100);
    ReleaseAt(*slider, 200, kMiddleY);
}

TEST_F(Slider, LostCaptureEndsDragAndRepeat) {
    PressAt(*slider, 205, kMiddleY);
    ReleaseCapture();
    timers.Advance(1000);
    EXPECT_EQ(slider->GetValue(), 51);
    EXPECT_TRUE(timers.Running().empty());
    const RECT knob = slider->KnobRect();
    PressAt(*slider, static_cast<int>(knob.left), kMiddleY);
    ReleaseCapture();
    DragTo(*slider, 200, kMiddleY);
    EXPECT_FALSE(slider->IsDragging());
    EXPECT_EQ(slider->GetValue(), 51);
}

TEST_F(Slider, DisabledTakesNoInput) {
    slider->SetEnabled(false);
    EventCount<MouseButton, WPARAM, int, int> presses;
    presses.Watch(slider->onMouseDown);
    PressAt(*slider, 105, kMiddleY);
    DragTo(*slider, 200, kMiddleY);
    Send(*slider, WM_TIMER, 2);
    ReleaseAt(*slider, 200, kMiddleY);
    EXPECT_EQ(slider->GetValue(), 50);
    EXPECT_EQ(presses.count + changes.count + drags.count, 0);
}

TEST_F(Slider, BeingDisabledEndsTheDragAndTheRepeat) {
    PressAt(*slider, 105, kMiddleY);
    slider->SetEnabled(false);
    slider->SetEnabled(true);
    DragTo(*slider, 200, kMiddleY);
    EXPECT_EQ(slider->GetValue(), 50);
    PressAt(*slider, 205, kMiddleY);
    slider->SetEnabled(false);
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(Slider, HandlerMayDeleteItInEachEvent) {
    for (const int x : {205, 105}) { // a step, and a drag
        auto* doomed = new TmySlider(&Top(), SliderDirection::Horizontal, {10, 60, 210, 20});
        Watch(*doomed);
        changes.then = drags.then = [&] { delete doomed; };
        PressAt(*doomed, x, kMiddleY);
    }
    EXPECT_EQ(changes.count, 1);
    EXPECT_EQ(drags.count, 1);
}

TEST_F(Slider, EmptyRangeAndNoRoomStayQuiet) {
    slider->SetMaximum(0);
    EXPECT_EQ(slider->KnobRect().left, 0);
    PressAt(*slider, 1, kMiddleY);
    DragTo(*slider, 100, kMiddleY);
    ReleaseAt(*slider, 100, kMiddleY);
    EXPECT_EQ(slider->GetValue(), 0);
    slider->SetMaximum(100);
    slider->SetSize(2, 2);
    PressAt(*slider, 0, 0);
    DragTo(*slider, 100, 0);
    ReleaseAt(*slider, 100, 0);
    slider->Update();
    EXPECT_EQ(slider->GetValue(), 0);
}

TEST_F(Slider, ShownValueReservesTheRoomOfAsManyEights) {
    slider->SetValueShown(true);
    const HDC screen = ::GetDC(nullptr);
    const HFONT font = slider->EffectiveFont();
    const LONG two = MeasureText(screen, font, "88").cx;
    const LONG three = MeasureText(screen, font, "888").cx;
    ::ReleaseDC(nullptr, screen);
    constexpr LONG kGap = 4;
    constexpr LONG kHalfKnob = 3;
    EXPECT_EQ(slider->TrackRect().right, 210 - two - kGap - kHalfKnob);
    slider->SetValue(11, false); // as wide as 88
    EXPECT_EQ(slider->TrackRect().right, 210 - two - kGap - kHalfKnob);
    slider->SetValue(100, false);
    EXPECT_EQ(slider->KnobRect().right, 210 - three - kGap);

    const Snapshot picture(*slider);
    const RECT number{210 - three, 0, 210, 20};
    EXPECT_GT(picture.Count(number, 0xFFFFFF), 10);
    EXPECT_EQ(picture.CountOther({210 - three - kGap, 0, 210 - three, 20}, 0x636363), 0);
}

TEST_F(Slider, WritesTheValueAtTheEndOfTheTrack) {
    TmySlider upright(&Top(), SliderDirection::Vertical, kUpright);
    for (TmySlider* each : {slider, &upright}) {
        each->SetValueShown(true);
        each->SetValue(28, false);
        const SIZE size = MeasureText(each->EffectiveFont(), "88");
        const int width = each == slider ? size.cx : 40;
        const int height = each == slider ? 20 : size.cy;
        const int across = each->GetClientWidth() - width;
        const int down = each->GetClientHeight() - height;
        const Snapshot expected = Snapshot::Drawn(width, height, 0x636363, [&](HDC dc) {
            DrawAlignedText(dc, "28", {0, 0, width, height}, 68,
                            {each->EffectiveFont(), 0xFFFFFF, 0x636363, 0});
        });
        const RECT room{across, down, across + width, down + height};
        EXPECT_EQ(Snapshot(*each).Differences(room, expected), 0) << (each == slider ? "level" : "upright");
    }
}

TEST_F(Slider, ValueIsGreyWhenDisabled) {
    slider->SetValueShown(true);
    const RECT number{210 - MeasureText(slider->EffectiveFont(), "88").cx, 0, 210, 20};
    const int ink = Snapshot(*slider).Count(number, 0xFFFFFF);
    EXPECT_GT(ink, 5);
    slider->SetEnabled(false);
    const Snapshot grey(*slider);
    EXPECT_EQ(grey.Count(number, 0xFFFFFF), 0);
    EXPECT_EQ(grey.Count(number, 0x888888), ink);
}

TEST_F(Slider, TellsOfTheDragOnceItHasBegun) {
    drags.then = [&] { EXPECT_TRUE(slider->IsDragging()); };
    PressAt(*slider, 105, kMiddleY);
    EXPECT_EQ(drags.count, 1);
    ReleaseAt(*slider, 105, kMiddleY);
}

TEST_F(Slider, UprightOneReservesTheRoomBelow) {
    TmySlider upright(&Top(), SliderDirection::Vertical, kUpright);
    constexpr int kGap = 4;
    constexpr int kHalfKnob = 7;
    EXPECT_EQ(upright.TrackRect(), (RECT{18, kHalfKnob, 22, 200 - kHalfKnob}));
    upright.SetValueShown(true);
    const LONG room = MeasureText(upright.EffectiveFont(), "88").cy + kGap;
    EXPECT_EQ(upright.TrackRect(), (RECT{18, kHalfKnob, 22, 200 - room - kHalfKnob}));
    upright.SetValue(0, false);
    EXPECT_EQ(upright.KnobRect().bottom, 200 - room);
    const Snapshot picture(upright);
    EXPECT_EQ(picture.CountOther({0, 200 - room, 40, 200 - room + kGap}, 0x636363), 0);
}

TEST_F(Slider, DrawsAnUprightTrackKnobAndMark) {
    TmySlider upright(&Top(), SliderDirection::Vertical, kUpright);
    upright.SetStyleValue(StyleValue::Brightness, 130, true);
    constexpr RECT kKnob{4, 93, 36, 107};
    const Snapshot expected = Snapshot::Drawn(40, 200, 0x636363, [&](HDC dc) {
        constexpr RECT kTrack{18, 7, 22, 193};
        FillSolid(dc, kTrack, kBlack);
        DrawFrame(dc, kTrack, kFrameSunken, 1, 0x636363, 130);
        FillSolid(dc, kKnob, 0x636363);
        DrawFrame(dc, kKnob, kFrameRaised, 2, 0x636363, 130);
        FillSolid(dc, {6, 99, 34, 101}, kWhite); // across the middle
    });
    EXPECT_EQ(Snapshot(upright).Differences({0, 0, 40, 200}, expected), 0);
}

TEST_F(Slider, DrawsTrackKnobAndMark) {
    const Snapshot picture(*slider);
    // The track is 4 high, from the knob's middle at one end to that at the other: columns 3 to 206.
    EXPECT_EQ(picture.BoxOfOther({0, 0, 100, 20}, 0x636363), (RECT{3, 8, 100, 12}));
    EXPECT_EQ(picture.BoxOfOther({110, 0, 210, 20}, 0x636363), (RECT{110, 8, 207, 12}));
    EXPECT_EQ(picture.Count({4, 9, 100, 11}, 0), 192); // the control background inside
    // The knob of 6 by 16 has a mark of the two columns in its middle, inside a border of 2.
    EXPECT_EQ(picture.Count({104, 4, 106, 16}, 0xFFFFFF), 24);
    EXPECT_GT(picture.At(102, 2), picture.At(107, 17)); // raised: light above, dark below
    slider->SetEnabled(false);
    const Snapshot grey(*slider);
    EXPECT_EQ(grey.Count({104, 4, 106, 16}, 0x888888), 24);
}

TEST_F(Slider, KnobLooksSunkenWhileDragged) {
    PressAt(*slider, 105, kMiddleY);
    const Snapshot picture(*slider);
    EXPECT_LT(picture.At(102, 2), picture.At(107, 17));
    ReleaseAt(*slider, 105, kMiddleY);
    const Snapshot released(*slider);
    EXPECT_GT(released.At(102, 2), released.At(107, 17));
}

TEST_F(Slider, RealMouseDragsBeyondTheWindow) {
    Settle(*slider);
    RECT place{};
    GetWindowRect(slider->Window(), &place);
    real::MoveTo(static_cast<int>(place.left) + 105, static_cast<int>(place.top) + kMiddleY);
    real::LeftDown();
    EXPECT_TRUE(slider->IsDragging());
    real::MoveTo(1000, 800); // beyond the top window, too
    EXPECT_EQ(slider->GetValue(), 100);
    real::MoveTo(5, 5);
    EXPECT_EQ(slider->GetValue(), 0);
    real::LeftUp();
    EXPECT_FALSE(slider->IsDragging());
    EXPECT_NE(GetCapture(), slider->Window());
}

} // namespace
} // namespace orva::toolkit
