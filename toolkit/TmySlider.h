/// A slider with a knob on a track.
#pragma once

#include "toolkit/TmyComponent.h"

#include <windows.h>

namespace orva::toolkit {

/// Which way a slider moves.
enum class SliderDirection { Horizontal = 0, Vertical = 1 };

/// Lets a user choose a number between two limits.
///
/// | state    | look                                                       |
/// |----------|------------------------------------------------------------|
/// | enabled  | raised knob on a sunken track                              |
/// | dragging | sunken knob                                                |
/// | disabled | knob and number in the disabled text colour; input ignored |
///
/// Mouse: a press on the knob starts a drag (`onDragStart`), which sets the value from the pointer wherever
/// it is; a press beside it moves the value one step towards the pointer, and goes on doing so while it is
/// held, after 500 ms every 50 ms, until the knob is under the pointer. Each change by the mouse fires
/// `onChange`.
///
/// The lowest value is at the left, or at the bottom. The knob's height is a part of the control's height,
/// its width a part of its own height; the parts are not the same for the two directions.
class TmySlider : public TmyComponent {
public:
    /// Values 0 to 100, at 50, in steps of 1.
    TmySlider(TmyControl* parent, SliderDirection direction, const Placement& placement);

    /// Each moves the other limit along if it is passed, and brings the value into the range without an
    /// event.
    void SetMinimum(int newMinimum);
    void SetMaximum(int newMaximum);
    [[nodiscard]] int GetMinimum() const { return minimum; }
    [[nodiscard]] int GetMaximum() const { return maximum; }

    /// Limits the value to the range; an unchanged one does nothing.
    ///
    /// \param fire  whether a change fires `onChange`
    void SetValue(int newValue, bool fire);
    [[nodiscard]] int GetValue() const { return value; }

    /// What a press beside the knob moves by; at least 1.
    void SetStep(int newStep);
    /// Whether the value is written at the end of the track: at the right, or below.
    void SetValueShown(bool shown);

    [[nodiscard]] bool IsDragging() const { return dragging; }
    /// In client coordinates.
    [[nodiscard]] RECT KnobRect() const;
    [[nodiscard]] RECT TrackRect() const;
    [[nodiscard]] RECT MarkRect() const;

    void OnPaint(HDC dc) override;
    void OnLeftButtonDown(WPARAM flags, int x, int y) override;
    void OnMouseMove(WPARAM flags, int x, int y) override;
    void OnLeftButtonUp(WPARAM flags, int x, int y) override;
    void OnTimer(UINT_PTR id) override;
    void OnResize() override;
    void OnEnableChanged() override;

    TmyEvent<int> onChange; ///< the value; in place of the base's event of that name
    TmyEvent<> onDragStart;

private:
    [[nodiscard]] bool IsVertical() const { return direction == SliderDirection::Vertical; }
    [[nodiscard]] SIZE KnobSize() const;
    [[nodiscard]] SIZE ValueRoom() const;
    [[nodiscard]] RECT Room() const;
    [[nodiscard]] int Travel() const;
    [[nodiscard]] int Along(int x, int y) const { return IsVertical() ? y : x; }
    [[nodiscard]] int KnobStart() const;
    [[nodiscard]] int ValueAt(int knobStart) const;
    [[nodiscard]] int DirectionOf(int x, int y) const;
    void StepTowards(int sign);
    void StartRepeat(int sign);
    void StopMouse();
    [[nodiscard]] COLORREF ForeColor() const;
    void DrawTrack(HDC dc) const;
    void DrawKnob(HDC dc) const;
    void DrawValue(HDC dc) const;

    SliderDirection direction;
    int minimum = 0;
    int maximum = 100;
    int value = 50;
    int step = 1;
    bool valueShown = false;
    bool dragging = false;
    int dragStart = 0; ///< from the knob's edge to the pointer, along the track [pixels]
    POINT pointer{};   ///< where it was last seen with the button held
};

} // namespace orva::toolkit
