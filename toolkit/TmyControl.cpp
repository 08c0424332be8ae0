#include "toolkit/TmyControl.h"

#include "toolkit/TmyApplication.h"
#include "toolkit/TmyComponent.h"
#include "toolkit/TypeRegistry.h"

namespace orva::toolkit {

namespace {

enum BorderMargin : std::uint32_t {
    kNoBorder = 0,
    kThinBorder = 1,
    kThinRoundBorder = 2,
    kThinPanelBorder = 5,
    kDoubleBorder = 9,
};

int MarginOf(std::uint32_t borderStyle, int borderWidth) {
    switch (borderStyle) {
    case kNoBorder:
        return 0;
    case kThinBorder:
    case kThinRoundBorder:
    case kThinPanelBorder:
        return 1;
    case kDoubleBorder:
        return 2 * borderWidth;
    default:
        return borderWidth;
    }
}

} // namespace

WPARAM TmyControl::wheelKeys = 0;

TmyControl::TmyControl(TmyControl* parentControl, const Placement& placement)
    : font(InheritedFont()),
      bounds{placement.x, placement.y, placement.x + placement.width, placement.y + placement.height},
      parent(parentControl) {
    RegisterType(this, TypeId::Control, "Control");
    SetState(ControlState::ForwardsKeys, true);
    style = parent != nullptr ? parent->style : new ControlStyle;
    style->Join(this);
    if (parent == nullptr) {
        return;
    }
    SetState(ControlState::ParentDisabled, !parent->IsEnabled());
    SetState(ControlState::Grey, parent->HasState(ControlState::Grey));
    textHeight = parent->textHeight; // of the font it inherits
    parent->AddChild(this);
}

TmyControl::~TmyControl() {
    for (LifeGuard* guard = guards; guard != nullptr; guard = guard->next) {
        guard->control = nullptr;
    }
    for (ChildWalk* walk = walks; walk != nullptr; walk = walk->outer) {
        walk->parent = nullptr;
        walk->child = nullptr;
    }
    walks = nullptr;
    DeleteChildren();
    if (parent != nullptr) {
        parent->RemoveChild(this);
    }
    Application().StopHover(this);
    style->Leave(this);
}

void TmyControl::DeleteChildren() {
    while (firstChild != nullptr) {
        delete firstChild; // takes itself out of the list
    }
}

// --- the tree ----------------------------------------------------------------------------------------------

void TmyControl::AddChild(TmyControl* child) {
    TmyControl* last = nullptr;
    for (TmyControl* each = firstChild; each != nullptr; each = each->nextSibling) {
        if (each == child) {
            return;
        }
        last = each;
    }
    child->nextSibling = nullptr;
    (last != nullptr ? last->nextSibling : firstChild) = child;
    if (last != nullptr) {
        last->Invalidate();
    }
    OnChildAdded(child);
}

void TmyControl::RemoveChild(TmyControl* child) {
    for (ChildWalk* walk = walks; walk != nullptr; walk = walk->outer) {
        if (walk->child == child) {
            walk->child = child->nextSibling;
        }
    }
    for (TmyControl** link = &firstChild; *link != nullptr; link = &(*link)->nextSibling) {
        if (*link == child) {
            *link = child->nextSibling;
            child->nextSibling = nullptr;
            break;
        }
    }
    if (pressedChild == child) {
        pressedChild = nullptr;
    }
}

TmyControl* TmyControl::GetParent() const {
    return parent;
}

TmyControl* TmyControl::LastChild() const {
    return Predecessor(nullptr);
}

TmyControl* TmyControl::Predecessor(const TmyControl* child) const {
    TmyControl* before = nullptr;
    for (TmyControl* each = firstChild; each != child && each != nullptr; each = each->nextSibling) {
        before = each;
    }
    return before;
}

bool TmyControl::IsTopLevelWindow() const {
    return window != nullptr && (GetWindowLongA(window, GWL_STYLE) & WS_CHILD) == 0;
}

TmyComponent* TmyControl::NearestComponent() {
    TmyControl* control = this;
    while (control != nullptr && control->window == nullptr) {
        control = control->parent;
    }
    return static_cast<TmyComponent*>(control); // what has a window is a component
}

TmyComponent* TmyControl::GetTopLevel() {
    TmyControl* control = this;
    while (control != nullptr && !control->IsTopLevelWindow()) {
        control = control->parent;
    }
    return static_cast<TmyComponent*>(control);
}

POINT TmyControl::OffsetInComponent() const {
    POINT offset{0, 0};
    for (const TmyControl* control = this; control != nullptr && control->window == nullptr;
         control = control->parent) {
        offset.x += control->bounds.left;
        offset.y += control->bounds.top;
    }
    return offset;
}

// --- state -------------------------------------------------------------------------------------------------

void TmyControl::SetState(ControlState bit, bool on) {
    if (on) {
        state.Add(static_cast<std::int32_t>(bit));
    } else {
        state.Remove(static_cast<std::int32_t>(bit));
    }
}

void TmyControl::SetEnabled(bool enabled) {
    if (HasState(ControlState::Disabled) == !enabled) {
        return;
    }
    SetState(ControlState::Disabled, !enabled);
    Invalidate();
    ChildWalk children(this);
    while (TmyControl* child = children.Next()) {
        child->SetParentEnabled(IsEnabled());
    }
    OnEnableChanged();
}

void TmyControl::SetParentEnabled(bool enabled) {
    if (HasState(ControlState::ParentDisabled) == !enabled) {
        return;
    }
    SetState(ControlState::ParentDisabled, !enabled);
    ChildWalk children(this);
    while (TmyControl* child = children.Next()) {
        child->SetParentEnabled(IsEnabled());
    }
    Invalidate();
    OnEnableChanged();
}

void TmyControl::OnEnableChanged() {}

bool TmyControl::IsEnabled() const {
    return !HasState(ControlState::Disabled) && !HasState(ControlState::ParentDisabled);
}

void TmyControl::SetVisible(bool visible) {
    if (HasState(ControlState::Hidden) == !visible) {
        return;
    }
    // A hidden control invalidates nothing: its area is invalidated while it is not.
    if (!visible && parent != nullptr && window == nullptr) {
        parent->InvalidateRect(bounds);
    }
    SetState(ControlState::Hidden, !visible);
    if (visible) {
        Invalidate();
    }
    const LifeGuard life(this);
    OnVisibilityChanged(visible);
    if (life.IsAlive() && parent != nullptr && !IsTopLevelWindow()) {
        parent->Realign();
    }
}

void TmyControl::OnVisibilityChanged(bool visible) {
    const LifeGuard life(this);
    ChildWalk children(this);
    while (TmyControl* child = children.Next()) {
        if (!child->IsTopLevelWindow()) {
            child->OnVisibilityChanged(visible);
        }
    }
    if (life.IsAlive() && alignment != Alignment::None && parent != nullptr) {
        parent->Realign();
    }
}

bool TmyControl::IsVisible() const {
    const bool parentVisible = parent == nullptr || IsTopLevelWindow() || parent->IsVisible();
    return parentVisible && !HasState(ControlState::Hidden);
}

void TmyControl::SetOverlay(bool overlay) {
    if (HasState(ControlState::Overlay) != overlay) {
        SetState(ControlState::Overlay, overlay);
        Invalidate();
    }
}

void TmyControl::SetGrey(bool grey) {
    if (HasState(ControlState::Grey) == grey) {
        return;
    }
    SetState(ControlState::Grey, grey);
    Invalidate();
    ChildWalk children(this);
    while (TmyControl* child = children.Next()) {
        child->SetGrey(grey);
    }
}

void TmyControl::SetFocusable(bool focusable) {
    SetState(ControlState::Focusable, focusable);
}

void TmyControl::SetKeyForwarding(bool forwards) {
    SetState(ControlState::ForwardsKeys, forwards);
}

bool TmyControl::GetKeyForwarding() const {
    return HasState(ControlState::ForwardsKeys);
}

void TmyControl::SetCursor(HCURSOR newCursor) {
    cursor = newCursor;
}

HCURSOR TmyControl::GetCursor() const {
    return cursor;
}

// --- look --------------------------------------------------------------------------------------------------

HFONT TmyControl::EffectiveFont() const {
    for (const TmyControl* control = this; control != nullptr; control = control->parent) {
        if (control->font != InheritedFont() && control->font != nullptr) {
            return control->font;
        }
    }
    return static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT));
}

