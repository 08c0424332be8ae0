/// The picture on a widget, with a second copy for its disabled state.
#pragma once

#include <memory>
#include <windows.h>

namespace orva::toolkit {

/// Owns a bitmap out of a module's resources. The colour of its top left pixel is transparent. The disabled
/// copy has one colour for all that is not. [window thread]
class TwoStatePicture {
public:
    /// Null if the module has no such bitmap, or memory for its copies is short.
    ///
    /// \param disabledColor  of the disabled copy; with black, which is its transparent colour, it is
    /// invisible
    [[nodiscard]] static std::unique_ptr<TwoStatePicture> Load(HINSTANCE module, int resource,
                                                               COLORREF disabledColor);
    ~TwoStatePicture();
    TwoStatePicture(const TwoStatePicture&) = delete;
    TwoStatePicture& operator=(const TwoStatePicture&) = delete;

    /// Makes the disabled copy anew, unless it has this colour.
    void SetDisabledColor(COLORREF color);

    /// Draws it in its own size in the middle of `area`.
    void Draw(HDC dc, const RECT& area, bool enabled);

    [[nodiscard]] int Width() const { return width; }   ///< [pixels]
    [[nodiscard]] int Height() const { return height; } ///< [pixels]

private:
    TwoStatePicture(HBITMAP loaded, HDC context);
    [[nodiscard]] bool MakeDisabledCopy(COLORREF color);

    HBITMAP bitmap;
    HBITMAP disabledBitmap = nullptr;
    HDC memory;               ///< one of the two is selected while it is drawn
    HGDIOBJ formerBitmap;     ///< what `memory` was made with
    COLORREF transparent = 0; ///< of `bitmap`; the copy's is black
    COLORREF disabledColor = 0;
    int width = 0;
    int height = 0;
};

} // namespace orva::toolkit
