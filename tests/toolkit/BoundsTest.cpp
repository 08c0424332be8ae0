#include "tests/toolkit/WindowSupport.h"

#include <algorithm>
#include <functional>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using Entries = EventLog::Entries;

class Bounds : public ::testing::Test {
protected:
    Bounds() {
        light = new RecordingControl(log, "light", &top, Placement{20, 20, 40, 30});
        sub = new RecordingComponent(log, "sub", &top, "", kChild, DWORD{0}, Placement{100, 10, 60, 80});
        Settle(top);
        Settle(*sub);
        ValidateAll();
        log.Take();
    }
    void ValidateAll() {
        Validate(top);
        Validate(*sub);
    }

    EventLog log{{"OnMove", "OnResize", "Realign", "OnConstrainBounds"}};
    RecordingComponent top{log, "top", nullptr, "", kPopup, DWORD{0}, kPlace};
    RecordingControl* light;
    RecordingComponent* sub;
};

TEST_F(Bounds, AGrowingControlRepaintsWhatIsNew) {
    light->SetBounds(20, 20, 50, 40);
    EXPECT_TRUE(UpdateRegion(top).Is({{60, 20, 70, 60}, {20, 50, 70, 60}})) << UpdateRegion(top);
    EXPECT_EQ(log.Take(),
              (Entries{"light.OnConstrainBounds(20,20,50,40)", "light.OnResize()", "light.Realign()"}));
}

TEST_F(Bounds, AShrinkingControlRepaintsWhatItLeaves) {
    light->SetSize(30, 25);
    EXPECT_TRUE(UpdateRegion(top).Is({{50, 20, 60, 50}, {20, 45, 60, 50}})) << UpdateRegion(top);
}

TEST_F(Bounds, WiderAndLowerRepaintsBothParts) {
    light->SetSize(50, 20);
    EXPECT_TRUE(UpdateRegion(top).Is({{60, 20, 70, 40}, {20, 40, 60, 50}})) << UpdateRegion(top);
}

TEST_F(Bounds, AMoveRepaintsTheOldAndTheNewPlace) {
    light->SetPosition(30, 25);
    EXPECT_TRUE(UpdateRegion(top).Is({{20, 20, 60, 50}, {30, 25, 70, 55}})) << UpdateRegion(top);
    EXPECT_EQ(log.Take(), (Entries{"light.OnConstrainBounds(30,25,40,30)", "light.OnMove()"}));
    ValidateAll();
    light->SetBounds(10, 60, 20, 20);
    EXPECT_TRUE(UpdateRegion(top).Is({{30, 25, 70, 55}, {10, 60, 30, 80}})) << UpdateRegion(top);
    EXPECT_EQ(log.Take(), (Entries{"light.OnConstrainBounds(10,60,20,20)", "light.OnMove()",
                                   "light.OnResize()", "light.Realign()"}));
}

TEST_F(Bounds, NothingChangedDoesNothing) {
    light->SetBounds(20, 20, 40, 30);
    EXPECT_TRUE(UpdateRegion(top).IsEmpty());
    EXPECT_EQ(log.Take(), (Entries{"light.OnConstrainBounds(20,20,40,30)"}));
}

TEST_F(Bounds, NegativeSizesBecomeZero) {
    light->SetBounds(20, 20, -5, -1);
    EXPECT_EQ(light->Bounds(), (RECT{20, 20, 20, 20}));
    EXPECT_EQ(log.Take()[0], "light.OnConstrainBounds(20,20,0,0)");
}

TEST_F(Bounds, ConstraintsOfAWindowlessControlHold) {
    light->constrain = [](int* x, int* y, int* width, int* height) {
        *x = 7;
        *y += 1;
        *width = *width > 45 ? 45 : *width;
        *height = 12;
    };
    light->SetBounds(20, 20, 90, 90);
    EXPECT_EQ(light->Bounds(), (RECT{7, 21, 52, 33}));
}

TEST_F(Bounds, ConstraintsOfAComponentHold) {
    sub->constrain = [](int* x, int* y, int* width, int* height) {
        *x = 7;
        *y += 1;
        *width = *width > 45 ? 45 : *width;
        *height = 12;
    };
    sub->SetBounds(20, 20, 90, 90);
    EXPECT_EQ(sub->Bounds(), (RECT{7, 21, 52, 33}));
    RECT outer;
    GetWindowRect(sub->Window(), &outer);
    MapWindowPoints(nullptr, top.Window(), reinterpret_cast<POINT*>(&outer), 2);
    EXPECT_EQ(outer, sub->Bounds());
}

