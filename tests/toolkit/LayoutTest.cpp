#include "tests/toolkit/WindowSupport.h"

#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

/// Every rule for windowless children and for those with a window, in a window and in a control without one.
struct Kind {
    bool windowedChildren;
    bool windowlessParent;
};

class Layout : public ::testing::TestWithParam<Kind> {
protected:
    Layout() {
        parent = &top;
        if (GetParam().windowlessParent) {
            parent = new TmyControl(&top, {30, 20, 100, 80});
        }
    }

    TmyControl* Child(const Placement& placement) {
        if (GetParam().windowedChildren) {
            return new TmyComponent(parent, "", kChild, 0, placement);
        }
        return new TmyControl(parent, placement);
    }
    TmyControl* Docked(Alignment alignment, int width, int height) {
        TmyControl* child = Child({1, 1, width, height});
        child->SetAlignment(alignment);
        return child;
    }
    TmyControl* Anchored(const Placement& placement, const Anchors& anchors) {
        TmyControl* child = Child(placement);
        child->SetAnchors(anchors);
        return child;
    }
    void Resize(int width, int height) {
        if (parent == &top) {
            top.SetClientSize(width, height);
        } else {
            parent->SetSize(width, height);
        }
    }
    /// Lets the state of hidden windows arrive.
    static void Hide(TmyControl* child) {
        child->SetVisible(false);
        Pump();
    }

    /// Where a child's window really is, as against what the child believes.
    void ExpectWindowInPlace(const TmyControl* child) const {
        if (child->Window() == nullptr) {
            return;
        }
        RECT outer;
        GetWindowRect(child->Window(), &outer);
        MapWindowPoints(nullptr, top.Window(), reinterpret_cast<POINT*>(&outer), 2);
        const POINT offset = parent->OffsetInComponent();
        OffsetRect(&outer, -offset.x, -offset.y);
        EXPECT_EQ(outer, child->Bounds());
    }

    TmyComponent top{nullptr, "", kPopup, 0, {50, 50, 100, 80}};
    TmyControl* parent;
};

INSTANTIATE_TEST_SUITE_P(Kinds, Layout,
                         ::testing::Values(Kind{false, false}, Kind{true, false}, Kind{false, true},
                                           Kind{true, true}),
                         [](const ::testing::TestParamInfo<Kind>& kind) {
                             return std::string(kind.param.windowedChildren ? "Windows" : "Light") +
                                    (kind.param.windowlessParent ? "InLight" : "InWindow");
                         });

TEST_P(Layout, TopAndBottomTakeTheFullWidthInListOrder) {
    const TmyControl* first = Docked(Alignment::Top, 7, 10);
    const TmyControl* bottom = Docked(Alignment::Bottom, 7, 12);
    const TmyControl* second = Docked(Alignment::Top, 7, 5);
    EXPECT_EQ(first->Bounds(), (RECT{0, 0, 100, 10}));
    EXPECT_EQ(second->Bounds(), (RECT{0, 10, 100, 15}));
    EXPECT_EQ(bottom->Bounds(), (RECT{0, 68, 100, 80}));
    for (const TmyControl* each : {first, second, bottom}) {
        ExpectWindowInPlace(each);
    }
}

TEST_P(Layout, SidesTakeTheHeightThatRemains) {
    const TmyControl* left = Docked(Alignment::Left, 20, 7);
    const TmyControl* top1 = Docked(Alignment::Top, 7, 10);
    const TmyControl* right = Docked(Alignment::Right, 15, 7);
    const TmyControl* bottom = Docked(Alignment::Bottom, 7, 12);
    const TmyControl* left2 = Docked(Alignment::Left, 8, 7);
    EXPECT_EQ(top1->Bounds(), (RECT{0, 0, 100, 10}));
    EXPECT_EQ(bottom->Bounds(), (RECT{0, 68, 100, 80}));
    EXPECT_EQ(left->Bounds(), (RECT{0, 10, 20, 68}));
    EXPECT_EQ(left2->Bounds(), (RECT{20, 10, 28, 68}));
    EXPECT_EQ(right->Bounds(), (RECT{85, 10, 100, 68}));
    for (const TmyControl* each : {left, top1, right, bottom, left2}) {
        ExpectWindowInPlace(each);
    }
}

