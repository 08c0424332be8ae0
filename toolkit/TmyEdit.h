/// A text entry.
#pragma once

#include "toolkit/TmyComponent.h"

#include <windows.h>

namespace orva::toolkit {

/// Style of an entry inside another window: visible, in the tab order, scrolling along its one line.
constexpr DWORD kEditStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_CLIPSIBLINGS | ES_AUTOHSCROLL;

/// One window of the platform's class "EDIT" with the toolkit's border and, at its right, room for a unit.
///
/// | state    | look                                                                      |
/// |----------|---------------------------------------------------------------------------|
/// | enabled  | text colour on the control background, a sunken frame of the border width |
/// | disabled | the disabled text colour                                                  |
/// | grey     | the faint frame, style 7                                                  |
/// | focused  | the mark of the focus on the innermost ring of the frame, and the caret   |
///
/// A single line stands in the middle of the height. Keys, caret, selection and the clipboard are the
/// platform's. Return in a single line, and the loss of the focus, commit: `OnCommit`. Return ends there, so
/// that the platform has no reason to beep. A disabled entry takes no key, character or button.
class TmyEdit : public TmyComponent {
public:
    /// \param text          at the start; copied, null is empty
    /// \param placement     outer rectangle [pixels]
    /// \param windowStyle, extendedStyle  of the platform's class, without whatever border is among them
    TmyEdit(TmyControl* parent, const char* text, const Placement& placement, DWORD windowStyle = kEditStyle,
            DWORD extendedStyle = 0);

    /// Compares first: a text that is on show already raises no `onChange`.
    void SetText(const char* text) override;
    void SetText(const TmyString& text) override;

    /// The unit drawn at the right, in the room of `SetUnitWidth`. Compares first.
    void SetUnit(const TmyString& newUnit);
    [[nodiscard]] const TmyString& GetUnit() const { return unit; }
    /// Room for the unit [pixels]; 0 at the start, and the least.
    void SetUnitWidth(int pixels);
    [[nodiscard]] int GetUnitWidth() const { return unitWidth; }

    /// Whether the user can change the text; the program can.
    void SetReadOnly(bool readOnly);
    [[nodiscard]] bool IsReadOnly() const;
    /// Most characters that the user can type; 0 as many as the platform takes.
    void SetTextLimit(int characters);
    /// Characters `first` up to but without `end` are selected, and the caret stands at `end`; -1 is the
    /// text's end.
    void Select(int first, int end);

    /// Draws the frame, the unit, and what else is not the client area, into the whole window's context.
    ///
    /// \param area  the window, its corner at (0, 0)
    virtual void OnDrawNonClient(HDC dc, const RECT& area);
    /// The user has done with the text: fires `onCommit`.
    virtual void OnCommit();

    void SetFont(HFONT newFont) override;
    void SetBorderWidth(std::uint32_t width) override;
    void Invalidate() override; ///< the frame too
    void OnLeftButtonDown(WPARAM flags, int x, int y) override;
    void OnLeftButtonUp(WPARAM flags, int x, int y) override;
    void OnMouseMove(WPARAM flags, int x, int y) override;
    void OnKeyDown(WPARAM& key, LPARAM flags) override;
    void OnKeyUp(WPARAM key, LPARAM flags) override;
    void OnChar(WPARAM& code, LPARAM flags) override;
    void OnFocusChange(bool gained) override;
    LRESULT OnCommand(WPARAM code) override; ///< fires `onChange` for each change of the text, by whomever
    LRESULT WndProc(UINT message, WPARAM wParam, LPARAM lParam) override;

    TmyEvent<> onCommit;

protected:
    [[nodiscard]] bool IsMultiLine() const;
    /// Lets the platform ask for the client area again, and draws the frame.
    void RecalculateFrame();

private:
    [[nodiscard]] int FrameWidth() const;
    void ReserveFrame(RECT& area) const;
    LRESULT HandleNonClient(UINT message, WPARAM wParam, LPARAM lParam);
    void PaintNonClient();
    [[nodiscard]] LRESULT HitTest(LPARAM place) const;
    void SetMargins();

    TmyString unit;
    int unitWidth = 0;
};

} // namespace orva::toolkit