TEST_F(Bounds, AHiddenControlRepaintsNothing) {
    light->SetVisible(false);
    ValidateAll();
    light->SetBounds(50, 60, 20, 20);
    EXPECT_TRUE(UpdateRegion(top).IsEmpty());
}

TEST_F(Bounds, OfANestedControlAreInItsParentsCoordinates) {
    TmyControl inner(light, {5, 6, 10, 10});
    ValidateAll();
    inner.SetSize(15, 10);
    EXPECT_TRUE(UpdateRegion(top).Is({{35, 26, 40, 36}})) << UpdateRegion(top);
    POINT point;
    inner.GetPosition(&point, false);
    EXPECT_TRUE(point.x == 5 && point.y == 6);
    inner.GetPosition(&point, true);
    EXPECT_EQ(point.x, kPlace.x + 20 + 5);
    EXPECT_EQ(point.y, kPlace.y + 20 + 6);
    EXPECT_EQ(inner.GetClientWidth(), 15);
    EXPECT_EQ(inner.GetClientHeight(), 10);
}

TEST_F(Bounds, AnAlignedControlRealignsItsParent) {
    light->SetAlignment(Alignment::Left);
    log.Take();
    light->SetSize(25, 30);
    const Entries entries = log.Take();
    EXPECT_NE(std::find(entries.begin(), entries.end(), "top.Realign()"), entries.end());
    EXPECT_EQ(light->Bounds(), (RECT{0, 0, 25, 150}));
}

TEST_F(Bounds, AComponentKeepsASizeOfMinusOne) {
    sub->SetSize(-1, 70);
    EXPECT_EQ(sub->Bounds(), (RECT{100, 10, 160, 80}));
    sub->SetSize(50, -1);
    EXPECT_EQ(sub->Bounds(), (RECT{100, 10, 150, 80}));
}

TEST_F(Bounds, AComponentMovesToMinusOne) {
    sub->SetPosition(-1, -1);
    EXPECT_EQ(sub->Bounds(), (RECT{-1, -1, 59, 79}));
}

TEST_F(Bounds, AComponentsPositionOnTheScreenIsItsWindows) {
    POINT point;
    sub->GetPosition(&point, false);
    EXPECT_TRUE(point.x == 100 && point.y == 10);
    sub->GetPosition(&point, true);
    EXPECT_EQ(point.x, kPlace.x + 100);
    EXPECT_EQ(point.y, kPlace.y + 10);
}

TEST_F(Bounds, WindowsBelowAWindowlessControlFollowIt) {
    TmyComponent inner(light, "", kChild, 0, {4, 5, 10, 10});
    light->SetPosition(50, 60);
    EXPECT_EQ(inner.Bounds(), (RECT{4, 5, 14, 15}));
    POINT point;
    inner.GetPosition(&point, true);
    EXPECT_EQ(point.x, kPlace.x + 54);
    EXPECT_EQ(point.y, kPlace.y + 65);
}

// --- the strips of a window whose size changes -------------------------------------------------------------

TEST_F(Bounds, AWidenedWindowRepaintsTheBorderAndTheNewPart) {
    sub->SetSize(80, -1);
    EXPECT_TRUE(UpdateRegion(*sub).Is({{57, 0, 80, 80}})) << UpdateRegion(*sub);
}

TEST_F(Bounds, ANarrowedWindowRepaintsItsLastBorder) {
    sub->SetSize(40, -1);
    EXPECT_TRUE(UpdateRegion(*sub).Is({{37, 0, 40, 80}})) << UpdateRegion(*sub);
}

TEST_F(Bounds, TheHeightGoesByTheSameRuleAtTheBottom) {
    sub->SetSize(-1, 100);
    EXPECT_TRUE(UpdateRegion(*sub).Is({{0, 77, 60, 100}})) << UpdateRegion(*sub);
    Validate(*sub);
    sub->SetSize(-1, 50);
    EXPECT_TRUE(UpdateRegion(*sub).Is({{0, 47, 60, 50}})) << UpdateRegion(*sub);
}

TEST_F(Bounds, BothSizesGiveBothStrips) {
    sub->SetSize(70, 60);
    EXPECT_TRUE(UpdateRegion(*sub).Is({{57, 0, 70, 60}, {0, 57, 70, 60}})) << UpdateRegion(*sub);
}