void TmyControl::MeasureFont() {
    const HDC dc = ::GetDC(nullptr);
    if (dc == nullptr) {
        return;
    }
    const HGDIOBJ before = SelectObject(dc, EffectiveFont());
    TEXTMETRICA metrics{};
    if (GetTextMetricsA(dc, &metrics) != 0) {
        textHeight = metrics.tmHeight;
    }
    SelectObject(dc, before);
    ::ReleaseDC(nullptr, dc);
}

void TmyControl::SetFont(HFONT newFont) {
    font = newFont;
    MeasureFont();
    Invalidate();
    ChildWalk children(this);
    while (TmyControl* child = children.Next()) {
        if (child->font == InheritedFont()) {
            child->SetFont(InheritedFont());
        }
    }
}

void TmyControl::GetClientArea(RECT* area) const {
    const int margin = MarginOf(GetStyleValue(StyleValue::BorderStyle),
                                static_cast<int>(GetStyleValue(StyleValue::BorderWidth)));
    *area = {margin, margin, GetClientWidth() - margin, GetClientHeight() - margin};
}

void TmyControl::SetStyleValue(StyleValue index, std::uint32_t value, bool unshare) {
    if (unshare && style->Sharers().size() > 1) {
        ControlStyle* own = style->Copy();
        style->Leave(this);
        style = own;
        style->Join(this);
    }
    if (style->Get(index) != value) {
        style->Set(index, value);
        NotifyStyle(index, value);
    }
}

