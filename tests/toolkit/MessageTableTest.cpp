#include "tests/toolkit/DebugOutput.h"
#include "tests/toolkit/WindowSupport.h"

#include <algorithm>
#include <stdexcept>

#include <gtest/gtest.h>

namespace orva::toolkit {
namespace {

std::vector<UINT> originalMessages;
LRESULT originalResult = 0;

LRESULT CALLBACK Original(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    originalMessages.push_back(message);
    return originalResult != 0 ? originalResult : DefWindowProcA(window, message, wParam, lParam);
}

bool OriginalGot(UINT message) {
    const bool found = std::count(originalMessages.begin(), originalMessages.end(), message) != 0;
    originalMessages.clear();
    return found;
}

HWND lastWindow = nullptr;

LRESULT CALLBACK NoteLastWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCDESTROY) {
        lastWindow = window;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

/// Notes what a message hook is given.
struct HookTarget {
    void OnMessage(TmyControl* control, UINT message, WPARAM wParam, LPARAM lParam) {
        sender = control;
        log.Note("hook", "Message", message, wParam, lParam);
    }
    void OnContext(TmyControl* /*sender*/, int x, int y) { log.Note("hook", "Context", x, y); }
    EventLog log;
    TmyControl* sender = nullptr;
};

class MessageTable : public ::testing::Test {
protected:
    MessageTable() {
        child = new RecordingComponent(log, "child", &top, "", kChild, DWORD{0}, Placement{10, 10, 50, 40});
        light = new RecordingControl(log, "light", &top, Placement{100, 10, 50, 40});
        Pump();
        top.SetOriginal(Original);
        originalMessages.clear();
        originalResult = 0;
        log.Take();
    }

    void Watch(std::set<std::string> calls) {
        log = EventLog(std::move(calls));
        originalMessages.clear();
    }

    EventLog log;
    RecordingComponent top{log, "top", nullptr, "title", kPopup, DWORD{0}, kPlace};
    RecordingComponent* child;
    RecordingControl* light;
};

TEST_F(MessageTable, HookComesFirstWithSenderAndParameters) {
    HookTarget target;
    top.messageHook.Bind<&HookTarget::OnMessage>(&target);
    Watch({"OnUserMessage"});
    EXPECT_EQ(Send(top, WM_USER + 3, 4, 5), 0);
    EXPECT_EQ(target.log.Take(), (EventLog::Entries{"hook.Message(1027,4,5)"}));
    EXPECT_EQ(target.sender, &top);
    EXPECT_EQ(log.Take(), (EventLog::Entries{"top.OnUserMessage(3,4,5)"}));
    // The hook sees even what is answered at once.
    Send(top, WM_NULL, 9, 8);
    EXPECT_EQ(target.log.Take(), (EventLog::Entries{"hook.Message(0,9,8)"}));
    top.messageHook.Clear();
}

TEST_F(MessageTable, NullReturnsItsParameterAtOnce) {
    EXPECT_EQ(Send(top, WM_NULL, 1234, 5), 1234);
    EXPECT_FALSE(OriginalGot(WM_NULL));
}

TEST_F(MessageTable, MessagesAboveUserGoToTheUserSlotAndOn) {
    Watch({"OnUserMessage"});
    originalResult = 88;
    EXPECT_EQ(Send(top, WM_USER, 1, 2), 88); // 1024 itself is not above
    EXPECT_TRUE(log.Take().empty());
    EXPECT_TRUE(OriginalGot(WM_USER));
    EXPECT_EQ(Send(top, WM_USER + 1, 1, 2), 88);
    EXPECT_EQ(log.Take(), (EventLog::Entries{"top.OnUserMessage(1,1,2)"}));
    EXPECT_TRUE(OriginalGot(WM_USER + 1));
    EXPECT_EQ(Send(top, WM_USER + 16384, 3, 4), 88);
    EXPECT_EQ(log.Take(), (EventLog::Entries{"top.OnUserMessage(16384,3,4)"}));
    originalMessages.clear();
}

TEST_F(MessageTable, UnlistedMessagesGoToTheOriginalAlone) {
    Watch({"OnUserMessage"});
    originalResult = 31;
    EXPECT_EQ(Send(top, WM_GETICON, 0, 0), 31);
    EXPECT_TRUE(OriginalGot(WM_GETICON));
    EXPECT_TRUE(log.Take().empty());
}

TEST_F(MessageTable, DestroyCallsTheOriginalAndDeletesTheObject) {
    Watch({"Destructor"});
    child->SetOriginal(Original);
    const HWND window = child->Window();
    DestroyWindow(window);
    EXPECT_TRUE(OriginalGot(WM_DESTROY));
    EXPECT_EQ(log.Take(), (EventLog::Entries{"child.Destructor()"}));
    EXPECT_EQ(IsWindow(window), FALSE);
    EXPECT_EQ(top.FirstChild(), light);
}

TEST_F(MessageTable, DestroyingTheObjectGivesTheOriginalItsLastMessagesWithTheWindow) {
    child->SetOriginal(NoteLastWindow);
    const HWND window = child->Window();
    lastWindow = nullptr;
    delete child;
    // A platform class frees there what it keeps for the window.
    EXPECT_EQ(lastWindow, window);
}

TEST_F(MessageTable, SizeStoresTheClientSizeRealignsAndResizes) {
    Watch({"Realign", "OnResize"});
    Send(top, WM_SIZE, SIZE_RESTORED, Point(90, 80));
    EXPECT_EQ(top.GetClientWidth(), 90);
    EXPECT_EQ(top.GetClientHeight(), 80);
    EXPECT_EQ(log.Take(), (EventLog::Entries{"top.Realign()", "top.OnResize()"}));
    EXPECT_TRUE(OriginalGot(WM_SIZE));
}

TEST_F(MessageTable, SizeOfAMinimisedWindowIsIgnored) {
    Watch({"Realign", "OnResize"});
    Send(top, WM_SIZE, SIZE_MINIMIZED, Point(0, 0));
    EXPECT_EQ(top.GetClientWidth(), 200);
    EXPECT_EQ(top.GetClientHeight(), 150);
    EXPECT_TRUE(log.Take().empty());
}

TEST_F(MessageTable, SizeOfAnAlignedComponentRealignsItsParent) {
    child->SetAlignment(Alignment::Top);
    Watch({"Realign"});
    Send(*child, WM_SIZE, SIZE_RESTORED, Point(20, 20));
    EXPECT_EQ(log.Take(), (EventLog::Entries{"child.Realign()", "top.Realign()"}));
    child->SetAlignment(Alignment::None);
    log.Take();
    Send(*child, WM_SIZE, SIZE_RESTORED, Point(30, 20));
    EXPECT_EQ(log.Take(), (EventLog::Entries{"child.Realign()"}));
}

TEST_F(MessageTable, EnableSetsTheDisabledStateAndTellsTheChildren) {
    Watch({"SetParentEnabled", "InvalidateRegion"});
    Send(top, WM_ENABLE, FALSE);
    EXPECT_TRUE(top.HasState(ControlState::Disabled));
    EXPECT_TRUE(light->HasState(ControlState::ParentDisabled));
    EXPECT_TRUE(child->HasState(ControlState::ParentDisabled));
    const EventLog::Entries entries = log.Take();
    EXPECT_NE(std::find(entries.begin(), entries.end(), "top.InvalidateRegion()"), entries.end());
    EXPECT_NE(std::find(entries.begin(), entries.end(), "light.SetParentEnabled(0)"), entries.end());
    EXPECT_NE(std::find(entries.begin(), entries.end(), "child.SetParentEnabled(0)"), entries.end());
    Send(top, WM_ENABLE, TRUE);
    EXPECT_FALSE(top.HasState(ControlState::Disabled));
    EXPECT_TRUE(light->IsEnabled());
}

TEST_F(MessageTable, PaintPaints) {
    Watch({"OnPaint"});
    top.Invalidate();
    light->Invalidate();
    Send(top, WM_PAINT);
    EXPECT_EQ(log.Take(), (EventLog::Entries{"light.OnPaint()", "top.OnPaint()"}));
    EXPECT_TRUE(UpdateRegion(top).IsEmpty());
}

TEST_F(MessageTable, CloseOfTheMainWindowPostsQuit) {
    Application().mainWindow = &top;
    Send(top, WM_CLOSE);
    Application().mainWindow = nullptr;
    EXPECT_FALSE(OriginalGot(WM_CLOSE));
    EXPECT_NE(IsWindow(top.Window()), FALSE);
    MSG message{};
    EXPECT_NE(PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE), 0);
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
}

TEST_F(MessageTable, AnyOtherCloseGoesToTheOriginal) {
    auto* other = new RecordingComponent(log, "other", nullptr, "", kPopupHidden, DWORD{0}, kPlace);
    other->SetOriginal(Original);
    Watch({"Destructor"});
    Send(*other, WM_CLOSE);
    EXPECT_TRUE(OriginalGot(WM_CLOSE));
    EXPECT_EQ(log.Take(), (EventLog::Entries{"other.Destructor()"})); // the default destroys
}

TEST_F(MessageTable, EraseFillsUnlessTheBufferWillCover) {
    Watch({"OnEraseBackground"});
    const HDC dc = GetDC(top.Window());
    EXPECT_EQ(Send(top, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc)), 1);
    EXPECT_EQ(log.Take(), (EventLog::Entries{"top.OnEraseBackground()"}));
    top.SetDoubleBuffered(true);
    EXPECT_EQ(Send(top, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc)), 1);
    EXPECT_TRUE(log.Take().empty());
    ReleaseDC(top.Window(), dc);
}