TEST_P(Layout, InnerOnesStandBetweenTheSides) {
    const TmyControl* innerTop = Docked(Alignment::InnerTop, 7, 9);
    const TmyControl* innerBottom = Docked(Alignment::InnerBottom, 7, 6);
    const TmyControl* left = Docked(Alignment::Left, 20, 7);
    const TmyControl* right = Docked(Alignment::Right, 15, 7);
    const TmyControl* top1 = Docked(Alignment::Top, 7, 10);
    EXPECT_EQ(left->Bounds(), (RECT{0, 10, 20, 80}));
    EXPECT_EQ(right->Bounds(), (RECT{85, 10, 100, 80}));
    EXPECT_EQ(innerTop->Bounds(), (RECT{20, 10, 85, 19}));
    EXPECT_EQ(innerBottom->Bounds(), (RECT{20, 74, 85, 80}));
    EXPECT_EQ(top1->Bounds(), (RECT{0, 0, 100, 10}));
}

TEST_P(Layout, FillTakesTheRestAndTwoFillsTheSame) {
    const TmyControl* fill = Docked(Alignment::Fill, 7, 7);
    const TmyControl* other = Docked(Alignment::Fill, 3, 3);
    Docked(Alignment::Top, 7, 10);
    Docked(Alignment::Left, 20, 7);
    Docked(Alignment::InnerBottom, 7, 6);
    EXPECT_EQ(fill->Bounds(), (RECT{20, 10, 100, 74}));
    EXPECT_EQ(other->Bounds(), fill->Bounds());
    ExpectWindowInPlace(fill);
}

TEST_P(Layout, FollowsTheParentsSize) {
    const TmyControl* bottom = Docked(Alignment::Bottom, 7, 12);
    const TmyControl* right = Docked(Alignment::Right, 15, 7);
    const TmyControl* fill = Docked(Alignment::Fill, 7, 7);
    Resize(140, 60);
    EXPECT_EQ(bottom->Bounds(), (RECT{0, 48, 140, 60}));
    EXPECT_EQ(right->Bounds(), (RECT{125, 0, 140, 48}));
    EXPECT_EQ(fill->Bounds(), (RECT{0, 0, 125, 48}));
    for (const TmyControl* each : {bottom, right, fill}) {
        ExpectWindowInPlace(each);
    }
}

TEST_P(Layout, WhatIsTooLargeLeavesNothingAndNoNegativeSize) {
    Docked(Alignment::Top, 7, 60);
    const TmyControl* bottom = Docked(Alignment::Bottom, 7, 60);
    const TmyControl* fill = Docked(Alignment::Fill, 7, 7);
    const TmyControl* left = Docked(Alignment::Left, 20, 7);
    EXPECT_EQ(bottom->Bounds(), (RECT{0, 20, 100, 80}));
    EXPECT_EQ(left->Bounds().bottom - left->Bounds().top, 0);
    EXPECT_EQ(fill->Bounds().bottom - fill->Bounds().top, 0);
}

TEST_P(Layout, HiddenChildrenTakeNoPlace) {
    TmyControl* first = Docked(Alignment::Top, 7, 10);
    const TmyControl* second = Docked(Alignment::Top, 7, 5);
    const TmyControl* fill = Docked(Alignment::Fill, 7, 7);
    Hide(first);
    EXPECT_EQ(second->Bounds(), (RECT{0, 0, 100, 5}));
    EXPECT_EQ(fill->Bounds(), (RECT{0, 5, 100, 80}));
    const RECT before = first->Bounds();
    Resize(120, 80);
    EXPECT_EQ(first->Bounds(), before);
    first->SetVisible(true);
    Pump();
    EXPECT_EQ(first->Bounds(), (RECT{0, 0, 120, 10}));
    EXPECT_EQ(second->Bounds(), (RECT{0, 10, 120, 15}));
    EXPECT_EQ(fill->Bounds(), (RECT{0, 15, 120, 80}));
}

