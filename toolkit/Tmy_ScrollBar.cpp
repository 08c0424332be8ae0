#include "toolkit/Tmy_ScrollBar.h"

#include "toolkit/ArrowDrawing.h"
#include "toolkit/Colors.h"
#include "toolkit/ControlDrawing.h"
#include "toolkit/Tmy_Btn2.h"
#include "toolkit/TypeRegistry.h"

#include <algorithm>
#include <cstdint>

namespace orva::toolkit {

namespace {

constexpr UINT_PTR kDelayTimer = 1;
constexpr UINT_PTR kRepeatTimer = 2;

constexpr int kSmallestThumb = 8;
constexpr int kThumbBorder = 2;
constexpr int kTroughShade = 30; ///< [percent] of black

} // namespace

Tmy_ScrollBar::Tmy_ScrollBar(TmyControl* parentControl, ScrollDirection barDirection,
                             const Placement& placement)
    : TmyControl(parentControl, placement),
      direction(barDirection),
      backButton(new Tmy_Btn2(this)),
      forwardButton(new Tmy_Btn2(this)),
      delayTimer(this, kDelayTimer),
      repeatTimer(this, kRepeatTimer) {
    RegisterType(this, TypeId::ScrollBar, "ScrollBar");
    backButton->SetArrow(IsVertical() ? ArrowGlyph::SolidUp : ArrowGlyph::SolidLeft);
    forwardButton->SetArrow(IsVertical() ? ArrowGlyph::SolidDown : ArrowGlyph::SolidRight);
    backButton->onPress.Bind<&Tmy_ScrollBar::OnBackPress>(this);
    forwardButton->onPress.Bind<&Tmy_ScrollBar::OnForwardPress>(this);
    PlaceButtons();
    UpdateButtons();
}

// --- values ------------------------------------------------------------------------------------------------

void Tmy_ScrollBar::SetRange(int newMinimum, int newMaximum) {
    newMaximum = std::max(newMinimum, newMaximum);
    if (newMinimum == minimum && newMaximum == maximum) {
        return;
    }
    minimum = newMinimum;
    maximum = newMaximum;
    position = std::clamp(position, minimum, maximum);
    if (!CanScroll()) {
        StopMouse();
    }
    UpdateButtons();
    Invalidate();
}

void Tmy_ScrollBar::SetPageSize(int newPageSize) {
    newPageSize = std::max(newPageSize, 1);
    if (newPageSize != pageSize) {
        pageSize = newPageSize;
        Invalidate();
    }
}

void Tmy_ScrollBar::SetPosition(int newPosition, bool fire) {
    const int limited = std::clamp(newPosition, minimum, maximum);
    if (limited == position) {
        return;
    }
    position = limited;
    Invalidate();
    if (fire) {
        onScroll.Fire(this, position);
    }
}

void Tmy_ScrollBar::SetButtonSize(int width, int height) {
    buttonSize = {std::max(width, 0), std::max(height, 0)};
    PlaceButtons();
    Invalidate();
}

void Tmy_ScrollBar::MoveBy(std::int64_t distance) {
    const std::int64_t moved = std::clamp<std::int64_t>(position + distance, minimum, maximum);
    SetPosition(static_cast<int>(moved), true);
}

void Tmy_ScrollBar::OnBackPress(TmyControl* /*sender*/) {
    MoveBy(-1);
}

void Tmy_ScrollBar::OnForwardPress(TmyControl* /*sender*/) {
    MoveBy(1);
}

// --- geometry ----------------------------------------------------------------------------------------------

/// On a bar too short for both buttons each gets half of it.
void Tmy_ScrollBar::PlaceButtons() {
    const int width = GetClientWidth();
    const int height = GetClientHeight();
    const int thickness = IsVertical() ? width : height;
    int across = buttonSize.cx;
    int down = buttonSize.cy;
    if (across == 0 || down == 0) {
        across = thickness;
        down = thickness;
    }
    if (IsVertical()) {
        down = std::min(down, height / 2);
        across = std::min(across, width);
        const int left = (width - across) / 2;
        backButton->SetBounds(left, 0, across, down);
        forwardButton->SetBounds(left, height - down, across, down);
    } else {
        across = std::min(across, width / 2);
        down = std::min(down, height);
        const int top = (height - down) / 2;
        backButton->SetBounds(0, top, across, down);
        forwardButton->SetBounds(width - across, top, across, down);
    }
}

int Tmy_ScrollBar::TroughStart() const {
    const RECT& button = backButton->Bounds();
    return static_cast<int>(IsVertical() ? button.bottom : button.right);
}

int Tmy_ScrollBar::TroughLength() const {
    const RECT& button = forwardButton->Bounds();
    const int end = static_cast<int>(IsVertical() ? button.top : button.left);
    return std::max(end - TroughStart(), 0);
}

RECT Tmy_ScrollBar::TroughRect() const {
    const int start = TroughStart();
    const int end = start + TroughLength();
    return IsVertical() ? RECT{0, start, GetClientWidth(), end} : RECT{start, 0, end, GetClientHeight()};
}

/// 0 when there is nothing to move, or no room for the smallest thumb.
int Tmy_ScrollBar::ThumbLength() const {
    const int trough = TroughLength();
    if (!CanScroll() || trough < kSmallestThumb) {
        return 0;
    }
    const std::int64_t all = static_cast<std::int64_t>(maximum) - minimum + pageSize;
    const auto part = static_cast<int>(static_cast<std::int64_t>(trough) * pageSize / all);
    return std::max(part, kSmallestThumb);
}

int Tmy_ScrollBar::ThumbStart() const {
    const std::int64_t travel = TroughLength() - ThumbLength();
    const std::int64_t span = static_cast<std::int64_t>(maximum) - minimum;
    if (span == 0) {
        return TroughStart();
    }
    const std::int64_t offset = static_cast<std::int64_t>(position) - minimum;
    return TroughStart() + static_cast<int>((offset * travel + span / 2) / span);
}

RECT Tmy_ScrollBar::ThumbRect() const {
    const int start = ThumbStart();
    const int end = start + ThumbLength();
    return IsVertical() ? RECT{0, start, GetClientWidth(), end} : RECT{start, 0, end, GetClientHeight()};
}

// --- mouse -------------------------------------------------------------------------------------------------

/// Which way a page goes towards the pointer; 0 when the thumb is there.
int Tmy_ScrollBar::PageDirection() const {
    const int start = ThumbStart();
    if (pointer < start) {
        return -1;
    }
    return pointer >= start + ThumbLength() ? 1 : 0;
}

void Tmy_ScrollBar::Page() {
    // The thumb may have come past the pointer, which then stays behind it.
    if (PageDirection() == pageSign) {
        MoveBy(static_cast<std::int64_t>(pageSign) * pageSize);
    }
}

void Tmy_ScrollBar::OnLeftButtonDown(WPARAM flags, int x, int y) {
    if (!IsEnabled()) {
        return;
    }
    const LifeGuard life(this);
    TmyControl::OnLeftButtonDown(flags, x, y);
    if (!life.IsAlive() || ThumbLength() == 0) {
        return;
    }
    pointer = Along(x, y);
    pageSign = PageDirection();
    if (pageSign == 0) {
        dragging = true;
        dragStart = pointer - ThumbStart();
        Invalidate();
        return;
    }
    delayTimer.Start(kRepeatDelay); // first: a handler may delete the bar
    Page();
}

void Tmy_ScrollBar::OnMouseMove(WPARAM flags, int x, int y) {
    if (!IsEnabled()) {
        return;
    }
    const LifeGuard life(this);
    TmyControl::OnMouseMove(flags, x, y);
    if (!life.IsAlive()) {
        return;
    }
    pointer = Along(x, y);
    if (!dragging) {
        return;
    }
    if (!HasCapture()) {
        StopMouse(); // someone took the mouse away: the release will not come here
        return;
    }
    const std::int64_t travel = TroughLength() - ThumbLength();
    if (travel <= 0) {
        return;
    }
    const std::int64_t offset = std::clamp<std::int64_t>(pointer - dragStart - TroughStart(), 0, travel);
    const std::int64_t span = static_cast<std::int64_t>(maximum) - minimum;
    SetPosition(static_cast<int>(minimum + (offset * span + travel / 2) / travel), true);
}

void Tmy_ScrollBar::OnLeftButtonUp(WPARAM flags, int x, int y) {
    if (!IsEnabled()) {
        return;
    }
    StopMouse();
    TmyControl::OnLeftButtonUp(flags, x, y);
}

void Tmy_ScrollBar::OnTimer(UINT_PTR id) {
    if (!IsEnabled()) {
        return;
    }
    if (id != kDelayTimer && id != kRepeatTimer) {
        TmyControl::OnTimer(id);
        return;
    }
    if (!HasCapture()) {
        StopMouse();
        return;
    }
    if (id == kDelayTimer) {
        delayTimer.Stop();
        repeatTimer.Start(kRepeatInterval);
    }
    Page();
}

bool Tmy_ScrollBar::HasCapture() {
    const TmyComponent* component = NearestComponent();
    return component != nullptr && GetCapture() == component->Window();
}

void Tmy_ScrollBar::StopMouse() {
    delayTimer.Stop();
    repeatTimer.Stop();
    pageSign = 0;
    if (dragging) {
        dragging = false;
        Invalidate();
    }
}

// --- painting ----------------------------------------------------------------------------------------------

void Tmy_ScrollBar::OnEnableChanged() {
    if (!IsEnabled()) {
        StopMouse();
    }
    TmyControl::OnEnableChanged();
}

void Tmy_ScrollBar::UpdateButtons() {
    backButton->SetEnabled(CanScroll());
    forwardButton->SetEnabled(CanScroll());
}

void Tmy_ScrollBar::OnResize() {
    PlaceButtons();
    Invalidate();
    TmyControl::OnResize();
}

void Tmy_ScrollBar::OnPaint(HDC dc) {
    const COLORREF surface = GetStyleValue(StyleValue::WindowColor);
    FillSolid(dc, {0, 0, GetClientWidth(), GetClientHeight()}, MixColors(surface, kBlack, kTroughShade));
    const RECT thumb = ThumbRect();
    if (IsEnabled() && ThumbLength() > 0) {
        FillSolid(dc, thumb, surface);
        DrawFrame(dc, thumb, dragging ? kFrameSunken : kFrameRaised, kThumbBorder, *this);
    }
    TmyControl::OnPaint(dc);
}

} // namespace orva::toolkit