TEST_F(MessageTable, ShowWindowPostsThePrivateMessage) {
    Watch({"OnVisibilityChanged"});
    Send(*child, WM_SHOWWINDOW, FALSE, 0);
    EXPECT_FALSE(child->HasState(ControlState::Hidden));
    MSG message{};
    ASSERT_NE(PeekMessageA(&message, child->Window(), 0x8000, 0x8000, PM_REMOVE), 0);
    EXPECT_EQ(message.wParam, 0u);
    Send(*child, WM_SHOWWINDOW, TRUE, SW_PARENTOPENING);
    ASSERT_NE(PeekMessageA(&message, child->Window(), 0x8000, 0x8000, PM_REMOVE), 0);
    EXPECT_EQ(message.wParam, 1u);
    EXPECT_EQ(message.lParam, SW_PARENTOPENING);
}

TEST_F(MessageTable, PrivateMessageSetsTheVisibilityState) {
    Watch({"OnVisibilityChanged", "OnUserMessage"});
    Send(*child, 0x8000, FALSE);
    EXPECT_TRUE(child->HasState(ControlState::Hidden));
    EXPECT_NE(GetWindowLongA(child->Window(), GWL_STYLE) & WS_VISIBLE, 0); // the state follows, no more
    // It is above WM_USER, too, and goes on like all of those.
    EXPECT_EQ(log.Take(),
              (EventLog::Entries{"child.OnVisibilityChanged(0)", "child.OnUserMessage(31744,0,0)"}));
    Send(*child, 0x8000, TRUE);
    EXPECT_FALSE(child->HasState(ControlState::Hidden));
}

