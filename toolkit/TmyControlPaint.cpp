/// Painting and what calls for it.

#include "toolkit/GdiRegion.h"
#include "toolkit/TmyComponent.h"
#include "toolkit/TmyControl.h"

namespace orva::toolkit {

namespace {

/// Moves a device context's origin, and with it the coordinates of a region, to a child; back at the end.
class ChildCoordinates {
public:
    ChildCoordinates(HDC context, HRGN paintRegion, const RECT& childBounds)
        : dc(context), region(paintRegion), corner{childBounds.left, childBounds.top} {
        OffsetViewportOrgEx(dc, corner.x, corner.y, &origin);
        OffsetRgn(region, -corner.x, -corner.y);
    }
    ~ChildCoordinates() {
        OffsetRgn(region, corner.x, corner.y);
        SetViewportOrgEx(dc, origin.x, origin.y, nullptr);
    }
    ChildCoordinates(const ChildCoordinates&) = delete;
    ChildCoordinates& operator=(const ChildCoordinates&) = delete;

private:
    HDC dc;
    HRGN region;
    POINT corner;
    POINT origin{};
};

} // namespace

bool TmyControl::IsOpaqueWindowlessChild() const {
    return window == nullptr && !HasState(ControlState::Hidden) && !HasState(ControlState::Overlay);
}

bool TmyControl::IsVisibleOverlay() const {
    return window == nullptr && HasState(ControlState::Overlay) && !HasState(ControlState::Hidden);
}

void TmyControl::PaintTree(HDC dc, HRGN region) {
    // An overlay may lie on opaque siblings, which are cut out of the clip by then.
    const GdiRegion clip;
    const int clipped = GetClipRgn(dc, clip.Get());
    const LifeGuard life(this);
    {
        ChildWalk children(this);
        while (TmyControl* child = children.Next()) {
            if (child->IsOpaqueWindowlessChild() && RectInRegion(region, &child->bounds) != 0) {
                const RECT area = child->bounds;
                PaintChild(child, dc, region);
                ExcludeClipRect(dc, area.left, area.top, area.right, area.bottom);
            }
        }
    }
    if (life.IsAlive()) {
        OnPaint(dc);
    }
    if (!life.IsAlive()) {
        return;
    }
    SelectClipRgn(dc, clipped > 0 ? clip.Get() : nullptr);
    ChildWalk children(this);
    while (TmyControl* child = children.Next()) {
        if (child->IsVisibleOverlay() && RectInRegion(region, &child->bounds) != 0) {
            PaintChild(child, dc, region);
        }
    }
}

void TmyControl::PaintChild(TmyControl* child, HDC dc, HRGN region) {
    const ChildCoordinates inChild(dc, region, child->bounds);
    child->PaintTree(dc, region);
}

void TmyControl::OnPaint(HDC dc) {
    onPaint.Fire(this, dc);
}

void TmyControl::ExcludeOpaqueChildren(HRGN area) const {
    for (const TmyControl* child = firstChild; child != nullptr; child = child->nextSibling) {
        if (child->IsOpaqueWindowlessChild()) {
            const GdiRegion covered(child->bounds);
            CombineRgn(area, area, covered.Get(), RGN_DIFF);
        }
    }
}

void TmyControl::InvalidateRegion(HRGN region) {
    if (HasState(ControlState::Hidden) || parent == nullptr) {
        return;
    }
    OffsetRgn(region, bounds.left, bounds.top);
    parent->InvalidateRegion(region);
    OffsetRgn(region, -bounds.left, -bounds.top);
}

void TmyControl::Invalidate() {
    const GdiRegion area(RECT{0, 0, GetClientWidth(), GetClientHeight()});
    ExcludeOpaqueChildren(area.Get());
    InvalidateRegion(area.Get());
}

void TmyControl::InvalidateRect(const RECT& rect) {
    const GdiRegion area(rect);
    InvalidateRegion(area.Get());
}

void TmyControl::Update() {
    if (parent != nullptr) {
        parent->Update();
    }
}

HDC TmyControl::GetDC() {
    if (parent == nullptr) {
        return nullptr;
    }
    const HDC dc = parent->GetDC();
    if (dc != nullptr) {
        SaveDC(dc);
        OffsetViewportOrgEx(dc, bounds.left, bounds.top, nullptr);
        IntersectClipRect(dc, 0, 0, GetClientWidth(), GetClientHeight());
    }
    return dc;
}

void TmyControl::ReleaseDC(HDC dc) {
    if (parent != nullptr && dc != nullptr) {
        RestoreDC(dc, -1);
        parent->ReleaseDC(dc);
    }
}

} // namespace orva::toolkit
