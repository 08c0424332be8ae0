#include "toolkit/TmyFloatingSelection.h"

#include "toolkit/Colors.h"
#include "toolkit/ControlDrawing.h"
#include "toolkit/IndexStep.h"
#include "toolkit/TmyApplication.h"
#include "toolkit/TmyIntEdit.h"
#include "toolkit/TmyPopupFocus.h"
#include "toolkit/TypeRegistry.h"
#include "toolkit/WorkArea.h"

#include <algorithm>
#include <memory>

namespace orva::toolkit {

namespace {

constexpr DWORD kPopupStyle = WS_POPUP | WS_CLIPCHILDREN;
/// 0x8000088
constexpr DWORD kPopupExtendedStyle = WS_EX_TOOLWINDOW | WS_EX_TOPMOST | WS_EX_NOACTIVATE;

constexpr int kHandleWidth = 9;
constexpr int kLeastHandle = 8; // [pixels]
constexpr int kHandleBorder = 2;
constexpr int kTextGap = 4;

} // namespace

TmyFloatingSelection::TmyFloatingSelection(TmyIntEdit* owner, int rows, int height)
    : TmyComponent(owner, "", kPopupStyle, kPopupExtendedStyle, {0, 0, 1, 1}),
      entry(owner),
      shownRows(std::max(rows, 1)),
      rowHeight(std::max(height, 1)) {
    RegisterType(this, TypeId::FloatSel, "FloatSel");
    SetDoubleBuffered(true);
}

TmyFloatingSelection::~TmyFloatingSelection() {
    ForgetPopups(this);
}

// --- numbers -----------------------------------------------------------------------------------------------

void TmyFloatingSelection::AddItem(std::int64_t number) {
    items.push_back(number);
    Invalidate();
}

void TmyFloatingSelection::Clear() {
    items.clear();
    marked = kNone;
    topRow = 0;
    Invalidate();
}

// --- opening and closing -----------------------------------------------------------------------------------

RECT TmyFloatingSelection::Place(const RECT& entry, const SIZE& size, const RECT& workArea) {
    const LONG width = std::min(size.cx, workArea.right - workArea.left);
    const LONG height = std::min(size.cy, workArea.bottom - workArea.top);
    const LONG x = std::clamp(entry.left, workArea.left, workArea.right - width);
    const bool fitsBelow = entry.bottom + height <= workArea.bottom;
    const LONG wanted = fitsBelow ? entry.bottom : entry.top - height;
    const LONG y = std::clamp(wanted, workArea.top, workArea.bottom - height);
    return {x, y, x + width, y + height};
}

void TmyFloatingSelection::Open() {
    if (Window() == nullptr || IsOpen() || !TakesInput()) {
        return;
    }
    const LifeGuard life(this);
    if (!entry->HasFocus()) {
        entry->SetFocus();
    }
    if (!life.IsAlive()) {
        return;
    }
    Prepare();
    RECT box{};
    GetWindowRect(entry->Window(), &box);
    const RECT place = Place(box, WindowSize(), WorkAreaAt(entry->Window()));
    SetBounds(place.left, place.top, place.right - place.left, place.bottom - place.top);
    RememberPopup(this, entry);
    SetVisible(true);
}

void TmyFloatingSelection::Close() {
    if (!IsOpen()) {
        return;
    }
    ForgetPopups(this);
    pressed = false;
    dragging = false;
    SetVisible(false);
}

bool TmyFloatingSelection::IsOpen() const {
    return IsPopupOpen(this);
}

bool TmyFloatingSelection::TakesInput() const {
    return IsEnabled() && entry->IsEnabled() && !entry->IsReadOnly();
}

SIZE TmyFloatingSelection::WindowSize() const {
    return {entry->Bounds().right - entry->Bounds().left, shownRows * rowHeight + 2 * kOutline};
}

void TmyFloatingSelection::Prepare() {
    const auto found = std::find(items.begin(), items.end(), entry->GetValue());
    marked = found != items.end() ? static_cast<int>(found - items.begin()) : kNone;
    topRow = std::clamp(marked - shownRows / 2, 0, LastTopRow());
}

void TmyFloatingSelection::SetFocus() {
    if (!entry->HasFocus()) {
        entry->SetFocus();
    }
}

void TmyFloatingSelection::OnFocusChange(bool gained) {
    const LifeGuard life(this);
    if (!gained) {
        Close();
    }
    if (life.IsAlive()) {
        TmyComponent::OnFocusChange(gained);
    }
}

LRESULT TmyFloatingSelection::WndProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT result = TmyComponent::WndProc(message, wParam, lParam);
    return message == WM_MOUSEACTIVATE ? MA_NOACTIVATE : result;
}