TEST_F(MessageTable, SetCursorTakesTheCursorOfTheControlUnderThePointer) {
    const HCURSOR hand = LoadCursorA(nullptr, IDC_HAND);
    const HCURSOR cross = LoadCursorA(nullptr, IDC_CROSS);
    const HCURSOR wait = LoadCursorA(nullptr, IDC_WAIT);
    auto* inner = new TmyControl(light, {5, 5, 10, 10});
    const LPARAM client = MAKELPARAM(HTCLIENT, WM_MOUSEMOVE);
    const auto self = reinterpret_cast<WPARAM>(top.Window());

    const auto pointAt = [this](int x, int y) {
        POINT point{x, y};
        ClientToScreen(top.Window(), &point);
        SetCursorPos(point.x, point.y);
    };
    pointAt(120, 40); // the light child, not its inner one
    originalMessages.clear();
    Send(top, WM_SETCURSOR, self, client);
    EXPECT_TRUE(OriginalGot(WM_SETCURSOR)); // no cursor anywhere

    top.SetCursor(hand);
    EXPECT_EQ(Send(top, WM_SETCURSOR, self, client), 1);
    EXPECT_EQ(::GetCursor(), hand);
    EXPECT_FALSE(OriginalGot(WM_SETCURSOR));

    light->SetCursor(cross);
    EXPECT_EQ(light->GetCursor(), cross);
    EXPECT_EQ(Send(top, WM_SETCURSOR, self, client), 1);
    EXPECT_EQ(::GetCursor(), cross);

    inner->SetCursor(wait);
    pointAt(107, 17);
    EXPECT_EQ(Send(top, WM_SETCURSOR, self, client), 1);
    EXPECT_EQ(::GetCursor(), wait);

    pointAt(5, 100); // no child there
    EXPECT_EQ(Send(top, WM_SETCURSOR, self, client), 1);
    EXPECT_EQ(::GetCursor(), hand);
}

