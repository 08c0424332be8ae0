/// The widgets without a window: panel, label, buttons; and the timers that they run on.

#include "tests/toolkit/WidgetSupport.h"
#include "toolkit/ControlTimer.h"
#include "toolkit/FrameDrawing.h"
#include "toolkit/TmyPanel.h"
#include "toolkit/Tmy_Btn.h"
#include "toolkit/Tmy_Btn2.h"
#include "toolkit/Tmy_Label.h"
#include "toolkit/Tmy_Panel.h"

#include <memory>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

constexpr COLORREF kSurface = RGB(80, 90, 100);

/// Widgets stand in a component of their own, so that its style is free to change.
class LightWidget : public WidgetTest {
protected:
    LightWidget() : host(new TmyComponent(&Top(), "", kWidgetStyle, 0, {20, 20, 200, 100})) {
        host->SetStyleValue(StyleValue::WindowColor, kSurface, true);
    }
    [[nodiscard]] Snapshot Picture(const TmyControl& control) const { return {*host, control.Bounds()}; }

    TmyComponent* host;
};

// --- the button --------------------------------------------------------------------------------------------

class LightButton : public LightWidget {
protected:
    LightButton() : button(new Tmy_Btn2(host, kPlaceOfButton, "Text")) {
        clicks.Watch(button->onClick);
        downs.Watch(button->onDown);
        presses.Watch(button->onPress);
    }
    static constexpr Placement kPlaceOfButton{30, 20, 60, 24};
    // In the host's coordinates.
    static constexpr int kX = 35;
    static constexpr int kY = 25;

    FakeTimers timers;
    Tmy_Btn2* button;
    EventCount<> clicks;
    EventCount<bool> downs;
    EventCount<> presses;
};

TEST_F(LightButton, HasNoWindowAndCostsNoThunk) {
    const std::int32_t thunks = Application().MaxThunkIndex();
    std::vector<std::unique_ptr<Tmy_Btn2>> many;
    for (int i = 0; i < 200; ++i) {
        many.push_back(std::make_unique<Tmy_Btn2>(host));
        EXPECT_EQ(many.back()->Window(), nullptr);
    }
    EXPECT_EQ(Application().MaxThunkIndex(), thunks);
}

TEST_F(LightButton, PressAndReleaseInsideIsOneClick) {
    PressAt(*host, kX, kY);
    EXPECT_TRUE(button->IsPressed());
    EXPECT_EQ(presses.count, 1);
    EXPECT_EQ(clicks.count, 0);
    ReleaseAt(*host, kX, kY);
    EXPECT_FALSE(button->IsPressed());
    EXPECT_EQ(clicks.count, 1);
    EXPECT_EQ(clicks.sender, button);
    EXPECT_FALSE(button->IsDown()) << "there is no latch";
    EXPECT_EQ(downs.count, 0);
}

TEST_F(LightButton, DraggedOffAndBack) {
    PressAt(*host, kX, kY);
    DragTo(*host, 90, 25); // its right edge
    EXPECT_FALSE(button->IsPressed());
    DragTo(*host, 89, 43);
    EXPECT_TRUE(button->IsPressed());
    DragTo(*host, 29, 25);
    EXPECT_FALSE(button->IsPressed());
    ReleaseAt(*host, 29, 25);
    EXPECT_EQ(clicks.count, 0);
    EXPECT_EQ(presses.count, 1);
}

TEST_F(LightButton, AMoveWithoutAPressHereChangesNothing) {
    PressAt(*host, 150, 80); // on the host
    button->OnMouseMove(MK_LBUTTON, 5, 5);
    EXPECT_FALSE(button->IsPressed());
    ReleaseAt(*host, 150, 80);
}

