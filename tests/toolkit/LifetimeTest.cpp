#include "tests/toolkit/DebugOutput.h"
#include "tests/toolkit/WindowSupport.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

constexpr int kThunks = 5041;

std::unique_ptr<TmyComponent> Small() {
    return std::make_unique<TmyComponent>(nullptr, "", WS_POPUP, 0, Placement{0, 0, 1, 1});
}

/// Number of thunks in use.
int UsedThunks() {
    const std::unique_ptr<TmyComponent> probe = Small();
    const auto address = static_cast<std::uintptr_t>(GetWindowLongA(probe->Window(), GWL_WNDPROC));
    MEMORY_BASIC_INFORMATION pages{};
    VirtualQuery(reinterpret_cast<const void*>(address), &pages, sizeof pages);
    const auto* base = static_cast<const std::uint8_t*>(pages.AllocationBase);
    int used = -1; // less the probe itself
    for (int index = 0; index < kThunks; ++index) {
        used += Application().ObjectFromThunk(base + index * 13) != nullptr ? 1 : 0;
    }
    return used;
}

/// Calls everything a component can do; without a window nothing of it may do harm.
void UseEveryOperation(TmyComponent& component) {
    component.OnVisibilityChanged(true);
    component.OnPaint(nullptr);
    EXPECT_FALSE(component.HasFocus());
    component.SetFocus();
    component.Invalidate();
    component.InvalidateRect({0, 0, 5, 5});
    component.Update();
    component.SetEnabled(false);
    EXPECT_FALSE(component.IsEnabled());
    component.SetEnabled(true);
    component.SetVisible(true);
    EXPECT_TRUE(component.IsVisible());
    component.SetVisible(false);
    EXPECT_EQ(component.GetDC(), nullptr);
    component.ReleaseDC(nullptr);
    component.SetBounds(1, 2, 30, 40);
    EXPECT_EQ(component.GetClientWidth(), 30);
    EXPECT_EQ(component.GetClientHeight(), 40);
    component.SetPosition(3, 4);
    component.SetSize(-1, 50);
    component.SetClientSize(60, 70);
    POINT point;
    component.GetPosition(&point, true);
    component.SetFont(static_cast<HFONT>(GetStockObject(SYSTEM_FONT)));
    component.CreateCaret(1, 2, nullptr);
    component.ShowCaret(true);
    component.SetCaretPos(1, 1);
    component.DestroyCaret();
    component.UpdateBounds();
    component.SetText("text");
    EXPECT_STREQ(component.GetText().Text(), "");
    EXPECT_EQ(component.GetTextLength(), 0);
    component.SetRedraw(false);
    component.SetRedraw(true);
    component.SetDoubleBuffered(true);
    component.SetDoubleBuffered(false);
    EXPECT_FALSE(component.PostUserMessage(1, 0, 0));
    EXPECT_EQ(component.ShowModal(), 0);
    EXPECT_EQ(component.GetTopLevel(), nullptr);
    component.Realign();
    component.SetAlignment(Alignment::Fill);
    component.FitToChildren(1, 1);
    component.SetGrey(true);
    component.SetOverlay(true);
    component.SetBackColor(5);
    component.OnContextMenu(1, 2);
    component.WndProc(WM_SIZE, 0, 0);
    component.WndProc(WM_PAINT, 0, 0);
    component.DispatchMouse(MouseCode::LeftDown, 0, 1, 1);
    component.DispatchMouse(MouseCode::LeftUp, 0, 1, 1);
    component.DispatchMouse(MouseCode::Wheel, 1, 1, 1);
    WPARAM key = VK_TAB;
    component.OnKeyDown(key, 0);
    TmyControl child(&component, {0, 0, 5, 5});
    child.Invalidate();
    child.SetFocus();
    child.CreateCaret(1, -1, nullptr);
    EXPECT_EQ(child.GetDC(), nullptr);
}