TEST_F(MessageTable, PosChangingConstrainsUnlessNothingWouldChange) {
    Watch({"OnConstrainBounds"});
    WINDOWPOS position{};
    position.hwnd = child->Window();
    position.x = 10;
    position.y = 10;
    position.cx = 50;
    position.cy = 40;
    const auto send = [&] { Send(*child, WM_WINDOWPOSCHANGING, 0, reinterpret_cast<LPARAM>(&position)); };
    send();
    EXPECT_TRUE(log.Take().empty());
    position.cx = 77;
    position.flags = SWP_NOMOVE | SWP_NOSIZE;
    send();
    EXPECT_TRUE(log.Take().empty());
    position.flags = SWP_NOSIZE;
    send(); // the width does not count
    EXPECT_TRUE(log.Take().empty());
    position.flags = SWP_NOMOVE;
    position.x = 999;
    send();
    EXPECT_EQ(log.Take(), (EventLog::Entries{"child.OnConstrainBounds(10,10,77,40)"}));
    position.flags = 0;
    position.x = 12;
    child->constrain = [](int* x, int* y, int* width, int* height) {
        *x += 1;
        *y += 2;
        *width += 3;
        *height += 4;
    };
    send();
    EXPECT_EQ(log.Take(), (EventLog::Entries{"child.OnConstrainBounds(12,10,77,40)"}));
    EXPECT_EQ(position.x, 13);
    EXPECT_EQ(position.y, 12);
    EXPECT_EQ(position.cx, 80);
    EXPECT_EQ(position.cy, 44);
}

TEST_F(MessageTable, PosChangedUpdatesTheBoundsAndTellsOfMoves) {
    Watch({"OnMove", "OnResize"});
    MoveWindow(child->Window(), 20, 30, 50, 40, TRUE);
    EXPECT_EQ(child->Bounds(), (RECT{20, 30, 70, 70}));
    EXPECT_EQ(log.Take(), (EventLog::Entries{"child.OnMove()"}));
    MoveWindow(child->Window(), 20, 30, 60, 45, TRUE);
    EXPECT_EQ(child->Bounds(), (RECT{20, 30, 80, 75}));
    EXPECT_EQ(log.Take(), (EventLog::Entries{"child.OnResize()"}));
}

TEST_F(MessageTable, PosChangedPostsTheVisibility) {
    SetWindowPos(child->Window(), nullptr, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_HIDEWINDOW);
    EXPECT_FALSE(child->HasState(ControlState::Hidden)); // not before messages are pumped
    Pump();
    EXPECT_TRUE(child->HasState(ControlState::Hidden));
    SetWindowPos(child->Window(), nullptr, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_SHOWWINDOW);
    EXPECT_TRUE(child->HasState(ControlState::Hidden));
    Pump();
    EXPECT_FALSE(child->HasState(ControlState::Hidden));
}

TEST_F(MessageTable, NotifyCallsTheOriginalAndThenTheSender) {
    Watch({"OnNotify"});
    NMHDR header{child->Window(), 7, 1200};
    child->notifyResult = 99;
    EXPECT_EQ(Send(top, WM_NOTIFY, 7, reinterpret_cast<LPARAM>(&header)), 99);
    EXPECT_TRUE(OriginalGot(WM_NOTIFY));
    EXPECT_EQ(log.Take(), (EventLog::Entries{"child.OnNotify(1200)"}));
    header.hwndFrom = GetDesktopWindow();
    originalResult = 17;
    EXPECT_EQ(Send(top, WM_NOTIFY, 7, reinterpret_cast<LPARAM>(&header)), 17);
    EXPECT_TRUE(log.Take().empty());
    originalMessages.clear();
}

