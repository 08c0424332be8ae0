/// A bitmap of 32 bits for each pixel, with transparency.
#pragma once

#include "toolkit/TmyBitmapBase.h"

#include <cstdint>

namespace orva::toolkit {

/// Pixels as blue, green, red and alpha byte. For `DrawBlended` the three colours must be multiplied by alpha
/// / 255 already, as the platform wants them.
class TmyBitmap32 : public TmyBitmapBase {
public:
    /// Black and fully transparent. Throws std::runtime_error, "Bitmap32 constructor failed".
    TmyBitmap32(int bitmapWidth, int bitmapHeight);

    /// From a bitmap resource, which may have fewer bits for a pixel; then every pixel is opaque.
    /// resource  a name, or a number by `MAKEINTRESOURCEA`
    TmyBitmap32(HINSTANCE module, const char* resource);

    /// Mixes by each pixel's own alpha, times `alpha` / 255.
    bool DrawBlended(HDC dc, std::uint8_t alpha, const RECT& destRect,
                     const RECT* sourceRect = nullptr) override;

    /// The pixel as 0xAARRGGBB; 0 outside the bitmap.
    std::uint32_t GetPixel(int x, int y);

private:
    void Create(int bitmapWidth, int bitmapHeight);
    void CopyFrom(HBITMAP other);
    void MakeOpaque();
};

} // namespace orva::toolkit
