/// A window with a frame, a title text and a picture: the base of most widgets that have a window.
#pragma once

#include "toolkit/TextDrawing.h"
#include "toolkit/TmyComponent.h"
#include "toolkit/TwoStatePicture.h"

#include <cstdint>
#include <memory>
#include <windows.h>

namespace orva::toolkit {

/// Style of a widget inside another: a visible child that does not draw over its siblings or children.
constexpr DWORD kWidgetStyle = WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | WS_CLIPCHILDREN;
/// The same, in the tab order.
constexpr DWORD kTabbingStyle = kWidgetStyle | WS_TABSTOP;

/// As the module of a picture: the library that the toolkit is part of.
inline HINSTANCE ThisLibrary() {
    return reinterpret_cast<HINSTANCE>(static_cast<INT_PTR>(-1));
}

/// Paints, in this order: background, content (the picture), title, frame, and the mark of the focus.
///
/// | state    | look                                                                  |
/// |----------|-----------------------------------------------------------------------|
/// | enabled  | title in the text colour, the picture as it is                        |
/// | disabled | title and picture in the disabled text colour                         |
/// | focused  | `OnDrawFocus`, which a panel that takes the focus marks by a rectangle |
///
/// The background is the window colour, and the frame is made of its shades. The title's shadow is style
/// value 7. The constructor gives the panel a style record of its own with border style 4 and width 3, which
/// children share; style 0 is no border.
class TmyPanel : public TmyComponent {
public:
    /// \param title      drawn inside the border; copied, null is empty
    /// \param placement  outer rectangle [pixels]
    /// \param windowStyle, extendedStyle  of the platform
    TmyPanel(TmyControl* parent, const char* title, const Placement& placement,
             DWORD windowStyle = kWidgetStyle, DWORD extendedStyle = 0);

    /// Loads the picture, which replaces the present one, and its disabled copy.
    ///
    /// \param resource  id of a bitmap; the colour of its top left pixel is transparent
    /// \param module    that has it
    /// \return whether it is there; if not, the panel has no picture
    bool SetBitmap(int resource, HINSTANCE module = ThisLibrary());
    [[nodiscard]] bool HasBitmap() const { return picture != nullptr; }

    /// A code made of `TextAlignment` bits; 0, a panel's at the start, is left and top. Compares first.
    void SetTextAlignment(std::uint32_t alignmentCode);
    [[nodiscard]] std::uint32_t GetTextAlignment() const { return textAlignment; }

    /// The size at which the title and the picture just fit, border included.
    [[nodiscard]] SIZE NaturalSize() const;

    /// `area` is what is inside the border, or everything with border style 5.
    virtual void OnDrawFocus(HDC dc, const RECT& area);
    virtual void OnDrawBackground(HDC dc, const RECT& area); ///< fills with the window colour
    virtual void OnDrawContent(HDC dc, const RECT& area);    ///< draws the picture

    void OnPaint(HDC dc) override;
    void OnResize() override;
    void OnFocusChange(bool gained) override;
    void SetDisabledTextColor(COLORREF color) override;

protected:
    /// Where and in which colour the title goes.
    struct TitlePlace {
        RECT area;
        COLORREF color;
    };

    /// \param area  inside the border
    [[nodiscard]] virtual TitlePlace PlaceTitle(const RECT& area) const;
    /// Room that the widget keeps around its title and picture [pixels], beside the border.
    [[nodiscard]] virtual SIZE Padding() const { return {0, 0}; }

private:
    void DrawTitle(HDC dc, const RECT& area) const;

    std::unique_ptr<TwoStatePicture> picture; ///< null without one
    std::uint32_t textAlignment = 0;
};

} // namespace orva::toolkit