TEST_F(MessageTable, ContextMenuFiresWithThePlaceOrThePointers) {
    HookTarget target;
    top.onContextMenu.Bind<&HookTarget::OnContext>(&target);
    Watch({"OnContextMenu"});
    EXPECT_EQ(Send(top, WM_CONTEXTMENU, 0, Point(-7, 120)), 0);
    EXPECT_FALSE(OriginalGot(WM_CONTEXTMENU));
    EXPECT_EQ(log.Take(), (EventLog::Entries{"top.OnContextMenu(-7,120)"}));
    EXPECT_EQ(target.log.Take(), (EventLog::Entries{"hook.Context(-7,120)"}));
    SetCursorPos(321, 234);
    Send(top, WM_CONTEXTMENU, 0, Point(-1, -1));
    EXPECT_EQ(target.log.Take(), (EventLog::Entries{"hook.Context(321,234)"}));
    top.onContextMenu.Clear();
}

TEST_F(MessageTable, CommandGoesToTheSendersObject) {
    Watch({"OnCommand"});
    child->commandResult = 55;
    EXPECT_EQ(Send(top, WM_COMMAND, 0x03000001, reinterpret_cast<LPARAM>(child->Window())), 55);
    EXPECT_EQ(log.Take(), (EventLog::Entries{"child.OnCommand(50331649)"}));
    EXPECT_FALSE(OriginalGot(WM_COMMAND));
    EXPECT_EQ(Send(top, WM_COMMAND, 3, 0), 0);
    EXPECT_TRUE(log.Take().empty());
    EXPECT_TRUE(OriginalGot(WM_COMMAND));
}

TEST_F(MessageTable, TimerCallsItsSlot) {
    Watch({"OnTimer"});
    Send(top, WM_TIMER, 17);
    EXPECT_EQ(log.Take(), (EventLog::Entries{"top.OnTimer(17)"}));
    EXPECT_TRUE(OriginalGot(WM_TIMER));
}

TEST_F(MessageTable, ControlColoursAreTheSendersStyle) {
    child->SetStyleValue(StyleValue::BackColor, 0x102030, true);
    child->SetTextColor(0x405060);
    child->SetDisabledTextColor(0x708090);
    HFONT font = CreateFontA(-17, 0, 0, 0, FW_BOLD, 0, 0, 0, 0, 0, 0, 0, 0, "Arial");
    child->SetFont(font);
    const HDC dc = CreateCompatibleDC(nullptr);
    for (UINT message = 307; message <= 312; ++message) {
        SetDCBrushColor(dc, 0);
        SelectObject(dc, GetStockObject(SYSTEM_FONT));
        EXPECT_EQ(Send(top, message, reinterpret_cast<WPARAM>(dc), reinterpret_cast<LPARAM>(child->Window())),
                  reinterpret_cast<LRESULT>(GetStockObject(DC_BRUSH)))
            << message;
        EXPECT_EQ(GetDCBrushColor(dc), 0x102030u) << message;
        EXPECT_EQ(::GetTextColor(dc), 0x405060u) << message;
        EXPECT_EQ(GetCurrentObject(dc, OBJ_FONT), font) << message;
    }
    child->SetEnabled(false);
    Send(top, WM_CTLCOLOREDIT, reinterpret_cast<WPARAM>(dc), reinterpret_cast<LPARAM>(child->Window()));
    EXPECT_EQ(::GetTextColor(dc), 0x708090u);
    originalMessages.clear();
    Send(top, WM_CTLCOLOREDIT, reinterpret_cast<WPARAM>(dc), reinterpret_cast<LPARAM>(GetDesktopWindow()));
    EXPECT_TRUE(OriginalGot(WM_CTLCOLOREDIT)); // a stranger's
    DeleteDC(dc);
    child->SetFont(InheritedFont());
    DeleteObject(font);
}

TEST_F(MessageTable, MouseMessagesAreDispatched) {
    Watch({"Move", "LeftDown", "LeftUp", "RightDown", "RightUp"});
    Send(top, WM_MOUSEMOVE, MK_SHIFT, Point(110, 15));
    Send(top, WM_LBUTTONDOWN, MK_LBUTTON, Point(111, 16));
    EXPECT_EQ(GetCapture(), top.Window());
    Send(top, WM_LBUTTONUP, 0, Point(112, 17));
    EXPECT_EQ(GetCapture(), nullptr);
    Send(top, WM_RBUTTONDOWN, MK_RBUTTON, Point(5, 120));
    EXPECT_EQ(GetCapture(), nullptr);
    Send(top, WM_RBUTTONUP, 0, Point(6, 121));
    EXPECT_EQ(log.Take(),
              (EventLog::Entries{"light.Move(4,10,5)", "light.LeftDown(1,11,6)", "light.LeftUp(0,12,7)",
                                 "top.RightDown(2,5,120)", "top.RightUp(0,6,121)"}));
    for (const UINT message : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONUP, WM_RBUTTONDOWN, WM_RBUTTONUP}) {
        EXPECT_NE(std::count(originalMessages.begin(), originalMessages.end(), message), 0) << message;
    }
}