TEST(Lifetime, Of5041WindowsAndOneMoreTheLastLivesWithoutAWindow) {
    TmyComponent parent(nullptr, "", kPopupHidden, 0, kPlace);
    const int usedBefore = UsedThunks();
    DebugOutput output;
    for (int round = 0; round < 2; ++round) {
        std::vector<std::unique_ptr<TmyComponent>> windows;
        for (int count = usedBefore; count < kThunks; ++count) {
            windows.push_back(
                std::make_unique<TmyComponent>(&parent, "", WS_CHILD, 0, Placement{0, 0, 1, 1}));
            ASSERT_NE(windows.back()->Window(), nullptr) << count;
        }
        EXPECT_TRUE(output.Lines().empty());
        TmyComponent extra(nullptr, "", WS_POPUP, 0, {0, 0, 1, 1});
        EXPECT_EQ(extra.Window(), nullptr);
        ASSERT_EQ(output.Lines().size(), 1u);
        EXPECT_EQ(output.Lines()[0], "No free WndProc thunk\r\n");
        UseEveryOperation(extra);
        windows[windows.size() / 2].reset();
        EXPECT_NE(Small()->Window(), nullptr); // one free is one window
        windows.clear();
        output.Clear();
    }
    EXPECT_EQ(Application().MaxThunkIndex(), kThunks - 1);
    EXPECT_EQ(UsedThunks(), usedBefore);
}

/// Windows of this thread, and where the next handles stand: a handle that is never freed would move them.
/// (The next window handle tells nothing: other programs on the desktop take and free handles of the same
/// table.)
struct Handles {
    unsigned windows;
    unsigned gdi;
    DWORD process;
    SIZE_T heapBlocks;
};

BOOL CALLBACK CountChild(HWND /*window*/, LPARAM count) {
    ++*reinterpret_cast<unsigned*>(count);
    return TRUE;
}

BOOL CALLBACK CountWithChildren(HWND window, LPARAM count) {
    ++*reinterpret_cast<unsigned*>(count);
    EnumChildWindows(window, CountChild, count);
    return TRUE;
}

Handles Count() {
    Handles handles{};
    EnumThreadWindows(GetCurrentThreadId(), CountWithChildren, reinterpret_cast<LPARAM>(&handles.windows));
    const HRGN region = CreateRectRgn(0, 0, 1, 1);
    handles.gdi = LOWORD(reinterpret_cast<std::uintptr_t>(region));
    DeleteObject(region);
    GetProcessHandleCount(GetCurrentProcess(), &handles.process);
    std::vector<HANDLE> heaps(64);
    heaps.resize(
        std::min<std::size_t>(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()), heaps.size()));
    for (const HANDLE heap : heaps) {
        PROCESS_HEAP_ENTRY entry{};
        HeapLock(heap);
        while (HeapWalk(heap, &entry) != 0) {
            handles.heapBlocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? 1 : 0;
        }
        HeapUnlock(heap);
    }
    return handles;
}

TEST(Lifetime, TenThousandWindowsLeaveNothingBehind) {
    constexpr int kWindows = 10000;
    constexpr int kAllowed = 100; // what the platform itself keeps ready; one per window would be 10000
    const auto makeOne = [] {
        TmyComponent top(nullptr, "some text", kPopupHidden, 0, kPlace);
        auto* child = new TmyComponent(&top, "child", kChild, 0, {0, 0, 10, 10});
        new TmyControl(child, {0, 0, 5, 5});
        top.SetStyleValue(StyleValue::BackColor, 3, true);
        child->SetDoubleBuffered(true);
        child->SetText("longer text than before");
        child->Invalidate();
    };
    for (int warm = 0; warm < 100; ++warm) {
        makeOne();
    }
    Pump();
    const Handles before = Count();
    const int thunksBefore = UsedThunks();
    for (int index = 0; index < kWindows / 2; ++index) { // two windows each
        makeOne();
    }
    Pump();
    const Handles after = Count();
    EXPECT_EQ(UsedThunks(), thunksBefore);
    EXPECT_EQ(after.windows, before.windows);
    EXPECT_NEAR(static_cast<double>(after.gdi), static_cast<double>(before.gdi), kAllowed);
    EXPECT_NEAR(static_cast<double>(after.process), static_cast<double>(before.process), kAllowed);
    EXPECT_NEAR(static_cast<double>(after.heapBlocks), static_cast<double>(before.heapBlocks), kAllowed);
}

