#include "tests/toolkit/WidgetSupport.h"

#include "toolkit/Colors.h"
#include "toolkit/TmyBitmap24.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace orva::toolkit {

namespace {

std::unique_ptr<TmyComponent> top;
FakeTimers* currentTimers = nullptr;

/// Closes the tests' window while the application still stands.
class CloseTop : public ::testing::Environment {
public:
    void TearDown() override { top.reset(); }
};

[[maybe_unused]] ::testing::Environment* const kCloseTop =
    ::testing::AddGlobalTestEnvironment(new CloseTop); // owned by the framework

} // namespace

// --- the window --------------------------------------------------------------------------------------------

TmyComponent& WidgetTest::Top() {
    if (top == nullptr) {
        top = std::make_unique<TmyComponent>(nullptr, "top", kPopup, 0, kTopPlace);
        Settle(*top);
    }
    return *top;
}

WidgetTest::WidgetTest() {
    real::BringToFront(Top());
}

WidgetTest::~WidgetTest() {
    ReleaseCapture();
    while (TmyControl* child = Top().FirstChild()) {
        delete child;
    }
    Top().SetFont(InheritedFont());
    Pump();
}

// --- pictures ----------------------------------------------------------------------------------------------

namespace {

/// A window's context: of its client area, or of all of it.
class ShownContext {
public:
    enum class Part { Client, Whole };
    ShownContext(HWND shownWindow, Part part)
        : window(shownWindow), dc(part == Part::Client ? ::GetDC(shownWindow) : GetWindowDC(shownWindow)) {}
    ~ShownContext() { ::ReleaseDC(window, dc); }
    ShownContext(const ShownContext&) = delete;
    ShownContext& operator=(const ShownContext&) = delete;
    [[nodiscard]] HDC Get() const { return dc; }

private:
    HWND window;
    HDC dc;
};

HWND Updated(TmyComponent& component) {
    component.Update();
    return component.Window();
}

} // namespace

Snapshot::Snapshot(HDC source, int left, int top, int pictureWidth, int pictureHeight)
    : width(pictureWidth), height(pictureHeight) {
    TmyBitmap24 copy(width, height);
    BitBlt(copy.GetDC(), 0, 0, width, height, source, left, top, SRCCOPY);
    GdiFlush();
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = copy.GetRow(y);
        for (int x = 0; x < width; ++x) {
            pixels.push_back(RGB(row[3 * x + 2], row[3 * x + 1], row[3 * x]));
        }
    }
}

Snapshot::Snapshot(TmyComponent& component)
    : Snapshot(component, {0, 0, component.GetClientWidth(), component.GetClientHeight()}) {}

Snapshot::Snapshot(TmyComponent& component, const RECT& part)
    : Snapshot(ShownContext(Updated(component), ShownContext::Part::Client).Get(), part.left, part.top,
               part.right - part.left, part.bottom - part.top) {}

Snapshot Snapshot::OfWindow(const TmyComponent& component) {
    RECT place{};
    GetWindowRect(component.Window(), &place);
    const ShownContext context(component.Window(), ShownContext::Part::Whole);
    return {context.Get(), 0, 0, static_cast<int>(place.right - place.left),
            static_cast<int>(place.bottom - place.top)};
}

Snapshot Snapshot::Drawn(int width, int height, COLORREF paper, const std::function<void(HDC)>& draw) {
    TmyBitmap24 sheet(width, height);
    FillSolid(sheet.GetDC(), {0, 0, width, height}, paper);
    draw(sheet.GetDC());
    return {sheet.GetDC(), 0, 0, width, height};
}

int Snapshot::Differences(const RECT& area, const Snapshot& other) const {
    EXPECT_TRUE(area.right - area.left == other.width && area.bottom - area.top == other.height)
        << "pictures of different sizes";
    int count = 0;
    for (int y = 0; y < other.height; ++y) {
        for (int x = 0; x < other.width; ++x) {
            count += At(static_cast<int>(area.left) + x, static_cast<int>(area.top) + y) != other.At(x, y);
        }
    }
    return count;
}

COLORREF Snapshot::At(int x, int y) const {
    EXPECT_TRUE(x >= 0 && x < width && y >= 0 && y < height) << x << ", " << y << " is outside";
    return pixels.at(static_cast<std::size_t>(y * width + x));
}

int Snapshot::Count(const RECT& area, COLORREF color) const {
    int count = 0;
    for (int y = area.top; y < area.bottom; ++y) {
        for (int x = area.left; x < area.right; ++x) {
            count += At(x, y) == color ? 1 : 0;
        }
    }
    return count;
}