void TmyControl::NotifyStyle(StyleValue index, std::uint32_t value) {
    // A control that is told may leave the record, or go altogether, and so may those still to be told.
    const ControlStyle::Keeper told(style);
    const std::vector<TmyControl*> sharers = told->Sharers();
    for (TmyControl* control : sharers) {
        if (told->IsSharedBy(control)) {
            control->SetStyleValue(index, value);
        }
        if (told->IsSharedBy(control)) {
            control->TellStyleValue(index, value);
        }
        if (told->IsSharedBy(control)) {
            control->Invalidate();
        }
    }
}

void TmyControl::TellStyleValue(StyleValue index, std::uint32_t value) {
    switch (index) {
    case StyleValue::WindowColor:
        SetWindowColor(value);
        break;
    case StyleValue::BackColor:
        SetBackColor(value);
        break;
    case StyleValue::TextColor:
        SetTextColor(value);
        break;
    case StyleValue::DisabledTextColor:
        SetDisabledTextColor(value);
        break;
    case StyleValue::BorderWidth:
        SetBorderWidth(value);
        break;
    case StyleValue::BorderStyle:
        SetBorderStyle(value);
        break;
    case StyleValue::Brightness:
        SetBrightness(value);
        break;
    default:
        break; // the others have no operation of their own
    }
}

void TmyControl::SetBackColor(COLORREF color) {
    SetStyleValue(StyleValue::BackColor, color);
}
void TmyControl::SetTextColor(COLORREF color) {
    SetStyleValue(StyleValue::TextColor, color);
}
void TmyControl::SetDisabledTextColor(COLORREF color) {
    SetStyleValue(StyleValue::DisabledTextColor, color);
}
void TmyControl::SetBorderWidth(std::uint32_t width) {
    SetStyleValue(StyleValue::BorderWidth, width);
}
void TmyControl::SetBorderStyle(std::uint32_t borderStyle) {
    SetStyleValue(StyleValue::BorderStyle, borderStyle);
}
void TmyControl::SetWindowColor(COLORREF color) {
    SetStyleValue(StyleValue::WindowColor, color);
}
void TmyControl::SetBrightness(std::uint32_t percent) {
    SetStyleValue(StyleValue::Brightness, percent);
}

// --- events that need no more than to be fired -------------------------------------------------------------

void TmyControl::OnResize() {
    onResize.Fire(this);
}
void TmyControl::OnMove() {}
void TmyControl::OnHover() {
    onHover.Fire(this);
}
void TmyControl::OnConstrainBounds(int* /*x*/, int* /*y*/, int* /*width*/, int* /*height*/) {}
void TmyControl::OnChildAdded(TmyControl* /*child*/) {}
void TmyControl::OnTimer(UINT_PTR id) {
    onTimer.Fire(this, id);
}

// --- the caret ---------------------------------------------------------------------------------------------

void TmyControl::CreateCaret(int width, int height, HBITMAP bitmap) {
    if (parent != nullptr) {
        parent->CreateCaret(width, height == -1 ? textHeight : height, bitmap);
    }
}

void TmyControl::ShowCaret(bool show) {
    if (parent != nullptr) {
        parent->ShowCaret(show);
    }
}

void TmyControl::SetCaretPos(int x, int y) {
    if (parent != nullptr) {
        parent->SetCaretPos(x + bounds.left, y + bounds.top);
    }
}

void TmyControl::DestroyCaret() {
    if (parent != nullptr) {
        parent->DestroyCaret();
    }
}

} // namespace orva::toolkit