TEST(Lifetime, ALateMessageToADeadWindowIsHarmless) {
    WNDPROC procedure = nullptr;
    HWND window = nullptr;
    {
        const std::unique_ptr<TmyComponent> component = Small();
        window = component->Window();
        procedure = reinterpret_cast<WNDPROC>(GetWindowLongA(window, GWL_WNDPROC));
    }
    const DebugOutput output;
    EXPECT_EQ(procedure(window, WM_TIMER, 1, 2), 0);
    EXPECT_EQ(output.Count("Message 113 to non-existing control "), 1);
}

struct Mourner {
    void OnDestroy(TmyControl* /*sender*/) { ++count; }
    int count = 0;
};

TEST(Lifetime, AWindowDestroyedByOthersTakesTheWholeTreeAlong) {
    EventLog log({"Destructor"});
    Mourner mourner;
    auto* top = new RecordingComponent(log, "top", nullptr, "", kPopup, DWORD{0}, kPlace);
    auto* panel = new RecordingControl(log, "panel", top, Placement{0, 0, 50, 50});
    auto* sub = new RecordingComponent(log, "sub", panel, "", kChild, DWORD{0}, Placement{0, 0, 20, 20});
    auto* deep = new RecordingComponent(log, "deep", sub, "", kChild, DWORD{0}, Placement{0, 0, 10, 10});
    auto* owned = new RecordingComponent(log, "owned", top, "", kPopupHidden, DWORD{0}, kPlace);
    for (TmyComponent* each : {static_cast<TmyComponent*>(top), static_cast<TmyComponent*>(sub),
                               static_cast<TmyComponent*>(deep), static_cast<TmyComponent*>(owned)}) {
        each->onDestroy.Bind<&Mourner::OnDestroy>(&mourner);
    }
    Pump();
    const int used = UsedThunks();
    DestroyWindow(top->Window());
    EXPECT_EQ(mourner.count, 4);
    EXPECT_EQ(log.Take().size(), 5u);
    EXPECT_EQ(UsedThunks(), used - 4);
}

TEST(Lifetime, AWindowInsideAHostsGoesWithIt) {
    Mourner mourner;
    const HWND host =
        CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 50, 50, nullptr, nullptr, nullptr, nullptr);
    auto* guest = new TmyComponent(nullptr, "", kPopupHidden, 0, kPlace);
    guest->onDestroy.Bind<&Mourner::OnDestroy>(&mourner);
    SetWindowLongA(guest->Window(), GWL_STYLE, WS_CHILD);
    SetParent(guest->Window(), host);
    DestroyWindow(host);
    EXPECT_EQ(mourner.count, 1);
}

// --- handlers that delete ----------------------------------------------------------------------------------

struct Deleter {
    template <typename... Arguments>
    void Delete(TmyControl* /*sender*/, Arguments... /*arguments*/) {
        delete victim;
        victim = nullptr;
    }
    TmyControl* victim = nullptr;
};

/// A control at work, and one event of it that deletes it or what is above it.
struct Scene {
    TmyComponent* top;
    TmyControl* control;
};

struct DeadlyEvent {
    const char* name;
    std::function<void(TmyControl*, Deleter*)> bind;
    std::function<void(const Scene&)> trigger;
};

constexpr LPARAM kInside = MAKELPARAM(15, 15);

