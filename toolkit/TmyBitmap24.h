/// A bitmap of 24 bits for each pixel.
#pragma once

#include "toolkit/TmyBitmapBase.h"

namespace orva::toolkit {

/// Pixels as blue, green and red byte; rows begin at multiples of 4.
class TmyBitmap24 : public TmyBitmapBase {
public:
    /// Black. If it fails there is no bitmap, and no exception.
    TmyBitmap24(int bitmapWidth, int bitmapHeight);
};

} // namespace orva::toolkit
