#include "toolkit/TmyEdit.h"

#include "toolkit/ControlDrawing.h"
#include "toolkit/FocusMark.h"
#include "toolkit/TmyApplication.h"
#include "toolkit/TypeRegistry.h"

#include <algorithm>
#include <windowsx.h>

namespace orva::toolkit {

namespace {

constexpr int kTextMargin = 1; // [pixels], left and right of the text
constexpr int kUnitGap = 2;    // [pixels], between the text and its unit

/// A context of the whole window.
class WindowContext {
public:
    explicit WindowContext(HWND drawnWindow) : window(drawnWindow), dc(GetWindowDC(drawnWindow)) {}
    ~WindowContext() { ReleaseDC(window, dc); }
    WindowContext(const WindowContext&) = delete;
    WindowContext& operator=(const WindowContext&) = delete;
    [[nodiscard]] HDC Get() const { return dc; }

private:
    HWND window;
    HDC dc;
};

/// The client area in coordinates of the window's corner.
RECT ClientInWindow(HWND window) {
    RECT outer{};
    GetWindowRect(window, &outer);
    RECT client{};
    GetClientRect(window, &client);
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&client), 2);
    OffsetRect(&client, -outer.left, -outer.top);
    return client;
}

} // namespace

TmyEdit::TmyEdit(TmyControl* parentControl, const char* text, const Placement& placement, DWORD windowStyle,
                 DWORD extendedStyle)
    : TmyComponent(parentControl, "", WS_CHILD, 0, placement) {
    RegisterType(this, TypeId::Edit, "Edit");
    // Beside a border of its own the platform's class would keep its text away from it.
    TakePlatformClass("EDIT", text != nullptr ? text : "", (windowStyle & ~WS_BORDER) | WS_CHILD,
                      extendedStyle & ~DWORD{WS_EX_CLIENTEDGE});
    SetMargins();
    RecalculateFrame();
}

// --- text --------------------------------------------------------------------------------------------------

void TmyEdit::SetText(const char* text) {
    if (GetText() != (text != nullptr ? text : "")) {
        TmyComponent::SetText(text);
    }
}

void TmyEdit::SetText(const TmyString& text) {
    SetText(text.Text());
}

void TmyEdit::SetReadOnly(bool readOnly) {
    if (Window() != nullptr && readOnly != IsReadOnly()) {
        SendMessageA(Window(), EM_SETREADONLY, readOnly ? TRUE : FALSE, 0);
    }
}

bool TmyEdit::IsReadOnly() const {
    return Window() != nullptr && (GetWindowLongA(Window(), GWL_STYLE) & ES_READONLY) != 0;
}

bool TmyEdit::IsMultiLine() const {
    return Window() != nullptr && (GetWindowLongA(Window(), GWL_STYLE) & ES_MULTILINE) != 0;
}

void TmyEdit::SetTextLimit(int characters) {
    if (Window() != nullptr) {
        SendMessageA(Window(), EM_LIMITTEXT, static_cast<WPARAM>(std::max(characters, 0)), 0);
    }
}

void TmyEdit::Select(int first, int end) {
    if (Window() != nullptr) {
        SendMessageA(Window(), EM_SETSEL, static_cast<WPARAM>(first), end);
    }
}

// --- input -------------------------------------------------------------------------------------------------

void TmyEdit::OnLeftButtonDown(WPARAM flags, int x, int y) {
    if (IsEnabled()) {
        TmyComponent::OnLeftButtonDown(flags, x, y);
    }
}

void TmyEdit::OnLeftButtonUp(WPARAM flags, int x, int y) {
    if (IsEnabled()) {
        TmyComponent::OnLeftButtonUp(flags, x, y);
    }
}

void TmyEdit::OnMouseMove(WPARAM flags, int x, int y) {
    if (IsEnabled()) {
        TmyComponent::OnMouseMove(flags, x, y);
    }
}

void TmyEdit::OnKeyUp(WPARAM key, LPARAM flags) {
    if (IsEnabled()) {
        TmyComponent::OnKeyUp(key, flags);
    }
}

void TmyEdit::OnKeyDown(WPARAM& key, LPARAM flags) {
    if (IsEnabled()) {
        TmyComponent::OnKeyDown(key, flags);
    } else {
        key = 0; // the platform's procedure would edit
    }
}

void TmyEdit::OnChar(WPARAM& code, LPARAM flags) {
    if (!IsEnabled()) {
        code = 0;
        return;
    }
    const LifeGuard life(this);
    TmyComponent::OnChar(code, flags);
    if (life.IsAlive() && code == VK_RETURN && !IsMultiLine()) {
        code = 0;
        OnCommit();
    }
}

void TmyEdit::OnFocusChange(bool gained) {
    const LifeGuard life(this);
    Invalidate();
    TmyComponent::OnFocusChange(gained);
    if (!gained && life.IsAlive()) {
        OnCommit();
    }
}

void TmyEdit::OnCommit() {
    onCommit.Fire(this);
}

LRESULT TmyEdit::OnCommand(WPARAM code) {
    if (HIWORD(code) == EN_CHANGE) {
        onChange.Fire(this);
    }
    return 0;
}

// --- look --------------------------------------------------------------------------------------------------

void TmyEdit::SetUnit(const TmyString& newUnit) {
    if (unit != newUnit) {
        unit = newUnit;
        RecalculateFrame();
    }
}

void TmyEdit::SetUnitWidth(int pixels) {
    pixels = std::max(pixels, 0);
    if (unitWidth != pixels) {
        unitWidth = pixels;
        RecalculateFrame();
    }
}

