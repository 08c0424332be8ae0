#include "toolkit/TmyListBox.h"

#include "toolkit/Colors.h"
#include "toolkit/FocusMark.h"
#include "toolkit/FrameDrawing.h"
#include "toolkit/IndexStep.h"
#include "toolkit/TextDrawing.h"
#include "toolkit/Tmy_ScrollBar.h"
#include "toolkit/TypeRegistry.h"

#include <algorithm>
#include <memory>

namespace orva::toolkit {

namespace {

constexpr std::uint32_t kBorderWidth = 2;
constexpr int kLineGap = 2; ///< added to the text's height
constexpr int kTextGap = 3; ///< on both sides of the text
constexpr int kLargeHeight = -20;
constexpr char kLargeFontName[] = "Arial";

} // namespace

TmyListBox::TmyListBox(TmyControl* parentControl, const Placement& placement, ListStyle kind,
                       DWORD windowStyle, DWORD extendedStyle)
    : TmyPanel(parentControl, "", placement, windowStyle, extendedStyle),
      listStyle(kind),
      scrollBar(nullptr) {
    RegisterType(this, TypeId::ListBox, "ListBox");
    SetStyleValue(StyleValue::BorderStyle, kFrameSunken);
    SetStyleValue(StyleValue::BorderWidth, kBorderWidth);
    scrollBar =
        new Tmy_ScrollBar(this, ScrollDirection::Vertical, {0, 0, Tmy_ScrollBar::kDefaultThickness, 0});
    scrollBar->onScroll.Bind<&TmyListBox::OnScroll>(this);
    scrollBar->SetAlignment(Alignment::Right);
    itemHeight = TextHeight() + kLineGap;
    if (listStyle == ListStyle::Large) {
        scrollBar->SetVisible(false);
        largeFont = CreateFontA(kLargeHeight, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                                OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                                DEFAULT_PITCH | FF_DONTCARE, kLargeFontName);
        TmyListBox::SetFont(largeFont);
    }
    UpdateScrollBar();
}

TmyListBox::~TmyListBox() {
    if (largeFont != nullptr) {
        TmyComponent::SetFont(InheritedFont());
        DeleteObject(largeFont);
    }
}

// --- items -------------------------------------------------------------------------------------------------

std::int32_t TmyListBox::AddItem(const char* text) {
    auto item = std::make_unique<TmyLBitem>();
    item->text.Assign(text);
    const std::int32_t index = items.Add(std::move(item));
    UpdateScrollBar();
    Invalidate();
    return index;
}

void TmyListBox::Clear() {
    items.Clear();
    selected = kNone;
    UpdateScrollBar();
    Invalidate();
}

void TmyListBox::Select(std::int32_t index, bool fire) {
    const std::int32_t chosen = index >= 0 && index < GetCount() ? index : kNone;
    if (chosen == selected) {
        return;
    }
    selected = chosen;
    ShowSelected();
    Invalidate();
    if (fire) {
        onChange.Fire(this, selected);
    }
}

void TmyListBox::OnEnter() {
    onEnter.Fire(this, selected);
}

// --- geometry ----------------------------------------------------------------------------------------------

RECT TmyListBox::LinesRect() const {
    RECT area{};
    GetClientArea(&area);
    if (!scrollBar->HasState(ControlState::Hidden)) {
        area.right = std::max(area.left, area.right - scrollBar->GetClientWidth());
    }
    area.bottom = std::max(area.top, area.bottom);
    return area;
}

RECT TmyListBox::LineRect(std::int32_t index) const {
    const RECT lines = LinesRect();
    const LONG top = lines.top + (index - topIndex) * itemHeight;
    return {lines.left, top, lines.right, top + itemHeight};
}

std::int32_t TmyListBox::IndexAt(int x, int y) const {
    const RECT lines = LinesRect();
    if (PtInRect(&lines, POINT{x, y}) == 0) {
        return kNone;
    }
    const std::int32_t index = topIndex + (y - lines.top) / itemHeight;
    return index < GetCount() ? index : kNone;
}

int TmyListBox::VisibleCount() const {
    const RECT lines = LinesRect();
    return std::max(static_cast<int>(lines.bottom - lines.top) / itemHeight, 1);
}

int TmyListBox::HeightFor(int lines) const {
    RECT area{};
    GetClientArea(&area);
    const LONG border = GetClientHeight() - (area.bottom - area.top);
    return static_cast<int>(border) + lines * itemHeight;
}

std::int32_t TmyListBox::LastTopIndex() const {
    return std::max(GetCount() - VisibleCount(), 0);
}

void TmyListBox::SetFont(HFONT newFont) {
    const LifeGuard life(this);
    TmyPanel::SetFont(newFont);
    if (life.IsAlive()) {
        itemHeight = std::max(TextHeight() + kLineGap, 1);
        UpdateScrollBar();
    }
}

void TmyListBox::OnResize() {
    UpdateScrollBar();
    Invalidate();
    TmyPanel::OnResize();
}

// --- scrolling ---------------------------------------------------------------------------------------------

void TmyListBox::UpdateScrollBar() {
    scrollBar->SetPageSize(VisibleCount());
    scrollBar->SetRange(0, LastTopIndex());
    SetTopIndex(topIndex);
}

void TmyListBox::SetTopIndex(std::int32_t index) {
    const std::int32_t limited = std::clamp(index, 0, LastTopIndex());
    scrollBar->SetPosition(limited, false);
    if (limited != topIndex) {
        topIndex = limited;
        Invalidate();
    }
}

void TmyListBox::OnScroll(TmyControl* /*sender*/, int position) {
    SetTopIndex(position);
}

/// Scrolls as little as brings the selected line into view.
void TmyListBox::ShowSelected() {
    if (selected == kNone) {
        return;
    }
    if (selected < topIndex) {
        SetTopIndex(selected);
    } else if (selected >= topIndex + VisibleCount()) {
        SetTopIndex(selected - VisibleCount() + 1);
    }
}

// --- mouse -------------------------------------------------------------------------------------------------

void TmyListBox::OnLeftButtonDown(WPARAM flags, int x, int y) {
    if (!IsEnabled()) {
        return;
    }
    const LifeGuard life(this);
    TmyPanel::OnLeftButtonDown(flags, x, y);
    if (!life.IsAlive()) {
        return;
    }
    const std::int32_t index = IndexAt(x, y);
    pressed = index != kNone;
    if (pressed) {
        Select(index, true);
    }
}

void TmyListBox::OnMouseMove(WPARAM flags, int x, int y) {
    if (!IsEnabled()) {
        return;
    }
    const LifeGuard life(this);
    TmyPanel::OnMouseMove(flags, x, y);
    if (!life.IsAlive() || !pressed) {
        return;
    }
    if (GetCapture() != window) {
        pressed = false; // someone took the mouse away: the release will not come here
        return;
    }
    SelectByPointer(y);
}

/// While the button is held the pointer may be anywhere: above and below the lines it scrolls by one.
void TmyListBox::SelectByPointer(int y) {
    const RECT lines = LinesRect();
    std::int32_t index = topIndex + (y - lines.top) / itemHeight;
    if (y < lines.top) {
        index = topIndex - 1;
    } else if (y >= lines.bottom) {
        index = topIndex + VisibleCount();
    }
    Select(std::clamp(index, 0, std::max(LastIndex(), 0)), true);
}

void TmyListBox::OnLeftButtonUp(WPARAM flags, int x, int y) {
    if (!IsEnabled()) {
        return;
    }
    const bool chosen = pressed && IndexAt(x, y) != kNone;
    pressed = false;
    const LifeGuard life(this);
    TmyPanel::OnLeftButtonUp(flags, x, y);
    if (life.IsAlive() && chosen && selected != kNone) {
        OnEnter();
    }
}

void TmyListBox::OnMouseWheel(int delta, TmyControl* /*sender*/) {
    if (!IsEnabled()) {
        return;
    }
    bool scrolls = true;
    const LifeGuard life(this);
    onWheel.Fire(this, delta, wheelKeys, scrolls);
    if (life.IsAlive() && scrolls) {
        scrollBar->SetPosition(scrollBar->GetPosition() - delta, true);
    }
}

void TmyListBox::OnEnableChanged() {
    pressed = false;
    TmyPanel::OnEnableChanged();
}

// --- keys --------------------------------------------------------------------------------------------------

void TmyListBox::OnKeyDown(WPARAM& key, LPARAM flags) {
    if (!IsEnabled()) {
        return;
    }
    const LifeGuard life(this);
    TmyPanel::OnKeyDown(key, flags);
    if (!life.IsAlive() || !TakesKeys()) {
        return;
    }
    switch (key) {
    case VK_UP:
        MoveSelection(-1);
        break;
    case VK_DOWN:
        MoveSelection(1);
        break;
    case VK_PRIOR:
        MoveSelection(-scrollBar->GetPageSize());
        break;
    case VK_NEXT:
        MoveSelection(scrollBar->GetPageSize());
        break;
    case VK_RETURN:
        OnEnter();
        break;
    case VK_ESCAPE:
        if (listStyle == ListStyle::InCombo) {
            OnEscape();
        }
        break;
    default:
        break;
    }
}

void TmyListBox::OnEscape() {
    TmyControl* owner = GetParent();
    const LifeGuard life(this);
    SetVisible(false);
    if (life.IsAlive() && owner != nullptr) {
        owner->SetFocus();
    }
}

void TmyListBox::MoveSelection(std::int32_t lines) {
    if (GetCount() == 0) {
        return;
    }
    Select(StepIndex(selected, lines, GetCount()), true);
}

// --- painting ----------------------------------------------------------------------------------------------

void TmyListBox::OnDrawBackground(HDC dc, const RECT& area) {
    FillSolid(dc, area, GetStyleValue(StyleValue::BackColor));
}

void TmyListBox::OnDrawContent(HDC dc, const RECT& /*area*/) {
    const RECT lines = LinesRect();
    const int saved = SaveDC(dc); // a last line may be cut by the border
    IntersectClipRect(dc, lines.left, lines.top, lines.right, lines.bottom);
    for (std::int32_t index = topIndex; index < GetCount(); ++index) {
        if (LineRect(index).top >= lines.bottom) {
            break;
        }
        DrawLine(dc, index);
    }
    RestoreDC(dc, saved);
}

void TmyListBox::DrawLine(HDC dc, std::int32_t index) const {
    const TmyLBitem* item = GetItem(index);
    const RECT line = LineRect(index);
    COLORREF color = item->color != kListTextColor ? item->color : GetStyleValue(StyleValue::TextColor);
    if (!IsEnabled()) {
        color = GetStyleValue(StyleValue::DisabledTextColor);
    }
    COLORREF background = GetStyleValue(StyleValue::BackColor);
    if (index == selected) {
        std::swap(color, background);
        FillSolid(dc, line, background);
    }
    const TextLook look{EffectiveFont(), color, background, 0};
    DrawAlignedText(dc, item->text.Text(),
                    {line.left + kTextGap, line.top, line.right - kTextGap, line.bottom}, kTextLeftMiddle,
                    look);
}

void TmyListBox::OnDrawFocus(HDC dc, const RECT& /*area*/) {
    const RECT lines = LinesRect();
    RECT mark = lines;
    if (selected != kNone) {
        const RECT line = LineRect(selected);
        if (IntersectRect(&mark, &line, &lines) == 0) {
            return;
        }
    }
    DrawFocusMark(dc, mark);
}

} // namespace orva::toolkit