// --- rows --------------------------------------------------------------------------------------------------

RECT TmyFloatingSelection::InnerRect() const {
    return {kOutline, kOutline, std::max(GetClientWidth() - kOutline, kOutline),
            std::max(GetClientHeight() - kOutline, kOutline)};
}

int TmyFloatingSelection::LastTopRow() const {
    return std::max(GetCount() - shownRows, 0);
}

int TmyFloatingSelection::RowAt(int x, int y) const {
    const RECT area = InnerRect();
    const RECT handle = HandleRect();
    if (PtInRect(&area, {x, y}) == 0 || (IsRectEmpty(&handle) == 0 && x >= handle.left)) {
        return kNone;
    }
    const int index = topRow + (y - static_cast<int>(area.top)) / rowHeight;
    return index < GetCount() ? index : kNone;
}

void TmyFloatingSelection::SetTopRow(int row) {
    row = std::clamp(row, 0, LastTopRow());
    if (row != topRow) {
        topRow = row;
        Invalidate();
    }
}

void TmyFloatingSelection::Mark(int index) {
    if (index != marked) {
        marked = index;
        Invalidate();
    }
}

void TmyFloatingSelection::MarkByKey(int distance) {
    if (items.empty()) {
        return;
    }
    Mark(StepIndex(marked, distance, GetCount()));
    SetTopRow(std::clamp(topRow, marked - shownRows + 1, marked));
}

void TmyFloatingSelection::Choose(int index) {
    if (index < 0 || index >= GetCount()) {
        return;
    }
    const std::int64_t number = items[static_cast<std::size_t>(index)];
    const LifeGuard life(this);
    Close();
    entry->EnterValue(number);
    if (life.IsAlive()) {
        onChange.Fire(this);
    }
}

// --- the handle --------------------------------------------------------------------------------------------

RECT TmyFloatingSelection::HandleRect() const {
    if (LastTopRow() == 0) {
        return {};
    }
    const RECT area = InnerRect();
    const int way = static_cast<int>(area.bottom - area.top);
    const int length = std::min(std::max(way * shownRows / GetCount(), kLeastHandle), way);
    const int top = static_cast<int>(area.top) + (way - length) * topRow / LastTopRow();
    return {area.right - kHandleWidth, top, area.right, top + length};
}

void TmyFloatingSelection::DragHandle(int y) {
    const RECT area = InnerRect();
    const RECT handle = HandleRect();
    const int way = static_cast<int>((area.bottom - area.top) - (handle.bottom - handle.top));
    if (way > 0) {
        const int place = std::clamp(y - dragStart - static_cast<int>(area.top), 0, way);
        SetTopRow((place * LastTopRow() + way / 2) / way);
    }
}

// --- input -------------------------------------------------------------------------------------------------

void TmyFloatingSelection::OnLeftButtonDown(WPARAM flags, int x, int y) {
    if (!TakesInput()) {
        return;
    }
    const LifeGuard life(this);
    TmyComponent::OnLeftButtonDown(flags, x, y);
    if (!life.IsAlive()) {
        return;
    }
    const RECT handle = HandleRect();
    if (IsRectEmpty(&handle) == 0 && x >= handle.left) {
        dragging = true;
        const bool onHandle = y >= handle.top && y < handle.bottom;
        dragStart = (onHandle ? y : (handle.top + handle.bottom) / 2) - static_cast<int>(handle.top);
        DragHandle(y);
        return;
    }
    pressed = true;
    Mark(RowAt(x, y));
}

