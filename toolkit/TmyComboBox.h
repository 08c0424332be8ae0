/// A list behind a button.
#pragma once

#include "toolkit/TmyListBox.h"
#include "toolkit/TmyPanel.h"

#include <cstdint>
#include <windows.h>

namespace orva::toolkit {

class Tmy_Btn;

/// Where a list opens: below `box`, at its left edge and as wide; above it if it would pass the bottom of the
/// work area and there is more room. What still does not fit is cut. All on the screen [pixels].
[[nodiscard]] RECT PlaceDropDown(const RECT& box, int height, const RECT& workArea);

/// Shows the text of the selected line. The list is a window of its own on the desktop while it is open.
///
/// | state    | look                                                                  |
/// |----------|-----------------------------------------------------------------------|
/// | enabled  | text colour on the control background                                 |
/// | open     | the button is down, the list stands beside the box                    |
/// | disabled | disabled text colour; input ignored                                   |
/// | focused  | the mark of the focus around the text                                 |
///
/// | input, closed                   | effect                                         |
/// |---------------------------------|------------------------------------------------|
/// | left button                     | opens the list                                 |
/// | Space, F4, Alt+Down             | the same                                       |
/// | Up, Down, wheel                 | select the line before or behind               |
///
/// | input, open                     | effect                                         |
/// |---------------------------------|------------------------------------------------|
/// | as in `TmyListBox`              | marks a line in the list                       |
/// | a click on a line, Return       | selects it and closes the list                 |
/// | Escape                          | closes the list; the selection is as before    |
/// | the focus goes elsewhere        | the same                                       |
///
/// Each change of the selection by the user fires `onChange`. An empty list does not open.
class TmyComboBox : public TmyPanel {
public:
    static constexpr std::int32_t kNone = TmyListBox::kNone;

    TmyComboBox(TmyControl* parent, const Placement& placement);
    ~TmyComboBox() override;

    /// As in `TmyListBox`.
    std::int32_t AddItem(const char* text);
    void Clear();
    [[nodiscard]] TmyLBitem* GetItem(std::int32_t index) const;
    [[nodiscard]] std::int32_t GetCount() const;
    void Select(std::int32_t index, bool fire);
    [[nodiscard]] std::int32_t GetSelected() const { return selected; }

    void Open();
    /// Closes the list, whose mark is forgotten, and takes the focus back if the list had it.
    void Close();
    [[nodiscard]] bool IsOpen() const { return isOpen; }
    /// The list's window; null if it went away by itself.
    [[nodiscard]] TmyListBox* List() const { return list; }
    [[nodiscard]] Tmy_Btn* Button() const { return button; }

    void OnDrawFocus(HDC dc, const RECT& area) override;
    void OnDrawBackground(HDC dc, const RECT& area) override;
    void OnLeftButtonDown(WPARAM flags, int x, int y) override;
    void OnMouseWheel(int delta, TmyControl* sender) override;
    void OnKeyDown(WPARAM& key, LPARAM flags) override;
    void OnEnableChanged() override;
    void OnVisibilityChanged(bool visible) override;
    void SetFont(HFONT newFont) override;
    void SetStyleValue(StyleValue index, std::uint32_t value, bool unshare = false) override;

    TmyEvent<std::int32_t> onChange; ///< the selected index; in place of the base's event of that name

protected:
    [[nodiscard]] TitlePlace PlaceTitle(const RECT& area) const override;

private:
    class DropList;

    [[nodiscard]] RECT TextArea(const RECT& area) const;
    void PlaceList();
    void Toggle();
    void Hide();
    void MoveSelection(std::int32_t lines);
    void OnButtonDown(TmyControl* sender, MouseButton pressedButton, WPARAM flags, int x, int y);
    void OnListEnter(TmyControl* sender, std::int32_t index);
    void OnListDestroyed(TmyControl* sender);
    void OnListFocusLost();

    Tmy_Btn* button;
    TmyListBox* list = nullptr;
    std::int32_t selected = kNone;
    bool isOpen = false;
    bool closedByFocus = false; ///< the last close was a loss of the focus,
    DWORD closedAt = 0;         ///< at this time [ms]
};

} // namespace orva::toolkit
