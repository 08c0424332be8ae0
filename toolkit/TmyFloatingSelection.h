/// A list that drops down from a number entry.
#pragma once

#include "toolkit/TmyComponent.h"

#include <cstdint>
#include <vector>
#include <windows.h>

namespace orva::toolkit {

class TmyIntEdit;

/// A pop-up below its entry, or above where there is no room, with some of the entry's numbers to choose
/// from. It belongs to the entry, shares its style and font, and leaves it the focus: the entry passes on
/// keys and wheel while the pop-up is open, and closes it when it loses the focus, is disabled or hidden.
///
/// | input                                  | effect                                   |
/// |----------------------------------------|------------------------------------------|
/// | pointer, Up, Down, Page Up, Page Down  | mark a row                               |
/// | release on a row, Return               | the entry takes the row's number; closes |
/// | drag of the handle at the right, wheel | scroll                                   |
/// | Escape                                 | closes                                   |
///
/// `onChange` fires when a number has been chosen, after the entry's own events.
class TmyFloatingSelection : public TmyComponent {
public:
    static constexpr int kNone = -1;

    /// \param owner   the entry that it drops down from and belongs to
    /// \param rows    that are shown at a time, at least 1
    /// \param height  of a row [pixels], at least 1
    TmyFloatingSelection(TmyIntEdit* owner, int rows, int height);
    ~TmyFloatingSelection() override;

    /// Appends a number, which is shown as the entry shows it.
    void AddItem(std::int64_t number);
    void Clear();
    [[nodiscard]] int GetCount() const { return static_cast<int>(items.size()); }

    /// Shows it, with the entry's number marked, and gives the entry the focus.
    void Open();
    virtual void Close();
    [[nodiscard]] bool IsOpen() const;

    [[nodiscard]] int GetMarked() const { return marked; } ///< index of a number; `kNone` without one
    [[nodiscard]] int GetTopRow() const { return topRow; } ///< index of the first number shown
    [[nodiscard]] int GetRows() const { return shownRows; }
    [[nodiscard]] int GetRowHeight() const { return rowHeight; }
    /// The scroll handle, in client coordinates; empty while all numbers are shown.
    [[nodiscard]] RECT HandleRect() const;

    /// Where a pop-up of this size stands by an entry: below it or, without room there, above, moved and cut
    /// so that it lies within `workArea`. All on the screen.
    [[nodiscard]] static RECT Place(const RECT& entry, const SIZE& size, const RECT& workArea);

    void SetFocus() override; ///< of the entry: the pop-up takes none
    void OnPaint(HDC dc) override;
    void OnLeftButtonDown(WPARAM flags, int x, int y) override;
    void OnLeftButtonUp(WPARAM flags, int x, int y) override;
    void OnMouseMove(WPARAM flags, int x, int y) override;
    void OnMouseWheel(int delta, TmyControl* sender) override;
    void OnKeyDown(WPARAM& key, LPARAM flags) override; ///< takes its keys by setting them to 0
    void OnChar(WPARAM& code, LPARAM flags) override;
    void OnFocusChange(bool gained) override; ///< a loss, of the entry's too, closes it
    LRESULT WndProc(UINT message, WPARAM wParam, LPARAM lParam) override;

protected:
    static constexpr int kOutline = 1; ///< [pixels]

    [[nodiscard]] TmyIntEdit* Entry() const { return entry; }
    /// Whether it may take input: its entry can be changed by the user.
    [[nodiscard]] bool TakesInput() const;
    /// Size of the window that shows everything it has [pixels].
    [[nodiscard]] virtual SIZE WindowSize() const;
    /// Gets ready to be shown.
    virtual void Prepare();
    /// Draws what is inside the outline.
    virtual void DrawRows(HDC dc, const RECT& area);
    /// The area inside the outline.
    [[nodiscard]] RECT InnerRect() const;

private:
    [[nodiscard]] int RowAt(int x, int y) const;
    [[nodiscard]] int LastTopRow() const;
    void SetTopRow(int row);
    void Mark(int index);
    void MarkByKey(int distance);
    void Choose(int index);
    void DragHandle(int y);

    TmyIntEdit* entry;
    int shownRows;
    int rowHeight;
    std::vector<std::int64_t> items;
    int marked = kNone;
    int topRow = 0;
    bool pressed = false;  ///< on a row
    bool dragging = false; ///< the handle
    int dragStart = 0;     ///< from the handle's top to the pointer [pixels]
};

} // namespace orva::toolkit