int Snapshot::CountOther(const RECT& area, COLORREF color) const {
    return static_cast<int>((area.right - area.left) * (area.bottom - area.top)) - Count(area, color);
}

RECT Snapshot::BoxOfOther(const RECT& area, COLORREF background) const {
    RECT box{area.right, area.bottom, area.left, area.top};
    for (int y = area.top; y < area.bottom; ++y) {
        for (int x = area.left; x < area.right; ++x) {
            if (At(x, y) != background) {
                box = {std::min<LONG>(box.left, x), std::min<LONG>(box.top, y),
                       std::max<LONG>(box.right, x + 1), std::max<LONG>(box.bottom, y + 1)};
            }
        }
    }
    return box.left < box.right ? box : RECT{};
}

unsigned EndOfGraphicsObjects() {
    constexpr std::size_t kMoreThanAreFree = 4000;
    std::vector<HRGN> probes(kMoreThanAreFree);
    unsigned end = 0;
    for (HRGN& probe : probes) {
        probe = CreateRectRgn(0, 0, 1, 1);
        end = std::max(end, unsigned{LOWORD(reinterpret_cast<std::uintptr_t>(probe))});
    }
    for (const HRGN probe : probes) {
        DeleteObject(probe);
    }
    return end;
}

// --- the clock ---------------------------------------------------------------------------------------------

FakeTimers::FakeTimers() : saved(TimerCalls()) {
    currentTimers = this;
    TimerCalls() = {Set, Kill};
}

FakeTimers::~FakeTimers() {
    TimerCalls() = saved;
    currentTimers = nullptr;
}

UINT_PTR FakeTimers::Set(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) {
    Kill(window, id);
    currentTimers->timers.push_back({window, id, milliseconds, procedure, currentTimers->now + milliseconds});
    return id;
}

void FakeTimers::Kill(HWND window, UINT_PTR id) {
    std::vector<Timer>& timers = currentTimers->timers;
    timers.erase(std::remove_if(timers.begin(), timers.end(),
                                [&](const Timer& timer) { return timer.window == window && timer.id == id; }),
                 timers.end());
}

void FakeTimers::Advance(std::uint32_t milliseconds) {
    const std::uint32_t end = now + milliseconds;
    while (!timers.empty()) {
        const auto next = std::min_element(timers.begin(), timers.end(),
                                           [](const Timer& a, const Timer& b) { return a.due < b.due; });
        if (next->due > end) {
            break;
        }
        now = next->due;
        next->due += next->interval;
        const Timer timer = *next; // the handler may stop it
        if (timer.procedure != nullptr) {
            timer.procedure(timer.window, WM_TIMER, timer.id, now);
        } else {
            SendMessageA(timer.window, WM_TIMER, timer.id, 0);
        }
    }
    now = end;
}

// --- the machine's mouse and keys --------------------------------------------------------------------------

namespace real {

namespace {

void Handle() {
    // The input comes back through the server: a moment after the call.
    constexpr DWORD kQuiet = 20; // [ms] without a message
    Pump();
    while (MsgWaitForMultipleObjects(0, nullptr, FALSE, kQuiet, QS_ALLINPUT) == WAIT_OBJECT_0) {
        Pump();
    }
}

void SendMouse(DWORD flags) {
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = flags;
    SendInput(1, &input, sizeof input);
    Handle();
}

void SendKey(WORD key, DWORD flags) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.dwFlags = flags;
    SendInput(1, &input, sizeof input);
    Handle();
}

} // namespace

void BringToFront(const TmyComponent& component) {
    if (GetForegroundWindow() != component.Window()) {
        SetForegroundWindow(component.Window());
        Pump();
    }
    ::SetFocus(component.Window());
}

void MoveTo(int screenX, int screenY) {
    SetCursorPos(screenX, screenY);
    Handle();
}

void MoveOnto(const TmyComponent& component) {
    RECT place{};
    GetWindowRect(component.Window(), &place);
    MoveTo(static_cast<int>(place.left + place.right) / 2, static_cast<int>(place.top + place.bottom) / 2);
}

void LeftDown() {
    SendMouse(MOUSEEVENTF_LEFTDOWN);
}

void LeftUp() {
    SendMouse(MOUSEEVENTF_LEFTUP);
}

void KeyPressed(WORD key) {
    SendKey(key, 0);
}

void KeyReleased(WORD key) {
    SendKey(key, KEYEVENTF_KEYUP);
}

void Key(WORD key) {
    KeyPressed(key);
    KeyReleased(key);
}

} // namespace real

} // namespace orva::toolkit
