/// A scroll bar without a window.
#pragma once

#include "toolkit/ControlTimer.h"
#include "toolkit/TmyControl.h"

#include <windows.h>

namespace orva::toolkit {

class Tmy_Btn2;

/// Which way a scroll bar runs.
enum class ScrollDirection { Vertical, Horizontal };

/// Shows and moves a position in a range: an arrow button at each end, a thumb between them that is as long
/// a part of its way as a page is of what can be seen in all positions.
///
/// | state            | look                                                  |
/// |------------------|-------------------------------------------------------|
/// | enabled          | raised thumb                                          |
/// | thumb held       | sunken thumb                                          |
/// | nothing to move  | no thumb, the arrows in the disabled text colour      |
/// | disabled         | the same; input ignored                               |
///
/// Mouse: a press on an arrow moves by 1, one beside the thumb by a page towards the pointer; both go on
/// while the button is held, after 500 ms every 50 ms, the page until the thumb is under the pointer. A press
/// on the thumb drags it. Each move by the mouse fires `onScroll`.
class Tmy_ScrollBar : public TmyControl {
public:
    static constexpr int kDefaultThickness = 16; ///< [pixels]

    /// Range 0 to 0, with a page of 1.
    Tmy_ScrollBar(TmyControl* parent, ScrollDirection direction, const Placement& placement = {});

    /// The lowest and the highest position, which moves up to the lowest at least; the position is brought
    /// into the range without an event. Compares first.
    void SetRange(int newMinimum, int newMaximum);
    /// What a press beside the thumb moves by, at least 1: as many units as can be seen at a time. Compares
    /// first.
    void SetPageSize(int newPageSize);
    /// Limits the position to the range; an unchanged one does nothing.
    ///
    /// \param fire  whether a change fires `onScroll`
    void SetPosition(int newPosition, bool fire);
    /// Size of the arrow buttons [pixels]; 0 for a square as wide as the bar, as at the start.
    void SetButtonSize(int width, int height);

    [[nodiscard]] int GetMinimum() const { return minimum; }
    [[nodiscard]] int GetMaximum() const { return maximum; }
    [[nodiscard]] int GetPosition() const { return position; }
    [[nodiscard]] int GetPageSize() const { return pageSize; }
    [[nodiscard]] bool CanScroll() const { return maximum > minimum; }

    /// The way of the thumb, and the thumb, in the bar's coordinates; the thumb is empty when there is
    /// nothing to move, or no room for it.
    [[nodiscard]] RECT TroughRect() const;
    [[nodiscard]] RECT ThumbRect() const;

    void OnPaint(HDC dc) override;
    void OnLeftButtonDown(WPARAM flags, int x, int y) override;
    void OnMouseMove(WPARAM flags, int x, int y) override;
    void OnLeftButtonUp(WPARAM flags, int x, int y) override;
    void OnTimer(UINT_PTR id) override;
    void OnResize() override;
    void OnEnableChanged() override;

    TmyEvent<int> onScroll; ///< the position

private:
    [[nodiscard]] bool IsVertical() const { return direction == ScrollDirection::Vertical; }
    [[nodiscard]] int Along(int x, int y) const { return IsVertical() ? y : x; }
    [[nodiscard]] int ThumbLength() const;
    [[nodiscard]] int TroughStart() const;
    [[nodiscard]] int TroughLength() const;
    [[nodiscard]] int ThumbStart() const; ///< along the bar
    [[nodiscard]] int PageDirection() const;
    void Page();
    void MoveBy(std::int64_t distance);
    void PlaceButtons();
    void UpdateButtons();
    [[nodiscard]] bool HasCapture();
    void StopMouse();
    void OnBackPress(TmyControl* sender);
    void OnForwardPress(TmyControl* sender);

    ScrollDirection direction;
    Tmy_Btn2* backButton;    ///< up or left
    Tmy_Btn2* forwardButton; ///< down or right
    int minimum = 0;
    int maximum = 0;
    int position = 0;
    int pageSize = 1;
    SIZE buttonSize{0, 0};
    bool dragging = false;
    int dragStart = 0; ///< from the thumb's edge to the pointer, along the bar [pixels]
    int pointer = 0;   ///< where it was last seen with the button held, along the bar
    int pageSign = 0;  ///< of the page moves under way; 0 none
    ControlTimer delayTimer;
    ControlTimer repeatTimer;
};

} // namespace orva::toolkit
