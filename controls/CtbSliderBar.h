/// A flat bar that shows a position and lets it be set.
#pragma once

#include "toolkit/TmyPanel.h"

#include <windows.h>

namespace orva::controls {

/// Filled from one end in proportion to the position.
///
/// | state    | look                                                                         |
/// |----------|------------------------------------------------------------------------------|
/// | enabled  | the part up to the position in the thumb's colour, the rest in the track's   |
/// | disabled | the filled part in the disabled text colour; input ignored                   |
///
/// Mouse: a press sets the position to where the pointer is, and so does each move until the release, beyond
/// the ends too. Every change of the position fires `onChange`, whoever makes it.
///
/// The bar has no border until it is given one. It is filled from the left, or from the top; with a maximum
/// below the minimum, from the other end.
class CtbSliderBar : public toolkit::TmyPanel {
public:
    /// Range 0 to 100, at 0, level.
    CtbSliderBar(toolkit::TmyControl* parent, const toolkit::Placement& placement);

    /// Do not change the position.
    void SetMinimum(int newMinimum);
    void SetMaximum(int newMaximum);
    /// Limits the position to what lies between minimum and maximum, whichever is higher. Compares first.
    void SetPosition(int newPosition);
    void SetVertical(bool isVertical);
    void SetColours(COLORREF thumb, COLORREF track);

    [[nodiscard]] int GetMinimum() const { return minimum; }
    [[nodiscard]] int GetMaximum() const { return maximum; }
    [[nodiscard]] int GetPosition() const { return position; }
    [[nodiscard]] bool IsVertical() const { return vertical; }
    [[nodiscard]] bool IsDragging() const { return dragging; }
    /// Length of the filled part [pixels]: the bar's length times the position over the distance of the
    /// limits, rounded to the nearest, and no more than the bar's length.
    [[nodiscard]] int GetFillPixels() const { return fillPixels; }

    void OnDrawContent(HDC dc, const RECT& area) override;
    void OnLeftButtonDown(WPARAM flags, int x, int y) override;
    void OnMouseMove(WPARAM flags, int x, int y) override;
    void OnLeftButtonUp(WPARAM flags, int x, int y) override;
    void OnResize() override;
    void OnEnableChanged() override;

    toolkit::TmyEvent<int> onChange; ///< the position; in place of the base's event of that name

private:
    [[nodiscard]] bool IsReversed() const { return maximum < minimum; }
    [[nodiscard]] double Span() const;
    [[nodiscard]] int Length() const;
    void UpdateFill();
    void SetFromPointer(int x, int y);
    [[nodiscard]] RECT FillRect(const RECT& area) const;

    int minimum = 0;
    int maximum = 100;
    int position = 0;
    bool vertical = false;
    int fillPixels = 0;
    bool dragging = false;
    COLORREF thumbColour = 0xFFFFFF;
    COLORREF trackColour = 0x606060;
};

} // namespace orva::controls
