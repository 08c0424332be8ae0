#include "tests/toolkit/EntrySupport.h"
#include "toolkit/FrameDrawing.h"
#include "toolkit/TextDrawing.h"
#include "toolkit/TypeRegistry.h"

namespace orva::toolkit {
namespace {

constexpr COLORREF kWindowColor = 0x636363;
constexpr int kFrame = 3; // style value 4 of a root

class EditTest : public EntryTest {
protected:
    /// Another control in the tab order.
    TmyEdit& Other() {
        other = other != nullptr ? other : new TmyEdit(&top, "", {10, 150, 80, 20});
        return *other;
    }

    TmyEdit& edit = *new TmyEdit(&top, "text", {10, 10, 120, 20});
    TmyEdit* other = nullptr;
};

TEST_F(EditTest, IsOneWindowOfThePlatformsClass) {
    char name[16]{};
    GetClassNameA(edit.Window(), name, sizeof name);
    EXPECT_STRCASEEQ(name, "EDIT");
    EXPECT_EQ(TmyApplication::ObjectFromWindow(edit.Window()), &edit);
    EXPECT_EQ(::GetParent(edit.Window()), top.Window());
    EXPECT_EQ(GetWindow(top.Window(), GW_CHILD), edit.Window());
    EXPECT_EQ(GetWindow(edit.Window(), GW_HWNDNEXT), nullptr);
    EXPECT_EQ(edit.Bounds(), (RECT{10, 10, 130, 30}));
    EXPECT_EQ(Text(edit), "text");
    EXPECT_TRUE(edit.HasState(ControlState::Focusable));
    EXPECT_FALSE(edit.HasState(ControlState::Hidden));
    const TypeRecord* type = FindType(&edit);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->typeId, 7u);
    EXPECT_STREQ(type->name, "Edit");
}

TEST_F(EditTest, ArmsNoSlotForTheNextWindow) {
    EXPECT_EQ(Application().TakeWindowUnderConstruction(), nullptr);
    const HWND foreign =
        CreateWindowExA(0, "STATIC", "", WS_CHILD, 0, 0, 5, 5, top.Window(), nullptr, nullptr, nullptr);
    EXPECT_EQ(TmyApplication::ObjectFromWindow(foreign), nullptr);
    DestroyWindow(foreign);
}

TEST_F(EditTest, FollowsTheStyleItIsGiven) {
    auto* hidden = new TmyEdit(&top, nullptr, {0, 0, 50, 20}, WS_CHILD | ES_MULTILINE);
    EXPECT_TRUE(hidden->HasState(ControlState::Hidden));
    EXPECT_FALSE(hidden->HasState(ControlState::Focusable));
    EXPECT_EQ(Text(*hidden), "");
    hidden->SetVisible(true);
    Pump();
    EXPECT_TRUE(hidden->IsVisible());
}

TEST_F(EditTest, StaysHiddenBelowAHiddenControlWithoutAWindow) {
    auto* light = new TmyControl(&top, {50, 40, 100, 60});
    light->SetVisible(false);
    auto* below = new TmyEdit(light, "", {5, 6, 40, 20});
    EXPECT_FALSE(IsWindowVisible(below->Window()));
    light->SetVisible(true);
    EXPECT_TRUE(IsWindowVisible(below->Window()));
    EXPECT_EQ(below->Bounds(), (RECT{5, 6, 45, 26}));
    RECT onTop{};
    GetWindowRect(below->Window(), &onTop);
    MapWindowPoints(nullptr, top.Window(), reinterpret_cast<POINT*>(&onTop), 2);
    EXPECT_EQ(onTop, (RECT{55, 46, 95, 66}));
}

TEST_F(EditTest, DiesWithItsWindowAndFreesTheWindowWithItself) {
    EventCount<> gone;
    gone.Watch(edit.onDestroy);
    DestroyWindow(edit.Window());
    EXPECT_EQ(gone.Take(), 1);
    EXPECT_EQ(top.FirstChild(), nullptr);
    auto* second = new TmyEdit(&top, "", {0, 0, 50, 20});
    const HWND window = second->Window();
    delete second;
    EXPECT_FALSE(IsWindow(window));
}

// --- the frame ---------------------------------------------------------------------------------------------

TEST_F(EditTest, ReservesTheFrameAndTheUnitsRoom) {
    EXPECT_EQ(edit.GetClientWidth(), 120 - 2 * kFrame);
    edit.SetUnitWidth(24);
    const RECT client = ClientInWindow(edit);
    EXPECT_EQ(client.left, kFrame);
    EXPECT_EQ(client.right, 120 - kFrame - 24);
    EXPECT_EQ(edit.GetClientWidth(), 120 - 2 * kFrame - 24);
    EXPECT_EQ(edit.GetUnitWidth(), 24);
    edit.SetUnitWidth(-5);
    EXPECT_EQ(edit.GetUnitWidth(), 0);
    EXPECT_EQ(edit.GetClientWidth(), 120 - 2 * kFrame);
}

TEST_F(EditTest, PutsItsLineInTheMiddleOfTheHeight) {
    for (const int height : {20, 21, 34, 35, 50}) {
        edit.SetSize(120, height);
        const RECT client = ClientInWindow(edit);
        const int clientHeight = static_cast<int>(client.bottom - client.top);
        EXPECT_EQ(client.top, (height - clientHeight) / 2) << height;
        EXPECT_GE(clientHeight, std::min(edit.TextHeight(), height - 2 * kFrame));
        EXPECT_LE(clientHeight, edit.TextHeight() + 1) << height;
    }
    auto* lines = new TmyEdit(&top, "", {0, 50, 100, 100}, kEditStyle | ES_MULTILINE);
    EXPECT_EQ(ClientInWindow(*lines), (RECT{kFrame, kFrame, 100 - kFrame, 100 - kFrame}));
}

TEST_F(EditTest, BearsSizesSmallerThanItsFrame) {
    edit.SetUnitWidth(30);
    for (const int size : {40, 10, 5, 1, 0}) {
        edit.SetSize(size, size);
        PaintNow(edit);
        EXPECT_GE(edit.GetClientWidth(), 0);
        EXPECT_GE(edit.GetClientHeight(), 0);
    }
}

TEST_F(EditTest, FollowsBorderWidthAndFont) {
    edit.SetStyleValue(StyleValue::BorderWidth, 1, true);
    EXPECT_EQ(ClientInWindow(edit).left, 1);
    EXPECT_EQ(edit.GetClientWidth(), 118);
    edit.SetSize(120, 60);
    const HFONT large = CreateFontA(-30, 0, 0, 0, FW_NORMAL, 0, 0, 0, 0, 0, 0, 0, 0, "Arial");
    edit.SetFont(large);
    EXPECT_NEAR(edit.GetClientHeight(), edit.TextHeight(), 1);
    EXPECT_EQ(Send(edit, WM_GETFONT), reinterpret_cast<LRESULT>(large));
    edit.SetFont(InheritedFont());
    DeleteObject(large);
}

TEST_F(EditTest, HasMarginsOfOnePixel) {
    EXPECT_EQ(Send(edit, EM_GETMARGINS), MAKELONG(1, 1));
    const HFONT large = CreateFontA(-30, 0, 0, 0, FW_NORMAL, 0, 0, 0, 0, 0, 0, 0, 0, "Arial");
    top.SetFont(large);
    EXPECT_EQ(Send(edit, EM_GETMARGINS), MAKELONG(1, 1));
    EXPECT_EQ(Send(edit, WM_GETFONT), reinterpret_cast<LRESULT>(large));
    top.SetFont(InheritedFont());
    DeleteObject(large);
}

TEST_F(EditTest, DrawsASunkenFrame) {
    PaintNow(edit);
    const COLORREF topLeft = PixelAt(edit, 0, 0);
    const COLORREF bottomRight = PixelAt(edit, 119, 19);
    EXPECT_LT(GetRValue(topLeft), GetRValue(bottomRight));
    EXPECT_EQ(PixelAt(edit, 60, 0), topLeft);
    EXPECT_EQ(PixelAt(edit, 60, 19), bottomRight);
    // Nothing of the frame inside the border, nor of the background in it.
    EXPECT_EQ(CountPixels(edit, {kFrame, kFrame, 120 - kFrame, 20 - kFrame}, topLeft), 0);
    EXPECT_EQ(CountPixels(edit, {0, 0, 120, kFrame}, edit.GetStyleValue(StyleValue::BackColor)), 0);
}

TEST_F(EditTest, FrameIsOfStyle3OrOfStyle7WhenGreyInItsColours) {
    edit.SetStyleValue(StyleValue::WindowColor, 0x806040, true);
    for (const std::uint32_t brightness : {100u, 140u}) {
        edit.SetStyleValue(StyleValue::Brightness, brightness);
        for (const bool grey : {false, true}) {
            edit.SetGrey(grey);
            PaintNow(edit);
            const Snapshot shown = Snapshot::OfWindow(edit);
            const Snapshot frame = Snapshot::Drawn(120, 20, 0, [&](HDC dc) {
                DrawFrame(dc, {0, 0, 120, 20}, grey ? 7 : 3, kFrame, 0x806040, static_cast<int>(brightness));
            });
            for (int y = 0; y < 20; ++y) {
                for (int x = 0; x < 120; ++x) {
                    if (x < kFrame || y < kFrame || x >= 120 - kFrame || y >= 20 - kFrame) {
                        ASSERT_EQ(shown.At(x, y), frame.At(x, y)) << x << ", " << y << (grey ? ", grey" : "");
                    }
                }
            }
        }
    }
}

TEST_F(EditTest, ABorderOfThePlatformChangesNothing) {
    TmyEdit bordered(&top, "text", {10, 50, 120, 20}, kEditStyle | WS_BORDER, WS_EX_CLIENTEDGE);
    EXPECT_EQ(ClientInWindow(bordered), ClientInWindow(edit));
    PaintNow(edit);
    PaintNow(bordered);
    const Snapshot shown = Snapshot::OfWindow(bordered);
    EXPECT_EQ(shown.Differences(shown.Whole(), Snapshot::OfWindow(edit)), 0);
    // One that is given later has no room either: the toolkit alone says what the client area is.
    const RECT before = ClientInWindow(edit);
    SetWindowLongA(edit.Window(), GWL_EXSTYLE, WS_EX_CLIENTEDGE);
    edit.SetUnitWidth(10);
    edit.SetUnitWidth(0);
    EXPECT_EQ(ClientInWindow(edit), before);
}

TEST_F(EditTest, TextIsInTheTextColourOnTheControlBackground) {
    edit.SetStyleValue(StyleValue::BackColor, 0x402010, true);
    edit.SetTextColor(0x00FFFF);
    PaintNow(edit);
    const Snapshot enabled(edit);
    EXPECT_GT(enabled.Count(enabled.Whole(), 0x00FFFF), 10);
    EXPECT_EQ(enabled.Count(enabled.Whole(), 0x00FFFF) + enabled.Count(enabled.Whole(), 0x402010),
              enabled.Width() * enabled.Height());
    edit.SetEnabled(false);
    PaintNow(edit);
    const Snapshot disabled(edit);
    EXPECT_EQ(disabled.Count(disabled.Whole(), 0x00FFFF), 0);
    EXPECT_EQ(disabled.CountOther(disabled.Whole(), 0x402010), enabled.CountOther(enabled.Whole(), 0x402010));
}

TEST_F(EditTest, HasAFainterFrameWhenGrey) {
    PaintNow(edit);
    const int sunken = GetRValue(PixelAt(edit, 60, 0));
    edit.SetGrey(true);
    PaintNow(edit);
    const int faint = GetRValue(PixelAt(edit, 60, 0));
    EXPECT_GT(faint, sunken);
    EXPECT_NE(static_cast<COLORREF>(faint), edit.GetStyleValue(StyleValue::BackColor));
    edit.SetGrey(false);
    PaintNow(edit);
    EXPECT_EQ(GetRValue(PixelAt(edit, 60, 0)), sunken);
}

TEST_F(EditTest, MarksTheFocusOnTheInnermostRingOfItsFrame) {
    const int ring = kFrame - 1;
    const auto countMarks = [&] {
        Pump();
        return CountPixels(edit, {ring, ring, 120 - ring, kFrame}, 0xFFFFFF);
    };
    PaintNow(edit);
    EXPECT_EQ(countMarks(), 0);
    edit.SetFocus();
    EXPECT_EQ(countMarks(), (120 - 2 * ring) / 2); // every other pixel
    EXPECT_EQ(CountPixels(edit, {0, 0, 120, ring}, 0xFFFFFF), 0);
    Other().SetFocus();
    EXPECT_EQ(countMarks(), 0);
    edit.SetBorderWidth(0); // no room for it
    edit.SetFocus();
    Pump();
    edit.SetBorderWidth(kFrame);
}

TEST_F(EditTest, DrawsTheUnitInItsRoom) {
    const COLORREF back = 0x402010;
    edit.SetStyleValue(StyleValue::BackColor, back, true);
    edit.SetUnitWidth(30);
    PaintNow(edit);
    const RECT strip{120 - kFrame - 30, kFrame, 120 - kFrame, 20 - kFrame};
    const int area = 30 * (20 - 2 * kFrame);
    EXPECT_EQ(CountPixels(edit, strip, back), area);
    edit.SetUnit("MHz");
    EXPECT_STREQ(edit.GetUnit().Text(), "MHz");
    PaintNow(edit);
    const int drawn = area - CountPixels(edit, strip, back);
    EXPECT_GT(drawn, 20);
    EXPECT_GT(CountPixels(edit, strip, edit.GetStyleValue(StyleValue::TextColor)), 5);
    edit.SetEnabled(false);
    PaintNow(edit);
    EXPECT_EQ(CountPixels(edit, strip, edit.GetStyleValue(StyleValue::TextColor)), 0);
    EXPECT_GT(CountPixels(edit, strip, edit.GetStyleValue(StyleValue::DisabledTextColor)), 5);
    edit.SetUnit("");
    PaintNow(edit);
    EXPECT_EQ(CountPixels(edit, strip, back), area);
}

TEST_F(EditTest, UnitStandsAtTheLeftOfItsRoomInTheMiddle) {
    constexpr int kGap = 2; // after the text
    const COLORREF back = edit.GetStyleValue(StyleValue::BackColor);
    edit.SetUnitWidth(40);
    edit.SetUnit("MHz");
    PaintNow(edit);
    const RECT strip{120 - kFrame - 40, kFrame, 120 - kFrame, 20 - kFrame};
    const Snapshot expected = Snapshot::Drawn(40, 20 - 2 * kFrame, back, [&](HDC dc) {
        DrawAlignedText(dc, "MHz", {kGap, 0, 40, 20 - 2 * kFrame}, 65,
                        {edit.EffectiveFont(), edit.GetStyleValue(StyleValue::TextColor), back, 0});
    });
    EXPECT_EQ(Snapshot::OfWindow(edit).Differences(strip, expected), 0);
}

TEST_F(EditTest, ANewUnitRecalculatesTheNonClientArea) {
    struct Hook {
        void Note(TmyControl* /*sender*/, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/) {
            count += message == WM_NCCALCSIZE ? 1 : 0;
        }
        int count = 0;
    } hook;
    edit.messageHook.Bind<&Hook::Note>(&hook);
    edit.SetUnit("Hz");
    EXPECT_EQ(hook.count, 1);
    edit.SetUnitWidth(20);
    EXPECT_EQ(hook.count, 2);
    edit.SetUnit("Hz"); // compares first
    edit.SetUnitWidth(20);
    EXPECT_EQ(hook.count, 2);
}

TEST_F(EditTest, PaintsTheUnitWhenItChangesWithoutBeingAsked) {
    edit.SetUnitWidth(30);
    Settle(top);
    edit.SetUnit("kHz");
    Pump();
    const RECT strip{120 - kFrame - 30, kFrame, 120 - kFrame, 20 - kFrame};
    EXPECT_GT(CountPixels(edit, strip, edit.GetStyleValue(StyleValue::TextColor)), 5);
}

TEST_F(EditTest, FillsItsMarginsWithTheControlBackground) {
    const COLORREF back = 0x102040;
    edit.SetStyleValue(StyleValue::BackColor, back, true);
    edit.SetText("");
    edit.SetSize(120, 40);
    PaintNow(edit);
    EXPECT_EQ(CountPixels(edit, {kFrame, kFrame, 120 - kFrame, 40 - kFrame}, back), (120 - 2 * kFrame) * 34);
}

TEST_F(EditTest, TakesClicksBesideItsLineAndNotOnItsFrame) {
    edit.SetUnitWidth(30);
    edit.SetSize(120, 40);
    RECT outer{};
    GetWindowRect(edit.Window(), &outer);
    const auto hit = [&](int x, int y) {
        return Send(edit, WM_NCHITTEST, 0, Point(outer.left + x, outer.top + y));
    };
    EXPECT_EQ(hit(60, 20), HTCLIENT);
    EXPECT_EQ(hit(60, kFrame), HTCLIENT);
    EXPECT_EQ(hit(100, 20), HTCLIENT); // the unit
    EXPECT_EQ(hit(0, 20), HTBORDER);
    EXPECT_EQ(hit(60, 39), HTBORDER);
    EXPECT_EQ(hit(-1, 20), HTNOWHERE);
    EXPECT_EQ(hit(120, 20), HTNOWHERE);
}

TEST_F(EditTest, ShowsTheFramesMessagesToTheHookFirst) {
    struct Hook {
        void Note(TmyControl* sender, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/) {
            seen += message == WM_NCPAINT ? 1 : 0;
            if (message == WM_NCHITTEST) {
                delete sender;
            }
        }
        int seen = 0;
    } hook;
    edit.messageHook.Bind<&Hook::Note>(&hook);
    PaintNow(edit);
    EXPECT_GE(hook.seen, 1);
    EXPECT_EQ(Send(edit, WM_NCHITTEST, 0, 0), 0);
    EXPECT_EQ(top.FirstChild(), nullptr);
}

// --- text --------------------------------------------------------------------------------------------------

TEST_F(EditTest, FiresOnChangeForEachChangeOfTheText) {
    EventCount<> changed;
    changed.Watch(edit.onChange);
    edit.SetText("other");
    EXPECT_EQ(changed.Take(), 1);
    edit.SetText("other");
    edit.SetText(TmyString("other"));
    EXPECT_EQ(changed.Take(), 0);
    Type(edit, "x");
    EXPECT_EQ(changed.Take(), 1);
    edit.SetText(nullptr);
    EXPECT_EQ(changed.Take(), 1);
    EXPECT_EQ(Text(edit), "");
    Send(top, WM_COMMAND, MAKELONG(0, EN_SETFOCUS), reinterpret_cast<LPARAM>(edit.Window()));
    EXPECT_EQ(changed.Take(), 0);
}

TEST_F(EditTest, TakesTypedTextAtTheCaret) {
    edit.SetFocus();
    edit.Select(2, 2);
    Type(edit, "-+");
    EXPECT_EQ(Text(edit), "te-+xt");
    Key(edit, VK_LEFT);
    Key(edit, VK_DELETE);
    EXPECT_EQ(Text(edit), "te-xt");
    Key(edit, VK_HOME);
    EXPECT_EQ(Selection(edit), 0u);
    Key(edit, VK_END);
    EXPECT_EQ(Selection(edit), static_cast<DWORD>(MAKELONG(5, 5)));
    Type(edit, "\b\b");
    EXPECT_EQ(Text(edit), "te-");
    edit.Select(0, -1);
    Type(edit, "new");
    EXPECT_EQ(Text(edit), "new");
}

TEST_F(EditTest, LimitsWhatIsTypedAndNotWhatIsSet) {
    edit.SetText("");
    edit.SetTextLimit(3);
    Type(edit, "12345");
    EXPECT_EQ(Text(edit), "123");
    edit.SetText("123456");
    EXPECT_EQ(Text(edit), "123456");
}

TEST_F(EditTest, TakesNoTypedTextWhileReadOnly) {
    EXPECT_FALSE(edit.IsReadOnly());
    edit.SetReadOnly(true);
    EXPECT_TRUE(edit.IsReadOnly());
    Type(edit, "x");
    EXPECT_EQ(Text(edit), "text");
    edit.SetText("set");
    EXPECT_EQ(Text(edit), "set");
    edit.SetReadOnly(false);
    edit.Select(3, 3);
    Type(edit, "x");
    EXPECT_EQ(Text(edit), "setx");
}

TEST_F(EditTest, CommitsAtReturn) {
    EventCount<> committed;
    committed.Watch(edit.onCommit);
    Type(edit, "x");
    EXPECT_EQ(committed.Take(), 0);
    Type(edit, "\r");
    EXPECT_EQ(committed.Take(), 1);
    auto* lines = new TmyEdit(&top, "", {0, 50, 100, 100}, kEditStyle | ES_MULTILINE | ES_WANTRETURN);
    committed.Watch(lines->onCommit);
    Type(*lines, "a\rb");
    EXPECT_EQ(committed.Take(), 0);
    EXPECT_EQ(Text(*lines), "a\r\nb");
}

TEST_F(EditTest, ReturnDoesNotReachThePlatformWhichWouldBeep) {
    WPARAM code = VK_RETURN;
    edit.OnChar(code, 1);
    EXPECT_EQ(code, 0u);
    auto* lines = new TmyEdit(&top, "", {0, 50, 100, 100}, kEditStyle | ES_MULTILINE | ES_WANTRETURN);
    code = VK_RETURN;
    lines->OnChar(code, 1);
    EXPECT_EQ(code, WPARAM{VK_RETURN}) << "a line break";
}

TEST_F(EditTest, CommitsAtTheLossOfTheFocus) {
    EventCount<> committed;
    committed.Watch(edit.onCommit);
    edit.SetFocus();
    EXPECT_EQ(committed.Take(), 0);
    Other().SetFocus();
    EXPECT_EQ(committed.Take(), 1);
    EXPECT_TRUE(Other().HasFocus());
    edit.SetFocus();
    const TmyComponent elsewhere(nullptr, "", kPopup, 0, kPlace);
    ::SetFocus(elsewhere.Window());
    EXPECT_EQ(committed.Take(), 1);
}

TEST_F(EditTest, CommitsWhenAWindowOfTheHostTakesTheFocus) {
    EventCount<> committed;
    EventCount<bool> focused;
    committed.Watch(edit.onCommit);
    focused.Watch(edit.onFocus);
    const HWND foreign =
        CreateWindowExA(0, "BUTTON", "", kChild, 0, 100, 50, 20, top.Window(), nullptr, nullptr, nullptr);
    edit.SetFocus();
    ::SetFocus(foreign);
    EXPECT_EQ(committed.Take(), 1);
    EXPECT_EQ(focused.last, 0);
    ::SetFocus(edit.Window());
    EXPECT_EQ(focused.last, 1);
    EXPECT_EQ(focused.Take(), 3);
    ::SetFocus(nullptr);
    EXPECT_EQ(committed.Take(), 1);
    EXPECT_EQ(focused.Take(), 1);
    DestroyWindow(foreign);
}

TEST_F(EditTest, LetsAHandlerDropACharacter) {
    struct Filter {
        void Drop(TmyControl* /*sender*/, WPARAM& code, LPARAM /*flags*/) {
            code = code == 'x' || code == VK_RETURN ? 0 : code;
        }
    } filter;
    EventCount<> committed;
    committed.Watch(edit.onCommit);
    edit.onKey.Bind<&Filter::Drop>(&filter);
    edit.Select(4, 4);
    Type(edit, "axb\r");
    EXPECT_EQ(Text(edit), "textab");
    EXPECT_EQ(committed.Take(), 0);
}

TEST_F(EditTest, TakesNothingWhileDisabled) {
    EventCount<WPARAM&, LPARAM> keys;
    EventCount<> committed;
    EventCount<MouseButton, WPARAM, int, int> pressed;
    EventCount<WPARAM, int, int> moved;
    keys.Watch(edit.onKey);
    keys.Watch(edit.onKeyDown);
    committed.Watch(edit.onCommit);
    pressed.Watch(edit.onMouseDown);
    pressed.Watch(edit.onMouseUp);
    moved.Watch(edit.onMouseMove);
    edit.SetEnabled(false);
    Type(edit, "x\r");
    Key(edit, VK_DELETE);
    ClickAt(edit, 5, 5);
    Send(edit, WM_MOUSEMOVE, 0, Point(6, 6));
    EXPECT_EQ(Text(edit), "text");
    EXPECT_EQ(keys.Take() + committed.Take() + pressed.Take() + moved.Take(), 0);
    edit.SetEnabled(true);
    top.SetEnabled(false); // by an ancestor
    Type(edit, "x");
    EXPECT_EQ(Text(edit), "text");
    top.SetEnabled(true);
}

TEST_F(EditTest, TellsOfTextSetWhileDisabled) {
    EventCount<> changed;
    changed.Watch(edit.onChange);
    edit.SetEnabled(false);
    edit.SetText("other");
    EXPECT_EQ(changed.Take(), 1);
}

TEST_F(EditTest, LetsAHandlerDeleteIt) {
    struct Deleter {
        void Delete(TmyControl* sender) { delete sender; }
        void DeleteAtKey(TmyControl* sender, WPARAM& /*code*/, LPARAM /*flags*/) { delete sender; }
    } deleter;
    auto* first = new TmyEdit(&top, "", {0, 50, 50, 20});
    first->onChange.Bind<&Deleter::Delete>(&deleter);
    SendMessageA(first->Window(), WM_CHAR, 'x', 0);
    auto* second = new TmyEdit(&top, "", {0, 50, 50, 20});
    second->onCommit.Bind<&Deleter::Delete>(&deleter);
    SendMessageA(second->Window(), WM_CHAR, VK_RETURN, 0);
    auto* third = new TmyEdit(&top, "", {0, 50, 50, 20});
    third->onKey.Bind<&Deleter::DeleteAtKey>(&deleter);
    SendMessageA(third->Window(), WM_CHAR, 'x', 0);
    EXPECT_EQ(edit.NextSibling(), nullptr);
}

TEST_F(EditTest, LivesWithoutAWindow) {
    const TmyControl lonely(nullptr); // no window to be a child of
    auto* homeless = new TmyEdit(const_cast<TmyControl*>(&lonely), "text", {0, 0, 50, 20});
    homeless->SetText("x");
    homeless->SetUnit("Hz");
    homeless->SetUnitWidth(10);
    homeless->SetReadOnly(true);
    homeless->Select(0, 1);
    homeless->SetTextLimit(1);
    homeless->SetFont(InheritedFont());
    homeless->Invalidate();
    EXPECT_EQ(homeless->Window(), nullptr);
    EXPECT_FALSE(homeless->IsReadOnly());
}

} // namespace
} // namespace orva::toolkit
