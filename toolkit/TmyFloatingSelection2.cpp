#include "toolkit/TmyFloatingSelection2.h"

#include "toolkit/Colors.h"
#include "toolkit/TextDrawing.h"
#include "toolkit/TmyIntEdit.h"
#include "toolkit/TypeRegistry.h"

#include <algorithm>
#include <array>

namespace orva::toolkit {

namespace {

constexpr int kColumnPadding = 2; // on both sides of a digit [pixels]
constexpr int kGroup = 3;         // digits
constexpr int kGroupGap = 6;      // beside the padding [pixels]
constexpr int kSideMargin = 4;
constexpr int kGroups = (DigitColumns::kCount - 1) / kGroup;
constexpr int kBandStrength = 35; // of the middle row [percent]
constexpr int kHoverStrength = 15;

} // namespace

TmyFloatingSelection2::TmyFloatingSelection2(TmyIntEdit* owner, int rows, int height)
    : TmyFloatingSelection(owner, rows, height), columns(GetRowHeight()) {
    RegisterType(this, TypeId::FloatSel2, "FloatSel2");
}

// --- layout ------------------------------------------------------------------------------------------------

void TmyFloatingSelection2::MeasureDigits() {
    digitWidth = 1;
    const HDC dc = ::GetDC(nullptr);
    if (dc == nullptr) {
        return;
    }
    const HGDIOBJ before = SelectObject(dc, EffectiveFont());
    std::array<ABC, DigitColumns::kDigits> widths{};
    if (GetCharABCWidthsA(dc, '0', '9', widths.data()) != 0) {
        for (const ABC& each : widths) {
            digitWidth = std::max(digitWidth, each.abcA + static_cast<int>(each.abcB) + each.abcC);
        }
    } else { // of a bitmap font
        std::array<INT, DigitColumns::kDigits> plain{};
        GetCharWidth32A(dc, '0', '9', plain.data());
        digitWidth = std::max(digitWidth, *std::max_element(plain.begin(), plain.end()));
    }
    SelectObject(dc, before);
    ::ReleaseDC(nullptr, dc);
}

int TmyFloatingSelection2::ColumnWidth() const {
    return digitWidth + 2 * kColumnPadding;
}

SIZE TmyFloatingSelection2::WindowSize() const {
    const int columnsWidth = DigitColumns::kCount * ColumnWidth() + kGroups * kGroupGap;
    const int signWidth = digitWidth;
    return {columnsWidth + signWidth + 2 * kSideMargin + 2 * kOutline, TmyFloatingSelection::WindowSize().cy};
}

RECT TmyFloatingSelection2::ColumnRect(int index) const {
    const RECT area = InnerRect();
    const int width = ColumnWidth();
    const int right = static_cast<int>(area.right) - kSideMargin - index * width -
                      std::min(index / kGroup, kGroups) * kGroupGap;
    return {right - width, area.top, right, area.bottom};
}

int TmyFloatingSelection2::ColumnAt(int x) const {
    for (int index = 0; index < DigitColumns::kCount; ++index) {
        const RECT place = ColumnRect(index);
        if (x >= place.left && x < place.right) {
            return index;
        }
    }
    return kNone;
}

// --- the number --------------------------------------------------------------------------------------------

void TmyFloatingSelection2::Prepare() {
    MeasureDigits();
    columns.SetValue(Entry()->GetValue());
    column = 0;
    turning = false;
}

/// At rest, the digits are the entry's, whatever has changed it meanwhile.
void TmyFloatingSelection2::FollowEntry() {
    if (!turning && !columns.IsMoving() && columns.Value() != Entry()->GetValue()) {
        columns.SetValue(Entry()->GetValue());
        Invalidate();
    }
}

void TmyFloatingSelection2::Roll(int rows) {
    FollowEntry();
    columns.Roll(column, rows);
    Move();
}

void TmyFloatingSelection2::EndDrag() {
    if (turning) {
        turning = false;
        columns.Release(column);
        Move();
    }
}

/// Lets the motion go on to its end.
void TmyFloatingSelection2::Move() {
    Invalidate();
    if (!columns.IsMoving()) {
        Apply();
    } else if (!motion.IsRunning()) {
        motion.Start(kMotionInterval);
    }
}

void TmyFloatingSelection2::Apply() {
    motion.Stop();
    const std::int64_t before = Entry()->GetValue();
    if (columns.Value() == before) {
        return;
    }
    const LifeGuard life(this);
    Entry()->EnterValue(columns.Value());
    if (!life.IsAlive()) {
        return;
    }
    FollowEntry();
    if (Entry()->GetValue() != before) {
        onChange.Fire(this);
    }
}

void TmyFloatingSelection2::OnTimer(UINT_PTR id) {
    const LifeGuard life(this);
    TmyFloatingSelection::OnTimer(id);
    if (!life.IsAlive() || id != kMotionTimer || !motion.IsRunning()) {
        return;
    }
    Invalidate();
    if (!columns.Step()) {
        Apply();
    }
}

void TmyFloatingSelection2::Close() {
    if (!IsOpen()) {
        return;
    }
    TmyFloatingSelection::Close();
    const bool unfinished = turning || motion.IsRunning();
    turning = false;
    motion.Stop();
    columns.Release(column);
    if (unfinished) {
        Apply();
    }
}

// --- input -------------------------------------------------------------------------------------------------

void TmyFloatingSelection2::OnLeftButtonDown(WPARAM flags, int x, int y) {
    if (!TakesInput()) {
        return;
    }
    const LifeGuard life(this);
    TmyComponent::OnLeftButtonDown(flags, x, y);
    const int turned = life.IsAlive() ? ColumnAt(x) : kNone;
    if (turned == kNone) {
        return;
    }
    FollowEntry();
    column = turned;
    turning = true;
    lastY = y;
    Invalidate();
}

void TmyFloatingSelection2::OnMouseMove(WPARAM flags, int x, int y) {
    if (!TakesInput()) {
        return;
    }
    const LifeGuard life(this);
    TmyComponent::OnMouseMove(flags, x, y);
    if (!life.IsAlive()) {
        return;
    }
    if ((flags & MK_LBUTTON) == 0) {
        EndDrag(); // the release went elsewhere
    }
    if (!life.IsAlive()) {
        return;
    }
    if (turning) {
        columns.Drag(column, lastY - y);
        lastY = y;
        Invalidate();
    } else if (ColumnAt(x) != kNone && ColumnAt(x) != column) {
        column = ColumnAt(x);
        Invalidate();
    }
}

void TmyFloatingSelection2::OnLeftButtonUp(WPARAM flags, int x, int y) {
    if (!TakesInput()) {
        return;
    }
    const LifeGuard life(this);
    TmyComponent::OnLeftButtonUp(flags, x, y);
    if (life.IsAlive()) {
        EndDrag();
    }
}

void TmyFloatingSelection2::OnMouseWheel(int delta, TmyControl* /*sender*/) {
    if (TakesInput() && !turning) {
        Roll(delta);
    }
}

void TmyFloatingSelection2::OnKeyDown(WPARAM& key, LPARAM flags) {
    if (!TakesInput()) {
        return;
    }
    if (key == VK_UP || key == VK_DOWN) {
        const int rows = key == VK_UP ? 1 : -1;
        key = 0;
        if (!turning) {
            Roll(rows);
        }
        return;
    }
    TmyFloatingSelection::OnKeyDown(key, flags);
}

// --- painting ----------------------------------------------------------------------------------------------

void TmyFloatingSelection2::DrawRows(HDC dc, const RECT& area) {
    FollowEntry();
    const COLORREF back = GetStyleValue(StyleValue::BackColor);
    const COLORREF text = GetStyleValue(StyleValue::TextColor);
    const LONG bandTop = area.top + GetRows() / 2 * GetRowHeight();
    const RECT band{area.left, bandTop, area.right, bandTop + GetRowHeight()};
    const RECT pointed = ColumnRect(column);
    FillSolid(dc, pointed, MixColors(back, text, kHoverStrength));
    FillSolid(dc, band, MixColors(back, text, kBandStrength));
    bool leading = true;
    for (int index = DigitColumns::kCount - 1; index >= 0; --index) {
        leading = leading && columns.Offset(index) == 0 && index > 0;
        DrawColumn(dc, index, leading);
    }
    if (columns.Value() < 0) {
        const RECT first = ColumnRect(DigitColumns::kCount - 1);
        DrawAlignedText(dc, "-", {area.left, band.top, first.left, band.bottom}, kTextInTheMiddle,
                        {EffectiveFont(), text, back, 0});
    }
}

/// \param leading  a zero before the number's first digit, which is drawn faintly
void TmyFloatingSelection2::DrawColumn(HDC dc, int index, bool leading) {
    const RECT place = ColumnRect(index);
    const COLORREF back = GetStyleValue(StyleValue::BackColor);
    const TextLook look{
        EffectiveFont(),
        GetStyleValue(leading || !TakesInput() ? StyleValue::DisabledTextColor : StyleValue::TextColor), back,
        0};
    const int saved = SaveDC(dc);
    IntersectClipRect(dc, place.left, place.top, place.right, place.bottom);
    const int height = GetRowHeight();
    const int offset = columns.Offset(index);
    const LONG restTop = place.top + GetRows() / 2 * height;
    for (int row = -GetRows(); row <= GetRows() + 1; ++row) {
        const int digit = (offset / height + row + DigitColumns::kDigits * GetRows()) % DigitColumns::kDigits;
        const LONG top = restTop + row * height - offset % height;
        const std::array<char, 2> shown{static_cast<char>('0' + digit), '\0'};
        DrawAlignedText(dc, shown.data(), {place.left, top, place.right, top + height}, kTextInTheMiddle,
                        look);
    }
    RestoreDC(dc, saved);
}

} // namespace orva::toolkit
