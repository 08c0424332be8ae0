#include "tools/orva-gallery/GalleryWindow.h"

#include "tools/orva-gallery/LayoutPage.h"
#include "tools/orva-gallery/WidgetsPage.h"

namespace orva::gallery {

namespace {

constexpr toolkit::Placement kWidgetsPlacement{-1, -1, 1270, 1010};
constexpr toolkit::Placement kLayoutPlacement{-1, -1, 900, 480};
constexpr UINT_PTR kCloseTimer = 1;
constexpr COLORREF kPageColor = 0x3C3C3C;

} // namespace

GalleryWindow::GalleryWindow(GalleryPage page, unsigned milliseconds)
    : TmyComponent(nullptr, "Toolkit gallery", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 0,
                   page == GalleryPage::Widgets ? kWidgetsPlacement : kLayoutPlacement) {
    if (page == GalleryPage::Widgets) {
        SetWindowColor(kPageColor);
        FillWidgetsPage(this);
    } else {
        FillLayoutPage(this);
    }
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
