/// The list that opens outside its parent's window.

#include "controls/CtbComboListBox.h"
#include "tests/toolkit/WidgetSupport.h"
#include "toolkit/TmyPanel.h"
#include "toolkit/Tmy_ScrollBar.h"

#include <gtest/gtest.h>

namespace orva::controls {
namespace {

using namespace orva::toolkit;

constexpr Placement kListPlace{20, 250, 150, 132}; // reaches below the top window, which is 300 high

class ComboListBox : public WidgetTest {
protected:
    ComboListBox() : list(new CtbComboListBox(&Top(), kListPlace)) {
        for (int i = 0; i < 20; ++i) {
            list->AddItem("A file");
        }
        closes.Watch(list->onClose);
    }
    ~ComboListBox() override { Top().SetPosition(kTopPlace.x, kTopPlace.y); }

    [[nodiscard]] bool IsOnShow() const { return IsWindowVisible(list->Window()) != 0; }
    [[nodiscard]] RECT ScreenPlace() const {
        RECT place{};
        GetWindowRect(list->Window(), &place);
        return place;
    }
    void Open() const {
        list->SetVisible(true);
        list->SetFocus();
        Pump();
    }

    CtbComboListBox* list;
    EventCount<> closes;
};

TEST_F(ComboListBox, IsAHiddenPopupOwnedByTheTopWindow) {
    const LONG style = GetWindowLongA(list->Window(), GWL_STYLE);
    EXPECT_EQ(style & WS_CHILD, 0);
    EXPECT_NE(static_cast<DWORD>(style) & WS_POPUP, 0u);
    EXPECT_EQ(GetAncestor(list->Window(), GA_PARENT), GetDesktopWindow());
    EXPECT_EQ(GetWindow(list->Window(), GW_OWNER), Top().Window());
    EXPECT_EQ(list->GetParent(), &Top());
    EXPECT_FALSE(IsOnShow());
    EXPECT_FALSE(list->IsVisible());
}

TEST_F(ComboListBox, StandsOutsideItsParentWhereItSays) {
    Open();
    EXPECT_TRUE(IsOnShow());
    EXPECT_EQ(ScreenPlace(), (RECT{120, 350, 270, 482}));
    EXPECT_GT(ScreenPlace().bottom, kTopPlace.y + kTopPlace.height);
}

TEST_F(ComboListBox, TakesItsPlaceEachTimeItIsShown) {
    Open();
    list->SetVisible(false);
    Top().SetPosition(300, 60);
    Open();
    EXPECT_EQ(ScreenPlace(), (RECT{320, 310, 470, 442}));
    list->SetVisible(false);
    list->SetPlace({0, 10, 80, 90});
    Open();
    EXPECT_EQ(ScreenPlace(), (RECT{300, 70, 380, 160}));
}

TEST_F(ComboListBox, CountsFromAParentWithoutAWindow) {
    auto* inner = new TmyControl(&Top(), {30, 40, 100, 100});
    auto* window = new TmyPanel(&Top(), "", {50, 60, 200, 100});
    const CtbComboListBox first(inner, {1, 2, 60, 50});
    const CtbComboListBox second(window, {1, 2, 60, 50});
    EXPECT_EQ(first.Bounds(), (RECT{131, 142, 191, 192}));
    EXPECT_EQ(second.Bounds(), (RECT{151, 162, 211, 212}));
    EXPECT_EQ(GetWindow(second.Window(), GW_OWNER), Top().Window());
}

TEST_F(ComboListBox, LossOfTheFocusFiresOnCloseWithItself) {
    Open();
    EXPECT_TRUE(list->HasFocus());
    EXPECT_EQ(closes.count, 0);
    Top().SetFocus();
    EXPECT_EQ(closes.count, 1);
    EXPECT_EQ(closes.sender, list);
    EXPECT_TRUE(IsOnShow()); // the owner hides it
}

TEST_F(ComboListBox, OnCloseComesBeforeTheLossIsToldFurther) {
    std::vector<int> order;
    EventCount<bool> focus;
    Open();
    focus.Watch(list->onFocus);
    closes.then = [&] { order.push_back(1); };
    focus.then = [&] { order.push_back(2); };
    Top().SetFocus();
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    EXPECT_EQ(focus.last, 0);
}

TEST_F(ComboListBox, HandlerMayHideOrDeleteIt) {
    closes.then = [&] { list->SetVisible(false); };
    Open();
    Top().SetFocus();
    EXPECT_FALSE(IsOnShow());
    EXPECT_EQ(closes.count, 1);
    closes.then = [&] { delete list; };
    Open();
    Top().SetFocus();
    EXPECT_EQ(closes.count, 2);
}

TEST_F(ComboListBox, EscapeHidesItAndTellsOnce) {
    Open();
    KeyDown(*list, VK_ESCAPE);
    Pump();
    EXPECT_FALSE(IsOnShow());
    EXPECT_EQ(closes.count, 1);
    EXPECT_TRUE(Top().HasFocus());
}

TEST_F(ComboListBox, ChoosesLikeAnyList) {
    EventCount<std::int32_t> changes;
    EventCount<std::int32_t> enters;
    changes.Watch(list->onChange);
    enters.Watch(list->onEnter);
    Open();
    const RECT line = list->LineRect(2);
    ClickAt(*list, static_cast<int>(line.left) + 3, static_cast<int>(line.top) + 3);
    EXPECT_EQ(changes.last, 2);
    EXPECT_EQ(enters.last, 2);
    KeyDown(*list, VK_DOWN);
    EXPECT_EQ(changes.last, 3);
    list->ScrollBar()->SetButtonSize(16, 16);
    EXPECT_EQ(list->ScrollBar()->TroughRect().top, 16);
}

TEST_F(ComboListBox, GoesWithItsParent) {
    auto* owner = new TmyPanel(&Top(), "", {50, 60, 200, 100});
    auto* owned = new CtbComboListBox(owner, {1, 2, 60, 50});
    EventCount<> gone;
    gone.Watch(owned->onDestroy);
    const HWND window = owned->Window();
    delete owner;
    EXPECT_EQ(gone.count, 1);
    EXPECT_FALSE(IsWindow(window));
}

TEST_F(ComboListBox, RealClickOutsideTellsOfTheClose) {
    closes.then = [&] { list->SetVisible(false); };
    Settle(Top());
    Open();
    const RECT place = ScreenPlace();
    real::MoveTo(static_cast<int>(place.left) + 10, static_cast<int>(place.bottom) - 10);
    real::LeftDown(); // below the top window: only the list is there
    real::LeftUp();
    EXPECT_NE(list->GetSelected(), -1);
    EXPECT_EQ(closes.count, 0);
    real::MoveTo(kTopPlace.x + 300, kTopPlace.y + 20);
    real::LeftDown();
    real::LeftUp();
    EXPECT_EQ(closes.count, 1);
    EXPECT_FALSE(IsOnShow());
}

} // namespace
} // namespace orva::controls