TEST_P(Layout, ADockedChildsOwnSizeChangesTheLayout) {
    TmyControl* first = Docked(Alignment::Top, 7, 10);
    const TmyControl* fill = Docked(Alignment::Fill, 7, 7);
    first->SetSize(33, 25);
    EXPECT_EQ(first->Bounds(), (RECT{0, 0, 100, 25}));
    EXPECT_EQ(fill->Bounds(), (RECT{0, 25, 100, 80}));
    first->SetAlignment(Alignment::Bottom);
    EXPECT_EQ(first->Bounds(), (RECT{0, 55, 100, 80}));
    EXPECT_EQ(fill->Bounds(), (RECT{0, 0, 100, 55}));
}

TEST_P(Layout, StaysInsideTheBorder) {
    parent->SetStyleValue(StyleValue::BorderStyle, 3);
    parent->SetStyleValue(StyleValue::BorderWidth, 4);
    const TmyControl* first = Docked(Alignment::Top, 7, 10);
    const TmyControl* fill = Docked(Alignment::Fill, 7, 7);
    const TmyControl* stretched = Anchored({9, 9, 9, 9}, {1, 2, 3, 5});
    EXPECT_EQ(first->Bounds(), (RECT{4, 4, 96, 14}));
    EXPECT_EQ(fill->Bounds(), (RECT{4, 14, 96, 76}));
    EXPECT_EQ(stretched->Bounds(), (RECT{5, 6, 93, 71}));
}

TEST_P(Layout, NearAnchorAloneKeepsTheChildWhereItIs) {
    const TmyControl* child = Anchored({11, 12, 20, 10}, {5, 6, kAnchorNone, kAnchorNone});
    EXPECT_EQ(child->Bounds(), (RECT{11, 12, 31, 22}));
    Resize(200, 140);
    EXPECT_EQ(child->Bounds(), (RECT{11, 12, 31, 22}));
}

TEST_P(Layout, FarAnchorAloneKeepsTheSizeAtTheFarMargin) {
    const TmyControl* child = Anchored({1, 2, 20, 10}, {kAnchorNone, kAnchorNone, 5, 6});
    EXPECT_EQ(child->Bounds(), (RECT{75, 64, 95, 74}));
    Resize(140, 60);
    EXPECT_EQ(child->Bounds(), (RECT{115, 44, 135, 54}));
    ExpectWindowInPlace(child);
}

TEST_P(Layout, BothAnchorsStretch) {
    const TmyControl* child = Anchored({1, 2, 20, 10}, {10, 11, 12, 13});
    EXPECT_EQ(child->Bounds(), (RECT{10, 11, 88, 67}));
    Resize(140, 60);
    EXPECT_EQ(child->Bounds(), (RECT{10, 11, 128, 47}));
    ExpectWindowInPlace(child);
}

TEST_P(Layout, StretchedBelowNothingHasSizeZero) {
    const TmyControl* child = Anchored({1, 2, 20, 10}, {60, 50, 60, 40});
    EXPECT_EQ(child->Bounds(), (RECT{60, 50, 60, 50}));
}

TEST_P(Layout, CentreIgnoresTheSecondValue) {
    const TmyControl* child = Anchored({1, 2, 20, 10}, {kAnchorCentre, kAnchorCentre, 3, kAnchorNone});
    EXPECT_EQ(child->Bounds(), (RECT{40, 35, 60, 45}));
    Resize(140, 60);
    EXPECT_EQ(child->Bounds(), (RECT{60, 25, 80, 35}));
}

