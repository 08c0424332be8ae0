#include "toolkit/TmyComponent.h"

#include "toolkit/TmyApplication.h"
#include "toolkit/TmyBitmap24.h"
#include "toolkit/Trace.h"
#include "toolkit/TypeRegistry.h"

#include <algorithm>
#include <vector>

namespace orva::toolkit {

namespace {

constexpr UINT kHighestUserMessage = 16384;
constexpr int kKeep = -1; ///< for a size

Placement Centred(Placement placement) {
    if (placement.x == -1 && placement.y == -1) {
        placement.x = (GetSystemMetrics(SM_CXSCREEN) - placement.width) / 2;
        placement.y = (GetSystemMetrics(SM_CYSCREEN) - placement.height) / 2;
    }
    return placement;
}

} // namespace

TmyComponent::TmyComponent(TmyControl* parentControl, const char* title, DWORD windowStyle,
                           DWORD extendedStyle, const Placement& placement)
    : TmyControl(parentControl, Centred(placement)) {
    RegisterType(this, TypeId::Component, "Component");
    SetState(ControlState::Hidden, (windowStyle & WS_VISIBLE) == 0);
    SetState(ControlState::Focusable, (windowStyle & WS_TABSTOP) != 0);
    CreateOwnWindow(title, windowStyle, extendedStyle, Centred(placement));
    if (window == nullptr) {
        return;
    }
    UpdateBounds();
    MeasureFont();
    SendMessageA(window, WM_SETFONT, reinterpret_cast<WPARAM>(EffectiveFont()), FALSE);
}

TmyComponent::~TmyComponent() {
    onDestroy.Fire(this);
    DeleteChildren(); // while their parent's window still stands
    DestroyOwnWindow();
}

void TmyComponent::CreateOwnWindow(const char* title, DWORD windowStyle, DWORD extendedStyle,
                                   const Placement& placement) {
    TmyApplication& application = Application();
    thunk = application.CreateThunk(reinterpret_cast<ThunkTarget>(&TmyComponent::ThunkEntry), this);
    // Without a thunk no object is offered, the first message is refused, and there will be no window.
    application.SetWindowUnderConstruction(thunk != nullptr ? this : nullptr);
    const TmyControl* container = GetParent();
    POINT offset{0, 0};
    if (container != nullptr && (windowStyle & WS_CHILD) != 0) {
        offset = container->OffsetInComponent();
        hiddenWithParent = IsBelowHiddenControl();
        if (hiddenWithParent) {
            windowStyle &= ~static_cast<DWORD>(WS_VISIBLE); // it shows when the control does
        }
    }
    CreateWindowExA(extendedStyle, application.WindowClass(), title, windowStyle, placement.x + offset.x,
                    placement.y + offset.y, placement.width, placement.height, ParentWindow(), nullptr,
                    application.ModuleHandle(), nullptr);
    static_cast<void>(application.TakeWindowUnderConstruction());
}

/// The handle is cleared first: a window that goes away with its handle set deletes its object.
void TmyComponent::DestroyOwnWindow() {
    const HWND own = window;
    window = nullptr;
    if (own != nullptr) {
        LeaveWindow(own);
        DestroyWindow(own);
    }
    Application().FreeThunk(thunk);
    thunk = nullptr;
}

/// The messages still to come are the original procedure's alone, with the window that they are for: at the
/// last of them it frees what it keeps for the window.
void TmyComponent::LeaveWindow(HWND left) {
    SetWindowLongA(left, GWL_WNDPROC, static_cast<LONG>(reinterpret_cast<LONG_PTR>(originalWndProc)));
}

/// Whether a control without a window, of which the platform knows nothing, hides this one.
bool TmyComponent::IsBelowHiddenControl() const {
    const TmyControl* control = GetParent();
    while (control != nullptr && control->Window() == nullptr && !control->HasState(ControlState::Hidden)) {
        control = control->GetParent();
    }
    return control != nullptr && control->Window() == nullptr;
}

HWND TmyComponent::ParentWindow() const {
    const TmyControl* control = GetParent();
    while (control != nullptr && control->Window() == nullptr) {
        control = control->GetParent();
    }
    return control != nullptr ? control->Window() : nullptr;
}

void TmyComponent::Subclass(HWND platformWindow) {
    const HWND own = window;
    window = platformWindow;
    if (own != nullptr) {
        // The thunk has one window: what came to a second one would reach whoever has the thunk next.
        LeaveWindow(own);
        if (::GetParent(platformWindow) == own) {
            ::SetParent(platformWindow, ::GetParent(own));
        }
        DestroyWindow(own);
    }
    const LONG entry = static_cast<LONG>(reinterpret_cast<LONG_PTR>(thunk));
    originalWndProc =
        reinterpret_cast<WNDPROC>(static_cast<LONG_PTR>(SetWindowLongA(platformWindow, GWL_WNDPROC, entry)));
    UpdateBounds();
}

void TmyComponent::TakePlatformClass(const char* platformClass, const char* title, DWORD windowStyle,
                                     DWORD extendedStyle) {
    SetState(ControlState::Hidden, (windowStyle & WS_VISIBLE) == 0);
    SetState(ControlState::Focusable, (windowStyle & WS_TABSTOP) != 0);
    if (window == nullptr) {
        return;
    }
    if (hiddenWithParent) {
        windowStyle &= ~static_cast<DWORD>(WS_VISIBLE);
    }
    const HWND container = ::GetParent(window);
    RECT place{};
    GetWindowRect(window, &place);
    MapWindowPoints(nullptr, container, reinterpret_cast<POINT*>(&place), 2);
    const HWND made = CreateWindowExA(extendedStyle, platformClass, title, windowStyle, place.left, place.top,
                                      place.right - place.left, place.bottom - place.top, container, nullptr,
                                      Application().ModuleHandle(), nullptr);
    if (made == nullptr) {
        return;
    }
    Subclass(made);
    SendMessageA(window, WM_SETFONT, reinterpret_cast<WPARAM>(EffectiveFont()), FALSE);
}

// --- bounds ------------------------------------------------------------------------------------------------

void TmyComponent::UpdateBounds() {
    if (window == nullptr) {
        return;
    }
    RECT client{};
    GetClientRect(window, &client);
    clientWidth = client.right;
    clientHeight = client.bottom;
    ReadBounds();
}

void TmyComponent::ReadBounds() {
    GetWindowRect(window, &bounds);
    if (IsTopLevelWindow()) {
        return;
    }
    MapWindowPoints(nullptr, ::GetParent(window), reinterpret_cast<POINT*>(&bounds), 2);
    if (GetParent() != nullptr) {
        const POINT offset = GetParent()->OffsetInComponent();
        OffsetRect(&bounds, -offset.x, -offset.y);
    }
}

int TmyComponent::GetClientWidth() const {
    return window != nullptr ? clientWidth : TmyControl::GetClientWidth();
}

int TmyComponent::GetClientHeight() const {
    return window != nullptr ? clientHeight : TmyControl::GetClientHeight();
}

void TmyComponent::GetPosition(POINT* point, bool screen) const {
    *point = {bounds.left, bounds.top};
    if (screen && window != nullptr) {
        RECT outer{};
        GetWindowRect(window, &outer);
        *point = {outer.left, outer.top};
    }
}

void TmyComponent::SetBounds(int x, int y, int width, int height) {
    if (window == nullptr) {
        TmyControl::SetBounds(x, y, width, height);
        return;
    }
    POINT offset{0, 0};
    if (GetParent() != nullptr && !IsTopLevelWindow()) {
        offset = GetParent()->OffsetInComponent();
    }
    SetWindowPos(window, nullptr, x + offset.x, y + offset.y, std::max(width, 0), std::max(height, 0),
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOOWNERZORDER);
}

void TmyComponent::SetPosition(int x, int y) {
    SetBounds(x, y, bounds.right - bounds.left, bounds.bottom - bounds.top);
}

void TmyComponent::SetSize(int width, int height) {
    SetBounds(bounds.left, bounds.top, width == kKeep ? bounds.right - bounds.left : width,
              height == kKeep ? bounds.bottom - bounds.top : height);
}

void TmyComponent::SetClientSize(int width, int height) {
    const int borderWidth = bounds.right - bounds.left - GetClientWidth();
    const int borderHeight = bounds.bottom - bounds.top - GetClientHeight();
    SetSize(width + borderWidth, height + borderHeight);
}

// --- state -------------------------------------------------------------------------------------------------

bool TmyComponent::HasFocus() const {
    return window != nullptr && ::GetFocus() == window;
}

void TmyComponent::SetEnabled(bool enabled) {
    if (window == nullptr) {
        TmyControl::SetEnabled(enabled);
    } else {
        EnableWindow(window, enabled ? TRUE : FALSE);
    }
}

void TmyComponent::SetVisible(bool visible) {
    // Below a hidden control the window stays hidden; what is asked for shows when the control does.
    if (window == nullptr || hiddenWithParent) {
        TmyControl::SetVisible(visible);
        return;
    }
    const bool quietly = (GetWindowLongA(window, GWL_EXSTYLE) & WS_EX_NOACTIVATE) != 0;
    const int showing = quietly ? SW_SHOWNA : SW_SHOW;
    ShowWindow(window, visible ? showing : SW_HIDE);
}

/// Takes over what the platform tells of the window.
void TmyComponent::FollowVisibility(bool visible) {
    if (hiddenWithParent) {
        return;
    }
    // The window is not shown or hidden for it: another change may be on its way here already, and each would
    // bring about the next.
    const LifeGuard life(this);
    followsPlatform = true;
    TmyControl::SetVisible(visible);
    if (life.IsAlive()) {
        followsPlatform = false;
    }
}

void TmyComponent::OnVisibilityChanged(bool visible) {
    const TmyControl* container = GetParent();
    const bool onWindowlessParent =
        container != nullptr && container->Window() == nullptr && !IsTopLevelWindow();
    if (window != nullptr && onWindowlessParent && !followsPlatform) {
        // The platform knows nothing of a parent without a window.
        const bool showing = container->IsVisible() && !HasState(ControlState::Hidden);
        hiddenWithParent = !container->IsVisible();
        ShowWindow(window, showing ? SW_SHOWNA : SW_HIDE);
    }
    TmyControl::OnVisibilityChanged(visible);
}

void TmyComponent::SetFont(HFONT newFont) {
    TmyControl::SetFont(newFont);
    if (window != nullptr) {
        SendMessageA(window, WM_SETFONT, reinterpret_cast<WPARAM>(EffectiveFont()), TRUE);
    }
}

// --- painting ----------------------------------------------------------------------------------------------

void TmyComponent::InvalidateRegion(HRGN region) {
    if (window != nullptr) {
        InvalidateRgn(window, region, TRUE);
    }
}

void TmyComponent::Update() {
    if (window != nullptr) {
        UpdateWindow(window);
    }
}

HDC TmyComponent::GetDC() {
    return window != nullptr ? ::GetDC(window) : nullptr;
}

void TmyComponent::ReleaseDC(HDC dc) {
    if (dc != nullptr) {
        ::ReleaseDC(window, dc);
    }
}

void TmyComponent::SetRedraw(bool redraw) {
    if (window == nullptr) {
        return;
    }
    SendMessageA(window, WM_SETREDRAW, redraw ? TRUE : FALSE, 0);
    if (redraw) {
        RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
    }
}

bool TmyComponent::IsDoubleBuffered() const {
    return backBuffer != nullptr;
}

void TmyComponent::SetDoubleBuffered(bool doubleBuffered) {
    if (doubleBuffered == IsDoubleBuffered()) {
        return;
    }
    if (doubleBuffered) {
        backBuffer = std::make_unique<TmyBitmap24>(std::max(clientWidth, 1), std::max(clientHeight, 1));
    } else {
        backBuffer.reset();
    }
    Invalidate();
}

// --- text --------------------------------------------------------------------------------------------------

void TmyComponent::SetText(const TmyString& text) {
    SetText(text.Text());
}

void TmyComponent::SetText(const char* text) {
    Invalidate();
    if (window != nullptr) {
        SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
    }
}

int TmyComponent::GetTextLength() const {
    return window != nullptr ? static_cast<int>(SendMessageA(window, WM_GETTEXTLENGTH, 0, 0)) : 0;
}

int TmyComponent::GetText(char* buffer, int size) const {
    if (size <= 0) {
        return 0;
    }
    buffer[0] = '\0';
    if (window == nullptr) {
        return 0;
    }
    return static_cast<int>(
        SendMessageA(window, WM_GETTEXT, static_cast<WPARAM>(size), reinterpret_cast<LPARAM>(buffer)));
}

TmyString TmyComponent::GetText() const {
    std::vector<char> buffer(static_cast<std::size_t>(GetTextLength()) + 1);
    const int copied = GetText(buffer.data(), static_cast<int>(buffer.size()));
    TmyString text;
    text.Assign(buffer.data(), static_cast<std::uint32_t>(std::max(copied, 0)));
    return text;
}

// --- messages of one's own ---------------------------------------------------------------------------------

bool TmyComponent::PostUserMessage(UINT id, WPARAM wParam, LPARAM lParam) {
    if (id > kHighestUserMessage || window == nullptr) {
        return false;
    }
    return PostMessageA(window, WM_USER + id, wParam, lParam) != 0;
}

LRESULT TmyComponent::OnCommand(WPARAM /*code*/) {
    return 0;
}
LRESULT TmyComponent::OnNotify(NMHDR* /*header*/) {
    return 0;
}
void TmyComponent::OnUserMessage(UINT /*id*/, WPARAM /*wParam*/, LPARAM /*lParam*/) {}

void TmyComponent::OnContextMenu(int x, int y) {
    if (x == -1 && y == -1) {
        POINT pointer{};
        GetCursorPos(&pointer);
        x = pointer.x;
        y = pointer.y;
    }
    onContextMenu.Fire(this, x, y);
}

// --- the caret ---------------------------------------------------------------------------------------------

void TmyComponent::CreateCaret(int width, int height, HBITMAP bitmap) {
    if (window != nullptr) {
        ::CreateCaret(window, bitmap, width, height == -1 ? textHeight : height);
    }
}

void TmyComponent::ShowCaret(bool show) {
    if (window != nullptr) {
        show ? ::ShowCaret(window) : ::HideCaret(window);
    }
}

void TmyComponent::SetCaretPos(int x, int y) {
    if (window != nullptr) {
        ::SetCaretPos(x, y);
    }
}

void TmyComponent::DestroyCaret() {
    if (window != nullptr) {
        ::DestroyCaret();
    }
}

} // namespace orva::toolkit