TEST_F(LightButton, RepeatsFirstAfter500ThenEvery50Milliseconds) {
    std::vector<std::uint32_t> times;
    presses.then = [&] { times.push_back(timers.Now()); };
    PressAt(*host, kX, kY);
    timers.Advance(599);
    ReleaseAt(*host, kX, kY);
    timers.Advance(1000);
    EXPECT_EQ(times, (std::vector<std::uint32_t>{0, 500, 550}));
    EXPECT_EQ(clicks.count, 1);
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(LightButton, TwoRepeatIndependently) {
    Tmy_Btn2 other(host, {100, 20, 20, 20});
    EventCount<> otherPresses;
    otherPresses.Watch(other.onPress);
    PressAt(*host, kX, kY);
    timers.Advance(510);
    EXPECT_EQ(presses.count, 2);
    EXPECT_EQ(otherPresses.count, 0);
    ReleaseAt(*host, kX, kY);
}

TEST_F(LightButton, PlainOneDoesNotRepeat) {
    auto* plain = new Tmy_Btn(host, {100, 20, 20, 20});
    EventCount<> plainPresses;
    plainPresses.Watch(plain->onPress);
    PressAt(*host, 105, 25);
    EXPECT_TRUE(timers.Running().empty());
    EXPECT_EQ(plainPresses.count, 1);
    ReleaseAt(*host, 105, 25);
}

TEST_F(LightButton, SetDownTellsAndLooksSunken) {
    button->SetDown(true);
    button->SetDown(true);
    EXPECT_EQ(downs.count, 1);
    EXPECT_TRUE(button->LooksSunken());
    button->SetDown(false);
    EXPECT_EQ(downs.count, 2);
    EXPECT_EQ(downs.last, 0);
    EXPECT_EQ(clicks.count, 0);
}

TEST_F(LightButton, TakesKeysOnceItCanHaveTheFocus) {
    PressAt(*host, kX, kY);
    ReleaseAt(*host, kX, kY);
    EXPECT_FALSE(button->HasFocus());
    button->SetFocusable(true);
    ClickAt(*host, kX, kY);
    EXPECT_TRUE(button->HasFocus());
    clicks.count = 0;
    presses.count = 0;
    KeyDown(*host, VK_RETURN);
    EXPECT_EQ(clicks.count, 1);
    KeyDown(*host, VK_SPACE);
    EXPECT_TRUE(button->IsPressed());
    EXPECT_EQ(presses.count, 1);
    KeyUp(*host, VK_SPACE);
    EXPECT_EQ(clicks.count, 2);
    EXPECT_FALSE(button->IsPressed());
}

TEST_F(LightButton, DisabledTakesNoInput) {
    button->SetEnabled(false);
    ClickAt(*host, kX, kY);
    button->OnTimer(Tmy_Btn2::kDelayTimer);
    button->OnTimer(Tmy_Btn2::kRepeatTimer);
    WPARAM key = VK_RETURN;
    button->OnKeyDown(key, 0);
    key = VK_SPACE;
    button->OnKeyDown(key, 0);
    button->OnKeyUp(key, 0);
    EXPECT_EQ(clicks.count + presses.count + downs.count, 0);
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(LightButton, DisabledOrHiddenWhileHeldItLetsGo) {
    PressAt(*host, kX, kY);
    host->SetEnabled(false);
    EXPECT_FALSE(button->IsPressed());
    EXPECT_TRUE(timers.Running().empty());
    host->SetEnabled(true);
    PressAt(*host, kX, kY);
    button->SetVisible(false);
    EXPECT_FALSE(button->IsPressed());
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(LightButton, DeletedWhileHeldItLeavesNoTimer) {
    PressAt(*host, kX, kY);
    ASSERT_EQ(timers.Running().size(), 1u);
    const FakeTimers::Timer timer = timers.Running()[0];
    delete button;
    EXPECT_TRUE(timers.Running().empty());
    timer.procedure(timer.window, WM_TIMER, timer.id, 0); // one that was on its way
    EXPECT_EQ(presses.count, 1);
}

TEST_F(LightButton, MayBeDeletedByItsHandlers) {
    const auto end = [this] {
        delete button;
        button = nullptr;
    };
    presses.then = end;
    PressAt(*host, kX, kY);
    EXPECT_EQ(button, nullptr);
    button = new Tmy_Btn2(host, kPlaceOfButton);
    clicks.Watch(button->onClick);
    clicks.then = end;
    ReleaseAt(*host, kX, kY);
    ClickAt(*host, kX, kY);
    EXPECT_EQ(button, nullptr);
    button = new Tmy_Btn2(host, kPlaceOfButton);
    presses.Watch(button->onPress);
    presses.then = nullptr;
    PressAt(*host, kX, kY);
    presses.then = end;
    timers.Advance(500);
    EXPECT_EQ(button, nullptr);
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(LightButton, SharesItsParentsStyleButNotItsBorder) {
    EXPECT_TRUE(button->SharesStyleWith(*host));
    host->SetBorderStyle(kFrameNone);
    host->SetBorderWidth(2);
    RECT area{};
    button->GetClientArea(&area);
    EXPECT_EQ(area, (RECT{2, 2, 58, 22}));
    host->SetBorderWidth(9); // more than the button has room for
    button->GetClientArea(&area);
    EXPECT_EQ(area, (RECT{9, 9, 51, 15}));
    host->SetBorderWidth(0);
    button->GetClientArea(&area);
    EXPECT_EQ(area, (RECT{1, 1, 59, 23})) << "a button has an edge";
    host->SetBorderWidth(3);
    Tmy_Btn tiny(host, {0, 0, 10, 10});
    tiny.GetClientArea(&area);
    EXPECT_EQ(area, (RECT{2, 2, 8, 8}));
    tiny.SetSize(3, 3);
    tiny.GetClientArea(&area);
    EXPECT_EQ(area, (RECT{1, 1, 2, 2}));
}

int Sum(COLORREF color) {
    return GetRValue(color) + GetGValue(color) + GetBValue(color);
}

TEST_F(LightButton, LooksRaisedAndSunkenWhenPressedOrDown) {
    const auto topMinusBottom = [this] {
        const Snapshot picture = Picture(*button);
        return Sum(picture.At(30, 0)) - Sum(picture.At(30, 23));
    };
    EXPECT_GT(topMinusBottom(), 0);
    PressAt(*host, kX, kY);
    EXPECT_LT(topMinusBottom(), 0);
    DragTo(*host, 0, 0);
    EXPECT_GT(topMinusBottom(), 0);
    ReleaseAt(*host, 0, 0);
    button->SetDown(true);
    EXPECT_LT(topMinusBottom(), 0);
}

TEST_F(LightButton, DrawsTextOrArrowInItsColoursAndMovesThem) {
    constexpr RECT kInside{3, 3, 57, 21};
    for (const bool arrow : {false, true}) {
        button->SetText(arrow ? "" : "Text");
        button->SetArrow(arrow ? ArrowGlyph::SolidDown : ArrowGlyph::None);
        const Snapshot up = Picture(*button);
        EXPECT_GT(up.Count(kInside, host->GetStyleValue(StyleValue::TextColor)), 10);
        RECT box = up.BoxOfOther(kInside, kSurface);
        button->SetDown(true);
        OffsetRect(&box, 1, 1);
        EXPECT_EQ(Picture(*button).BoxOfOther(kInside, kSurface), box);
        button->SetDown(false);
        button->SetEnabled(false);
        EXPECT_GT(Picture(*button).Count(kInside, host->GetStyleValue(StyleValue::DisabledTextColor)), 10);
        EXPECT_EQ(Picture(*button).Count(kInside, kSurface), 0) << "the face is dimmed";
        button->SetEnabled(true);
    }
}

TEST_F(LightButton, FrameAndTextAreAsTheStyleSays) {
    constexpr RECT kWhole{0, 0, 60, 24};
    for (const std::uint32_t brightness : {100u, 150u}) {
        for (const std::int32_t shadow : {0, -60, 127}) {
            host->SetStyleValue(StyleValue::Brightness, brightness);
            host->SetStyleValue(StyleValue::Shadow, static_cast<std::uint32_t>(shadow));
            const Snapshot expected = Snapshot::Drawn(60, 24, kSurface, [&](HDC dc) {
                DrawAlignedText(dc, "Text", {3, 3, 57, 21}, 68,
                                {button->EffectiveFont(), 0xFFFFFF, kSurface, shadow});
                DrawFrame(dc, kWhole, kFrameRaised, 3, kSurface, static_cast<int>(brightness));
            });
            EXPECT_EQ(Picture(*button).Differences(kWhole, expected), 0) << brightness << ", " << shadow;
        }
    }
}

TEST_F(LightButton, ArrowFollowsTheSizeAndStandsInTheMiddle) {
    for (int side = 10; side <= 24; ++side) {
        auto square = std::make_unique<Tmy_Btn>(host, Placement{100, 20, side, side});
        square->SetArrow(ArrowGlyph::Square);
        const Snapshot picture = Picture(*square);
        RECT area{};
        square->GetClientArea(&area);
        const RECT box = picture.BoxOfOther(area, kSurface);
        EXPECT_EQ(box.left - area.left, area.right - box.right) << side;
        EXPECT_EQ(box.top - area.top, area.bottom - box.bottom) << side;
        EXPECT_GE(box.right - box.left, 4) << side;
    }
}

TEST_F(LightButton, SettersCompareFirst) {
    host->Update();
    Validate(*host);
    button->SetText("Text");
    button->SetTextAlignment(68);
    button->SetArrow(ArrowGlyph::None);
    EXPECT_TRUE(UpdateRegion(*host).IsEmpty());
    button->SetTextAlignment(4);
    EXPECT_TRUE(UpdateRegion(*host).Is({{30, 20, 90, 44}}));
}

TEST_F(LightButton, ShowsTheFocus) {
    constexpr RECT kInside{3, 3, 57, 21};
    button->SetText("");
    button->SetFocusable(true);
    button->SetFocus();
    EXPECT_EQ(Picture(*button).BoxOfOther(kInside, kSurface), kInside);
    Top().SetFocus();
    EXPECT_EQ(Picture(*button).CountOther(kInside, kSurface), 0);
}

TEST_F(LightButton, PaintsWithinItsBoundsOnly) {
    button->SetText("A text\nof many\nlines\nthat reach\nfar beyond");
    Tmy_Btn narrow(host, {100, 20, 4, 4}, "W");
    const Snapshot picture(*host);
    EXPECT_EQ(picture.CountOther({0, 0, 200, 20}, kSurface), 0);
    EXPECT_EQ(picture.CountOther({0, 44, 200, 100}, kSurface), 0);
    EXPECT_EQ(picture.CountOther({104, 20, 200, 44}, kSurface), 0);
}

// --- the timer ---------------------------------------------------------------------------------------------

class TimedControl : public TmyControl {
public:
    using TmyControl::TmyControl;
    void OnTimer(UINT_PTR id) override {
        ids.push_back(id);
        if (throws) {
            throw std::runtime_error("thrown in a test");
        }
    }
    ControlTimer timer{this, 42};
    std::vector<UINT_PTR> ids;
    bool throws = false;
};

using TimerOfControl = LightWidget;

TEST_F(TimerOfControl, CallsItsControlWithItsIdUntilItIsStopped) {
    const FakeTimers timers;
    auto& clock = const_cast<FakeTimers&>(timers);
    TimedControl control(host);
    EXPECT_FALSE(control.timer.IsRunning());
    control.timer.Start(100);
    EXPECT_TRUE(control.timer.IsRunning());
    clock.Advance(250);
    EXPECT_EQ(control.ids, (std::vector<UINT_PTR>{42, 42}));
    control.timer.Start(100); // anew
    clock.Advance(99);
    EXPECT_EQ(control.ids.size(), 2u);
    EXPECT_EQ(clock.Running().size(), 1u);
    control.timer.Stop();
    control.timer.Stop();
    clock.Advance(500);
    EXPECT_EQ(control.ids.size(), 2u);
    EXPECT_FALSE(control.timer.IsRunning());
}

TEST_F(TimerOfControl, RunsOnTheRealClockToo) {
    TimedControl control(host);
    control.timer.Start(10);
    EXPECT_TRUE(PumpUntil([&] { return control.ids.size() >= 3; }));
    control.timer.Stop();
    EXPECT_EQ(control.ids[0], 42u);
}

TEST_F(TimerOfControl, NeedsAWindow) {
    FakeTimers timers;
    TimedControl lonely(nullptr);
    lonely.timer.Start(10);
    EXPECT_FALSE(lonely.timer.IsRunning());
    EXPECT_TRUE(timers.Running().empty());
}

TEST_F(TimerOfControl, KeepsExceptionsFromThePlatform) {
    FakeTimers timers;
    TimedControl control(host);
    control.throws = true;
    control.timer.Start(10);
    EXPECT_NO_THROW(timers.Advance(10));
    EXPECT_EQ(control.ids.size(), 1u);
}

TEST_F(TimerOfControl, GoesWithItsControl) {
    FakeTimers timers;
    auto control = std::make_unique<TimedControl>(host);
    TimedControl other(host);
    control->timer.Start(10);
    other.timer.Start(10);
    control.reset();
    EXPECT_EQ(timers.Running().size(), 1u);
    timers.Advance(10);
    EXPECT_EQ(other.ids.size(), 1u);
}

// --- panel and label ---------------------------------------------------------------------------------------

using LightPanel = LightWidget;

TEST_F(LightPanel, FramesItsAreaInAStyleOfItsOwn) {
    Tmy_Panel panel(host, {30, 20, 60, 40});
    EXPECT_EQ(panel.Window(), nullptr);
    EXPECT_FALSE(panel.SharesStyleWith(*host));
    EXPECT_EQ(panel.GetStyleValue(StyleValue::BorderStyle), 4u);
    EXPECT_EQ(panel.GetStyleValue(StyleValue::BorderWidth), 3u);
    const Snapshot picture = Picture(panel);
    EXPECT_EQ(picture.CountOther({3, 3, 57, 37}, kSurface), 0);
    EXPECT_EQ(picture.Count({0, 0, 60, 3}, kSurface), 0);
    EXPECT_GT(Sum(picture.At(30, 0)), Sum(kSurface));
    EXPECT_LT(Sum(picture.At(30, 39)), Sum(kSurface));
    EXPECT_EQ(Snapshot(*host).CountOther({0, 0, 200, 20}, kSurface), 0);
    RECT area{};
    panel.GetClientArea(&area);
    EXPECT_EQ(area, (RECT{3, 3, 57, 37}));
}

TEST_F(LightPanel, FrameIsAsTheStyleSays) {
    Tmy_Panel panel(host, {30, 20, 60, 40});
    constexpr RECT kWhole{0, 0, 60, 40};
    const struct {
        std::uint32_t style;
        std::uint32_t width;
        std::uint32_t brightness;
    } looks[] = {{4, 3, 100}, {4, 5, 100}, {4, 3, 150}, {8, 4, 70}, {0, 3, 100}, {1, 3, 120}};
    for (const auto& look : looks) {
        panel.SetStyleValue(StyleValue::BorderStyle, look.style);
        panel.SetStyleValue(StyleValue::BorderWidth, look.width);
        panel.SetStyleValue(StyleValue::Brightness, look.brightness);
        const Snapshot expected = Snapshot::Drawn(60, 40, kSurface, [&](HDC dc) {
            DrawFrame(dc, kWhole, look.style, static_cast<int>(look.width), kSurface,
                      static_cast<int>(look.brightness));
        });
        EXPECT_EQ(Picture(panel).Differences(kWhole, expected), 0) << "style " << look.style;
    }
}

TEST_F(LightPanel, FrameFollowsTheSizeAndChildrenStandInside) {
    Tmy_Panel panel(host, {30, 20, 60, 40});
    host->Update();
    panel.SetSize(80, 50);
    Tmy_Label child(&panel, {3, 3, 20, 20});
    const Snapshot picture = Picture(panel);
    EXPECT_EQ(picture.CountOther({3, 3, 77, 47}, kSurface), 0) << "nothing is left of the old frame";
    EXPECT_LT(Sum(picture.At(79, 25)), Sum(kSurface));
}

class LightLabel : public LightWidget {
protected:
    LightLabel() : label(new Tmy_Label(host, {30, 20, 80, 30}, "Text")) {}
    SIZE Measure(const char* text) const {
        const HDC dc = ::GetDC(nullptr);
        const SIZE size = MeasureText(dc, label->EffectiveFont(), text);
        ::ReleaseDC(nullptr, dc);
        return size;
    }
    Tmy_Label* label;
};

TEST_F(LightLabel, DrawsItsTextLeftAndInTheMiddle) {
    EXPECT_EQ(label->GetTextAlignment(), 65u);
    EXPECT_TRUE(label->SharesStyleWith(*host));
    host->SetBorderStyle(kFrameRaised); // the host's, not the label's
    const Snapshot picture = Picture(*label);
    const RECT box = picture.BoxOfOther(picture.Whole(), kSurface);
    EXPECT_LE(box.left, 2);
    EXPECT_GE(box.top, (30 - Measure("Text").cy) / 2);
    EXPECT_GT(picture.Count(picture.Whole(), host->GetStyleValue(StyleValue::TextColor)), 10);
    label->SetTextAlignment(66);
    RECT expected = box;
    OffsetRect(&expected, 80 - 2 * kGlyphOverhang - Measure("Text").cx, 0);
    EXPECT_EQ(Picture(*label).BoxOfOther(picture.Whole(), kSurface), expected);
    label->SetEnabled(false);
    EXPECT_GT(Picture(*label).Count(picture.Whole(), host->GetStyleValue(StyleValue::DisabledTextColor)), 10);
}

TEST_F(LightLabel, TextHasTheShadowOfTheStyle) {
    constexpr RECT kWhole{0, 0, 80, 30};
    for (const std::int32_t shadow : {0, -60, 127}) {
        host->SetStyleValue(StyleValue::Shadow, static_cast<std::uint32_t>(shadow));
        const Snapshot expected = Snapshot::Drawn(80, 30, kSurface, [&](HDC dc) {
            DrawAlignedText(dc, "Text", {kGlyphOverhang, 0, 80 - kGlyphOverhang, 30}, 65,
                            {label->EffectiveFont(), 0xFFFFFF, kSurface, shadow});
        });
        EXPECT_EQ(Picture(*label).Differences(kWhole, expected), 0) << shadow;
    }
}

TEST_F(LightLabel, FitsItselfToTheTextWhenAsked) {
    label->SetText("Another text");
    EXPECT_EQ(label->Bounds(), (RECT{30, 20, 110, 50}));
    label->SetText("Another text", true);
    const SIZE size = Measure("Another text");
    EXPECT_EQ(label->Bounds(), (RECT{30, 20, 30 + size.cx + 2 * kGlyphOverhang, 20 + size.cy}));
    EXPECT_STREQ(label->GetText().Text(), "Another text");
}

TEST_F(LightLabel, ComparesFirstAndRepaintsItselfAlone) {
    host->Update();
    Validate(*host);
    label->SetText("Text");
    label->SetTextAlignment(65);
    EXPECT_TRUE(UpdateRegion(*host).IsEmpty());
    label->SetText("Other");
    EXPECT_TRUE(UpdateRegion(*host).Is({{30, 20, 110, 50}}));
}

TEST_F(LightLabel, AsAnOverlayItDrawsTheTextAlone) {
    label->SetOverlay(true);
    struct Painter {
        void Paint(TmyControl* /*sender*/, HDC dc) {
            const RECT area{0, 0, 200, 100};
            FillRect(dc, &area, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
        }
    } painter;
    host->onPaint.Bind<&Painter::Paint>(&painter);
    host->SetTextColor(RGB(0, 0, 0));
    const Snapshot picture = Picture(*label);
    EXPECT_EQ(picture.Count(picture.Whole(), kSurface), 0);
    EXPECT_GT(picture.Count(picture.Whole(), RGB(0, 0, 0)), 10);
    EXPECT_GT(picture.Count(picture.Whole(), RGB(255, 255, 255)), 1000);
}

} // namespace
} // namespace orva::toolkit