TEST_P(Layout, AxesAreIndependent) {
    const TmyControl* child = Anchored({1, 2, 20, 10}, {kAnchorCentre, kAnchorNone, kAnchorNone, 4});
    EXPECT_EQ(child->Bounds(), (RECT{40, 66, 60, 76}));
    const TmyControl* other = Anchored({1, 2, 20, 10}, {kAnchorNone, 3, kAnchorNone, 4});
    EXPECT_EQ(other->Bounds(), (RECT{1, 3, 21, 76}));
}

TEST_P(Layout, AnchorsAreInsideTheWholeAreaWhateverIsDocked) {
    Docked(Alignment::Top, 7, 30);
    const TmyControl* child = Anchored({1, 2, 20, 10}, {2, 3, 4, 5});
    EXPECT_EQ(child->Bounds(), (RECT{2, 3, 96, 75}));
}

TEST_P(Layout, AnchorsOfADockedChildDoNotCount) {
    TmyControl* child = Docked(Alignment::Top, 7, 10);
    child->SetAnchors({2, 3, 4, 5});
    EXPECT_EQ(child->Bounds(), (RECT{0, 0, 100, 10}));
    child->ClearAnchors();
    child->SetAlignment(Alignment::None);
    Resize(120, 90);
    EXPECT_EQ(child->Bounds(), (RECT{0, 0, 100, 10})); // neither docked nor anchored
}

TEST_P(Layout, HiddenAnchoredChildrenArePlaced) {
    TmyControl* child = Anchored({1, 2, 20, 10}, {10, 11, 12, 13});
    Hide(child);
    Resize(140, 60);
    EXPECT_EQ(child->Bounds(), (RECT{10, 11, 128, 47}));
}

TEST_P(Layout, WindowsOnTheDesktopAreLeftAlone) {
    TmyComponent popup(parent, "", kPopupHidden, 0, {300, 300, 40, 30});
    popup.SetAlignment(Alignment::Top);
    popup.SetAnchors({1, 1, 1, 1});
    const TmyControl* fill = Docked(Alignment::Fill, 7, 7);
    EXPECT_EQ(fill->Bounds(), (RECT{0, 0, 100, 80}));
    EXPECT_EQ(popup.Bounds(), (RECT{300, 300, 340, 330}));
    const TmyControl* child = Child({5, 5, 45, 25});
    static_cast<void>(child);
    parent->FitToChildren(0, 0);
    EXPECT_LT(parent->GetClientWidth(), 300);
}

TEST_P(Layout, FitToChildrenReachesTheFurthestOnes) {
    Child({5, 5, 45, 10});
    Child({0, 0, 10, 33});
    parent->FitToChildren(4, 7);
    EXPECT_EQ(parent->GetClientWidth(), 54);
    EXPECT_EQ(parent->GetClientHeight(), 40);
}

TEST_P(Layout, AChildThatConstrainsItsSizeIsLaidOutByWhatItTook) {
    EventLog log({"none"});
    std::unique_ptr<RecordingControl> light;
    std::unique_ptr<RecordingComponent> windowed;
    const auto narrow = [](int* /*x*/, int* /*y*/, int* /*width*/, int* height) { *height = 22; };
    TmyControl* child = nullptr;
    if (GetParam().windowedChildren) {
        windowed = std::make_unique<RecordingComponent>(log, "child", parent, "", kChild, DWORD{0},
                                                        Placement{0, 0, 10, 10});
        windowed->constrain = narrow;
        child = windowed.get();
    } else {
        light = std::make_unique<RecordingControl>(log, "child", parent, Placement{0, 0, 10, 10});
        light->constrain = narrow;
        child = light.get();
    }
    child->SetAlignment(Alignment::Top);
    const TmyControl* fill = Docked(Alignment::Fill, 7, 7);
    EXPECT_EQ(child->Bounds(), (RECT{0, 0, 100, 22}));
    EXPECT_EQ(fill->Bounds(), (RECT{0, 22, 100, 80}));
}