std::vector<DeadlyEvent> DeadlyEvents() {
    return {
        {"timer", [](auto* c, auto* d) { c->onTimer.template Bind<&Deleter::Delete<UINT_PTR>>(d); },
         [](const Scene& s) { s.control->OnTimer(1); }},
        {"down",
         [](auto* c, auto* d) {
             c->onMouseDown.template Bind<&Deleter::Delete<MouseButton, WPARAM, int, int>>(d);
         },
         [](const Scene& s) { Send(*s.top, WM_LBUTTONDOWN, 0, kInside); }},
        {"up",
         [](auto* c, auto* d) {
             c->onMouseUp.template Bind<&Deleter::Delete<MouseButton, WPARAM, int, int>>(d);
         },
         [](const Scene& s) {
             Send(*s.top, WM_LBUTTONDOWN, 0, kInside);
             Send(*s.top, WM_LBUTTONUP, 0, kInside);
         }},
        {"right up",
         [](auto* c, auto* d) {
             c->onMouseUp.template Bind<&Deleter::Delete<MouseButton, WPARAM, int, int>>(d);
         },
         [](const Scene& s) { Send(*s.top, WM_RBUTTONUP, 0, kInside); }},
        {"right click",
         [](auto* c, auto* d) { c->onRightClick.template Bind<&Deleter::Delete<WPARAM, int, int>>(d); },
         [](const Scene& s) { Send(*s.top, WM_RBUTTONUP, 0, kInside); }},
        {"move",
         [](auto* c, auto* d) { c->onMouseMove.template Bind<&Deleter::Delete<WPARAM, int, int>>(d); },
         [](const Scene& s) { Send(*s.top, WM_MOUSEMOVE, 0, kInside); }},
        {"double click",
         [](auto* c, auto* d) { c->onDoubleClick.template Bind<&Deleter::Delete<int, int>>(d); },
         [](const Scene& s) {
             for (int click = 0; click < 2; ++click) {
                 Send(*s.top, WM_LBUTTONDOWN, 0, kInside);
                 Send(*s.top, WM_LBUTTONUP, 0, kInside);
             }
         }},
        {"resize", [](auto* c, auto* d) { c->onResize.template Bind<&Deleter::Delete<>>(d); },
         [](const Scene& s) { s.control->SetAlignment(Alignment::Top); }},
        {"resize by its own bounds",
         [](auto* c, auto* d) { c->onResize.template Bind<&Deleter::Delete<>>(d); },
         [](const Scene& s) { s.control->SetBounds(1, 1, 33, 44); }},
        {"hover", [](auto* c, auto* d) { c->onHover.template Bind<&Deleter::Delete<>>(d); },
         [](const Scene& s) { s.control->OnHover(); }},
        {"paint", [](auto* c, auto* d) { c->onPaint.template Bind<&Deleter::Delete<HDC>>(d); },
         [](const Scene& s) {
             s.control->Invalidate();
             s.control->Update();
         }},
        {"key down",
         [](auto* c, auto* d) { c->onKeyDown.template Bind<&Deleter::Delete<WPARAM&, LPARAM>>(d); },
         [](const Scene& s) {
             s.control->SetFocus();
             WPARAM key = VK_TAB; // by itself: a window's message goes one level down only
             s.control->OnKeyDown(key, 0);
         }},
        {"key preview",
         [](auto* c, auto* d) {
             c->GetTopLevel()->onKeyPreview.template Bind<&Deleter::Delete<WPARAM&, LPARAM, TmyControl*>>(d);
         },
         [](const Scene& s) {
             s.control->SetFocus();
             SendMessageA(GetFocus(), WM_KEYDOWN, VK_TAB, 0);
         }},
        {"character", [](auto* c, auto* d) { c->onKey.template Bind<&Deleter::Delete<WPARAM&, LPARAM>>(d); },
         [](const Scene& s) {
             s.control->SetFocus();
             SendMessageA(GetFocus(), WM_CHAR, 'x', 0);
         }},
        {"key up", [](auto* c, auto* d) { c->onKey.template Bind<&Deleter::Delete<WPARAM&, LPARAM>>(d); },
         [](const Scene& s) {
             s.control->SetFocus();
             SendMessageA(GetFocus(), WM_KEYUP, 'x', 0);
         }},
        {"focus", [](auto* c, auto* d) { c->onFocus.template Bind<&Deleter::Delete<bool>>(d); },
         [](const Scene& s) { s.control->SetFocus(); }},
        {"focus by tab", [](auto* c, auto* d) { c->onFocus.template Bind<&Deleter::Delete<bool>>(d); },
         [](const Scene& s) {
             s.top->SetFocus();
             SendMessageA(GetFocus(), WM_KEYDOWN, VK_TAB, 0);
         }},
        {"focus by click", [](auto* c, auto* d) { c->onFocus.template Bind<&Deleter::Delete<bool>>(d); },
         [](const Scene& s) { Send(*s.top, WM_LBUTTONDOWN, 0, kInside); }},
        {"wheel", [](auto* c, auto* d) { c->onWheel.template Bind<&Deleter::Delete<int, WPARAM, bool&>>(d); },
         [](const Scene& s) {
             s.control->SetFocus();
             SendMessageA(GetFocus(), WM_MOUSEWHEEL, MAKEWPARAM(0, 120), 0);
         }},
    };
}

