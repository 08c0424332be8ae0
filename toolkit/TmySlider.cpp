#include "toolkit/TmySlider.h"

#include "toolkit/Colors.h"
#include "toolkit/ControlDrawing.h"
#include "toolkit/PressLogic.h"
#include "toolkit/TimerPlatform.h"
#include "toolkit/TypeRegistry.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <string>

namespace orva::toolkit {

namespace {

constexpr DWORD kSliderStyle = WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS;

/// Sides of the knob: its height in percent of the control's, its width in percent of its height.
struct KnobPercentages {
    int height;
    int width;
};
constexpr KnobPercentages kHorizontalKnob{80, 40};
constexpr KnobPercentages kVerticalKnob{7, 230};
constexpr int kSmallestKnobSide = 3;

constexpr int kTrackThickness = 4;
constexpr int kTrackBorder = 1;
constexpr int kKnobBorder = 2;
constexpr int kValueGap = 4; ///< between the track and the number

// Two pairs of timers, to add and to subtract: the first of a pair waits, and turns into the second.
constexpr UINT_PTR kAddDelayTimer = 1;
constexpr UINT_PTR kAddTimer = 2;
constexpr UINT_PTR kSubtractDelayTimer = 3;
constexpr UINT_PTR kSubtractTimer = 4;

int Percent(int of, int percent) {
    return std::max(of * percent / kFullPercent, kSmallestKnobSide);
}

/// Text of the same width for all numbers of as many digits: 8 is the widest.
std::string WidestLike(int value) {
    std::string text = std::to_string(value);
    std::replace_if(
        text.begin(), text.end(), [](unsigned char character) { return std::isdigit(character) != 0; }, '8');
    return text;
}

/// The nearest whole number to a * b / c, of numbers that are not negative; 0 when c is 0.
std::int64_t Scale(std::int64_t a, std::int64_t b, std::int64_t c) {
    return c == 0 ? 0 : (a * b + c / 2) / c;
}

} // namespace

TmySlider::TmySlider(TmyControl* parentControl, SliderDirection sliderDirection, const Placement& placement)
    : TmyComponent(parentControl, "", kSliderStyle, 0, placement), direction(sliderDirection) {
    RegisterType(this, TypeId::Slider, "Slider");
    SetDoubleBuffered(true);
}

// --- values ------------------------------------------------------------------------------------------------

void TmySlider::SetMinimum(int newMinimum) {
    if (newMinimum == minimum) {
        return;
    }
    minimum = newMinimum;
    maximum = std::max(maximum, minimum);
    value = std::clamp(value, minimum, maximum);
    Invalidate();
}

void TmySlider::SetMaximum(int newMaximum) {
    if (newMaximum == maximum) {
        return;
    }
    maximum = newMaximum;
    minimum = std::min(minimum, maximum);
    value = std::clamp(value, minimum, maximum);
    Invalidate();
}

void TmySlider::SetValue(int newValue, bool fire) {
    const int limited = std::clamp(newValue, minimum, maximum);
    if (limited == value) {
        return;
    }
    value = limited;
    Invalidate();
    if (fire) {
        onChange.Fire(this, value);
    }
}

void TmySlider::SetStep(int newStep) {
    step = std::max(newStep, 1);
}

void TmySlider::SetValueShown(bool shown) {
    if (shown != valueShown) {
        valueShown = shown;
        Invalidate();
    }
}

// --- geometry ----------------------------------------------------------------------------------------------

SIZE TmySlider::KnobSize() const {
    const KnobPercentages percentages = IsVertical() ? kVerticalKnob : kHorizontalKnob;
    const int height = Percent(GetClientHeight(), percentages.height);
    return {Percent(height, percentages.width), height};
}

/// What the number takes of the control; nothing if it is not shown.
SIZE TmySlider::ValueRoom() const {
    if (!valueShown) {
        return {0, 0};
    }
    const SIZE room = MeasureText(EffectiveFont(), WidestLike(value).c_str());
    return {room.cx + kValueGap, room.cy + kValueGap};
}

/// Where the knob moves.
RECT TmySlider::Room() const {
    const SIZE number = ValueRoom();
    RECT room{0, 0, GetClientWidth(), GetClientHeight()};
    if (IsVertical()) {
        room.bottom = std::max<LONG>(room.bottom - number.cy, 0);
    } else {
        room.right = std::max<LONG>(room.right - number.cx, 0);
    }
    return room;
}

/// Pixels that the knob can move by.
int TmySlider::Travel() const {
    const RECT room = Room();
    const SIZE knob = KnobSize();
    const LONG travel = IsVertical() ? room.bottom - knob.cy : room.right - knob.cx;
    return static_cast<int>(std::max<LONG>(travel, 0));
}

/// The knob's left or upper edge.
int TmySlider::KnobStart() const {
    const std::int64_t span = static_cast<std::int64_t>(maximum) - minimum;
    const int travel = Travel();
    const int offset = static_cast<int>(Scale(static_cast<std::int64_t>(value) - minimum, travel, span));
    return IsVertical() ? travel - offset : offset;
}

/// The value with which the knob's left or upper edge is nearest to `knobStart`.
int TmySlider::ValueAt(int knobStart) const {
    const int travel = Travel();
    if (travel == 0) {
        return value;
    }
    const int limited = std::clamp(knobStart, 0, travel);
    const int offset = IsVertical() ? travel - limited : limited;
    const std::int64_t span = static_cast<std::int64_t>(maximum) - minimum;
    return static_cast<int>(minimum + Scale(offset, span, travel));
}

RECT TmySlider::KnobRect() const {
    const RECT room = Room();
    const SIZE knob = KnobSize();
    const int start = KnobStart();
    if (IsVertical()) {
        const LONG left = (room.right - knob.cx) / 2;
        return {left, start, left + knob.cx, start + knob.cy};
    }
    const LONG top = (room.bottom - knob.cy) / 2;
    return {start, top, start + knob.cx, top + knob.cy};
}

/// The line across the middle of the knob, where the value is: one pixel thick, or two where the middle lies
/// between two.
RECT TmySlider::MarkRect() const {
    const RECT knob = KnobRect();
    RECT mark = knob;
    InflateRect(&mark, -kKnobBorder, -kKnobBorder);
    if (IsVertical()) {
        mark.top = (knob.top + knob.bottom - 1) / 2;
        mark.bottom = knob.bottom - (mark.top - knob.top);
    } else {
        mark.left = (knob.left + knob.right - 1) / 2;
        mark.right = knob.right - (mark.left - knob.left);
    }
    return mark;
}

/// The middles of the knob at its two ends are the ends of the track.
RECT TmySlider::TrackRect() const {
    const RECT room = Room();
    const SIZE knob = KnobSize();
    if (IsVertical()) {
        const LONG left = (room.right - kTrackThickness) / 2;
        return {left, knob.cy / 2, left + kTrackThickness, room.bottom - knob.cy / 2};
    }
    const LONG top = (room.bottom - kTrackThickness) / 2;
    return {knob.cx / 2, top, room.right - knob.cx / 2, top + kTrackThickness};
}

// --- mouse -------------------------------------------------------------------------------------------------

/// Which way the value goes towards a point: 1, -1, or 0 for a point beside neither end of the knob.
int TmySlider::DirectionOf(int x, int y) const {
    const RECT knob = KnobRect();
    const int at = Along(x, y);
    const LONG start = IsVertical() ? knob.top : knob.left;
    const LONG end = IsVertical() ? knob.bottom : knob.right;
    if (at >= start && at < end) {
        return 0;
    }
    const bool towardsEnd = at >= end;
    return towardsEnd == IsVertical() ? -1 : 1;
}

void TmySlider::OnLeftButtonDown(WPARAM flags, int x, int y) {
    if (!IsEnabled()) {
        return;
    }
    const LifeGuard life(this);
    TmyComponent::OnLeftButtonDown(flags, x, y);
    if (!life.IsAlive()) {
        return;
    }
    pointer = {x, y};
    const int sign = DirectionOf(x, y);
    if (sign == 0) {
        dragging = true;
        dragStart = Along(x, y) - KnobStart();
        Invalidate();
        onDragStart.Fire(this);
        return;
    }
    StartRepeat(sign); // first: a handler may delete the slider
    StepTowards(sign);
}

void TmySlider::OnMouseMove(WPARAM flags, int x, int y) {
    if (!IsEnabled()) {
        return;
    }
    const LifeGuard life(this);
    TmyComponent::OnMouseMove(flags, x, y);
    if (!life.IsAlive()) {
        return;
    }
    pointer = {x, y};
    if (!dragging) {
        return;
    }
    if (GetCapture() != window) {
        StopMouse(); // someone took the mouse away: the release will not come here
        return;
    }
    SetValue(ValueAt(Along(x, y) - dragStart), true);
}

void TmySlider::OnLeftButtonUp(WPARAM flags, int x, int y) {
    if (!IsEnabled()) {
        return;
    }
    StopMouse();
    TmyComponent::OnLeftButtonUp(flags, x, y);
}

void TmySlider::OnEnableChanged() {
    if (!IsEnabled()) {
        StopMouse();
    }
    TmyComponent::OnEnableChanged();
}

void TmySlider::StopMouse() {
    for (const UINT_PTR id : {kAddDelayTimer, kAddTimer, kSubtractDelayTimer, kSubtractTimer}) {
        TimerCalls().kill(window, id);
    }
    if (dragging) {
        dragging = false;
        Invalidate();
    }
}

void TmySlider::StepTowards(int sign) {
    const std::int64_t moved = value + static_cast<std::int64_t>(sign) * step;
    SetValue(static_cast<int>(std::clamp<std::int64_t>(moved, minimum, maximum)), true);
}

void TmySlider::StartRepeat(int sign) {
    TimerCalls().set(window, sign > 0 ? kAddDelayTimer : kSubtractDelayTimer, kRepeatDelay, nullptr);
}

void TmySlider::OnTimer(UINT_PTR id) {
    if (!IsEnabled()) {
        return;
    }
    if (id >= kAddDelayTimer && id <= kSubtractTimer && GetCapture() != window) {
        StopMouse();
        return;
    }
    switch (id) {
    case kAddDelayTimer:
    case kSubtractDelayTimer:
        TimerCalls().kill(window, id);
        TimerCalls().set(window, id == kAddDelayTimer ? kAddTimer : kSubtractTimer, kRepeatInterval, nullptr);
        break;
    case kAddTimer:
    case kSubtractTimer: {
        const int sign = id == kAddTimer ? 1 : -1;
        if (DirectionOf(pointer.x, pointer.y) == sign) { // not past the pointer
            StepTowards(sign);
        }
        break;
    }
    default:
        TmyComponent::OnTimer(id);
        break;
    }
}

// --- painting ----------------------------------------------------------------------------------------------

void TmySlider::OnResize() {
    Invalidate();
    TmyComponent::OnResize();
}

COLORREF TmySlider::ForeColor() const {
    return GetStyleValue(IsEnabled() ? StyleValue::TextColor : StyleValue::DisabledTextColor);
}

void TmySlider::OnPaint(HDC dc) {
    DrawTrack(dc);
    DrawKnob(dc);
    if (valueShown) {
        DrawValue(dc);
    }
    TmyComponent::OnPaint(dc);
}

void TmySlider::DrawTrack(HDC dc) const {
    const RECT track = TrackRect();
    FillSolid(dc, track, GetStyleValue(StyleValue::BackColor));
    DrawFrame(dc, track, kFrameSunken, kTrackBorder, *this);
}

void TmySlider::DrawKnob(HDC dc) const {
    const RECT knob = KnobRect();
    FillSolid(dc, knob, GetStyleValue(StyleValue::WindowColor));
    DrawFrame(dc, knob, dragging ? kFrameSunken : kFrameRaised, kKnobBorder, *this);
    FillSolid(dc, MarkRect(), ForeColor());
}

void TmySlider::DrawValue(HDC dc) const {
    const RECT room = Room();
    const RECT client{0, 0, GetClientWidth(), GetClientHeight()};
    const std::string text = std::to_string(value);
    const TextLook look = TextLookOf(*this, ForeColor());
    if (IsVertical()) {
        DrawAlignedText(dc, text.c_str(), {client.left, room.bottom, client.right, client.bottom},
                        kTextCentre | kTextBottom, look);
    } else {
        DrawAlignedText(dc, text.c_str(), {room.right, client.top, client.right, client.bottom},
                        kTextRight | kTextMiddle, look);
    }
}

} // namespace orva::toolkit