void TmyEdit::SetFont(HFONT newFont) {
    TmyComponent::SetFont(newFont);
    SetMargins();
    RecalculateFrame(); // the line's height is another
}

void TmyEdit::SetMargins() {
    if (Window() != nullptr) {
        SendMessageA(Window(), EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN,
                     MAKELONG(kTextMargin, kTextMargin));
    }
}

void TmyEdit::SetBorderWidth(std::uint32_t width) {
    TmyComponent::SetBorderWidth(width);
    RecalculateFrame();
}

void TmyEdit::RecalculateFrame() {
    if (Window() == nullptr) {
        return;
    }
    SetWindowPos(Window(), nullptr, 0, 0, 0, 0,
                 SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE |
                     SWP_NOOWNERZORDER);
    Invalidate();
}

void TmyEdit::Invalidate() {
    if (Window() != nullptr) {
        RedrawWindow(Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME);
    }
}

int TmyEdit::FrameWidth() const {
    return static_cast<int>(GetStyleValue(StyleValue::BorderWidth));
}

/// Makes the window's rectangle the client area: a line of text in the middle of what frame and unit leave.
void TmyEdit::ReserveFrame(RECT& area) const {
    const int frame = FrameWidth();
    const RECT inside{area.left + frame, area.top + frame, area.right - frame, area.bottom - frame};
    const int height = static_cast<int>(inside.bottom - inside.top);
    const int margin = IsMultiLine() ? 0 : std::max(height - TextHeight(), 0) / 2;
    area.left = inside.left;
    area.right = std::max(inside.right - unitWidth, inside.left);
    area.top = inside.top + margin;
    area.bottom = std::max(inside.bottom - margin, area.top);
}

void TmyEdit::OnDrawNonClient(HDC dc, const RECT& area) {
    const RECT client = ClientInWindow(Window());
    const int frame = FrameWidth();
    const RECT inside{area.left + frame, area.top + frame, area.right - frame, area.bottom - frame};
    SetDCBrushColor(dc, GetStyleValue(StyleValue::BackColor));
    FillRect(dc, &inside, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    if (!unit.IsEmpty()) {
        const TextLook look{
            EffectiveFont(),
            GetStyleValue(IsEnabled() ? StyleValue::TextColor : StyleValue::DisabledTextColor),
            GetStyleValue(StyleValue::BackColor), 0};
        const RECT strip{std::min(client.right + kUnitGap, inside.right), inside.top, inside.right,
                         inside.bottom};
        DrawAlignedText(dc, unit.Text(), strip, kTextLeftMiddle, look);
    }
    DrawFrame(dc, area, HasState(ControlState::Grey) ? kFrameFaint : kFrameSunken, frame, *this);
    if (HasFocus() && frame > 0) {
        RECT innermost = inside;
        InflateRect(&innermost, 1, 1);
        DrawFocusMark(dc, innermost);
    }
}

// --- messages of the frame ---------------------------------------------------------------------------------

LRESULT TmyEdit::WndProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (Window() == nullptr) {
        return TmyComponent::WndProc(message, wParam, lParam);
    }
    const LifeGuard life(this);
    switch (message) {
    case WM_NCCALCSIZE:
    case WM_NCPAINT:
    case WM_NCHITTEST:
        messageHook.Fire(this, message, wParam, lParam);
        return life.IsAlive() ? HandleNonClient(message, wParam, lParam) : 0;
    case WM_KILLFOCUS: {
        const LRESULT result = TmyComponent::WndProc(message, wParam, lParam);
        // A window that is none of ours takes the focus without a word to the tree, even in the same top
        // window.
        if (life.IsAlive() && TmyApplication::ObjectFromWindow(reinterpret_cast<HWND>(wParam)) == nullptr) {
            TellFocus(false);
        }
        return result;
    }
    default:
        return TmyComponent::WndProc(message, wParam, lParam);
    }
}

LRESULT TmyEdit::HandleNonClient(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_NCCALCSIZE:
        ReserveFrame(wParam != FALSE ? reinterpret_cast<NCCALCSIZE_PARAMS*>(lParam)->rgrc[0]
                                     : *reinterpret_cast<RECT*>(lParam));
        return 0;
    case WM_NCPAINT:
        PaintNonClient();
        return 0;
    default:
        return HitTest(lParam);
    }
}

void TmyEdit::PaintNonClient() {
    const WindowContext context(Window());
    if (context.Get() == nullptr) {
        return;
    }
    const RECT client = ClientInWindow(Window());
    ExcludeClipRect(context.Get(), client.left, client.top, client.right, client.bottom);
    RECT outer{};
    GetWindowRect(Window(), &outer);
    OffsetRect(&outer, -outer.left, -outer.top);
    OnDrawNonClient(context.Get(), outer);
}

/// All that is inside the frame belongs to the text: a click beside the line or on the unit is one into the
/// line. The platform knows nothing of an ancestor without a window that is disabled: as if it knew, the
/// mouse goes to the window below.
LRESULT TmyEdit::HitTest(LPARAM place) const {
    if (!IsEnabled()) {
        return HTTRANSPARENT;
    }
    const POINT pointer{GET_X_LPARAM(place), GET_Y_LPARAM(place)};
    RECT area{};
    GetWindowRect(Window(), &area);
    if (PtInRect(&area, pointer) == 0) {
        return HTNOWHERE;
    }
    const int frame = FrameWidth();
    InflateRect(&area, -frame, -frame);
    return PtInRect(&area, pointer) != 0 ? HTCLIENT : HTBORDER;
}

} // namespace orva::toolkit
