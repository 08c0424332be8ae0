/// Digits on wheels that drop down from a number entry.
#pragma once

#include "toolkit/ControlTimer.h"
#include "toolkit/DigitColumns.h"
#include "toolkit/TmyFloatingSelection.h"

namespace orva::toolkit {

/// The last 16 digits of the entry's number, each of which can be turned: up and down under the pointer,
/// without a carry to its neighbours. The entry takes the number when the digits have come to rest, and the
/// digits then follow the entry, which may have limited it.
///
/// | input                     | effect                                                                   |
/// |---------------------------|--------------------------------------------------------------------------|
/// | drag with the left button | the column under the pointer follows it, then rests at the nearest digit |
/// | wheel, Up, Down           | the column that the pointer was over last goes on by a digit             |
/// | Return, Escape            | closes; what is still moving counts as if at rest                        |
class TmyFloatingSelection2 : public TmyFloatingSelection {
public:
    /// \param rows  that are shown of each column, the digit in the middle one; at least 1
    TmyFloatingSelection2(TmyIntEdit* owner, int rows, int height);

    /// The column at a place across, 0 for the last digit; `kNone` beside the columns and in the gaps.
    [[nodiscard]] int ColumnAt(int x) const;
    /// Where a column is drawn, in client coordinates.
    [[nodiscard]] RECT ColumnRect(int column) const;
    [[nodiscard]] const DigitColumns& Columns() const { return columns; }

    void Close() override;
    void OnLeftButtonDown(WPARAM flags, int x, int y) override;
    void OnLeftButtonUp(WPARAM flags, int x, int y) override;
    void OnMouseMove(WPARAM flags, int x, int y) override;
    void OnMouseWheel(int delta, TmyControl* sender) override;
    void OnKeyDown(WPARAM& key, LPARAM flags) override;
    void OnTimer(UINT_PTR id) override;

    static constexpr UINT_PTR kMotionTimer = 1;
    static constexpr UINT kMotionInterval = 50; ///< [ms]

protected:
    [[nodiscard]] SIZE WindowSize() const override;
    void Prepare() override;
    void DrawRows(HDC dc, const RECT& area) override;

private:
    void MeasureDigits();
    [[nodiscard]] int ColumnWidth() const;
    void FollowEntry();
    void Roll(int rows);
    void EndDrag();
    void Move();
    void Apply();
    void DrawColumn(HDC dc, int column, bool leading);

    DigitColumns columns;
    int digitWidth = 1;   ///< [pixels], of the widest
    int column = 0;       ///< that the pointer was over last
    bool turning = false; ///< by a drag
    int lastY = 0;
    ControlTimer motion{this, kMotionTimer};
};

} // namespace orva::toolkit
