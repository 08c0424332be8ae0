#include "tools/orva-gallery/GalleryWindow.h"

#include "tools/orva-gallery/LayoutPage.h"

namespace orva::gallery {

namespace {

constexpr toolkit::Placement kPlacement{-1, -1, 900, 480};
constexpr UINT_PTR kCloseTimer = 1;

} // namespace

GalleryWindow::GalleryWindow(unsigned milliseconds)
    : TmyComponent(nullptr, "Toolkit gallery", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 0, kPlacement) {
    FillLayoutPage(this);
    Realign();
    if (milliseconds != 0) {
        SetTimer(Window(), kCloseTimer, milliseconds, nullptr);
    }
}

void GalleryWindow::OnTimer(UINT_PTR id) {
    if (id == kCloseTimer) {
        KillTimer(Window(), kCloseTimer);
        PostMessageA(Window(), WM_CLOSE, 0, 0);
    }
    TmyComponent::OnTimer(id);
}

} // namespace orva::gallery
