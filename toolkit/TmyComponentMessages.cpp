/// The messages of a component's window.

#include "toolkit/GdiRegion.h"
#include "toolkit/TmyApplication.h"
#include "toolkit/TmyBitmap24.h"
#include "toolkit/TmyComponent.h"
#include "toolkit/TmyProfiler.h"
#include "toolkit/Trace.h"

#include <algorithm>
#include <exception>
#include <windowsx.h>

namespace orva::toolkit {

namespace {

/// Private message: the platform's state of visibility, in wParam.
constexpr UINT kFollowVisibility = 0x8000;

constexpr char kSourceUnit[] = "myComponents";
constexpr char kProfiledFunction[] = "TmyComponent::WndProc";
constexpr int kProfiledLine = 92;

/// `BeginPaint` to `EndPaint`, whatever a handler throws in between: an area that is never validated would be
/// painted for ever.
class PaintScope {
public:
    explicit PaintScope(HWND paintedWindow) : window(paintedWindow), dc(BeginPaint(paintedWindow, &paint)) {}
    ~PaintScope() { EndPaint(window, &paint); }
    PaintScope(const PaintScope&) = delete;
    PaintScope& operator=(const PaintScope&) = delete;

    [[nodiscard]] HDC Context() const { return dc; }
    [[nodiscard]] const RECT& Area() const { return paint.rcPaint; }

private:
    HWND window;
    PAINTSTRUCT paint{};
    HDC dc;
};

} // namespace

// --- the way in --------------------------------------------------------------------------------------------

LRESULT CALLBACK TmyComponent::InitialWndProc(HWND newWindow, UINT message, WPARAM wParam, LPARAM lParam) {
    TmyComponent* object = Application().TakeWindowUnderConstruction();
    if (object == nullptr) {
        return 0;
    }
    object->window = newWindow;
    SetWindowLongA(newWindow, GWL_WNDPROC, static_cast<LONG>(reinterpret_cast<LONG_PTR>(object->thunk)));
    return ThunkEntry(object, message, wParam, lParam);
}

/// No exception may cross into the platform: it would end the host.
LRESULT CALLBACK TmyComponent::ThunkEntry(TmyComponent* object, UINT message, WPARAM wParam, LPARAM lParam) {
    try {
        return object->WndProc(message, wParam, lParam);
    } catch (const std::exception& error) {
        Trace(&Application(), 0, "Exception at message %x: %s", message, error.what());
    } catch (...) {
        Trace(&Application(), 0, "Exception at message %x", message);
    }
    return 0;
}

LRESULT TmyComponent::WndProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const ProfileScope profile(Application().Profiler(), kSourceUnit, kProfiledFunction, kProfiledLine);
    if (window == nullptr) {
        return 0; // null means all windows to some of the platform's calls
    }
    const LifeGuard life(this);
    messageHook.Fire(this, message, wParam, lParam);
    if (!life.IsAlive()) {
        return 0;
    }
    const Handled handled = HandleMessage(message, wParam, lParam);
    if (handled.has_value() || !life.IsAlive()) {
        return handled.value_or(0);
    }
    if (message > WM_USER) {
        OnUserMessage(message - WM_USER, wParam, lParam);
    }
    return life.IsAlive() ? CallOriginal(message, wParam, lParam) : 0;
}

LRESULT TmyComponent::CallOriginal(UINT message, WPARAM wParam, LPARAM lParam) {
    return CallWindowProcA(originalWndProc, window, message, wParam, lParam);
}

