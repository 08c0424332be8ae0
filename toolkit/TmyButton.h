/// A button with a window.
#pragma once

#include "toolkit/ArrowDrawing.h"
#include "toolkit/PressLogic.h"
#include "toolkit/TmyPanel.h"
#include "toolkit/TmyString.h"

#include <cstdint>
#include <optional>
#include <windows.h>

namespace orva::toolkit {

/// Push button, toggle button and radio button, with a text, a picture or an arrow, which repeats while it is
/// held. States, keys and events are those of `PressLogic`.
///
/// | group | all up  | a click                                                                        |
/// |-------|---------|--------------------------------------------------------------------------------|
/// | 0     |         | does not latch                                                                 |
/// | other | no      | puts it down and the others of its group up; the last that is down stays down  |
/// | other | allowed | puts it down and the others of its group up; a second one puts it up           |
///
/// Of one group are the buttons of one parent, of the same class, with the same number.
///
/// The frame is raised, or sunken while the button is down or pressed; then the picture and the text move by
/// one pixel to the right and down, and so does the mark of the focus. The border style is 1 until the first
/// paint. `onPress` comes at the press, after 500 ms, and then every 50 ms.
class TmyButton : public PressLogic<TmyPanel> {
public:
    TmyButton(TmyControl* parent, const char* text, const Placement& placement,
              DWORD windowStyle = kTabbingStyle, DWORD extendedStyle = 0);

    void SetDown(bool newDown) override;

    /// 0 for a button of its own. Does not change any button's state.
    void SetGroup(std::uint32_t number) { group = number; }
    [[nodiscard]] std::uint32_t GetGroup() const { return group; }
    /// Whether the last of the group that is down may be released. [of this button alone]
    void SetAllowAllUp(bool allow) { allowAllUp = allow; }
    [[nodiscard]] bool GetAllowAllUp() const { return allowAllUp; }

    /// Colour of the text while the button is down; until it is set, the style's text colour.
    void SetDownTextColor(COLORREF color);
    [[nodiscard]] COLORREF GetDownTextColor() const;

    /// A glyph in the middle, in the colour of the text.
    ///
    /// \param size  side of its square [pixels]
    void SetArrow(ArrowGlyph newGlyph, int size);

    void OnDrawFocus(HDC dc, const RECT& area) override;
    void OnDrawBackground(HDC dc, const RECT& area) override;
    void OnDrawContent(HDC dc, const RECT& area) override;

    using PressLogic<TmyPanel>::SetText;
    /// Compares first. With `resize` the button fits itself to the text, at the place where it is.
    virtual void SetText(const TmyString& text, bool resize);
    /// Border style 3 if down or pressed, otherwise 4.
    void UpdateLook() override;
    /// For `newDown`, puts the others of the group up. Otherwise answers whether this one may go up.
    virtual bool OnGroupChange(bool newDown);

    void OnPaint(HDC dc) override;
    void OnTimer(UINT_PTR id) override;
    LRESULT WndProc(UINT message, WPARAM wParam, LPARAM lParam) override;

protected:
    [[nodiscard]] TitlePlace PlaceTitle(const RECT& area) const override;
    [[nodiscard]] SIZE Padding() const override;
    void Latch() override;
    void StartRepeat() override;
    void StopRepeat() override;

private:
    [[nodiscard]] COLORREF ContentColor() const;
    [[nodiscard]] TmyButton* AsSibling(TmyControl* control) const;
    [[nodiscard]] bool HasSiblingDown() const;
    void PutSiblingsUp();

    std::uint32_t group = 0;
    bool allowAllUp = false;
    std::optional<COLORREF> downTextColor;
    ArrowGlyph glyph = ArrowGlyph::None;
    int glyphSize = 0;
    UINT_PTR delayTimerId = 1;
    UINT_PTR repeatTimerId = 2;
};

} // namespace orva::toolkit