enum class Victim { Control, Parent, Window };

void Play(const DeadlyEvent& event, bool windowed, Victim victim) {
    SCOPED_TRACE(std::string(event.name) + (windowed ? ", window" : ", light") + ", victim " +
                 std::to_string(static_cast<int>(victim)));
    const int used = UsedThunks();
    auto* top = new TmyComponent(nullptr, "", kPopup, 0, kPlace);
    auto* panel = new TmyControl(top, {5, 5, 100, 100});
    TmyControl* control = windowed ? new TmyComponent(panel, "", kChild, 0, {5, 5, 30, 30})
                                   : new TmyControl(panel, {5, 5, 30, 30});
    new TmyControl(panel, {50, 50, 10, 10}); // someone behind it in the list
    control->SetFocusable(true);
    Pump();
    Deleter deleter;
    deleter.victim = victim == Victim::Control ? control : victim == Victim::Parent ? panel : top;
    event.bind(control, &deleter);
    event.trigger({top, control});
    EXPECT_EQ(deleter.victim, nullptr);
    if (victim == Victim::Control) {
        EXPECT_NE(panel->FirstChild(), nullptr);
    }
    if (victim != Victim::Window) {
        top->onKeyPreview.Clear();
        Pump();
        EXPECT_EQ(Send(*top, WM_NULL, 5), 5);
        delete top;
    }
    Pump();
    EXPECT_EQ(UsedThunks(), used);
}

TEST(Lifetime, AHandlerMayDeleteItsControlInEveryEvent) {
    TmyComponent warm(nullptr, "", kPopup, 0, kPlace);
    Application().StartHover(&warm); // the hover monitor's own window stays
    for (const DeadlyEvent& event : DeadlyEvents()) {
        for (const bool windowed : {false, true}) {
            for (const Victim victim : {Victim::Control, Victim::Parent, Victim::Window}) {
                Play(event, windowed, victim);
            }
        }
    }
}

TEST(Lifetime, AHookMayDeleteItsComponent) {
    auto* top = new TmyComponent(nullptr, "", kPopup, 0, kPlace);
    Pump();
    Deleter deleter;
    deleter.victim = top;
    top->messageHook.Bind<&Deleter::Delete<UINT, WPARAM, LPARAM>>(&deleter);
    EXPECT_EQ(Send(*top, WM_TIMER, 1), 0);
    EXPECT_EQ(deleter.victim, nullptr);
    auto* other = new TmyComponent(nullptr, "", kPopup, 0, kPlace);
    deleter.victim = other;
    other->onContextMenu.Bind<&Deleter::Delete<int, int>>(&deleter);
    Send(*other, WM_CONTEXTMENU, 0, Point(1, 1));
    EXPECT_EQ(deleter.victim, nullptr);
}

} // namespace
} // namespace orva::toolkit