/// Handles a message.
///
/// \return its result, if the message ends here
TmyComponent::Handled TmyComponent::HandleMessage(UINT message, WPARAM& wParam, LPARAM lParam) {
    switch (message) {
    case WM_NULL:
        return static_cast<LRESULT>(wParam);
    case WM_DESTROY:
        return HandleDestroy(wParam, lParam);
    case WM_SIZE:
        HandleSize(wParam, LOWORD(lParam), HIWORD(lParam));
        return std::nullopt;
    case WM_SETFOCUS:
        HandleSetFocus(reinterpret_cast<HWND>(wParam));
        return std::nullopt;
    case WM_KILLFOCUS:
        HandleKillFocus(reinterpret_cast<HWND>(wParam));
        return std::nullopt;
    case WM_ENABLE:
        TmyControl::SetEnabled(wParam != 0);
        return std::nullopt;
    case WM_PAINT:
        HandlePaint(reinterpret_cast<HDC>(wParam));
        return 0;
    case WM_CLOSE:
        return HandleClose();
    case WM_ERASEBKGND:
        return HandleErase(reinterpret_cast<HDC>(wParam));
    case WM_SHOWWINDOW:
        PostMessageA(window, kFollowVisibility, wParam, lParam);
        return std::nullopt;
    case WM_SETCURSOR:
        return HandleSetCursor(lParam);
    case WM_WINDOWPOSCHANGING:
        HandlePosChanging(reinterpret_cast<WINDOWPOS*>(lParam));
        return std::nullopt;
    case WM_WINDOWPOSCHANGED:
        HandlePosChanged(*reinterpret_cast<const WINDOWPOS*>(lParam));
        return std::nullopt;
    case WM_NOTIFY:
        return HandleNotify(wParam, lParam);
    case WM_CONTEXTMENU:
        OnContextMenu(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
        return 0;
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
    case WM_KEYUP:
    case WM_CHAR:
        return HandleKey(message, wParam, lParam);
    case WM_COMMAND:
        if (TmyComponent* sender = TmyApplication::ObjectFromWindow(reinterpret_cast<HWND>(lParam))) {
            return sender->OnCommand(wParam);
        }
        return std::nullopt;
    case WM_TIMER:
        OnTimer(wParam);
        return std::nullopt;
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLORDLG:
    case WM_CTLCOLORSCROLLBAR:
    case WM_CTLCOLORSTATIC:
        return HandleControlColor(reinterpret_cast<HDC>(wParam), reinterpret_cast<HWND>(lParam));
    case WM_MOUSEMOVE:
    case WM_LBUTTONDOWN:
    case WM_LBUTTONUP:
    case WM_RBUTTONDOWN:
    case WM_RBUTTONUP:
    case WM_MOUSEWHEEL:
        return HandleMouse(message, wParam, lParam);
    case kFollowVisibility:
        FollowVisibility(wParam != 0);
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

// --- mouse and keys ----------------------------------------------------------------------------------------

TmyComponent::Handled TmyComponent::HandleMouse(UINT message, WPARAM wParam, LPARAM lParam) {
    const int x = GET_X_LPARAM(lParam);
    const int y = GET_Y_LPARAM(lParam);
    switch (message) {
    case WM_LBUTTONDOWN:
        SetCapture(window);
        DispatchMouse(MouseCode::LeftDown, wParam, x, y);
        break;
    case WM_LBUTTONUP:
        ReleaseCapture();
        DispatchMouse(MouseCode::LeftUp, wParam, x, y);
        break;
    case WM_RBUTTONDOWN:
        DispatchMouse(MouseCode::RightDown, wParam, x, y);
        break;
    case WM_RBUTTONUP:
        DispatchMouse(MouseCode::RightUp, wParam, x, y);
        break;
    case WM_MOUSEWHEEL:
        wheelKeys = GET_KEYSTATE_WPARAM(wParam);
        DispatchMouse(MouseCode::Wheel, static_cast<WPARAM>(GET_WHEEL_DELTA_WPARAM(wParam) / WHEEL_DELTA), x,
                      y);
        return 0;
    default:
        DispatchMouse(MouseCode::Move, wParam, x, y);
        break;
    }
    return std::nullopt;
}

TmyComponent::Handled TmyComponent::HandleKey(UINT message, WPARAM& wParam, LPARAM lParam) {
    switch (message) {
    case WM_KEYUP:
        DeepestFocused()->OnKeyUp(wParam, lParam);
        return std::nullopt;
    case WM_CHAR:
        DeepestFocused()->OnChar(wParam, lParam);
        break;
    default: {
        TmyControl* child = FocusedChild();
        (child != nullptr ? child : this)->OnKeyDown(wParam, lParam);
        break;
    }
    }
    return wParam == 0 ? Handled(0) : std::nullopt;
}

TmyComponent::Handled TmyComponent::HandleSetCursor(LPARAM lParam) {
    if (LOWORD(lParam) != HTCLIENT) {
        return std::nullopt; // the frame has cursors of its own
    }
    POINT pointer{};
    GetCursorPos(&pointer);
    ScreenToClient(window, &pointer);
    HCURSOR found = GetCursor();
    for (const TmyControl* control = ChildAt(pointer.x, pointer.y); control != nullptr;
         control = control->ChildAt(pointer.x, pointer.y)) {
        if (control->GetCursor() != nullptr) {
            found = control->GetCursor();
        }
        pointer.x -= control->Bounds().left;
        pointer.y -= control->Bounds().top;
    }
    if (found == nullptr) {
        return std::nullopt;
    }
    ::SetCursor(found);
    return 1;
}

// --- focus -------------------------------------------------------------------------------------------------

bool TmyComponent::IsInSameTopLevel(HWND other) const {
    return other != nullptr && GetAncestor(other, GA_ROOT) == GetAncestor(window, GA_ROOT);
}

void TmyComponent::HandleSetFocus(HWND other) {
    if (!IsInSameTopLevel(other) || HasState(ControlState::Focused)) {
        DeepestFocused()->SetFocus();
        return;
    }
    const LifeGuard life(this);
    MarkFocusPath();
    if (life.IsAlive()) {
        TellFocus(true);
    }
}

void TmyComponent::HandleKillFocus(HWND other) {
    if (!IsInSameTopLevel(other)) {
        TellDeepestOfLostFocus();
    }
}

// --- painting ----------------------------------------------------------------------------------------------

void TmyComponent::HandlePaint(HDC given) {
    const GdiRegion region;
    GetUpdateRgn(window, region.Get(), FALSE);
    if (backBuffer == nullptr || given != nullptr || backBuffer->GetDC() == nullptr) {
        PaintDirectly(given, region.Get());
    } else {
        PaintThroughBuffer(region.Get());
    }
}

void TmyComponent::PaintDirectly(HDC given, HRGN region) {
    if (given != nullptr) {
        PaintTree(given, region);
        return;
    }
    const PaintScope paint(window);
    PaintTree(paint.Context(), region);
}

void TmyComponent::PaintThroughBuffer(HRGN region) {
    const HDC buffer = backBuffer->GetDC();
    const HWND painted = window;
    const PaintScope paint(painted);
    const LifeGuard life(this);
    SelectClipRgn(buffer, region);
    InvalidateRgn(painted, region, TRUE);
    SendMessageA(painted, WM_ERASEBKGND, reinterpret_cast<WPARAM>(buffer), 0);
    SendMessageA(painted, WM_PAINT, reinterpret_cast<WPARAM>(buffer), 0);
    if (!life.IsAlive() || backBuffer == nullptr || backBuffer->GetDC() != buffer) {
        return; // a handler took the buffer away
    }
    SelectClipRgn(buffer, nullptr);
    const RECT& area = paint.Area();
    BitBlt(paint.Context(), area.left, area.top, area.right - area.left, area.bottom - area.top, buffer,
           area.left, area.top, SRCCOPY);
    ValidateRect(painted, nullptr);
}

void TmyComponent::OnPaint(HDC dc) {
    const LifeGuard life(this);
    TmyControl::OnPaint(dc);
    if (life.IsAlive() && originalWndProc != DefWindowProcA) {
        CallOriginal(WM_PAINT, reinterpret_cast<WPARAM>(dc), 0);
    }
}

TmyComponent::Handled TmyComponent::HandleErase(HDC dc) {
    if (backBuffer != nullptr && backBuffer->GetDC() != nullptr && dc != backBuffer->GetDC()) {
        return 1; // the copy of the buffer covers everything
    }
    return OnEraseBackground(dc);
}

LRESULT TmyComponent::OnEraseBackground(HDC dc) {
    if (originalWndProc != DefWindowProcA) {
        return CallOriginal(WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0);
    }
    RECT client{};
    GetClientRect(window, &client);
    const GdiRegion area(client);
    ExcludeOpaqueChildren(area.Get());
    const HBRUSH brush = CreateSolidBrush(GetStyleValue(StyleValue::WindowColor));
    FillRgn(dc, area.Get(), brush);
    DeleteObject(brush);
    return 1;
}

TmyComponent::Handled TmyComponent::HandleControlColor(HDC dc, HWND control) {
    const TmyComponent* sender = TmyApplication::ObjectFromWindow(control);
    if (sender == nullptr) {
        return std::nullopt;
    }
    const COLORREF background = sender->GetStyleValue(StyleValue::BackColor);
    SelectObject(dc, sender->EffectiveFont());
    SetDCBrushColor(dc, background);
    SetBkColor(dc, background);
    ::SetTextColor(dc, sender->GetStyleValue(sender->IsEnabled() ? StyleValue::TextColor
                                                                 : StyleValue::DisabledTextColor));
    return reinterpret_cast<LRESULT>(GetStockObject(DC_BRUSH));
}

// --- bounds ------------------------------------------------------------------------------------------------

void TmyComponent::HandleSize(WPARAM kind, int width, int height) {
    if (kind == SIZE_MINIMIZED) {
        return;
    }
    InvalidateResizedEdges(width, height);
    const bool resized = width != clientWidth || height != clientHeight;
    clientWidth = width;
    clientHeight = height;
    if (backBuffer != nullptr && resized) {
        backBuffer = std::make_unique<TmyBitmap24>(std::max(width, 1), std::max(height, 1));
    }
    const LifeGuard life(this);
    Realign();
    if (life.IsAlive()) {
        OnResize();
    }
    if (life.IsAlive() && GetAlignment() != Alignment::None && GetParent() != nullptr) {
        GetParent()->Realign();
    }
}

/// A change of size repaints what is new, and the border beside it or at the new edge; the rest stays as it
/// is.
void TmyComponent::InvalidateResizedEdges(int width, int height) {
    const int border = static_cast<int>(GetStyleValue(StyleValue::BorderWidth));
    if (width != clientWidth) {
        const RECT strip{std::min(width, clientWidth) - border, 0, width, height};
        ::InvalidateRect(window, &strip, TRUE);
    }
    if (height != clientHeight) {
        const RECT strip{0, std::min(height, clientHeight) - border, width, height};
        ::InvalidateRect(window, &strip, TRUE);
    }
}

void TmyComponent::HandlePosChanging(WINDOWPOS* position) {
    const bool moves = (position->flags & SWP_NOMOVE) == 0;
    const bool resizes = (position->flags & SWP_NOSIZE) == 0;
    if (!moves && !resizes) {
        return;
    }
    POINT offset{0, 0};
    if (GetParent() != nullptr && !IsTopLevelWindow()) {
        offset = GetParent()->OffsetInComponent();
    }
    const int oldWidth = bounds.right - bounds.left;
    const int oldHeight = bounds.bottom - bounds.top;
    int x = moves ? position->x - offset.x : bounds.left;
    int y = moves ? position->y - offset.y : bounds.top;
    int width = resizes ? position->cx : oldWidth;
    int height = resizes ? position->cy : oldHeight;
    if (x == bounds.left && y == bounds.top && width == oldWidth && height == oldHeight) {
        return;
    }
    OnConstrainBounds(&x, &y, &width, &height);
    if (moves) {
        position->x = x + offset.x;
        position->y = y + offset.y;
    }
    if (resizes) {
        position->cx = width;
        position->cy = height;
    }
}

void TmyComponent::HandlePosChanged(const WINDOWPOS& position) {
    const RECT before = bounds;
    ReadBounds();
    if ((position.flags & SWP_SHOWWINDOW) != 0) {
        PostMessageA(window, kFollowVisibility, TRUE, 0);
    }
    if ((position.flags & SWP_HIDEWINDOW) != 0) {
        PostMessageA(window, kFollowVisibility, FALSE, 0);
    }
    if (before.left != bounds.left || before.top != bounds.top) {
        OnMove();
    }
}

// --- the rest ----------------------------------------------------------------------------------------------

TmyComponent::Handled TmyComponent::HandleNotify(WPARAM wParam, LPARAM lParam) {
    const LifeGuard life(this);
    const LRESULT result = CallOriginal(WM_NOTIFY, wParam, lParam);
    auto* header = reinterpret_cast<NMHDR*>(lParam);
    if (!life.IsAlive() || header == nullptr) {
        return result;
    }
    TmyComponent* sender = TmyApplication::ObjectFromWindow(header->hwndFrom);
    return sender != nullptr ? sender->OnNotify(header) : result;
}

TmyComponent::Handled TmyComponent::HandleClose() {
    if (inModal) {
        Trace(this, 0, "Ending Modal Loop");
        modalResult = kModalClosed;
        return 0;
    }
    if (Application().mainWindow == this) {
        PostQuitMessage(0);
        return 0;
    }
    return std::nullopt;
}

/// The window goes, by itself or with its parent, and takes its object along.
TmyComponent::Handled TmyComponent::HandleDestroy(WPARAM wParam, LPARAM lParam) {
    const LifeGuard life(this);
    const LRESULT result = CallOriginal(WM_DESTROY, wParam, lParam);
    if (life.IsAlive() && window != nullptr) {
        LeaveWindow(window);
        window = nullptr;
        delete this;
    }
    return result;
}

} // namespace orva::toolkit
