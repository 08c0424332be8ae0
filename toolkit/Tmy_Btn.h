/// A button without a window.
#pragma once

#include "toolkit/ArrowDrawing.h"
#include "toolkit/PressLogic.h"
#include "toolkit/TextDrawing.h"
#include "toolkit/TmyControl.h"
#include "toolkit/TmyString.h"

#include <cstdint>
#include <windows.h>

namespace orva::toolkit {

/// Part of other widgets: a push button with a text or an arrow that costs neither a window nor a thunk.
/// States, keys and events are those of `PressLogic`; a click does not latch. It takes the focus only after
/// `SetFocusable(true)`.
///
/// It shares its parent's style, of which it uses colours and border width; the border style is its own:
/// raised, or sunken while it is down or pressed. On a small button the border is narrower than the style
/// says, so that the content keeps most of it.
class Tmy_Btn : public PressLogic<TmyControl> {
public:
    explicit Tmy_Btn(TmyControl* parent, const Placement& placement = {}, const char* buttonText = "");

    /// Compares first.
    void SetText(const TmyString& newText);
    [[nodiscard]] const TmyString& GetText() const { return text; }
    /// A code made of `TextAlignment` bits; in the middle at the start. Compares first.
    void SetTextAlignment(std::uint32_t alignmentCode);
    [[nodiscard]] std::uint32_t GetTextAlignment() const { return textAlignment; }
    /// A glyph in the middle, in the colour of the text.
    ///
    /// \param size  side of its square [pixels]; 0 lets it follow the size of the button
    void SetArrow(ArrowGlyph newGlyph, int size = 0);
    [[nodiscard]] ArrowGlyph GetArrow() const { return glyph; }

    /// The size at which the text just fits, border included.
    [[nodiscard]] SIZE NaturalSize() const;

    /// `area` is what is inside the border.
    virtual void OnDrawFocus(HDC dc, const RECT& area);
    virtual void OnDrawBackground(HDC dc, const RECT& area);
    virtual void OnDrawContent(HDC dc, const RECT& area); ///< the arrow

    void UpdateLook() override;
    void OnPaint(HDC dc) override;
    void OnResize() override;
    void GetClientArea(RECT* area) const override;

private:
    [[nodiscard]] int EffectiveBorderWidth() const;
    [[nodiscard]] COLORREF ContentColor() const;
    void DrawTitle(HDC dc, const RECT& area) const;

    TmyString text;
    std::uint32_t textAlignment = kTextInTheMiddle;
    ArrowGlyph glyph = ArrowGlyph::None;
    int glyphSize = 0; ///< 0 follows the button's
    bool drawnSunken = false;
};

} // namespace orva::toolkit
