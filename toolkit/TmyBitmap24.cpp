#include "toolkit/TmyBitmap24.h"

namespace orva::toolkit {

TmyBitmap24::TmyBitmap24(int bitmapWidth, int bitmapHeight) {
    constexpr std::uint16_t kBitsPerPixel = 24;
    CreateSection(bitmapWidth, bitmapHeight, kBitsPerPixel, "Bitmap", "Pixels");
}

} // namespace orva::toolkit