TEST_F(MessageTable, WheelIsInNotchesAndReturnsZero) {
    Watch({"Wheel"});
    originalResult = 5;
    const auto wheel = [this](int delta) {
        return Send(top, WM_MOUSEWHEEL, MAKEWPARAM(MK_CONTROL, delta), 0);
    };
    EXPECT_EQ(wheel(240), 0);
    EXPECT_EQ(wheel(-120), 0);
    EXPECT_EQ(wheel(119), 0);
    EXPECT_EQ(wheel(-180), 0);
    EXPECT_EQ(log.Take(), (EventLog::Entries{"top.Wheel(2,self)", "top.Wheel(-1,self)", "top.Wheel(0,self)",
                                             "top.Wheel(-1,self)"}));
    EXPECT_FALSE(OriginalGot(WM_MOUSEWHEEL));
}

TEST_F(MessageTable, ExceptionOfAHandlerIsCaughtAndTraced) {
    struct Thrower {
        void Throw(TmyControl* /*sender*/, UINT_PTR id) {
            if (id == 1) {
                throw std::runtime_error("out of order");
            }
            throw 5;
        }
    } thrower;
    top.onTimer.Bind<&Thrower::Throw>(&thrower);
    const DebugOutput output;
    Application().traceEnabled = 1;
    EXPECT_EQ(Send(top, WM_TIMER, 1), 0);
    EXPECT_EQ(Send(top, WM_TIMER, 2), 0);
    Application().traceEnabled = 0;
    EXPECT_EQ(output.Count("out of order"), 1);
    EXPECT_EQ(output.Lines().size(), 2u);
    top.onTimer.Clear();
    EXPECT_EQ(Send(top, WM_NULL, 6), 6); // still at work
}

// --- what the components' own operations send --------------------------------------------------------------

TEST_F(MessageTable, PostUserMessageRefusesAnIdAbove16384) {
    Watch({"OnUserMessage"});
    EXPECT_FALSE(top.PostUserMessage(16385, 1, 2));
    EXPECT_TRUE(top.PostUserMessage(16384, 1, 2));
    EXPECT_TRUE(top.PostUserMessage(1, 3, 4));
    Pump();
    EXPECT_EQ(log.Take(), (EventLog::Entries{"top.OnUserMessage(16384,1,2)", "top.OnUserMessage(1,3,4)"}));
}

TEST_F(MessageTable, TextIsTheWindows) {
    EXPECT_STREQ(top.GetText().Text(), "title");
    Watch({"InvalidateRegion"});
    top.SetText("another");
    EXPECT_EQ(log.Take(), (EventLog::Entries{"top.InvalidateRegion()"}));
    EXPECT_TRUE(OriginalGot(WM_SETTEXT));
    EXPECT_EQ(top.GetTextLength(), 7);
    top.SetText(TmyString("text of a string"));
    EXPECT_STREQ(top.GetText().Text(), "text of a string");
    char buffer[8] = "???????";
    EXPECT_EQ(top.GetText(buffer, 5), 4);
    EXPECT_STREQ(buffer, "text");
    EXPECT_EQ(top.GetText(buffer, 0), 0);
    top.SetText("");
    EXPECT_STREQ(top.GetText().Text(), "");
    EXPECT_EQ(top.GetTextLength(), 0);
}

TEST_F(MessageTable, RedrawSwitchedOnPaintsEverything) {
    Settle(top);
    Watch({"OnPaint"});
    top.SetRedraw(false);
    EXPECT_TRUE(OriginalGot(WM_SETREDRAW));
    top.SetRedraw(true);
    EXPECT_TRUE(UpdateRegion(top).Is({{0, 0, 200, 150}})) << UpdateRegion(top);
    EXPECT_TRUE(UpdateRegion(*child).Is({{0, 0, 50, 40}})) << UpdateRegion(*child);
}

} // namespace
} // namespace orva::toolkit
