#include "tests/controls/WidgetZoo.h"

#include "controls/CtbComboListBox.h"
#include "controls/CtbNumParamControl.h"
#include "controls/CtbSliderBar.h"
#include "toolkit/myComponents.h"

#include <string>

namespace orva::test {

using namespace orva::toolkit;
using orva::controls::CtbComboListBox;
using orva::controls::CtbNumParamControl;
using orva::controls::CtbSliderBar;

namespace {

enum Kind {
    kPanel,
    kLabel,
    kButton,
    kGroupButton,
    kListBox,
    kLargeListBox,
    kComboBox,
    kUpDown,
    kEdit,
    kIntEdit,
    kFloatEdit,
    kLevelSlider,
    kUprightSlider,
    kMsgBox,
    kFloatingSelection,
    kFloatingSelection2,
    kLightPanel,
    kLightLabel,
    kBtn,
    kBtn2,
    kScrollBar,
    kNumParamControl,
    kSliderBar,
    kComboListBox,
    kKindCount,
};

constexpr int kColumns = 40; ///< of the widgets, which stand side by side: the more they overlap, the
                             ///< longer the platform takes to find what of them can be seen
constexpr int kCellWidth = 25;
constexpr int kCellHeight = 30;
constexpr int kWidth = kColumns * kCellWidth;
constexpr int kHeight = 800;
constexpr int kLines = 30;       ///< of the lists
constexpr int kListEvery = 2000; ///< messages between two looks for the windows there are

BOOL CALLBACK ListWindow(HWND window, LPARAM list) {
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    return TRUE;
}

BOOL CALLBACK ListOwned(HWND window, LPARAM list) {
    // What stands on the desktop belongs to the zoo if the zoo's window owns it, by however many steps.
    auto* found = reinterpret_cast<std::vector<HWND>*>(list);
    for (HWND owner = window; owner != nullptr; owner = GetWindow(owner, GW_OWNER)) {
        if (owner == found->front()) {
            ListWindow(window, list);
            EnumChildWindows(window, ListWindow, list);
            return TRUE;
        }
    }
    return TRUE;
}

template <class List>
List* Filled(List* list) {
    for (int i = 0; i < kLines; ++i) {
        list->AddItem(("Line " + std::to_string(i)).c_str());
    }
    return list;
}

} // namespace

int WidgetZoo::ClassCount() {
    return kKindCount;
}

WidgetZoo::WidgetZoo(std::uint32_t seed, int count)
    : random(seed),
      top(new TmyComponent(nullptr, "zoo", WS_POPUP | WS_VISIBLE | WS_CLIPCHILDREN, 0,
                           {0, 0, kWidth, kHeight})) {
    for (int index = 0; index < count; ++index) {
        widgets.push_back(Make(index));
    }
}

WidgetZoo::~WidgetZoo() {
    ReleaseCapture();
    delete top;
    TmyApplication::ProcessPendingMessages();
}

/// An event now and then disturbs another widget, as owners do.
template <typename... Arguments>
void WidgetZoo::OnEvent(TmyControl* /*sender*/, Arguments... /*arguments*/) {
    ++events;
    if (Chance(5)) {
        widgets[static_cast<std::size_t>(Below(WidgetCount()))]->Invalidate();
    }
}

template <class Widget, class... Rest>
Widget* WidgetZoo::Listening(Widget* widget, Rest&... furtherEvents) {
    const auto bind = [this]<typename... Arguments>(TmyEvent<Arguments...>& event) {
        event.template Bind<&WidgetZoo::OnEvent<Arguments...>>(this);
    };
    bind(widget->onMouseDown);
    bind(widget->onFocus);
    bind(widget->onChange);
    (bind(furtherEvents), ...);
    return widget;
}

TmyControl* WidgetZoo::Make(int index) {
    const Placement place{index % kColumns * kCellWidth, index / kColumns * kCellHeight, kCellWidth,
                          kCellHeight};
    switch (index % kKindCount) {
    case kPanel:
        return Listening(new TmyPanel(top, "Panel", place));
    case kLabel:
        return Listening(new TmyLabel(top, "Label", place));
    case kButton: {
        auto* button = new TmyButton(top, "Button", place);
        return Listening(button, button->onClick, button->onPress);
    }
    case kGroupButton: {
        auto* button = new TmyButton(top, "Group", place);
        button->SetGroup(1);
        button->SetAllowAllUp(Chance(50));
        return Listening(button, button->onDown);
    }
    case kListBox: {
        auto* list = Filled(new TmyListBox(top, place, static_cast<ListStyle>(Below(3))));
        return Listening(list, list->onEnter);
    }
    case kLargeListBox:
        return Listening(Filled(new TmyListBox(top, place, ListStyle::Large)));
    case kComboBox:
        return Listening(Filled(new TmyComboBox(top, place)));
    case kUpDown:
        return Listening(new TmyUpDown(top, place, Chance(50)));
    case kEdit:
        return Listening(new TmyEdit(top, "Text", place));
    case kIntEdit:
        return Listening(new TmyIntEdit(top, place));
    case kFloatEdit:
        return Listening(new TmyFloatEdit(top, Below(7), place));
    case kLevelSlider: {
        auto* slider = new TmySlider(top, SliderDirection::Horizontal, place);
        slider->SetValueShown(Chance(50));
        return Listening(slider, slider->onDragStart);
    }
    case kUprightSlider:
        return Listening(new TmySlider(top, SliderDirection::Vertical, place));
    case kMsgBox: {
        auto* box = new TmyMsgBox(top, 1 + Below(4));
        box->SetMessage("Some lines\nof text", "Title");
        box->SetVisible(Chance(20));
        return Listening(box);
    }
    case kFloatingSelection: {
        auto* edit = new TmyIntEdit(top, place);
        auto* selection = Listening(new TmyFloatingSelection(edit, 5, 15));
        for (int i = 0; i < kLines; ++i) {
            selection->AddItem(i);
        }
        if (Chance(30)) {
            selection->Open();
        }
        return Listening(edit);
    }
    case kFloatingSelection2: {
        auto* edit = new TmyIntEdit(top, place);
        auto* digits = Listening(new TmyFloatingSelection2(edit, 5, 15));
        if (Chance(30)) {
            digits->Open();
        }
        return Listening(edit);
    }
    case kLightPanel:
        return Listening(new Tmy_Panel(top, place));
    case kLightLabel:
        return Listening(new Tmy_Label(top, place, "Light label"));
    case kBtn: {
        auto* button = new Tmy_Btn(top, place, "Light");
        button->SetFocusable(true);
        return Listening(button, button->onClick, button->onPress);
    }
    case kBtn2: {
        auto* button = new Tmy_Btn2(top, place, "Repeat");
        return Listening(button, button->onClick, button->onPress);
    }
    case kScrollBar: {
        auto* bar = new Tmy_ScrollBar(
            top, Chance(50) ? ScrollDirection::Vertical : ScrollDirection::Horizontal, place);
        bar->SetRange(-10, Below(100));
        return Listening(bar, bar->onScroll);
    }
    case kNumParamControl: {
        auto* field = new CtbNumParamControl(top, place);
        field->SetMaximum(1000);
        field->SetUnit(Chance(50) ? "Hz" : "", true);
        return Listening(field);
    }
    case kSliderBar: {
        auto* bar = new CtbSliderBar(top, place);
        bar->SetVertical(Chance(50));
        bar->SetMinimum(Below(200));
        return Listening(bar);
    }
    default: {
        auto* list = Filled(new CtbComboListBox(top, place));
        list->SetVisible(Chance(20));
        return Listening(list, list->onClose);
    }
    }
}

// --- the play ----------------------------------------------------------------------------------------------

void WidgetZoo::ListWindows() {
    TmyApplication::ProcessPendingMessages();
    windows.assign(1, top->Window());
    EnumChildWindows(top->Window(), ListWindow, reinterpret_cast<LPARAM>(&windows));
    EnumThreadWindows(GetCurrentThreadId(), ListOwned, reinterpret_cast<LPARAM>(&windows));
}

void WidgetZoo::Drive(int messages) {
    for (int sent = 0; sent < messages; ++sent) {
        if (sent % kListEvery == 0) {
            ListWindows();
        }
        SendOne();
    }
    TmyApplication::ProcessPendingMessages();
}

/// Inside the window, and a little around it.
void WidgetZoo::SendMouse(HWND window, UINT message) {
    constexpr int kAround = 20;
    RECT client{};
    GetClientRect(window, &client);
    const int x = Below(static_cast<int>(client.right) + 2 * kAround) - kAround;
    const int y = Below(static_cast<int>(client.bottom) + 2 * kAround) - kAround;
    SendMessageA(window, message, Chance(50) ? MK_LBUTTON : 0, MAKELONG(x, y));
}

void WidgetZoo::SendOne() {
    static constexpr WPARAM kKeys[] = {VK_UP,  VK_DOWN,  VK_PRIOR,  VK_NEXT, VK_LEFT, VK_RIGHT,  VK_RETURN,
                                       VK_TAB, VK_SPACE, VK_ESCAPE, VK_HOME, VK_END,  VK_DELETE, VK_F4};
    static constexpr char kCharacters[] = "0123456789-.,aFkKmMgGhHsS xyz\r\b\x1B";
    const HWND window = Chance(20)
                            ? top->Window()
                            : windows[static_cast<std::size_t>(Below(static_cast<int>(windows.size())))];
    if (!IsWindow(window)) {
        return;
    }
    const int what = Below(1000);
    if (what < 420) {
        SendMouse(window, WM_MOUSEMOVE);
    } else if (what < 490) {
        SendMouse(window, WM_LBUTTONDOWN);
    } else if (what < 600) {
        SendMouse(window, WM_LBUTTONUP);
    } else if (what < 640) {
        SendMouse(window, Chance(50) ? WM_RBUTTONDOWN : WM_RBUTTONUP);
    } else if (what < 720) {
        SendMessageA(window, WM_MOUSEWHEEL, MAKEWPARAM(0, (Below(9) - 4) * WHEEL_DELTA), 0);
    } else if (what < 850) {
        SendMessageA(window, WM_KEYDOWN, kKeys[Below(static_cast<int>(std::size(kKeys)))], 1);
    } else if (what < 890) {
        SendMessageA(window, WM_KEYUP, kKeys[Below(static_cast<int>(std::size(kKeys)))], 1);
    } else if (what < 960) {
        const char character = kCharacters[Below(static_cast<int>(sizeof kCharacters) - 1)];
        SendMessageA(window, WM_CHAR, static_cast<unsigned char>(character), 1);
    } else if (what < 990) {
        SendMessageA(window, WM_TIMER, static_cast<WPARAM>(1 + Below(4)), 0);
    } else if (what < 995) {
        const RECT part{0, 0, 2 * kCellWidth, 2 * kCellHeight};
        InvalidateRect(window, &part, TRUE);
        UpdateWindow(window);
    } else {
        ChangeOne();
    }
}

void WidgetZoo::ChangeOne() {
    const int index = Below(WidgetCount());
    TmyControl*& widget = widgets[static_cast<std::size_t>(index)];
    switch (Below(6)) {
    case 0:
        widget->SetEnabled(Chance(70));
        break;
    case 1:
        widget->SetVisible(Chance(70));
        break;
    case 2:
        widget->SetSize(Below(2 * kCellWidth), Below(2 * kCellHeight));
        break;
    case 3:
        widget->SetGrey(Chance(30));
        break;
    case 4:
        widget->SetStyleValue(StyleValue::TextColor, static_cast<std::uint32_t>(Below(0x1000000)), true);
        break;
    default:
        delete widget;
        widget = Make(index);
        break;
    }
}

} // namespace orva::test