TEST_F(Bounds, TheStripsAreAsWideAsTheBorder) {
    sub->SetStyleValue(StyleValue::BorderWidth, 10, true);
    ValidateAll();
    sub->SetSize(40, -1);
    EXPECT_TRUE(UpdateRegion(*sub).Is({{30, 0, 40, 80}})) << UpdateRegion(*sub);
    sub->SetBorderWidth(0);
    ValidateAll();
    sub->SetSize(30, -1);
    EXPECT_TRUE(UpdateRegion(*sub).IsEmpty()) << UpdateRegion(*sub);
    sub->SetSize(50, -1);
    EXPECT_TRUE(UpdateRegion(*sub).Is({{30, 0, 50, 80}})) << UpdateRegion(*sub);
}

// --- what the other calls invalidate -----------------------------------------------------------------------

TEST_F(Bounds, InvalidateLeavesOutOpaqueChildren) {
    TmyControl overlay(&top, {0, 100, 20, 20});
    overlay.SetOverlay(true);
    TmyControl hidden(&top, {30, 100, 20, 20});
    hidden.SetVisible(false);
    sub->SetVisible(false);
    Settle(top);
    ValidateAll();
    top.Invalidate();
    EXPECT_TRUE(UpdateRegion(top).Is({{0, 0, 200, 150}}, {{20, 20, 60, 50}})) << UpdateRegion(top);
    ValidateAll();
    light->Invalidate();
    EXPECT_TRUE(UpdateRegion(top).Is({{20, 20, 60, 50}})) << UpdateRegion(top);
    ValidateAll();
    light->InvalidateRect({3, 4, 10, 12});
    EXPECT_TRUE(UpdateRegion(top).Is({{23, 24, 30, 32}})) << UpdateRegion(top);
    ValidateAll();
    hidden.Invalidate();
    EXPECT_TRUE(UpdateRegion(top).IsEmpty());
}

TEST_F(Bounds, InvalidatedRegionIsTheSameAfterwards) {
    HRGN region = CreateRectRgn(1, 2, 3, 4);
    HRGN same = CreateRectRgn(1, 2, 3, 4);
    TmyControl inner(light, {5, 6, 10, 10});
    ValidateAll();
    inner.InvalidateRegion(region);
    EXPECT_NE(EqualRgn(region, same), 0);
    EXPECT_TRUE(UpdateRegion(top).Is({{26, 28, 28, 30}})) << UpdateRegion(top);
    DeleteObject(region);
    DeleteObject(same);
}

TEST_F(Bounds, StateChangesInvalidateTheControl) {
    const std::function<void()> changes[] = {
        [this] { light->SetEnabled(false); },
        [this] { light->SetEnabled(true); },
        [this] { light->SetGrey(true); },
        [this] { light->SetOverlay(true); },
        [this] { light->SetVisible(false); },
        [this] { light->SetVisible(true); },
        [this] { light->SetFont(static_cast<HFONT>(GetStockObject(SYSTEM_FONT))); },
    };
    int index = 0;
    for (const auto& change : changes) {
        ValidateAll();
        change();
        EXPECT_TRUE(UpdateRegion(top).Is({{20, 20, 60, 50}})) << index << ": " << UpdateRegion(top);
        ++index;
    }
}

TEST_F(Bounds, AddingAChildRepaintsTheFormerLast) {
    EventLog tree({"OnChildAdded"});
    RecordingComponent window(tree, "window", nullptr, "", kPopup, DWORD{0}, Placement{400, 100, 100, 100});
    TmyControl first(&window, {0, 0, 10, 10});
    TmyControl second(&window, {20, 0, 10, 10});
    Settle(window);
    Validate(window);
    tree.Take();
    TmyControl third(&window, {40, 0, 10, 10});
    EXPECT_TRUE(UpdateRegion(window).Is({{20, 0, 30, 10}})) << UpdateRegion(window);
    EXPECT_EQ(tree.Take(), (Entries{"window.OnChildAdded()"}));
    window.AddChild(&second); // is in the list
    EXPECT_TRUE(tree.Take().empty());
    EXPECT_EQ(window.FirstChild(), &first);
    EXPECT_EQ(first.NextSibling(), &second);
    EXPECT_EQ(second.NextSibling(), &third);
    EXPECT_EQ(third.NextSibling(), nullptr);
    window.RemoveChild(&second);
    EXPECT_EQ(first.NextSibling(), &third);
    window.AddChild(&second);
    EXPECT_EQ(third.NextSibling(), &second);
}

TEST_F(Bounds, UpdatePaintsAtOnce) {
    light->Invalidate();
    ASSERT_FALSE(UpdateRegion(top).IsEmpty());
    light->Update();
    EXPECT_TRUE(UpdateRegion(top).IsEmpty());
}

} // namespace
} // namespace orva::toolkit