void TmyFloatingSelection::OnMouseMove(WPARAM flags, int x, int y) {
    if (!TakesInput()) {
        return;
    }
    const LifeGuard life(this);
    TmyComponent::OnMouseMove(flags, x, y);
    if (!life.IsAlive()) {
        return;
    }
    if ((flags & MK_LBUTTON) == 0) {
        pressed = false; // the release went elsewhere
        dragging = false;
    }
    if (dragging) {
        DragHandle(y);
    } else if (pressed || RowAt(x, y) != kNone) {
        Mark(RowAt(x, y));
    }
}

void TmyFloatingSelection::OnLeftButtonUp(WPARAM flags, int x, int y) {
    if (!TakesInput()) {
        return;
    }
    const LifeGuard life(this);
    TmyComponent::OnLeftButtonUp(flags, x, y);
    if (!life.IsAlive()) {
        return;
    }
    const bool onRow = pressed;
    pressed = false;
    dragging = false;
    if (onRow) {
        Choose(RowAt(x, y));
    }
}

void TmyFloatingSelection::OnMouseWheel(int delta, TmyControl* /*sender*/) {
    if (TakesInput()) {
        SetTopRow(topRow - std::clamp(delta, -GetCount(), GetCount()));
    }
}

void TmyFloatingSelection::OnKeyDown(WPARAM& key, LPARAM /*flags*/) {
    if (!TakesInput()) {
        return;
    }
    switch (key) {
    case VK_UP:
        MarkByKey(-1);
        break;
    case VK_DOWN:
        MarkByKey(1);
        break;
    case VK_PRIOR:
        MarkByKey(-shownRows);
        break;
    case VK_NEXT:
        MarkByKey(shownRows);
        break;
    case VK_RETURN:
    case VK_ESCAPE:
        break; // they act as characters
    default:
        return;
    }
    key = 0;
}

void TmyFloatingSelection::OnChar(WPARAM& code, LPARAM /*flags*/) {
    if (!TakesInput() || (code != VK_RETURN && code != VK_ESCAPE)) {
        return;
    }
    const bool chooses = code == VK_RETURN && marked != kNone;
    code = 0;
    if (chooses) {
        Choose(marked);
    } else {
        Close();
    }
}

// --- painting ----------------------------------------------------------------------------------------------

void TmyFloatingSelection::OnPaint(HDC dc) {
    const RECT client{0, 0, GetClientWidth(), GetClientHeight()};
    FillSolid(dc, client, GetStyleValue(StyleValue::BackColor));
    DrawRows(dc, InnerRect());
    DrawFrame(dc, client, kFrameOutline, kOutline, *this);
    TmyComponent::OnPaint(dc);
}

void TmyFloatingSelection::DrawRows(HDC dc, const RECT& area) {
    const COLORREF back = GetStyleValue(StyleValue::BackColor);
    const COLORREF text = GetStyleValue(TakesInput() ? StyleValue::TextColor : StyleValue::DisabledTextColor);
    const RECT handle = HandleRect();
    const bool hasHandle = IsRectEmpty(&handle) == 0;
    const LONG right = hasHandle ? handle.left : area.right;
    const LifeGuard life(this);
    const int end = std::min(topRow + shownRows, GetCount());
    for (int index = topRow; index < end; ++index) {
        const LONG top = area.top + (index - topRow) * rowHeight;
        const RECT row{area.left, top, right, std::min(top + rowHeight, area.bottom)};
        const bool swapped = index == marked;
        if (swapped) {
            FillSolid(dc, row, text);
        }
        const TmyString shown = entry->TextOf(items[static_cast<std::size_t>(index)]);
        if (!life.IsAlive()) {
            return;
        }
        const RECT place{row.left + kTextGap, row.top, row.right, row.bottom};
        DrawAlignedText(dc, shown.Text(), place, kTextLeftMiddle,
                        {EffectiveFont(), swapped ? back : text, swapped ? text : back, 0});
    }
    if (hasHandle) {
        const COLORREF surface = GetStyleValue(StyleValue::WindowColor);
        FillSolid(dc, {handle.left, area.top, handle.right, area.bottom},
                  ScaleColor(surface, kFullPercent / 2));
        FillSolid(dc, handle, surface);
        DrawFrame(dc, handle, kFrameRaised, kHandleBorder, *this);
    }
}

} // namespace orva::toolkit
