/// A region that is deleted when it goes out of scope.
#pragma once

#include <windows.h>

namespace orva::toolkit {

/// Owns a platform region. A failed creation leaves a null handle, which the region calls refuse without
/// harm.
class GdiRegion {
public:
    GdiRegion() : handle(CreateRectRgn(0, 0, 0, 0)) {}
    explicit GdiRegion(const RECT& rect) : handle(CreateRectRgnIndirect(&rect)) {}
    ~GdiRegion() { DeleteObject(handle); }
    GdiRegion(const GdiRegion&) = delete;
    GdiRegion& operator=(const GdiRegion&) = delete;

    [[nodiscard]] HRGN Get() const { return handle; }

private:
    HRGN handle;
};

} // namespace orva::toolkit
