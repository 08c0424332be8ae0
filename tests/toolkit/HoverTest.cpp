#include "tests/toolkit/WindowSupport.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

using Entries = EventLog::Entries;

struct HoverTarget {
    void OnHover(TmyControl* /*sender*/) { ++count; }
    int count = 0;
};

class Hover : public ::testing::Test {
protected:
    Hover() {
        one = new RecordingControl(log, "one", &top, Placement{0, 0, 50, 50});
        two = new RecordingControl(log, "two", &top, Placement{60, 0, 50, 50});
        Settle(top);
    }
    ~Hover() override {
        Application().StopHover(one);
        Application().StopHover(two);
    }

    static void PointAt(int x, int y) { SetCursorPos(kPlace.x + x, kPlace.y + y); }
    /// Moves the pointer there and lets the control know.
    void Move(int x, int y) {
        PointAt(x, y);
        Settle(top); // what the platform itself tells of the move
        Send(top, WM_MOUSEMOVE, 0, Point(x, y));
    }
    static void Wait(DWORD milliseconds) {
        PumpUntil([] { return false; }, milliseconds);
    }

    EventLog log{{"OnHover"}};
    RecordingComponent top{log, "top", nullptr, "", kPopup, DWORD{0}, kPlace};
    RecordingControl* one;
    RecordingControl* two;
};

TEST_F(Hover, RestingPointerIsToldOnceAfterTheDelay) {
    HoverTarget target;
    one->onHover.Bind<&HoverTarget::OnHover>(&target);
    const DWORD start = GetTickCount();
    Move(20, 20);
    ASSERT_TRUE(PumpUntil([&] { return target.count > 0; }, 3000));
    EXPECT_GE(GetTickCount() - start, 480u); // the delay of 500 ms, less the clock's grain
    Wait(700);
    EXPECT_EQ(target.count, 1);
    EXPECT_EQ(log.Take(), (Entries{"one.OnHover()"}));
}

TEST_F(Hover, PointerThatHasLeftIsNotTold) {
    Move(20, 20);
    PointAt(150, 120);
    Settle(top);
    Application().StartHover(one);
    Wait(700);
    EXPECT_TRUE(log.Take().empty());
}

TEST_F(Hover, AnotherControlBeginsTheDelayAnew) {
    Move(20, 20);
    Wait(300);
    Move(70, 20);
    Wait(300);
    EXPECT_TRUE(log.Take().empty());
    EXPECT_TRUE(PumpUntil([&] { return !log.Take().empty(); }, 3000));
}

TEST_F(Hover, StoppedIsNotTold) {
    Move(20, 20);
    Application().StopHover(two); // another one's
    Application().StopHover(one);
    Wait(700);
    EXPECT_TRUE(log.Take().empty());
}

TEST_F(Hover, ADyingControlStopsIt) {
    auto* doomed = new RecordingControl(log, "doomed", &top, Placement{0, 60, 50, 50});
    Move(20, 70);
    delete doomed;
    Wait(700);
    const Entries entries = log.Take();
    EXPECT_EQ(std::count(entries.begin(), entries.end(), "doomed.OnHover()"), 0);
}

} // namespace
} // namespace orva::toolkit
