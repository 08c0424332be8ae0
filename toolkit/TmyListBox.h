/// A list with a scroll bar.
#pragma once

#include "toolkit/TmyLBitem.h"
#include "toolkit/TmyPanel.h"
#include "toolkit/TmyTypeList.h"

#include <cstdint>
#include <windows.h>

namespace orva::toolkit {

class Tmy_ScrollBar;

/// What a list is for.
enum class ListStyle : std::uint32_t {
    Plain = 0,   ///< chosen from by mouse and keys
    InCombo = 1, ///< the same; Escape closes it
    Mouse = 2,   ///< chosen from by the mouse alone
    Large = 3,   ///< the same, in large letters, without a scroll bar
};

/// Lines of text, of which one may be selected.
///
/// | state    | look                                                                            |
/// |----------|---------------------------------------------------------------------------------|
/// | enabled  | text colour on the control background; the selected line in swapped colours     |
/// | disabled | the same with the disabled text colour; input ignored                           |
/// | focused  | the mark of the focus around the selected line, or around all without one       |
///
/// | input                      | effect                                                               |
/// |----------------------------|----------------------------------------------------------------------|
/// | left button, also dragged  | selects the line under the pointer; beyond the ends scrolls          |
/// | its release over a line    | `OnEnter`                                                            |
/// | wheel                      | scrolls one line per notch, up for a positive count                  |
/// | Up, Down                   | select the line before or behind                                     |
/// | Page Up, Page Down         | the same by as many lines as can be seen                             |
/// | Return                     | `OnEnter`                                                            |
/// | Escape, in a combo box     | hides the list and gives the focus to the parent                     |
///
/// Keys count in styles 0 and 1. Each change of the selection by the user fires `onChange`.
class TmyListBox : public TmyPanel {
public:
    static constexpr std::int32_t kNone = -1;

    TmyListBox(TmyControl* parent, const Placement& placement, ListStyle kind = ListStyle::Plain,
               DWORD windowStyle = kTabbingStyle, DWORD extendedStyle = 0);
    ~TmyListBox() override;

    /// Appends a line; copied.
    ///
    /// \return its index; -1 if there is no memory for it
    std::int32_t AddItem(const char* text);
    /// Removes all lines; nothing is selected then, of which no event tells.
    void Clear();
    /// The list's own, until it is cleared; null outside the list. After a change call `Invalidate`.
    [[nodiscard]] TmyLBitem* GetItem(std::int32_t index) const { return items.Get(index); }
    [[nodiscard]] std::int32_t GetCount() const { return items.Count(); }

    /// Selects a line and brings it into view. An index outside the list is -1, no line; an unchanged one
    /// does nothing.
    ///
    /// \param fire  whether a change fires `onChange`
    void Select(std::int32_t index, bool fire);
    [[nodiscard]] std::int32_t GetSelected() const { return selected; }

    /// The first line that can be seen, and how many fit in full, at least 1.
    [[nodiscard]] std::int32_t GetTopIndex() const { return topIndex; }
    void SetTopIndex(std::int32_t index);
    [[nodiscard]] int VisibleCount() const;

    [[nodiscard]] ListStyle GetListStyle() const { return listStyle; }
    [[nodiscard]] int GetItemHeight() const { return itemHeight; } ///< [pixels]; follows the font
    [[nodiscard]] Tmy_ScrollBar* ScrollBar() const { return scrollBar; }
    /// Client area of the lines: inside the border, less the scroll bar.
    [[nodiscard]] RECT LinesRect() const;
    /// Where a line is drawn; it may lie outside the lines' area.
    [[nodiscard]] RECT LineRect(std::int32_t index) const;
    /// The line at a point of the lines' area; -1 if there is none.
    [[nodiscard]] std::int32_t IndexAt(int x, int y) const;
    /// Height of a window that shows so many lines in full [pixels].
    [[nodiscard]] int HeightFor(int lines) const;

    /// The user has chosen the selected line. Fires `onEnter`.
    virtual void OnEnter();
    /// Escape in a combo box: hides the list and gives the focus to the parent.
    virtual void OnEscape();

    void OnDrawFocus(HDC dc, const RECT& area) override;
    void OnDrawBackground(HDC dc, const RECT& area) override;
    void OnDrawContent(HDC dc, const RECT& area) override;
    void OnLeftButtonDown(WPARAM flags, int x, int y) override;
    void OnMouseMove(WPARAM flags, int x, int y) override;
    void OnLeftButtonUp(WPARAM flags, int x, int y) override;
    void OnMouseWheel(int delta, TmyControl* sender) override;
    void OnKeyDown(WPARAM& key, LPARAM flags) override;
    void OnResize() override;
    void OnEnableChanged() override;
    void SetFont(HFONT newFont) override;

    TmyEvent<std::int32_t> onChange; ///< the selected index; in place of the base's event of that name
    TmyEvent<std::int32_t> onEnter;  ///< the selected index

private:
    [[nodiscard]] bool TakesKeys() const {
        return listStyle == ListStyle::Plain || listStyle == ListStyle::InCombo;
    }
    [[nodiscard]] std::int32_t LastIndex() const { return GetCount() - 1; }
    [[nodiscard]] std::int32_t LastTopIndex() const;
    void UpdateScrollBar();
    void ShowSelected();
    void MoveSelection(std::int32_t lines);
    void SelectByPointer(int y);
    void DrawLine(HDC dc, std::int32_t index) const;
    void OnScroll(TmyControl* sender, int position);

    ListStyle listStyle;
    Tmy_ScrollBar* scrollBar;
    std::int32_t selected = kNone;
    std::int32_t topIndex = 0;
    int itemHeight = 1;
    bool pressed = false;      ///< the left button went down on the lines
    HFONT largeFont = nullptr; ///< of style 3; owned
    TmyTypeList<TmyLBitem> items;
};

} // namespace orva::toolkit
