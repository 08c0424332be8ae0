/// A bitmap in the screen's own format.
#pragma once

#include "toolkit/TmyBitmapBase.h"

namespace orva::toolkit {

/// The quickest to copy to the screen; its pixels are out of reach, so that `GetRow` is always null, and
/// `RowBytes` is the width.
class TmyBitmapDD : public TmyBitmapBase {
public:
    /// If it fails there is no bitmap, and no exception.
    TmyBitmapDD(int bitmapWidth, int bitmapHeight);
};

} // namespace orva::toolkit
