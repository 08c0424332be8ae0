/// What the widgets' tests share: a window to put widgets in, pictures of them, a clock for their timers, and
/// the mouse and keys of the machine.
#pragma once

#include "tests/toolkit/WindowSupport.h"
#include "toolkit/TimerPlatform.h"
#include "toolkit/TmyComponent.h"

#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace orva::toolkit {

/// Where the tests' top window stands on the screen, and its size.
constexpr Placement kTopPlace{100, 100, 400, 300};

/// A widget test: `Top()` is one window for the whole program, since a window takes long to settle. Whatever
/// a test puts into it is deleted at the test's end, and its look and focus are as at first.
class WidgetTest : public ::testing::Test {
protected:
    WidgetTest();
    ~WidgetTest() override;

    static TmyComponent& Top();
};

/// The pixels of a window's client area as it is shown, painted up to now.
class Snapshot {
public:
    explicit Snapshot(TmyComponent& component);
    /// A part of a window, for a control without one.
    Snapshot(TmyComponent& component, const RECT& part);
    /// The whole window, what is not its client area included, as it is on the screen now.
    [[nodiscard]] static Snapshot OfWindow(const TmyComponent& component);
    /// What `draw` makes of an area filled with `paper`: to compare a widget with.
    [[nodiscard]] static Snapshot Drawn(int width, int height, COLORREF paper,
                                        const std::function<void(HDC)>& draw);

    [[nodiscard]] int Width() const { return width; }
    [[nodiscard]] int Height() const { return height; }
    /// 0x00bbggrr; a failure outside.
    [[nodiscard]] COLORREF At(int x, int y) const;
    /// Pixels of `area` that have the colour, or do not.
    [[nodiscard]] int Count(const RECT& area, COLORREF color) const;
    [[nodiscard]] int CountOther(const RECT& area, COLORREF color) const;
    /// The smallest rectangle with all pixels of `area` that have another colour than `background`; empty
    /// without any.
    [[nodiscard]] RECT BoxOfOther(const RECT& area, COLORREF background) const;
    [[nodiscard]] RECT Whole() const { return {0, 0, width, height}; }
    /// Pixels of `area` that are not as in another picture, which has the size of that area.
    [[nodiscard]] int Differences(const RECT& area, const Snapshot& other) const;

private:
    Snapshot(HDC source, int left, int top, int pictureWidth, int pictureHeight);

    int width;
    int height;
    std::vector<COLORREF> pixels;
};

/// Takes the place of the platform's timers, and delivers their messages when its clock is moved.
class FakeTimers {
public:
    struct Timer {
        HWND window;
        UINT_PTR id;
        UINT interval; ///< [ms]
        TIMERPROC procedure;
        std::uint32_t due; ///< on the fake clock [ms]
    };

    FakeTimers();
    ~FakeTimers();
    FakeTimers(const FakeTimers&) = delete;
    FakeTimers& operator=(const FakeTimers&) = delete;

    /// Moves the clock; every timer that becomes due on the way is delivered at its time.
    void Advance(std::uint32_t milliseconds);
    [[nodiscard]] std::uint32_t Now() const { return now; }
    [[nodiscard]] const std::vector<Timer>& Running() const { return timers; }

private:
    static UINT_PTR Set(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure);
    static void Kill(HWND window, UINT_PTR id);

    TimerPlatform saved;
    std::vector<Timer> timers;
    std::uint32_t now = 0;
};

/// Where the table of graphics objects ends: the same before and after, if nothing was left behind. (Freed
/// handles are given out first.)
[[nodiscard]] unsigned EndOfGraphicsObjects();

/// Counts an event of any kind, and keeps its last argument, if it has one.
template <typename... Arguments>
struct EventCount {
    void On(TmyControl* eventSender, Arguments... arguments) {
        ++count;
        sender = eventSender;
        ((last = Kept(arguments)), ...);
        if (then) {
            then();
        }
    }
    template <class Event>
    void Watch(Event& event) {
        event.template Bind<&EventCount::On>(this);
    }

    template <typename Value>
    static std::int64_t Kept(Value value) {
        if constexpr (std::is_pointer_v<Value>) {
            return reinterpret_cast<std::intptr_t>(value);
        } else {
            return static_cast<std::int64_t>(value);
        }
    }

    /// The count so far, which begins anew.
    int Take() { return std::exchange(count, 0); }

    int count = 0;
    std::int64_t last = -1; ///< the last argument of the last time
    TmyControl* sender = nullptr;
    std::function<void()> then;
};

// Messages as the platform sends them.

inline void PressAt(const TmyComponent& component, int x, int y) {
    Send(component, WM_LBUTTONDOWN, MK_LBUTTON, Point(x, y));
}
inline void DragTo(const TmyComponent& component, int x, int y) {
    Send(component, WM_MOUSEMOVE, MK_LBUTTON, Point(x, y));
}
inline void ReleaseAt(const TmyComponent& component, int x, int y) {
    Send(component, WM_LBUTTONUP, 0, Point(x, y));
}
inline void ClickAt(const TmyComponent& component, int x, int y) {
    PressAt(component, x, y);
    ReleaseAt(component, x, y);
}
inline void KeyDown(const TmyComponent& component, UINT key) {
    Send(component, WM_KEYDOWN, key, 1);
}
inline void KeyUp(const TmyComponent& component, UINT key) {
    Send(component, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
}
inline void Type(const TmyComponent& component, char character) {
    Send(component, WM_CHAR, static_cast<unsigned char>(character), 1);
}
/// Positive notches are up.
inline void Wheel(const TmyComponent& component, int notches) {
    Send(component, WM_MOUSEWHEEL, static_cast<WPARAM>(MAKELONG(0, notches * WHEEL_DELTA)), 0);
}

/// The real mouse and keys. Each call returns when its messages have been handled.
namespace real {

void BringToFront(const TmyComponent& component);
void MoveTo(int screenX, int screenY);
/// The middle of a window's client area.
void MoveOnto(const TmyComponent& component);
void LeftDown();
void LeftUp();
void Key(WORD key);
void KeyPressed(WORD key);
void KeyReleased(WORD key);

} // namespace real

} // namespace orva::toolkit