TEST(LayoutMargin, ClientAreaIsInsideTheBorderOfEachStyle) {
    TmyControl control(nullptr, {10, 10, 100, 60});
    const auto marginOf = [&control](std::uint32_t style) {
        control.SetBorderStyle(style);
        RECT area;
        control.GetClientArea(&area);
        EXPECT_EQ(area.top, area.left) << style;
        EXPECT_EQ(area.right, 100 - area.left) << style;
        EXPECT_EQ(area.bottom, 60 - area.top) << style;
        return area.left;
    };
    EXPECT_EQ(marginOf(0), 0);
    EXPECT_EQ(marginOf(1), 1);
    EXPECT_EQ(marginOf(2), 1);
    EXPECT_EQ(marginOf(5), 1);
    EXPECT_EQ(marginOf(9), 6); // twice the width of 3
    for (const std::uint32_t style : {3u, 4u, 6u, 7u, 8u, 10u, 11u, 100u}) {
        EXPECT_EQ(marginOf(style), 3) << style;
    }
    control.SetBorderWidth(8);
    EXPECT_EQ(marginOf(9), 16);
    EXPECT_EQ(marginOf(3), 8);
    EXPECT_EQ(marginOf(1), 1);
}

TEST(LayoutOfWindows, TheMainWindowIsLaidOutWhileItIsStillHidden) {
    TmyComponent top(nullptr, "", kPopupHidden, 0, {50, 50, 100, 80});
    TmyControl child(&top, {0, 0, 7, 10});
    child.SetAlignment(Alignment::Top);
    EXPECT_EQ(child.Bounds(), (RECT{0, 0, 100, 10}));
}

TEST(LayoutOfWindows, HandlerThatThrowsDoesNotStopLaterLayouts) {
    struct Thrower {
        void Throw(TmyControl* /*sender*/) {
            if (armed) {
                throw std::runtime_error("no");
            }
        }
        bool armed = true;
    } thrower;
    TmyControl parent(nullptr, {0, 0, 100, 80});
    TmyControl child(&parent, {0, 0, 7, 10});
    child.onResize.Bind<&Thrower::Throw>(&thrower);
    EXPECT_THROW(child.SetAlignment(Alignment::Top), std::runtime_error);
    thrower.armed = false;
    parent.SetSize(150, 80);
    EXPECT_EQ(child.Bounds(), (RECT{0, 0, 150, 10}));
}

TEST(LayoutOfWindows, ClientSizeIsWithoutTheFrame) {
    TmyComponent framed(nullptr, "framed", WS_OVERLAPPEDWINDOW, 0, {50, 50, 300, 200});
    framed.SetClientSize(211, 133);
    RECT client;
    GetClientRect(framed.Window(), &client);
    EXPECT_EQ(client, (RECT{0, 0, 211, 133}));
    EXPECT_EQ(framed.GetClientWidth(), 211);
    EXPECT_EQ(framed.GetClientHeight(), 133);
    EXPECT_GT(framed.Bounds().bottom - framed.Bounds().top, 133);
}

TEST(LayoutOfWindows, MinusOneForThePositionCentresOnTheScreen) {
    const TmyComponent centred(nullptr, "", kPopupHidden, 0, {-1, -1, 301, 201});
    EXPECT_EQ(centred.Bounds().left, (GetSystemMetrics(SM_CXSCREEN) - 301) / 2);
    EXPECT_EQ(centred.Bounds().top, (GetSystemMetrics(SM_CYSCREEN) - 201) / 2);
    EXPECT_EQ(centred.Bounds().right - centred.Bounds().left, 301);
    const TmyComponent placed(nullptr, "", kPopupHidden, 0, {-1, 5, 301, 201});
    EXPECT_EQ(placed.Bounds(), (RECT{-1, 5, 300, 206}));
}

} // namespace
} // namespace orva::toolkit
