#include "toolkit/TmyBitmapDD.h"

#include "toolkit/Trace.h"

namespace orva::toolkit {

TmyBitmapDD::TmyBitmapDD(int bitmapWidth, int bitmapHeight) {
    // The platform would make a bitmap of one pixel where a side is 0.
    if (bitmapWidth > 0 && bitmapHeight > 0) {
        bitmap = BitmapCalls().createScreenBitmap(bitmapWidth, bitmapHeight);
    } else {
        SetLastError(ERROR_INVALID_PARAMETER);
    }
    if (bitmap == nullptr) {
        const auto error = static_cast<int>(GetLastError());
        Trace(this, 0, "BitmapDD [%dx%d] not created, err=%d", bitmapWidth, bitmapHeight, error);
        return;
    }
    width = bitmapWidth;
    height = bitmapHeight;
    rowBytes = bitmapWidth;
}

} // namespace orva::toolkit
